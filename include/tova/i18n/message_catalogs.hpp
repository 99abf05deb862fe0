/// The set of message catalogs that an application holds.
#pragma once

#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include <tova/abi.hpp>
#include <tova/i18n/_private/xmc_file_loader.hpp>
#include <tova/i18n/catalog.hpp>
#include <tova/i18n/message.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/nil.hpp>

namespace TOVA_2_18 {
namespace i18n {

/// A set of named catalogs, filled from XMC files for one wanted locale and asked for messages by
/// catalog name and key.
///
/// The choice among locales is made by `load` and not at lookup, so a set holds one text for a key;
/// a second locale takes a second set. Loading adds to the set: of two texts for one key the one
/// whose locale weighs more for the locale wanted last stays, and of two equals the later.
///
/// Names, keys, paths and locales come in any of the three string widths; the 16- and 32-bit forms
/// convert to UTF-8 and behave alike. A reference from a lookup is valid as long as the catalog
/// lives and no load replaces that entry.
///
/// Loading reports by `result_type`, a lookup that finds nothing gives a shared nil object, and
/// neither raises. A copy shares its catalogs with its source, so a set and its copies belong to
/// one thread.
class TOVA_API message_catalogs {
public:
    using catalog_map = std::map<strings::ustring8, memory::pointers::shared_pointer<catalog_t>>;
    using iterator = catalog_map::iterator;
    using const_iterator = catalog_map::const_iterator;
    using message_iterator = std::map<strings::ustring8, message_t>::const_iterator;

    /// How a load ended. The numbers are stored and compared.
    enum error_type : int {
        no_error = 0,
        no_catalog = 1,
        no_default_locale = 2,  ///< No wanted locale was given.
        file_not_found = 3,
        directory_not_found = 4,
        entity_not_found = 5,  ///< The path is neither a file nor a directory.
        xml_error = 6,         ///< A file is not well-formed XML.
        invalid_xmc = 7,       ///< A file is XML, but not a catalog file.
        unexpected = 8
    };

    /// The outcome of a load: a kind and a finished text, which names the innermost fault first and
    /// the file last.
    class TOVA_API result_type {
    public:
        /// That kind, with the message of `format_message(kind, text)`.
        result_type(error_type kind, const strings::ustring8& text);
        /// The outcome of one file: kind and message of `format_message(fault)`.
        result_type(const _private::xmc_file_loader::load_error& fault);
        result_type(const result_type&) = default;
        result_type& operator=(const result_type&) = default;
        ~result_type() TOVA_NOTHROW;

        /// The line for a kind. Kinds that only a file can cause (2, 6, 7, 8),
        /// and numbers outside the enumeration, give a line that begins with "unknown, or unhandle
        /// case happened! ". Never fails.
        strings::ustring8 format_message(error_type kind, const strings::ustring8& text);
        /// A fixed line with the message of the fault below it. Sets `type` to the kind that stands
        /// for the fault's.
        strings::ustring8 format_message(const _private::xmc_file_loader::load_error& fault);

        error_type type;
        strings::ustring8 message;
    };

    message_catalogs();
    /// Shares the catalogs of the other set. The resolve container is not copied.
    message_catalogs(const message_catalogs& other);
    ~message_catalogs() TOVA_NOTHROW;

    message_catalogs& operator=(const message_catalogs& other);
    message_catalogs& assign(const message_catalogs& other);
    /// Drops all catalogs; the resolve container stays.
    message_catalogs& operator=(const types::nil_t&);
    message_catalogs& assign(const types::nil_t&);

    /// A set without catalogs is nil.
    bool operator==(const types::nil_t&) const;
    bool operator!=(const types::nil_t&) const;
    bool equal(const types::nil_t&) const;

    /// Stores a map that has no effect on any message.
    void set_resolve_container(const std::map<strings::ustring8, strings::ustring8>& resolve);

