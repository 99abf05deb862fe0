/// @file
/// Output of 16- and 32-bit strings, dates, times, colors, results and errors.
///
///     using namespace tova::extras;             // without it a program means what it meant before
///     std::cout << text16 << ' ' << due << ' ' << result.type << '\n';
///
/// Strings are written as UTF-8; invalid input comes out as "-1" (16 bits) or "?" for each invalid
/// byte, as in the conversions. Dates and times are written as ISO 8601, colors as "#RRGGBBAA",
/// errors by name. Field widths and fill apply to the whole text. The operators raise what the
/// stream raises; a stream belongs to one thread at a time.
#pragma once

#include <tova/abi.hpp>
#include <tova/extras/dates.hpp>
#include <tova/extras/errors.hpp>
#include <tova/strings/unicode.hpp>
#include <tova/strings/ustring.hpp>
#include <tova/system/date_time/duration.hpp>
#include <tova/types/color.hpp>

#include <cstdio>
#include <ostream>
#include <string>

namespace TOVA_2_18 {
namespace extras {

/// Writes a string as UTF-8, and returns the stream.
inline std::ostream& operator<<(std::ostream& out, const strings::ustring16& text) {
    return out << static_cast<const std::string&>(strings::utf16_to_utf8(text));
}
inline std::ostream& operator<<(std::ostream& out, const strings::ustring32& text) {
    return out << static_cast<const std::string&>(strings::utf32_to_utf8(text));
}

/// Writes a date or time as ISO 8601, and returns the stream.
inline std::ostream& operator<<(std::ostream& out, const system::date_time::date& value) {
    return out << static_cast<const std::string&>(to_iso(value));
}
inline std::ostream& operator<<(std::ostream& out, const system::date_time::time& value) {
    return out << static_cast<const std::string&>(to_iso(value));
}
inline std::ostream& operator<<(std::ostream& out, const system::date_time::date_time_t& value) {
    return out << static_cast<const std::string&>(to_iso(value));
}

/// A number of days: "3 days".
inline std::ostream& operator<<(std::ostream& out, const system::date_time::date_duration& value) {
    return out << std::to_string(value.days()) + (value.days() == 1 ? " day" : " days");
}

/// Hours, minutes, seconds and milliseconds: "-1:02:03.004". Hours are not limited to a day, and
/// milliseconds are left out if there are none.
inline std::ostream& operator<<(std::ostream& out, const system::date_time::time_duration& value) {
    const long total = value.total_milliseconds();
    // The smallest number has no positive counterpart among signed ones.
    const unsigned long size =
        total < 0 ? 0 - static_cast<unsigned long>(total) : static_cast<unsigned long>(total);
    char text[48];
    const int length = std::snprintf(text, sizeof text, "%s%lu:%02lu:%02lu", total < 0 ? "-" : "",
                                     size / 3600000, size / 60000 % 60, size / 1000 % 60);
    if (size % 1000 != 0)
        std::snprintf(text + length, sizeof text - static_cast<std::size_t>(length), ".%03lu",
                      size % 1000);
    return out << static_cast<const char*>(text);
}

/// Writes a color as "#RRGGBBAA", and returns the stream.
inline std::ostream& operator<<(std::ostream& out, const types::color_t& value) {
    char text[16];
    std::snprintf(text, sizeof text, "#%02X%02X%02X%02X", static_cast<unsigned>(value.red()),
                  static_cast<unsigned>(value.green()), static_cast<unsigned>(value.blue()),
                  static_cast<unsigned>(value.alpha()));
    return out << static_cast<const char*>(text);
}

/// Writes the name of a kind of error, such as "file_not_found", and returns the stream.
inline std::ostream& operator<<(std::ostream& out, i18n::message_catalogs::error_type error) {
    return out << name(error);
}
inline std::ostream& operator<<(std::ostream& out,
                                i18n::_private::xmc_file_loader::error_type error) {
    return out << name(error);
}
inline std::ostream& operator<<(std::ostream& out,
                                parser::xml_parser::parse_error::error_type error) {
    return out << name(error);
}
inline std::ostream& operator<<(std::ostream& out, parser::xml_stream_parser::error_type error) {
    return out << name(error);
}

/// The message of a load. The library's own operator takes a result that may change only.
inline std::ostream& operator<<(std::ostream& out,
                                const i18n::message_catalogs::result_type& result) {
    return out << static_cast<const std::string&>(result.message);
}

/// An error of the parser: "mismatched_end in line 3: menu". Lines count from 1 here.
inline std::ostream& operator<<(std::ostream& out, const parser::xml_parser::parse_error& error) {
    std::string text = name(error.type);
    if (error.type != parser::xml_parser::parse_error::no_error) {
        text += " in line " + std::to_string(error.line + 1ul);
        if (!error.text.empty() && error.text != std::string(1, '\0'))
            text += ": " + error.text;
    }
    return out << text;
}

}  // namespace extras
}  // namespace TOVA_2_18
