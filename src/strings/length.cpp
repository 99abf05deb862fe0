#include <tova/strings/length.hpp>

namespace TOVA_2_18 {
namespace strings {

// The traits of the standard string find the terminator; for `char` and `wchar_t` they call the C
// library. Units are counted, never characters.
unsigned long string_length(const char* text) {
    return ustring8::traits_type::length(text);
}

unsigned long string_length(const unsigned short* text) {
    return ustring16::traits_type::length(text);
}

unsigned long string_length(const wchar_t* text) {
    return ustring32::traits_type::length(text);
}

unsigned long string_length(const ustring8& text) {
    return text.size();
}

unsigned long string_length(const ustring16& text) {
    return text.size();
}

unsigned long string_length(const ustring32& text) {
    return text.size();
}

}  // namespace strings
}  // namespace TOVA_2_18
