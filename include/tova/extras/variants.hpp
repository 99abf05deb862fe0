/// @file
/// Variants that are asked for their type, visited, compared and made from more types.
///
///     using namespace tova::extras;                            // for the comparisons
///     if (const auto count = get_if<int>(value))               // exactly an int
///         use(*count);
///     visit([](const auto& held) { std::cout << held; }, value);
///     if (value == 42) ...                                     // any kind of number that is 42
///
/// All of them work on a copy of the value, since the body of a variant cannot be reached from
/// outside. A variant and its copies belong to one thread at a time.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/nil.hpp>
#include <tova/types/variant.hpp>

#include <cmath>
#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <typeinfo>
#if __cplusplus >= 201703L
#include <string_view>
#endif

namespace TOVA_2_18 {
namespace extras {

/// Whether the variant holds exactly a `T`, one of the eighteen types (`types::nil_t` for nil).
template <typename T>
bool holds(const types::variant& value) {
    // Compare names: some compilers compare addresses in C++23, and each module has its own for a
    // standard type.
    return std::strcmp(value.type().name(), typeid(T).name()) == 0;
}

namespace _private {

inline void read(const types::variant&, types::nil_t&) {}
inline void read(const types::variant& v, bool& to) {
    to = v.as_bool();
}
inline void read(const types::variant& v, signed char& to) {
    to = v.as_int8();
}
inline void read(const types::variant& v, short& to) {
    to = v.as_short();
}
inline void read(const types::variant& v, int& to) {
    to = v.as_int();
}
inline void read(const types::variant& v, long& to) {
    to = v.as_long();
}
inline void read(const types::variant& v, unsigned char& to) {
    to = v.as_uint8();
}
inline void read(const types::variant& v, unsigned short& to) {
    to = v.as_uint16();
}
inline void read(const types::variant& v, unsigned int& to) {
    to = v.as_uint32();
}
inline void read(const types::variant& v, unsigned long& to) {
    to = v.as_uint64();
}
inline void read(const types::variant& v, float& to) {
    to = v.as_float();
}
inline void read(const types::variant& v, double& to) {
    to = v.as_double();
}
inline void read(const types::variant& v, long double& to) {
    to = v.as_long_double();
}
inline void read(const types::variant& v, strings::ustring8& to) {
    to = v.as_utf8();
}
inline void read(const types::variant& v, strings::ustring16& to) {
    to = v.as_utf16();
}
inline void read(const types::variant& v, strings::ustring32& to) {
    to = v.as_utf32();
}
inline void read(const types::variant& v, std::string& to) {
    to = v.as_ustring();
}
inline void read(const types::variant& v, std::wstring& to) {
    to = v.as_wstring();
}

}  // namespace _private

/// A copy of the value. Raises `std::invalid_argument` unless the variant holds exactly a `T`; the
/// `as_` operations convert instead.
template <typename T>
T get(const types::variant& value) {
    if (!holds<T>(value))
        throw std::invalid_argument(std::string("the variant holds another type: ") +
                                    value.type().name());
    T result{};
    _private::read(value, result);
    return result;
}

/// A copy of the value, or `otherwise` if the variant holds another type.
template <typename T>
T get_or(const types::variant& value, T otherwise) {
    return holds<T>(value) ? get<T>(value) : otherwise;
}

/// A copy of the value if the variant holds exactly a `T`. Converts to false otherwise, and is then
/// not to be dereferenced.
template <typename T>
class held {
public:
    /// Takes a copy of the value if it is exactly a `T`.
    explicit held(const types::variant& value) : m_is_held(holds<T>(value)) {
        if (m_is_held)
            _private::read(value, m_value);
    }

    /// Whether there is a value. Never fails.
    explicit operator bool() const { return m_is_held; }

