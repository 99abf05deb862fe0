#include "cfg/commands/convert.hpp"
#include "cfg/model/edit.hpp"
#include "cfg/model/sources.hpp"
#include "support/program.hpp"
#include "support/temporary_directory.hpp"
#include "support/text_file.hpp"
#include "support/working_directory.hpp"

#include <tova/config/commandline_item.hpp>
#include <tova/config/config_manager.hpp>
#include <tova/config/module_config_dispatch.hpp>
#include <tova/config/std_config_dispatch.hpp>
#include <tova/generic/varg_list.hpp>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

using namespace tova_programs;
using namespace tova_programs::cfg;
using test_support::read_bytes;
using test_support::run_program;
using test_support::temporary_directory;
using test_support::working_directory;

namespace {

const std::string data = TOVA_TEST_DATA "/programs/cfg";

// The commands run in the folder of the sample files. The expected output of each is in
// commands/NAME.txt, with the exit code on the last line.
const struct {
    const char* name;
    const char* arguments;
} commands[] = {
    {"show", "show app.cfg"},
    {"show_arguments", "show app.cfg --program bin/app.x -- -server.port=1 -v -list a b junk"},
    {"show_repeated", "show clean.cfg -- -a.b 5 -a.b 6 -a.b=x,y -a.b /z -c=1 -c"},
    {"explain_repeated", "explain server.port clean.cfg -- -server.port=5 -server.port=6"},
    {"show_ignored", "show app.cfg -- junk -v"},
    {"show_module", "show site.cfg app.cfg"},
    {"show_schema", "show app.cfg --schema app.schema.cfg"},
    {"show_below", "show app.cfg --below server.limits"},
    {"show_section_hides", "show app.cfg -- -server.host.name=x"},
    {"show_aliases", "show app.cfg --alias p=server.port --alias a=b --alias b=a"},
    {"show_json", "show app.cfg --alias p=server.port --json -- -server.host=a"},
    {"show_missing_file", "show absent.cfg"},
    {"get", "get server.title app.cfg"},
    {"get_array", "get PATHS/search app.cfg"},
    {"get_missing", "get server.prot app.cfg"},
    {"get_default", "get server.prot app.cfg --default 7"},
    {"get_json", "get server.port app.cfg --json"},
    {"explain", "explain server.port app.cfg -- -server.port=1"},
    {"explain_alias", "explain port site.cfg app.cfg --schema app.schema.cfg"},
    {"explain_default", "explain server.mode app.cfg --schema app.schema.cfg"},
    {"explain_cycle", "explain a app.cfg --alias a=b --alias b=a"},
    {"explain_section", "explain server app.cfg"},
    {"explain_missing", "explain server.hots app.cfg"},
    {"set", "set app.cfg server.port 81 --dry-run"},
    {"set_dashes", "set app.cfg server.title --dry-run -- -v --foo"},
    {"set_negative", "set app.cfg server.port --dry-run -- -5"},
    {"set_option", "set app.cfg server.title -v"},
    {"set_new", "set app.cfg server.mode 'very careful' --dry-run"},
    {"set_section", "set app.cfg log.file /var/log/app --dry-run"},
    {"set_array", "set app.cfg paths.search /a 'b, c' --dry-run"},
    {"set_top", "set app.cfg top 1 --dry-run"},
    {"set_quote", "set app.cfg server.title 'a 19\" rack' --dry-run"},
    {"set_refused", "set app.cfg server.port 80x --schema app.schema.cfg"},
    {"set_unknown", "set app.cfg server.prt 80 --schema app.schema.cfg"},
    {"set_missing_file", "set absent.cfg a 1"},
    {"set_longer_keys", "set app.cfg server yes --dry-run"},
    {"set_longer_key", "set app.cfg server.port.admin 81 --dry-run"},
    {"set_with_errors", "set ../rules/open-header/faulty.cfg top 1 --dry-run"},
    {"set_swallowed", "set ../rules/open-header/faulty.cfg client.port 1 --dry-run"},
    {"unset", "unset app.cfg server.port paths/search --dry-run"},
    {"unset_missing", "unset app.cfg server.prt"},
    {"unset_affects_other", "unset ../rules/array-gets-more/faulty.cfg s.a --dry-run"},
    {"unset_longer_keys", "unset app.cfg paths --dry-run"},
    {"check", "check app.cfg"},
    {"check_schema", "check app.cfg site.cfg --schema app.schema.cfg"},
    {"check_fix", "check ../rules/lost-space/faulty.cfg --fix --dry-run"},
    {"check_json", "check app.cfg --json"},
    {"check_written_for", "check old.ini --written-for configparser --ignore lost-space"},
    {"check_wrong_reader", "check old.ini --written-for nobody"},
    {"check_explain", "check --explain operator"},
    {"check_explain_unknown", "check --explain operater"},
    {"check_no_file", "check"},
    {"check_unreadable", "check ../rules/operator/faulty.cfg absent.cfg"},
    {"check_unknown_rule", "check --only operater app.cfg"},
    {"check_fix_nothing", "check --fix --dry-run app.cfg"},
    {"unknown_command", "chck app.cfg"},
    {"roundtrip", "roundtrip top.cfg"},
    {"roundtrip_json", "roundtrip top.cfg --json"},
    {"roundtrip_clean", "roundtrip clean.cfg"},
    {"convert_ini", "convert old.ini"},
    {"convert_inih", "convert old.ini --from inih"},
    {"convert_output", "convert old.ini -o /dev/stdout"},
    {"convert_configparser", "convert ../written_for/pool.ini --from configparser"},
    {"convert_toml", "convert app.toml"},
    {"convert_json", "convert app.json"},
    {"convert_as_json", "convert app.json --json"},
    {"convert_same_keys", "convert same_keys.json"},
    {"convert_same_keys_json", "convert same_keys.json --json"},
    {"convert_unknown_extension", "convert ../../xmc/sample/other.xmc"},
    {"convert_existing", "convert app.json -o clean.cfg"},
    {"convert_wrong", "convert app.cfg --from toml"},
    {"schema", "schema app.schema.cfg"},
    {"schema_json", "schema app.schema.cfg --json"},
    {"schema_cfg", "schema app.schema.cfg --format cfg"},
    {"schema_bash", "schema app.schema.cfg --format bash --program app"},
    {"schema_guess", "schema --guess app.cfg"},
    {"schema_wrong", "schema app.cfg"},
    {"schema_mistakes", "schema mistakes.schema.cfg"},
    {"schema_cycle", "schema cycle.schema.cfg"},
    {"help", "--help"},
    {"explain_json", "explain paths.search app.cfg --json"},
};

using random_source = std::mt19937;

std::size_t below(random_source& random, std::size_t limit) {
    return static_cast<std::size_t>(random()) % limit;
}

const std::vector<std::string> words = {
    "-a",     "--a",   "-a=1", "-b=1,2", "-b:x", "/c",     "-c.d",  "-a+=2", "-e$1,2",   "x",
    "y",      "/z",    "-",    "--",     "-a b", "-a= b ", "-f=\"", "-g==1", "-h\"=\"i", "",
    "-b.1=4", "-c.0.", "-a*/", "-list",  "1",    "-2",     "tool",  "-j=,",  "-k<=1"};

std::vector<const char*> pointers_of(const std::vector<std::string>& texts) {
    std::vector<const char*> result;
    for (const std::string& each : texts)
        result.push_back(each.c_str());
    return result;
}

// Runs without the warnings that the library prints for arguments that it ignores.
template <typename Work>
void quietly(Work work) {
    std::ostringstream out;
    std::streambuf* const before = std::cout.rdbuf(out.rdbuf());
    work();
    std::cout.rdbuf(before);
}

}  // namespace

