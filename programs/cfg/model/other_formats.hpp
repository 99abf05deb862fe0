/// @file
/// Settings in other formats, TOML and JSON, as lists of values with their paths. INI files have a
/// header of their own, with the same values.
///
/// Functions without state. A file that is not valid in its format raises `file_error` with the
/// line.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tova_programs::cfg {

/// A value of a file in another format.
struct foreign_value {
    std::vector<std::string> path;  ///< names from the root, at least one
    std::vector<std::string> values;
    bool is_array = false;
    std::string problem;   ///< why a settings file cannot represent it; then there are no values
    std::size_t line = 0;  ///< of an INI file, from 1
};

std::vector<foreign_value> read_json(const std::string& path, const std::string& bytes);

std::vector<foreign_value> read_toml(const std::string& path, const std::string& bytes);

}  // namespace tova_programs::cfg
