#include <tova/config/std_config_dispatch.hpp>

#include <tova/config/commandline_item.hpp>
#include <tova/config/enviroment_item.hpp>
#include <tova/config/file_item.hpp>

#include "config/item_walks.hpp"

namespace TOVA_2_18 {

using strings::ustring8;

namespace config {

std_config_dispatch::std_config_dispatch() : config_dispatch(), m_filename(), m_second() {}

std_config_dispatch::std_config_dispatch(int count, const char* const* arguments,
                                         const char* const* environment, const ustring8& file,
                                         const ustring8& other)
    : config_dispatch(), m_argv(arguments), m_envp(environment), m_argc(count), m_filename(file),
      m_second(other) {}

std_config_dispatch::~std_config_dispatch() TOVA_NOTHROW {}

bool std_config_dispatch::setup(config_item_list& items) const {
    const commandline_item command_line(static_cast<unsigned int>(m_argc), m_argv);
    const enviroment_item environment(m_envp);
    const file_item file(m_filename);
    detail::append(items, command_line.clone());
    detail::append(items, file.clone());
    detail::append(items, environment.clone());
    return true;
}

bool std_config_dispatch::load(config_item_list& items) const {
    detail::load_each(items);
    return true;
}

bool std_config_dispatch::unload(config_item_list& items) const {
    detail::unload_each(items);
    return true;
}

bool std_config_dispatch::save(config_item_list& items) const {
    detail::save_each(items);
    return true;
}

std_config_dispatch* std_config_dispatch::clone() const {
    return new std_config_dispatch(*this);
}

}  // namespace config
}  // namespace TOVA_2_18
