/// @file
/// The message catalogs of an application: load them for a locale, then look messages up by name.
///
///     tova::i18n::message_catalogs catalogs;
///     const auto result = catalogs.load("/usr/share/app/catalogs", "de_AT");
///     if (result.type != tova::i18n::message_catalogs::no_error)
///         std::cerr << result.message << '\n';
///     const tova::generic::varg_list values(tova::generic::argument("who", "Mia"));
///     std::cout << catalogs.message("app", "hello").as_string(values);
///
/// The files are in the XMC format, which docs/catalogs.md describes. There are no locks: threads
/// may look up messages of one set at the same time while no thread loads, erases or copies. The
/// questions for locales (`has_catalog` with a locale, `catalog_t::is_language_loaded` and
/// `catalog_t::languages_begin`) are writes, because they fill a cache in the catalog.
#pragma once

#include <tova/abi.hpp>
#include <tova/i18n/_private/xmc_file_loader.hpp>
#include <tova/i18n/catalog.hpp>
#include <tova/i18n/message.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/nil.hpp>

#include <iosfwd>
#include <map>
#include <string>
#include <vector>

namespace TOVA_2_18 {
namespace i18n {

/// A set of named catalogs, loaded from XMC files for one wanted locale. Messages are looked up by
/// catalog name and key.
///
/// The locale is chosen by `load`, not at lookup: a set holds one translation of each message, and
/// a second locale needs a second set. Loading adds to the set. If a key is already present, the
/// message whose locale ranks higher for the most recently requested locale wins; on a tie, the
/// newer one does.
///
/// Names, keys, paths and locales may have any of the three string widths; the 16- and 32-bit forms
/// convert to UTF-8 and behave the same. A reference from a lookup is valid as long as the catalog
/// lives and no load replaces that entry.
///
/// Loading reports errors by its `result_type`, and a lookup that finds nothing returns a shared
/// nil object; neither raises an exception other than `std::bad_alloc`. A file that exists but
/// cannot be read, such as a link, a pipe or a file on a failing disk, counts as a file without an
/// XML header (error 6). After `std::bad_alloc`, some of the messages of a file may be in the set,
/// the last one without its items; another load of the file completes them. A copy shares its
/// catalogs with the original, whose use counts are not atomic: a set and its copies belong to one
/// thread.
class TOVA_API message_catalogs {
public:
    /// The catalogs by their names, in the byte order of the names.
    using catalog_map = std::map<strings::ustring8, memory::pointers::shared_pointer<catalog_t>>;

    /// A position in the catalogs: a name and a catalog.
    using iterator = catalog_map::iterator;
    using const_iterator = catalog_map::const_iterator;

    /// A position in the messages of a catalog: a key and a message.
    using message_iterator = std::map<strings::ustring8, message_t>::const_iterator;

    /// How a load ended. The numbers are stored and compared.
    ///
    /// `xmc_file_loader` has an enumeration of its own for the errors of one file, with more kinds
    /// and other numbers from 4 on. Side by side:
    ///
    /// | Set | | Loader | |
    /// |--:|---|--:|---|
    /// | 0 | `no_error` | 0 | `no_error` |
    /// | 1 | `no_catalog` | 1 | `no_catalog` |
    /// | 2 | `no_default_locale` | 2 | `no_default_locale` |
    /// | 3 | `file_not_found` | 3 | `file_not_found` |
    /// | 4 | `directory_not_found` | | found by the set itself |
    /// | 5 | `entity_not_found` | | found by the set itself |
    /// | 6 | `xml_error` | 4 | `xml_error` |
    /// | 7 | `invalid_xmc` | 5 to 13 | `invalid_attribute` to `catalog_not_closed` |
    /// | 8 | `unexpected` | 14 | `unexpected`, and any other number |
    enum error_type : int {
        no_error = 0,             ///< The load succeeded.
        no_catalog = 1,           ///< The file, or the whole set after a load, has no catalog.
        no_default_locale = 2,    ///< No wanted locale was given.
        file_not_found = 3,       ///< The file is missing.
        directory_not_found = 4,  ///< The directory is missing.
        entity_not_found = 5,     ///< The path is neither a file nor a directory.
        xml_error = 6,            ///< A file is not well-formed XML.
        invalid_xmc = 7,          ///< A file is XML, but not a catalog file.
        unexpected = 8            ///< Anything else, such as a file that includes itself.
    };

    /// The outcome of a load: its kind and a message for the user, which names the error first and
    /// the file last. A plain value: copies share nothing.
    class TOVA_API result_type {
    public:
        /// An outcome of that kind, with the message of `format_message(kind, text)`.
        result_type(error_type kind, const strings::ustring8& text);
        /// The outcome of one file: kind and message of `format_message(error)`.
        result_type(const _private::xmc_file_loader::load_error& error);
        result_type(const result_type&) = default;
        result_type& operator=(const result_type&) = default;
        ~result_type() TOVA_NOTHROW;

        /// The message for a kind; `text` is the path that it names. Kinds that only a file can
        /// cause (2, 6, 7, 8), and numbers outside the enumeration, have a message that begins with
        /// "unknown, or unhandle case happened! ". Never fails.
        strings::ustring8 format_message(error_type kind, const strings::ustring8& text);
        /// A fixed line, followed by the message of the error. Contract: also sets `type` to the
        /// kind that belongs to the error's, as in the table above. Never fails.
        strings::ustring8 format_message(const _private::xmc_file_loader::load_error& error);

