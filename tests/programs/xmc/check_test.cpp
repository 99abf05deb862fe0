#include "xmc/check/check.hpp"

#include "support/exit_code.hpp"
#include "support/program.hpp"
#include "support/temporary_directory.hpp"
#include "support/working_directory.hpp"
#include "xmc/model/document.hpp"
#include "xmc/rules.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

using namespace tova_programs;
using namespace tova_programs::xmc;
using test_support::read_bytes;
using test_support::temporary_directory;
using test_support::working_directory;

namespace {

namespace fs = std::filesystem;

const std::string rule_folder = TOVA_TEST_DATA "/programs/xmc/rules";

struct outcome {
    int code;
    std::string output;
    std::string errors;
};

outcome checked(const check_command& command) {
    std::ostringstream out;
    std::ostringstream errors;
    const int code = run_check(command, out, errors, style());
    return {code, out.str(), errors.str()};
}

outcome checked(const std::string& path) {
    check_command command;
    command.check.paths = {path};
    command.fail_on = "note";
    return checked(command);
}

const std::string head = "<?xml version=\"1.0\"?>\n<xmc version=\"1.1\">\n";

std::string catalog_of(const std::string& locale, const std::string& messages) {
    return head + "<catalog name=\"app\" lang=\"" + locale + "\">\n" + messages +
           "\n</catalog>\n</xmc>\n";
}

}  // namespace

TEST(Rules, EachHaveAFaultyExampleThatIsFoundAndACleanOneThatIsNot) {
    std::set<std::string> folders;
    for (const auto& entry : fs::directory_iterator(rule_folder))
        folders.insert(entry.path().filename().native());
    for (const rule& each : rules()) {
        SCOPED_TRACE(each.id);
        ASSERT_EQ(1u, folders.erase(each.id)) << "no example";
        const std::string folder = rule_folder + "/" + each.id;
        const working_directory inside(folder);
        const outcome faulty = checked("faulty");
        if (std::getenv("TOVA_UPDATE_GOLDEN") != nullptr)
            std::ofstream(folder + "/expected.txt") << faulty.output;
        EXPECT_EQ(read_bytes(folder + "/expected.txt"), faulty.output);
        EXPECT_NE(std::string::npos, faulty.output.find("[" + std::string(each.id) + "]"));
        EXPECT_EQ(exit_findings, faulty.code);
        const outcome clean = checked("clean");
        EXPECT_EQ("", clean.output);
        EXPECT_EQ(exit_clean, clean.code);
    }
    EXPECT_TRUE(folders.empty()) << *folders.begin() << " is no rule";
}

TEST(Rules, ExplainThemselves) {
    for (const rule& each : rules()) {
        check_command command;
        command.explained = each.id;
        const outcome result = checked(command);
        EXPECT_EQ(exit_clean, result.code);
        EXPECT_NE(std::string::npos, result.output.find(each.explanation)) << each.id;
        EXPECT_GT(std::string(each.explanation).size(), 10u) << each.id;
    }
    check_command command;
    command.explained = "no-such-rule";
    EXPECT_EQ(exit_usage, checked(command).code);
}

// A fix is certain, so nothing that could be fixed is left after at most a few rounds, and the
// fixed file has no finding that it did not have before.
TEST(Fixes, LeaveNothingThatCouldBeFixed) {
    std::size_t fixed = 0;
    for (const rule& each : rules()) {
        SCOPED_TRACE(each.id);
        const temporary_directory copy;
        fs::copy(rule_folder + "/" + each.id, copy.path(),
                 fs::copy_options::recursive | fs::copy_options::copy_symlinks);
        check_command command;
        command.check.paths = {copy.path("faulty")};
        const auto before = check(command.check).findings();
        command.fixes = true;
        for (int round = 0; round < 3; ++round)
            checked(command);
        std::set<std::string> known;
        for (const finding& found : before)
            known.insert(found.broken_rule->id);
        const report after = check(command.check);
        for (const finding& found : after.findings()) {
            EXPECT_TRUE(found.edits.empty()) << found.text;
            EXPECT_EQ(1u, known.count(found.broken_rule->id)) << found.broken_rule->id;
        }
        fixed += before.size() - after.findings().size();
    }
    EXPECT_GT(fixed, 15u);
}

