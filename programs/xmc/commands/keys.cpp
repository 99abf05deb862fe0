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

int run_keys(const keys_options& options, std::ostream& out) {
    const keys_by_catalog all = keys_of(options.paths);
    if (options.as_json) {
        json result = json::object();
        for (const auto& each : all)
            for (const auto& keyed : each.second)
                result[each.first].push_back(keyed.first);
        write_json(out, result);
        return exit_clean;
    }
    if (!options.as_header) {
        for (const auto& each : all)
            for (const auto& keyed : each.second)
                out << each.first << '/' << readable_key(keyed.first) << '\n';
        return exit_clean;
    }
    out << "// The keys of the message catalogs. Made by tova-xmc keys --header; do not edit.\n"
           "#pragma once\n\nnamespace "
        << options.name_space << " {\n";
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
    out << "\n}  // namespace " << options.name_space << '\n';
    return exit_clean;
}

namespace {

namespace fs = std::filesystem;

struct literal_at {
    std::string text;
    std::size_t begin;
    std::size_t end;
};

// The string literals of C++ code, outside of comments. Escapes other than the simple ones stay as
// they are, since keys rarely have any.
std::vector<literal_at> literals_of(const std::string& code) {
    std::vector<literal_at> result;
    for (std::size_t i = 0; i < code.size(); ++i) {
        if (code.compare(i, 2, "//") == 0) {
            i = std::min(code.find('\n', i), code.size());
        } else if (code.compare(i, 2, "/*") == 0) {
            i = std::min(code.find("*/", i + 2), code.size() - 2) + 1;
        } else if (code[i] == '\'') {
            for (++i; i < code.size() && code[i] != '\'' && code[i] != '\n'; ++i)
                i += code[i] == '\\';
        } else if (code[i] == '"') {
            literal_at found;
            found.begin = i;
            if (i > 0 && code[i - 1] == 'R') {
                const auto open = code.find('(', i);
                const std::string closing = ')' + code.substr(i + 1, open - i - 1) + '"';
                const auto close = open == code.npos ? open : code.find(closing, open);
                if (close == code.npos)
                    return result;
                found.text = code.substr(open + 1, close - open - 1);
                i = close + closing.size() - 1;
            } else {
                for (++i; i < code.size() && code[i] != '"' && code[i] != '\n'; ++i) {
                    if (code[i] == '\\' && i + 1 < code.size())
                        ++i;
                    found.text += code[i];
                }
            }
            found.end = i + 1;
            result.push_back(std::move(found));
        }
    }
    return result;
}

std::string trimmed(std::string text) {
    text.erase(std::remove_if(text.begin(), text.end(),
                              [](char c) { return c == ' ' || c == '\n' || c == '\t'; }),
               text.end());
    return text;
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
    std::string key;
    std::string place;
};

// Whether the code before a position ends in `function(`.
bool follows_call(const std::string& code, std::size_t position,
                  const std::vector<std::string>& functions) {
    const std::string before = trimmed(
        code.substr(position < 80 ? 0 : position - 80, std::min<std::size_t>(position, 80)));
    return std::any_of(functions.begin(), functions.end(), [&before](const std::string& name) {
        const std::string call = name + '(';
        if (before.size() < call.size() ||
            before.compare(before.size() - call.size(), call.size(), call) != 0)
            return false;
        const char c = before.size() == call.size() ? ' ' : before[before.size() - call.size() - 1];
        return !((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                 c == '_');
    });
}

void find_uses(const std::string& file, const std::vector<std::string>& functions,
               std::vector<use>& uses, std::set<std::string>& literals) {
    const std::string code = read_file(file);
    const line_index lines(code);
    const std::vector<literal_at> found = literals_of(code);
    for (std::size_t i = 0; i < found.size(); ++i) {
        literals.insert(found[i].text);
        if (!follows_call(code, found[i].begin, functions))
            continue;
        const std::string place = file + ':' + std::to_string(lines.at(found[i].begin).line);
        const bool has_second =
            i + 1 < found.size() &&
            trimmed(code.substr(found[i].end, found[i + 1].begin - found[i].end)) == ",";
        const bool is_alone =
            found[i].end < code.size() && trimmed(code.substr(found[i].end, 40))[0] == ')';
        if (has_second)
            uses.push_back({found[i].text, found[i + 1].text, place});
        else if (is_alone)
            uses.push_back({"", found[i].text, place});
    }
}

bool has_key(const keys_by_catalog& all, const use& each) {
    if (!each.catalog.empty()) {
        const auto found = all.find(each.catalog);
        return found != all.end() && found->second.count(each.key) != 0;
    }
    return std::any_of(all.begin(), all.end(),
                       [&each](const auto& one) { return one.second.count(each.key) != 0; });
}

}  // namespace

int run_scan(const scan_options& options, std::ostream& out) {
    const keys_by_catalog all = keys_of(options.paths);
    std::vector<use> uses;
    std::set<std::string> literals;
    for (const std::string& file : source_files(options.sources))
        find_uses(file, options.functions, uses, literals);
    json absent = json::array();
    json unused = json::array();
    for (const use& each : uses) {
        if (has_key(all, each))
            continue;
        absent.push_back({{"catalog", each.catalog}, {"key", each.key}, {"place", each.place}});
        if (!options.as_json)
            out << each.place << ": no message \"" << readable_key(each.key) << '"'
                << (each.catalog.empty() ? "" : " in catalog \"" + each.catalog + '"') << '\n';
    }
    for (const auto& catalog : all)
        for (const auto& keyed : catalog.second) {
            if (literals.count(keyed.first) != 0)
                continue;
            unused.push_back({{"catalog", catalog.first}, {"key", keyed.first}});
            if (!options.as_json)
                out << catalog.first << '/' << readable_key(keyed.first) << ": not used\n";
        }
    const bool is_clean = absent.empty() && unused.empty();
    if (options.as_json)
        write_json(out, {{"absent", absent}, {"unused", unused}});
    return is_clean ? exit_clean : exit_findings;
}

}  // namespace tova_programs::xmc
