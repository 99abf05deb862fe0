/// @file
/// Changes single entries of a settings file and keeps everything else: comments, order, layout.
///
///     std::string text = with_value(file, "server.port", {"8080"}, false);
///     text = without(document(path, text), "server.mode");
///
/// Both return the new bytes of the file. They raise `edit_error` for a value that a file cannot
/// hold, for a change that would affect other keys, and for a new key that begins a key of the file
/// or begins with one. Functions without state.
#pragma once

#include "cfg/scanner/document.hpp"

#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tova_programs::cfg {

class edit_error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Sets a value, or the elements of an array. The last entry of the key is changed. If there is
/// none, an entry is added after the others of its section, or with a section at the end of the
/// file. The first entry outside all sections goes after the comment at the beginning of the file.
std::string with_value(const document& file, const std::string& key,
                       const std::vector<std::string>& values, bool is_array);

/// Removes all entries of a key. Without any, the bytes stay as they are.
std::string without(const document& file, const std::string& key);

/// The keys that begin with a path and a dot, each once, in the order of the file.
std::vector<std::string> longer_keys(const document& file, const std::string& path);

/// A value as a file has it: in quotes if it needs them. Raises `edit_error` if there is no way to
/// write it.
std::string written_value(const std::string& value);

/// The nodes with values: path, and word and value.
using node_map = std::map<std::string, std::pair<unsigned int, std::string>>;

node_map nodes_of(const document& file);

}  // namespace tova_programs::cfg
