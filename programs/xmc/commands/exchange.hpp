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
    bool as_json = false;
};

int run_export(const export_options& options, std::ostream& out);

struct import_options {
    std::vector<std::string> paths;
    std::string locale;     ///< empty: that of each file
    std::string reference;  ///< empty: that of each file, or en
    std::string catalog;    ///< empty: that of each file, or messages
    std::string output;     ///< a folder, if there is more than one file
    bool with_sources = false;
    bool as_json = false;
};

/// One file becomes one catalog file. Several files, or a folder of them, become a catalog file
/// each, with the same name, in the folder `output`; the sources of all are one file there, named
/// after the reference.
///
/// Each message or part of one that a catalog cannot hold is named on `errors` with its line, and
/// the exit code is 1.
int run_import(const import_options& options, std::ostream& out, std::ostream& errors);

}  // namespace tova_programs::xmc
