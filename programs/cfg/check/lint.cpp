#include "cfg/check/lint.hpp"

#include "cfg/check/rules.hpp"
#include "cfg/model/edit.hpp"
#include "cfg/model/save.hpp"
#include "support/suggestion.hpp"
#include "support/text_file.hpp"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

// The tokens of each entry are checked in the order of the file: first the lines of its key, then
// its value. Comments, strings and bytes are checked separately. The effects of a save are not
// predicted: the library saves the file, and the result is compared.

namespace tova_programs::cfg {

namespace {

bool is_blank(token_kind kind) {
    return kind == token_kind::space || kind == token_kind::line_end;
}

// The index of the first byte that is not UTF-8, or of the first NUL byte; the size if there is
// neither.
std::size_t first_invalid_byte(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size()) {
        const unsigned char first = static_cast<unsigned char>(text[at]);
        const std::size_t size = first == 0     ? 0
                                 : first < 0x80 ? 1
                                 : first < 0xC2 ? 0
                                 : first < 0xE0 ? 2
                                 : first < 0xF0 ? 3
                                 : first < 0xF5 ? 4
                                                : 0;
        if (size == 0 || at + size > text.size())
            return at;
        for (std::size_t i = 1; i < size; ++i)
            if ((static_cast<unsigned char>(text[at + i]) & 0xC0) != 0x80)
                return at;
        const unsigned char second = size > 1 ? static_cast<unsigned char>(text[at + 1]) : 0x80;
        if ((first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F) ||
            (first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F))
            return at;
        at += size;
    }
    return at;
}

std::string_view without_spaces_before(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t\r");
    return begin == text.npos ? std::string_view() : text.substr(begin);
}

// Whether a line in which an array goes on, from its first "[", is a header. It is not if text
// directly follows the "]", as in "[::1]:25", or a comma does, as in "[a], [b]".
bool is_header_line(std::string_view line) {
    const std::size_t close = line.find(']');
    if (close == line.npos)
        return true;
    const std::string_view after = line.substr(close + 1);
    const std::string_view rest = without_spaces_before(after);
    if (rest.empty() || rest.compare(0, 2, "//") == 0)
        return true;
    const bool is_attached = rest.size() == after.size();
    return is_attached ? std::string_view("#;[").find(rest[0]) != std::string_view::npos
                       : rest[0] != ',';
}

std::string_view header_of(std::string_view line) {
    const std::size_t close = line.find(']');
    return close == line.npos ? line : line.substr(0, close + 1);
}

// The first header in a string, or the empty string. A line of text may begin with a reference such
// as "[1] See below", so only a comment may follow the header. If the name of the header is in
// quotes, the string ends after its "[".
std::string_view header_in(std::string_view string) {
    for (std::size_t feed = string.find('\n'); feed != string.npos;) {
        const std::size_t end = string.find('\n', feed + 1);
        const std::string_view line = without_spaces_before(
            string.substr(feed + 1, end == string.npos ? end : end - feed - 1));
        feed = end;
        if (line.empty() || line[0] != '[')
            continue;
        if (line.size() == 1 && end == string.npos)
            return line;
        const std::string_view rest = without_spaces_before(line.substr(header_of(line).size()));
        if (header_of(line).back() == ']' &&
            (rest.empty() || rest[0] == '#' || rest.compare(0, 2, "//") == 0))
            return header_of(line);
    }
    return {};
}

class linter {
public:
    linter(const document& file, const schema& declared)
        : m_file(file), m_schema(declared), m_lines(file.bytes()) {}

    std::vector<finding> run() {
        check_bytes();
        for (const token& each : m_file.tokens())
            check_token(each);
        for (const section& each : m_file.sections())
            check_header(each);
        for (const comment& each : m_file.comments())
            check_comment_quotes(each);
        for (const entry& each : m_file.entries()) {
            check_key(each);
            check_value(each);
            check_array(each);
            check_schema(each);
        }
        check_duplicates();
        check_longer_keys();
        return std::move(m_found);
    }

private:
    finding& add(const char* rule, span bytes, const std::string& subject, std::string text) {
        finding found(*rules().find(rule), m_file.path(), bytes.begin, bytes.size());
        found.subject = subject;
        found.text = std::move(text);
        place_finding(found, m_lines);
        m_found.push_back(std::move(found));
        return m_found.back();
    }

