/// @file
/// A name, value or text in place, in a document or in a string that outlives the piece.
///
///     const piece name(begin, end);
///     if (name.is("catalog"))
///         remember(name.string());
///
/// A plain value that owns nothing; any number of threads may read what it refers to.
#pragma once

#include <tova/strings/ustring.hpp>

#include <cstddef>
#include <cstring>

namespace TOVA_2_18 {
namespace parser {
namespace detail {

struct piece {
    piece() : data(""), size(0) {}
    piece(const char* from, std::size_t count) : data(from), size(count) {}
    piece(const char* begin, const char* end)
        : data(begin), size(static_cast<std::size_t>(end - begin)) {}
    explicit piece(const strings::ustring8& string) : data(string.data()), size(string.size()) {}

    bool empty() const { return size == 0; }

    /// Whether it equals a literal without NUL bytes.
    template <std::size_t Size>
    bool is(const char (&literal)[Size]) const {
        return size == Size - 1 && std::memcmp(data, literal, Size - 1) == 0;
    }

    strings::ustring8 string() const { return strings::ustring8(data, size); }

    const char* data;  // bytes, not terminated
    std::size_t size;
};

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