TEST(Fixes, AreShownWithoutChangingTheFileInADryRun) {
    const temporary_directory folder;
    const std::string text = catalog_of("en", "<msg name=\"a\">Salt & pepper</msg>");
    const std::string file = folder.write("app.xmc", text);
    check_command command;
    command.check.paths = {file};
    command.fixes = command.is_dry_run = true;
    const outcome result = checked(command);
    EXPECT_NE(std::string::npos, result.output.find("+<msg name=\"a\">Salt &amp; pepper</msg>"))
        << result.output;
    EXPECT_EQ(exit_findings, result.code);
    EXPECT_EQ(text, read_bytes(file));
    command.is_dry_run = false;
    EXPECT_EQ(exit_clean, checked(command).code);
    EXPECT_EQ(catalog_of("en", "<msg name=\"a\">Salt &amp; pepper</msg>"), read_bytes(file));
}

TEST(Check, FailsFromTheGivenSeverityOn) {
    const temporary_directory folder;
    const std::string note = folder.write("note.xmc", catalog_of("en", "<msg name=\"a\"/>"));
    const std::string warning =
        folder.write("warning.xmc", catalog_of("en", "<msg name=\"a\"> a</msg>"));
    const struct {
        std::string path;
        const char* fail_on;
        int code;
    } cases[] = {
        {note, "warning", exit_clean},  {note, "note", exit_findings},
        {warning, "error", exit_clean}, {warning, "warning", exit_findings},
        {warning, "never", exit_clean},
    };
    for (const auto& c : cases) {
        check_command command;
        command.check.paths = {c.path};
        command.fail_on = c.fail_on;
        EXPECT_EQ(c.code, checked(command).code) << c.path << " " << c.fail_on;
    }
}

TEST(Check, ReportsOnlyTheRulesWanted) {
    const temporary_directory folder;
    const std::string file =
        folder.write("a.xmc", catalog_of("en", "<msg> a <arg type=\"date\"/></msg>"));
    check_command command;
    command.check.paths = {file};
    command.check.only = {"reserved-type", "key-missing"};
    EXPECT_EQ(2u, check(command.check).findings().size());
    command.check.ignored = {"key-missing"};
    EXPECT_EQ(1u, check(command.check).findings().size());
}

// The loader names the line where the catalog ends, which may be far away.
TEST(Check, NamesTheMessageThatLacksItsEnd) {
    const temporary_directory folder;
    std::string messages;
    for (int i = 0; i < 300; ++i)
        messages += "<msg name=\"m" + std::to_string(i) + "\">text" +
                    (i == 17 || i == 203 ? "\n" : "</msg>\n");
    const std::string file = folder.write("a.xmc", catalog_of("en", messages));
    check_command command;
    command.check.paths = {file};
    command.check.only = {"xml-not-closed"};
    const report found = check(command.check);
    ASSERT_EQ(2u, found.findings().size());
    EXPECT_EQ("m17", found.findings()[0].subject);
    EXPECT_EQ(21u, found.findings()[0].line);
    EXPECT_EQ("m203", found.findings()[1].subject);
    EXPECT_EQ(207u, found.findings()[1].line);
}

TEST(Check, ReadsFoldersAsALoadDoes) {
    const temporary_directory folder;
    folder.write("a/b/one.XML", catalog_of("en", "<msg/>"));
    folder.write("a/two.xmc", catalog_of("en", "<msg/>"));
    folder.write("a/three.txt", "not read");
    check_command command;
    command.check.paths = {folder.path()};
    command.check.only = {"empty-message"};
    EXPECT_EQ(2u, check(command.check).findings().size());
    command.check.paths = {folder.path(), folder.path("a/two.xmc")};
    EXPECT_EQ(2u, check(command.check).findings().size());
}

TEST(Check, KeepsTheFindingsOfAFileThatALinkLeadsTo) {
    const temporary_directory folder;
    folder.write("app.xmc", head + "<include file=\"gone.part\"/>\n</xmc>\n");
    fs::create_symlink("app.xmc", folder.path("link.xmc"));
    check_command command;
    command.check.paths = {folder.path()};
    const report found = check(command.check);
    ASSERT_EQ(2u, found.findings().size());
    EXPECT_EQ("include-missing", std::string(found.findings()[0].broken_rule->id));
    EXPECT_EQ("file-link", std::string(found.findings()[1].broken_rule->id));
}

// 2 to the 30 paths lead through these files.
TEST(Check, FollowsEachIncludedFileOnce) {
    const temporary_directory folder;
    const int levels = 30;
    for (int i = 0; i < levels; ++i) {
        const std::string next = "<include file=\"" + std::to_string(i + 1) + ".part\"/>\n";
        folder.write(i == 0 ? "app.xmc" : std::to_string(i) + ".part",
                     head + next + next + "</xmc>\n");
    }
    folder.write(std::to_string(levels) + ".part", catalog_of("en", "<msg name=\"a\">a</msg>"));
    check_command command;
    command.check.paths = {folder.path()};
    command.check.only = {"include-depth", "include-fan-out"};
    std::set<std::string> found;
    const report all = check(command.check);
    for (const finding& each : all.findings())
        if (each.file == folder.path("app.xmc"))
            found.insert(each.broken_rule->id);
    EXPECT_EQ((std::set<std::string>{"include-depth", "include-fan-out"}), found);
}

