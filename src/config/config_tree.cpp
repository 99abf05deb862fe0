// A tree of nodes. Every node is a `config_tree` with two fields: its children by name, and the
// pair of its flags word and its value. Sources store entries through tree_nodes.hpp, users through
// the class.
//
// A key is split into lower-case segments (key_segments.hpp), and each segment is looked up among
// the children of the previous node. `find_node` stops at a missing child, `make_node` adds it.
// `find_node` compares names with the bytes of the key and makes no string for a segment.
//
// Invariants:
//   - Names are lower case and contain no separator, so a path of names joined by "." is a key.
//   - Children are on the heap with their heap mark set, so the map's pointers own them. The map
//     allows null pointers, and copies keep them.
//   - Nothing recurses. Copying, listing, dumping and destroying keep a list of pending nodes, so
//     the depth of a tree is limited by memory and not by the stack.
//   - A copy that runs out of memory leaves the target's children unchanged.
#include <tova/config/config_tree.hpp>

#include <tova/generic/convert/x_to_str.hpp>

#include "config/heap_mark.hpp"
#include "config/key_segments.hpp"
#include "config/node_flags.hpp"
#include "config/tree_nodes.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <ostream>
#include <utility>
#include <vector>

namespace TOVA_2_18 {

using strings::ustring8;

namespace config {

namespace {

typedef memory::pointers::rc_pointer<config_tree> tree_pointer;
typedef detail::tree_fields fields;
typedef fields::children_type children_type;

tree_pointer held(config_tree* tree) {
    return tree_pointer(detail::with_heap_mark(tree));
}

#ifdef __GLIBCXX__

typedef std::_Rb_tree_node_base* node_pointer;

// The first bytes of a name as a number with the same order. NUL bytes follow a shorter name.
inline std::uint64_t front_of(const ustring8& name) {
    // A string stores so many bytes in the object itself, so they may be read.
    std::uint64_t bytes;
    std::memcpy(&bytes, name.data(), sizeof bytes);
    const std::size_t size = name.size();
    return size >= sizeof bytes ? __builtin_bswap64(bytes)
                                : __builtin_bswap64(bytes) & ~(~std::uint64_t{0} >> (8 * size));
}

// The same for the lower case of a segment, whose first bytes are in the word. All eight bytes are
// looked up, because the lookups do not wait for each other.
inline std::uint64_t lower_front_of(std::uint64_t word, std::size_t size,
                                    const detail::lower_caser& lower) {
    if (size == 0)
        return 0;
    std::uint64_t front = 0;
#pragma GCC unroll 8
    for (unsigned shift = 0; shift != 64; shift += 8) {
        const char lowered = lower(static_cast<char>(word >> shift));
        front |= std::uint64_t{static_cast<unsigned char>(lowered)} << (56 - shift);
    }
    const std::size_t unused = size < sizeof front ? sizeof front - size : 0;
    return front & ~std::uint64_t{0} << (8 * unused);
}

// The order of a name and the lower case of a segment with the same front: negative, 0 or positive.
inline int compare_after_front(const ustring8& name, const char* bytes, std::size_t size,
                               const detail::lower_caser& lower) {
    const std::size_t common = std::min(name.size(), size);
    for (std::size_t i = sizeof(std::uint64_t); i < common; ++i) {
        const int order =
            static_cast<unsigned char>(name[i]) - static_cast<unsigned char>(lower(bytes[i]));
        if (order != 0)
            return order;
    }
    return name.size() < size ? -1 : name.size() > size ? 1 : 0;
}

// Returns the child named by the segment from byte `begin` to `end` of the key, or null. The word
// has the bytes from `begin` on. It walks down the tree of the map, to which an iterator refers,
// because the map's own search needs a string in lower case and a call for each name.
const config_tree* find_child(const children_type& children, const ustring8& key,
                              ustring8::size_type begin, ustring8::size_type end,
                              std::uint64_t word) {
    const detail::lower_caser lower;
    const char* const bytes = key.data() + begin;
    const std::size_t size = end - begin;
    const std::uint64_t wanted = lower_front_of(word, size, lower);
    node_pointer node = children.end()._M_node->_M_parent;
    while (node != nullptr) {
        const children_type::value_type& child = *children_type::const_iterator(node);
        const std::uint64_t front = front_of(child.first);
        bool is_below = front < wanted;
        if (front == wanted) {
            const int order = compare_after_front(child.first, bytes, size, lower);
            if (order == 0)
                return child.second.get();
            is_below = order < 0;
        }
        node = is_below ? node->_M_right : node->_M_left;
    }
    return nullptr;
}

// What the map's own function returns, without a call for each name that differs in its front.
children_type::iterator lower_bound(children_type& children, const ustring8& name) {
    const std::uint64_t wanted = front_of(name);
    node_pointer found = children.end()._M_node;
    node_pointer node = found->_M_parent;
    while (node != nullptr) {
        const ustring8& present = children_type::iterator(node)->first;
        const std::uint64_t front = front_of(present);
        if (front < wanted || (front == wanted && present.compare(name) < 0)) {
            node = node->_M_right;
        } else {
            found = node;
            node = node->_M_left;
        }
    }
    return children_type::iterator(found);
}

#else

children_type::iterator lower_bound(children_type& children, const ustring8& name) {
    return children.lower_bound(name);
}

const config_tree* find_child(const children_type& children, const ustring8& key,
                              ustring8::size_type begin, ustring8::size_type, std::uint64_t) {
    ustring8 name;
    detail::read_segment(key, begin, name);
    const children_type::const_iterator place = children.find(name);
    return place == children.end() ? nullptr : place->second.get();
}

#endif

// Returns the child with that name, adding it if it is missing.
config_tree& child_named(config_tree& tree, const ustring8& name) {
    children_type& children = fields::children(tree);
    children_type::iterator place = lower_bound(children, name);
    if (place == children.end() || place->first != name)
        place = children.emplace_hint(place, name, held(new config_tree));
    return *place->second;
}

// Adds copies of the children of `source` to `target`, which has none yet. A leaf is copied at
// once; a parent is copied without its children and added to the list of pending nodes.
void copy_children(const config_tree& source, config_tree& target) {
    std::vector<std::pair<const config_tree*, config_tree*>> pending;
    pending.emplace_back(&source, &target);
    while (!pending.empty()) {
        const config_tree& from = *pending.back().first;
        children_type& to = fields::children(*pending.back().second);
        pending.pop_back();
        for (const children_type::value_type& entry : fields::children(from)) {
            if (!entry.second) {
                to.insert(to.end(), entry);
                continue;
            }
            const config_tree& child = *entry.second;
            const bool is_leaf = fields::children(child).empty();
            const tree_pointer copy = held(is_leaf ? new config_tree(child) : new config_tree);
            to.insert(to.end(), children_type::value_type(entry.first, copy));
            if (!is_leaf) {
                fields::node(*copy) = fields::node(child);
                pending.emplace_back(&child, copy.get());
            }
        }
    }
}

// Removes all children of a tree. Children that would be destroyed by this and have children of
// their own are added to `parents` first, so that no destructor runs inside another.
void detach_children(config_tree& tree, std::vector<tree_pointer>& parents) {
    children_type& children = fields::children(tree);
    for (const children_type::value_type& entry : children)
        if (entry.second && entry.second->count == 1 && !fields::children(*entry.second).empty())
            parents.push_back(entry.second);
    children.clear();
}

// One level of a walk in listing order: the children of one node that are still to be visited.
struct listing_level {
    children_type::const_iterator next;
    children_type::const_iterator end;
    ustring8::size_type prefix_size;  // length in bytes of the path to that node
};

listing_level level_of(const config_tree& tree, ustring8::size_type prefix_size) {
    const children_type& children = fields::children(tree);
    return listing_level{children.begin(), children.end(), prefix_size};
}

void list_children(const config_tree& tree, config_node_list& out, bool recursive, ustring8 name) {
    std::vector<listing_level> levels(1, level_of(tree, name.size()));
    while (!levels.empty()) {
        listing_level& level = levels.back();
        if (level.next == level.end) {
            levels.pop_back();
            continue;
        }
        const children_type::value_type& entry = *level.next;
        ++level.next;
        name.resize(level.prefix_size);
        // Contract: no "." follows an empty prefix, so nodes below a child of the root whose name
        // is empty are listed like children of the root.
        if (!name.empty())
            name += '.';
        name += entry.first;
        const config_tree& child = *entry.second;
        out.emplace_back(name, fields::node(child));
        if (recursive)
            levels.push_back(level_of(child, name.size()));
    }
}

void indent(std::ostream& out, long depth) {
    for (long i = 0; i < depth; ++i)
        out << "|\t\t";
}

}  // namespace

namespace detail {

const config_tree* find_node(const config_tree& tree, const ustring8& key) {
    const config_tree* found = &tree;
    ustring8::size_type begin = 0;
    do {
        const ustring8::size_type left = key.size() - begin;
        const unsigned long word =
            generic::convert::detail::load_up_to_eight(key.data() + begin, left);
        ustring8::size_type end = begin + first_separator(word);
        if (end == begin + sizeof word)
            end = left > sizeof word ? end_of_segment(key, end) : key.size();
        found = find_child(fields::children(*found), key, begin, end, word);
        begin = end + 1;
    } while (found != nullptr && begin < key.size());
    return found;
}

config_tree& make_node(config_tree& tree, const ustring8& key) {
    config_tree* made = &tree;
    key_segments segments(key);
    ustring8 segment;
    while (segments.next(segment))
        made = &child_named(*made, segment);
    return *made;
}

void set_value(config_tree& node, const types::variant& value, unsigned int flags) {
    config_node& stored = fields::node(node);
    stored.first = flags | value_bit;
    stored.second = value;
}

void value_store::set_child(config_tree& parent, ustring8&& name, const types::variant& value,
                            unsigned int flags) {
    children_type& children = fields::children(parent);
    const children_type::iterator place = lower_bound(children, name);
    if (place != children.end() && place->first == name) {
        set_value(*place->second, value, flags);
        return;
    }
    set_value(m_model, value, flags);
    children.emplace_hint(place, std::move(name), held(new config_tree(m_model)));
}

void value_store::set_node(config_tree& tree, const ustring8& key, const types::variant& value,
                           unsigned int flags) {
    config_tree* parent = &tree;
    key_segments segments(key);
    ustring8 segment;
    segments.next(segment);
    while (segments.has_next()) {
        parent = &child_named(*parent, segment);
        segments.next(segment);
    }
    set_child(*parent, std::move(segment), value, flags);
}

void value_store::set_elements(config_tree& parent, const generic::varg_list& values,
                               const generic::varg_list& flags) {
    for (unsigned long i = 0; i < values.count(); ++i) {
        ustring8 name = generic::convert::to_str(static_cast<unsigned int>(i));
        const types::variant& value = values[i].value();
        if (flags.empty())
            set_child(parent, std::move(name), value, no_flags);
        else if (i < flags.count())
            set_child(parent, std::move(name), value, flags[i].value().as_uint32());
        else
            // Contract: if the list of flags is too short, the values beyond its end are stored as
            // numbers.
            set_child(parent, std::move(name), types::variant(value.as_uint32()), no_flags);
    }
}

}  // namespace detail

config_tree::config_tree() : m_children(), m_node(0, types::variant(true)) {}

config_tree::config_tree(const config_tree& other)
    : generic::abilities::reference_count_pointer_ability<config_tree>(other),
      generic::abilities::clone_ability(other), m_children(), m_node(other.m_node) {
    if (!other.m_children.empty())
        copy_children(other, *this);
}

config_tree::~config_tree() TOVA_NOTHROW {
    if (m_children.empty())
        return;
    try {
        std::vector<tree_pointer> parents;
        detach_children(*this, parents);
        while (!parents.empty()) {
            const tree_pointer next = parents.back();
            parents.pop_back();
            detach_children(*next, parents);
        }
    } catch (const std::bad_alloc&) {
        // If there is no memory for the list, the remaining nodes are destroyed by recursion.
    }
}

config_tree* config_tree::clone() const {
    return detail::with_heap_mark(new config_tree(*this));
}

config_tree& config_tree::operator=(const config_tree& other) {
    if (this == &other)
        return *this;
    // Copy everything before changing anything: memory may run out, and `other` may be one of the
    // old children, which exist until the end of this function.
    children_type copies;
    copies = other.m_children;
    m_node.first = other.m_node.first;
    m_node.second = other.m_node.second;
    m_children.swap(copies);
    return *this;
}

void config_tree::erase() {
    m_children.clear();
}

void config_tree::set_node(const ustring8& key, const types::variant& value, unsigned int flags) {
    detail::set_value(detail::make_node(*this, key), value, flags);
}

void config_tree::parse_string(const ustring8& key, ustring8& head, ustring8& tail) const {
    const ustring8::size_type end = detail::read_segment(key, 0, head);
    if (end < key.size())
        tail.assign(key, end + 1, ustring8::npos);
    else
        tail.clear();
}

const config_node* config_tree::get_node(const ustring8& key) const {
    const config_tree* const found = detail::find_node(*this, key);
    return found == nullptr ? nullptr : &found->m_node;
}

void config_tree::get_array(const ustring8& key, config_node_list& out) {
    const config_tree* const head = detail::find_node(*this, key);
    if (head == nullptr || (head->m_node.first & detail::array_bit) == 0)
        return;
    for (unsigned int i = 0;; ++i) {
        const ustring8 name = generic::convert::to_str(i);
        const children_type::const_iterator element = head->m_children.find(name);
        if (element == head->m_children.end())
            return;
        out.emplace_back(name, element->second->m_node);
    }
}

void config_tree::get_value_pair_array(const ustring8& key, config_node_list& out, bool recursive,
                                       const ustring8& prefix) {
    if (key.empty()) {
        list_children(*this, out, recursive, prefix);
        return;
    }
    const config_tree* const found = detail::find_node(*this, key);
    if (found != nullptr)
        list_children(*found, out, recursive, ustring8());
}

std::ostream& config_tree::dump(std::ostream& out, int depth) {
    std::vector<listing_level> levels(1, level_of(*this, 0));
    while (!levels.empty()) {
        const long steps = depth + static_cast<long>(levels.size()) - 1;
        listing_level& level = levels.back();
        indent(out, steps);
        if (level.next == level.end) {
            out << "end\n";
            levels.pop_back();
            continue;
        }
        const config_tree& child = *level.next->second;
        out << level.next->first << " : ";
        ++level.next;
        if (!detail::is_step(child.m_node))
            out << generic::convert::to_str(child.m_node.first) << ' '
                << child.m_node.second.as_string() << '\n';
        else
            out << "true\n";
        indent(out, steps);
        if (child.m_children.empty()) {
            out << "|\n";
        } else {
            out << "|---------------\\\n";
            levels.push_back(level_of(child, 0));
        }
    }
    return out;
}

std::ostream& operator<<(std::ostream& out, config_tree& tree) {
    return tree.dump(out, 0);
}

}  // namespace config

template class generic::abilities::reference_count_pointer_ability<config::config_tree>;
template class memory::pointers::rc_pointer<config::config_tree>;

}  // namespace TOVA_2_18
