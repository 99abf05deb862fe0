/// @file
/// The base of all sources of configuration, and the tokenizer that they share.
///
/// A source of your own derives from `base_config_item`:
///
///     class registry_item : public base_config_item {
///     public:
///         registry_item() { id = "registry"; }
///         using base_config_item::load;
///         bool load() override {
///             set("server.port", types::variant(80), 0);
///             return true;
///         }
///         void unload() override { tree.erase(); }
///         registry_item* clone() const override {
///             registry_item* const copy = new registry_item(*this);
///             copy->allocated = true;
///             return copy;
///         }
///     };
///
/// An item belongs to one thread at a time; its count of holders is not atomic.
#pragma once

#include <tova/abi.hpp>
#include <tova/config/config_token.hpp>
#include <tova/config/config_tree.hpp>
#include <tova/generic/abilities.hpp>
#include <tova/generic/varg_list.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/variant.hpp>

#include <iosfwd>
#include <list>
#include <utility>

namespace TOVA_2_18 {
namespace config {

class base_config_item;

/// Sources in order of precedence: for every key the first one that has it wins.
typedef std::list<memory::pointers::rc_pointer<base_config_item>> config_item_list;

/// One source of configuration: a name, a tree of values, and the tokenizer for strings.
///
/// A derived class sets `id`, fills `tree` in `load()` and implements `clone()`. `config_tree`
/// describes the keys. Any string is a valid key, line or value.
///
/// Every operation can raise `std::bad_alloc`. Everything stored before the exception remains, and
/// another call completes the operation. If memory runs out while a value is converted to a string
/// (in `dump`, and in `load` and `save` of a `file_item`), the process ends through
/// `std::unexpected` instead (see `types::variant`).
class TOVA_API base_config_item
    : public generic::abilities::reference_count_pointer_ability<base_config_item>,
      public generic::abilities::clone_ability {
public:
    /// An empty name and an empty tree.
    base_config_item();

    /// Copies the name and the whole tree. The copy has count 0 and no heap mark.
    base_config_item(const base_config_item& other);
    ~base_config_item() TOVA_NOTHROW override;

    /// Fills the tree. The first form gets all sources in order, those before this one filled
    /// already; here it calls `load()`. The second form does nothing here and returns true.
    virtual bool load(const config_item_list& items);
    virtual bool load();

    /// Stores what the source holds. Here both forms do nothing and return true.
    ///
    /// Contract: neither form calls the other, unlike those of `load`. A dispatcher calls the first
    /// one: override both.
    virtual bool save(const config_item_list& items);
    virtual bool save();

    /// Empties the tree in a derived class. Does nothing here.
    virtual void unload();

    /// A copy on the heap with its heap mark set and count 0.
    virtual base_config_item* clone() const = 0;

    /// A copy of the source's name.
    strings::ustring8 get_id();

    /// Returns the node of that key, or null. The pointer is valid until the node is removed.
    const config_node* get_value(const strings::ustring8& key) const;

    /// Calls the operation of the same name of `config_tree`, with an empty prefix.
    void get_array(const strings::ustring8& key, config_node_list& out);
    void get_value_pair_array(const strings::ustring8& key, config_node_list& out, bool recursive);

    /// Sets the value of a key. Its flags word becomes `flags` with bit 0 added.
    void set(const strings::ustring8& key, const types::variant& value, unsigned int flags);
    void set(const std::pair<strings::ustring8, types::variant>& entry, unsigned int flags);

    /// Reads a line as key, `=` and value (see `make_key_value`) and sets it.
    ///
    /// Two arguments always select this form: `set("n", 1)` gives the key `n` the empty string, not
    /// the number 1.
    void set(const strings::ustring8& line, unsigned int flags);

    /// Makes the key an array of the values. Its head gets the value nil and the flags word 3.
    /// Element i, from 0, gets the key followed by "." and i.
    ///
    /// If `flags` is empty, each element gets the flags 0. Otherwise element i gets the flags in
    /// entry i of `flags`, as a number. Values past the end of `flags` are stored as `unsigned int`
    /// numbers (`as_uint32()`) with flags 0: pass as many flags as values, or none. Elements of a
    /// longer array under the same key stay.
    void set_array(const strings::ustring8& key, const generic::varg_list& values,
                   const generic::varg_list& flags);

    /// Splits a line into a key, which is all tokens before the first one of type `stop`, and a
    /// value, which is the tokens after it up to a line end.
    ///
    /// Spaces and tabs outside of double quotes are dropped from both, line ends from the key, and
    /// the quotes themselves from both. The value is a `ustring8`; it is empty if the line has no
    /// token of type `stop`.
    std::pair<strings::ustring8, types::variant> make_key_value(const strings::ustring8& line,
                                                                config_token::tok_types stop);

    /// Reads the token of `text` that starts at byte `position` into `token` and moves `position`
    /// past it. Returns its type, which is `T_END` at or past the end of `text`.
    ///
    /// A string of 4 GiB or more ends at position 4,294,967,295.
    ///
    /// Contract: the returned type is also the one in the token, except for the two characters that
    /// end a comment in C: the function returns `T_FSFS`, and the token has `T_COMMENT_END`.
    config_token::tok_types get_token(const strings::ustring8& text, unsigned int& position,
                                      config_token& token);

    /// Writes the name and the tree in a form for people and returns the stream.
    std::ostream& dump(std::ostream& out);

protected:
    strings::ustring8 id;  ///< The source's name. The derived class sets it.
    config_tree tree;      ///< The values.
};

/// Writes the source as `dump` does, and returns the stream.
TOVA_API std::ostream& operator<<(std::ostream& out, base_config_item& item);

}  // namespace config

extern template class generic::abilities::reference_count_pointer_ability<config::base_config_item>;
extern template class memory::pointers::rc_pointer<config::base_config_item>;

}  // namespace TOVA_2_18
