#pragma once

#include <tova/abi.hpp>
#include <tova/config/base_config_item.hpp>
#include <tova/generic/abilities.hpp>

namespace TOVA_2_18 {
namespace config {

/// Decides for a `config_manager` which sources there are and how they are loaded and saved.
class TOVA_API config_dispatch : public generic::abilities::clone_ability {
public:
    virtual ~config_dispatch() TOVA_NOTHROW;

    /// Appends the sources to the list, which is empty when the manager calls.
    virtual bool setup(config_item_list& items) const = 0;

    /// Loads, unloads or saves every source.
    virtual bool load(config_item_list& items) const = 0;
    virtual bool unload(config_item_list& items) const = 0;
    virtual bool save(config_item_list& items) const = 0;

    /// A copy on the heap, owned by the caller.
    virtual config_dispatch* clone() const = 0;
};

}  // namespace config
}  // namespace TOVA_2_18
