#include "support/guide.hpp"

#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <sstream>

namespace test_support {

std::string project_path(const std::string& name) {
    const std::string data = TOVA_TEST_DATA;
    return data.substr(0, data.rfind("/tests/") + 1) + name;
}

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::vector<guide_block> guide_blocks(const std::string& guide) {
    std::vector<guide_block> blocks;
    bool is_inside = false;
    int number = 0;
    for (const auto& line : lines_of(read_bytes(project_path(guide)))) {
        ++number;
        if (line.compare(0, 3, "```") == 0) {
            is_inside = !is_inside;
            if (!is_inside)
                continue;
            const auto space = std::min(line.find(' '), line.size());
            blocks.push_back({number, line.substr(3, space - 3),
                              line.substr(std::min(space + 1, line.size())), ""});
        } else if (is_inside) {
            blocks.back().text += line + "\n";
        }
    }
    EXPECT_FALSE(is_inside) << guide << ": the last fence is left open";
    return blocks;
}

std::vector<guide_block> guide_blocks(const std::string& guide, const std::string& kind) {
    const auto all = guide_blocks(guide);
    std::vector<guide_block> blocks;
    std::copy_if(all.begin(), all.end(), std::back_inserter(blocks),
                 [&kind](const guide_block& block) { return block.kind == kind; });
    return blocks;
}

void expect_code_of_guide(const std::string& guide, const std::string& source,
                          const std::string& start) {
    const std::string code = read_bytes(project_path(source));
    std::size_t position = code.find(start);
    ASSERT_NE(std::string::npos, position) << source << " does not contain " << start;
    for (const auto& block : guide_blocks(guide, "cpp")) {
        for (const auto& line : lines_of(block.text)) {
            if (line.empty())
                continue;
            position = code.find("    " + line + "\n", position);
            ASSERT_NE(std::string::npos, position)
                << guide << ":" << block.line << " shows a line that " << source
                << " does not contain after the lines before it: " << line;
        }
    }
}

}  // namespace test_support
