#include "cfg/model/edit.hpp"

#include <algorithm>
#include <utility>

// A change edits the bytes and then reads the result: all nodes but those of the key must be the
// same as before. So a change cannot damage an unusual file.

namespace tova_programs::cfg {

namespace {

bool is_plain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("_.:+-%@/").find(c) != std::string_view::npos ||
           static_cast<unsigned char>(c) > 127;
}

// Whether a value can be written without quotes. A slash is plain, but two of them are a comment.
bool is_plain(const std::string& text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return is_plain(c); }) &&
           text.find("//") == std::string::npos;
}

std::string written(const std::string& text, const char* what) {
    if (is_plain(text))
        return text;
    if (text.find('"') != std::string::npos)
        throw edit_error(std::string("a settings file cannot hold a double quote in a ") + what);
    // A backslash before the closing quote would hide it, so it follows the quotes.
    const std::size_t last = text.find_last_not_of('\\');
    const std::size_t inside = last == std::string::npos ? 0 : last + 1;
    return (inside == 0 ? "" : '"' + text.substr(0, inside) + '"') + text.substr(inside);
}

// A part of a key. In a key, a colon or a sign may form an operator with the `=` after it.
std::string written_name(const std::string& name) {
    const bool is_simple = std::all_of(name.begin(), name.end(), [](char c) {
        return is_plain(c) && std::string_view(":+-/").find(c) == std::string_view::npos;
    });
    if (is_simple && !name.empty())
        return name;
    if (name.find('"') != std::string::npos || (!name.empty() && name.back() == '\\'))
        throw edit_error("a settings file cannot hold the key " + name);
    return '"' + name + '"';
}

std::string written_values(const std::vector<std::string>& values) {
    std::string result;
    for (const std::string& value : values) {
        if (value.empty())
            throw edit_error("a settings file cannot hold an empty value");
        result += (result.empty() ? "" : ", ") + written(value, "value");
    }
    return result;
}

// Removes an entry with its line, or from the header that it follows.
void remove(std::string& text, const entry& one) {
    std::size_t begin = one.bytes.begin;
    while (begin > 0 && (text[begin - 1] == ' ' || text[begin - 1] == '\t'))
        --begin;
    const bool has_own_line = begin == 0 || text[begin - 1] == '\n';
    std::size_t end = one.end;
    if (!has_own_line && end > begin && text[end - 1] == '\n')
        end -= end - begin > 1 && text[end - 2] == '\r' ? 2 : 1;
    text.erase(begin, end - begin);
}

const char* line_end_of(const std::string& text) {
    const std::size_t feed = text.find('\n');
    return feed != std::string::npos && feed > 0 && text[feed - 1] == '\r' ? "\r\n" : "\n";
}

// Where the first entry of a file without entries at its top goes: after the comment that the file
// begins with. A comment with a double quote may go on in the next lines, so none is passed.
std::size_t end_of_head(const document& file) {
    const std::string& text = file.bytes();
    std::size_t end = 0;
    for (const comment& each : file.comments()) {
        const std::size_t begin = text.find_first_not_of(end == 0 ? " \t\r\n" : " \t", end);
        if (each.bytes.begin != begin ||
            file.source(each.bytes).find('"') != std::string_view::npos)
            break;
        const std::size_t feed = text.find('\n', each.bytes.end);
        end = feed == std::string::npos ? text.size() : feed + 1;
    }
    return end;
}

// Adds an entry. New entries are indented like the last one of their section.
std::string added(const document& file, const std::string& key, const std::string& rest) {
    const std::size_t separator = key.find_last_of("./\\");
    const std::string parent = separator == std::string::npos ? "" : key.substr(0, separator);
    const std::string name = separator == std::string::npos ? key : key.substr(separator + 1);
    std::string text = file.bytes();
    const std::string line_end = line_end_of(text);
    const std::string line = written_name(name) + rest + line_end;
    std::size_t found = file.sections().size();
    for (std::size_t i = 0; i < file.sections().size(); ++i) {
        const section& each = file.sections()[i];
        const bool is_same = each.name.empty()
                                 ? parent.empty()
                                 : !parent.empty() && path_of(each.name) == path_of(parent);
        if (is_same && each.is_closed)
            found = i;
    }
    if (found == file.sections().size()) {
        if (!text.empty())
            text += text.back() == '\n' ? line_end : line_end + line_end;
        return text + '[' + written_name(parent) + ']' + line_end + line;
    }
    std::string indent;
    for (const entry& each : file.entries())
        if (each.section == found) {
            std::size_t begin = each.bytes.begin;
            while (begin > 0 && (text[begin - 1] == ' ' || text[begin - 1] == '\t'))
                --begin;
            if (begin == 0 || text[begin - 1] == '\n')
                indent = text.substr(begin, each.bytes.begin - begin);
        }
    std::size_t at = file.sections()[found].end;
    if (at == 0) {
        at = end_of_head(file);
        // What follows the comment without an empty line is a header.
        if (at != 0 && at < text.size() && text[at] != '\n' && text[at] != '\r')
            text.insert(at, line_end);
    }
    // A header or a comment may be on the same line.
    if (at > 0 && text[at - 1] != '\n') {
        const std::size_t feed = text.find('\n', at);
        at = feed == std::string::npos ? text.size() : feed + 1;
    }
    const bool needs_line = at > 0 && text[at - 1] != '\n';
    text.insert(at, (needs_line ? line_end : "") + indent + line);
    return text;
}

