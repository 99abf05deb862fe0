#include <tova/strings/case.hpp>

#include <algorithm>
#include <ctype.h>

namespace TOVA_2_18 {
namespace strings {

namespace {

// The C library's mapping of one unit. A `char` goes in with its sign.
//
// Contract: the table of the current locale answers unchanged. It reaches from -128 to 255, so -2
// of a 32-bit text becomes 254; other units are no business of the table and stay as they are.
template <int (*map)(int), typename Unit>
Unit map_unit(Unit unit) {
    const int value = unit;
    return value >= -128 && value <= 255 ? static_cast<Unit>(map(value)) : unit;
}

int lower(int value) {
    return ::tolower(value);
}

int upper(int value) {
    return ::toupper(value);
}

template <int (*map)(int), typename String>
String map_range(const String& text, std::size_t first, std::size_t last) {
    String result(text);
    for (std::size_t i = first; i < last; ++i)
        result[i] = map_unit<map>(result[i]);
    return result;
}

template <int (*map)(int), typename String>
String map_all(const String& text) {
    return map_range<map>(text, 0, text.size());
}

template <typename String>
String lower_range(const String& text, std::size_t first, std::size_t last) {
    // A `last` behind the end is the caller's fault; it reaches no memory that isn't the text's.
    return map_range<lower>(text, first, std::min(last, text.size()));
}

}  // namespace

ustring8 to_lower(const ustring8& text) {
    return map_all<lower>(text);
}

ustring16 to_lower(const ustring16& text) {
    return map_all<lower>(text);
}

ustring32 to_lower(const ustring32& text) {
    return map_all<lower>(text);
}

ustring8 to_upper(const ustring8& text) {
    return map_all<upper>(text);
}

ustring16 to_upper(const ustring16& text) {
    return map_all<upper>(text);
}

ustring32 to_upper(const ustring32& text) {
    return map_all<upper>(text);
}

ustring8 lower_case(const ustring8& text, unsigned long first, unsigned long last) {
    return lower_range(text, first, last);
}

ustring16 lower_case(const ustring16& text, unsigned long first, unsigned long last) {
    return lower_range(text, first, last);
}

ustring32 lower_case(const ustring32& text, unsigned long first, unsigned long last) {
    return lower_range(text, first, last);
}

}  // namespace strings
}  // namespace TOVA_2_18
