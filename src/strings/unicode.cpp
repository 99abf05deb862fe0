// Conversions between the three widths, and the walks over characters.
//
// A conversion has three stages: check the first unit for the other byte order (UTF-16 sources
// only), run a kernel over the units, and build the string. The kernels hold the loops, in one form
// for each instruction set. This file decides where their output goes and how invalid input is
// converted:
//
//   from     to                        invalid input
//   UTF-8    UTF-16                    "-1"
//   UTF-16   UTF-8                     "-1"
//   UTF-8    UTF-32                    "?" for each byte
//   UTF-16   UTF-32                    "-1"
//   UTF-32   UTF-8                     "-1", or dropped
//   UTF-32   UTF-16                    "-1"
//
// A short source is converted on the stack. For a longer one, a kernel first measures the result,
// so the string is allocated once, in its exact size, and filled in place.
//
// What is valid is decided in utf8.hpp and utf16.hpp, and only by structure: a lead byte with its
// continuations, a high surrogate with its low one. Overlong forms, encoded surrogates and values
// above U+10FFFF pass. Conversions, `unichar`, `character_index` and `gh2::validate_utf8` all
// follow this one rule, so an offset found by one of them is the start of a character for the
// others.
//
// "-1" replaces the whole result; a caller never sees a partial string. Nothing here raises an
// exception of the library.
#include <tova/strings/unicode.hpp>

#include "debug/assertion.hpp"
#include "strings/unfilled.hpp"
#include "strings/unicode_kernels.hpp"
#include "strings/utf16.hpp"
#include "strings/utf8.hpp"

#include <algorithm>
#include <cstring>

