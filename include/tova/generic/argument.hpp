/// @file
/// A value with an optional name, as argument lists hold it.
///
///     const tova::generic::argument named("count", 3);
///     const tova::generic::argument unnamed = "text";  // anything a variant is made from
///     const int count = named.value().as_int();
///
/// Threads: copies share the body of the value, and its count is a plain number. An argument and
/// all of its copies belong to one thread at a time.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/nil.hpp>
#include <tova/types/variant.hpp>

#include <string>

namespace TOVA_2_18 {
namespace generic {

/// A value with an optional name. An empty name means unnamed.
///
/// Copies share the body of the value, as copies of a `types::variant` do. Every operation raises
/// only what an allocation raises.
class TOVA_API argument {
public:
    /// An unnamed argument with a nil value.
    argument();
    argument(const types::nil_t& nil_tag);

    argument(const argument& other);

    /// An unnamed argument with that value.
    argument(const types::variant& value);

    /// An unnamed argument with anything that a `types::variant` can be made from.
    template <typename T>
    argument(const T& value) : m_name(), m_value(value) {}

    /// A value with a name; unnamed if the name is empty.
    argument(const strings::ustring8& name, const types::variant& value);

    /// The name, which is empty for an unnamed argument. The second form sets it first; an empty
    /// name makes the argument unnamed. The reference is valid as long as the argument.
    const strings::ustring8& name() const;
    const strings::ustring8& name(const strings::ustring8& value);

    /// The value. The second form sets it first. The reference is valid as long as the argument.
    const types::variant& value() const;
    const types::variant& value(const types::variant& value);

    /// Whether the name is not empty. Never fails.
    bool has_name() const;

    /// Whether the argument is unnamed and its value is nil. A named nil is not nil.
    bool equal(const types::nil_t& nil_tag) const;
    bool operator==(const types::nil_t& nil_tag) const;
    bool operator!=(const types::nil_t& nil_tag) const;

    /// Replaces the name and the value, and returns this argument.
    argument& assign(const strings::ustring8& name, const types::variant& value);

    /// Replaces the value, and returns this argument. The name stays.
    argument& assign(const types::variant& value);
    argument& operator=(const types::variant& value);

    /// Replaces the name and the value by those of `other`, and returns this argument. The body of
    /// the value is then shared.
    argument& assign(const argument& other);
    argument& operator=(const argument& other);

private:
    strings::ustring8 m_name;
    types::variant m_value;
};

extern template argument::argument(const std::string& value);

}  // namespace generic
}  // namespace TOVA_2_18
