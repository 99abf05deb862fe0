/// @file
/// A ready-made base for classes that are cloned through one common virtual operation.
///
///     struct shape : tova::generic::clone_interface {
///         shape* clone() const override { return new shape(*this); }
///     };
///     const std::unique_ptr<tova::generic::clone_interface> copy(shape().clone());
///
/// No class of the library derives from it.
///
/// Threads: the base holds nothing; what two threads may do is up to the class that derives.
#pragma once

#include <tova/abi.hpp>
#include <tova/generic/abilities.hpp>

namespace TOVA_2_18 {
namespace generic {

/// An object that can be cloned by code that doesn't know its class.
class TOVA_API clone_interface : public abilities::clone_ability {
public:
    clone_interface();  ///< Nothing to set up. Never fails.
    ~clone_interface() TOVA_NOTHROW override;

    /// A copy of the object on the heap, owned by the caller.
    virtual clone_interface* clone() const = 0;
};

}  // namespace generic
}  // namespace TOVA_2_18
