/// @file
/// `tova-xmc check`: every finding in a set of catalogs.
#pragma once

#include "support/findings.hpp"

#include <string>
#include <vector>

namespace tova_programs::xmc {

struct check_options {
    std::vector<std::string> paths;
    std::string reference = "en";  ///< whose arguments the other locales must have
    std::vector<std::string> only;
    std::vector<std::string> ignored;
};

/// Checks the files, those that they include, and what they say together. Only one file is in
/// memory at a time, beside an index of all messages.
report check(const check_options& options);

/// Checks one document by itself, as an editor needs it while its author types. The findings have
/// their places.
std::vector<finding> findings_of(const class document& file);

struct check_command {
    check_options check;
    std::string explained;
    bool lists_rules = false;
    bool fixes = false;
    bool is_dry_run = false;
    std::string fail_on = "warning";  ///< error, warning, note or never
    report_format format = report_format::text;
};

/// Runs the command and returns the exit code.
int run_check(const check_command& command, std::ostream& out, std::ostream& errors,
              const style& colors);

}  // namespace tova_programs::xmc
