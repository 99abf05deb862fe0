#include "cfg/check/check.hpp"

#include "cfg/check/lint.hpp"
#include "cfg/check/rules.hpp"
#include "cfg/model/edit.hpp"
#include "support/exit_code.hpp"
#include "support/guide.hpp"
#include "support/program.hpp"
#include "support/temporary_directory.hpp"
#include "support/working_directory.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <sstream>
#include <string>

using namespace tova_programs;
using namespace tova_programs::cfg;
using test_support::read_bytes;
using test_support::temporary_directory;
using test_support::working_directory;

namespace {

namespace fs = std::filesystem;

const std::string rule_folder = TOVA_TEST_DATA "/programs/cfg/rules";

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

// A file with its schema and the reader that it was written for, if there are such files beside it.
check_command command_for(const std::string& name) {
    check_command command;
    command.check.files = {name + ".cfg"};
    if (access((name + ".schema").c_str(), R_OK) == 0)
        command.check.schema_path = name + ".schema";
    if (access((name + ".reader").c_str(), R_OK) == 0)
        command.check.written_for = test_support::lines_of(read_bytes(name + ".reader")).at(0);
    command.fail_on = "note";
    return command;
}

std::vector<finding> findings_in(const std::string& text) {
    return lint(document("f", text), schema());
}

}  // namespace

TEST(CfgRules, EachHaveAFaultyExampleThatIsFoundAndACleanOneThatIsNot) {
    std::set<std::string> folders;
    for (const auto& entry : fs::directory_iterator(rule_folder))
        folders.insert(entry.path().filename().native());
    for (const rule& each : rules()) {
        SCOPED_TRACE(each.id);
        ASSERT_EQ(1u, folders.erase(each.id)) << "no example";
        const std::string folder = rule_folder + "/" + each.id;
        const working_directory inside(folder);
        const outcome faulty = checked(command_for("faulty"));
        if (std::getenv("TOVA_UPDATE_GOLDEN") != nullptr)
            std::ofstream(folder + "/expected.txt") << faulty.output;
        EXPECT_EQ(read_bytes(folder + "/expected.txt"), faulty.output);
        EXPECT_NE(std::string::npos, faulty.output.find("[" + std::string(each.id) + "]"));
        EXPECT_EQ(exit_findings, faulty.code);
        // A clean file has no findings of this rule, and of the others only notes.
        const outcome clean = checked(command_for("clean"));
        EXPECT_EQ(std::string::npos, clean.output.find("[" + std::string(each.id) + "]"));
        EXPECT_EQ(std::string::npos, clean.output.find("error")) << clean.output;
        EXPECT_EQ(std::string::npos, clean.output.find("warning")) << clean.output;
    }
    EXPECT_TRUE(folders.empty()) << *folders.begin() << " is no rule";
}

TEST(CfgRules, ExplainThemselves) {
    for (const rule& each : rules()) {
        check_command command;
        command.explained = each.id;
        const outcome result = checked(command);
        EXPECT_EQ(exit_clean, result.code);
        EXPECT_NE(std::string::npos, result.output.find(each.explanation)) << each.id;
        EXPECT_GT(std::string(each.explanation).size(), 20u) << each.id;
    }
    check_command command;
    command.explained = "no-such-rule";
    EXPECT_EQ(exit_usage, checked(command).code);
}

