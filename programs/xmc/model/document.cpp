#include "xmc/model/document.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

// The grammar, one function for each element, in the order of nesting. A function begins at the
// start of its element and leaves the position after its end. What the loader refuses becomes a
// problem, and the reading goes on: an unknown attribute is left out, an unknown element is
// skipped.

namespace tova_programs::xmc {

namespace {

const struct {
    const char* word;
    item_type type;
} type_words[] = {
    {"value", item_type::text},
    {"string", item_type::string},
    {"number", item_type::number},
    {"int", item_type::integer},
    {"double", item_type::real},
    {"time", item_type::time},
    {"date", item_type::date},
    {"memory", item_type::memory},
    {"memory_unit", item_type::memory_unit},
    {"metric", item_type::metric},
    {"metric_unit", item_type::metric_unit},
    {"duration", item_type::duration},
    {"mem", item_type::memory},
    {"mem_unit", item_type::memory_unit},
};

std::string quoted(std::string_view text) {
    return '"' + std::string(text) + '"';
}

std::string tag(std::string_view name) {
    return '<' + std::string(name) + '>';
}

bool is_blank(std::string_view text) {
    return text.find_first_not_of(std::string_view(" \t\r\n\0", 5)) == text.npos;
}

}  // namespace

class reader {
public:
    explicit reader(document& result)
        : m_doc(result), m_tokens(result.m_scan->tokens()), m_message(problem::no_message) {}

    void read() {
        for (const xml_problem& each : m_doc.m_scan->problems())
            report_xml(each);
        skip_ignorable();
        if (at_end()) {
            if (m_doc.m_problems.empty())
                report("not-xmc", {}, "the file has no element");
            return;
        }
        read_root();
    }

private:
    bool at_end() const { return m_at == m_tokens.size(); }
    const token& now() const { return m_tokens[m_at]; }
    bool is_at(token_kind kind) const { return !at_end() && now().kind == kind; }

    problem& report(const char* rule, span bytes, std::string text) {
        problem found;
        found.rule = rule;
        found.bytes = bytes;
        found.message = m_message;
        found.text = std::move(text);
        m_doc.m_problems.push_back(std::move(found));
        return m_doc.m_problems.back();
    }

    void skip_ignorable() {
        while (!at_end() && now().kind != token_kind::element_start &&
               now().kind != token_kind::element_end)
            ++m_at;
        if (is_at(token_kind::element_end)) {
            report("xml-stray-end", now().bytes, "an end tag before the first element");
            m_at = m_tokens.size();
        }
    }

    // An end tag may have attributes, but only `arg` and `br` tolerate them.
    void refuse_attributes_of_end() {
        for (; is_at(token_kind::attribute_name); m_at += 2)
            report("unknown-attribute", now().bytes, "an end tag has no attributes");
    }

    // From an element's start to after its end.
    void skip_element() {
        int depth = 0;
        do {
            depth += now().kind == token_kind::element_start;
            depth -= now().kind == token_kind::element_end;
            ++m_at;
        } while (!at_end() && depth > 0);
    }

    // Calls `take(attribute)` for each attribute of the start tag at the position, and goes to what
    // follows the tag. A comment that directly follows the tag comes before the tag's end; it is an
    // error in all elements but `arg` and `include`.
    template <typename Take>
    void read_tag(bool refuses_comments, Take take) {
        const token& start = now();
        for (++m_at; !at_end() && now().kind != token_kind::start_tag_end; ++m_at) {
            if (now().kind == token_kind::attribute_name && m_at + 1 < m_tokens.size()) {
                const token& name = now();
                const token& value = m_tokens[++m_at];
                take(attribute{name.value, value.value, name.bytes, value.bytes});
            } else if (now().kind == token_kind::comment && refuses_comments) {
                report("comment-after-tag", now().bytes,
                       "a comment directly after " + tag(start.value) + " is read as an attribute")
                    .fix.push_back({{now().bytes.begin, now().bytes.begin},
                                    start.value == "br" ? "</br>" : " "});
                if (start.value == "br")
                    m_doc.m_problems.back().fix.clear();
            }
        }
        if (!at_end())
            ++m_at;
    }

