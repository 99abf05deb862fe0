/// @file
/// One value as the string that a message shows, under the format language of message items.
///
///     // "n", then key and value, separated by the byte 0x01
///     const tova::strings::ustring8 data("n\1base\1hex");
///     tova::i18n::format_value(tova::i18n::message_item::type_int, 255, data);  // "0x00ff"
///
/// Free functions without state: any number of threads may call them, on values that share no body.
#pragma once

#include <tova/abi.hpp>
#include <tova/i18n/message_item.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/variant.hpp>

namespace TOVA_2_18 {
namespace i18n {

/// Returns the value as an item of that type and data shows it.
///
/// The format string is the part of `data` after the first byte 0x01: keys and values in turn,
/// separated by the byte 0x01. Keys, and words used as values, may be shortened to any prefix, even
/// to the empty one; the first word in the list that begins with the prefix is meant. A later pair
/// overrides an earlier one. Sizes are in characters; numbers are read as by `atol` and cut to 32
/// bits. A field has no upper limit, and one of two billion characters takes as many bytes.
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
/// The two unit types return only the unit. Returns "-0" for an invalid format string, and the
/// empty string for every other type.
TOVA_API strings::ustring8 format_value(message_item::type_t type, types::variant value,
                                        const strings::ustring8& data);

/// The functions that `format_value` chooses from. `format` is only the format string, without a
/// name. The memory and metric forms return the number and store the unit in `unit`, which is empty
/// after a failure. Each returns "-0" for an invalid format string.
namespace _private {

/// An integer in decimal, octal, binary or hexadecimal. In the last three, negative numbers are
/// shown as complements. Also returns "-0" when the field is too small or negative.
TOVA_API strings::ustring8 format_int(long value, const strings::ustring8& format);

/// A floating-point number as `printf` writes it: by "%f" if that fits the field, otherwise by
/// "%e", cut to the field. A negative field aligns to the left and may be exceeded.
///
/// A number of more than 63 characters loses decimals down to that length. If the digits before the
/// point alone are longer, it is shown in scientific notation. A negative precision counts as 6.
TOVA_API strings::ustring8 format_double(double value, const strings::ustring8& format);

/// A duration in days, hours, minutes and seconds, beginning with the largest unit that isn't 0.
TOVA_API strings::ustring8 format_duration(double seconds, const strings::ustring8& format);

/// A memory size in steps of 1000. Scaling stops at YB.
TOVA_API strings::ustring8 format_memory(types::variant value, const strings::ustring8& format,
                                         strings::ustring8& unit);

/// A metric quantity in steps of 1000; the prefix is stored in `unit`. Scaling stops at tera.
TOVA_API strings::ustring8 format_metric(types::variant value, const strings::ustring8& format,
                                         strings::ustring8& unit);

/// The index of a memory unit, from 0 for "B" and 1 for "KB" to 8 for "YB"; only the first two
/// characters are read. Returns -1 for anything else.
TOVA_API int mem_prefix_index(const strings::ustring8& unit);

/// The power of 1000 of a metric prefix, from -6 for "a" to 8 for "Y"; every prefix of the word
/// "base", the empty one included, is 0. Returns -1000 for anything else.
TOVA_API int thousands(const strings::ustring8& prefix);

}  // namespace _private
}  // namespace i18n
}  // namespace TOVA_2_18
