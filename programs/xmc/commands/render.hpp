/// @file
/// `tova-xmc render`, `show` and `preview`: messages as a program would see them. They are rendered
/// by the library itself.
#pragma once

#include "support/terminal.hpp"

#include <ostream>
#include <string>
#include <vector>

namespace tova_programs::xmc {

struct render_options {
    std::string key;                  ///< KEY or CATALOG/KEY
    std::vector<std::string> values;  ///< NAME=VALUE or NAME:TYPE=VALUE
    std::vector<std::string> paths;
    std::string locale = "en";
    bool as_json = false;
};

/// Prints the message. Each item that shows as ?invalid? is named on standard error with the
/// reason, and the exit code is 1.
int run_render(const render_options& options, std::ostream& out, std::ostream& errors);

struct show_options {
    std::string key;
    std::vector<std::string> paths;
    std::string locale;  ///< if it is set: which one a program with this locale gets, and why
    bool as_json = false;
};

int run_show(const show_options& options, std::ostream& out, std::ostream& errors,
             const style& colors);

struct preview_options {
    std::vector<std::string> paths;
    std::vector<std::string> locales;  ///< empty: all
    std::string output;                ///< empty: standard output
    bool as_json = false;              ///< the texts alone
};

/// Writes one page with every message in every locale, rendered with sample values.
int run_preview(const preview_options& options, std::ostream& out);

}  // namespace tova_programs::xmc
