/// @file
/// Changes single entries in the text of a settings file and keeps everything else.
///
///     settings_text text("[server]\nport = 80  # plain\n");
///     text.set("server.port", {"8080"}, false);
///     text.str();  // "[server]\nport = 8080  # plain\n"
///
/// An object belongs to one thread at a time.
#pragma once

#include <tova/abi.hpp>
#include <tova/config/config_token.hpp>
#include <tova/config/file_item.hpp>
#include <tova/extras/_private/option_values.hpp>
#include <tova/strings/ustring.hpp>

#include <cstddef>
#include <string>
#include <vector>

namespace TOVA_2_18 {
namespace extras {
namespace _private {

// Finds entries with the library's tokens, by the rules of docs/configuration.md. It does not have
// to handle every unusual file correctly, because the caller loads the text and compares the values
// before it stores it.
class settings_text {
public:
    explicit settings_text(const strings::ustring8& text) : m_text(text), m_item("") { scan(); }

    const strings::ustring8& str() const { return m_text; }

    /// Replaces the value of a key, or adds an entry. Without values, it removes the entries of the
    /// key. Returns an empty string, or the reason why a file cannot hold the value.
    std::string set(const std::string& key, const std::vector<std::string>& values, bool is_list) {
        std::string written;
        for (const std::string& value : values) {
            if (value.empty())
                return "a settings file cannot hold an empty value";
            std::string one;
            if (!write_value(value, one))
                return "a settings file cannot hold " + value;
            written += (written.empty() ? "" : ", ") + one;
        }
        // The last entry counts. Earlier entries are removed, because those of a list would add
        // elements.
        const entry* last = nullptr;
        for (const entry& one : m_entries)
            if (one.key == key)
                last = &one;
        if (last != nullptr && last->is_list == is_list && !values.empty()) {
            const entry kept = *last;
            m_text.replace(kept.value, kept.value_end - kept.value, written);
            scan();
            remove(key, kept.begin);
            return std::string();
        }
        remove(key, strings::ustring8::npos);
        if (!values.empty())
            add(key, (is_list ? "[] = " : " = ") + written + '\n');
        return std::string();
    }

private:
    struct entry {
        std::string key;  // with its section, in lower case
        bool is_list;
        std::size_t begin;      // of the key
        std::size_t value;      // the first byte of the value, or where it would be
        std::size_t value_end;  // past the value, before spaces and a comment
        std::size_t end;        // past the line end
    };
    struct section {
        std::string prefix;  // with a dot at its end; empty for the top level
        std::size_t end;     // past the header or the last entry
    };

    // The tokens that the reader drops, either outside of values or everywhere.
    static bool is_space(config::config_token::tok_types type) {
        return type == config::config_token::T_SPACE || type == config::config_token::T_TABCHAR;
    }
    static bool is_comment(config::config_token::tok_types type) {
        return type == config::config_token::T_POUND || type == config::config_token::T_FSFS;
    }

    config::config_token::tok_types next() { return m_item.get_token(m_text, m_at, m_token); }

    void scan() {
        m_entries.clear();
        m_sections.clear();
        m_at = 0;
        std::string prefix;
        while (m_at < m_text.size()) {
            config::config_token::tok_types type = next();
            while (is_space(type) || type == config::config_token::T_NEWLINE || is_comment(type)) {
                if (is_comment(type))
                    m_item.parse_comment(m_text, m_at);
                type = next();
            }
            if (type == config::config_token::T_END)
                break;
            if (type == config::config_token::T_SBRACKET) {
                prefix = read_until(next(), config::config_token::T_EBRACKET);
                prefix = canonical(prefix + (prefix.empty() ? "" : "."));
                while (m_at < m_text.size() && is_space(peek()))
                    next();
                if (m_at < m_text.size() && peek() == config::config_token::T_NEWLINE)
                    next();
                m_sections.push_back(section{prefix, m_at});
            } else {
                scan_entry(prefix, type);
            }
        }
    }

