// Tests the messages for the errors of one file.
#include <tova/i18n/_private/xmc_file_loader.hpp>

#include "i18n/_private/loader_support.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

using test_support::front;
using test_support::load_error;
using test_support::outcome;
using test_support::seen;
using tova::i18n::_private::xmc_file_loader;
using tova::parser::xml_parser;
using tova::strings::ustring8;

using parse_error = xml_parser::parse_error;

TEST(LoadError, RendersEachKindWithItsMessage) {
    const struct {
        xmc_file_loader::error_type kind;
        const char* message;
    } cases[] = {
        {xmc_file_loader::no_error, "xmc_file_loader::load_error - No Error"},
        {xmc_file_loader::no_catalog,
         "xmc_file_loader::load_error - No catalog was loaded in file: \"T\""},
        {xmc_file_loader::no_default_locale,
         "xmc_file_loader::load_error - Default locale lookup not supported yet"},
        {xmc_file_loader::file_not_found,
         "xmc_file_loader::load_error - File \"T\" was not found on disk"},
        {xmc_file_loader::invalid_attribute,
         "xmc_file_loader::load_error - Invalid attibute \"T\""},
        {xmc_file_loader::invalid_element, "xmc_file_loader::load_error - Invalid element \"T\""},
        {xmc_file_loader::not_xmc,
         "xmc_file_loader::load_error - Not XMC file, root element is not XMC but \"T\""},
        {xmc_file_loader::bad_version,
         "xmc_file_loader::load_error - XMC version \"T\" is not supported"},
        {xmc_file_loader::br_not_closed,
         "xmc_file_loader::load_error - Expected BR end tag not found"},
        {xmc_file_loader::msg_not_closed, "xmc_file_loader::load_error - Expected msg (message) "
                                          "end tag not found for message \"T\""},
        {xmc_file_loader::arg_not_closed, "xmc_file_loader::load_error - Expected arg (argument) "
                                          "end tag not found for argument \"T\""},
        {xmc_file_loader::include_not_closed,
         "xmc_file_loader::load_error - Expected \"include\" end tag not found"},
        {xmc_file_loader::catalog_not_closed,
         "xmc_file_loader::load_error - Expected catalog end tag not found for catalog \"T\""},
        {xmc_file_loader::unexpected,
         "xmc_file_loader::load_error - Unexpected parse error happen!"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        const load_error error(c.kind, "T");
        EXPECT_EQ(outcome(c.kind, c.message), seen(error));
    }
}

TEST(LoadError, NumbersItsKindsFromZeroToFourteen) {
    EXPECT_EQ(0, xmc_file_loader::no_error);
    EXPECT_EQ(1, xmc_file_loader::no_catalog);
    EXPECT_EQ(2, xmc_file_loader::no_default_locale);
    EXPECT_EQ(3, xmc_file_loader::file_not_found);
    EXPECT_EQ(4, xmc_file_loader::xml_error);
    EXPECT_EQ(5, xmc_file_loader::invalid_attribute);
    EXPECT_EQ(6, xmc_file_loader::invalid_element);
    EXPECT_EQ(7, xmc_file_loader::not_xmc);
    EXPECT_EQ(8, xmc_file_loader::bad_version);
    EXPECT_EQ(9, xmc_file_loader::br_not_closed);
    EXPECT_EQ(10, xmc_file_loader::msg_not_closed);
    EXPECT_EQ(11, xmc_file_loader::arg_not_closed);
    EXPECT_EQ(12, xmc_file_loader::include_not_closed);
    EXPECT_EQ(13, xmc_file_loader::catalog_not_closed);
    EXPECT_EQ(14, xmc_file_loader::unexpected);
    EXPECT_EQ(4u, sizeof(xmc_file_loader::error_type));
    EXPECT_EQ(4u, sizeof(load_error::append_type));
}

TEST(LoadError, RendersAnXmlErrorWithoutItsParseErrorAsUnknown) {
    const std::string type = "N9TOVA_2_184i18n8_private15xmc_file_loader10error_typeE";
    EXPECT_EQ("unknown, or unhandle case happened! < " + type + " value of 4 > str data=T",
              load_error(xmc_file_loader::xml_error, "T").message);
    EXPECT_EQ("unknown, or unhandle case happened! < " + type + " value of 15 > str data=",
              load_error(static_cast<xmc_file_loader::error_type>(15), "").message);
    EXPECT_EQ("unknown, or unhandle case happened! < " + type + " value of -1 > str data=T",
              load_error(static_cast<xmc_file_loader::error_type>(-1), "T").message);
    EXPECT_EQ(15, load_error(static_cast<xmc_file_loader::error_type>(15), "").type);
}

TEST(LoadError, RendersAParseErrorByItsOwnKindAndStoresTheGivenOne) {
    const struct {
        parse_error::error_type kind;
        const char* message;
    } cases[] = {
        {parse_error::unexpected_end, "Unexpected end of file during XML parsing"},
        {parse_error::mismatched_end, "Mismatched end element \"T\" was found"},
        {parse_error::no_root, "No root element was found"},
        {parse_error::no_header, "Valid XML header not found"},
        {parse_error::unexpected_character, "Unexpected character \"T\" found while parsing"},
        {parse_error::missing_quote, "Missing \" while parsing attribute \"T\""},
        {parse_error::unknown_entity, "Unknown enity being parsed"},
        {parse_error::missing_equals, "Missing = sign for attribute \"T\""},
        {parse_error::attribute_redefined, "attribute \"T\" is being redefined"},
        {parse_error::data_after_root, "Data found after root element"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        const load_error error(xmc_file_loader::not_xmc, parse_error(c.kind, 4000000000u, "T"));
        EXPECT_EQ(outcome(7, front + c.message + "\n at line: \"4000000000\""), seen(error));
    }
}

TEST(LoadError, RendersUnknownParseErrorsWithoutALineNumber) {
    for (const int kind : {0, 11, 12}) {
        const parse_error error(static_cast<parse_error::error_type>(kind), 3, "T");
        EXPECT_EQ(outcome(4, front + "Unknown Parse error"),
                  seen(load_error(xmc_file_loader::xml_error, error)));
    }
}

TEST(LoadError, AppendsALineForEachLevel) {
    load_error error(xmc_file_loader::br_not_closed, "");
    error.append_error_stack(load_error::in_message, "m");
    error.append_error_stack(load_error::in_catalog, "c");
    error.append_error_stack(load_error::in_file, "f");
    error.append_error_stack(load_error::at_line, "12");
    EXPECT_EQ(front + "Expected BR end tag not found\n in message element: \"m\"\n in catalog "
                      "element: \"c\"\n in file: \"f\"\n at line: \"12\"",
              std::string(error.message));
    EXPECT_EQ(1, load_error::in_message);
    EXPECT_EQ(2, load_error::in_catalog);
    EXPECT_EQ(3, load_error::in_file);
    EXPECT_EQ(4, load_error::at_line);
}

TEST(LoadError, AppendsAnUnknownLevelWithItsNumber) {
    load_error error(xmc_file_loader::no_error, "");
    error.append_error_stack(static_cast<load_error::append_type>(5), "T");
    EXPECT_EQ(front + "No Error\n unknown, or unhandle case happened! < "
                      "N9TOVA_2_184i18n8_private15xmc_file_loader10load_error11append_typeE value "
                      "of 5 > str data=T",
              std::string(error.message));
}

TEST(LoadError, FormatsWithoutChangingItself) {
    load_error error(xmc_file_loader::no_error, "");
    EXPECT_EQ(front + "Invalid element \"x\"",
              std::string(error.format_msg(xmc_file_loader::invalid_element, "x")));
    EXPECT_EQ("\n in file: \"x\"", std::string(error.format_msg(load_error::in_file, "x")));
    EXPECT_EQ(front + "No root element was found\n at line: \"0\"",
              std::string(error.format_msg(parse_error(parse_error::no_root, 0, ""))));
    EXPECT_EQ(outcome(0, front + "No Error"), seen(error));
}

TEST(LoadError, KeepsEmbeddedNulBytes) {
    const ustring8 text(3, '\0');
    EXPECT_EQ(front + "Invalid attibute \"" + std::string(3, '\0') + "\"",
              std::string(load_error(xmc_file_loader::invalid_attribute, text).message));
}

TEST(LoadError, CopiesKindAndMessage) {
    const load_error error(xmc_file_loader::bad_version, "3");
    const load_error copy(error);
    EXPECT_EQ(seen(error), seen(copy));
}

}  // namespace
