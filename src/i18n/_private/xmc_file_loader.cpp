#include <tova/i18n/_private/xmc_file_loader.hpp>

#include <sys/stat.h>

#include <stdexcept>
#include <string>
#include <typeinfo>

#include <tova/strings/case.hpp>
#include <tova/strings/replace.hpp>
#include <tova/strings/split.hpp>
#include <tova/system/files.hpp>
#include <tova/system/io.hpp>

namespace TOVA_2_18 {
namespace i18n {
namespace _private {

using parser::xml_parser;
using parser::xml_token_stream;
using strings::ustring8;

namespace {

using load_error = xmc_file_loader::load_error;
using token = xmc_file_loader::token;
using token_iterator = xmc_file_loader::token_iterator;

const off_t largest_file = 0x7fffffff;  // bytes, the limit of `system::load_file`
const char message_front[] = "xmc_file_loader::load_error - ";

std::string quoted(const char* before, const ustring8& text, const char* after = "") {
    return std::string(before) + '"' + text + '"' + after;
}

std::string unknown_number(const char* type_name, int number, const ustring8& text) {
    return std::string("unknown, or unhandle case happened! < ") + type_name + " value of " +
           std::to_string(number) + " > str data=" + text;
}

// The line of an XML fault, without what stands in front of and behind all of them; empty for no
// fault.
std::string xml_line(const xml_parser::parse_error& fault) {
    switch (fault.type) {
    case xml_parser::parse_error::no_error:
        break;
    case xml_parser::parse_error::unexpected_end:
        return "Unexpected end of file during XML parsing";
    case xml_parser::parse_error::mismatched_end:
        return quoted("Mismatched end element ", fault.text, " was found");
    case xml_parser::parse_error::no_root:
        return "No root element was found";
    case xml_parser::parse_error::no_header:
        return "Valid XML header not found";
    case xml_parser::parse_error::unexpected_character:
        return quoted("Unexpected character ", fault.text, " found while parsing");
    case xml_parser::parse_error::missing_quote:
        return quoted("Missing \" while parsing attribute ", fault.text);
    case xml_parser::parse_error::unknown_entity:
        return "Unknown enity being parsed";
    case xml_parser::parse_error::missing_equals:
        return quoted("Missing = sign for attribute ", fault.text);
    case xml_parser::parse_error::attribute_redefined:
        return quoted("attribute ", fault.text, " is being redefined");
    case xml_parser::parse_error::data_after_root:
        return "Data found after root element";
    }
    return std::string();
}

}  // namespace

xmc_file_loader::load_error::load_error(error_type kind, const ustring8& text)
    : type(kind), message(format_msg(kind, text)) {}

xmc_file_loader::load_error::load_error(error_type kind, const xml_parser::parse_error& fault)
    : type(kind), message(format_msg(fault)) {}

xmc_file_loader::load_error::load_error(const load_error& other)
    : type(other.type), message(other.message) {}

xmc_file_loader::load_error::~load_error() TOVA_NOTHROW {}

ustring8 xmc_file_loader::load_error::format_msg(error_type kind, const ustring8& text) {
    const std::string front(message_front);
    switch (kind) {
    case no_error:
        return front + "No Error";
    case no_catalog:
        return front + quoted("No catalog was loaded in file: ", text);
    case no_default_locale:
        return front + "Default locale lookup not supported yet";
    case file_not_found:
        return front + quoted("File ", text, " was not found on disk");
    case xml_error:
        break;  // has no line of its own: it is the XML fault that has one
    case invalid_attribute:
        return front + quoted("Invalid attibute ", text);
    case invalid_element:
        return front + quoted("Invalid element ", text);
    case not_xmc:
        return front + quoted("Not XMC file, root element is not XMC but ", text);
    case bad_version:
        return front + quoted("XMC version ", text, " is not supported");
    case br_not_closed:
        return front + "Expected BR end tag not found";
    case msg_not_closed:
        return front + quoted("Expected msg (message) end tag not found for message ", text);
    case arg_not_closed:
        return front + quoted("Expected arg (argument) end tag not found for argument ", text);
    case include_not_closed:
        return front + "Expected \"include\" end tag not found";
    case catalog_not_closed:
        return front + quoted("Expected catalog end tag not found for catalog ", text);
    case unexpected:
        return front + "Unexpected parse error happen!";
    }
    return unknown_number(typeid(error_type).name(), kind, text);
}

ustring8 xmc_file_loader::load_error::format_msg(append_type level, const ustring8& text) {
    switch (level) {
    case in_message:
        return quoted("\n in message element: ", text);
    case in_catalog:
        return quoted("\n in catalog element: ", text);
    case in_file:
        return quoted("\n in file: ", text);
    case at_line:
        return quoted("\n at line: ", text);
    }
    return "\n " + unknown_number(typeid(append_type).name(), level, text);
}

ustring8 xmc_file_loader::load_error::format_msg(const xml_parser::parse_error& fault) {
    const std::string line = xml_line(fault);
    if (line.empty())
        return std::string(message_front) + "Unknown Parse error";
    return message_front + line + format_msg(at_line, std::to_string(fault.line));
}

void xmc_file_loader::load_error::append_error_stack(append_type level, const ustring8& text) {
    message += format_msg(level, text);
}

namespace {

// Locales are compared in this form. A name of one byte is a sign rather than a locale, "." for
// texts that belong to none, and stays.
ustring8 normalised(const ustring8& lang) {
    ustring8 result(lang);
    if (result.size() != 1) {
        strings::replace_all(result, ustring8("."), ustring8("_"));
        strings::replace_all(result, ustring8("-"), ustring8("_"));
    }
    return result;
}

bool is_at(const token_iterator& cursor, const token_iterator& end, token::token_type type,
           const char* value) {
    return cursor != end && cursor->type() == type && cursor->value() == value;
}

bool is_at_argument(const token_iterator& cursor, const token_iterator& end) {
    return is_at(cursor, end, token::element_start, "argument") ||
           is_at(cursor, end, token::element_start, "arg");
}

// The token at the cursor must be there. A list that is made from a whole text ends nowhere else
// than behind its root; the test keeps the walk within lists that end early.
void require_token(const token_iterator& cursor, const token_iterator& end) {
    if (cursor == end)
        throw load_error(xmc_file_loader::unexpected, "");
}

void step(token_iterator& cursor, const token_iterator& end) {
    ++cursor;
    require_token(cursor, end);
}

void require_element_start(const token_iterator& cursor, const token_iterator& end,
                           const char* name) {
    require_token(cursor, end);
    if (!is_at(cursor, end, token::element_start, name))
        throw load_error(xmc_file_loader::invalid_element, cursor->value());
}

[[noreturn]] void refuse_attribute(const ustring8& name) {
    throw load_error(xmc_file_loader::invalid_attribute, name);
}

// Steps from an element's start behind the end of its start tag. Each attribute goes to
// `take(name, value)`, and to `refuse(text)` what else stands there, which can only be a comment.
template <typename Take, typename Refuse>
void read_start_tag(token_iterator& cursor, const token_iterator& end, Take take, Refuse refuse) {
    step(cursor, end);
    while (cursor->type() != token::start_tag_end) {
        const ustring8& name = cursor->value();
        if (cursor->type() == token::attribute_name) {
            step(cursor, end);
            take(name, cursor->value());
        } else {
            refuse(name);
        }
        step(cursor, end);
    }
    ++cursor;
}

void pass_over(const ustring8&) {}

// The text of a file: its bytes and, as a contract, a NUL byte behind them, so that the last token
// of a file is often a text of that byte, and a text that is cut may be reported by it.
//
// A file that cannot be read counts as empty, and then it is the XML header that is found missing:
// a link, or a directory, whose size is whatever the file system says.
ustring8 load_text(const ustring8& file) {
    ustring8 text;
    struct stat status;
    if (::stat(file.c_str(), &status) == 0 && status.st_size < largest_file)
        text.reserve(static_cast<std::size_t>(status.st_size) + 1);  // for all of it and the NUL
    try {
        system::load_file(file, text);
    } catch (const std::length_error&) {
        text.clear();
    }
    text.push_back('\0');
    return text;
}

ustring8 directory_of(const ustring8& file) {
    const auto separator = file.find_last_of("\\/");
    return separator == ustring8::npos ? ustring8("./") : ustring8(file, 0, separator + 1);
}

// Contract: both separators count on every platform, and so does a drive letter, so that one
// catalog serves programs on all of them.
bool is_used_as_written(const ustring8& file) {
    return file[0] == '/' || file[0] == '\\' || (file.size() >= 3 && file[1] == ':');
}

// A catalog that its last holder deletes.
catalog_t* new_catalog() {
    catalog_t* const catalog = new catalog_t;
    catalog->allocated = true;
    return catalog;
}

// What a path leads to, however it is spelled.
class identity {
public:
    identity() : m_is_known(false), m_device(0), m_number(0) {}

