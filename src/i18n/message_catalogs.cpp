#include <tova/i18n/message_catalogs.hpp>

#include <algorithm>
#include <ostream>
#include <string>
#include <typeinfo>

#include <tova/strings/case.hpp>
#include <tova/strings/replace.hpp>
#include <tova/strings/unicode.hpp>
#include <tova/system/directories.hpp>
#include <tova/system/io.hpp>

namespace TOVA_2_18 {
namespace i18n {

using _private::xmc_file_loader;
using strings::ustring16;
using strings::ustring32;
using strings::ustring8;

catalog_t message_catalogs::s_nil_catalog;
message_t message_catalogs::s_nil_message;

message_catalogs::result_type::result_type(error_type kind, const ustring8& text)
    : type(kind), message(format_message(kind, text)) {}

message_catalogs::result_type::result_type(const xmc_file_loader::load_error& fault)
    : type(no_error), message(format_message(fault)) {}

message_catalogs::result_type::~result_type() TOVA_NOTHROW {}

ustring8 message_catalogs::result_type::format_message(error_type kind, const ustring8& text) {
    const std::string front = "message_catalogs::result_type - ";
    switch (kind) {
    case no_error:
        return front + "No Error";
    case no_catalog:
        return front + "No catalog was loaded in file: \"" + text + "\"";
    case file_not_found:
        return front + "File \"" + text + "\" was not found on disk";
    case directory_not_found:
        return front + "Directory \"" + text + "\" was not found on disk";
    case entity_not_found:
        return front + "Entity (file or directory) \"" + text + "\" was not found on disk";
    default:
        break;
    }
    return std::string("unknown, or unhandle case happened! < ") + typeid(error_type).name() +
           " value of " + std::to_string(static_cast<int>(kind)) + " > str data=" + text;
}

ustring8 message_catalogs::result_type::format_message(const xmc_file_loader::load_error& fault) {
    const auto as = [&](error_type kind, const char* line) {
        type = kind;
        return "message_catalogs::result_type - " + (line + ("\n " + fault.message));
    };
    switch (fault.type) {
    case xmc_file_loader::no_error:
        return as(no_error, "No Error");
    case xmc_file_loader::no_catalog:
        return as(no_catalog, "No catalog was loaded");
    case xmc_file_loader::no_default_locale:
        return as(no_default_locale, "Default locale lookup not supported yet");
    case xmc_file_loader::file_not_found:
        return as(file_not_found, "File was not found on disk");
    case xmc_file_loader::xml_error:
        return as(xml_error, "XML parse error, XML file not well formed");
    case xmc_file_loader::invalid_attribute:
    case xmc_file_loader::invalid_element:
    case xmc_file_loader::not_xmc:
    case xmc_file_loader::bad_version:
    case xmc_file_loader::br_not_closed:
    case xmc_file_loader::msg_not_closed:
    case xmc_file_loader::arg_not_closed:
    case xmc_file_loader::include_not_closed:
    case xmc_file_loader::catalog_not_closed:
        return as(invalid_xmc, "XMC file is not valid");
    case xmc_file_loader::unexpected:
        return as(unexpected, "Unexpected error happened during loading");
    }
    return as(unexpected, "Unhandled case");
}

std::ostream& operator<<(std::ostream& stream, message_catalogs::result_type& result) {
    return stream << static_cast<const std::string&>(result.message);
}

namespace {

using result_type = message_catalogs::result_type;

const ustring8& as_utf8(const ustring8& text) {
    return text;
}

ustring8 as_utf8(const ustring16& text) {
    return strings::utf16_to_utf8(text);
}

ustring8 as_utf8(const ustring32& text) {
    return strings::utf32_to_utf8(text);
}

// Below, `wanted` is the locale, or the locale and the name of the one catalog to load.

// A file with a fault changes nothing: its catalogs are merged only when all of it was read.
template <typename... Wanted>
result_type load_one_file(message_catalogs::catalog_map& catalogs,
                          const std::map<ustring8, ustring8>& resolve, const ustring8& file,
                          const Wanted&... wanted) {
    xmc_file_loader loader;
    const xmc_file_loader::load_error outcome = loader.parse(file, wanted...);
    if (outcome.type == xmc_file_loader::no_error)
        loader.combine_data(catalogs, resolve);
    return result_type(outcome);
}

bool is_catalog_file_name(const ustring8& path) {
    const ustring8 name = strings::to_lower(path);
    if (name.size() < 4)
        return false;
    const auto ending = name.size() - 4;
    return name.compare(ending, 4, ".xmc") == 0 || name.compare(ending, 4, ".xml") == 0;
}

// Contract: the entries come in the order of the file system, and the outcome is that of the last
// catalog file. A scan stops at the first fault, with what it read before it in the set.
template <typename... Wanted>
result_type scan_directory(message_catalogs& set, const ustring8& directory,
                           const Wanted&... wanted) {
    result_type result(message_catalogs::no_error, "");
    for (const ustring8& entry : system::list_directory(directory)) {
        if (system::io::is_file(entry)) {
            if (is_catalog_file_name(entry))
                result = set.load_file(entry, wanted...);
        } else if (system::io::is_directory(entry)) {
            result = set.load_directory(entry, wanted...);
        }
        if (result.type != message_catalogs::no_error)
            break;
    }
    return result;
}

template <typename String, typename... Wanted>
result_type load_entity(message_catalogs& set, const String& path, const Wanted&... wanted) {
    if (system::io::is_file(path))
        return set.load_file(path, wanted...);
    if (system::io::is_directory(path))
        return set.load_directory(path, wanted...);
    return result_type(message_catalogs::entity_not_found, as_utf8(path));
}

template <typename... Wanted>
result_type load_path(message_catalogs& set, const ustring8& path, const Wanted&... wanted) {
    const result_type result = load_entity(set, path, wanted...);
    // Contract: it is the whole set that must not be empty. A load that adds nothing to a set with
    // catalogs of an earlier load is a success.
    if (result.type == message_catalogs::no_error && set.count() == 0)
        return result_type(message_catalogs::no_catalog, path);
    return result;
}

// Contract: an empty set is no fault after a list, not even after an empty list.
template <typename String, typename Element, typename... Wanted>
result_type load_list(message_catalogs& set, const std::vector<Element>& paths,
                      const Wanted&... wanted) {
    result_type result(message_catalogs::no_error, "");
    for (const Element& path : paths) {
        result = load_entity(set, String(path), wanted...);
        if (result.type != message_catalogs::no_error)
            break;
    }
    return result;
}

}  // namespace

message_catalogs::message_catalogs() {}

message_catalogs::message_catalogs(const message_catalogs& other) : m_catalogs(other.m_catalogs) {}

message_catalogs::~message_catalogs() TOVA_NOTHROW {}

message_catalogs& message_catalogs::operator=(const message_catalogs& other) {
    return assign(other);
}

// Contract: the resolve container stays with each set.
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
    return load_path(*this, path, locale);
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
    return load_path(*this, path, locale, catalog_id);
}

message_catalogs::result_type message_catalogs::load(const ustring16& path, const ustring16& locale,
                                                     const ustring16& catalog_id) {
    return load(as_utf8(path), as_utf8(locale), as_utf8(catalog_id));
}

message_catalogs::result_type message_catalogs::load(const ustring32& path, const ustring32& locale,
                                                     const ustring32& catalog_id) {
    return load(as_utf8(path), as_utf8(locale), as_utf8(catalog_id));
}

// The lists of 16- and 32-bit paths keep their width down to the file system.

message_catalogs::result_type message_catalogs::load(const std::vector<ustring8>& paths,
                                                     const ustring8& locale) {
    return load_list<ustring8>(*this, paths, locale);
}

message_catalogs::result_type message_catalogs::load(const std::vector<ustring16>& paths,
                                                     const ustring16& locale) {
    return load_list<ustring16>(*this, paths, locale);
}

message_catalogs::result_type message_catalogs::load(const std::vector<ustring32>& paths,
                                                     const ustring32& locale) {
    return load_list<ustring32>(*this, paths, locale);
}

message_catalogs::result_type message_catalogs::load(const std::vector<ustring8>& paths,
                                                     const ustring8& locale,
                                                     const ustring8& catalog_id) {
    return load_list<ustring8>(*this, paths, locale, catalog_id);
}

message_catalogs::result_type message_catalogs::load(const std::vector<ustring16>& paths,
                                                     const ustring16& locale,
                                                     const ustring16& catalog_id) {
    return load_list<ustring16>(*this, paths, locale, catalog_id);
}

message_catalogs::result_type message_catalogs::load(const std::vector<ustring32>& paths,
                                                     const ustring32& locale,
                                                     const ustring32& catalog_id) {
    return load_list<ustring32>(*this, paths, locale, catalog_id);
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::string>& paths,
                                                     const ustring8& locale) {
    return load_list<ustring8>(*this, paths, locale);
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::string>& paths,
                                                     const ustring16& locale) {
    return load(paths, as_utf8(locale));
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::string>& paths,
                                                     const ustring32& locale) {
    return load(paths, as_utf8(locale));
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::string>& paths,
                                                     const ustring8& locale,
                                                     const ustring8& catalog_id) {
    return load_list<ustring8>(*this, paths, locale, catalog_id);
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::string>& paths,
                                                     const ustring16& locale,
                                                     const ustring16& catalog_id) {
    return load(paths, as_utf8(locale), as_utf8(catalog_id));
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::string>& paths,
                                                     const ustring32& locale,
                                                     const ustring32& catalog_id) {
    return load(paths, as_utf8(locale), as_utf8(catalog_id));
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::wstring>& paths,
                                                     const ustring8& locale) {
    return load_list<ustring32>(*this, paths, strings::utf8_to_utf32(locale));
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::wstring>& paths,
                                                     const ustring16& locale) {
    return load(paths, as_utf8(locale));
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::wstring>& paths,
                                                     const ustring32& locale) {
    return load(paths, as_utf8(locale));
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::wstring>& paths,
                                                     const ustring8& locale,
                                                     const ustring8& catalog_id) {
    std::vector<ustring8> utf8_paths;
    utf8_paths.reserve(paths.size());
    for (const std::wstring& path : paths)
        utf8_paths.push_back(strings::utf32_to_utf8(path));
    return load(utf8_paths, locale, catalog_id);
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::wstring>& paths,
                                                     const ustring16& locale,
                                                     const ustring16& catalog_id) {
    return load(paths, as_utf8(locale), as_utf8(catalog_id));
}

message_catalogs::result_type message_catalogs::load(const std::vector<std::wstring>& paths,
                                                     const ustring32& locale,
                                                     const ustring32& catalog_id) {
    return load(paths, as_utf8(locale), as_utf8(catalog_id));
}

message_catalogs::result_type message_catalogs::load_directory(const ustring8& directory,
                                                               const ustring8& locale) {
    if (!system::io::exists(directory))
        return result_type(directory_not_found, directory);
    return scan_directory(*this, directory, locale);
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
    return scan_directory(*this, directory, locale, catalog_id);
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
    return load_one_file(m_catalogs, m_resolve, file, locale);
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
    return load_one_file(m_catalogs, m_resolve, file, locale, catalog_id);
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
    return m_catalogs.find(name) != m_catalogs.end();
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
    ustring8 wanted(locale);
    if (wanted.size() != 1) {
        strings::replace_all(wanted, ustring8("."), ustring8("_"));
        strings::replace_all(wanted, ustring8("-"), ustring8("_"));
    }
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
    const auto entry = m_catalogs.find(name);
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
    const auto entry = m_catalogs.find(catalog);
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
