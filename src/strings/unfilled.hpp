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

// Appends the string of `size` units at `from`. Two overlapping copies of a fixed size take less
// time than a call with a size that becomes known late.
template <typename String>
inline void append_copy(std::vector<String>& strings, const typename String::value_type* from,
                        std::size_t size) {
#if defined(__cpp_lib_string_resize_and_overwrite)
    const std::size_t bytes = size * sizeof(*from);
    if (bytes >= 16 && bytes <= 64) {
        strings.emplace_back();
        strings.back().resize_and_overwrite(
            size, [=](typename String::value_type* to, std::size_t) {
                const char* const source = reinterpret_cast<const char*>(from);
                char* const target = reinterpret_cast<char*>(to);
                char first[32];
                char last[32];
                if (bytes < 32) {
                    std::memcpy(first, source, 16);
                    std::memcpy(last, source + bytes - 16, 16);
                    std::memcpy(target, first, 16);
                    std::memcpy(target + bytes - 16, last, 16);
                } else {
                    std::memcpy(first, source, 32);
                    std::memcpy(last, source + bytes - 32, 32);
                    std::memcpy(target, first, 32);
                    std::memcpy(target + bytes - 32, last, 32);
                }
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
