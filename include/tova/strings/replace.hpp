/// @file
/// Replacing parts of a string in place.
///
///     std::string text = "a&b";
///     tova::strings::replace_all(text, "&", "&amp;");  // 1, and text is "a&amp;b"
///
/// Threads may replace in different strings at the same time.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

#include <string>

namespace TOVA_2_18 {
namespace strings {

/// @name Replacing all occurrences
///
/// Replaces each occurrence of `search` in `text` by `replacement`, from the front, and returns the
/// number of replacements. What was inserted is not searched again. An empty `search` changes
/// nothing and returns 0 (`gh2::replace_all` differs here). Raises only what an allocation raises;
/// `text` is then unchanged.
/// @{
TOVA_API unsigned int replace_all(std::string& text, const std::string& search,
                                  const std::string& replacement);
TOVA_API unsigned int replace_all(std::wstring& text, const std::wstring& search,
                                  const std::wstring& replacement);
TOVA_API unsigned int replace_all(ustring8& text, const ustring8& search,
                                  const ustring8& replacement);
TOVA_API unsigned int replace_all(ustring16& text, const ustring16& search,
                                  const ustring16& replacement);
TOVA_API unsigned int replace_all(ustring32& text, const ustring32& search,
                                  const ustring32& replacement);
/// @}

}  // namespace strings
}  // namespace TOVA_2_18
