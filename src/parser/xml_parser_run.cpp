#include "parser/xml_parser_run.hpp"

#include <tova/parser/xml_parser.hpp>

#include "parser/document_walk.hpp"
#include "parser/string_fill.hpp"

// This file is compiled as C++23, where a string can be filled in place. It has no function with an
// empty exception specification, which would end the program in another way in C++23.

namespace TOVA_2_18 {
namespace parser {

using detail::piece;
using strings::ustring8;
using iterator = xml_parser::iterator;
using parse_error = xml_parser::parse_error;

// Passes the events to the delegates. Two strings are reused for all texts.
class xml_parser::run::reporting : public xml_parser::run {
public:
    reporting(xml_parser& parser, iterator& cursor, const iterator& end)
        : run(parser, end.base()), m_cursor(cursor), m_caller_end(end), m_stopped(false) {}

    // Whether an exception comes from the grammar rather than from a handler.
    bool stopped() const { return m_stopped; }

    void move_to(const char* cursor) {
        m_cursor = iterator(cursor);
        m_stopped = true;
    }
    const char* end() {
        m_end = m_caller_end.base();
        return m_end;
    }

    const char* element_start(piece name, const char* cursor) {
        return report(m_parser.on_element_start, name, cursor);
    }
    const char* element_end(piece name, const char* cursor) {
        return report(m_parser.on_element_end, name, cursor);
    }
    // The name belongs to the parser, and the handler may close the element itself by parsing its
    // end tag. So the handler gets a copy.
    const char* empty_element_end(const char* cursor) {
        if (m_parser.on_element_end.is_empty())
            return cursor;
        // Even a short string has 16 bytes in the object itself.
        const piece name = innermost();
        detail::fill(m_string, name.data, name.size, 16);
        return report(m_parser.on_element_end, m_string, cursor);
    }
    template <typename Text>
    const char* attribute(piece name, const Text& value, const char* cursor) {
        if (m_parser.on_attribute.is_empty())
            return cursor;
        fill(m_name, name);
        m_cursor = iterator(cursor);
        call(m_parser.on_attribute, m_name, string_of(value));
        return m_cursor.base();
    }
    template <typename Text>
    const char* character(const Text& text, const char* cursor) {
        return report(m_parser.on_character, text, cursor);
    }
    const char* space(piece text, const char* cursor) {
        return report(m_parser.on_space, text, cursor);
    }
    template <typename Text>
    const char* comment(const Text& text, const char* cursor) {
        return report(m_parser.on_comment, text, cursor);
    }

private:
    const ustring8& string_of(const ustring8& string) const { return string; }
    const ustring8& string_of(piece bytes) {
        fill(m_string, bytes);
        return m_string;
    }

    template <typename Delegate, typename Text>
    const char* report(Delegate& delegate, const Text& text, const char* cursor) {
        if (delegate.is_empty())
            return cursor;
        m_cursor = iterator(cursor);
        call(delegate, string_of(text));
        return m_cursor.base();
    }

    // The delegate is not empty.
    template <typename Delegate, typename... Strings>
    static void call(Delegate& delegate, const Strings&... strings) {
        if (delegate.is_empty())
            __builtin_unreachable();  // the check of `invoke` is left out
        delegate.invoke(strings...);
    }

    iterator& m_cursor;  // the caller's, as is the end
    const iterator& m_caller_end;
    ustring8 m_name;
    ustring8 m_string;
    bool m_stopped;  // at the end of the document or at an error
};

parse_error xml_parser::do_parse(iterator& cursor, iterator& end) {
    m_line = 0;
    m_in_tag = false;
    run::reporting current(*this, cursor, end);
    try {
        return detail::document_walk<run::reporting>(current, cursor, end).run();
    } catch (const parse_error& error) {
        // A handler may throw its own `parse_error`, which is not the result of this run.
        if (!current.stopped())
            throw;
        return error;
    }
}

}  // namespace parser
}  // namespace TOVA_2_18