TEST(CfgCommands, HaveTheirExpectedOutputAndExitCode) {
    const working_directory inside(data + "/sample");
    for (const auto& each : commands) {
        SCOPED_TRACE(each.name);
        const auto result = run_program(std::string(TOVA_CFG " ") + each.arguments);
        const std::string text =
            result.output + "exit code " + std::to_string(result.exit_code) + "\n";
        const std::string file = data + "/commands/" + each.name + ".txt";
        if (std::getenv("TOVA_UPDATE_GOLDEN") != nullptr)
            std::ofstream(file) << text;
        EXPECT_EQ(read_bytes(file), text);
    }
}

TEST(CfgCommands, NameAVariableThatDiffersFromTheKeyInItsUnderscores) {
    const temporary_directory folder;
    const std::string file = folder.write("f.cfg", "[smtp]\nhost = a\n");
    const auto explained = [&file](const std::string& variable, const std::string& key) {
        return run_program("env -i " + variable + " " TOVA_CFG " explain " + key + " --env " + file)
            .output;
    };
    const std::string note = "note: the variable SMTP_HOST is the key smtp_host, not smtp.host\n";
    EXPECT_NE(std::string::npos, explained("SMTP_HOST=b", "smtp.host").find(note));
    EXPECT_EQ(std::string::npos, explained("smtp.host=b", "smtp.host").find("note"));
    EXPECT_EQ(std::string::npos, explained("SMTP_HOST=b", "smtp_host").find("note"));
    // A variable is weaker than a file, and a dot in its name makes it the same key.
    EXPECT_NE(std::string::npos,
              explained("smtp.host=b", "smtp.host").find("hidden: b at variable smtp.host\n"));
    EXPECT_NE(std::string::npos,
              explained("SMTP_HOST=b", "smtp_host").find("=> b, from variable SMTP_HOST."));
}