    void refuse_attribute(std::string_view element, const attribute& which,
                          std::string_view allowed) {
        report("unknown-attribute", which.name_bytes,
               "attribute " + quoted(which.name) + " is not allowed in " + tag(element) +
                   (allowed.empty() ? "" : ": it has " + std::string(allowed)));
    }

    void read_root() {
        const token& root = now();
        if (root.value != "xmc") {
            report("not-xmc", root.bytes, "the root element is " + tag(root.value) + ", not <xmc>");
            return;
        }
        bool has_version = false;
        bool is_first = true;
        read_tag(true, [&](const attribute& each) {
            if (is_first && each.name == "version") {
                has_version = true;
                if (each.value != "1.0" && each.value != "1.1")
                    report("bad-version", each.value_bytes,
                           "version " + quoted(each.value) + " is not supported: write 1.1");
            } else {
                refuse_attribute("xmc", each, "\"version\" only");
            }
            is_first = false;
        });
        if (!has_version)
            report("bad-version", root.bytes, "<xmc> must begin with version=\"1.1\"");
        while (!at_end() && now().kind != token_kind::element_end)
            read_child_of_root();
        if (m_doc.m_catalogs.empty() && m_doc.m_includes.empty())
            report("no-catalog", root.bytes, "the file has neither a catalog nor an include");
    }

    void read_child_of_root() {
        if (now().kind != token_kind::element_start)
            take_ignored("xmc");
        else if (now().value == "catalog")
            read_catalog();
        else if (now().value == "include")
            read_include();
        else
            refuse_element("xmc", "catalog and include");
    }

    void take_ignored(std::string_view parent) {
        if (now().kind == token_kind::character && !is_blank(now().value))
            report("ignored-text", now().bytes, "text in " + tag(parent) + " is ignored");
        ++m_at;
    }

    void refuse_element(std::string_view parent, std::string_view allowed) {
        report("unknown-element", now().bytes,
               "element " + tag(now().value) + " is not allowed in " + tag(parent) + ": it holds " +
                   std::string(allowed));
        skip_element();
    }

    void read_include() {
        const token& start = now();
        bool has_file = false;
        read_tag(false, [&](const attribute& each) {
            if (each.name != "file") {
                report("unread-option", each.name_bytes,
                       "attribute " + quoted(each.name) + " of <include> is ignored");
                return;
            }
            has_file = true;
            if (each.value.empty())
                report("include-missing", start.bytes, "the name of the included file is empty");
            m_doc.m_includes.push_back({each.value, each.value_bytes});
        });
        if (!has_file) {
            report("include-without-file", start.bytes, "<include> without \"file\" reads nothing");
            // It counts as read all the same, so the file is not empty.
            m_doc.m_includes.push_back({{}, {}});
        }
        if (!is_at(token_kind::element_end))
            report("include-not-empty", start.bytes,
                   "<include> must be empty, without whitespace: write <include file=\"...\"/>");
        while (!at_end() && now().kind != token_kind::element_end) {
            if (now().kind == token_kind::element_start)
                skip_element();
            else
                ++m_at;
        }
        if (!at_end())
            ++m_at;
        refuse_attributes_of_end();
    }

