#include "serialization/text_items.hpp"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include <tova/generic/convert/str_to_x.hpp>

namespace TOVA_2_18 {
namespace serialization {
namespace detail {

namespace {

// The message is the standard library's for a substring that begins behind the end; it is published
// and so doesn't follow the installed version.
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
    const int length = as_int32(next_field(content, position));
    return next_bytes(content, position, length);
}

int as_int32(const byte_run& field) {
    // The parser takes a length of 0 for a text up to its terminator.
    if (field.length == 0)
        return 0;
    return generic::convert::str_to_int32(field.begin, field.length, types::radix_t::detect, false);
}

}  // namespace detail
}  // namespace serialization
}  // namespace TOVA_2_18
