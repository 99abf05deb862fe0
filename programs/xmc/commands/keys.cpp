#include "xmc/commands/keys.hpp"

#include "support/exit_code.hpp"
#include "support/text_file.hpp"
#include "xmc/model/documents.hpp"
#include "xmc/output.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <utility>

namespace tova_programs::xmc {

namespace {

using json = nlohmann::ordered_json;
using keys_by_catalog = std::map<std::string, std::map<std::string, std::string>>;

// The keys of each catalog with a text for people, preferably the English one.
keys_by_catalog keys_of(const std::vector<std::string>& paths) {
    keys_by_catalog result;
    for_each_document(paths, [&result](const document& file) {
        for (const catalog& of : file.catalogs())
            for (const message& each : file.messages(of)) {
                std::string& text = result[std::string(of.name)][std::string(each.name)];
                if (text.empty() || of.locale == "en")
                    text = readable_text(file, each);
            }
    });
    return result;
}

// A C++ string literal.
std::string literal(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            (result += '\\') += c;
        else if (byte < ' ' || byte == 0x7F)
            result +=
                {'\\', static_cast<char>('0' + (byte >> 6)),
                 static_cast<char>('0' + (byte >> 3 & 7)), static_cast<char>('0' + (byte & 7))};
        else
            result += c;
    }
    return result + '"';
}

// A comment of one line: what would end it or go on after it is left out.
std::string comment(const std::string& text) {
    std::size_t size = std::min<std::size_t>(text.size(), 80);
    // A character must not be cut.
    while (size < text.size() && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80)
        --size;
    std::string result = text.substr(0, size);
    for (auto feed = result.find("\\n"); feed != result.npos; feed = result.find("\\n", feed))
        result.replace(feed, 2, " | ");
    for (char& c : result)
        if (static_cast<unsigned char>(c) < ' ' || c == '\\')
            c = ' ';
    return result;
}

}  // namespace

std::string identifier_of(const std::string& key) {
    static const std::set<std::string> reserved = {
        "and",      "asm",      "auto",    "bool",      "break",   "case",      "catch",  "char",
        "class",    "const",    "default", "delete",    "do",      "double",    "else",   "enum",
        "explicit", "export",   "extern",  "false",     "float",   "for",       "friend", "goto",
        "if",       "inline",   "int",     "long",      "mutable", "namespace", "new",    "not",
        "operator", "or",       "private", "protected", "public",  "register",  "return", "short",
        "signed",   "sizeof",   "static",  "struct",    "switch",  "template",  "this",   "throw",
        "true",     "try",      "typedef", "typename",  "union",   "unsigned",  "using",  "virtual",
        "void",     "volatile", "while",   "xor"};
    std::string result;
    for (const char c : key) {
        const bool is_valid =
            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
        // Two "_" in a row are reserved for the implementation.
        if (is_valid && (c != '_' || result.empty() || result.back() != '_'))
            result += c;
        else if (result.empty() || result.back() != '_')
            result += '_';
    }
    if (result.empty() || (result[0] >= '0' && result[0] <= '9') || result[0] == '_')
        result.insert(0, "key" + std::string(!result.empty() && result[0] == '_' ? "" : "_"));
    if (reserved.count(result) != 0)
        result += '_';
    return result;
}

namespace {

void write_header(const keys_by_catalog& all, const std::string& name_space, std::ostream& out) {
    out << "// The keys of the message catalogs. Made by tova-xmc keys --header; do not edit.\n"
           "#pragma once\n\nnamespace "
        << name_space << " {\n";
    std::set<std::string> catalogs;
    const auto unique = [](std::string name, std::set<std::string>& used) {
        while (!used.insert(name).second)
            name += name.back() == '_' ? "2" : "_2";
        return name;
    };
    for (const auto& each : all) {
        out << "\nnamespace " << unique(identifier_of(each.first), catalogs) << " {\n";
        std::set<std::string> used = {"catalog"};
        out << "constexpr char catalog[] = " << literal(each.first) << ";\n";
        for (const auto& keyed : each.second)
            out << "constexpr char " << unique(identifier_of(keyed.first), used)
                << "[] = " << literal(keyed.first) << ";  // " << comment(keyed.second) << '\n';
        out << "}\n";
    }
    out << "\n}  // namespace " << name_space << '\n';
}

}  // namespace

