/// A message: a named sequence of items, rendered from named arguments.
#pragma once

#include <map>
#include <string>
#include <vector>

#include <tova/abi.hpp>
#include <tova/generic/varg_list.hpp>
#include <tova/i18n/message_item.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/types/nil.hpp>

namespace TOVA_2_18 {
namespace i18n {

/// A message: its key, its items in the order of output, the locale that it came from and a meta
/// text for translators and tools.
///
/// Rendering takes the arguments by name. An argument that is missing or can't be formatted shows
/// as "?invalid?" at the place of its item, and the rest of the text is still produced. Arguments
/// that no item names are ignored, and their order has no meaning.
///
/// A plain value: copies share nothing, and reading one object from several threads is safe.
class TOVA_API message_t {
public:
    typedef std::vector<message_item>::iterator iterator;
    typedef std::vector<message_item>::const_iterator const_iterator;

    /// A nil message: everything empty.
    message_t();
    message_t(types::nil_t& nil);

    /// A message without a locale; the third argument is the meta text.
    message_t(strings::ustring8 const& name, std::vector<message_item> const& items);
    message_t(strings::ustring8 const& name, std::vector<message_item> const& items,
              strings::ustring8 const& meta);

    message_t(message_t const& other);
    ~message_t() TOVA_NOTHROW;

    /// The rendered text. All forms carry the same text and differ in width alone: `as_utf16`,
    /// `as_utf32` and `as_wstring` convert it from UTF-8, and so answer "-1" (16 bits) or "?" for
    /// each bad byte (32 bits) when a literal or an argument isn't valid UTF-8. A message without
    /// items gives the empty text. Raises nothing but the standard exceptions of exhausted memory.
    std::string as_string(generic::varg_list const& args) const;
    strings::ustring8 as_utf8(generic::varg_list const& args) const;
    std::string as_ustring(generic::varg_list const& args) const;
    strings::ustring16 as_utf16(generic::varg_list const& args) const;
    strings::ustring32 as_utf32(generic::varg_list const& args) const;
    std::wstring as_wstring(generic::varg_list const& args) const;

    /// The number of argument items. Two items over one argument count twice.
    unsigned long argument_count() const;

    /// The number of items, literal ones included.
    unsigned long count() const;
    unsigned long size() const;

    /// A list with one nil argument for each argument item, in order.
    ///
    /// Contract: an entry bears the whole data of its item as its name, attribute pairs and their
    /// bytes 0x01 included, so that a tool sees how the argument is shown. Two items of equal data
    /// give one entry, two items over one argument with unequal attributes give two.
    generic::varg_list arguments() const;

    /// Whether a rendering from `args` finds every argument by name. The values aren't looked at.
    ///
    /// Contract: items are counted, not names, so two items over one argument need a list of two
    /// arguments; and a message without items answers false, though it needs none.
    bool has_valid_args(generic::varg_list const& args) const;

    iterator begin();
    iterator end();
    const_iterator begin() const;
    const_iterator end() const;

    /// The key. The setter returns the message.
    strings::ustring8 const& name() const;
    message_t& name(strings::ustring8 const& value);

    /// The meta text. The setter returns the field.
    strings::ustring8 const& meta() const;
    strings::ustring8& meta(strings::ustring8 const& value);

    /// The locale as the catalog file writes it; set by the loader. The setter returns the field.
    strings::ustring8 const& _orginal_locale() const;
    strings::ustring8& _orginal_locale(strings::ustring8 const& value);

    /// Accepted and ignored.
    void resolve(std::map<strings::ustring8, strings::ustring8> const& names);

    message_t& operator=(message_t const& other);
    message_t& assign(message_t const& other);

    /// Empties key, items and meta text.
    ///
    /// Contract: the locale stays, and the comparison with nil doesn't look at it. An emptied
    /// message still tells where it came from, and a message that a file gives a locale only is
    /// nil.
    message_t& operator=(types::nil_t const& nil);
    message_t& assign(types::nil_t const& nil);
    bool operator==(types::nil_t const& nil) const;
    bool equal(types::nil_t const& nil) const;

private:
    strings::ustring8 m_name;
    std::vector<message_item> m_items;
    strings::ustring8 m_orginal_locale;
    strings::ustring8 m_meta;
};

}  // namespace i18n
}  // namespace TOVA_2_18
