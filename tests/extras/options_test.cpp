// Tests the options layer, built with every C++ standard that programs may use.
#include <tova/extras/options.hpp>
#include <tova/tova.hpp>

#include "support/child_process.hpp"
#include "support/temporary_directory.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <csignal>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using tova::extras::option_result;
using tova::extras::option_status;
using tova::extras::options;
using tova::types::variant;
typedef std::vector<std::string> strings;

// The options of a small server, with a settings file in a private directory.
class Options : public ::testing::Test {
protected:
    Options() : m_options("serve", "1.2.0", "Serves a folder.") {
        m_options.add("server.port", 8080, "port to listen on")
            .short_name('p')
            .environment("SERVE_PORT")
            .range(1, 65535);
        m_options.add("server.host", "localhost", "host name").environment("SERVE_HOST");
        m_options.add("ratio", 0.5, "a ratio").range(0, 1);
        m_options.add("log.level", "info", "what to log").choices({"error", "info", "debug"});
        m_options.add("search.dir", strings{"/srv"}, "folders")
            .short_name('I')
            .environment("SERVE_DIRS");
        m_options.add("color", true, "colored output");
        m_options.flag("verbose", "say more").short_name('v');
        m_options.flag("dry-run", "change nothing").short_name('n');
        m_options.add("offset", 0L, "an offset");
        m_options.add("mask", 0u, "a mask").long_name("bits");
        m_options.settings_file(path());
        m_options.takes_arguments("FILE...");
    }

    std::string path() const { return m_directory.path("serve.cfg"); }

    option_result load(const strings& words, const strings& environment = strings()) {
        std::vector<const char*> arguments(1, "serve");
        for (const std::string& word : words)
            arguments.push_back(word.c_str());
        std::vector<const char*> variables;
        for (const std::string& variable : environment)
            variables.push_back(variable.c_str());
        variables.push_back(nullptr);
        return m_options.load(static_cast<int>(arguments.size()), arguments.data(),
                              variables.data());
    }
    option_result load_file(const std::string& text) {
        m_directory.write("serve.cfg", text);
        return load({});
    }
    std::string file() const { return test_support::read_bytes(path()); }

    // The values of all options that differ from their defaults: "ratio=1 log.level=debug".
    std::string changed() {
        std::string text;
        for (const char* key : {"server.port", "server.host", "ratio", "log.level", "color",
                                "verbose", "dry-run", "offset", "mask"})
            if (m_options.source(key) != "default")
                text += std::string(text.empty() ? "" : " ") + key + '=' +
                        m_options.manager().get_value(key, variant()).as_string();
        if (m_options.source("search.dir") != "default") {
            text += text.empty() ? "dirs" : " dirs";
            for (const std::string& folder : m_options.get<strings>("search.dir"))
                text += ':' + folder;
        }
        return text;
    }

    test_support::temporary_directory m_directory;
    options m_options;
};

// --- The command line ----------------------------------------------------------------------------