    void scan_entry(const std::string& prefix, config::config_token::tok_types type) {
        entry found = {std::string(), false, m_token.start, 0, 0, 0};
        found.key = read_until(type, config::config_token::T_EQ);
        if (found.key.size() >= 2 && found.key.compare(found.key.size() - 2, 2, "[]") == 0) {
            found.is_list = true;
            found.key.resize(found.key.size() - 2);
        }
        found.key = prefix + canonical(found.key);
        while (m_at < m_text.size() && is_space(peek()))
            next();
        found.value = found.value_end = m_at;
        bool is_after_comma = false;
        for (type = next(); type != config::config_token::T_END; type = next()) {
            if (type == config::config_token::T_NEWLINE && !(found.is_list && is_after_comma))
                break;
            if (is_comment(type)) {
                m_item.parse_comment(m_text, m_at);
            } else if (!is_space(type) && type != config::config_token::T_NEWLINE) {
                found.value_end = m_at;
                is_after_comma =
                    type == config::config_token::T_NON_ALPHA_NUM && m_token.text == ",";
            }
        }
        found.end = m_at;
        m_entries.push_back(found);
        if (m_sections.empty())
            m_sections.push_back(section{std::string(), 0});
        m_sections.back().end = m_at;
    }

    config::config_token::tok_types peek() {
        unsigned int at = m_at;
        return m_item.get_token(m_text, at, m_token);
    }

    // Returns the text of the tokens up to one of the given type. The reader collects keys and
    // headers in the same way.
    std::string read_until(config::config_token::tok_types type,
                           config::config_token::tok_types stop) {
        std::string collected;
        for (; type != stop && type != config::config_token::T_END; type = next())
            if (!is_space(type) && type != config::config_token::T_NEWLINE)
                collected += m_token.text;
        return collected;
    }

    static std::string canonical(std::string key) {
        for (char& byte : key)
            if (byte == '/' || byte == '\\')
                byte = '.';
        return lower_case(key);
    }

    // Quotes preserve spaces, commas and comment marks. Nothing preserves a double quote. A
    // backslash at the end would escape the closing quote, so it follows the quotes.
    static bool write_value(const std::string& value, std::string& written) {
        const char plain[] =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_.:-+%@";
        if (value.find_first_not_of(plain) == std::string::npos) {
            written = value;
            return true;
        }
        if (value.find('"') != std::string::npos)
            return false;
        const std::size_t last = value.find_last_not_of('\\');
        const std::size_t inside = last == std::string::npos ? 0 : last + 1;
        written =
            (inside == 0 ? std::string() : quoted(value.substr(0, inside))) + value.substr(inside);
        return true;
    }

    // Removes all entries of a key, with their lines, except the one that begins at `kept`.
    void remove(const std::string& key, std::size_t kept) {
        for (std::size_t i = m_entries.size(); i-- > 0;) {
            const entry& one = m_entries[i];
            if (one.key != key || one.begin == kept)
                continue;
            std::size_t begin = one.begin;
            while (begin > 0 && (m_text[begin - 1] == ' ' || m_text[begin - 1] == '\t'))
                --begin;
            m_text.erase(begin, one.end - begin);
        }
        scan();
    }

    // Adds an entry after the others in its section. Adds a missing section at the end.
    void add(const std::string& key, const std::string& rest) {
        const std::size_t dot = key.rfind('.');
        const std::string prefix = dot == std::string::npos ? "" : key.substr(0, dot + 1);
        const std::string line = key.substr(prefix.size()) + rest;
        std::size_t at = strings::ustring8::npos;
        for (const section& one : m_sections)
            if (one.prefix == prefix)
                at = one.end;
        if (at == strings::ustring8::npos && !prefix.empty()) {
            if (!m_text.empty())
                m_text += m_text.back() == '\n' ? "\n" : "\n\n";
            m_text += '[' + key.substr(0, dot) + "]\n" + line;
        } else if (at == strings::ustring8::npos) {
            m_text.insert(0, line);
        } else {
            m_text.insert(at, (at > 0 && m_text[at - 1] != '\n' ? "\n" : "") + line);
        }
        scan();
    }

    strings::ustring8 m_text;
    config::file_item m_item;  // splits text into tokens; reads no file
    config::config_token m_token;
    unsigned int m_at = 0;
    std::vector<entry> m_entries;
    std::vector<section> m_sections;
};

}  // namespace _private
}  // namespace extras
}  // namespace TOVA_2_18
