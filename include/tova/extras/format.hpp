/// @file
/// Formatting of the library's types with {fmt}, and with `std::format` where there is one.
///
///     fmt::print("{} is due on {:>12}\n", name, due);
///     fmt::print("{}\n", tova::extras::utf8(text16));
///
/// Strings are written as UTF-8, dates and times as ISO 8601, colors as "#RRGGBBAA", errors by
/// name, variants as their string. The specification is that of strings: fill, alignment, width,
/// precision. Include {fmt} before this header, or it provides for `std::format` alone.
///
/// The formatters keep no state: threads may format different objects at the same time.
#pragma once

#include <tova/abi.hpp>
#include <tova/extras/stream.hpp>
#include <tova/types/variant.hpp>

#include <sstream>
#include <string>
#if __cplusplus >= 202002L && defined(__has_include)
#if __has_include(<format>)
#include <format>
#endif
#endif

namespace TOVA_2_18 {
namespace extras {

/// A string as UTF-8. {fmt} refuses strings of other widths before it looks for a formatter.
/// Invalid input becomes what the plain conversions make of it.
inline strings::ustring8 utf8(const strings::ustring16& text) {
    return strings::utf16_to_utf8(text);
}
inline strings::ustring8 utf8(const strings::ustring32& text) {
    return strings::utf32_to_utf8(text);
}

namespace _private {

inline std::string formatted(const strings::ustring8& text) {
    return text;
}
inline std::string formatted(const types::variant& value) {
    return value.as_ustring();
}
template <typename T>
std::string formatted(const T& value) {
    std::ostringstream out;
    out << value;
    return out.str();
}

}  // namespace _private
}  // namespace extras
}  // namespace TOVA_2_18

/// Applies `X` to each type that has a formatter.
///
/// One list of types serves both libraries; a formatter is a specialization in their namespace.
#define TOVA_EXTRAS_FORMATTED_TYPES(X)                                                             \
    X(TOVA_2_18::system::date_time::date)                                                          \
    X(TOVA_2_18::system::date_time::time)                                                          \
    X(TOVA_2_18::system::date_time::date_time_t)                                                   \
    X(TOVA_2_18::system::date_time::date_duration)                                                 \
    X(TOVA_2_18::system::date_time::time_duration)                                                 \
    X(TOVA_2_18::types::color_t)                                                                   \
    X(TOVA_2_18::types::variant)                                                                   \
    X(TOVA_2_18::i18n::message_catalogs::error_type)                                               \
    X(TOVA_2_18::i18n::message_catalogs::result_type)                                              \
    X(TOVA_2_18::parser::xml_parser::parse_error)                                                  \
    X(TOVA_2_18::parser::xml_parser::parse_error::error_type)                                      \
    X(TOVA_2_18::parser::xml_stream_parser::error_type)

#ifdef FMT_VERSION
#define TOVA_EXTRAS_FMT_FORMATTER(Type)                                                            \
    template <>                                                                                    \
    struct fmt::formatter<Type> : fmt::formatter<fmt::string_view> {                               \
        template <typename Context>                                                                \
        auto format(const Type& value, Context& context) const -> decltype(context.out()) {        \
            const std::string text = TOVA_2_18::extras::_private::formatted(value);                \
            return fmt::formatter<fmt::string_view>::format(text, context);                        \
        }                                                                                          \
    };
TOVA_EXTRAS_FORMATTED_TYPES(TOVA_EXTRAS_FMT_FORMATTER)
#undef TOVA_EXTRAS_FMT_FORMATTER
#endif

#ifdef __cpp_lib_format
#define TOVA_EXTRAS_STD_FORMATTER(Type)                                                            \
    template <>                                                                                    \
    struct std::formatter<Type> : std::formatter<std::string_view> {                               \
        auto format(const Type& value, std::format_context& context) const {                       \
            const std::string text = TOVA_2_18::extras::_private::formatted(value);                \
            return std::formatter<std::string_view>::format(text, context);                        \
        }                                                                                          \
    };
TOVA_EXTRAS_FORMATTED_TYPES(TOVA_EXTRAS_STD_FORMATTER)
TOVA_EXTRAS_STD_FORMATTER(TOVA_2_18::strings::ustring8)
TOVA_EXTRAS_STD_FORMATTER(TOVA_2_18::strings::ustring16)
TOVA_EXTRAS_STD_FORMATTER(TOVA_2_18::strings::ustring32)
#undef TOVA_EXTRAS_STD_FORMATTER
#endif

#undef TOVA_EXTRAS_FORMATTED_TYPES
