/// @file
/// `tova-cfg check`: every finding in settings files.
#pragma once

#include "support/findings.hpp"

#include <ostream>
#include <string>
#include <vector>

namespace tova_programs::cfg {

struct check_options {
    std::vector<std::string> files;
    std::string schema_path;
    std::string written_for;  ///< configparser, inih or empty
    std::vector<std::string> only;
    std::vector<std::string> ignored;
};

report check(const check_options& options);

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

}  // namespace tova_programs::cfg
