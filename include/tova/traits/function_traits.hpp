/// @file
/// The types of a function signature, at compile time.
///
///     typedef tova::traits::function_traits<bool(int, const char*)> traits;
///     static_assert(std::is_same<traits::result_type, bool>::value, "");
///     static_assert(traits::arity::value == 2, "");
///
/// Threads: nothing exists at run time that two threads could share.
#pragma once

#include <tova/abi.hpp>

#include <cstddef>
#include <tuple>
#include <type_traits>

namespace TOVA_2_18 {
namespace traits {
namespace _private {

template <typename Signature>
class function_traits_helper;

template <typename Result, typename... Arguments>
class TOVA_API function_traits_helper<Result(Arguments...)> {
public:
    typedef Result result_type;

    /// The argument types in order, with their references.
    typedef std::tuple<Arguments...> argument_types;

    /// The number of arguments.
    typedef std::integral_constant<std::size_t, sizeof...(Arguments)> arity;
};

}  // namespace _private

/// The types of a signature such as `void (int)`. Objects of the class are empty.
template <typename Signature>
class TOVA_API function_traits : public _private::function_traits_helper<Signature> {};

}  // namespace traits
}  // namespace TOVA_2_18
