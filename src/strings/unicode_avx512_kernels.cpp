// The AVX-512 form, with VBMI2. A step takes up to 64 bytes of the source:
//
//   decode UTF-8   masks of leads and continuations check the structure of a step at once; the
//                  positions of the leads are compressed, and a permutation gathers each character
//   encode UTF-8   each character is spread over a lane of 2 or 4 bytes with its tag bits, and the
//                  bytes in use are compressed
//   UTF-16, UTF-32 lanes are widened or narrowed; pairs are compressed
//
// A source of one vector takes a path without loops in every function: setting a loop up would take
// longer than the conversion.
//
// A step writes whole vectors where there is room for one, and masked vectors near the end. A
// vector loop stops before the first character that it doesn't handle: an invalid one, or a value
// that `utf32_to_utf8` truncates or drops. `loops::take_turns` then calls the plain loop.
#include "strings/unicode_kernels.hpp"

#if defined(__x86_64__)

#include "strings/unicode_loops.hpp"

#include <cstdint>
#include <immintrin.h>

// The headers of g++ 12 begin some intrinsics with a value that they never read.
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#define TOVA_AVX512                                                                                \
    __attribute__((                                                                                \
        target("avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi,avx512vbmi2,bmi,bmi2,popcnt")))
#define TOVA_AVX512_INLINE TOVA_AVX512 __attribute__((always_inline)) inline

namespace TOVA_2_18 {
namespace strings {
namespace kernels {

namespace {

const std::uint64_t all_ones = ~std::uint64_t(0);

TOVA_AVX512_INLINE std::size_t count(std::uint64_t mask) {
    return static_cast<std::size_t>(_mm_popcnt_u64(mask));
}

// Up to 255 bits; all are set from 64 on.
TOVA_AVX512_INLINE std::uint64_t lowest(std::size_t bits) {
    return _bzhi_u64(all_ones, static_cast<unsigned int>(bits));
}

TOVA_AVX512_INLINE __m512i all_bytes(int value) {
    return _mm512_set1_epi8(static_cast<char>(value));
}

TOVA_AVX512_INLINE __m512i all_units(int value) {
    return _mm512_set1_epi16(static_cast<short>(value));
}

TOVA_AVX512_INLINE __m512i all_points(unsigned int value) {
    return _mm512_set1_epi32(static_cast<int>(value));
}

// Loads up to one vector of the source. Units past its end read as 0.
TOVA_AVX512_INLINE __m512i load(const unsigned char* from, std::size_t left) {
    return left >= 64 ? _mm512_loadu_si512(from) : _mm512_maskz_loadu_epi8(lowest(left), from);
}

TOVA_AVX512_INLINE __m512i load(const unsigned short* from, std::size_t left) {
    return left >= 32 ? _mm512_loadu_si512(from)
                      : _mm512_maskz_loadu_epi16(static_cast<__mmask32>(lowest(left)), from);
}

// The same for a source that is not longer than one vector.
TOVA_AVX512_INLINE __m512i load_once(const unsigned char* from, std::size_t size) {
    return _mm512_maskz_loadu_epi8(lowest(size), from);
}

TOVA_AVX512_INLINE __m512i load_once(const wchar_t* from, std::size_t size) {
    return _mm512_maskz_loadu_epi32(static_cast<__mmask16>(lowest(size)), from);
}

TOVA_AVX512_INLINE __m512i load_once(const unsigned short* from, std::size_t size) {
    return _mm512_maskz_loadu_epi16(static_cast<__mmask32>(lowest(size)), from);
}

TOVA_AVX512_INLINE __m512i load(const wchar_t* from, std::size_t left) {
    return left >= 16 ? _mm512_loadu_si512(from)
                      : _mm512_maskz_loadu_epi32(static_cast<__mmask16>(lowest(left)), from);
}

// Stores the first `used` units of a vector. If there is room for the whole vector, the rest is
// written, too, and the next step overwrites it.
TOVA_AVX512_INLINE void store(char* to, std::size_t room, __m512i bytes, std::size_t used) {
    if (room >= 64)
        _mm512_storeu_si512(to, bytes);
    else
        _mm512_mask_storeu_epi8(to, lowest(used), bytes);
}

TOVA_AVX512_INLINE void store(unsigned short* to, std::size_t room, __m512i units,
                              std::size_t used) {
    if (room >= 32)
        _mm512_storeu_si512(to, units);
    else
        _mm512_mask_storeu_epi16(to, static_cast<__mmask32>(lowest(used)), units);
}

TOVA_AVX512_INLINE void store(wchar_t* to, std::size_t room, __m512i points, std::size_t used) {
    if (room >= 16)
        _mm512_storeu_si512(to, points);
    else
        _mm512_mask_storeu_epi32(to, static_cast<__mmask16>(lowest(used)), points);
}

// 16 of 32 units, widened.
TOVA_AVX512_INLINE __m512i lower_half(__m512i units) {
    return _mm512_cvtepu16_epi32(_mm512_castsi512_si256(units));
}

TOVA_AVX512_INLINE __m512i upper_half(__m512i units) {
    return _mm512_cvtepu16_epi32(_mm512_extracti64x4_epi64(units, 1));
}

// --- Decoding UTF-8 -----------------------------------------------------------------------------

// 0 to 63, and the index of the character to which each byte of a group belongs.
struct index_tables {
    alignas(64) unsigned char identity[64];
    alignas(64) unsigned char by_four[4][64];  // 16 characters for each of four groups
    alignas(64) unsigned char by_two[2][64];   // 32 characters for each of two groups

