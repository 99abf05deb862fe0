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

/// A byte for each condition that this process and those that it starts have run, or null.
extern __attribute__((visibility("hidden"))) unsigned char* records;

/// Maps the file that MUTANT_RECORDS names as `records`, and marks a condition.
__attribute__((visibility("hidden"))) void record_first(int number);

inline __attribute__((always_inline)) void record(int number) {
    unsigned char* const bytes = __atomic_load_n(&records, __ATOMIC_ACQUIRE);
    if (bytes != nullptr)
        __atomic_store_n(bytes + number, 1, __ATOMIC_RELAXED);
    else
        record_first(number);
}

constexpr __attribute__((always_inline)) inline bool condition(int number, bool value) {
    if (__builtin_is_constant_evaluated() || __builtin_expect(active == -1, 1))
        return value;
    if (active < 0)
        return record(number), value;
    return value != (active == number);
}

}  // namespace tova_mutants
