#include "i18n/_private/xmc_merge.hpp"

#include <tova/types/nil.hpp>

#include <utility>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

using strings::ustring8;

namespace {

// The heap mark lets the last holder delete the catalog.
catalog_t* new_catalog() {
    catalog_t* const catalog = new catalog_t;
    catalog->allocated = true;
    return catalog;
}

catalog_t& find_or_add(catalog_set& set, const ustring8& name) {
    auto entry = set.find(name);
    if (entry == set.end()) {
        const memory::pointers::shared_pointer<catalog_t> added(new_catalog());
        entry = set.insert(std::make_pair(name, added)).first;
    }
    if (!entry->second)
        throw "unreferanced object";
    return *entry->second;
}

}  // namespace

void keep_message(read_catalogs& catalogs, const locale_list& locales, const ustring8& catalog,
                  const message_t& message, unsigned int weight) {
    // Locales are ranked only when there are two to compare: most keys occur once.
    message_t& entry = catalogs[catalog][message.name()];
    if (entry == types::nil || locale_weight(locales, entry._orginal_locale()) < weight)
        entry = message;
}

unsigned long merge_catalogs(catalog_set& target, const read_catalogs& read,
                             const locale_list& locales) {
    unsigned long stored = 0;
    for (const auto& source : read) {
        catalog_t& catalog = find_or_add(target, source.first);
        catalog._name(source.first);
        for (const auto& keyed : source.second) {
            // Contract: both locales are ranked by the list of this load, even if the stored
            // message comes from an earlier load for another locale.
            const message_t& present = catalog.message(keyed.first);
            const message_t& offered = keyed.second;
            if (!(present == types::nil) && locale_weight(locales, present._orginal_locale()) >
                                                locale_weight(locales, offered._orginal_locale()))
                continue;
            // Contract: on a tie the message loaded later wins, unlike within one load.
            catalog.message(keyed.first, offered);
            ++stored;
        }
    }
    return stored;
}

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
