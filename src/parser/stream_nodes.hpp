/// @file
/// The nodes that `xml_stream_parser` has created and not handed out yet, and the open elements.
///
/// An open element is at an open level (the root's level and the levels below it, as many as the
/// open depth) or deeper. The functions below keep four things in sync:
///
///     queue       all nodes in document order; those before the first unready one may be taken
///     elements    the name and the node of each open element
///     names       the names of those at open levels
///     ids         the id of each open element, above a 0 for the top level
///
/// A consumer may take the node of an element that is still open. The element then refers to the
/// queue's end, and anything written to its node later is dropped. Nodes leave in document order,
/// so these are always the outermost elements.
///
/// A `stream_nodes` is a view of fields of the parser: it owns nothing and lives for one call. It
/// belongs to one thread at a time.
#pragma once

#include <tova/parser/xml_stream_parser.hpp>
#include <tova/strings/ustring.hpp>

#include "parser/attribute_names.hpp"
#include "parser/piece.hpp"
#include "parser/usual_element.hpp"

#include <cstddef>
#include <list>
#include <set>
#include <stack>
#include <utility>

namespace TOVA_2_18 {
namespace parser {
namespace detail {

class stream_nodes {
public:
    using node = xml_stream_parser::node;
    using error_type = xml_stream_parser::error_type;
    using node_position = std::list<node>::iterator;
    using open_element = std::pair<strings::ustring8, node_position>;
    using open_elements = std::stack<open_element>;

    stream_nodes(std::list<node>& queue, open_elements& elements,
                 std::stack<strings::ustring8>& names, unsigned long& next_id,
                 std::stack<unsigned long>& ids, std::set<strings::ustring8>& names_of_tag)
        : m_queue(queue), m_elements(elements), m_names(names), m_next_id(next_id), m_ids(ids),
          m_attribute_names(names_of_tag) {}

    /// @name The queue
    /// @{
    /// Whether the queue holds at least that many nodes, ready or not, with two ready ones at its
    /// front.
    bool is_full(std::size_t limit) const;
    /// Whether fewer than `count` ready nodes are at the front.
    bool has_fewer_ready_than(unsigned int count) const;
    /// The number of ready nodes at the front of a queue.
    static unsigned int ready_count(const std::list<node>& queue);
    /// Removes the first node, ready or not; there must be one.
    node take_first();
    /// @}

    /// @name The open elements
    /// @{
    std::size_t open_count() const { return m_elements.size(); }
    const strings::ustring8& innermost_name() const { return m_elements.top().first; }
    /// The number of elements at open levels, and the name of the innermost one.
    std::size_t level_count() const { return m_names.size(); }
    const strings::ustring8& level_name() const { return m_names.top(); }
    /// @}

    /// @name Changes
    /// @{
    void open_level(const strings::ustring8& name) { m_names.push(name); }
    /// Opens an element: appends its node and makes it the innermost one.
    void open(piece name, error_type type, bool ready, unsigned int line);
    void forget_attribute_names() { m_attribute_names.clear(); }
    /// Leaves the names in the parser's field as separate elements.
    void separate_attribute_names() { m_attribute_names.separate(); }
    /// Adds an attribute to the innermost element. Returns false if the name already exists. Of the
    /// bytes at the name, `readable` may be read.
    bool add_attribute(piece name, std::size_t readable, strings::ustring8&& value);
    bool add_attribute(piece name, std::size_t readable, piece value);
    /// Replaces the text of the innermost element.
    void set_text(strings::ustring8&& text);
    /// Marks the node of the innermost element as ready.
    void make_innermost_ready();
    /// Closes an element below the open levels: its node is now complete. `position` is the node of
    /// the innermost element.
    void close(node_position position);
    void close_innermost() { close(m_elements.top().second); }
    /// Appends the closing node of an element at an open level.
    void append_end(piece name, error_type type, unsigned int line);
    /// Opens and closes an element below the open levels at once.
    void append_whole(const usual_element& element, unsigned int line);  // stream_elements.cpp
    /// Leaves the innermost open level.
    void close_level();
    /// Empties the queue and closes all elements below the open levels.
    void keep_levels_only();
    /// @}

private:
    node* innermost_node();

    std::list<node>& m_queue;
    open_elements& m_elements;
    std::stack<strings::ustring8>& m_names;
    unsigned long& m_next_id;
    std::stack<unsigned long>& m_ids;
    attribute_names m_attribute_names;
};

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
