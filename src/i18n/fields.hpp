/// @file
/// Access to the private fields of messages and catalogs for the loader, which fills them in place.
///
/// The exported operations copy their arguments, so a loaded message would be copied several times
/// on its way into a catalog. The functions have no state; an object belongs to one thread.
#pragma once

#include <tova/i18n/catalog.hpp>
#include <tova/i18n/message.hpp>
#include <tova/i18n/message_item.hpp>
#include <tova/strings/ustring.hpp>

#include <map>
#include <set>
#include <vector>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

struct message_fields {
    static strings::ustring8& name(message_t& message) { return message.m_name; }
    static std::vector<message_item>& items(message_t& message) { return message.m_items; }
    static strings::ustring8& orginal_locale(message_t& message) {
        return message.m_orginal_locale;
    }
    static strings::ustring8& meta(message_t& message) { return message.m_meta; }
};

struct catalog_fields {
    static std::set<strings::ustring8>& languages(catalog_t& catalog) {
        return catalog.m_languages;
    }
    static std::map<strings::ustring8, message_t>& messages(catalog_t& catalog) {
        return catalog.m_messages;
    }
};

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
