// Reads the guides below docs/, so that tests hold what they show.
#pragma once

#include <algorithm>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/temporary_directory.hpp"

namespace test_support {

// The bytes of a file, by its path from the top of the project.
inline std::string project_file(const std::string& name) {
    const std::string data = TOVA_TEST_DATA;
    return read_bytes(data.substr(0, data.rfind("/tests/")) + "/" + name);
}

// The lines of a fenced block, and the rest of the line that opens it.
typedef std::pair<std::string, std::vector<std::string>> guide_block;

// The fenced blocks of a guide in one language.
inline std::vector<guide_block> guide_blocks(const std::string& name, const std::string& language) {
    std::vector<guide_block> found;
    std::istringstream guide(project_file(name));
    bool inside = false;
    for (std::string line; std::getline(guide, line);) {
        if (!inside && line.compare(0, 3 + language.size(), "```" + language) == 0) {
            inside = true;
            found.emplace_back(line.substr(std::min(line.size(), 4 + language.size())),
                               std::vector<std::string>());
        } else if (line.compare(0, 3, "```") == 0) {
            inside = false;
        } else if (inside) {
            found.back().second.push_back(line);
        }
    }
    return found;
}

}  // namespace test_support
