/// @file
/// How the loader chooses among locales.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tova_programs::xmc {

/// The locale as the loader compares it: "." and "-" become "_", unless it is one character.
std::string normalized_locale(std::string_view locale);

/// The locales that a load for the wanted one reads, the most general first: `de_AT` reads ".",
/// "en", "de" and "de_AT".
std::vector<std::string> locale_chain(std::string_view wanted);

/// The position in a chain, from 1; 0 for a locale that is not read.
unsigned int locale_weight(const std::vector<std::string>& chain, std::string_view locale);

/// Whether the locale is written as programs ask for it: "." or `de`, `de_AT`, `zh_Hans_TW`,
/// `sr@latin`.
bool is_usual_locale(std::string_view locale);

}  // namespace tova_programs::xmc
