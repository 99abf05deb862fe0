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
// A kernel measures the result, so the string is allocated once, in its exact size, and filled in
// place. A long source that begins with ASCII is probably ASCII throughout, and UTF-8 that begins
// with nearly as many characters as bytes probably continues like that. Such a source is read only
// once, and the string keeps up to twice the memory if it was not.
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
#include "strings/ascii_run.hpp"
#include "strings/unfilled.hpp"
#include "strings/unicode_kernels.hpp"
#include "strings/utf16.hpp"
#include "strings/utf8.hpp"

#include <algorithm>
#include <cstdint>

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

// Makes a string with the exact size of the result and converts the source into it.
template <typename Result, typename Source>
Result convert_measured(const Source* source, std::size_t size, std::size_t least_capacity,
                        const kernels::conversion<Source, typename Result::value_type>& by,
                        kernels::progress& done) {
    typedef typename Result::value_type unit;
    const std::size_t room = by.measure(source, size);
    Result text;
    if (least_capacity > room)
        text.reserve(least_capacity);
    detail::append_unfilled(text, room, [&](unit* to) {
        // With as many units as the source has, most likely all of them are simple.
        std::size_t simple = 0;
        if (room == size && (simple = by.simple(source, size, to)) == size)
            done = {size, size};
        else
            done = by.convert(source, size, to, room);
        return done.written;
    });
    return text;
}

// Converts from the first unit on that is not simple. `text` has the units before it, and its
// memory is kept unless it is too small or more than twice too large.
template <typename Result, typename Source>
__attribute__((noinline)) void
convert_rest(const Source* source, std::size_t size, std::size_t least_capacity,
             const kernels::conversion<Source, typename Result::value_type>& by, Result& text,
             kernels::progress& done) {
    typedef typename Result::value_type unit;
    std::size_t begin = done.read;
    const std::size_t total = begin + by.measure(source + begin, size - begin);
    const std::size_t wanted = std::max(least_capacity, total);
    if (text.capacity() < wanted || text.capacity() / 2 > wanted) {
        // Two long strings at a time could exceed what the allocator keeps for later, so a short
        // beginning is converted again instead of being copied.
        Result whole;
        if (begin < size / 8) {
            text.swap(whole);
            Result().swap(whole);
            begin = 0;
        }
        whole.reserve(wanted);
        whole.append(text.data(), begin);
        text.swap(whole);
    }
    detail::append_unfilled(text, total - begin, [&](unit* to) {
        done = by.convert(source + begin, size - begin, to, total - begin);
        return done.written;
    });
    done.read += begin;
    done.written += begin;
}

// Converts a source on the assumption that all of its units are simple: then it is not measured.
template <typename Result, typename Source>
Result convert_simple(const Source* source, std::size_t size, std::size_t least_capacity,
                      const kernels::conversion<Source, typename Result::value_type>& by,
                      kernels::progress& done) {
    typedef typename Result::value_type unit;
    Result text;
    if (least_capacity > size)
        text.reserve(least_capacity);
    detail::append_unfilled(text, size, [&](unit* to) { return by.simple(source, size, to); });
    done = {text.size(), text.size()};
    if (done.read < size)
        convert_rest(source, size, least_capacity, by, text, done);
    return text;
}

// Converts a source on the assumption that nearly all of its bytes are characters: then it is not
// measured. The memory of a string that becomes much shorter is replaced.
template <typename Result, typename Source>
__attribute__((noinline)) Result
convert_dense(const Source* source, std::size_t size,
              const kernels::conversion<Source, typename Result::value_type>& by,
              kernels::progress& done) {
    typedef typename Result::value_type unit;
    Result text;
    detail::append_unfilled(text, size, [&](unit* to) {
        done = by.convert(source, size, to, size);
        return done.written;
    });
    if (text.capacity() / 2 > text.size())
        Result(text).swap(text);
    return text;
}

// The bits that no unit of ASCII has, in a word of units.
constexpr std::uint64_t beyond_ascii(unsigned char) {
    return 0x8080808080808080u;
}

constexpr std::uint64_t beyond_ascii(unsigned short) {
    return 0xFF80FF80FF80FF80u;
}

constexpr std::uint64_t beyond_ascii(wchar_t) {
    return 0xFFFFFF80FFFFFF80u;
}

// Whether a source is probably all ASCII: a long one whose first 64 bytes are. A short one is
// measured in no more time.
template <typename Source, typename Target>
inline bool is_probably_simple(const Source* source, std::size_t size,
                               const kernels::conversion<Source, Target>&) {
    if (size < 256)
        return false;
    const char* const at = reinterpret_cast<const char*>(source);
    const std::uint64_t any = detail::load_word(at) | detail::load_word(at + 8) |
                              detail::load_word(at + 16) | detail::load_word(at + 24) |
                              detail::load_word(at + 32) | detail::load_word(at + 40) |
                              detail::load_word(at + 48) | detail::load_word(at + 56);
    return (any & beyond_ascii(source[0])) == 0;
}

