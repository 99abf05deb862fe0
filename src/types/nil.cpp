#include <tova/types/nil.hpp>

namespace TOVA_2_18 {
namespace types {

// Not const: constructors such as `variant(nil_t&)` bind to it.
nil_t nil;

}  // namespace types
}  // namespace TOVA_2_18
