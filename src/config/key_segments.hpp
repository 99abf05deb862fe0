/// @file
/// Splits a key into the lower-case names of the nodes on its path.
///
///     key_segments segments("Net/Port");
///     ustring8 name;
///     while (segments.next(name))
///         ...  // "net", then "port"
///
/// An object belongs to one thread; the key that it walks may be shared as long as nobody changes
/// it.
#pragma once

#include <tova/strings/ustring.hpp>

#include "config/character_classes.hpp"
#include "generic/convert/decimal_digits.hpp"

namespace TOVA_2_18 {
namespace config {
namespace detail {

// The first separator among eight bytes, in memory order, or 8. A "." and a "/" differ in one bit.
inline unsigned first_separator(unsigned long bytes) {
    const unsigned long ones = 0x0101010101010101;
    const unsigned long dots = (bytes & ~ones) ^ (ones * '.');
    const unsigned long backslashes = bytes ^ (ones * '\\');
    // The lowest byte with its top bit set was zero, and so is the lowest zero.
    const unsigned long found =
        (((dots - ones) & ~dots) | ((backslashes - ones) & ~backslashes)) & (ones << 7);
    return found == 0 ? 8 : static_cast<unsigned>(__builtin_ctzl(found)) / 8;
}

// The index of the first separator from byte `begin` on, or the size of the key.
inline strings::ustring8::size_type end_of_segment(const strings::ustring8& key,
                                                   strings::ustring8::size_type begin) {
    using generic::convert::detail::load_up_to_eight;
    for (; begin < key.size(); begin += 8) {
        const unsigned long bytes = load_up_to_eight(key.data() + begin, key.size() - begin);
        const unsigned place = first_separator(bytes);
        if (place != 8)
            return begin + place;
    }
    return key.size();
}

// Writes the segment of `key` that starts at byte `begin` to `segment`, in lower case. Returns the
// index of the separator after it, or the size of the key.
inline strings::ustring8::size_type read_segment(const strings::ustring8& key,
                                                 strings::ustring8::size_type begin,
                                                 strings::ustring8& segment) {
    const strings::ustring8::size_type end = end_of_segment(key, begin);
    segment.assign(key, begin, end - begin);
    const lower_caser lower;
    for (char& character : segment)
        character = lower(character);
    return end;
}

// Walks the segments of a key in time linear in the key. The key must outlive the walk.
class key_segments {
public:
    explicit key_segments(const strings::ustring8& key) : m_key(key) {}

    // Reads the next segment. Returns false after the last one.
    //
    // Contract: every key has a first segment, even the empty key, and a separator at the very end
    // does not start another: "a" and "a." are the same path, "a.." has an empty second segment.
    bool next(strings::ustring8& segment) {
        if (m_ended)
            return false;
        const strings::ustring8::size_type end = read_segment(m_key, m_position, segment);
        m_position = end + 1;
        m_ended = m_position >= m_key.size();
        return true;
    }

    bool has_next() const { return !m_ended; }

private:
    const strings::ustring8& m_key;
    strings::ustring8::size_type m_position = 0;
    bool m_ended = false;
};

}  // namespace detail
}  // namespace config
}  // namespace TOVA_2_18
