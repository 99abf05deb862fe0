#include <tova/serialization/labeled_serialize_buffer.hpp>

namespace TOVA_2_18 {
namespace serialization {

labeled_serialize_buffer::~labeled_serialize_buffer() TOVA_NOTHROW {}

}  // namespace serialization

// Exported once, since every module that holds buffers needs the same ones.
template class generic::abilities::reference_count_pointer_ability<
    serialization::labeled_serialize_buffer>;
template class memory::pointers::rc_pointer<serialization::labeled_serialize_buffer>;

}  // namespace TOVA_2_18
