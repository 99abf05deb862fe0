#pragma once

#include <iosfwd>
#include <utility>
#include <vector>

#include <tova/abi.hpp>
#include <tova/config/_private/deep_copy_map.hpp>
#include <tova/generic/abilities.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/variant.hpp>

namespace TOVA_2_18 {
namespace config {

namespace detail {
struct tree_fields;
}

/// A node as callers see it: its flags word and its value.
///
/// Bit 0 (1): the node was given a value. Bit 1 (2): the node heads an array, whose elements are
/// its children "0", "1", "2" and so on. Bit 2 (4): the node is an alias, its value names another
/// key. A node that is only a step on the way to others has the word 0 and the value `true`.
typedef std::pair<unsigned int, types::variant> config_node;

/// Named nodes, as listings give them.
typedef std::vector<std::pair<strings::ustring8, config_node>> config_node_list;

/// The store behind every source of configuration: a tree of named nodes, each with a value and a
/// word of flags.
///
/// A key is a path of segments with `.`, `/` or `\` between them. A segment may be empty. Segments
/// are lowered byte by byte on their way in and out, so keys match without regard to case. A
/// separator at the very end opens no further segment: `a.` is `a`, but `a..` is a child of `a`
/// with the empty name. Every text is a key, the empty one too, which is a child with the empty
/// name.
///
/// A copy shares no node with its source, but the values, which never change, are shared as copies
/// of a `types::variant` are. Depth is bounded by memory only. No lock: a tree belongs to one
/// thread at a time. Operations raise what an allocation raises.
class TOVA_API config_tree
    : public generic::abilities::reference_count_pointer_ability<config_tree>,
      public generic::abilities::clone_ability {
public:
    /// A root without children.
    config_tree();
    config_tree(const config_tree& other);
    virtual ~config_tree() TOVA_NOTHROW;

    /// A copy on the heap with its heap mark set and count 0.
    config_tree* clone() const;

    /// Takes copies of the nodes of `other`; a tree assigned to itself keeps its own. Holders and
    /// heap mark stay.
    config_tree& operator=(const config_tree& other);

    /// Removes all children. The node's own flags and value stay.
    void erase();

    /// Gives the node of that key a value and the word `flags` with bit 0 added. What the node held
    /// is replaced, the older word too; its children stay. Nodes that are missing on the way are
    /// made.
    void set_node(const strings::ustring8& key, const types::variant& value, unsigned int flags);

    /// The first segment of `key` in lower case, and what follows the separator behind it as it
    /// stands. Both outputs may not be `key` itself.
    void parse_string(const strings::ustring8& key, strings::ustring8& head,
                      strings::ustring8& tail) const;

    /// The node of that key, or null. The pointer is good until the node is removed.
    const config_node* get_node(const strings::ustring8& key) const;

    /// Appends name and node of each element of the array of that key, from "0" up to the first gap
    /// in the numbers. Appends nothing for a node that heads no array.
    void get_array(const strings::ustring8& key, config_node_list& out);

    /// Appends the children of the node of that key, or of this node for an empty key, in byte
    /// order of their names, "10" before "9". With `recursive` each is followed by its own
    /// children.
    ///
    /// A name is the path from the listed node, with "." between. For an empty key `prefix` and a
    /// "." stand in front of it, unless `prefix` is empty; any other key drops the prefix.
    void get_value_pair_array(const strings::ustring8& key, config_node_list& out, bool recursive,
                              const strings::ustring8& prefix);

    /// Writes the children as an indented tree for people to read, `depth` steps in, and returns
    /// the stream.
    std::ostream& dump(std::ostream& out, int depth);

private:
    friend struct detail::tree_fields;

    typedef _private::deep_copy_map<strings::ustring8, memory::pointers::rc_pointer<config_tree>>
        children_type;

    children_type m_children;
    config_node m_node;
};

/// As `dump` at depth 0.
TOVA_API std::ostream& operator<<(std::ostream& out, config_tree& tree);

}  // namespace config

extern template class generic::abilities::reference_count_pointer_ability<config::config_tree>;
extern template class memory::pointers::rc_pointer<config::config_tree>;

}  // namespace TOVA_2_18
