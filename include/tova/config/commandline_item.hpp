/// @file
/// The command line of a program as a source.
///
///     commandline_item line(argc, argv);  // tool -server.port=80 -verbose
///     line.load();
///     line.get_value("server.port");      // "80"
///
/// An item belongs to one thread at a time. `load` writes to standard output.
#pragma once

#include <tova/abi.hpp>
#include <tova/config/base_config_item.hpp>

namespace TOVA_2_18 {
namespace config {

/// The arguments of a program as a source of configuration. Its name is "command line".
///
/// `docs/configuration.md` describes which arguments give which keys. The array and its strings are
/// not owned; they must outlive every `load`.
class TOVA_API commandline_item : public base_config_item {
public:
    /// The `argc` strings at `argv`, which may be null. Nothing is read yet. A null string in the
    /// array ends the arguments early; if that is the first one, which is the program's name, only
    /// the name is missing.
    commandline_item(unsigned int argc, const char* const* argv);

    /// Copies the name and the whole tree, and refers to the same array. The copy has count 0 and
    /// no heap mark.
    commandline_item(const commandline_item& other);
    ~commandline_item() TOVA_NOTHROW override;

    /// Sets `application.name`, `application.name.extention` and `application.name.raw` from the
    /// program's name, and a key for each option. An argument that is neither an option nor a value
    /// is reported on standard output and ignored. Returns true.
    bool load(const config_item_list& items) override;
    bool load() override;

    /// Empties the tree.
    void unload() override;

    /// A copy on the heap with its heap mark set and count 0.
    commandline_item* clone() const override;

    /// The count or the array that the constructor received. Never fails.
    unsigned int get_argc();
    const char* const* get_argv();

private:
    unsigned int m_argc;
    const char* const* m_argv;
};

}  // namespace config
}  // namespace TOVA_2_18
