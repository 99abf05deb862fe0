/// @file
/// Base classes by which a class declares what can be done with its objects.
///
/// A counted class, and a factory for it:
///
///     class item : public tova::generic::abilities::reference_count_pointer_ability<item> {
///     public:
///         virtual ~item() {}
///         item* clone() const {
///             item* const made = new item(*this);
///             made->allocated = true;  // so that the last holder deletes it
///             return made;
///         }
///     };
///     tova::memory::pointers::rc_pointer<item> copy(item().clone());
///
/// Threads: count and mark are plain fields, so an object belongs to one thread at a time.
#pragma once

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace generic {
namespace abilities {

/// The heap mark: whether a factory (`clone`, `create`) made the object on the heap.
///
/// A factory sets `allocated` after `new`, and holders delete only objects that have the mark. A
/// copy is a new object without the mark; assignment leaves the marks of both sides alone.
class TOVA_API alloc_detection_ability {
public:
    /// Whether the object was made on the heap by a factory, so that its last holder deletes it.
    bool allocated;

    /// No mark: `allocated` is false. Never fails.
    alloc_detection_ability();

    alloc_detection_ability(const alloc_detection_ability& source);
    alloc_detection_ability& operator=(const alloc_detection_ability& source);
    ~alloc_detection_ability() TOVA_NOTHROW;
};

/// The reference count: the number of pointers of `memory::pointers` that hold the object.
///
/// A copy is a new object that nobody holds; assignment leaves the counts of both sides alone.
class TOVA_API reference_count_pointer_ability_b : public alloc_detection_ability {
public:
    /// The number of holders. Holders change it; nothing guards it.
    unsigned int count;

    /// No holders and no mark. Never fails.
    reference_count_pointer_ability_b();

    reference_count_pointer_ability_b(const reference_count_pointer_ability_b& source);
    reference_count_pointer_ability_b& operator=(const reference_count_pointer_ability_b& source);
    ~reference_count_pointer_ability_b() TOVA_NOTHROW;
};

/// The base of a counted class `T`, so that `rc_pointer<T>` or `shared_pointer<T>` can hold it.
template <typename T>
class TOVA_API reference_count_pointer_ability : public reference_count_pointer_ability_b {
public:
    /// No holders and no mark. Never fails.
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
/// The class declares the operation itself, with a result type of its own. Code that only knows
/// this base reaches the class by a checked downcast.
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
