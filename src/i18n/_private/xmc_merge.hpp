/// @file
/// The third stage of a load: which of several translations of a message is kept.
///
/// There are two rules, which differ on a tie. Within one load the first of two equally ranked
/// translations is kept; between loads the later one wins, so that one file can override another.
///
/// The functions keep no state of their own; the catalogs that they change belong to one thread.
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

// The messages that one load has read, by catalog name and key.
using read_catalogs = std::map<strings::ustring8, std::map<strings::ustring8, message_t>>;

// A set of catalogs by name.
using catalog_set = std::map<strings::ustring8, memory::pointers::shared_pointer<catalog_t>>;

// Stores a message whose locale has that weight, unless the message already stored under its key
// has the same weight or more. A stored nil message is replaced whatever its weight.
void keep_message(read_catalogs& catalogs, const locale_list& locales,
                  const strings::ustring8& catalog, const message_t& message, unsigned int weight);

// Merges what was read into a set and returns the number of messages stored. A message of the set
// is kept only if its locale, ranked by this list, weighs more than the new one's. Throws
// "unreferanced object" as a `char const*` for an entry of the set with an empty pointer.
unsigned long merge_catalogs(catalog_set& target, const read_catalogs& read,
                             const locale_list& locales);

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