    void read_catalog() {
        catalog fresh;
        const token& start = now();
        fresh.tag = start.bytes;
        fresh.bytes.begin = start.bytes.begin;
        fresh.messages.first = static_cast<std::uint32_t>(m_doc.m_messages.size());
        read_tag(true, [&](const attribute& each) {
            if (each.name == "name") {
                fresh.has_name = true;
                fresh.name = each.value;
                fresh.name_bytes = each.value_bytes;
            } else if (each.name == "lang") {
                fresh.has_locale = true;
                fresh.locale = each.value;
                fresh.locale_bytes = each.value_bytes;
            } else {
                refuse_attribute("catalog", each, "\"name\" and \"lang\"");
            }
        });
        while (!at_end() && now().kind != token_kind::element_end) {
            if (now().kind != token_kind::element_start)
                take_ignored("catalog");
            else if (now().value == "msg")
                read_message();
            else
                refuse_element("catalog", "msg only");
        }
        fresh.bytes.end = take_end(start);
        refuse_attributes_of_end();
        fresh.messages.count =
            static_cast<std::uint32_t>(m_doc.m_messages.size()) - fresh.messages.first;
        m_doc.m_catalogs.push_back(fresh);
    }

    // The end of an element's bytes. The token of its end tag lacks the '>'.
    std::uint32_t take_end(const token& start) {
        if (at_end())
            return static_cast<std::uint32_t>(m_doc.m_bytes.size());
        const span end = now().bytes;
        ++m_at;
        const std::string_view bytes = m_doc.m_bytes;
        if (end.begin == end.end)  // one that is missing
            return std::max(end.end, start.bytes.end);
        if (bytes.substr(end.begin, 2) == "/>")
            return end.end;
        const auto close = bytes.find('>', end.end);
        return static_cast<std::uint32_t>(close == bytes.npos ? bytes.size() : close + 1);
    }

    void read_message() {
        message fresh;
        const token& start = now();
        fresh.tokens.first = static_cast<std::uint32_t>(m_at);
        fresh.tag = start.bytes;
        fresh.bytes.begin = start.bytes.begin;
        fresh.items.first = static_cast<std::uint32_t>(m_doc.m_items.size());
        m_message = static_cast<std::uint32_t>(m_doc.m_messages.size());
        m_doc.m_messages.push_back(fresh);  // so that problems can refer to it
        read_tag(true, [&](const attribute& each) {
            if (each.name == "name") {
                fresh.name = each.value;
                fresh.name_bytes = each.value_bytes;
                m_doc.m_messages.back().name = each.value;
            } else if (each.name == "meta") {
                fresh.meta = each.value;
            } else {
                refuse_attribute("msg", each, "\"name\" and \"meta\"");
            }
        });
        read_content();
        fresh.bytes.end = take_end(start);
        refuse_attributes_of_end();
        fresh.items.count = static_cast<std::uint32_t>(m_doc.m_items.size()) - fresh.items.first;
        fresh.tokens.count = static_cast<std::uint32_t>(m_at) - fresh.tokens.first;
        m_doc.m_messages[m_message] = fresh;
        m_message = problem::no_message;
    }

    // Text is collected until an argument or the end makes it an item.
    void read_content() {
        m_follows_argument = false;
        m_text_count = 0;
        while (!at_end() && now().kind != token_kind::element_end) {
            const bool follows_argument = std::exchange(m_follows_argument, false);
            const token& piece = now();
            if (piece.kind == token_kind::element_start) {
                read_element_of_message();
                continue;
            }
            if (piece.value == "msg" && piece.kind != token_kind::start_tag_end)
                report("text-msg", piece.bytes,
                       piece.kind == token_kind::comment
                           ? "a comment that is exactly \"msg\" ends the message"
                           : "a text that is exactly \"msg\" ends the message");
            if (piece.kind == token_kind::character)
                add_text(piece.value, piece.bytes);
            else if (piece.kind == token_kind::space &&
                     (m_text_count == 0 ? follows_argument : m_text_back != ' '))
                add_text(" ", piece.bytes);
            else if (piece.kind == token_kind::space)
                m_text_bytes.end = m_text_count == 0 ? m_text_bytes.end : piece.bytes.end;
            ++m_at;
        }
        end_text();
    }

    void read_element_of_message() {
        if (now().value == "arg" || now().value == "argument") {
            end_text();
            read_argument();
            m_follows_argument = true;
        } else if (now().value == "br") {
            read_line_break();
        } else {
            refuse_element("msg", "text, br and arg");
        }
    }

