#include "cfg/check/rules.hpp"
#include "support/guide.hpp"
#include "support/program.hpp"
#include "support/temporary_directory.hpp"
#include "support/working_directory.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <set>
#include <string>
#include <vector>

// What all commands of tova-cfg have in common: help, man page and completions, JSON, the formats
// of findings, colors, progress and exit codes.

using namespace tova_programs;
using test_support::lines_of;
using test_support::run_program;
using test_support::temporary_directory;
using test_support::working_directory;

namespace {

const std::string sample = TOVA_TEST_DATA "/programs/cfg/sample";

std::string output_of(const std::string& arguments) {
    return run_program(TOVA_CFG " " + arguments).output;
}

const char* const commands[] = {"show",  "get",       "explain", "set",   "unset",
                                "check", "roundtrip", "convert", "watch", "schema"};

// An option or argument in the help of a command.
struct described {
    std::string name;  // "-s,--schema FILE"
    std::string text;
};

// The entries after "Positionals:" and "Options:". A description begins in column 31, on the line
// of its option or on the next one.
std::vector<described> described_in(const std::string& help) {
    const std::size_t column = 30;
    std::vector<described> result;
    for (const std::string& line : lines_of(help)) {
        if (line.compare(0, 2, "  ") != 0)
            continue;
        if (line[2] != ' ') {
            std::string name = line.substr(2);
            const std::size_t gap = name.find("  ");
            result.push_back({name.substr(0, gap), ""});
            if (gap != name.npos)
                result.back().text = name.substr(name.find_first_not_of(' ', gap));
        } else if (line.find_first_not_of(' ') == column && !result.empty()) {
            std::string& text = result.back().text;
            text += (text.empty() ? "" : " ") + line.substr(column);
        }
    }
    return result;
}

// The names of an option or argument: "--schema" and "-s", or "FILE".
std::vector<std::string> names_in(const std::string& name) {
    const std::string words = name.substr(0, name.find(' '));
    if (words[0] != '-')
        return {words};
    const std::size_t comma = words.find(',');
    return comma == words.npos
               ? std::vector<std::string>{words}
               : std::vector<std::string>{words.substr(0, comma), words.substr(comma + 1)};
}

// A man page without its markup.
std::string unmarked(const std::string& page) {
    std::string result;
    for (std::size_t i = 0; i < page.size(); ++i) {
        if (page[i] != '\\') {
            result += page[i];
        } else if (page[++i] == 'f') {
            ++i;
        } else if (page[i] != '&' && page[i] != ':') {
            result += page[i] == 'e' ? '\\' : page[i];
        }
    }
    return result;
}

// The part of a man page that describes a command.
std::string section_of(const std::string& page, const std::string& command) {
    const std::size_t begin = page.find(".SS " + command + ' ');
    if (begin == page.npos)
        return "";
    const std::size_t end = page.find("\n.S", begin + 1);
    return page.substr(begin, end - begin);
}

// A terminal that a program may write to.
class terminal {
public:
    terminal() : m_master(posix_openpt(O_RDWR | O_NOCTTY)) {
        if (m_master < 0 || grantpt(m_master) != 0 || unlockpt(m_master) != 0)
            return;
        m_name = ptsname(m_master);
        m_slave = open(m_name.c_str(), O_RDWR | O_NOCTTY);  // keeps the output until it is read
    }
    ~terminal() {
        close(m_slave);
        close(m_master);
    }
    terminal(const terminal&) = delete;
    terminal& operator=(const terminal&) = delete;

    bool exists() const { return m_slave >= 0; }
    const std::string& name() const { return m_name; }

    // What was written since the last call. A mark is written at the end, because the bytes need
    // time to arrive.
    std::string written() const {
        const char end = '\x1e';
        if (write(m_slave, &end, 1) != 1)
            return "";
        std::string result;
        char piece[4096];
        while (result.empty() || result.back() != end) {
            const ssize_t size = read(m_master, piece, sizeof piece);
            if (size <= 0)
                return result;
            result.append(piece, static_cast<std::size_t>(size));
        }
        result.pop_back();
        return result;
    }

private:
    int m_master;
    int m_slave = -1;
    std::string m_name;
};

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

}  // namespace