// The nodes except those of the key and its elements.
node_map others(node_map nodes, const document& file, const std::string& key) {
    const std::string path = path_of(key);
    for (const stored_node& each : stored_nodes(file))
        if (file.entries()[each.entry].key == path)
            nodes.erase(each.path);
    nodes.erase(path);
    return nodes;
}

// Raises an error that names the first difference. A difference in the changed key itself, `path`,
// counts only if there is no other.
void require_same(const node_map& expected, const document& file, const std::string& path,
                  const std::string& text) {
    const node_map changed = nodes_of(document(file.path(), text));
    std::string what;
    for (const auto& each : expected) {
        const auto found = changed.find(each.first);
        if (found != changed.end() && found->second == each.second)
            continue;
        if (each.first == path || each.first.compare(0, path.size() + 1, path + '.') == 0) {
            what = "not take effect";
            continue;
        }
        what = (found == changed.end() ? "remove \"" : "change \"") + each.first + '"';
        break;
    }
    for (auto each = changed.begin(); what.empty() && each != changed.end(); ++each)
        if (expected.count(each->first) == 0)
            what = "add \"" + each->first + '"';
    if (!what.empty())
        throw edit_error("the change would " + what + "; run tova-cfg check " + file.path());
}

std::string in_quotes(const std::string& text) {
    return '"' + text + '"';
}

// A key with a value hides longer keys, and a save loses them, so an edit never makes one.
void require_leaf(const document& file, const std::string& path) {
    const std::vector<std::string> longer = longer_keys(file, path);
    if (!longer.empty())
        throw edit_error(in_quotes(path) + " has longer keys, such as " + in_quotes(longer[0]) +
                         ", and a key that has a value cannot be the beginning of other keys");
    for (const entry& each : file.entries())
        if (each.is_stored && path.compare(0, each.key.size() + 1, each.key + '.') == 0)
            throw edit_error(
                in_quotes(each.key) +
                " has a value, and a key that has a value cannot be the beginning of other keys");
}

}  // namespace

node_map nodes_of(const document& file) {
    node_map result;
    for (const stored_node& each : stored_nodes(file))
        result[each.path] = {each.flags, each.value};
    return result;
}

std::vector<std::string> longer_keys(const document& file, const std::string& path) {
    std::vector<std::string> result;
    for (const entry& each : file.entries())
        if (each.is_stored && each.key.compare(0, path.size() + 1, path + '.') == 0 &&
            std::find(result.begin(), result.end(), each.key) == result.end())
            result.push_back(each.key);
    return result;
}

std::string written_value(const std::string& value) {
    return written_values({value});
}

std::string with_value(const document& file, const std::string& key,
                       const std::vector<std::string>& values, bool is_array) {
    const std::string path = path_of(key);
    const std::string value = written_values(values);
    const entry* last = nullptr;
    for (const entry& each : file.entries())
        if (each.key == path && each.is_stored)
            last = &each;
    std::string text = file.bytes();
    if (last != nullptr && last->is_array == is_array) {
        text.replace(last->value_bytes.begin, last->value_bytes.size(), value);
        if (last->is_array)  // an earlier, longer array would leave elements
            for (std::size_t i = file.entries().size(); i-- > 0;)
                if (file.entries()[i].key == path && &file.entries()[i] < last)
                    remove(text, file.entries()[i]);
    } else if (last != nullptr) {
        const document cleared(file.path(), without(file, key));
        text = added(cleared, key_with_path(path), (is_array ? "[] = " : " = ") + value);
    } else {
        require_leaf(file, path);
        text = added(file, key, (is_array ? "[] = " : " = ") + value);
    }
    node_map expected = others(nodes_of(file), file, key);
    entry named;
    named.full_name = key_with_path(path);
    expected[path] = {is_array ? 3u : 1u, is_array ? "" : values[0]};
    for (std::size_t i = 0; is_array && i < values.size(); ++i)
        expected[element_path(named, i)] = {1, values[i]};
    require_same(expected, file, path, text);
    return text;
}

std::string without(const document& file, const std::string& key) {
    const std::string path = path_of(key);
    std::string text = file.bytes();
    for (std::size_t i = file.entries().size(); i-- > 0;)
        if (file.entries()[i].key == path && !file.entries()[i].name.empty())
            remove(text, file.entries()[i]);
    require_same(others(nodes_of(file), file, key), file, path, text);
    return text;
}

}  // namespace tova_programs::cfg
