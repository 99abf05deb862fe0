/// @file
/// The loops of the Unicode conversions: raw units in, raw units out, no string and no allocation.
///
///     const kernels::unicode_form& form = kernels::unicode();
///     const std::size_t room = form.measure_8_to_16(bytes, size);  // units of the result
///     form.utf8_to_utf16(bytes, size, units, room);                // {size, room} if valid
///
/// Each instruction set has its own form, in a separate file; the others are compared with the
/// portable loops, unit by unit. A kernel accepts any input of any length, valid or not, reads
/// nothing past its last unit and writes nothing past the room it was given. Kernels share nothing;
/// any number of threads may run them.
#pragma once

#include "detail/cpu_features.hpp"

#include <cstddef>

namespace TOVA_2_18 {
namespace strings {
namespace kernels {

// The position that a conversion reached: the end of the source, or the first invalid character.
struct progress {
    std::size_t read;     // units of the source
    std::size_t written;  // units of the result
};

// The exact number of units that a valid source becomes. For any other source, at least the number
// of units for the characters before the first invalid one.
template <typename Source>
using measure = std::size_t(const Source* from, std::size_t size);

// Converts up to the first invalid character. `room` is at least what `measure` returned.
template <typename Source, typename Target>
using convert = progress(const Source* from, std::size_t size, Target* to, std::size_t room);

// Converts simple units, which become one unit each, up to the first other unit or slightly before
// it, and returns their number. ASCII is simple to and from UTF-8, and between the wider forms all
// units that need no pair are simple. `to` has room for `size` units.
template <typename Source, typename Target>
using convert_simple = std::size_t(const Source* from, std::size_t size, Target* to);

struct unicode_form {
    measure<unsigned char>* measure_8_to_16;
    measure<unsigned char>* measure_8_to_32;
    measure<unsigned short>* measure_16_to_8;
    measure<unsigned short>* measure_16_to_32;
    measure<wchar_t>* measure_32_to_8;
    measure<wchar_t>* measure_32_to_16;

    convert<unsigned char, unsigned short>* utf8_to_utf16;  // a byte that does not begin a sequence
    convert<unsigned char, wchar_t>* utf8_to_utf32;         // the same
    convert<unsigned short, char>* utf16_to_utf8;           // an unpaired surrogate
    convert<unsigned short, wchar_t>* utf16_to_utf32;       // the same
    convert<wchar_t, char>* utf32_to_utf8;                  // a surrogate
    convert<wchar_t, unsigned short>* utf32_to_utf16;       // a surrogate, or from 0x110000 up

    convert_simple<unsigned char, unsigned short>* simple_8_to_16;
    convert_simple<unsigned char, wchar_t>* simple_8_to_32;
    convert_simple<unsigned short, char>* simple_16_to_8;
    convert_simple<unsigned short, wchar_t>* simple_16_to_32;
    convert_simple<wchar_t, char>* simple_32_to_8;
    convert_simple<wchar_t, unsigned short>* simple_32_to_16;
};

extern const unicode_form unicode_portable;
#if defined(__x86_64__)
extern const unicode_form unicode_sse2;
extern const unicode_form unicode_avx2;
extern const unicode_form unicode_avx512;
#endif

// The form for a level.
inline const unicode_form& unicode(TOVA_2_18::detail::cpu_form level) {
#if defined(__x86_64__)
    switch (level) {
    case TOVA_2_18::detail::cpu_form::avx512:
        return unicode_avx512;
    case TOVA_2_18::detail::cpu_form::avx2:
        return unicode_avx2;
    case TOVA_2_18::detail::cpu_form::sse2:
        return unicode_sse2;
    case TOVA_2_18::detail::cpu_form::portable:
        break;
    }
#endif
    return unicode_portable;
}

// The form for the processor that runs the program.
inline const unicode_form& unicode() {
    return unicode(TOVA_2_18::detail::cpu_level());
}

}  // namespace kernels
}  // namespace strings
}  // namespace TOVA_2_18
