#include <tova/i18n/message_catalogs.hpp>

#include "i18n/unknown_number.hpp"

#include <ostream>
#include <string>

// The last stage of a load: the outcome of a call. It is made from the error of a file or, if no
// file is involved, from a separate kind of error. The messages are part of the interface.

namespace TOVA_2_18 {
namespace i18n {

using _private::xmc_file_loader;
using strings::ustring8;

namespace {

const char message_front[] = "message_catalogs::result_type - ";

// The two error enumerations side by side. Names and numbers are the same up to `file_not_found`
// and differ after that. Only the set has `directory_not_found` (4) and `entity_not_found` (5):
// these errors are found before any file is read.
const struct outcome {
    xmc_file_loader::error_type of_file;
    message_catalogs::error_type of_load;
    const char* line;
} outcomes[] = {
    {xmc_file_loader::no_error, message_catalogs::no_error, "No Error"},
    {xmc_file_loader::no_catalog, message_catalogs::no_catalog, "No catalog was loaded"},
    {xmc_file_loader::no_default_locale, message_catalogs::no_default_locale,
     "Default locale lookup not supported yet"},
    {xmc_file_loader::file_not_found, message_catalogs::file_not_found,
     "File was not found on disk"},
    {xmc_file_loader::xml_error, message_catalogs::xml_error,
     "XML parse error, XML file not well formed"},
    {xmc_file_loader::invalid_attribute, message_catalogs::invalid_xmc, "XMC file is not valid"},
    {xmc_file_loader::invalid_element, message_catalogs::invalid_xmc, "XMC file is not valid"},
    {xmc_file_loader::not_xmc, message_catalogs::invalid_xmc, "XMC file is not valid"},
    {xmc_file_loader::bad_version, message_catalogs::invalid_xmc, "XMC file is not valid"},
    {xmc_file_loader::br_not_closed, message_catalogs::invalid_xmc, "XMC file is not valid"},
    {xmc_file_loader::msg_not_closed, message_catalogs::invalid_xmc, "XMC file is not valid"},
    {xmc_file_loader::arg_not_closed, message_catalogs::invalid_xmc, "XMC file is not valid"},
    {xmc_file_loader::include_not_closed, message_catalogs::invalid_xmc, "XMC file is not valid"},
    {xmc_file_loader::catalog_not_closed, message_catalogs::invalid_xmc, "XMC file is not valid"},
    {xmc_file_loader::unexpected, message_catalogs::unexpected,
     "Unexpected error happened during loading"},
};

// A number without an enumerator is a valid outcome as well.
outcome outcome_of(xmc_file_loader::error_type of_file) {
    for (const outcome& row : outcomes)
        if (row.of_file == of_file)
            return row;
    return {of_file, message_catalogs::unexpected, "Unhandled case"};
}

ustring8 message_of(const xmc_file_loader::load_error& error) {
    return std::string(message_front) + outcome_of(error.type).line + "\n " + error.message;
}

}  // namespace

message_catalogs::result_type::result_type(error_type kind, const ustring8& text)
    : type(kind), message(format_message(kind, text)) {}

message_catalogs::result_type::result_type(const xmc_file_loader::load_error& error)
    : type(outcome_of(error.type).of_load), message(message_of(error)) {}

message_catalogs::result_type::~result_type() TOVA_NOTHROW {}

ustring8 message_catalogs::result_type::format_message(error_type kind, const ustring8& text) {
    const std::string front(message_front);
    switch (kind) {
    case no_error:
        return front + "No Error";
    case no_catalog:
        return front + "No catalog was loaded in file: \"" + text + "\"";
    case file_not_found:
        return front + "File \"" + text + "\" was not found on disk";
    case directory_not_found:
        return front + "Directory \"" + text + "\" was not found on disk";
    case entity_not_found:
        return front + "Entity (file or directory) \"" + text + "\" was not found on disk";
    case no_default_locale:
    case xml_error:
    case invalid_xmc:
    case unexpected:
        break;  // the error of a file has the message; with a plain string they are unknown numbers
    }
    return detail::unknown_number(kind, text);
}

// Contract: formatting an error also adopts its kind.
ustring8 message_catalogs::result_type::format_message(const xmc_file_loader::load_error& error) {
    type = outcome_of(error.type).of_load;
    return message_of(error);
}

std::ostream& operator<<(std::ostream& stream, message_catalogs::result_type& result) {
    return stream << static_cast<const std::string&>(result.message);
}

}  // namespace i18n
}  // namespace TOVA_2_18
