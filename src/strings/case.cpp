#include <tova/strings/case.hpp>

#include "strings/byte_kernels.hpp"
#include "strings/ctype.hpp"
#include "strings/unfilled.hpp"

#include <algorithm>

namespace TOVA_2_18 {
namespace strings {

namespace {

// Case is mapped one unit at a time, so a character of several units never changes as a whole. The
// tables are those of the current locale, so each call passes the table to the kernel for bytes.
inline void lower_units(const char* from, std::size_t size, char* to) {
    kernels::bytes().map(from, size, to, *__ctype_tolower_loc());
}

inline void upper_units(const char* from, std::size_t size, char* to) {
    kernels::bytes().map(from, size, to, *__ctype_toupper_loc());
}

template <typename Unit>
void lower_units(const Unit* from, std::size_t size, Unit* to) {
    for (std::size_t i = 0; i < size; ++i)
        to[i] = detail::lower(from[i]);
}

template <typename Unit>
void upper_units(const Unit* from, std::size_t size, Unit* to) {
    for (std::size_t i = 0; i < size; ++i)
        to[i] = detail::upper(from[i]);
}

template <typename String>
String lower_all(const String& text) {
    String result;
    detail::append_unfilled(result, text.size(), [&](typename String::value_type* to) {
        lower_units(text.data(), text.size(), to);
        return text.size();
    });
    return result;
}

template <typename String>
String upper_all(const String& text) {
    String result;
    detail::append_unfilled(result, text.size(), [&](typename String::value_type* to) {
        upper_units(text.data(), text.size(), to);
        return text.size();
    });
    return result;
}

// A `last` of (size_t)-1 means the end. Any other value past the end violates the precondition; it
// is limited to the size, so only the string's memory is touched.
template <typename String>
String lower_in_bounds(const String& text, std::size_t first, std::size_t last) {
    String result(text);
    const std::size_t end = std::min(last, text.size());
    if (first < end)
        lower_units(text.data() + first, end - first, &result[first]);
    return result;
}

}  // namespace

ustring8 to_lower(const ustring8& text) {
    return lower_all(text);
}

ustring16 to_lower(const ustring16& text) {
    return lower_all(text);
}

ustring32 to_lower(const ustring32& text) {
    return lower_all(text);
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
