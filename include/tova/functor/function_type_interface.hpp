/// @file
/// The base of all callables of one signature.
///
/// `member_function_t` covers the usual case. A callable of one's own derives and implements the
/// three operations:
///
///     struct doubler : tova::functor::function_type_interface<int(int)> {
///         int invoke(int value) override { return 2 * value; }
///         bool do_equal(const function_type_interface& other) const override {
///             return typeid(other) == typeid(doubler);
///         }
///         doubler* do_clone() const override { return new doubler(*this); }
///     };
///     tova::functor::delegate_t<int(int)> twice = doubler();
///
/// Threads: the base holds nothing; what threads may do is up to the class that derives.
#pragma once

#include <tova/abi.hpp>
#include <tova/generic/abilities.hpp>
#include <tova/traits/function_traits.hpp>

namespace TOVA_2_18 {
namespace functor {

template <typename Signature>
class TOVA_API function_type_interface;  // clang takes the visibility of the first declaration

/// A function object that a `delegate_t` of the same signature can own. Its destructor must not
/// throw, which ends the process through `std::unexpected`.
template <typename Result, typename... Arguments>
class TOVA_API function_type_interface<Result(Arguments...)>
    : public traits::function_traits<Result(Arguments...)>,
      public generic::abilities::clone_ability {
public:
    ~function_type_interface() TOVA_NOTHROW override {}

    /// Does the call.
    virtual Result invoke(Arguments... arguments) = 0;

    /// Whether a call of `other` does the same as a call of this object.
    virtual bool do_equal(const function_type_interface& other) const = 0;

    /// A copy of this object on the heap, owned by the caller.
    virtual function_type_interface* do_clone() const = 0;
};

}  // namespace functor
}  // namespace TOVA_2_18
