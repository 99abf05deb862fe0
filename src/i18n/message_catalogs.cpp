#include <tova/i18n/message_catalogs.hpp>

#include "i18n/catalog_loading.hpp"
#include "i18n/find_key.hpp"
#include "i18n/locale_list.hpp"
#include <tova/strings/unicode.hpp>

#include <algorithm>
#include <string>

// The published operations of the catalog set. Loads go one way:
//
//     catalog_loading   find the files for a path, a list or a directory
//     xmc_file_loader   read and interpret each file, merge it into the set
//     load_result       report: the kind and the message returned to the caller
//
// Lookups search the map of catalogs and return one of the two static nil objects if they find
// nothing. Only loads add entries to the map, so none of its pointers is empty unless a caller
// empties one through `begin()`.

namespace TOVA_2_18 {
namespace i18n {

using detail::catalog_loading;
using strings::ustring16;
using strings::ustring32;
using strings::ustring8;

catalog_t message_catalogs::s_nil_catalog;
message_t message_catalogs::s_nil_message;

namespace {

// The three widths behave alike: paths, names and locales go to the 8-bit forms as UTF-8.

const ustring8& as_utf8(const ustring8& text) {
    return text;
}

ustring8 as_utf8(const ustring16& text) {
    return strings::utf16_to_utf8(text);
}

ustring8 as_utf8(const ustring32& text) {
    return strings::utf32_to_utf8(text);
}

ustring8 as_utf8(const std::string& text) {
    return text;
}

ustring8 as_utf8(const std::wstring& text) {
    return strings::utf32_to_utf8(text);
}

template <typename String>
std::vector<ustring8> as_utf8(const std::vector<String>& texts) {
    std::vector<ustring8> result;
    result.reserve(texts.size());
    for (const String& text : texts)
        result.push_back(as_utf8(text));
    return result;
}

}  // namespace

message_catalogs::message_catalogs() {}

message_catalogs::message_catalogs(const message_catalogs& other) : m_catalogs(other.m_catalogs) {}

message_catalogs::~message_catalogs() TOVA_NOTHROW {}

message_catalogs& message_catalogs::operator=(const message_catalogs& other) {
    return assign(other);
}

// Contract: each set keeps its own resolve container.
message_catalogs& message_catalogs::assign(const message_catalogs& other) {
    m_catalogs = other.m_catalogs;
    return *this;
}

message_catalogs& message_catalogs::operator=(const types::nil_t& nil) {
    return assign(nil);
}

message_catalogs& message_catalogs::assign(const types::nil_t&) {
    erase();
    return *this;
}

bool message_catalogs::operator==(const types::nil_t& nil) const {
    return equal(nil);
}

bool message_catalogs::operator!=(const types::nil_t& nil) const {
    return !equal(nil);
}

bool message_catalogs::equal(const types::nil_t&) const {
    return m_catalogs.empty();
}

void message_catalogs::set_resolve_container(const std::map<ustring8, ustring8>& resolve) {
    if (&resolve != &m_resolve)
        m_resolve = resolve;
}

message_catalogs::result_type message_catalogs::load(const ustring8& path, const ustring8& locale) {
    return catalog_loading(m_catalogs, locale).load(path);
}

message_catalogs::result_type message_catalogs::load(const ustring16& path,
                                                     const ustring16& locale) {
    return load(as_utf8(path), as_utf8(locale));
}

message_catalogs::result_type message_catalogs::load(const ustring32& path,
                                                     const ustring32& locale) {
    return load(as_utf8(path), as_utf8(locale));
}

message_catalogs::result_type message_catalogs::load(const ustring8& path, const ustring8& locale,
                                                     const ustring8& catalog_id) {
    return catalog_loading(m_catalogs, locale, catalog_id).load(path);
}

message_catalogs::result_type message_catalogs::load(const ustring16& path, const ustring16& locale,
                                                     const ustring16& catalog_id) {
    return load(as_utf8(path), as_utf8(locale), as_utf8(catalog_id));
}

message_catalogs::result_type message_catalogs::load(const ustring32& path, const ustring32& locale,
                                                     const ustring32& catalog_id) {
    return load(as_utf8(path), as_utf8(locale), as_utf8(catalog_id));
}

message_catalogs::result_type message_catalogs::load(const std::vector<ustring8>& paths,
                                                     const ustring8& locale) {
    return catalog_loading(m_catalogs, locale).load(paths);
}

message_catalogs::result_type message_catalogs::load(const std::vector<ustring16>& paths,
                                                     const ustring16& locale) {
    return load(as_utf8(paths), as_utf8(locale));
}

message_catalogs::result_type message_catalogs::load(const std::vector<ustring32>& paths,
                                                     const ustring32& locale) {
    return load(as_utf8(paths), as_utf8(locale));
}

message_catalogs::result_type message_catalogs::load(const std::vector<ustring8>& paths,
                                                     const ustring8& locale,
                                                     const ustring8& catalog_id) {
    return catalog_loading(m_catalogs, locale, catalog_id).load(paths);
}

message_catalogs::result_type message_catalogs::load(const std::vector<ustring16>& paths,
                                                     const ustring16& locale,
                                                     const ustring16& catalog_id) {
    return load(as_utf8(paths), as_utf8(locale), as_utf8(catalog_id));
}

message_catalogs::result_type message_catalogs::load(const std::vector<ustring32>& paths,
                                                     const ustring32& locale,
                                                     const ustring32& catalog_id) {
    return load(as_utf8(paths), as_utf8(locale), as_utf8(catalog_id));
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::string>& paths,
                                                     const ustring8& locale) {
    return load(as_utf8(paths), as_utf8(locale));
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::string>& paths,
                                                     const ustring16& locale) {
    return load(as_utf8(paths), as_utf8(locale));
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::string>& paths,
                                                     const ustring32& locale) {
    return load(as_utf8(paths), as_utf8(locale));
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::string>& paths,
                                                     const ustring8& locale,
                                                     const ustring8& catalog_id) {
    return load(as_utf8(paths), as_utf8(locale), as_utf8(catalog_id));
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::string>& paths,
                                                     const ustring16& locale,
                                                     const ustring16& catalog_id) {
    return load(as_utf8(paths), as_utf8(locale), as_utf8(catalog_id));
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::string>& paths,
                                                     const ustring32& locale,
                                                     const ustring32& catalog_id) {
    return load(as_utf8(paths), as_utf8(locale), as_utf8(catalog_id));
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::wstring>& paths,
                                                     const ustring8& locale) {
    return load(as_utf8(paths), as_utf8(locale));
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::wstring>& paths,
                                                     const ustring16& locale) {
    return load(as_utf8(paths), as_utf8(locale));
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::wstring>& paths,
                                                     const ustring32& locale) {
    return load(as_utf8(paths), as_utf8(locale));
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::wstring>& paths,
                                                     const ustring8& locale,
                                                     const ustring8& catalog_id) {
    return load(as_utf8(paths), as_utf8(locale), as_utf8(catalog_id));
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::wstring>& paths,
                                                     const ustring16& locale,
                                                     const ustring16& catalog_id) {
    return load(as_utf8(paths), as_utf8(locale), as_utf8(catalog_id));
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::wstring>& paths,
                                                     const ustring32& locale,
                                                     const ustring32& catalog_id) {
    return load(as_utf8(paths), as_utf8(locale), as_utf8(catalog_id));
}

message_catalogs::result_type message_catalogs::load_directory(const ustring8& directory,
                                                               const ustring8& locale) {
    return catalog_loading(m_catalogs, locale).load_directory(directory);
}

message_catalogs::result_type message_catalogs::load_directory(const ustring16& directory,
                                                               const ustring16& locale) {
    return load_directory(as_utf8(directory), as_utf8(locale));
}

message_catalogs::result_type message_catalogs::load_directory(const ustring32& directory,
                                                               const ustring32& locale) {
    return load_directory(as_utf8(directory), as_utf8(locale));
}

message_catalogs::result_type message_catalogs::load_directory(const ustring8& directory,
                                                               const ustring8& locale,
                                                               const ustring8& catalog_id) {
    return catalog_loading(m_catalogs, locale, catalog_id).load_directory(directory);
}

message_catalogs::result_type message_catalogs::load_directory(const ustring16& directory,
                                                               const ustring16& locale,
                                                               const ustring16& catalog_id) {
    return load_directory(as_utf8(directory), as_utf8(locale), as_utf8(catalog_id));
}

message_catalogs::result_type message_catalogs::load_directory(const ustring32& directory,
                                                               const ustring32& locale,
                                                               const ustring32& catalog_id) {
    return load_directory(as_utf8(directory), as_utf8(locale), as_utf8(catalog_id));
}

message_catalogs::result_type message_catalogs::load_file(const ustring8& file,
                                                          const ustring8& locale) {
    return catalog_loading(m_catalogs, locale).load_file(file);
}

message_catalogs::result_type message_catalogs::load_file(const ustring16& file,
                                                          const ustring16& locale) {
    return load_file(as_utf8(file), as_utf8(locale));
}

message_catalogs::result_type message_catalogs::load_file(const ustring32& file,
                                                          const ustring32& locale) {
    return load_file(as_utf8(file), as_utf8(locale));
}

message_catalogs::result_type message_catalogs::load_file(const ustring8& file,
                                                          const ustring8& locale,
                                                          const ustring8& catalog_id) {
    return catalog_loading(m_catalogs, locale, catalog_id).load_file(file);
}

message_catalogs::result_type message_catalogs::load_file(const ustring16& file,
                                                          const ustring16& locale,
                                                          const ustring16& catalog_id) {
    return load_file(as_utf8(file), as_utf8(locale), as_utf8(catalog_id));
}

message_catalogs::result_type message_catalogs::load_file(const ustring32& file,
                                                          const ustring32& locale,
                                                          const ustring32& catalog_id) {
    return load_file(as_utf8(file), as_utf8(locale), as_utf8(catalog_id));
}

bool message_catalogs::has_catalog(const ustring8& name) const {
    return detail::find_key(m_catalogs, name) != m_catalogs.end();
}

bool message_catalogs::has_catalog(const ustring16& name) const {
    return has_catalog(as_utf8(name));
}

bool message_catalogs::has_catalog(const ustring32& name) const {
    return has_catalog(as_utf8(name));
}

bool message_catalogs::has_catalog(const ustring8& name, const ustring8& locale) const {
    if (locale.empty())
        return false;
    // Contract: the locales of a catalog are stored as spelled in its files, so a locale spelled
    // with "-" or "." is never found, except for "." by itself.
    const ustring8 wanted = detail::normalized_locale(locale);
    const catalog_t& found = catalog(name);
    return std::find(found.languages_begin(), found.languages_end(), wanted) !=
           found.languages_end();
}

bool message_catalogs::has_catalog(const ustring16& name, const ustring16& locale) const {
    return has_catalog(as_utf8(name), as_utf8(locale));
}

bool message_catalogs::has_catalog(const ustring32& name, const ustring32& locale) const {
    return has_catalog(as_utf8(name), as_utf8(locale));
}

const catalog_t& message_catalogs::catalog(const ustring8& name) const {
    const auto entry = detail::find_key(m_catalogs, name);
    return entry == m_catalogs.end() ? s_nil_catalog : *entry->second;
}

const catalog_t& message_catalogs::catalog(const ustring16& name) const {
    return catalog(as_utf8(name));
}

const catalog_t& message_catalogs::catalog(const ustring32& name) const {
    return catalog(as_utf8(name));
}

bool message_catalogs::has_message(const ustring8& catalog, const ustring8& key) const {
    return !(message(catalog, key) == types::nil);
}

bool message_catalogs::has_message(const ustring16& catalog, const ustring16& key) const {
    return has_message(as_utf8(catalog), as_utf8(key));
}

bool message_catalogs::has_message(const ustring32& catalog, const ustring32& key) const {
    return has_message(as_utf8(catalog), as_utf8(key));
}

const message_t& message_catalogs::message(const ustring8& catalog, const ustring8& key) const {
    const auto entry = detail::find_key(m_catalogs, catalog);
    return entry == m_catalogs.end() ? s_nil_message : entry->second->message(key);
}

const message_t& message_catalogs::message(const ustring16& catalog, const ustring16& key) const {
    return message(as_utf8(catalog), as_utf8(key));
}

const message_t& message_catalogs::message(const ustring32& catalog, const ustring32& key) const {
    return message(as_utf8(catalog), as_utf8(key));
}

unsigned long message_catalogs::count() const {
    return m_catalogs.size();
}

unsigned long message_catalogs::size() const {
    return m_catalogs.size();
}

unsigned long message_catalogs::count(const ustring8& name) const {
    return catalog(name).size();
}

unsigned long message_catalogs::count(const ustring16& name) const {
    return count(as_utf8(name));
}

unsigned long message_catalogs::count(const ustring32& name) const {
    return count(as_utf8(name));
}

unsigned long message_catalogs::size(const ustring8& name) const {
    return catalog(name).size();
}

unsigned long message_catalogs::size(const ustring16& name) const {
    return size(as_utf8(name));
}

unsigned long message_catalogs::size(const ustring32& name) const {
    return size(as_utf8(name));
}

message_catalogs::const_iterator message_catalogs::begin() const {
    return m_catalogs.begin();
}

message_catalogs::const_iterator message_catalogs::end() const {
    return m_catalogs.end();
}

message_catalogs::iterator message_catalogs::begin() {
    return m_catalogs.begin();
}

message_catalogs::iterator message_catalogs::end() {
    return m_catalogs.end();
}

message_catalogs::message_iterator message_catalogs::begin(const ustring8& name) const {
    return catalog(name).begin();
}

message_catalogs::message_iterator message_catalogs::begin(const ustring16& name) const {
    return begin(as_utf8(name));
}

message_catalogs::message_iterator message_catalogs::begin(const ustring32& name) const {
    return begin(as_utf8(name));
}

message_catalogs::message_iterator message_catalogs::end(const ustring8& name) const {
    return catalog(name).end();
}

message_catalogs::message_iterator message_catalogs::end(const ustring16& name) const {
    return end(as_utf8(name));
}

message_catalogs::message_iterator message_catalogs::end(const ustring32& name) const {
    return end(as_utf8(name));
}

void message_catalogs::erase() {
    m_catalogs.clear();
}

void message_catalogs::erase(const ustring8& name) {
    m_catalogs.erase(name);
}

void message_catalogs::erase(const ustring16& name) {
    erase(as_utf8(name));
}

void message_catalogs::erase(const ustring32& name) {
    erase(as_utf8(name));
}

}  // namespace i18n
}  // namespace TOVA_2_18
