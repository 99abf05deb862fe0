#pragma once

#include <tova/abi.hpp>
#include <tova/config/base_config_item.hpp>

namespace TOVA_2_18 {
namespace config {

/// The environment of a process as a source of configuration, named "enviroment".
///
/// Each string is read as a line `KEY=value` (see `base_config_item::make_key_value`): blanks and
/// tabs outside of double quotes vanish, and a dot or slash in a variable's name makes a deeper
/// key. The array and its strings are not owned; they must outlive `load`.
class TOVA_API enviroment_item : public base_config_item {
public:
    /// `envp` ends with a null pointer, or is null itself.
    enviroment_item(const char* const* envp);
    enviroment_item(const enviroment_item& other);
    virtual ~enviroment_item() TOVA_NOTHROW;

    /// Sets a key for each string. Always true.
    virtual bool load(const config_item_list& items);
    virtual bool load();

    /// Empties the tree.
    virtual void unload();

    virtual enviroment_item* clone() const;

    const char* const* get_envp();

private:
    const char* const* m_envp;
};

}  // namespace config
}  // namespace TOVA_2_18
