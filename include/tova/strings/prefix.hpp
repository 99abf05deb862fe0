/// @file
/// Testing for a prefix at a position.
///
///     tova::strings::begin_with("application.name", 12, "name")  // true
///
/// A pure function; any number of threads may call it.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace strings {

/// Whether `text` continues with `prefix` from the byte at `position` on.
///
/// An empty prefix is found at every position up to and including the size, and no prefix is found
/// past it. Never fails.
TOVA_API bool begin_with(const ustring8& text, const unsigned long& position,
                         const ustring8& prefix);

}  // namespace strings
}  // namespace TOVA_2_18
