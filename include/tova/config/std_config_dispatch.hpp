#pragma once

#include <tova/abi.hpp>
#include <tova/config/config_dispatch.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace config {

/// The sources of an application: command line, then file, then environment.
class TOVA_API std_config_dispatch : public config_dispatch {
public:
    /// Leaves count and arrays of the process unset: for an object that is assigned to before use.
    std_config_dispatch();

    /// The arrays are not owned; they must outlive every load. `filename` may be empty: the file is
    /// then found by `cfg_file` or by the program's name (see `file_item::load`). `second` is kept
    /// and copied, and nothing reads it.
    std_config_dispatch(int argc, const char* const* argv, const char* const* envp,
                        const strings::ustring8& filename, const strings::ustring8& second);
    virtual ~std_config_dispatch() TOVA_NOTHROW;

    /// Appends a `commandline_item`, a `file_item` and an `enviroment_item`. Always true.
    virtual bool setup(config_item_list& items) const;

    /// Each calls the operation of that name of each item in list order, and hands `load` and
    /// `save` the whole list. Always true.
    virtual bool load(config_item_list& items) const;
    virtual bool unload(config_item_list& items) const;
    virtual bool save(config_item_list& items) const;

    virtual std_config_dispatch* clone() const;

private:
    const char* const* m_argv;
    const char* const* m_envp;
    int m_argc;
    strings::ustring8 m_filename;
    strings::ustring8 m_second;  // nothing reads it
};

}  // namespace config
}  // namespace TOVA_2_18
