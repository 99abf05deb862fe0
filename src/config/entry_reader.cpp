// The reader of configuration files. It reads one entry at a time until the text ends:
//
//     state    reads                                        next state
//     start    skips spaces, line ends and comments         `[`: header; the end: end;
//                                                           any other token: key
//     header   a section name up to `]`                     start
//     key      a key up to a plain `=`                      empty: start; ends in `[]`: array;
//                                                           otherwise: value
//     value    up to the line end                           start
//     array    elements up to the line end; a line end      start
//              after a comma is skipped
//
// The end of the text ends every state. Comments are recognized only in the states start, value and
// array. Keys and values are built by appending the tokens that count, so spaces outside quotes are
// dropped. Bytes without a special meaning are appended in runs, without a token for each.
//
// Three things are kept from entry to entry: the section's name followed by ".", the section's
// node, which is looked up when its first entry is stored, and the elements of an array that was
// dropped.
#include "config/entry_reader.hpp"

#include <tova/generic/varg_list.hpp>

#include "config/node_flags.hpp"
#include "config/token_scanner.hpp"
#include "config/tree_nodes.hpp"

namespace TOVA_2_18 {

using strings::ustring8;

namespace config {
namespace detail {

namespace {

class entry_reader {
public:
    entry_reader(const ustring8& text, config_tree& tree)
        : m_text(text), m_tree(tree), m_scanner(text) {}

    void read() {
        while (m_scanner.position() < m_text.size())
            read_entry();
    }

private:
    void read_entry() {
        scanned_token token = m_scanner.next();
        while (token.is_space_or_line_end() || token.is_comment_start()) {
            if (token.is_comment_start())
                m_scanner.skip_to_line_end();
            token = m_scanner.next();
        }
        if (token.type == config_token::T_SBRACKET) {
            read_header();
            return;
        }
        read_key(token);
        if (m_key.empty())
            return;
        if (m_key.size() >= 2 && m_key[m_key.size() - 2] == '[' && m_key.back() == ']') {
            m_key.resize(m_key.size() - 2);
            read_array();
        } else {
            read_value();
        }
    }

    void read_header() {
        m_prefix.clear();
        for (scanned_token token = m_scanner.next();
             token.type != config_token::T_EBRACKET && token.type != config_token::T_END;
             token = m_scanner.next())
            if (!token.is_space_or_line_end())
                token.append_to(m_prefix, m_text);
        if (!m_prefix.empty())
            m_prefix += '.';
        m_section = nullptr;
    }

    // Contract: comments are not recognized inside a key. "#" and "//" belong to the key, which
    // continues across line ends up to the next plain "=".
    void read_key(scanned_token token) {
        m_key.clear();
        for (; token.type != config_token::T_EQ && token.type != config_token::T_END;
             token = m_scanner.next()) {
            if (!token.is_space_or_line_end())
                token.append_to(m_key, m_text);
            m_scanner.append_run(m_key, run_place::key);
        }
    }

    void read_value() {
        m_value.clear();
        m_scanner.append_run(m_value, run_place::value);
        for (scanned_token token = m_scanner.next();
             token.type != config_token::T_NEWLINE && token.type != config_token::T_END;
             token = m_scanner.next()) {
            if (token.is_comment_start())
                m_scanner.skip_to_line_end();
            else if (!token.is_space())
                token.append_to(m_value, m_text);
            m_scanner.append_run(m_value, run_place::value);
        }
        if (!m_value.empty())
            m_store.set_node(section(), m_key, types::variant(m_value), no_flags);
    }

    void read_array() {
        m_value.clear();
        m_scanner.append_run(m_value, run_place::element);
        bool after_comma = false;
        for (scanned_token token = m_scanner.next(); token.type != config_token::T_END;
             token = m_scanner.next()) {
            if (token.type == config_token::T_NEWLINE) {
                if (!after_comma)
                    break;
            } else if (token.is_comment_start()) {
                m_scanner.skip_to_line_end();
            } else if (is_comma(token)) {
                add_element();
                m_value.clear();
                after_comma = true;
            } else if (!token.is_space()) {
                token.append_to(m_value, m_text);
                after_comma = false;
            }
            if (m_scanner.append_run(m_value, run_place::element))
                after_comma = false;
        }
        // Contract: an array whose last element is empty is dropped, but the elements before it
        // stay on the list and become the first elements of the next array that the file stores.
        if (m_value.empty())
            return;
        add_element();
        store_array();
        m_elements.clear();
    }

    bool is_comma(const scanned_token& token) const {
        return token.type == config_token::T_NON_ALPHA_NUM && m_text[token.text_begin] == ',';
    }

    void add_element() { m_elements.push_back(generic::argument(types::variant(m_value))); }

    void store_array() {
        config_tree& parent = section();
        // The key may be empty, as in `"[]" = a`. Inside a section the full key is then just the
        // prefix, whose trailing separator starts no segment: the section itself becomes the array.
        config_tree& head = m_key.empty() && !m_prefix.empty() ? parent : make_node(parent, m_key);
        set_value(head, types::variant(), array_bit);
        m_store.set_elements(make_node(parent, m_key + "."), m_elements, generic::varg_list());
    }

    // The node of the current section. Keys are stored below it instead of under prefix and key.
    // Both name the same node, since the prefix ends in a separator.
    config_tree& section() {
        if (m_section == nullptr)
            m_section = m_prefix.empty() ? &m_tree : &make_node(m_tree, m_prefix);
        return *m_section;
    }

    const ustring8& m_text;
    config_tree& m_tree;
    token_scanner m_scanner;
    ustring8 m_prefix;                 // empty at the top level
    config_tree* m_section = nullptr;  // null until the section's first entry is stored
    generic::varg_list m_elements;
    value_store m_store;
    ustring8 m_key;  // of the current entry, and its value or element so far
    ustring8 m_value;
};

}  // namespace

void read_entries(const ustring8& text, config_tree& tree) {
    entry_reader(text, tree).read();
}

}  // namespace detail
}  // namespace config
}  // namespace TOVA_2_18
