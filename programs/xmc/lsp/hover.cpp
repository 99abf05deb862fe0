#include "xmc/lsp/features.hpp"
#include "xmc/lsp/lookup.hpp"
#include "xmc/model/rendering.hpp"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace tova_programs::xmc::lsp {

namespace {

// Text that Markdown shows as it is.
std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (std::string_view("\\`*_{}[]<>()#+-.!|~&").find(c) != std::string_view::npos)
            result += '\\';
        result += c;
    }
    return result;
}

// A fence that no run of backticks in the text ends.
std::string fence_for(const std::string& text) {
    std::size_t longest = 2;
    std::size_t run = 0;
    for (const char c : text) {
        run = c == '`' ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    return std::string(longest + 1, '`');
}

struct rendered_line {
    std::string locale;
    std::string text;
};

// Locales and texts in two columns; the further lines of a text are below its first one.
std::string aligned(const std::vector<rendered_line>& lines) {
    std::size_t width = 0;
    for (const rendered_line& each : lines)
        width = std::max(width, each.locale.size());
    std::string result;
    for (const rendered_line& each : lines) {
        result += each.locale + std::string(width - each.locale.size() + 2, ' ');
        for (const char c : each.text)
            result += c == '\n' ? '\n' + std::string(width + 2, ' ') : std::string(1, c);
        result += '\n';
    }
    return result;
}

class hover_writer {
public:
    explicit hover_writer(const request_place& at)
        : m_at(at), m_here(message_at(at.in, at.offset)) {}

    json run() {
        if (m_here)
            write_message();
        write_findings();
        if (m_text.empty())
            return nullptr;
        json result = {
            {"contents",
             {{"kind", m_at.client.has_markdown ? "markdown" : "plaintext"}, {"value", m_text}}}};
        if (m_here) {
            const line_map lines(m_at.in->file.bytes(), m_at.client.units);
            result["range"] = range_json(lines, m_here.what->bytes.begin, m_here.what->bytes.end);
        }
        return result;
    }

private:
    void paragraph(const std::string& text) {
        if (!m_text.empty())
            m_text += '\n';
        m_text += (m_at.client.has_markdown ? escaped(text) : text) + '\n';
    }

    void write_message() {
        std::vector<rendered_line> lines;
        const auto all =
            messages_of(m_at.files.documents(m_at.in), m_here.of->name, m_here.what->name);
        std::string note(m_here.what->meta);
        lines.push_back(rendered(m_here));
        for (const found_message& each : all) {
            if (each.what != m_here.what)
                lines.push_back(rendered(each));
            if (note.empty())
                note = each.what->meta;
        }
        const std::string text = aligned(lines);
        const std::string fence = fence_for(text);
        m_text = m_at.client.has_markdown ? fence + "text\n" + text + fence + '\n' : text;
        if (!note.empty())
            paragraph("Note: " + note);
        write_invalid();
    }

    static rendered_line rendered(const found_message& each) {
        const auto message = library_message(each.in->file, *each.what);
        return {std::string(each.of->locale),
                message.as_string(samples_for(message, std::string(each.of->locale)))};
    }

    void write_invalid() {
        const auto message = library_message(m_at.in->file, *m_here.what);
        const auto values = samples_for(message, std::string(m_here.of->locale));
        for (const auto& item : message) {
            const std::string reason = reason_for_invalid(item, values);
            if (!reason.empty())
                paragraph("Argument \"" + item.name() + "\" is invalid: " + reason);
        }
    }

    // What the document's own findings at the place mean.
    void write_findings() {
        for (const finding& each : m_at.in->findings)
            if (is_reported(m_at.files.options(), each) && each.offset <= m_at.offset &&
                m_at.offset < each.offset + each.length)
                paragraph(std::string(each.broken_rule->id) + ": " + each.broken_rule->explanation);
    }

    const request_place& m_at;
    const found_message m_here;
    std::string m_text;
};

}  // namespace

json hover(const request_place& at) {
    return hover_writer(at).run();
}

}  // namespace tova_programs::xmc::lsp