    constexpr index_tables() : identity(), by_four(), by_two() {
        for (unsigned char i = 0; i < 64; ++i) {
            identity[i] = i;
            for (unsigned char group = 0; group < 4; ++group)
                by_four[group][i] = static_cast<unsigned char>(16 * group + i / 4);
            for (unsigned char group = 0; group < 2; ++group)
                by_two[group][i] = static_cast<unsigned char>(32 * group + i / 2);
        }
    }
};

constexpr index_tables tables;

// The number of bits to remove from the 21 bits of four bytes, indexed by the top four bits of the
// first byte: after a sequence shorter than four come bytes of the next one.
alignas(64) const int cut_bits[16] = {18, 18, 18, 18, 18, 18, 18, 18, 18, 18, 18, 18, 12, 12, 6, 0};
alignas(64) const int kept_bits[16] = {0x7F, 0x7F, 0x7F, 0x7F, 0x7F,  0x7F,  0x7F,   0x7F,
                                       0x7F, 0x7F, 0x7F, 0x7F, 0x7FF, 0x7FF, 0xFFFF, 0x1FFFFF};

// Decodes 32 characters of one or two bytes, or of up to three. `leads` has the position of each in
// `bytes`.
template <bool Three>
TOVA_AVX512_INLINE __m512i decode_32(__m512i bytes, __m512i leads, unsigned int group) {
    const __m512i at = _mm512_permutexvar_epi8(_mm512_load_si512(tables.by_two[group]), leads);
    // the first byte above the second
    const __m512i both = _mm512_permutexvar_epi8(_mm512_add_epi8(at, all_units(0x0001)), bytes);
    const __m512i two =
        _mm512_maddubs_epi16(_mm512_and_si512(both, all_units(0x1F3F)), all_units(0x4001));
    __m512i result = _mm512_mask_mov_epi16(_mm512_srli_epi16(both, 8),
                                           _mm512_cmpge_epu16_mask(both, all_units(0xC000)), two);
    if (Three) {
        const __m512i third = _mm512_maskz_permutexvar_epi8(
            0x5555555555555555u, _mm512_add_epi8(at, all_units(2)), bytes);
        const __m512i high = _mm512_slli_epi16(_mm512_and_si512(both, all_units(0x0F00)), 4);
        const __m512i middle = _mm512_slli_epi16(_mm512_and_si512(both, all_units(0x003F)), 6);
        const __m512i low = _mm512_and_si512(third, all_units(0x003F));
        result = _mm512_mask_mov_epi16(result, _mm512_cmpge_epu16_mask(both, all_units(0xE000)),
                                       _mm512_or_si512(_mm512_or_si512(high, middle), low));
    }
    return result;
}

// Decodes 16 characters of up to four bytes. The top four bits of their first bytes are stored in
// `kinds`.
TOVA_AVX512_INLINE __m512i decode_16(__m512i bytes, __m512i leads, unsigned int group,
                                     __m512i& kinds) {
    const __m512i at = _mm512_permutexvar_epi8(_mm512_load_si512(tables.by_four[group]), leads);
    // four bytes, the first one on top
    const __m512i four =
        _mm512_permutexvar_epi8(_mm512_add_epi8(at, all_points(0x00010203)), bytes);
    const __m512i halves =
        _mm512_maddubs_epi16(_mm512_and_si512(four, all_points(0xFF3F3F3F)), all_units(0x4001));
    const __m512i whole = _mm512_madd_epi16(halves, all_points(0x10000001));
    kinds = _mm512_srli_epi32(four, 28);
    return _mm512_and_si512(
        _mm512_srlv_epi32(whole, _mm512_permutexvar_epi32(kinds, _mm512_load_si512(cut_bits))),
        _mm512_permutexvar_epi32(kinds, _mm512_load_si512(kept_bits)));
}

TOVA_AVX512_INLINE std::size_t write_ascii(__m512i bytes, std::size_t used, unsigned short* to,
                                           std::size_t room) {
    const __m512i first = _mm512_cvtepu8_epi16(_mm512_castsi512_si256(bytes));
    store(to, room, first, used);
    if (used > 32) {
        const __m512i second = _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(bytes, 1));
        store(to + 32, room - 32, second, used - 32);
    }
    return used;
}

TOVA_AVX512_INLINE std::size_t write_ascii(__m512i bytes, std::size_t used, wchar_t* to,
                                           std::size_t room) {
    store(to, room, _mm512_cvtepu8_epi32(_mm512_castsi512_si128(bytes)), used);
    if (used > 16)
        store(to + 16, room - 16, _mm512_cvtepu8_epi32(_mm512_extracti32x4_epi32(bytes, 1)),
              used - 16);
    if (used > 32)
        store(to + 32, room - 32, _mm512_cvtepu8_epi32(_mm512_extracti32x4_epi32(bytes, 2)),
              used - 32);
    if (used > 48)
        store(to + 48, room - 48, _mm512_cvtepu8_epi32(_mm512_extracti32x4_epi32(bytes, 3)),
              used - 48);
    return used;
}

// Stores 32 characters without pairs, of which the first `used` are wanted.
TOVA_AVX512_INLINE void store_32(unsigned short* to, std::size_t room, __m512i units,
                                 std::size_t used) {
    store(to, room, units, used);
}

TOVA_AVX512_INLINE void store_32(wchar_t* to, std::size_t room, __m512i units, std::size_t used) {
    store(to, room, lower_half(units), used);
    if (used > 16)
        store(to + 16, room - 16, upper_half(units), used - 16);
}

template <bool Three, typename Target>
TOVA_AVX512_INLINE std::size_t write_units(__m512i bytes, __m512i leads, std::size_t used,
                                           Target* to, std::size_t room) {
    store_32(to, room, decode_32<Three>(bytes, leads, 0), used);
    if (used > 32)
        store_32(to + 32, room - 32, decode_32<Three>(bytes, leads, 1), used - 32);
    return used;
}

template <typename Target>
TOVA_AVX512_INLINE std::size_t write_units(__m512i bytes, __m512i leads, std::size_t used,
                                           bool has_three, Target* to, std::size_t room) {
    return has_three ? write_units<true>(bytes, leads, used, to, room)
                     : write_units<false>(bytes, leads, used, to, room);
}

// Stores the `used` characters of a step, some of which have four bytes. Returns the number of
// units.
TOVA_AVX512_INLINE std::size_t write_points(__m512i bytes, __m512i leads, std::size_t used,
                                            wchar_t* to, std::size_t room) {
    __m512i kinds;
    store(to, room, decode_16(bytes, leads, 0, kinds), used);
    if (used > 16)
        store(to + 16, room - 16, decode_16(bytes, leads, 1, kinds), used - 16);
    if (used > 32)
        store(to + 32, room - 32, decode_16(bytes, leads, 2, kinds), used - 32);
    if (used > 48)
        store(to + 48, room - 48, decode_16(bytes, leads, 3, kinds), used - 48);
    return used;
}

TOVA_AVX512_INLINE std::size_t write_points(__m512i bytes, __m512i leads, std::size_t used,
                                            unsigned short* to, std::size_t room) {
    std::size_t written = 0;
    for (unsigned int group = 0; std::size_t{16} * group < used; ++group) {
        __m512i kinds;
        const __m512i points = decode_16(bytes, leads, group, kinds);
        const unsigned int in =
            static_cast<unsigned int>(lowest(used - std::size_t{16} * group)) & 0xFFFFu;
        const unsigned int pairs = _mm512_cmpeq_epi32_mask(kinds, all_points(15)) & in;
        // Contract: as in `loops::write_pair`, the value isn't checked and the high unit wraps.
        const __m512i high =
            _mm512_add_epi32(_mm512_srli_epi32(points, 10), all_points(0xD800 - 64));
        const __m512i low =
            _mm512_add_epi32(_mm512_and_si512(points, all_points(0x3FF)), all_points(0xDC00));
        const __m512i both = _mm512_mask_or_epi32(points, static_cast<__mmask16>(pairs),
                                                  _mm512_and_si512(high, all_points(0xFFFF)),
                                                  _mm512_slli_epi32(low, 16));
        const __mmask32 keep = _pdep_u32(in, 0x55555555u) | _pdep_u32(pairs, 0xAAAAAAAAu);
        const std::size_t units = count(keep);
        store(to + written, room - written, _mm512_maskz_compress_epi16(keep, both), units);
        written += units;
    }
    return written;
}

// The start of the character that the step before `i` left incomplete, and its units.
template <typename Target>
inline progress step_back(const unsigned char* from, progress done) {
    do
        --done.read;
    while (detail::is_continuation(from[done.read]));
    done.written -= sizeof(Target) == 2 && from[done.read] >= 0xF0 ? 2 : 1;
    return done;
}

// How many steps of ASCII in a row make it likely that more follow.
const int quiet_steps = 4;

// Decodes 32 characters of one or two bytes, or of up to three. `ends` has the position of the last
// byte of each in `bytes`.
template <bool Three>
TOVA_AVX512_INLINE __m512i decode_32_by_ends(__m512i bytes, __m512i ends, unsigned int group) {
    const __m512i at = _mm512_permutexvar_epi8(_mm512_load_si512(tables.by_two[group]), ends);
    // the last byte above the one before it
    const __m512i both = _mm512_permutexvar_epi8(_mm512_add_epi8(at, all_units(0x00FF)), bytes);
    const __m512i two =
        _mm512_mask_maddubs_epi16(_mm512_srli_epi16(both, 8), _mm512_movepi16_mask(both),
                                  _mm512_and_si512(both, all_units(0x7F3F)), all_units(0x0140));
    if (!Three)
        return two;
    // The byte before these is from 0xE0 up only if the character has three bytes.
    const __m512i before = _mm512_permutexvar_epi8(_mm512_add_epi8(at, all_bytes(-2)), bytes);
    const __m512i high = _mm512_subs_epu8(before, all_units(static_cast<int>(0xE0FF)));
    return _mm512_or_si512(two, _mm512_slli_epi16(high, 4));
}

// Decodes steps of characters of one or two bytes, or of up to three, as far as there is room for
// whole vectors. A step writes the characters that end in its 62 bytes. Its vector begins two bytes
// earlier, because they may begin there. `done` is the start of a character, and so is the result.
// The loop isn't interrupted for single steps of ASCII: in most scripts that would happen too
// irregularly to be predicted. It is separate, because the registers don't suffice for both loops.
template <bool Three, typename Target>
TOVA_AVX512 __attribute__((noinline)) progress decode_steps(const unsigned char* from,
                                                            std::size_t size, Target* to,
                                                            std::size_t room, progress done) {
    const __m512i identity = _mm512_load_si512(tables.identity);
    const std::uint64_t step = ~std::uint64_t(3);
    int quiet = 0;
    while (size - done.read >= 62 && room - done.written >= 64 && quiet < quiet_steps) {
        const __m512i bytes = _mm512_loadu_si512(from + done.read - 2);
        const std::uint64_t high = _mm512_movepi8_mask(bytes);
        const std::uint64_t from_two = _mm512_cmpge_epu8_mask(bytes, all_bytes(0xC0));
        const std::uint64_t three = _mm512_cmpge_epu8_mask(bytes, all_bytes(0xE0));
        std::uint64_t wanted = from_two << 1;
        std::uint64_t others = from_two;
        std::uint64_t wrong = three;
        if (Three) {
            wanted |= three << 2;
            others |= three << 1;
            wrong = _mm512_cmpge_epu8_mask(bytes, all_bytes(0xF0));
        }
        if ((((wanted ^ (high & ~from_two)) & step) | wrong) != 0)
            break;
        const std::uint64_t ends = ~others & step;
        const std::size_t used = count(ends);
        const __m512i positions = _mm512_maskz_compress_epi8(ends, identity);
        Target* const at = to + done.written;
        store_32(at, 64, decode_32_by_ends<Three>(bytes, positions, 0), 32);
        if (!Three || used > 32)
            store_32(at + 32, 32, decode_32_by_ends<Three>(bytes, positions, 1), 32);
        done.written += used;
        done.read += 62;
        quiet = used == 62 ? quiet + 1 : 0;
    }
    // Back to the start of a character that has not ended.
    if (from[done.read - 1] >= 0xC0)
        done.read -= 1;
    else if (from[done.read - 2] >= 0xE0)
        done.read -= 2;
    return done;
}

// The same from `done` on. If that is in a character, this is written already.
template <typename Target>
TOVA_AVX512_INLINE progress decode_further(const unsigned char* from, std::size_t size, Target* to,
                                           std::size_t room, progress done, bool is_in_character,
                                           bool has_three) {
    const progress start = is_in_character ? step_back<Target>(from, done) : done;
    return has_three ? decode_steps<true>(from, size, to, room, start)
                     : decode_steps<false>(from, size, to, room, start);
}

// A step is 61 bytes, so that a character that begins in it ends within the vector. The bits of
// `owed` mark the bytes of the next step that the last character still needs as continuations.
template <typename Target>
TOVA_AVX512 progress decode(const unsigned char* from, std::size_t size, Target* to,
                            std::size_t room, progress done) {
    const __m512i identity = _mm512_load_si512(tables.identity);
    std::uint64_t owed = 0;
    int steps = 1;  // without characters of four bytes
    while (done.read < size) {
        const std::size_t left = size - done.read;
        const __m512i bytes = load(from + done.read, left);
        const std::uint64_t high = _mm512_movepi8_mask(bytes);
        Target* const at = to + done.written;
        const std::size_t free = room - done.written;
        if ((high | owed) == 0) {
            const std::size_t used = std::min<std::size_t>(left, 64);
            done.written += write_ascii(bytes, used, at, free);
            done.read += used;
            continue;
        }
        const bool last = left <= 64;
        const std::uint64_t step = lowest(last ? left : 61);
        const std::uint64_t from_two = _mm512_cmpge_epu8_mask(bytes, all_bytes(0xC0));
        const std::uint64_t two = from_two & step;
        const std::uint64_t three = _mm512_cmpge_epu8_mask(bytes, all_bytes(0xE0)) & step;
        const std::uint64_t four = _mm512_cmpge_epu8_mask(bytes, all_bytes(0xF0)) & step;
        steps = four == 0 ? steps + 1 : 0;
        if (steps > 1 && done.read >= 2) {
            const progress further =
                decode_further(from, size, to, room, done, owed != 0, three != 0);
            if (further.read > done.read) {
                done = further;
                owed = 0;
                continue;
            }
        }
        const std::uint64_t none = _mm512_cmpge_epu8_mask(bytes, all_bytes(0xF8)) & step;
        const std::uint64_t continuations = high & ~from_two;
        const std::uint64_t wanted = owed | two << 1 | three << 2 | four << 3;
        // continuations that the last character needs past the end
        const std::uint64_t cut =
            last ? (wanted & ~step) | two >> 63 | three >> 62 | four >> 61 : 0;
        if ((((wanted ^ continuations) & step) | none | cut) != 0)
            return owed != 0 ? step_back<Target>(from, done) : done;
        owed = last ? 0 : wanted >> 61;
        const std::uint64_t leads = ~continuations & step;
        const __m512i positions = _mm512_maskz_compress_epi8(leads, identity);
        const std::size_t points = count(leads);
        done.written += four != 0 ? write_points(bytes, positions, points, at, free)
                                  : write_units(bytes, positions, points, three != 0, at, free);
        done.read += last ? left : 61;
    }
    return done;
}

// --- Encoding UTF-8 -----------------------------------------------------------------------------

// For each unit of 16 bits, its bits from 6 on and its low bits.
alignas(64) const unsigned char two_parts[64] = {
    6,  0,  22, 16, 38, 32, 54, 48, 6,  0,  22, 16, 38, 32, 54, 48, 6,  0,  22, 16, 38, 32,
    54, 48, 6,  0,  22, 16, 38, 32, 54, 48, 6,  0,  22, 16, 38, 32, 54, 48, 6,  0,  22, 16,
    38, 32, 54, 48, 6,  0,  22, 16, 38, 32, 54, 48, 6,  0,  22, 16, 38, 32, 54, 48};

// The bytes of 32 units below 0x800, two for each of them. The second one is 0 if it isn't used.
TOVA_AVX512_INLINE __m512i two_each(__m512i units) {
    const __m512i parts = _mm512_multishift_epi64_epi8(_mm512_load_si512(two_parts), units);
    const __m512i two =
        _mm512_ternarylogic_epi32(parts, all_units(0x3FFF), all_units(0x80C0), 0xEA);  // and, or
    return _mm512_mask_mov_epi16(units, _mm512_cmpge_epu16_mask(units, all_units(0x80)), two);
}

// Always the first byte, even if it is 0, and the second one if it is used.
TOVA_AVX512_INLINE std::uint64_t used_of_two_each(__m512i bytes) {
    return _mm512_cmpge_epu8_mask(bytes, all_units(0x0100));
}

// 32 units below 0x800, with room for a whole vector.
TOVA_AVX512_INLINE std::size_t encode_two(__m512i units, char* to) {
    const __m512i bytes = two_each(units);
    const std::uint64_t keep = used_of_two_each(bytes);
    _mm512_storeu_si512(to, _mm512_maskz_compress_epi8(keep, bytes));
    return count(keep);
}

// The first `used` of 32 units below 0x800.
TOVA_AVX512_INLINE std::size_t encode_two(__m512i units, std::size_t used, char* to,
                                          std::size_t room) {
    const __m512i bytes = two_each(units);
    const std::uint64_t keep = used_of_two_each(bytes) & lowest(2 * used);
    const std::size_t written = count(keep);
    store(to, room, _mm512_maskz_compress_epi8(keep, bytes), written);
    return written;
}

// The six bits for each byte of a character, the last one on top.
alignas(64) const unsigned char six_bits[64] = {
    18, 12, 6,  0,  50, 44, 38, 32, 18, 12, 6,  0,  50, 44, 38, 32, 18, 12, 6,  0,  50, 44,
    38, 32, 18, 12, 6,  0,  50, 44, 38, 32, 18, 12, 6,  0,  50, 44, 38, 32, 18, 12, 6,  0,
    50, 44, 38, 32, 18, 12, 6,  0,  50, 44, 38, 32, 18, 12, 6,  0,  50, 44, 38, 32};

// Four bytes for each of 16 code points below 0x110000, of which the unused ones are 0. `three` has
// those from 0x800 up.
template <bool Four>
TOVA_AVX512_INLINE __m512i four_each(__m512i points, __mmask16 three) {
    // An unused byte stays 0 until the tags are added.
    const __m512i tag_two = all_points(0x80C00000);
    const __m512i tag_three = all_points(0x8080E000);
    const __m512i groups = _mm512_multishift_epi64_epi8(_mm512_load_si512(six_bits), points);
    __m512i tags = _mm512_mask_mov_epi32(tag_two, three, tag_three);
    if (Four)
        tags = _mm512_mask_mov_epi32(tags, _mm512_cmpge_epu32_mask(points, all_points(0x10000)),
                                     all_points(0x808080F0));
    const __m512i bytes =
        _mm512_ternarylogic_epi32(groups, all_bytes(0x3F), tags, 0xEA);  // and, or
    return _mm512_mask_slli_epi32(bytes, _mm512_cmplt_epu32_mask(points, all_points(0x80)), points,
                                  24);
}

TOVA_AVX512_INLINE __mmask16 from_three(__m512i points) {
    return _mm512_cmpge_epu32_mask(points, all_points(0x800));
}

// The code points in the lanes of `in`, all of them below 0x110000.
template <bool Four>
TOVA_AVX512_INLINE std::size_t encode_16(__m512i points, __mmask16 in, char* to, std::size_t room) {
    const __m512i bytes = four_each<Four>(points, from_three(points));
    // The last byte is always used. The others are from 0x80 up if they are.
    const std::uint64_t keep =
        _mm512_movepi8_mask(_mm512_maskz_or_epi32(in, bytes, all_points(0x80000000)));
    const std::size_t written = count(keep);
    store(to, room, _mm512_maskz_compress_epi8(keep, bytes), written);
    return written;
}

// 16 code points below 0x10000, with room for a whole vector.
TOVA_AVX512_INLINE std::size_t encode_three(__m512i points, __mmask16 three, char* to) {
    const __m512i bytes = four_each<false>(points, three);
    const std::uint64_t keep = _mm512_movepi8_mask(_mm512_or_si512(bytes, all_points(0x80000000)));
    _mm512_storeu_si512(to, _mm512_maskz_compress_epi8(keep, bytes));
    return count(keep);
}

// Finds the surrogates among the first `used` of 32 units. `used` is reduced by one if the last
// unit is a high surrogate, whose partner is in the next vector. Returns false if a surrogate has
// no partner.
struct surrogates {
    std::uint32_t high;
    std::uint32_t low;
};

TOVA_AVX512_INLINE bool find_pairs(__m512i units, std::size_t left, std::size_t& used,
                                   surrogates& found) {
    const __m512i kind = _mm512_and_si512(units, all_units(0xFC00));
    found.high = _mm512_cmpeq_epi16_mask(kind, all_units(0xD800));
    found.low = _mm512_cmpeq_epi16_mask(kind, all_units(0xDC00));
    if (left > 32 && found.high >> 31 != 0) {
        used = 31;
        found.high &= 0x7FFFFFFF;
        found.low &= 0x7FFFFFFF;
    }
    return static_cast<std::uint64_t>(found.high) << 1 == found.low;
}

// The code points of 16 units. Those of low surrogates are meaningless.
TOVA_AVX512_INLINE __m512i combine_16(__m512i units, __m512i next, std::uint32_t high) {
    const __m512i pair = _mm512_add_epi32(_mm512_slli_epi32(units, 10),
                                          _mm512_sub_epi32(next, all_points(0x35FDC00)));
    return _mm512_mask_mov_epi32(units, static_cast<__mmask16>(high), pair);
}

// Each unit's successor.
TOVA_AVX512_INLINE __m512i successors(__m512i units) {
    const __m512i bytes = _mm512_add_epi8(_mm512_load_si512(tables.identity), all_bytes(2));
    return _mm512_permutexvar_epi8(bytes, units);
}

// The first `used` of 32 units, none of them a surrogate.
TOVA_AVX512_INLINE std::size_t encode_32(__m512i units, std::size_t used, char* to,
                                         std::size_t room) {
    const std::uint32_t in = static_cast<std::uint32_t>(lowest(used));
    std::size_t written = encode_16<false>(lower_half(units), static_cast<__mmask16>(in), to, room);
    if (used > 16)
        written += encode_16<false>(upper_half(units), static_cast<__mmask16>(in >> 16),
                                    to + written, room - written);
    return written;
}

// The same with pairs.
TOVA_AVX512_INLINE std::size_t encode_32(__m512i units, std::size_t used, surrogates found,
                                         char* to, std::size_t room) {
    const std::uint32_t in = static_cast<std::uint32_t>(lowest(used)) & ~found.low;
    const __m512i next = successors(units);
    std::size_t written =
        encode_16<true>(combine_16(lower_half(units), lower_half(next), found.high),
                        static_cast<__mmask16>(in), to, room);
    if (used > 16)
        written +=
            encode_16<true>(combine_16(upper_half(units), upper_half(next), found.high >> 16),
                            static_cast<__mmask16>(in >> 16), to + written, room - written);
    return written;
}

// Encodes units below 0x800, as far as there is room for whole vectors. Like `decode_steps`, it
// isn't interrupted for single vectors of ASCII.
TOVA_AVX512 progress encode_two_each(const unsigned short* from, std::size_t size, char* to,
                                     std::size_t room, progress done) {
    int quiet = 0;
    while (size - done.read >= 64 && room - done.written >= 128 && quiet < quiet_steps) {
        const __m512i first = _mm512_loadu_si512(from + done.read);
        const __m512i second = _mm512_loadu_si512(from + done.read + 32);
        if (_mm512_test_epi16_mask(_mm512_or_si512(first, second), all_units(0xF800)) != 0)
            break;
        const std::size_t written = encode_two(first, to + done.written);
        const std::size_t both = written + encode_two(second, to + done.written + written);
        done.written += both;
        done.read += 64;
        quiet = both == 64 ? quiet + 1 : 0;
    }
    return done;
}

TOVA_AVX512_INLINE std::size_t count_surrogates(__m512i units) {
    const __m512i kind = _mm512_and_si512(units, all_units(0xF800));
    return count(_mm512_cmpeq_epi16_mask(kind, all_units(0xD800)));
}

// Encodes units that are not surrogates, as far as there is room for whole vectors. Stops after a
// few steps of units below 0x800, which `encode_two_each` encodes in less time.
TOVA_AVX512 __attribute__((noinline)) progress encode_three_each(const unsigned short* from,
                                                                 std::size_t size, char* to,
                                                                 std::size_t room, progress done) {
    int quiet = 0;
    while (size - done.read >= 32 && room - done.written >= 128 && quiet < quiet_steps) {
        const __m512i units = _mm512_loadu_si512(from + done.read);
        if (count_surrogates(units) != 0)
            break;
        const __m512i first = lower_half(units);
        const __m512i second = upper_half(units);
        const __mmask16 in_first = from_three(first);
        const __mmask16 in_second = from_three(second);
        done.written += encode_three(first, in_first, to + done.written);
        done.written += encode_three(second, in_second, to + done.written);
        done.read += 32;
        quiet = (in_first | in_second) == 0 ? quiet + 1 : 0;
    }
    return done;
}

// The first `used` of 32 bytes.
TOVA_AVX512_INLINE void store_bytes(char* to, std::size_t room, __m256i bytes, std::size_t used) {
    if (room >= 32)
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), bytes);
    else
        _mm256_mask_storeu_epi8(to, static_cast<__mmask32>(lowest(used)), bytes);
}

TOVA_AVX512 progress encode_16_to_8(const unsigned short* from, std::size_t size, char* to,
                                    std::size_t room, progress done) {
    int steps = 0;  // without surrogates
    while (done.read < size) {
        const std::size_t left = size - done.read;
        const __m512i units = load(from + done.read, left);
        std::size_t used = std::min<std::size_t>(left, 32);
        char* const at = to + done.written;
        const std::size_t free = room - done.written;
        if (_mm512_cmpge_epu16_mask(units, all_units(0x80)) == 0) {
            store_bytes(at, free, _mm512_cvtepi16_epi8(units), used);
            done.written += used;
            done.read += used;
            continue;
        }
        if (_mm512_cmpge_epu16_mask(units, all_units(0x800)) == 0) {
            const progress further = encode_two_each(from, size, to, room, done);
            if (further.read != done.read) {
                done = further;
                continue;
            }
            done.written += encode_two(units, used, at, free);
            done.read += used;
            continue;
        }
        const __m512i kind = _mm512_and_si512(units, all_units(0xF800));
        std::size_t written;
        if (_mm512_cmpeq_epi16_mask(kind, all_units(0xD800)) == 0) {
            if (++steps > 1) {
                const progress further = encode_three_each(from, size, to, room, done);
                if (further.read != done.read) {
                    done = further;
                    continue;
                }
            }
            written = encode_32(units, used, at, free);
        } else {
            steps = 0;
            surrogates found;
            if (!find_pairs(units, left, used, found))
                return done;
            written = encode_32(units, used, found, at, free);
        }
        done.written += written;
        done.read += used;
    }
    return done;
}

// 32 code points as two vectors. Values that a vector doesn't handle are reported by `is_plain`.
TOVA_AVX512_INLINE bool is_plain(__m512i points) {
    const __m512i kind = _mm512_and_si512(points, all_points(0xFFFFF800));
    return (_mm512_cmpeq_epi32_mask(kind, all_points(0xD800)) |
            _mm512_cmpge_epu32_mask(points, all_points(0x110000))) == 0;
}

TOVA_AVX512 progress encode_32_to_8(const wchar_t* from, std::size_t size, char* to,
                                    std::size_t room, progress done) {
    while (done.read < size) {
        const std::size_t left = size - done.read;
        const wchar_t* const next = from + done.read;
        const std::size_t used = std::min<std::size_t>(left, 32);
        const __m512i first = load(next, left);
        const __m512i second = left > 16 ? load(next + 16, left - 16) : _mm512_setzero_si512();
        const __m512i both = _mm512_or_si512(first, second);
        char* const at = to + done.written;
        const std::size_t free = room - done.written;
        if (_mm512_test_epi32_mask(both, all_points(0xFFFFF800)) == 0) {  // below 0x800
            const __m512i units =
                _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi32_epi16(first)),
                                   _mm512_cvtepi32_epi16(second), 1);
            const __mmask32 from_two = _mm512_cmpge_epu16_mask(units, all_units(0x80));
            if (from_two == 0) {
                const __m256i bytes = _mm512_cvtepi16_epi8(units);
                if (free >= 32)
                    _mm256_storeu_si256(reinterpret_cast<__m256i*>(at), bytes);
                else
                    _mm256_mask_storeu_epi8(at, static_cast<__mmask32>(lowest(used)), bytes);
                done.written += used;
            } else {
                done.written += encode_two(units, used, at, free);
            }
            done.read += used;
            continue;
        }
        if (!is_plain(first) || !is_plain(second))
            return done;
        const std::uint32_t in = static_cast<std::uint32_t>(lowest(used));
        const __mmask16 in_first = static_cast<__mmask16>(in);
        const __mmask16 in_second = static_cast<__mmask16>(in >> 16);
        std::size_t written;
        if (_mm512_test_epi32_mask(both, all_points(0xFFFF0000)) == 0) {
            written = encode_16<false>(first, in_first, at, free);
            if (used > 16)
                written += encode_16<false>(second, in_second, at + written, free - written);
        } else {
            written = encode_16<true>(first, in_first, at, free);
            if (used > 16)
                written += encode_16<true>(second, in_second, at + written, free - written);
        }
        done.written += written;
        done.read += used;
    }
    return done;
}

