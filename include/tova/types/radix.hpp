/// @file
/// The radix of a number that is written in digits, as the parsers of `generic::convert` expect it.
///
///     str_to_int("ff", 2, tova::types::radix_t::hexadecimal, false);  // 255
///
/// Constants only; there is nothing for threads to share.
#pragma once

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace types {

/// The scope of the enumeration `base`, which tells a number parser how to read digits.
struct radix_t {
    /// A radix by its number. Every number from 2 to 36 is valid, including those without a name
    /// (`static_cast<radix_t::base>(7)`); 1 and numbers above 36 are invalid.
    enum base : int {
        detect = 0,  ///< By prefix: 0x is 16, 0b is 2, a leading 0 or backslash is 8, otherwise 10.
        binary = 2,  ///< The digits 0 and 1.
        octal = 8,   ///< The digits 0 to 7.
        decimal = 10,      ///< The digits 0 to 9.
        hexadecimal = 16,  ///< The digits 0 to 9 and the letters a to f.
        highest = 36       ///< Ten digits and 26 letters.
    };
};

}  // namespace types
}  // namespace TOVA_2_18
