/// @file
/// The tests for files that are not opened. Several families refuse a file whose name is a symbolic
/// link, or a pipe. The tests are here, below all of them, because the stream parser must not
/// depend on `system`.
///
/// Keeps no state: any number of threads may call them.
#pragma once

#include <string>

namespace TOVA_2_18 {
namespace detail {

/// Whether the last component of the path is a symbolic link. A missing file is not one. Raises
/// `boost::filesystem::filesystem_error` if the status of the path cannot be read.
bool is_symbolic_link(const std::string& path);

/// Whether the path is a pipe, links followed. Opening one for reading blocks until a writer opens
/// it, perhaps forever. Never fails.
bool is_pipe(const std::string& path);

}  // namespace detail
}  // namespace TOVA_2_18