    const token& at(std::size_t index) const { return m_file.tokens()[index]; }
    char byte(std::size_t offset) const { return m_file.bytes()[offset]; }
    std::string line_of(std::size_t offset) const {
        return std::to_string(m_lines.at(offset).line);
    }

    void check_bytes() {
        const std::string& bytes = m_file.bytes();
        if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0)
            add("byte-order-mark", {0, 3}, "", "a byte order mark, which becomes part of a key")
                .edits.push_back({0, 3, ""});
        const std::size_t invalid = first_invalid_byte(bytes);
        if (invalid < bytes.size())
            add("not-utf8", {invalid, invalid + 1}, "",
                byte(invalid) == '\0' ? "a NUL byte" : "a byte that is not UTF-8");
    }

    void check_token(const token& one) {
        if (one.kind == token_kind::text && byte(one.bytes.begin) == '\r')
            add("carriage-return", one.bytes, "", "a carriage return without a line feed");
        if (one.kind != token_kind::string || one.role == token_role::comment)
            return;
        const std::string_view text = m_file.text(one);
        if (!one.is_closed)
            add("open-quote", {one.bytes.begin, one.bytes.begin + 1}, "",
                "this quote is not closed; the string goes on to the end of the file");
        else if (!header_in(text).empty())
            add("header-in-string", one.bytes, "",
                "the string from this quote ends in line " + line_of(one.bytes.end - 1) +
                    " and contains the header " + quoted(header_in(text)));
        else if (text.find('\n') != text.npos)
            add("quote-over-lines", one.bytes, "",
                "the string from this quote ends in line " + line_of(one.bytes.end - 1));
        if (text.find("\\\"") != text.npos || text.find("\\\\") != text.npos)
            add("escape", one.bytes, "", "the backslashes stay in the string");
    }

    void check_header(const section& each) {
        if (!each.is_closed) {
            add("open-header", each.bytes, "", "the header is not closed: \"]\" is missing");
            return;
        }
        // Spaces next to the brackets are dropped, too, but nobody wants them in the name.
        std::size_t names = 0;
        bool has_space = false;
        bool has_line_end = false;
        bool loses_space = false;
        for (std::size_t i = each.tokens; i < m_file.tokens().size(); ++i) {
            const token& one = at(i);
            if (one.bytes.begin >= each.bytes.end)
                break;
            if (i == each.tokens || one.kind == token_kind::close_bracket)
                continue;
            if (is_blank(one.kind)) {
                has_space = names != 0;
                has_line_end = has_line_end || one.kind == token_kind::line_end;
                continue;
            }
            if (has_line_end) {
                add("open-header", each.bytes, "",
                    "the header is not closed in its line and goes on up to the \"]\" in line " +
                        line_of(each.bytes.end - 1));
                return;
            }
            loses_space = loses_space || has_space;
            ++names;
        }
        if (loses_space)
            add("lost-space", each.bytes, "",
                "the section is " + quoted(each.name) + " without spaces");
    }

    void check_comment_quotes(const comment& each) {
        for (std::size_t i = each.tokens;
             i < m_file.tokens().size() && at(i).bytes.begin < each.bytes.end; ++i) {
            const token& one = at(i);
            if (one.kind != token_kind::string)
                continue;
            if (!one.is_closed)
                add("quote-in-comment", {one.bytes.begin, one.bytes.begin + 1}, "",
                    "this quote makes the rest of the file a comment");
            else if (m_file.text(one).find('\n') != std::string_view::npos)
                add("quote-in-comment", {one.bytes.begin, one.bytes.begin + 1}, "",
                    "this quote makes the comment go on up to the quote in line " +
                        line_of(one.bytes.end - 1));
        }
    }

    // --- Keys ---

    // The index of the `=`, or of the end.
    std::size_t end_of_key(const entry& each) const {
        std::size_t end = each.tokens;
        while (end < each.tokens_end && at(end).role == token_role::key &&
               at(end).kind != token_kind::equals)
            ++end;
        return end;
    }

    void check_key(const entry& each) {
        const std::size_t end = end_of_key(each);
        const bool has_equals = end < each.tokens_end && at(end).kind == token_kind::equals;
        if (each.name.empty() && !each.is_array && has_equals)
            add("no-key", at(end).bytes, "", "\"=\" without a key before it");
        std::size_t line = each.tokens;
        for (std::size_t i = each.tokens; i <= end; ++i) {
            if (i != end && at(i).kind != token_kind::line_end)
                continue;
            check_key_line(each, line, i, i == end && has_equals);
            line = i + 1;
        }
    }

