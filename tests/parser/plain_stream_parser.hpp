// A plain model of `xml_stream_parser`: it reads one byte at a time, needs no file and is as simple
// as possible. The test with random documents compares the parser with it.
#pragma once

#include <tova/generic/convert/str_to_x.hpp>
#include <tova/parser/xml_stream_parser.hpp>
#include <tova/types/radix.hpp>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <deque>
#include <list>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace test_support {

class plain_stream_parser {
public:
    using node = tova::parser::xml_stream_parser::node;
    using error_type = tova::parser::xml_stream_parser::error_type;

    // The string is the file, and it grows like one.
    plain_stream_parser(const std::string& file, unsigned open_depth)
        : m_file(file), m_open_depth(open_depth), m_buffer(65536, '\0'), m_ids(1, 0) {}

    int status = 0;
    unsigned line = 1;
    std::string root;

    std::size_t parse_offset() const { return m_position - m_end + m_committed; }
    bool has_node() const { return !m_queue.empty() && m_queue.front()->ready; }
    std::size_t queue_size() const {
        std::size_t count = 0;
        while (count < m_queue.size() && m_queue[count]->ready)
            ++count;
        return count;
    }

    void parse() {
        if (status >= 10 || m_finished)
            return;
        status = m_usable ? 0 : 2;
        if (m_usable && (m_header_done || take_header()))
            do_parse();
    }

    // The queue must contain a node that is ready.
    node pop() {
        const node first = *m_queue.front();
        m_queue.pop_front();
        if (status <= 1 && !has_node())
            do_parse();
        return first;
    }

    // The effect on the queue of a pop while no node is ready.
    void lose_first() {
        if (!m_queue.empty())
            m_queue.pop_front();
    }

    void recover(const std::vector<std::string>& names) {
        if (root.empty() || names.empty()) {
            status = root.empty() ? 10 : 2;
            return;
        }
        m_attribute_names.clear();
        m_in_tag = m_expect_close = m_in_comment = m_start_waits = false;
        while (m_elements.size() > m_names.size())
            m_elements.pop_back();
        m_queue.clear();
        m_ids.resize(1);
        m_usable = false;
        const unsigned line_before = line;
        bool is_found = false;
        while (!(is_found = find_start_tag(names))) {
            line = line_before;
            commit();
            if (load() == 0) {
                status = 2;
                return;
            }
        }
        line = line_before;
        status = 0;
        m_usable = true;
    }

private:
    struct element {
        std::string name;
        std::shared_ptr<node> record;
    };

    // The cursor may be one past the end, over a byte that has yet to arrive.
    bool at_end() const { return m_cursor >= m_end; }
    std::size_t remaining() const { return at_end() ? 0 : m_end - m_cursor; }
    char byte(std::size_t offset = 0) const { return m_buffer[m_cursor + offset]; }
    bool begins_with(const std::string& text) const {
        return remaining() >= text.size() && m_buffer.compare(m_cursor, text.size(), text) == 0;
    }
    void commit() {
        m_committed = m_cursor;
        m_committed_line = line;
    }
    bool wait() {
        status = 1;
        return false;
    }

    std::size_t load() {
        if (m_finished)
            return 0;
        status = 0;
        if (m_file.size() == m_position)
            return 0;
        const std::size_t delta = m_file.size() - m_position;
        if (m_committed != 0 && delta > m_buffer.size() - m_end) {
            std::copy(m_buffer.begin() + static_cast<std::ptrdiff_t>(m_committed),
                      m_buffer.begin() + static_cast<std::ptrdiff_t>(m_end), m_buffer.begin());
            m_end -= m_committed;
            m_cursor = m_committed = 0;
        }
        const std::size_t count = std::min(delta, m_buffer.size() - m_end);
        m_buffer.replace(m_end, count, m_file, m_position, count);
        m_end += count;
        m_position += count;
        return count;
    }

    bool take_header() {
        if (load() == 0)
            return false;
        if (remaining() < 50)
            return wait();
        if (byte(3) == '<')
            m_cursor += 3;
        skip_whitespace();
        if (remaining() <= 5 || !begins_with("<?xml")) {
            status = 12;
            return false;
        }
        m_cursor += 5;
        while (!at_end() && byte() != '?' && (remaining() == 1 || byte(1) != '>'))
            ++m_cursor;
        if (!at_end())
            m_cursor += 2;
        m_header_done = true;
        skip_whitespace();
        commit();
        return true;
    }

    bool is_full(std::size_t limit) const {
        return m_queue.size() >= limit && m_queue[0]->ready && m_queue[1]->ready;
    }

    void do_parse() {
        while (!m_finished && !is_full(100)) {
            try {
                parse_next();
            } catch (error_type error) {
                status = error;
                release_start();
            }
            if (m_finished || status > 1 || load() == 0)
                return;
        }
    }

