// The command line as a source. It is read in two parts:
//
//     set_name        argument 0, the program's name, becomes the keys `application.name...`
//     option_reader   each other argument is an option, an option's value, or ignored
//
// An option is read in two steps: `read_key` takes the tokens up to a separator or the end, and
// what ended the key determines where its values are. There may be one value, several (an array) or
// none (a flag).
#include <tova/config/commandline_item.hpp>

#include <tova/generic/varg_list.hpp>
#include <tova/strings/split.hpp>

#include "config/heap_mark.hpp"
#include "config/node_flags.hpp"
#include "config/token_scanner.hpp"
#include "config/tree_nodes.hpp"

#include <cstddef>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

namespace TOVA_2_18 {

using strings::ustring8;

namespace config {

namespace {

typedef config_token::tok_types tok_types;

// What ended the key of an option. This determines where its values are.
enum class key_end {
    argument,     // the end of the argument: in the next arguments, if any
    separator,    // `=`, `:` and the like: in the rest of this argument, separated by commas
    plain_value,  // `$`: the rest of this argument is one value
};

// Reads the options of a command line into an item.
//
// Contract: a token of spaces has the text of the previous token, which may come from an earlier
// argument, and that text becomes part of the key or value. The text is a part of an argument,
// which outlives the reader.
class option_reader {
public:
    option_reader(commandline_item& item, config_tree& tree, unsigned int argc,
                  const char* const* argv)
        : m_item(item), m_tree(tree), m_argc(argc), m_argv(argv) {}

    void read() {
        for (m_index = 1; has_argument(m_index); ++m_index) {
            if (begins_option(m_index))
                read_option();
            else
                std::cout << "Warning! unknown key:" << m_argv[m_index]
                          << "\nIgnoring key and continuing\n";
        }
    }

private:
    bool has_argument(unsigned int index) const {
        return index < m_argc && m_argv[index] != nullptr;
    }
    bool begins_option(unsigned int index) const {
        return m_argv[index][0] == '-' || m_argv[index][0] == '/';
    }

    // Appends the text of the last token.
    void append_to(ustring8& target) const { target.append(m_last, m_last_size); }

    // Reads the next token of the current argument.
    tok_types next(detail::token_scanner& scanner) {
        const detail::scanned_token token = scanner.next();
        if (token.type != config_token::T_END && token.type != config_token::T_SPACE) {
            m_last = m_argv[m_index] + token.text_begin;
            m_last_size = token.text_size;
        }
        return token.type;
    }

    bool is_sign(tok_types type, char sign) const {
        return type == config_token::T_NON_ALPHA_NUM && *m_last == sign;
    }

    void read_option() {
        m_text.assign(m_argv[m_index]);
        m_key.clear();
        m_value.clear();
        detail::token_scanner scanner(m_text, 1);
        const key_end end = read_key(scanner);
        if (end == key_end::plain_value) {
            read_rest(scanner);
            m_store.set_node(m_tree, m_key, types::variant(m_value), detail::no_flags);
        } else if (end == key_end::separator) {
            read_attached_values(scanner);
        } else {
            read_following_values();
        }
    }

    key_end read_key(detail::token_scanner& scanner) {
        for (;;) {
            const tok_types type = next(scanner);
            switch (type) {
            case config_token::T_END:
                return key_end::argument;
            case config_token::T_EQ:
            case config_token::T_COLON:
            case config_token::T_COLONEQ:
                return key_end::separator;
            case config_token::T_GTEQ:
            case config_token::T_LTEQ:
            case config_token::T_PLUSEQ:
            case config_token::T_MINUSEQ:
            case config_token::T_TIMESEQ:
            case config_token::T_DIVEQ:
                m_key += *m_last;
                return key_end::separator;
            default:
                if (is_sign(type, '$'))
                    return key_end::plain_value;
                append_to(m_key);
            }
        }
    }

    // Appends the texts of all tokens from the current position on to the value.
    void read_rest(detail::token_scanner& scanner) {
        while (next(scanner) != config_token::T_END)
            append_to(m_value);
    }

    void read_whole_argument(unsigned int index) {
        m_index = index;
        m_text.assign(m_argv[index]);
        m_value.clear();
        detail::token_scanner scanner(m_text);
        read_rest(scanner);
    }