// Nearly all units of the wider forms are simple, except in strings of emoji.
inline bool is_probably_simple(const unsigned short* source, std::size_t,
                               const kernels::conversion<unsigned short, wchar_t>&) {
    return !detail::is_surrogate(source[0]);
}

inline bool is_probably_simple(const wchar_t* source, std::size_t,
                               const kernels::conversion<wchar_t, unsigned short>&) {
    return source[0] < 0x10000;
}

// Whether nearly all bytes of a source are probably characters: a long one whose first 256 bytes
// are. No conversion from UTF-8 makes more units than there are bytes.
template <typename Target>
inline bool is_probably_dense(const unsigned char* source, std::size_t size,
                              const kernels::conversion<unsigned char, Target>& by) {
    return size >= 2048 && by.measure(source, 256) >= 224;
}

template <typename Source, typename Target>
inline bool is_probably_dense(const Source*, std::size_t,
                              const kernels::conversion<Source, Target>&) {
    return false;
}

// The result up to the position that is stored in `done`: the end, or the first invalid character.
// The source ends with a terminator.
template <typename Result, typename Source>
inline Result convert(const Source* source, std::size_t size,
                      const kernels::conversion<Source, typename Result::value_type>& by,
                      kernels::progress& done, std::size_t least_capacity = 0) {
    if (is_probably_simple(source, size, by))
        return convert_simple<Result>(source, size, least_capacity, by, done);
    if (is_probably_dense(source, size, by))
        return convert_dense<Result>(source, size, by, done);
    return convert_measured<Result>(source, size, least_capacity, by, done);
}

// The result for an invalid source.
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
            const kernels::progress done = kernels::unicode().utf8_to_utf32.convert(
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

// The conversions of 16-bit strings after the first stage. They are separate because a function
// with one result variable constructs it directly in the caller's object.
ustring8 utf16_to_utf8_in_order(const ustring16& source) {
    kernels::progress done;
    ustring8 output =
        convert<ustring8>(source.data(), source.size(), kernels::unicode().utf16_to_utf8, done);
    const std::size_t k = done.written;
    debug::detail::check(
        k <= output.size(), "k <= output.size()", source_path, utf16_to_utf8_line,
        "TOVA_2_18::strings::ustring8 "
        "TOVA_2_18::strings::utf16_to_utf8(const TOVA_2_18::strings::ustring16 &)");
    if (done.read < source.size())
        become_minus_one(output);
    return output;
}

ustring32 utf16_to_utf32_in_order(const ustring16& source) {
    kernels::progress done;
    ustring32 text =
        convert<ustring32>(source.data(), source.size(), kernels::unicode().utf16_to_utf32, done);
    if (done.read < source.size())
        become_minus_one(text);
    return text;
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
    kernels::progress done;
    ustring32 text =
        convert<ustring32>(bytes_of(source), source.size(), kernels::unicode().utf8_to_utf32, done);
    if (done.read < source.size())
        append_with_marks(text, bytes_of(source), source.size(), done.read);
    return text;
}

ustring16 utf8_to_utf16(const ustring8& source) {
    const std::size_t length = source.size();
    kernels::progress done;
    ustring16 text =
        convert<ustring16>(bytes_of(source), length, kernels::unicode().utf8_to_utf16, done);
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
    return source[0] == swapped_mark ? utf16_to_utf8(swap_string_bytes_order(source))
                                     : utf16_to_utf8_in_order(source);
}

ustring8 utf32_to_utf8(const ustring32& source) {
    kernels::progress done;
    ustring8 text = convert<ustring8>(source.data(), source.size(),
                                      kernels::unicode().utf32_to_utf8, done, 2 * source.size());
    if (done.read < source.size())
        become_minus_one(text);
    return text;
}

ustring16 utf32_to_utf16(const ustring32& source) {
    kernels::progress done;
    ustring16 text =
        convert<ustring16>(source.data(), source.size(), kernels::unicode().utf32_to_utf16, done);
    if (done.read < source.size())
        become_minus_one(text);
    return text;
}

ustring32 utf16_to_utf32(const ustring16& source) {
    // Contract: endless recursion, as in `utf16_to_utf8`.
    return source[0] == swapped_mark ? utf16_to_utf32(swap_string_bytes_order(source))
                                     : utf16_to_utf32_in_order(source);
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
