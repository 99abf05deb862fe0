/// @file
/// A settings file, read as the library's loader reads it, with the position of everything in it.
///
///     const document file("app.cfg", read_file("app.cfg"));
///     for (const entry& each : file.entries())
///         if (each.is_stored) ...  // each.key, each.values, each.bytes
///
/// Every file is valid, so a document has no errors: it says what the loader stores, and where each
/// piece comes from. A document never changes, so threads may share it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tova_programs::cfg {

/// Bytes of a file, from the first one to the one after the last.
struct span {
    std::size_t begin = 0;
    std::size_t end = 0;

    std::size_t size() const { return end - begin; }
};

/// The kinds of tokens that the loader distinguishes. Letters, digits and most signs are one kind,
/// because it only copies them.
enum class token_kind : std::uint8_t {
    text,
    string,         ///< in double quotes
    space,          ///< a run of spaces, or one tab
    line_end,       ///< LF or CRLF
    equals,         ///< a plain `=`
    operation,      ///< `==`, `:=`, `+=` and the like
    comment_start,  ///< `#`, `//` or `*/`
    comma,
    open_bracket,
    close_bracket
};

/// What a token is part of.
enum class token_role : std::uint8_t { between, header, key, value, comment };

struct token {
    token_kind kind;
    token_role role;
    bool is_closed;  ///< false for a string without its closing quote
    span bytes;      ///< with quotes
    span text;       ///< without them
};

/// A value, or an element of an array.
struct value_piece {
    std::string text;
    span bytes;  ///< from its first token to its last
};

struct section {
    std::string name;        ///< as in the header, without spaces; empty for the top level
    span bytes;              ///< from `[` to `]`; empty for the beginning of the file
    bool is_closed = true;   ///< false if the file ends before the `]`
    std::size_t end = 0;     ///< after the line of the header or of its last entry
    std::size_t tokens = 0;  ///< index of the first token of the header
};

struct entry {
    std::string name;       ///< the key without its section, spaces, quotes and `[]`
    std::string full_name;  ///< with its section, as the loader passes it to the tree
    std::string key;        ///< the same as a path from the root, in lower case (see `path_of`)
    bool is_array = false;  ///< the key ends in `[]`
    bool is_stored =
        false;  ///< false without a value, and for an array whose last element is empty
    std::size_t section = 0;
    span bytes;        ///< from the key to the end of the value
    span key_bytes;    ///< with the `[]`
    span value_bytes;  ///< without spaces and comments around it; an empty range where it would be
    std::size_t end = 0;              ///< after the line end
    std::size_t tokens = 0;           ///< index of the first token
    std::size_t tokens_end = 0;       ///< and of the one after the last
    std::vector<value_piece> values;  ///< one, or the elements of the array
    std::size_t inherited = 0;        ///< the first elements that come from arrays before it
};

/// A comment, from its mark up to the line end. A string in it may run over line ends.
struct comment {
    span bytes;
    std::size_t tokens = 0;
};

class document {
public:
    document(std::string path, std::string bytes);

    const std::string& path() const { return m_path; }
    const std::string& bytes() const { return m_bytes; }
    std::string_view source(span place) const {
        return std::string_view(m_bytes).substr(place.begin, place.size());
    }
    std::string_view text(const token& one) const { return source(one.text); }

    const std::vector<token>& tokens() const { return m_tokens; }
    /// The first is the top level, before any header.
    const std::vector<section>& sections() const { return m_sections; }
    const std::vector<entry>& entries() const { return m_entries; }
    const std::vector<comment>& comments() const { return m_comments; }

private:
    friend class scanner;

    std::string m_path;
    std::string m_bytes;
    std::vector<token> m_tokens;
    std::vector<section> m_sections;
    std::vector<entry> m_entries;
    std::vector<comment> m_comments;
};

/// A key as the path of names that it means: in lower case, joined by dots. Keys are the same if
/// and only if their paths are: "A/b." and "a.b" are, "a.b.." is "a.b" and an empty name.
std::string path_of(std::string_view key);

/// A key with that path. It differs from the path if the last name is empty.
std::string key_with_path(const std::string& path);

/// The path of an element of the array that an entry stores.
///
/// Contract: the number is appended to the name as written, so after a separator at its end it is
/// below a node with an empty name.
std::string element_path(const entry& array, std::size_t index);

/// One node that the file stores, in the order of storing: a later one of the same path replaces
/// it.
struct stored_node {
    std::string path;
    unsigned int flags = 0;  ///< 1, and 2 for the head of an array
    bool has_value = false;  ///< false for the head of an array, which is nil
    std::string value;
    std::size_t entry = 0;
    std::size_t element = 0;  ///< index into the values of the entry
};

std::vector<stored_node> stored_nodes(const document& file);

}  // namespace tova_programs::cfg
