#include "cfg/scanner/document.hpp"

#include <utility>

// The scanner makes the same steps as the loader and appends a record for each thing that it
// passes:
//
//     between   spaces, line ends and comments     `[`: header; any other token: key
//     header    a name up to `]`                   between
//     key       up to a plain `=`                  empty: between; ends in `[]`: array; else value
//     value     up to the line end                 between
//     array     up to a line end that does not     between
//               follow a comma
//
// Comments are recognized between entries and in values, and nowhere else. Bytes that only get
// copied form one token: to the loader, words, numbers and most signs make no difference.

namespace tova_programs::cfg {

namespace {

bool is_separator(char c) {
    return c == '.' || c == '/' || c == '\\';
}

// The bytes that begin or end a token of their own.
bool is_special(char c) {
    return std::string_view(" \t\n\r\"*/=<>:+-#,[]").find(c) != std::string_view::npos;
}

// Spaces and line ends are dropped from keys and headers unless they are in quotes.
bool is_dropped(token_kind kind) {
    return kind == token_kind::space || kind == token_kind::line_end;
}

}  // namespace

class scanner {
public:
    explicit scanner(document& result) : m_result(result), m_bytes(result.m_bytes) {}

    void run() {
        m_result.m_sections.emplace_back();
        while (m_at < m_bytes.size())
            read_entry();
    }

private:
    // The token at the current position. At the end of the bytes there is none: the caller asks
    // `at_end` first.
    token next(token_role role) {
        const std::size_t begin = m_at;
        token found = {token_kind::text, role, true, {begin, begin}, {}};
        found.kind = kind_at(found.is_closed);
        found.bytes.end = m_at;
        found.text = found.bytes;
        if (found.kind == token_kind::string) {
            ++found.text.begin;
            if (found.is_closed)
                --found.text.end;
        }
        m_result.m_tokens.push_back(found);
        return found;
    }

    bool at_end() const { return m_at >= m_bytes.size(); }

    // Moves past the token at the current position. Long because it is the whole table of tokens.
    token_kind kind_at(bool& is_closed) {
        const char first = m_bytes[m_at++];
        const char second = at_end() ? '\0' : m_bytes[m_at];
        switch (first) {
        case ' ':
            while (!at_end() && m_bytes[m_at] == ' ')
                ++m_at;
            return token_kind::space;
        case '\t':
            return token_kind::space;
        case '\n':
            return token_kind::line_end;
        case '\r':
            if (second != '\n')
                return token_kind::text;
            ++m_at;
            return token_kind::line_end;
        case '"':
            is_closed = skip_string();
            return token_kind::string;
        case '#':
            return token_kind::comment_start;
        case '[':
            return token_kind::open_bracket;
        case ']':
            return token_kind::close_bracket;
        case ',':
            return token_kind::comma;
        case '=':
            return second == '=' ? pair(token_kind::operation) : token_kind::equals;
        case '/':
            if (second == '/')
                return pair(token_kind::comment_start);
            return second == '=' ? pair(token_kind::operation) : token_kind::text;
        case '*':
            // Contract: "*/" alone starts a comment, too.
            if (second == '/')
                return pair(token_kind::comment_start);
            return second == '=' ? pair(token_kind::operation) : token_kind::text;
        case '<':
        case '>':
        case ':':
        case '+':
        case '-':
            return second == '=' ? pair(token_kind::operation) : token_kind::text;
        default:
            while (!at_end() && !is_special(m_bytes[m_at]))
                ++m_at;
            return token_kind::text;
        }
    }

    token_kind pair(token_kind kind) {
        ++m_at;
        return kind;
    }

    // The byte after a backslash is not examined. Returns whether the string is closed.
    bool skip_string() {
        while (!at_end() && m_bytes[m_at] != '"')
            m_at += m_bytes[m_at] == '\\' ? 2 : 1;
        if (at_end()) {
            m_at = m_bytes.size();
            return false;
        }
        ++m_at;
        return true;
    }

    void append(std::string& target, const token& one) const {
        target += m_result.source(one.text);
    }

    void read_entry() {
        for (;;) {
            if (at_end())
                return;
            const token first = next(token_role::between);
            if (first.kind == token_kind::comment_start) {
                read_comment();
            } else if (first.kind == token_kind::open_bracket) {
                m_result.m_tokens.back().role = token_role::header;
                return read_header(first);
            } else if (!is_dropped(first.kind)) {
                return read_key(first);
            }
        }
    }

    // The line end is left to the caller.
    void read_comment() {
        std::vector<token>& tokens = m_result.m_tokens;
        tokens.back().role = token_role::comment;
        comment found;
        found.tokens = tokens.size() - 1;
        found.bytes = tokens.back().bytes;
        while (!at_end()) {
            const token one = next(token_role::comment);
            if (one.kind == token_kind::line_end) {
                tokens.pop_back();
                m_at = one.bytes.begin;
                break;
            }
            found.bytes.end = one.bytes.end;
        }
        m_result.m_comments.push_back(found);
    }

