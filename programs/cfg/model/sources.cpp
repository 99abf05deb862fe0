#include "cfg/model/sources.hpp"

#include "support/text_file.hpp"

#include <tova/config/commandline_item.hpp>
#include <tova/config/enviroment_item.hpp>
#include <tova/config/file_item.hpp>
#include <tova/config/user_item.hpp>
#include <tova/generic/varg_list.hpp>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <set>
#include <sstream>
#include <utility>

// Every source is an item of the library, loaded by the library. A map beside it says where each
// path was set. For a file, the scanner finds the places; for the command line, a second pass over
// the arguments does; a variable is its own place.

namespace tova_programs::cfg {

namespace {

using tova::config::base_config_item;
using tova::config::config_item_list;
using tova::config::config_node;
using tova::config::config_node_list;
using tova::config::config_token;
using tova::strings::ustring8;
using tova::types::variant;
using item_pointer = tova::memory::pointers::rc_pointer<base_config_item>;

// Items in a list are on the heap and marked as such, as their clones are.
item_pointer held(const base_config_item& item) {
    return item_pointer(static_cast<base_config_item*>(item.clone()));
}

// Suppresses what the library writes to standard output while it reads a command line.
class captured_output {
public:
    captured_output() : m_before(std::cout.rdbuf(m_text.rdbuf())) {}
    ~captured_output() { std::cout.rdbuf(m_before); }
    captured_output(const captured_output&) = delete;
    captured_output& operator=(const captured_output&) = delete;

private:
    std::ostringstream m_text;
    std::streambuf* m_before;
};

bool begins_option(const char* argument) {
    return argument[0] == '-' || argument[0] == '/';
}

// Reads a command line as the library does, but only its keys and the number of its values. The
// library makes the tokens. The last one is kept from argument to argument, because a space repeats
// its text.
class argument_reader {
public:
    explicit argument_reader(const std::vector<const char*>& arguments)
        : m_arguments(arguments), m_item("") {}

    argument_reading read() {
        if (!m_arguments.empty())
            read_name(m_arguments[0]);
        for (m_at = 1; m_at < m_arguments.size(); ++m_at) {
            if (!begins_option(m_arguments[m_at])) {
                m_result.ignored.push_back(m_at);
                continue;
            }
            const std::size_t option = m_at;
            read_option();
            m_result.options[option] = m_at + 1;
        }
        return std::move(m_result);
    }

private:
    // Contract: a separator at the end of the path or of the name starts no further part.
    void read_name(std::string program) {
        add("application.name", 0);
        if (!program.empty() && program.back() == '/')
            program.pop_back();
        const std::string name = program.substr(program.rfind('/') + 1);
        if (name.find('.') + 1 < name.size() && name.find('.') != std::string::npos)
            add("application.name.extention", 0);
        add("application.name.raw", 0);
    }

    void add(const std::string& key, std::size_t number) {
        m_result.places.emplace_back(path_of(key), number);
    }

    config_token::tok_types next(const ustring8& text, unsigned int& position) {
        return m_item.get_token(text, position, m_token);
    }

    bool is_sign(config_token::tok_types type, const char* sign) const {
        return type == config_token::T_NON_ALPHA_NUM && m_token.text == sign;
    }

    void skip_rest(const ustring8& text, unsigned int position) {
        while (next(text, position) != config_token::T_END) {
        }
    }

    void read_option() {
        const ustring8 text = m_arguments[m_at];
        const std::size_t number = m_at;
        unsigned int position = 1;
        std::string key;
        for (;;) {
            const config_token::tok_types type = next(text, position);
            switch (type) {
            case config_token::T_END:
                return read_following_values(key, number);
            case config_token::T_EQ:
            case config_token::T_COLON:
            case config_token::T_COLONEQ:
                return read_attached_values(key, text, position);
            case config_token::T_GTEQ:
            case config_token::T_LTEQ:
            case config_token::T_PLUSEQ:
            case config_token::T_MINUSEQ:
            case config_token::T_TIMESEQ:
            case config_token::T_DIVEQ:
                key += m_token.text[0];
                return read_attached_values(key, text, position);
            default:
                if (is_sign(type, "$")) {
                    skip_rest(text, position);
                    return add(key, number);
                }
                key += m_token.text;
            }
        }
    }