    /// Loads a file, or a directory with all directories below it.
    ///
    /// Returns kind 5 for a path that is neither, kind 1 if all went well and the set is empty
    /// nevertheless, else what `load_file` or `load_directory` gave.
    result_type load(const strings::ustring8& path, const strings::ustring8& locale);
    result_type load(const strings::ustring16& path, const strings::ustring16& locale);
    result_type load(const strings::ustring32& path, const strings::ustring32& locale);
    /// The same for the catalog of that name alone. An empty name stands for all. An empty locale
    /// is accepted here and leaves the locales "." and "en".
    result_type load(const strings::ustring8& path, const strings::ustring8& locale,
                     const strings::ustring8& catalog_id);
    result_type load(const strings::ustring16& path, const strings::ustring16& locale,
                     const strings::ustring16& catalog_id);
    result_type load(const strings::ustring32& path, const strings::ustring32& locale,
                     const strings::ustring32& catalog_id);

    /// Loads files and directories in order, up to the first that gives a kind other than 0. What
    /// was loaded before it stays. Returns the last outcome, and kind 0 for an empty list.
    result_type load(const std::vector<strings::ustring8>& paths, const strings::ustring8& locale);
    result_type load(const std::vector<strings::ustring16>& paths,
                     const strings::ustring16& locale);
    result_type load(const std::vector<strings::ustring32>& paths,
                     const strings::ustring32& locale);
    result_type load(const std::vector<strings::ustring8>& paths, const strings::ustring8& locale,
                     const strings::ustring8& catalog_id);
    result_type load(const std::vector<strings::ustring16>& paths, const strings::ustring16& locale,
                     const strings::ustring16& catalog_id);
    result_type load(const std::vector<strings::ustring32>& paths, const strings::ustring32& locale,
                     const strings::ustring32& catalog_id);
    result_type load(const std::vector<std::string>& paths, const strings::ustring8& locale);
    result_type load(const std::vector<std::string>& paths, const strings::ustring16& locale);
    result_type load(const std::vector<std::string>& paths, const strings::ustring32& locale);
    result_type load(const std::vector<std::string>& paths, const strings::ustring8& locale,
                     const strings::ustring8& catalog_id);
    result_type load(const std::vector<std::string>& paths, const strings::ustring16& locale,
                     const strings::ustring16& catalog_id);
    result_type load(const std::vector<std::string>& paths, const strings::ustring32& locale,
                     const strings::ustring32& catalog_id);
    result_type load(const std::vector<std::wstring>& paths, const strings::ustring8& locale);
    result_type load(const std::vector<std::wstring>& paths, const strings::ustring16& locale);
    result_type load(const std::vector<std::wstring>& paths, const strings::ustring32& locale);
    result_type load(const std::vector<std::wstring>& paths, const strings::ustring8& locale,
                     const strings::ustring8& catalog_id);
    result_type load(const std::vector<std::wstring>& paths, const strings::ustring16& locale,
                     const strings::ustring16& catalog_id);
    result_type load(const std::vector<std::wstring>& paths, const strings::ustring32& locale,
                     const strings::ustring32& catalog_id);

    /// Loads each file of a directory whose name ends in ".xmc" or ".xml", in any letter case, and
    /// of each directory below it, in the order of the file system, up to the first fault. What was
    /// loaded before it stays. Returns kind 4 for a missing directory, and kind 0 if there is no
    /// such file.
    result_type load_directory(const strings::ustring8& directory, const strings::ustring8& locale);
    result_type load_directory(const strings::ustring16& directory,
                               const strings::ustring16& locale);
    result_type load_directory(const strings::ustring32& directory,
                               const strings::ustring32& locale);
    /// The same for the catalog of that name alone.
    ///
    /// Contract: a missing directory gives kind 0 here. Programs scan optional directories for one
    /// catalog without asking first whether they are there.
    result_type load_directory(const strings::ustring8& directory, const strings::ustring8& locale,
                               const strings::ustring8& catalog_id);
    result_type load_directory(const strings::ustring16& directory,
                               const strings::ustring16& locale,
                               const strings::ustring16& catalog_id);
    result_type load_directory(const strings::ustring32& directory,
                               const strings::ustring32& locale,
                               const strings::ustring32& catalog_id);

