// A file of its own: it is compiled as C++23, and has no function with a throw() of its own.
#include "serialization/append_bytes.hpp"

#include "strings/unfilled.hpp"

#include <cstddef>
#include <cstring>

namespace TOVA_2_18 {
namespace serialization {
namespace detail {

namespace {

template <std::size_t Size>
void append_fixed(std::string& content, const char* bytes) {
    strings::detail::append_unfilled(content, Size, [bytes](char* to) {
        std::memcpy(to, bytes, Size);
        return Size;
    });
}

}  // namespace

void append_two(std::string& content, const char* bytes) {
    append_fixed<2>(content, bytes);
}

void append_four(std::string& content, const char* bytes) {
    append_fixed<4>(content, bytes);
}

void append_eight(std::string& content, const char* bytes) {
    append_fixed<8>(content, bytes);
}

}  // namespace detail
}  // namespace serialization
}  // namespace TOVA_2_18
