/// @file
/// Fills strings in place, without clearing them first.
///
///     detail::append_unfilled(text, 100, [](char* to) { return fill(to); });  // up to 100 units
///
/// The standard library supports this since C++23, so the sources that need it are compiled as
/// C++23. With an older library the new units are cleared first, with the same result.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

namespace TOVA_2_18 {
namespace strings {
namespace detail {

// Appends the units that `fill` writes to its argument and whose number, at most `room`, it
// returns. `fill` must not raise.
template <typename String, typename Fill>
inline void append_unfilled(String& text, std::size_t room, Fill fill) {
    typedef typename String::value_type unit;
    const std::size_t size = text.size();
#if defined(__cpp_lib_string_resize_and_overwrite)
    text.resize_and_overwrite(size + room,
                              [&](unit* units, std::size_t) { return size + fill(units + size); });
#else
    text.resize(size + room);
    text.resize(size + fill(static_cast<unit*>(&text[0]) + size));
#endif
}

// The same for a string that has the room already.
template <typename String, typename Fill>
inline void append_within(String& text, std::size_t room, Fill fill) {
#if defined(__GNUC__)
    if (text.size() + room > text.capacity())
        __builtin_unreachable();  // the code that grows the string is left out
#endif
    append_unfilled(text, room, fill);
}

// Whether a string of `size` units is stored in the string object itself.
template <typename String>
inline bool fits_in_place(std::size_t size) {
    return size * sizeof(typename String::value_type) < 16;
}

// Makes a string of `size` units, which fits into the object, from an empty one. 16 bytes must be
// readable at `from`: all of them are copied, because the object has room for them.
template <typename String>
inline void fill_in_place(String& text, const typename String::value_type* from, std::size_t size) {
#if defined(__cpp_lib_string_resize_and_overwrite)
    text.resize_and_overwrite(size, [from, size](typename String::value_type* to, std::size_t) {
        std::memcpy(to, from, 16);
        return size;
    });
#else
    text.assign(from, size);
#endif
}

// Copies up to 64 bytes. Two overlapping copies of a fixed size take less time than a call with a
// size that becomes known late.
__attribute__((always_inline)) inline void copy_few_bytes(char* to, const char* from,
                                                          std::size_t size) {
    char first[32];
    char last[32];
    if (size >= 32) {
        std::memcpy(first, from, 32);
        std::memcpy(last, from + size - 32, 32);
        std::memcpy(to, first, 32);
        std::memcpy(to + size - 32, last, 32);
    } else if (size >= 16) {
        std::memcpy(first, from, 16);
        std::memcpy(last, from + size - 16, 16);
        std::memcpy(to, first, 16);
        std::memcpy(to + size - 16, last, 16);
    } else if (size >= 8) {
        std::memcpy(first, from, 8);
        std::memcpy(last, from + size - 8, 8);
        std::memcpy(to, first, 8);
        std::memcpy(to + size - 8, last, 8);
    } else if (size >= 4) {
        std::memcpy(first, from, 4);
        std::memcpy(last, from + size - 4, 4);
        std::memcpy(to, first, 4);
        std::memcpy(to + size - 4, last, 4);
    } else {
        for (std::size_t i = 0; i != size; ++i)
            to[i] = from[i];
    }
}
const std::size_t few_bytes = 64;

// Copies 16 to 64 bytes. No branch depends on the size: those of fields are hard to predict.
__attribute__((always_inline)) inline void copy_16_to_64_bytes(char* to, const char* from,
                                                               std::size_t size) {
    const std::size_t second = size < 32 ? size - 16 : 16;
    const std::size_t third = size < 32 ? 0 : size - 32;
    char bytes[64];
    std::memcpy(bytes, from, 16);
    std::memcpy(bytes + 16, from + second, 16);
    std::memcpy(bytes + 32, from + third, 16);
    std::memcpy(bytes + 48, from + size - 16, 16);
    std::memcpy(to, bytes, 16);
    std::memcpy(to + second, bytes + 16, 16);
    std::memcpy(to + third, bytes + 32, 16);
    std::memcpy(to + size - 16, bytes + 48, 16);
}

// Appends the string of `size` units at `from`.
template <typename String>
inline void append_copy(std::vector<String>& strings, const typename String::value_type* from,
                        std::size_t size) {
#if defined(__cpp_lib_string_resize_and_overwrite)
    const std::size_t bytes = size * sizeof(*from);
    if (bytes >= 16 && bytes <= few_bytes) {
        strings.emplace_back();
        strings.back().resize_and_overwrite(
            size, [=](typename String::value_type* to, std::size_t) {
                copy_16_to_64_bytes(reinterpret_cast<char*>(to),
                                    reinterpret_cast<const char*>(from), bytes);
                return size;
            });
        return;
    }
#endif
    strings.emplace_back(from, size);
}

}  // namespace detail
}  // namespace strings
}  // namespace TOVA_2_18
