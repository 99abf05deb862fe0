/// @file
/// Converts numbers to characters: the only place where value formatting does so.
///
///     append_decimal(text, 255ul);       // text ends with "255"
///     append_double(text, 3.14159, 2, 6) // text ends with "  3.14"
///
/// Callers interpret the format string. Free functions without state: any number of threads may
/// call them at once.
#pragma once

#include "i18n/text_buffer.hpp"

#include <cstddef>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

/// Room for a sign, 64 binary digits and a terminator.
const std::size_t digit_buffer_size = 66;

/// Writes the value in a radix from 2 to 36, with lower-case digits and a leading "-" if it is
/// negative, and returns the number of characters. For callers that need the length before they
/// append.
std::size_t write_digits(char (&buffer)[digit_buffer_size], long value, int radix);

/// Append the value in decimal.
void append_decimal(text_buffer& text, int value);
void append_decimal(text_buffer& text, long value);
void append_decimal(text_buffer& text, unsigned long value);

/// Appends `count` spaces; nothing for a negative count.
void append_spaces(text_buffer& text, long count);

/// Appends a floating-point number with `precision` decimals (6 for a negative precision), padded
/// to `field` characters; 0 is no field.
///
/// Contract: a positive field aligns to the right and is never exceeded. A number that doesn't fit
/// is shown in scientific notation and then cut to the field, even in the middle of the exponent. A
/// negative field aligns to the left, and a longer number exceeds it.
void append_double(text_buffer& text, double value, int precision, int field);

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
