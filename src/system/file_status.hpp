// What the file system tells about a path.
#pragma once

#include <sys/types.h>

#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace system {
namespace detail {

// Whether the last component of the path is a symbolic link. A missing file is none; raises
// `boost::filesystem::filesystem_error` if the question cannot be answered.
bool is_symbolic_link(const strings::ustring8& path);

// Whether there is something at the path, links followed, with all the given bits in its mode.
bool has_mode_bits(const strings::ustring8& path, mode_t bits);

}  // namespace detail
}  // namespace system
}  // namespace TOVA_2_18
