#include <tova/types/nil.hpp>

namespace TOVA_2_18 {
namespace types {

nil_t nil;

}  // namespace types
}  // namespace TOVA_2_18