    // A link at the end of the path is itself: it counts as empty, whatever it leads to.
    static identity of_file(const ustring8& path) { return identity(path, ::lstat); }
    static identity of_directory(const ustring8& path) { return identity(path, ::stat); }

    bool operator==(const identity& other) const {
        return m_is_known && other.m_is_known && m_device == other.m_device &&
               m_number == other.m_number;
    }

private:
    identity(const ustring8& path, int (*ask)(const char*, struct stat*)) : identity() {
        struct stat status;
        if (ask(path.c_str(), &status) == 0) {
            m_is_known = true;
            m_device = status.st_dev;
            m_number = status.st_ino;
        }
    }

    bool m_is_known;
    dev_t m_device;
    ino_t m_number;
};

}  // namespace

// One file that is being read, with a way back along the files whose includes led to it. The chain
// lives on the stack of one load.
class __attribute__((visibility("hidden"))) xmc_file_loader::reader {
public:
    explicit reader(xmc_file_loader& loader, const reader* outer = nullptr)
        : m_loader(loader), m_outer(outer) {}

    load_error read_file(const ustring8& file) {
        if (!system::io::exists(file))
            return load_error(file_not_found, file);

        const ustring8 directory = directory_of(file);
        m_file = identity::of_file(file);
        m_directory = identity::of_directory(directory);
        if (is_being_read())
            return included_by_itself(file);

        const ustring8 text = load_text(file);
        m_loader.m_base_directory = directory;
        return read_string(text, file);
    }