TEST_F(Options, AcceptsEveryFormOfAnOption) {
    const struct {
        strings words;
        const char* values;
        strings arguments;
    } cases[] = {
        {{}, "", {}},
        {{"--server.port=80"}, "server.port=80", {}},
        {{"--server.port", "80"}, "server.port=80", {}},
        {{"-p", "80"}, "server.port=80", {}},
        {{"-p80"}, "server.port=80", {}},
        {{"-p=80"}, "server.port=80", {}},
        {{"-server.port=80"}, "server.port=80", {}},
        {{"-server.port:80"}, "server.port=80", {}},
        {{"-Server/Port", "80"}, "server.port=80", {}},
        {{"--SERVER.PORT=80"}, "server.port=80", {}},
        {{"--server.port=0x50"}, "server.port=80", {}},
        {{"--server.port=0b11"}, "server.port=3", {}},
        {{"--server.port=80", "-p", "81"}, "server.port=81", {}},
        {{"--server.host=a=b c"}, "server.host=a=b c", {}},
        {{"--server.host="}, "server.host=", {}},
        {{"--server.host", "/usr/bin"}, "server.host=/usr/bin", {}},
        {{"-v"}, "verbose=yes", {}},
        {{"-vn"}, "verbose=yes dry-run=yes", {}},
        {{"-vnp80"}, "server.port=80 verbose=yes dry-run=yes", {}},
        {{"-vnp", "80"}, "server.port=80 verbose=yes dry-run=yes", {}},
        {{"--verbose", "file"}, "verbose=yes", {"file"}},
        {{"--verbose=no"}, "verbose=no", {}},
        {{"--verbose=TRUE"}, "verbose=yes", {}},
        {{"-v=off"}, "verbose=no", {}},
        {{"--no-color"}, "color=no", {}},
        {{"--dry-run"}, "dry-run=yes", {}},
        {{"--offset", "-5"}, "offset=-5", {}},
        {{"--offset=-5"}, "offset=-5", {}},
        {{"--offset", "-0x10"}, "", {}},
        {{"--bits=255"}, "mask=255", {}},
        {{"--mask=0xFFFFFFFF"}, "mask=4294967295", {}},
        {{"--ratio", "2.5e-1"}, "ratio=0.25", {}},
        {{"-I", "/a", "-I/b", "--search.dir=c,d"}, "dirs:/a:/b:c,d", {}},
        {{"a", "-v", "b"}, "verbose=yes", {"a", "b"}},
        {{"-", "-5", "/etc/x"}, "", {"-", "-5", "/etc/x"}},
        {{"-v", "--", "-p", "--", "--nothing"}, "verbose=yes", {"-p", "--", "--nothing"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.words));
        const option_result result = load(c.words);
        if (c.words == strings{"--offset", "-0x10"}) {
            EXPECT_THAT(result.errors,
                        ElementsAre(HasSubstr("the value is missing"), HasSubstr("-0")));
            continue;
        }
        EXPECT_THAT(result.errors, IsEmpty());
        EXPECT_TRUE(result);
        EXPECT_EQ(c.values, changed());
        EXPECT_EQ(c.arguments, m_options.arguments());
    }
}

TEST_F(Options, ReportsErrorsOnTheCommandLine) {
    const struct {
        strings words;
        const char* error;
    } cases[] = {
        {{"--server.prot=80"}, "unknown option --server.prot; did you mean --server.port?"},
        {{"--port=80"}, "unknown option --port; did you mean --server.port?"},
        {{"--prot", "80"}, "unknown option --prot; did you mean --server.port?"},
        {{"--VERBOES"}, "unknown option --VERBOES; did you mean --verbose?"},
        {{"--bit=1"}, "unknown option --bit; did you mean --bits?"},
        {{"--quite-different"}, "unknown option --quite-different"},
        {{"-verbos"}, "unknown option -e"},
        {{"-x"}, "unknown option -x"},
        {{"-vx"}, "unknown option -x"},
        {{"--no-server.port"}, "unknown option --no-server.port; did you mean --server.port?"},
        {{"--no-help"}, "unknown option --no-help"},
        {{"--"}, ""},
        {{"---"}, "unknown option ---"},
        {{"--="}, "unknown option --"},
        {{"--server.port"}, "--server.port: the value is missing"},
        {{"-p"}, "-p: the value is missing"},
        {{"-p", "-v"},
         "-p: the value is missing; one that begins with a minus sign follows after ="},
        {{"--server.port="}, "--server.port: \"\" is not a whole number"},
        {{"--server.port=80x"}, "--server.port: \"80x\" is not a whole number"},
        {{"--server.port=8.5"}, "--server.port: \"8.5\" is not a whole number"},
        {{"--server.port= 80"}, "--server.port: \" 80\" is not a whole number"},
        {{"--server.port=0x-5"}, "--server.port: \"0x-5\" is not a whole number"},
        {{"--server.port=010"}, "--server.port: \"010\" has a leading 0, which could mean octal"},
        {{"-p99999999999999999999"}, "-p: \"99999999999999999999\" is out of range"},
        {{"-p0"}, "-p: 0 is not from 1 to 65535"},
        {{"-p65536"}, "-p: 65536 is not from 1 to 65535"},
        {{"--bits=-1"}, "--bits: \"-1\" is out of range"},
        {{"--ratio=half"}, "--ratio: \"half\" is not a number"},
        {{"--ratio=1e999"}, "--ratio: \"1e999\" is out of range"},
        {{"--ratio=1.5"}, "--ratio: 1.5 is not from 0 to 1"},
        {{"--verbose=maybe"}, "--verbose: \"maybe\" is neither yes nor no"},
        {{"--log.level=inf"}, "--log.level: \"inf\" is not one of error, info, debug"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.words));
        const option_result result = load(c.words);
        if (*c.error == '\0') {
            EXPECT_TRUE(result);
            continue;
        }
        ASSERT_FALSE(result.errors.empty());
        EXPECT_EQ(std::string("command line: ") + c.error, result.errors[0]);
        EXPECT_TRUE(result.ends_program);
        EXPECT_EQ(2, result.exit_code);
    }
}

