#include "cfg/model/ini_format.hpp"

#include <locale.h>

#include <algorithm>
#include <climits>
#include <cwchar>
#include <cwctype>
#include <set>
#include <string_view>
#include <utility>

// The two readers only look alike: they differ in whitespace, in what continues a value, in headers
// and in comments, so each has its own loop. A test compares both with the originals.

namespace tova_programs::cfg {

namespace {

// --- configparser ---

// The length of the whitespace character at a position in bytes; 0 if there is none. In Python,
// whitespace is the ASCII controls 9 to 13 and 28 to 31, the space, and 17 other characters.
std::size_t space_at(std::string_view text, std::size_t at) {
    const unsigned char first = static_cast<unsigned char>(text[at]);
    if ((first >= 9 && first <= 13) || (first >= 28 && first <= 32))
        return 1;
    if (first < 0xC2)
        return 0;
    static const std::string_view others[] = {
        "\xC2\x85",     "\xC2\xA0",     "\xE1\x9A\x80", "\xE2\x80\x80", "\xE2\x80\x81",
        "\xE2\x80\x82", "\xE2\x80\x83", "\xE2\x80\x84", "\xE2\x80\x85", "\xE2\x80\x86",
        "\xE2\x80\x87", "\xE2\x80\x88", "\xE2\x80\x89", "\xE2\x80\x8A", "\xE2\x80\xA8",
        "\xE2\x80\xA9", "\xE2\x80\xAF", "\xE2\x81\x9F", "\xE3\x80\x80"};
    for (const std::string_view each : others)
        if (text.compare(at, each.size(), each) == 0)
            return each.size();
    return 0;
}

// The number of bytes of whitespace at the beginning.
std::size_t leading_space(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size() && space_at(text, at) != 0)
        at += space_at(text, at);
    return at;
}

std::string_view stripped(std::string_view text) {
    text.remove_prefix(leading_space(text));
    for (bool is_done = false; !is_done;) {
        is_done = true;
        for (std::size_t size = 1; size <= std::min<std::size_t>(3, text.size()); ++size)
            if (space_at(text, text.size() - size) == size) {
                text.remove_suffix(size);
                is_done = false;
                break;
            }
    }
    return text;
}

std::size_t characters_in(std::string_view text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

class configparser_reader {
public:
    ini_reading read(std::string_view bytes) {
        std::size_t number = 0;
        while (!bytes.empty() && !m_has_ended) {
            const std::size_t end = std::min(bytes.find_first_of("\r\n"), bytes.size());
            read_line(bytes.substr(0, end), ++number);
            const bool is_pair = bytes.compare(end, 2, "\r\n") == 0;
            bytes.remove_prefix(std::min(end + (is_pair ? 2 : 1), bytes.size()));
        }
        for (foreign_value& each : m_result.values) {
            std::string& value = each.values[0];
            value.resize(value.find_last_not_of('\n') + 1);
        }
        add_defaults();
        return std::move(m_result);
    }

private:
    void read_line(std::string_view line, std::size_t number) {
        const std::string_view text = stripped(line);
        if (text.empty()) {
            if (m_has_option)
                m_result.values.back().values[0] += '\n';
            return;
        }
        if (text[0] == '#' || text[0] == ';')
            return;
        const std::size_t indent = characters_in(line.substr(0, leading_space(line)));
        if (m_has_option && indent > m_indent) {
            m_result.values.back().values[0] += '\n' + std::string(text);
            return;
        }
        m_indent = indent;
        const std::size_t bracket = text.rfind(']');
        if (text[0] == '[' && bracket != text.npos && bracket > 1)
            read_header(std::string(text.substr(1, bracket - 1)), number);
        else if (!m_has_section) {
            refuse(number, "a line before the first section");
            m_has_ended = true;  // reading goes on after other errors
        } else
            read_option(text, number);
    }

    void read_header(const std::string& name, std::size_t number) {
        if (!m_sections.insert(name).second && name != "DEFAULT")
            duplicate(number, "section [" + name + "]");
        else if (name != "DEFAULT")
            m_order.push_back(name);
        m_section = name;
        m_has_section = true;
        m_has_option = false;
    }

    void read_option(std::string_view text, std::size_t number) {
        const std::size_t sign = text.find_first_of("=:");
        if (sign == text.npos)
            return refuse(number, "a line without \"=\" or \":\"");
        const std::string name(stripped(text.substr(0, sign)));
        if (name.empty())
            refuse(number, "no key before the \"" + std::string(1, text[sign]) + '"');
        if (!m_options.insert({m_section, configparser_key(name)}).second)
            duplicate(number, "key " + name);
        foreign_value found;
        found.path = {m_section, name};
        found.values.emplace_back(stripped(text.substr(sign + 1)));
        found.line = number;
        m_result.values.push_back(std::move(found));
        m_has_option = true;
    }

    void refuse(std::size_t number, const std::string& reason) {
        m_result.refusals.push_back({number, reason, false});
    }
    void duplicate(std::size_t number, const std::string& what) {
        m_result.refusals.push_back({number, what + " for the second time", true});
    }

    void add_defaults() {
        std::vector<foreign_value> defaults;
        for (const foreign_value& each : m_result.values)
            if (each.path[0] == "DEFAULT")
                defaults.push_back(each);
        for (const std::string& section : m_order)
            for (const foreign_value& each : defaults)
                if (m_options.count({section, configparser_key(each.path[1])}) == 0) {
                    m_result.values.push_back(each);
                    m_result.values.back().path[0] = section;
                }
    }

    ini_reading m_result;
    std::string m_section;
    bool m_has_section = false;
    bool m_has_ended = false;
    bool m_has_option = false;  // since the last header
    std::size_t m_indent = 0;   // of that option, in characters
    std::set<std::string> m_sections;
    std::vector<std::string> m_order;
    std::set<std::pair<std::string, std::string>> m_options;
};

// --- inih ---

constexpr std::size_t longest_line = 199;
constexpr std::size_t longest_name = 49;  // of a section, and of a key that is continued

// The C locale's whitespace.
bool is_space(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

std::string_view without_space_before(std::string_view text) {
    while (!text.empty() && is_space(text.front()))
        text.remove_prefix(1);
    return text;
}

std::string_view without_space_after(std::string_view text) {
    while (!text.empty() && is_space(text.back()))
        text.remove_suffix(1);
    return text;
}

// The first of the signs, or a ";" after whitespace; the size if there is neither.
std::size_t find_or_comment(std::string_view text, std::string_view signs) {
    for (std::size_t i = 0; i < text.size(); ++i)
        if (signs.find(text[i]) != signs.npos || (text[i] == ';' && i > 0 && is_space(text[i - 1])))
            return i;
    return text.size();
}

class inih_reader {
public:
    ini_reading read(std::string_view bytes) {
        const bool has_mark = bytes.compare(0, 3, "\xEF\xBB\xBF") == 0;
        std::size_t number = 1;
        for (std::size_t at = 0; at < bytes.size();) {
            const std::size_t feed = bytes.find('\n', at);
            const bool has_end = feed != bytes.npos && feed - at < longest_line;
            const std::size_t end = has_end ? feed + 1 : std::min(at + longest_line, bytes.size());
            const std::size_t begin = at == 0 && has_mark ? 3 : at;
            const std::string_view line = bytes.substr(begin, end - begin);
            read_line(line.substr(0, line.find('\0')), number);
            number += has_end ? 1 : 0;
            at = end;
        }
        return std::move(m_result);
    }

private:
    // A line, or a part of a line that is too long.
    void read_line(std::string_view line, std::size_t number) {
        std::string_view text = without_space_before(without_space_after(line));
        if (text.empty() || text[0] == ';' || text[0] == '#')
            return;
        if (!m_name.empty() && is_space(line[0]))
            return continue_value(text, number);  // a ";" in it starts no comment
        if (text[0] == '[') {
            const std::size_t end = 1 + find_or_comment(text.substr(1), "]");
            if (end >= text.size() || text[end] != ']')
                return refuse(number, "a header without \"]\"");
            m_section = text.substr(1, std::min(end - 1, longest_name));
            m_name.clear();
            return;
        }
        const std::size_t sign = find_or_comment(text, "=:");
        if (sign >= text.size() || text[sign] == ';')
            return refuse(number, "a line without \"=\" or \":\"");
        const std::string_view name = without_space_after(text.substr(0, sign));
        text.remove_prefix(sign + 1);
        text = text.substr(0, find_or_comment(text, ""));
        m_name = name.substr(0, longest_name);
        add(name, without_space_after(without_space_before(text)), number);
    }

    void continue_value(std::string_view text, std::size_t number) {
        for (std::size_t i = m_result.values.size(); i-- > 0;) {
            foreign_value& each = m_result.values[i];
            if (each.path.back() != m_name || each.path.size() != (m_section.empty() ? 1u : 2u) ||
                (each.path.size() == 2 && each.path[0] != m_section))
                continue;
            each.values[0] += '\n' + std::string(text);
            return;
        }
        add(m_name, text, number);  // the rest of a name that is too long
    }

    void add(std::string_view name, std::string_view value, std::size_t number) {
        foreign_value found;
        if (!m_section.empty())
            found.path.push_back(m_section);
        found.path.emplace_back(name);
        found.values.emplace_back(value);
        found.line = number;
        m_result.values.push_back(std::move(found));
    }

    void refuse(std::size_t number, const std::string& reason) {
        m_result.refusals.push_back({number, reason, false});
    }

    ini_reading m_result;
    std::string m_section;
    std::string m_name;  // that an indented line continues
};

}  // namespace

const char* name_of(ini_dialect dialect) {
    return dialect == ini_dialect::inih ? "inih" : "configparser";
}

std::string configparser_key(const std::string& name) {
    // The library's own mapping changes ASCII letters only; Python changes all.
    static const locale_t unicode = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    std::string result;
    std::mbstate_t in = {};
    std::mbstate_t out = {};
    const locale_t before = unicode == nullptr ? nullptr : ::uselocale(unicode);
    for (std::size_t at = 0; at < name.size();) {
        wchar_t character = 0;
        // NOLINTNEXTLINE(concurrency-mt-unsafe): the state is an object of ours
        const std::size_t size = std::mbrtowc(&character, &name[at], name.size() - at, &in);
        if (size == 0 || size > name.size() - at) {  // a NUL byte, or not UTF-8
            result += name[at++];
            in = std::mbstate_t();
            continue;
        }
        char bytes[MB_LEN_MAX];
        const wchar_t lower =
            static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(character)));
        // NOLINTNEXTLINE(concurrency-mt-unsafe): as above
        result.append(bytes, std::wcrtomb(bytes, lower, &out));
        at += size;
    }
    if (before != nullptr)
        ::uselocale(before);
    return result;
}

ini_reading read_ini(ini_dialect dialect, const std::string& bytes) {
    if (dialect == ini_dialect::inih)
        return inih_reader().read(bytes);
    return configparser_reader().read(bytes);
}

}  // namespace tova_programs::cfg