// In any file, a change of one key leaves all others as they are, and reading the file back finds
// the value.
TEST(CfgEdit, ChangesOneKeyAndNothingElse) {
    const std::vector<std::string> pieces = {
        "a = 1\n",       "  b=2 # x\n",  "[s]\n",          "[s.t]  # c\n", "[]\n",
        "# c\n",         "A[] = 1, 2\n", "a[] = 1,\n 3\n", "x.y = 1\r\n",  "k\n",
        "q = \"z\n\"\n", "\n",           "[s] a = 5\n",    "b += 3\n",     "\"",
        "b =",           "; c\n",        "d[] = 1,\n\n",
    };
    const std::vector<std::string> keys = {"a", "b", "s.a", "S/T/b", "new.key", "x.y", "d", "q"};
    const std::vector<std::vector<std::string>> values = {
        {"1"}, {"a b"}, {"x", "y, z"}, {"http://x/#y"}, {"c:\\"}, {"\xC3\xA4"}, {"one\ntwo"}};
    random_source random(12);
    std::size_t done = 0;
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (std::size_t count = below(random, 7); count != 0; --count)
            text += pieces[below(random, pieces.size())];
        const document file("f", text);
        const std::string key = keys[below(random, keys.size())];
        const auto& value = values[below(random, values.size())];
        std::string after;
        try {
            after = with_value(file, key, value, value.size() > 1);
        } catch (const edit_error&) {
            continue;
        }
        ++done;
        node_map expected = nodes_of(file);
        const node_map changed = nodes_of(document("f", after));
        const std::string path = path_of(key);
        ASSERT_EQ(1u, changed.count(path)) << text;
        EXPECT_EQ(value.size() > 1 ? "" : value[0], changed.at(path).second) << text;
        for (const auto& node : changed)
            if (node.first != path && node.first.compare(0, path.size() + 1, path + '.') != 0) {
                ASSERT_EQ(1u, expected.count(node.first)) << text << "\n" << node.first;
                EXPECT_EQ(expected.at(node.first), node.second) << text;
            }
        for (const auto& node : expected)
            if (node.first != path && node.first.compare(0, path.size() + 1, path + '.') != 0) {
                EXPECT_EQ(1u, changed.count(node.first)) << text << "\n" << node.first;
            }
        // Removing the key again leaves the others.
        try {
            const node_map removed = nodes_of(document("f", without(document("f", after), key)));
            EXPECT_EQ(0u, removed.count(path)) << after;
        } catch (const edit_error&) {
        }
    }
    EXPECT_GT(done, 10000u);
}