// --- UTF-16 and UTF-32 --------------------------------------------------------------------------

// The first `used` of 32 units, with pairs.
TOVA_AVX512_INLINE std::size_t widen_pairs(__m512i units, std::size_t used, surrogates found,
                                           wchar_t* to, std::size_t room) {
    const __m512i next = successors(units);
    const std::uint32_t in = static_cast<std::uint32_t>(lowest(used)) & ~found.low;
    const std::size_t first = count(in & 0xFFFF);
    store(to, room,
          _mm512_maskz_compress_epi32(static_cast<__mmask16>(in),
                                      combine_16(lower_half(units), lower_half(next), found.high)),
          first);
    const std::size_t second = count(in >> 16);
    store(to + first, room - first,
          _mm512_maskz_compress_epi32(
              static_cast<__mmask16>(in >> 16),
              combine_16(upper_half(units), upper_half(next), found.high >> 16)),
          second);
    return first + second;
}

TOVA_AVX512 progress widen_16_to_32(const unsigned short* from, std::size_t size, wchar_t* to,
                                    std::size_t room, progress done) {
    while (done.read < size) {
        const std::size_t left = size - done.read;
        const __m512i units = load(from + done.read, left);
        std::size_t used = std::min<std::size_t>(left, 32);
        wchar_t* const at = to + done.written;
        const std::size_t free = room - done.written;
        const __m512i kind = _mm512_and_si512(units, all_units(0xF800));
        if (_mm512_cmpeq_epi16_mask(kind, all_units(0xD800)) == 0) {
            store(at, free, lower_half(units), used);
            if (used > 16)
                store(at + 16, free - 16, upper_half(units), used - 16);
            done.written += used;
            done.read += used;
            continue;
        }
        surrogates found;
        if (!find_pairs(units, left, used, found))
            return done;
        done.written += widen_pairs(units, used, found, at, free);
        done.read += used;
    }
    return done;
}