    load_error read_string(const ustring8& text, const ustring8& file) {
        xml_token_stream stream;
        const xml_parser::parse_error fault = stream.parse(text);
        if (fault.type != xml_parser::parse_error::no_error) {
            load_error error(xml_error, fault);
            error.append_error_stack(load_error::in_file, file);
            return error;
        }

        const xml_token_stream& tokens = stream;
        token_iterator cursor = tokens.begin();
        token_iterator end = tokens.end();
        if (cursor == end)
            return load_error(unexpected, "Nothing of interest in the file.");
        try {
            return read_root(cursor, end, file);
        } catch (load_error& error) {
            error.append_error_stack(load_error::in_file, file);
            return error;
        }
    }

    void read_include(token_iterator& cursor, token_iterator& end) {
        require_element_start(cursor, end, "include");
        const auto take = [this](const ustring8& name, const ustring8& value) {
            if (name == "file")
                read_included(value);
        };
        read_start_tag(cursor, end, take, pass_over);

        if (!is_at(cursor, end, token::element_end, "include"))
            throw load_error(include_not_closed, "");
        ++cursor;
    }

private:
    load_error read_root(token_iterator& cursor, token_iterator& end, const ustring8& file) {
        m_loader.parse_ignorable(cursor, end);
        m_loader.parse_xmc_header(cursor, end);
        m_loader.parse_ignorable(cursor, end);

        bool is_anything_read = false;
        while (true) {
            if (is_at(cursor, end, token::element_start, "catalog"))
                m_loader.parse_catalog(cursor, end);
            else if (is_at(cursor, end, token::element_start, "include"))
                read_include(cursor, end);
            else
                break;
            m_loader.parse_ignorable(cursor, end);
            is_anything_read = true;
        }

        if (cursor != end && !is_at(cursor, end, token::element_end, "xmc"))
            throw load_error(invalid_element, cursor->value());
        // Contract: a catalog that did not match counts as read. A file with nothing at all in it
        // is no fault of its grammar: it is given, not thrown, and gets no line for the file.
        return is_anything_read ? load_error(no_error, "") : load_error(no_catalog, file);
    }

    void read_included(const ustring8& value) {
        if (value.empty())
            throw load_error(file_not_found, "");
        const ustring8 file = is_used_as_written(value) ? value : m_loader.m_base_directory + value;

        // Contract: the base directory comes back only if all went well. With a fault the whole
        // load is over.
        const ustring8 base_directory = m_loader.m_base_directory;
        const load_error result = reader(m_loader, this).read_file(file);
        if (result.type != no_error)
            throw load_error(result);
        m_loader.m_base_directory = base_directory;
    }

    // The same file in the same directory includes the same files, without an end.
    bool is_being_read() const {
        for (const reader* outer = m_outer; outer != nullptr; outer = outer->m_outer)
            if (m_file == outer->m_file && m_directory == outer->m_directory)
                return true;
        return false;
    }

    static load_error included_by_itself(const ustring8& file) {
        load_error error(unexpected, "");
        error.message += quoted("\n in an include of a file by itself: ", file);
        return error;
    }

