// The writer of configuration files. It works on the listing of a tree, which names every node by
// its full path, parents before children:
//
//     1. Index the nodes that have a value by the length of their parent's path.
//     2. Write a header for each node without a value, in the order of the listing.
//     3. After each header, write the entries that step 1 recorded under the length of its name.
//
// The lookup by length is the rule, not a shortcut: it decides which entries appear under a header.
// All sections whose names have the same length therefore have the same lines, which are built only
// once.
#include "config/section_writer.hpp"

#include <tova/config/file_item.hpp>
#include <tova/generic/convert/str_to_x.hpp>

#include "config/node_flags.hpp"

#include <map>
#include <vector>

namespace TOVA_2_18 {

using strings::ustring8;

namespace config {
namespace detail {

namespace {

// The last segment of a listed name.
ustring8 last_segment(const ustring8& name) {
    const ustring8::size_type dot = name.rfind('.');
    return dot == ustring8::npos ? name : ustring8(name.substr(dot + 1));
}

bool is_nonzero_number(const ustring8& text) {
    return generic::convert::str_to_int(text.data(), text.size(), types::radix_t::detect, false) !=
           0;
}

class section_writer {
public:
    explicit section_writer(const config_node_list& nodes) : m_nodes(nodes) {
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            const ustring8::size_type dot = name(i).rfind('.');
            if (!is_step(node(i)) && dot != ustring8::npos)
                m_entries[dot].push_back(i);
        }
    }

    ustring8 write() {
        ustring8 text;
        for (std::size_t i = 0; i < m_nodes.size(); ++i)
            if (is_step(node(i)))
                text += "[" + quote_value(name(i)) + "]\n" + lines_below(name(i).size()) + "\n";
        return text;
    }

private:
    const ustring8& name(std::size_t i) const { return m_nodes[i].first; }
    const config_node& node(std::size_t i) const { return m_nodes[i].second; }
    ustring8 value(std::size_t i) const { return quote_value(node(i).second.as_utf8()); }

    // Contract: an entry belongs to a section if dropping the length of the section's name plus one
    // byte from the front of the entry's name leaves its last segment. Only lengths are compared:
    // if several sections have names of the same length, the entries of all of them appear under
    // each.
    const ustring8& lines_below(ustring8::size_type section_size) {
        const auto known = m_lines.find(section_size);
        if (known != m_lines.end())
            return known->second;
        ustring8& text = m_lines[section_size];
        std::size_t next = 0;
        for (const std::size_t i : m_entries[section_size])
            if (i >= next)
                next = append_entry(i, text);
        return text;
    }

    // Appends the line of an entry and returns the index after the last node that is part of it.
    std::size_t append_entry(std::size_t i, ustring8& text) const {
        text += quote_value(last_segment(name(i)));
        if (node(i).first != (value_bit | array_bit)) {
            text += "=" + value(i) + "\n";
            return i + 1;
        }
        text += "[]=";
        // Contract: the element "0" is written, and then every node whose name reads as a number,
        // in listing order: "10" comes before "2", and a key that merely starts with a digit
        // counts, too. The scan stops at the end of the listing.
        if (++i < m_nodes.size() && last_segment(name(i)) == "0") {
            text += value(i);
            while (++i < m_nodes.size() && is_nonzero_number(last_segment(name(i))))
                text += "," + value(i);
        }
        text += "\n";
        return i;
    }

    const config_node_list& m_nodes;
    // Both keyed by the length of the parent's path: the indexes of the entries, and their lines.
    std::map<ustring8::size_type, std::vector<std::size_t>> m_entries;
    std::map<ustring8::size_type, ustring8> m_lines;
};

}  // namespace

ustring8 write_sections(const config_node_list& nodes) {
    return section_writer(nodes).write();
}

}  // namespace detail
}  // namespace config
}  // namespace TOVA_2_18
