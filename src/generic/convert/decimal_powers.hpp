/// @file
/// Powers of ten with 128 significant bits, for exact conversions between decimal and binary.
///
///     const decimal_power& p = decimal_power_of(-2);  // 0.01, rounded up
///     binary_exponent_of(-2);                         // -7: 0.01 is between 2^-7 and 2^-6
///
/// The table is constant; any number of threads may read it.
#pragma once

namespace TOVA_2_18 {
namespace generic {
namespace convert {
namespace detail {

__extension__ typedef unsigned __int128 uint128;

/// The upper and the lower half of a power of ten, scaled by a power of two so that the top bit is
/// set: 10^n is about (high * 2^64 + low) * 2^(binary_exponent_of(n) - 127).
///
/// From 10^0 on the value is rounded down, and it is exact up to `last_exact_power`. Below 10^0 it
/// is rounded up.
struct decimal_power {
    unsigned long high;
    unsigned long low;
};

const long first_power = -342;
const long last_power = 340;
const long last_exact_power = 55;  // 5^55 is below 2^128

/// Hidden, so that its address needs no load.
extern __attribute__((visibility("hidden")))
const decimal_power decimal_powers[last_power - first_power + 1];

/// The exponent is from `first_power` to `last_power`.
inline const decimal_power& decimal_power_of(long exponent) {
    return decimal_powers[exponent - first_power];
}

/// The logarithm of 10^exponent to base 2, rounded down. 217706 / 65536 is a little below log2(10),
/// close enough for every exponent of the table.
inline int binary_exponent_of(long exponent) {
    return static_cast<int>((exponent * 217706) >> 16);
}

/// The 192 bits of a product of 64 and 128 bits.
struct wide_product {
    uint128 high;
    unsigned long low;
};

inline wide_product multiply(unsigned long factor, const decimal_power& power) {
    const uint128 low = static_cast<uint128>(factor) * power.low;
    const uint128 high = static_cast<uint128>(factor) * power.high;
    return {high + static_cast<unsigned long>(low >> 64), static_cast<unsigned long>(low)};
}

}  // namespace detail
}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