// 16 code points, the first `used` of them.
TOVA_AVX512_INLINE std::size_t narrow_16(__m512i points, std::size_t used, unsigned short* to,
                                         std::size_t room) {
    const std::uint32_t in = static_cast<std::uint32_t>(lowest(used));
    const std::uint32_t pairs = _mm512_cmpge_epu32_mask(points, all_points(0xFFFF)) & in;
    // Contract: 0x10000 is not subtracted, see `loops::utf32_to_utf16`.
    const __m512i high = _mm512_and_si512(
        _mm512_add_epi32(_mm512_srli_epi32(points, 10), all_points(0xD800)), all_points(0xFFFF));
    const __m512i low =
        _mm512_add_epi32(_mm512_and_si512(points, all_points(0x3FF)), all_points(0xDC00));
    const __m512i units = _mm512_mask_or_epi32(points, static_cast<__mmask16>(pairs), high,
                                               _mm512_slli_epi32(low, 16));
    const __mmask32 keep = _pdep_u32(in, 0x55555555u) | _pdep_u32(pairs, 0xAAAAAAAAu);
    const std::size_t written = count(keep);
    store(to, room, _mm512_maskz_compress_epi16(keep, units), written);
    return written;
}

TOVA_AVX512 progress narrow_32_to_16(const wchar_t* from, std::size_t size, unsigned short* to,
                                     std::size_t room, progress done) {
    while (done.read < size) {
        const std::size_t left = size - done.read;
        const wchar_t* const next = from + done.read;
        const std::size_t used = std::min<std::size_t>(left, 32);
        const __m512i first = load(next, left);
        const __m512i second = left > 16 ? load(next + 16, left - 16) : _mm512_setzero_si512();
        if (!is_plain(first) || !is_plain(second))
            return done;
        unsigned short* const at = to + done.written;
        const std::size_t free = room - done.written;
        const __m512i end = all_points(0xFFFF);
        if ((_mm512_cmpge_epu32_mask(first, end) | _mm512_cmpge_epu32_mask(second, end)) == 0) {
            const __m512i units =
                _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi32_epi16(first)),
                                   _mm512_cvtepi32_epi16(second), 1);
            store(at, free, units, used);
            done.written += used;
        } else {
            std::size_t written = narrow_16(first, std::min<std::size_t>(used, 16), at, free);
            if (used > 16)
                written += narrow_16(second, used - 16, at + written, free - written);
            done.written += written;
        }
        done.read += used;
    }
    return done;
}

