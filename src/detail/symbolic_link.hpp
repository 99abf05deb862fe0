/// @file
/// The one question about links that several families ask: they refuse a file whose name is a
/// symbolic link. It is below all of them, as the stream parser must not depend on `system`.
///
/// Keeps no state: any number of threads may call it.
#pragma once

#include <string>

namespace TOVA_2_18 {
namespace detail {

/// Whether the last component of the path is a symbolic link. A missing file is none. Raises
/// `boost::filesystem::filesystem_error` if the file system cannot tell.
bool is_symbolic_link(const std::string& path);

}  // namespace detail
}  // namespace TOVA_2_18
