/// @file
/// The environment of a process as a source.
///
///     enviroment_item variables(environ);
///     variables.load();
///     variables.get_value("home");  // "/home/mia"
///
/// An item belongs to one thread at a time.
#pragma once

#include <tova/abi.hpp>
#include <tova/config/base_config_item.hpp>

namespace TOVA_2_18 {
namespace config {

/// The environment of a process as a source of configuration. Its name is "enviroment".
///
/// Each string is read as a line `KEY=value` (see `base_config_item::make_key_value`): spaces and
/// tabs outside of double quotes are dropped, and a dot, slash or backslash in a variable's name
/// starts a new segment of the key. The array and its strings are not owned; they must outlive
/// every `load`.
class TOVA_API enviroment_item : public base_config_item {
public:
    /// The strings at `envp`, up to a null pointer. Nothing is read yet. If `envp` itself is null,
    /// the environment is empty.
    enviroment_item(const char* const* envp);

    /// Copies the name and the whole tree, and refers to the same array. The copy has count 0 and
    /// no heap mark.
    enviroment_item(const enviroment_item& other);
    ~enviroment_item() TOVA_NOTHROW override;

    /// Sets a key for each string. Returns true.
    bool load(const config_item_list& items) override;
    bool load() override;

    /// Empties the tree.
    void unload() override;

    /// A copy on the heap with its heap mark set and count 0.
    enviroment_item* clone() const override;

    /// The array that the constructor received. Never fails.
    const char* const* get_envp();

private:
    const char* const* m_envp;
};

}  // namespace config
}  // namespace TOVA_2_18
