/// @file
/// A schema: which keys a program knows, and what their values may be.
///
/// It is a settings file itself. Each section declares the key of its name:
///
///     [server.port]
///     type = int          # string, int, double, bool, path, or with [] an array of them
///     default = 8080
///     min = 1
///     max = 65535
///     help = "port to listen on"
///     [server.mode]
///     values[] = fast, safe
///     required = yes
///     [port]
///     alias = server.port
///
/// A schema is constant once it is read, so threads may share it.
#pragma once

#include "cfg/scanner/document.hpp"

#include <string>
#include <vector>

namespace tova_programs::cfg {

struct declared_key {
    std::string key;
    std::string type = "string";  ///< of an element, without the `[]`
    bool is_array = false;
    bool is_required = false;
    bool has_default = false;
    std::vector<std::string> default_values;
    std::vector<std::string> choices;  ///< empty: any value
    std::string minimum;               ///< empty: none
    std::string maximum;
    std::string help;
    std::string alias;  ///< the path of its target if it is an alias, or empty
    std::string path;   ///< of the schema
    span bytes;         ///< its header
};

class schema {
public:
    schema() = default;

    /// Raises `file_error` if the file cannot be read, or with a line for each unknown type or
    /// property and any other mistake.
    explicit schema(const std::string& path);

    bool empty() const { return m_keys.empty(); }
    const std::vector<declared_key>& keys() const { return m_keys; }

    /// Null if the path is not declared.
    const declared_key* find(const std::string& path) const;

    /// All paths, for suggestions.
    std::vector<std::string> paths() const;

private:
    std::vector<declared_key> m_keys;
};

/// What is wrong with a value, or the empty string: `"80x" is not a whole number`.
std::string problem_of(const declared_key& declared, const std::string& value);

/// "int", "path[]", "one of fast, safe".
std::string type_of(const declared_key& declared);

}  // namespace tova_programs::cfg
