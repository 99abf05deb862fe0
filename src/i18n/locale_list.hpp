/// @file
/// Locale names and the list that ranks them.
///
/// A load wants one locale and accepts the more general ones as well. The list holds all of them,
/// from the least to the most specific: "de_AT" makes ".", "en", "de", "de_AT". The place of a
/// locale in the list, from 1, is its weight. Of several translations of a message the one whose
/// locale weighs most is kept.
///
/// Plain functions without state: threads need no lock of ours.
#pragma once

#include <tova/strings/ustring.hpp>

#include <vector>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

using locale_list = std::vector<strings::ustring8>;

// The form in which locales are compared: every "." and "-" becomes "_".
//
// Contract: a name of one byte is returned as it is. "." marks messages that belong to no locale
// and would otherwise turn into "_".
strings::ustring8 normalized_locale(const strings::ustring8& name);

// Appends the wanted locale, preceded by "." and "en" and by each of its prefixes: "de_DE.UTF-8"
// appends ".", "en", "de", "de_DE", "de_DE_UTF", "de_DE_UTF_8". An empty name appends the first two
// alone. The list isn't cleared.
void append_wanted_locale(locale_list& list, const strings::ustring8& wanted);

// The place, from 1, of the first entry that equals the normalized name; 0 if there is none.
unsigned int locale_weight(const locale_list& list, const strings::ustring8& name);

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
