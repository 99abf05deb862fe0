/// @file
/// One piece of a message: literal text, or a typed reference to an argument.
///
///     const tova::i18n::message_item size("n\1base\1hex", tova::i18n::message_item::type_int);
///     size.as_string(tova::generic::varg_list(tova::generic::argument("n", 255)));  // "0x00ff"
///
/// Items are plain values: reading one object from several threads is safe.
#pragma once

#include <tova/abi.hpp>
#include <tova/generic/varg_list.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace i18n {

class message_t;

/// One piece of a message: literal text, or a typed reference to an argument.
///
/// A literal item holds its text. An argument item holds the argument's name, followed by any
/// number of attribute pairs: the byte 0x01, the key, the byte 0x01, the value. Everything after
/// the first byte 0x01 is the format string that `format_value` reads; other types ignore it.
///
/// A plain value: copies share nothing.
class TOVA_API message_item {
public:
    /// The kind of an item. Callers store and compare the numbers. Every value other than 0 makes
    /// an argument item; a value that isn't listed behaves like a reserved one.
    enum type_t : unsigned int {
        type_text = 0,          ///< literal text, no argument
        type_string = 1,        ///< an argument, shown by its own conversion to text
        type_number = 2,        ///< reserved, shows as "?invalid?"
        type_int = 3,           ///< an integer argument
        type_double = 4,        ///< a floating-point argument
        type_time = 5,          ///< reserved, shows as "?invalid?"
        type_date = 6,          ///< reserved, shows as "?invalid?"
        type_memory = 7,        ///< the number part of a memory size
        type_memory_unit = 8,   ///< the unit part of a memory size
        type_metric = 9,        ///< the number part of a metric quantity
        type_metric_unit = 10,  ///< the unit part of a metric quantity
        type_duration = 11      ///< a duration in seconds
    };

    /// A literal item with that text.
    message_item(const strings::ustring8& data);

    /// An item of any type; `data` is the text, or the argument's name with its attribute pairs.
    message_item(const strings::ustring8& data, type_t type);

    message_item(const message_item& other);
    ~message_item() TOVA_NOTHROW;

    message_item& operator=(const message_item& other);
    message_item& assign(const message_item& other);

    /// The type, as it was given. Never fails.
    type_t type() const;

    /// A copy of the text, or of the name with all its attribute pairs.
    strings::ustring8 data() const;

    /// The data up to its first byte 0x01, or all of it if it has none: the argument's name. The
    /// same rule applies to the text of a literal item.
    strings::ustring8 name() const;

    /// The string that this item shows, in UTF-8.
    ///
    /// A literal item returns its data. An argument item looks up its name in `args`, exactly and
    /// case-sensitively, and formats the value. Returns "?invalid?" for a missing argument, for an
    /// invalid format string and for the reserved types. Raises only the standard exceptions for
    /// exhausted memory; if memory runs out while a value is converted to a string, the process
    /// ends through `std::unexpected` (see `types::variant`).
    ///
    /// Contract: a formatted value that reads "-0" is "?invalid?", too, even if it is correct (-0.3
    /// without decimals), because "-0" marks an invalid format string.
    strings::ustring8 as_string(const generic::varg_list& args) const;

private:
    friend class message_t;  // reads the fields without a copy

    strings::ustring8 m_data;
    type_t m_type;
};

}  // namespace i18n
}  // namespace TOVA_2_18
