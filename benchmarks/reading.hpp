/// @file
/// Reads memory as fast as a program can that looks at every byte.
///
///     bench_support::read_all(text);  // the units of a string
///
/// The floor of a conversion reads its source in this way: the result depends on every byte of it.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstring>

namespace bench_support {

inline unsigned long long word_at(const char* from) {
    unsigned long long word;
    std::memcpy(&word, from, 8);
    return word;
}

/// A disjunction of vectors, in the widest form that the processor has.
#if defined(__x86_64__)
__attribute__((target_clones("avx512f", "avx2", "default")))
#endif
inline void
read_bytes(const char* from, std::size_t size) {
    typedef unsigned long long vector __attribute__((vector_size(64), aligned(1), may_alias));
    typedef unsigned long long aligned_vector __attribute__((vector_size(64)));
    aligned_vector a = {}, b = {}, c = {}, d = {};
    std::size_t i = 0;
    for (; size - i >= 256; i += 256) {
        const vector* const at = reinterpret_cast<const vector*>(from + i);
        a |= at[0];
        b |= at[1];
        c |= at[2];
        d |= at[3];
    }
    for (; size - i >= 64; i += 64)
        a |= *reinterpret_cast<const vector*>(from + i);
    if (i < size && size >= 64)
        b |= *reinterpret_cast<const vector*>(from + size - 64);
    a |= b | c | d;
    unsigned long long sum = 0;
    for (int part = 0; part < 8; ++part)
        sum |= a[part];
    if (size < 64) {
        for (; size - i >= 8; i += 8)
            sum |= word_at(from + i);
        if (size >= 8)
            sum |= word_at(from + size - 8);
        else
            for (; i < size; ++i)
                sum |= static_cast<unsigned char>(from[i]);
    }
    benchmark::DoNotOptimize(sum);
}

template <typename String>
void read_all(const String& text) {
    read_bytes(reinterpret_cast<const char*>(text.data()),
               text.size() * sizeof(typename String::value_type));
}

}  // namespace bench_support
