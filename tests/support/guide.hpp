// Reads the guides in docs/, so that tests can check the examples they show.
#pragma once

#include <string>
#include <vector>

namespace test_support {

// The absolute path of a file in the project, from its path below the top folder.
std::string project_path(const std::string& name);

// A fenced block of a guide. The text after the opening fence is "KIND" or "KIND DETAIL".
struct guide_block {
    int line;  // line of the opening fence, counted from 1
    std::string kind;
    std::string detail;
    std::string text;  // all lines between the fences, each with its line end
};

// All fenced blocks of a guide, in order. The running test fails if a fence is left open.
std::vector<guide_block> guide_blocks(const std::string& guide);

// The blocks of one kind only.
std::vector<guide_block> guide_blocks(const std::string& guide, const std::string& kind);

// The lines of a text, without their line ends.
std::vector<std::string> lines_of(const std::string& text);

// Fails the running test unless every line of the guide's "cpp" blocks appears in `source`, in the
// same order, after the first occurrence of `start`. Both names are paths below the top folder. The
// source indents the lines by four spaces; empty lines are skipped.
void expect_code_of_guide(const std::string& guide, const std::string& source,
                          const std::string& start);

}  // namespace test_support
