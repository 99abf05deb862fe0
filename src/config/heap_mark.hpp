/// @file
/// Objects on the heap that counted pointers delete.
#pragma once

namespace TOVA_2_18 {
namespace config {
namespace detail {

// Marks an object created by `new`, so that the last `rc_pointer` to it deletes it. Returns the
// object, whose count is still 0.
template <typename Counted>
Counted* with_heap_mark(Counted* object) {
    object->allocated = true;
    return object;
}

}  // namespace detail
}  // namespace config
}  // namespace TOVA_2_18
