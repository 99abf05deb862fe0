/// Text helpers on plain `std::string` and on raw UTF-8 bytes.
#pragma once

#include <iosfwd>
#include <string>

#include <tova/abi.hpp>

namespace TOVA_2_18 {
namespace strings {
namespace gh2 {

/// The narrow standard streams `std::cin`, `std::cout` and `std::cerr`, bound from load time on, so
/// that the static objects of a program may use them.
extern TOVA_API std::istream& ucin;
extern TOVA_API std::ostream& ucout;
extern TOVA_API std::ostream& ucerr;

/// As `strings::to_lower` and `strings::to_upper` for 8-bit text.
TOVA_API std::string tolower(const std::string& text);
TOVA_API std::string toupper(const std::string& text);

/// From UTF-8 to the character set of the process's current locale, and back. Raises what
/// `code_page::encode` and `code_page::as_utf8` raise.
TOVA_API std::string to_ansi(const std::string& text);
TOVA_API std::string from_ansi(const std::string& text);

/// As `strings::replace_all`, but never returns for an empty `search`: the text then grows by
/// `replacement` until memory runs out, or the loop goes on for ever if that is empty too. Keep
/// empty searches away from it.
TOVA_API unsigned int replace_all(std::string& text, const std::string& search,
                                  const std::string& replacement);

/// The number of bytes, 1 to 4, that the first byte announces. Answers 0 for no text (a null
/// pointer or a `size` of 0) and for a byte that begins no sequence. The bytes behind it are not
/// looked at.
TOVA_API unsigned long get_utf8_length(const char* text, unsigned long size);
TOVA_API unsigned long get_utf8_length(const unsigned char* text, unsigned long size);

/// Whether the `size` bytes at `text` begin with a complete UTF-8 sequence. Only that one sequence
/// is looked at: a whole text is checked by walking it with `get_utf8_length`. Overlong forms and
/// surrogate values pass. Answers false for no text.
TOVA_API bool validate_utf8(const char* text, unsigned long size);
TOVA_API bool validate_utf8(const unsigned char* text, unsigned long size);

}  // namespace gh2
}  // namespace strings
}  // namespace TOVA_2_18
