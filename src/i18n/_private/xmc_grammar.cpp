#include "i18n/_private/xmc_grammar.hpp"

#include <tova/strings/case.hpp>

#include "parser/equal_bytes.hpp"

// The grammar, one function for each element, in the order of nesting:
//
//     xmc       read_header                        (the driver walks its children)
//     catalog   read_catalog_tag, read_messages or skip_messages, read_catalog_end
//     msg       read_message, with message_content for the content between the tags
//     arg, br   read_argument, message_content::take_line_break
//     include   include_element
//
// The tokens of an element are its start, its attributes as pairs of name and value, the end of the
// start tag, its content and its end. The XML is known to be well-formed by the time the tokens are
// walked, so ends match their starts; the tests for an end detect content where none is allowed.
// Since a token list may also stop anywhere, every step forward tests for its end.

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

using _private::xmc_file_loader;
using strings::ustring8;
using load_error = xmc_file_loader::load_error;
using token = xmc_file_loader::token;

namespace {

[[noreturn]] __attribute__((noinline, cold)) void refuse_end() {
    throw load_error(xmc_file_loader::unexpected, "");
}

template <typename Cursor>
void require_token(const Cursor& cursor) {
    if (cursor.at_end())
        refuse_end();
}

template <typename Cursor>
void step(Cursor& cursor) {
    cursor.next();
    require_token(cursor);
}

template <typename Cursor, std::size_t Size>
void require_element(const Cursor& cursor, const char (&name)[Size]) {
    require_token(cursor);
    if (!cursor.is_at(token::element_start, name))
        throw load_error(xmc_file_loader::invalid_element, cursor.value().string());
}

[[noreturn]] void refuse_attribute(piece name) {
    throw load_error(xmc_file_loader::invalid_attribute, name.string());
}

void ignore_attribute(piece) {}

// Moves from the start of an element to just after the end of its start tag. Calls `take(name,
// value)` for each attribute and `other(text)` for any other token: a comment that directly follows
// the `>`, which the token stream puts before the end of the start tag.
template <typename Cursor, typename Take, typename Other>
void read_start_tag(Cursor& cursor, Take take, Other other) {
    step(cursor);
    while (cursor.type() != token::start_tag_end) {
        const piece name = cursor.value();
        if (cursor.type() == token::attribute_name) {
            step(cursor);
            take(name, cursor.value());
        } else {
            other(name);
        }
        step(cursor);
    }
    cursor.next();
}

template <typename Cursor>
bool is_at_argument(const Cursor& cursor) {
    if (cursor.at_end() || cursor.type() != token::element_start)
        return false;
    const piece name = cursor.value();
    return name.is("arg") || name.is("argument");
}

// The content between the tags of one message: text is collected until an argument or the end turns
// it into an item. Without a draft, only the presence of items is recorded.
class message_content {
public:
    message_content(piece key, message_draft* draft)
        : m_key(key), m_draft(draft), m_has_text(false), m_has_items(false),
          m_follows_argument(false) {}

    // Consumes the piece at the cursor and leaves the cursor at the next one. There must be a
    // token.
    template <typename Cursor>
    void take(Cursor& cursor) {
        const bool follows_argument = m_follows_argument;
        m_follows_argument = false;
        if (is_at_argument(cursor)) {
            take_argument(cursor);
            m_follows_argument = true;
            return;
        }
        if (cursor.type() == token::character)
            add(cursor.value());
        else if (cursor.type() == token::space)
            take_space(follows_argument);
        else if (cursor.type() == token::element_start)
            take_line_break(cursor);
        // Anything else is a comment.
        step(cursor);
    }

    // Returns whether there is any item.
    bool finish() {
        end_text();
        return m_has_items;
    }

private:
    void add(piece text) {
        m_has_text = m_has_text || !text.empty();
        if (m_draft != nullptr)
            m_draft->append(text);
    }

    void end_text() {
        if (!m_has_text)
            return;
        if (m_draft != nullptr)
            m_draft->end_item(message_item::type_text);
        m_has_text = false;
        m_has_items = true;
    }

    template <typename Cursor>
    void take_argument(Cursor& cursor) {
        end_text();
        try {
            read_argument(cursor, m_draft);
        } catch (load_error& error) {
            error.append_error_stack(load_error::in_message, m_key.string());
            throw;
        }
        m_has_items = true;
    }

