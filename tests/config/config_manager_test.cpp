#include <tova/config/config_manager.hpp>

#include <tova/config/std_config_dispatch.hpp>

#include "config/listing.hpp"
#include "config/recording_item.hpp"
#include "support/temporary_directory.hpp"
#include "support/working_directory.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

using namespace config_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using tova::config::config_dispatch;
using tova::config::config_item_list;
using tova::config::config_manager;
using tova::config::std_config_dispatch;
using tova::generic::argument;
using tova::generic::varg_list;

// Sets up recording sources with the given names and records its own calls, too.
class test_dispatch : public config_dispatch {
public:
    test_dispatch(const std::vector<std::string>& names, lines& calls)
        : m_names(names), m_calls(calls) {}

    bool setup(config_item_list& items) const override {
        m_calls.push_back("setup of " + std::to_string(items.size()));
        for (const std::string& name : m_names)
            items.push_back((new recording_item(name, m_calls))->recording_end());
        return m_result;
    }
    bool load(config_item_list& items) const override { return record("load", items); }
    bool unload(config_item_list& items) const override { return record("unload", items); }
    bool save(config_item_list& items) const override { return record("save", items); }
    config_dispatch* clone() const override {
        m_calls.push_back("clone");
        test_dispatch* const copy = new test_dispatch(*this);
        copy->m_is_clone = true;
        return copy;
    }
    ~test_dispatch() TOVA_NOTHROW override {
        if (m_is_clone)
            m_calls.push_back("dispatcher destroyed");
    }
    test_dispatch& returning(bool result) {
        m_result = result;
        return *this;
    }

private:
    bool record(const char* what, const config_item_list& items) const {
        m_calls.push_back(what + std::string(" of ") + std::to_string(items.size()));
        return false;
    }

    std::vector<std::string> m_names;
    lines& m_calls;
    bool m_result = true;
    bool m_is_clone = false;
};

// A manager over the sources "a", "b" and "c", in that order.
class ConfigManager : public ::testing::Test {
protected:
    ConfigManager() { manager.init(test_dispatch({"a", "b", "c"}, calls)); }

    base_config_item& item(const char* id) { return *manager.get_config_item(id); }
    std::string value(const char* key) {
        const variant found = manager.get_value(key, variant("default"));
        if (found == nil)
            return "nil";
        return found.type() == typeid(bool) ? "bool " + found.as_string() : found.as_string();
    }
    lines array(const char* key) {
        std::vector<variant> values;
        manager.get_array(key, values);
        lines texts;
        for (const variant& each : values)
            texts.push_back(each.as_string());
        return texts;
    }
    lines below(const char* key, bool recursive) {
        std::vector<std::pair<ustring8, variant>> values;
        manager.get_key_value_array(key, values, recursive);
        lines texts;
        for (const auto& each : values)
            texts.push_back(each.first + "=" + each.second.as_string());
        return texts;
    }

    lines calls;  // outlives the manager, whose items record their destruction
    config_manager manager;
};

TEST(ConfigManagerLife, ReturnsFalseAndDefaultsWithoutADispatcher) {
    config_manager manager;
    EXPECT_FALSE(manager.load());
    EXPECT_FALSE(manager.unload());
    EXPECT_FALSE(manager.save());
    EXPECT_EQ(5, manager.get_value("k", variant(5)).as_int());
    EXPECT_FALSE(manager.value_exist("k"));
    EXPECT_FALSE(manager.is_array("k"));
    EXPECT_FALSE(manager.get_config_item("standard file"));
    std::vector<variant> values;
    manager.get_array("k", values);
    EXPECT_TRUE(values.empty());
    std::ostringstream out;
    manager.dump(out);
    EXPECT_EQ("config_manager:\n\nno more config_items!\n\nending output\n", out.str());
}

TEST(ConfigManagerLife, ClonesTheDispatcherAndSetsUpAnEmptyList) {
    lines calls;
    {
        config_manager manager;
        {
            test_dispatch dispatch({"a"}, calls);
            EXPECT_TRUE(manager.init(dispatch));
        }
        EXPECT_TRUE(manager.load());
        EXPECT_TRUE(manager.save());
        EXPECT_TRUE(manager.unload());
    }
    EXPECT_THAT(calls, ElementsAre("clone", "setup of 0", "load of 1", "save of 1", "unload of 1",
                                   "dispatcher destroyed", "a destroyed"));
}

TEST(ConfigManagerLife, ReplacesDispatcherAndItemsOnASecondInit) {
    lines calls;
    config_manager manager;
    manager.init(test_dispatch({"a", "b"}, calls));
    manager.get_config_item("a")->set("k = 1", 0);
    EXPECT_TRUE(manager.value_exist("k"));
    calls.clear();
    EXPECT_FALSE(manager.init(test_dispatch({"a"}, calls).returning(false)));
    EXPECT_THAT(calls, ElementsAre("dispatcher destroyed", "a destroyed", "b destroyed", "clone",
                                   "setup of 0"));
    EXPECT_FALSE(manager.value_exist("k"));
    EXPECT_TRUE(manager.load());
}

