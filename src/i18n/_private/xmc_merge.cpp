#include "i18n/_private/xmc_merge.hpp"

#include <tova/types/nil.hpp>

#include "i18n/fields.hpp"
#include "parser/equal_bytes.hpp"

#include <algorithm>
#include <cstring>
#include <tuple>
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

// Locales are ranked only when there are two to compare: most keys occur once.
bool gives_way(const message_t& present, const locale_list& locales, unsigned int weight) {
    return present == types::nil || locale_weight(locales, present._orginal_locale()) < weight;
}

bool are_equal(piece a, piece b) {
    return a.size == b.size && parser::detail::have_equal_bytes(a.data, b.data, a.size);
}

}  // namespace

void keep_message(read_catalogs& catalogs, const locale_list& locales, const ustring8& catalog,
                  const message_t& message, unsigned int weight) {
    message_t& entry = catalogs[catalog][message.name()];
    if (gives_way(entry, locales, weight))
        entry = message;
}

void keep_message(read_catalogs& catalogs, const locale_list& locales, const catalog_tag& catalog,
                  message_draft& draft, unsigned int weight) {
    message_t& entry = catalogs[catalog.name.string()][draft.key.string()];
    if (gives_way(entry, locales, weight))
        draft.write(entry, catalog.locale);
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

// --- Messages made immediately ------------------------------------------------------------------

template <typename Cursor>
void instant_keeper::take_any(Cursor& cursor, const catalog_tag& catalog, unsigned int weight) {
    read_message(cursor, &m_draft);
    keep_message(m_catalogs, m_locales, catalog, m_draft, weight);
}

void instant_keeper::take(list_cursor& cursor, const catalog_tag& catalog, unsigned int weight) {
    take_any(cursor, catalog, weight);
}

void instant_keeper::take(flat_cursor& cursor, const catalog_tag& catalog, unsigned int weight) {
    take_any(cursor, catalog, weight);
}

// --- Messages made when they are merged ---------------------------------------------------------

void late_keeper::take(list_cursor& cursor, const catalog_tag&, unsigned int) {
    read_message(cursor, nullptr);
}

void late_keeper::take(flat_cursor& cursor, const catalog_tag& catalog, unsigned int weight) {
    const flat_cursor place = cursor;
    const message_outline outline = read_message(cursor, nullptr);
    if (m_last == nullptr || !are_equal(m_last_name, catalog.name)) {
        m_last = &m_catalogs[catalog.name.string()];
        m_last_name = catalog.name;
    }
    m_last->push_back({0, outline.key, catalog.locale, place, weight, outline.is_nil});
}

void late_keeper::retain(std::unique_ptr<tokenized_file> file) {
    m_files.push_back(std::move(file));
}

bool late_keeper::is_key_before(const found_message& a, const found_message& b) {
    if (a.order != b.order)
        return a.order < b.order;
    const int difference = std::memcmp(a.key.data, b.key.data, std::min(a.key.size, b.key.size));
    return difference != 0 ? difference < 0 : a.key.size < b.key.size;
}

// Keys often begin with the same bytes. The eight bytes after these are compared as one big-endian
// number, in which NUL bytes follow the end of a key.
void late_keeper::sort_by_key(found_messages& all) {
    const piece first = all.front().key;
    std::size_t common = first.size;
    for (const found_message& one : all) {
        common = std::min(common, one.key.size);
        const char* const end = first.data + common;
        common = static_cast<std::size_t>(std::mismatch(first.data, end, one.key.data).first -
                                          first.data);
    }
    for (found_message& one : all) {
        unsigned char bytes[8] = {};
        std::memcpy(bytes, one.key.data + common, std::min<std::size_t>(8, one.key.size - common));
        for (const unsigned char byte : bytes)
            one.order = one.order << 8 | byte;
    }
    std::stable_sort(all.begin(), all.end(), is_key_before);
}

// Messages with the same key are adjacent, in the order in which they were read. The rule of
// `keep_message` chooses among them.
void late_keeper::merge_into(catalog_set& target) {
    for (auto& source : m_catalogs) {
        catalog_t& catalog = find_or_add(target, source.first);
        catalog._name(source.first);
        found_messages& all = source.second;
        sort_by_key(all);
        const bool is_new = catalog_fields::messages(catalog).empty();
        for (auto next = all.begin(); next != all.end();) {
            const found_message* best = &*next;
            for (++next; next != all.end() && are_equal(next->key, best->key); ++next)
                if (best->is_nil || best->weight < next->weight)
                    best = &*next;
            merge_message(catalog, *best, is_new);
        }
    }
}

// Follows the rule of `merge_catalogs`. If the message sorts after all others of its catalog, there
// is nothing to compare with.
void late_keeper::merge_message(catalog_t& catalog, const found_message& found, bool is_last) {
    auto& messages = catalog_fields::messages(catalog);
    const auto add = [&](std::map<ustring8, message_t>::iterator before) {
        const auto added = messages.emplace_hint(
            before, std::piecewise_construct, std::forward_as_tuple(found.key.data, found.key.size),
            std::tuple<>());
        write_message(catalog, added->second, found);
    };
    if (is_last)
        return add(messages.end());
    const ustring8 key = found.key.string();
    const auto place = messages.lower_bound(key);
    if (place == messages.end() || place->first != key)
        add(place);
    else if (place->second == types::nil ||
             locale_weight(m_locales, place->second._orginal_locale()) <= found.weight)
        write_message(catalog, place->second, found);
}

void late_keeper::write_message(catalog_t& catalog, message_t& message,
                                const found_message& found) {
    catalog_fields::languages(catalog).clear();
    flat_cursor cursor = found.place;
    read_message(cursor, &m_draft);
    m_draft.write(message, found.locale);
}

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
