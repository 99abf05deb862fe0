/// @file
/// What the file system says about a path.
///
/// Keeps no state: any number of threads may call these functions.
#pragma once

#include <tova/strings/ustring.hpp>

#include "detail/symbolic_link.hpp"

#include <sys/types.h>

namespace TOVA_2_18 {
namespace system {
namespace detail {

using TOVA_2_18::detail::is_symbolic_link;

/// Whether something exists at the path, links followed, with all the given bits in its mode.
bool has_mode_bits(const strings::ustring8& path, mode_t bits);

}  // namespace detail
}  // namespace system
}  // namespace TOVA_2_18