    // A text of one piece needs no copy.
    void add_text(std::string_view text, span bytes) {
        if (text.empty())
            return;
        if (m_text_count == 0) {
            m_single_text = text;
            m_text_bytes = bytes;
        } else {
            if (m_text_count == 1)
                m_text.assign(m_single_text);
            m_text += text;
            m_text_bytes.end = bytes.end;
        }
        m_text_back = text.back();
        ++m_text_count;
    }

    void end_text() {
        if (m_text_count == 0)
            return;
        item fresh;
        fresh.text = m_text_count == 1 ? m_single_text : m_doc.m_scan->keep(m_text);
        fresh.bytes = m_text_bytes;
        m_doc.m_items.push_back(fresh);
        m_text_count = 0;
    }

    void read_line_break() {
        const token& start = now();
        const std::size_t first = m_at;
        bool is_valid = true;
        read_tag(true,
                 [&](const attribute& each) { refuse_attribute("br", each, "no attributes"); });
        if (!is_at(token_kind::element_end)) {
            is_valid = false;
            report("br-not-empty", start.bytes, "<br> must be empty: write <br/>");
        }
        add_text("\n", start.bytes);
        if (is_valid) {
            m_text_bytes.end = now().bytes.end;
            ++m_at;
            return;
        }
        m_at = first;
        skip_element();
    }

    void read_argument() {
        item fresh;
        fresh.is_argument = true;
        fresh.type = item_type::string;
        const token& start = now();
        fresh.bytes.begin = start.bytes.begin;
        fresh.attributes.first = static_cast<std::uint32_t>(m_doc.m_attributes.size());
        read_tag(false, [&](const attribute& each) {
            m_doc.m_attributes.push_back(each);
            if (each.name == "name")
                fresh.text = each.value;
            else if (each.name == "type" && !parse_type(each.value, fresh.type))
                fresh.type = item_type::string;
        });
        fresh.attributes.count =
            static_cast<std::uint32_t>(m_doc.m_attributes.size()) - fresh.attributes.first;
        while (!at_end() && now().kind != token_kind::element_end) {
            if (now().kind == token_kind::element_start) {
                report("element-in-arg", now().bytes,
                       "element " + tag(now().value) + " in <arg> ends the argument");
                skip_element();
            } else {
                ++m_at;
            }
        }
        fresh.bytes.end = take_end(start);
        m_doc.m_items.push_back(fresh);
    }

    // What an XML error means to those who write catalogs.
    void report_xml(const xml_problem& found);