int run_keys(const keys_options& options, std::ostream& out) {
    const keys_by_catalog all = keys_of(options.paths);
    if (options.as_header) {
        std::ostringstream text;
        write_header(all, options.name_space, text);
        if (options.as_json)
            write_json(out, {{"text", text.str()}});
        else
            out << text.str();
        return exit_clean;
    }
    if (options.as_json) {
        json result = json::object();
        for (const auto& each : all)
            for (const auto& keyed : each.second)
                result[each.first].push_back(keyed.first);
        write_json(out, result);
        return exit_clean;
    }
    for (const auto& each : all)
        for (const auto& keyed : each.second)
            out << each.first << '/' << readable_key(keyed.first) << '\n';
    return exit_clean;
}

namespace {

namespace fs = std::filesystem;

// A string literal of C++ code, from its prefix to its closing quote.
struct literal_at {
    std::string text;
    std::size_t begin;
    std::size_t end;
};

bool is_word(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

// The literal whose opening quote is at a position. Escapes other than the simple ones stay as they
// are, since keys rarely have any. The end is npos if there is none.
literal_at literal_from(const std::string& code, std::size_t quote) {
    literal_at found;
    found.begin = quote;
    while (found.begin > 0 && is_word(code[found.begin - 1]))
        --found.begin;
    std::size_t i = quote;
    if (quote > found.begin && code[quote - 1] == 'R') {
        const auto open = code.find('(', i);
        const std::string closing = ')' + code.substr(i + 1, open - i - 1) + '"';
        const auto close = open == code.npos ? open : code.find(closing, open);
        found.end = code.npos;
        if (close == code.npos)
            return found;
        found.text = code.substr(open + 1, close - open - 1);
        i = close + closing.size() - 1;
    } else {
        for (++i; i < code.size() && code[i] != '"' && code[i] != '\n'; ++i) {
            if (code[i] == '\\' && i + 1 < code.size())
                ++i;
            found.text += code[i];
        }
    }
    // The suffix of a string or a view.
    found.end = std::min(i + 1, code.size());
    while (found.end < code.size() && is_word(code[found.end]))
        ++found.end;
    return found;
}

// The string literals of C++ code, outside of comments. In the code, comments and the insides of
// literals become spaces, so that what is left is easy to search.
std::vector<literal_at> literals_of(std::string& code) {
    const std::string before = code;
    std::vector<literal_at> result;
    const auto clear = [&code](std::size_t begin, std::size_t end) {
        std::fill(code.begin() + static_cast<std::ptrdiff_t>(begin),
                  code.begin() + static_cast<std::ptrdiff_t>(std::min(end, code.size())), ' ');
    };
    for (std::size_t i = 0; i < before.size(); ++i) {
        const std::size_t begin = i;
        if (before.compare(i, 2, "//") == 0) {
            i = std::min(before.find('\n', i), before.size());
            clear(begin, i);
        } else if (before.compare(i, 2, "/*") == 0) {
            i = std::min(before.find("*/", i + 2), before.size() - 2) + 1;
            clear(begin, i + 1);
        } else if (before[i] == '\'') {
            // Between digits it separates them.
            if (i > 0 && is_word(before[i - 1]) && before[i - 1] != 'u' && before[i - 1] != 'U' &&
                before[i - 1] != 'L' && before[i - 1] != '8')
                continue;
            for (++i; i < before.size() && before[i] != '\'' && before[i] != '\n'; ++i)
                i += before[i] == '\\';
            clear(begin, i + 1);
        } else if (before[i] == '"') {
            literal_at found = literal_from(before, i);
            if (found.end == before.npos)
                return result;
            i = found.end - 1;
            clear(found.begin, found.end);
            result.push_back(std::move(found));
        }
    }
    return result;
}

bool is_source(const fs::path& path) {
    static const std::set<std::string> extensions = {".c",  ".cc",  ".cpp", ".cxx", ".h",
                                                     ".hh", ".hpp", ".hxx", ".ipp", ".inl"};
    return extensions.count(path.extension().native()) != 0;
}

std::vector<std::string> source_files(const std::vector<std::string>& paths) {
    std::vector<std::string> files;
    for (const std::string& path : paths) {
        std::error_code error;
        if (!fs::is_directory(path, error)) {
            files.push_back(path);
            continue;
        }
        for (const auto& entry : fs::recursive_directory_iterator(path, error))
            if (entry.is_regular_file(error) && is_source(entry.path()))
                files.push_back(entry.path().native());
    }
    std::sort(files.begin(), files.end());
    return files;
}

struct use {
    std::string catalog;  // empty: any
    std::string key;      // of a computed one: what it begins with
    std::string place;
    bool is_computed = false;
};

// An argument of a call: literals that the compiler joins, or an expression that may contain some.
struct call_argument {
    std::string text;
    bool has_literal = false;
    bool is_literal = false;
    bool begins_with_literal = false;
};

// The calls of functions in one file.
class use_finder {
public:
    use_finder(const std::string& file, const std::vector<std::string>& functions)
        : m_file(file), m_functions(functions), m_bytes(read_file(file)), m_lines(m_bytes),
          m_code(m_bytes), m_literals(literals_of(m_code)) {}

    const std::vector<literal_at>& literals() const { return m_literals; }

    std::vector<use> run() {
        for (const std::string& name : m_functions)
            for (auto at = m_code.find(name); at != m_code.npos; at = m_code.find(name, at + 1)) {
                const std::size_t open = m_code.find_first_not_of(" \t\n", at + name.size());
                if (open != m_code.npos && m_code[open] == '(' &&
                    (at == 0 || !is_word(m_code[at - 1])))
                    take_call(open + 1);
            }
        std::sort(m_uses.begin(), m_uses.end(),
                  [](const auto& a, const auto& b) { return a.first < b.first; });
        std::vector<use> result;
        for (auto& each : m_uses)
            result.push_back(std::move(each.second));
        return result;
    }

private:
    void take_call(std::size_t begin) {
        std::vector<call_argument> arguments;
        std::size_t from = begin;
        std::size_t depth = 0;
        for (std::size_t i = begin; i < m_code.size(); ++i) {
            const char c = m_code[i];
            if (c == '(' || c == '[' || c == '{')
                ++depth;
            if (depth == 0 && (c == ',' || c == ')')) {
                arguments.push_back(argument(from, i));
                from = i + 1;
                if (c == ')')
                    break;
            }
            if (depth != 0 && (c == ')' || c == ']' || c == '}'))
                --depth;
        }
        if (!arguments.empty() && arguments[0].has_literal)
            add(begin, arguments);
    }

    // function("catalog", "key") or function("key"). A first literal before something without any
    // is a catalog whose key is a variable, or a key with values: nothing is known about it.
    void add(std::size_t begin, const std::vector<call_argument>& arguments) {
        const bool has_catalog = arguments.size() > 1 && arguments[0].is_literal;
        if (has_catalog && !arguments[1].has_literal)
            return;
        const call_argument& key = arguments[has_catalog ? 1 : 0];
        use found;
        found.catalog = has_catalog ? arguments[0].text : "";
        found.key = key.is_literal || key.begins_with_literal ? key.text : "";
        found.is_computed = !key.is_literal;
        found.place = m_file + ':' + std::to_string(m_lines.at(first_literal(begin)->begin).line);
        m_uses.emplace_back(begin, std::move(found));
    }

    std::vector<literal_at>::const_iterator first_literal(std::size_t begin) const {
        return std::lower_bound(m_literals.begin(), m_literals.end(), begin,
                                [](const literal_at& a, std::size_t b) { return a.begin < b; });
    }

    call_argument argument(std::size_t begin, std::size_t end) const {
        call_argument result;
        std::size_t at = begin;
        bool is_first_run = true;
        for (auto next = first_literal(begin); next != m_literals.end() && next->end <= end;
             ++next) {
            const literal_at& each = *next;
            const std::string between = without_spaces(at, each.begin);
            if (!result.has_literal)
                result.begins_with_literal = between.empty() || is_string_type(between);
            else if (!between.empty())
                is_first_run = false;
            result.has_literal = true;
            if (is_first_run)
                result.text += each.text;
            at = each.end;
        }
        const std::string rest = without_spaces(at, end);
        result.is_literal = result.has_literal && is_first_run && result.begins_with_literal &&
                            (rest.empty() || rest == ")" || rest == "}");
        return result;
    }

    // `ustring8("key")` is the same as the literal.
    static bool is_string_type(const std::string& text) {
        const std::string name = text.substr(text.rfind(':') + 1);
        for (const char* const each :
             {"string", "string_view", "ustring8", "ustring16", "ustring32"})
            if (name == std::string(each) + '(' || name == std::string(each) + '{')
                return true;
        return false;
    }

    std::string without_spaces(std::size_t begin, std::size_t end) const {
        std::string text = m_code.substr(begin, end - begin);
        text.erase(std::remove_if(text.begin(), text.end(),
                                  [](char c) { return c == ' ' || c == '\n' || c == '\t'; }),
                   text.end());
        return text;
    }

    const std::string& m_file;
    const std::vector<std::string>& m_functions;
    const std::string m_bytes;
    const line_index m_lines;
    std::string m_code;  // the bytes without comments and literals
    const std::vector<literal_at> m_literals;
    std::vector<std::pair<std::size_t, use>> m_uses;
};

bool has_key(const keys_by_catalog& all, const use& each) {
    if (!each.catalog.empty()) {
        const auto found = all.find(each.catalog);
        return found != all.end() && found->second.count(each.key) != 0;
    }
    return std::any_of(all.begin(), all.end(),
                       [&each](const auto& one) { return one.second.count(each.key) != 0; });
}

// A key that an expression in a source may name, because it begins so.
bool may_be_computed(const std::vector<use>& uses, const std::string& catalog,
                     const std::string& key) {
    return std::any_of(uses.begin(), uses.end(), [&](const use& each) {
        return each.is_computed && !each.key.empty() &&
               (each.catalog.empty() || each.catalog == catalog) &&
               key.compare(0, each.key.size(), each.key) == 0;
    });
}

}  // namespace

int run_scan(const scan_options& options, std::ostream& out) {
    const keys_by_catalog all = keys_of(options.paths);
    std::vector<use> uses;
    std::set<std::string> literals;
    for (const std::string& file : source_files(options.sources)) {
        use_finder finder(file, options.functions);
        for (use& each : finder.run())
            uses.push_back(std::move(each));
        for (const literal_at& each : finder.literals())
            literals.insert(each.text);
    }
    json absent = json::array();
    json computed = json::array();
    json unused = json::array();
    for (const use& each : uses) {
        const std::string in = each.catalog.empty() ? "" : " in catalog \"" + each.catalog + '"';
        if (each.is_computed) {
            computed.push_back(
                {{"catalog", each.catalog}, {"beginning", each.key}, {"place", each.place}});
            if (!options.as_json)
                out << each.place << ": note: the key" << in << " is computed"
                    << (each.key.empty() ? ""
                                         : "; it begins with \"" + readable_key(each.key) + '"')
                    << '\n';
            continue;
        }
        literals.insert(each.key);
        if (has_key(all, each))
            continue;
        absent.push_back({{"catalog", each.catalog}, {"key", each.key}, {"place", each.place}});
        if (!options.as_json)
            out << each.place << ": no message \"" << readable_key(each.key) << '"' << in << '\n';
    }
    for (const auto& catalog : all)
        for (const auto& keyed : catalog.second) {
            if (literals.count(keyed.first) != 0 ||
                may_be_computed(uses, catalog.first, keyed.first))
                continue;
            unused.push_back({{"catalog", catalog.first}, {"key", keyed.first}});
            if (!options.as_json)
                out << catalog.first << '/' << readable_key(keyed.first) << ": not used\n";
        }
    const bool is_clean = absent.empty() && unused.empty();
    if (options.as_json)
        write_json(out, {{"absent", absent}, {"computed", computed}, {"unused", unused}});
    return is_clean ? exit_clean : exit_findings;
}

}  // namespace tova_programs::xmc
