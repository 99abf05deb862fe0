// Bodies for the members of abilities.hpp and `rc_pointer`, for a program that uses none of those
// in the library. Objects of such a program and of the library must still work together.
#pragma once

#include "abi/foreign/abilities.hpp"
#include "abi/foreign/pointers.hpp"

namespace TOVA_2_18 {

namespace generic {
namespace abilities {

inline alloc_detection_ability::alloc_detection_ability() : allocated(false) {}
inline alloc_detection_ability::alloc_detection_ability(const alloc_detection_ability&)
    : allocated(false) {}
inline alloc_detection_ability::~alloc_detection_ability() throw() {}

inline reference_count_pointer_ability_b::reference_count_pointer_ability_b() : count(0) {}
inline reference_count_pointer_ability_b::reference_count_pointer_ability_b(
    const reference_count_pointer_ability_b& other)
    : alloc_detection_ability(other), count(0) {}
inline reference_count_pointer_ability_b::~reference_count_pointer_ability_b() throw() {}

template <typename T>
reference_count_pointer_ability<T>::reference_count_pointer_ability() {}
template <typename T>
reference_count_pointer_ability<T>::reference_count_pointer_ability(
    const reference_count_pointer_ability& other)
    : reference_count_pointer_ability_b(other) {}
template <typename T>
reference_count_pointer_ability<T>::~reference_count_pointer_ability() throw() {}

}  // namespace abilities
}  // namespace generic

namespace memory {
namespace pointers {

namespace own {

template <typename T>
void hold(T* object) {
    if (object != nullptr)
        ++object->count;
}

// Not inlined: the compiler cannot tell that an object on the stack is never `allocated`, and would
// warn about the `delete`.
template <typename T>
__attribute__((noinline)) void release(T* object) {
    if (object != nullptr && --object->count == 0 && object->allocated)
        delete object;
}

}  // namespace own

template <typename T>
rc_pointer<T>::rc_pointer() : object(nullptr) {}
template <typename T>
rc_pointer<T>::rc_pointer(T* held) : object(held) {
    own::hold(object);
}
template <typename T>
rc_pointer<T>::rc_pointer(const rc_pointer& other) : object(other.object) {
    own::hold(object);
}
template <typename T>
rc_pointer<T>& rc_pointer<T>::operator=(const rc_pointer& other) {
    if (object != other.object) {
        own::release(object);
        object = other.object;
        own::hold(object);
    }
    return *this;
}
template <typename T>
rc_pointer<T>::~rc_pointer() throw() {
    own::release(object);
}
template <typename T>
T* rc_pointer<T>::operator->() const {
    return object;
}
template <typename T>
T& rc_pointer<T>::operator*() const {
    return *object;
}

}  // namespace pointers
}  // namespace memory

}  // namespace TOVA_2_18
