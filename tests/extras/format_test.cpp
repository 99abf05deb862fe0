// The formatters for {fmt}, and for std::format where the standard library has it.
// House: include_order: the header offers the formatters of {fmt} only after {fmt} itself.
#include <tova/tova.hpp>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>

#include <tova/extras/format.hpp>

namespace {

using tova::system::date_time::date;
using tova::types::variant;

TEST(ExtrasFormat, WritesTheTypesOfTheLibrary) {
    EXPECT_EQ("Zoë", fmt::format("{}", tova::extras::utf8(tova::strings::utf8_to_utf16("Zoë"))));
    EXPECT_EQ("Zoë", fmt::format("{}", tova::strings::ustring8("Zoë")));
    EXPECT_EQ("2026-02-03", fmt::format("{}", date(3, 2, 2026)));
    EXPECT_EQ("42 and text", fmt::format("{} and {}", variant(42), variant("text")));
    EXPECT_EQ("#FF0000FF", fmt::format("{}", tova::types::color_t(255, 0, 0)));
    EXPECT_EQ("xml_error", fmt::format("{}", tova::i18n::message_catalogs::xml_error));
}

TEST(ExtrasFormat, TakesTheSpecificationOfStrings) {
    EXPECT_EQ("  2026-02-03|", fmt::format("{:>12}|", date(3, 2, 2026)));
    EXPECT_EQ("2026", fmt::format("{:.4}", date(3, 2, 2026)));
    EXPECT_EQ("..ab..", fmt::format("{:.^6}", tova::strings::ustring8("ab")));
}

}  // namespace