    // Contract: a run of whitespace is one space. At the beginning of a text item it is dropped,
    // unless the token directly before it is an argument. A comment between the argument and the
    // whitespace counts as that token, so the space is lost.
    void take_space(bool follows_argument) {
        if (!m_has_text ? follows_argument : m_draft != nullptr && m_draft->last_byte() != ' ')
            add(piece(" ", 1));
    }

    // Leaves the cursor at the end of the `br` element.
    template <typename Cursor>
    void take_line_break(Cursor& cursor) {
        if (!cursor.value().is("br"))
            throw load_error(xmc_file_loader::invalid_element, cursor.value().string());
        add(piece("\n", 1));
        step(cursor);
        if (cursor.type() != token::start_tag_end)
            refuse_attribute(cursor.value());
        step(cursor);
        if (!cursor.is_at(token::element_end, "br"))
            throw load_error(xmc_file_loader::br_not_closed, "");
    }

    const piece m_key;
    message_draft* const m_draft;
    bool m_has_text;  // since the last item
    bool m_has_items;
    bool m_follows_argument;
};

// Contract: any token whose value is "msg" ends the message, even a text, a comment or the start of
// another element. The catalog then finds content where its own end should be.
template <typename Cursor>
bool is_at_message_end(const Cursor& cursor) {
    return cursor.type() == token::element_end || cursor.value().is("msg");
}

}  // namespace

template <typename Cursor>
void skip_ignorable(Cursor& cursor) {
    while (!cursor.at_end() && (cursor.type() == token::comment || cursor.type() == token::space ||
                                cursor.type() == token::character))
        cursor.next();
}

template <typename Cursor>
void read_header(Cursor& cursor) {
    if (cursor.at_end())
        throw load_error(xmc_file_loader::not_xmc, "Value Not Defined");
    if (!cursor.is_at(token::element_start, "xmc"))
        throw load_error(xmc_file_loader::not_xmc, cursor.value().string());

    step(cursor);
    if (!cursor.is_at(token::attribute_name, "version"))
        refuse_attribute(cursor.value());
    step(cursor);
    if (!cursor.value().is("1.0") && !cursor.value().is("1.1"))
        throw load_error(xmc_file_loader::bad_version, cursor.value().string());

    // Contract: the token after the version is assumed to be the end of the start tag. After a
    // second attribute or a comment, the real end is left to the caller, which finds no element
    // there.
    cursor.next();
    if (!cursor.at_end())
        cursor.next();
}

template <typename Cursor>
catalog_tag read_catalog_tag(Cursor& cursor) {
    require_element(cursor, "catalog");
    catalog_tag tag;
    const auto take = [&tag](piece attribute, piece value) {
        if (attribute.is("name"))
            tag.name = value;
        else if (attribute.is("lang"))
            tag.locale = value;
        else
            refuse_attribute(attribute);
    };
    read_start_tag(cursor, take, refuse_attribute);
    return tag;
}

// Contract: errors in a message name the catalog. If the tokens end between two messages, the error
// doesn't.
template <typename Cursor>
void read_messages(Cursor& cursor, const catalog_tag& catalog, const std::function<void()>& take) {
    skip_ignorable(cursor);
    while (cursor.is_at(token::element_start, "msg")) {
        try {
            take();
        } catch (load_error& error) {
            error.append_error_stack(load_error::in_catalog, catalog.name.string());
            throw;
        }
        skip_ignorable(cursor);
    }
    require_token(cursor);
}

// Contract: the messages of a catalog that isn't wanted are not examined, so their errors show up
// only when that catalog is loaded.
template <typename Cursor>
void skip_messages(Cursor& cursor) {
    while (!cursor.at_end() && !cursor.is_at(token::element_end, "catalog"))
        cursor.next();
}

template <typename Cursor>
void read_catalog_end(Cursor& cursor, const catalog_tag& catalog) {
    if (!cursor.is_at(token::element_end, "catalog"))
        throw load_error(xmc_file_loader::catalog_not_closed, catalog.name.string());
    cursor.next();
}

template <typename Cursor>
bool include_element::next(Cursor& cursor, piece& file) {
    if (!m_has_begun)
        require_element(cursor, "include");
    m_has_begun = true;
    for (step(cursor); cursor.type() != token::start_tag_end; step(cursor)) {
        if (cursor.type() != token::attribute_name)
            continue;
        const bool is_file = cursor.value().is("file");
        step(cursor);
        if (is_file) {
            file = cursor.value();
            return true;
        }
    }
    cursor.next();
    if (!cursor.is_at(token::element_end, "include"))
        throw load_error(xmc_file_loader::include_not_closed, "");
    cursor.next();
    return false;
}

