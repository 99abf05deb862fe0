// A source that notes each call.
#pragma once

#include <string>
#include <vector>

#include "config/listing.hpp"

namespace config_support {

class recording_item : public plain_item {
public:
    recording_item(const std::string& name, lines& calls) : plain_item(name), m_calls(calls) {
        allocated = true;
    }
    ~recording_item() TOVA_NOTHROW override {
        if (m_tells_end)
            m_calls.push_back(id + " gone");
    }

    using base_config_item::load;
    using base_config_item::save;
    bool load(const TOVA_2_18::config::config_item_list& items) override {
        m_calls.push_back(id + " load of " + std::to_string(items.size()));
        return false;
    }
    bool save(const TOVA_2_18::config::config_item_list& items) override {
        m_calls.push_back(id + " save of " + std::to_string(items.size()));
        return false;
    }
    void unload() override { m_calls.push_back(id + " unload"); }

    recording_item* tell_end() {
        m_tells_end = true;
        return this;
    }

private:
    lines& m_calls;
    bool m_tells_end = false;
};

}  // namespace config_support
