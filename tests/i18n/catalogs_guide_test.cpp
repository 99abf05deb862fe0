// Runs the examples of docs/catalogs.md and compares the results with the guide.
//
// A block "xmc" or "xml" is a catalog file, or a part of one that is completed here; "xmc
// file=NAME" is a file for the examples after it to include. A block "gives [LOCALE]" follows, with
// a line "[KEY:] ARGUMENTS -> TEXT" for each rendering, or a block "report" with the error report.
// tests/docs runs the code.
#include <tova/i18n/message_catalogs.hpp>

#include "support/guide.hpp"
#include "support/temporary_directory.hpp"
#include "support/working_directory.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

namespace {

using test_support::guide_block;
using tova::generic::varg_list;
using tova::i18n::message_catalogs;
using tova::strings::ustring8;

const char guide[] = "docs/catalogs.md";

bool begins_with(const std::string& text, const std::string& front) {
    return text.compare(0, front.size(), front) == 0;
}

// The complete file for an example that shows only a part of one.
std::string completed(std::string text) {
    if (begins_with(text, "<?xml"))
        return text;
    if (!begins_with(text, "<xmc")) {
        text.pop_back();  // the line end before the closing fence
        if (!begins_with(text, "<msg"))
            text = "<msg name=\"key\">" + text + "</msg>";
        text =
            "<xmc version=\"1.1\"><catalog name=\"app\" lang=\"en\">" + text + "</catalog></xmc>";
    }
    return "<?xml version=\"1.0\"?>\n" + text;
}

// The content of a quoted string with its escapes resolved; any other word unchanged.
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

// Reads a=1, b=0.5, c="x" as an integer, a double and a string.
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

class CatalogsGuide : public ::testing::Test {
protected:
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

    void check_renderings(const guide_block& expected) {
        message_catalogs set;
        const std::string locale = expected.detail.empty() ? "en" : expected.detail;
        const auto result = set.load(ustring8("catalog.xmc"), ustring8(locale));
        ASSERT_EQ(message_catalogs::no_error, result.type) << result.message;
        std::istringstream lines(expected.text);
        std::string line;
        while (std::getline(lines, line))
            check_rendering(set, line);
    }

    void check_report(const guide_block& expected) {
        message_catalogs set;
        const auto result = set.load_file(ustring8("catalog.xmc"), "en");
        EXPECT_EQ(expected.text, std::string(result.message) + "\n");
        ++checks;
    }

    const std::vector<guide_block> blocks = test_support::guide_blocks(guide);
    const test_support::temporary_directory files;
    // Error reports name the file of an example "catalog.xmc", without a folder.
    const test_support::working_directory here{files.path()};
    int checks = 0;
};

TEST_F(CatalogsGuide, ShowsTheRealResultsOfEachExample) {
    bool is_checked = true;
    for (const guide_block& b : blocks) {
        SCOPED_TRACE("the block at line " + std::to_string(b.line));
        if (b.kind == "xmc" && begins_with(b.detail, "file=")) {
            files.write(b.detail.substr(5), b.text);
        } else if (b.kind == "xmc" || b.kind == "xml") {
            EXPECT_TRUE(is_checked) << "the example before this one shows no result";
            is_checked = false;
            files.write("catalog.xmc", completed(b.text));
        } else if (b.kind == "gives") {
            check_renderings(b);
            is_checked = true;
        } else if (b.kind == "report") {
            check_report(b);
            is_checked = true;
        } else {
            EXPECT_TRUE(b.kind == "cpp" || b.kind == "output") << b.kind;
        }
    }
    EXPECT_TRUE(is_checked);
    EXPECT_LT(70, checks) << "the guide lost examples, or they are no longer found";
}

TEST_F(CatalogsGuide, ShowsEveryElementAttributeTypeAndOptionInAnExample) {
    std::string examples;
    for (const guide_block& b : blocks)
        if (b.kind == "xmc" || b.kind == "xml")
            examples += b.text;
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

// The table of error reports explains each of them.
TEST_F(CatalogsGuide, ListsTheErrorReports) {
    const std::string text = test_support::read_bytes(test_support::project_path(guide));
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
        EXPECT_THAT(text, ::testing::HasSubstr(report));
}

}  // namespace
