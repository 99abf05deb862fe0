/// @file
/// `tova-cfg convert`: settings of other formats as a settings file.
#pragma once

#include <ostream>
#include <string>

namespace tova_programs::cfg {

struct convert_options {
    std::string file;
    std::string format;  ///< ini, inih, toml, json; empty: by the extension
    std::string output;  ///< empty: standard output
    bool as_json = false;
};

/// Writes the settings file, and what has no form in it on standard error, a line each; with
/// `as_json` both in one object. The exit code is 1 if there is anything of that kind.
int run_convert(const convert_options& options, std::ostream& out, std::ostream& errors);

}  // namespace tova_programs::cfg
