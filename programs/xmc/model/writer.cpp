#include "xmc/model/writer.hpp"

#include "support/text_file.hpp"
#include "xmc/scanner/verdict.hpp"

#include <algorithm>

namespace tova_programs::xmc {

namespace {

std::string number_reference(char c) {
    return "&#" + std::to_string(static_cast<unsigned char>(c)) + ';';
}

// One line of a text, without line ends. A space is written as it is only where it is a single one
// between other characters, or where a single one is kept: directly after an argument, and at the
// end.
std::string escaped_line(std::string_view line, bool follows_argument) {
    std::string result;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        const bool begins = i == 0;
        const bool is_kept = begins ? follows_argument : line[i - 1] != ' ';
        if (c == ' ')
            result += is_kept ? " " : "&nbsp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '>')
            result += "&gt;";
        else if (c == '&')
            result += "&amp;";
        else if ((c >= '\0' && c < ' ') || c == '\x7F')
            result += number_reference(c);
        else
            result += c;
    }
    // A text that is exactly "msg" would end the message.
    if (result == "msg")
        return "ms<![CDATA[g]]>";
    if (result == " msg")
        return "&nbsp;msg";
    return result;
}

std::string escaped_text(std::string_view text, bool follows_argument) {
    std::string result;
    for (std::size_t begin = 0;;) {
        const auto feed = text.find('\n', begin);
        result += escaped_line(text.substr(begin, feed - begin), follows_argument);
        if (feed == text.npos)
            return result;
        result += "<br/>";
        begin = feed + 1;
        follows_argument = false;
    }
}

// Whether the content has something that the items do not show: comments, sections, or text within
// an argument.
bool has_more_than_items(const document& file, const message& of) {
    const std::vector<token>& tokens = file.tokens().tokens();
    bool in_argument = false;
    for (std::size_t i = of.tokens.first; i < of.tokens.first + of.tokens.count; ++i) {
        const token& each = tokens[i];
        if (each.kind == token_kind::element_start)
            in_argument = each.value == "arg" || each.value == "argument";
        else if (each.kind == token_kind::element_end)
            in_argument = false;
        else if (each.kind == token_kind::comment ||
                 (each.kind == token_kind::character &&
                  (in_argument || file.source(each.bytes).substr(0, 9) == "<![CDATA[")))
            return true;
    }
    return false;
}

// The bytes between the tags of a message, which has an end tag.
std::string_view content_source(const document& file, const message& of) {
    const std::vector<token>& tokens = file.tokens().tokens();
    std::size_t i = of.tokens.first;
    while (tokens[i].kind != token_kind::start_tag_end)
        ++i;
    const std::uint32_t begin = tokens[i].bytes.begin + 1;
    const std::uint32_t end = tokens[of.tokens.first + of.tokens.count - 1].bytes.begin;
    return file.source({begin, end});
}

}  // namespace

std::vector<piece> pieces_of(const document& file, const message& of) {
    std::vector<piece> result;
    for (const item& each : file.items(of)) {
        piece one;
        one.is_argument = each.is_argument;
        one.text = each.text;
        if (each.is_argument) {
            for (const attribute& option : file.attributes(each))
                if (option.name == "type")
                    one.attributes.emplace_back("type", option.value);
            for (const attribute& option : file.options(each))
                one.attributes.emplace_back(option.name, option.value);
            const auto attributes = file.attributes(each);
            const bool has_name =
                std::any_of(attributes.begin(), attributes.end(),
                            [](const attribute& option) { return option.name == "name"; });
            if (has_name)
                one.attributes.insert(one.attributes.begin(), {"name", one.text});
        }
        result.push_back(std::move(one));
    }
    return result;
}

std::string escaped_attribute(std::string_view value) {
    std::string result;
    for (const char c : value) {
        if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '"')
            result += "&quot;";
        else if ((c >= '\0' && c < ' ') || c == '\x7F')
            result += number_reference(c);
        else
            result += c;
    }
    return result;
}

std::string content_of(const std::vector<piece>& pieces) {
    std::string result;
    bool follows_argument = false;
    for (const piece& each : pieces) {
        if (!each.is_argument) {
            result += escaped_text(each.text, follows_argument);
        } else {
            result += "<arg";
            for (const auto& attribute : each.attributes)
                result += ' ' + attribute.first + "=\"" + escaped_attribute(attribute.second) + '"';
            result += "/>";
        }
        follows_argument = each.is_argument;
    }
    return result;
}

writer::writer() : m_text("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xmc version=\"1.1\">\n") {}

void writer::begin_catalog(std::string_view name, std::string_view locale) {
    line("<catalog name=\"" + escaped_attribute(name) + "\" lang=\"" + escaped_attribute(locale) +
         "\">");
    m_in_catalog = true;
}

void writer::message(std::string_view name, std::string_view meta,
                     const std::vector<piece>& pieces) {
    line("<msg name=\"" + escaped_attribute(name) + '"' +
         (meta.empty() ? "" : " meta=\"" + escaped_attribute(meta) + '"') + '>' +
         content_of(pieces) + "</msg>");
}

void writer::end_catalog() {
    m_in_catalog = false;
    line("</catalog>");
}

