/// The base of all callables of one signature.
#pragma once

#include <tova/abi.hpp>
#include <tova/generic/abilities.hpp>
#include <tova/traits/function_traits.hpp>

namespace TOVA_2_18 {
namespace functor {

template <typename Signature>
class TOVA_API function_type_interface;  // clang takes the mark of the first declaration

/// A function object that a `delegate_t` of the same signature can own.
///
/// To make one's own, derive and implement the three operations. The destructor must not throw.
template <typename Result, typename... Arguments>
class TOVA_API function_type_interface<Result(Arguments...)>
    : public traits::function_traits<Result(Arguments...)>,
      public generic::abilities::clone_ability {
public:
    virtual ~function_type_interface() TOVA_NOTHROW {}

    virtual Result invoke(Arguments... arguments) = 0;

    /// Whether `other` calls the same as this object.
    virtual bool do_equal(const function_type_interface& other) const = 0;

    /// A copy of this object on the heap, owned by the caller.
    virtual function_type_interface* do_clone() const = 0;
};

}  // namespace functor
}  // namespace TOVA_2_18
