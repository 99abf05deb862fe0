/// @file
/// A message: a named sequence of items, rendered from named arguments.
///
///     using namespace tova::i18n;
///     const message_t copied("copied", {message_item("Copied "),
///                                       message_item("n", message_item::type_int),
///                                       message_item(" files.")});
///     copied.as_string(tova::generic::varg_list(tova::generic::argument("n", 3)));
///     // "Copied 3 files."
///
/// Messages are plain values: reading one object from several threads is safe, as long as the
/// argument lists share no values.
#pragma once

#include <tova/abi.hpp>
#include <tova/generic/varg_list.hpp>
#include <tova/i18n/message_item.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/nil.hpp>

#include <map>
#include <string>
#include <vector>

namespace TOVA_2_18 {
namespace i18n {

namespace detail {
struct message_fields;
}

/// A message: its key, its items in output order, the locale that it came from, and meta text for
/// translators and tools.
///
/// Arguments are found by name; their order has no meaning, and arguments that no item names are
/// ignored. An argument that is missing or can't be formatted shows as "?invalid?" in place of its
/// item, and the rest of the message is still rendered.
///
/// A plain value: copies share nothing.
class TOVA_API message_t {
public:
    /// A position in the items. A change of the message makes it invalid.
    typedef std::vector<message_item>::iterator iterator;
    typedef std::vector<message_item>::const_iterator const_iterator;

    /// A nil message: everything empty.
    message_t();
    message_t(types::nil_t& nil);

    /// A message without a locale. The third argument is the meta text.
    message_t(const strings::ustring8& name, const std::vector<message_item>& items);
    message_t(const strings::ustring8& name, const std::vector<message_item>& items,
              const strings::ustring8& meta);

    message_t(const message_t& other);
    ~message_t() TOVA_NOTHROW;

    /// The rendered message; the empty string for a message without items.
    ///
    /// All forms return the same text in different widths. `as_utf16`, `as_utf32` and `as_wstring`
    /// convert it from UTF-8. If a literal or an argument isn't valid UTF-8, the 16-bit form is
    /// "-1" and the 32-bit forms have a "?" for each invalid byte. Raises only the standard
    /// exceptions for exhausted memory; if memory runs out while an argument of type "string" is
    /// converted, the process ends through `std::unexpected` (see `types::variant`).
    std::string as_string(const generic::varg_list& args) const;
    strings::ustring8 as_utf8(const generic::varg_list& args) const;
    std::string as_ustring(const generic::varg_list& args) const;
    strings::ustring16 as_utf16(const generic::varg_list& args) const;
    strings::ustring32 as_utf32(const generic::varg_list& args) const;
    std::wstring as_wstring(const generic::varg_list& args) const;

    /// The number of argument items. Two items that show one argument count twice.
    unsigned long argument_count() const;

    /// The number of items, literal ones included.
    unsigned long count() const;
    unsigned long size() const;

    /// A list with one nil argument for each argument item, in order.
    ///
    /// Contract: the name of an entry is the whole data of its item, attribute pairs and their
    /// bytes 0x01 included, so that a tool sees how the argument is shown. Two items of equal data
    /// make one entry; two items with the same argument but different attributes make two. Items
    /// with empty data make one entry each.
    generic::varg_list arguments() const;

    /// Whether `args` has an argument for every name. The values aren't examined.
    ///
    /// Contract: the list must be as long as the number of argument items, so two items that show
    /// one argument need a list of two. A message without items is false, although it needs none.
    bool has_valid_args(const generic::varg_list& args) const;

    /// The items in output order. Iterators are valid until the message is assigned or destroyed.
    iterator begin();
    iterator end();
    const_iterator begin() const;
    const_iterator end() const;

    /// The key. The setter returns the message.
    const strings::ustring8& name() const;
    message_t& name(const strings::ustring8& value);

    /// The meta text. The setter returns the field.
    const strings::ustring8& meta() const;
    strings::ustring8& meta(const strings::ustring8& value);

    /// The locale as written in the catalog file; set by the loader. The setter returns the field.
    const strings::ustring8& _orginal_locale() const;
    strings::ustring8& _orginal_locale(const strings::ustring8& value);

    /// Does nothing; the argument is ignored.
    void resolve(const std::map<strings::ustring8, strings::ustring8>& names);

    message_t& operator=(const message_t& other);
    message_t& assign(const message_t& other);

    /// Empties key, items and meta text.
    ///
    /// Contract: the locale stays, and the comparison with nil ignores it. An emptied message still
    /// says where it came from, and a message with nothing but a locale is nil.
    message_t& operator=(const types::nil_t& nil);
    message_t& assign(const types::nil_t& nil);

    /// Whether key, items and meta text are empty, whatever the locale. Never fails.
    bool operator==(const types::nil_t& nil) const;
    bool equal(const types::nil_t& nil) const;

private:
    friend struct detail::message_fields;

    strings::ustring8 m_name;
    std::vector<message_item> m_items;
    strings::ustring8 m_orginal_locale;
    strings::ustring8 m_meta;
};

}  // namespace i18n
}  // namespace TOVA_2_18
