#include <tova/strings/case.hpp>

#include "strings/ctype.hpp"

#include <algorithm>

namespace TOVA_2_18 {
namespace strings {

namespace {

// One unit at a time: a character of several units is left alone, even if it is a letter.
template <typename String>
String lower_range(const String& text, std::size_t first, std::size_t last) {
    String result(text);
    for (std::size_t i = first; i < last; ++i)
        result[i] = detail::lower(result[i]);
    return result;
}

template <typename String>
String upper_all(const String& text) {
    String result(text);
    for (std::size_t i = 0; i < result.size(); ++i)
        result[i] = detail::upper(result[i]);
    return result;
}

// A `last` of (size_t)-1 means the end. Any other value past the end violates the precondition; it
// is limited to the size, so only the string's memory is touched.
template <typename String>
String lower_in_bounds(const String& text, std::size_t first, std::size_t last) {
    return lower_range(text, first, std::min(last, text.size()));
}

}  // namespace

ustring8 to_lower(const ustring8& text) {
    return lower_range(text, 0, text.size());
}

ustring16 to_lower(const ustring16& text) {
    return lower_range(text, 0, text.size());
}

ustring32 to_lower(const ustring32& text) {
    return lower_range(text, 0, text.size());
}

ustring8 to_upper(const ustring8& text) {
    return upper_all(text);
}

ustring16 to_upper(const ustring16& text) {
    return upper_all(text);
}

ustring32 to_upper(const ustring32& text) {
    return upper_all(text);
}

ustring8 lower_case(const ustring8& text, unsigned long first, unsigned long last) {
    return lower_in_bounds(text, first, last);
}

ustring16 lower_case(const ustring16& text, unsigned long first, unsigned long last) {
    return lower_in_bounds(text, first, last);
}

ustring32 lower_case(const ustring32& text, unsigned long first, unsigned long last) {
    return lower_in_bounds(text, first, last);
}

}  // namespace strings
}  // namespace TOVA_2_18
