/// @file
/// Fills a string with bytes of a document, for parsers that reuse one string for all events.
///
///     fill(name, begin, end - begin, document_end - begin);
///
/// `std::string::assign` must handle bytes of the string itself, and it is a call into the C++
/// library. Files that include this header may be compiled as C++23, where a string can be filled
/// in place; with older standards it is an `assign`. The functions have no state.
#pragma once

#include <tova/strings/ustring.hpp>

#include <cstddef>
#include <cstring>
#include <string>

namespace TOVA_2_18 {
namespace parser {
namespace detail {

#if defined(__cpp_lib_string_resize_and_overwrite)

// The size that the operation receives may be the new capacity, as in libstdc++ 12, so it is not
// used.
__attribute__((noinline)) inline void fill_larger(std::string& into, const char* data,
                                                  std::size_t size, std::size_t readable) {
    const std::size_t chunk = 32;
    if (size <= chunk && readable >= chunk && into.capacity() >= chunk) {
        into.resize_and_overwrite(chunk, [data, size](char* to, std::size_t) {
            std::memcpy(to, data, chunk);
            return size;
        });
        return;
    }
    into.resize_and_overwrite(size, [data, size](char* to, std::size_t) {
        std::memcpy(to, data, size);
        return size;
    });
}

/// Replaces the contents of a string with `size` bytes at `data`, which must not belong to the
/// string. `readable` bytes may be read there, at least `size`.
//
// Most names and values, with the terminator, fit into the string object itself, which one
// instruction copies.
__attribute__((always_inline)) inline void fill(strings::ustring8& into, const char* data,
                                                std::size_t size, std::size_t readable) {
    const std::size_t small = 16;
    std::string& base = into;
    if (size >= small || readable < small) {
        fill_larger(base, data, size, readable);
        return;
    }
    if (base.capacity() < small - 1)
        __builtin_unreachable();  // no string has less, so the code that grows it is left out
    base.resize_and_overwrite(small - 1, [data, size](char* to, std::size_t) {
        std::memcpy(to, data, small);
        return size;
    });
}

/// Appends `size` bytes, which must not belong to the string, and one byte more.
__attribute__((always_inline)) inline void append(strings::ustring8& to_string, const char* data,
                                                  std::size_t size, std::size_t readable,
                                                  char byte) {
    const std::size_t chunk = 32;
    const std::size_t most = 2 * chunk;
    std::string& base = to_string;
    const std::size_t used = base.size();
    if (size > most || readable < most || base.capacity() - used <= most) {
        base.append(data, size);
        base.push_back(byte);
        return;
    }
    if (used + most >= base.capacity())
        __builtin_unreachable();  // the code that grows the string is left out
    base.resize_and_overwrite(used + most + 1, [=](char* bytes, std::size_t) {
        std::memcpy(bytes + used, data, chunk);
        if (size > chunk)
            std::memcpy(bytes + used + chunk, data + chunk, chunk);
        bytes[used + size] = byte;
        return used + size + 1;
    });
}

#else

inline void append(strings::ustring8& to_string, const char* data, std::size_t size, std::size_t,
                   char byte) {
    to_string.append(data, size);
    to_string.push_back(byte);
}

inline void fill(strings::ustring8& into, const char* data, std::size_t size, std::size_t) {
    into.assign(data, size);
}

#endif

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