    void read_attached_values(const std::string& key, const ustring8& text, unsigned int position) {
        std::size_t commas = 0;
        for (auto type = next(text, position); type != config_token::T_END;
             type = next(text, position))
            commas += is_sign(type, ",") ? 1 : 0;
        add(key, m_at);
        for (std::size_t i = 0; commas != 0 && i <= commas; ++i)
            add(key + '.' + std::to_string(i), m_at);
    }

    void read_following_values(const std::string& key, std::size_t number) {
        if (m_at + 1 >= m_arguments.size() || begins_option(m_arguments[m_at + 1])) {
            add(m_item.make_key_value(key, config_token::T_EQ).first, number);
            return;
        }
        std::vector<std::size_t> values;
        do {
            ++m_at;
            skip_rest(m_arguments[m_at], 0);
            values.push_back(m_at);
        } while (m_at + 1 < m_arguments.size() && m_arguments[m_at + 1][0] != '-');
        add(key, number);
        for (std::size_t i = 0; values.size() > 1 && i < values.size(); ++i)
            add(key + '.' + std::to_string(i), values[i]);
    }

    const std::vector<const char*>& m_arguments;
    tova::config::file_item m_item;  // tokenizes; it reads no file
    config_token m_token;
    std::size_t m_at = 1;
    argument_reading m_result;
};

bool is_array(const config_node& node) {
    return (node.first & 3) == 3;
}

std::string text_of(const config_node& node) {
    return node.second.as_string();
}

// The places of the values that a file sets.
void add_places(source& filled) {
    struct stat status;
    if (::lstat(filled.name.c_str(), &status) == 0 && S_ISLNK(status.st_mode))
        throw file_error(filled.name + ": a program does not read a symbolic link");
    const document file(filled.name, read_file(filled.name));
    const line_index lines(file.bytes());
    for (const stored_node& node : stored_nodes(file)) {
        const entry& from = file.entries()[node.entry];
        // Contract: an element may come from an array further up, which was dropped.
        const bool is_element = node.has_value && from.is_array;
        const text_place at =
            lines.at(is_element ? from.values[node.element].bytes.begin : from.bytes.begin);
        placed_value placed;
        placed.where.name = filled.name;
        placed.where.line = at.line;
        placed.where.column = at.column;
        placed.is_array = !node.has_value;
        placed.text = node.value;
        if (placed.is_array)
            for (const value_piece& piece : from.values)
                placed.text += (placed.text.empty() ? "" : ", ") + piece.text;
        filled.places[node.path].push_back(placed);
    }
}

// Adds the value that an item has to a place that has none so far.
void complete_place(placed_value& known, base_config_item& item, const std::string& path) {
    const ustring8 key = key_with_path(path);
    const config_node* const node = item.get_value(key);
    if (node == nullptr)
        return;
    known.is_array = is_array(*node);
    if (!known.text.empty())
        return;
    if (!known.is_array) {
        known.text = text_of(*node);
        return;
    }
    config_node_list elements;
    item.get_array(key, elements);
    for (const auto& element : elements)
        known.text += (known.text.empty() ? "" : ", ") + text_of(element.second);
}

void complete_places(source& filled) {
    for (auto& known : filled.places)
        complete_place(known.second.back(), *filled.item, known.first);
}

// Adds the values of options that later ones hide. The library keeps only the last value, so each
// of these options is loaded alone.
void complete_hidden_places(source& filled, const argument_reading& reading,
                            const std::vector<const char*>& arguments) {
    for (auto& known : filled.places)
        for (std::size_t i = 0; i + 1 < known.second.size(); ++i) {
            const auto next = reading.options.upper_bound(known.second[i].where.number);
            if (next == reading.options.begin())
                continue;  // the name of the program
            const auto option = std::prev(next);
            std::vector<const char*> alone = {""};
            for (std::size_t at = option->first; at < option->second; ++at)
                alone.push_back(arguments[at]);
            const auto count = static_cast<unsigned int>(alone.size());
            alone.push_back(nullptr);
            const item_pointer item = held(tova::config::commandline_item(count, alone.data()));
            const captured_output captured;
            item->load();
            complete_place(known.second[i], *item, known.first);
        }
}

}  // namespace

argument_reading read_arguments(const std::vector<const char*>& arguments) {
    return argument_reader(arguments).read();
}

std::string to_string(const place& where) {
    switch (where.kind) {
    case place::argument:
        return "argument " + std::to_string(where.number);
    case place::variable:
        return "variable " + where.name;
    case place::alias:
        return "alias";
    case place::fallback:
        return "default";
    default:
        return where.name + ':' + std::to_string(where.line) + ':' + std::to_string(where.column);
    }
}

sources::sources(const source_options& options) {
    if (!options.schema_path.empty())
        m_schema = schema(options.schema_path);
    add_arguments(options);
    add_files(options);
    if (options.uses_environment)
        add_environment();
    add_aliases(options);
    load();
}

void sources::add_arguments(const source_options& options) {
    m_words.push_back(options.program);
    m_words.insert(m_words.end(), options.arguments.begin(), options.arguments.end());
    for (const std::string& word : m_words)
        m_argv.push_back(word.c_str());
    source added;
    added.name = "command line";
    const std::size_t count = m_argv.size();
    const argument_reading reading = read_arguments(m_argv);
    for (const std::size_t i : reading.ignored)
        m_ignored.push_back("argument " + std::to_string(i) + " (" + m_words[i] +
                            ") is ignored: it begins with neither - nor /");
    for (const auto& each : reading.places) {
        if (each.second == 0 && options.program.empty())
            continue;
        place where;
        where.kind = place::argument;
        where.number = each.second;
        added.places[each.first].push_back({where, "", false});
    }
    complete_hidden_places(added, reading, m_argv);
    m_argv.push_back(nullptr);
    // Without the program's name, argument 0 is null, which the library does not treat as the end.
    if (options.program.empty())
        m_argv[0] = nullptr;
    added.item =
        held(tova::config::commandline_item(static_cast<unsigned int>(count), m_argv.data()));
    m_list.push_back(std::move(added));
}

void sources::add_files(const source_options& options) {
    for (const std::string& file : options.files) {
        source added;
        added.name = file;
        added.item = held(tova::config::file_item(ustring8(file)));
        m_list.push_back(std::move(added));
    }
    if (!options.files.empty())
        return;
    source added;
    added.name = "no file";
    added.item = held(tova::config::file_item(ustring8()));
    m_list.push_back(std::move(added));
}

void sources::add_environment() {
    source added;
    added.name = "environment";
    added.item = held(tova::config::enviroment_item(environ));
    for (const char* const* each = environ; *each != nullptr; ++each) {
        const auto parsed = added.item->make_key_value(ustring8(*each), config_token::T_EQ);
        place where;
        where.kind = place::variable;
        where.name = std::string(*each).substr(0, std::string(*each).find('='));
        added.places[path_of(parsed.first)].push_back({where, parsed.second.as_string(), false});
    }
    m_list.push_back(std::move(added));
}

void sources::add_aliases(const source_options& options) {
    source aliases;
    aliases.name = "aliases";
    aliases.item = held(tova::config::user_item());
    const auto add_alias = [&aliases](const std::string& key, const std::string& target) {
        aliases.item->set(ustring8(key), variant(ustring8(target)), 4);
        place where;
        where.kind = place::alias;
        aliases.places[path_of(key)].push_back({where, target, false});
    };
    source defaults;
    defaults.name = "defaults";
    defaults.item = held(tova::config::user_item());
    for (const declared_key& each : m_schema.keys()) {
        if (!each.alias.empty())
            add_alias(each.key, each.alias);
        if (!each.has_default)
            continue;
        place where;
        where.kind = place::fallback;
        const ustring8 key = key_with_path(each.key);
        if (each.is_array) {
            tova::generic::varg_list list;
            for (const std::string& value : each.default_values)
                list.push_back(tova::generic::argument(variant(ustring8(value))));
            defaults.item->set_array(key, list, {});
        } else if (!each.default_values.empty()) {
            defaults.item->set(key, variant(ustring8(each.default_values[0])), 0);
        }
        defaults.places[each.key].push_back({where, "", each.is_array});
    }
    for (const std::string& each : options.aliases) {
        const std::size_t equals = each.find('=');
        if (equals == std::string::npos)
            throw file_error("--alias " + each + ": expected KEY=TARGET");
        add_alias(each.substr(0, equals), each.substr(equals + 1));
    }
    if (!aliases.places.empty())
        m_list.push_back(std::move(aliases));
    if (!defaults.places.empty())
        m_list.push_back(std::move(defaults));
}

void sources::load() {
    config_item_list items;
    for (const source& each : m_list)
        items.push_back(each.item);
    {
        const captured_output captured;
        for (const item_pointer& each : items)
            each->load(items);
    }
    for (source& each : m_list) {
        tova::config::file_item* const item =
            dynamic_cast<tova::config::file_item*>(each.item.get());
        if (item != nullptr && !item->get_filename().empty()) {
            each.name = item->get_filename();
            add_places(each);
        }
        complete_places(each);
    }
}
lookup sources::find(const std::string& key) const {
    lookup result;
    ustring8 current = key;
    std::set<std::string> visited;
    for (std::size_t i = 0; i < m_list.size(); ++i) {
        const config_node* const node = m_list[i].item->get_value(current);
        lookup_step step = step_for(i, current, node);
        if (step.result == lookup_step::alias) {
            visited.insert(current);
            result.chain.push_back(current);
            if (visited.count(step.text) == 0) {
                result.steps.push_back(step);
                current = step.text;
                i = static_cast<std::size_t>(-1);  // start again at the first source
                continue;
            }
            step.result = lookup_step::cycle;
        }
        result.steps.push_back(step);
        if (node != nullptr) {
            set_value(result, *node);
            break;
        }
    }
    add_shadowed(result, path_of(key));
    return result;
}

lookup_step sources::step_for(std::size_t source, const std::string& key,
                              const config_node* node) const {
    lookup_step step;
    step.source = source;
    step.key = key;
    if (node == nullptr)
        return step;
    const auto places = m_list[source].places.find(path_of(key));
    if (places != m_list[source].places.end())
        step.where = places->second.back().where;
    step.text = node->first == 0 || is_array(*node) ? "" : text_of(*node);
    step.result = is_array(*node)          ? lookup_step::array
                  : (node->first & 4) != 0 ? lookup_step::alias
                  : node->first == 0       ? lookup_step::inner_node
                                           : lookup_step::value;
    return step;
}

// Stores what the last step found.
void sources::set_value(lookup& result, const config_node& node) const {
    const lookup_step& last = result.steps.back();
    result.is_found = true;
    result.is_array = last.result == lookup_step::array;
    result.is_inner_node = last.result == lookup_step::inner_node;
    result.flags = node.first;
    result.source = last.source;
    result.key = last.key;
    result.where = last.where;
    if (!result.is_array) {
        result.values.push_back(text_of(node));
        return;
    }
    config_node_list elements;
    m_list[last.source].item->get_array(last.key, elements);
    for (const auto& element : elements)
        result.values.push_back(text_of(element.second));
}

// Adds the values of the same key that are not used: earlier values of the first source that has
// it, and those of the sources after it.
void sources::add_shadowed(lookup& result, const std::string& path) const {
    const auto first =
        std::find_if(result.steps.begin(), result.steps.end(),
                     [](const lookup_step& step) { return step.result != lookup_step::absent; });
    if (first == result.steps.end())
        return;
    for (std::size_t i = first->source; i < m_list.size(); ++i) {
        const auto places = m_list[i].places.find(path);
        if (places == m_list[i].places.end())
            continue;
        const std::size_t used = i == first->source ? 1 : 0;
        for (std::size_t k = 0; k + used < places->second.size(); ++k)
            result.shadowed.push_back(places->second[k]);
    }
}

std::vector<std::string> sources::paths() const {
    std::set<std::string> all;
    for (const source& each : m_list)
        for (const auto& known : each.places) {
            // An element is shown with its array.
            const std::size_t dot = known.first.rfind('.');
            const std::string name = dot == std::string::npos ? "" : known.first.substr(dot + 1);
            if (!name.empty() && name.find_first_not_of("0123456789") == std::string::npos) {
                const auto head = each.places.find(known.first.substr(0, dot));
                if (head != each.places.end() && head->second.back().is_array)
                    continue;
            }
            all.insert(known.first);
        }
    return {all.begin(), all.end()};
}

}  // namespace tova_programs::cfg
