#include <tova/config/file_item.hpp>

#include <sys/stat.h>

#include <fstream>
#include <limits>
#include <map>
#include <stdexcept>
#include <vector>

#include <tova/generic/convert/str_to_x.hpp>
#include <tova/generic/varg_list.hpp>
#include <tova/system/files.hpp>
#include <tova/system/io.hpp>

#include "config/config_tree_access.hpp"
#include "system/file_status.hpp"

namespace TOVA_2_18 {

using strings::ustring8;

namespace config {

namespace {

typedef config_token::tok_types tok_types;
typedef detail::config_tree_access access;

const char file_id[] = "standard file";

const unsigned int word_of_step = 0;
const unsigned int word_of_array = 3;
const unsigned int array_head = 2;

// A pipe is never opened for reading: that would wait for a writer, which may never come.
bool is_pipe(const ustring8& name) {
    return system::detail::has_mode_bits(name, S_IFIFO);
}

bool opens_for_reading(const ustring8& name) {
    return !is_pipe(name) && !system::io::is_directory(name) &&
           std::ifstream(name.c_str(), std::ios::binary).is_open();
}

// Whether the size of the file is known and fits the 32 bits that `system::load_file` passes it
// through. A directory opens, but has no such size.
bool has_loadable_size(const ustring8& name) {
    std::ifstream file(name.c_str(), std::ios::binary);
    if (!file.is_open())
        return false;
    file.seekg(0, std::ios::end);
    const std::streamoff size = file.tellg();
    return size >= 0 && size <= std::numeric_limits<int>::max();
}

// Reads the whole file into `content` and returns whether that worked.
//
// The link comes first, as in `system::load_file`: to open one would open what it points to, and a
// device may act on that.
bool read_file(const ustring8& name, ustring8& content) {
    if (name.empty())
        return false;
    try {
        return !system::detail::is_symbolic_link(name) && !is_pipe(name) &&
               has_loadable_size(name) && system::load_file(name, content) == 0;
    } catch (const std::runtime_error&) {
        // Whether the path is a link cannot be found out, so the file cannot be read either.
        return false;
    }
}

// The name that the first item with that key gives to a file that opens, or an empty text.
ustring8 file_named_by(const config_item_list& items, const ustring8& key,
                       const ustring8& extension) {
    for (const memory::pointers::rc_pointer<base_config_item>& item : items) {
        const config_node* const node = item->get_value(key);
        if (node == nullptr)
            continue;
        ustring8 name = node->second.as_string() + extension;
        if (opens_for_reading(name))
            return name;
    }
    return ustring8();
}

bool begins_comment(tok_types type) {
    return type == config_token::T_POUND || type == config_token::T_FSFS;
}

bool is_blank(tok_types type) {
    return type == config_token::T_SPACE || type == config_token::T_TABCHAR;
}

bool is_blank_or_line_end(tok_types type) {
    return is_blank(type) || type == config_token::T_NEWLINE;
}

// Reads the entries of one text into a tree.
class entry_reader {
public:
    entry_reader(file_item& item, config_tree& tree, const ustring8& text)
        : m_item(item), m_tree(tree), m_text(text) {}

    void read() {
        while (m_position < m_text.size())
            read_entry();
    }

private:
    tok_types next() { return m_item.get_token(m_text, m_position, m_token); }
    void pass_comment() { m_item.parse_comment(m_text, m_position); }

    void read_entry() {
        tok_types type = next();
        while (is_blank_or_line_end(type) || begins_comment(type)) {
            if (begins_comment(type))
                pass_comment();
            type = next();
        }
        if (type == config_token::T_SBRACKET) {
            read_header();
            return;
        }
        ustring8 key = read_key(type);
        if (key.empty())
            return;
        if (key.size() >= 2 && key.compare(key.size() - 2, 2, "[]") == 0) {
            key.resize(key.size() - 2);
            read_array(key);
        } else {
            read_value(key);
        }
    }

