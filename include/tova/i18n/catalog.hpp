/// A catalog: a named map from key to message.
#pragma once

#include <map>
#include <set>

#include <tova/abi.hpp>
#include <tova/generic/abilities.hpp>
#include <tova/i18n/message.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/nil.hpp>

namespace TOVA_2_18 {
namespace i18n {

/// A catalog: a named map from key to message, in the byte order of the keys.
///
/// Catalogs are shared through `memory::pointers::shared_pointer<catalog_t>`, by a count that is
/// not atomic. The set of locales is a cache that const operations fill, so a catalog and all that
/// share it belong to one thread at a time.
class TOVA_API catalog_t : public generic::abilities::reference_count_pointer_ability<catalog_t> {
public:
    typedef std::map<strings::ustring8, message_t>::const_iterator const_iterator;
    typedef std::set<strings::ustring8>::const_iterator language_iterator;

    /// An empty catalog without a name, neither held nor marked as made on the heap.
    catalog_t();

    /// A copy of name, locales and messages that nobody holds yet.
    catalog_t(catalog_t const& other);

    ~catalog_t() TOVA_NOTHROW;

    void _name(strings::ustring8 const& value);
    strings::ustring8 name() const;

    /// Stores a message under a key, in place of one that the key had. The set of locales is
    /// forgotten and made again when it is asked for.
    void message(strings::ustring8 const& key, message_t const& msg);

    /// The message of exactly that key, or `m_nil_message` when there is none. The reference holds
    /// until the key's message is replaced or the catalog goes. Never fails.
    message_t const& message(strings::ustring8 const& key) const;
    message_t const& message(strings::ustring16 const& key) const;
    message_t const& message(strings::ustring32 const& key) const;

    /// Whether exactly that key is stored, be it with a nil message.
    bool has_message(strings::ustring8 const& key) const;
    bool has_message(strings::ustring16 const& key) const;
    bool has_message(strings::ustring32 const& key) const;

    /// Whether a message of that locale is stored.
    ///
    /// Contract: "." and "-" of the locale asked for are read as "_", and the stored ones are
    /// taken as they stand. So en-US, en.US and en_US find a stored en_US, nothing finds a stored
    /// en-US, and the locale "." isn't found here either.
    bool is_language_loaded(strings::ustring8 const& locale) const;
    bool is_language_loaded(strings::ustring16 const& locale) const;
    bool is_language_loaded(strings::ustring32 const& locale) const;

    /// The number of messages.
    unsigned long size() const;

    /// The messages in the order of their keys.
    const_iterator begin() const;
    const_iterator end() const;

    /// The locales of the messages, in byte order and each once. The empty text is a locale like
    /// any other. Iterators hold until a message is stored or the catalog is assigned.
    language_iterator languages_begin() const;
    language_iterator languages_end() const;

    /// Adds the locale of every message to the set of locales, without clearing the set before.
    void gen_lang_set() const;

    /// Copies name, locales and messages; the count and the heap mark of both sides stay.
    catalog_t& operator=(catalog_t const& other);
    catalog_t& assign(catalog_t const& other);

    /// Empties name, locales and messages.
    catalog_t& operator=(types::nil_t const& nil);
    catalog_t& assign(types::nil_t const& nil);

    /// Whether name, locales and messages are empty.
    bool operator==(types::nil_t const& nil) const;
    bool operator!=(types::nil_t const& nil) const;
    bool equal(types::nil_t const& nil) const;

    /// What a failed lookup gives, by reference: a nil message, which renders as the empty text.
    /// Built while the library loads, from nothing that is built later, and never written: other
    /// static objects may use it, but lookups belong behind the load of the library.
    static message_t m_nil_message;

private:
    strings::ustring8 m_name;
    mutable std::set<strings::ustring8> m_languages;  // empty: not made yet
    std::map<strings::ustring8, message_t> m_messages;
};

}  // namespace i18n

extern template class memory::pointers::shared_pointer<i18n::catalog_t>;
extern template class generic::abilities::reference_count_pointer_ability<i18n::catalog_t>;

}  // namespace TOVA_2_18
