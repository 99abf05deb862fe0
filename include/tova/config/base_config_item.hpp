#pragma once

#include <iosfwd>
#include <list>
#include <utility>

#include <tova/abi.hpp>
#include <tova/config/config_token.hpp>
#include <tova/config/config_tree.hpp>
#include <tova/generic/abilities.hpp>
#include <tova/generic/varg_list.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/variant.hpp>

namespace TOVA_2_18 {
namespace config {

class base_config_item;

/// Sources in the order of precedence: the first that knows a key wins.
typedef std::list<memory::pointers::rc_pointer<base_config_item>> config_item_list;

/// One source of configuration: a name and a tree of values, and the tokenizer with which all
/// sources read text.
///
/// A class of its own source derives from this one, sets `id`, fills `tree` in `load()` and offers
/// `clone()`. Keys are those of `config_tree`. No operation fails, any text is some key and value;
/// each raises what an allocation raises. An item belongs to one thread at a time.
class TOVA_API base_config_item
    : public generic::abilities::reference_count_pointer_ability<base_config_item>,
      public generic::abilities::clone_ability {
public:
    base_config_item();

    /// Copies the name and the whole tree. The copy has no holders and no heap mark.
    base_config_item(const base_config_item& other);
    virtual ~base_config_item() TOVA_NOTHROW;

    /// Fills the tree. The first form is given all sources in order, those in front filled already;
    /// it calls `load()` here. Always true.
    virtual bool load(const config_item_list& items);
    virtual bool load();

    /// Keeps what the source holds. Here nothing happens, and neither form calls the other. Always
    /// true.
    virtual bool save(const config_item_list& items);
    virtual bool save();

    /// Empties the tree. Here nothing happens.
    virtual void unload();

    /// A copy on the heap with its heap mark set and count 0.
    virtual base_config_item* clone() const = 0;

    /// A copy of the source's name.
    strings::ustring8 get_id();

    /// The node of that key, or null. The pointer is good until the node is removed.
    const config_node* get_value(const strings::ustring8& key) const;

    /// As the operations of `config_tree`, the second one with an empty prefix.
    void get_array(const strings::ustring8& key, config_node_list& out);
    void get_value_pair_array(const strings::ustring8& key, config_node_list& out, bool recursive);

    /// Sets a key to a value, with the word `flags` and bit 0.
    void set(const strings::ustring8& key, const types::variant& value, unsigned int flags);
    void set(const std::pair<strings::ustring8, types::variant>& entry, unsigned int flags);

    /// Reads a line as key, `=` and value (see `make_key_value`) and sets it. Two arguments always
    /// mean this form: `set("n", 1)` gives the key `n` the empty text, not the number 1.
    void set(const strings::ustring8& line, unsigned int flags);

    /// Makes the key an array of the values. Its head gets nil and the word 3, element number i the
    /// key with "." and i behind it.
    ///
    /// With an empty `flags` each element gets the flags 0. Otherwise element i gets the flags that
    /// entry i of `flags` gives as a number, and the elements behind the end of `flags` are stored
    /// as `unsigned int` numbers (`as_uint32()`) with flags 0: give as many flags as values, or
    /// none.
    void set_array(const strings::ustring8& key, const generic::varg_list& values,
                   const generic::varg_list& flags);

    /// Cuts a line into a key, all pieces in front of the first of kind `stop`, and a value, the
    /// pieces behind it up to a line end. Blanks and tabs outside of double quotes vanish from
    /// both, line ends from the key, and the quotes themselves vanish as well. The value is a
    /// `ustring8`, empty if the line holds no `stop`.
    std::pair<strings::ustring8, types::variant> make_key_value(const strings::ustring8& line,
                                                                config_token::tok_types stop);

    /// Reads the piece of `text` that begins at byte `position` into `token` and moves `position`
    /// behind it. Returns the kind, and `T_END` at or behind the end of the text.
    ///
    /// Any text tokenizes; one of 4 GiB or more ends at position 4,294,967,295. The returned kind
    /// is that in the token, but for the two characters of a comment's end in C: they return
    /// `T_FSFS` and are stored as `T_COMMENT_END`.
    config_token::tok_types get_token(const strings::ustring8& text, unsigned int& position,
                                      config_token& token);

    /// Writes name and tree for people to read, and returns the stream.
    std::ostream& dump(std::ostream& out);

protected:
    strings::ustring8 id;  ///< The source's name, which the concrete class sets.
    config_tree tree;
};

/// As `dump`.
TOVA_API std::ostream& operator<<(std::ostream& out, base_config_item& item);

}  // namespace config

extern template class generic::abilities::reference_count_pointer_ability<config::base_config_item>;
extern template class memory::pointers::rc_pointer<config::base_config_item>;

}  // namespace TOVA_2_18
