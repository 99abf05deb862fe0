#include "xmc/lsp/frames.hpp"

#include <algorithm>

// A header is read line by line, so that the first wrong line is reported at once. From there on
// the reader is lost, until it finds the name of the header that every frame has.

namespace tova_programs::xmc::lsp {

namespace {

const std::size_t longest_line = 4096;
const std::string_view length_name = "content-length";

char lower(char c) {
    return static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
}

std::string lower(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), [](char c) { return lower(c); });
    return result;
}

std::string_view trimmed(std::string_view text) {
    const auto begin = text.find_first_not_of(" \t");
    if (begin == text.npos)
        return {};
    return text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

bool is_of_name(char c) {
    return c == '-' || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

// The line for a message: short, and without bytes that a terminal or JSON cannot show.
std::string shown(std::string_view line) {
    std::string result(line.substr(0, 60));
    for (char& c : result)
        if (static_cast<unsigned char>(c) < ' ' || static_cast<unsigned char>(c) > '~')
            c = '?';
    return '"' + result + (line.size() > 60 ? "..." : "") + '"';
}

}  // namespace

bool frame_reader::next(frame& result) {
    for (;;) {
        if (m_state == state::lost && !find_header())
            return false;
        if (m_state == state::content) {
            if (m_bytes.size() - m_at < m_length)
                return false;
            result = {false, m_bytes.substr(m_at, m_length)};
            m_at += m_length;
            m_state = state::header;
            m_has_length = false;
            forget_taken();
            return true;
        }
        result = {};
        if (!take_line(result))
            return false;
        if (result.is_error) {
            m_state = state::lost;
            m_has_length = false;
            return true;
        }
    }
}

// Takes one line of a header. Returns false if it is not complete.
bool frame_reader::take_line(frame& error) {
    const auto feed = m_bytes.find('\n', m_at);
    const std::size_t size = std::min(feed, m_bytes.size()) - m_at;
    if (size > longest_line) {
        error = {true,
                 "the line of a header is longer than " + std::to_string(longest_line) + " bytes"};
        m_at += size;
        return true;
    }
    if (feed == m_bytes.npos)
        return false;
    std::string_view line = std::string_view(m_bytes).substr(m_at, size);
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    if (line.empty() && m_has_length)
        m_state = state::content;
    else
        error.text = line.empty() ? "a header without Content-Length" : read_header(line);
    error.is_error = !error.text.empty();
    m_at = feed + 1;
    return true;
}

// Reads one field of a header. Returns what is wrong with it.
std::string frame_reader::read_header(std::string_view line) {
    const auto colon = line.find(':');
    const std::string name = lower(trimmed(line.substr(0, std::min(colon, line.size()))));
    if (colon == line.npos || name.empty() || !std::all_of(name.begin(), name.end(), is_of_name))
        return shown(line) + " is no header";
    const std::string_view value = trimmed(line.substr(colon + 1));
    if (name == "content-type") {
        const std::string type = lower(value);
        const auto charset = type.find("charset=");
        const bool is_utf8 = charset == type.npos || type.find("utf-8", charset) != type.npos ||
                             type.find("utf8", charset) != type.npos;
        return is_utf8 ? "" : shown(line) + ": only UTF-8 is read";
    }
    if (name != length_name)
        return "";
    const bool is_number =
        !value.empty() && value.size() <= 18 &&
        std::all_of(value.begin(), value.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (!is_number)
        return shown(line) + " is no length";
    m_length = std::stoul(std::string(value));
    m_has_length = true;
    return m_length > longest_content ? shown(line) + " is too long" : "";
}

bool frame_reader::find_header() {
    const auto begin = m_bytes.begin() + static_cast<std::ptrdiff_t>(m_at);
    const auto found = std::search(begin, m_bytes.end(), length_name.begin(), length_name.end(),
                                   [](char a, char b) { return lower(a) == b; });
    if (found == m_bytes.end()) {
        // The end may be the first part of the name.
        m_at = std::max(m_at, m_bytes.size() - std::min(m_bytes.size(), length_name.size() - 1));
        forget_taken();
        return false;
    }
    m_at = static_cast<std::size_t>(found - m_bytes.begin());
    m_state = state::header;
    return true;
}

void frame_reader::forget_taken() {
    m_bytes.erase(0, m_at);
    m_at = 0;
}

std::string framed(std::string_view content) {
    std::string result = "Content-Length: " + std::to_string(content.size()) + "\r\n\r\n";
    return result += content;
}

}  // namespace tova_programs::xmc::lsp
