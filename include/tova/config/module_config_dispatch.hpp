/// @file
/// The sources of a loadable module.
///
///     config_manager settings;
///     settings.init(module_config_dispatch(varg_list(argument("module.cfg")), environ));
///     settings.load();
///     settings.get_config_item("user_item")->set("color", types::variant("red"), 0);
///
/// Threads may share a dispatcher that nobody assigns to.
#pragma once

#include <tova/abi.hpp>
#include <tova/config/config_dispatch.hpp>
#include <tova/generic/varg_list.hpp>

#include <string>
#include <vector>

namespace TOVA_2_18 {
namespace config {

/// The sources of a loadable module: its files in order, then the environment, then a `user_item`.
///
/// Every other source overrides what the program sets in the `user_item`, so that is the place for
/// defaults. The item has the name "user_item".
class TOVA_API module_config_dispatch : public config_dispatch {
public:
    /// A file for each value of `names`, taken as a string, and the environment `envp`. `envp` is
    /// not owned; it must outlive every load.
    module_config_dispatch(const generic::varg_list& names, const char* const* envp);
    ~module_config_dispatch() TOVA_NOTHROW override;

    /// Appends a `file_item` for each name, an `enviroment_item` and a `user_item`. Returns true.
    bool setup(config_item_list& items) const override;

    /// Calls the operation of the same name of each item, in list order. `load` and `save` of an
    /// item get the whole list. Returns true.
    bool load(config_item_list& items) const override;
    bool unload(config_item_list& items) const override;
    bool save(config_item_list& items) const override;

    /// A copy on the heap, owned by the caller.
    module_config_dispatch* clone() const override;

private:
    const char* const* m_envp;
    std::vector<std::string> m_names;
};

}  // namespace config
}  // namespace TOVA_2_18
