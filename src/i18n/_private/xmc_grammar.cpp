#include "i18n/_private/xmc_grammar.hpp"

#include <tova/strings/case.hpp>

#include <vector>

// The grammar, one function for each element, in the order of nesting:
//
//     xmc       read_header                        (the driver walks its children)
//     catalog   read_catalog_tag, read_messages or skip_messages, read_catalog_end
//     msg       read_message, with message_content for the content between the tags
//     arg, br   read_argument, message_content::take_line_break
//     include   read_include
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
using token = token_cursor::token;

namespace {

void require_token(const token_cursor& cursor) {
    if (cursor.at_end())
        throw load_error(xmc_file_loader::unexpected, "");
}

void step(token_cursor& cursor) {
    cursor.next();
    require_token(cursor);
}

void require_element(const token_cursor& cursor, const char* name) {
    require_token(cursor);
    if (!cursor.is_at(token::element_start, name))
        throw load_error(xmc_file_loader::invalid_element, cursor.value());
}

[[noreturn]] void refuse_attribute(const ustring8& name) {
    throw load_error(xmc_file_loader::invalid_attribute, name);
}

void ignore_attribute(const ustring8&) {}

// Moves from the start of an element to just after the end of its start tag. Calls `take(name,
// value)` for each attribute and `other(text)` for any other token: a comment that directly follows
// the `>`, which the token stream puts before the end of the start tag.
template <typename Take, typename Other>
void read_start_tag(token_cursor& cursor, Take take, Other other) {
    step(cursor);
    while (cursor.type() != token::start_tag_end) {
        const ustring8& name = cursor.value();
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

bool is_at_argument(const token_cursor& cursor) {
    return cursor.is_at(token::element_start, "argument") ||
           cursor.is_at(token::element_start, "arg");
}

// The content between the tags of one message: text is collected until an argument or the end turns
// it into an item.
class message_content {
public:
    explicit message_content(const ustring8& key) : m_key(key), m_follows_argument(false) {}

    // Consumes the piece at the cursor and leaves the cursor at the next one. There must be a
    // token.
    void take(token_cursor& cursor) {
        const bool follows_argument = m_follows_argument;
        m_follows_argument = false;
        if (is_at_argument(cursor)) {
            take_argument(cursor);
            m_follows_argument = true;
            return;
        }
        if (cursor.type() == token::character)
            m_text += cursor.value();
        else if (cursor.type() == token::space)
            take_space(follows_argument);
        else if (cursor.type() == token::element_start)
            take_line_break(cursor);
        // Anything else is a comment.
        step(cursor);
    }

    const std::vector<message_item>& items() {
        end_text();
        return m_items;
    }

private:
    void end_text() {
        if (!m_text.empty())
            m_items.push_back(message_item(m_text));
        m_text.clear();
    }

    void take_argument(token_cursor& cursor) {
        end_text();
        try {
            m_items.push_back(read_argument(cursor));
        } catch (load_error& error) {
            error.append_error_stack(load_error::in_message, m_key);
            throw;
        }
    }

    // Contract: a run of whitespace is one space. At the start of a text item it is dropped, unless
    // the token directly before it is an argument. If a comment is between the argument and the
    // whitespace, the space is dropped, too.
    void take_space(bool follows_argument) {
        if (m_text.empty() ? follows_argument : m_text.back() != ' ')
            m_text += ' ';
    }

    // Leaves the cursor at the end of the `br` element.
    void take_line_break(token_cursor& cursor) {
        if (cursor.value() != "br")
            throw load_error(xmc_file_loader::invalid_element, cursor.value());
        m_text += '\n';
        step(cursor);
        if (cursor.type() != token::start_tag_end)
            refuse_attribute(cursor.value());
        step(cursor);
        if (!cursor.is_at(token::element_end, "br"))
            throw load_error(xmc_file_loader::br_not_closed, "");
    }

    const ustring8& m_key;
    std::vector<message_item> m_items;
    ustring8 m_text;
    bool m_follows_argument;
};

// Contract: any token whose value is "msg" ends the message, even a text, a comment or the start of
// another element. The catalog then finds content where its own end should be.
bool is_at_message_end(const token_cursor& cursor) {
    return cursor.type() == token::element_end || cursor.value() == "msg";
}

}  // namespace

void skip_ignorable(token_cursor& cursor) {
    while (!cursor.at_end() && (cursor.type() == token::comment || cursor.type() == token::space ||
                                cursor.type() == token::character))
        cursor.next();
}

void read_header(token_cursor& cursor) {
    if (cursor.at_end())
        throw load_error(xmc_file_loader::not_xmc, "Value Not Defined");
    if (!cursor.is_at(token::element_start, "xmc"))
        throw load_error(xmc_file_loader::not_xmc, cursor.value());

    step(cursor);
    if (!cursor.is_at(token::attribute_name, "version"))
        refuse_attribute(cursor.value());
    step(cursor);
    if (cursor.value() != "1.0" && cursor.value() != "1.1")
        throw load_error(xmc_file_loader::bad_version, cursor.value());

    // Contract: the token after the version is assumed to be the end of the start tag. After a
    // second attribute or a comment, the real end is left to the caller, which finds no element
    // there.
    cursor.next();
    if (!cursor.at_end())
        cursor.next();
}

catalog_tag read_catalog_tag(token_cursor& cursor) {
    require_element(cursor, "catalog");
    catalog_tag tag;
    const auto take = [&tag](const ustring8& attribute, const ustring8& value) {
        if (attribute == "name")
            tag.name = value;
        else if (attribute == "lang")
            tag.locale = value;
        else
            refuse_attribute(attribute);
    };
    read_start_tag(cursor, take, refuse_attribute);
    return tag;
}

// Contract: errors in a message name the catalog. If the tokens end between two messages, the error
// doesn't.
void read_messages(token_cursor& cursor, const catalog_tag& catalog,
                   const std::function<void(const message_t&)>& take) {
    skip_ignorable(cursor);
    while (cursor.is_at(token::element_start, "msg")) {
        try {
            message_t message = read_message(cursor);
            message._orginal_locale(catalog.locale);
            take(message);
        } catch (load_error& error) {
            error.append_error_stack(load_error::in_catalog, catalog.name);
            throw;
        }
        skip_ignorable(cursor);
    }
    require_token(cursor);
}

// Contract: the messages of a catalog that isn't wanted are not examined, so their errors show up
// only when that catalog is loaded.
void skip_messages(token_cursor& cursor) {
    while (!cursor.at_end() && !cursor.is_at(token::element_end, "catalog"))
        cursor.next();
}

void read_catalog_end(token_cursor& cursor, const catalog_tag& catalog) {
    if (!cursor.is_at(token::element_end, "catalog"))
        throw load_error(xmc_file_loader::catalog_not_closed, catalog.name);
    cursor.next();
}

void read_include(token_cursor& cursor, const std::function<void(const ustring8&)>& take) {
    require_element(cursor, "include");
    const auto take_file = [&take](const ustring8& attribute, const ustring8& value) {
        if (attribute == "file")
            take(value);
    };
    read_start_tag(cursor, take_file, ignore_attribute);
    if (!cursor.is_at(token::element_end, "include"))
        throw load_error(xmc_file_loader::include_not_closed, "");
    cursor.next();
}

message_t read_message(token_cursor& cursor) {
    require_element(cursor, "msg");
    ustring8 key;
    ustring8 meta;
    const auto take = [&key, &meta](const ustring8& attribute, const ustring8& value) {
        if (attribute == "name")
            key = value;
        else if (attribute == "meta")
            meta = value;
        else
            refuse_attribute(attribute);
    };
    read_start_tag(cursor, take, refuse_attribute);
    require_token(cursor);

    message_content content(key);
    while (!is_at_message_end(cursor))
        content.take(cursor);
    cursor.next();
    return message_t(key, content.items(), meta);
}

message_item read_argument(token_cursor& cursor) {
    if (!is_at_argument(cursor))
        return message_item("", message_item::type_string);

    message_item::type_t type = message_item::type_string;
    ustring8 name;
    ustring8 data;
    const auto take = [&type, &name, &data](const ustring8& attribute, const ustring8& value) {
        if (attribute == "name") {
            // Contract: the name replaces the data, so attributes before it are lost.
            name = value;
            data = value;
        } else if (attribute == "type") {
            type = item_type(value);
        } else {
            data += '\x01' + attribute + '\x01' + value;
        }
    };
    read_start_tag(cursor, take, ignore_attribute);

    // Contract: the content is dropped up to the first end of any element. An element in it ends
    // the argument early.
    while (!cursor.at_end() && cursor.type() != token::element_end)
        cursor.next();
    if (cursor.at_end())
        throw load_error(xmc_file_loader::arg_not_closed, name);
    step(cursor);
    return message_item(data, type);
}

message_item::type_t item_type(const ustring8& word) {
    static const struct {
        const char* word;
        message_item::type_t type;
    } types[] = {
        {"value", message_item::type_text},
        {"string", message_item::type_string},
        {"number", message_item::type_number},
        {"int", message_item::type_int},
        {"double", message_item::type_double},
        {"time", message_item::type_time},
        {"date", message_item::type_date},
        {"memory", message_item::type_memory},
        {"mem", message_item::type_memory},
        {"memory_unit", message_item::type_memory_unit},
        {"mem_unit", message_item::type_memory_unit},
        {"metric", message_item::type_metric},
        {"metric_unit", message_item::type_metric_unit},
        {"duration", message_item::type_duration},
    };
    const ustring8 lower = strings::lower_case(word, 0, static_cast<unsigned long>(-1));
    for (const auto& entry : types)
        if (lower == entry.word)
            return entry.type;
    return message_item::type_string;
}

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
