/// @file
/// Likely mistakes in a settings file.
#pragma once

#include "cfg/model/ini_format.hpp"
#include "cfg/model/schema.hpp"
#include "cfg/scanner/document.hpp"
#include "support/findings.hpp"

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tova_programs::cfg {

/// The findings in one file, with their places. Without a schema, or with an empty one, any key is
/// known.
std::vector<finding> lint(const document& file, const schema& declared);

/// Required keys that none of the files sets. The findings name the first file.
std::vector<finding> lint_required(const std::vector<std::string>& paths,
                                   const std::set<std::string>& keys, const schema& declared);

/// What a save would do to the file.
std::vector<finding> lint_save(const document& file);

/// What the reader that the file was written for reads differently, and the lines that it rejects.
std::vector<finding> lint_written_for(const document& file, ini_dialect dialect);

/// Aliases of a schema that form a cycle.
std::vector<finding> lint_schema(const schema& declared, const std::string& path);

/// A part of a file for the message of a finding: in quotes, on one line, and not too long.
std::string quoted(std::string_view text);

}  // namespace tova_programs::cfg
