// A second, simple reader and writer of configuration files, to compare the real ones with.
//
// It first splits the whole text into tokens and keeps all nodes in one flat map by path. Speed
// doesn't matter here.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace cfg_oracle {

typedef std::vector<std::string> path;

struct node {
    unsigned word = 0;
    bool is_nil = false;
    bool is_step = true;  // its value is `true`
    std::string text;
};

typedef std::map<path, node> nodes;

enum class kind { text, space, line_end, comment, open, close, equals, comma };

struct piece {
    kind what;
    std::string text;
    bool quoted;
};

inline bool is_letter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
inline bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// Splits a text into tokens. Long because each kind of token is a branch of one chain, in the order
// in which they are tried.
inline std::vector<piece> cut(const std::string& text) {
    std::vector<piece> pieces;
    std::size_t i = 0;
    const auto add = [&](kind what, std::size_t size) {
        pieces.push_back(piece{what, text.substr(i, size), false});
        i += size;
    };
    while (i < text.size()) {
        const char c = text[i];
        const std::string two = text.substr(i, 2);
        std::size_t run = 1;
        if (c == ' ') {
            while (i + run < text.size() && text[i + run] == ' ')
                ++run;
            add(kind::space, run);
        } else if (c == '\t') {
            add(kind::space, 1);
        } else if (c == '\n') {
            add(kind::line_end, 1);
        } else if (two == "\r\n") {
            add(kind::line_end, 2);
        } else if (c == '#') {
            add(kind::comment, 1);
        } else if (two == "//" || two == "*/") {
            add(kind::comment, 2);
        } else if (two == "==" || two == "<=" || two == ">=" || two == ":=" || two == "+=" ||
                   two == "-=" || two == "*=" || two == "/=") {
            add(kind::text, 2);
        } else if (c == '=') {
            add(kind::equals, 1);
        } else if (c == '[') {
            add(kind::open, 1);
        } else if (c == ']') {
            add(kind::close, 1);
        } else if (c == ',') {
            add(kind::comma, 1);
        } else if (c == '"') {
            std::string content;
            ++i;
            while (i < text.size() && text[i] != '"') {
                content += text[i];
                if (text[i] == '\\' && i + 1 < text.size())
                    content += text[++i];
                ++i;
            }
            ++i;
            pieces.push_back(piece{kind::text, content, true});
        } else if (is_letter(c)) {
            while (i + run < text.size() && is_letter(text[i + run]))
                ++run;
            add(kind::text, run);
        } else if (is_digit(c)) {
            while (i + run < text.size() && is_digit(text[i + run]))
                ++run;
            add(kind::text, run);
        } else {
            add(kind::text, 1);
        }
    }
    return pieces;
}

inline path split(const std::string& key) {
    path result(1);
    for (const char c : key) {
        if (c == '.' || c == '/' || c == '\\')
            result.emplace_back();
        else
            result.back() += static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    }
    if (result.size() > 1 && result.back().empty())
        result.pop_back();
    return result;
}

inline node& touch(nodes& tree, const std::string& key) {
    const path whole = split(key);
    for (std::size_t size = 1; size < whole.size(); ++size)
        tree[path(whole.begin(), whole.begin() + static_cast<long>(size))];
    return tree[whole];
}

inline void store(nodes& tree, const std::string& key, const std::string& text) {
    node& stored = touch(tree, key);
    stored.word = 1;
    stored.is_nil = stored.is_step = false;
    stored.text = text;
}

inline void store_array(nodes& tree, const std::string& key, const path& values) {
    node& head = touch(tree, key);
    head.word = 3;
    head.is_nil = true;
    head.is_step = false;
    for (std::size_t i = 0; i < values.size(); ++i)
        store(tree, key + "." + std::to_string(i), values[i]);
}

inline bool vanishes(kind what) {
    return what == kind::space || what == kind::line_end;
}

