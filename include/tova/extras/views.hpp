/// @file
/// Strings from and to the standard's string types and views.
///
///     const tova::strings::ustring8 name = tova::extras::to_ustring8(u8"Zoë");
///     const std::u16string wide = tova::extras::to_u16string(name);
///     takes_view(tova::extras::view(name));  // in C++17, a std::string_view
///
/// Between types of one encoding the units are copied, whatever they hold. Between encodings the
/// input is checked: invalid input raises `std::invalid_argument` with its position, where the
/// plain conversions return "-1" or "?". All functions are pure; threads may share their arguments.
#pragma once

#include <tova/abi.hpp>
#include <tova/extras/checked.hpp>
#include <tova/strings/ustring.hpp>

#include <string>
#if __cplusplus >= 201703L
#include <string_view>
#endif

namespace TOVA_2_18 {
namespace extras {

/// @name To the library's strings
///
/// From a pointer and a length in units, and from every standard string of that unit.
/// @{
inline strings::ustring8 to_ustring8(const char* text, std::size_t length) {
    return strings::ustring8(text, length);
}
inline strings::ustring8 to_ustring8(const std::string& text) {
    return strings::ustring8(text);
}
inline strings::ustring16 to_ustring16(const char16_t* text, std::size_t length) {
    strings::ustring16 result;
    result.assign(text, text + length);
    return result;
}
inline strings::ustring16 to_ustring16(const std::u16string& text) {
    return to_ustring16(text.data(), text.size());
}
inline strings::ustring32 to_ustring32(const char32_t* text, std::size_t length) {
    strings::ustring32 result;
    result.assign(text, text + length);
    return result;
}
inline strings::ustring32 to_ustring32(const std::u32string& text) {
    return to_ustring32(text.data(), text.size());
}
/// @}

/// @name To UTF-8
///
/// Raises `std::invalid_argument` for a surrogate without its partner and for a value above
/// U+10FFFF.
/// @{
inline strings::ustring8 to_ustring8(const char16_t* text, std::size_t length) {
    return try_utf16_to_utf8(to_ustring16(text, length)).value_or_raise();
}
inline strings::ustring8 to_ustring8(const std::u16string& text) {
    return to_ustring8(text.data(), text.size());
}
inline strings::ustring8 to_ustring8(const char32_t* text, std::size_t length) {
    return try_utf32_to_utf8(to_ustring32(text, length)).value_or_raise();
}
inline strings::ustring8 to_ustring8(const std::u32string& text) {
    return to_ustring8(text.data(), text.size());
}
#ifdef __cpp_char8_t
inline strings::ustring8 to_ustring8(const char8_t* text, std::size_t length) {
    return strings::ustring8(reinterpret_cast<const char*>(text), length);
}
inline strings::ustring8 to_ustring8(const std::u8string& text) {
    return to_ustring8(text.data(), text.size());
}
#endif
/// @}

/// @name To the standard's strings
/// @{
inline std::u16string to_u16string(const strings::ustring16& text) {
    return std::u16string(text.begin(), text.end());
}
inline std::u32string to_u32string(const strings::ustring32& text) {
    return std::u32string(text.begin(), text.end());
}
/// Raise `std::invalid_argument` for a text that is not valid UTF-8.
inline std::u16string to_u16string(const strings::ustring8& text) {
    return to_u16string(try_utf8_to_utf16(text).value_or_raise());
}
inline std::u32string to_u32string(const strings::ustring8& text) {
    return to_u32string(try_utf8_to_utf32(text).value_or_raise());
}
#ifdef __cpp_char8_t
inline std::u8string to_u8string(const strings::ustring8& text) {
    return std::u8string(reinterpret_cast<const char8_t*>(text.data()), text.size());
}
#endif
/// @}

/// @name Literals
///
/// A literal ends at its last unit, so NULs inside are kept.
/// @{
template <std::size_t Size>
strings::ustring8 to_ustring8(const char (&text)[Size]) {
    return strings::ustring8(text, Size - 1);
}
template <std::size_t Size>
strings::ustring16 to_ustring16(const char16_t (&text)[Size]) {
    return to_ustring16(text, Size - 1);
}
template <std::size_t Size>
strings::ustring32 to_ustring32(const char32_t (&text)[Size]) {
    return to_ustring32(text, Size - 1);
}
template <std::size_t Size>
strings::ustring8 to_ustring8(const char16_t (&text)[Size]) {
    return to_ustring8(text, Size - 1);
}
template <std::size_t Size>
strings::ustring8 to_ustring8(const char32_t (&text)[Size]) {
    return to_ustring8(text, Size - 1);
}
#ifdef __cpp_char8_t
template <std::size_t Size>
strings::ustring8 to_ustring8(const char8_t (&text)[Size]) {
    return to_ustring8(text, Size - 1);
}
#endif
/// @}

#if __cplusplus >= 201703L
/// @name Views
///
/// A view of the string, which must outlive it. `ustring16` has no view of the standard: its unit
/// is `unsigned short`, and reading it as `char16_t` is not allowed.
/// @{
inline std::string_view view(const strings::ustring8& text) {
    return std::string_view(text.data(), text.size());
}
inline std::wstring_view view(const strings::ustring32& text) {
    return std::wstring_view(text.data(), text.size());
}
inline std::basic_string_view<unsigned short> view(const strings::ustring16& text) {
    return std::basic_string_view<unsigned short>(text.data(), text.size());
}
inline strings::ustring8 to_ustring8(std::string_view text) {
    return strings::ustring8(text.data(), text.size());
}
inline strings::ustring8 to_ustring8(std::u16string_view text) {
    return to_ustring8(text.data(), text.size());
}
inline strings::ustring8 to_ustring8(std::u32string_view text) {
    return to_ustring8(text.data(), text.size());
}
inline strings::ustring16 to_ustring16(std::u16string_view text) {
    return to_ustring16(text.data(), text.size());
}
inline strings::ustring32 to_ustring32(std::u32string_view text) {
    return to_ustring32(text.data(), text.size());
}
#ifdef __cpp_char8_t
inline strings::ustring8 to_ustring8(std::u8string_view text) {
    return to_ustring8(text.data(), text.size());
}
#endif
/// @}
#endif

}  // namespace extras
}  // namespace TOVA_2_18