namespace TOVA_2_18 {
namespace strings {

namespace {

const char source_path[] = "strings/unicode";  // path below src/, no extension
const unsigned int utf16_to_utf8_line = 226;   // published, as the line below
const unsigned int utf8_to_utf16_line = 353;

const unsigned short swapped_mark = 0xFFFE;  // the byte order mark in the other order
const unsigned long failed = static_cast<unsigned long>(-1);

const unsigned char* bytes_of(const ustring8& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

unsigned int fail(unsigned long& advance) {
    advance = failed;
    return '?';
}

// The number of units in a buffer of 512 bytes on the stack.
template <typename Unit>
constexpr std::size_t local_units() {
    return 512 / sizeof(Unit);
}

// The kernels of one conversion.
template <typename Source, typename Target>
struct steps {
    kernels::measure<Source>* measure;
    kernels::convert<Source, Target>* convert;
    kernels::convert_simple<Source, Target>* simple;
};

// Converts the source and appends it to `text`, which already has the units before it. The result
// has the exact size.
template <typename Source, typename Result>
kernels::progress append_measured(const Source* source, std::size_t size, Result& text,
                                  const steps<Source, typename Result::value_type>& by,
                                  std::size_t least_capacity) {
    const std::size_t room = by.measure(source, size);
    text.reserve(std::max(least_capacity, text.size() + room));
    kernels::progress done = {0, 0};
    detail::append_unfilled(text, room, [&](typename Result::value_type* to) {
        done = by.convert(source, size, to, room);
        return done.written;
    });
    return done;
}

// Converts a source that begins with simple units, assuming that all of its units are simple: then
// it is read only once and not measured.
template <typename Source, typename Result>
kernels::progress convert_simple(const Source* source, std::size_t size, Result& text,
                                 const steps<Source, typename Result::value_type>& by,
                                 std::size_t least_capacity) {
    text.reserve(std::max(least_capacity, size));
    detail::append_unfilled(
        text, size, [&](typename Result::value_type* to) { return by.simple(source, size, to); });
    const std::size_t simple = text.size();
    if (simple == size)
        return {size, size};

    Result whole;
    whole.reserve(std::max(least_capacity, simple + by.measure(source + simple, size - simple)));
    whole.append(text.data(), simple);
    kernels::progress done = append_measured(source + simple, size - simple, whole, by, 0);
    text.swap(whole);
    done.read += simple;
    done.written += simple;
    return done;
}

// Converts the source into `text`, which is empty. Returns the position reached; if it is not the
// end, `text` has the result up to there. `Widest` is the largest number of units that one unit of
// the source can become.
template <std::size_t Widest, typename Source, typename Result>
kernels::progress convert(const Source* source, std::size_t size, Result& text,
                          const steps<Source, typename Result::value_type>& by,
                          std::size_t least_capacity = 0) {
    typedef typename Result::value_type unit;
    alignas(64) unit buffer[local_units<unit>()];
    if (Widest * size <= local_units<unit>()) {
        const kernels::progress done = by.convert(source, size, buffer, local_units<unit>());
        text.reserve(std::max(least_capacity, done.written));
        detail::append_unfilled(text, done.written, [&](unit* to) {
            std::memcpy(to, buffer, done.written * sizeof(unit));
            return done.written;
        });
        return done;
    }
    const std::size_t head = std::min(size, local_units<unit>());
    if (by.simple(source, head, buffer) == head)
        return convert_simple(source, size, text, by, least_capacity);
    return append_measured(source, size, text, by, least_capacity);
}

// The result for an invalid source. A conversion has one result variable and one `return`, so the
// result is constructed directly in the caller's object.
template <typename Result>
void become_minus_one(Result& text) {
    Result minus_one;
    minus_one.push_back('-');
    minus_one.push_back('1');
    text.swap(minus_one);
}

// Counts the characters from `at` on. Each invalid byte counts as one.
std::size_t count_with_marks(const unsigned char* bytes, std::size_t size, std::size_t at) {
    std::size_t count = 0;
    for (; at < size; ++count)
        at += std::max<std::size_t>(detail::sequence_length(bytes + at, size - at), 1);
    return count;
}

// Continues from the first invalid byte, at `read`.
void append_with_marks(ustring32& text, const unsigned char* bytes, std::size_t size,
                       std::size_t read) {
    const std::size_t room = count_with_marks(bytes, size, read);
    detail::append_unfilled(text, room, [&](wchar_t* to) {
        std::size_t written = 0;
        while (read < size) {
            const kernels::progress done = kernels::unicode().utf8_to_utf32(
                bytes + read, size - read, to + written, room - written);
            read += done.read;
            written += done.written;
            // Contract: only the byte that doesn't begin a sequence is skipped, so the bytes after
            // it are decoded.
            for (unsigned int point;
                 read < size && detail::read_sequence(bytes + read, size - read, point) == 0;
                 ++read)
                to[written++] = '?';
        }
        return written;
    });
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
    unsigned int point;
    const std::size_t taken = detail::read_units(text + index, length - index, point);
    if (taken == 0)
        return fail(advance);
    advance = taken;
    return point;
}

unsigned int unichar(const wchar_t* text, unsigned long length, unsigned long index,
                     unsigned long& advance) {
    if (index >= length)
        return fail(advance);
    advance = 1;
    return static_cast<unsigned int>(text[index]);
}

ustring32 utf8_to_utf32(const ustring8& source) {
    const kernels::unicode_form& form = kernels::unicode();
    const std::size_t size = source.size();
    ustring32 text;
    const kernels::progress done =
        convert<1>(bytes_of(source), size, text,
                   {form.measure_8_to_32, form.utf8_to_utf32, form.simple_8_to_32});
    if (done.read < size)
        append_with_marks(text, bytes_of(source), size, done.read);
    return text;
}

ustring16 utf8_to_utf16(const ustring8& source) {
    const kernels::unicode_form& form = kernels::unicode();
    const std::size_t length = source.size();
    ustring16 text;
    const kernels::progress done =
        convert<1>(bytes_of(source), length, text,
                   {form.measure_8_to_16, form.utf8_to_utf16, form.simple_8_to_16});
    const std::size_t k = done.written;
    debug::detail::check(k <= length, "k <= length", source_path, utf8_to_utf16_line,
                         "TOVA_2_18::strings::ustring16 "
                         "TOVA_2_18::strings::utf8_to_utf16(const TOVA_2_18::strings::ustring8 &)");
    if (done.read < length)
        become_minus_one(text);
    return text;
}

ustring8 utf16_to_utf8(const ustring16& source) {
    // Contract: the swap returns its argument unchanged, so for a string in the other byte order
    // the recursion never ends and the stack overflows. Callers convert such a string to host order
    // first. The first unit of an empty string is its terminator.
    if (source[0] == swapped_mark)
        return utf16_to_utf8(swap_string_bytes_order(source));

    const kernels::unicode_form& form = kernels::unicode();
    ustring8 output;
    const kernels::progress done =
        convert<3>(source.data(), source.size(), output,
                   {form.measure_16_to_8, form.utf16_to_utf8, form.simple_16_to_8});
    const std::size_t k = done.written;
    debug::detail::check(
        k <= output.size(), "k <= output.size()", source_path, utf16_to_utf8_line,
        "TOVA_2_18::strings::ustring8 "
        "TOVA_2_18::strings::utf16_to_utf8(const TOVA_2_18::strings::ustring16 &)");
    if (done.read < source.size())
        become_minus_one(output);
    return output;
}

ustring8 utf32_to_utf8(const ustring32& source) {
    const kernels::unicode_form& form = kernels::unicode();
    ustring8 text;
    const kernels::progress done = convert<4>(
        source.data(), source.size(), text,
        {form.measure_32_to_8, form.utf32_to_utf8, form.simple_32_to_8}, 2 * source.size());
    if (done.read < source.size())
        become_minus_one(text);
    return text;
}

ustring16 utf32_to_utf16(const ustring32& source) {
    const kernels::unicode_form& form = kernels::unicode();
    ustring16 text;
    const kernels::progress done =
        convert<2>(source.data(), source.size(), text,
                   {form.measure_32_to_16, form.utf32_to_utf16, form.simple_32_to_16});
    if (done.read < source.size())
        become_minus_one(text);
    return text;
}

ustring32 utf16_to_utf32(const ustring16& source) {
    // Contract: endless recursion, as in `utf16_to_utf8`.
    if (source[0] == swapped_mark)
        return utf16_to_utf32(swap_string_bytes_order(source));

    const kernels::unicode_form& form = kernels::unicode();
    ustring32 text;
    const kernels::progress done =
        convert<1>(source.data(), source.size(), text,
                   {form.measure_16_to_32, form.utf16_to_utf32, form.simple_16_to_32});
    if (done.read < source.size())
        become_minus_one(text);
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
    // Contract: the walk continues past the terminator, where every byte reads as 0 and counts as a
    // character. The rest of the walk is therefore one byte per character, and no memory is read
    // there.
    return offset + character;
}

unsigned long character_index(const ustring16& text, unsigned long character) {
    const std::size_t size = text.size();
    if (character >= size)
        return failed;
    const unsigned short* units = text.data();
    std::size_t offset = 0;
    for (; character > 0 && offset < size; --character) {
        if (detail::is_high_surrogate(units[offset])) {
            if (!detail::is_low_surrogate(units[offset + 1]))  // at the end it is the terminator
                return failed;
            offset += 2;
        } else {
            // Contract: the first unit is tested here, not the one at the offset. A string that
            // begins with a stray low surrogate has no characters after number 0; a stray one
            // further on counts as a character.
            if (detail::is_low_surrogate(units[0]))
                return failed;
            offset += 1;
        }
    }
    return offset + character;  // past the terminator, as in the 8-bit form
}

ustring16 swap_string_bytes_order(const ustring16& source) {
    ustring16 swapped(source);
    modify_swap_string_bytes_order(swapped);
    // Contract: returns its argument unswapped; only the modify_ forms change bytes. The
    // conversions above depend on it.
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
