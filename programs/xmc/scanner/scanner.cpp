#include "xmc/scanner/scanner.hpp"

#include <tova/generic/convert/str_to_x.hpp>
#include <tova/types/radix.hpp>

#include <algorithm>
#include <cstring>
#include <utility>

// One class does both readings. In the strict one, `fail` raises the error, and the tokens are
// those of the library's parser; the comments that begin with "Strict:" name its rules that a
// reader may not expect. In the tolerant one, `fail` records the error and returns, and the code
// after it says how the reading goes on.
//
// State between two constructs:
//
//     m_in_tag       after `<name` or `</name`, until the `>`
//     m_open         the open elements, the innermost last
//     m_attributes   the names of the attributes since the last start tag
//     m_line         line feeds in the whitespace taken, as the loader counts
//     m_space        the whitespace last taken; comments and sections begin with it
//     m_tag_closed   no start_tag_end is due

namespace tova_programs::xmc {

namespace {

bool is_space(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool is_letter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

bool is_hexadecimal(char c) {
    return is_digit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool is_name(char c) {
    return is_letter(c) || is_digit(c) || c == '_';
}

const struct {
    std::string_view text;
    char result;
} entities[] = {{"&lt;", '<'},   {"&gt;", '>'},    {"&amp;", '&'},
                {"&quot;", '"'}, {"&apos;", '\''}, {"&nbsp;", ' '}};

}  // namespace

class scanner {
public:
    scanner(scan& result, std::string_view bytes, bool is_tolerant)
        : m_scan(result), m_bytes(bytes), m_begin(bytes.data()), m_end(bytes.data() + bytes.size()),
          m_tolerant(is_tolerant) {}

    // In the strict reading, raises `xml_problem`.
    void run() {
        const char* cursor = take_header();
        while (cursor != m_end) {
            if (m_in_tag) {
                cursor = skip_space(cursor);
                if (cursor != m_end)
                    cursor = take_within_tag(cursor);
                continue;
            }
            const char* const after = skip_space(cursor);
            m_space = view(cursor, after);
            if (!m_space.empty())
                event(token_kind::space, cursor, after, m_space);
            cursor = after;
            if (cursor != m_end)
                cursor = *cursor == '<' ? take_markup(cursor) : take_text(cursor);
        }
        finish();
    }

private:
    struct open_element {
        std::string_view name;
        const char* begin;
    };

    static std::string_view view(const char* begin, const char* end) {
        return {begin, static_cast<std::size_t>(end - begin)};
    }

    std::uint32_t offset(const char* at) const { return static_cast<std::uint32_t>(at - m_begin); }
    span bytes(const char* begin, const char* end) const { return {offset(begin), offset(end)}; }
    char byte(const char* at, std::ptrdiff_t further = 0) const {
        return m_end - at > further ? at[further] : '\0';
    }
    bool begins_with(const char* at, std::string_view text) const {
        return static_cast<std::size_t>(m_end - at) >= text.size() &&
               std::memcmp(at, text.data(), text.size()) == 0;
    }

    void fail(xml_error kind, const char* begin, const char* end, std::string_view subject = {},
              std::string_view element = {}) {
        xml_problem problem;
        problem.kind = kind;
        problem.line = m_line;
        problem.subject = subject;
        problem.bytes = bytes(begin, std::max(begin, std::min(end, m_end - 1)));
        problem.element = element;
        if (!m_tolerant)
            throw problem;
        m_scan.m_problems.push_back(std::move(problem));
    }

    void refuse_byte(const char* at) {
        const char subject = byte(at);
        fail(xml_error::unexpected_character, std::min(at, m_end), at + 1,
             std::string_view(&subject, 1));
    }

    void add(token_kind kind, const char* begin, const char* end, std::string_view value) {
        m_scan.m_tokens.push_back({kind, bytes(begin, end), value});
    }

    // Strict: the end of a start tag is noticed only by the next event that is no attribute and no
    // comment, so a comment directly after the tag comes before it.
    void event(token_kind kind, const char* begin, const char* end, std::string_view value) {
        if (!m_tag_closed)
            add(token_kind::start_tag_end, m_tag_end, m_tag_end, {});
        m_tag_closed = kind != token_kind::element_start;
        add(kind, begin, end, value);
    }

    const char* skip_space(const char* at) {
        for (; at != m_end && is_space(*at); ++at)
            m_line += *at == '\n';
        return at;
    }

    // Strict: three bytes of any kind may come first, usually a byte order mark.
    const char* take_header() {
        const char* at = m_begin;
        if (byte(at, 3) == '<')
            at += 3;
        if (!begins_with(at, "<?xml")) {
            fail(xml_error::no_header, at, at);
            return at;
        }
        const char* const begin = at;
        at += 5;
        while (m_end - at > 1 && *at != '<' && *at != '>' && !(*at == '?' && at[1] == '>'))
            ++at;
        if (m_end - at > 1 && *at != '?') {
            fail(xml_error::no_header, begin, at);
            return *at == '>' ? at + 1 : at;
        }
        if (m_end - at <= 2) {
            fail(xml_error::no_root, begin, at);
            return m_end;
        }
        at = skip_space(at + 2);
        if (at == m_end)
            fail(xml_error::no_root, at, at);
        return at;
    }

    const char* take_within_tag(const char* at) {
        switch (*at) {
        case '<':
            // The tag lacks its '>'.
            if (!m_tag_is_known_bad)
                refuse_byte(at);
            m_tag_is_known_bad = false;
            m_in_tag = false;
            m_tag_end = at;
            return at;
        case '>':
            m_in_tag = false;
            m_tag_is_known_bad = false;
            m_tag_end = at;
            return at + 1;
        case '/':
            return take_empty_end(at);
        default:
            return take_attribute(at);
        }
    }

    const char* take_empty_end(const char* at) {
        const char* const begin = at++;
        if (byte(at) != '>') {
            refuse_byte(at);
            return at;
        }
        m_tag_end = begin;
        if (m_open.empty()) {
            fail(xml_error::mismatched_end, begin, at + 1);
        } else {
            event(token_kind::element_end, begin, at + 1, m_open.back().name);
            m_open.pop_back();
        }
        m_in_tag = false;
        m_tag_is_known_bad = false;
        m_attributes.clear();
        return at + 1;
    }

    const char* take_markup(const char* at) {
        const char kind = byte(at, 1);
        if (kind == '/')
            return take_end_tag(at);
        if (begins_with(at, "<!--"))
            return take_section(at, 4, "-->", token_kind::comment);
        if (begins_with(at, "<![CDATA["))
            return take_section(at, 9, "]]>", token_kind::character);
        return take_start_tag(at);
    }

    // Strict: the whitespace before a comment or section begins its text, although it was reported.
    const char* take_section(const char* begin, std::size_t opening, std::string_view closing,
                             token_kind kind) {
        const char* const content = begin + opening;
        const std::size_t found = view(content, m_end).find(closing);
        if (found == std::string_view::npos) {
            fail(xml_error::unexpected_end, begin, content, {}, "comment");
            return m_end;
        }
        const char* const end = content + found;
        std::string_view value = view(content, end);
        if (!m_space.empty())
            value = m_scan.keep(std::string(m_space) += value);
        if (kind == token_kind::comment)
            add(kind, begin, end + 3, value);
        else
            event(kind, begin, end + 3, value);
        return end + 3;
    }

    const char* take_start_tag(const char* at) {
        // Strict: a second root is refused before its name is looked at.
        if (m_open.empty() && m_root_seen)
            fail(xml_error::data_after_root, at, at + 1);
        const char* const name = at + 1;
        if (!is_letter(byte(name))) {
            refuse_byte(name);
            return skip_foreign(at);
        }
        const char* end = name;
        while (end != m_end && is_name(*end))
            ++end;
        const std::string_view element = view(name, end);
        if (m_tolerant)
            close_forgotten(element, at);
        m_open.push_back({element, at});
        m_attributes.clear();
        event(token_kind::element_start, at, end, element);
        m_root_seen = true;
        m_in_tag = true;
        return end;
    }

    // Tolerant: a DOCTYPE, an instruction, or a '<' in a text.
    const char* skip_foreign(const char* at) {
        const char kind = byte(at, 1);
        if (kind != '!' && kind != '?') {
            event(token_kind::character, at, at + 1, view(at, at + 1));
            return at + 1;
        }
        const std::size_t end = view(at, m_end).find('>');
        return end == std::string_view::npos ? m_end : at + end + 1;
    }

    // Tolerant: a `msg` cannot be in another one, nor a `catalog`, so the open one lacks its end.
    void close_forgotten(std::string_view element, const char* at) {
        if (element != "msg" && element != "catalog" && element != "include")
            return;
        while (!m_open.empty() && m_open.back().name != "xmc" &&
               (element != "msg" || m_open.back().name != "catalog"))
            close_innermost(at);
    }

    void close_innermost(const char* at) {
        const open_element& inner = m_open.back();
        fail(xml_error::mismatched_end, inner.begin, inner.begin + 1 + inner.name.size(),
             inner.name, inner.name);
        event(token_kind::element_end, at, at, inner.name);
        m_open.pop_back();
    }

    // Strict: the tag stays open until its '>', so it may have attributes. An end tag with nothing
    // open counts as one that matches.
    const char* take_end_tag(const char* at) {
        const char* const name = at + 2;
        if (!is_letter(byte(name))) {
            refuse_byte(name);
            return skip_foreign(at);
        }
        const char* end = name;
        while (end != m_end && is_name(*end))
            ++end;
        const std::string_view element = view(name, end);
        m_in_tag = true;
        if (!m_open.empty()) {
            if (m_open.back().name != element) {
                if (!m_tolerant)
                    fail(xml_error::mismatched_end, at, end, element);
                if (!close_up_to(element, at, end))
                    return end;
            }
            m_open.pop_back();
        }
        if (end == m_end)
            fail(xml_error::unexpected_end, at, end);
        event(token_kind::element_end, at, end, element);
        return end;
    }

    // Tolerant: elements inside of the one that ends lack their own end. An end tag without any
    // open element of its name is left out.
    bool close_up_to(std::string_view element, const char* at, const char* end) {
        const auto is_it = [element](const open_element& open) { return open.name == element; };
        if (std::none_of(m_open.begin(), m_open.end(), is_it)) {
            fail(xml_error::mismatched_end, at, end, element);
            return false;
        }
        while (m_open.back().name != element)
            close_innermost(at);
        return true;
    }

    const char* take_attribute(const char* at) {
        if (!is_letter(*at)) {
            if (!m_tag_is_known_bad)
                refuse_byte(at);
            m_tag_is_known_bad = true;
            return at + 1;
        }
        const char* const name_end = std::find_if_not(at, m_end, is_name);
        const std::string_view name = view(at, name_end);
        const char* const begin = at;
        if (std::find(m_attributes.begin(), m_attributes.end(), name) != m_attributes.end())
            fail(xml_error::attribute_redefined, at, name_end, name);
        m_attributes.push_back(name);
        at = skip_space(name_end);
        if (byte(at) != '=') {
            if (!m_tag_is_known_bad)
                fail(xml_error::missing_equals, begin, name_end, name);
            m_tag_is_known_bad = true;
            return at;
        }
        at = skip_space(at + 1);
        const char quote = byte(at);
        if (quote != '"' && quote != '\'')
            return take_unquoted(begin, name, at);
        return take_value(begin, name, at + 1, quote);
    }

    const char* take_unquoted(const char* begin, std::string_view name, const char* at) {
        fail(xml_error::missing_quote, at, at);
        const char* const end = std::find_if(
            at, m_end, [](char c) { return is_space(c) || c == '>' || c == '/' || c == '<'; });
        add(token_kind::attribute_name, begin, begin + name.size(), name);
        add(token_kind::attribute_value, at, end, view(at, end));
        return end;
    }

    const char* take_value(const char* begin, std::string_view name, const char* at, char quote) {
        const char* const first = at;
        std::string composed;
        bool is_composed = false;
        const char* from = at;
        while (at != m_end && *at != quote) {
            if (*at == '<') {
                // The value lacks its quote.
                refuse_byte(at);
                m_tag_is_known_bad = true;
                break;
            }
            if (*at == '&') {
                const char* const reference = at;
                const char result = take_reference(at);
                composed.append(from, reference);
                composed += result;
                from = at;
                is_composed = true;
            } else {
                ++at;
            }
        }
        std::string_view value = view(first, at);
        if (is_composed)
            value = m_scan.keep(composed.append(from, at));
        add(token_kind::attribute_name, begin, begin + name.size(), name);
        add(token_kind::attribute_value, first, at, value);
        // Strict: a value that the end of the file cuts off is reported before it is an error.
        if (at == m_end)
            fail(xml_error::missing_quote, begin, begin + name.size(), name);
        return at == m_end || *at == '<' ? at : at + 1;
    }

    // Strict: a piece of text ends before two whitespace bytes in a row; a single one belongs to
    // it.
    const char* take_text(const char* at) {
        const char* const begin = at;
        if (*at == '>') {
            refuse_byte(at);
            ++at;
        }
        std::string composed;
        bool is_composed = false;
        const char* from = begin;
        while (at != m_end && *at != '<' && !(is_space(*at) && m_end - at > 1 && is_space(at[1]))) {
            if (*at == '&') {
                const char* const reference = at;
                const char result = take_reference(at);
                composed.append(from, reference);
                composed += result;
                from = at;
                is_composed = true;
            } else {
                ++at;
            }
        }
        std::string_view value = view(begin, at);
        if (is_composed)
            value = m_scan.keep(composed.append(from, at));
        event(token_kind::character, begin, at, value);
        return at;
    }

    // Moves past the ';'. In the tolerant reading an invalid reference is only its '&'.
    char take_reference(const char*& at) {
        for (const auto& entity : entities) {
            if (begins_with(at, entity.text)) {
                at += entity.text.size();
                return entity.result;
            }
        }
        if (byte(at, 1) == '#')
            return take_number(at);
        if (byte(at, 1) != '\0' && std::strchr("aglnq", byte(at, 1)) != nullptr)
            refuse_byte(at);
        else
            fail(xml_error::unknown_entity, at, at + 1);
        ++at;
        return '&';
    }

    // Strict: one byte. The radix of the decimal form is detected, so a leading 0 makes it octal.
    char take_number(const char*& at) {
        const char* const begin = at;
        const bool in_hexadecimal = byte(at, 2) == 'x';
        const char* const digits = at + (in_hexadecimal ? 3 : 2);
        const char* const end =
            std::find_if_not(digits, m_end, in_hexadecimal ? is_hexadecimal : is_digit);
        if (byte(end) != ';') {
            refuse_byte(end);
            at = begin + 1;
            return '&';
        }
        const auto count = static_cast<unsigned long>(end - digits);
        const auto value = tova::generic::convert::str_to_uint8(
            digits, count,
            in_hexadecimal ? tova::types::radix_t::hexadecimal : tova::types::radix_t::detect,
            false);
        at = end + 1;
        if (value > 127)
            m_scan.m_odd_references.push_back({odd_reference::above_127, bytes(begin, at), value});
        else if (!in_hexadecimal && count > 1 && *digits == '0')
            m_scan.m_odd_references.push_back({odd_reference::octal, bytes(begin, at), value});
        return static_cast<char>(value);
    }

    // Strict: the end of the file reports line 0.
    void finish() {
        if (m_open.empty())
            return;
        m_line = 0;
        if (!m_tolerant)
            fail(xml_error::unexpected_end, m_end - 1, m_end - 1);
        while (!m_open.empty()) {
            const open_element& inner = m_open.back();
            fail(xml_error::unexpected_end, inner.begin, inner.begin + 1 + inner.name.size(), {},
                 inner.name);
            m_tag_end = m_end;
            event(token_kind::element_end, m_end, m_end, inner.name);
            m_open.pop_back();
        }
    }

    scan& m_scan;
    const std::string_view m_bytes;
    const char* const m_begin;
    const char* const m_end;
    const bool m_tolerant;
    bool m_in_tag = false;
    bool m_tag_closed = true;
    bool m_tag_is_known_bad = false;
    bool m_root_seen = false;
    unsigned int m_line = 0;
    const char* m_tag_end = m_begin;
    std::string_view m_space;
    std::vector<open_element> m_open;
    std::vector<std::string_view> m_attributes;
};

scan::scan(const std::string& bytes) {
    const std::string_view all(bytes.c_str(), bytes.size() + 1);
    m_tokens.reserve(bytes.size() / 16 + 16);
    try {
        scanner(*this, all, false).run();
    } catch (const xml_problem& problem) {
        m_error = problem;
        m_tokens.clear();
        m_odd_references.clear();
        scanner(*this, all, true).run();
        if (m_problems.empty())
            m_problems.push_back(problem);
    }
}

}  // namespace tova_programs::xmc