        error_type type;            ///< The kind; `no_error` for a load that succeeded.
        strings::ustring8 message;  ///< The message in UTF-8. It may span lines.
    };

    message_catalogs();  ///< An empty set.

    /// Shares the catalogs of the other set. The resolve container is not copied.
    message_catalogs(const message_catalogs& other);
    ~message_catalogs() TOVA_NOTHROW;

    /// Shares the catalogs of the other set instead of its own, and returns this set. The resolve
    /// containers of both sets stay.
    message_catalogs& operator=(const message_catalogs& other);
    message_catalogs& assign(const message_catalogs& other);

    /// Removes all catalogs, and returns this set. The resolve container stays.
    message_catalogs& operator=(const types::nil_t&);
    message_catalogs& assign(const types::nil_t&);

    /// Whether the set has no catalogs. Never fails.
    bool operator==(const types::nil_t&) const;
    bool operator!=(const types::nil_t&) const;
    bool equal(const types::nil_t&) const;

    /// Stores a map that has no effect on any message.
    void set_resolve_container(const std::map<strings::ustring8, strings::ustring8>& resolve);

    /// Loads a file, or a directory with all directories below it.
    ///
    /// Returns error 5 for a path that is neither, error 1 if the load succeeded but the whole set
    /// is empty, and otherwise the outcome of `load_file` or `load_directory`.
    result_type load(const strings::ustring8& path, const strings::ustring8& locale);
    result_type load(const strings::ustring16& path, const strings::ustring16& locale);
    result_type load(const strings::ustring32& path, const strings::ustring32& locale);

    /// Loads only the catalog of that name from a file or a directory; an empty name means all
    /// catalogs. An empty locale is accepted here, and the locales "." and "en" are read.
    result_type load(const strings::ustring8& path, const strings::ustring8& locale,
                     const strings::ustring8& catalog_id);
    result_type load(const strings::ustring16& path, const strings::ustring16& locale,
                     const strings::ustring16& catalog_id);
    result_type load(const strings::ustring32& path, const strings::ustring32& locale,
                     const strings::ustring32& catalog_id);

    /// Loads files and directories in order, up to the first error. What was loaded before it
    /// stays. Returns the last outcome, and kind 0 for an empty list.
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
    /// those of each directory below it, in the order of the file system, up to the first error.
    /// What was loaded before it stays. Returns error 4 for a missing directory, and kind 0 if
    /// there is no such file.
    ///
    /// Contract: links are followed, so two links to their own directory take exponential time.
    result_type load_directory(const strings::ustring8& directory, const strings::ustring8& locale);
    result_type load_directory(const strings::ustring16& directory,
                               const strings::ustring16& locale);
    result_type load_directory(const strings::ustring32& directory,
                               const strings::ustring32& locale);

    /// Loads only the catalog of that name from the files of a directory.
    ///
    /// Contract: returns kind 0 for a missing directory. Programs scan optional directories for one
    /// catalog without testing first whether they exist.
    result_type load_directory(const strings::ustring8& directory, const strings::ustring8& locale,
                               const strings::ustring8& catalog_id);
    result_type load_directory(const strings::ustring16& directory,
                               const strings::ustring16& locale,
                               const strings::ustring16& catalog_id);
    result_type load_directory(const strings::ustring32& directory,
                               const strings::ustring32& locale,
                               const strings::ustring32& catalog_id);

    /// Loads one file. An error leaves the set as it was. Returns error 2 for an empty locale,
    /// error 3 for a missing file, and errors 1 and 6 to 8 for what is in it.
    ///
    /// Contract: a file that is included twice is read twice, so files that each include the next
    /// one twice take exponential time.
    result_type load_file(const strings::ustring8& file, const strings::ustring8& locale);
    result_type load_file(const strings::ustring16& file, const strings::ustring16& locale);
    result_type load_file(const strings::ustring32& file, const strings::ustring32& locale);

    /// Loads only the catalog of that name from one file. An empty locale is accepted here.
    result_type load_file(const strings::ustring8& file, const strings::ustring8& locale,
                          const strings::ustring8& catalog_id);
    result_type load_file(const strings::ustring16& file, const strings::ustring16& locale,
                          const strings::ustring16& catalog_id);
    result_type load_file(const strings::ustring32& file, const strings::ustring32& locale,
                          const strings::ustring32& catalog_id);

    /// Whether the set has a catalog of exactly that name. Never fails.
    bool has_catalog(const strings::ustring8& name) const;
    bool has_catalog(const strings::ustring16& name) const;
    bool has_catalog(const strings::ustring32& name) const;
    /// Whether the catalog holds a message of that locale. Every "." and "-" in the locale is taken
    /// as "_" first, unless it is one byte long. False for an empty locale. Contract: the locales
    /// of the messages are not changed, so one that was written as "de-DE" is never found.
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
    /// the key is. Both are equal to `types::nil` and render as the empty string.
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

    /// Removes all catalogs, or the one of that name, if any.
    void erase();
    void erase(const strings::ustring8& name);
    void erase(const strings::ustring16& name);
    void erase(const strings::ustring32& name);

    /// What a failed lookup returns. Built while the library is loaded; nobody changes them.
    static catalog_t s_nil_catalog;
    static message_t s_nil_message;

private:
    catalog_map m_catalogs;
    std::map<strings::ustring8, strings::ustring8> m_resolve;
};

/// Inserts the message of the outcome, and returns the stream.
TOVA_API std::ostream& operator<<(std::ostream& stream, message_catalogs::result_type& result);

}  // namespace i18n
}  // namespace TOVA_2_18