    void read_header() {
        m_prefix.clear();
        for (tok_types type = next();
             type != config_token::T_EBRACKET && type != config_token::T_END; type = next())
            if (!is_blank_or_line_end(type))
                m_prefix += m_token.text;
        if (!m_prefix.empty())
            m_prefix += '.';
        m_section = nullptr;
    }

    // Contract: no comment begins inside a key. "#" and "//" belong to it, and it runs over line
    // ends up to the next plain "=".
    ustring8 read_key(tok_types type) {
        ustring8 key;
        for (; type != config_token::T_EQ && type != config_token::T_END; type = next())
            if (!is_blank_or_line_end(type))
                key += m_token.text;
        return key;
    }

    void read_value(const ustring8& key) {
        ustring8 value;
        for (tok_types type = next();
             type != config_token::T_NEWLINE && type != config_token::T_END; type = next()) {
            if (begins_comment(type))
                pass_comment();
            else if (!is_blank(type))
                value += m_token.text;
        }
        if (!value.empty())
            section().set_node(key, types::variant(value), 0);
    }

    void read_array(const ustring8& key) {
        ustring8 value;
        bool behind_comma = false;
        for (tok_types type = next(); type != config_token::T_END; type = next()) {
            if (type == config_token::T_NEWLINE) {
                if (!behind_comma)
                    break;
            } else if (begins_comment(type)) {
                pass_comment();
            } else if (type == config_token::T_NON_ALPHA_NUM && m_token.text == ",") {
                push(value);
                value.clear();
                behind_comma = true;
            } else if (!is_blank(type)) {
                value += m_token.text;
                behind_comma = false;
            }
        }
        // Contract: an array whose last value is empty is dropped, but the values in front of it
        // stay on the list and come first in the next array of the file that is stored.
        if (value.empty())
            return;
        push(value);
        store_array(key);
        m_values.clear();
    }

    void push(const ustring8& value) {
        m_values.push_back(generic::argument(types::variant(value)));
    }

    void store_array(const ustring8& key) {
        config_tree& parent = section();
        // The key of an array may be empty, as that of a quoted "[]". With the prefix in front,
        // which ends in a separator, it then names the section itself.
        config_tree& head = key.empty() && !m_prefix.empty() ? parent : access::make(parent, key);
        access::set(head, types::variant(), array_head);
        access::set_elements(access::make(parent, key + "."), m_values, generic::varg_list());
    }

    // The node of the current section, looked up once. Keys of the file are thus set below it
    // rather than by prefix and key: the prefix ends in a separator, so the two name the same node.
    config_tree& section() {
        if (m_section == nullptr)
            m_section = m_prefix.empty() ? &m_tree : &access::make(m_tree, m_prefix);
        return *m_section;
    }

    file_item& m_item;
    config_tree& m_tree;
    const ustring8& m_text;
    unsigned int m_position = 0;
    config_token m_token;
    ustring8 m_prefix;
    config_tree* m_section = nullptr;
    generic::varg_list m_values;
};

// The last component of a listed name.
ustring8 component(const ustring8& name) {
    const ustring8::size_type dot = name.rfind('.');
    return dot == ustring8::npos ? name : ustring8(name.substr(dot + 1));
}

bool is_number_but_zero(const ustring8& text) {
    return generic::convert::str_to_int(text.data(), text.size(), types::radix_t::detect, false) !=
           0;
}

// Writes a listing of a tree as the text of a file.
class section_writer {
public:
    explicit section_writer(const config_node_list& entries) : m_entries(entries) {
        for (std::size_t i = 0; i < entries.size(); ++i) {
            const ustring8& name = entries[i].first;
            const ustring8::size_type dot = name.rfind('.');
            if (word(i) != word_of_step && dot != ustring8::npos)
                m_by_parent_size[dot].push_back(i);
        }
    }

