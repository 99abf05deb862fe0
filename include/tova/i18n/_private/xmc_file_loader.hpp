/// The reader of XMC catalog files.
#pragma once

#include <list>
#include <map>
#include <vector>

#include <tova/abi.hpp>
#include <tova/i18n/catalog.hpp>
#include <tova/i18n/message.hpp>
#include <tova/i18n/message_item.hpp>
#include <tova/memory/pointers.hpp>
#include <tova/parser/xml_parser.hpp>
#include <tova/parser/xml_token_stream.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace i18n {
namespace _private {

/// Reads one XMC file, with the files that it includes, for one wanted locale and optionally one
/// wanted catalog.
///
/// A loader serves one load: it is made, given one `parse` and, if that gave kind 0, one
/// `combine_data`, and dropped. A second `parse` adds to the locale list and to the catalogs.
/// Among several translations of a message the loader keeps the one whose locale weighs most; the
/// weight of a locale is its place, from 1, in the list that `handle_language` builds.
///
/// A fault in a file is a `load_error`. The `parse` family gives it as a value; the operations that
/// walk tokens throw it. A loader belongs to one thread.
class TOVA_API xmc_file_loader {
public:
    using token = parser::xml_token_stream::token;
    using token_iterator = std::list<token>::const_iterator;
    using message_map = std::map<strings::ustring8, message_t>;

    /// What is wrong with a file. The numbers are stored and compared.
    enum error_type : int {
        no_error = 0,
        no_catalog = 1,         ///< The file holds neither a catalog nor an include.
        no_default_locale = 2,  ///< No wanted locale was given.
        file_not_found = 3,
        xml_error = 4,  ///< Not well-formed; the message tells which of the XML faults.
        invalid_attribute = 5,
        invalid_element = 6,
        not_xmc = 7,  ///< The root element is not `xmc`.
        bad_version = 8,
        br_not_closed = 9,
        msg_not_closed = 10,
        arg_not_closed = 11,
        include_not_closed = 12,
        catalog_not_closed = 13,
        unexpected = 14  ///< Tokens that end too early, or a file that includes itself.
    };

    /// A fault with its finished message: the fault itself in the first line, then one line for
    /// each level around it, from the innermost outward. Kind 0 is success.
    class TOVA_API load_error {
    public:
        /// The levels that add a line to a message.
        enum append_type : int { in_message = 1, in_catalog = 2, in_file = 3, at_line = 4 };

        /// A fault of that kind with the message of `format_msg(kind, text)`.
        load_error(error_type kind, const strings::ustring8& text);
        /// A fault of that kind with the message of `format_msg(fault)`. The kind is kept as given.
        load_error(error_type kind, const parser::xml_parser::parse_error& fault);
        load_error(const load_error& other);
        ~load_error() TOVA_NOTHROW;
        load_error& operator=(const load_error&) = default;

        /// The line for a kind, a level or an XML fault. A number outside the enumeration gives a
        /// line that begins with "unknown, or unhandle case happened! ". Never fails.
        strings::ustring8 format_msg(error_type kind, const strings::ustring8& text);
        strings::ustring8 format_msg(append_type level, const strings::ustring8& text);
        strings::ustring8 format_msg(const parser::xml_parser::parse_error& fault);

        /// Appends the line of a level to `message`.
        void append_error_stack(append_type level, const strings::ustring8& text);

        error_type type;
        strings::ustring8 message;
    };

    xmc_file_loader();
    ~xmc_file_loader() TOVA_NOTHROW;

    /// Reads a file for the wanted locale. An empty locale gives kind 2.
    load_error parse(const strings::ustring8& file, const strings::ustring8& lang);
    /// Reads only the catalog of that name; an empty name stands for all. An empty locale is
    /// accepted and leaves the locales "." and "en".
    load_error parse(const strings::ustring8& file, const strings::ustring8& lang,
                     const strings::ustring8& catalog_id);
    /// Reads a file for what stands on the locale list, with "." and "en" appended to it.
    load_error parse(const strings::ustring8& file);

    /// Merges what was read into a set of catalogs, and gives the number of messages stored.
    ///
    /// A catalog that the set lacks is added. A stored message stays only if its locale, weighed by
    /// the list of this loader, exceeds that of the new one: of two equals the later stays.
    /// `resolve` is not looked at. Throws the text "unreferanced object" as a `char const*` for an
    /// entry of `target` with an empty pointer.
    unsigned long
    combine_data(std::map<strings::ustring8, memory::pointers::shared_pointer<catalog_t>>& target,
                 const std::map<strings::ustring8, strings::ustring8>& resolve);

    /// Does nothing.
    void reset();

    /// Appends the wanted locale to the locale list, behind "." and "en" and from the general to
    /// the special: "de_DE.UTF-8" appends ".", "en", "de", "de_DE", "de_DE_UTF", "de_DE_UTF_8".
    void handle_language(const strings::ustring8& lang);
    /// The place of a locale on the list, from 1, after "." and "-" in it were made "_" (the locale
    /// of one byte is taken as it is); 0 if it is not on the list.
    unsigned int get_locale_weight(const strings::ustring8& lang) const;
    /// Whether the weight is not 0.
    bool is_lang_id_good(const strings::ustring8& lang) const;
    bool is_cat_id_set();
    /// Whether a catalog of that name is to be read.
    bool is_catalog_matched(const strings::ustring8& name);

    /// Reads a file from disk. A missing file gives kind 3. The directory of the file becomes the
    /// one that relative includes start from. A file that cannot be read counts as empty, which is
    /// a kind 4.
    load_error parse_file(const strings::ustring8& file);
    /// Reads the text of a file; `file` is only named in messages.
    load_error parse_string(const strings::ustring8& text, const strings::ustring8& file);

    /// The grammar. Each operation takes the tokens from the cursor on and leaves the cursor behind
    /// what it took. Faults are thrown as `load_error`.
    void parse_xmc_header(token_iterator& cursor, token_iterator& end);
    /// Steps over comments, whitespace and text. Never fails.
    void parse_ignorable(token_iterator& cursor, token_iterator& end);
    void parse_catalog(token_iterator& cursor, token_iterator& end);
    /// Reads the included files into this loader.
    void parse_include(token_iterator& cursor, token_iterator& end);
    message_t parse_message(token_iterator& cursor, token_iterator& end);
    message_item parse_message_arg(token_iterator& cursor, token_iterator& end);

    /// The item type for the word of a `type` attribute, in any letter case. A word that is not
    /// known gives `message_item::type_string`. Never fails.
    message_item::type_t parse_message_type(const strings::ustring8& word);

    /// Stores a message, unless the one stored under its key weighs as much or more. A stored
    /// message that is nil gives way whatever it weighs.
    void set_message(const message_t& msg, const strings::ustring8& catalog);

private:
    class reader;  // one file, and the files around it that include it

    std::vector<strings::ustring8> m_locales;
    std::map<strings::ustring8, message_map> m_catalogs;
    strings::ustring8 m_base_directory;
    strings::ustring8 m_catalog_id;
};

}  // namespace _private
}  // namespace i18n
}  // namespace TOVA_2_18
