/// @file
/// The second stage of a load: what the tokens of an XMC file say.
///
/// The grammar knows only tokens. It knows nothing about files, the requested locale or what else
/// was read; its caller decides what to keep. Each function starts at the token named below and
/// leaves the cursor after the last token that it used. Invalid input is thrown as a `load_error`,
/// and so are tokens that end too early (kind 14).
///
/// Functions without state: two threads may walk two files.
#pragma once

#include "i18n/_private/token_cursor.hpp"
#include <tova/i18n/_private/xmc_file_loader.hpp>
#include <tova/i18n/message.hpp>
#include <tova/i18n/message_item.hpp>
#include <tova/strings/ustring.hpp>

#include <functional>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

// The attributes of a `catalog` element. A missing attribute is empty.
struct catalog_tag {
    strings::ustring8 name;
    strings::ustring8 locale;
};

// Skips comments, whitespace and text. Never fails.
void skip_ignorable(token_cursor& cursor);

// The `xmc` element, from its start to the end of its start tag.
void read_header(token_cursor& cursor);

// A `catalog` element in three steps: its start tag, then its messages, read or skipped, then its
// end. `take` is called for each message in order, with the locale of its catalog as spelled in the
// file.
catalog_tag read_catalog_tag(token_cursor& cursor);
void read_messages(token_cursor& cursor, const catalog_tag& catalog,
                   const std::function<void(const message_t&)>& take);
void skip_messages(token_cursor& cursor);
void read_catalog_end(token_cursor& cursor, const catalog_tag& catalog);

// A whole `include` element. `take` is called with the value of each `file` attribute as soon as it
// is read, before the tokens after it are examined.
void read_include(token_cursor& cursor,
                  const std::function<void(const strings::ustring8& file)>& take);

// A whole `msg` element. Its message has no locale yet.
message_t read_message(token_cursor& cursor);

// A whole `arg` or `argument` element.
message_item read_argument(token_cursor& cursor);

// The item type for the value of a `type` attribute, in any letter case; `type_string` for an
// unknown word. Never fails.
message_item::type_t item_type(const strings::ustring8& word);

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
