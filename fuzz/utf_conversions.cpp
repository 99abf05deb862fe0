// The conversions between the three widths, the decoders and the position helpers: any bytes as a
// string of each width, compared with the second implementation of the tests.
//
// Input: the bytes of the string.
#include <tova/strings/gh2.hpp>
#include <tova/strings/unicode.hpp>

#include "../tests/strings/unicode_oracle.hpp"
#include "require.hpp"
#include "support/choose_form.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

using namespace tova::strings;
using fuzz_support::require;
using unicode_oracle::points;

template <typename String>
points values(const String& text) {
    return points(text.begin(), text.end());
}

// The bytes as code units in host order. Bytes at the end that do not fill a unit are left out.
template <typename String>
String units_of(const std::uint8_t* data, std::size_t size) {
    String text(size / sizeof(typename String::value_type), 0);
    if (!text.empty())
        std::memcpy(&text[0], data, text.size() * sizeof(typename String::value_type));
    return text;
}

template <typename Text>
void check_unichar(const Text& text, std::size_t at, std::size_t taken, long point) {
    unsigned long advance = 0;
    const unsigned int result = unichar(text.data(), text.size(), at, advance);
    require(result == static_cast<unsigned int>(taken == 0 ? '?' : point));
    require(advance == (taken == 0 ? unicode_oracle::none : taken));
}

void check_utf8(const ustring8& text) {
    require(values(utf8_to_utf32(text)) == unicode_oracle::utf8_to_utf32(text));
    require(values(utf8_to_utf16(text)) == unicode_oracle::utf8_to_utf16(text).values);
    for (std::size_t at = 0; at < text.size(); ++at) {
        long point = 0;
        const std::size_t taken = unicode_oracle::sequence_at(text, at, point);
        check_unichar(text, at, taken, point);
        require(gh2::validate_utf8(text.data() + at, text.size() - at) == (taken != 0));
    }
    check_unichar(text, text.size(), 0, 0);
    for (std::size_t number = 0; number <= text.size(); number += 1 + number / 8)
        require(character_index(text, number) == unicode_oracle::character_index(text, number));
}

void check_utf16(ustring16 text) {
    check_BOM_and_modify_swap(text);  // a leading 0xFFFE would recurse without end
    const points units = values(text);
    const unicode_oracle::answer decoded = unicode_oracle::utf16_to_utf32(units);
    require(values(utf16_to_utf32(text)) == decoded.values);
    require(utf16_to_utf8(text) == unicode_oracle::utf16_to_utf8(units));
    if (decoded.good && !units.empty()) {
        const std::size_t taken = unicode_oracle::is_high(units[0]) ? 2 : 1;
        check_unichar(text, 0, taken, decoded.values[0]);
        require(utf8_to_utf16(utf16_to_utf8(text)) == text);
    }
    check_unichar(text, text.size(), 0, 0);
    for (std::size_t number = 0; number <= text.size(); number += 1 + number / 8)
        require(character_index(text, number) == unicode_oracle::character_index(units, number));
}

void check_utf32(const ustring32& text) {
    const points units = values(text);
    require(utf32_to_utf8(text) == unicode_oracle::utf32_to_utf8(units));
    require(values(utf32_to_utf16(text)) == unicode_oracle::utf32_to_utf16(units));
    for (std::size_t at = 0; at < text.size(); ++at)
        check_unichar(text, at, 1, units[at]);
    check_unichar(text, text.size(), 0, 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    const ustring8 text = units_of<ustring8>(data, size);
    check_utf8(text);
    check_utf16(units_of<ustring16>(data, size));
    check_utf32(units_of<ustring32>(data, size));
    check_utf32(utf8_to_utf32(text));  // mostly valid characters, unlike in the line above
    return 0;
}
