/// One message argument as text, under the format language of message items.
#pragma once

#include <tova/abi.hpp>
#include <tova/i18n/message_item.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/variant.hpp>

namespace TOVA_2_18 {
namespace i18n {

/// The text of a value as an item of that type and data shows it.
///
/// The format string is what stands behind the first byte 0x01 of `data`: keys and values in turn,
/// separated by the byte 0x01. A key and a word value may be cut to any prefix, the empty one
/// included; the first word of the list that begins with it is meant. A later pair overrides an
/// earlier one. Sizes are in characters of the text; numbers are read by `atol` and cut to 32 bits.
///
/// | type                           | options, defaults in parentheses                          |
/// |--------------------------------|-----------------------------------------------------------|
/// | `type_int`                     | base: dec, default, spaced_dec, hex, oct, bin (dec);      |
/// |                                | fieldsize (0, none)                                       |
/// | `type_double`                  | precision (2), fieldsize (0, none)                        |
/// | `type_memory`, `_memory_unit`  | target_unit (scaled by size), base_unit (B),              |
/// |                                | precision (0, an integer), fieldsize (0, none)            |
/// | `type_metric`, `_metric_unit`  | base_unit (no prefix), target_unit (scaled by size),      |
/// |                                | short_form (true), precision (3), fieldsize (0, none)     |
/// | `type_duration`                | precision (2), short_form (false)                         |
///
/// The types for a unit give the unit alone. Answers "-0" for a faulty format string and the empty
/// text for every other type.
TOVA_API strings::ustring8 format_value(message_item::type_t type, types::variant value,
                                        strings::ustring8 const& data);

/// What `format_value` chooses from. `format` is the format string alone, without a name; the
/// memory and metric forms give the number and put the unit into `unit`, which is empty after a
/// fault. Each answers "-0" for a faulty format string.
namespace _private {

/// An integer in decimal, octal, binary or hexadecimal. Negative numbers in the last three show as
/// complements. Answers "-0" also when the field is too small or negative.
TOVA_API strings::ustring8 format_int(long value, strings::ustring8 const& format);

/// A floating-point number in the notation of `printf`, "%f" where that fits the field and else
/// "%e", cut to the field. A negative field aligns to the left and may be exceeded.
///
/// Numbers of more than 63 characters lose decimals down to that length, or show in scientific
/// notation if the digits in front of the point alone are longer. A negative precision counts as 6.
TOVA_API strings::ustring8 format_double(double value, strings::ustring8 const& format);

/// A duration in days, hours, minutes and seconds, from the largest that isn't 0 down.
TOVA_API strings::ustring8 format_duration(double seconds, strings::ustring8 const& format);

/// A memory size in steps of 1000. Scaling stops at YB.
TOVA_API strings::ustring8 format_memory(types::variant value, strings::ustring8 const& format,
                                         strings::ustring8& unit);

/// A metric quantity in steps of 1000; `unit` gets the prefix. Scaling stops at tera.
TOVA_API strings::ustring8 format_metric(types::variant value, strings::ustring8 const& format,
                                         strings::ustring8& unit);

/// The index of a memory unit, from 0 for "B" and 1 for "KB" to 8 for "YB"; only the first two
/// characters are read. Answers -1 for anything else.
TOVA_API int mem_prefix_index(strings::ustring8 const& unit);

/// The power of 1000 of a metric prefix, from -6 for "a" to 8 for "Y"; every prefix of the word
/// "base", the empty one included, is 0. Answers -1000 for anything else.
TOVA_API int thousands(strings::ustring8 const& prefix);

}  // namespace _private
}  // namespace i18n
}  // namespace TOVA_2_18
