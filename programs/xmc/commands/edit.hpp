/// @file
/// `tova-xmc fmt`, `diff`, `merge` and `pseudo`: commands that write or compare catalogs.
#pragma once

#include "support/terminal.hpp"

#include <ostream>
#include <string>
#include <vector>

namespace tova_programs::xmc {

struct fmt_options {
    std::vector<std::string> paths;
    bool checks = false;  ///< only say which files would change
    bool shows = false;   ///< write the result to standard output
    bool as_json = false;
};

int run_fmt(const fmt_options& options, std::ostream& out, std::ostream& errors);

struct diff_options {
    std::string before;
    std::string after;
    bool as_json = false;
};

/// Compares the messages, whatever files they are in and however they are written. The exit code is
/// 1 if there is a difference.
int run_diff(const diff_options& options, std::ostream& out, const style& colors);

struct merge_options {
    std::vector<std::string> paths;
    std::string output;  ///< empty: standard output
    std::string prefer;  ///< first, last, or empty: a conflict is an error
    bool as_json = false;
};

int run_merge(const merge_options& options, std::ostream& out, std::ostream& errors);

struct pseudo_options {
    std::vector<std::string> paths;
    std::string from = "en";
    std::string to = "en_XA";
    std::string output;
    bool as_json = false;
};

/// A translation into accented, longer English, which shows texts that are not translated, cut off
/// or put together in code.
int run_pseudo(const pseudo_options& options, std::ostream& out);

/// The text in the pseudo-locale, without the brackets around a message.
std::string pseudo_text(const std::string& text);

}  // namespace tova_programs::xmc
