/// @file
/// New strings from runs of bytes, which most reads return.
///
///     return new_string(bytes.begin, bytes.size);
///
/// A function without state: any number of threads may call it.
#pragma once

#include <cstddef>
#include <string>

namespace TOVA_2_18 {
namespace serialization {
namespace detail {

/// The string of `size` bytes; a null pointer is an empty string of size 0. Raises what an
/// allocation raises.
std::string new_string(const char* bytes, std::size_t size);

}  // namespace detail
}  // namespace serialization
}  // namespace TOVA_2_18
