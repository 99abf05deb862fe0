#include <tova/i18n/catalog.hpp>

#include <tova/strings/unicode.hpp>

#include "i18n/find_key.hpp"

#include <algorithm>

namespace TOVA_2_18 {

template class memory::pointers::shared_pointer<i18n::catalog_t>;
template class generic::abilities::reference_count_pointer_ability<i18n::catalog_t>;

namespace i18n {

// The constructor binds `types::nil` to a reference and never reads it, so the order in which the
// two static objects are built doesn't matter.
message_t catalog_t::m_nil_message(types::nil);

catalog_t::catalog_t() {}

// The base class copies neither the count nor the heap mark: the copy is a new object without
// holders.
catalog_t::catalog_t(const catalog_t& other)
    : generic::abilities::reference_count_pointer_ability<catalog_t>(other), m_name(other.m_name),
      m_languages(other.m_languages), m_messages(other.m_messages) {}

catalog_t::~catalog_t() TOVA_NOTHROW {}

void catalog_t::_name(const strings::ustring8& value) {
    m_name = value;
}

strings::ustring8 catalog_t::name() const {
    return m_name;
}

// An empty set of locales means "not built yet", so adding a message only has to clear it.
void catalog_t::message(const strings::ustring8& key, const message_t& msg) {
    m_languages.clear();
    m_messages[key] = msg;
}

const message_t& catalog_t::message(const strings::ustring8& key) const {
    const auto found = detail::find_key(m_messages, key);
    return found == m_messages.end() ? m_nil_message : found->second;
}

// Keys are stored in UTF-8. A UTF-16 or UTF-32 key that isn't valid Unicode is converted to "-1"
// and finds a message with that key.
const message_t& catalog_t::message(const strings::ustring16& key) const {
    return message(strings::utf16_to_utf8(key));
}

const message_t& catalog_t::message(const strings::ustring32& key) const {
    return message(strings::utf32_to_utf8(key));
}

bool catalog_t::has_message(const strings::ustring8& key) const {
    return detail::find_key(m_messages, key) != m_messages.end();
}

bool catalog_t::has_message(const strings::ustring16& key) const {
    return has_message(strings::utf16_to_utf8(key));
}

bool catalog_t::has_message(const strings::ustring32& key) const {
    return has_message(strings::utf32_to_utf8(key));
}

bool catalog_t::is_language_loaded(const strings::ustring8& locale) const {
    // Contract: a one-byte locale is not special here, and stored locales are not changed. The
    // catalog set has its own rule for the same question, which does find the locale ".".
    strings::ustring8 normalised = locale;
    std::replace(normalised.begin(), normalised.end(), '.', '_');
    std::replace(normalised.begin(), normalised.end(), '-', '_');
    if (m_languages.empty())
        gen_lang_set();
    return m_languages.find(normalised) != m_languages.end();
}

bool catalog_t::is_language_loaded(const strings::ustring16& locale) const {
    return is_language_loaded(strings::utf16_to_utf8(locale));
}

bool catalog_t::is_language_loaded(const strings::ustring32& locale) const {
    return is_language_loaded(strings::utf32_to_utf8(locale));
}

unsigned long catalog_t::size() const {
    return m_messages.size();
}

catalog_t::const_iterator catalog_t::begin() const {
    return m_messages.begin();
}

catalog_t::const_iterator catalog_t::end() const {
    return m_messages.end();
}

catalog_t::language_iterator catalog_t::languages_begin() const {
    if (m_languages.empty())
        gen_lang_set();
    return m_languages.begin();
}

catalog_t::language_iterator catalog_t::languages_end() const {
    if (m_languages.empty())
        gen_lang_set();
    return m_languages.end();
}

// In an empty catalog the set stays empty and is built again on every query, which costs nothing.
void catalog_t::gen_lang_set() const {
    for (const auto& entry : m_messages)
        m_languages.insert(entry.second._orginal_locale());
}

catalog_t& catalog_t::operator=(const catalog_t& other) {
    return assign(other);
}

catalog_t& catalog_t::assign(const catalog_t& other) {
    if (this == &other)
        return *this;
    m_name = other.m_name;
    m_languages = other.m_languages;
    m_messages = other.m_messages;
    return *this;
}

catalog_t& catalog_t::operator=(const types::nil_t& nil) {
    return assign(nil);
}

catalog_t& catalog_t::assign(const types::nil_t&) {
    m_name.clear();
    m_languages.clear();
    m_messages.clear();
    return *this;
}

bool catalog_t::operator==(const types::nil_t& nil) const {
    return equal(nil);
}

bool catalog_t::operator!=(const types::nil_t& nil) const {
    return !equal(nil);
}

// The locale cache is compared as well, though it can only be filled from messages or by a copy.
bool catalog_t::equal(const types::nil_t&) const {
    return m_name.empty() && m_messages.empty() && m_languages.empty();
}

}  // namespace i18n
}  // namespace TOVA_2_18
