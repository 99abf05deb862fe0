// A source that records its calls, and a check for dispatchers that is based on it.
#pragma once

#include <tova/config/config_dispatch.hpp>

#include "config/listing.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace config_support {

class recording_item : public plain_item {
public:
    recording_item(const std::string& name, lines& calls) : plain_item(name), m_calls(calls) {
        allocated = true;
    }
    ~recording_item() TOVA_NOTHROW override {
        if (m_records_end)
            m_calls.push_back(id + " destroyed");
    }

    using base_config_item::load;
    using base_config_item::save;
    bool load(const tova::config::config_item_list& items) override {
        m_calls.push_back(id + " load of " + std::to_string(items.size()));
        return false;
    }
    bool save(const tova::config::config_item_list& items) override {
        m_calls.push_back(id + " save of " + std::to_string(items.size()));
        return false;
    }
    void unload() override { m_calls.push_back(id + " unload"); }

    recording_item* recording_end() {
        m_records_end = true;
        return this;
    }

private:
    lines& m_calls;
    bool m_records_end = false;
};

// Checks that each operation calls every item in order, passes on the whole list and returns true
// although the items return false.
inline void expect_calls_every_item_in_order(const tova::config::config_dispatch& dispatch) {
    lines calls;
    tova::config::config_item_list items;
    items.push_back(new recording_item("x", calls));
    items.push_back(new recording_item("y", calls));
    EXPECT_TRUE(dispatch.load(items));
    EXPECT_TRUE(dispatch.save(items));
    EXPECT_TRUE(dispatch.unload(items));
    EXPECT_EQ(
        (lines{"x load of 2", "y load of 2", "x save of 2", "y save of 2", "x unload", "y unload"}),
        calls);
    EXPECT_EQ(2u, items.size());
}

}  // namespace config_support
