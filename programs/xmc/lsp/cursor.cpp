#include "xmc/lsp/cursor.hpp"

#include "xmc/model/document.hpp"

#include <algorithm>

namespace tova_programs::xmc::lsp {

namespace {

bool is_space(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool is_letter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool is_name(char c) {
    return is_letter(c) || (c >= '0' && c <= '9') || c == '_';
}

// Reads the tag that begins at a '<', up to its '>', the next '<' or the end of the text.
class tag_reader {
public:
    tag_reader(const std::string& text, std::size_t offset, cursor& result)
        : m_text(text), m_offset(offset), m_result(result) {}

    void read(std::size_t tag) {
        if (at(tag + 1) == '/') {
            read_end_tag(tag);
            return;
        }
        const std::size_t end = skip_name(tag + 1);
        if (m_offset <= end) {
            // A word after a '<' that was just typed is text.
            m_result.is_finished =
                at(std::min(m_text.find_first_of("<>", end), m_text.size())) == '>';
            set(cursor::element, tag, m_result.is_finished ? end : m_offset);
            return;
        }
        if (end == tag + 1)
            return;
        m_result.tag = m_text.substr(tag + 1, end - tag - 1);
        read_attributes(end);
    }

private:
    char at(std::size_t i) const { return i < m_text.size() ? m_text[i] : '\0'; }

    std::size_t skip_name(std::size_t i) const {
        while (is_name(at(i)))
            ++i;
        return i;
    }

    std::size_t skip_space(std::size_t i) const {
        while (is_space(at(i)))
            ++i;
        return i;
    }

    void set(cursor::kind_t kind, std::size_t begin, std::size_t end) {
        m_result.kind = kind;
        m_result.begin = begin;
        m_result.end = end;
    }

    void read_end_tag(std::size_t tag) {
        const std::size_t end = skip_name(tag + 2);
        if (m_offset < tag + 2 || m_offset > end)
            return;
        m_result.is_finished = at(end) == '>';
        set(cursor::end_tag, tag, end);
    }

    void read_attributes(std::size_t i) {
        for (;;) {
            const std::size_t begin = skip_space(i);
            const bool is_between = m_offset > i && m_offset <= begin;
            if (is_between && (m_offset < begin || !is_letter(at(begin))))
                set(cursor::attribute_name, m_offset, m_offset);
            if (begin >= m_text.size() || m_text[begin] == '>' || m_text[begin] == '<') {
                // A place after the tag is in a text.
                if (m_offset > begin)
                    m_result.kind = cursor::elsewhere;
                return;
            }
            i = is_letter(m_text[begin]) ? read_attribute(begin) : begin + 1;
        }
    }

    // Returns where it ends.
    std::size_t read_attribute(std::size_t begin) {
        const std::size_t name_end = skip_name(begin);
        const std::string name = m_text.substr(begin, name_end - begin);
        const std::size_t equals = skip_space(name_end);
        const bool has_value = at(equals) == '=';
        const bool is_here = m_offset >= begin && m_offset <= name_end;
        if (is_here) {
            set(cursor::attribute_name, begin, name_end);
            m_result.is_finished = has_value;
        }
        const std::size_t quote = skip_space(equals + 1);
        if (!has_value || (at(quote) != '"' && at(quote) != '\'')) {
            if (!is_here)
                m_result.attributes.emplace_back(name, "");
            return has_value ? quote : name_end;
        }
        return read_value(name, quote, is_here);
    }

    std::size_t read_value(const std::string& name, std::size_t quote, bool is_name_here) {
        const std::size_t begin = quote + 1;
        const std::string ends = {m_text[quote], '<'};
        std::size_t end = std::min(m_text.find_first_of(ends, begin), m_text.size());
        bool is_closed = at(end) == m_text[quote];
        const bool is_here = m_offset >= begin && m_offset <= end;
        // A value up to the quote of the next attribute lacks its own.
        const bool is_next = is_closed && end > begin && m_text[end - 1] == '=';
        if (is_here && (!is_closed || is_next)) {
            is_closed = false;
            end = m_offset;
        }
        if (is_here) {
            set(cursor::attribute_value, begin, end);
            m_result.attribute = name;
            m_result.needs_quote = !is_closed;
            m_result.quote = m_text[quote];
        } else if (!is_name_here) {
            m_result.attributes.emplace_back(name, m_text.substr(begin, end - begin));
            m_result.follows_name = m_result.follows_name || (name == "name" && end < m_offset);
        }
        return is_closed ? end + 1 : end;
    }

    const std::string& m_text;
    const std::size_t m_offset;
    cursor& m_result;
};

// The elements that are open at the end of the document. An end tag without any bytes at the end of
// the file closes what only the file closes.
std::vector<std::string> open_elements(const document& before) {
    std::vector<std::string> result;
    for (const token& each : before.tokens().tokens()) {
        if (each.kind == token_kind::element_start)
            result.emplace_back(each.value);
        else if (each.kind == token_kind::element_end && !result.empty() &&
                 !(each.bytes.size() == 0 && each.bytes.begin >= before.bytes().size()))
            result.pop_back();
    }
    return result;
}

bool is_in_comment(const document& before) {
    const auto& problems = before.tokens().problems();
    return std::any_of(problems.begin(), problems.end(), [](const xml_problem& each) {
        return each.kind == xml_error::unexpected_end && each.element == "comment";
    });
}

void describe_surroundings(const document& before, cursor& result) {
    result.open = open_elements(before);
    const auto is_open = [&result](const char* name) {
        return std::find(result.open.begin(), result.open.end(), name) != result.open.end();
    };
    if (is_open("catalog") && !before.catalogs().empty()) {
        result.catalog = before.catalogs().back().name;
        result.locale = before.catalogs().back().locale;
    }
    if (is_open("msg") && !before.messages().empty()) {
        const message& last = before.messages().back();
        result.key = last.name;
        for (const item& each : before.items(last))
            if (each.is_argument && each.type != item_type::text)
                result.arguments.emplace_back(each.text);
    }
}

}  // namespace

cursor cursor_at(const std::string& text, std::size_t offset) {
    cursor result;
    result.begin = result.end = offset;
    const auto tag = offset == 0 ? text.npos : text.rfind('<', offset - 1);
    const document before("", text.substr(0, tag == text.npos ? offset : tag));
    if (is_in_comment(before))
        return result;
    describe_surroundings(before, result);
    if (tag != text.npos)
        tag_reader(text, offset, result).read(tag);
    return result;
}

}  // namespace tova_programs::xmc::lsp
