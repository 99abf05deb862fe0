/// Base classes by which a class declares what can be done with its objects.
#pragma once

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace generic {
namespace abilities {

/// The heap mark: whether the object was made on the heap by a factory (`clone`, `create`).
///
/// A factory sets `allocated` after `new`; a holder deletes marked objects alone. A copy is a new
/// object without the mark, and assignment leaves the mark of either side as it is.
class TOVA_API alloc_detection_ability {
public:
    bool allocated;

    alloc_detection_ability();
    alloc_detection_ability(const alloc_detection_ability& source);
    alloc_detection_ability& operator=(const alloc_detection_ability& source);
    ~alloc_detection_ability() TOVA_NOTHROW;
};

/// The use count: the number of pointers of `memory::pointers` that hold the object.
///
/// A plain number: an object and its holders belong to one thread at a time. A copy is a new object
/// that nobody holds, and assignment leaves the count of either side as it is.
class TOVA_API reference_count_pointer_ability_b : public alloc_detection_ability {
public:
    unsigned int count;

    reference_count_pointer_ability_b();
    reference_count_pointer_ability_b(const reference_count_pointer_ability_b& source);
    reference_count_pointer_ability_b& operator=(const reference_count_pointer_ability_b& source);
    ~reference_count_pointer_ability_b() TOVA_NOTHROW;
};

/// What a counted class `T` inherits, so that `rc_pointer<T>` or `shared_pointer<T>` can hold it.
template <typename T>
class TOVA_API reference_count_pointer_ability : public reference_count_pointer_ability_b {
public:
    reference_count_pointer_ability() : reference_count_pointer_ability_b() {}
    reference_count_pointer_ability(const reference_count_pointer_ability& source)
        : reference_count_pointer_ability_b(source) {}
    reference_count_pointer_ability& operator=(const reference_count_pointer_ability&) {
        return *this;
    }
    ~reference_count_pointer_ability() TOVA_NOTHROW {}
};

/// Marks a class that offers `clone() const`: a copy on the heap with `allocated` set and `count`
/// 0.
///
/// The operation itself stands in the class, with its own result type; through this base a helper
/// reaches the class by a checked downcast.
class TOVA_API clone_ability {
public:
    virtual ~clone_ability() TOVA_NOTHROW;
};

/// Marks a class that offers `create() const`: a new object of the class as its default constructor
/// makes it, on the heap with `allocated` set and `count` 0.
class TOVA_API create_ability {
public:
    virtual ~create_ability() TOVA_NOTHROW;
};

}  // namespace abilities
}  // namespace generic
}  // namespace TOVA_2_18