    void parse_next() {
        m_cursor = m_committed;
        line = m_committed_line;
        if (m_in_comment)
            finish_comment();
        while (!at_end() && take_construct()) {
            ++m_cursor;
            commit();
        }
    }

    bool take_construct() {
        switch (byte()) {
        case '\n':
            ++line;
            return true;
        case ' ':
        case '\t':
        case '\r':
            return true;
        case '<':
            if (m_in_tag)
                throw error_type(6);
            return take_markup();
        case '>':
            return take_closing();
        case '/':
            return m_in_tag ? take_empty_element_end() : take_text();
        default:
            return m_in_tag ? take_attribute() : take_text();
        }
    }

    bool take_markup() {
        if (remaining() < 2)
            return wait();
        return byte(1) == '/' ? take_end_tag() : byte(1) == '!' ? take_comment() : take_start_tag();
    }

    bool take_start_tag() {
        if (is_full(101)) {
            commit();
            return false;
        }
        ++m_cursor;
        m_in_tag = true;
        const std::string name = parse_name();
        if (name.empty()) {
            if (!at_end())
                throw error_type(6);
            m_in_tag = false;
            return wait();
        }
        m_start_waits = m_names.size() < m_open_depth && name != "include";
        if (m_start_waits) {
            if (root.empty())
                root = name;
            m_names.push_back(name);
        }
        const auto made = std::make_shared<node>();
        made->type = error_type(1);
        made->ready = false;
        made->name = name;
        made->line = line;
        made->id = m_next_id++;
        made->parent = m_ids.back();
        m_ids.push_back(made->id);
        m_queue.push_back(made);
        m_elements.push_back({name, made});
        m_attribute_names.clear();
        return true;
    }

    void release_start() {
        if (m_start_waits && !m_elements.empty())
            m_elements.back().record->ready = true;
        m_start_waits = false;
    }

    bool take_closing() {
        if (m_in_tag) {
            m_in_tag = false;
            release_start();
            return true;
        }
        if (!m_expect_close)
            throw error_type(6);
        m_expect_close = false;
        if (m_finished)
            status = 3;
        return !m_finished;
    }

    bool take_empty_element_end() {
        ++m_cursor;
        if (at_end())
            return false;
        if (byte() != '>')
            throw error_type(6);
        if (m_elements.empty())
            throw error_type(4);
        m_in_tag = m_start_waits = false;
        close_innermost();
        return true;
    }

    void close_innermost() {
        m_elements.back().record->type = error_type(0);
        m_elements.back().record->ready = true;
        m_elements.pop_back();
        m_attribute_names.clear();
        pop_id();
    }

    void pop_id() {
        if (m_ids.size() > 1)
            m_ids.pop_back();
    }

    bool take_end_tag() {
        m_cursor += 2;
        const std::string name = parse_name();
        if (name.empty())
            return wait();
        if (m_elements.size() <= m_open_depth) {
            if (m_names.empty() || m_names.back() != name)
                throw error_type(4);
            const bool is_root = name == root;
            const auto made = std::make_shared<node>();
            made->type = error_type(is_root ? 3 : 0);
            made->ready = true;
            made->name = name;
            made->line = line;
            made->id = m_names.size();
            made->parent = 0;
            m_queue.push_back(made);
            pop_id();
            if (is_root)
                m_finished = true;
            else
                status = 0;
            if (!m_elements.empty())
                m_elements.pop_back();
            m_names.pop_back();
        } else {
            if (m_elements.back().name != name)
                throw error_type(4);
            close_innermost();
        }
        m_expect_close = true;
        return true;
    }

    bool take_comment() {
        commit();
        if (remaining() < 4)
            return wait();
        if (!begins_with("<!--"))
            return true;
        m_cursor += 4;
        m_in_comment = true;
        return finish_comment() || wait();
    }

    bool finish_comment() {
        while (remaining() >= 4 && (byte() != '-' || byte(1) != '-')) {
            line += byte() == '\n';
            ++m_cursor;
        }
        const bool is_complete = remaining() >= 4;
        if (is_complete) {
            if (byte(2) != '>')
                throw error_type(6);
            m_cursor += 3;
            m_in_comment = false;
        }
        commit();
        return is_complete;
    }

    bool take_attribute() {
        const std::string name = parse_name();
        if (name.empty()) {
            if (!at_end())
                throw error_type(6);
            return wait();
        }
        ++m_cursor;
        if (at_end())
            return wait();
        if (byte() != '=')
            throw error_type(9);
        ++m_cursor;
        std::string value;
        if (!parse_value(value))
            return wait();
        if (!m_attribute_names.insert(name).second)
            throw error_type(5);
        if (!m_elements.empty())
            m_elements.back().record->attributes.emplace_back(name, value);
        return true;
    }

