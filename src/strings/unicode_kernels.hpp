/// @file
/// The loops of the Unicode conversions: raw units in, raw units out, no string and no allocation.
///
///     const kernels::unicode_form& form = kernels::unicode();
///     const std::size_t room = form.utf8_to_utf16.measure(bytes, size);  // units of the result
///     form.utf8_to_utf16.convert(bytes, size, units, room);                // {size, room} if
///     valid
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

// The loops of one conversion.
template <typename Source, typename Target>
struct conversion {
    // The exact number of units that a valid source becomes. For any other source, at least the
    // number of units for the characters before the first invalid one.
    std::size_t (*measure)(const Source* from, std::size_t size);

    // Converts up to the first invalid character. `room` is at least what `measure` returned.
    progress (*convert)(const Source* from, std::size_t size, Target* to, std::size_t room);

    // Converts simple units, which become one unit each, up to the first other unit or slightly
    // before it, and returns their number. ASCII is simple to and from UTF-8, and between the wider
    // forms all units that need no pair are simple. `to` has room for `size` units.
    std::size_t (*simple)(const Source* from, std::size_t size, Target* to);
};

struct unicode_form {
    conversion<unsigned char, unsigned short> utf8_to_utf16;  // a byte that begins no sequence
    conversion<unsigned char, wchar_t> utf8_to_utf32;         // the same
    conversion<unsigned short, char> utf16_to_utf8;           // an unpaired surrogate
    conversion<unsigned short, wchar_t> utf16_to_utf32;       // the same
    conversion<wchar_t, char> utf32_to_utf8;                  // a surrogate
    conversion<wchar_t, unsigned short> utf32_to_utf16;       // a surrogate, or from 0x110000 up
};

extern const unicode_form unicode_portable;
#if defined(__x86_64__)
extern const unicode_form unicode_sse2;
extern const unicode_form unicode_avx2;
extern const unicode_form unicode_avx512;
#endif

// The forms by their level.
#if defined(__x86_64__)
constexpr const unicode_form* unicode_forms[] = {&unicode_portable, &unicode_sse2, &unicode_avx2,
                                                 &unicode_avx512};
#else
constexpr const unicode_form* unicode_forms[] = {&unicode_portable};
#endif

// The form for a level.
inline const unicode_form& unicode(TOVA_2_18::detail::cpu_form level) {
    return *unicode_forms[static_cast<int>(level)];
}

// The form for the processor that runs the program.
inline const unicode_form& unicode() {
    return unicode(TOVA_2_18::detail::cpu_level());
}

}  // namespace kernels
}  // namespace strings
}  // namespace TOVA_2_18
