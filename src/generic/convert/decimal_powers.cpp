#include "generic/convert/decimal_powers.hpp"

namespace TOVA_2_18 {
namespace generic {
namespace convert {
namespace detail {

const decimal_power decimal_powers[last_power - first_power + 1] = {
#include "generic/convert/decimal_powers.inc"
};

}  // namespace detail
}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
