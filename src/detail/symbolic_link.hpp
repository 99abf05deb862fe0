/// @file
/// The test for symbolic links. Several families refuse a file whose name is a symbolic link. The
/// test is here, below all of them, because the stream parser must not depend on `system`.
///
/// Keeps no state: any number of threads may call it.
#pragma once

#include <string>

namespace TOVA_2_18 {
namespace detail {

/// Whether the last component of the path is a symbolic link. A missing file is not one. Raises
/// `boost::filesystem::filesystem_error` if the status of the path cannot be read.
bool is_symbolic_link(const std::string& path);

}  // namespace detail
}  // namespace TOVA_2_18
