#include <tova/config/enviroment_item.hpp>

#include "config/heap_mark.hpp"
#include "config/node_flags.hpp"

namespace TOVA_2_18 {
namespace config {

enviroment_item::enviroment_item(const char* const* environment)
    : base_config_item(), m_envp(environment) {
    id = "enviroment";
}

enviroment_item::enviroment_item(const enviroment_item& other)
    : base_config_item(other), m_envp(other.m_envp) {
    id = "enviroment";
}

enviroment_item::~enviroment_item() TOVA_NOTHROW {}

bool enviroment_item::load(const config_item_list&) {
    return load();
}

bool enviroment_item::load() {
    if (m_envp == nullptr)
        return true;
    for (const char* const* entry = m_envp; *entry != nullptr; ++entry)
        set(strings::ustring8(*entry), detail::no_flags);
    return true;
}

void enviroment_item::unload() {
    tree.erase();
}

enviroment_item* enviroment_item::clone() const {
    return detail::with_heap_mark(new enviroment_item(*this));
}

const char* const* enviroment_item::get_envp() {
    return m_envp;
}

}  // namespace config
}  // namespace TOVA_2_18