TEST(CfgProgram, DescribesTheSameInItsHelpAndItsManPage) {
    const std::string page = unmarked(output_of("--man"));
    std::size_t count = 0;
    for (const std::string command : commands) {
        SCOPED_TRACE(command);
        const std::string section = section_of(page, command);
        const std::string help = output_of(command + " --help");
        EXPECT_TRUE(contains(section, lines_of(help).at(0) + ".\n")) << section;
        for (const described& each : described_in(help)) {
            std::string name;
            for (const std::string& word : names_in(each.name))
                name += (name.empty() ? "" : ", ") + word;
            EXPECT_TRUE(contains(section, "\n" + name + "\n" + each.text) ||
                        contains(section, "\n" + name + " "))
                << name;
            EXPECT_TRUE(contains(section, "\n" + each.text)) << each.text;
            ++count;
        }
    }
    EXPECT_GT(count, 70u);
    for (const described& each : described_in(output_of("--help")))
        EXPECT_TRUE(contains(page, each.text)) << each.text;
    for (const char* title : {".SH SOURCES", ".SH EXIT STATUS", ".SH ENVIRONMENT", ".SH SEE ALSO"})
        EXPECT_TRUE(contains(page, title)) << title;
    if (run_program("groff --version").exit_code == 0) {
        EXPECT_EQ(
            "", run_program(TOVA_CFG " --man | groff -ww -Wbreak -man -Tascii >/dev/null").output);
    }
}

TEST(CfgProgram, HasCompletionsForEveryOptionOfItsHelp) {
    for (const std::string shell : {"bash", "zsh", "fish"}) {
        SCOPED_TRACE(shell);
        const std::string script = output_of("--completion " + shell);
        const temporary_directory folder;
        const std::string path = folder.write("script", script);
        if (run_program(shell + " --version").exit_code == 0) {
            EXPECT_EQ("", run_program(shell + " -n " + path).output);
        }
        for (const std::string command : commands) {
            EXPECT_TRUE(contains(script, command)) << command;
            for (const described& each : described_in(output_of(command + " --help")))
                for (const std::string& name : names_in(each.name)) {
                    const std::string word = shell == "fish" ? "-l " + name.substr(2) : name;
                    EXPECT_TRUE(name.compare(0, 2, "--") != 0 || contains(script, word))
                        << command << ' ' << name;
                }
        }
        for (const rule& each : cfg::rules())
            EXPECT_TRUE(contains(script, each.id)) << each.id;
    }
}

TEST(CfgProgram, CompletesInTheShellsThatAreInstalled) {
    const temporary_directory folder;
    const std::string bash = folder.write("bash", output_of("--completion bash"));
    const auto completed = [&bash](const std::string& words, const char* index) {
        return run_program("bash -c '. " + bash + "; COMP_WORDS=(" + words +
                           "); COMP_CWORD=" + index + "; _tova_cfg; echo \"${COMPREPLY[*]}\"'")
            .output;
    };
    EXPECT_EQ("explain\n", completed("tova-cfg ex", "1"));
    EXPECT_EQ("--written-for\n", completed("tova-cfg check --wr", "2"));
    EXPECT_EQ("configparser\n", completed("tova-cfg check --written-for con", "3"));
    EXPECT_EQ("url-cut\n", completed("tova-cfg check --only ur", "3"));
    if (run_program("fish --version").exit_code != 0)
        return;
    const std::string fish = folder.write("fish", output_of("--completion fish"));
    const std::string home = folder.path();  // fish writes files there
    const auto completed_by_fish = [&](const std::string& line) {
        return run_program("env -i PATH=\"$PATH\" HOME=" + home + " fish --no-config -c 'source " +
                           fish + "; complete -C \"" + line + "\"' | cut -f 1")
            .output;
    };
    EXPECT_EQ("explain\n", completed_by_fish("tova-cfg ex"));
    EXPECT_EQ("--written-for\n", completed_by_fish("tova-cfg check --wr"));
    EXPECT_EQ("configparser\n", completed_by_fish("tova-cfg check --written-for con"));
}

