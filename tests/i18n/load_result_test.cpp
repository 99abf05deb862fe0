// Tests the outcome of a load: its kinds and their messages.
#include <tova/i18n/message_catalogs.hpp>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>

namespace {

using tova::i18n::message_catalogs;
using tova::i18n::_private::xmc_file_loader;
using tova::strings::ustring8;

using result_type = message_catalogs::result_type;
using outcome = std::pair<int, std::string>;

const std::string front = "message_catalogs::result_type - ";
const std::string loader_front = "xmc_file_loader::load_error - ";

outcome seen(const result_type& result) {
    return outcome(result.type, result.message);
}

TEST(ResultType, RendersEachKindThatInvolvesNoFile) {
    const struct {
        message_catalogs::error_type kind;
        const char* message;
    } cases[] = {
        {message_catalogs::no_error, "message_catalogs::result_type - No Error"},
        {message_catalogs::no_catalog,
         "message_catalogs::result_type - No catalog was loaded in file: \"T\""},
        {message_catalogs::file_not_found,
         "message_catalogs::result_type - File \"T\" was not found on disk"},
        {message_catalogs::directory_not_found,
         "message_catalogs::result_type - Directory \"T\" was not found on disk"},
        {message_catalogs::entity_not_found,
         "message_catalogs::result_type - Entity (file or directory) \"T\" was not found on disk"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(outcome(c.kind, c.message), seen(result_type(c.kind, "T")));
}

TEST(ResultType, RendersTheOtherKindsByTheirNumber) {
    for (const int kind : {2, 6, 7, 8, 9, 15, -1})
        EXPECT_EQ(outcome(kind, "unknown, or unhandle case happened! < "
                                "N9TOVA_2_184i18n16message_catalogs10error_typeE value of " +
                                    std::to_string(kind) + " > str data=T"),
                  seen(result_type(static_cast<message_catalogs::error_type>(kind), "T")));
}

TEST(ResultType, NumbersItsKindsFromZeroToEight) {
    EXPECT_EQ(0, message_catalogs::no_error);
    EXPECT_EQ(1, message_catalogs::no_catalog);
    EXPECT_EQ(2, message_catalogs::no_default_locale);
    EXPECT_EQ(3, message_catalogs::file_not_found);
    EXPECT_EQ(4, message_catalogs::directory_not_found);
    EXPECT_EQ(5, message_catalogs::entity_not_found);
    EXPECT_EQ(6, message_catalogs::xml_error);
    EXPECT_EQ(7, message_catalogs::invalid_xmc);
    EXPECT_EQ(8, message_catalogs::unexpected);
    EXPECT_EQ(4u, sizeof(message_catalogs::error_type));
}

TEST(ResultType, MapsTheKindsOfTheLoaderAndKeepsItsMessage) {
    const char* const invalid = "XMC file is not valid";
    const struct {
        int loader_kind;
        int kind;
        const char* line;
    } cases[] = {
        {0, 0, "No Error"},
        {1, 1, "No catalog was loaded"},
        {2, 2, "Default locale lookup not supported yet"},
        {3, 3, "File was not found on disk"},
        {4, 6, "XML parse error, XML file not well formed"},
        {5, 7, invalid},
        {6, 7, invalid},
        {7, 7, invalid},
        {8, 7, invalid},
        {9, 7, invalid},
        {10, 7, invalid},
        {11, 7, invalid},
        {12, 7, invalid},
        {13, 7, invalid},
        {14, 8, "Unexpected error happened during loading"},
        {15, 8, "Unhandled case"},
        {-1, 8, "Unhandled case"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.loader_kind);
        xmc_file_loader::load_error error(static_cast<xmc_file_loader::error_type>(c.loader_kind),
                                          "T");
        error.message = "inner\n in file: \"f\"";
        EXPECT_EQ(outcome(c.kind, front + c.line + "\n inner\n in file: \"f\""),
                  seen(result_type(error)));
    }
}

TEST(ResultType, FormattingALoadErrorSetsTheKind) {
    result_type result(message_catalogs::no_catalog, "a");
    EXPECT_EQ(front + "Directory \"b\" was not found on disk",
              std::string(result.format_message(message_catalogs::directory_not_found, "b")));
    EXPECT_EQ(message_catalogs::no_catalog, result.type);
    EXPECT_EQ(front + "XMC file is not valid\n " + loader_front + "Invalid element \"c\"",
              std::string(result.format_message(
                  xmc_file_loader::load_error(xmc_file_loader::invalid_element, "c"))));
    EXPECT_EQ(message_catalogs::invalid_xmc, result.type);
}

TEST(ResultType, WritesItsMessageToAStream) {
    result_type result(message_catalogs::entity_not_found, ustring8("a\0b", 3));
    std::ostringstream stream;
    stream << result << "|";
    EXPECT_EQ(front + "Entity (file or directory) \"a" + std::string(1, '\0') +
                  "b\" was not found on disk|",
              stream.str());
}

}  // namespace
