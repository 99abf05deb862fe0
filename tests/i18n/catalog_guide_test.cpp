// Runs the examples of docs/catalogs.md: what the guide says about catalogs is what they do.
//
// A fenced block "xmc" is a catalog file, or a part of one that is completed here; "xmc file=NAME"
// is a file for the examples behind it to include. It is followed by blocks "gives [LOCALE]", with
// a line "[KEY:] ARGUMENTS -> TEXT" for each rendering, or by a block "fault" with the report.

#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tova/i18n/message_catalogs.hpp>

#include "support/temporary_directory.hpp"

namespace {

using TOVA_2_18::generic::varg_list;
using TOVA_2_18::i18n::message_catalogs;
using TOVA_2_18::strings::ustring8;

struct block {
    int line;  // of its opening fence
    std::string kind;
    std::string detail;
    std::string content;
};

std::vector<block> blocks_of(const std::string& guide) {
    std::vector<block> blocks;
    std::istringstream lines(guide);
    std::string line;
    bool is_inside = false;
    for (int number = 1; std::getline(lines, line); ++number) {
        const bool is_fence = line.compare(0, 3, "```") == 0;
        if (is_fence && !is_inside) {
            const auto blank = line.find(' ');
            blocks.push_back({number, line.substr(3, blank - 3),
                              blank == std::string::npos ? "" : line.substr(blank + 1), ""});
        } else if (!is_fence && is_inside) {
            blocks.back().content += line + "\n";
        }
        if (is_fence)
            is_inside = !is_inside;
    }
    EXPECT_FALSE(is_inside) << "a fence is not closed";
    return blocks;
}

bool begins_with(const std::string& text, const std::string& front) {
    return text.compare(0, front.size(), front) == 0;
}

// The file of an example that leaves out what stands around it.
std::string completed(std::string text) {
    if (begins_with(text, "<?xml"))
        return text;
    if (!begins_with(text, "<xmc")) {
        text.pop_back();  // the line end that the fence needs
        if (!begins_with(text, "<msg"))
            text = "<msg name=\"key\">" + text + "</msg>";
        text =
            "<xmc version=\"1.1\"><catalog name=\"app\" lang=\"en\">" + text + "</catalog></xmc>";
    }
    return "<?xml version=\"1.0\"?>\n" + text;
}

// A text in quotes with its escapes taken away, or the word as it is.
std::string unquoted(const std::string& text) {
    if (text.size() < 2 || text.front() != '"' || text.back() != '"')
        return text;
    std::string result;
    for (std::size_t i = 1; i + 1 < text.size(); ++i) {
        if (text[i] == '\\')
            result += text[++i] == 'n' ? '\n' : text[i];
        else
            result += text[i];
    }
    return result;
}

// "a=1, b=0.5, c="x"" as an integer, a double and a text.
varg_list arguments_of(const std::string& text) {
    varg_list result;
    std::size_t at = 0;
    while (at < text.size()) {
        const auto equals = text.find('=', at);
        const auto end = std::min(text.find(", ", equals), text.size());
        const std::string name = text.substr(at, equals - at);
        const std::string value = text.substr(equals + 1, end - equals - 1);
        if (value.front() == '"')
            result.push_back(name, ustring8(unquoted(value)));
        else if (value.find('.') != std::string::npos)
            result.push_back(name, std::strtod(value.c_str(), nullptr));
        else
            result.push_back(name, std::strtol(value.c_str(), nullptr, 10));
        at = end + 2;
    }
    return result;
}

class CatalogGuide : public ::testing::Test {
protected:
    CatalogGuide()
        : guide(test_support::read_bytes(TOVA_CATALOG_GUIDE)), blocks(blocks_of(guide)) {}

    // Examples name their file "catalog.xmc", as it stands in reports: run in its folder.
    void SetUp() override {
        ASSERT_NE(nullptr, ::getcwd(previous, sizeof previous));
        ASSERT_EQ(0, ::chdir(files.path().c_str()));
    }
    void TearDown() override { EXPECT_EQ(0, ::chdir(previous)); }

    void check_rendering(const message_catalogs& set, const std::string& line) {
        SCOPED_TRACE(line);
        const auto arrow = line.find("-> ");
        ASSERT_NE(std::string::npos, arrow);
        std::string front = line.substr(0, arrow);
        while (!front.empty() && front.back() == ' ')
            front.pop_back();
        std::string key = "key";
        const auto colon = front.find(':');
        if (colon < front.find('=')) {
            key = front.substr(0, colon);
            front.erase(0, front.find_first_not_of(": ", colon));
        }
        ASSERT_TRUE(set.has_message("app", ustring8(key)));
        EXPECT_EQ(unquoted(line.substr(arrow + 3)),
                  set.message("app", ustring8(key)).as_string(arguments_of(front)));
        ++checks;
    }

