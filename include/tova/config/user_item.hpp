/// @file
/// A source that the program itself fills, for defaults and aliases.
///
///     user_item defaults;
///     defaults.set("server.port", types::variant(80), 0);
///     defaults.set("port", types::variant("server.port"), 4);  // an alias
///
/// An item belongs to one thread at a time.
#pragma once

#include <tova/abi.hpp>
#include <tova/config/base_config_item.hpp>

namespace TOVA_2_18 {
namespace config {

/// A source that the program fills through `set`. `load`, `save` and `unload` do nothing, so what
/// was set stays.
///
/// Contract: an item made by the default constructor has the name "user item", a copy or clone the
/// name "user_item". A `config_manager` holds clones, so look for the second name there.
class TOVA_API user_item : public base_config_item {
public:
    user_item();  ///< No values, and the name "user item".

    /// Copies the tree, but not the name.
    user_item(const user_item& other);
    ~user_item() TOVA_NOTHROW override;

    /// A copy on the heap with its heap mark set and count 0.
    user_item* clone() const override;
};

}  // namespace config
}  // namespace TOVA_2_18
