#include <tova/config/config_dispatch.hpp>

namespace TOVA_2_18 {
namespace config {

config_dispatch::~config_dispatch() TOVA_NOTHROW {}

}  // namespace config
}  // namespace TOVA_2_18
