// Files that exist for one call: they show what is read from a text, and what a save writes.
#pragma once

#include <tova/config/file_item.hpp>

#include "config/listing.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace config_support {

// The nodes that a file with this text loads.
inline lines loaded(const std::string& text) {
    const test_support::temporary_directory directory;
    tova::config::file_item item(directory.write("x.cfg", text));
    EXPECT_TRUE(item.load());
    return content(item);
}

struct load_case {
    const char* text;
    lines expected;
};

inline void expect_loaded(const std::vector<load_case>& cases) {
    for (const load_case& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.expected, loaded(c.text));
    }
}

// The bytes that a save writes for the nodes that `fill` sets.
template <typename Fill>
std::string saved(Fill fill) {
    const test_support::temporary_directory directory;
    tova::config::file_item item(directory.path("x.cfg"));
    fill(item);
    EXPECT_TRUE(item.save());
    return test_support::read_bytes(item.get_filename());
}

// The bytes of a file with this text after it has been loaded and saved.
inline std::string resaved(const std::string& text) {
    const test_support::temporary_directory directory;
    tova::config::file_item item(directory.write("x.cfg", text));
    item.load();
    item.save();
    return test_support::read_bytes(item.get_filename());
}

}  // namespace config_support
