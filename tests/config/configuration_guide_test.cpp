// Runs the examples of docs/configuration.md.
//
// A block of kind "cfg", "shell", "shell name" or "environment" is an input; the blocks "gives",
// "saved" and "prints" after it show its results. tests/docs runs the code.
#include <tova/config/commandline_item.hpp>
#include <tova/config/enviroment_item.hpp>
#include <tova/config/file_item.hpp>

#include "config/listing.hpp"
#include "support/guide.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <iostream>
#include <map>
#include <string>
#include <vector>

namespace {

using config_support::base_config_item;
using config_support::config_node_list;
using config_support::lines;
using test_support::lines_of;
using tova::config::commandline_item;
using tova::config::enviroment_item;
using tova::config::file_item;

// The words of a command line, split at spaces and quotes as a shell would.
lines words_of(const std::string& line) {
    lines words;
    bool inside = false;
    char quote = '\0';
    for (const char character : line) {
        if (quote == '\0' && (character == ' ' || character == '\n')) {
            inside = false;
            continue;
        }
        if (!inside)
            words.emplace_back();
        inside = true;
        if (character == quote)
            quote = '\0';
        else if (quote == '\0' && (character == '"' || character == '\''))
            quote = character;
        else
            words.back() += character;
    }
    return words;
}

std::string visible(const std::string& text) {
    if (text.empty())
        return "\"\"";
    std::string result;
    for (const char character : text)
        result += character == '\n' ? std::string("\\n") : std::string(1, character);
    return result;
}

// The content of a source in the notation of the guide.
std::string given(base_config_item& item, bool with_name) {
    config_node_list nodes;
    item.get_value_pair_array("", nodes, true);
    std::string text;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const std::string& key = nodes[i].first;
        if (nodes[i].second.first == 0 || with_name != (key.find("application") == 0))
            continue;
        text += key + " = ";
        if ((nodes[i].second.first & 2) == 0) {
            text += visible(nodes[i].second.second.as_string()) + "\n";
            continue;
        }
        config_node_list elements;
        item.get_array(nodes[i].first, elements);
        i += elements.size();
        for (std::size_t element = 0; element < elements.size(); ++element)
            text +=
                (element == 0 ? "[" : ", ") + visible(elements[element].second.second.as_string());
        text += "]\n";
    }
    return text;
}

// The results of one input, by the kind of block that shows them.
typedef std::map<std::string, std::string> results;

results run_file(const std::string& text) {
    const test_support::temporary_directory directory;
    file_item item(directory.write("x.cfg", text));
    item.load();
    item.save();
    return {{"gives", given(item, false)},
            {"saved", test_support::read_bytes(directory.path("x.cfg"))}};
}

results run_shell(const std::string& text, bool with_name) {
    const lines words = words_of(text);
    std::vector<const char*> arguments;
    for (const std::string& word : words)
        arguments.push_back(word.c_str());
    arguments.push_back(nullptr);
    commandline_item item(static_cast<unsigned>(words.size()), arguments.data());
    ::testing::internal::CaptureStdout();
    item.load();
    std::cout.flush();
    return {{"prints", ::testing::internal::GetCapturedStdout()},
            {"gives", given(item, with_name)}};
}

results run_environment(const std::string& text) {
    const lines variables = lines_of(text);
    std::vector<const char*> strings;
    for (const std::string& variable : variables)
        strings.push_back(variable.c_str());
    strings.push_back(nullptr);
    enviroment_item item(strings.data());
    item.load();
    return {{"gives", given(item, false)}};
}

TEST(ConfigurationGuide, ShowsTheRealResultsOfEachSource) {
    std::map<std::string, int> seen;
    results expected;
    for (const auto& block : test_support::guide_blocks("docs/configuration.md")) {
        SCOPED_TRACE("line " + std::to_string(block.line));
        if (block.kind == "cpp" || block.kind == "output")
            continue;
        const bool with_name = block.detail == "name";
        ++seen[block.kind + (with_name ? " name" : "")];
        if (block.kind == "cfg") {
            expected = run_file(block.text);
        } else if (block.kind == "shell") {
            expected = run_shell(block.text, with_name);
        } else if (block.kind == "environment") {
            expected = run_environment(block.text);
        } else {
            ASSERT_EQ(1u, expected.count(block.kind)) << block.kind;
            EXPECT_EQ(expected[block.kind], block.text);
        }
    }
    EXPECT_LE(19, seen["cfg"]);
    EXPECT_EQ(8, seen["shell"]);
    EXPECT_EQ(2, seen["shell name"]);
    EXPECT_EQ(1, seen["environment"]);
    EXPECT_EQ(4, seen["saved"]);
    EXPECT_EQ(1, seen["prints"]);
    EXPECT_LE(28, seen["gives"]);
}

}  // namespace
