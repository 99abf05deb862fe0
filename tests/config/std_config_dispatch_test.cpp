#include <tova/config/std_config_dispatch.hpp>

#include <tova/config/commandline_item.hpp>
#include <tova/config/enviroment_item.hpp>
#include <tova/config/file_item.hpp>

#include "config/listing.hpp"
#include "config/recording_item.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using namespace config_support;
using tova::config::commandline_item;
using tova::config::config_dispatch;
using tova::config::config_item_list;
using tova::config::enviroment_item;
using tova::config::file_item;
using tova::config::std_config_dispatch;

const char* const arguments[] = {"tool", "-a=1", nullptr};
const char* const environment[] = {"B=2", nullptr};

TEST(StdConfigDispatch, SetsUpCommandLineFileAndEnvironmentInThatOrder) {
    const std_config_dispatch dispatch(2, arguments, environment, "name.cfg", "unread");
    config_item_list items;
    EXPECT_TRUE(dispatch.setup(items));
    ASSERT_EQ(3u, items.size());
    auto item = items.begin();
    auto* const command_line = dynamic_cast<commandline_item*>(item->get());
    ASSERT_NE(nullptr, command_line);
    EXPECT_EQ(2u, command_line->get_argc());
    EXPECT_EQ(arguments, command_line->get_argv());
    auto* const file = dynamic_cast<file_item*>((++item)->get());
    ASSERT_NE(nullptr, file);
    EXPECT_EQ("name.cfg", file->get_filename());
    auto* const variables = dynamic_cast<enviroment_item*>((++item)->get());
    ASSERT_NE(nullptr, variables);
    EXPECT_EQ(environment, variables->get_envp());
    for (const auto& each : items) {
        EXPECT_TRUE(each->allocated);
        EXPECT_EQ(1u, each->count);
        EXPECT_EQ(lines(), content(*each));
    }
}

TEST(StdConfigDispatch, AppendsToTheList) {
    const std_config_dispatch dispatch(2, arguments, environment, "", "");
    config_item_list items;
    dispatch.setup(items);
    dispatch.setup(items);
    EXPECT_EQ(6u, items.size());
}

TEST(StdConfigDispatch, CallsEveryItemInOrderWithTheWholeList) {
    expect_calls_every_item_in_order(std_config_dispatch(0, nullptr, nullptr, "", ""));
}

TEST(StdConfigDispatch, PassesTheFileNameOnTheCommandLineToTheFile) {
    const test_support::temporary_directory directory;
    const std::string option = "-cfg_file=" + directory.write("x.cfg", "[s]\nk=from file\n");
    const char* const with_file[] = {"tool", option.c_str(), nullptr};
    const std_config_dispatch dispatch(2, with_file, environment, "", "");
    config_item_list items;
    dispatch.setup(items);
    dispatch.load(items);
    EXPECT_EQ((lines{"s: 0 true", "s.k: 1 'fromfile'"}), content(**++items.begin()));
    dispatch.unload(items);
    for (const auto& each : items)
        EXPECT_EQ(lines(), content(*each));
    dispatch.load(items);
    EXPECT_EQ((lines{"b: 1 '2'"}), content(*items.back()));
}

TEST(StdConfigDispatch, ClonesWithAllFields) {
    const std::unique_ptr<config_dispatch> clone(
        std_config_dispatch(2, arguments, environment, "name.cfg", "second").clone());
    config_item_list items;
    clone->setup(items);
    ASSERT_EQ(3u, items.size());
    EXPECT_EQ("name.cfg", dynamic_cast<file_item&>(**++items.begin()).get_filename());
    EXPECT_EQ(arguments, dynamic_cast<commandline_item&>(*items.front()).get_argv());
    EXPECT_EQ(environment, dynamic_cast<enviroment_item&>(*items.back()).get_envp());
}

TEST(StdConfigDispatch, IsDefaultConstructedAndThenAssignsItsFields) {
    std_config_dispatch dispatch;
    dispatch = std_config_dispatch(2, arguments, environment, "name.cfg", "");
    config_item_list items;
    EXPECT_TRUE(dispatch.setup(items));
    EXPECT_EQ(3u, items.size());
}

}  // namespace
