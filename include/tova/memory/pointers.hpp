/// Holders of objects that carry their own use count and heap mark.
#pragma once

#include <tova/abi.hpp>
#include <tova/generic/abilities.hpp>

namespace TOVA_2_18 {
namespace memory {
namespace pointers {

namespace _private {

// The count is reached through its own class: `T` may have an operation called `count`.
typedef generic::abilities::reference_count_pointer_ability_b counted;

template <typename T>
void hold(T* object) {
    if (object != nullptr)
        ++static_cast<counted*>(object)->count;
}

// Stays a call of its own: inlined next to an automatic object, the delete that is never reached
// for it draws a warning from compilers.
template <typename T>
__attribute__((noinline)) void destroy(T* object) TOVA_NOTHROW {
    delete object;
}

// Contract: an object without the heap mark is never deleted here. An automatic object or a member
// may be held for a while and outlives its holders.
template <typename T>
void release(T* object) TOVA_NOTHROW {
    if (object == nullptr)
        return;
    counted* const state = object;
    --state->count;
    if (state->count == 0 && state->allocated)
        destroy(object);
}

// A holder that is destroyed reads as null from then on. The store is volatile, as a compiler may
// otherwise drop it with the end of the holder's life.
template <typename T>
void forget(T*& pointer) TOVA_NOTHROW {
    *const_cast<T* volatile*>(&pointer) = nullptr;
}

// Contract: the old object is released before the new one is counted. If the old object owns the
// only reference to the new one, the caller keeps a holder of its own for the time.
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
/// Each holder counts for one in the object. The last one to go deletes the object if its heap mark
/// is set. One pointer wide; the count is a plain number, so an object and all its holders belong
/// to one thread at a time. Of an explicit instantiation all operations are exported by the library
/// that owns `T`.
template <typename T>
class TOVA_API rc_pointer {
public:
    /// Holds nothing.
    rc_pointer() : m_object(nullptr) {}

    /// Holds `object`, which may be null.
    rc_pointer(T* object) : m_object(object) { _private::hold(m_object); }
    rc_pointer(const rc_pointer& source) : m_object(source.m_object) { _private::hold(m_object); }

    /// Lets go of the held object and then holds the other; the same object again is no change.
    rc_pointer& operator=(const rc_pointer& source) {
        _private::assign(m_object, source.m_object);
        return *this;
    }
    rc_pointer& operator=(T* object) {
        _private::assign(m_object, object);
        return *this;
    }

    ~rc_pointer() TOVA_NOTHROW {
        _private::release(m_object);
        _private::forget(m_object);
    }

    /// The object. There is no null test: an empty holder must not be dereferenced.
    T* operator->() const { return m_object; }
    T& operator*() const { return *m_object; }

    /// The object or null. The result doesn't count as a holder.
    T* get() const { return m_object; }

    /// Whether an object is held.
    explicit operator bool() const { return m_object != nullptr; }

private:
    T* m_object;
};

/// Holds an object of a class without virtual operations that derives from
/// `generic::abilities::reference_count_pointer_ability<T>`, or nothing.
///
/// The rules are those of `rc_pointer`; the last holder deletes a marked object as a plain `T`, so
/// the object must not be of a derived class.
template <typename T>
class TOVA_API shared_pointer {
public:
    /// Holds nothing.
    shared_pointer() : m_object(nullptr) {}

    /// Holds `object`, which may be null.
    shared_pointer(T* object) : m_object(object) { _private::hold(m_object); }
    shared_pointer(const shared_pointer& source) : m_object(source.m_object) {
        _private::hold(m_object);
    }

    /// Lets go of the held object and then holds the other; the same object again is no change.
    shared_pointer& operator=(const shared_pointer& source) {
        _private::assign(m_object, source.m_object);
        return *this;
    }
    shared_pointer& operator=(T* object) {
        _private::assign(m_object, object);
        return *this;
    }

    ~shared_pointer() TOVA_NOTHROW {
        _private::release(m_object);
        _private::forget(m_object);
    }

    /// The object. There is no null test: an empty holder must not be dereferenced.
    T* operator->() const { return m_object; }
    T& operator*() const { return *m_object; }

    /// The object or null. The result doesn't count as a holder.
    T* get() const { return m_object; }

    /// Whether an object is held.
    explicit operator bool() const { return m_object != nullptr; }

private:
    T* m_object;
};

}  // namespace pointers
}  // namespace memory
}  // namespace TOVA_2_18
