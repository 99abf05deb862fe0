#pragma once

#include <iosfwd>
#include <utility>
#include <vector>

#include <tova/abi.hpp>
#include <tova/config/base_config_item.hpp>
#include <tova/config/config_dispatch.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/variant.hpp>

namespace TOVA_2_18 {
namespace config {

/// The front of the configuration: a list of sources, of which the first that knows a key wins.
///
/// Make a dispatcher, hand it to `init`, call `load`, then ask. A missing file, key or value is no
/// failure: lookups answer with the default or with nothing. Operations raise what an allocation
/// raises. A manager belongs to one thread at a time.
class TOVA_API config_manager {
public:
    /// No sources and no dispatcher: lookups find nothing.
    config_manager();
    config_manager(const config_manager&) = delete;
    config_manager& operator=(const config_manager&) = delete;
    virtual ~config_manager() TOVA_NOTHROW;

    /// Takes a clone of the dispatcher and has it set up the sources, which are empty then. An
    /// earlier dispatcher and its sources go, with all that was loaded. Returns what `setup`
    /// returns.
    bool init(const config_dispatch& dispatcher);

    /// Has the dispatcher load, unload or save all sources. Answers false without a dispatcher and
    /// true otherwise: the failure of one source doesn't show here.
    bool load();
    bool unload();
    bool save();

    /// The value of the key in the first source that knows it, or `default_value`.
    ///
    /// An array answers with its element "0", or nil if it has none. An alias is followed through
    /// all sources, and a circle of aliases ends with the value of the last one. A section, that is
    /// a key with only deeper keys below it, answers `true`.
    types::variant get_value(const strings::ustring8& key, types::variant default_value);

    /// Whether `get_value` gives anything but nil.
    bool value_exist(const strings::ustring8& key);

    /// Whether any source has an array of that key.
    bool is_array(const strings::ustring8& key);

    /// Appends the values of the array in the first source that has an array of that key.
    void get_array(const strings::ustring8& key, std::vector<types::variant>& out);

    /// Appends names and values below the key in the first source that has any node of that key;
    /// nothing is merged across sources. Names and order are those of
    /// `config_tree::get_value_pair_array`.
    void get_key_value_array(const strings::ustring8& key,
                             std::vector<std::pair<strings::ustring8, types::variant>>& out,
                             bool recursive);

    /// The first source of that name, or null: "command line", "standard file", "enviroment",
    /// "user_item".
    memory::pointers::rc_pointer<base_config_item> get_config_item(const strings::ustring8& id);

    /// Writes all sources for people to read, and returns the stream.
    std::ostream& dump(std::ostream& out);

private:
    config_item_list m_items;
    config_dispatch* m_dispatch;  // owned; null until `init`
};

/// As `dump`.
TOVA_API std::ostream& operator<<(std::ostream& out, config_manager& manager);

}  // namespace config
}  // namespace TOVA_2_18
