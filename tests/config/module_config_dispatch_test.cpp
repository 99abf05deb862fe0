#include <tova/config/module_config_dispatch.hpp>

#include <tova/config/config_manager.hpp>
#include <tova/config/enviroment_item.hpp>
#include <tova/config/file_item.hpp>
#include <tova/config/user_item.hpp>

#include "config/listing.hpp"
#include "config/recording_item.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using namespace config_support;
using tova::config::config_dispatch;
using tova::config::config_item_list;
using tova::config::config_manager;
using tova::config::enviroment_item;
using tova::config::file_item;
using tova::config::module_config_dispatch;
using tova::config::user_item;
using tova::generic::argument;
using tova::generic::varg_list;

const char* const environment[] = {"B=2", nullptr};

TEST(ModuleConfigDispatch, SetsUpFilesEnvironmentAndUserItemInThatOrder) {
    const module_config_dispatch dispatch(
        varg_list(argument("one.cfg"), argument(2), argument(std::string("three.cfg"))),
        environment);
    config_item_list items;
    EXPECT_TRUE(dispatch.setup(items));
    ASSERT_EQ(5u, items.size());
    auto item = items.begin();
    for (const char* name : {"one.cfg", "2", "three.cfg"}) {
        EXPECT_EQ(name, dynamic_cast<file_item&>(**item).get_filename());
        ++item;
    }
    EXPECT_EQ(environment, dynamic_cast<enviroment_item&>(**item).get_envp());
    EXPECT_NE(nullptr, dynamic_cast<user_item*>((++item)->get()));
    EXPECT_EQ("user_item", (*item)->get_id());
    for (const auto& each : items) {
        EXPECT_TRUE(each->allocated);
        EXPECT_EQ(1u, each->count);
    }
}

TEST(ModuleConfigDispatch, WorksWithoutFiles) {
    const module_config_dispatch dispatch(varg_list(), nullptr);
    config_item_list items;
    EXPECT_TRUE(dispatch.setup(items));
    EXPECT_EQ(2u, items.size());
    EXPECT_TRUE(dispatch.load(items));
}

TEST(ModuleConfigDispatch, CallsEveryItemInOrderWithTheWholeList) {
    expect_calls_every_item_in_order(module_config_dispatch(varg_list(), nullptr));
}

TEST(ModuleConfigDispatch, PrefersEarlierFilesAndUsesTheProgramsValuesLast) {
    const test_support::temporary_directory directory;
    const std::string first = directory.write("one.cfg", "a=1\n");
    const std::string second = directory.write("two.cfg", "a=2\nb=3\nc=4\n");
    config_manager manager;
    EXPECT_TRUE(manager.init(
        module_config_dispatch(varg_list(argument(first), argument(second)), environment)));
    EXPECT_TRUE(manager.load());
    const auto user = manager.get_config_item("user_item");
    ASSERT_TRUE(static_cast<bool>(user));
    EXPECT_FALSE(manager.get_config_item("user item"));
    user->set("c", variant("user"), 0);
    user->set("d", variant("user"), 0);
    EXPECT_EQ("1", manager.get_value("a", variant()).as_string());
    EXPECT_EQ("3", manager.get_value("b", variant()).as_string());
    EXPECT_EQ("4", manager.get_value("c", variant()).as_string());
    EXPECT_EQ("user", manager.get_value("d", variant()).as_string());

    // Unloading keeps the program's own values.
    EXPECT_TRUE(manager.unload());
    EXPECT_EQ("user", manager.get_value("c", variant()).as_string());
    EXPECT_FALSE(manager.value_exist("b"));
}

TEST(ModuleConfigDispatch, FindsTheFirstFileByTheNameThatAllFilesShare) {
    config_manager manager;
    manager.init(
        module_config_dispatch(varg_list(argument("one.cfg"), argument("two.cfg")), nullptr));
    const auto found = manager.get_config_item("standard file");
    ASSERT_TRUE(static_cast<bool>(found));
    EXPECT_EQ("one.cfg", dynamic_cast<file_item&>(*found).get_filename());
}

TEST(ModuleConfigDispatch, ClonesWithAllFields) {
    const std::unique_ptr<config_dispatch> clone(
        module_config_dispatch(varg_list(argument("one.cfg")), environment).clone());
    config_item_list items;
    clone->setup(items);
    ASSERT_EQ(3u, items.size());
    EXPECT_EQ("one.cfg", dynamic_cast<file_item&>(*items.front()).get_filename());
    EXPECT_EQ(environment, dynamic_cast<enviroment_item&>(**++items.begin()).get_envp());
}

}  // namespace
