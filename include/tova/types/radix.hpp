#pragma once

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace types {

/// The scope of `radix_t::base`, which says to the number parsers how digits are read.
struct radix_t {
    /// A radix by its number. Every number from 2 to 36 is a radix, also those without a name here
    /// (`static_cast<radix_t::base>(7)`); 1 and numbers above 36 are invalid.
    enum base : int {
        detect = 0,  ///< The text tells: 0x is 16, 0b is 2, a leading 0 or backslash is 8, else 10.
        binary = 2,
        octal = 8,
        decimal = 10,
        hexadecimal = 16,
        highest = 36  ///< Ten digits and 26 letters.
    };
};

}  // namespace types
}  // namespace TOVA_2_18
