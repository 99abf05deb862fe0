// The portable kernels over bytes: the reference for every vector form.
#include "strings/byte_kernels.hpp"

#include "strings/byte_loops.hpp"

namespace TOVA_2_18 {
namespace strings {
namespace kernels {

const byte_form bytes_portable = {loops::map, loops::find};

}  // namespace kernels
}  // namespace strings
}  // namespace TOVA_2_18