    ustring8 write() {
        ustring8 text;
        for (std::size_t i = 0; i < m_entries.size(); ++i) {
            if (word(i) != word_of_step)
                continue;
            const ustring8& name = m_entries[i].first;
            text += "[" + quote_value(name) + "]\n" + entries_below(name.size()) + "\n";
        }
        return text;
    }

private:
    unsigned int word(std::size_t i) const { return m_entries[i].second.first; }
    ustring8 value(std::size_t i) const {
        return quote_value(m_entries[i].second.second.as_utf8());
    }

    // Contract: an entry belongs to a section if its name behind as many bytes as the section's
    // name and one more is its last component. That compares lengths alone: the entries of all
    // sections whose names are equally long come under each of them.
    const ustring8& entries_below(ustring8::size_type section_size) {
        const auto known = m_texts.find(section_size);
        if (known != m_texts.end())
            return known->second;
        ustring8& text = m_texts[section_size];
        std::size_t taken = 0;
        for (const std::size_t i : m_by_parent_size[section_size])
            if (i >= taken)
                taken = append_entry(i, text);
        return text;
    }

    // Appends the lines of an entry and gives the index behind what went into it.
    std::size_t append_entry(std::size_t i, ustring8& text) const {
        text += quote_value(component(m_entries[i].first));
        if (word(i) != word_of_array) {
            text += "=" + value(i) + "\n";
            return i + 1;
        }
        text += "[]=";
        // Contract: the element "0" and then each entry whose name reads as a number are taken, in
        // the order of the listing: "10" comes before "2", and a key that begins with a digit is
        // taken as well. At the end of the list nothing is looked at.
        if (++i < m_entries.size() && component(m_entries[i].first) == "0") {
            text += value(i);
            while (++i < m_entries.size() && is_number_but_zero(component(m_entries[i].first)))
                text += "," + value(i);
        }
        text += "\n";
        return i;
    }

    const config_node_list& m_entries;
    std::map<ustring8::size_type, std::vector<std::size_t>> m_by_parent_size;
    std::map<ustring8::size_type, ustring8> m_texts;
};

}  // namespace

file_item::file_item(const ustring8& name) : base_config_item(), filename(name) {
    id = file_id;
}

file_item::file_item(const file_item& other) : base_config_item(other), filename(other.filename) {
    id = file_id;
}

file_item::~file_item() TOVA_NOTHROW {}

bool file_item::load(const config_item_list& items) {
    const ustring8 named = file_named_by(items, "cfg_file", "");
    if (!named.empty())
        filename = named;
    if (filename.empty())
        filename = file_named_by(items, "application.name.raw", ".cfg");
    load_file();
    return true;
}

bool file_item::load() {
    load_file();
    return true;
}

bool file_item::save(const config_item_list&) {
    return save();
}

bool file_item::save() {
    config_node_list entries;
    tree.get_value_pair_array(ustring8(), entries, true, ustring8());
    const ustring8 text = section_writer(entries).write();
    try {
        system::store_file(filename, text);
    } catch (const std::runtime_error&) {
        // Whether the path is a link cannot be found out. Not written, like any other bad name.
    }
    return true;
}

void file_item::unload() {
    tree.erase();
}

file_item* file_item::clone() const {
    file_item* const copy = new file_item(*this);
    copy->allocated = true;
    return copy;
}

ustring8 file_item::get_filename() {
    return filename;
}

void file_item::load_file() {
    ustring8 text;
    if (read_file(filename, text))
        entry_reader(*this, tree, text).read();
}

void file_item::parse_comment(const ustring8& text, unsigned int& position) {
    config_token token;
    tok_types type;
    do
        type = get_token(text, position, token);
    while (type != config_token::T_NEWLINE && type != config_token::T_END);
    // The line end is left for the caller: it may end a value.
    if (type == config_token::T_NEWLINE)
        position = token.start;
}

ustring8 quote_value(const ustring8& text) {
    if (text.find_first_of(" \r\t\n") == ustring8::npos)
        return text;
    return "\"" + text + "\"";
}

}  // namespace config
}  // namespace TOVA_2_18