TEST_F(Options, ReportsAllErrorsAtOnce) {
    m_directory.write("serve.cfg", "[server]\nprot = 80\n");
    const option_result result = load({"-p0", "--x"}, {"SERVE_PORT=http"});
    std::ostringstream out;
    std::ostringstream errors;
    EXPECT_EQ(2, result.report(out, errors));
    EXPECT_EQ("", out.str());
    EXPECT_EQ("command line: -p: 0 is not from 1 to 65535\n"
              "command line: unknown option --x\n"
              "environment variable SERVE_PORT: \"http\" is not a whole number\n" +
                  path() + ": unknown key server.prot; did you mean server.port?\n",
              errors.str());
}

TEST_F(Options, AnOptionMayBeRequired) {
    m_options.add("user", "", "who").required().environment("SERVE_USER");
    m_options.add("age", 0, "how old").required();
    EXPECT_THAT(load({}).errors, ElementsAre("--user is required", "--age is required"));
    EXPECT_THAT(load({"--age=x"}, {"SERVE_USER=mia"}).errors,
                ElementsAre("command line: --age: \"x\" is not a whole number"));
    EXPECT_TRUE(load({"--age=7"}, {"SERVE_USER=mia"}));
}

TEST_F(Options, ArgumentsAreCounted) {
    m_options.takes_arguments("FROM TO", 2, 2);
    EXPECT_THAT(load({"a"}).errors, ElementsAre("command line: an argument is missing: FROM TO"));
    EXPECT_THAT(load({"a", "b", "c"}).errors, ElementsAre("command line: unexpected argument c"));
    EXPECT_TRUE(load({"a", "b"}));

    options none("none");
    const char* const words[] = {"none", "file", nullptr};
    EXPECT_THAT(none.load(2, words, nullptr).errors,
                ElementsAre("command line: unexpected argument file"));
}

// --- Help ----------------------------------------------------------------------------------------

TEST(OptionsHelp, ShowsEveryOption) {
    options shown("serve", "1.2.0", "Serves a folder.");
    shown.add("server.port", 8080, "port to listen on")
        .short_name('p')
        .environment("SERVE_PORT")
        .range(1, 65535);
    shown.add("a.very.very.long.key", "", "help below the option").value_name("THIS").required();
    shown.add("log.level", "info", "what to log").choices({"error", "info"}).long_name("log");
    shown.add("search.dir", strings{"/a", "/b"}, "folders");
    shown.add("color", true, "colored output");
    shown.flag("verbose", "say more").short_name('v');
    shown.settings_file("serve.cfg");
    shown.takes_arguments("[FILE...]");
    EXPECT_EQ("usage: serve [OPTIONS] [FILE...]\n"
              "\n"
              "Serves a folder.\n"
              "\n"
              "Options:\n"
              "  -h, --help                  show this help and exit\n"
              "      --version               show the version and exit\n"
              "  -p, --server.port=NUMBER    port to listen on (default: 8080; from 1 to 65535;\n"
              "                              environment: SERVE_PORT)\n"
              "      --a.very.very.long.key=THIS\n"
              "                              help below the option (required)\n"
              "      --log=TEXT              what to log (default: info; one of error, info)\n"
              "      --search.dir=TEXT...    folders (default: /a, /b)\n"
              "      --color=yes|no          colored output (default: yes)\n"
              "  -v, --verbose               say more\n"
              "      --cfg_file=FILE         settings file (default: serve.cfg)\n"
              "\n"
              "The command line wins over the settings file, and the file over the environment.\n",
              shown.help());
}

TEST_F(Options, HelpAndVersionWinOverErrorsAndReadNoFile) {
    m_directory.write("serve.cfg", "nonsense = 1\n");
    for (const char* word : {"--help", "-h", "-help", "-vh"}) {
        const option_result result = load({"--x", word, "-p0"});
        EXPECT_TRUE(result.ends_program) << word;
        EXPECT_EQ(0, result.exit_code);
        EXPECT_EQ(m_options.help(), result.output);
        EXPECT_THAT(result.errors, IsEmpty());
    }
    const option_result result = load({"--version"});
    std::ostringstream out;
    EXPECT_EQ(0, result.report(out, out));
    EXPECT_EQ("serve 1.2.0\n", out.str());
    EXPECT_FALSE(load({"--", "--help"}).ends_program && load({"--", "--help"}).exit_code == 0);
}