    // One line of a key: its tokens, and whether it is the last line, which ends with the `=`.
    void check_key_line(const entry& each, std::size_t begin, std::size_t end, bool has_equals) {
        while (begin < end && is_blank(at(begin).kind))
            ++begin;
        while (end > begin && is_blank(at(end - 1).kind))
            --end;
        if (begin == end)
            return;
        const span bytes = {at(begin).bytes.begin, at(end - 1).bytes.end};
        std::string_view text = m_file.source(bytes);
        const bool is_first = begin == each.tokens;
        if (bytes.begin == 0 && text.compare(0, 3, "\xEF\xBB\xBF") == 0) {
            text.remove_prefix(3);
            if (text.empty() || text[0] == '[' || text[0] == '#' || text[0] == '/')
                return;
        }
        if (text[0] == ';') {
            finding& found =
                add("semicolon-comment", {bytes.begin, bytes.begin + 1}, "",
                    has_equals ? "\";\" does not start a comment; it is part of the key"
                               : "\";\" does not start a comment; the line is joined to the "
                                 "key on the next one");
            if (text.find('"') == text.npos)
                found.edits.push_back({bytes.begin, 1, "#"});
            return;
        }
        if (is_first && each.section != 0 && is_on_line_of_header(each))
            add("text-after-header", bytes, "", quoted(text) + " after a header");
        if (check_operation(begin, end))
            return;
        if (!has_equals) {
            // The mistake is not the header within the key, but the line before it.
            if (is_first || text[0] != '[')
                report_no_equals(bytes, text, bytes.end == each.key_bytes.end);
            return;
        }
        for (std::size_t i = begin; i < end; ++i)
            if (at(i).kind == token_kind::text && m_file.text(at(i)) == ":") {
                add("colon-in-key", at(i).bytes, "",
                    "\":\" does not end a key; the key is " + quoted(each.name));
                break;
            }
        for (std::size_t i = begin; i + 1 < end; ++i)
            if (at(i).kind == token_kind::space && at(i + 1).kind != token_kind::open_bracket) {
                add("lost-space", bytes, "", "the key is " + quoted(each.name) + " without spaces");
                return;
            }
    }