    bool take_text() {
        std::string text;
        while (!at_end() && byte() != '<') {
            if (byte() == '&') {
                const std::string one = parse_entity();
                if (one.empty())
                    return wait();
                text += one;
            } else {
                text += byte();
            }
            ++m_cursor;
        }
        if (at_end())
            return wait();
        --m_cursor;
        if (m_elements.size() < 2)
            throw error_type(6);
        m_elements.back().record->text = text;
        return true;
    }

    static bool is_white_space(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

    void skip_whitespace() {
        for (; !at_end() && is_white_space(byte()); ++m_cursor)
            line += byte() == '\n';
    }

    std::string parse_name() {
        skip_whitespace();
        std::string name;
        for (; !at_end(); ++m_cursor) {
            const auto c = static_cast<unsigned char>(byte());
            if (c < 0x80 && c != '_' && std::isalnum(c) == 0)
                break;
            name += byte();
        }
        if (at_end())
            return "";
        if (m_cursor != 0)
            --m_cursor;
        skip_whitespace();
        return name;
    }

    bool parse_value(std::string& value) {
        skip_whitespace();
        if (at_end())
            return false;
        const char quote = byte();
        if (quote != '\'' && quote != '"')
            throw error_type(7);
        ++m_cursor;
        while (!at_end() && byte() != quote) {
            if (byte() == '<')
                throw error_type(6);
            if (byte() == '&') {
                value += parse_entity();
                if (at_end())
                    break;
            } else {
                value += byte();
            }
            ++m_cursor;
        }
        return !at_end();
    }

    std::string parse_entity() {
        if (remaining() < 5)
            return "";
        ++m_cursor;
        std::string result;
        switch (byte()) {
        case 'l':
            result = rest_of_entity("lt;", '<');
            break;
        case 'g':
            result = rest_of_entity("gt;", '>');
            break;
        case 'q':
            result = remaining() < 6 ? "" : rest_of_entity("quot;", '"');
            break;
        case 'n':
            result = remaining() < 6 ? "" : rest_of_entity("nbsp;", ' ');
            break;
        case 'a':
            if (remaining() < 5)
                return "";
            if (begins_with("amp;")) {
                result = rest_of_entity("amp;", '&');
            } else if (begins_with("apos;")) {
                result = rest_of_entity("apos;", '\'');
            } else {
                ++m_cursor;
                if (remaining() >= 5)
                    throw error_type(6);
            }
            break;
        case '#':
            result = character_reference();
            break;
        default:
            throw error_type(6);
        }
        if (!result.empty())
            commit();
        return result;
    }

    std::string rest_of_entity(const std::string& letters, char result) {
        for (const char letter : letters) {
            if (at_end() || byte() != letter)
                throw error_type(6);
            ++m_cursor;
        }
        --m_cursor;
        return std::string(1, result);
    }

    std::string character_reference() {
        ++m_cursor;
        const bool is_hexadecimal = byte() == 'x';
        m_cursor += is_hexadecimal;
        const std::size_t begin = m_cursor;
        while (!at_end()) {
            const auto c = static_cast<unsigned char>(byte());
            if (c >= 0x80 || (is_hexadecimal ? std::isxdigit(c) : std::isdigit(c)) == 0)
                break;
            ++m_cursor;
        }
        if (at_end())
            return "";
        if (byte() != ';')
            throw error_type(6);
        using tova::types::radix_t;
        const unsigned char value = tova::generic::convert::str_to_uint8(
            m_buffer.data() + begin, m_cursor - begin,
            is_hexadecimal ? radix_t::hexadecimal : radix_t::detect, false);
        return std::string(1, static_cast<char>(value));
    }

    bool find_start_tag(const std::vector<std::string>& names) {
        while (!at_end()) {
            while (!at_end() && byte() != '<')
                ++m_cursor;
            if (at_end())
                return false;
            m_committed = m_cursor;
            if (remaining() == 1)
                return false;
            ++m_cursor;
            if (byte() == '/' || byte() == '!')
                continue;
            const std::string name = parse_name();
            if (!name.empty() && std::find(names.begin(), names.end(), name) != names.end()) {
                m_cursor = m_committed;
                return true;
            }
            if (!at_end())
                ++m_cursor;
        }
        return false;
    }

    const std::string& m_file;
    const std::size_t m_open_depth;
    std::string m_buffer;
    std::size_t m_position = 0;
    std::size_t m_cursor = 0;
    std::size_t m_committed = 0;
    std::size_t m_end = 0;
    unsigned m_committed_line = 1;
    bool m_in_tag = false;
    bool m_expect_close = false;
    bool m_in_comment = false;
    bool m_header_done = false;
    bool m_finished = false;
    bool m_usable = true;
    bool m_start_waits = false;
    unsigned long m_next_id = 1;
    std::deque<std::shared_ptr<node>> m_queue;
    std::vector<element> m_elements;  // a node that was popped is only kept alive by its element
    std::vector<std::string> m_names;
    std::vector<unsigned long> m_ids;
    std::set<std::string> m_attribute_names;
};

}  // namespace test_support
