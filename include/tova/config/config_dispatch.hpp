/// @file
/// The strategy that tells a `config_manager` which sources there are.
///
/// To add a source to those of an application, derive from `std_config_dispatch`:
///
///     class sources : public std_config_dispatch {
///     public:
///         using std_config_dispatch::std_config_dispatch;
///         bool setup(config_item_list& items) const override {
///             std_config_dispatch::setup(items);
///             items.push_back(registry_item().clone());
///             return true;
///         }
///         sources* clone() const override { return new sources(*this); }
///     };
///
/// Threads may share a dispatcher, as all of its operations are `const`, but not a list.
#pragma once

#include <tova/abi.hpp>
#include <tova/config/base_config_item.hpp>
#include <tova/generic/abilities.hpp>

namespace TOVA_2_18 {
namespace config {

/// Decides which sources a `config_manager` has and how they are loaded and saved. No data.
class TOVA_API config_dispatch : public generic::abilities::clone_ability {
public:
    ~config_dispatch() TOVA_NOTHROW override;

    /// Appends the sources to the list, which is empty when a manager calls. The manager's `init`
    /// returns the result, and nothing else uses it.
    virtual bool setup(config_item_list& items) const = 0;

    /// Loads, unloads or saves every source. A manager ignores the result.
    virtual bool load(config_item_list& items) const = 0;
    virtual bool unload(config_item_list& items) const = 0;
    virtual bool save(config_item_list& items) const = 0;

    /// A copy on the heap, owned by the caller.
    virtual config_dispatch* clone() const = 0;
};

}  // namespace config
}  // namespace TOVA_2_18