// --- Sizes --------------------------------------------------------------------------------------

TOVA_AVX512_INLINE std::size_t count_leads(__m512i bytes) {
    return count(_mm512_cmpgt_epi8_mask(bytes, all_bytes(0xBF)));
}

TOVA_AVX512_INLINE std::size_t count_fours(__m512i bytes) {
    return count(_mm512_cmpge_epu8_mask(bytes, all_bytes(0xF0)));
}

TOVA_AVX512_INLINE std::size_t measure_vectors(const unsigned char* from, std::size_t size) {
    std::size_t units = 0;
    for (std::size_t i = 0; i < size; i += 64) {
        const __m512i bytes = load(from + i, size - i);
        units += count_leads(bytes) + count_fours(bytes);
    }
    return units - (64 - size % 64) % 64;  // the zeros that the last load added
}

TOVA_AVX512 __attribute__((noinline)) std::size_t measure_blocks(const unsigned char* from,
                                                                 std::size_t size) {
    std::size_t units = 0;
    std::size_t i = 0;
    for (; size - i >= 256; i += 256) {
        const __m512i a = _mm512_loadu_si512(from + i);
        const __m512i b = _mm512_loadu_si512(from + i + 64);
        const __m512i c = _mm512_loadu_si512(from + i + 128);
        const __m512i d = _mm512_loadu_si512(from + i + 192);
        units += count_leads(a) + count_leads(b) + count_leads(c) + count_leads(d);
        const __m512i most = _mm512_max_epu8(_mm512_max_epu8(a, b), _mm512_max_epu8(c, d));
        if (_mm512_cmpge_epu8_mask(most, all_bytes(0xF0)) != 0)
            units += count_fours(a) + count_fours(b) + count_fours(c) + count_fours(d);
    }
    return units + measure_vectors(from + i, size - i);
}

