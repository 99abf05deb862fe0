#include <tova/serialization/serialize_buffer.hpp>

namespace TOVA_2_18 {
namespace serialization {

serialize_buffer::~serialize_buffer() TOVA_NOTHROW {}

}  // namespace serialization

// Exported once, since every module that holds buffers needs the same ones.
template class generic::abilities::reference_count_pointer_ability<serialization::serialize_buffer>;
template class memory::pointers::rc_pointer<serialization::serialize_buffer>;

}  // namespace TOVA_2_18
