#pragma once

#include <string>
#include <vector>

#include <tova/abi.hpp>
#include <tova/config/config_dispatch.hpp>
#include <tova/generic/varg_list.hpp>

namespace TOVA_2_18 {
namespace config {

/// The sources of a loadable module: its files in order, then the environment, then a `user_item`.
///
/// A value that the program sets in the `user_item` is thus the weakest of all. The item is found
/// under the name "user_item".
class TOVA_API module_config_dispatch : public config_dispatch {
public:
    /// `names` holds the names of the files. `envp` is not owned; it must outlive every load.
    module_config_dispatch(const generic::varg_list& names, const char* const* envp);
    virtual ~module_config_dispatch() TOVA_NOTHROW;

    /// Appends a `file_item` for each name, an `enviroment_item` and a `user_item`. Always true.
    virtual bool setup(config_item_list& items) const;

    /// Each calls the operation of that name of each item in list order, and hands `load` and
    /// `save` the whole list. Always true.
    virtual bool load(config_item_list& items) const;
    virtual bool unload(config_item_list& items) const;
    virtual bool save(config_item_list& items) const;

    virtual module_config_dispatch* clone() const;

private:
    const char* const* m_envp;
    std::vector<std::string> m_names;
};

}  // namespace config
}  // namespace TOVA_2_18
