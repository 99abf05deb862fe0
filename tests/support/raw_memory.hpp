// Reads objects as a linker or another compiler sees them: words, offsets and slots.
#pragma once

#include <cstddef>
#include <cstring>

namespace test_support {

// The pointer stored `offset` bytes into some memory. The compiler cannot see through this read, so
// it also works after the lifetime of the object in that memory has ended.
__attribute__((noinline)) inline void* pointer_at(const void* memory, std::size_t offset = 0) {
    asm volatile("" : : "r"(memory) : "memory");
    void* result;
    std::memcpy(&result, static_cast<const char*>(memory) + offset, sizeof result);
    return result;
}

// Marks functions that call a slot by number. The function sanitizer compares the type of the
// called pointer with the type of the member function, and no plain function type equals that.
#ifdef __clang__
#define TEST_CALLS_SLOTS __attribute__((no_sanitize("function")))
#else
#define TEST_CALLS_SLOTS
#endif

// The function in a slot of the virtual table that the pointer at `offset` in an object points to.
// A virtual destructor has two slots; the second one also deletes the object.
template <typename Function>
Function* slot(const void* object, std::size_t number, std::size_t offset = 0) {
    return reinterpret_cast<Function*>(
        pointer_at(pointer_at(object, offset), number * sizeof(void*)));
}

// The offset of a base class in an object, in bytes.
template <typename Base, typename Derived>
std::ptrdiff_t base_offset(const Derived& object) {
    return reinterpret_cast<const char*>(static_cast<const Base*>(&object)) -
           reinterpret_cast<const char*>(&object);
}

// A copy of the trivial field at an offset in an object.
template <typename Field>
Field field_at(const void* object, std::size_t offset) {
    Field value;
    std::memcpy(&value, static_cast<const char*>(object) + offset, sizeof value);
    return value;
}

// The part of an object that starts at an offset, for fields that have a class of their own.
template <typename Part>
const Part& part_at(const void* object, std::size_t offset) {
    return *reinterpret_cast<const Part*>(static_cast<const char*>(object) + offset);
}

// Result types are not part of a symbol. `static_assert(returns<int>(&type::operation), "")` fails
// to compile if the const operation returns any other type.
template <typename Result, typename Class, typename... Arguments>
constexpr bool returns(Result (Class::*)(Arguments...) const) {
    return true;
}

}  // namespace test_support
