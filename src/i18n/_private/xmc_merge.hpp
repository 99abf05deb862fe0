/// @file
/// The third stage of a load: which of several translations of a message is kept.
///
/// There are two rules, which differ on a tie. Within one load the first of two equally ranked
/// translations is kept; between loads the later one wins, so that one file can override another.
///
/// The functions keep no state of their own; the catalogs that they change belong to one thread.
#pragma once

#include "i18n/_private/message_draft.hpp"
#include "i18n/_private/token_cursor.hpp"
#include "i18n/_private/xmc_grammar.hpp"
#include "i18n/locale_list.hpp"
#include <tova/i18n/catalog.hpp>
#include <tova/i18n/message.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/strings/ustring.hpp>

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

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

// The same for a draft, with the name and the locale of its catalog.
void keep_message(read_catalogs& catalogs, const locale_list& locales, const catalog_tag& catalog,
                  message_draft& draft, unsigned int weight);

// Merges what was read into a set and returns the number of messages stored. A message of the set
// is kept only if its locale, ranked by this list, weighs more than the new one's. Throws
// "unreferanced object" as a `char const*` for an entry of the set with an empty pointer.
unsigned long merge_catalogs(catalog_set& target, const read_catalogs& read,
                             const locale_list& locales);

// The bytes of a file and its tokens, which refer to them.
struct tokenized_file {
    strings::ustring8 bytes;
    parser::detail::flat_tokens tokens;
};

// Collects the messages of a load as they are read. Messages collected before an error remain, but
// the caller does not merge them.
class message_keeper {
public:
    virtual ~message_keeper() {}

    // Reads the message at the cursor. It belongs to the given catalog, whose locale has the given
    // weight.
    virtual void take(list_cursor& cursor, const catalog_tag& catalog, unsigned int weight) = 0;
    virtual void take(flat_cursor& cursor, const catalog_tag& catalog, unsigned int weight) = 0;

    // Called after a file was read to its end without an error. The file is destroyed unless this
    // call keeps it.
    virtual void retain(std::unique_ptr<tokenized_file>) {}
};

// Builds each message immediately and keeps the best one for each key.
class instant_keeper : public message_keeper {
public:
    instant_keeper(read_catalogs& catalogs, const locale_list& locales)
        : m_catalogs(catalogs), m_locales(locales) {}

    void take(list_cursor& cursor, const catalog_tag& catalog, unsigned int weight) override;
    void take(flat_cursor& cursor, const catalog_tag& catalog, unsigned int weight) override;

private:
    template <typename Cursor>
    void take_any(Cursor& cursor, const catalog_tag& catalog, unsigned int weight);

    read_catalogs& m_catalogs;
    const locale_list& m_locales;
    message_draft m_draft;
};

// Only checks messages and records their positions. They are built when they are merged, and then
// only the best one for each key. The results are the same as with an `instant_keeper` and
// `merge_catalogs`.
class late_keeper : public message_keeper {
public:
    explicit late_keeper(const locale_list& locales) : m_locales(locales), m_last(nullptr) {}

    // A list of tokens isn't retained, so its messages are only checked.
    void take(list_cursor& cursor, const catalog_tag& catalog, unsigned int weight) override;
    void take(flat_cursor& cursor, const catalog_tag& catalog, unsigned int weight) override;
    void retain(std::unique_ptr<tokenized_file> file) override;

    // Called once, after all files.
    void merge_into(catalog_set& target);

private:
    // A message that was read. Its key, locale and position refer to a file that is retained.
    struct found_message {
        std::uint64_t order;  // of the key, by eight of its bytes
        piece key;
        piece locale;
        flat_cursor place;
        unsigned int weight;
        bool is_nil;
    };
    using found_messages = std::vector<found_message>;

    static void sort_by_key(found_messages& all);
    static bool is_key_before(const found_message& a, const found_message& b);
    void merge_message(catalog_t& catalog, const found_message& found, bool is_last);
    void write_message(catalog_t& catalog, message_t& message, const found_message& found);

    const locale_list& m_locales;
    std::vector<std::unique_ptr<tokenized_file>> m_files;
    std::map<strings::ustring8, found_messages> m_catalogs;
    piece m_last_name;  // of the catalog whose messages were added last
    found_messages* m_last;
    message_draft m_draft;
};

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
