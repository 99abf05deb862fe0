/// @file
/// `tova-xmc import`: what translators return, and PO files of other programs, as catalogs.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace tova_programs::xmc {

struct import_options {
    std::vector<std::string> paths;
    std::string locale;     ///< empty: that of each file
    std::string reference;  ///< empty: that of each file, or en
    std::string catalog;    ///< empty: that of each file or its folders, or messages
    std::string output;     ///< empty: standard output
    bool with_sources = false;
    bool is_c_format = false;  ///< entries of PO files without any format flag are C formats
    bool as_json = false;
};

/// One file becomes one catalog file if `output` names one. Otherwise `output` is a folder, and
/// each file becomes a catalog file there: `NAME.xmc`, or `CATALOG/LOCALE.xmc` where the folders of
/// the file name them. The sources of all files of a folder are one file there, named after the
/// reference. No file is written if two would have the same name.
///
/// Each message or part of one that a catalog cannot hold is listed on `errors` with its line,
/// equal ones once, and the exit code is 1.
int run_import(const import_options& options, std::ostream& out, std::ostream& errors);

}  // namespace tova_programs::xmc
