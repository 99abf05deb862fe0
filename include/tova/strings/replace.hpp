/// Replacing text in place.
#pragma once

#include <string>

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace strings {

/// Puts `replacement` for each `search` in `text`, from the front, and returns the number of
/// replacements. Replaced text is not searched again. An empty `search` changes nothing and gives 0
/// (`gh2::replace_all` differs here).
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

}  // namespace strings
}  // namespace TOVA_2_18
