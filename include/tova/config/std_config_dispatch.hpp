/// @file
/// The sources of an application.
///
///     config_manager settings;
///     settings.init(std_config_dispatch(argc, argv, envp, "tool.cfg", ""));
///     settings.load();
///
/// Threads may share a dispatcher that nobody assigns to.
#pragma once

#include <tova/abi.hpp>
#include <tova/config/config_dispatch.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace config {

/// The sources of an application: the command line, then the file, then the environment.
class TOVA_API std_config_dispatch : public config_dispatch {
public:
    /// Leaves `argc`, `argv` and `envp` uninitialized: assign another dispatcher before any use.
    std_config_dispatch();

    /// The sources of a program with these arguments and that environment. The arrays are not
    /// owned; they must outlive every load. If `filename` is empty, the file is found by `cfg_file`
    /// or by the program's name (see `file_item::load`). `second` is stored and copied, but nothing
    /// reads it.
    std_config_dispatch(int argc, const char* const* argv, const char* const* envp,
                        const strings::ustring8& filename, const strings::ustring8& second);
    ~std_config_dispatch() TOVA_NOTHROW override;

    /// Appends a `commandline_item`, a `file_item` and an `enviroment_item`. Returns true.
    bool setup(config_item_list& items) const override;

    /// Calls the operation of the same name of each item, in list order. `load` and `save` of an
    /// item get the whole list. Returns true.
    bool load(config_item_list& items) const override;
    bool unload(config_item_list& items) const override;
    bool save(config_item_list& items) const override;

    /// A copy on the heap, owned by the caller.
    std_config_dispatch* clone() const override;

private:
    const char* const* m_argv;
    const char* const* m_envp;
    int m_argc;
    strings::ustring8 m_filename;
    strings::ustring8 m_second;  // nothing reads it
};

}  // namespace config
}  // namespace TOVA_2_18