TEST_F(ConfigManager, LetsTheFirstSourceWin) {
    item("b").set("k = from b", 0);
    item("c").set("k = from c", 0);
    item("c").set("only = from c", 0);
    EXPECT_EQ("fromb", value("k"));
    EXPECT_EQ("fromc", value("ONLY"));
    item("a").set("k = from a", 0);
    EXPECT_EQ("froma", value("k"));
    EXPECT_EQ("default", value("missing"));
}

TEST_F(ConfigManager, ReturnsAValueWithTheTypeThatWasStored) {
    item("a").set("n", variant(2.5), 0);
    EXPECT_EQ(typeid(double), manager.get_value("n", variant()).type());
    EXPECT_EQ(7, manager.get_value("x", variant(7)).as_int());
}

TEST_F(ConfigManager, ReturnsTrueForASection) {
    item("b").set("s.k = 1", 0);
    EXPECT_EQ("bool 1", value("s"));
    EXPECT_TRUE(manager.value_exist("s"));
    // A section of an earlier source hides the value of a later one.
    item("c").set("s = value", 0);
    EXPECT_EQ("bool 1", value("s"));
}

TEST_F(ConfigManager, ReturnsTheFirstElementOfAnArray) {
    item("b").set_array("k", varg_list(argument("x"), argument("y")), varg_list());
    EXPECT_EQ("x", value("k"));
    EXPECT_EQ("y", value("k.1"));
}

TEST_F(ConfigManager, ReturnsNilForAnEmptyArrayEvenWithADefault) {
    item("a").set_array("k", varg_list(), varg_list());
    item("b").set("k.0 = other source", 0);
    EXPECT_EQ("nil", value("k"));
    EXPECT_FALSE(manager.value_exist("k"));
}

TEST_F(ConfigManager, TestsForAnArrayBeforeItTestsForAnAlias) {
    item("a").set("k", variant("target"), 6);
    item("a").set("k.0", variant("target"), 4);
    item("a").set("target = reached", 0);
    // The first element is an alias, too, which is followed only in a lookup of its own key.
    EXPECT_EQ("target", value("k"));
    EXPECT_EQ("reached", value("k.0"));
}

TEST_F(ConfigManager, FollowsAliasesThroughAllSources) {
    item("c").set("x", variant("y"), 4);
    item("b").set("y", variant("Z.deep"), 4);
    item("c").set("z.deep = end", 0);
    EXPECT_EQ("end", value("x"));
    // The lookup of the target starts again at the first source.
    item("a").set("z.deep = earlier", 0);
    EXPECT_EQ("earlier", value("x"));
}

TEST_F(ConfigManager, ReturnsTheDefaultForAnAliasToAMissingKey) {
    item("a").set("x", variant("nowhere"), 4);
    EXPECT_EQ("default", value("x"));
    EXPECT_FALSE(manager.value_exist("x"));
}

TEST_F(ConfigManager, EndsACycleWithTheValueOfItsLastAlias) {
    item("a").set("a", variant("b"), 4);
    item("a").set("b", variant("a"), 4);
    EXPECT_EQ("a", value("a"));
    EXPECT_EQ("b", value("b"));
    item("a").set("self", variant("self"), 4);
    EXPECT_EQ("self", value("self"));
    item("a").set("x", variant("p"), 4);
    item("a").set("p", variant("q"), 4);
    item("a").set("q", variant("p"), 4);
    EXPECT_EQ("p", value("x"));
}

TEST_F(ConfigManager, ComparesTheKeysOfACycleCaseSensitively) {
    item("a").set("a", variant("B"), 4);
    item("a").set("b", variant("a"), 4);
    // Starting from "A" the lookups are A, B, a, and then B again: the last alias is that of the
    // key a.
    EXPECT_EQ("B", value("A"));
    EXPECT_EQ("a", value("a"));
}

TEST_F(ConfigManager, FollowsAVeryLongChain) {
    for (int i = 0; i < 20000; ++i)
        item("c").set("k" + ustring8(std::to_string(i)), variant("k" + std::to_string(i + 1)), 4);
    item("a").set("k20000 = end", 0);
    EXPECT_EQ("end", value("k0"));
}

TEST_F(ConfigManager, FollowsAnAliasWhoseValueIsANumber) {
    item("a").set("x", variant(12), 4);
    item("a").set("12 = found", 0);
    EXPECT_EQ("found", value("x"));
}

