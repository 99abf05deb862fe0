// Looks at objects as a linker or a foreign compiler would: words, offsets and slots.
#pragma once

#include <cstddef>
#include <cstring>

namespace test_support {

// The pointer that lies `offset` bytes into some memory, whatever the compiler believes to know of
// the memory (the life of an object in it may be over).
__attribute__((noinline)) inline void* pointer_at(const void* memory, std::size_t offset = 0) {
    asm volatile("" : : "r"(memory) : "memory");
    void* result;
    std::memcpy(&result, static_cast<const char*>(memory) + offset, sizeof result);
    return result;
}

// Functions that call a slot by number carry this: the sanitizer of function types compares the
// type of a pointer with the one of a member function, which has no spelling as a plain function.
#ifdef __clang__
#define TEST_CALLS_SLOTS __attribute__((no_sanitize("function")))
#else
#define TEST_CALLS_SLOTS
#endif

// The function in a slot of the table that the pointer at `offset` of an object leads to. A virtual
// destructor takes two slots, the second one deletes.
template <typename Function>
Function* slot(const void* object, std::size_t number, std::size_t offset = 0) {
    return reinterpret_cast<Function*>(
        pointer_at(pointer_at(object, offset), number * sizeof(void*)));
}

// The distance of a base class in an object.
template <typename Base, typename Derived>
std::ptrdiff_t base_offset(const Derived& object) {
    return reinterpret_cast<const char*>(static_cast<const Base*>(&object)) -
           reinterpret_cast<const char*>(&object);
}

}  // namespace test_support
