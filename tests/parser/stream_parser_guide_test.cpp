// Checks that docs/stream_parser.md shows the actual code of the example that follows a growing
// file.
#include "support/guide.hpp"
#include "support/temporary_directory.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

TEST(StreamParserGuide, ShowsTheCodeOfTheExample) {
    const std::string code =
        test_support::read_bytes(test_support::project_path("examples/tail/main.cpp"));
    int parts = 0;
    for (const auto& block : test_support::guide_blocks("docs/stream_parser.md", "cpp")) {
        if (block.detail != "part")
            continue;
        EXPECT_THAT(code, ::testing::HasSubstr(block.text)) << "the block at line " << block.line;
        ++parts;
    }
    EXPECT_EQ(2, parts);
}

}  // namespace