    void read_header(const token& first) {
        section found;
        found.bytes = first.bytes;
        found.is_closed = false;
        found.tokens = m_result.m_tokens.size() - 1;
        while (!at_end() && !found.is_closed) {
            const token one = next(token_role::header);
            found.is_closed = one.kind == token_kind::close_bracket;
            if (!found.is_closed && !is_dropped(one.kind))
                append(found.name, one);
        }
        found.bytes.end = m_at;
        const std::size_t feed = m_bytes.find('\n', m_at);
        found.end = m_bytes.find_first_not_of(" \t\r", m_at) == feed && feed != m_bytes.npos
                        ? feed + 1
                        : m_at;
        m_prefix = found.name.empty() ? "" : found.name + '.';
        m_result.m_sections.push_back(std::move(found));
    }

    void read_key(token one) {
        entry found;
        found.section = m_result.m_sections.size() - 1;
        found.tokens = m_result.m_tokens.size() - 1;
        found.bytes = found.key_bytes = {one.bytes.begin, one.bytes.begin};
        m_result.m_tokens.back().role = token_role::key;
        while (one.kind != token_kind::equals) {
            if (!is_dropped(one.kind)) {
                append(found.name, one);
                found.key_bytes.end = one.bytes.end;
            }
            if (at_end())
                break;
            one = next(token_role::key);
        }
        found.value_bytes = {m_at, m_at};
        found.bytes.end = found.end = m_at;
        // Contract: without a key, what follows the `=` is read as the next key.
        if (!found.name.empty()) {
            const std::size_t size = found.name.size();
            found.is_array = size >= 2 && found.name.compare(size - 2, 2, "[]") == 0;
            if (found.is_array)
                found.name.resize(size - 2);
            read_value(found);
        }
        found.full_name = m_prefix + found.name;
        found.key = path_of(found.full_name);
        found.tokens_end = m_result.m_tokens.size();
        m_result.m_sections.back().end = found.end;
        m_result.m_entries.push_back(std::move(found));
    }

    void read_value(entry& found) {
        value_piece piece;
        std::vector<value_piece> own;
        bool after_comma = false;
        bool is_first = true;
        while (!at_end()) {
            const token one = next(token_role::value);
            if (one.kind == token_kind::line_end) {
                if (!found.is_array || !after_comma)
                    break;
                continue;
            }
            if (one.kind == token_kind::space)
                continue;
            if (one.kind == token_kind::comment_start) {
                read_comment();
                continue;
            }
            if (is_first)
                found.value_bytes.begin = one.bytes.begin;
            is_first = false;
            found.value_bytes.end = one.bytes.end;
            if (found.is_array && one.kind == token_kind::comma) {
                own.push_back(std::move(piece));
                piece = value_piece();
                after_comma = true;
                continue;
            }
            if (piece.bytes.size() == 0)
                piece.bytes.begin = one.bytes.begin;
            piece.bytes.end = one.bytes.end;
            append(piece.text, one);
            after_comma = false;
        }
        found.end = m_at;
        if (!is_first)
            found.bytes.end = found.value_bytes.end;
        found.is_stored = !piece.text.empty();
        if (found.is_stored)
            own.push_back(std::move(piece));
        if (found.is_array)
            keep_elements(found, std::move(own));
        else
            found.values = std::move(own);
    }

    // Contract: an array whose last element is empty is dropped, but its other elements come first
    // in the next array that is stored.
    void keep_elements(entry& found, std::vector<value_piece> own) {
        if (found.is_stored) {
            found.inherited = m_pending.size();
            found.values = std::move(m_pending);
            m_pending.clear();
        }
        for (value_piece& each : own) {
            if (!found.is_stored)
                m_pending.push_back(each);
            found.values.push_back(std::move(each));
        }
    }

    document& m_result;
    const std::string& m_bytes;
    std::size_t m_at = 0;
    std::string m_prefix;
    std::vector<value_piece> m_pending;
};

document::document(std::string path, std::string bytes)
    : m_path(std::move(path)), m_bytes(std::move(bytes)) {
    scanner(*this).run();
}

std::string path_of(std::string_view key) {
    // Contract: a separator at the very end starts no further name.
    if (!key.empty() && is_separator(key.back()))
        key.remove_suffix(1);
    std::string path(key);
    for (char& c : path) {
        if (is_separator(c))
            c = '.';
        else if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return path;
}

std::string key_with_path(const std::string& path) {
    return !path.empty() && path.back() == '.' ? path + '.' : path;
}

std::string element_path(const entry& array, std::size_t index) {
    return path_of(array.full_name + '.' + std::to_string(index));
}

std::vector<stored_node> stored_nodes(const document& file) {
    std::vector<stored_node> result;
    for (std::size_t i = 0; i < file.entries().size(); ++i) {
        const entry& each = file.entries()[i];
        if (!each.is_stored)
            continue;
        if (!each.is_array) {
            result.push_back({each.key, 1, true, each.values[0].text, i, 0});
            continue;
        }
        result.push_back({each.key, 3, false, "", i, 0});
        for (std::size_t k = 0; k < each.values.size(); ++k)
            result.push_back({element_path(each, k), 1, true, each.values[k].text, i, k});
    }
    return result;
}

}  // namespace tova_programs::cfg
