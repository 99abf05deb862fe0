#include <tova/strings/unicode.hpp>

#include <algorithm>

#include "debug/assertion.hpp"
#include "strings/ascii_run.hpp"
#include "strings/utf8.hpp"
#include "strings/work_buffer.hpp"

namespace TOVA_2_18 {
namespace strings {

namespace {

const char source_path[] = "strings/unicode";  // path below src/, no extension
const unsigned int utf16_to_utf8_line = 226;   // published, as the line below
const unsigned int utf8_to_utf16_line = 353;

const unsigned short swapped_mark = 0xFFFE;  // the byte order mark in the other order
const int unicode_end = 0x110000;            // the first value above Unicode
const std::size_t block_size = 256;  // units of a source whose results are appended together
const unsigned long failed = static_cast<unsigned long>(-1);

const unsigned char* bytes_of(const ustring8& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

bool is_high_surrogate(unsigned int unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool is_low_surrogate(unsigned int unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

bool is_surrogate(int value) {
    return value >= 0xD800 && value <= 0xDFFF;
}

// The code point of a pair; 0x35FDC00 is (0xD800 << 10) + 0xDC00 - 0x10000.
unsigned int combine(unsigned int high, unsigned int low) {
    return (high << 10) + low - 0x35FDC00;
}

// Reads the code point at unit `i` of a terminated text and steps over it. Answers false for an
// unpaired surrogate; behind a high one at the end of the text stands the terminator.
inline bool read_units(const unsigned short* units, std::size_t& i, unsigned int& point) {
    point = units[i++];
    if (!is_surrogate(static_cast<int>(point)))
        return true;
    if (is_low_surrogate(point) || !is_low_surrogate(units[i]))
        return false;
    point = combine(point, units[i++]);
    return true;
}

// The characters of a good text; no more than those of a bad one, where stray bytes count as well.
std::size_t count_leads(const unsigned char* bytes, std::size_t size) {
    std::size_t count = 0;
    std::size_t i = 0;
    for (; size - i >= 8; i += 8)
        count += detail::count_leads(bytes + i);
    for (; i < size; ++i)
        count += detail::is_continuation(bytes[i]) ? 0 : 1;
    return count;
}

unsigned int fail(unsigned long& advance) {
    advance = failed;
    return '?';
}

// Writes the sequence of a value below 0x110000 and returns its length.
inline std::size_t write_utf8(unsigned int value, char* to) {
    if (value < 0x80) {
        to[0] = static_cast<char>(value);
        return 1;
    }
    if (value < 0x800) {
        to[0] = static_cast<char>((value >> 6) | 0xC0);
        to[1] = static_cast<char>((value & 0x3F) | 0x80);
        return 2;
    }
    if (value < 0x10000) {
        to[0] = static_cast<char>((value >> 12) | 0xE0);
        to[1] = static_cast<char>(((value >> 6) & 0x3F) | 0x80);
        to[2] = static_cast<char>((value & 0x3F) | 0x80);
        return 3;
    }
    to[0] = static_cast<char>((value >> 18) | 0xF0);
    to[1] = static_cast<char>(((value >> 12) & 0x3F) | 0x80);
    to[2] = static_cast<char>(((value >> 6) & 0x3F) | 0x80);
    to[3] = static_cast<char>((value & 0x3F) | 0x80);
    return 4;
}

// Writes the two units of a complete four-byte sequence.
//
// Contract: the value isn't checked, so the unsigned terms wrap before they are cut to 16 bits. An
// overlong F0 80 80 80 becomes D7C0 DC00, and F4 90 80 80, above Unicode, becomes DC00 DC00.
void write_pair(const unsigned char* sequence, unsigned short* to) {
    const unsigned int b = sequence[0];
    const unsigned int c1 = sequence[1];
    const unsigned int c2 = sequence[2];
    const unsigned int c3 = sequence[3];
    to[0] = static_cast<unsigned short>(((((b & 7) * 4) + ((c1 & 0x3F) >> 4) - 1) << 6) +
                                        ((c1 & 0x0F) << 2) + ((c2 & 0x3F) >> 4) + 0xD800);
    to[1] = static_cast<unsigned short>(((c2 & 0x0F) << 6) + (c3 & 0x3F) + 0xDC00);
}

}  // namespace

unsigned int unichar(const char* text, unsigned long length, unsigned long index,
                     unsigned long& advance) {
    if (index >= length)
        return fail(advance);
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(text) + index;
    unsigned int point;
    const std::size_t taken = detail::read_sequence(bytes, length - index, point);
    if (taken == 0)
        return fail(advance);
    advance = taken;
    return point;
}

unsigned int unichar(const unsigned short* text, unsigned long length, unsigned long index,
                     unsigned long& advance) {
    if (index >= length)
        return fail(advance);
    const unsigned int unit = text[index];
    if (is_high_surrogate(unit)) {
        if (length - index < 2 || !is_low_surrogate(text[index + 1]))
            return fail(advance);
        advance = 2;
        return combine(unit, text[index + 1]);
    }
    if (is_low_surrogate(unit))
        return fail(advance);
    advance = 1;
    return unit;
}

unsigned int unichar(const wchar_t* text, unsigned long length, unsigned long index,
                     unsigned long& advance) {
    if (index >= length)
        return fail(advance);
    advance = 1;
    return static_cast<unsigned int>(text[index]);
}

ustring32 utf8_to_utf32(const ustring8& source) {
    const std::size_t size = source.size();
    const unsigned char* bytes = bytes_of(source);
    ustring32 text;
    text.reserve(count_leads(bytes, size));
    wchar_t block[block_size + 8];
    for (std::size_t i = 0; i < size;) {
        const std::size_t stop = std::min(size, i + block_size);
        std::size_t k = 0;
        while (i < stop) {
            if (bytes[i] < 0x80 && size - i >= 8 && detail::all_ascii(bytes + i)) {
                detail::widen(bytes + i, block + k);
                i += 8;
                k += 8;
                continue;
            }
            unsigned int point = '?';
            const std::size_t taken = detail::read_sequence(bytes + i, size - i, point);
            block[k++] = static_cast<wchar_t>(point);
            i += taken == 0 ? 1 : taken;
        }
        text.append(block, k);
    }
    return text;
}

ustring16 utf8_to_utf16(const ustring8& source) {
    const std::size_t length = source.size();
    const unsigned char* bytes = bytes_of(source);
    detail::work_buffer<unsigned short> output(length);
    unsigned short* units = output.units();
    std::size_t k = 0;
    for (std::size_t i = 0; i < length;) {
        const unsigned int b = bytes[i];
        if (b < 0x80) {
            if (length - i >= 8 && detail::all_ascii(bytes + i)) {
                detail::widen(bytes + i, units + k);
                i += 8;
                k += 8;
            } else {
                units[k++] = static_cast<unsigned short>(b);
                ++i;
            }
            continue;
        }
        unsigned int point;
        const std::size_t taken = detail::read_sequence(bytes + i, length - i, point);
        if (taken == 0)
            return utf8_to_utf16("-1");
        if (taken == 4) {
            write_pair(bytes + i, units + k);
            k += 2;
        } else {
            units[k++] = static_cast<unsigned short>(point);
        }
        i += taken;
    }
    debug::detail::check(k <= length, "k <= length", source_path, utf8_to_utf16_line,
                         "TOVA_2_18::strings::ustring16 "
                         "TOVA_2_18::strings::utf8_to_utf16(const TOVA_2_18::strings::ustring8 &)");
    return ustring16(units, k);
}

ustring8 utf16_to_utf8(const ustring16& source) {
    // Contract: the swap gives its argument back, so a text in the other byte order never arrives
    // and the stack runs out. Callers bring such text into host order first. The first unit of an
    // empty text is its terminator.
    if (source[0] == swapped_mark)
        return utf16_to_utf8(swap_string_bytes_order(source));

    const std::size_t size = source.size();
    const unsigned short* units = source.data();
    detail::work_buffer<char> output(4 * size);
    char* bytes = output.units();
    std::size_t k = 0;
    for (std::size_t i = 0; i < size;) {
        unsigned int c = units[i];
        if (c < 0x80) {
            if (size - i >= 4 && detail::all_ascii(units + i)) {
                detail::narrow(units + i, bytes + k);
                i += 4;
                k += 4;
            } else {
                bytes[k++] = static_cast<char>(c);
                ++i;
            }
            continue;
        }
        if (!read_units(units, i, c))
            return "-1";
        k += write_utf8(c, bytes + k);
    }
    debug::detail::check(
        k <= output.size(), "k <= output.size()", source_path, utf16_to_utf8_line,
        "TOVA_2_18::strings::ustring8 "
        "TOVA_2_18::strings::utf16_to_utf8(const TOVA_2_18::strings::ustring16 &)");
    return ustring8(bytes, k);
}

ustring8 utf32_to_utf8(const ustring32& source) {
    const std::size_t size = source.size();
    ustring8 text;
    text.reserve(2 * size);
    char block[4 * block_size];
    for (std::size_t i = 0; i < size;) {
        const std::size_t stop = std::min(size, i + block_size);
        std::size_t k = 0;
        for (; i < stop; ++i) {
            const int c = source[i];
            if (is_surrogate(c))
                return "-1";
            // Contract: a negative value counts as below 0x80 and gives its low byte; a value above
            // Unicode is dropped without a trace, though a surrogate is refused.
            if (c < 0x80)
                block[k++] = static_cast<char>(c);
            else if (c < unicode_end)
                k += write_utf8(static_cast<unsigned int>(c), block + k);
        }
        text.append(block, k);
    }
    return text;
}

ustring16 utf32_to_utf16(const ustring32& source) {
    const std::size_t size = source.size();
    ustring16 text;
    text.reserve(size);
    unsigned short block[2 * block_size];
    for (std::size_t i = 0; i < size;) {
        const std::size_t stop = std::min(size, i + block_size);
        std::size_t k = 0;
        for (; i < stop; ++i) {
            const int c = source[i];
            if (is_surrogate(c) || c >= unicode_end)
                return utf8_to_utf16("-1");
            // Contract: pairs begin at U+FFFF and no 0x10000 is taken off, so these pairs are not
            // those of `utf8_to_utf16`: U+10000 is D840 DC00 here and D800 DC00 there.
            if (c < 0xFFFF) {
                block[k++] = static_cast<unsigned short>(c);
            } else {
                block[k++] = static_cast<unsigned short>((c >> 10) + 0xD800);
                block[k++] = static_cast<unsigned short>((c & 0x3FF) + 0xDC00);
            }
        }
        text.append(block, k);
    }
    return text;
}

ustring32 utf16_to_utf32(const ustring16& source) {
    // Contract: no end, as in `utf16_to_utf8`.
    if (source[0] == swapped_mark)
        return utf16_to_utf32(swap_string_bytes_order(source));

    const std::size_t size = source.size();
    const unsigned short* units = source.data();
    ustring32 text;
    text.reserve(size);
    wchar_t block[block_size];
    for (std::size_t i = 0; i < size;) {
        const std::size_t stop = std::min(size, i + block_size);
        std::size_t k = 0;
        while (i < stop) {
            unsigned int c;
            if (!read_units(units, i, c))
                return utf8_to_utf32("-1");
            block[k++] = static_cast<wchar_t>(c);
        }
        text.append(block, k);
    }
    return text;
}

unsigned long character_index(const ustring8& text, unsigned long character) {
    const std::size_t size = text.size();
    if (character >= size)
        return failed;
    const unsigned char* bytes = bytes_of(text);
    std::size_t offset = 0;
    for (; character > 0 && offset < size; --character) {
        const std::size_t taken = detail::sequence_length(bytes + offset, size - offset);
        if (taken == 0)
            return failed;
        offset += taken;
    }
    // Contract: the walk goes on through the terminator. What is left to walk reads as 0 there, and
    // each such byte is a character.
    return offset + character;
}

unsigned long character_index(const ustring16& text, unsigned long character) {
    const std::size_t size = text.size();
    if (character >= size)
        return failed;
    const unsigned short* units = text.data();
    std::size_t offset = 0;
    for (; character > 0 && offset < size; --character) {
        if (is_high_surrogate(units[offset])) {
            if (!is_low_surrogate(units[offset + 1]))  // at the end of the text the terminator
                return failed;
            offset += 2;
        } else {
            // Contract: the first unit is asked here, not the one at the offset. A text that begins
            // with a stray low surrogate has no characters behind number 0; one further on counts
            // as a character.
            if (is_low_surrogate(units[0]))
                return failed;
            offset += 1;
        }
    }
    return offset + character;  // through the terminator, as in the 8-bit form
}

ustring16 swap_string_bytes_order(const ustring16& source) {
    ustring16 swapped(source);
    modify_swap_string_bytes_order(swapped);
    // Contract: the argument comes back unswapped; only the modify_ forms change bytes. The
    // conversions above rest on it.
    return source;
}

void modify_swap_string_bytes_order(ustring16& text) {
    for (unsigned short& unit : text)
        unit = static_cast<unsigned short>(unit << 8 | unit >> 8);
}

ustring16 check_BOM_and_swap(const ustring16& source) {
    if (source[0] == swapped_mark)
        return swap_string_bytes_order(source);
    return source;
}

void check_BOM_and_modify_swap(ustring16& text) {
    if (text[0] == swapped_mark)
        modify_swap_string_bytes_order(text);
}

}  // namespace strings
}  // namespace TOVA_2_18
