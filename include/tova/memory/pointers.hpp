/// @file
/// Holders of objects that carry their own reference count and heap mark.
///
/// A holder is one pointer wide: the count is a field of the object, so there is no control block
/// and no second allocation. What the factories of the library return (`clone`, `create`) goes
/// straight into one:
///
///     using tova::serialization::serialize_buffer;
///     const tova::serialization::serialize_text_buf source("5\001");
///     const tova::memory::pointers::rc_pointer<serialize_buffer> copy(source.clone());
///     const int number = copy->read_int32();  // the copy is deleted with its last holder
///
/// Threads: counts are plain numbers. An object and all of its holders belong to one thread at a
/// time; threads that share an object guard it, copies of its holders included.
#pragma once

#include <tova/abi.hpp>
#include <tova/generic/abilities.hpp>

namespace TOVA_2_18 {
namespace memory {
namespace pointers {

namespace _private {

// The rules of both holders. The count is reached through its own class, since `T` may have an
// operation called `count`.
typedef generic::abilities::reference_count_pointer_ability_b counted;

template <typename T>
void hold(T* object) {
    if (object != nullptr)
        ++static_cast<counted*>(object)->count;
}

// Never inlined: next to an automatic object, the delete that is never reached for it would draw a
// warning from compilers.
template <typename T>
__attribute__((noinline)) void destroy(T* object) TOVA_NOTHROW {
    delete object;
}

// Contract: an object without the heap mark is never deleted here. An automatic object or a member
// may be given to a holder and outlives it.
template <typename T>
void release(T* object) TOVA_NOTHROW {
    if (object == nullptr)
        return;
    counted* const state = object;
    --state->count;
    if (state->count == 0 && state->allocated)
        destroy(object);
}

// A destroyed holder reads as null. The store is volatile because a compiler may otherwise drop it:
// the lifetime of the holder ends right after it.
template <typename T>
void forget(T*& pointer) TOVA_NOTHROW {
    *const_cast<T* volatile*>(&pointer) = nullptr;
}

// Contract: the old object is released before the new one is counted. If the old object owns the
// only reference to the new one, the caller keeps another holder of it during the assignment.
template <typename T>
void assign(T*& pointer, T* object) {
    if (object == pointer)
        return;
    release(pointer);
    pointer = object;
    hold(pointer);
}

}  // namespace _private

/// Holds an object of a class with a virtual destructor that derives from
/// `generic::abilities::reference_count_pointer_ability<T>`, or nothing.
///
/// Each holder adds one to the count of the object. The last holder to let go deletes the object if
/// its heap mark is set, and leaves it alone otherwise. No operation fails. The library that owns
/// `T` instantiates the class explicitly and exports all of its operations.
template <typename T>
class TOVA_API rc_pointer {
public:
    /// Holds nothing.
    rc_pointer() : m_object(nullptr) {}

    /// Holds `object`, which may be null.
    rc_pointer(T* object) : m_object(object) { _private::hold(m_object); }

    /// Holds the object that `source` holds, if any, and adds one to its count.
    rc_pointer(const rc_pointer& source) : m_object(source.m_object) { _private::hold(m_object); }

    /// Lets go of the held object, then holds the other. Nothing changes if it is the same object.
    rc_pointer& operator=(const rc_pointer& source) {
        _private::assign(m_object, source.m_object);
        return *this;
    }
    rc_pointer& operator=(T* object) {
        _private::assign(m_object, object);
        return *this;
    }

    /// Lets go of the object. Deletes it if this was the last holder and its heap mark is set.
    ~rc_pointer() TOVA_NOTHROW {
        _private::release(m_object);
        _private::forget(m_object);
    }

    /// The object. There is no null test: an empty holder must not be dereferenced.
    T* operator->() const { return m_object; }
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete): the analyser doesn't follow the count
    T& operator*() const { return *m_object; }

    /// The object, or null. The raw pointer doesn't count as a holder.
    T* get() const { return m_object; }

    /// Whether an object is held.
    explicit operator bool() const { return m_object != nullptr; }

private:
    T* m_object;
};

// A second class, and no common base or alias: modules link against the operations of each class by
// name. So each declares all of them.

/// Holds an object of a class without virtual operations that derives from
/// `generic::abilities::reference_count_pointer_ability<T>`, or nothing.
///
/// The operations and rules are those of `rc_pointer`. The last holder deletes a marked object as a
/// plain `T`, so the object must not be of a derived class.
template <typename T>
class TOVA_API shared_pointer {
public:
    /// Holds nothing.
    shared_pointer() : m_object(nullptr) {}

    /// Holds `object`, which may be null.
    shared_pointer(T* object) : m_object(object) { _private::hold(m_object); }

    /// Holds the object that `source` holds, if any, and adds one to its count.
    shared_pointer(const shared_pointer& source) : m_object(source.m_object) {
        _private::hold(m_object);
    }

    /// Lets go of the held object, then holds the other. Nothing changes if it is the same object.
    shared_pointer& operator=(const shared_pointer& source) {
        _private::assign(m_object, source.m_object);
        return *this;
    }
    shared_pointer& operator=(T* object) {
        _private::assign(m_object, object);
        return *this;
    }

    /// Lets go of the object. Deletes it if this was the last holder and its heap mark is set.
    ~shared_pointer() TOVA_NOTHROW {
        _private::release(m_object);
        _private::forget(m_object);
    }

    /// The object. There is no null test: an empty holder must not be dereferenced.
    T* operator->() const { return m_object; }
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete): the analyser doesn't follow the count
    T& operator*() const { return *m_object; }

    /// The object, or null. The raw pointer doesn't count as a holder.
    T* get() const { return m_object; }

    /// Whether an object is held.
    explicit operator bool() const { return m_object != nullptr; }

private:
    T* m_object;
};

}  // namespace pointers
}  // namespace memory
}  // namespace TOVA_2_18
