/// @file
/// `tova-xmc coverage`: how complete each locale is.
#pragma once

#include "support/terminal.hpp"

#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace tova_programs::xmc {

/// One catalog in one locale. A message is own, or found through the fallback chain, or missing:
/// then no language shows it. In the columns of the output the chain includes what is own.
struct coverage_cell {
    std::string catalog;
    std::string locale;
    std::size_t total = 0;
    std::size_t own = 0;
    std::size_t through_chain = 0;
    std::vector<std::string> not_own;  ///< keys, in order
};

struct coverage_options {
    std::vector<std::string> paths;
    std::string reference = "en";
    bool requires_reference = false;    ///< whether it is an error that no catalog has it
    std::vector<std::string> minimums;  ///< LOCALE=PERCENT of own messages, `de=95` or `de=95%`
    std::string format = "table";       ///< table, csv, json or html
    std::string untranslated_in;        ///< list the messages that this locale has not itself
    std::string output;                 ///< empty: standard output
};

/// The keys that count are those of the reference locale; of a catalog without it, all. Messages of
/// the locale "." need no translation and count as own everywhere.
std::vector<coverage_cell> coverage(const coverage_options& options);

int run_coverage(const coverage_options& options, std::ostream& out, std::ostream& errors,
                 const style& colors);

/// The page: one file without any reference to another.
void write_coverage_page(std::ostream& out, const std::vector<coverage_cell>& cells);

}  // namespace tova_programs::xmc
