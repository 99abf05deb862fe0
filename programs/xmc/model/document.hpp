/// @file
/// An XMC file as its catalogs, messages and items, with the place of each in the bytes.
///
///     const document file("app.xmc", read_file("app.xmc"));
///     for (const catalog& each : file.catalogs())
///         for (const message& one : file.messages(each)) ...
///
/// The values are the loader's: the texts with their whitespace reduced, the arguments with their
/// types. A file that the loader refuses is read as far as its meaning is clear, and `problems()`
/// says what is wrong; there is a problem of an error rule if and only if the loader refuses the
/// file for some locale.
///
/// Strings are views into the document. A document is constant once it is made, so threads may
/// share it.
#pragma once

#include "xmc/scanner/scanner.hpp"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tova_programs::xmc {

struct attribute {
    std::string_view name;
    std::string_view value;
    span name_bytes;
    span value_bytes;  ///< without the quotes
};

/// The types of items; the numbers are those of `message_item::type_t`.
enum class item_type : std::uint8_t {
    text,
    string,
    number,
    integer,
    real,
    time,
    date,
    memory,
    memory_unit,
    metric,
    metric_unit,
    duration
};

/// A range of elements of one of the document's arrays.
struct range {
    std::uint32_t first = 0;
    std::uint32_t count = 0;
};

/// A piece of a message. An item of the type `text` that is an argument is one with `type="value"`.
struct item {
    bool is_argument = false;
    item_type type = item_type::text;
    std::string_view text;  ///< the text, or the name of the argument
    span bytes;
    range attributes;  ///< of an argument, in the order of the file, `name` and `type` included
};

struct message {
    std::string_view name;
    std::string_view meta;
    span bytes;       ///< the element
    span tag;         ///< from the `<` of its start tag to the name's end
    span name_bytes;  ///< the value of `name`, or empty
    range items;
    range tokens;  ///< from its start to its end
};

struct catalog {
    std::string_view name;
    std::string_view locale;
    bool has_name = false;
    bool has_locale = false;
    span bytes;
    span tag;
    span name_bytes;
    span locale_bytes;
    range messages;
};

struct include {
    std::string_view file;
    span bytes;  ///< the value of `file`
};

/// What the reading found. Its rule is one of the table in rules.hpp.
struct problem {
    static constexpr std::uint32_t no_message = UINT32_MAX;

    const char* rule;
    span bytes;
    std::uint32_t message = no_message;  ///< the message that it is in
    std::string text;
    std::vector<std::pair<span, std::string>> fix;  ///< replacements that are certain, or none
};

template <typename Element>
class part {
public:
    part(const std::vector<Element>& all, range which)
        : m_begin(all.data() + which.first), m_size(which.count) {}

    const Element* begin() const { return m_begin; }
    const Element* end() const { return m_begin + m_size; }
    std::size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    const Element& operator[](std::size_t i) const { return m_begin[i]; }

private:
    const Element* m_begin;
    std::size_t m_size;
};

class document {
public:
    document(std::string path, std::string bytes);
    document(const document&) = delete;
    document& operator=(const document&) = delete;

    const std::string& path() const { return m_path; }
    const std::string& bytes() const { return m_bytes; }
    const scan& tokens() const { return *m_scan; }
    std::string_view source(span where) const {
        return std::string_view(m_bytes).substr(where.begin, where.size());
    }

    const std::vector<catalog>& catalogs() const { return m_catalogs; }
    const std::vector<include>& includes() const { return m_includes; }
    const std::vector<message>& messages() const { return m_messages; }
    const std::vector<problem>& problems() const { return m_problems; }

    part<message> messages(const catalog& of) const { return {m_messages, of.messages}; }
    part<item> items(const message& of) const { return {m_items, of.items}; }
    part<attribute> attributes(const item& of) const { return {m_attributes, of.attributes}; }

    /// The attributes that format an argument: those after the last `name`, without `type`.
    std::vector<attribute> options(const item& argument) const;

    /// The `data` of the library's message item: the text, or the name and the options separated by
    /// the byte 0x01.
    std::string data(const item& of) const;

private:
    friend class reader;

    std::string m_path;
    std::string m_bytes;
    std::unique_ptr<scan> m_scan;
    std::vector<catalog> m_catalogs;
    std::vector<include> m_includes;
    std::vector<message> m_messages;
    std::vector<item> m_items;
    std::vector<attribute> m_attributes;
    std::vector<problem> m_problems;
};

/// The type for a word of the `type` attribute, in any letter case. False for an unknown word,
/// which the loader takes for `string`.
bool parse_type(std::string_view word, item_type& type);

/// The word for a type, as the guide writes it; "value" for `text`.
const char* name_of(item_type type);

}  // namespace tova_programs::xmc
