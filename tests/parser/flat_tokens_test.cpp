// Flat tokens are the tokens of a list that has read nothing else.
#include "parser/flat_tokens.hpp"

#include <tova/parser/xml_token_stream.hpp>

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

using tova::parser::xml_parser;
using tova::parser::xml_token_stream;
using tova::parser::detail::flat_tokens;
using tova::parser::detail::piece;
using tova::strings::ustring8;

void expect_list(const std::string& bytes) {
    SCOPED_TRACE(bytes);
    const ustring8 document(bytes);
    xml_token_stream list;
    const xml_parser::parse_error expected = list.parse(document);
    flat_tokens flat;
    const xml_parser::parse_error result = flat.parse(document);
    EXPECT_EQ(expected.type, result.type);
    EXPECT_EQ(expected.line, result.line);
    EXPECT_EQ(expected.text, result.text);
    ASSERT_EQ(list.size(), flat.size());
    const flat_tokens::token* one = flat.begin();
    for (const xml_token_stream::token& token : list) {
        EXPECT_EQ(token.type(), one->type());
        EXPECT_EQ(token.value(), one->value().string());
        ++one;
    }
    EXPECT_EQ(flat.end(), one);
}

TEST(FlatTokens, EqualTheListForEveryConstruct) {
    expect_list("");
    expect_list("<?xml?><a/>");
    expect_list("<?xml?> <a x=\"1\"> <b/>text</a>");
    expect_list("<?xml?><a x='&lt;&#65;' y=''><!-- c --><![CDATA[ d ]]> <![CDATA[e]]></a >");
    expect_list("<?xml?><a>one  two &amp; three</a> <!-- after --> text");
    expect_list("<?xml?><a x='1' x='2'/>");
    expect_list("<?xml?><a><b></a>");
    expect_list("<?xml?><a>\n\n&x;</a>");
    expect_list("<?xml?><a x='cut");
}

TEST(FlatTokens, KeepValuesWithReferencesOfAnyLength) {
    std::string document = "<?xml?><a>";
    for (const std::size_t size : {0, 1, 100, 16382, 16383, 16384, 40000, 5})
        document += "<b>&lt;" + std::string(size, 'x') + "</b>";
    expect_list(document + "</a>");
}

TEST(FlatTokens, EqualTheListForRandomDocuments) {
    const char* const words[] = {
        "<a>",         "</a>",  "<b x='1'",         "/>",     ">",   " ",         "\n ",
        "text",        "&amp;", "&#x41;",           "<!--",   "-->", "<![CDATA[", "]]>",
        " y=\"&gt;\"", "'",     "<msg name=\"k\">", "</msg>", "&",   "="};
    std::mt19937 random(6);
    for (int round = 0; round < 20000; ++round) {
        std::string document = "<?xml?>";
        for (auto i = random() % 20; i > 0; --i)
            document += words[random() % 20];
        expect_list(document);
        if (HasFailure())
            return;
    }
}

TEST(Piece, ComparesWithALiteral) {
    EXPECT_TRUE(piece().empty());
    EXPECT_TRUE(piece().is(""));
    EXPECT_TRUE(piece("msg ", 3).is("msg"));
    EXPECT_FALSE(piece("msg ", 4).is("msg"));
    EXPECT_FALSE(piece("msh", 3).is("msg"));
    EXPECT_EQ("ms", piece("msg", 2).string());
}

}  // namespace
