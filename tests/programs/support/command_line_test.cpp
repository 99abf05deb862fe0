#include "support/command_line.hpp"

#include "support/exit_code.hpp"
#include "support/temporary_directory.hpp"
#include "support/text_file.hpp"

#include <CLI/CLI.hpp>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

using namespace tova_programs;

namespace {

// A small tool, and what it was told.
class tool {
public:
    tool() : m_program("tool", "does things", "1.2") {
        CLI::App& find = m_program.add_command("find", "find things", [this] {
            if (path == "missing")
                throw file_error("missing: No such file or directory");
            return int(exit_findings);
        });
        find.add_option("PATH", path, "where to look")->required();
        find.add_option("-k,--kind", kind, "what to find")->check(CLI::IsMember({"big", "small"}));
        known_words(find.add_option("--shape", shape, "how it looks"), {"round", "square"},
                    "shape");
        find.add_flag("--all", all, "find 'all' [of it]");
        m_program.add_section("NOTES", "Text.\n\n  literal - text\n");
    }

    int run(std::vector<const char*> words) {
        words.insert(words.begin(), "tool");
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int code = m_program.run(static_cast<int>(words.size()), words.data());
        output = testing::internal::GetCapturedStdout();
        errors = testing::internal::GetCapturedStderr();
        return code;
    }

    std::string path;
    std::string kind;
    std::string shape;
    bool all = false;
    std::string output;
    std::string errors;

private:
    command_line m_program;
};

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

}  // namespace

TEST(CommandLine, RunsTheCommandAndReturnsItsCode) {
    tool one;
    EXPECT_EQ(exit_findings, one.run({"find", "here", "--kind", "big", "--color=never"}));
    EXPECT_EQ("here", one.path);
    EXPECT_EQ("big", one.kind);
}

TEST(CommandLine, ReturnsTwoForAWrongCommandLineAndAFileThatCannotBeRead) {
    const struct {
        std::vector<const char*> words;
        const char* errors;
    } cases[] = {
        {{}, "does things"},
        {{"lose"}, "tool: unknown command \"lose\"\nRun tool --help for the options.\n"},
        {{"--al", "fidn"}, "tool: unknown option \"--al\"\nRun tool --help"},
        {{"fidn", "x", "--kind"}, "tool: unknown command \"fidn\" (did you mean \"find\"?)\n"},
        {{"find"}, "PATH is required\nRun tool find --help for the options.\n"},
        {{"find", "--knd=big"},
         "tool: unknown option \"--knd\" (did you mean \"--kind\"?)\n"
         "Run tool find --help for the options.\n"},
        {{"find", "x", "y"}, "tool: unexpected argument \"y\"\n"},
        {{"find", "x", "--shape", "sqare"},
         "tool: --shape: no shape is named sqare (did you mean \"square\"?)\n"},
        {{"find", "x", "--kind", "none"}, "tool: --kind: "},
        {{"find", "x", "--color=maybe"}, "tool: --color: "},
        {{"find", "missing"}, "tool: missing: No such file or directory\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.errors);
        tool one;
        EXPECT_EQ(exit_usage, one.run(c.words));
        EXPECT_EQ("", one.output);
        EXPECT_TRUE(contains(one.errors, c.errors)) << one.errors;
    }
}

TEST(CommandLine, PrintsHelpAndVersion) {
    tool help;
    EXPECT_EQ(exit_clean, help.run({"find", "--help"}));
    EXPECT_TRUE(contains(help.output, "what to find")) << help.output;
    tool version;
    EXPECT_EQ(exit_clean, version.run({"--version"}));
    EXPECT_EQ("tool 1.2\n", version.output);
}

TEST(CommandLine, PrintsItsManPageFromTheSameDescription) {
    tool one;
    EXPECT_EQ(exit_clean, one.run({"--man"}));
    for (const char* part :
         {".TH TOOL 1", "tool \\- does things", ".SS \\fBfind\\fR [\\fIOPTIONS\\fR] \\fIPATH\\fR\n",
          "\\fB\\-k\\fR, \\fB\\-\\-kind\\fR", "what to find", ".SH NOTES\nText.\n",
          "literal \\- text"})
        EXPECT_TRUE(contains(one.output, part)) << part << "\n" << one.output;
    if (std::system("groff --version >/dev/null 2>&1") != 0)
        return;
    const test_support::temporary_directory folder;
    const std::string page = folder.write("tool.1", one.output);
    const std::string errors = folder.path("errors");
    EXPECT_EQ(0,
              std::system(("groff -ww -man -Tascii " + page + " >/dev/null 2>" + errors).c_str()));
    EXPECT_EQ("", test_support::read_bytes(errors));
}

TEST(CommandLine, PrintsCompletionsThatEachShellAccepts) {
    const test_support::temporary_directory folder;
    for (const std::string shell : {"bash", "zsh", "fish"}) {
        SCOPED_TRACE(shell);
        tool one;
        EXPECT_EQ(exit_clean, one.run({"--completion", shell.c_str()}));
        for (const char* part : {"find", "kind", "big small", "round square", "all"})
            EXPECT_TRUE(contains(one.output, part)) << part << "\n" << one.output;
        const std::string script = folder.write(shell, one.output);
        if (std::system((shell + " --version >/dev/null 2>&1").c_str()) == 0) {
            EXPECT_EQ(0, std::system((shell + " -n " + script).c_str())) << one.output;
        }
    }
}

TEST(CommandLine, CompletesCommandsOptionsAndTheirWordsInBash) {
    const test_support::temporary_directory folder;
    tool one;
    one.run({"--completion", "bash"});
    const std::string script = folder.write("tool.bash", one.output);
    const auto completed = [&](const std::string& words, int index) {
        const std::string result = folder.path("result");
        const std::string command = "bash -c '. " + script + "; COMP_WORDS=(" + words +
                                    "); COMP_CWORD=" + std::to_string(index) +
                                    "; _tool; echo \"${COMPREPLY[*]}\"' >" + result;
        EXPECT_EQ(0, std::system(command.c_str()));
        return test_support::read_bytes(result);
    };
    EXPECT_EQ("find\n", completed("tool f", 1));
    EXPECT_EQ("--kind\n", completed("tool find --k", 2));
    EXPECT_EQ("small\n", completed("tool find --kind s", 3));
    EXPECT_EQ("never\n", completed("tool --color n", 2));
}
