/// @file
/// Helpers that all buffers share, whatever their encoding.
///
/// Threads: one thread at a time may use a buffer.
#pragma once

#include <tova/serialization/serialize_buffer.hpp>

#include <cstddef>
#include <stdexcept>
#include <string>

namespace TOVA_2_18 {
namespace serialization {
namespace detail {

// Contract: a copy of a sequential buffer takes over the reference count and the heap mark, which
// the base class has just set to 0 and false for it.
inline void take_over_state(serialize_buffer& copy, const serialize_buffer& source) {
    copy.count = source.count;
    copy.allocated = source.allocated;
}

// Contract: the message is published, so it is written out here and doesn't depend on the installed
// standard library.
inline void require_text(const char* text, int length) {
    if (text == nullptr && length != 0)
        throw std::logic_error("basic_string::_M_construct null not valid");
}

// A negative length becomes a huge size, for which the string throws `std::length_error`.
inline void replace(std::string& content, const char* text, int length) {
    require_text(text, length);
    if (length == 0)
        content.clear();
    else
        content.assign(text, static_cast<std::size_t>(length));
}

// Sets the heap mark of an object created by a factory. The caller holds or deletes it.
template <typename Buffer>
Buffer* marked(Buffer* made) {
    made->allocated = true;
    return made;
}

}  // namespace detail
}  // namespace serialization
}  // namespace TOVA_2_18