    /// Loads one file. A file with a fault leaves the set as it was. Returns kind 2 for an empty
    /// locale.
    result_type load_file(const strings::ustring8& file, const strings::ustring8& locale);
    result_type load_file(const strings::ustring16& file, const strings::ustring16& locale);
    result_type load_file(const strings::ustring32& file, const strings::ustring32& locale);
    /// The same for the catalog of that name alone. An empty locale is accepted here.
    result_type load_file(const strings::ustring8& file, const strings::ustring8& locale,
                          const strings::ustring8& catalog_id);
    result_type load_file(const strings::ustring16& file, const strings::ustring16& locale,
                          const strings::ustring16& catalog_id);
    result_type load_file(const strings::ustring32& file, const strings::ustring32& locale,
                          const strings::ustring32& catalog_id);

    bool has_catalog(const strings::ustring8& name) const;
    bool has_catalog(const strings::ustring16& name) const;
    bool has_catalog(const strings::ustring32& name) const;
    /// Whether the catalog holds a message that came from that locale, after "." and "-" in the
    /// locale were made "_" (a locale of one byte is taken as it is). False for an empty locale.
    bool has_catalog(const strings::ustring8& name, const strings::ustring8& locale) const;
    bool has_catalog(const strings::ustring16& name, const strings::ustring16& locale) const;
    bool has_catalog(const strings::ustring32& name, const strings::ustring32& locale) const;
    /// The catalog, or `s_nil_catalog`.
    const catalog_t& catalog(const strings::ustring8& name) const;
    const catalog_t& catalog(const strings::ustring16& name) const;
    const catalog_t& catalog(const strings::ustring32& name) const;

    /// Whether `message(catalog, key)` is not nil.
    bool has_message(const strings::ustring8& catalog, const strings::ustring8& key) const;
    bool has_message(const strings::ustring16& catalog, const strings::ustring16& key) const;
    bool has_message(const strings::ustring32& catalog, const strings::ustring32& key) const;
    /// The message; `s_nil_message` if the catalog is absent, and the nil message of `catalog_t` if
    /// the key is. Both are equal to `types::nil` and render as an empty text.
    const message_t& message(const strings::ustring8& catalog, const strings::ustring8& key) const;
    const message_t& message(const strings::ustring16& catalog,
                             const strings::ustring16& key) const;
    const message_t& message(const strings::ustring32& catalog,
                             const strings::ustring32& key) const;

    /// The number of catalogs.
    unsigned long count() const;
    unsigned long size() const;
    /// The number of messages of a catalog, 0 if it is absent.
    unsigned long count(const strings::ustring8& name) const;
    unsigned long count(const strings::ustring16& name) const;
    unsigned long count(const strings::ustring32& name) const;
    unsigned long size(const strings::ustring8& name) const;
    unsigned long size(const strings::ustring16& name) const;
    unsigned long size(const strings::ustring32& name) const;

    /// The catalogs, in the byte order of their names.
    const_iterator begin() const;
    const_iterator end() const;
    iterator begin();
    iterator end();
    /// The messages of a catalog, in the byte order of their keys; an empty range if it is absent.
    message_iterator begin(const strings::ustring8& name) const;
    message_iterator begin(const strings::ustring16& name) const;
    message_iterator begin(const strings::ustring32& name) const;
    message_iterator end(const strings::ustring8& name) const;
    message_iterator end(const strings::ustring16& name) const;
    message_iterator end(const strings::ustring32& name) const;

    /// Drops all catalogs, or the one of that name, if any.
    void erase();
    void erase(const strings::ustring8& name);
    void erase(const strings::ustring16& name);
    void erase(const strings::ustring32& name);

    /// What a failed lookup gives. Built while the library is loaded, and read-only.
    static catalog_t s_nil_catalog;
    static message_t s_nil_message;

private:
    catalog_map m_catalogs;
    std::map<strings::ustring8, strings::ustring8> m_resolve;
};

/// Writes the message.
TOVA_API std::ostream& operator<<(std::ostream& stream, message_catalogs::result_type& result);

}  // namespace i18n
}  // namespace TOVA_2_18
