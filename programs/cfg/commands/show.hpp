/// @file
/// `tova-cfg show`, `get` and `explain`: what a program finds, and why.
#pragma once

#include "cfg/model/sources.hpp"
#include "support/terminal.hpp"

#include <ostream>
#include <string>

namespace tova_programs::cfg {

struct show_options {
    source_options sources;
    std::string below;  ///< only keys that begin with this path
    bool as_json = false;
};

/// Every effective setting with its place, its flags and what it hides.
int run_show(const show_options& options, std::ostream& out, std::ostream& errors,
             const style& colors);

struct get_options {
    source_options sources;
    std::string key;
    std::string otherwise;
    bool has_otherwise = false;
    bool as_json = false;
};

/// The value of one key; for an array, one element per line. The exit code is 1 if there is no
/// value.
int run_get(const get_options& options, std::ostream& out, std::ostream& errors);

struct explain_options {
    source_options sources;
    std::string key;
    bool as_json = false;
};

/// The lookup of one key, step by step.
int run_explain(const explain_options& options, std::ostream& out, std::ostream& errors,
                const style& colors);

}  // namespace tova_programs::cfg
