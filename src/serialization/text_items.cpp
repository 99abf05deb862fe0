#include "serialization/text_items.hpp"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace TOVA_2_18 {
namespace serialization {
namespace detail {

namespace {

// Contract: the message is that of `std::string::substr`. It is published, so it is written out
// here and doesn't depend on the installed standard library.
void require_position(std::size_t position, std::size_t size) {
    if (position > size)
        throw std::out_of_range("basic_string::substr: __pos (which is " +
                                std::to_string(position) + ") > this->size() (which is " +
                                std::to_string(size) + ")");
}

}  // namespace

byte_run next_field(const byte_run& content, std::size_t& position) {
    const std::size_t start = position;
    if (start == std::string::npos)
        return byte_run{content.begin, 0};

    // Contract: the position moves before it is checked, so a read that raises leaves the buffer at
    // its end and the next read returns 0.
    const void* separator = nullptr;
    if (start < content.length)
        separator = std::memchr(content.begin + start, item_separator, content.length - start);
    if (separator == nullptr) {
        position = std::string::npos;
        require_position(start, content.length);
        return byte_run{content.begin + start, content.length - start};
    }
    const auto next = static_cast<std::size_t>(static_cast<const char*>(separator) - content.begin);
    position = next + 1;
    return byte_run{content.begin + start, next - start};
}

byte_run next_bytes(const byte_run& content, std::size_t& position, int length) {
    const std::size_t start = position;
    const auto wanted = static_cast<std::size_t>(length);
    position = start + wanted + 1;
    if (length == 0)
        return byte_run{content.begin, 0};
    require_position(start, content.length);
    return byte_run{content.begin + start, std::min(wanted, content.length - start)};
}

byte_run next_string(const byte_run& content, std::size_t& position) {
    if (position == std::string::npos)
        return byte_run{content.begin, 0};
    const int length =
        as_integer<int>(next_field(content, position), generic::convert::str_to_int32);
    return next_bytes(content, position, length);
}

}  // namespace detail
}  // namespace serialization
}  // namespace TOVA_2_18
