#include <tova/config/commandline_item.hpp>

#include "config/listing.hpp"
#include "config/source_checks.hpp"

#include <gtest/gtest.h>

#include <iostream>
#include <string>
#include <vector>

namespace {

using namespace config_support;
using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;
using tova::config::commandline_item;
using tova::memory::pointers::rc_pointer;

// The nodes that a command line sets, without those of the program's name, and its output.
struct outcome {
    lines nodes;
    std::string output;
};

outcome load(const std::vector<const char*>& options) {
    std::vector<const char*> arguments{"tool"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const unsigned count = static_cast<unsigned>(arguments.size());
    arguments.push_back(nullptr);
    commandline_item item(count, arguments.data());
    outcome result;
    CaptureStdout();
    EXPECT_TRUE(item.load());
    std::cout.flush();
    result.output = GetCapturedStdout();
    for (const std::string& line : content(item))
        if (line.find("application") != 0)
            result.nodes.push_back(line);
    return result;
}

lines nodes(const std::vector<const char*>& options) {
    const outcome result = load(options);
    EXPECT_EQ("", result.output);
    return result.nodes;
}

TEST(CommandlineItem, KeepsItsNameAndItsArguments) {
    const char* const arguments[] = {"tool", nullptr};
    commandline_item item(1, arguments);
    EXPECT_EQ("command line", item.get_id());
    EXPECT_EQ(1u, item.get_argc());
    EXPECT_EQ(arguments, item.get_argv());
    commandline_item copy(item);
    EXPECT_EQ("command line", copy.get_id());
    EXPECT_EQ(1u, copy.get_argc());
    EXPECT_EQ(arguments, copy.get_argv());
}

TEST(CommandlineItem, SplitsTheProgramsName) {
    const struct {
        const char* path;
        lines expected;
    } cases[] = {
        {"/usr/bin/tool.bin.sh",
         {"application: 0 true", "application.name: 1 'tool.bin.sh' string",
          "application.name.extention: 1 'sh' string", "application.name.raw: 1 'toolbin' string"}},
        {"tool",
         {"application: 0 true", "application.name: 1 'tool' string",
          "application.name.raw: 1 '' string"}},
        {"./dir/tool.exe",
         {"application: 0 true", "application.name: 1 'tool.exe' string",
          "application.name.extention: 1 'exe' string", "application.name.raw: 1 'tool' string"}},
        {"tool.",
         {"application: 0 true", "application.name: 1 'tool.' string",
          "application.name.raw: 1 '' string"}},
        {"a.b.",
         {"application: 0 true", "application.name: 1 'a.b.' string",
          "application.name.extention: 1 'b' string", "application.name.raw: 1 'a' string"}},
        {".tool",
         {"application: 0 true", "application.name: 1 '.tool' string",
          "application.name.extention: 1 'tool' string", "application.name.raw: 1 '' string"}},
        {"/usr/bin/",
         {"application: 0 true", "application.name: 1 'bin' string",
          "application.name.raw: 1 '' string"}},
        {"a..b",
         {"application: 0 true", "application.name: 1 'a..b' string",
          "application.name.extention: 1 'b' string", "application.name.raw: 1 'a' string"}},
        {"C:\\tool.exe",
         {"application: 0 true", "application.name: 1 'C:\\tool.exe' string",
          "application.name.extention: 1 'exe' string",
          "application.name.raw: 1 'C:\\tool' string"}},
        {"",
         {"application: 0 true", "application.name: 1 '' string",
          "application.name.raw: 1 '' string"}},
        {"/",
         {"application: 0 true", "application.name: 1 '' string",
          "application.name.raw: 1 '' string"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        const char* const arguments[] = {c.path, nullptr};
        commandline_item item(1, arguments);
        EXPECT_TRUE(item.load());
        EXPECT_EQ(c.expected, content(item));
    }
}

TEST(CommandlineItem, SetsNothingWithoutArguments) {
    commandline_item without(5, nullptr);
    EXPECT_TRUE(without.load());
    EXPECT_EQ(lines(), content(without));
    const char* const none[] = {nullptr, nullptr};
    commandline_item empty(0, none);
    EXPECT_TRUE(empty.load());
    EXPECT_EQ(lines(), content(empty));
    // A null string ends the arguments even before the count is reached.
    commandline_item counted(2, none);
    EXPECT_TRUE(counted.load());
    EXPECT_EQ(lines(), content(counted));
    const char* const unnamed[] = {nullptr, "-a=1", nullptr, "-b=2", nullptr};
    commandline_item options(4, unnamed);
    EXPECT_TRUE(options.load());
    EXPECT_EQ((lines{"a: 1 '1'"}), content(options));
}

TEST(CommandlineItem, IgnoresArgumentsPastTheCount) {
    const char* const arguments[] = {"tool.x", "-a", "-b", nullptr};
    commandline_item item(2, arguments);
    item.load();
    EXPECT_NE(nullptr, item.get_value("a"));
    EXPECT_EQ(nullptr, item.get_value("b"));
}

TEST(CommandlineItem, StoresAFlagAsAnEmptyString) {
    EXPECT_EQ((lines{"v: 1 ''"}), nodes({"-v"}));
    EXPECT_EQ((lines{"v: 1 ''"}), nodes({"/v"}));
    EXPECT_EQ((lines{"-v: 1 ''"}), nodes({"--v"}));
    EXPECT_EQ((lines{": 1 ''"}), nodes({"-"}));
    EXPECT_EQ((lines{"-: 1 ''"}), nodes({"--"}));
    EXPECT_EQ((lines{"a: 1 ''", "b: 1 ''"}), nodes({"-a", "-b"}));
    EXPECT_EQ((lines{"a: 1 ''", "b: 1 ''"}), nodes({"-a", "/b"}));
}

TEST(CommandlineItem, ParsesAFlagAsALine) {
    // The key of the option is tokenized again, and now even a quoted "=" splits it.
    EXPECT_EQ((lines{"a: 1 'b'"}), nodes({"-\"a=b\""}));
    EXPECT_EQ((lines{"a==b: 1 ''"}), nodes({"-a==b"}));
}

TEST(CommandlineItem, TakesAValueAfterASeparatorOrFromTheNextArgument) {
    const std::vector<const char*> forms[] = {{"-n", "5"}, {"-n=5"}, {"-n:5"},   {"-n:=5"},
                                              {"-n$5"},    {"/n=5"}, {"/n", "5"}};
    for (const auto& form : forms) {
        SCOPED_TRACE(form[0]);
        EXPECT_EQ((lines{"n: 1 '5'"}), nodes(form));
    }
}

TEST(CommandlineItem, StoresAnEmptyValue) {
    EXPECT_EQ((lines{"n: 1 ''"}), nodes({"-n="}));
    EXPECT_EQ((lines{"n: 1 ''"}), nodes({"-n$"}));
    EXPECT_EQ((lines{"n: 1 ''"}), nodes({"-n", ""}));
    EXPECT_EQ((lines{": 1 'x'"}), nodes({"-=x"}));
}

TEST(CommandlineItem, KeepsTheFirstCharacterOfATwoCharacterSeparatorInTheKey) {
    const struct {
        const char* argument;
        const char* node;
    } cases[] = {
        {"-a+=1", "a+: 1 '1'"},   {"-a-=1", "a-: 1 '1'"},   {"-a*=1", "a*: 1 '1'"},
        {"-a>=1", "a>: 1 '1'"},   {"-a<=1", "a<: 1 '1'"},   {"-a+b=1", "a+b: 1 '1'"},
        {"-a==1", "a==1: 1 ''"},  {"-a-b", "a-b: 1 ''"},    {"-a<b", "a<b: 1 ''"},
        {"-a#b=1", "a#b: 1 '1'"}, {"-a_1=x", "a_1: 1 'x'"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.argument);
        EXPECT_EQ((lines{c.node}), nodes({c.argument}));
    }
    // "/" separates the segments of a key, and "a/" is the same key as "a".
    EXPECT_EQ((lines{"a: 1 '1'"}), nodes({"-a/=1"}));
}

TEST(CommandlineItem, StoresPathsInLowerCase) {
    EXPECT_EQ((lines{"net: 0 true", "net.port: 1 '80'"}), nodes({"-Net.Port=80"}));
    EXPECT_EQ((lines{"net: 0 true", "net.port: 1 '80'"}), nodes({"-Net/Port", "80"}));
    EXPECT_EQ((lines{"name: 1 '1'"}), nodes({"-Name=1"}));
}

TEST(CommandlineItem, MakesAnArrayOfACommaListAfterASeparator) {
    EXPECT_EQ((lines{"k: 3 nil", "k.0: 1 'a'", "k.1: 1 'b'"}), nodes({"-k=a,b"}));
    EXPECT_EQ((lines{"k: 3 nil", "k.0: 1 'a'", "k.1: 1 'b'"}), nodes({"-k:a,b"}));
    EXPECT_EQ((lines{"k+: 3 nil", "k+.0: 1 'a'", "k+.1: 1 'b'"}), nodes({"-k+=a,b"}));
    EXPECT_EQ((lines{"k: 3 nil", "k.0: 1 'a'", "k.1: 1 ''"}), nodes({"-k=a,"}));
    EXPECT_EQ((lines{"k: 3 nil", "k.0: 1 ''", "k.1: 1 ''"}), nodes({"-k=,"}));
    EXPECT_EQ((lines{"k: 1 'a,b'"}), nodes({"-k=\"a,b\""}));
}

TEST(CommandlineItem, KeepsCommasAfterADollarAndInFollowingArguments) {
    EXPECT_EQ((lines{"n: 1 'a,b'"}), nodes({"-n$a,b"}));
    EXPECT_EQ((lines{"n: 1 'a,b'"}), nodes({"-n", "a,b"}));
    EXPECT_EQ((lines{"n: 3 nil", "n.0: 1 'a,b'", "n.1: 1 'c'"}), nodes({"-n", "a,b", "c"}));
    EXPECT_EQ((lines{"n: 1 'a$b=c'"}), nodes({"-n$a$b=c"}));
    EXPECT_EQ((lines{"n: 1 'a$b=c'"}), nodes({"-n=a$b=c"}));
    // A quoted dollar is part of the key.
    EXPECT_EQ((lines{"n$m: 1 '5'"}), nodes({"-n\"$\"m=5"}));
}

TEST(CommandlineItem, MakesAnArrayOfSeveralFollowingArguments) {
    EXPECT_EQ((lines{"n: 3 nil", "n.0: 1 '1'", "n.1: 1 '2'", "n.2: 1 '3'", "x: 1 ''"}),
              nodes({"-n", "1", "2", "3", "-x"}));
}

TEST(CommandlineItem, EndsTheListAtAMinusButNotAtASlash) {
    EXPECT_EQ((lines{"n: 1 ''", "x: 1 ''"}), nodes({"-n", "/x"}));
    EXPECT_EQ((lines{"n: 3 nil", "n.0: 1 '1'", "n.1: 1 '/x'"}), nodes({"-n", "1", "/x"}));
    EXPECT_EQ((lines{"n: 3 nil", "n.0: 1 '1'", "n.1: 1 '/x'", "y: 1 ''"}),
              nodes({"-n", "1", "/x", "-y"}));
    EXPECT_EQ((lines{"n: 3 nil", "n.0: 1 '1'", "n.1: 1 ''"}), nodes({"-n", "1", ""}));
    EXPECT_EQ((lines{"5: 1 ''", "n: 1 ''"}), nodes({"-n", "-5"}));
}

TEST(CommandlineItem, TakesAnAbsolutePathOnlyAfterASeparator) {
    EXPECT_EQ((lines{"cfg_file: 1 '/etc/x.cfg'"}), nodes({"-cfg_file=/etc/x.cfg"}));
    EXPECT_EQ((lines{"cfg_file: 1 ''", "etc: 0 true", "etc.x: 0 true", "etc.x.cfg: 1 ''"}),
              nodes({"-cfg_file", "/etc/x.cfg"}));
}

TEST(CommandlineItem, RepeatsTheTokenBeforeASpace) {
    EXPECT_EQ((lines{"k: 1 'aab'"}), nodes({"-k=a b"}));
    EXPECT_EQ((lines{"k: 1 'aab'"}), nodes({"-k$a b"}));
    EXPECT_EQ((lines{"k: 1 'aab'"}), nodes({"-k", "a b"}));
    EXPECT_EQ((lines{"k: 1 'aa'"}), nodes({"-k=a   "}));
    EXPECT_EQ((lines{"aab: 1 '1'"}), nodes({"-a b=1"}));
    // That token may be the separator that ended the key, or come from an earlier argument.
    EXPECT_EQ((lines{"k: 1 '=a'"}), nodes({"-k= a"}));
    EXPECT_EQ((lines{"k: 1 '$a'"}), nodes({"-k$ a"}));
    EXPECT_EQ((lines{"k: 1 'ka'"}), nodes({"-k", " a"}));
    EXPECT_EQ((lines{"k: 3 nil", "k.0: 1 'a'", "k.1: 1 ',b'"}), nodes({"-k=a, b"}));
    EXPECT_EQ((lines{"1x: 1 ''", "a: 1 '1'"}), nodes({"-a=1", "- x"}));
    EXPECT_EQ((lines{"x: 1 ''"}), nodes({"- x"}));
}

TEST(CommandlineItem, KeepsTabsLineEndsAndCommentCharacters) {
    EXPECT_EQ((lines{"k: 1 'a\tb\nc\nd'"}), nodes({"-k=a\tb\nc\r\nd"}));
    EXPECT_EQ((lines{"k: 1 'a#b//c*/d'"}), nodes({"-k=a#b//c*/d"}));
    EXPECT_EQ((lines{"k: 1 'a b'"}), nodes({"-k=\"a b\""}));
    EXPECT_EQ((lines{"k: 1 'a b'"}), nodes({"-k", "\"a b\""}));
}

TEST(CommandlineItem, ReportsAnArgumentThatIsNotAnOptionAndContinues) {
    const outcome one = load({"stray", "-a=1"});
    EXPECT_EQ("Warning! unknown key:stray\nIgnoring key and continuing\n", one.output);
    EXPECT_EQ((lines{"a: 1 '1'"}), one.nodes);
    const outcome more = load({"-a=1", "x y", "", "-b"});
    EXPECT_EQ("Warning! unknown key:x y\nIgnoring key and continuing\n"
              "Warning! unknown key:\nIgnoring key and continuing\n",
              more.output);
    EXPECT_EQ((lines{"a: 1 '1'", "b: 1 ''"}), more.nodes);
}

TEST(CommandlineItem, KeepsTheLastValueOfARepeatedKey) {
    EXPECT_EQ((lines{"a: 1 '2'"}), nodes({"-a=1", "-A=2"}));
    // A plain value with the same key keeps the elements of an array.
    EXPECT_EQ((lines{"a: 1 'z'", "a.0: 1 'x'", "a.1: 1 'y'"}), nodes({"-a=x,y", "-a=z"}));
}

TEST(CommandlineItem, StartsEachListEmpty) {
    EXPECT_EQ((lines{"a: 3 nil", "a.0: 1 '1'", "a.1: 1 '2'", "b: 3 nil", "b.0: 1 '3'", "b.1: 1 '4'",
                     "c: 1 '5'"}),
              nodes({"-a=1,2", "-b", "3", "4", "-c=5"}));
}

TEST(CommandlineItem, LoadsAndUnloadsThroughItsBaseClass) {
    const char* const arguments[] = {"tool", "-a=1", nullptr};
    commandline_item item(2, arguments);
    expect_loads_and_unloads(item, {"a: 1 '1'", "application: 0 true",
                                    "application.name: 1 'tool' string",
                                    "application.name.raw: 1 '' string"});
}

TEST(CommandlineItem, ClonesWithItsTreeAndItsArguments) {
    const char* const arguments[] = {"tool", nullptr};
    commandline_item item(1, arguments);
    expect_independent_clone(item);
    const rc_pointer<commandline_item> clone(item.clone());
    EXPECT_EQ(arguments, clone->get_argv());
    EXPECT_EQ(1u, clone->get_argc());
}

}  // namespace
