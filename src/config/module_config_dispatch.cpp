#include <tova/config/module_config_dispatch.hpp>

#include <tova/config/enviroment_item.hpp>
#include <tova/config/file_item.hpp>
#include <tova/config/user_item.hpp>

#include "config/heap_mark.hpp"
#include "config/item_walks.hpp"

namespace TOVA_2_18 {
namespace config {

module_config_dispatch::module_config_dispatch(const generic::varg_list& files,
                                               const char* const* environment)
    : config_dispatch(), m_envp(environment), m_names() {
    for (const generic::argument& file : files)
        m_names.push_back(file.value().as_string());
}

module_config_dispatch::~module_config_dispatch() TOVA_NOTHROW {}

bool module_config_dispatch::setup(config_item_list& items) const {
    for (const std::string& name : m_names)
        detail::append(items, detail::with_heap_mark(new file_item(name)));
    detail::append(items, enviroment_item(m_envp).clone());
    detail::append(items, user_item().clone());
    return true;
}

bool module_config_dispatch::load(config_item_list& items) const {
    detail::load_each(items);
    return true;
}

bool module_config_dispatch::unload(config_item_list& items) const {
    detail::unload_each(items);
    return true;
}

bool module_config_dispatch::save(config_item_list& items) const {
    detail::save_each(items);
    return true;
}

module_config_dispatch* module_config_dispatch::clone() const {
    return new module_config_dispatch(*this);
}

}  // namespace config
}  // namespace TOVA_2_18