TEST(CheckProgram, HasTheExitCodesOfAllItsForms) {
    const temporary_directory folder;
    const std::string faulty =
        folder.write("faulty.xmc", catalog_of("en", "<msg name=\"a\">a & b</msg>"));
    const std::string clean =
        folder.write("clean.xmc", catalog_of("en", "<msg name=\"a\">a</msg>"));
    const std::string program = TOVA_XMC;
    const struct {
        std::string arguments;
        int code;
    } cases[] = {
        {"check " + clean, 0},
        {"check " + faulty, 1},
        {"check --fail-on never " + faulty, 0},
        {"check", 2},
        {"check " + folder.path("missing"), 2},
        {"check --only no-such-rule " + clean, 2},
        {"check --explain duplicate-key", 0},
        {"no-such-command", 2},
        {"--help", 0},
        {"--man", 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.code, test_support::run_program(program + " " + c.arguments).exit_code)
            << c.arguments;
    const auto github = test_support::run_program(program + " check --format=github " + faulty);
    EXPECT_EQ(0u, github.output.find("::error file=")) << github.output;
    const auto json = test_support::run_program(program + " check --json " + faulty);
    EXPECT_EQ("unescaped-ampersand",
              nlohmann::json::parse(json.output)["findings"][0]["rule"].get<std::string>());
    const auto sarif = test_support::run_program(program + " check --sarif " + clean);
    EXPECT_EQ(0u, nlohmann::json::parse(sarif.output)["runs"][0]["results"].size());
}

// "one file" and "{n} files", in languages where the singular says its number and where it does
// not.
TEST(Check, LetsPluralFormsOfFewNumbersLeaveOutTheNumber) {
    const std::string n = "<arg name=\"n\" type=\"int\"/>";
    const std::string folder_argument = "<arg name=\"folder\"/>";
    const auto plural = [&](const std::string& one, const std::string& other) {
        return "<msg name=\"files.one\">" + one + "</msg><msg name=\"files.other\">" + other +
               "</msg>";
    };
    const struct {
        std::string en;
        std::string de;
        const char* found;
    } cases[] = {
        {plural("One file", n + " files"), plural(n + " Datei", n + " Dateien"), ""},
        {plural(n + " file", n + " files"), plural("Eine Datei", n + " Dateien"), ""},
        {plural(n + " file in " + folder_argument, n + " files in " + folder_argument),
         plural("Eine Datei", n + " Dateien in " + folder_argument),
         "files.one: argument \"folder\" of en is missing"},
        {plural(n + " file", n + " files"), plural("Eine Datei", "Dateien"),
         "files.other: argument \"n\" of en is missing"},
        {plural("One file", n + " files"), plural(folder_argument + " Datei", n + " Dateien"),
         "files.one: argument \"folder\" is not in en"},
        // Without `other` it is no plural.
        {"<msg name=\"files.one\">" + n + "</msg>", "<msg name=\"files.one\">Datei</msg>",
         "files.one: argument \"n\" of en is missing"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.de);
        const temporary_directory folder;
        folder.write("en.xmc", catalog_of("en", each.en));
        folder.write("de.xmc", catalog_of("de", each.de));
        const outcome all = checked(folder.path());
        EXPECT_EQ(*each.found == '\0' ? exit_clean : exit_findings, all.code) << all.output;
        EXPECT_NE(std::string::npos, all.output.find(each.found)) << all.output;
    }
}

TEST(Check, WarnsOfArgumentsInTheWrongOrder) {
    const temporary_directory folder;
    folder.write("en.xmc", catalog_of("en", "<msg name=\"m\"><arg name=\"arg1\" type=\"int\"/> of "
                                            "<arg name=\"arg2\"/></msg>"));
    folder.write("de.xmc", catalog_of("de", "<msg name=\"m\"><arg name=\"arg1\"/> von "
                                            "<arg name=\"arg2\" type=\"int\"/></msg>"));
    check_command command;
    command.check.paths = {folder.path()};
    const outcome all = checked(command);
    EXPECT_EQ(exit_findings, all.code);
    EXPECT_NE(std::string::npos, all.output.find("\n2 warnings\n")) << all.output;
}