    // -k=a and -k=a,b
    void read_attached_values(detail::token_scanner& scanner) {
        generic::varg_list values;
        for (tok_types type = next(scanner); type != config_token::T_END; type = next(scanner)) {
            if (is_sign(type, ',')) {
                values.push_back(generic::argument(types::variant(m_value)));
                m_value.clear();
            } else {
                append_to(m_value);
            }
        }
        store(values);
    }

    // -k, -k a and -k a b
    void read_following_values() {
        if (!has_argument(m_index + 1) || begins_option(m_index + 1)) {
            // Contract: a flag is stored by the form of `set` that parses a line, so its value is
            // the empty string, its flags word is 1, and even a quoted "=" splits it. Most keys
            // have nothing that could split them.
            detail::token_scanner(m_key).append_run(m_value, detail::run_place::key);
            const bool is_one_run = m_value.size() == m_key.size();
            m_value.clear();
            if (is_one_run) {
                m_store.set_node(m_tree, m_key, types::variant(m_value), detail::value_bit);
                return;
            }
            const std::pair<ustring8, types::variant> entry =
                m_item.make_key_value(m_key, config_token::T_EQ);
            m_store.set_node(m_tree, entry.first, entry.second, detail::value_bit);
            return;
        }
        generic::varg_list values;
        read_whole_argument(m_index + 1);
        // Contract: after the first value, only "-" ends the list. A "/" starts another value.
        while (has_argument(m_index + 1) && m_argv[m_index + 1][0] != '-') {
            values.push_back(generic::argument(types::variant(m_value)));
            read_whole_argument(m_index + 1);
        }
        store(values);
    }

    // Stores a single value, or `values` with the value appended as an array.
    void store(generic::varg_list& values) {
        if (values.empty()) {
            m_store.set_node(m_tree, m_key, types::variant(m_value), detail::no_flags);
            return;
        }
        values.push_back(generic::argument(types::variant(m_value)));
        m_item.set_array(m_key, values, generic::varg_list());
    }

    commandline_item& m_item;
    config_tree& m_tree;
    unsigned int m_argc;
    const char* const* m_argv;
    unsigned int m_index = 1;
    const char* m_last = "";  // the text of the last token that was not spaces
    std::size_t m_last_size = 0;
    ustring8 m_text;  // the current argument
    ustring8 m_key;   // of the current option
    ustring8 m_value;
    detail::value_store m_store;
};

// Sets the three keys of the program's name.
void set_name(commandline_item& item, const std::string& path) {
    const std::vector<std::string> folders = strings::split_string(path, std::string("/"), 0);
    const std::string name = folders.empty() ? std::string() : folders.back();
    item.set("application.name", types::variant(name), detail::no_flags);

    // Contract: the pieces are joined without the dots between them. A name whose only dot is at
    // the end has no extension, because a trailing separator does not start another piece.
    const std::vector<std::string> pieces = strings::split_string(name, std::string("."), 0);
    if (pieces.size() > 1)
        item.set("application.name.extention", types::variant(pieces.back()), detail::no_flags);
    std::string raw;
    for (std::vector<std::string>::size_type i = 0; i + 1 < pieces.size(); ++i)
        raw += pieces[i];
    item.set("application.name.raw", types::variant(raw), detail::no_flags);
}

}  // namespace

commandline_item::commandline_item(unsigned int size, const char* const* arguments)
    : base_config_item(), m_argc(size), m_argv(arguments) {
    id = "command line";
}

commandline_item::commandline_item(const commandline_item& other)
    : base_config_item(other), m_argc(other.m_argc), m_argv(other.m_argv) {
    id = "command line";
}

commandline_item::~commandline_item() TOVA_NOTHROW {}

bool commandline_item::load(const config_item_list&) {
    return load();
}

bool commandline_item::load() {
    if (m_argv == nullptr)
        return true;
    if (m_argv[0] != nullptr)
        set_name(*this, m_argv[0]);
    option_reader(*this, tree, m_argc, m_argv).read();
    return true;
}

void commandline_item::unload() {
    tree.erase();
}

commandline_item* commandline_item::clone() const {
    return detail::with_heap_mark(new commandline_item(*this));
}

unsigned int commandline_item::get_argc() {
    return m_argc;
}

const char* const* commandline_item::get_argv() {
    return m_argv;
}

}  // namespace config
}  // namespace TOVA_2_18
