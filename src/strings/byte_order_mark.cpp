#include <tova/strings/byte_order_mark.hpp>

#include <tova/strings/unicode.hpp>

#include <string>

namespace TOVA_2_18 {
namespace strings {

namespace {

// Built in this order while the library is loaded. The conversions are ready by then: they need no
// static object.
const ustring8 mark_8("\xEF\xBB\xBF");
const ustring16 mark_16(utf8_to_utf16(mark_8));
const ustring32 mark_32(utf8_to_utf32(mark_8));

// Contract: four marks are built, one for each kind of string that this family works on. There is
// no `remove_BOM` for `std::string`, so nothing reads this one; `used` keeps it in the library.
__attribute__((used)) const std::string plain_mark("\xEF\xBB\xBF");

template <typename String>
String remove_mark(const String& text, const String& mark) {
    if (text.compare(0, mark.size(), mark) == 0)
        return String(text, mark.size());
    return text;
}

}  // namespace

ustring8 remove_BOM(const ustring8& text) {
    return remove_mark(text, mark_8);
}

ustring16 remove_BOM(const ustring16& text) {
    return remove_mark(text, mark_16);
}

ustring32 remove_BOM(const ustring32& text) {
    return remove_mark(text, mark_32);
}

}  // namespace strings
}  // namespace TOVA_2_18