    document& m_doc;
    const std::vector<token>& m_tokens;
    std::size_t m_at = 0;
    std::uint32_t m_message;
    bool m_follows_argument = false;
    std::string m_text;
    std::string_view m_single_text;
    std::size_t m_text_count = 0;  // pieces
    char m_text_back = '\0';
    span m_text_bytes;
};

namespace {

// A byte in a message, also where it cannot be printed.
std::string shown(std::string_view byte) {
    if (byte.size() == 1 && static_cast<unsigned char>(byte[0]) >= ' ' && byte[0] != 0x7F)
        return quoted(byte);
    return byte == std::string_view("\0", 1) ? "the end of the file" : "a control character";
}

}  // namespace

// Long because each kind of error has its own message.
void reader::report_xml(const xml_problem& found) {
    const std::string_view bytes = m_doc.m_bytes;
    switch (found.kind) {
    case xml_error::unexpected_end:
        if (found.element == "comment")
            report("xml-not-closed", found.bytes, "the comment or section is not closed");
        else if (found.element.empty())
            report("xml-not-closed", found.bytes, "the file ends within an element");
        else
            report("xml-not-closed", found.bytes, tag(found.element) + " is not closed");
        return;
    case xml_error::mismatched_end:
        if (!found.element.empty())
            report("xml-not-closed", found.bytes,
                   tag(found.element) + " is not closed: </" + found.element + "> is missing");
        else
            report("xml-stray-end", found.bytes,
                   found.subject.empty() ? "\"/>\" with no element open"
                                         : "</" + found.subject + "> with no such element open");
        return;
    case xml_error::no_root:
        report("xml-header", found.bytes, "the file ends after the XML header");
        return;
    case xml_error::no_header:
        report("xml-header", found.bytes,
               "the file must begin with <?xml version=\"1.0\" encoding=\"UTF-8\"?>");
        return;
    case xml_error::unexpected_character: {
        const char at = found.bytes.begin < bytes.size() ? bytes[found.bytes.begin] : '\0';
        if (at == '&') {
            const bool is_alone =
                found.bytes.begin + 1 < bytes.size() && bytes[found.bytes.begin + 1] == ' ';
            problem& added = report("unescaped-ampersand", found.bytes,
                                    "\"&\" begins no reference: write &amp;");
            if (is_alone)
                added.fix.push_back({found.bytes, "&amp;"});
        } else if (at == '>') {
            report("unescaped-greater", found.bytes, "\">\" where a text begins: write &gt;")
                .fix.push_back({found.bytes, "&gt;"});
        } else {
            report("xml-unexpected-character", found.bytes, "unexpected " + shown(found.subject));
        }
        return;
    }
    case xml_error::missing_quote:
        report("xml-missing-quote", found.bytes,
               found.subject.empty()
                   ? "the value of an attribute is in no quotes"
                   : "the value of " + quoted(found.subject) + " has no closing quote");
        return;
    case xml_error::unknown_entity: {
        const bool is_alone =
            found.bytes.begin + 1 < bytes.size() &&
            (bytes[found.bytes.begin + 1] == ' ' || bytes[found.bytes.begin + 1] == '\n');
        problem& added = report("unescaped-ampersand", found.bytes,
                                is_alone ? "\"&\" in a text: write &amp;"
                                         : "\"&\" begins no known reference: write &amp; for the "
                                           "character, or the character that was meant");
        if (is_alone)
            added.fix.push_back({found.bytes, "&amp;"});
        return;
    }
    case xml_error::missing_equals:
        report("xml-missing-equals", found.bytes,
               "attribute " + quoted(found.subject) + " has no value, or its name is invalid");
        return;
    case xml_error::attribute_redefined:
        report("xml-duplicate-attribute", found.bytes,
               "attribute " + quoted(found.subject) + " appears twice");
        return;
    case xml_error::data_after_root:
        report("xml-second-root", found.bytes, "a second root element");
        return;
    case xml_error::none:
        return;
    }
}

document::document(std::string path, std::string bytes)
    : m_path(std::move(path)), m_bytes(std::move(bytes)), m_scan(std::make_unique<scan>(m_bytes)) {
    reader(*this).read();
}

std::vector<attribute> document::options(const item& argument) const {
    std::vector<attribute> result;
    for (const attribute& each : attributes(argument)) {
        if (each.name == "name")
            result.clear();
        else if (each.name != "type")
            result.push_back(each);
    }
    return result;
}

std::string document::data(const item& of) const {
    std::string result(of.text);
    if (!of.is_argument)
        return result;
    result.clear();
    for (const attribute& each : attributes(of)) {
        if (each.name == "name")
            result = each.value;
        else if (each.name != "type")
            ((((result += '\x01') += each.name) += '\x01') += each.value);
    }
    return result;
}

bool parse_type(std::string_view word, item_type& type) {
    const auto is_equal = [word](const auto& entry) {
        return word.size() == std::strlen(entry.word) &&
               std::equal(word.begin(), word.end(), entry.word, [](char a, char b) {
                   return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b;
               });
    };
    const auto found = std::find_if(std::begin(type_words), std::end(type_words), is_equal);
    if (found == std::end(type_words))
        return false;
    type = found->type;
    return true;
}

const char* name_of(item_type type) {
    return type_words[static_cast<std::size_t>(type)].word;
}

}  // namespace tova_programs::xmc
