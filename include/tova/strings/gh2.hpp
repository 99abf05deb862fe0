/// @file
/// String helpers for plain `std::string` and for raw UTF-8 bytes.
///
/// A whole string is checked by walking it:
///
///     namespace gh2 = tova::strings::gh2;
///     std::size_t at = 0;
///     while (at < size && gh2::validate_utf8(bytes + at, size - at))
///         at += gh2::get_utf8_length(bytes + at, size - at);
///     const bool valid = at == size;
///
/// The functions keep no state, and any number of threads may call them. The standard streams are
/// shared as `std::cin` and `std::cout` are.
#pragma once

#include <tova/abi.hpp>

#include <iosfwd>
#include <string>

namespace TOVA_2_18 {
namespace strings {
namespace gh2 {

/// The narrow standard streams `std::cin`, `std::cout` and `std::cerr`, bound from load time on, so
/// that the static objects of a program may use them.
extern TOVA_API std::istream& ucin;
extern TOVA_API std::ostream& ucout;
extern TOVA_API std::ostream& ucerr;

/// Returns a copy with each byte mapped, as `strings::to_lower` and `strings::to_upper` map it.
/// Never fails.
TOVA_API std::string tolower(const std::string& text);
TOVA_API std::string toupper(const std::string& text);

/// Converts from UTF-8 to the character set of the process's current locale, or back. Raises what
/// `code_page::encode` and `code_page::as_utf8` raise.
TOVA_API std::string to_ansi(const std::string& text);
TOVA_API std::string from_ansi(const std::string& text);

/// Replaces each occurrence of `search` as `strings::replace_all` does, but never returns for an
/// empty `search`: the string grows by
/// `replacement` until memory runs out, or the loop runs for ever if that is empty too. Don't pass
/// an empty `search`.
TOVA_API unsigned int replace_all(std::string& text, const std::string& search,
                                  const std::string& replacement);

/// The number of bytes, 1 to 4, that the first byte announces. Returns 0 for no bytes (a null
/// pointer or a `size` of 0) and for a byte that begins no sequence. The bytes after the first are
/// not read.
TOVA_API unsigned long get_utf8_length(const char* text, unsigned long size);
TOVA_API unsigned long get_utf8_length(const unsigned char* text, unsigned long size);

/// Whether the `size` bytes at `text` begin with a complete UTF-8 sequence. Only that one sequence
/// is checked, by its structure: overlong forms and surrogate values pass. Returns false for no
/// bytes.
TOVA_API bool validate_utf8(const char* text, unsigned long size);
TOVA_API bool validate_utf8(const unsigned char* text, unsigned long size);

}  // namespace gh2
}  // namespace strings
}  // namespace TOVA_2_18
