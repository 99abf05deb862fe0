/// @file
/// Messages as the library renders them, with values that are typical of their arguments.
///
///     const auto message = library_message(file, each);
///     const std::string text = message.as_string(samples_for(message, "en"));
///
/// Functions without state.
#pragma once

#include <tova/generic/varg_list.hpp>
#include <tova/i18n/message.hpp>

#include "xmc/model/document.hpp"

#include <string>

namespace tova_programs::xmc {

/// What the library shows for an argument that it cannot format.
constexpr const char invalid_item[] = "?invalid?";

/// The message that the loader makes of an element. A document with errors has messages, too.
tova::i18n::message_t library_message(const document& file, const message& of);

/// A value for each argument that is typical of its type; a string argument shows its own name. In
/// a plural form, such as `files.few`, the first whole number is one of that form in the locale.
tova::generic::varg_list samples_for(const tova::i18n::message_t& message,
                                     const std::string& locale);

/// Why the library shows an item as ?invalid?. The empty string for one that it shows.
std::string reason_for_invalid(const tova::i18n::message_item& item,
                               const tova::generic::varg_list& values);

}  // namespace tova_programs::xmc
