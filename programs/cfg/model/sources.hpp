/// @file
/// The sources of a program's settings, loaded by the library, with the place of every value.
///
///     source_options options;
///     options.files = {"app.cfg"};
///     options.arguments = {"-port=80"};
///     sources all(options);
///     const lookup found = all.find("port");  // found.place, found.values, found.steps
///
/// The library's own items hold the values, so what is found is what a program finds. An object
/// belongs to one thread at a time.
#pragma once

#include "cfg/model/schema.hpp"

#include <tova/config/base_config_item.hpp>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tova_programs::cfg {

struct source_options {
    std::vector<std::string> files;      ///< in order of priority
    std::vector<std::string> arguments;  ///< without the program's name
    std::string program;                 ///< its name, or empty
    bool uses_environment = false;
    std::vector<std::string> aliases;  ///< KEY=TARGET
    std::string schema_path;           ///< empty: none
};

/// Where a value was set.
struct place {
    enum kind_t { argument, file, variable, alias, fallback };
    kind_t kind = file;
    std::size_t number = 0;  ///< of the argument; the program's name is argument 0
    std::string name;        ///< the file or the variable
    std::size_t line = 0;
    std::size_t column = 0;
};

/// "argument 2", "app.cfg:3:1", "variable HOME", "alias", "default".
std::string to_string(const place& where);

/// A value that a source sets. A later one of the same key in the same source replaces it.
struct placed_value {
    place where;
    std::string text;
    bool is_array = false;
};

struct source {
    std::string name;  ///< "command line", the file, "environment", "aliases", "defaults"
    tova::memory::pointers::rc_pointer<tova::config::base_config_item> item;
    std::map<std::string, std::vector<placed_value>> places;  ///< by path
};

/// One step of a lookup: the result of one source for one key.
struct lookup_step {
    enum result_t { absent, inner_node, array, alias, value, cycle };
    std::size_t source = 0;
    std::string key;
    result_t result = absent;
    std::string text;  ///< of a value or an alias
    place where;
};

struct lookup {
    bool is_found = false;
    bool is_array = false;
    bool is_inner_node = false;  ///< no value, but longer keys
    unsigned int flags = 0;
    std::size_t source = 0;
    std::string key;  ///< the last one of the chain
    place where;
    std::vector<std::string> values;  ///< one, or the elements
    std::vector<std::string> chain;   ///< the keys of all aliases that were followed
    std::vector<lookup_step> steps;
    std::vector<placed_value> shadowed;  ///< values of the first key that are not used
};

class sources {
public:
    explicit sources(const source_options& options);

    const std::vector<source>& list() const { return m_list; }
    const schema& declared() const { return m_schema; }

    /// Arguments that the library ignores, with their numbers.
    const std::vector<std::string>& ignored_arguments() const { return m_ignored; }

    /// Looks a key up as `config_manager::get_value` does.
    lookup find(const std::string& key) const;

    /// The paths of all values of all sources, without the elements of arrays.
    std::vector<std::string> paths() const;

private:
    void add_arguments(const source_options& options);
    void add_files(const source_options& options);
    void add_environment();
    void add_aliases(const source_options& options);
    void load();

    lookup_step step_for(std::size_t source, const std::string& key,
                         const tova::config::config_node* node) const;
    void set_value(lookup& result, const tova::config::config_node& node) const;
    void add_shadowed(lookup& result, const std::string& path) const;

    std::vector<source> m_list;
    std::vector<std::string> m_ignored;
    std::vector<std::string> m_words;  // of the command line, for the item
    std::vector<const char*> m_argv;
    schema m_schema;
};

/// Where the arguments set values, in the order of setting. The first argument is the program's
/// name.
struct argument_reading {
    std::vector<std::pair<std::string, std::size_t>> places;  ///< path and number
    std::vector<std::size_t> ignored;
    std::map<std::size_t, std::size_t> options;  ///< each option, and the argument after its values
};

argument_reading read_arguments(const std::vector<const char*>& arguments);

}  // namespace tova_programs::cfg