TEST(OptionsHelp, AProgramWithoutAVersionHasNoSuchOption) {
    options plain("plain");
    const char* const words[] = {"plain", "--version", nullptr};
    EXPECT_THAT(plain.load(2, words, nullptr).errors,
                ElementsAre("command line: unknown option --version"));
    EXPECT_EQ("usage: plain [OPTIONS]\n\nOptions:\n"
              "  -h, --help                  show this help and exit\n",
              plain.help());
}

// --- The sources ---------------------------------------------------------------------------------

TEST_F(Options, TheFirstSourceWins) {
    EXPECT_TRUE(load({}));
    EXPECT_EQ(8080, m_options.get<int>("server.port"));
    EXPECT_EQ("default", m_options.source("server.port"));

    EXPECT_TRUE(load({}, {"SERVE_PORT=1", "SERVE_HOST=a b", "OTHER=x"}));
    EXPECT_EQ(1, m_options.get<int>("server.port"));
    EXPECT_EQ("environment variable SERVE_PORT", m_options.source("server.port"));
    EXPECT_EQ("a b", m_options.get<std::string>("server.host"));

    m_directory.write("serve.cfg", "[server]\nport = 2\n");
    EXPECT_TRUE(load({}, {"SERVE_PORT=1", "SERVE_HOST=a"}));
    EXPECT_EQ(2, m_options.get<int>("server.port"));
    EXPECT_EQ(path(), m_options.source("server.port"));
    EXPECT_EQ("a", m_options.get<std::string>("server.host"));

    EXPECT_TRUE(load({"-p3"}, {"SERVE_PORT=1"}));
    EXPECT_EQ(3, m_options.get<int>("server.port"));
    EXPECT_EQ("command line", m_options.source("server.port"));

    m_options.set("server.port", 4);
    EXPECT_EQ(4, m_options.get<int>("server.port"));
    EXPECT_EQ("program", m_options.source("server.port"));
}

TEST_F(Options, TheManagerHasTheSameValues) {
    m_directory.write("serve.cfg", "[server]\nport = 2\n[search]\ndir[] = a, b\n");
    ASSERT_TRUE(load({"--color=no"}, {"SERVE_HOST=h"}));
    tova::config::config_manager& manager = m_options.manager();
    EXPECT_EQ(2, manager.get_value("server.port", 0).as_int());
    EXPECT_EQ("h", manager.get_value("server.host", "").as_string());
    EXPECT_FALSE(manager.get_value("color", true).as_bool());
    EXPECT_EQ(0.5, manager.get_value("ratio", 0).as_double());
    std::vector<variant> folders;
    manager.get_array("search.dir", folders);
    ASSERT_EQ(2u, folders.size());
    EXPECT_EQ("b", folders[1].as_string());
    for (const char* name : {"program", "command line", "standard file", "enviroment", "default"})
        EXPECT_TRUE(manager.get_config_item(name)) << name;
    m_options.set("server.port", 5);
    EXPECT_EQ(5, manager.get_value("server.port", 0).as_int());
}

TEST_F(Options, AnEmptyVariableIsUnsetAndAListHasCommas) {
    EXPECT_TRUE(load({}, {"SERVE_PORT=", "SERVE_DIRS=/a,/b c,"}));
    EXPECT_EQ("default", m_options.source("server.port"));
    EXPECT_THAT(m_options.get<strings>("search.dir"), ElementsAre("/a", "/b c", ""));
}

TEST_F(Options, TheEnvironmentIsThatOfTheProcessUnlessGiven) {
    test_support::expect_in_child([this] {
        ASSERT_EQ(0, ::setenv("SERVE_PORT", "77", 1));
        const char* const words[] = {"serve", nullptr};
        EXPECT_TRUE(m_options.load(1, words));
        EXPECT_EQ(77, m_options.get<int>("server.port"));
        EXPECT_TRUE(m_options.load(1, words, nullptr));
        EXPECT_EQ(8080, m_options.get<int>("server.port"));
    });
}