    void check_renderings(const block& expected) {
        message_catalogs set;
        const std::string locale = expected.detail.empty() ? "en" : expected.detail;
        const auto result = set.load(ustring8("catalog.xmc"), ustring8(locale));
        ASSERT_EQ(message_catalogs::no_error, result.type) << result.message;
        std::istringstream lines(expected.content);
        std::string line;
        while (std::getline(lines, line))
            check_rendering(set, line);
    }

    void check_fault(const block& expected) {
        message_catalogs set;
        const auto result = set.load_file(ustring8("catalog.xmc"), "en");
        EXPECT_EQ(expected.content, std::string(result.message) + "\n");
        ++checks;
    }

    const std::string guide;
    const std::vector<block> blocks;
    test_support::temporary_directory files;
    char previous[4096];
    int checks = 0;
};

TEST_F(CatalogGuide, GivesWhatItSays) {
    bool is_checked = true;
    for (const block& b : blocks) {
        SCOPED_TRACE("the block at line " + std::to_string(b.line));
        if (b.kind == "xmc" && begins_with(b.detail, "file=")) {
            files.write(b.detail.substr(5), b.content);
        } else if (b.kind == "xmc") {
            EXPECT_TRUE(is_checked) << "the example before this one shows no result";
            is_checked = false;
            files.write("catalog.xmc", completed(b.content));
        } else if (b.kind == "gives") {
            check_renderings(b);
            is_checked = true;
        } else if (b.kind == "fault") {
            check_fault(b);
            is_checked = true;
        } else {
            EXPECT_EQ("cpp", b.kind);
        }
    }
    EXPECT_TRUE(is_checked);
    EXPECT_LT(70, checks) << "the guide lost examples, or they are not found any more";
}

TEST_F(CatalogGuide, ShowsEveryElementAttributeTypeAndOptionInAnExample) {
    std::string examples;
    for (const block& b : blocks)
        if (b.kind == "xmc")
            examples += b.content;
    for (const char* piece : {"<xmc version=\"1.1\"",
                              "<catalog name=",
                              "lang=\".\"",
                              "<include file=",
                              "<msg name=",
                              "meta=",
                              "<arg name=",
                              "<argument name=",
                              "<br/>",
                              "<!--",
                              "<![CDATA[",
                              "&lt;",
                              "&gt;",
                              "&amp;",
                              "&quot;",
                              "&apos;",
                              "&nbsp;",
                              "&#65;",
                              "&#x42;",
                              "type=\"value\"",
                              "type=\"string\"",
                              "type=\"number\"",
                              "type=\"int\"",
                              "type=\"double\"",
                              "type=\"time\"",
                              "type=\"date\"",
                              "type=\"memory\"",
                              "type=\"mem\"",
                              "type=\"memory_unit\"",
                              "type=\"mem_unit\"",
                              "type=\"metric\"",
                              "type=\"metric_unit\"",
                              "type=\"duration\"",
                              "base=\"dec\"",
                              "base=\"default\"",
                              "base=\"spaced_dec\"",
                              "base=\"hex\"",
                              "base=\"oct\"",
                              "base=\"bin\"",
                              "fieldsize=",
                              "precision=",
                              "short_form=\"true\"",
                              "short_form=\"false\"",
                              "target_unit=",
                              "base_unit="})
        EXPECT_THAT(examples, ::testing::HasSubstr(piece));
}

// The wordings of reports, in the table that tells what to look for.
TEST_F(CatalogGuide, KnowsTheReports) {
    for (const char* report : {"Valid XML header not found",
                               "No root element was found",
                               "Not XMC file, root element is not XMC but",
                               "XMC version",
                               "Invalid attibute",
                               "Invalid element",
                               "Expected catalog end tag not found for catalog",
                               "Expected \"include\" end tag not found",
                               "Expected BR end tag not found",
                               "Mismatched end element",
                               "Unexpected end of file during XML parsing",
                               "Unexpected character",
                               "Unknown enity being parsed",
                               "Missing \" while parsing attribute",
                               "Missing = sign for attribute",
                               "is being redefined",
                               "Data found after root element",
                               "was not found on disk",
                               "No catalog was loaded in file",
                               "Unexpected parse error happen!"})
        EXPECT_THAT(guide, ::testing::HasSubstr(report));
}

}  // namespace