// Every fix is certain: after at most three rounds nothing is left that could be fixed, and the
// fixed file has no finding that it did not have before.
TEST(CfgFixes, LeaveNothingThatCouldBeFixed) {
    std::size_t fixed = 0;
    for (const rule& each : rules()) {
        SCOPED_TRACE(each.id);
        const temporary_directory copy;
        fs::copy(rule_folder + "/" + each.id, copy.path(), fs::copy_options::recursive);
        const working_directory inside(copy.path());
        check_command command = command_for("faulty");
        command.check.ignored = {"save-changes-value", "save-loses-key", "equal-length-sections"};
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
    EXPECT_GT(fixed, 10u);
}

TEST(CfgFixes, MakeTheValueThatWasMeant) {
    const struct {
        const char* before;
        const char* after;
    } cases[] = {
        {"a = https://example.org/x\n", "a = \"https://example.org/x\"\n"},
        {"a = #ff0000\n", "a = \"#ff0000\"\n"},
        {"a = Ann Lee\n", "a = \"Ann Lee\"\n"},
        {"l[] = a b, c d\n", "l[] = \"a b\", \"c d\"\n"},
        {"a = 1 ; note\n", "a = 1 # note\n"},
        {"a = 1; note\n", "a = 1 # note\n"},
        {"; note\na = 1\n", "# note\na = 1\n"},
        {"a == 1\n", "a = 1\n"},
        {"\xEF\xBB\xBF"
         "a = 1\n",
         "a = 1\n"},
        {"l[] = a,\nb = 1\n", "l[] = a,\nb = 1\n"},  // no fix: the comma is wrong
        {"l[] = a,\n[b c]\n", "l[] = a,\n[b c]\n"},
        {"a = \"b\" c\n", "a = \"b\" c\n"},  // no fix: the quotes may be meant
        {"a = b#c//d\n", "a = b#c//d\n"},    // no fix: the comment may be meant
    };
    for (const auto& c : cases) {
        std::string text = c.before;
        const std::vector<finding> found = findings_in(text);
        std::vector<const finding*> fixes;
        for (const finding& each : found)
            fixes.push_back(&each);
        apply_fixes(text, fixes);
        EXPECT_EQ(c.after, text);
    }
}

// A header that is part of something else hides a whole section, so it is never only a warning.
TEST(CfgCheck, ReportsAnErrorForEveryHeaderThatIsPartOfSomethingElse) {
    const struct {
        const char* before;  // the header
        const char* rule;
        const char* text;
    } cases[] = {
        {"l[] = a, b,\n", "unfinished-array",
         "the array ends with a comma and takes the header \"[log]\" in line 2"},
        {"l[] = a, b,\n\n", "unfinished-array",
         "the array ends with a comma and takes the header \"[log]\" in line 3"},
        {"l[] = a,\r\n  # note\r\n\r\n  ", "unfinished-array",
         "the array ends with a comma and takes the header \"[log]\" in line 4"},
        {"l[] =\nm[] = a,\n b,\n", "unfinished-array",
         "the array ends with a comma and takes the header \"[log]\" in line 4"},
        {"a = \"x\n", "header-in-string",
         "the string from this quote ends in line 3 and contains the header \"[log]\""},
        {"[s\na = 1\n", "open-header",
         "the header is not closed in its line and goes on up to the \"]\" in line 3"},
        {"[\n", "open-header",
         "the header is not closed in its line and goes on up to the \"]\" in line 2"},
        {"k\n", "no-equals", "\"k\" has no \"=\" and is joined to the key on the next line"},
        {"a = 1\r", "carriage-return", "a carriage return without a line feed"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.before);
        // The last quote closes a string that contains the header.
        const std::string text = std::string(c.before) + "[log]\nlevel = \"x\n";
        bool is_found = false;
        for (const finding& each : findings_in(text))
            is_found =
                is_found || (each.broken_rule->id == std::string(c.rule) &&
                             each.broken_rule->level == severity::error && each.text == c.text);
        EXPECT_TRUE(is_found);
    }
}

TEST(CfgCheck, ReportsAnErrorForEveryHiddenHeaderInRandomFiles) {
    const char* const pieces[] = {"a = 1\n",   "b[] = 1,\n", "c[] = 1, # x\n\n",
                                  "\"",        "d = \"x\n",  "k\n",
                                  "[s\n",      "e += 1\n",   "f = \"\"\"",
                                  "# \"x\"\n", "; \"\n",     "=\n",
                                  "= \"\\\"",  "g[] =\n",    ",\n",
                                  "]\n",       "h = [\n",    "i = x\r",
                                  "*/ \"\n",   "# x\"\n",    "\xEF\xBB\xBF\n",
                                  "[t]\n",     "[u] v\n",    "\"\n"};
    std::mt19937 random(14);
    std::size_t hidden = 0;
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (std::size_t count = random() % 6; count != 0; --count)
            text += pieces[random() % (sizeof pieces / sizeof *pieces)];
        if (!text.empty() && text.back() != '\n')
            text += '\n';
        text += "[log]\nlevel = 1\n";
        for (std::size_t count = random() % 3; count != 0; --count)
            text += pieces[random() % (sizeof pieces / sizeof *pieces)];
        const document file("f", text);
        bool is_read = false;
        for (const section& each : file.sections())
            is_read = is_read || each.name == "log";
        if (is_read)
            continue;
        ++hidden;
        bool has_error = false;
        for (const finding& each : lint(file, schema()))
            has_error = has_error || each.broken_rule->level == severity::error;
        EXPECT_TRUE(has_error) << text;
    }
    EXPECT_GT(hidden, 1000u);
}

