// Checks that docs/stream_parser.md shows the actual code of the example that follows a growing
// file.
#include "support/guide.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(StreamParserGuide, ShowsTheCodeOfTheExample) {
    const std::string code =
        test_support::read_bytes(test_support::project_path("examples/tail/main.cpp"));
    int parts = 0;
    for (const auto& block : test_support::guide_blocks("docs/stream_parser.md", "cpp")) {
        // The other parts belong to a complete program in the guide.
        if (block.detail == "part" && code.find(block.text) != std::string::npos)
            ++parts;
    }
    EXPECT_EQ(2, parts) << "a part of the example differs from the example";
}

}  // namespace