// With --json, standard output is only JSON, on success and on failure.
TEST(CfgProgram, WritesJsonForEveryCommand) {
    const temporary_directory folder;
    const std::string file = folder.write("f.cfg", "[s]\na = 1\n");
    const working_directory inside(sample);
    const struct {
        std::string arguments;
        const char* member;  // of the object; empty for a list
    } cases[] = {
        {"show app.cfg", ""},
        {"show absent.cfg", nullptr},
        {"get server.port app.cfg", "value"},
        {"get absent app.cfg", "found"},
        {"explain server.port app.cfg", "steps"},
        {"explain absent app.cfg", "steps"},
        {"set " + file + " s.a 2 --dry-run", "text"},
        {"set " + file + " s.a '\"'", "problems"},
        {"set " + file + " s.a 3", "changed"},
        {"unset " + file + " s.b", "problems"},
        {"unset " + file + " s.a", "changed"},
        {"check app.cfg", "findings"},
        {"check --fix --dry-run app.cfg", "findings"},
        {"check --list-rules", ""},
        {"check --explain operator", "explanation"},
        {"roundtrip top.cfg", "lost"},
        {"convert old.ini", "settings"},
        {"schema app.schema.cfg", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments);
        const std::string output = output_of(c.arguments + " --json 2>/dev/null");
        if (c.member == nullptr) {
            EXPECT_EQ("", output);
            continue;
        }
        const auto parsed = nlohmann::json::parse(output, nullptr, false);
        ASSERT_FALSE(parsed.is_discarded()) << output;
        if (*c.member == '\0')
            EXPECT_TRUE(parsed.is_array() && !parsed.empty());
        else
            EXPECT_TRUE(parsed.contains(c.member)) << output;
    }
    EXPECT_EQ("[s]\n", test_support::read_bytes(file));
    // watch writes one object per change, each on a line.
    const std::string watched = run_program("(sleep 0.3; " TOVA_CFG " set " + file + " s.c 4) & " +
                                            TOVA_CFG " watch --count 1 --json " + file)
                                    .output;
    const auto change = nlohmann::json::parse(watched, nullptr, false);
    ASSERT_FALSE(change.is_discarded()) << watched;
    EXPECT_EQ("added", change["change"]);
    EXPECT_EQ("4", change["after"]);
}

TEST(CfgProgram, ReportsFindingsForCodeScanningAndWorkflows) {
    const working_directory inside(sample);
    const auto sarif = nlohmann::json::parse(output_of("check app.cfg site.cfg --sarif"));
    const auto same = nlohmann::json::parse(output_of("check app.cfg site.cfg --format=sarif"));
    EXPECT_EQ(sarif, same);
    EXPECT_EQ("2.1.0", sarif["version"]);
    const auto& run = sarif["runs"][0];
    EXPECT_EQ("tova-cfg", run["tool"]["driver"]["name"]);
    const std::vector<std::string> ids = cfg::rules().ids();
    ASSERT_EQ(ids.size(), run["tool"]["driver"]["rules"].size());
    for (std::size_t i = 0; i < ids.size(); ++i)
        EXPECT_EQ(ids[i], run["tool"]["driver"]["rules"][i]["id"]);
    const auto json = nlohmann::json::parse(output_of("check app.cfg site.cfg --json"));
    const std::vector<std::string> lines =
        lines_of(output_of("check app.cfg site.cfg --format=github"));
    ASSERT_EQ(json["findings"].size(), run["results"].size());
    ASSERT_EQ(json["findings"].size(), lines.size());
    ASSERT_FALSE(lines.empty());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const auto& found = json["findings"][i];
        const auto& result = run["results"][i];
        EXPECT_EQ(found["rule"], result["ruleId"]);
        const auto& place = result["locations"][0]["physicalLocation"];
        EXPECT_EQ(found["file"], place["artifactLocation"]["uri"]);
        if (found.contains("line")) {
            EXPECT_EQ(found["line"], place["region"]["startLine"]);
        }
        const std::string kind =
            found["severity"] == "note" ? "notice" : found["severity"].get<std::string>();
        EXPECT_EQ(0u, lines[i].find("::" + kind + " file=" + found["file"].get<std::string>()))
            << lines[i];
        EXPECT_TRUE(contains(lines[i], "title=" + found["rule"].get<std::string>())) << lines[i];
    }
}

