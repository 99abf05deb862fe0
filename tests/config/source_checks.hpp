// Checks of what every source of the library does: loading, unloading, cloning.
#pragma once

#include <tova/config/base_config_item.hpp>

#include "config/listing.hpp"

#include <gtest/gtest.h>

namespace config_support {

// Loads through the virtual functions of the base class, with and without a list. Checks that each
// load fills an empty tree with `expected` again.
inline void expect_loads_and_unloads(base_config_item& source, const lines& expected) {
    source.unload();
    EXPECT_EQ(lines(), content(source));
    EXPECT_TRUE(source.load(tova::config::config_item_list()));
    EXPECT_EQ(expected, content(source));
    source.unload();
    EXPECT_EQ(lines(), content(source));
    EXPECT_TRUE(source.load());
    EXPECT_EQ(expected, content(source));
}

// Checks that a clone is on the heap, belongs to its first holder and shares no node with the
// source.
inline void expect_independent_clone(base_config_item& source) {
    source.set("a = 1", 0);
    const tova::memory::pointers::rc_pointer<base_config_item> clone(source.clone());
    EXPECT_TRUE(clone->allocated);
    EXPECT_EQ(1u, clone->count);
    EXPECT_EQ(content(source), content(*clone));
    clone->set("a = 2", 0);
    EXPECT_EQ("1 '1'", show(*source.get_value("a")));
    EXPECT_EQ("1 '2'", show(*clone->get_value("a")));
}

}  // namespace config_support
