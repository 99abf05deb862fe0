#include <tova/config/enviroment_item.hpp>

namespace TOVA_2_18 {
namespace config {

enviroment_item::enviroment_item(const char* const* environment)
    : base_config_item(), envp(environment) {
    id = "enviroment";
}

enviroment_item::enviroment_item(const enviroment_item& other)
    : base_config_item(other), envp(other.envp) {
    id = "enviroment";
}

enviroment_item::~enviroment_item() TOVA_NOTHROW {}

bool enviroment_item::load(const config_item_list&) {
    return load();
}

bool enviroment_item::load() {
    if (envp == nullptr)
        return true;
    for (const char* const* entry = envp; *entry != nullptr; ++entry)
        set(strings::ustring8(*entry), 0);
    return true;
}

void enviroment_item::unload() {
    tree.erase();
}

enviroment_item* enviroment_item::clone() const {
    enviroment_item* const copy = new enviroment_item(*this);
    copy->allocated = true;
    return copy;
}

const char* const* enviroment_item::get_envp() {
    return envp;
}

}  // namespace config
}  // namespace TOVA_2_18
