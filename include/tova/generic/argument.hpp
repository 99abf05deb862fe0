#pragma once

#include <string>

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/nil.hpp>
#include <tova/types/variant.hpp>

namespace TOVA_2_18 {
namespace generic {

/// A value with an optional name, as argument lists hold it. An empty name means unnamed.
///
/// Copies share the value's body, as copies of a `types::variant` do, under the same rule for
/// threads. Operations raise what an allocation raises.
class TOVA_API argument {
public:
    /// Unnamed, with a nil value.
    argument();
    argument(const types::nil_t& nil_tag);

    argument(const argument& other);

    /// Unnamed, with that value.
    argument(const types::variant& value);

    /// Unnamed, with any value that a `types::variant` is made from.
    template <typename T>
    argument(const T& value) : m_name(), m_value(value) {}

    argument(const strings::ustring8& name, const types::variant& value);

    const strings::ustring8& name() const;
    const strings::ustring8& name(const strings::ustring8& value);  ///< Returns the name set.
    const types::variant& value() const;
    const types::variant& value(const types::variant& value);  ///< Returns the value set.

    bool has_name() const;

    /// Whether the argument is unnamed and its value is nil. A name alone makes it something.
    bool equal(const types::nil_t& nil_tag) const;
    bool operator==(const types::nil_t& nil_tag) const;
    bool operator!=(const types::nil_t& nil_tag) const;

    argument& assign(const strings::ustring8& name, const types::variant& value);

    /// Replaces the value alone; the name stays.
    argument& assign(const types::variant& value);
    argument& operator=(const types::variant& value);

    /// Replaces name and value.
    argument& assign(const argument& other);
    argument& operator=(const argument& other);

private:
    strings::ustring8 m_name;
    types::variant m_value;
};

extern template argument::argument(const std::string& value);

}  // namespace generic
}  // namespace TOVA_2_18
