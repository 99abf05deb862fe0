#include <tova/generic/clone_interface.hpp>

namespace TOVA_2_18 {
namespace generic {

clone_interface::clone_interface() {}

clone_interface::~clone_interface() TOVA_NOTHROW {}

}  // namespace generic
}  // namespace TOVA_2_18
