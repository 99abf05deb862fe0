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

// The command lines run in the folder of sample files; the expected output of each is
// commands/NAME.txt, with the exit code in its last line.
const struct {
    const char* name;
    const char* arguments;
} commands[] = {
    {"show", "show app.cfg"},
    {"show_arguments", "show app.cfg --program bin/app.x -- -server.port=1 -v -list a b junk"},
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

// An alias leads to what a manager with the same alias finds, whatever it leads to.
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
