#include <tova/config/base_config_item.hpp>

#include <algorithm>
#include <limits>
#include <ostream>

#include "config/character_classes.hpp"
#include "config/config_tree_access.hpp"

namespace TOVA_2_18 {

using strings::ustring8;

namespace config {

namespace {

typedef config_token::tok_types tok_types;

// Index of the closing quote of the string whose opening quote stands at `start`, or the size of
// the text.
//
// Contract: the byte behind a backslash is passed over unseen and both stay in the text: a quoted
// quote keeps its backslash.
ustring8::size_type closing_quote(const ustring8& text, ustring8::size_type start) {
    ustring8::size_type at = start + 1;
    while (at < text.size() && text[at] != '"')
        at += text[at] == '\\' ? 2 : 1;
    return at < text.size() ? at : text.size();
}

template <bool (*IsInClass)(char)>
ustring8::size_type end_of_run(const ustring8& text, ustring8::size_type start) {
    ustring8::size_type at = start + 1;
    while (at < text.size() && IsInClass(text[at]))
        ++at;
    return at;
}

// What `get_token` finds at one place of a text.
struct piece {
    tok_types type;
    ustring8::size_type size;  // bytes of the source
};

// A character that may have one of two others behind it. At the end of the text the terminator is
// looked at, which matches neither.
piece one_or_two(char next, tok_types alone, tok_types with_equals) {
    return next == '=' ? piece{with_equals, 2} : piece{alone, 1};
}

// The pieces that a special character begins; a size of 0 stands for none.
piece special_piece(char character, char next) {
    switch (character) {
    case ']':
        return {config_token::T_EBRACKET, 1};
    case '[':
        return {config_token::T_SBRACKET, 1};
    case '.':
        return {config_token::T_DOT, 1};
    case '#':
        return {config_token::T_POUND, 1};
    case '\t':
        return {config_token::T_TABCHAR, 1};
    case '\n':
        return {config_token::T_NEWLINE, 1};
    case '\r':
        return next == '\n' ? piece{config_token::T_NEWLINE, 2} : piece{config_token::T_UNKNOWN, 1};
    case '>':
        return one_or_two(next, config_token::T_GT, config_token::T_GTEQ);
    case '<':
        return one_or_two(next, config_token::T_LT, config_token::T_LTEQ);
    case '=':
        return one_or_two(next, config_token::T_EQ, config_token::T_EQEQ);
    case ':':
        return one_or_two(next, config_token::T_COLON, config_token::T_COLONEQ);
    case '+':
        return one_or_two(next, config_token::T_PLUS, config_token::T_PLUSEQ);
    case '-':
        return one_or_two(next, config_token::T_MINUS, config_token::T_MINUSEQ);
    case '/':
        if (next == '/')
            return {config_token::T_FSFS, 2};
        return one_or_two(next, config_token::T_DIV, config_token::T_DIVEQ);
    case '*':
        if (next == '/')
            return {config_token::T_COMMENT_END, 2};
        return one_or_two(next, config_token::T_TIMES, config_token::T_TIMESEQ);
    default:
        return {config_token::T_NON_ALPHA_NUM, 0};
    }
}

bool vanishes_from_keys(tok_types type) {
    return type == config_token::T_NEWLINE || type == config_token::T_SPACE ||
           type == config_token::T_TABCHAR;
}

bool vanishes_from_values(tok_types type) {
    return type == config_token::T_SPACE || type == config_token::T_TABCHAR;
}

}  // namespace

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

// Contract: this form does not call `save()`. A source that overrides one of the two forms alone is
// saved through that one alone.
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

void base_config_item::set_array(const ustring8& key, const generic::varg_list& values,
                                 const generic::varg_list& flags) {
    const unsigned int array_head = 2;
    set(key, types::variant(), array_head);
    if (!values.empty())
        detail::config_tree_access::set_elements(detail::config_tree_access::make(tree, key + "."),
                                                 values, flags);
}

std::pair<ustring8, types::variant> base_config_item::make_key_value(const ustring8& line,
                                                                     config_token::tok_types stop) {
    unsigned int position = 0;
    config_token token;
    ustring8 key;
    tok_types type;
    while ((type = get_token(line, position, token)) != config_token::T_END && type != stop)
        if (!vanishes_from_keys(type))
            key += token.text;
    ustring8 value;
    while ((type = get_token(line, position, token)) != config_token::T_END &&
           type != config_token::T_NEWLINE)
        if (!vanishes_from_values(type))
            value += token.text;
    return std::make_pair(key, types::variant(value));
}

config_token::tok_types base_config_item::get_token(const ustring8& text, unsigned int& position,
                                                    config_token& token) {
    // What lies behind the last place that a position can tell is never reached: it must not wrap
    // round to the front, as no reader would come to an end then.
    const ustring8::size_type last_position = std::numeric_limits<unsigned int>::max();
    const ustring8::size_type start = position;
    if (start >= std::min(text.size(), last_position)) {
        token.type = config_token::T_END;
        return config_token::T_END;
    }

    const char character = text[start];
    ustring8::size_type end;
    if (detail::is_blank(character)) {
        // Contract: the text stays that of the piece before. A command line shows it: a blank in a
        // value repeats what stands in front of it.
        token.type = config_token::T_SPACE;
        end = end_of_run<detail::is_blank>(text, start);
    } else if (character == '"') {
        const ustring8::size_type quote = closing_quote(text, start);
        token.type = config_token::T_STRING;
        token.text.assign(text, start + 1, quote - start - 1);
        end = quote < text.size() ? quote + 1 : quote;
    } else {
        const piece special = special_piece(character, text[start + 1]);
        token.type = special.type;
        end = start + special.size;
        if (special.size == 0) {
            end = start + 1;
            if (detail::is_digit(character)) {
                token.type = config_token::T_NUM;
                end = end_of_run<detail::is_digit>(text, start);
            } else if (detail::is_letter(character)) {
                token.type = config_token::T_VAR;
                end = end_of_run<detail::is_letter>(text, start);
            }
        }
        if (token.type == config_token::T_NEWLINE)
            token.text = "\n";
        else
            token.text.assign(text, start, end - start);
    }
    token.start = position;
    position = static_cast<unsigned int>(std::min(end, last_position));
    token.end = position;
    // Contract: the end of a C comment is stored under its own kind and returned as the beginning
    // of a comment. The readers here go by what is returned.
    return token.type == config_token::T_COMMENT_END ? config_token::T_FSFS : token.type;
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
