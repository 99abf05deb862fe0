// The base class of all sources. Most operations forward to the tree. Two of them parse strings:
// `get_token` is the published form of the tokenizer (token_scanner.hpp), which copies each token's
// text, and `make_key_value` splits a line into key and value. It serves environment strings,
// command-line flags and `set`.
#include <tova/config/base_config_item.hpp>

#include "config/node_flags.hpp"
#include "config/token_scanner.hpp"
#include "config/tree_nodes.hpp"

#include <ostream>
#include <utility>

namespace TOVA_2_18 {

using strings::ustring8;

namespace config {

base_config_item::base_config_item() : id(), tree() {}

base_config_item::base_config_item(const base_config_item& other)
    : generic::abilities::reference_count_pointer_ability<base_config_item>(other),
      generic::abilities::clone_ability(other), id(other.id), tree(other.tree) {}

base_config_item::~base_config_item() TOVA_NOTHROW {}

bool base_config_item::load(const config_item_list&) {
    return load();
}

bool base_config_item::load() {
    return true;
}

// Contract: this form does not call `save()`. If a source overrides only one of the two forms, only
// calls of that form save it.
bool base_config_item::save(const config_item_list&) {
    return true;
}

bool base_config_item::save() {
    return true;
}

void base_config_item::unload() {}

ustring8 base_config_item::get_id() {
    return id;
}

const config_node* base_config_item::get_value(const ustring8& key) const {
    return tree.get_node(key);
}

void base_config_item::get_array(const ustring8& key, config_node_list& out) {
    tree.get_array(key, out);
}

void base_config_item::get_value_pair_array(const ustring8& key, config_node_list& out,
                                            bool recursive) {
    tree.get_value_pair_array(key, out, recursive, ustring8());
}

void base_config_item::set(const ustring8& key, const types::variant& value, unsigned int flags) {
    tree.set_node(key, value, flags);
}

void base_config_item::set(const std::pair<ustring8, types::variant>& entry, unsigned int flags) {
    tree.set_node(entry.first, entry.second, flags);
}

void base_config_item::set(const ustring8& line, unsigned int flags) {
    set(make_key_value(line, config_token::T_EQ), flags);
}

// An element's key is `key`, "." and its number. The common part `key + "."` is looked up once, so
// the time for many elements doesn't grow with the length of the key. If `key` ends in a separator,
// the "." starts a segment with an empty name.
void base_config_item::set_array(const ustring8& key, const generic::varg_list& values,
                                 const generic::varg_list& flags) {
    set(key, types::variant(), detail::array_bit);
    if (!values.empty())
        detail::value_store().set_elements(detail::make_node(tree, key + "."), values, flags);
}

std::pair<ustring8, types::variant> base_config_item::make_key_value(const ustring8& line,
                                                                     config_token::tok_types stop) {
    detail::token_scanner scanner(line);
    ustring8 key;
    // The runs of a key contain no `=`, but may contain another stop token.
    const bool has_runs = stop == config_token::T_EQ;
    if (has_runs)
        scanner.append_run(key, detail::run_place::key);
    for (detail::scanned_token token = scanner.next();
         token.type != config_token::T_END && token.type != stop; token = scanner.next()) {
        if (!token.is_space_or_line_end())
            token.append_to(key, line);
        if (has_runs)
            scanner.append_run(key, detail::run_place::key);
    }
    // Unlike in a file, comments are not recognized here, so "#" and "//" belong to the value.
    ustring8 value;
    scanner.append_run(value, detail::run_place::value);
    for (detail::scanned_token token = scanner.next();
         token.type != config_token::T_END && token.type != config_token::T_NEWLINE;
         token = scanner.next()) {
        if (!token.is_space())
            token.append_to(value, line);
        scanner.append_run(value, detail::run_place::value);
    }
    return std::make_pair(std::move(key), types::variant(value));
}

config_token::tok_types base_config_item::get_token(const ustring8& text, unsigned int& position,
                                                    config_token& token) {
    detail::token_scanner scanner(text, position);
    const detail::scanned_token found = scanner.next();
    token.type = found.stored;
    if (found.type == config_token::T_END)
        return found.type;
    // Contract: a token of spaces keeps the text of the previous token. On a command line this is
    // visible: a space in a value repeats the token before it.
    if (found.type != config_token::T_SPACE)
        token.text.assign(text, found.text_begin, found.text_size);
    token.start = position;
    position = scanner.position();
    token.end = position;
    return found.type;
}

std::ostream& base_config_item::dump(std::ostream& out) {
    out << "object : " << id << "\n|---------------\\\n";
    tree.dump(out, 1);
    return out << "end\n";
}

std::ostream& operator<<(std::ostream& out, base_config_item& item) {
    return item.dump(out);
}

}  // namespace config

template class generic::abilities::reference_count_pointer_ability<config::base_config_item>;
template class memory::pointers::rc_pointer<config::base_config_item>;

}  // namespace TOVA_2_18
