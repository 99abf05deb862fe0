// A file as a source. Loading chooses a file name, reads the whole file and stores its entries;
// saving goes the other way. Each stage is a function of its own:
//
//     load(items)   file_named_by     which file, by the keys of the other sources
//     load_file()   read_file         the bytes of the file, if it is one that can be read
//                   read_entries      the bytes as entries, into the tree (entry_reader.hpp)
//     save()        write_sections    the tree as text (section_writer.hpp)
//                   store_file        the text into the file
//
// A stage that fails changes nothing and reports nothing.
#include <tova/config/file_item.hpp>

#include <tova/system/files.hpp>
#include <tova/system/io.hpp>

#include "config/entry_reader.hpp"
#include "config/heap_mark.hpp"
#include "config/section_writer.hpp"
#include "config/token_scanner.hpp"
#include "config/tree_nodes.hpp"
#include "system/file_status.hpp"
#include "system/open_file.hpp"

#include <sys/stat.h>

#include <limits>
#include <stdexcept>

namespace TOVA_2_18 {

using strings::ustring8;

namespace config {

namespace {

const char file_id[] = "standard file";

bool opens_for_reading(const ustring8& name) {
    return !TOVA_2_18::detail::is_pipe(name) && !system::io::is_directory(name) &&
           system::detail::open_file(name, O_RDONLY | O_NONBLOCK).is_open();
}

// Whether the size of the file is known and fits the 32-bit integer that `system::load_file` uses.
// Most file systems report no such size for a directory; where one does, the directory reads as NUL
// bytes, which contain no entries.
bool has_loadable_size(const ustring8& name) {
    const system::detail::open_file file(name, O_RDONLY | O_NONBLOCK);
    const off_t size = file.is_open() ? file.end() : -1;
    return size >= 0 && size <= std::numeric_limits<int>::max();
}

// Reads the whole file into `content` and returns whether that worked.
//
// A regular file is opened once, because its status contains the size. For any other file the check
// for a link comes first: opening a link would open its target, and opening a device may have side
// effects.
bool read_file(const ustring8& name, ustring8& content) {
    if (name.empty())
        return false;
    try {
        struct stat status;
        if (::stat(name.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_size != 0)
            return status.st_size <= std::numeric_limits<int>::max() &&
                   system::load_file(name, content) == 0;
        return !system::detail::is_symbolic_link(name) && !TOVA_2_18::detail::is_pipe(name) &&
               has_loadable_size(name) && system::load_file(name, content) == 0;
    } catch (const std::runtime_error&) {
        // If there is no way to find out whether the path is a link, the file cannot be read
        // either.
        return false;
    } catch (const std::length_error&) {
        return false;  // the size was known before, but no longer is
    }
}

// Goes through the sources in order and returns the first name found under `key` that, with
// `extension` appended, can be opened for reading; the empty string if there is none. Links are
// followed here, so a link that can be opened is chosen, although `read_file` then refuses it.
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

}  // namespace

file_item::file_item(const ustring8& name) : base_config_item(), m_filename(name) {
    id = file_id;
}

file_item::file_item(const file_item& other)
    : base_config_item(other), m_filename(other.m_filename) {
    id = file_id;
}

file_item::~file_item() TOVA_NOTHROW {}

bool file_item::load(const config_item_list& items) {
    const ustring8 named = file_named_by(items, "cfg_file", "");
    if (!named.empty())
        m_filename = named;
    if (m_filename.empty())
        m_filename = file_named_by(items, "application.name.raw", ".cfg");
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
    config_node_list nodes;
    tree.get_value_pair_array(ustring8(), nodes, true, ustring8());
    const ustring8 text = detail::write_sections(nodes);
    try {
        system::store_file(m_filename, text);
    } catch (const std::runtime_error&) {
        // There is no way to find out whether the path is a link. The file is not written, as for
        // any other unusable name.
    }
    return true;
}

void file_item::unload() {
    tree.erase();
}

file_item* file_item::clone() const {
    return detail::with_heap_mark(new file_item(*this));
}

ustring8 file_item::get_filename() {
    return m_filename;
}

void file_item::load_file() {
    ustring8 text;
    if (!read_file(m_filename, text))
        return;
    detail::tree_fields::children_type& children = detail::tree_fields::children(tree);
    if (!children.empty()) {
        // If memory runs out, only some of the entries are loaded. Loading into a copy would
        // prevent that, but pointers to the nodes would not survive the load.
        detail::read_entries(text, tree);
        return;
    }
    config_tree loaded;
    detail::read_entries(text, loaded);
    children.swap(detail::tree_fields::children(loaded));
}

void file_item::parse_comment(const ustring8& text, unsigned int& position) {
    detail::token_scanner scanner(text, position);
    scanner.skip_to_line_end();
    position = scanner.position();
}

ustring8 quote_value(const ustring8& text) {
    if (text.find_first_of(" \r\t\n") == ustring8::npos)
        return text;
    return "\"" + text + "\"";
}

}  // namespace config
}  // namespace TOVA_2_18
