/// @file
/// Messages as a table, for people who translate in a spreadsheet.
///
/// The columns are catalog, key, locale, reference, note, source, target, target note, format
/// and two of definitions. `source` and `target` have `{name}` for arguments where `format` says
/// so; what a name means is in the definitions, a line for each. Lines and fields are those of RFC
/// 4180.
///
/// The functions are pure.
#pragma once

#include "xmc/exchange/exchange.hpp"

#include <string>

namespace tova_programs::xmc {

std::string csv_text(const exchange& all);

struct csv_defaults {
    std::string catalog = "messages";  ///< of a table without such a column
    std::string locale;
    std::string reference = "en";
};

/// Reads a table. Its columns have any order; `key` and `target` must be there. Raises `file_error`
/// for what is no such table.
imported read_csv(const std::string& bytes, const std::string& path, const csv_defaults& defaults);

}  // namespace tova_programs::xmc
