/// @file
/// The second stage of a load: what the tokens of an XMC file say.
///
/// The grammar handles only tokens. It does not know the files, the requested locale, or what else
/// was read; its caller decides what to keep. Each function starts at the token named below and
/// leaves the cursor after the last token that it used. Invalid input raises a `load_error`, and so
/// do tokens that end too early (kind 14).
///
/// The templates exist for both cursors. The functions have no state: two threads may walk two
/// files.
#pragma once

#include "i18n/_private/message_draft.hpp"
#include "i18n/_private/token_cursor.hpp"
#include <tova/i18n/_private/xmc_file_loader.hpp>
#include <tova/i18n/message.hpp>
#include <tova/i18n/message_item.hpp>

#include <functional>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

// The attributes of a `catalog` element. A missing one is empty.
struct catalog_tag {
    piece name;
    piece locale;
};

// The facts about a message without its contents.
struct message_outline {
    piece key;
    bool is_nil;  // no name, no meta text and no item
};

// Steps over comments, whitespace and text. Never fails.
template <typename Cursor>
void skip_ignorable(Cursor& cursor);

// The `xmc` element, from its start to the end of its start tag.
template <typename Cursor>
void read_header(Cursor& cursor);

// A `catalog` element in three pieces: its start tag, then its messages, read or skipped, then its
// end. `take` is called at the start of each message and reads it.
template <typename Cursor>
catalog_tag read_catalog_tag(Cursor& cursor);
template <typename Cursor>
void read_messages(Cursor& cursor, const catalog_tag& catalog, const std::function<void()>& take);
template <typename Cursor>
void skip_messages(Cursor& cursor);
template <typename Cursor>
void read_catalog_end(Cursor& cursor, const catalog_tag& catalog);

// An `include` element, read in pieces: a file that it names is read before the tokens after the
// name are examined.
class include_element {
public:
    // Moves from the start of the element, or from the last name, to the next value of a `file`
    // attribute. Returns false after the end of the element.
    template <typename Cursor>
    bool next(Cursor& cursor, piece& file);

private:
    bool m_has_begun = false;
};

// Reads a whole `msg` element into the draft. Without a draft the message is only checked.
template <typename Cursor>
message_outline read_message(Cursor& cursor, message_draft* draft);

// Reads a whole `arg` or `argument` element as the next item of the draft, if there is one.
template <typename Cursor>
void read_argument(Cursor& cursor, message_draft* draft);

// The item type for the word of a `type` attribute, in any letter case; `type_string` for an
// unknown word. Never fails.
message_item::type_t item_type(piece word);

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
