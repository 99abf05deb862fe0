// A file of its own: it fills strings in place, and has no function with a throw() of its own.
#include "serialization/new_string.hpp"

#include "strings/unfilled.hpp"

namespace TOVA_2_18 {
namespace serialization {
namespace detail {

std::string new_string(const char* bytes, std::size_t size) {
    std::string made;
    if (size > strings::detail::few_bytes) {
        made.assign(bytes, size);
        return made;
    }
    // Inlined, so that what it captures stays in registers.
    strings::detail::append_unfilled(
        made, size, [ bytes, size ](char* to) __attribute__((always_inline)) {
            strings::detail::copy_few_bytes(to, bytes, size);
            return size;
        });
    return made;
}

}  // namespace detail
}  // namespace serialization
}  // namespace TOVA_2_18