void writer::line(std::string_view text) {
    m_is_empty = false;
    ((m_text += m_in_catalog ? "    " : "  ") += text) += '\n';
}

std::string writer::text() const {
    return m_text + "</xmc>\n";
}

namespace {

// Writes a file again, from its tokens: comments between elements, includes, catalogs and messages.
class formatter {
public:
    explicit formatter(const document& file)
        : m_file(file), m_tokens(file.tokens().tokens()), m_catalog(file.catalogs().begin()),
          m_message(file.messages().begin()) {}

    std::string run() {
        while (m_at < m_tokens.size() && m_tokens[m_at].kind != token_kind::element_start)
            take_other();
        const std::string before = std::move(m_comments);
        skip_tag();
        for (; m_at < m_tokens.size() && m_tokens[m_at].kind != token_kind::element_end;) {
            if (m_tokens[m_at].kind != token_kind::element_start)
                take_other();
            else if (m_tokens[m_at].value == "catalog")
                take_catalog();
            else
                take_include();
        }
        flush();
        std::string result = m_out.text();
        if (!before.empty())
            result.insert(result.find("<xmc"), before);
        return result;
    }

private:
    void skip_tag() {
        while (m_tokens[m_at].kind != token_kind::start_tag_end)
            ++m_at;
        ++m_at;
    }

    // Comments are kept; text that the loader ignores is not.
    void take_other() {
        const token& each = m_tokens[m_at++];
        if (each.kind == token_kind::comment)
            (m_comments += m_file.source(each.bytes)) += '\n';
    }

    void flush() {
        for (std::size_t begin = 0; begin < m_comments.size();) {
            const auto end = m_comments.find("-->\n", begin) + 4;
            m_out.line(std::string_view(m_comments).substr(begin, end - 1 - begin));
            begin = end;
        }
        m_comments.clear();
    }

    void take_include() {
        flush();
        std::string text = "<include";
        for (; m_tokens[m_at].kind != token_kind::element_end; ++m_at)
            if (m_tokens[m_at].kind == token_kind::attribute_name)
                ((text += ' ') += m_tokens[m_at].value) +=
                    "=\"" + escaped_attribute(m_tokens[m_at + 1].value) + '"';
        ++m_at;
        m_out.line(text + "/>");
    }

    void take_catalog() {
        flush();
        const catalog& of = *m_catalog++;
        m_out.begin_catalog(of.name, of.locale);
        skip_tag();
        while (m_tokens[m_at].kind != token_kind::element_end) {
            if (m_tokens[m_at].kind != token_kind::element_start)
                take_other();
            else
                take_message();
        }
        ++m_at;
        flush();
        m_out.end_catalog();
    }

    void take_message() {
        flush();
        const message& each = *m_message++;
        m_at += each.tokens.count;
        if (!has_more_than_items(m_file, each)) {
            m_out.message(each.name, each.meta, pieces_of(m_file, each));
            return;
        }
        m_out.line("<msg name=\"" + escaped_attribute(each.name) + '"' +
                   (each.meta.empty() ? "" : " meta=\"" + escaped_attribute(each.meta) + '"') +
                   '>' + std::string(content_source(m_file, each)) + "</msg>");
    }

    const document& m_file;
    const std::vector<token>& m_tokens;
    std::vector<catalog>::const_iterator m_catalog;
    std::vector<message>::const_iterator m_message;
    std::size_t m_at = 0;
    std::string m_comments;
    writer m_out;
};

bool have_equal_messages(const document& a, const message& x, const document& b, const message& y) {
    const auto items_a = a.items(x);
    const auto items_b = b.items(y);
    return x.name == y.name && x.meta == y.meta &&
           std::equal(items_a.begin(), items_a.end(), items_b.begin(), items_b.end(),
                      [&](const item& one, const item& other) {
                          return one.type == other.type && a.data(one) == b.data(other);
                      });
}

}  // namespace

std::string formatted(const document& file) {
    if (verdict_of(file.tokens(), [](auto, auto) { return true; }).kind != load_kind::no_error)
        throw file_error(file.path() + ": has an error; run tova-xmc check");
    std::string result = formatter(file).run();
    // A layout that changed a value would be worse than none.
    if (!have_equal_values(file, document(file.path(), result)))
        throw file_error(file.path() + ": has a text that has no canonical layout");
    return result;
}

bool have_equal_values(const document& a, const document& b) {
    const auto& x = a.catalogs();
    const auto& y = b.catalogs();
    const auto is_equal = [&](const catalog& one, const catalog& other) {
        const auto messages = a.messages(one);
        const auto others = b.messages(other);
        return one.name == other.name && one.locale == other.locale &&
               std::equal(messages.begin(), messages.end(), others.begin(), others.end(),
                          [&](const message& m, const message& n) {
                              return have_equal_messages(a, m, b, n);
                          });
    };
    return std::equal(x.begin(), x.end(), y.begin(), y.end(), is_equal) &&
           std::equal(
               a.includes().begin(), a.includes().end(), b.includes().begin(), b.includes().end(),
               [](const include& one, const include& other) { return one.file == other.file; });
}

}  // namespace tova_programs::xmc