template <typename Cursor>
message_outline read_message(Cursor& cursor, message_draft* draft) {
    require_element(cursor, "msg");
    if (draft != nullptr)
        draft->clear();
    piece key;
    piece meta;
    const auto take = [&key, &meta](piece attribute, piece value) {
        if (attribute.is("name"))
            key = value;
        else if (attribute.is("meta"))
            meta = value;
        else
            refuse_attribute(attribute);
    };
    read_start_tag(cursor, take, refuse_attribute);
    require_token(cursor);

    message_content content(key, draft);
    while (!is_at_message_end(cursor))
        content.take(cursor);
    cursor.next();
    if (draft != nullptr) {
        draft->key = key;
        draft->meta = meta;
    }
    const bool has_items = content.finish();
    return {key, key.empty() && meta.empty() && !has_items};
}

template <typename Cursor>
void read_argument(Cursor& cursor, message_draft* draft) {
    message_item::type_t type = message_item::type_string;
    if (!is_at_argument(cursor)) {
        if (draft != nullptr)
            draft->end_item(type);
        return;
    }

    piece name;
    const auto take = [&type, &name, draft](piece attribute, piece value) {
        if (attribute.is("name")) {
            // Contract: the name replaces the data, and attributes before it are lost.
            name = value;
            if (draft != nullptr) {
                draft->drop_data();
                draft->append(value);
            }
        } else if (draft == nullptr) {
            return;
        } else if (attribute.is("type")) {
            type = item_type(value);
        } else {
            draft->append('\x01');
            draft->append(attribute);
            draft->append('\x01');
            draft->append(value);
        }
    };
    read_start_tag(cursor, take, ignore_attribute);

    // Contract: the content is dropped up to the first end of any element. An element in it ends
    // the argument early.
    while (!cursor.at_end() && cursor.type() != token::element_end)
        cursor.next();
    if (cursor.at_end())
        throw load_error(xmc_file_loader::arg_not_closed, name.string());
    step(cursor);
    if (draft != nullptr)
        draft->end_item(type);
}

message_item::type_t item_type(piece word) {
    static const struct {
        char word[12];
        unsigned char size;
        message_item::type_t type;
    } types[] = {
        {"value", 5, message_item::type_text},
        {"string", 6, message_item::type_string},
        {"number", 6, message_item::type_number},
        {"int", 3, message_item::type_int},
        {"double", 6, message_item::type_double},
        {"time", 4, message_item::type_time},
        {"date", 4, message_item::type_date},
        {"memory", 6, message_item::type_memory},
        {"mem", 3, message_item::type_memory},
        {"memory_unit", 11, message_item::type_memory_unit},
        {"mem_unit", 8, message_item::type_memory_unit},
        {"metric", 6, message_item::type_metric},
        {"metric_unit", 11, message_item::type_metric_unit},
        {"duration", 8, message_item::type_duration},
    };
    const auto find = [](piece wanted, message_item::type_t& type) {
        for (const auto& entry : types) {
            if (entry.size == wanted.size &&
                parser::detail::have_equal_bytes(entry.word, wanted.data, wanted.size)) {
                type = entry.type;
                return true;
            }
        }
        return false;
    };
    message_item::type_t type = message_item::type_string;
    // Most words are already in lower case, and that is cheap to check.
    if (!find(word, type))
        find(piece(strings::lower_case(word.string(), 0, static_cast<unsigned long>(-1))), type);
    return type;
}

// --- The two cursors ----------------------------------------------------------------------------

template void skip_ignorable(list_cursor&);
template void read_header(list_cursor&);
template catalog_tag read_catalog_tag(list_cursor&);
template void read_messages(list_cursor&, const catalog_tag&, const std::function<void()>&);
template void skip_messages(list_cursor&);
template void read_catalog_end(list_cursor&, const catalog_tag&);
template bool include_element::next(list_cursor&, piece&);
template message_outline read_message(list_cursor&, message_draft*);
template void read_argument(list_cursor&, message_draft*);

template void skip_ignorable(flat_cursor&);
template void read_header(flat_cursor&);
template catalog_tag read_catalog_tag(flat_cursor&);
template void read_messages(flat_cursor&, const catalog_tag&, const std::function<void()>&);
template void skip_messages(flat_cursor&);
template void read_catalog_end(flat_cursor&, const catalog_tag&);
template bool include_element::next(flat_cursor&, piece&);
template message_outline read_message(flat_cursor&, message_draft*);
template void read_argument(flat_cursor&, message_draft*);

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