    // Returns whether the line has an operator where an "=" was meant.
    bool check_operation(std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i)
            if (at(i).kind == token_kind::operation) {
                const std::string_view sign = m_file.source(at(i).bytes);
                finding& found = add("operator", at(i).bytes, "",
                                     quoted(sign) + " does not end a key; the plain \"=\" does");
                if (sign == "==" || sign == ":=")
                    found.edits.push_back({at(i).bytes.begin, 2, "="});
                return true;
            }
        return false;
    }

    void report_no_equals(span bytes, std::string_view text, bool is_last) {
        std::string reason = quoted(text) + (is_last ? " has no \"=\" and is lost"
                                                     : " has no \"=\" and is joined to the key on "
                                                       "the next line");
        if (text.find(':') != text.npos)
            reason += "; \":\" is not \"=\"";
        add("no-equals", bytes, "", std::move(reason));
    }

    // Whether there are only spaces before it in its line.
    bool begins_line(std::size_t offset) const {
        while (offset > 0 && (byte(offset - 1) == ' ' || byte(offset - 1) == '\t'))
            --offset;
        return offset == 0 || byte(offset - 1) == '\n';
    }

    std::string_view rest_of_line(std::size_t offset) const {
        const std::string_view rest = std::string_view(m_file.bytes()).substr(offset);
        return rest.substr(0, rest.find_first_of("\r\n"));
    }

    bool is_on_line_of_header(const entry& each) const {
        const section& header = m_file.sections()[each.section];
        const std::string_view between =
            std::string_view(m_file.bytes())
                .substr(header.bytes.end, each.bytes.begin - header.bytes.end);
        return between.find('\n') == between.npos;
    }

    // --- Values ---

    void check_value(const entry& each) {
        if (each.name.empty())
            return;
        bool has_hidden = false;
        for (const comment& one : m_file.comments())
            if (one.tokens >= each.tokens && one.tokens < each.tokens_end)
                has_hidden = check_comment_start(each, one) || has_hidden;
        if (each.values.empty() && !has_hidden && end_of_key(each) < each.tokens_end)
            add("empty-value", each.key_bytes, each.key, "no value is stored");
        if (check_semicolon(each))
            return;
        for (std::size_t i = each.inherited; i < each.values.size(); ++i)
            check_spaces(each, each.values[i]);
    }

    // Returns whether the comment cuts off a value.
    bool check_comment_start(const entry& each, const comment& one) {
        const std::string_view text = m_file.source(one.bytes);
        const char before = byte(one.bytes.begin - 1);
        const bool is_attached = before != ' ' && before != '\t' && before != '\n';
        const std::string_view line = text.substr(0, text.find('\n'));
        const std::string_view word = line.substr(0, line.find_first_of(" \t\r"));
        const bool is_url = is_attached && before == ':' && text.compare(0, 2, "//") == 0;
        const bool is_color = each.values.empty() && text[0] == '#' && word.size() > 1 &&
                              word.find('#', 1) == word.npos;
        if (!is_url && !is_color && !is_attached && text.compare(0, 2, "*/") != 0)
            return false;
        finding& found = add(is_url ? "url-cut" : "comment-in-value", one.bytes, each.key,
                             quoted(word) + " starts a comment and is not part of the value");
        // The fix is certain if the rest of the line is one word.
        if ((is_url || is_color) && word.size() == line.size() &&
            word.find_first_of("\",") == word.npos && !each.is_array) {
            const std::size_t begin = is_url ? each.value_bytes.begin : one.bytes.begin;
            const std::string_view value =
                std::string_view(m_file.bytes()).substr(begin, one.bytes.begin - begin);
            if (value.find_first_of("\" \t") == value.npos) {
                found.edits.push_back({begin, 0, "\""});
                found.edits.push_back({one.bytes.begin + word.size(), 0, "\""});
            }
        }
        return true;
    }

    // "port = 80 ; note" and "port = 80; note".
    bool check_semicolon(const entry& each) {
        for (std::size_t i = each.tokens; i < each.tokens_end; ++i) {
            const token& one = at(i);
            if (one.role != token_role::value || one.kind != token_kind::text)
                continue;
            const std::string_view text = m_file.text(one);
            const std::size_t sign = text.find(';');
            if (sign == text.npos)
                continue;
            const bool is_after_space = sign == 0 && at(i - 1).kind == token_kind::space;
            const bool is_before_space = sign + 1 == text.size() && i + 1 < each.tokens_end &&
                                         at(i + 1).kind == token_kind::space;
            if (!is_after_space && !is_before_space)
                continue;
            const std::size_t offset = one.bytes.begin + sign;
            finding& found = add("semicolon-comment", {offset, offset + 1}, each.key,
                                 "\";\" does not start a comment; it is part of the value");
            const std::string_view rest = m_file.source({offset, each.value_bytes.end});
            if (rest.find_first_of("\"\n") == rest.npos)
                found.edits.push_back({offset, 1, is_after_space ? "#" : " #"});
            return true;
        }
        return false;
    }

    void check_spaces(const entry& each, const value_piece& piece) {
        bool has_space = false;
        // Most likely a header that an unfinished array took.
        const bool is_header =
            each.is_array && byte(piece.bytes.begin) == '[' && begins_line(piece.bytes.begin);
        bool is_simple = !is_header;
        for (std::size_t i = each.tokens; i < each.tokens_end; ++i) {
            const token& one = at(i);
            if (one.bytes.begin < piece.bytes.begin || one.bytes.end > piece.bytes.end)
                continue;
            has_space = has_space || one.kind == token_kind::space;
            is_simple = is_simple && one.kind != token_kind::string &&
                        one.role == token_role::value && one.kind != token_kind::line_end;
            // An element with a "=" is most likely an entry that an unfinished array took.
            is_simple = is_simple && (!each.is_array || one.kind != token_kind::equals);
        }
        if (!has_space)
            return;
        finding& found = add("lost-space", piece.bytes, each.key,
                             "the value is " + quoted(piece.text) + " without spaces");
        if (is_simple && byte(piece.bytes.end - 1) != '\\') {
            found.edits.push_back({piece.bytes.begin, 0, "\""});
            found.edits.push_back({piece.bytes.end, 0, "\""});
        }
    }

    // --- Arrays ---

    void check_array(const entry& each) {
        if (!each.is_array)
            return;
        if (each.inherited != 0)
            add("array-gets-more", each.key_bytes, each.key,
                each.inherited == 1 ? "the first element is that of an array further up"
                                    : "the first " + std::to_string(each.inherited) +
                                          " elements are those of an array further up");
        if (check_next_lines(each))
            return;
        if (!each.is_stored && !each.values.empty())
            add("unfinished-array", each.key_bytes, each.key,
                "the array ends with a comma or an empty element and is not stored");
    }

    // Returns whether a comma at a line end made the array take an entry or a header.
    bool check_next_lines(const entry& each) {
        bool after_comma = false;
        bool is_continued = false;
        for (std::size_t i = each.tokens; i < each.tokens_end; ++i) {
            const token& one = at(i);
            if (one.role != token_role::value || one.kind == token_kind::space)
                continue;
            if (one.kind == token_kind::line_end) {
                is_continued = is_continued || after_comma;
                continue;
            }
            if (is_continued && one.kind == token_kind::equals) {
                add("unfinished-array", each.key_bytes, each.key,
                    "the array ends with a comma and goes on in line " + line_of(one.bytes.begin));
                return true;
            }
            const std::string_view line = rest_of_line(one.bytes.begin);
            if (is_continued && one.kind == token_kind::open_bracket &&
                begins_line(one.bytes.begin) && is_header_line(line)) {
                add("unfinished-array", each.key_bytes, each.key,
                    "the array ends with a comma and takes the header " + quoted(header_of(line)) +
                        " in line " + line_of(one.bytes.begin));
                return true;
            }
            after_comma = one.kind == token_kind::comma;
        }
        return false;
    }

    // --- Keys of the whole file ---

    void check_duplicates() {
        std::map<std::string, const entry*> known;
        for (const entry& each : m_file.entries()) {
            if (!each.is_stored)
                continue;
            const entry*& earlier = known[each.key];
            if (earlier != nullptr) {
                std::string text = "line " + line_of(earlier->bytes.begin) + " also sets this key";
                if (earlier->full_name != each.full_name)
                    text += " (" + quoted(earlier->full_name) + " and " + quoted(each.full_name) +
                            " are the same)";
                text += "; this value is used";
                if (earlier->is_array && each.is_array &&
                    earlier->values.size() > each.values.size())
                    text += ", but the last elements of the longer array stay";
                add("duplicate-key", each.key_bytes, each.key, std::move(text));
            }
            earlier = &each;
        }
    }

    void check_longer_keys() {
        std::set<std::string> plain;
        for (const entry& each : m_file.entries())
            if (each.is_stored)
                plain.insert(each.key);
        for (const entry& each : m_file.entries()) {
            if (!each.is_stored)
                continue;
            for (std::size_t dot = each.key.find('.'); dot != std::string::npos;
                 dot = each.key.find('.', dot + 1))
                if (plain.count(each.key.substr(0, dot)) != 0) {
                    add("key-and-section", each.key_bytes, each.key,
                        quoted(each.key.substr(0, dot)) + " has a value too");
                    break;
                }
        }
    }

    // --- The schema ---

    void check_schema(const entry& each) {
        if (m_schema.empty() || !each.is_stored || each.key == "cfg_file")
            return;
        const declared_key* declared = m_schema.find(each.key);
        if (declared == nullptr) {
            add("unknown-key", each.key_bytes, each.key,
                "the schema has no such key" + did_you_mean(each.key, m_schema.paths()));
            return;
        }
        if (!declared->alias.empty() && m_schema.find(declared->alias) != nullptr)
            declared = m_schema.find(declared->alias);
        if (declared->is_array != each.is_array) {
            add("wrong-value", each.bytes, each.key,
                declared->is_array ? "an array is expected: the key ends in []"
                                   : "a single value is expected, not an array");
            return;
        }
        for (std::size_t i = each.inherited; i < each.values.size(); ++i) {
            const std::string problem = problem_of(*declared, each.values[i].text);
            if (!problem.empty())
                add("wrong-value", each.values[i].bytes, each.key, problem);
        }
    }

    const document& m_file;
    const schema& m_schema;
    line_index m_lines;
    std::vector<finding> m_found;
};