// The constants for blocks would be loaded for a short source, too.
TOVA_AVX512 std::size_t measure_8_to_16(const unsigned char* from, std::size_t size) {
    if (size <= 64) {
        const __m512i bytes = load_once(from, size);
        if (_mm512_movepi8_mask(bytes) == 0)
            return size;
        return size - 64 + count_leads(bytes) + count_fours(bytes);  // without the added zeros
    }
    return size < 256 ? measure_vectors(from, size) : measure_blocks(from, size);
}

TOVA_AVX512 std::size_t measure_8_to_32(const unsigned char* from, std::size_t size) {
    if (size <= 64)
        return size - 64 + count_leads(load_once(from, size));
    std::size_t points = 0;
    for (std::size_t i = 0; i < size; i += 64)
        points += count(_mm512_cmpgt_epi8_mask(load(from + i, size - i), all_bytes(0xBF)));
    return points - (64 - size % 64) % 64;
}

TOVA_AVX512_INLINE std::size_t count_from(__m512i units, int limit) {
    return count(_mm512_cmpge_epu16_mask(units, all_units(limit)));
}

TOVA_AVX512_INLINE std::size_t measure_vectors(const unsigned short* from, std::size_t size) {
    std::size_t bytes = size;
    for (std::size_t i = 0; i < size; i += 32) {
        const __m512i units = load(from + i, size - i);
        bytes += count_from(units, 0x80) + count_from(units, 0x800) - count_surrogates(units);
    }
    return bytes;
}

TOVA_AVX512 __attribute__((noinline)) std::size_t measure_blocks(const unsigned short* from,
                                                                 std::size_t size) {
    std::size_t bytes = 0;
    std::size_t i = 0;
    for (; size - i >= 128; i += 128) {
        const __m512i a = _mm512_loadu_si512(from + i);
        const __m512i b = _mm512_loadu_si512(from + i + 32);
        const __m512i c = _mm512_loadu_si512(from + i + 64);
        const __m512i d = _mm512_loadu_si512(from + i + 96);
        const __m512i any = _mm512_or_si512(_mm512_or_si512(a, b), _mm512_or_si512(c, d));
        if (_mm512_test_epi16_mask(any, all_units(0xF800)) == 0)
            bytes += count(_mm512_movepi8_mask(_mm512_packus_epi16(a, b))) +
                     count(_mm512_movepi8_mask(_mm512_packus_epi16(c, d)));
        else
            bytes += count_from(a, 0x80) + count_from(b, 0x80) + count_from(c, 0x80) +
                     count_from(d, 0x80) + count_from(a, 0x800) + count_from(b, 0x800) +
                     count_from(c, 0x800) + count_from(d, 0x800) - count_surrogates(a) -
                     count_surrogates(b) - count_surrogates(c) - count_surrogates(d);
    }
    return i + bytes + measure_vectors(from + i, size - i);
}

TOVA_AVX512 std::size_t measure_16_to_8(const unsigned short* from, std::size_t size) {
    if (size <= 32) {
        const __m512i units = load_once(from, size);
        if (_mm512_test_epi16_mask(units, all_units(0xF800)) == 0)
            return size + count_from(units, 0x80);
        return size + count_from(units, 0x80) + count_from(units, 0x800) - count_surrogates(units);
    }
    return size < 128 ? measure_vectors(from, size) : measure_blocks(from, size);
}

TOVA_AVX512 std::size_t measure_16_to_32(const unsigned short* from, std::size_t size) {
    if (size <= 32) {
        const __m512i kind = _mm512_and_si512(load_once(from, size), all_units(0xFC00));
        return size - count(_mm512_cmpeq_epi16_mask(kind, all_units(0xDC00)));
    }
    std::size_t points = size;
    for (std::size_t i = 0; i < size; i += 32) {
        const __m512i kind = _mm512_and_si512(load(from + i, size - i), all_units(0xFC00));
        points -= count(_mm512_cmpeq_epi16_mask(kind, all_units(0xDC00)));
    }
    return points;
}

// The number of bytes that 16 code points need beyond one each. A negative one becomes a byte.
TOVA_AVX512_INLINE std::size_t count_more(__m512i points) {
    return count(_mm512_cmpge_epi32_mask(points, all_points(0x80))) +
           count(_mm512_cmpge_epi32_mask(points, all_points(0x800))) +
           count(_mm512_cmpge_epi32_mask(points, all_points(0x10000))) -
           4 * count(_mm512_cmpge_epi32_mask(points, all_points(0x110000)));
}

TOVA_AVX512 std::size_t measure_32_to_8(const wchar_t* from, std::size_t size) {
    if (size <= 16) {
        const __m512i points = load_once(from, size);
        if (_mm512_test_epi32_mask(points, all_points(0xFFFFF800)) == 0)
            return size + count(_mm512_test_epi32_mask(points, all_points(0xFFFFFF80)));
        return size + count_more(points);
    }
    std::size_t bytes = size;
    for (std::size_t i = 0; i < size; i += 16)
        bytes += count_more(load(from + i, size - i));
    return bytes;
}

TOVA_AVX512 std::size_t measure_32_to_16(const wchar_t* from, std::size_t size) {
    if (size <= 16)
        return size + count(_mm512_cmpge_epi32_mask(load_once(from, size), all_points(0xFFFF)));
    std::size_t units = size;
    for (std::size_t i = 0; i < size; i += 16)
        units += count(_mm512_cmpge_epi32_mask(load(from + i, size - i), all_points(0xFFFF)));
    return units;
}

// --- One unit each ------------------------------------------------------------------------------
//
// A kernel converts blocks with one check for each, and then smaller steps to the end.

// Converts blocks of `Step` units up to the first one that `Block` refuses. The first block may be
// stored anywhere; the others begin at the last position that is not past it and at which the
// result is aligned, because a store that crosses cache lines takes twice the time.
template <std::size_t Step, typename Source, typename Target, bool (*Block)(const Source*, Target*)>
TOVA_AVX512_INLINE std::size_t convert_blocks(const Source* from, std::size_t size, Target* to) {
    if (size < Step || !Block(from, to))
        return 0;
    std::size_t i = Step - reinterpret_cast<std::uintptr_t>(to) % 64 / sizeof(Target);
    while (size - i >= Step) {
        if (!Block(from + i, to + i))
            return i;
        i += Step;
    }
    // The last block overlaps the one before it.
    return i < size && Block(from + size - Step, to + size - Step) ? size : i;
}

TOVA_AVX512_INLINE __m512i either(__m512i a, __m512i b, __m512i c, __m512i d) {
    return _mm512_or_si512(_mm512_ternarylogic_epi32(a, b, c, 0xFE), d);
}

