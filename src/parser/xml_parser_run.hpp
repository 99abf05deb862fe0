/// @file
/// The state of an `xml_parser` as a context for `document_walk`. The delegates and the token list
/// share it.
///
/// A run refers to fields of its parser and to the cursor of its caller. It belongs to one thread.
#pragma once

#include <tova/parser/xml_parser.hpp>

#include "parser/attribute_names.hpp"
#include "parser/document_walk.hpp"
#include "parser/string_fill.hpp"

#include <cstddef>

namespace TOVA_2_18 {
namespace parser {

class xml_parser::run {
public:
    class reporting;  // passes the events to the delegates

    run(xml_parser& parser, const char* end)
        : m_parser(parser), m_end(end), m_attributes(parser.m_attributes) {}
    // If memory runs out here, the next run finds the names unchanged.
    ~run() {
        try {
            m_attributes.separate();
        } catch (...) {
        }
    }
    run(const run&) = delete;
    run& operator=(const run&) = delete;

    bool& in_tag() { return m_parser.m_in_tag; }
    unsigned int& line() { return m_parser.m_line; }

    bool has_open_element() const { return !m_parser.m_open_elements.empty(); }
    detail::piece innermost() const {
        const strings::ustring8& name = m_parser.m_open_elements.top();
        return detail::piece(name.data(), name.size());
    }
    void open(detail::piece name) {
        m_parser.m_open_elements.emplace();
        fill(m_parser.m_open_elements.top(), name);
    }
    void close() { m_parser.m_open_elements.pop(); }

    void forget_attributes() { m_attributes.clear(); }
    bool add_attribute(detail::piece name) {
        return m_attributes.insert(name.data, name.size,
                                   static_cast<std::size_t>(m_end - name.data));
    }

    void compose(strings::ustring8& into, detail::piece before, char byte) const {
        detail::append(into, before.data, before.size,
                       static_cast<std::size_t>(m_end - before.data), byte);
    }

    // Each construct is a separate event.
    const char* take_usual(const char* cursor) const { return cursor; }

protected:
    __attribute__((always_inline)) void fill(strings::ustring8& into, detail::piece bytes) const {
        detail::fill(into, bytes.data, bytes.size, static_cast<std::size_t>(m_end - bytes.data));
    }

    xml_parser& m_parser;
    const char* m_end;  // of the document

private:
    detail::attribute_names m_attributes;
};

}  // namespace parser
}  // namespace TOVA_2_18
