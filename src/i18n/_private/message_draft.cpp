#include "i18n/_private/message_draft.hpp"

#include "i18n/fields.hpp"

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

using strings::ustring8;

namespace {

void assign(ustring8& into, piece from) {
    into.assign(from.data, from.size);
}

}  // namespace

void message_draft::write(message_t& message, piece locale) {
    assign(message_fields::name(message), key);
    assign(message_fields::meta(message), meta);
    assign(message_fields::orginal_locale(message), locale);
    std::vector<message_item>& items = message_fields::items(message);
    items.clear();
    items.reserve(m_items.size());
    std::size_t begin = 0;
    for (const item& one : m_items) {
        m_item.assign(m_data, begin, one.end - begin);
        items.emplace_back(m_item, one.type);
        begin = one.end;
    }
}

message_item message_draft::only_item() const {
    return message_item(ustring8(m_data, 0, m_items.front().end), m_items.front().type);
}

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
