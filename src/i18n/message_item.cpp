#include <tova/i18n/message_item.hpp>

#include "i18n/rendering.hpp"

#include <algorithm>
#include <cstring>

namespace TOVA_2_18 {
namespace i18n {

namespace {

const char invalid_text[] = "?invalid?";

// The name used to look up an argument: the data up to the first separator.
strings::ustring8 name_in(const strings::ustring8& data) {
    return strings::ustring8(data, 0, data.find(detail::data_separator));
}

// The value of the argument that the data names, or null. The name is not copied.
const types::variant* find_value(const generic::varg_list& args, const strings::ustring8& data) {
    const auto separator = data.find(detail::data_separator);
    const auto found =
        separator == std::string::npos
            ? args.find(data)
            : std::find_if(args.begin(), args.end(), [&](const generic::argument& a) {
                  const strings::ustring8& name = a.name();
                  return name.size() == separator &&
                         std::memcmp(name.data(), data.data(), separator) == 0;
              });
    return found == args.end() ? nullptr : &found->value();
}

// Whether the end of the text, from `begin` on, reads like the failure marker.
bool ends_with_marker(const std::string& text, std::size_t begin) {
    const std::size_t length = sizeof detail::failure_marker - 1;
    return text.size() - begin == length &&
           std::memcmp(text.data() + begin, detail::failure_marker, length) == 0;
}

// Appends the formatted value. Returns false and appends nothing for an invalid format string and
// for a result that reads like the failure marker.
bool append_valid_value(std::string& text, message_item::type_t type, const types::variant& value,
                        const strings::ustring8& data) {
    const auto begin = text.size();
    if (!detail::append_value(text, type, value, data))
        return false;
    if (!ends_with_marker(text, begin))
        return true;
    text.resize(begin);
    return false;
}

}  // namespace

namespace detail {

// A case returns once it has appended something; anything that leaves the switch is invalid.
void append_item(std::string& text, message_item::type_t type, const strings::ustring8& data,
                 const generic::varg_list& args) {
    const types::variant* value = nullptr;
    switch (type) {
    case message_item::type_text:
        text += data;
        return;
    case message_item::type_string:
        // The value's own string, even if it is "-0". Attributes are ignored.
        value = find_value(args, data);
        if (value != nullptr) {
            text += value->as_string();
            return;
        }
        break;
    case message_item::type_int:
    case message_item::type_double:
    case message_item::type_memory:
    case message_item::type_memory_unit:
    case message_item::type_metric:
    case message_item::type_metric_unit:
    case message_item::type_duration:
        value = find_value(args, data);
        if (value != nullptr && append_valid_value(text, type, *value, data))
            return;
        break;
    default:
        // Contract: reserved types and numbers above the last type are shown as invalid even if the
        // argument is present.
        break;
    }
    text += invalid_text;
}

}  // namespace detail

message_item::message_item(const strings::ustring8& data) : m_data(data), m_type(type_text) {}

message_item::message_item(const strings::ustring8& data, type_t type)
    : m_data(data), m_type(type) {}

message_item::message_item(const message_item& other)
    : m_data(other.m_data), m_type(other.m_type) {}

message_item::~message_item() TOVA_NOTHROW {}

message_item& message_item::operator=(const message_item& other) {
    return assign(other);
}

message_item& message_item::assign(const message_item& other) {
    m_data = other.m_data;
    m_type = other.m_type;
    return *this;
}

message_item::type_t message_item::type() const {
    return m_type;
}

strings::ustring8 message_item::data() const {
    return m_data;
}

strings::ustring8 message_item::name() const {
    return name_in(m_data);
}

strings::ustring8 message_item::as_string(const generic::varg_list& args) const {
    strings::ustring8 text;
    detail::append_item(text, m_type, m_data, args);
    return text;
}

}  // namespace i18n
}  // namespace TOVA_2_18
