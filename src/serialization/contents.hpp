// What the two encodings of `serialize_buffer` do alike.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

#include <tova/serialization/serialize_buffer.hpp>

namespace TOVA_2_18 {
namespace serialization {
namespace detail {

// Contract: a copy of a buffer takes over the holders' count and the heap mark, where the base
// class starts afresh.
inline void take_over_state(serialize_buffer& copy, const serialize_buffer& source) {
    copy.count = source.count;
    copy.allocated = source.allocated;
}

// The message is published and so doesn't follow the installed standard library.
inline void require_text(const char* text, int length) {
    if (text == nullptr && length != 0)
        throw std::logic_error("basic_string::_M_construct null not valid");
}

// A negative length is huge as a size, and the string refuses it.
inline void replace(std::string& content, const char* text, int length) {
    require_text(text, length);
    if (length == 0)
        content.clear();
    else
        content.assign(text, static_cast<std::size_t>(length));
}

// Factories mark what they made; its receiver holds or deletes it.
template <typename Buffer>
Buffer* marked(Buffer* made) {
    made->allocated = true;
    return made;
}

}  // namespace detail
}  // namespace serialization
}  // namespace TOVA_2_18