TEST_F(ConfigManager, TreatsANilValueAsMissing) {
    item("a").set("k", variant(), 0);
    EXPECT_EQ("nil", value("k"));
    EXPECT_FALSE(manager.value_exist("k"));
    item("a").set("e", variant(""), 0);
    EXPECT_TRUE(manager.value_exist("e"));
}

TEST_F(ConfigManager, FindsAnArrayInAnySource) {
    item("a").set("k = plain", 0);
    EXPECT_FALSE(manager.is_array("k"));
    item("c").set_array("k", varg_list(argument("x")), varg_list());
    EXPECT_TRUE(manager.is_array("k"));
    EXPECT_FALSE(manager.is_array("k.0"));
    EXPECT_FALSE(manager.is_array("missing"));
    item("b").set("s.k = 1", 0);
    EXPECT_FALSE(manager.is_array("s"));
    item("b").set("m", variant(), 6);
    EXPECT_TRUE(manager.is_array("m"));
}

TEST_F(ConfigManager, SkipsPlainNodesWhenSearchingForAnArray) {
    item("a").set("k = plain", 0);
    item("b").set_array("k", varg_list(argument("x"), argument("y")), varg_list());
    item("c").set_array("k", varg_list(argument("z")), varg_list());
    EXPECT_THAT(array("k"), ElementsAre("x", "y"));
    EXPECT_THAT(array("missing"), IsEmpty());
    // An empty array also ends the search.
    item("a").set_array("m", varg_list(), varg_list());
    item("b").set_array("m", varg_list(argument("x")), varg_list());
    EXPECT_THAT(array("m"), IsEmpty());
}

TEST_F(ConfigManager, AppendsArraysAndLists) {
    item("b").set_array("k", varg_list(argument("x")), varg_list());
    std::vector<variant> values(1, variant("old"));
    manager.get_array("k", values);
    ASSERT_EQ(2u, values.size());
    EXPECT_EQ("old", values[0].as_string());
    EXPECT_EQ("x", values[1].as_string());
    std::vector<std::pair<ustring8, variant>> pairs(1);
    manager.get_key_value_array("k", pairs, false);
    ASSERT_EQ(2u, pairs.size());
    EXPECT_EQ("0", pairs[1].first);
}

TEST_F(ConfigManager, ListsTheFirstSourceWithAnyNodeAndMergesNothing) {
    item("b").set("s.x.y = 1", 0);
    item("b").set("s.a = 2", 0);
    item("c").set("s.more = 3", 0);
    EXPECT_THAT(below("s", false), ElementsAre("a=2", "x=1"));
    EXPECT_THAT(below("s", true), ElementsAre("a=2", "x=1", "x.y=1"));
    item("a").set("s = plain", 0);
    EXPECT_THAT(below("s", true), IsEmpty());
    EXPECT_THAT(below("missing", true), IsEmpty());
    EXPECT_THAT(below("", true), IsEmpty());
}

// For a lookup the empty key names a child with an empty name, for a listing it names the root.
TEST_F(ConfigManager, ListsTheRootForTheEmptyKeyIfASourceHasSuchANode) {
    item("b").set("s.x = 1", 0);
    item("c").set("", variant("e"), 0);
    item("c").set("t = 2", 0);
    EXPECT_THAT(below("", true), ElementsAre("=e", "t=2"));
}

TEST_F(ConfigManager, FindsItemsByTheirExactNames) {
    EXPECT_EQ("b", manager.get_config_item("b")->get_id());
    EXPECT_FALSE(manager.get_config_item("B"));
    EXPECT_FALSE(manager.get_config_item(""));
    EXPECT_FALSE(manager.get_config_item("b "));
    const auto held = manager.get_config_item("c");
    EXPECT_EQ(2u, held->count);
}

TEST_F(ConfigManager, DumpsEachItem) {
    item("b").set("k = v", 0);
    std::ostringstream out;
    EXPECT_EQ(&out, &manager.dump(out));
    EXPECT_EQ("config_manager:\n"
              "\nconfig_item:\n"
              "object : a\n|---------------\\\n|\t\tend\nend\n"
              "\nconfig_item:\n"
              "object : b\n|---------------\\\n|\t\tk : 1 v\n|\t\t|\n|\t\tend\nend\n"
              "\nconfig_item:\n"
              "object : c\n|---------------\\\n|\t\tend\nend\n"
              "\nno more config_items!\n\nending output\n",
              out.str());
    std::ostringstream inserted;
    inserted << manager;
    EXPECT_EQ(out.str(), inserted.str());
}

