/// The types of a function signature.
#pragma once

#include <cstddef>
#include <tuple>
#include <type_traits>

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace traits {
namespace _private {

template <typename Signature>
class function_traits_helper;

template <typename Result, typename... Arguments>
class TOVA_API function_traits_helper<Result(Arguments...)> {
public:
    typedef Result result_type;

    /// The argument types in order, references kept.
    typedef std::tuple<Arguments...> argument_types;

    /// The number of arguments.
    typedef std::integral_constant<std::size_t, sizeof...(Arguments)> arity;
};

}  // namespace _private

/// The types of the signature, such as `void (int)`, at compile time. Its objects are empty.
template <typename Signature>
class TOVA_API function_traits : public _private::function_traits_helper<Signature> {};

}  // namespace traits
}  // namespace TOVA_2_18
