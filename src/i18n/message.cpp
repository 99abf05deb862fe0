#include <tova/i18n/message.hpp>

#include <tova/strings/unicode.hpp>

#include "i18n/rendering.hpp"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

namespace TOVA_2_18 {
namespace i18n {

namespace {

// Every type except 0 refers to an argument, including reserved and unknown types.
bool is_argument(const message_item& item) {
    return item.type() != message_item::type_text;
}

}  // namespace

message_t::message_t() {}

message_t::message_t(types::nil_t&) {}

message_t::message_t(const strings::ustring8& name, const std::vector<message_item>& items)
    : m_name(name), m_items(items) {}

message_t::message_t(const strings::ustring8& name, const std::vector<message_item>& items,
                     const strings::ustring8& meta)
    : m_name(name), m_items(items), m_meta(meta) {}

message_t::message_t(const message_t& other)
    : m_name(other.m_name), m_items(other.m_items), m_orginal_locale(other.m_orginal_locale),
      m_meta(other.m_meta) {}

message_t::~message_t() TOVA_NOTHROW {}

// as_utf8 renders the message; all other forms convert its result.
std::string message_t::as_string(const generic::varg_list& args) const {
    return as_utf8(args);
}

// The items append to one buffer: a typical message needs one allocation, for the result.
//
// Contract: the numbers of arguments and items are not compared. A missing argument is shown as
// "?invalid?" in its place, and the rest of the message is rendered.
strings::ustring8 message_t::as_utf8(const generic::varg_list& args) const {
    detail::text_buffer text;
    for (const message_item& item : m_items) {
        if (item.m_type == message_item::type_text)
            text.append(item.m_data);
        else
            detail::append_item(text, item.m_type, item.m_data, args);
    }
    return text.string();
}

std::string message_t::as_ustring(const generic::varg_list& args) const {
    return as_utf8(args);
}

strings::ustring16 message_t::as_utf16(const generic::varg_list& args) const {
    return strings::utf8_to_utf16(as_utf8(args));
}

strings::ustring32 message_t::as_utf32(const generic::varg_list& args) const {
    return strings::utf8_to_utf32(as_utf8(args));
}

std::wstring message_t::as_wstring(const generic::varg_list& args) const {
    return as_utf32(args);
}

unsigned long message_t::argument_count() const {
    return static_cast<unsigned long>(std::count_if(m_items.begin(), m_items.end(), is_argument));
}

unsigned long message_t::count() const {
    return m_items.size();
}

unsigned long message_t::size() const {
    return m_items.size();
}

generic::varg_list message_t::arguments() const {
    // This builds the same list as `push_back` with name and value would, but avoids its quadratic
    // time: `push_back` searches the whole list for each name. Here a set finds repeated names, and
    // the name is assigned to the entry afterwards. Entries without a name never count as repeated.
    generic::varg_list result;
    std::set<strings::ustring8> names;
    const generic::argument unnamed;
    for (const message_item& item : m_items) {
        if (!is_argument(item))
            continue;
        const strings::ustring8& data = item.m_data;
        if (data.empty() || names.insert(data).second) {
            result.push_back(unnamed);
            std::prev(result.end())->name(data);
        }
    }
    return result;
}

// Contract: an empty message is never valid, and the list must have an entry for each item, so two
// items that use the same argument need two entries. Reserved types require their argument, too,
// although they never show it.
bool message_t::has_valid_args(const generic::varg_list& args) const {
    if (m_items.empty() || args.count() < argument_count())
        return false;
    for (const message_item& item : m_items)
        if (is_argument(item) && !args.has_argument(item.name()))
            return false;
    return true;
}

message_t::iterator message_t::begin() {
    return m_items.begin();
}

message_t::iterator message_t::end() {
    return m_items.end();
}

message_t::const_iterator message_t::begin() const {
    return m_items.begin();
}

message_t::const_iterator message_t::end() const {
    return m_items.end();
}

const strings::ustring8& message_t::name() const {
    return m_name;
}

message_t& message_t::name(const strings::ustring8& value) {
    m_name = value;
    return *this;
}

const strings::ustring8& message_t::meta() const {
    return m_meta;
}

strings::ustring8& message_t::meta(const strings::ustring8& value) {
    m_meta = value;
    return m_meta;
}

const strings::ustring8& message_t::_orginal_locale() const {
    return m_orginal_locale;
}

strings::ustring8& message_t::_orginal_locale(const strings::ustring8& value) {
    m_orginal_locale = value;
    return m_orginal_locale;
}

// Contract: accepted and ignored.
void message_t::resolve(const std::map<strings::ustring8, strings::ustring8>&) {}

message_t& message_t::operator=(const message_t& other) {
    return assign(other);
}

message_t& message_t::assign(const message_t& other) {
    if (this == &other)
        return *this;
    m_name = other.m_name;
    m_orginal_locale = other.m_orginal_locale;
    m_items = other.m_items;
    m_meta = other.m_meta;
    return *this;
}

message_t& message_t::operator=(const types::nil_t& nil) {
    return assign(nil);
}

// Contract: the locale stays, so an emptied message still says where it came from.
message_t& message_t::assign(const types::nil_t&) {
    m_items.clear();
    m_name.clear();
    m_meta.clear();
    return *this;
}

bool message_t::operator==(const types::nil_t& nil) const {
    return equal(nil);
}

// The locale is ignored here as well: a message compares equal to nil after nil is assigned to it.
bool message_t::equal(const types::nil_t&) const {
    return m_items.empty() && m_name.empty() && m_meta.empty();
}

}  // namespace i18n
}  // namespace TOVA_2_18