// Widens 16 or 32 of the bytes. A load may have to wait for earlier stores to addresses that equal
// its own in their low bits, so each byte is loaded once and then permuted.
TOVA_AVX512_INLINE void widen_group(__m512i bytes, const unsigned char* group, unsigned short* to) {
    _mm512_storeu_si512(
        to, _mm512_maskz_permutexvar_epi8(0x5555555555555555u, _mm512_load_si512(group), bytes));
}

TOVA_AVX512_INLINE void widen_group(__m512i bytes, const unsigned char* group, wchar_t* to) {
    _mm512_storeu_si512(
        to, _mm512_maskz_permutexvar_epi8(0x1111111111111111u, _mm512_load_si512(group), bytes));
}

TOVA_AVX512_INLINE bool widen_block(const unsigned char* from, unsigned short* to) {
    const __m512i first = _mm512_loadu_si512(from);
    const __m512i second = _mm512_loadu_si512(from + 64);
    if (_mm512_movepi8_mask(_mm512_or_si512(first, second)) != 0)
        return false;
    widen_group(first, tables.by_two[0], to);
    widen_group(first, tables.by_two[1], to + 32);
    widen_group(second, tables.by_two[0], to + 64);
    widen_group(second, tables.by_two[1], to + 96);
    return true;
}

TOVA_AVX512_INLINE bool widen_block(const unsigned char* from, wchar_t* to) {
    const __m512i bytes = _mm512_loadu_si512(from);
    if (_mm512_movepi8_mask(bytes) != 0)
        return false;
    widen_group(bytes, tables.by_four[0], to);
    widen_group(bytes, tables.by_four[1], to + 16);
    widen_group(bytes, tables.by_four[2], to + 32);
    widen_group(bytes, tables.by_four[3], to + 48);
    return true;
}

template <std::size_t Step, typename Target>
TOVA_AVX512 std::size_t simple_from_8(const unsigned char* from, std::size_t size, Target* to) {
    if (size <= 64) {
        const __m512i bytes = load_once(from, size);
        return _mm512_movepi8_mask(bytes) == 0 ? write_ascii(bytes, size, to, size) : 0;
    }
    std::size_t i = convert_blocks<Step, unsigned char, Target, widen_block>(from, size, to);
    while (i < size) {
        const std::size_t left = size - i;
        const __m512i bytes = load(from + i, left);
        if (_mm512_movepi8_mask(bytes) != 0)
            return i;
        i += write_ascii(bytes, std::min<std::size_t>(left, 64), to + i, left);
    }
    return size;
}

// The pack instructions work in each quarter of the vector; these put their result in order.
alignas(64) const std::int64_t packed_once[8] = {0, 2, 4, 6, 1, 3, 5, 7};
alignas(64) const int packed_twice[16] = {0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15};

TOVA_AVX512_INLINE __m512i pack_units(__m512i first, __m512i second) {
    return _mm512_permutexvar_epi64(_mm512_load_si512(packed_once),
                                    _mm512_packus_epi16(first, second));
}

TOVA_AVX512_INLINE bool narrow_block(const unsigned short* from, char* to) {
    const __m512i a = _mm512_loadu_si512(from);
    const __m512i b = _mm512_loadu_si512(from + 32);
    const __m512i c = _mm512_loadu_si512(from + 64);
    const __m512i d = _mm512_loadu_si512(from + 96);
    if (_mm512_test_epi16_mask(either(a, b, c, d), all_units(0xFF80)) != 0)
        return false;
    _mm512_storeu_si512(to, pack_units(a, b));
    _mm512_storeu_si512(to + 64, pack_units(c, d));
    return true;
}

TOVA_AVX512 std::size_t simple_16_to_8(const unsigned short* from, std::size_t size, char* to) {
    if (size <= 32) {
        const __m512i units = load_once(from, size);
        if (_mm512_test_epi16_mask(units, all_units(0xFF80)) != 0)
            return 0;
        _mm256_mask_storeu_epi8(to, static_cast<__mmask32>(lowest(size)),
                                _mm512_cvtepi16_epi8(units));
        return size;
    }
    std::size_t i = convert_blocks<128, unsigned short, char, narrow_block>(from, size, to);
    for (; i < size; i += 64) {
        const std::size_t left = size - i;
        const __m512i first = load(from + i, left);
        const __m512i second = left > 32 ? load(from + i + 32, left - 32) : _mm512_setzero_si512();
        if (_mm512_test_epi16_mask(_mm512_or_si512(first, second), all_units(0xFF80)) != 0)
            return i;
        store(to + i, left, pack_units(first, second), left);
    }
    return size;
}

TOVA_AVX512_INLINE bool narrow_block(const wchar_t* from, char* to) {
    const __m512i a = _mm512_loadu_si512(from);
    const __m512i b = _mm512_loadu_si512(from + 16);
    const __m512i c = _mm512_loadu_si512(from + 32);
    const __m512i d = _mm512_loadu_si512(from + 48);
    if (_mm512_test_epi32_mask(either(a, b, c, d), all_points(0xFFFFFF80)) != 0)
        return false;
    const __m512i bytes = _mm512_packus_epi16(_mm512_packs_epi32(a, b), _mm512_packs_epi32(c, d));
    _mm512_storeu_si512(to, _mm512_permutexvar_epi32(_mm512_load_si512(packed_twice), bytes));
    return true;
}

TOVA_AVX512 std::size_t simple_32_to_8(const wchar_t* from, std::size_t size, char* to) {
    if (size <= 16) {
        const __m512i points = load_once(from, size);
        if (_mm512_test_epi32_mask(points, all_points(0xFFFFFF80)) != 0)
            return 0;
        _mm_mask_storeu_epi8(to, static_cast<__mmask16>(lowest(size)),
                             _mm512_cvtepi32_epi8(points));
        return size;
    }
    std::size_t i = convert_blocks<64, wchar_t, char, narrow_block>(from, size, to);
    for (; i < size; i += 16) {
        const std::size_t left = size - i;
        const __m512i points = load(from + i, left);
        if (_mm512_test_epi32_mask(points, all_points(0xFFFFFF80)) != 0)
            return i;
        _mm_mask_storeu_epi8(to + i,
                             static_cast<__mmask16>(lowest(std::min<std::size_t>(left, 16))),
                             _mm512_cvtepi32_epi8(points));
    }
    return size;
}

// Whether two vectors contain a surrogate. Each unit is moved by the first surrogate, below which
// it wraps, so that one comparison of the smaller units finds all of them.
TOVA_AVX512_INLINE bool has_surrogate(__m512i a, __m512i b) {
    const __m512i least = _mm512_min_epu16(_mm512_sub_epi16(a, all_units(0xD800)),
                                           _mm512_sub_epi16(b, all_units(0xD800)));
    return _mm512_cmplt_epu16_mask(least, all_units(0x800)) != 0;
}

TOVA_AVX512_INLINE bool widen_block(const unsigned short* from, wchar_t* to) {
    const __m512i first = _mm512_loadu_si512(from);
    const __m512i second = _mm512_loadu_si512(from + 32);
    if (has_surrogate(first, second))
        return false;
    _mm512_storeu_si512(to, lower_half(first));
    _mm512_storeu_si512(to + 16, upper_half(first));
    _mm512_storeu_si512(to + 32, lower_half(second));
    _mm512_storeu_si512(to + 48, upper_half(second));
    return true;
}

TOVA_AVX512 std::size_t simple_16_to_32(const unsigned short* from, std::size_t size, wchar_t* to) {
    if (size <= 32) {
        const __m512i units = load_once(from, size);
        if (count_surrogates(units) != 0)
            return 0;
        store(to, size, lower_half(units), size);
        if (size > 16)
            store(to + 16, size - 16, upper_half(units), size - 16);
        return size;
    }
    std::size_t i = convert_blocks<64, unsigned short, wchar_t, widen_block>(from, size, to);
    for (; i < size; i += 32) {
        const std::size_t left = size - i;
        const __m512i units = load(from + i, left);
        if (has_surrogate(units, units))
            return i;
        store(to + i, left, lower_half(units), left);
        if (left > 16)
            store(to + i + 16, left - 16, upper_half(units), left - 16);
    }
    return size;
}