TEST(CfgCheck, FindsNoHeaderInElementsAndStringsWithBrackets) {
    for (const char* text : {
             "l[] = a,\n  [::1]:25\n",
             "l[] = a,\n  [x], [y]\n",
             "l[] = a,\n  [x] , b\n",
             "l[] = a,\n  [::1]/64\n",
             "l[] = a, [x]\n",
             "l[] = a,\n  b, [x]\n",
             "l[] = a,\n  \"[x]\"\n",
             "a = \"x\n[1] See below.\n\"\n",
             "a = \"x\n[\n1\n]\n\"\n",
             "a = [x]\n",
         }) {
        for (const finding& each : findings_in(text))
            EXPECT_NE(severity::error, each.broken_rule->level) << text << each.text;
    }
}

// The examples of the guide are correct, apart from those that show what goes wrong.
TEST(CfgCheck, FindsNothingInCleanFilesAndSomethingInTheSurprises) {
    const auto blocks = test_support::guide_blocks("docs/configuration.md", "cfg");
    ASSERT_GT(blocks.size(), 10u);
    EXPECT_TRUE(findings_in(blocks[0].text).empty());
    std::size_t found = 0;
    for (const auto& block : test_support::guide_blocks("docs/surprises_configuration.md", "cfg"))
        found += findings_in(block.text).size() + lint_save(document("f", block.text)).size();
    EXPECT_GT(found, 12u);
}

TEST(CfgCheck, ReportsInEveryForm) {
    const temporary_directory folder;
    const std::string path = folder.write("f.cfg", "[s]\na == 1\n");
    check_command command;
    command.check.files = {path};
    command.format = report_format::sarif;
    const auto sarif = nlohmann::json::parse(checked(command).output);
    EXPECT_EQ("operator", sarif["runs"][0]["results"][0]["ruleId"]);
    command.format = report_format::github;
    EXPECT_EQ(0u, checked(command).output.find("::error file=" + path + ",line=2,col=3"));
    command.format = report_format::text;
    command.check.ignored = {"operator"};
    EXPECT_EQ(std::string::npos, checked(command).output.find("operator"));
    command.fail_on = "never";
    EXPECT_EQ(exit_clean, checked(command).code);
}

// A check of any bytes ends, and its findings are inside the file.
TEST(CfgCheck, TakesAnyPieceOfAFile) {
    std::string all;
    for (const auto& entry : fs::directory_iterator(rule_folder))
        all += read_bytes(entry.path().native() + "/faulty.cfg");
    for (std::size_t begin = 0; begin < all.size(); begin += 7)
        for (std::size_t size = 0; size < 60 && begin + size <= all.size(); size += 5)
            for (const finding& found : findings_in(all.substr(begin, size))) {
                ASSERT_LE(found.offset + found.length, size);
                ASSERT_NE(0u, found.line);
            }
}
