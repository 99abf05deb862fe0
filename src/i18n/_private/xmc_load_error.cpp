#include <tova/i18n/_private/xmc_file_loader.hpp>

#include "i18n/unknown_number.hpp"

#include <string>

// The error of one file, and its message. The messages are part of the interface, misspellings
// included.

namespace TOVA_2_18 {
namespace i18n {
namespace _private {

using detail::unknown_number;
using parser::xml_parser;
using strings::ustring8;

namespace {

const char message_front[] = "xmc_file_loader::load_error - ";

std::string quoted(const char* before, const ustring8& text, const char* after = "") {
    return std::string(before) + '"' + text + '"' + after;
}

// The message of an XML error, without the prefix and the line number that all of them share. Empty
// if there is no error or if the error is unknown.
std::string xml_wording(const xml_parser::parse_error& error) {
    switch (error.type) {
    case xml_parser::parse_error::no_error:
        break;
    case xml_parser::parse_error::unexpected_end:
        return "Unexpected end of file during XML parsing";
    case xml_parser::parse_error::mismatched_end:
        return quoted("Mismatched end element ", error.text, " was found");
    case xml_parser::parse_error::no_root:
        return "No root element was found";
    case xml_parser::parse_error::no_header:
        return "Valid XML header not found";
    case xml_parser::parse_error::unexpected_character:
        return quoted("Unexpected character ", error.text, " found while parsing");
    case xml_parser::parse_error::missing_quote:
        return quoted("Missing \" while parsing attribute ", error.text);
    case xml_parser::parse_error::unknown_entity:
        return "Unknown enity being parsed";
    case xml_parser::parse_error::missing_equals:
        return quoted("Missing = sign for attribute ", error.text);
    case xml_parser::parse_error::attribute_redefined:
        return quoted("attribute ", error.text, " is being redefined");
    case xml_parser::parse_error::data_after_root:
        return "Data found after root element";
    }
    return std::string();
}

}  // namespace

xmc_file_loader::load_error::load_error(error_type kind, const ustring8& text)
    : type(kind), message(format_msg(kind, text)) {}

xmc_file_loader::load_error::load_error(error_type kind, const xml_parser::parse_error& error)
    : type(kind), message(format_msg(error)) {}

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
        break;  // its parse_error has the message; with a plain string it is an unknown number
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
    return unknown_number(kind, text);
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
    return "\n " + unknown_number(level, text);
}

ustring8 xmc_file_loader::load_error::format_msg(const xml_parser::parse_error& error) {
    const std::string wording = xml_wording(error);
    if (wording.empty())
        return std::string(message_front) + "Unknown Parse error";
    return message_front + wording + format_msg(at_line, std::to_string(error.line));
}

void xmc_file_loader::load_error::append_error_stack(append_type level, const ustring8& text) {
    message += format_msg(level, text);
}

}  // namespace _private
}  // namespace i18n
}  // namespace TOVA_2_18