// Two vectors of values below 0x10000, in one.
TOVA_AVX512_INLINE __m512i pack_points(__m512i first, __m512i second) {
    return _mm512_permutexvar_epi64(_mm512_load_si512(packed_once),
                                    _mm512_packus_epi32(first, second));
}

TOVA_AVX512_INLINE bool narrow_block(const wchar_t* from, unsigned short* to) {
    const __m512i a = _mm512_loadu_si512(from);
    const __m512i b = _mm512_loadu_si512(from + 16);
    const __m512i c = _mm512_loadu_si512(from + 32);
    const __m512i d = _mm512_loadu_si512(from + 48);
    const __m512i first = pack_points(a, b);
    const __m512i second = pack_points(c, d);
    // Most scripts are below the first of these limits.
    if (_mm512_test_epi32_mask(either(a, b, c, d), all_points(0xFFFF8000)) != 0) {
        const __m512i most = _mm512_max_epu32(_mm512_max_epu32(a, b), _mm512_max_epu32(c, d));
        if (_mm512_cmpge_epu32_mask(most, all_points(0xFFFF)) != 0 || has_surrogate(first, second))
            return false;
    }
    _mm512_storeu_si512(to, first);
    _mm512_storeu_si512(to + 32, second);
    return true;
}

TOVA_AVX512 std::size_t simple_32_to_16(const wchar_t* from, std::size_t size, unsigned short* to) {
    if (size <= 16) {
        const __m512i points = load_once(from, size);
        const __m512i kind = _mm512_and_si512(points, all_points(0xFFFFF800));
        if ((_mm512_cmpeq_epi32_mask(kind, all_points(0xD800)) |
             _mm512_cmpge_epu32_mask(points, all_points(0xFFFF))) != 0)
            return 0;
        _mm256_mask_storeu_epi16(to, static_cast<__mmask16>(lowest(size)),
                                 _mm512_cvtepi32_epi16(points));
        return size;
    }
    std::size_t i = convert_blocks<64, wchar_t, unsigned short, narrow_block>(from, size, to);
    for (; i < size; i += 32) {
        const std::size_t left = size - i;
        const __m512i first = load(from + i, left);
        const __m512i second = left > 16 ? load(from + i + 16, left - 16) : _mm512_setzero_si512();
        const __m512i units = pack_points(first, second);
        if (_mm512_cmpge_epu32_mask(_mm512_max_epu32(first, second), all_points(0xFFFF)) != 0 ||
            has_surrogate(units, units))
            return i;
        store(to + i, left, units, left);
    }
    return size;
}

// --- The form -----------------------------------------------------------------------------------

// `loops::convert_by`, with the vector loop compiled into it: a call takes long for a short string.
template <typename Source, typename Target,
          progress (*Vectors)(const Source*, std::size_t, Target*, std::size_t, progress),
          progress (*Loop)(const Source*, std::size_t, std::size_t, Target*)>
TOVA_AVX512 __attribute__((flatten, noinline)) progress
convert_by(const Source* from, std::size_t size, Target* to, std::size_t room) {
    const progress done = Vectors(from, size, to, room, {0, 0});
    if (done.read == size)
        return done;
    return loops::take_turns(Vectors, Loop, from, size, to, room, done);
}

// Each of these converts a valid source of one vector itself. The checks of `convert_from_8` are
// those of `decode`: a character that is cut off misses a continuation after the last byte.
template <typename Target,
          progress (*Loop)(const unsigned char*, std::size_t, std::size_t, Target*)>
TOVA_AVX512 progress convert_from_8(const unsigned char* from, std::size_t size, Target* to,
                                    std::size_t room) {
    if (size <= 64) {
        const __m512i bytes = load_once(from, size);
        const std::uint64_t high = _mm512_movepi8_mask(bytes);
        if (high == 0)
            return {size, write_ascii(bytes, size, to, room)};
        const std::uint64_t two = _mm512_cmpge_epu8_mask(bytes, all_bytes(0xC0));
        const std::uint64_t three = _mm512_cmpge_epu8_mask(bytes, all_bytes(0xE0));
        const std::uint64_t four = _mm512_cmpge_epu8_mask(bytes, all_bytes(0xF0));
        const std::uint64_t none = _mm512_cmpge_epu8_mask(bytes, all_bytes(0xF8));
        const std::uint64_t continuations = high & ~two;
        const std::uint64_t wanted = two << 1 | three << 2 | four << 3;
        const std::uint64_t cut = two >> 63 | three >> 62 | four >> 61;
        if (((wanted ^ continuations) | none | cut) == 0) {
            const std::uint64_t leads = ~continuations & lowest(size);
            const __m512i positions =
                _mm512_maskz_compress_epi8(leads, _mm512_load_si512(tables.identity));
            const std::size_t points = count(leads);
            return {size, four != 0 ? write_points(bytes, positions, points, to, room)
                                    : write_units(bytes, positions, points, three != 0, to, room)};
        }
    }
    return convert_by<unsigned char, Target, decode<Target>, Loop>(from, size, to, room);
}

TOVA_AVX512 progress convert_16_to_8(const unsigned short* from, std::size_t size, char* to,
                                     std::size_t room) {
    if (size <= 32) {
        const __m512i units = load_once(from, size);
        if (_mm512_test_epi16_mask(units, all_units(0xF800)) == 0)
            return {size, encode_two(units, size, to, 0)};
        if (count_surrogates(units) == 0)
            return {size, encode_32(units, size, to, room)};
        surrogates found;
        std::size_t used = size;
        if (find_pairs(units, size, used, found))
            return {size, encode_32(units, size, found, to, room)};
    }
    return convert_by<unsigned short, char, encode_16_to_8, loops::utf16_to_utf8>(from, size, to,
                                                                                  room);
}

TOVA_AVX512 progress convert_16_to_32(const unsigned short* from, std::size_t size, wchar_t* to,
                                      std::size_t room) {
    if (size <= 32) {
        const __m512i units = load_once(from, size);
        surrogates found;
        std::size_t used = size;
        if (find_pairs(units, size, used, found))
            return {size, widen_pairs(units, size, found, to, room)};
    }
    return convert_by<unsigned short, wchar_t, widen_16_to_32, loops::utf16_to_utf32>(from, size,
                                                                                      to, room);
}

TOVA_AVX512 progress convert_32_to_8(const wchar_t* from, std::size_t size, char* to,
                                     std::size_t room) {
    if (size <= 16) {
        const __m512i points = load_once(from, size);
        if (is_plain(points)) {
            const __mmask16 in = static_cast<__mmask16>(lowest(size));
            return {size, encode_16<true>(points, in, to, room)};
        }
    }
    return convert_by<wchar_t, char, encode_32_to_8, loops::utf32_to_utf8>(from, size, to, room);
}

TOVA_AVX512 progress convert_32_to_16(const wchar_t* from, std::size_t size, unsigned short* to,
                                      std::size_t room) {
    if (size <= 16) {
        const __m512i points = load_once(from, size);
        if (is_plain(points))
            return {size, narrow_16(points, size, to, room)};
    }
    return convert_by<wchar_t, unsigned short, narrow_32_to_16, loops::utf32_to_utf16>(from, size,
                                                                                       to, room);
}

}  // namespace

const unicode_form unicode_avx512 = {
    {measure_8_to_16, convert_from_8<unsigned short, loops::utf8_to_utf16>, simple_from_8<128>},
    {measure_8_to_32, convert_from_8<wchar_t, loops::utf8_to_utf32>, simple_from_8<64>},
    {measure_16_to_8, convert_16_to_8, simple_16_to_8},
    {measure_16_to_32, convert_16_to_32, simple_16_to_32},
    {measure_32_to_8, convert_32_to_8, simple_32_to_8},
    {measure_32_to_16, convert_32_to_16, simple_32_to_16},
};

}  // namespace kernels
}  // namespace strings
}  // namespace TOVA_2_18

#endif