// Tests with the three real sources.
TEST(ConfigManagerStandard, PrefersTheCommandLineToTheFileToTheEnvironment) {
    const test_support::temporary_directory directory;
    const std::string option = "-cfg_file=" + directory.write("x.cfg", "a=file\nb=file\n");
    const char* const arguments[] = {"tool", option.c_str(), "-a=line", nullptr};
    const char* const environment[] = {"A=env", "B=env", "C=env", nullptr};
    config_manager manager;
    EXPECT_TRUE(manager.init(std_config_dispatch(3, arguments, environment, "", "")));
    EXPECT_FALSE(manager.value_exist("a"));
    EXPECT_TRUE(manager.load());
    EXPECT_EQ("line", manager.get_value("a", variant()).as_string());
    EXPECT_EQ("file", manager.get_value("b", variant()).as_string());
    EXPECT_EQ("env", manager.get_value("c", variant()).as_string());
    EXPECT_EQ("tool", manager.get_value("application.name", variant()).as_string());
    for (const char* id : {"command line", "standard file", "enviroment"})
        EXPECT_TRUE(static_cast<bool>(manager.get_config_item(id))) << id;

    EXPECT_TRUE(manager.unload());
    EXPECT_FALSE(manager.value_exist("a"));
    EXPECT_TRUE(manager.load());
    EXPECT_EQ("line", manager.get_value("a", variant()).as_string());
}

// On the command line "server.port" is a step to a longer key, and the value of a step is `true`.
TEST(ConfigManagerStandard, HidesAValueIfAStrongerSourceHasALongerKey) {
    const test_support::temporary_directory directory;
    const std::string path = directory.write("x.cfg", "[server]\nport=8080\nhost=a\n");
    const char* const arguments[] = {"tool", "-server.port.admin=81", nullptr};
    config_manager manager;
    manager.init(std_config_dispatch(2, arguments, nullptr, path, ""));
    manager.load();
    EXPECT_TRUE(manager.get_value("server.port", variant()).type() == typeid(bool));
    EXPECT_EQ("a", manager.get_value("server.host", variant()).as_string());
}

TEST(ConfigManagerStandard, IgnoresAFileNameInTheEnvironmentWhichIsReadLater) {
    const test_support::temporary_directory directory;
    const test_support::working_directory here(directory.path());
    directory.write("x.cfg", "a=named\n");
    const char* const arguments[] = {"tool", nullptr};
    const char* const environment[] = {"cfg_file=x.cfg", nullptr};
    config_manager manager;
    manager.init(std_config_dispatch(1, arguments, environment, "", ""));
    manager.load();
    EXPECT_EQ("none", manager.get_value("a", variant("none")).as_string());
    // A second load without `unload` finds it.
    manager.load();
    EXPECT_EQ("named", manager.get_value("a", variant("none")).as_string());
}

TEST(ConfigManagerStandard, LooksForTheFileNameInAllSourcesOnASecondLoad) {
    const test_support::temporary_directory directory;
    const std::string other = directory.write("other.cfg", "a=other\n");
    const std::string given =
        directory.write("given.cfg", "a=given\nb=given\ncfg_file=\"" + other + "\"\n");
    config_manager manager;
    manager.init(std_config_dispatch(0, nullptr, nullptr, given, ""));
    const auto value = [&](const char* key) {
        return manager.get_value(key, variant("none")).as_string();
    };
    manager.load();
    EXPECT_EQ("given", value("a"));
    // The first file names the second one, and entries found only in the first one are kept.
    manager.load();
    EXPECT_EQ("other", value("a"));
    EXPECT_EQ("given", value("b"));
    // The chosen name survives an unload, but not a second `init`.
    manager.unload();
    manager.load();
    EXPECT_EQ("other", value("a"));
    EXPECT_EQ("none", value("b"));
    manager.init(std_config_dispatch(0, nullptr, nullptr, given, ""));
    manager.load();
    EXPECT_EQ("given", value("a"));
}

TEST(ConfigManagerStandard, SavesTheFile) {
    const test_support::temporary_directory directory;
    const std::string path = directory.write("x.cfg", "[s]\na=1 2\n");
    const char* const arguments[] = {"tool", nullptr};
    config_manager manager;
    manager.init(std_config_dispatch(1, arguments, nullptr, path, ""));
    manager.load();
    manager.get_config_item("standard file")->set("s.b", variant("x y"), 0);
    EXPECT_TRUE(manager.save());
    EXPECT_EQ("[s]\na=12\nb=\"x y\"\n\n", test_support::read_bytes(path));
}

TEST(ConfigManagerStandard, ReadsDotCfgForAProgramWithoutADot) {
    const test_support::temporary_directory directory;
    directory.write(".cfg", "a=found\n");
    directory.write("tool.cfg", "a=other\n");
    const test_support::working_directory here(directory.path());
    const auto value_for = [](const char* program) {
        const char* const arguments[] = {program, nullptr};
        config_manager manager;
        manager.init(std_config_dispatch(1, arguments, nullptr, "", ""));
        manager.load();
        return manager.get_value("a", variant("none")).as_string();
    };
    EXPECT_EQ("found", value_for("tool"));
    EXPECT_EQ("other", value_for("bin/tool.exe"));
}

}  // namespace
