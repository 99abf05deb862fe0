/// @file
/// `tova-xmc export`: catalogs as the files that translators work with.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace tova_programs::xmc {

struct export_options {
    std::vector<std::string> paths;
    std::vector<std::string> catalogs;  ///< empty: all
    std::string locale;                 ///< empty: a template
    std::string reference = "en";
    bool requires_reference = false;  ///< whether it is an error that no catalog has it
    std::string format = "po";        ///< po, xliff, xliff2 or csv
    std::string output;               ///< empty: standard output
    bool as_json = false;
};

int run_export(const export_options& options, std::ostream& out, std::ostream& errors);

}  // namespace tova_programs::xmc
