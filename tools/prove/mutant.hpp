/// @file
/// One condition of the library at a time that is negated.
///
///     if (::tova_mutants::condition(7, static_cast<bool>(size == 0)))
///
/// `mutants.py` writes such calls around the conditions of a copy of the sources. In the file of
/// the library, `active` says what happens: nothing (-1), the numbers of the conditions that run
/// are recorded (-2), or the condition with this number is negated. Any number of threads may call
/// this.
#pragma once

namespace tova_mutants {

extern __attribute__((visibility("hidden"))) int active;

/// Marks the byte of a condition in the file that MUTANT_RECORDS names.
__attribute__((visibility("hidden"))) void record(int number);

constexpr __attribute__((always_inline)) inline bool condition(int number, bool value) {
    if (__builtin_is_constant_evaluated() || __builtin_expect(active == -1, 1))
        return value;
    if (active < 0)
        return record(number), value;
    return value != (active == number);
}

}  // namespace tova_mutants
