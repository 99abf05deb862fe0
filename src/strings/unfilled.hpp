/// @file
/// Strings that are filled in place, without clearing them first.
///
///     detail::append_unfilled(text, 100, [](char* to) { return fill(to); });  // up to 100 units
///
/// The standard library offers that from C++23 on, so the sources that need it are compiled as
/// C++23. With an older library the new units are cleared, and the result is the same.
#pragma once

#include <cstddef>
#include <string>

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

}  // namespace detail
}  // namespace strings
}  // namespace TOVA_2_18