// Compares a file with the result of a save.
class save_linter {
public:
    save_linter(const document& file, const saved_file& result)
        : m_file(file), m_lines(file.bytes()), m_result(result) {}

    std::vector<finding> run() {
        if (m_result.is_too_large) {
            add_for_file("a save writes " + std::to_string(m_result.size) + " bytes instead of " +
                         std::to_string(m_file.bytes().size()));
            return std::move(m_found);
        }
        const node_map before = nodes_of(m_file);
        const node_map after = nodes_of(document("", m_result.text));
        std::set<std::string> seen;
        for (const stored_node& each : stored_nodes(m_file)) {
            const entry& from = m_file.entries()[each.entry];
            const auto found = after.find(each.path);
            if (found == after.end() && seen.insert(from.key).second)
                add("save-loses-key", from.key_bytes, from.key,
                    from.key.find('.') == std::string::npos ? "a save loses keys outside a section"
                                                            : "a save loses this key");
            else if (found != after.end() && found->second != before.at(each.path) &&
                     seen.insert(from.key).second)
                add("save-changes-value", from.bytes, from.key, "a save changes the value");
        }
        check_sections(before);
        const saved_file second = saved(m_result.text);
        if (second.size > m_result.size)
            add_for_file("every save makes the file larger: " + std::to_string(m_result.size) +
                         " bytes after the first, " + std::to_string(second.size) +
                         (second.is_too_large ? " or more" : "") + " after the second");
        return std::move(m_found);
    }

private:
    void add(const char* rule, span bytes, const std::string& subject, std::string text) {
        finding found(*rules().find(rule), m_file.path(), bytes.begin, bytes.size());
        found.subject = subject;
        found.text = std::move(text);
        place_finding(found, m_lines);
        m_found.push_back(std::move(found));
    }

