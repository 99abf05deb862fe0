#include <tova/config/enviroment_item.hpp>

#include "config/listing.hpp"
#include "config/source_checks.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace config_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using tova::config::config_item_list;
using tova::config::enviroment_item;
using tova::memory::pointers::rc_pointer;

TEST(EnviromentItem, IsNamedEnviroment) {
    const char* const none[] = {nullptr};
    enviroment_item item(none);
    EXPECT_EQ("enviroment", item.get_id());
    EXPECT_EQ(none, item.get_envp());
    enviroment_item copy(item);
    EXPECT_EQ("enviroment", copy.get_id());
    EXPECT_EQ(none, copy.get_envp());
}

TEST(EnviromentItem, SetsAKeyForEachString) {
    const char* const strings[] = {"HOME=/home/me", "A=b c", "QUOTED=\"b c\"", "EMPTY=", "NO_SIGN",
                                   "PATH=/a:/b=",   "x.Y=1", "x/Z=2",          "A==1",   nullptr};
    enviroment_item item(strings);
    EXPECT_THAT(content(item), IsEmpty());
    EXPECT_TRUE(item.load());
    EXPECT_THAT(content(item),
                ElementsAre("a: 1 'bc'", "a==1: 1 ''", "empty: 1 ''", "home: 1 '/home/me'",
                            "no_sign: 1 ''", "path: 1 '/a:/b='", "quoted: 1 'b c'", "x: 0 true",
                            "x.y: 1 '1'", "x.z: 1 '2'"));
}

TEST(EnviromentItem, KeepsCommentCharactersAndDropsTabsAndLaterLines) {
    const char* const strings[] = {"A=x # y // z", "B=x\ty", "C=x\ny", "D\n=x", "=hidden", nullptr};
    enviroment_item item(strings);
    item.load();
    EXPECT_THAT(content(item),
                ElementsAre(": 1 'hidden'", "a: 1 'x#y//z'", "b: 1 'xy'", "c: 1 'x'", "d: 1 'x'"));
}

TEST(EnviromentItem, KeepsTheLastValueOfARepeatedKey) {
    const char* const strings[] = {"KEY=1", "key=2", nullptr};
    enviroment_item item(strings);
    item.load();
    EXPECT_THAT(content(item), ElementsAre("key: 1 '2'"));
}

TEST(EnviromentItem, LoadsNothingFromNull) {
    enviroment_item item(nullptr);
    EXPECT_TRUE(item.load());
    EXPECT_THAT(content(item), IsEmpty());
    EXPECT_EQ(nullptr, item.get_envp());
}

TEST(EnviromentItem, LoadsAndUnloadsThroughItsBaseClass) {
    const char* const strings[] = {"A=1", nullptr};
    enviroment_item item(strings);
    expect_loads_and_unloads(item, {"a: 1 '1'"});
}

TEST(EnviromentItem, SavesNothing) {
    const char* const strings[] = {"A=1", nullptr};
    enviroment_item item(strings);
    base_config_item& base = item;
    EXPECT_TRUE(base.save(config_item_list()));
    EXPECT_TRUE(base.save());
}

TEST(EnviromentItem, ClonesWithItsTreeAndItsStrings) {
    const char* const strings[] = {nullptr};
    enviroment_item item(strings);
    expect_independent_clone(item);
    const rc_pointer<enviroment_item> clone(item.clone());
    EXPECT_EQ(strings, clone->get_envp());
}

}  // namespace
