/// One piece of a message: literal text, or a typed reference to an argument.
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
/// number of attribute pairs: the byte 0x01, the key, the byte 0x01, the value. What stands behind
/// the first byte 0x01 is the format string that `format_value` reads, and has no meaning for the
/// other types.
///
/// A plain value: copies share nothing, and reading one object from several threads is safe.
class TOVA_API message_item {
public:
    /// What an item is. The numbers are stored and compared by callers. Every value but 0 makes an
    /// argument item; a value that isn't listed behaves as a reserved one.
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

    /// A literal item of that text.
    message_item(strings::ustring8 const& data);

    /// An item of any type; `data` is the text, or the argument's name with its attribute pairs.
    message_item(strings::ustring8 const& data, type_t type);

    message_item(message_item const& other);
    ~message_item() TOVA_NOTHROW;

    message_item& operator=(message_item const& other);
    message_item& assign(message_item const& other);

    type_t type() const;

    /// A copy of the text, or of the name with all its attribute pairs.
    strings::ustring8 data() const;

    /// The data up to its first byte 0x01, or all of it when it holds none: the argument's name.
    /// For a literal item that is the text, up to the same byte.
    strings::ustring8 name() const;

    /// The text of this item, in UTF-8.
    ///
    /// A literal item gives its data. An argument item looks its name up in `args`, exactly and
    /// with case, and formats the value. Answers "?invalid?" for a missing argument, for a faulty
    /// format string and for the reserved types.
    ///
    /// Contract: a formatted text that reads "-0" is answered as "?invalid?" too, also when it is
    /// the honest result (-0.3 without decimals), as "-0" is the mark of a faulty format.
    strings::ustring8 as_string(generic::varg_list const& args) const;

private:
    friend class message_t;  // renders from the fields, without a copy of each

    strings::ustring8 m_data;
    type_t m_type;
};

}  // namespace i18n
}  // namespace TOVA_2_18
