// A second tokenizer, written step by step from the documented grammar and without regard to speed.
// The tests and the fuzz target compare `xml_token_stream` with it, token by token.
#pragma once

#include <tova/generic/convert/str_to_x.hpp>
#include <tova/parser/xml_token_stream.hpp>

#include <cstddef>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace test_support {

class token_model {
public:
    typedef tova::parser::xml_token_stream::token token;
    typedef std::vector<std::pair<int, std::string>> tokens;

    struct outcome {
        int type;
        unsigned line;
        std::string text;
    };

    explicit token_model(const std::string& text) : m_text(text) {}

    outcome parse() {
        try {
            read_document();
        } catch (const outcome& error) {
            return error;
        }
        return {m_open.empty() ? 0 : 1, 0, ""};
    }

    const tokens& found() const { return m_tokens; }

private:
    // Bytes past the end read as 0.
    char at(std::size_t position) const {
        return position < m_text.size() ? m_text[position] : '\0';
    }
    bool at_end() const { return m_at >= m_text.size(); }
    bool begins(const char* word) const {
        return m_text.compare(m_at, std::string(word).size(), word) == 0;
    }

    [[noreturn]] void fail(int type, const std::string& text = "") const {
        throw outcome{type, m_line, text};
    }
    [[noreturn]] void fail_here() const { fail(5, std::string(1, at(m_at))); }

    static bool is_white(char byte) {
        return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
    }
    static bool is_letter(char byte) {
        return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
    }
    static bool is_digit(char byte) { return byte >= '0' && byte <= '9'; }
    static bool is_hex_digit(char byte) {
        return is_digit(byte) || (byte >= 'a' && byte <= 'f') || (byte >= 'A' && byte <= 'F');
    }

    std::string take_white() {
        std::string run;
        for (; !at_end() && is_white(at(m_at)); ++m_at) {
            m_line += at(m_at) == '\n';
            run += at(m_at);
        }
        return run;
    }

    // The tokens of an event. All except attributes and comments end a start tag that is still
    // open.
    void add(int type, const std::string& value) {
        const bool is_quiet = type == token::comment || type == token::attribute_name ||
                              type == token::attribute_value;
        if (!is_quiet && m_end_is_due)
            m_tokens.emplace_back(token::start_tag_end, "");
        m_tokens.emplace_back(type, value);
        if (!is_quiet)
            m_end_is_due = type == token::element_start;
    }

    void read_document() {
        read_header();
        std::string buffer;
        while (true) {
            buffer = take_white();
            if (!buffer.empty() && !m_in_tag)
                add(token::space, buffer);
            if (at_end())
                return;
            if (at(m_at) == '<')
                read_markup(buffer);
            else if (at(m_at) == '>' && !m_in_tag)
                fail(5, ">");
            else if (at(m_at) == '>')
                m_in_tag = false;
            else if (at(m_at) == '/' && m_in_tag)
                read_short_end();
            else if (m_in_tag)
                read_attribute();
            else {
                read_characters();
                continue;
            }
            ++m_at;
            if (at_end())
                return;
        }
    }

    void read_header() {
        if (m_text.size() >= 4 && m_text[3] == '<')
            m_at = 3;
        if (m_text.size() - m_at < 5 || !begins("<?xml"))
            fail(4);
        for (m_at += 5;; ++m_at) {
            if (m_at + 1 >= m_text.size())
                fail(3);
            if (at(m_at) == '?' && at(m_at + 1) == '>')
                break;
            if (at(m_at) == '>' || at(m_at) == '<')
                fail(4);
        }
        m_at += 2;
        if (at_end())
            fail(3);
        take_white();
        if (at_end())
            fail(3);
    }

    void read_markup(std::string& buffer) {
        if (m_in_tag)
            fail(5, "<");
        m_in_tag = true;
        if (begins("</")) {
            m_at += 2;
            const std::string name = read_name();
            if (!m_open.empty() && m_open.back() != name)
                fail(2, name);
            if (!m_open.empty())
                m_open.pop_back();
            if (m_at + 1 >= m_text.size())
                fail(1);
            add(token::element_end, name);
        } else if (begins("<!--")) {
            read_section(4, "-->", token::comment, buffer);
        } else if (begins("<![CDATA[")) {
            read_section(9, "]]>", token::character, buffer);
        } else {
            if (m_open.empty() && m_root_seen)
                fail(10);
            ++m_at;
            const std::string name = read_name();
            m_open.push_back(name);
            m_attributes.clear();
            add(token::element_start, name);
            m_root_seen = true;
        }
    }