    xmc_file_loader& m_loader;
    const reader* m_outer;
    identity m_file;
    identity m_directory;
};

xmc_file_loader::xmc_file_loader() {}

xmc_file_loader::~xmc_file_loader() TOVA_NOTHROW {}

load_error xmc_file_loader::parse(const ustring8& file, const ustring8& lang) {
    if (lang.empty())
        return load_error(no_default_locale, "");
    handle_language(lang);
    return parse_file(file);
}

// Contract: the locale list gets "." and "en" twice here. The first of two equal entries is the one
// that weighs.
load_error xmc_file_loader::parse(const ustring8& file, const ustring8& lang,
                                  const ustring8& catalog_id) {
    m_catalog_id = catalog_id;
    handle_language(lang);
    return parse(file);
}

load_error xmc_file_loader::parse(const ustring8& file) {
    handle_language("");
    return parse_file(file);
}

unsigned long xmc_file_loader::combine_data(
    std::map<ustring8, memory::pointers::shared_pointer<catalog_t>>& target,
    const std::map<ustring8, ustring8>&) {
    unsigned long stored = 0;
    for (const auto& source : m_catalogs) {
        auto entry = target.find(source.first);
        if (entry == target.end()) {
            const memory::pointers::shared_pointer<catalog_t> added(new_catalog());
            entry = target.insert(std::make_pair(source.first, added)).first;
        }
        if (!entry->second)
            throw "unreferanced object";

        catalog_t& catalog = *entry->second;
        catalog._name(source.first);
        for (const auto& message : source.second) {
            // Contract: both locales are weighed by this loader's list, also that of a message
            // which an earlier load for another locale stored. Of two equals the later stays.
            const message_t& present = catalog.message(message.first);
            const message_t& offered = message.second;
            if (!(present == types::nil) && get_locale_weight(present._orginal_locale()) >
                                                get_locale_weight(offered._orginal_locale()))
                continue;
            catalog.message(message.first, offered);
            ++stored;
        }
    }
    return stored;
}

void xmc_file_loader::reset() {}

void xmc_file_loader::handle_language(const ustring8& lang) {
    const ustring8 name = normalised(lang);
    m_locales.push_back(".");
    m_locales.push_back("en");
    if (name.empty())
        return;

    const std::vector<ustring8> parts = strings::split_string(name, ustring8("_"), 0);
    ustring8 running = parts.front();
    if (running != "en")
        m_locales.push_back(running);
    for (auto part = parts.begin() + 1; part != parts.end(); ++part) {
        running += "_" + *part;
        m_locales.push_back(running);
    }
}

unsigned int xmc_file_loader::get_locale_weight(const ustring8& lang) const {
    const ustring8 name = normalised(lang);
    for (std::size_t i = 0; i < m_locales.size(); ++i)
        if (m_locales[i] == name)
            return static_cast<unsigned int>(i + 1);
    return 0;
}

bool xmc_file_loader::is_lang_id_good(const ustring8& lang) const {
    return get_locale_weight(lang) != 0;
}

bool xmc_file_loader::is_cat_id_set() {
    return !m_catalog_id.empty();
}

bool xmc_file_loader::is_catalog_matched(const ustring8& name) {
    return !is_cat_id_set() || name == m_catalog_id;
}

load_error xmc_file_loader::parse_file(const ustring8& file) {
    return reader(*this).read_file(file);
}

load_error xmc_file_loader::parse_string(const ustring8& text, const ustring8& file) {
    return reader(*this).read_string(text, file);
}

void xmc_file_loader::parse_xmc_header(token_iterator& cursor, token_iterator& end) {
    if (cursor == end)
        throw load_error(not_xmc, "Value Not Defined");
    if (!is_at(cursor, end, token::element_start, "xmc"))
        throw load_error(not_xmc, cursor->value());

    step(cursor, end);
    if (!is_at(cursor, end, token::attribute_name, "version"))
        refuse_attribute(cursor->value());
    step(cursor, end);
    if (cursor->value() != "1.0" && cursor->value() != "1.1")
        throw load_error(bad_version, cursor->value());

    // Contract: what follows the version is taken for the end of the start tag, unseen. A second
    // attribute, or a comment, leaves the real end to the caller, who finds no element there.
    ++cursor;
    if (cursor != end)
        ++cursor;
}

void xmc_file_loader::parse_ignorable(token_iterator& cursor, token_iterator& end) {
    while (cursor != end && (cursor->type() == token::comment || cursor->type() == token::space ||
                             cursor->type() == token::character))
        ++cursor;
}

void xmc_file_loader::parse_catalog(token_iterator& cursor, token_iterator& end) {
    require_element_start(cursor, end, "catalog");
    ustring8 name;
    ustring8 lang;
    const auto take = [&](const ustring8& attribute, const ustring8& value) {
        if (attribute == "name")
            name = value;
        else if (attribute == "lang")
            lang = value;
        else
            refuse_attribute(attribute);
    };
    read_start_tag(cursor, end, take, refuse_attribute);

    if (is_catalog_matched(name) && is_lang_id_good(lang)) {
        parse_ignorable(cursor, end);
        while (is_at(cursor, end, token::element_start, "msg")) {
            try {
                message_t message = parse_message(cursor, end);
                message._orginal_locale(lang);
                set_message(message, name);
            } catch (load_error& error) {
                error.append_error_stack(load_error::in_catalog, name);
                throw;
            }
            parse_ignorable(cursor, end);
        }
        require_token(cursor, end);
    } else {
        while (cursor != end && !is_at(cursor, end, token::element_end, "catalog"))
            ++cursor;
    }

    if (!is_at(cursor, end, token::element_end, "catalog"))
        throw load_error(catalog_not_closed, name);
    ++cursor;
}

void xmc_file_loader::parse_include(token_iterator& cursor, token_iterator& end) {
    reader(*this).read_include(cursor, end);
}

message_t xmc_file_loader::parse_message(token_iterator& cursor, token_iterator& end) {
    require_element_start(cursor, end, "msg");
    ustring8 key;
    ustring8 meta;
    const auto take = [&](const ustring8& attribute, const ustring8& value) {
        if (attribute == "name")
            key = value;
        else if (attribute == "meta")
            meta = value;
        else
            refuse_attribute(attribute);
    };
    read_start_tag(cursor, end, take, refuse_attribute);

    std::vector<message_item> items;
    ustring8 buffer;
    const auto flush = [&] {
        if (!buffer.empty())
            items.push_back(message_item(buffer));
        buffer.clear();
    };

    // Contract: any token that reads "msg" ends the message, be it a text, a comment or the start
    // of another element. The catalog then finds that it goes on where it should not.
    bool is_behind_argument = false;
    require_token(cursor, end);
    while (cursor->type() != token::element_end && cursor->value() != "msg") {
        const bool was_behind_argument = is_behind_argument;
        is_behind_argument = false;
        if (is_at_argument(cursor, end)) {
            flush();
            try {
                items.push_back(parse_message_arg(cursor, end));
            } catch (load_error& error) {
                error.append_error_stack(load_error::in_message, key);
                throw;
            }
            is_behind_argument = true;
            continue;
        }

        switch (cursor->type()) {
        case token::character:
            buffer += cursor->value();
            break;
        case token::space:
            if (buffer.empty() ? was_behind_argument : buffer.back() != ' ')
                buffer += ' ';
            break;
        case token::element_start:
            if (cursor->value() != "br")
                throw load_error(invalid_element, cursor->value());
            buffer += '\n';
            step(cursor, end);
            if (cursor->type() != token::start_tag_end)
                refuse_attribute(cursor->value());
            step(cursor, end);
            if (!is_at(cursor, end, token::element_end, "br"))
                throw load_error(br_not_closed, "");
            break;
        default:
            break;  // a comment
        }
        step(cursor, end);
    }
    flush();
    ++cursor;
    return message_t(key, items, meta);
}

message_item xmc_file_loader::parse_message_arg(token_iterator& cursor, token_iterator& end) {
    if (!is_at_argument(cursor, end))
        return message_item("", message_item::type_string);

    message_item::type_t type = message_item::type_string;
    ustring8 name;
    ustring8 data;
    const auto take = [&](const ustring8& attribute, const ustring8& value) {
        if (attribute == "name") {
            // Contract: what stands in front of the name is dropped with it.
            name = value;
            data = value;
        } else if (attribute == "type") {
            type = parse_message_type(value);
        } else {
            data += '\x01' + attribute + '\x01' + value;
        }
    };
    read_start_tag(cursor, end, take, pass_over);

    while (cursor != end && cursor->type() != token::element_end)
        ++cursor;
    if (cursor == end)
        throw load_error(arg_not_closed, name);
    step(cursor, end);
    return message_item(data, type);
}

message_item::type_t xmc_file_loader::parse_message_type(const ustring8& word) {
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

void xmc_file_loader::set_message(const message_t& msg, const ustring8& catalog) {
    message_t& entry = m_catalogs[catalog][msg.name()];
    if (entry == types::nil ||
        get_locale_weight(entry._orginal_locale()) < get_locale_weight(msg._orginal_locale()))
        entry = msg;
}

}  // namespace _private
}  // namespace i18n
}  // namespace TOVA_2_18