TEST(CfgProgram, ColorsOnATerminalUnlessItIsToldNotTo) {
    const terminal screen;
    if (!screen.exists())
        GTEST_SKIP() << "there is no pseudo-terminal";
    const working_directory inside(sample);
    const struct {
        const char* environment;
        const char* option;
        bool on_terminal;
        bool is_colored;
    } cases[] = {
        {"env -u NO_COLOR TERM=xterm", "", true, true},
        {"env -u NO_COLOR TERM=xterm", "", false, false},
        {"env -u NO_COLOR TERM=dumb", "", true, false},
        {"env NO_COLOR=1 TERM=xterm", "", true, false},
        {"env NO_COLOR= TERM=xterm", "", true, true},
        {"env NO_COLOR=1 TERM=xterm", "--color=always", false, true},
        {"env -u NO_COLOR TERM=xterm", "--color=never", true, false},
    };
    for (const auto& c : cases)
        for (const char* command :
             {"show app.cfg", "explain server.port app.cfg", "check app.cfg site.cfg top.cfg",
              "set app.cfg server.port 81 --dry-run", "roundtrip top.cfg",
              "check --explain operator"}) {
            SCOPED_TRACE(std::string(c.environment) + ' ' + command + ' ' + c.option);
            std::string output =
                run_program(std::string(c.environment) + " " TOVA_CFG " " + command + ' ' +
                            c.option + (c.on_terminal ? " > " + screen.name() : ""))
                    .output;
            output += screen.written();
            EXPECT_NE("", output);
            EXPECT_EQ(c.is_colored, contains(output, "\x1b["));
        }
}

TEST(CfgProgram, ShowsItsProgressOnATerminalOnly) {
    const terminal screen;
    if (!screen.exists())
        GTEST_SKIP() << "there is no pseudo-terminal";
    const temporary_directory folder;
    const std::string file = folder.write("f.cfg", "[s]\na = 1\n");
    const std::string slow = folder.path("slow.cfg");
    // The second file is a pipe that is written to when the progress is due.
    ASSERT_EQ(0, mkfifo(slow.c_str(), 0600));
    const std::string check = "(sleep 0.8; cat " + file + " > " + slow +
                              ") & " TOVA_CFG " check --only operator " + file + ' ' + slow + ' ' +
                              file;
    EXPECT_EQ("", run_program(check + " 2> " + screen.name()).output);
    const std::string shown = screen.written();
    EXPECT_TRUE(contains(shown, "checking ")) << shown;
    EXPECT_TRUE(contains(shown, "2 of 3")) << shown;
    const std::string cleared = "\r\x1b[K";
    ASSERT_GT(shown.size(), cleared.size());
    EXPECT_EQ(cleared, shown.substr(shown.size() - cleared.size()));
    EXPECT_EQ("", run_program(check).output);
}

TEST(CfgProgram, ReturnsZeroOneOrTwo) {
    const temporary_directory folder;
    const std::string file = folder.write("f.cfg", "[s]\na = 1\n");
    const std::string plain = folder.write("plain.ini", "[s]\na = x\n");
    const std::string directory = folder.path();
    const working_directory inside(sample);
    const struct {
        std::string arguments;
        int code;
    } cases[] = {
        {"--help", 0},
        {"--version", 0},
        {"", 2},
        {"nothing", 2},
        {"show app.cfg", 0},
        {"show --nothing", 2},
        {"show absent.cfg", 2},
        {"show app.cfg --alias x", 2},
        {"get server.port app.cfg", 0},
        {"get absent app.cfg", 1},
        {"get absent app.cfg --default x", 0},
        {"get", 2},
        {"explain server.port app.cfg", 0},
        {"explain absent app.cfg", 1},
        {"explain server.port app.cfg --schema absent.cfg", 2},
        {"set " + file + " s.a 2", 0},
        {"set " + file + " s.a '\"'", 1},
        {"set " + file + " s.a", 2},
        {"set absent.cfg s.a 1", 2},
        {"set " + directory + " s.a 1", 2},
        {"unset " + file + " s.a", 0},
        {"unset " + file + " s.a", 1},
        {"unset absent.cfg s.a", 2},
        {"check clean.cfg", 0},
        {"check app.cfg", 1},
        {"check app.cfg --fail-on error", 0},
        {"check absent.cfg", 2},
        {"check --explain nothing", 2},
        {"roundtrip clean.cfg", 0},
        {"roundtrip top.cfg", 1},
        {"roundtrip absent.cfg", 2},
        {"convert app.toml --from toml -o " + folder.path("out.cfg"), 1},
        {"convert " + plain, 0},
        {"convert app.cfg --from json", 2},
        {"convert " + plain + " -o " + folder.path("absent/f.cfg"), 2},
        {"watch " + folder.path("absent/f.cfg"), 2},
        {"schema app.schema.cfg", 0},
        {"schema app.cfg", 2},
        {"show app.cfg > /dev/full", 2},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.code, run_program(TOVA_CFG " " + c.arguments).exit_code) << c.arguments;
}