TEST_F(Options, ASecondLoadStartsOver) {
    EXPECT_TRUE(load({"-v", "file"}));
    EXPECT_TRUE(load({}));
    EXPECT_FALSE(m_options.get<bool>("verbose"));
    EXPECT_THAT(m_options.arguments(), IsEmpty());
}

// --- The file ------------------------------------------------------------------------------------

TEST_F(Options, ReportsErrorsInTheFile) {
    m_options.foreign_section("plugins");
    const struct {
        const char* text;
        const char* error;
    } cases[] = {
        {"[server]\nport = 80x\n", "server.port: \"80x\" is not a whole number"},
        {"[server]\nport = 0\n", "server.port: 0 is not from 1 to 65535"},
        {"[server]\nport[] = 1, 2\n", "server.port: takes one value, not a list"},
        {"[server]\nprot = 1\n", "unknown key server.prot; did you mean server.port?"},
        {"[srever]\nport = 1\n", "unknown key srever.port; did you mean server.port?"},
        {"bits = 1\n", "unknown key bits"},
        {"help = yes\n", "unknown key help"},
        {"cfg_file = other\n", "unknown key cfg_file"},
        {"verbose\n[server]\nport = 80\n", "unknown key verbose[server]port"},
        {"[other]\nlist[] = 1, 2\n", "unknown key other.list"},
        {"[plugins]\nanything = 1\nlist[] = 1, 2\n", ""},
        {"[search]\ndir = /one\n", ""},
        {"[search]\ndir[] = /one, /two\n", ""},
        {"ratio = 1\nverbose = on\n", ""},
        {"", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const option_result result = load_file(c.text);
        if (*c.error == '\0')
            EXPECT_THAT(result.errors, IsEmpty());
        else
            EXPECT_THAT(result.errors, ElementsAre(path() + ": " + c.error));
    }
}

TEST_F(Options, OneValueInAFileIsAListOfOne) {
    EXPECT_TRUE(load_file("[search]\ndir = /one\n"));
    EXPECT_THAT(m_options.get<strings>("search.dir"), ElementsAre("/one"));
    EXPECT_TRUE(load_file("[search]\ndir[] = /one, \"/two, three\"\n"));
    EXPECT_THAT(m_options.get<strings>("search.dir"), ElementsAre("/one", "/two, three"));
}

TEST_F(Options, OnlyTheDefaultFileMayBeMissing) {
    EXPECT_TRUE(load({}));
    const std::string other = m_directory.path("other.cfg");
    EXPECT_THAT(load({"--cfg_file", other}).errors,
                ElementsAre(other + ": cannot open: No such file or directory"));
    EXPECT_THAT(load({"-cfg_file=" + m_directory.path()}).errors,
                ElementsAre(m_directory.path() + ": not a regular file"));
    m_directory.write("other.cfg", "ratio = 1\n");
    EXPECT_TRUE(load({"--cfg_file=" + other}));
    EXPECT_EQ(1, m_options.get<double>("ratio"));
    EXPECT_EQ(other, m_options.source("ratio"));
}

TEST_F(Options, ADefaultFileThatCannotBeReadIsAnError) {
    ASSERT_EQ(0, ::mkdir(path().c_str(), 0700));
    EXPECT_THAT(load({}).errors, ElementsAre(path() + ": not a regular file"));
}

TEST_F(Options, FollowsALinkToTheFile) {
    m_directory.write("real.cfg", "ratio = 1\n");
    ASSERT_EQ(0, ::symlink("real.cfg", path().c_str()));
    EXPECT_TRUE(load({}));
    EXPECT_EQ(1, m_options.get<double>("ratio"));
    m_options.set("ratio", 0.25);
    EXPECT_EQ("", m_options.save().message);
    EXPECT_EQ("ratio = 0.25\n", test_support::read_bytes(m_directory.path("real.cfg")));
    struct stat status;
    ASSERT_EQ(0, ::lstat(path().c_str(), &status));
    EXPECT_TRUE(S_ISLNK(status.st_mode));
}

TEST(OptionsFile, IsOptional) {
    options plain("plain");
    plain.add("n", 1, "a number");
    const char* const words[] = {"plain", "--n=2", nullptr};
    EXPECT_TRUE(plain.load(2, words, nullptr));
    EXPECT_EQ(2, plain.get<int>("n"));
    plain.set("n", 3);
    EXPECT_EQ("there is no settings file", plain.save().message);
}

// --- Mistakes of the program ---------------------------------------------------------------------

TEST_F(Options, RaisesForMistakesOfTheProgram) {
    for (const char* key :
         {"", "A", "1", "a b", ".a", "a.", "a..b", "a.1", "a-", "a=b", "-a", "\xC3", "server.port",
          "server", "server.port.admin", "help", "cfg_file"})
        EXPECT_THROW(m_options.add(key, 1, "help"), std::invalid_argument) << key;
    EXPECT_THROW(m_options.get<int>("missing"), std::logic_error);
    EXPECT_THROW(m_options.get<long>("server.port"), std::logic_error);
    EXPECT_THROW(m_options.source("missing"), std::logic_error);
    EXPECT_THROW(m_options.set("server.port", 5L), std::logic_error);
    EXPECT_THROW(m_options.set("log.level", "loud"), std::invalid_argument);
    try {
        m_options.set("server.port", 65536);
        ADD_FAILURE();
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ("server.port: 65536 is not from 1 to 65535", error.what());
    }
    EXPECT_EQ(8080, m_options.get<int>("server.port"));
}

TEST(OptionsTypes, HoldEveryNumberOfTheirType) {
    options all("all");
    all.add("least", std::numeric_limits<long>::min(), "");
    all.add("greatest", std::numeric_limits<unsigned long>::max(), "");
    all.add("small", static_cast<short>(-3), "");
    all.add("real", 0.1 + 0.2, "");
    all.add("reals", std::vector<float>{0.1f, 1e-30f}, "");
    all.add("numbers", std::vector<int>{}, "");
    all.add("flags", std::vector<bool>{true, false}, "");
    const char* const words[] = {"all", "--numbers", "1", "--numbers=-2", nullptr};
    EXPECT_TRUE(all.load(4, words, nullptr));
    EXPECT_EQ(std::numeric_limits<long>::min(), all.get<long>("least"));
    EXPECT_EQ(std::numeric_limits<unsigned long>::max(), all.get<unsigned long>("greatest"));
    EXPECT_EQ(-3, all.get<short>("small"));
    EXPECT_EQ(0.1 + 0.2, all.get<double>("real"));
    EXPECT_THAT(all.get<std::vector<float>>("reals"), ElementsAre(0.1f, 1e-30f));
    EXPECT_THAT(all.get<std::vector<int>>("numbers"), ElementsAre(1, -2));
    EXPECT_EQ((std::vector<bool>{true, false}), all.get<std::vector<bool>>("flags"));
}

// --- Saving --------------------------------------------------------------------------------------

TEST_F(Options, ASaveKeepsEverythingElse) {
    ASSERT_TRUE(load_file("# The server.\n"
                          "ratio = 1   # all of it\n"
                          "\n"
                          "[server]\n"
                          "  port = 80  // plain\n"
                          "\n"
                          "[search]\n"
                          "dir[] = /a,  # first\n"
                          "        /b   # second\n"));
    m_options.set("server.port", 8080);
    m_options.set("server.host", "two words");
    m_options.set("search.dir", strings{"/c d", "/e"});
    m_options.set("log.level", "debug");
    m_options.set("color", false);
    EXPECT_EQ("", m_options.save().message);
    EXPECT_EQ("# The server.\n"
              "ratio = 1   # all of it\n"
              "color = no\n"
              "\n"
              "[server]\n"
              "  port = 8080  // plain\n"
              "host = \"two words\"\n"
              "\n"
              "[search]\n"
              "dir[] = \"/c d\", \"/e\"   # second\n"
              "\n"
              "[log]\n"
              "level = debug\n",
              file());
    EXPECT_TRUE(load({}));
    EXPECT_EQ("server.port=8080 server.host=two words ratio=1 log.level=debug color=no "
              "dirs:/c d:/e",
              changed());
}

TEST_F(Options, ASaveStoresOnlyWhatWasSet) {
    m_directory.write("serve.cfg", "[server]\nport = 80\n");
    ASSERT_TRUE(load({"--ratio=0.25", "-p81"}, {"SERVE_HOST=h"}));
    m_options.set("offset", -3L);
    EXPECT_EQ("", m_options.save().message);
    EXPECT_EQ("offset = -3\n[server]\nport = 80\n", file());
}

TEST_F(Options, ASaveChangesTheEntryThatCounts) {
    const struct {
        const char* before;
        const char* after;
    } cases[] = {
        {"", "[server]\nport = 81\n"},
        {"[server]", "[server]\nport = 81\n"},
        {"[server]\nport = 1\nport = 2\n", "[server]\nport = 81\n"},
        {"[server]\nport = 1\nport = 2", "[server]\nport = 81"},
        {"[server]\r\nport = 1\r\nhost = a\r\n", "[server]\r\nport = 81\r\nhost = a\r\n"},
        {"server.port = 1\n", "server.port = 81\n"},
        {"[a\n]\n[]\nServer/Port = 1\n", "[a\n]\n[]\nServer/Port = 81\n"},
        {"[Server]\nPort=1# one\n", "[Server]\nPort=81# one\n"},
        {"[server]\n# port = 5\nhost = \"a # b\"\n",
         "[server]\n# port = 5\nhost = \"a # b\"\nport = 81\n"},
        {"ratio = 1\n", "ratio = 1\n\n[server]\nport = 81\n"},
        {"[server]\nhost = a\n[log]\nlevel = info\n[server]\n",
         "[server]\nhost = a\n[log]\nlevel = info\n[server]\nport = 81\n"},
        {"[server]\nport =\n", "[server]\nport =81\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.before);
        ASSERT_TRUE(load_file(c.before));
        m_options.set("server.port", 81);
        EXPECT_EQ("", m_options.save().message);
        EXPECT_EQ(c.after, file());
        EXPECT_TRUE(load({}));
        EXPECT_EQ(81, m_options.get<int>("server.port"));
    }
}

TEST_F(Options, ASaveReplacesLists) {
    const struct {
        const char* before;
        const char* after;
    } cases[] = {
        {"[search]\ndir[] = 1, 2, 3\n", "[search]\ndir[] = x\n"},
        {"[search]\ndir = 1\n", "[search]\ndir[] = x\n"},
        {"[search]\ndir[] = 1, 2\n# note\ndir[] = 3\n", "[search]\n# note\ndir[] = x\n"},
        {"[search]\ndir[] = 1,\n2,\n3\n[log]\nlevel = info\n",
         "[search]\ndir[] = x\n[log]\nlevel = info\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.before);
        ASSERT_TRUE(load_file(c.before));
        m_options.set("search.dir", strings{"x"});
        EXPECT_EQ("", m_options.save().message);
        EXPECT_EQ(c.after, file());
    }
}

TEST_F(Options, EveryStringIsStoredOrRefused) {
    const strings ends = {"", " ", "\\", "#", "\n", "//"};
    for (const std::string& start : ends)
        for (const std::string& end : ends)
            for (int byte = 1; byte < 256; ++byte) {
                // Every byte alone, and between other bytes those that can have a special meaning.
                if ((byte >= 0x7F || std::isalnum(byte) != 0) && !(start.empty() && end.empty()))
                    continue;
                const std::string value = start + static_cast<char>(byte) + end;
                SCOPED_TRACE(testing::PrintToString(value));
                tova::extras::_private::settings_text text("[a]\n");
                const std::string problem = text.set("a.one", {value}, false);
                ASSERT_EQ(problem, text.set("a.list", {value, "last"}, true));
                ASSERT_EQ(byte == '"' ? "a settings file cannot hold " + value : "", problem);
                if (byte == '"')
                    continue;
                m_directory.write("serve.cfg", text.str());
                tova::config::file_item item(path());
                item.load();
                ASSERT_EQ(value, item.get_value("a.one")->second.as_string());
                ASSERT_EQ(value, item.get_value("a.list.0")->second.as_string());
                ASSERT_EQ("last", item.get_value("a.list.1")->second.as_string());
            }
}

TEST_F(Options, RefusesAValueWithADoubleQuote) {
    ASSERT_TRUE(load({}));
    m_options.set("server.host", "say \"hello\"");
    EXPECT_EQ(path() + ": server.host: not saved, a settings file cannot hold say \"hello\"",
              m_options.save().message);
    EXPECT_NE(0, ::access(path().c_str(), F_OK));
}

TEST_F(Options, KeepsAFileThatWasNotLoadedWithoutErrors) {
    const std::string broken = "[server]\nport = eighty\n";
    EXPECT_FALSE(load_file(broken));
    m_options.set("ratio", 1.0);
    EXPECT_EQ(path() + ": not saved, because loading it reported errors", m_options.save().message);
    EXPECT_EQ(broken, file());
}

TEST_F(Options, AnErrorElsewhereDoesNotPreventASave) {
    m_directory.write("serve.cfg", "[server]\nport = 80\n");
    EXPECT_FALSE(load({"--x"}));
    m_options.set("server.port", 81);
    EXPECT_EQ("", m_options.save().message);
    EXPECT_EQ("[server]\nport = 81\n", file());
}

TEST_F(Options, KeepsAFileThatChangedSinceItWasLoaded) {
    ASSERT_TRUE(load_file("ratio = 1\n"));
    m_directory.write("serve.cfg", "ratio = 0\n");
    m_options.set("ratio", 0.5);
    const std::string message = path() + ": not saved, because it was changed since it was loaded";
    EXPECT_EQ(message, m_options.save().message);
    EXPECT_EQ("ratio = 0\n", file());

    ASSERT_EQ(0, ::unlink(path().c_str()));
    EXPECT_EQ(message, m_options.save().message);
    ASSERT_TRUE(load({}));
    m_directory.write("serve.cfg", "ratio = 0\n");
    m_options.set("ratio", 0.5);
    EXPECT_EQ(message, m_options.save().message);
    EXPECT_EQ("ratio = 0\n", file());
}

TEST_F(Options, KeepsTheFileIfTheNewOneCannotBeWritten) {
    ASSERT_TRUE(load_file("ratio = 1\n"));
    test_support::expect_in_child([this] {
        const struct rlimit limit = {4, 4};
        std::signal(SIGXFSZ, SIG_IGN);
        ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &limit));
        m_options.set("ratio", 0.5);
        EXPECT_EQ(path() + ": not saved, cannot write: File too large", m_options.save().message);
    });
    EXPECT_EQ("ratio = 1\n", file());
}

TEST_F(Options, RefusesASaveThatWouldNotReadBack) {
    // The quote in the comment opens a string that ends in another comment.
    const std::string text = "# 19\" rack\n[server]\n# 17\" rack\n";
    ASSERT_TRUE(load_file(text));
    m_options.set("ratio", 0.25);
    EXPECT_EQ("", m_options.save().message);
    EXPECT_EQ("ratio = 0.25\n" + text, file());

    const std::string open = "ratio = 1\n# a 19\" rack\n";
    ASSERT_TRUE(load_file(open));
    m_options.set("server.port", 81);
    EXPECT_EQ(path() + ": not saved, because server.port would not read back",
              m_options.save().message);
    EXPECT_EQ(open, file());
}

TEST_F(Options, AnEmptyValueIsNoEntryIfThatIsTheDefault) {
    m_options.add("note", "", "a note");
    ASSERT_TRUE(load_file("note = x\nratio = 1\n"));
    m_options.set("note", "");
    EXPECT_EQ("", m_options.save().message);
    EXPECT_EQ("ratio = 1\n", file());
    m_options.set("server.host", "");
    EXPECT_EQ(path() + ": server.host: not saved, a settings file cannot hold an empty value",
              m_options.save().message);
    m_options.set("server.host", "h");
    m_options.set("search.dir", strings());
    EXPECT_EQ(path() + ": search.dir: not saved, a settings file cannot hold an empty list",
              m_options.save().message);
    EXPECT_EQ("ratio = 1\n", file());
}

TEST_F(Options, ASaveWithoutAChangeWritesNothing) {
    ASSERT_TRUE(load({}));
    EXPECT_EQ("", m_options.save().message);
    EXPECT_NE(0, ::access(path().c_str(), F_OK));
    ASSERT_TRUE(load_file("ratio = 1\n"));
    struct stat before;
    struct stat after;
    ASSERT_EQ(0, ::stat(path().c_str(), &before));
    m_options.set("ratio", 1.0);
    EXPECT_EQ("", m_options.save().message);
    ASSERT_EQ(0, ::stat(path().c_str(), &after));
    EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST_F(Options, SavesAgainAfterASave) {
    ASSERT_TRUE(load({}));
    for (int port = 1; port <= 3; ++port) {
        m_options.set("server.port", port);
        EXPECT_EQ("", m_options.save().message);
        EXPECT_EQ("[server]\nport = " + std::to_string(port) + "\n", file());
    }
}

TEST_F(Options, NothingIsSavedBeforeALoad) {
    m_options.set("server.port", 1);
    EXPECT_EQ("there is no settings file", m_options.save().message);
}

}  // namespace
