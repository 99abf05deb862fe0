/// @file
/// Locale names and the list that ranks them.
///
/// A load requests one locale and accepts more general ones as well. The list holds all of them,
/// from the least to the most specific: "de_AT" makes ".", "en", "de", "de_AT". The position of a
/// locale in the list, counted from 1, is its weight. Of several translations of a message, the one
/// whose locale weighs the most is kept.
///
/// Plain functions without state: any number of threads may call them.
#pragma once

#include <tova/strings/ustring.hpp>

#include <vector>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

using locale_list = std::vector<strings::ustring8>;

// The form in which locales are compared: every "." and "-" becomes "_".
//
// Contract: a one-byte name is returned unchanged. "." marks messages that belong to no locale and
// would otherwise turn into "_".
strings::ustring8 normalized_locale(const strings::ustring8& name);

// Appends the requested locale, preceded by "." and "en" and by each of its prefixes: "de_DE.UTF-8"
// appends ".", "en", "de", "de_DE", "de_DE_UTF", "de_DE_UTF_8". An empty name appends only the
// first two. The list isn't cleared.
void append_wanted_locale(locale_list& list, const strings::ustring8& wanted);

// The position, counted from 1, of the first entry that equals the normalized name; 0 if there is
// none.
unsigned int locale_weight(const locale_list& list, const strings::ustring8& name);

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