TEST(CfgEdit, KeepsTheLayoutAndTheCommentsOfAnEntry) {
    const struct {
        const char* before;
        const char* key;
        std::vector<std::string> values;
        const char* after;
    } cases[] = {
        {"[s]\n  a   =  1   # why\nb=2\n", "s.a", {"2"}, "[s]\n  a   =  2   # why\nb=2\n"},
        {"a = 1\r\n", "b", {"2"}, "a = 1\r\nb = 2\r\n"},
        {"[s]\n  a = 1\n\n[t]\n", "s.b", {"x y"}, "[s]\n  a = 1\n  b = \"x y\"\n\n[t]\n"},
        {"", "s.a", {"1"}, "[s]\na = 1\n"},
        {"[s]", "s.a", {"1"}, "[s]\na = 1\n"},
        {"[s]  # note\nb = 1\n", "s.a", {"1"}, "[s]  # note\nb = 1\na = 1\n"},
        {"[s]  # note\n", "s.a", {"1"}, "[s]  # note\na = 1\n"},
        {"k[] = 1, # one\n  2\n", "k", {"3", "4"}, "k[] = 3, 4\n"},
        {"[s]\n", "a", {"1"}, "a = 1\n[s]\n"},
        {"# one\n# two\n\n[s]\n", "a", {"1"}, "# one\n# two\na = 1\n\n[s]\n"},
        {"# one\r\n[s]\r\n", "a", {"1"}, "# one\r\na = 1\r\n\r\n[s]\r\n"},
        {"# one\n\n# two\n[s]\n", "a", {"1"}, "# one\na = 1\n\n# two\n[s]\n"},
        {"# one", "a", {"1"}, "# one\na = 1\n"},
        {"# 19\" racks\n[s]\n", "a", {"1"}, "a = 1\n# 19\" racks\n[s]\n"},
        {"[s] # one\n", "a", {"1"}, "a = 1\n[s] # one\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.before);
        EXPECT_EQ(c.after,
                  with_value(document("f", c.before), c.key, c.values, c.values.size() > 1));
    }
}

TEST(CfgEdit, RefusesANewKeyThatBeginsAnotherOneOrTheOtherWayRound) {
    const document file("f", "a = 1\nl[] = 1, 2\n[s]\nb = 2\n[s.t]\nc = 3\n[u]\n");
    for (const char* key : {"s", "S/", "s.t", "a.b", "a.b.c", "s.b.x", "l.0", "l.5"})
        EXPECT_THROW(with_value(file, key, {"1"}, false), edit_error) << key;
    for (const char* key : {"u", "s.x", "s.t.d", "ab", "s.bc", "a"})
        EXPECT_NO_THROW(with_value(file, key, {"1"}, false)) << key;
    // In a file that already has both, the value can be changed.
    EXPECT_EQ("a = 3\na.b = 2\n", with_value(document("f", "a = 1\na.b = 2\n"), "a", {"3"}, false));
}

TEST(CfgEdit, ReplacesTheFileAndKeepsItsPermissions) {
    const temporary_directory folder;
    const std::string path = folder.write("f.cfg", "# c\na = 1\n");
    ASSERT_EQ(0, chmod(path.c_str(), 0640));
    EXPECT_EQ(0, run_program(TOVA_CFG " set " + path + " a 2").exit_code);
    EXPECT_EQ(0, run_program(TOVA_CFG " set " + path + " s.b 3").exit_code);
    EXPECT_EQ("# c\na = 2\n\n[s]\nb = 3\n", read_bytes(path));
    EXPECT_EQ(0, run_program(TOVA_CFG " unset " + path + " a").exit_code);
    EXPECT_EQ("# c\n\n[s]\nb = 3\n", read_bytes(path));
    struct stat status;
    ASSERT_EQ(0, stat(path.c_str(), &status));
    EXPECT_EQ(0640u, status.st_mode & 0777u);
    EXPECT_EQ(0, run_program(TOVA_CFG " set --create " + folder.path("n.cfg") + " a 1").exit_code);
    EXPECT_EQ("a = 1\n", read_bytes(folder.path("n.cfg")));
}

// Each value that Python's configparser reads is in the converted file, or in the list of values
// that a settings file cannot represent.
TEST(CfgConvert, KeepsEveryValueThatConfigparserReads) {
    const temporary_directory folder;
    random_source random(13);
    const std::vector<std::string> lines = {
        "[s]\n",        "[T.u]\n",     "a = 1\n",           "b: x y\n",        "c = http://a/b#c\n",
        "; note\n",     "# \"note\n",  "d = a ; b\n",       "e = \"q r\"\n",   "f =\n",
        "  more = 1\n", "\n",          "g = a,b == c\n",    "h = c:\\dir\\\n", "i = \xC3\xA4\n",
        "j=[x] {y}\n",  "k = 'one'\n", "  [not a header]\n"};
    std::string list;
    std::vector<std::string> files;
    for (int i = 0; i < 300; ++i) {
        std::string text = "[s0]\n";
        for (std::size_t count = 1 + below(random, 8); count != 0; --count)
            text += lines[below(random, lines.size())];
        files.push_back(folder.write(std::to_string(i) + ".ini", text));
        list += files.back() + '\n';
    }
    folder.write("list", list);
    // Prints key, NUL, value, NUL for every value of each file, and an empty key at its end.
    folder.write("read.py", R"(
import configparser, sys
for path in open(sys.argv[1]).read().split():
    parser = configparser.RawConfigParser(strict=False)
    out = ""
    try:
        parser.read(path, encoding="utf-8")
        for section in parser.sections():
            for key, value in parser.items(section):
                out += section.lower() + "." + key + "\0" + value + "\0"
        out += "\0"
    except configparser.Error:
        out = "\1\0"
    sys.stdout.buffer.write(out.encode())
)");
    const std::string output =
        run_program("python3 " + folder.path("read.py") + " " + folder.path("list")).output;
    std::size_t at = 0;
    const auto next = [&output, &at] {
        const std::size_t end = output.find('\0', at);
        const std::string text = output.substr(at, end - at);
        at = end == std::string::npos ? output.size() : end + 1;
        return text;
    };
    std::size_t compared = 0;
    for (const std::string& path : files) {
        SCOPED_TRACE(read_bytes(path));
        std::string key = next();
        if (key == "\1")
            continue;
        std::ostringstream out;
        std::ostringstream losses;
        convert_options options;
        options.file = path;
        run_convert(options, out, losses);
        const node_map nodes = nodes_of(document("result", out.str()));
        std::size_t kept = 0;
        for (; !key.empty(); key = next()) {
            const std::string value = next();
            const auto found = nodes.find(key);
            if (found == nodes.end()) {
                EXPECT_TRUE(value.empty() || value.find('"') != std::string::npos) << key;
                continue;
            }
            if (value.empty() || value.find('"') != std::string::npos)
                continue;  // an earlier value of the key stays
            EXPECT_EQ(value, found->second.second) << key;
            ++kept;
        }
        compared += kept;
    }
    EXPECT_GT(compared, 300u);
}

TEST(CfgWatch, PrintsWhatChanges) {
    const temporary_directory folder;
    const std::string path = folder.write("f.cfg", "a = 1\n[s]\nb = 2\n");
    // Each change is made after the one before it is printed.
    const std::string script = TOVA_CFG " watch --count 3 " + path + " > " + folder.path("out") +
                               " & pid=$!; "
                               "lines() { for i in $(seq 100); do [ $(wc -l < " +
                               folder.path("out") +
                               ") -ge $1 ] && return; sleep 0.1; done; }; sleep 0.5; " TOVA_CFG
                               " set " +
                               path + " a 3; lines 1; " TOVA_CFG " set " + path +
                               " s.l x y; lines 2; "
                               "rm " +
                               path + "; lines 5; wait $pid";
    EXPECT_EQ(0, run_program(script).exit_code);
    EXPECT_EQ("changed: a = 1 -> 3  (" + path + ":1:1)\n" + "added: s.l = [x, y]  (" + path +
                  ":4:1)\n" + "removed: a = 3\nremoved: s.b = 2\nremoved: s.l = [x, y]\n",
              read_bytes(folder.path("out")));
}

TEST(CfgWatch, SaysThatItWaitsForAFileThatDoesNotExist) {
    const temporary_directory folder;
    const std::string path = folder.path("f.cfg");
    const std::string script =
        TOVA_CFG " watch --count 1 " + path + " > " + folder.path("out") + " 2> " +
        folder.path("errors") + " & pid=$!; for i in $(seq 100); do [ -s " + folder.path("errors") +
        " ] && break; sleep 0.1; done; " TOVA_CFG " set --create " + path + " a 1; wait $pid";
    EXPECT_EQ(0, run_program(script).exit_code);
    EXPECT_EQ("tova-cfg: " + path + " does not exist yet; waiting\n",
              read_bytes(folder.path("errors")));
    EXPECT_EQ("added: a = 1  (" + path + ":1:1)\n", read_bytes(folder.path("out")));
}

TEST(CfgConvert, ReplacesAFileOnlyIfItMay) {
    const temporary_directory folder;
    const std::string from = folder.write("a.json", "{\"a\": 1}");
    const std::string to = folder.write("a.cfg", "mine = 1\n");
    const auto refused = run_program(TOVA_CFG " convert " + from + " -o " + to);
    EXPECT_EQ(2, refused.exit_code);
    EXPECT_EQ("tova-cfg: " + to + " exists; --force replaces it\n", refused.output);
    EXPECT_EQ("mine = 1\n", read_bytes(to));
    EXPECT_EQ(0, run_program(TOVA_CFG " convert --force " + from + " -o " + to).exit_code);
    EXPECT_EQ("a = 1\n", read_bytes(to));
}

// What convert writes has no key twice and no key that begins nowhere, whatever the names are.
TEST(CfgConvert, WritesEachKeyOnceAndListsTheOthers) {
    const temporary_directory folder;
    random_source random(14);
    const std::vector<std::string> names = {"a",   "b", "A",   "a.b", "b.a",  "",
                                            "a.",  ".", "a/b", "c d", "\\\"", "\\u0000",
                                            "b..", "#", "=",   "[]",  "B.A",  "\\\\"};
    for (int i = 0; i < 500; ++i) {
        std::string json;
        std::size_t keys = 0;
        std::set<std::string> used;
        for (std::size_t count = 1 + below(random, 6); count != 0; --count) {
            const std::string& name = names[below(random, names.size())];
            if (!used.insert(name).second)
                continue;
            const bool is_object = below(random, 2) == 0;
            json += (json.empty() ? "\"" : ",\"") + name + "\":";
            json += is_object ? "{\"" + names[below(random, names.size())] + "\":1}" : "1";
            ++keys;
        }
        const std::string path = folder.write("f.json", '{' + json + '}');
        SCOPED_TRACE(json);
        std::ostringstream out;
        std::ostringstream lines;
        convert_options options;
        options.file = path;
        run_convert(options, out, lines);
        const document file("f", out.str());
        std::set<std::string> stored;
        for (const entry& each : file.entries())
            EXPECT_TRUE(stored.insert(each.key).second) << out.str();
        // One line for each key at most, and for each key that is not there.
        const std::string listed = lines.str();
        const auto count = static_cast<std::size_t>(std::count(listed.begin(), listed.end(), '\n'));
        EXPECT_LE(count, keys) << listed;
        EXPECT_GE(count + stored.size(), keys) << out.str() << listed;
        EXPECT_EQ(std::string::npos, listed.find(": : ")) << listed;
    }
}

// The sample file and the completions fit the schema that they are made from.
TEST(CfgSchema, MakesASampleThatItAcceptsAndACompletionThatBashRuns) {
    const temporary_directory folder;
    const std::string declared = data + "/sample/app.schema.cfg";
    const std::string sample = folder.path("sample.cfg");
    ASSERT_EQ(0,
              run_program(TOVA_CFG " schema --format cfg " + declared + " > " + sample).exit_code);
    EXPECT_EQ("", run_program(TOVA_CFG " check --ignore missing-key --fail-on note --schema " +
                              declared + " " + sample)
                      .output);
    const std::string completion =
        "bash -c '. <(" TOVA_CFG " schema --format bash --program app " + declared +
        "); COMP_WORDS=(app -server.mode = f); COMP_CWORD=3; _app; echo ${COMPREPLY[*]}'";
    EXPECT_EQ("fast\n", run_program(completion).output);
    const std::string guessed = folder.path("guessed.cfg");
    ASSERT_EQ(
        0,
        run_program(TOVA_CFG " schema --guess " + data + "/sample/app.cfg > " + guessed).exit_code);
    EXPECT_EQ(0, run_program(TOVA_CFG " check --ignore duplicate-key --schema " + guessed + " " +
                             data + "/sample/app.cfg")
                     .exit_code);
}

TEST(CfgSchema, NamesTheKnownWordsForAnUnknownOne) {
    const temporary_directory folder;
    const struct {
        const char* property;
        const char* reason;
    } cases[] = {
        {"type = boolean",
         ":2:8: there is no type \"boolean\"; use string, int, double, bool or path"},
        {"type = strnig", ":2:8: there is no type \"strnig\" (did you mean \"string\"?)"},
        {"typ = int", ":2:1: there is no property \"typ\" (did you mean \"type\"?)"},
        {"kind = int", ":2:1: there is no property \"kind\"; use type, default, values, min, max, "
                       "required, help or alias"},
    };
    for (const auto& c : cases) {
        const std::string path = folder.write("s.cfg", std::string("[a]\n") + c.property + '\n');
        try {
            schema read(path);
            ADD_FAILURE() << c.property;
        } catch (const file_error& error) {
            EXPECT_EQ(path + c.reason, error.what());
        }
    }
}

TEST(CfgSources, KnowThePlaceOfEveryValueOfACommandLine) {
    random_source random(7);
    for (int i = 0; i < 5000; ++i) {
        std::vector<std::string> texts = {
            std::vector<std::string>{"tool", "a/tool.bin.sh", "tool.", "a/", ""}[below(random, 5)]};
        for (std::size_t count = below(random, 7); count != 0; --count)
            texts.push_back(words[below(random, words.size())]);
        std::vector<const char*> arguments = pointers_of(texts);
        std::set<std::string> expected;
        for (const auto& each : read_arguments(arguments).places)
            expected.insert(each.first);
        arguments.push_back(nullptr);
        tova::config::commandline_item item(static_cast<unsigned int>(texts.size()),
                                            arguments.data());
        quietly([&item] { item.load(); });
        tova::config::config_node_list nodes;
        item.get_value_pair_array("", nodes, true);
        std::set<std::string> stored;
        for (const auto& node : nodes)
            if (node.second.first != 0)
                stored.insert(node.first);
        // Names below a child of the root without a name are listed without a dot before them.
        std::set<std::string> listed;
        for (const std::string& each : expected)
            listed.insert(!each.empty() && each[0] == '.' ? each.substr(1) : each);
        std::string shown;
        for (const std::string& each : texts)
            shown += '[' + each + ']';
        EXPECT_EQ(stored, listed) << shown;
    }
}

TEST(CfgSources, FindWhatAManagerFinds) {
    const temporary_directory folder;
    const std::string path =
        folder.write("f.cfg", "a = 1\n[b]\nx = 2\n[]\nc[] = 3, 4\ncfg_file = other\n");
    random_source random(8);
    for (int i = 0; i < 2000; ++i) {
        std::vector<std::string> texts = {"tool"};
        for (std::size_t count = below(random, 5); count != 0; --count)
            texts.push_back(words[below(random, words.size())]);
        source_options options;
        options.files = {path};
        options.program = "tool";
        options.arguments = {texts.begin() + 1, texts.end()};
        const sources all(options);
        const std::vector<const char*> arguments = pointers_of(texts);
        std::vector<const char*> argv = arguments;
        argv.push_back(nullptr);
        const char* const no_environment[] = {nullptr};
        tova::config::config_manager manager;
        manager.init(tova::config::std_config_dispatch(static_cast<int>(texts.size()), argv.data(),
                                                       no_environment, path.c_str(), ""));
        quietly([&manager] { manager.load(); });
        std::vector<std::string> keys = all.paths();
        for (const char* each : {"a", "b", "b.x", "c", "c.1", "d", "list.1", "application"})
            keys.push_back(each);
        for (const std::string& key : keys) {
            const lookup found = all.find(key);
            const std::string expected = manager.get_value(key, "none").as_string();
            const std::string first = !found.is_found        ? "none"
                                      : found.values.empty() ? ""
                                                             : found.values[0];
            EXPECT_EQ(expected, first) << key;
            if (found.is_array) {
                EXPECT_TRUE(manager.is_array(key)) << key;
            }
        }
    }
}

// An alias finds what a manager with the same alias finds, whatever its target is.
TEST(CfgSources, FollowAliasesAsAManagerDoes) {
    const temporary_directory folder;
    const std::string path = folder.write("f.cfg", "a = 1\n[b]\nx = 2\n");
    const std::vector<std::string> names = {"a", "b", "b.x", "c", "d", "e", "A", "none"};
    random_source random(9);
    for (int i = 0; i < 2000; ++i) {
        source_options options;
        options.files = {path};
        for (std::size_t count = below(random, 5); count != 0; --count)
            options.aliases.push_back(names[below(random, names.size())] + '=' +
                                      names[below(random, names.size())]);
        const sources all(options);
        tova::config::config_manager manager;
        const tova::generic::varg_list files(tova::generic::argument("", path));
        manager.init(tova::config::module_config_dispatch(files, nullptr));
        manager.load();
        for (const std::string& each : options.aliases) {
            const std::size_t equals = each.find('=');
            manager.get_config_item("user_item")
                ->set(each.substr(0, equals),
                      tova::types::variant(tova::strings::ustring8(each.substr(equals + 1))), 4);
        }
        for (const std::string& key : names) {
            const lookup found = all.find(key);
            EXPECT_EQ(manager.get_value(key, "none").as_string(),
                      found.is_found ? found.values[0] : "none")
                << key;
        }
    }
}
