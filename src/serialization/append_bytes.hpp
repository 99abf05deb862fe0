/// @file
/// Appends the bytes of a number to a content.
///
///     append_two(content, bytes);  // bytes[0] and bytes[1]
///
/// `std::string::append` allows for any length and for bytes of the string itself, and copies by a
/// call. Functions without state: any number of threads may call them, each with its own content.
#pragma once

#include <string>

namespace TOVA_2_18 {
namespace serialization {
namespace detail {

/// The bytes are not those of the content. Raise what an allocation raises, and change nothing
/// then.
void append_two(std::string& content, const char* bytes);
void append_four(std::string& content, const char* bytes);
void append_eight(std::string& content, const char* bytes);

}  // namespace detail
}  // namespace serialization
}  // namespace TOVA_2_18
