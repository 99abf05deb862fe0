/// @file
/// A message while it is being read. The grammar writes into it, and messages are built from it.
///
/// A draft is reused for each message of a load, so its memory is allocated once. A draft belongs
/// to one thread.
#pragma once

#include <tova/i18n/message.hpp>
#include <tova/i18n/message_item.hpp>
#include <tova/strings/ustring.hpp>

#include "parser/piece.hpp"

#include <cstddef>
#include <vector>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

using parser::detail::piece;

class message_draft {
public:
    // The name and the meta text, which point into the tokens.
    piece key;
    piece meta;

    void clear() {
        key = piece();
        meta = piece();
        m_data.clear();
        m_items.clear();
    }

    // The data of the current item, which has not ended yet.
    void append(piece data) { m_data.append(data.data, data.size); }
    void append(char byte) { m_data.push_back(byte); }
    void drop_data() { m_data.resize(item_begin()); }
    char last_byte() const { return m_data.back(); }

    void end_item(message_item::type_t type) { m_items.push_back({m_data.size(), type}); }

    // Replaces a message: its name, its meta text, its items and its locale.
    void write(message_t& message, piece locale);

    // The only item, as a separate message item.
    message_item only_item() const;

private:
    struct item {
        std::size_t end;  // of its data, which begins at the end of the previous item's data
        message_item::type_t type;
    };

    std::size_t item_begin() const { return m_items.empty() ? 0 : m_items.back().end; }

    strings::ustring8 m_data;
    std::vector<item> m_items;
    strings::ustring8 m_item;  // the data of one item, while messages are written
};

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
