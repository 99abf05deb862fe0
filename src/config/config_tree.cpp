#include <tova/config/config_tree.hpp>

#include <new>
#include <ostream>

#include <tova/generic/convert/x_to_str.hpp>

#include "config/config_tree_access.hpp"
#include "config/key_segments.hpp"

namespace TOVA_2_18 {

using strings::ustring8;

namespace config {

namespace {

const unsigned int has_value = 1;
const unsigned int is_array_head = 2;

typedef memory::pointers::rc_pointer<config_tree> tree_pointer;
typedef detail::config_tree_access access;
typedef access::children_type children_type;

tree_pointer marked(config_tree* tree) {
    tree->allocated = true;
    return tree_pointer(tree);
}

config_tree& child_named(config_tree& tree, const ustring8& name) {
    children_type& children = access::children(tree);
    children_type::iterator place = children.lower_bound(name);
    if (place == children.end() || children.key_comp()(name, place->first))
        place = children.insert(place, children_type::value_type(name, marked(new config_tree)));
    return *place->second;
}

// Depth is no limit: no walk below calls itself, each keeps its own list of what is left to do.

void copy_children(const config_tree& source, config_tree& target) {
    std::vector<std::pair<const config_tree*, config_tree*>> pending;
    pending.emplace_back(&source, &target);
    while (!pending.empty()) {
        const config_tree& from = *pending.back().first;
        children_type& to = access::children(*pending.back().second);
        pending.pop_back();
        for (const children_type::value_type& entry : access::children(from)) {
            if (!entry.second) {
                to.insert(to.end(), entry);
                continue;
            }
            const config_tree& child = *entry.second;
            const bool is_leaf = access::children(child).empty();
            const tree_pointer copy = marked(is_leaf ? new config_tree(child) : new config_tree);
            to.insert(to.end(), children_type::value_type(entry.first, copy));
            if (!is_leaf) {
                access::node(*copy) = access::node(child);
                pending.emplace_back(&child, copy.get());
            }
        }
    }
}

// Removes all children of a tree, but first adds those that are themselves parents, and that nobody
// else holds, to `parents`.
void detach_children(config_tree& tree, std::vector<tree_pointer>& parents) {
    children_type& children = access::children(tree);
    for (const children_type::value_type& entry : children)
        if (entry.second && entry.second->count == 1 && !access::children(*entry.second).empty())
            parents.push_back(entry.second);
    children.clear();
}

struct listing_level {
    children_type::const_iterator next;
    children_type::const_iterator end;
    ustring8::size_type prefix_size;
};

listing_level level_of(const config_tree& tree, ustring8::size_type prefix_size) {
    const children_type& children = access::children(tree);
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
        // Contract: an empty prefix brings no ".", so what lies below a child of the root with the
        // empty name is listed as if it lay in the root.
        if (!name.empty())
            name += '.';
        name += entry.first;
        const config_tree& child = *entry.second;
        out.emplace_back(name, access::node(child));
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

config_tree* config_tree_access::find(const config_tree& tree, const ustring8& key) {
    const config_tree* found = &tree;
    config_tree* below = nullptr;
    key_segments segments(key);
    ustring8 segment;
    while (segments.next(segment)) {
        const children_type::const_iterator place = found->children.find(segment);
        if (place == found->children.end())
            return nullptr;
        below = place->second.get();
        found = below;
    }
    return below;
}

config_tree& config_tree_access::make(config_tree& tree, const ustring8& key) {
    config_tree* made = &tree;
    key_segments segments(key);
    ustring8 segment;
    while (segments.next(segment))
        made = &child_named(*made, segment);
    return *made;
}

void config_tree_access::set(config_tree& tree, const types::variant& value, unsigned int flags) {
    tree.node.first = flags | has_value;
    tree.node.second = value;
}

void config_tree_access::set_elements(config_tree& parent, const generic::varg_list& values,
                                      const generic::varg_list& flags) {
    for (unsigned long i = 0; i < values.count(); ++i) {
        config_tree& element =
            child_named(parent, generic::convert::to_str(static_cast<unsigned int>(i)));
        const types::variant& value = values[i].value();
        if (flags.empty())
            set(element, value, 0);
        else if (i < flags.count())
            set(element, value, flags[i].value().as_uint32());
        else
            // Contract: a list of flags that is too short turns the rest of the values to numbers.
            set(element, types::variant(value.as_uint32()), 0);
    }
}

}  // namespace detail

config_tree::config_tree() : children(), node(0, types::variant(true)) {}

config_tree::config_tree(const config_tree& other)
    : generic::abilities::reference_count_pointer_ability<config_tree>(other),
      generic::abilities::clone_ability(other), children(), node(other.node) {
    if (!other.children.empty())
        copy_children(other, *this);
}

config_tree::~config_tree() TOVA_NOTHROW {
    try {
        std::vector<tree_pointer> parents;
        detach_children(*this, parents);
        while (!parents.empty()) {
            const tree_pointer next = parents.back();
            parents.pop_back();
            detach_children(*next, parents);
        }
    } catch (const std::bad_alloc&) {
        // Without memory for the list the nodes that are left go one inside the other.
    }
}

config_tree* config_tree::clone() const {
    config_tree* const copy = new config_tree(*this);
    copy->allocated = true;
    return copy;
}

config_tree& config_tree::operator=(const config_tree& other) {
    if (this == &other)
        return *this;
    node.first = other.node.first;
    node.second = other.node.second;
    // The copies are made before the old children go, as `other` may be one of these.
    children_type copies;
    copies = other.children;
    children.swap(copies);
    return *this;
}

void config_tree::erase() {
    children.clear();
}

void config_tree::set_node(const ustring8& key, const types::variant& value, unsigned int flags) {
    detail::config_tree_access::set(detail::config_tree_access::make(*this, key), value, flags);
}

void config_tree::parse_string(const ustring8& key, ustring8& head, ustring8& tail) const {
    const ustring8::size_type end = detail::read_segment(key, 0, head);
    if (end < key.size())
        tail.assign(key, end + 1, ustring8::npos);
    else
        tail.clear();
}

const config_node* config_tree::get_node(const ustring8& key) const {
    const config_tree* const found = detail::config_tree_access::find(*this, key);
    return found == nullptr ? nullptr : &found->node;
}

void config_tree::get_array(const ustring8& key, config_node_list& out) {
    const config_tree* const head = detail::config_tree_access::find(*this, key);
    if (head == nullptr || (head->node.first & is_array_head) == 0)
        return;
    for (unsigned int i = 0;; ++i) {
        const ustring8 name = generic::convert::to_str(i);
        const children_type::const_iterator element = head->children.find(name);
        if (element == head->children.end())
            return;
        out.emplace_back(name, element->second->node);
    }
}

void config_tree::get_value_pair_array(const ustring8& key, config_node_list& out, bool recursive,
                                       const ustring8& prefix) {
    if (key.empty()) {
        list_children(*this, out, recursive, prefix);
        return;
    }
    const config_tree* const found = detail::config_tree_access::find(*this, key);
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
        if (child.node.first != 0)
            out << generic::convert::to_str(child.node.first) << ' '
                << child.node.second.as_string() << '\n';
        else
            out << "true\n";
        indent(out, steps);
        if (child.children.empty()) {
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
