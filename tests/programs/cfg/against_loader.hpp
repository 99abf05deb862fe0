// Compares the scanner of tova-cfg with the library's loader: the same nodes with the same words
// and values for any bytes. The randomized test and the fuzz target both use it.
#pragma once

#include <tova/config/config_tree.hpp>
#include <tova/config/file_item.hpp>

#include "cfg/scanner/document.hpp"

#include <fstream>
#include <sstream>
#include <string>

namespace cfg_test {

// All nodes as one string. The names are in the order of the tree, so equal trees give equal
// strings.
inline std::string described(tova::config::config_tree& tree) {
    std::ostringstream out;
    tree.dump(out, 0);
    return out.str();
}

// Checks that the results of the scanner are consistent: tokens follow one another without a gap,
// and each entry is inside its file.
inline std::string wrong_place(const tova_programs::cfg::document& file) {
    std::size_t at = 0;
    for (const auto& token : file.tokens()) {
        if (token.bytes.begin != at || token.bytes.end <= at || token.text.begin < at ||
            token.text.end > token.bytes.end)
            return "a token at " + std::to_string(token.bytes.begin) +
                   " follows one that ends at " + std::to_string(at);
        at = token.bytes.end;
    }
    if (at != file.bytes().size())
        return "the tokens end at " + std::to_string(at);
    at = 0;
    for (const auto& entry : file.entries()) {
        if (entry.bytes.begin < at || entry.bytes.end < entry.bytes.begin ||
            entry.end < entry.bytes.end || entry.value_bytes.end < entry.value_bytes.begin ||
            entry.value_bytes.begin < entry.key_bytes.end ||
            entry.tokens_end > file.tokens().size())
            return "an entry at " + std::to_string(entry.bytes.begin) + " is out of order";
        at = entry.end;
    }
    return at <= file.bytes().size() ? "" : "an entry ends after the file";
}

// The first difference, or the empty string. The file is written to that name.
inline std::string difference(const std::string& bytes, const std::string& name) {
    namespace cfg = tova_programs::cfg;
    using tova::types::variant;
    const cfg::document file(name, bytes);
    std::string wrong = wrong_place(file);
    if (!wrong.empty())
        return wrong;
    tova::config::config_tree expected;
    for (const cfg::stored_node& each : cfg::stored_nodes(file))
        expected.set_node(cfg::key_with_path(each.path),
                          each.has_value ? variant(tova::strings::ustring8(each.value)) : variant(),
                          each.flags);

    struct loaded_file : tova::config::file_item {
        using file_item::file_item;
        tova::config::config_tree& nodes() { return tree; }
    };
    std::ofstream(name, std::ios::binary) << bytes;
    loaded_file loaded(name);
    loaded.load();
    const std::string values = described(expected);
    const std::string loaded_values = described(loaded.nodes());
    return values == loaded_values ? "" : "nodes\n" + values + "the loader has\n" + loaded_values;
}

}  // namespace cfg_test
