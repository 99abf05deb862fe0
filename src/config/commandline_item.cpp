#include <tova/config/commandline_item.hpp>

#include <iostream>
#include <string>
#include <vector>

#include <tova/generic/varg_list.hpp>
#include <tova/strings/split.hpp>

namespace TOVA_2_18 {

using strings::ustring8;

namespace config {

namespace {

typedef config_token::tok_types tok_types;

// How the key of an option ends.
enum class key_end { argument, separator, plain_value };

// Reads the options of a command line into an item. One token serves for the whole run, as a blank
// stands for the piece in front of it, wherever that was.
class option_reader {
public:
    option_reader(commandline_item& item, unsigned int argc, const char* const* argv)
        : m_item(item), m_argc(argc), m_argv(argv) {}

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

    tok_types next() { return m_item.get_token(m_text, m_position, m_token); }

    static bool is_sign(tok_types type, const config_token& token, const char* sign) {
        return type == config_token::T_NON_ALPHA_NUM && token.text == sign;
    }

    void read_option() {
        m_text = m_argv[m_index];
        m_position = 1;
        ustring8 key;
        switch (read_key(key)) {
        case key_end::plain_value:
            m_item.set(key, types::variant(rest_of_text()), 0);
            break;
        case key_end::separator:
            read_attached_values(key);
            break;
        case key_end::argument:
            read_following_values(key);
            break;
        }
    }

    key_end read_key(ustring8& key) {
        for (;;) {
            const tok_types type = next();
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
                key += m_token.text[0];
                return key_end::separator;
            default:
                if (is_sign(type, m_token, "$"))
                    return key_end::plain_value;
                key += m_token.text;
            }
        }
    }

    // All pieces of the text from the present position on.
    ustring8 rest_of_text() {
        ustring8 value;
        while (next() != config_token::T_END)
            value += m_token.text;
        return value;
    }

    ustring8 whole_argument(unsigned int index) {
        m_text = m_argv[index];
        m_position = 0;
        return rest_of_text();
    }

    // -k=a and -k=a,b
    void read_attached_values(const ustring8& key) {
        generic::varg_list values;
        ustring8 value;
        for (tok_types type = next(); type != config_token::T_END; type = next()) {
            if (is_sign(type, m_token, ",")) {
                values.push_back(generic::argument(types::variant(value)));
                value.clear();
            } else {
                value += m_token.text;
            }
        }
        store(key, values, value);
    }

    // -k, -k a and -k a b
    void read_following_values(const ustring8& key) {
        if (!has_argument(m_index + 1) || begins_option(m_index + 1)) {
            // Contract: a flag is stored by the line form, as a key with an empty text and the word
            // 1. A quoted "=" in it divides it again.
            m_item.set(key, 1);
            return;
        }
        generic::varg_list values;
        ustring8 value = whole_argument(++m_index);
        // Contract: from the second value on "-" alone ends the list, "/" begins a value.
        while (has_argument(m_index + 1) && m_argv[m_index + 1][0] != '-') {
            values.push_back(generic::argument(types::variant(value)));
            value = whole_argument(++m_index);
        }
        store(key, values, value);
    }

    // One value, or with others in front of it the last of an array.
    void store(const ustring8& key, generic::varg_list& values, const ustring8& last) {
        if (values.empty()) {
            m_item.set(key, types::variant(last), 0);
            return;
        }
        values.push_back(generic::argument(types::variant(last)));
        m_item.set_array(key, values, generic::varg_list());
    }

    commandline_item& m_item;
    unsigned int m_argc;
    const char* const* m_argv;
    unsigned int m_index = 1;
    ustring8 m_text;
    unsigned int m_position = 0;
    config_token m_token;
};

void set_name(commandline_item& item, const std::string& path) {
    const std::vector<std::string> folders = strings::split_string(path, std::string("/"), 0);
    const std::string name = folders.empty() ? std::string() : folders.back();
    item.set("application.name", types::variant(name), 0);

    // Contract: the pieces are joined without the dots between them, and a name that ends in its
    // only dot has no extension, as splitting opens no field behind it.
    const std::vector<std::string> pieces = strings::split_string(name, std::string("."), 0);
    if (pieces.size() > 1)
        item.set("application.name.extention", types::variant(pieces.back()), 0);
    std::string raw;
    for (std::vector<std::string>::size_type i = 0; i + 1 < pieces.size(); ++i)
        raw += pieces[i];
    item.set("application.name.raw", types::variant(raw), 0);
}

}  // namespace

commandline_item::commandline_item(unsigned int size, const char* const* arguments)
    : base_config_item(), argc(size), argv(arguments) {
    id = "command line";
}

commandline_item::commandline_item(const commandline_item& other)
    : base_config_item(other), argc(other.argc), argv(other.argv) {
    id = "command line";
}

commandline_item::~commandline_item() TOVA_NOTHROW {}

bool commandline_item::load(const config_item_list&) {
    return load();
}

bool commandline_item::load() {
    if (argv == nullptr)
        return true;
    if (argv[0] != nullptr)
        set_name(*this, argv[0]);
    option_reader(*this, argc, argv).read();
    return true;
}

void commandline_item::unload() {
    tree.erase();
}

commandline_item* commandline_item::clone() const {
    commandline_item* const copy = new commandline_item(*this);
    copy->allocated = true;
    return copy;
}

unsigned int commandline_item::get_argc() {
    return argc;
}

const char* const* commandline_item::get_argv() {
    return argv;
}

}  // namespace config
}  // namespace TOVA_2_18
