#include <tova/config/user_item.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "config/listing.hpp"

namespace {

using config_support::content;
using config_support::variant;
using ::testing::ElementsAre;
using TOVA_2_18::config::base_config_item;
using TOVA_2_18::config::config_item_list;
using TOVA_2_18::config::user_item;
using TOVA_2_18::memory::pointers::rc_pointer;

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

TEST(UserItem, CopiesItsTree) {
    user_item item;
    item.set("a = 1", 0);
    const rc_pointer<base_config_item> clone(static_cast<const base_config_item&>(item).clone());
    clone->set("a = 2", 0);
    EXPECT_THAT(content(item), ElementsAre("a: 1 '1'"));
    EXPECT_THAT(content(*clone), ElementsAre("a: 1 '2'"));
}

TEST(UserItem, KeepsWhatWasSetWhateverIsCalled) {
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
