/// @file
/// Strings from runs of bytes that are a part of a longer content. Only for sources that are
/// compiled for filling strings in place (strings/unfilled.hpp).
///
///     return part_of(bytes.begin, bytes.length, content_end);
///
/// A function without state: any number of threads may call it.
#pragma once

#include "strings/unfilled.hpp"

#include <cstddef>
#include <string>

namespace TOVA_2_18 {
namespace serialization {
namespace detail {

/// The string of up to 15 bytes, of which 16 are readable. It needs no memory, and copying 16 bytes
/// takes less time than a call with the size.
__attribute__((always_inline)) inline std::string short_part_of(const char* bytes,
                                                                std::size_t size) {
    std::string made;
    strings::detail::fill_in_place(made, bytes, size);
    return made;
}

/// The string of `size` bytes. They may be followed by others, which are readable up to
/// `readable_end`. Every return is a temporary, so the string is constructed where the caller wants
/// it.
__attribute__((always_inline)) inline std::string part_of(const char* bytes, std::size_t size,
                                                          const char* readable_end) {
    if (strings::detail::fits_in_place<std::string>(size) && readable_end - bytes >= 16)
        return short_part_of(bytes, size);
    return std::string(bytes, size);
}

}  // namespace detail
}  // namespace serialization
}  // namespace TOVA_2_18
