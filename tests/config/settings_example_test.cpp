// Runs the settings example as a user would, on a copy of its file.
#include "support/guide.hpp"
#include "support/program.hpp"
#include "support/temporary_directory.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using test_support::read_bytes;
using test_support::temporary_directory;
using ::testing::HasSubstr;

class SettingsExample : public ::testing::Test {
protected:
    // The output of the program in the folder of the test, in an environment of only the given
    // variables.
    std::string run(const std::string& environment, const std::string& arguments) {
        const auto result =
            test_support::run_program("cd '" + directory.path() + "' && env -i " + environment +
                                      " '" TOVA_EXAMPLE_PROGRAM "' " + arguments);
        EXPECT_EQ(0, result.exit_code);
        return result.output;
    }
    void give_file(const std::string& name) {
        directory.write(name,
                        read_bytes(test_support::project_path("examples/settings/settings.cfg")));
    }

    temporary_directory directory;
};

TEST_F(SettingsExample, PrintsItsReportForEachLocale) {
    for (const std::string locale : {"en", "de", "fr"}) {
        SCOPED_TRACE(locale);
        give_file("settings.cfg");
        EXPECT_EQ(read_bytes(TOVA_TEST_DATA "/config/settings_example/" + locale + ".txt"),
                  run("HOME=/home/mia LANG=" + locale + ".UTF-8", "-server.port=9090"));
    }
}

TEST_F(SettingsExample, SavesItsCountInSections) {
    give_file("settings.cfg");
    EXPECT_THAT(run("", ""), HasSubstr("Run number 5 is kept in settings.cfg\n"));
    EXPECT_THAT(run("", ""), HasSubstr("Run number 6 is kept in settings.cfg\n"));
    EXPECT_EQ(read_bytes(TOVA_TEST_DATA "/config/settings_example/saved.cfg"),
              read_bytes(directory.path("settings.cfg")));
}

TEST_F(SettingsExample, UsesTheFirstSourceOfEachSetting) {
    give_file("settings.cfg");
    const std::string output =
        run("SERVER.HOST=env server.scheme=https", "-server.timeout=1 -port=7");
    EXPECT_THAT(output, HasSubstr("server.host = localhost (from the file)\n"));
    EXPECT_THAT(output, HasSubstr("server.port = 8080 (from the file)\n"));
    EXPECT_THAT(output, HasSubstr("server.timeout = 1 (from the command line)\n"));
    EXPECT_THAT(output, HasSubstr("server.scheme = https (from the environment)\n"));
    EXPECT_THAT(output, HasSubstr("port is short for server.port, which is 7\n"));
}

TEST_F(SettingsExample, ReadsTheFileNamedOnTheCommandLine) {
    give_file("other.cfg");
    const std::string output = run("", "-cfg_file=other.cfg");
    EXPECT_THAT(output, HasSubstr("read from other.cfg\n"));
    EXPECT_THAT(output, HasSubstr("server.port = 8080 (from the file)\n"));
}

TEST_F(SettingsExample, WorksWithoutAFile) {
    const std::string output = run("", "stray");
    EXPECT_THAT(output, HasSubstr("Warning! unknown key:stray\n"
                                  "Ignoring key and continuing\n"
                                  "Settings of settings.example, which found no file\n"));
    EXPECT_THAT(output, HasSubstr("server.port = 80 (by default)\n"));
    EXPECT_THAT(output, HasSubstr("Run number 1 is not kept anywhere\n"));
}

}  // namespace
