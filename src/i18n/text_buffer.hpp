/// @file
/// A buffer into which a message is rendered. It stays on the stack while it is short.
///
///     text_buffer text;
///     text.append("12 of ", 6);
///     text += "30";
///     return text.string();
///
/// Appending to a `std::string` needs a call for each piece. Appending here is a copy, and the
/// string is made once, in its final size. A buffer belongs to one thread.
#pragma once

#include <tova/strings/ustring.hpp>

#include <cstddef>
#include <cstring>
#include <string>
#include <utility>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

class text_buffer {
public:
    text_buffer() : m_end(m_room), m_limit(m_room + sizeof m_room) {}
    text_buffer(const text_buffer&) = delete;
    text_buffer& operator=(const text_buffer&) = delete;

    std::size_t size() const { return m_spilled.size() + static_cast<std::size_t>(m_end - m_room); }
    const char* data() const { return is_spilled() ? m_spilled.data() : m_room; }

    void append(const char* bytes, std::size_t count) {
        if (count > static_cast<std::size_t>(m_limit - m_end))
            return append_to(spill(), bytes, count);
        std::memcpy(m_end, bytes, count);
        m_end += count;
    }
    /// The bytes of a whole string, of which most are short.
    void append(const std::string& text) {
        // Every string has room for so many bytes without an allocation, its terminator included,
        // so they may be read, and the compiler knows how to copy them.
        const std::size_t small = 16;
        if (text.size() > small || static_cast<std::size_t>(m_limit - m_end) < small)
            return append(text.data(), text.size());
        std::memcpy(m_end, text.data(), small);
        m_end += text.size();
    }
    void append(std::size_t count, char byte) {
        if (count > static_cast<std::size_t>(m_limit - m_end))
            return append_to(spill(), count, byte);
        std::memset(m_end, byte, count);
        m_end += count;
    }
    text_buffer& operator+=(char byte) {
        append(&byte, 1);
        return *this;
    }
    text_buffer& operator+=(const char* text) {
        append(text, std::strlen(text));
        return *this;
    }
    text_buffer& operator+=(const std::string& text) {
        append(text);
        return *this;
    }

    /// Whether `count` bytes may be stored at the end; `written` then adds them. For short pieces
    /// there is more room than most messages need.
    bool has_room(std::size_t count) const {
        return count <= static_cast<std::size_t>(m_limit - m_end);
    }
    char* end() const { return m_end; }
    void written(std::size_t count) { m_end += count; }

    /// Removes everything after the first `count` bytes. There must be at least as many.
    void cut(std::size_t count) {
        if (is_spilled())
            m_spilled.resize(count);
        else
            m_end = m_room + count;
    }

    /// Called once, at the end.
    strings::ustring8 string() {
        if (!is_spilled())
            return strings::ustring8(m_room, static_cast<std::size_t>(m_end - m_room));
        return std::move(m_spilled);
    }

private:
    bool is_spilled() const { return m_limit == m_room; }

    template <typename First, typename Second>
    static void append_to(std::string& spilled, First first, Second second) {
        spilled.append(first, second);
    }

    // If a piece does not fit, everything moves into a string, and all later pieces are appended
    // there.
    __attribute__((noinline)) strings::ustring8& spill() {
        if (!is_spilled()) {
            m_spilled.assign(m_room, static_cast<std::size_t>(m_end - m_room));
            m_end = m_room;
            m_limit = m_room;
        }
        return m_spilled;
    }

    char m_room[384];
    char* m_end;    // after the last byte, in the room
    char* m_limit;  // of the room; its beginning once the room is no longer used
    strings::ustring8 m_spilled;
};

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
