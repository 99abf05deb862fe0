/// @file
/// Errors with names, and the library's exceptions as standard ones.
///
///     std::cerr << tova::extras::name(result.type) << '\n';                   // "xml_error"
///
///     int main() {
///         return tova::extras::with_standard_errors([] { return run(); });    //
///         std::runtime_error
///     }
///
/// All functions are pure; threads may call them at once.
#pragma once

#include <tova/abi.hpp>
#include <tova/exceptions/exceptions.hpp>
#include <tova/i18n/_private/xmc_file_loader.hpp>
#include <tova/i18n/message_catalogs.hpp>
#include <tova/parser/xml_parser.hpp>
#include <tova/parser/xml_stream_parser.hpp>

#include <stdexcept>
#include <string>
#include <typeinfo>
#include <utility>

namespace TOVA_2_18 {
namespace extras {

/// @name Names of error numbers
///
/// The name of the enumerator, without its scope. "unknown" for a number that has no enumerator.
/// Never fails; the result lives as long as the program.
/// @{
inline const char* name(i18n::message_catalogs::error_type error) {
    using set = i18n::message_catalogs;
    switch (error) {
    case set::no_error:
        return "no_error";
    case set::no_catalog:
        return "no_catalog";
    case set::no_default_locale:
        return "no_default_locale";
    case set::file_not_found:
        return "file_not_found";
    case set::directory_not_found:
        return "directory_not_found";
    case set::entity_not_found:
        return "entity_not_found";
    case set::xml_error:
        return "xml_error";
    case set::invalid_xmc:
        return "invalid_xmc";
    case set::unexpected:
        return "unexpected";
    }
    return "unknown";
}

inline const char* name(i18n::_private::xmc_file_loader::error_type error) {
    using file = i18n::_private::xmc_file_loader;
    switch (error) {
    case file::no_error:
        return "no_error";
    case file::no_catalog:
        return "no_catalog";
    case file::no_default_locale:
        return "no_default_locale";
    case file::file_not_found:
        return "file_not_found";
    case file::xml_error:
        return "xml_error";
    case file::invalid_attribute:
        return "invalid_attribute";
    case file::invalid_element:
        return "invalid_element";
    case file::not_xmc:
        return "not_xmc";
    case file::bad_version:
        return "bad_version";
    case file::br_not_closed:
        return "br_not_closed";
    case file::msg_not_closed:
        return "msg_not_closed";
    case file::arg_not_closed:
        return "arg_not_closed";
    case file::include_not_closed:
        return "include_not_closed";
    case file::catalog_not_closed:
        return "catalog_not_closed";
    case file::unexpected:
        return "unexpected";
    }
    return "unknown";
}

inline const char* name(parser::xml_parser::parse_error::error_type error) {
    using xml = parser::xml_parser::parse_error;
    switch (error) {
    case xml::no_error:
        return "no_error";
    case xml::unexpected_end:
        return "unexpected_end";
    case xml::mismatched_end:
        return "mismatched_end";
    case xml::no_root:
        return "no_root";
    case xml::no_header:
        return "no_header";
    case xml::unexpected_character:
        return "unexpected_character";
    case xml::missing_quote:
        return "missing_quote";
    case xml::unknown_entity:
        return "unknown_entity";
    case xml::missing_equals:
        return "missing_equals";
    case xml::attribute_redefined:
        return "attribute_redefined";
    case xml::data_after_root:
        return "data_after_root";
    }
    return "unknown";
}

inline const char* name(parser::xml_stream_parser::error_type error) {
    using stream = parser::xml_stream_parser;
    switch (error) {
    case stream::no_error:
        return "no_error";
    case stream::out_of_data:
        return "out_of_data";
    case stream::not_recovered:
        return "not_recovered";
    case stream::end_of_document:
        return "end_of_document";
    case stream::mismatched_end_tag:
        return "mismatched_end_tag";
    case stream::duplicate_attribute:
        return "duplicate_attribute";
    case stream::syntax_error:
        return "syntax_error";
    case stream::missing_quote:
        return "missing_quote";
    case stream::missing_equals:
        return "missing_equals";
    case stream::internal_failure:
        return "internal_failure";
    case stream::open_failed:
        return "open_failed";
    case stream::not_xml:
        return "not_xml";
    }
    return "unknown";
}
/// @}

/// The name of the class of an exception of the library, without its namespace: "out_of_range".
/// A class that a program derives has the name of the nearest base here.
inline const char* name(const exceptions::exception& error) {
    namespace e = exceptions;
    if (dynamic_cast<const e::out_of_range*>(&error) != nullptr)
        return "out_of_range";
    if (dynamic_cast<const e::length_error*>(&error) != nullptr)
        return "length_error";
    if (dynamic_cast<const e::invalid_argument_value*>(&error) != nullptr)
        return "invalid_argument_value";
    if (dynamic_cast<const e::logic_error*>(&error) != nullptr)
        return "logic_error";
    if (dynamic_cast<const e::empty_error*>(&error) != nullptr)
        return "empty_error";
    if (dynamic_cast<const e::full_error*>(&error) != nullptr)
        return "full_error";
    if (dynamic_cast<const e::overflow_error*>(&error) != nullptr)
        return "overflow_error";
    if (dynamic_cast<const e::underflow_error*>(&error) != nullptr)
        return "underflow_error";
    if (dynamic_cast<const e::runtime_error*>(&error) != nullptr)
        return "runtime_error";
    return "exception";
}

/// A standard exception with the class and the message of one of the library's: "out_of_range: day
/// value out of valid range". Raises what an allocation raises.
inline std::runtime_error as_std_exception(const exceptions::exception& error) {
    const char* const message = error.get_message();
    return std::runtime_error(std::string(name(error)) + ": " +
                              (message != nullptr ? message : ""));
}

/// Calls `action` and returns what it returns. An exception of the library that leaves it is thrown
/// on as the `std::runtime_error` of `as_std_exception`; all others pass through unchanged.
///
/// `place`, if it is not empty, is put before the message: "loading settings: out_of_range: ...".
template <typename Action>
auto with_standard_errors(Action&& action, const std::string& place = std::string())
    -> decltype(std::forward<Action>(action)()) {
    try {
        return std::forward<Action>(action)();
    } catch (const exceptions::exception& error) {
        const std::runtime_error standard = as_std_exception(error);
        if (place.empty())
            throw standard;
        throw std::runtime_error(place + ": " + standard.what());
    }
}

}  // namespace extras
}  // namespace TOVA_2_18
