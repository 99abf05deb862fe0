/// @file
/// `tova-xmc export` and `import`: catalogs as the files that translators work with.
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
    std::string format = "po";  ///< po, xliff, xliff2 or csv
    std::string output;         ///< empty: standard output
    bool as_json = false;       ///< needs an output
};

int run_export(const export_options& options, std::ostream& out);

struct import_options {
    std::string file;
    std::string locale;     ///< empty: that of the file
    std::string reference;  ///< empty: that of the file, or en
    std::string catalog;    ///< empty: that of the file, or messages
    std::string output;
    bool with_sources = false;
    bool as_json = false;  ///< needs an output
};

/// Each message or part of one that a catalog cannot hold is named on `errors` with its line, and
/// the exit code is 1.
int run_import(const import_options& options, std::ostream& out, std::ostream& errors);

}  // namespace tova_programs::xmc
