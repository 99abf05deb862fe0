/// @file
/// `tova-cfg convert`: makes a settings file from other formats.
#pragma once

#include <ostream>
#include <string>

namespace tova_programs::cfg {

struct convert_options {
    std::string file;
    std::string format;     ///< ini, inih, toml, json; empty: by the extension
    std::string output;     ///< empty: standard output
    bool replaces = false;  ///< whether the output may be a file that exists
    bool as_json = false;
};

/// Writes the settings file, and on standard error a line for each key that it does not have or has
/// under other names; with `as_json`, both are in one object. The exit code is 1 if there is such a
/// key. Raises `file_error` for an extension that says nothing about the format.
int run_convert(const convert_options& options, std::ostream& out, std::ostream& errors);

}  // namespace tova_programs::cfg
