/// @file
/// Checks for files that must not be opened. Several families reject a file if its name is a
/// symbolic link or a pipe. The checks are here, below all of these families, because the stream
/// parser must not depend on `system`.
///
/// Keeps no state: any number of threads may call them.
#pragma once

#include <string>

namespace TOVA_2_18 {
namespace detail {

/// Whether the last component of the path is a symbolic link. A missing file is not one. Raises
/// `boost::filesystem::filesystem_error` if the status of the path cannot be read.
bool is_symbolic_link(const std::string& path);

/// Whether the path, after following links, is a pipe. Opening a pipe for reading blocks until a
/// writer opens it, possibly forever. Never fails.
bool is_pipe(const std::string& path);

}  // namespace detail
}  // namespace TOVA_2_18
