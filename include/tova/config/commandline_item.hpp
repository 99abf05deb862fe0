#pragma once

#include <tova/abi.hpp>
#include <tova/config/base_config_item.hpp>

namespace TOVA_2_18 {
namespace config {

/// The arguments of a program as a source of configuration, named "command line".
///
/// `docs/configuration.md` tells which arguments give which keys. The array and its strings are not
/// owned; they must outlive `load`.
class TOVA_API commandline_item : public base_config_item {
public:
    /// `argv` may be null. A null string ends it early, but as the first it only gives no name.
    commandline_item(unsigned int argc, const char* const* argv);
    commandline_item(const commandline_item& other);
    virtual ~commandline_item() TOVA_NOTHROW;

    /// Sets `application.name` and its fellows from the program's name, and a key for each option.
    /// An argument that is no option is reported on standard output and passed over. Always true.
    virtual bool load(const config_item_list& items);
    virtual bool load();

    /// Empties the tree.
    virtual void unload();

    virtual commandline_item* clone() const;

    unsigned int get_argc();
    const char* const* get_argv();

private:
    unsigned int m_argc;
    const char* const* m_argv;
};

}  // namespace config
}  // namespace TOVA_2_18