    /// The value. Without one it is a default-constructed `T`, which means nothing.
    const T& operator*() const { return m_value; }
    const T* operator->() const { return &m_value; }

private:
    T m_value{};
    bool m_is_held;
};

/// The value as `held`, to be tested in a condition.
template <typename T>
held<T> get_if(const types::variant& value) {
    return held<T>(value);
}

namespace _private {

// Tries one type after the other. What is left for the last one is nil.
template <typename Visitor, typename First, typename... Rest>
struct dispatcher {
    static auto call(Visitor& visitor, const types::variant& value)
        -> decltype(visitor(types::nil_t())) {
        return holds<First>(value) ? visitor(get<First>(value))
                                   : dispatcher<Visitor, Rest...>::call(visitor, value);
    }
};
template <typename Visitor, typename Last>
struct dispatcher<Visitor, Last> {
    static auto call(Visitor& visitor, const types::variant& value)
        -> decltype(visitor(types::nil_t())) {
        return visitor(get<Last>(value));
    }
};

}  // namespace _private

/// Calls `visitor` with a copy of the value in its own type: a callable for each of the eighteen
/// types, such as a generic lambda. Returns what the call with nil would return, converted.
/// Raises `std::invalid_argument` for a body of a class that is not the library's.
template <typename Visitor>
auto visit(Visitor&& visitor, const types::variant& value) -> decltype(visitor(types::nil_t())) {
    return _private::dispatcher<typename std::remove_reference<Visitor>::type, int,
                                strings::ustring8, bool, long, double, std::string, signed char,
                                short, unsigned char, unsigned short, unsigned int, unsigned long,
                                float, long double, strings::ustring16, strings::ustring32,
                                std::wstring, types::nil_t>::call(visitor, value);
}

/// The kinds that the comparison tells apart.
enum class kind {
    nil,       ///< No value.
    boolean,   ///< A `bool`.
    integer,   ///< A whole number of any width.
    floating,  ///< A `float`, `double` or `long double`.
    text       ///< A string of any width.
};

/// The kind of the value. Strings of any width are `text`; a single character type is an integer.
inline kind kind_of(const types::variant& value) {
    if (holds<types::nil_t>(value))
        return kind::nil;
    if (holds<bool>(value))
        return kind::boolean;
    if (holds<float>(value) || holds<double>(value) || holds<long double>(value))
        return kind::floating;
    if (holds<strings::ustring8>(value) || holds<strings::ustring16>(value) ||
        holds<strings::ustring32>(value) || holds<std::string>(value) || holds<std::wstring>(value))
        return kind::text;
    return kind::integer;
}

/// @name Comparison
///
/// Two variants are equal if they are both nil, both the same boolean, both numbers of the same
/// value (whatever their types, so 1 equals 1.0 and unsigned numbers never equal negative ones), or
/// both strings of the same UTF-8. A number never equals a string. NaN equals nothing.
///
/// The operators are found by `using namespace tova::extras` alone.
/// @{
inline bool equal(const types::variant& left, const types::variant& right) {
    const kind a = kind_of(left);
    const kind b = kind_of(right);
    const bool are_numbers =
        (a == kind::integer || a == kind::floating) && (b == kind::integer || b == kind::floating);
    if (are_numbers) {
        if (a == kind::floating || b == kind::floating)
            return left.as_long_double() == right.as_long_double();
        const bool is_left_huge = holds<unsigned long>(left) && left.as_int64() < 0;
        const bool is_right_huge = holds<unsigned long>(right) && right.as_int64() < 0;
        return is_left_huge == is_right_huge && left.as_int64() == right.as_int64();
    }
    if (a != b)
        return false;
    if (a == kind::boolean)
        return left.as_bool() == right.as_bool();
    return a == kind::nil || left.as_utf8() == right.as_utf8();
}

inline bool operator==(const types::variant& left, const types::variant& right) {
    return equal(left, right);
}
inline bool operator!=(const types::variant& left, const types::variant& right) {
    return !equal(left, right);
}
/// @}

/// @name Construction
///
/// Variants from types that `types::variant` does not take: `long long`, `nullptr`, enumerations
/// (their underlying number) and string views. Everything else passes through.
/// @{
inline types::variant make_variant(long long value) {
    return types::variant(static_cast<long>(value));
}
inline types::variant make_variant(unsigned long long value) {
    return types::variant(static_cast<unsigned long>(value));
}
inline types::variant make_variant(std::nullptr_t) {
    return types::variant();
}
#if __cplusplus >= 201703L
inline types::variant make_variant(std::string_view text) {
    return types::variant(strings::ustring8(text.data(), text.size()));
}
#endif
template <typename Enum>
typename std::enable_if<std::is_enum<Enum>::value, types::variant>::type make_variant(Enum value) {
    return types::variant(static_cast<typename std::underlying_type<Enum>::type>(value));
}
template <typename T>
typename std::enable_if<!std::is_enum<T>::value &&
                            std::is_constructible<types::variant, const T&>::value,
                        types::variant>::type
make_variant(const T& value) {
    return types::variant(value);
}
/// @}

}  // namespace extras
}  // namespace TOVA_2_18