    // The text keeps the whitespace before the section, although it was already reported.
    void read_section(std::size_t opening, const char* closing, int type, std::string& buffer) {
        m_at += opening;
        const std::size_t end = m_text.find(closing, m_at);
        if (end == std::string::npos)
            fail(1);
        buffer += m_text.substr(m_at, end - m_at);
        m_in_tag = false;
        add(type, buffer);
        m_at = end + 2;
    }

    void read_short_end() {
        ++m_at;
        if (at(m_at) != '>')
            fail_here();
        if (m_open.empty())
            fail(2);
        add(token::element_end, m_open.back());
        m_in_tag = false;
        m_open.pop_back();
        m_attributes.clear();
    }

    void read_attribute() {
        const std::string name = read_name();
        if (!m_attributes.insert(name).second)
            fail(9, name);
        ++m_at;
        take_white();
        if (at(m_at) != '=')
            fail(8, name);
        ++m_at;
        take_white();
        const std::string value = read_value();
        add(token::attribute_name, name);
        add(token::attribute_value, value);
        if (at_end())
            fail(6, name);
    }

    void read_characters() {
        std::string text;
        for (; !at_end() && at(m_at) != '<'; ++m_at) {
            if (at(m_at) == '&')
                text += read_reference();
            else if (is_white(at(m_at)) && m_at + 1 < m_text.size() && is_white(at(m_at + 1)))
                break;
            else
                text += at(m_at);
        }
        add(token::character, text);
    }

    // Leaves the position at the last byte of the name.
    std::string read_name() {
        if (at_end() || !is_letter(at(m_at)))
            fail_here();
        std::string name;
        for (; !at_end() && (is_letter(at(m_at)) || is_digit(at(m_at)) || at(m_at) == '_'); ++m_at)
            name += at(m_at);
        --m_at;
        return name;
    }

    std::string read_value() {
        const char quote = at(m_at);
        if (quote != '"' && quote != '\'')
            fail(6);
        std::string value;
        for (++m_at; !at_end() && at(m_at) != quote; ++m_at) {
            if (at(m_at) == '<')
                fail(5, "<");
            if (at(m_at) == '&')
                value += read_reference();
            else
                value += at(m_at);
        }
        return value;
    }

    // Leaves the position at the closing ";".
    char read_reference() {
        if (at(m_at + 1) == '#')
            return read_number();
        static const struct {
            const char* text;
            char byte;
        } named[] = {{"&amp;", '&'}, {"&apos;", '\''}, {"&gt;", '>'},
                     {"&lt;", '<'},  {"&nbsp;", ' '},  {"&quot;", '"'}};
        bool letter_is_known = false;
        for (const auto& one : named) {
            if (begins(one.text)) {
                m_at += std::string(one.text).size() - 1;
                return one.byte;
            }
            letter_is_known = letter_is_known || at(m_at + 1) == one.text[1];
        }
        if (!letter_is_known)
            fail(7);
        // The error is at the first byte at which no word with this beginning matches.
        m_reference_failed = true;
        fail_here();
    }

    char read_number() {
        m_at += 2;
        const bool is_hex = at(m_at) == 'x';
        m_at += is_hex;
        std::string digits;
        for (; !at_end() && (is_hex ? is_hex_digit(at(m_at)) : is_digit(at(m_at))); ++m_at)
            digits += at(m_at);
        if (at(m_at) != ';')
            fail_here();
        // Parsed from a terminated string, like the numbers in the library.
        const auto radix = static_cast<tova::types::radix_t::base>(is_hex ? 16 : 0);
        return static_cast<char>(
            tova::generic::convert::str_to_uint8(digits.c_str(), digits.size(), radix, false));
    }

    const std::string& m_text;
    std::size_t m_at = 0;
    unsigned m_line = 0;
    bool m_in_tag = false;
    bool m_root_seen = false;
    bool m_end_is_due = false;
    bool m_reference_failed = false;
    std::vector<std::string> m_open;
    std::set<std::string> m_attributes;
    tokens m_tokens;

public:
    // Whether the result is an error in a name that only begins like a known entity. It is left
    // open which of its bytes the error shows.
    bool reference_failed() const { return m_reference_failed; }
};

}  // namespace test_support
