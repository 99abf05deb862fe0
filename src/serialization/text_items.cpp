#include "serialization/text_items.hpp"

#include "generic/convert/decimal_digits.hpp"

#include <cstring>
#include <stdexcept>

namespace TOVA_2_18 {
namespace serialization {
namespace detail {

namespace {

inline void require_position(std::size_t position, std::size_t size) {
    if (position > size)
        raise_position(position, size);
}

// The first separator, or null. Most fields are short, and a call of `memchr` would take longer
// than a look at eight bytes: those that are separators become zero, and the lowest zero is found
// exactly.
const char* find_separator(const char* from, const char* end) {
    const unsigned long every_byte = 0x0101010101010101;
    for (int words = 0; words != 3 && end - from >= 8; ++words, from += 8) {
        const unsigned long bytes =
            generic::convert::detail::load_eight(from) ^ every_byte * item_separator;
        const unsigned long zeros = (bytes - every_byte) & ~bytes & 0x80 * every_byte;
        if (zeros != 0)
            return from + __builtin_ctzl(zeros) / 8;
    }
    return static_cast<const char*>(
        std::memchr(from, item_separator, static_cast<std::size_t>(end - from)));
}

// Reads a length of one or two digits, the most frequent ones.
inline bool take_small_length(const byte_run& content, std::size_t& position, int& length) {
    if (content.length < 3 || position > content.length - 3)
        return false;
    const char* const digits = content.begin + position;
    const unsigned first = static_cast<unsigned>(digits[0]) - '0';
    if (first > 9)
        return false;
    if (digits[1] == item_separator) {
        length = static_cast<int>(first);
        position += 2;
        return true;
    }
    const unsigned second = static_cast<unsigned>(digits[1]) - '0';
    if (first == 0 || second > 9 || digits[2] != item_separator)
        return false;
    length = static_cast<int>(10 * first + second);
    position += 3;
    return true;
}

}  // namespace

// Contract: the message is that of `std::string::substr`. It is published, so it is written out
// here and doesn't depend on the installed standard library.
void raise_position(std::size_t position, std::size_t size) {
    throw std::out_of_range("basic_string::substr: __pos (which is " + std::to_string(position) +
                            ") > this->size() (which is " + std::to_string(size) + ")");
}

byte_run next_field(const byte_run& content, std::size_t& position) {
    const std::size_t start = position;
    if (start == std::string::npos)
        return byte_run{content.begin, 0};

    // Contract: the position moves before it is checked, so a read that raises leaves the buffer at
    // its end and the next read returns 0.
    const char* separator = nullptr;
    if (start < content.length)
        separator = find_separator(content.begin + start, content.begin + content.length);
    if (separator == nullptr) {
        position = std::string::npos;
        require_position(start, content.length);
        return byte_run{content.begin + start, content.length - start};
    }
    const auto next = static_cast<std::size_t>(separator - content.begin);
    position = next + 1;
    return byte_run{content.begin + start, next - start};
}

byte_run next_string(const byte_run& content, std::size_t& position) {
    if (position == std::string::npos)
        return byte_run{content.begin, 0};
    int length;
    if (!take_small_length(content, position, length) &&
        !take_short_integer(content, position, length))
        length = as_integer<int>(next_field(content, position), generic::convert::str_to_int32);
    return next_bytes(content, position, length);
}

}  // namespace detail
}  // namespace serialization
}  // namespace TOVA_2_18