// Comments are skipped on the way and not removed beforehand, because "#" and "//" are part of a
// key.
//
// Long because it is one loop: an oracle that reads the file from top to bottom is easier to check
// than one split into pieces.
inline nodes read(const std::string& text) {
    const std::vector<piece> all = cut(text);
    nodes tree;
    std::string prefix;
    path list;
    std::size_t i = 0;
    const auto to_line_end = [&] {
        while (i < all.size() && all[i].what != kind::line_end)
            ++i;
    };
    while (i < all.size()) {
        if (vanishes(all[i].what)) {
            ++i;
            continue;
        }
        if (all[i].what == kind::comment) {
            to_line_end();
            continue;
        }
        if (all[i].what == kind::open) {
            prefix.clear();
            for (++i; i < all.size() && all[i].what != kind::close; ++i)
                if (!vanishes(all[i].what))
                    prefix += all[i].text;
            ++i;
            if (!prefix.empty())
                prefix += ".";
            continue;
        }
        std::string key;
        for (; i < all.size() && all[i].what != kind::equals; ++i)
            if (!vanishes(all[i].what))
                key += all[i].text;
        ++i;
        if (key.empty())
            continue;
        const bool is_array = key.size() > 1 && key.substr(key.size() - 2) == "[]";
        std::string value;
        bool goes_on = false;
        while (i < all.size()) {
            const piece& next = all[i];
            if (next.what == kind::comment) {
                to_line_end();
                continue;
            }
            ++i;
            if (next.what == kind::line_end) {
                if (!goes_on)
                    break;
            } else if (is_array && next.what == kind::comma) {
                list.push_back(value);
                value.clear();
                goes_on = true;
            } else if (next.what != kind::space) {
                value += next.text;
                goes_on = false;
            }
        }
        if (value.empty())
            continue;
        if (is_array) {
            list.push_back(value);
            store_array(tree, prefix + key.substr(0, key.size() - 2), list);
            list.clear();
        } else {
            store(tree, prefix + key, value);
        }
    }
    return tree;
}

// The nodes with the names of a recursive listing, in its order.
struct entry {
    std::string name;
    std::string component;
    node value;
};

inline std::vector<entry> list(const nodes& tree) {
    std::vector<entry> entries;
    for (const auto& each : tree) {
        std::string name;
        for (const std::string& segment : each.first)
            name += (name.empty() ? "" : ".") + segment;
        entries.push_back(entry{name, name.substr(name.rfind('.') + 1), each.second});
    }
    return entries;
}

// The nodes in the form of `config_support::content`.
inline std::vector<std::string> show(const nodes& tree) {
    std::vector<std::string> lines;
    for (const entry& each : list(tree))
        lines.push_back(each.name + ": " + std::to_string(each.value.word) + " " +
                        (each.value.is_nil    ? "nil"
                         : each.value.is_step ? "true"
                                              : "'" + each.value.text + "'"));
    return lines;
}

inline std::string quoted(const std::string& text) {
    return text.find_first_of(" \r\n\t") == std::string::npos ? text : "\"" + text + "\"";
}

// Whether a name reads as a number other than 0: whitespace, a sign, a prefix for the base, and a
// run of digits that are not all 0.
inline bool reads_as_number(const std::string& text) {
    std::size_t i = text.find_first_not_of(" \t\n\v\f\r");
    if (i == std::string::npos)
        return false;
    if (text[i] == '-' || text[i] == '+')
        ++i;
    std::string digits = "0123456789";
    if (i < text.size() && text[i] == '0') {
        ++i;
        digits = "01234567";
        if (i < text.size() && (text[i] == 'x' || text[i] == 'X')) {
            ++i;
            digits = "0123456789abcdefABCDEF";
        } else if (i < text.size() && (text[i] == 'b' || text[i] == 'B')) {
            ++i;
            digits = "01";
        }
    }
    for (; i < text.size() && digits.find(text[i]) != std::string::npos; ++i)
        if (text[i] != '0')
            return true;
    return false;
}

inline std::string write(const nodes& tree) {
    const std::vector<entry> all = list(tree);
    std::string text;
    for (const entry& section : all) {
        if (section.value.word != 0)
            continue;
        text += "[" + quoted(section.name) + "]\n";
        for (std::size_t i = 0; i < all.size(); ++i) {
            const entry& e = all[i];
            if (e.value.word == 0 || e.name.size() <= section.name.size() ||
                e.name.substr(section.name.size() + 1) != e.component)
                continue;
            if (e.value.word != 3) {
                text += quoted(e.component) + "=" + quoted(e.value.text) + "\n";
                continue;
            }
            text += quoted(e.component) + "[]=";
            if (i + 1 < all.size() && all[i + 1].component == "0") {
                text += quoted(all[++i].value.text);
                while (i + 1 < all.size() && reads_as_number(all[i + 1].component))
                    text += "," + quoted(all[++i].value.is_step ? "1" : all[i].value.text);
            }
            text += "\n";
        }
        text += "\n";
    }
    return text;
}

}  // namespace cfg_oracle
