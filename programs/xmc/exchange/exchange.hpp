/// @file
/// Messages on their way to and from translators: one locale beside its reference.
///
///     const exchange all = collect(read_documents(paths), "de", "en");
///     write_file("de.po", po_text(all));
///     write_file("de.xmc", catalogs_of(po_messages(read_file("de.po")).all));
///
/// The formats know texts, and some know codes in them. A message is therefore cut into chunks:
/// runs of text that any format can carry, and codes. A code is an argument, or a byte that cannot
/// be carried (a control character, or one that is not UTF-8), and is kept as the content of a
/// `msg` element, such as `<arg name="n" type="int"/>` or `&#1;`.
///
/// Plain values; the functions are pure.
#pragma once

#include "xmc/model/documents.hpp"
#include "xmc/model/writer.hpp"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tova_programs::xmc {

/// A text of a message, or none.
struct exchanged_text {
    bool exists = false;
    std::vector<piece> pieces;
    std::string meta;
};

struct exchanged_message {
    std::string catalog;
    std::string key;
    exchanged_text source;  ///< in the reference locale
    exchanged_text target;
};

struct exchange {
    std::string locale;  ///< of the targets; empty: a template without targets
    std::string reference;
    std::vector<exchanged_message> messages;
};

/// What an import found and cannot carry over.
struct exchange_problem {
    std::size_t line = 0;  ///< 0 where a format has no lines
    std::string subject;   ///< the message
    std::string text;
};

struct imported {
    exchange all;
    std::size_t untranslated = 0;
    std::size_t fuzzy = 0;
    std::size_t unflagged = 0;  ///< entries of PO files that look like C formats, but have no flag
    std::vector<exchange_problem> problems;
};

/// The problem of a message that a file has already. The first one counts, as for the loader.
extern const char appears_again[];

/// The messages of both locales, by catalog and in the order of the files. Of several messages of
/// one key the first counts, as for the loader.
exchange collect(const documents& files, const std::string& locale, const std::string& reference);

/// The targets as a catalog file; with `sources`, the sources follow in a catalog of their own.
std::string catalogs_of(const exchange& all, bool with_sources);

/// A piece of a text as formats see it.
struct chunk {
    bool is_code = false;
    std::string text;  ///< the text, or the content of a `msg` element
    std::string name;  ///< of a code: what people may call it, an identifier
};

std::vector<chunk> chunks_of(const std::vector<piece>& pieces);

/// The opposite. Returns false for a code that is no content of a message.
bool add_code(std::vector<piece>& pieces, const std::string& content);
void add_text(std::vector<piece>& pieces, std::string_view text);

/// A name in ASCII and UTF-8 without control characters: they, backslashes, bytes that are not
/// UTF-8, those of `also`, and spaces at both ends become `\xHH`.
std::string portable(std::string_view text, std::string_view also = "");
std::string from_portable(std::string_view text);

/// The codes of one message as `{name}`, for formats that have no codes.
///
/// A code of the target that differs from that of the source in the options only has its name, so
/// that tools that compare the names find no difference. `{name}` alone means `<arg name="name"/>`;
/// all others have a definition.
class placeholders {
public:
    /// All texts of the message, sources first.
    placeholders(const std::vector<const exchanged_text*>& sources,
                 const std::vector<const exchanged_text*>& targets);

    /// Whether there are codes. Only then `{` and `}` are doubled in the texts.
    bool any() const { return !m_codes.empty(); }

    std::string source_text(const exchanged_text& from) const { return text(from, false); }
    std::string target_text(const exchanged_text& from) const { return text(from, true); }

    /// `{name} = CODE` for each code that needs it: those of the source, and of the target only.
    std::vector<std::string> source_definitions() const;
    std::vector<std::string> target_definitions() const;

private:
    struct code {
        std::string name;
        std::string base;
        std::string source;  // empty: not in the source
        std::string target;  // empty: as in the source
        bool is_in_target = false;
    };

    void add_source(const chunk& each);
    void add_targets(const std::vector<chunk>& chunks);
    code& add(const std::string& base);
    std::string text(const exchanged_text& from, bool is_target) const;

    std::vector<code> m_codes;
};

/// The definitions of one message, as they are read.
class definitions {
public:
    /// Takes a line `{name} = CODE`; false for any other line. A later one counts.
    bool add(std::string_view line);

    /// The pieces of a text with `{name}`. `problem` says what is wrong with it, if anything.
    exchanged_text read(std::string_view text, std::string& problem) const;

private:
    std::vector<std::pair<std::string, std::string>> m_codes;
};

}  // namespace tova_programs::xmc
