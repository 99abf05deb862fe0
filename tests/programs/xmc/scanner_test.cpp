#include "xmc/scanner/scanner.hpp"

#include "programs/xmc/against_loader.hpp"
#include "support/guide.hpp"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

using xmc_test::difference;

namespace {

// Pieces of which random files are made: valid ones, and what authors get wrong.
const std::vector<std::string> pieces = {
    "<?xml version=\"1.0\"?>",
    "<xmc version=\"1.1\">",
    "</xmc>",
    "<catalog name=\"a\" lang=\"en\">",
    "<catalog name='a' lang='de'>",
    "<catalog name=\"b\" lang=\"de-AT\">",
    "<catalog lang=\".\">",
    "<catalog name=\"c\">",
    "</catalog>",
    "<msg name=\"k\">",
    "<msg name=\"l\" meta=\"note &amp; more\">",
    "<msg>",
    "</msg>",
    "text",
    "msg",
    "one two",
    " ",
    "  ",
    "\n",
    "\r\n",
    "\n   ",
    "<br/>",
    "<br></br>",
    "<br>x</br>",
    "<arg name=\"n\" type=\"int\" base=\"hex\"/>",
    "<arg base=\"hex\" name=\"n\"/>",
    "<argument name=\"n\" type=\"DATE\"></argument>",
    "<arg name=\"v\" type=\"value\" x=\"1\"/>",
    "<arg/>",
    "<arg name=\"a\">sample</arg>",
    "<arg name=\"a\"><b/></arg>",
    "<!-- note -->",
    "<!--msg-->",
    "<!--",
    "-->",
    "<![CDATA[a < b  &]]>",
    "<b>",
    "</b>",
    "&amp;",
    "&#65;",
    "&#252;",
    "&#09;",
    "&#x1F;",
    "&#999;",
    "&nbsp;",
    "&",
    "& ",
    "&uuml;",
    "&lt",
    ">",
    "<",
    "/",
    "/>",
    "\"",
    "=",
    " a=\"1\"",
    " a='1' a='2'",
    " a",
    " a=b",
    "\xC3\xA4",
    std::string("\0", 1),
    "<!DOCTYPE x>",
    "<?pi?>",
    "<include/>",
    "<include other=\"x\"/>",
    "<xmc>",
    "<msg/>",
    "<catalog/>",
    "</msg >",
    "</msg a=\"1\">",
    "\xEF\xBB\xBF",
};

const std::string valid =
    "<?xml version=\"1.0\"?>\n<xmc version=\"1.1\">\n"
    "  <catalog name=\"a\" lang=\"en\">\n"
    "    <msg name=\"k\">Hello <arg name=\"who\"/>,\n"
    "      you have <arg name=\"n\" type=\"int\"/> files.<br/></msg>\n"
    "    <!-- between --> <msg name=\"l\" meta=\"m\">two  spaces</msg>\n"
    "  </catalog>\n"
    "  <catalog name=\"a\" lang=\"de_AT\"><msg name=\"k\">Hallo</msg></catalog>\n"
    "</xmc>\n";

using random_source = std::mt19937;

std::size_t below(random_source& random, std::size_t limit) {
    return static_cast<std::size_t>(random()) % limit;
}

// A sequence of pieces around which the frame of a file may be missing.
std::string assembled(random_source& random) {
    std::string text;
    const bool has_frame = below(random, 8) != 0;
    const bool in_message = below(random, 2) != 0;
    if (has_frame)
        text += pieces[0] + pieces[1] + (in_message ? pieces[3] + pieces[9] : "");
    for (std::size_t count = below(random, 8); count != 0; --count)
        text += pieces[below(random, pieces.size())];
    if (has_frame)
        text += (in_message ? pieces[12] + pieces[8] : "") + pieces[2];
    return text;
}

// A valid file after a few changes: a byte or a piece more, less or elsewhere.
std::string changed(random_source& random) {
    std::string text = valid;
    for (std::size_t count = 1 + below(random, 3); count != 0 && !text.empty(); --count) {
        const std::size_t at = below(random, text.size());
        switch (below(random, 4)) {
        case 0:
            text.erase(at, 1 + below(random, 8));
            break;
        case 1:
            text.insert(at, pieces[below(random, pieces.size())]);
            break;
        case 2:
            text[at] = static_cast<char>(below(random, 256));
            break;
        default:
            text.insert(at, text.substr(below(random, text.size()), below(random, 40)));
        }
    }
    return text;
}

}  // namespace

TEST(Scanner, HasTheVerdictAndTheValuesOfTheLoaderForEveryPrefix) {
    for (std::size_t size = 0; size <= valid.size(); ++size) {
        SCOPED_TRACE(size);
        EXPECT_EQ("", difference(valid.substr(0, size)));
    }
}

TEST(Scanner, HasTheVerdictAndTheValuesOfTheLoaderWithEachPieceAtEachPlace) {
    for (const std::string& piece : pieces)
        for (std::size_t at = 0; at <= valid.size(); at += 3) {
            std::string text = valid;
            text.insert(at, piece);
            ASSERT_EQ("", difference(text)) << text;
        }
}

TEST(Scanner, HasTheVerdictAndTheValuesOfTheLoaderForRandomFiles) {
    random_source random(20240229);
    for (int i = 0; i < 20000; ++i) {
        const std::string text = i % 2 == 0 ? assembled(random) : changed(random);
        ASSERT_EQ("", difference(text)) << text;
    }
}

TEST(Scanner, ReadsTheExamplesOfTheGuideAsTheLoaderDoes) {
    std::size_t messages = 0;
    for (const auto& block : test_support::guide_blocks("docs/catalogs.md")) {
        if (block.kind != "xmc" && block.kind != "xml")
            continue;
        const std::string begin = "<?xml version=\"1.0\"?>\n";
        for (const std::string& text :
             {block.text, begin + block.text,
              begin + "<xmc version=\"1.1\"><catalog name=\"app\" lang=\"en\"><msg name=\"m\">" +
                  block.text + "</msg></catalog></xmc>"}) {
            EXPECT_EQ("", difference(text)) << text;
            messages += tova_programs::xmc::document("f", text).messages().size();
        }
    }
    EXPECT_GT(messages, 60u);
}

TEST(Scanner, KnowsThePlaceOfEachToken) {
    using namespace tova_programs::xmc;
    const document file("f", "<?xml?><xmc version='1.1'><catalog name=\"a\" lang=\"en\">"
                             "<msg name='k'>a &lt; <arg name='n'/></msg></catalog></xmc>");
    ASSERT_EQ(1u, file.messages().size());
    const message& only = file.messages()[0];
    EXPECT_EQ("<msg name='k'>a &lt; <arg name='n'/></msg>", file.source(only.bytes));
    EXPECT_EQ("k", file.source(only.name_bytes));
    const auto items = file.items(only);
    ASSERT_EQ(2u, items.size());
    EXPECT_EQ("a < ", items[0].text);
    EXPECT_EQ("a &lt; ", file.source(items[0].bytes));
    EXPECT_EQ("<arg name='n'/>", file.source(items[1].bytes));
    EXPECT_EQ("en", file.source(file.catalogs()[0].locale_bytes));
}
