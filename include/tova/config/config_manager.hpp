/// @file
/// The settings of a program from all of its sources.
///
///     int main(int argc, char** argv, char** envp) {
///         config_manager settings;
///         settings.init(std_config_dispatch(argc, argv, envp, "tool.cfg", ""));
///         settings.load();
///         const int port = settings.get_value("server.port", 80).as_int();
///     }
///
/// A manager and its sources belong to one thread at a time: nothing is locked, and lookups copy
/// values whose counts of holders are not atomic.
#pragma once

#include <tova/abi.hpp>
#include <tova/config/base_config_item.hpp>
#include <tova/config/config_dispatch.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/variant.hpp>

#include <iosfwd>
#include <utility>
#include <vector>

namespace TOVA_2_18 {
namespace config {

/// A list of sources. For every key the first source that has it wins.
///
/// Pass a dispatcher to `init`, call `load`, then look up keys. Lookups never fail: for a missing
/// file, key or value they return the default or nothing. Every operation can raise
/// `std::bad_alloc`. Sources that were already loaded stay loaded; `unload` and `load` start over.
/// If memory runs out while a value is converted to a string (an alias, the name of a file, a saved
/// value, a dump), the process ends through `std::unexpected` instead (see `types::variant`).
class TOVA_API config_manager {
public:
    /// No sources and no dispatcher: lookups find nothing.
    config_manager();
    config_manager(const config_manager&) = delete;
    config_manager& operator=(const config_manager&) = delete;
    virtual ~config_manager() TOVA_NOTHROW;

    /// Keeps a clone of the dispatcher and lets it set up the sources, which are still empty. An
    /// earlier dispatcher and its sources are destroyed, with everything that was loaded. Returns
    /// what `setup` returns.
    bool init(const config_dispatch& dispatcher);

    /// Lets the dispatcher load, unload or save all sources. Returns false without a dispatcher and
    /// true otherwise; the result does not show whether a source failed. A file that cannot be
    /// read, for whatever reason, counts as empty and raises nothing.
    ///
    /// A second `load` without `init` stores over what the first one found, and finds `cfg_file` in
    /// every source, the file and the environment included: it may read another file than before.
    ///
    /// Contract: a `save` after a failed load empties the file, and both return true. The section
    /// "What a save keeps and loses" of docs/configuration.md shows a check to make before the
    /// load.
    bool load();
    bool unload();
    bool save();

    /// Returns the value of the key in the first source that has it, or `default_value`.
    ///
    /// For an array that is its element "0", or nil if there is none. An alias is followed through
    /// all sources; a cycle of aliases ends with the value of the last one. For a section, which is
    /// a key that has only longer keys below it, the value is `true`.
    types::variant get_value(const strings::ustring8& key, types::variant default_value);

    /// Whether `get_value` with a nil default returns anything but nil.
    bool value_exist(const strings::ustring8& key);

    /// Whether any source has an array under that key.
    bool is_array(const strings::ustring8& key);

    /// Appends the elements of the array in the first source that has an array under that key.
    void get_array(const strings::ustring8& key, std::vector<types::variant>& out);

    /// Appends the names and values below the key in the first source that has any node of that
    /// key. Nothing is merged across sources. Names and order are those of
    /// `config_tree::get_value_pair_array`.
    void get_key_value_array(const strings::ustring8& key,
                             std::vector<std::pair<strings::ustring8, types::variant>>& out,
                             bool recursive);

    /// Returns the first source of that name, or null. The names are "command line", "standard
    /// file", "enviroment" and "user_item".
    memory::pointers::rc_pointer<base_config_item> get_config_item(const strings::ustring8& id);

    /// Writes all sources in a form for people and returns the stream.
    std::ostream& dump(std::ostream& out);

private:
    config_item_list m_items;
    config_dispatch* m_dispatch;  // owned; null until `init`
};

/// Writes all sources as `dump` does, and returns the stream.
TOVA_API std::ostream& operator<<(std::ostream& out, config_manager& manager);

}  // namespace config
}  // namespace TOVA_2_18