    void add_for_file(std::string text) {
        finding found(*rules().find("save-grows"), m_file.path(), 0, 0);
        found.text = std::move(text);
        m_found.push_back(std::move(found));
    }

    // Sections, with or without a header, whose entries a save mixes.
    void check_sections(const node_map& nodes) {
        std::map<std::size_t, std::set<std::string>> parents;  // of values, by length
        for (const stored_node& each : stored_nodes(m_file)) {
            const std::size_t dot = each.path.rfind('.');
            const std::string parent = dot == std::string::npos ? "" : each.path.substr(0, dot);
            if (!parent.empty() && nodes.count(parent) == 0)
                parents[parent.size()].insert(parent);
        }
        std::set<std::string> reported;
        for (const section& each : m_file.sections()) {
            const std::string path = path_of(each.name);
            const auto same = parents.find(path.size());
            if (each.name.empty() || same == parents.end() || !reported.insert(path).second)
                continue;
            const auto other =
                std::find_if(same->second.begin(), same->second.end(),
                             [&path](const std::string& name) { return name != path; });
            if (other != same->second.end())
                add("equal-length-sections", each.bytes, "",
                    '[' + path + "] is as long as [" + *other +
                        "]: a save writes the entries of both under each");
        }
    }

    const document& m_file;
    line_index m_lines;
    const saved_file& m_result;
    std::vector<finding> m_found;
};

}  // namespace

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char c : text.substr(0, 40))
        result += static_cast<unsigned char>(c) < 32 || c == 127 ? '?' : c;
    return result + (text.size() > 40 ? "...\"" : "\"");
}

std::vector<finding> lint(const document& file, const schema& declared) {
    return linter(file, declared).run();
}

std::vector<finding> lint_required(const std::vector<std::string>& paths,
                                   const std::set<std::string>& keys, const schema& declared) {
    std::vector<finding> result;
    for (const declared_key& each : declared.keys()) {
        if (!each.is_required || keys.count(each.key) != 0)
            continue;
        finding found(*rules().find("missing-key"), paths.front(), 0, 0);
        found.subject = each.key;
        found.text = "the schema requires this key";
        result.push_back(std::move(found));
    }
    return result;
}

std::vector<finding> lint_save(const document& file) {
    return save_linter(file, saved(file.bytes())).run();
}

std::vector<finding> lint_schema(const schema& declared, const std::string& path) {
    std::vector<finding> result;
    const std::string bytes = read_file(path);
    const line_index lines(bytes);
    for (const declared_key& each : declared.keys()) {
        std::set<std::string> visited;
        std::string chain = each.key;
        const declared_key* next = &each;
        while (next != nullptr && !next->alias.empty() && visited.insert(next->key).second) {
            chain += " -> " + next->alias;
            next = declared.find(next->alias);
        }
        // Each member of a cycle is reported, but not the aliases that only lead to it.
        if (next == nullptr || next->alias.empty() || next->key != each.key)
            continue;
        finding found(*rules().find("alias-cycle"), path, each.bytes.begin, each.bytes.size());
        found.subject = each.key;
        found.text = chain;
        place_finding(found, lines);
        result.push_back(std::move(found));
    }
    return result;
}

}  // namespace tova_programs::cfg
