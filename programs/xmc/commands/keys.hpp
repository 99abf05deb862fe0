/// @file
/// `tova-xmc keys` and `scan`: the keys of catalogs, and their use in sources.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace tova_programs::xmc {

struct keys_options {
    std::vector<std::string> paths;
    bool as_header = false;  ///< C++ constants instead of a list
    bool as_json = false;
    std::string name_space = "messages";
};

int run_keys(const keys_options& options, std::ostream& out);

/// The identifier of a constant: every byte that cannot be in one becomes "_".
std::string identifier_of(const std::string& key);

struct scan_options {
    std::vector<std::string> sources;  ///< files and folders of C++ code
    std::vector<std::string> paths;    ///< catalogs
    std::vector<std::string> functions = {"message", "has_message"};
    bool as_json = false;
};

/// Compares the calls `message("catalog", "key")` in sources with the catalogs: keys that are used
/// but absent, and keys that no string literal of the sources names. The exit code is 1 if there
/// are any. Literals in a row are one. A key that is an expression with a literal is listed as
/// computed, and the keys that begin with its first literal count as used.
int run_scan(const scan_options& options, std::ostream& out);

}  // namespace tova_programs::xmc
