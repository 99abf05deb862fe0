/// @file
/// Settings in other formats: INI, TOML and JSON, as lists of values with their paths.
///
/// Functions without state. A file that is not valid in its format raises `file_error` with the
/// line.
#pragma once

#include <string>
#include <vector>

namespace tova_programs::cfg {

/// A value of a file in another format.
struct foreign_value {
    std::vector<std::string> path;  ///< names from the root, at least one
    std::vector<std::string> values;
    bool is_array = false;
    std::string problem;  ///< why it has no form in a settings file; there are no values then
};

/// As Python's configparser reads it, without interpolation: comments are lines that begin with "#"
/// or ";", a key ends at the first "=" or ":", and an indented line continues a value.
std::vector<foreign_value> read_ini(const std::string& path, const std::string& bytes);

/// As the C library inih reads it by default: the same, and " ;" starts a comment in a line.
std::vector<foreign_value> read_inih(const std::string& path, const std::string& bytes);

std::vector<foreign_value> read_json(const std::string& path, const std::string& bytes);

std::vector<foreign_value> read_toml(const std::string& path, const std::string& bytes);

}  // namespace tova_programs::cfg
