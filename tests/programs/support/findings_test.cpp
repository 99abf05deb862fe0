#include "support/findings.hpp"

#include "support/text_file.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>
#include <string>
#include <vector>

using namespace tova_programs;

namespace {

const rule rules[] = {
    {"bad-thing", severity::error, "something bad", "It is bad. Write something good."},
    {"odd-thing", severity::warning, "something odd", "It is odd."},
    {"small-thing", severity::note, "something small", "It is small."},
};

const std::string bytes = "one\ntwo, three\nfour\n";

finding at(const rule& broken, std::size_t offset, std::size_t length, const std::string& text) {
    finding found(broken, "a b.xmc", offset, length);
    found.text = text;
    place_finding(found, line_index(bytes));
    return found;
}

report sample() {
    report all("tool", "1.0", rules);
    finding odd = at(rules[1], 9, 5, "100% odd:\xFF");
    odd.subject = "key";
    odd.edits.push_back({9, 5, "3"});
    all.add(odd);
    all.add(at(rules[0], 4, 3, "bad"));
    all.add(at(rules[0], 4, 3, "bad"));
    all.sort();
    return all;
}

std::string written(const report& all, report_format format) {
    std::ostringstream out;
    all.write(out, format, style());
    return out.str();
}

}  // namespace

TEST(Report, IsOneLineForEachFindingInTheOrderOfTheFileWithoutRepetitions) {
    EXPECT_EQ("a b.xmc:2:1: error: bad [bad-thing]\n"
              "a b.xmc:2:6: warning: key: 100% odd:\xFF [odd-thing]\n"
              "1 error, 1 warning\n",
              written(sample(), report_format::text));
}

TEST(Report, EscapesWorkflowCommands) {
    EXPECT_EQ("::error file=a b.xmc,line=2,col=1,endLine=2,endColumn=4,title=bad-thing::bad\n"
              "::warning file=a b.xmc,line=2,col=6,endLine=2,endColumn=11,title=odd-thing::"
              "key: 100%25 odd:\xFF\n",
              written(sample(), report_format::github));
}

TEST(Report, IsValidJsonWithFixesAndInvalidBytesReplaced) {
    const auto parsed = nlohmann::json::parse(written(sample(), report_format::json));
    ASSERT_EQ(2u, parsed["findings"].size());
    const auto& odd = parsed["findings"][1];
    EXPECT_EQ("odd-thing", odd["rule"]);
    EXPECT_EQ("key", odd["subject"]);
    EXPECT_EQ("100% odd:\xEF\xBF\xBD", odd["text"]);
    EXPECT_EQ(9, odd["offset"]);
    EXPECT_EQ(6, odd["column"]);
    EXPECT_EQ("3", odd["fix"][0]["text"]);
    EXPECT_FALSE(parsed["findings"][0].contains("fix"));
    EXPECT_EQ(1, parsed["counts"]["error"]);
    EXPECT_EQ(0, parsed["counts"]["note"]);
}

TEST(Report, IsSarifWithEveryRuleAndEscapedPaths) {
    const auto parsed = nlohmann::json::parse(written(sample(), report_format::sarif));
    EXPECT_EQ("2.1.0", parsed["version"]);
    const auto& run = parsed["runs"][0];
    EXPECT_EQ("tool", run["tool"]["driver"]["name"]);
    EXPECT_EQ(3u, run["tool"]["driver"]["rules"].size());
    const auto& place = run["results"][0]["locations"][0]["physicalLocation"];
    EXPECT_EQ("a%20b.xmc", place["artifactLocation"]["uri"]);
    EXPECT_EQ(2, place["region"]["startLine"]);
    EXPECT_EQ("key: 100% odd:\xEF\xBF\xBD", run["results"][1]["message"]["text"]);
}

TEST(Report, KnowsItsHeaviestSeverity) {
    report all("tool", "1.0", rules);
    EXPECT_FALSE(all.has(severity::note));
    EXPECT_EQ("", written(all, report_format::text));
    all.add(at(rules[2], 0, 0, "small"));
    EXPECT_TRUE(all.has(severity::note));
    EXPECT_FALSE(all.has(severity::warning));
    all.add(at(rules[0], 0, 0, "bad"));
    EXPECT_TRUE(all.has(severity::error));
}

TEST(Rules, AreFoundByName) {
    const rule_list list(rules);
    EXPECT_EQ(&rules[1], list.find("odd-thing"));
    EXPECT_EQ(nullptr, list.find("odd"));
    EXPECT_EQ((std::vector<std::string>{"bad-thing", "odd-thing", "small-thing"}), list.ids());
    std::ostringstream out;
    explain(out, rules[0], style());
    EXPECT_EQ("bad-thing (error): something bad\n\nIt is bad. Write something good.\n", out.str());
}

TEST(Fixes, AreAppliedUnlessTheyOverlapAnEarlierOne) {
    finding first = at(rules[0], 4, 3, "");
    first.edits = {{4, 3, "2"}, {9, 5, "3"}};
    finding overlapping = at(rules[0], 5, 1, "");
    overlapping.edits = {{13, 2, "x"}};
    finding last = at(rules[0], 15, 0, "");
    last.edits = {{15, 0, "and "}};
    const finding without = at(rules[0], 0, 1, "");
    std::string text = bytes;
    EXPECT_EQ(2u, apply_fixes(text, {&first, &overlapping, &last, &without}));
    EXPECT_EQ("one\n2, 3\nand four\n", text);
}
