#include "parser/stream_nodes.hpp"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

namespace TOVA_2_18 {
namespace parser {
namespace detail {

using strings::ustring8;

namespace {

// The limit on nodes applies only if this many ready nodes are at the front: with fewer, the
// consumer could not make room, and the parser would be stuck.
const unsigned int full_queue_front = 2;

// The open elements, outermost first. `std::stack` keeps them in a protected member.
struct element_access : stream_nodes::open_elements {
    static container_type& all(stream_nodes::open_elements& stack) {
        return stack.*&element_access::c;
    }
};

}  // namespace

// --- The queue ----------------------------------------------------------------------------------

bool stream_nodes::is_full(std::size_t limit) const {
    return m_queue.size() >= limit && !has_fewer_ready_than(full_queue_front);
}

bool stream_nodes::has_fewer_ready_than(unsigned int count) const {
    for (const node& one : m_queue) {
        if (count == 0 || !one.ready)
            break;
        --count;
    }
    return count != 0;
}

unsigned int stream_nodes::ready_count(const std::list<node>& queue) {
    const auto end =
        std::find_if(queue.begin(), queue.end(), [](const node& one) { return !one.ready; });
    return static_cast<unsigned int>(std::distance(queue.begin(), end));
}

stream_nodes::node stream_nodes::take_first() {
    // The first node belongs to the outermost element whose node is still in the queue, or to one
    // that has closed. Elements whose node was taken precede all others, so a binary search finds
    // it. Usually there is nothing to find, because all have been taken.
    auto& elements = element_access::all(m_elements);
    if (!elements.empty() && elements.back().second != m_queue.end()) {
        const auto outermost = std::partition_point(
            elements.begin(), elements.end(),
            [this](const open_element& element) { return element.second == m_queue.end(); });
        if (outermost->second == m_queue.begin())
            outermost->second = m_queue.end();
    }

    node first = std::move(m_queue.front());
    m_queue.pop_front();
    return first;
}

// --- Changes ------------------------------------------------------------------------------------

void stream_nodes::open(piece name, error_type type, bool ready, unsigned int line) {
    m_queue.emplace_back();
    node& made = m_queue.back();
    made.type = type;
    made.ready = ready;
    made.name.assign(name.data, name.size);
    made.line = line;
    made.id = m_next_id++;
    made.parent = m_ids.top();
    m_ids.push(made.id);
    m_elements.emplace(made.name, std::prev(m_queue.end()));
}

// Null if there is no element, or if the consumer has taken its node.
stream_nodes::node* stream_nodes::innermost_node() {
    if (m_elements.empty() || m_elements.top().second == m_queue.end())
        return nullptr;
    return &*m_elements.top().second;
}

bool stream_nodes::add_attribute(piece name, std::size_t readable, ustring8&& value) {
    if (!m_attribute_names.insert(name.data, name.size, readable))
        return false;
    if (node* const element = innermost_node())
        element->attributes.emplace_back(name.string(), std::move(value));
    return true;
}

bool stream_nodes::add_attribute(piece name, std::size_t readable, piece value) {
    if (!m_attribute_names.insert(name.data, name.size, readable))
        return false;
    if (node* const element = innermost_node())
        element->attributes.emplace_back(std::piecewise_construct,
                                         std::forward_as_tuple(name.data, name.size),
                                         std::forward_as_tuple(value.data, value.size));
    return true;
}

void stream_nodes::set_text(ustring8&& text) {
    if (node* const element = innermost_node())
        element->text = std::move(text);
}

void stream_nodes::make_innermost_ready() {
    if (node* const element = innermost_node())
        element->ready = true;
}

void stream_nodes::close(node_position position) {
    if (position != m_queue.end()) {
        position->type = xml_stream_parser::no_error;
        position->ready = true;
    }
    m_elements.pop();
    m_attribute_names.clear();
    // The 0 of the top level is never removed.
    if (m_ids.size() > 1)
        m_ids.pop();
}

void stream_nodes::append_end(piece name, error_type type, unsigned int line) {
    m_queue.emplace_back();
    node& made = m_queue.back();
    made.type = type;
    made.ready = true;
    made.name.assign(name.data, name.size);
    made.line = line;
    made.id = m_names.size();
    made.parent = 0;
    if (m_ids.size() > 1)
        m_ids.pop();
}

void stream_nodes::close_level() {
    // `<r/>` closes its element but leaves its name on the stack, so there may be no element.
    if (!m_elements.empty())
        m_elements.pop();
    m_names.pop();
}

void stream_nodes::keep_levels_only() {
    m_attribute_names.clear();
    while (m_elements.size() > m_names.size())
        m_elements.pop();
    m_queue.clear();
    for (auto& element : element_access::all(m_elements))
        element.second = m_queue.end();
    while (m_ids.size() > 1)
        m_ids.pop();
}

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
