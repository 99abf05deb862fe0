#include <tova/i18n/catalog.hpp>

#include <tova/strings/unicode.hpp>

#include <algorithm>

namespace TOVA_2_18 {

template class memory::pointers::shared_pointer<i18n::catalog_t>;
template class generic::abilities::reference_count_pointer_ability<i18n::catalog_t>;

namespace i18n {

// The constructor only names `types::nil`, so it doesn't matter which of the two is built first.
message_t catalog_t::m_nil_message(types::nil);

catalog_t::catalog_t() {}

catalog_t::catalog_t(catalog_t const& other)
    : generic::abilities::reference_count_pointer_ability<catalog_t>(other), m_name(other.m_name),
      m_languages(other.m_languages), m_messages(other.m_messages) {}

catalog_t::~catalog_t() TOVA_NOTHROW {}

void catalog_t::_name(strings::ustring8 const& value) {
    m_name = value;
}

strings::ustring8 catalog_t::name() const {
    return m_name;
}

void catalog_t::message(strings::ustring8 const& key, message_t const& msg) {
    m_languages.clear();
    m_messages[key] = msg;
}

message_t const& catalog_t::message(strings::ustring8 const& key) const {
    const auto found = m_messages.find(key);
    return found == m_messages.end() ? m_nil_message : found->second;
}

message_t const& catalog_t::message(strings::ustring16 const& key) const {
    return message(strings::utf16_to_utf8(key));
}

message_t const& catalog_t::message(strings::ustring32 const& key) const {
    return message(strings::utf32_to_utf8(key));
}

bool catalog_t::has_message(strings::ustring8 const& key) const {
    return m_messages.find(key) != m_messages.end();
}

bool catalog_t::has_message(strings::ustring16 const& key) const {
    return has_message(strings::utf16_to_utf8(key));
}

bool catalog_t::has_message(strings::ustring32 const& key) const {
    return has_message(strings::utf32_to_utf8(key));
}

bool catalog_t::is_language_loaded(strings::ustring8 const& locale) const {
    // Contract: a locale of one byte gets no exception here, and the stored locales stay as they
    // are. The catalog set has a test of its own that finds the locale ".".
    strings::ustring8 normalised = locale;
    std::replace(normalised.begin(), normalised.end(), '.', '_');
    std::replace(normalised.begin(), normalised.end(), '-', '_');
    if (m_languages.empty())
        gen_lang_set();
    return m_languages.find(normalised) != m_languages.end();
}

bool catalog_t::is_language_loaded(strings::ustring16 const& locale) const {
    return is_language_loaded(strings::utf16_to_utf8(locale));
}

bool catalog_t::is_language_loaded(strings::ustring32 const& locale) const {
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

void catalog_t::gen_lang_set() const {
    for (const auto& entry : m_messages)
        m_languages.insert(entry.second._orginal_locale());
}

catalog_t& catalog_t::operator=(catalog_t const& other) {
    return assign(other);
}

catalog_t& catalog_t::assign(catalog_t const& other) {
    if (this == &other)
        return *this;
    m_name = other.m_name;
    m_languages = other.m_languages;
    m_messages = other.m_messages;
    return *this;
}

catalog_t& catalog_t::operator=(types::nil_t const& nil) {
    return assign(nil);
}

catalog_t& catalog_t::assign(types::nil_t const&) {
    m_name.clear();
    m_languages.clear();
    m_messages.clear();
    return *this;
}

bool catalog_t::operator==(types::nil_t const& nil) const {
    return equal(nil);
}

bool catalog_t::operator!=(types::nil_t const& nil) const {
    return !equal(nil);
}

bool catalog_t::equal(types::nil_t const&) const {
    return m_name.empty() && m_messages.empty() && m_languages.empty();
}

}  // namespace i18n
}  // namespace TOVA_2_18
