/// @file
/// The third stage of a load: which of several translations of a message is kept.
///
/// Two rules that differ on a tie. Within one load the first of two equals stays; between loads the
/// later one wins, so that a program can load a file over another.
///
/// Functions without state of their own: the catalogs that they change belong to one thread.
#pragma once

#include "i18n/locale_list.hpp"
#include <tova/i18n/catalog.hpp>
#include <tova/i18n/message.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/strings/ustring.hpp>

#include <map>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

// What one load has read: messages by catalog name and key.
using read_catalogs = std::map<strings::ustring8, std::map<strings::ustring8, message_t>>;

// A set of catalogs, by name.
using catalog_set = std::map<strings::ustring8, memory::pointers::shared_pointer<catalog_t>>;

// Stores a message, whose locale has that weight, unless the one stored under its key weighs as
// much or more. A stored message that is nil gives way whatever it weighs.
void keep_message(read_catalogs& catalogs, const locale_list& locales,
                  const strings::ustring8& catalog, const message_t& message, unsigned int weight);

// Merges what was read into a set and returns the number of messages stored. A message of the set
// stays only if its locale, ranked by this list, weighs more than the new one's. Throws
// "unreferanced object" as a `char const*` for an entry of the set with an empty pointer.
unsigned long merge_catalogs(catalog_set& target, const read_catalogs& read,
                             const locale_list& locales);

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
