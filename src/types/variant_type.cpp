#include <tova/types/variant_type.hpp>

namespace TOVA_2_18 {

namespace types {

// Out of line: the vtable and the type information of the class are emitted here, once.
variant_type::~variant_type() TOVA_NOTHROW {}

}  // namespace types

template class generic::abilities::reference_count_pointer_ability<types::variant_type>;
template class memory::pointers::rc_pointer<types::variant_type>;

}  // namespace TOVA_2_18
