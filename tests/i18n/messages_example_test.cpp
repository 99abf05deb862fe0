// Runs the message example as a user would.
#include "support/guide.hpp"
#include "support/program.hpp"
#include "support/temporary_directory.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using test_support::program_result;

// The program runs in the folder of the example, so its output contains no path of this machine.
program_result run_example(const std::string& environment, const std::string& arguments) {
    return test_support::run_program("cd '" + test_support::project_path("examples/messages") +
                                     "' && env " + environment + " '" TOVA_EXAMPLE_PROGRAM "' " +
                                     arguments);
}

std::string first_line(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

TEST(MessageExample, PrintsItsReportForEachLocale) {
    // No catalog has messages in nl: all of its output comes from "en" and ".".
    for (const std::string locale : {"en", "de", "de_AT", "fr", "ja", "nl"}) {
        SCOPED_TRACE(locale);
        const program_result result = run_example("", locale + " .");
        EXPECT_EQ(0, result.exit_code);
        EXPECT_EQ(
            test_support::read_bytes(TOVA_TEST_DATA "/i18n/messages_example/" + locale + ".txt"),
            result.output);
    }
}

TEST(MessageExample, TakesTheLocaleFromTheEnvironment) {
    const struct {
        const char* environment;
        const char* locale;
    } cases[] = {
        {"LANG=de_AT.UTF-8", "de_AT"},
        {"LANG=de_DE@euro", "de_DE"},
        {"LANG=ja_JP.eucJP@x", "ja_JP"},
        {"LANG=fr", "fr"},
        {"LANG=C", "en"},
        {"LANG=C.UTF-8", "en"},
        {"LANG=POSIX", "en"},
        {"LANG=", "en"},
        {"-u LANG", "en"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.environment);
        const program_result result = run_example(c.environment, "");
        EXPECT_EQ(0, result.exit_code);
        EXPECT_EQ(std::string("Messages for the locale ") + c.locale, first_line(result.output));
    }
}

TEST(MessageExample, ReadsALocaleArgumentLikeTheEnvironment) {
    EXPECT_EQ("Messages for the locale de_AT",
              first_line(run_example("LANG=fr", "de_AT.UTF-8").output));
    EXPECT_EQ("Messages for the locale en", first_line(run_example("LANG=fr", "C").output));
}

TEST(MessageExample, FallsBackFromTheSpecialLocaleToTheGeneralOne) {
    const std::string output = run_example("", "de_AT").output;
    for (const char* text :
         {"greeting (de_AT)\n      Servus, Mia!", "title (de)\n      Sicherung von atlas",
          "footer (en)\n      No files were changed.", "product (.)\n      tova backup 2.18"})
        EXPECT_THAT(output, ::testing::HasSubstr(text));
}

TEST(MessageExample, ReportsAFolderWithoutCatalogs) {
    const program_result result = run_example("", "en /no/such/folder");
    EXPECT_EQ(1, result.exit_code);
    EXPECT_EQ("message_catalogs::result_type - Entity (file or directory) "
              "\"/no/such/folder/catalogs\" was not found on disk\n",
              result.output);
}

}  // namespace
