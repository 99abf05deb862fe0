#pragma once

#include <tova/abi.hpp>
#include <tova/config/base_config_item.hpp>

namespace TOVA_2_18 {
namespace config {

/// A source that the program fills itself, through `set`. `load`, `save` and `unload` do nothing,
/// so what was set stays.
///
/// Contract: an item made by the constructor is named "user item", a copy or clone "user_item".
/// Items reach the list of a `config_manager` as clones, and are found there under the second name.
class TOVA_API user_item : public base_config_item {
public:
    user_item();
    user_item(const user_item& other);
    virtual ~user_item() TOVA_NOTHROW;

    virtual user_item* clone() const;
};

}  // namespace config
}  // namespace TOVA_2_18
