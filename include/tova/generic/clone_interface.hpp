/// A ready-made base for classes that are cloned through one common slot.
#pragma once

#include <tova/abi.hpp>
#include <tova/generic/abilities.hpp>

namespace TOVA_2_18 {
namespace generic {

/// Objects that can be cloned without knowing their class.
class TOVA_API clone_interface : public abilities::clone_ability {
public:
    clone_interface();
    virtual ~clone_interface() TOVA_NOTHROW;

    /// A copy of the object on the heap, owned by the caller.
    virtual clone_interface* clone() const = 0;
};

}  // namespace generic
}  // namespace TOVA_2_18
