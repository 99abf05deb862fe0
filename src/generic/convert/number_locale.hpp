/// @file
/// Whether numbers look as in C: the conditions for conversions that work without a stream.
///
/// The answers hold for the moment of the call. A program that changes its locale while another
/// thread converts numbers gets the one form or the other, as with streams.
#pragma once

#include <langinfo.h>

#include <cfenv>
#include <cstring>
#include <locale>
#include <new>
#include <type_traits>

namespace TOVA_2_18 {
namespace generic {
namespace convert {
namespace detail {

inline const std::locale& classic_locale() {
    static const std::locale& classic = std::locale::classic();
    return classic;
}

// The classic locale has one representation, so that equal bytes are enough. Different bytes decide
// nothing.
inline bool represents_classic(const std::locale& locale) {
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison,cert-exp42-c,cert-flp37-c)
    return std::memcmp(&locale, &classic_locale(), sizeof locale) == 0;
}

/// Whether streams of this locale read and write numbers as in C. A locale with a facet of its own
/// has no name and never equals the classic one.
inline bool is_classic(const std::locale& locale) {
    return represents_classic(locale) || locale == classic_locale();
}

/// The same for the global C++ locale, which new streams get.
inline bool is_global_classic() {
#if defined(__GLIBCXX__)
    // The classic locale isn't counted, so its destructor does nothing. It would take as long as
    // reading the locale does, so it is called for other locales only.
    std::aligned_storage<sizeof(std::locale), alignof(std::locale)>::type memory;
    const std::locale* const global = new (&memory) std::locale;
    if (represents_classic(*global))
        return true;
    const bool is_equal = *global == classic_locale();
    global->~locale();
    return is_equal;
#else
    return is_classic(std::locale());
#endif
}

/// Whether the C library reads and writes numbers to nearest, ties to even.
inline bool rounds_to_nearest() {
#if defined(__x86_64__)
    // The result of `fegetround`, without a call: two bits of the floating-point control word.
    unsigned short control;
    __asm__ volatile("fnstcw %0" : "=m"(control));
    return (control & 0xc00) == FE_TONEAREST;
#else
    return std::fegetround() == FE_TONEAREST;
#endif
}

/// Whether the processor rounds its own results in that way, too. On x86-64 that is a setting apart
/// from the one above.
inline bool computes_to_nearest() {
#if defined(__x86_64__)
    return (__builtin_ia32_stmxcsr() & 0x6000) == 0;
#else
    return rounds_to_nearest();
#endif
}

/// Whether `printf` writes "." between digits in the calling thread's C locale.
inline bool has_c_decimal_point() {
    return std::strcmp(nl_langinfo(RADIXCHAR), ".") == 0;
}

}  // namespace detail
}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
