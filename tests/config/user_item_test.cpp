#include <tova/config/user_item.hpp>

#include "config/listing.hpp"
#include "config/source_checks.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace config_support;
using ::testing::ElementsAre;
using tova::config::config_item_list;
using tova::config::user_item;
using tova::memory::pointers::rc_pointer;

TEST(UserItem, ChangesItsNameWhenCopied) {
    user_item item;
    EXPECT_EQ("user item", item.get_id());
    user_item copy(item);
    EXPECT_EQ("user_item", copy.get_id());
    EXPECT_EQ("user_item", user_item(copy).get_id());
    const rc_pointer<user_item> clone(item.clone());
    EXPECT_EQ("user_item", clone->get_id());
    EXPECT_TRUE(clone->allocated);
    EXPECT_EQ(1u, clone->count);
}

TEST(UserItem, ClonesWithItsTree) {
    user_item item;
    expect_independent_clone(item);
}

TEST(UserItem, KeepsItsValuesThroughLoadSaveAndUnload) {
    user_item item;
    item.set("a", variant(1), 0);
    const config_item_list none;
    EXPECT_TRUE(item.load(none));
    EXPECT_TRUE(item.load());
    EXPECT_TRUE(item.save(none));
    EXPECT_TRUE(item.save());
    item.unload();
    EXPECT_THAT(content(item), ElementsAre("a: 1 '1' int"));
}

}  // namespace
