// `enviroment_item`: an environment, compared with the second implementation of the tests, and
// lookups of all its keys through a manager.
//
// Input: the strings of the environment with NUL bytes between them.
#include <tova/config/config_manager.hpp>
#include <tova/config/enviroment_item.hpp>
#include <tova/config/module_config_dispatch.hpp>

#include "../tests/config/line_oracle.hpp"
#include "../tests/config/listing.hpp"
#include "require.hpp"
#include "support/choose_form.hpp"

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

using fuzz_support::require;
using tova::config::base_config_item;
using tova::config::config_manager;
using tova::config::config_node_list;
using tova::config::enviroment_item;
using tova::config::module_config_dispatch;
using tova::generic::varg_list;
using tova::types::variant;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::vector<const char*> strings;
    cfg_oracle::nodes expected;
    for (std::string::size_type begin = 0; begin < size;
         begin += std::string(text.c_str() + begin).size() + 1) {
        strings.push_back(text.c_str() + begin);
        line_oracle::read_line(expected, text.c_str() + begin);
    }
    strings.push_back(nullptr);

    config_manager manager;
    manager.init(module_config_dispatch(varg_list(), strings.data()));
    require(manager.load());
    base_config_item& item = *manager.get_config_item("enviroment");
    require(config_support::content(item) == cfg_oracle::show(expected));

    // Each value also becomes an alias in a weaker source. Every lookup ends, even in a cycle.
    base_config_item& aliases = *manager.get_config_item("user_item");
    config_node_list nodes;
    item.get_value_pair_array("", nodes, true);
    for (const auto& node : nodes) {
        aliases.set(node.first + "_", node.second.second, 4);
        aliases.set(node.second.second.as_string(), variant(node.first + "_"), 4);
    }
    for (const auto& node : nodes) {
        manager.get_value(node.first, variant());
        manager.get_value(node.first + "_", variant());
        manager.value_exist(node.second.second.as_string());
    }
    std::ostringstream out;
    manager.dump(out);
    require(manager.unload());
    require(config_support::content(item).empty());
    return 0;
}
