/// @file
/// The files that a program reads when it loads catalogs from paths.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tova_programs::xmc {

/// The files named, and of each folder those below it whose names end in .xmc or .xml, in any
/// letter case. Each once, in the order of the paths and sorted by name within one. Raises
/// `file_error` for a path that is neither a file nor a folder, and for a folder without such
/// files.
std::vector<std::string> catalog_files(const std::vector<std::string>& paths);

/// The same, but the reason of each such path is added to `failures`.
std::vector<std::string> catalog_files(const std::vector<std::string>& paths,
                                       std::vector<std::string>& failures);

/// The files below a folder whose names end in .xmc or .xml, sorted by name. There may be none.
std::vector<std::string> catalog_files_below(const std::string& folder);

/// Makes the folder of a file that is to be written, and those above it. Raises `file_error`.
void create_folder_of(const std::string& path);

bool has_catalog_extension(std::string_view path);

/// The path of an included file: a relative name starts from the folder of the file that includes
/// it.
std::string included_path(std::string_view includer, std::string_view name);

/// The same file has the same canonical path. A path that does not exist is its own.
std::string canonical_path(const std::string& path);

}  // namespace tova_programs::xmc
