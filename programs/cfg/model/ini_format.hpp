/// @file
/// INI files, read as two widely used readers read them.
///
///     const ini_reading read = read_ini(ini_dialect::configparser, bytes);
///     for (const foreign_value& each : read.values) ...
///
/// Never fails. A line that the reader rejects is listed, and reading goes on after it.
/// Functions without state.
#pragma once

#include "cfg/model/other_formats.hpp"

#include <cstddef>
#include <string>
#include <vector>

namespace tova_programs::cfg {

enum class ini_dialect {
    /// Python's configparser without interpolation. A comment is a line that begins with "#" or
    /// ";", a key ends at the first "=" or ":", and a line that is indented more than its key
    /// continues the value.
    configparser,
    /// The C library inih with its default settings: any indented line continues the value, " ;"
    /// starts a comment in a line, and a line is cut after 199 bytes.
    inih
};

/// "configparser" or "inih".
const char* name_of(ini_dialect dialect);

/// A line that the reader rejects.
struct ini_refusal {
    std::size_t line = 0;  ///< from 1
    std::string reason;
    bool is_duplicate = false;  ///< a section or key for the second time: an error only if strict
};

struct ini_reading {
    /// In the order of the file. A later value of the same path replaces an earlier one. The values
    /// of configparser's section DEFAULT come again at the end, for each section without them.
    std::vector<foreign_value> values;
    std::vector<ini_refusal> refusals;
};

/// A key as configparser stores it: in lower case, letters outside ASCII included.
std::string configparser_key(const std::string& name);

ini_reading read_ini(ini_dialect dialect, const std::string& bytes);

}  // namespace tova_programs::cfg
