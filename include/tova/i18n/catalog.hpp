/// @file
/// A catalog: a named map from key to message.
///
///     using namespace tova::i18n;
///     catalog_t catalog;
///     catalog.message("hello", message_t("hello", {message_item("Hello")}));
///     catalog.message("hello").as_string(tova::generic::varg_list());  // "Hello"
///     catalog.message("absent") == tova::types::nil;                   // true
///
/// Even const operations write a cache, and catalogs are shared through counts that aren't atomic:
/// a catalog and everything that shares it belong to one thread at a time.
#pragma once

#include <tova/abi.hpp>
#include <tova/generic/abilities.hpp>
#include <tova/i18n/message.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/nil.hpp>

#include <map>
#include <set>

namespace TOVA_2_18 {
namespace i18n {

namespace detail {
struct catalog_fields;
}

/// A catalog: a named map from key to message, in the byte order of the keys.
///
/// Catalogs are shared through `memory::pointers::shared_pointer<catalog_t>`. The set of locales is
/// a cache that const operations fill: it is built on demand and dropped when a message is stored.
class TOVA_API catalog_t : public generic::abilities::reference_count_pointer_ability<catalog_t> {
public:
    /// A position in the messages: a key and its message.
    typedef std::map<strings::ustring8, message_t>::const_iterator const_iterator;

    /// A position in the set of locales.
    typedef std::set<strings::ustring8>::const_iterator language_iterator;

    /// An empty catalog without a name, with a count of 0 and without the heap mark.
    catalog_t();

    /// Copies name, locales and messages. The copy has a count of 0 and no heap mark.
    catalog_t(const catalog_t& other);

    ~catalog_t() TOVA_NOTHROW;

    /// Sets the name; the loader calls this. A set of catalogs finds a catalog by the name that it
    /// was stored under, not by this one.
    void _name(const strings::ustring8& value);

    /// A copy of the name; empty for a catalog that was not loaded.
    strings::ustring8 name() const;

    /// Stores a message under a key and replaces the message that the key had. The set of locales
    /// is dropped and built again on demand.
    void message(const strings::ustring8& key, const message_t& msg);

    /// The message of exactly that key, or `m_nil_message` if there is none. The reference is valid
    /// until the key's message is replaced or the catalog is destroyed. Keys in UTF-16 and UTF-32
    /// are converted to UTF-8. Never fails.
    const message_t& message(const strings::ustring8& key) const;
    const message_t& message(const strings::ustring16& key) const;
    const message_t& message(const strings::ustring32& key) const;

    /// Whether exactly that key is stored, even with a nil message.
    bool has_message(const strings::ustring8& key) const;
    bool has_message(const strings::ustring16& key) const;
    bool has_message(const strings::ustring32& key) const;

    /// Whether a message of that locale is stored.
    ///
    /// Contract: "." and "-" in the requested locale count as "_", while stored locales are
    /// compared as they are. So en-US, en.US and en_US find a stored en_US, but nothing finds a
    /// stored en-US or a stored ".".
    bool is_language_loaded(const strings::ustring8& locale) const;
    bool is_language_loaded(const strings::ustring16& locale) const;
    bool is_language_loaded(const strings::ustring32& locale) const;

    /// The number of messages.
    unsigned long size() const;

    /// The messages in the order of their keys.
    const_iterator begin() const;
    const_iterator end() const;

    /// The locales of the messages, in byte order, each once. The empty string is a locale like any
    /// other. Iterators are valid until a message is stored or the catalog is assigned.
    language_iterator languages_begin() const;
    language_iterator languages_end() const;

    /// Adds the locale of every message to the set of locales, without clearing the set first.
    void gen_lang_set() const;

    /// Copies name, locales and messages, and returns this catalog. The counts and heap marks of
    /// both objects stay.
    catalog_t& operator=(const catalog_t& other);
    catalog_t& assign(const catalog_t& other);

    /// Empties name, locales and messages, and returns this catalog.
    catalog_t& operator=(const types::nil_t& nil);
    catalog_t& assign(const types::nil_t& nil);

    /// Whether name, locales and messages are empty. Never fails.
    bool operator==(const types::nil_t& nil) const;
    bool operator!=(const types::nil_t& nil) const;
    bool equal(const types::nil_t& nil) const;

    /// What a failed lookup returns, by reference: a nil message, which renders as the empty
    /// string. It is built while the library is loaded and never written, so it can be used as soon
    /// as the library is loaded.
    static message_t m_nil_message;

private:
    friend struct detail::catalog_fields;

    strings::ustring8 m_name;
    mutable std::set<strings::ustring8> m_languages;  // empty: not built yet
    std::map<strings::ustring8, message_t> m_messages;
};

}  // namespace i18n

extern template class memory::pointers::shared_pointer<i18n::catalog_t>;
extern template class generic::abilities::reference_count_pointer_ability<i18n::catalog_t>;

}  // namespace TOVA_2_18
