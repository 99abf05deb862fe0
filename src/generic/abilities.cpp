#include <tova/generic/abilities.hpp>

namespace TOVA_2_18 {
namespace generic {
namespace abilities {

alloc_detection_ability::alloc_detection_ability() : allocated(false) {}

alloc_detection_ability::alloc_detection_ability(const alloc_detection_ability&)
    : allocated(false) {}

alloc_detection_ability& alloc_detection_ability::operator=(const alloc_detection_ability&) {
    return *this;
}

alloc_detection_ability::~alloc_detection_ability() TOVA_NOTHROW {}

reference_count_pointer_ability_b::reference_count_pointer_ability_b()
    : alloc_detection_ability(), count(0) {}

reference_count_pointer_ability_b::reference_count_pointer_ability_b(
    const reference_count_pointer_ability_b& source)
    : alloc_detection_ability(source), count(0) {}

// Contract: an assignment copies neither the heap mark nor the count. They describe where the
// object is and who holds it, not its value.
reference_count_pointer_ability_b&
reference_count_pointer_ability_b::operator=(const reference_count_pointer_ability_b&) {
    return *this;
}

reference_count_pointer_ability_b::~reference_count_pointer_ability_b() TOVA_NOTHROW {}

clone_ability::~clone_ability() TOVA_NOTHROW {}

create_ability::~create_ability() TOVA_NOTHROW {}

}  // namespace abilities
}  // namespace generic
}  // namespace TOVA_2_18
