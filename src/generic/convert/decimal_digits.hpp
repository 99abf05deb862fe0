/// @file
/// Converts decimal digits, eight at a time in the bytes of a 64-bit word. Short numbers are
/// written in pairs of digits, so the branches on their length do not wait for a chain of
/// multiplications.
///
///     eight_digits(load_eight("12345678") & 0x0f0f0f0f0f0f0f0f)  // 12345678
///     char text[max_decimal_size];
///     const std::size_t size = write_decimal(text, -42);  // "-42", without a terminator
///
/// The first digit is in the lowest byte, as memory has it on a little-endian host. Pure functions:
/// any number of threads may call them.
#pragma once

#include <cstddef>
#include <cstring>

namespace TOVA_2_18 {
namespace generic {
namespace convert {
namespace detail {

const unsigned long ascii_zeros = 0x3030303030303030;
const unsigned long hundred_million = 100000000;

/// 10^0 to 10^19, all powers that fit into 64 bits.
const unsigned long small_powers[] = {1,
                                      10,
                                      100,
                                      1000,
                                      10000,
                                      100000,
                                      1000000,
                                      10000000,
                                      100000000,
                                      1000000000,
                                      10000000000,
                                      100000000000,
                                      1000000000000,
                                      10000000000000,
                                      100000000000000,
                                      1000000000000000,
                                      10000000000000000,
                                      100000000000000000,
                                      1000000000000000000,
                                      10000000000000000000u};

inline unsigned long load_eight(const char* text) {
    unsigned long word;
    std::memcpy(&word, text, sizeof word);
    return word;
}

inline unsigned long load_four(const char* text) {
    unsigned int word;
    std::memcpy(&word, text, sizeof word);
    return word;
}

inline unsigned load_two(const char* text) {
    unsigned short word;
    std::memcpy(&word, text, sizeof word);
    return word;
}

/// Loads the first `length` characters, at most 8, without reading past them. The bytes after them
/// are zeros, which are not digits.
inline unsigned long load_up_to_eight(const char* text, unsigned long length) {
    if (length >= 8)
        return load_eight(text);
    // The loads overlap where they have the same characters.
    if (length >= 4)
        return load_four(text) | load_four(text + length - 4) << (8 * (length - 4));
    if (length == 0)
        return 0;
    const auto at = [text](unsigned long i) {
        return static_cast<unsigned long>(static_cast<unsigned char>(text[i])) << (8 * i);
    };
    return at(0) | at(length / 2) | at(length - 1);
}

/// The number of leading characters of the word that are digits, 0 to 8.
inline int count_digits(unsigned long word) {
    const unsigned long values = word ^ ascii_zeros;
    // A byte above 9 reaches the top bit by the addition or has it already. A carry into the next
    // byte doesn't matter: only the first byte that is no digit is searched for.
    const unsigned long others = ((values + 0x7676767676767676) | values) & 0x8080808080808080;
    return others == 0 ? 8 : __builtin_ctzl(others) / 8;
}

/// The number of the eight digits with the values 0 to 9 in the bytes of the word: neighbors are
/// joined to pairs, pairs to fours, fours to the number.
inline unsigned long eight_digits(unsigned long values) {
    values = values * 10 + (values >> 8);
    return (((values & 0x000000ff000000ff) * 0x000f424000000064) +
            (((values >> 16) & 0x000000ff000000ff) * 0x0000271000000001)) >>
           32;
}

/// The number of the first `count` characters of the word, which are digits; 0 for none.
inline unsigned long leading_digits(unsigned long word, int count) {
    return count == 0 ? 0 : eight_digits((word ^ ascii_zeros) << (64 - 8 * count));
}

/// The values of the eight digits of a number below 10^8, leading zeros included. The factors are
/// the reciprocals of 10000, 100 and 10, exact in the ranges they are used in.
inline unsigned long digit_values(unsigned long number) {
    const unsigned long upper = number * 0x68db8bb >> 40;
    const unsigned long fours = upper | (number - upper * 10000) << 32;
    const unsigned long hundreds = ((fours * 10486) >> 20) & 0x0000007f0000007f;
    const unsigned long pairs = hundreds | (fours - hundreds * 100) << 16;
    const unsigned long tens = ((pairs * 103) >> 10) & 0x000f000f000f000f;
    return tens | (pairs - tens * 10) << 8;
}

inline void store_eight(char* text, unsigned long word) {
    std::memcpy(text, &word, sizeof word);
}

/// The two digits of 0 to 99. Hidden, so that their address needs no load.
extern __attribute__((visibility("hidden"))) const char digit_pairs[201];

inline unsigned load_pair(unsigned number) {
    return load_two(digit_pairs + std::size_t{2} * number);
}

inline char* store_pair(char* text, unsigned number) {
    std::memcpy(text, digit_pairs + std::size_t{2} * number, 2);
    return text + 2;
}

inline void store_two(char* text, unsigned word) {
    std::memcpy(text, &word, 2);
}

inline void store_four(char* text, unsigned word) {
    std::memcpy(text, &word, 4);
}

/// Writes a number below 10000 and returns the end. Only its characters are stored.
inline char* write_below_10000(char* text, unsigned number) {
    if (number < 100) {
        if (number >= 10)
            return store_pair(text, number);
        *text = static_cast<char>('0' + number);
        return text + 1;
    }
    const unsigned upper = number / 100;
    if (number >= 1000) {
        text = store_pair(text, upper);
    } else {
        *text = static_cast<char>('0' + upper);
        ++text;
    }
    return store_pair(text, number - 100 * upper);
}

/// The same for a number below 10^8.
inline char* write_below_hundred_million(char* text, unsigned number) {
    if (number < 10000)
        return write_below_10000(text, number);
    const unsigned upper = number / 10000;
    const unsigned lower = number - 10000 * upper;
    text = store_pair(write_below_10000(text, upper), lower / 100);
    return store_pair(text, lower % 100);
}

inline char* write_eight(char* text, unsigned long number) {
    store_eight(text, digit_values(number) | ascii_zeros);
    return text + 8;
}

/// Writes any number and returns the end. Only its characters are stored. It is inline because a
/// call would take as long as writing a short number.
__attribute__((always_inline)) inline char* write_digits_of(char* text, unsigned long number) {
    if (number < hundred_million)
        return write_below_hundred_million(text, static_cast<unsigned>(number));
    const unsigned long upper = number / hundred_million;
    if (upper < hundred_million) {
        text = write_below_hundred_million(text, static_cast<unsigned>(upper));
    } else {
        text = write_below_10000(text, static_cast<unsigned>(upper / hundred_million));
        text = write_eight(text, upper % hundred_million);
    }
    return write_eight(text, number % hundred_million);
}

/// Room for `write_decimal`: a sign, 20 digits and some reserve.
const std::size_t max_decimal_size = 32;

/// Write a number in decimal and return its length. There is no terminator.
inline std::size_t write_decimal(char* text, unsigned long number) {
    return static_cast<std::size_t>(write_digits_of(text, number) - text);
}

inline std::size_t write_decimal(char* text, long number) {
    // Without a branch: the first digit overwrites an unneeded sign.
    *text = '-';
    const unsigned long sign = number < 0 ? 1 : 0;
    const unsigned long magnitude = (static_cast<unsigned long>(number) ^ (0 - sign)) + sign;
    return static_cast<std::size_t>(write_digits_of(text + sign, magnitude) - text);
}

inline std::size_t write_decimal(char* text, int number) {
    return write_decimal(text, static_cast<long>(number));
}

inline std::size_t write_decimal(char* text, unsigned int number) {
    return write_decimal(text, static_cast<unsigned long>(number));
}

}  // namespace detail
}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
