#include "xmc/lsp/positions.hpp"

#include <algorithm>
#include <utility>

namespace tova_programs::xmc::lsp {

std::size_t character_size(std::string_view text, std::size_t offset) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[offset + i]); };
    const unsigned char lead = byte(0);
    if (lead < 0xC2 || lead > 0xF4)
        return 1;
    const std::size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (text.size() - offset < size)
        return 1;
    for (std::size_t i = 1; i < size; ++i)
        if ((byte(i) & 0xC0) != 0x80)
            return 1;
    // Overlong forms, surrogates, and what is beyond the last character.
    if ((lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xED && byte(1) > 0x9F) ||
        (lead == 0xF0 && byte(1) < 0x90) || (lead == 0xF4 && byte(1) > 0x8F))
        return 1;
    return size;
}

bool is_utf8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t size = character_size(text, at);
        if (size == 1 && static_cast<unsigned char>(text[at]) >= 0x80)
            return false;
        at += size;
    }
    return true;
}

namespace {

// A character of four bytes is a pair of UTF-16 units.
std::size_t units_of(std::size_t size, encoding units) {
    if (units == encoding::utf8)
        return size;
    return size == 4 ? 2 : 1;
}

}  // namespace

line_map::line_map(std::string_view text, encoding units)
    : m_text(text), m_units(units), m_begins(1, 0) {
    for (std::size_t at = text.find_first_of("\r\n"); at != text.npos;
         at = text.find_first_of("\r\n", at)) {
        at += text.substr(at, 2) == "\r\n" ? 2 : 1;
        m_begins.push_back(at);
    }
}

std::size_t line_map::content_end(std::size_t line) const {
    if (line + 1 == m_begins.size())
        return m_text.size();
    std::size_t end = m_begins[line + 1] - 1;
    if (m_text[end] == '\n' && end > m_begins[line] && m_text[end - 1] == '\r')
        --end;
    return end;
}

position line_map::at(std::size_t offset) const {
    offset = std::min(offset, m_text.size());
    const auto after = std::upper_bound(m_begins.begin(), m_begins.end(), offset);
    position result;
    result.line = static_cast<std::size_t>(after - m_begins.begin()) - 1;
    const std::size_t end = std::min(offset, content_end(result.line));
    for (std::size_t at = m_begins[result.line]; at < end;) {
        const std::size_t size = character_size(m_text, at);
        if (at + size > end)
            break;
        result.character += units_of(size, m_units);
        at += size;
    }
    return result;
}

std::size_t line_map::offset(position where) const {
    if (where.line >= m_begins.size())
        return m_text.size();
    const std::size_t end = content_end(where.line);
    std::size_t at = m_begins[where.line];
    for (std::size_t left = where.character; at < end;) {
        const std::size_t size = character_size(m_text, at);
        const std::size_t units = units_of(size, m_units);
        if (units > left)
            break;
        left -= units;
        at += size;
    }
    return at;
}

void replace_range(std::string& text, encoding units, position begin, position end,
                   std::string_view fresh) {
    const line_map lines(text, units);
    std::size_t from = lines.offset(begin);
    std::size_t to = lines.offset(end);
    if (to < from)
        std::swap(from, to);
    text.replace(from, to - from, fresh);
}

}  // namespace tova_programs::xmc::lsp
