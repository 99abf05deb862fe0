/// @file
/// The loader of XMC catalog files, which `message_catalogs` makes for each file that it reads.
///
/// Programs use `message_catalogs`. The loader is exported for modules that were built against it.
/// It has no locks, and each object belongs to one thread.
#pragma once

#include <tova/abi.hpp>
#include <tova/i18n/catalog.hpp>
#include <tova/i18n/message.hpp>
#include <tova/i18n/message_item.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/parser/xml_parser.hpp>
#include <tova/parser/xml_token_stream.hpp>
#include <tova/strings/ustring.hpp>

#include <list>
#include <map>
#include <vector>

namespace TOVA_2_18 {
namespace i18n {
namespace _private {

/// Reads one XMC file, with the files that it includes, for one wanted locale and optionally one
/// wanted catalog.
///
/// A loader serves one load: make it, call `parse` once and, if that returned kind 0,
/// `combine_data` once. A second `parse` adds to the locale list and to the catalogs. Of several
/// translations of a message the loader keeps the one whose locale weighs most; the weight of a
/// locale is its place, from 1, in the list that `handle_language` builds.
///
/// An error in a file is a `load_error`. The `parse` family returns it; the operations that walk
/// tokens throw it.
class TOVA_API xmc_file_loader {
public:
    using token = parser::xml_token_stream::token;
    using token_iterator = std::list<token>::const_iterator;
    using message_map = std::map<strings::ustring8, message_t>;

    /// What is wrong with a file. The numbers are stored and compared. They are not those of
    /// `message_catalogs::error_type`, where a table sets the two side by side.
    enum error_type : int {
        no_error = 0,
        no_catalog = 1,         ///< The file holds neither a catalog nor an include.
        no_default_locale = 2,  ///< No wanted locale was given.
        file_not_found = 3,
        xml_error = 4,  ///< Not well-formed; the message says why.
        invalid_attribute = 5,
        invalid_element = 6,
        not_xmc = 7,  ///< The root element is not `xmc`.
        bad_version = 8,
        br_not_closed = 9,
        msg_not_closed = 10,
        arg_not_closed = 11,
        include_not_closed = 12,
        catalog_not_closed = 13,
        unexpected = 14  ///< The tokens end too early, or a file includes itself.
    };

    /// An error and its message: the error itself in the first line, then one line for each level
    /// around it, from the innermost outward. Kind 0 is success.
    class TOVA_API load_error {
    public:
        /// The levels that add a line to a message.
        enum append_type : int { in_message = 1, in_catalog = 2, in_file = 3, at_line = 4 };

        /// An error of that kind, with the message of `format_msg(kind, text)`.
        load_error(error_type kind, const strings::ustring8& text);
        /// An error of that kind, with the message of `format_msg(error)`. The kind is stored as
        /// given, whatever the XML error is.
        load_error(error_type kind, const parser::xml_parser::parse_error& error);
        load_error(const load_error& other);
        ~load_error() TOVA_NOTHROW;
        load_error& operator=(const load_error&) = default;

        /// The line for a kind, a level or an XML error. The line for a number outside the
        /// enumeration begins with "unknown, or unhandle case happened! ", and so does that of kind
        /// 4 with a plain string. Never fails.
        strings::ustring8 format_msg(error_type kind, const strings::ustring8& text);
        strings::ustring8 format_msg(append_type level, const strings::ustring8& text);
        strings::ustring8 format_msg(const parser::xml_parser::parse_error& error);

        /// Appends the line of a level to `message`.
        void append_error_stack(append_type level, const strings::ustring8& text);

        error_type type;
        strings::ustring8 message;
    };

    xmc_file_loader();
    ~xmc_file_loader() TOVA_NOTHROW;

    /// Reads a file for the wanted locale. Returns error 2 for an empty locale.
    load_error parse(const strings::ustring8& file, const strings::ustring8& lang);
    /// Reads the catalog of that name alone; an empty name means all catalogs. An empty locale is
    /// accepted, and the locales "." and "en" are read.
    load_error parse(const strings::ustring8& file, const strings::ustring8& lang,
                     const strings::ustring8& catalog_id);
    /// Appends "." and "en" to the locale list and reads a file for the locales of that list.
    load_error parse(const strings::ustring8& file);

    /// Merges what was read into a set of catalogs and returns the number of messages stored.
    ///
    /// A catalog that the set lacks is added. A message that is already in the set stays only if
    /// its locale, ranked by the list of this loader, weighs more than the new one's: on a tie the
    /// new one wins. `resolve` is not used. Throws "unreferanced object" as a `char const*` for an
    /// entry of `target` with an empty pointer.
    unsigned long
    combine_data(std::map<strings::ustring8, memory::pointers::shared_pointer<catalog_t>>& target,
                 const std::map<strings::ustring8, strings::ustring8>& resolve);

    /// Does nothing.
    void reset();

    /// Appends ".", "en" and the wanted locale to the locale list, the locale from its most general
    /// form to its most specific one: "de_DE.UTF-8" appends ".", "en", "de", "de_DE", "de_DE_UTF",
    /// "de_DE_UTF_8".
    void handle_language(const strings::ustring8& lang);
    /// The place of a locale in the list, from 1; 0 if it is not in the list. Every "." and "-" in
    /// the locale is taken as "_" first, unless it is one byte long.
    unsigned int get_locale_weight(const strings::ustring8& lang) const;
    /// Whether the weight is not 0.
    bool is_lang_id_good(const strings::ustring8& lang) const;
    bool is_cat_id_set();
    /// Whether a catalog of that name is to be read.
    bool is_catalog_matched(const strings::ustring8& name);

    /// Reads a file from disk. Relative includes start from its directory. Returns error 3 for a
    /// missing file. A file that can't be read, and any symbolic link, counts as empty, which is
    /// error 4.
    load_error parse_file(const strings::ustring8& file);
    /// Reads the bytes of a file; `file` is only named in messages.
    load_error parse_string(const strings::ustring8& text, const strings::ustring8& file);

    /// The grammar. Each operation reads one element, starting at the cursor, and leaves the cursor
    /// after it. Errors are thrown as `load_error`.
    void parse_xmc_header(token_iterator& cursor, token_iterator& end);
    /// Skips comments, whitespace and text. Never fails.
    void parse_ignorable(token_iterator& cursor, token_iterator& end);
    void parse_catalog(token_iterator& cursor, token_iterator& end);
    /// Reads the included files into this loader.
    ///
    /// Contract: a file that is included twice is read twice, so files that each include the next
    /// one twice take exponential time.
    void parse_include(token_iterator& cursor, token_iterator& end);
    message_t parse_message(token_iterator& cursor, token_iterator& end);
    message_item parse_message_arg(token_iterator& cursor, token_iterator& end);

    /// The item type for the word of a `type` attribute, in any letter case, and
    /// `message_item::type_string` for an unknown word. Never fails.
    message_item::type_t parse_message_type(const strings::ustring8& word);

    /// Stores a message, unless the one that is stored under its key weighs as much or more. A
    /// stored message that is nil is always replaced.
    void set_message(const message_t& msg, const strings::ustring8& catalog);

private:
    class reader;  // takes a file through the stages of a load

    std::vector<strings::ustring8> m_locales;
    std::map<strings::ustring8, message_map> m_catalogs;
    strings::ustring8 m_base_directory;
    strings::ustring8 m_catalog_id;
};

}  // namespace _private
}  // namespace i18n
}  // namespace TOVA_2_18
