#include <tova/i18n/message_item.hpp>

#include "generic/convert/decimal_digits.hpp"
#include "i18n/rendering.hpp"

#include <cstddef>
#include <cstring>

namespace TOVA_2_18 {
namespace i18n {

namespace {

const char invalid_text[] = "?invalid?";

// The first eight bytes of a string. Every string has room for more than that without an
// allocation, so they may be read.
inline unsigned long first_eight(const strings::ustring8& string) {
    return generic::convert::detail::load_eight(string.data());
}

// Ones in the first `size` bytes of eight.
inline unsigned long mask_of(std::size_t size) {
    return size >= 8 ? ~0UL : ~(~0UL << (8 * size));
}

// Most data is no longer than eight bytes. In a longer one the separator is searched for.
inline std::size_t size_of_name(const strings::ustring8& data) {
    const std::size_t size = data.size();
    if (size > 8) {
        const void* const found = std::memchr(data.data(), detail::data_separator, size);
        return found == nullptr
                   ? size
                   : static_cast<std::size_t>(static_cast<const char*>(found) - data.data());
    }
    // The first separator becomes the lowest byte with its top bit set.
    const unsigned long ones = 0x0101010101010101;
    const unsigned long word = first_eight(data) ^ (ones * detail::data_separator);
    const unsigned long found = (word - ones) & ~word & (ones << 7) & mask_of(size);
    return found == 0 ? size : static_cast<std::size_t>(__builtin_ctzl(found)) / 8;
}

// The value of the argument whose name is the first `size` bytes of the data, or null. Most names
// have at most eight bytes, so one comparison is enough.
inline const types::variant* find_value(const generic::varg_list& args,
                                        const strings::ustring8& data, std::size_t size) {
    const unsigned long begin = first_eight(data);
    const unsigned long mask = mask_of(size);
    const auto end = args.end();
    for (auto each = args.begin(); each != end; ++each) {
        const strings::ustring8& present = each->name();
        if (present.size() == size && ((first_eight(present) ^ begin) & mask) == 0 &&
            (size <= 8 || std::memcmp(present.data(), data.data(), size) == 0))
            return &each->value();
    }
    return nullptr;
}

// Whether the end of the text, from `begin` on, reads like the failure marker.
bool ends_with_marker(const detail::text_buffer& text, std::size_t begin) {
    const std::size_t length = sizeof detail::failure_marker - 1;
    return text.size() - begin == length &&
           std::memcmp(text.data() + begin, detail::failure_marker, length) == 0;
}

// Appends the formatted value. Returns false and appends nothing for an invalid format string and
// for a result that reads like the failure marker.
inline bool append_valid_value(detail::text_buffer& text, message_item::type_t type,
                               const types::variant& value, detail::token format) {
    if (format.size == 0 && detail::append_plain_number(text, type, value))
        return true;
    const auto begin = text.size();
    if (!detail::append_value(text, type, value, format))
        return false;
    if (!ends_with_marker(text, begin))
        return true;
    text.cut(begin);
    return false;
}

}  // namespace

namespace detail {

std::size_t name_size(const strings::ustring8& data) {
    return size_of_name(data);
}

// A case returns once it has appended something; anything that leaves the switch is invalid.
void append_item(text_buffer& text, message_item::type_t type, const strings::ustring8& data,
                 const generic::varg_list& args) {
    if (type == message_item::type_text)
        return text.append(data);
    const std::size_t size = size_of_name(data);
    const types::variant* value = nullptr;
    switch (type) {
    case message_item::type_string:
        // The value's own string, even if it is "-0". Attributes are ignored.
        value = find_value(args, data, size);
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
        value = find_value(args, data, size);
        if (value != nullptr && append_valid_value(text, type, *value, format_after(data, size)))
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
    return strings::ustring8(m_data, 0, detail::name_size(m_data));
}

strings::ustring8 message_item::as_string(const generic::varg_list& args) const {
    detail::text_buffer text;
    detail::append_item(text, m_type, m_data, args);
    return text.string();
}

}  // namespace i18n
}  // namespace TOVA_2_18
