/// Comparing a part of a text with what it should begin with.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace strings {

/// Whether `prefix` stands in `text` at the byte `position`. An empty prefix stands at each
/// position up to and including the size; no prefix stands behind that.
TOVA_API bool begin_with(const ustring8& text, const unsigned long& position,
                         const ustring8& prefix);

}  // namespace strings
}  // namespace TOVA_2_18
