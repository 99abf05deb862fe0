/// @file
/// The store of every source of configuration: values by dotted keys.
///
///     config_tree tree;
///     tree.set_node("Server.Port", types::variant(80), 0);
///     if (const config_node* port = tree.get_node("server/port"))
///         listen(port->second.as_int());
///
/// A tree belongs to one thread at a time: nothing is locked, and counts of holders are not atomic.
#pragma once

#include <tova/abi.hpp>
#include <tova/config/_private/deep_copy_map.hpp>
#include <tova/generic/abilities.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/variant.hpp>

#include <iosfwd>
#include <utility>
#include <vector>

namespace TOVA_2_18 {
namespace config {

namespace detail {
struct tree_fields;
}

/// A node as callers see it: its flags word and its value.
///
/// Bit 0 (1): the node was given a value. Bit 1 (2): the node is the head of an array, and its
/// children "0", "1", "2" and so on are the elements. Bit 2 (4): the node is an alias, and its
/// value is another key. A node that only exists as a step on a longer path has the word 0 and the
/// value `true`.
typedef std::pair<unsigned int, types::variant> config_node;

/// Nodes with their names, as listings return them.
typedef std::vector<std::pair<strings::ustring8, config_node>> config_node_list;

/// A tree of named nodes, each with a value and a flags word.
///
/// A key is a path of segments separated by `.`, `/` or `\`. A segment may be empty. Every segment
/// is lowered, byte by byte, so keys are case-insensitive. A separator at the very end starts no
/// further segment: `a.` is `a`, but `a..` is a child of `a` with the empty name. Every string is a
/// valid key; the empty string is a child with the empty name.
///
/// A copy shares no node with its source. It shares the values, as copies of a `types::variant` do;
/// they never change. Only memory limits the depth.
///
/// Every operation can raise `std::bad_alloc`. In that case, `set_node` may have added nodes
/// without values, but an assignment has changed nothing. `dump` converts values to strings: if
/// memory runs out during a conversion, the process ends through `std::unexpected` (see
/// `types::variant`).
class TOVA_API config_tree
    : public generic::abilities::reference_count_pointer_ability<config_tree>,
      public generic::abilities::clone_ability {
public:
    /// A root without children.
    config_tree();

    /// Copies all nodes. The copy has count 0 and no heap mark.
    config_tree(const config_tree& other);
    ~config_tree() TOVA_NOTHROW override;

    /// A copy on the heap with its heap mark set and count 0.
    config_tree* clone() const;

    /// Replaces the nodes by copies of those of `other`. Assignment to itself changes nothing. The
    /// count and the heap mark stay.
    config_tree& operator=(const config_tree& other);

    /// Removes all children. The node's own flags and value stay.
    void erase();

    /// Sets the value of the node of that key, and its flags word to `flags` with bit 0 added. The
    /// older value and word are replaced; the node's children stay. Missing nodes are added.
    void set_node(const strings::ustring8& key, const types::variant& value, unsigned int flags);

    /// Splits off the first segment: `head` is that segment in lower case, `tail` is what follows
    /// the separator after it, unchanged. Neither output may be `key` itself.
    void parse_string(const strings::ustring8& key, strings::ustring8& head,
                      strings::ustring8& tail) const;

    /// Returns the node of that key, or null. The pointer is valid until the node is removed.
    const config_node* get_node(const strings::ustring8& key) const;

    /// Appends the name and the node of each element of the array of that key, from "0" up to the
    /// first missing number. Appends nothing if the node lacks bit 1.
    void get_array(const strings::ustring8& key, config_node_list& out);

    /// Appends the children of the node of that key, or of this node if the key is empty, in byte
    /// order of their names: "10" comes before "9". If `recursive` is true, each child is followed
    /// by its own children.
    ///
    /// A name is the path from the listed node, joined by ".". For the empty key it starts with
    /// `prefix` and a ".", unless `prefix` is empty. Any other key ignores the prefix.
    void get_value_pair_array(const strings::ustring8& key, config_node_list& out, bool recursive,
                              const strings::ustring8& prefix);

    /// Writes the children as a tree for people, indented by `depth` steps, and returns the stream.
    std::ostream& dump(std::ostream& out, int depth);

private:
    friend struct detail::tree_fields;

    typedef _private::deep_copy_map<strings::ustring8, memory::pointers::rc_pointer<config_tree>>
        children_type;

    children_type m_children;
    config_node m_node;
};

/// Writes the tree as `dump` does with depth 0, and returns the stream.
TOVA_API std::ostream& operator<<(std::ostream& out, config_tree& tree);

}  // namespace config

extern template class generic::abilities::reference_count_pointer_ability<config::config_tree>;
extern template class memory::pointers::rc_pointer<config::config_tree>;

}  // namespace TOVA_2_18
