// The three string widths, declared without the headers of the library. README.md says what this is
// for. Only the constructor without a body is a symbol of the library.
#pragma once

#include <cstddef>
#include <string>

namespace TOVA_2_18 {

namespace strings {

class ustring8 : public std::string {
public:
    ustring8() {}
    ustring8(const char* text);
    ustring8(const std::string& text) : std::string(text) {}
};

class ustring16 : public std::basic_string<unsigned short> {
public:
    ustring16() {}
    ustring16(std::size_t count, unsigned short unit)
        : std::basic_string<unsigned short>(count, unit) {}
};

class ustring32 : public std::wstring {
public:
    ustring32() {}
    ustring32(const wchar_t* text) : std::wstring(text) {}
};

}  // namespace strings

}  // namespace TOVA_2_18
