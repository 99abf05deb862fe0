#include <tova/config/user_item.hpp>

namespace TOVA_2_18 {
namespace config {

user_item::user_item() : base_config_item() {
    id = "user item";
}

// Contract: a copy bears another name. The manager's list holds clones, and programs look for
// "user_item" there.
user_item::user_item(const user_item& other) : base_config_item(other) {
    id = "user_item";
}

user_item::~user_item() TOVA_NOTHROW {}

user_item* user_item::clone() const {
    user_item* const copy = new user_item(*this);
    copy->allocated = true;
    return copy;
}

}  // namespace config
}  // namespace TOVA_2_18
