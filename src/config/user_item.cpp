#include <tova/config/user_item.hpp>

#include "config/heap_mark.hpp"

namespace TOVA_2_18 {
namespace config {

user_item::user_item() : base_config_item() {
    id = "user item";
}

// Contract: a copy has a different name. The list of a manager holds clones, and programs look for
// "user_item" in it.
user_item::user_item(const user_item& other) : base_config_item(other) {
    id = "user_item";
}

user_item::~user_item() TOVA_NOTHROW {}

user_item* user_item::clone() const {
    return detail::with_heap_mark(new user_item(*this));
}

}  // namespace config
}  // namespace TOVA_2_18
