// Tests how the tokens of messages and arguments are read, through the operations of the loader.
#include <tova/i18n/_private/xmc_file_loader.hpp>

#include "i18n/_private/loader_support.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iterator>
#include <list>
#include <string>

namespace {

using test_support::catalog;
using test_support::front;
using test_support::items_of;
using test_support::load;
using test_support::loaded_catalogs;
using test_support::msg;
using test_support::outcome;
using test_support::parse;
using test_support::text_of;
using test_support::thrown;
using test_support::token;
using test_support::tokens_of;
using test_support::walk;
using test_support::xmc;
using tova::i18n::message_item;
using tova::i18n::message_t;
using tova::i18n::_private::xmc_file_loader;
using tova::parser::xml_token_stream;

// The items of a message with this content.
std::string items(const std::string& content) {
    const loaded_catalogs catalogs = load(xmc(catalog("c", "en", msg("k", content))));
    const auto entry = catalogs.find("c");
    return entry == catalogs.end() ? "(none)" : items_of(entry->second->message("k"));
}

// All lines of the error of a message with this content.
std::string message_error(const std::string& content) {
    return parse(xmc(catalog("c", "en", msg("k", content)))).second;
}

TEST(ParseMessage, ReadsKeyMetaTextAndItems) {
    const loaded_catalogs catalogs =
        load("<?xml version=\"1.0\"?><xmc version=\"1.1\"><catalog name=\"app\" lang=\"en\"><msg "
             "name=\"hello\" meta=\"greeting\">Hello <arg name=\"who\" "
             "type=\"string\"/><br/></msg></catalog></xmc>");
    const message_t& hello = catalogs.at("app")->message("hello");
    EXPECT_EQ("hello", std::string(hello.name()));
    EXPECT_EQ("greeting", std::string(hello.meta()));
    EXPECT_EQ("en", std::string(hello._orginal_locale()));
    EXPECT_EQ("[0:Hello ][1:who][0:\n]", items_of(hello));
    EXPECT_EQ("app", std::string(catalogs.at("app")->name()));
}

TEST(ParseMessage, TreatsAMissingNameAsEmpty) {
    EXPECT_EQ("x", text_of(load(xmc(catalog("c", "en", "<msg>x</msg>"))), "c", ""));
}

TEST(ParseMessage, KeepsSingleWhitespaceAndReducesRunsToOneSpace) {
    const struct {
        const char* content;
        const char* items;
    } cases[] = {
        {"", ""},
        {"a b", "[0:a b]"},
        {"a\nb", "[0:a\nb]"},
        {"a\tb", "[0:a\tb]"},
        {"a  b", "[0:a b]"},
        {"a \n\t b", "[0:a b]"},
        {"a b  c   d", "[0:a b c d]"},
        {" a", "[0:a]"},
        {"\n   a", "[0:a]"},
        {"a ", "[0:a ]"},
        {"a\n", "[0:a\n]"},
        {"a  ", "[0:a ]"},
        {"   ", ""},
        {"a <br/>", "[0:a \n]"},
        {"a  <br/>", "[0:a \n]"},
        {"one<br/>two", "[0:one\ntwo]"},
        {"one<br/> two", "[0:one\n two]"},
        {"one<br/>\n   two", "[0:one\n two]"},
        {"<br/>", "[0:\n]"},
        {"<br></br>", "[0:\n]"},
        {" <br/> <br/> ", "[0:\n \n ]"},
        {"a &amp; b", "[0:a & b]"},
        {"a&nbsp;&nbsp;b", "[0:a  b]"},
        {"a&nbsp;", "[0:a ]"},
        {"&#65;&#x42;", "[0:AB]"},
        {"<![CDATA[a  <b>  c]]>", "[0:a  <b>  c]"},
        {"<![CDATA[]]>", ""},
        {"<![CDATA[]]>a<![CDATA[]]>", "[0:a]"},
        {"x  <![CDATA[a]]>", "[0:x   a]"},  // the CDATA section repeats the whitespace before it
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.content);
        EXPECT_EQ(c.items, items(c.content));
    }
}

TEST(ParseMessage, KeepsTheSpaceAfterAnArgumentAsAnItem) {
    const struct {
        const char* content;
        const char* items;
    } cases[] = {
        {"<arg name='a'/> <arg name='b'/>", "[1:a][0: ][1:b]"},
        {"<arg name='a'/>\n\t  <arg name='b'/>", "[1:a][0: ][1:b]"},
        {"<arg name='a'/><arg name='b'/>", "[1:a][1:b]"},
        {"<arg name='a'/> ", "[1:a][0: ]"},
        {" <arg name='a'/>", "[1:a]"},
        {"<arg name='a'/> x", "[1:a][0: x]"},
        {"<arg name='a'/>x  ", "[1:a][0:x ]"},
        {"x <arg name='a'/>", "[0:x ][1:a]"},
        {"x  <arg name='a'/>", "[0:x ][1:a]"},
        {"<arg name='a'/><br/> <arg name='b'/>", "[1:a][0:\n ][1:b]"},
        {"<arg name='a'/> <!-- c --> <arg name='b'/>", "[1:a][0: ][1:b]"},
        {"<arg name='a'/><!-- c --> <arg name='b'/>", "[1:a][1:b]"},  // the comment comes between
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.content);
        EXPECT_EQ(c.items, items(c.content));
    }
}

TEST(ParseMessage, SkipsComments) {
    EXPECT_EQ("[0:ab]", items("a<!-- c -->b"));
    EXPECT_EQ("[0:a b]", items("a  <!-- c -->  b"));
    EXPECT_EQ("[0:b]", items(" <!-- c --> b"));
}

TEST(ParseMessage, ReadsACommentDirectlyAfterItsTagAsAnAttribute) {
    EXPECT_EQ(front + "Invalid attibute \"c\"\n in catalog element: \"c\"\n in file: \"f.xmc\"",
              message_error("<!--c-->x"));
}

TEST(ParseMessage, RejectsOtherAttributes) {
    EXPECT_EQ(5, parse(xmc(catalog("c", "en", "<msg lang=\"de\" name=\"k\">x</msg>"))).first);
}

TEST(ParseMessage, RejectsOtherElements) {
    EXPECT_EQ(front + "Invalid element \"b\"\n in catalog element: \"c\"\n in file: \"f.xmc\"",
              message_error("a <b>bold</b>"));
    EXPECT_EQ(front + "Invalid element \"Arg\"\n in catalog element: \"c\"\n in file: \"f.xmc\"",
              message_error("<Arg name='a'/>"));
}

TEST(ParseMessage, RequiresAnEmptyBr) {
    EXPECT_EQ(front + "Invalid attibute \"x\"\n in catalog element: \"c\"\n in file: \"f.xmc\"",
              message_error("<br x=''/>"));
    EXPECT_EQ(front + "Expected BR end tag not found\n in catalog element: \"c\"\n in file: "
                      "\"f.xmc\"",
              message_error("<br>x</br>"));
    EXPECT_EQ(front + "Invalid attibute \"c\"\n in catalog element: \"c\"\n in file: \"f.xmc\"",
              message_error("<br><!--c--></br>"));
}

TEST(ParseMessage, EndsAtAnyTokenWhoseValueIsMsg) {
    const std::string error =
        front + "Expected catalog end tag not found for catalog \"c\"\n in file: \"f.xmc\"";
    for (const char* content : {"msg", "<![CDATA[msg]]>", "a<!--msg-->", "<msg/>", " msg"}) {
        SCOPED_TRACE(content);
        EXPECT_EQ(error, message_error(content));
    }
    EXPECT_EQ("[0: msg]", items("&nbsp;msg"));
    EXPECT_EQ("[0:msg ]", items("msg "));
}

TEST(ParseArgument, AppendsOtherAttributesToTheName) {
    const struct {
        const char* content;
        const char* items;
    } cases[] = {
        {"<arg/>", "[1:]"},
        {"<arg name='a'/>", "[1:a]"},
        {"<argument name='a'/>", "[1:a]"},
        {"<arg name='a' type='int' base='hex' fieldsize='8'/>", "[3:a|base|hex|fieldsize|8]"},
        {"<arg name='a' base='hex' type='int'/>", "[3:a|base|hex]"},
        {"<arg base='hex' name='a' type='int'/>", "[3:a]"},
        {"<arg base='hex' name='a' fieldsize='8' type='int'/>", "[3:a|fieldsize|8]"},
        {"<arg base='hex'/>", "[1:|base|hex]"},
        {"<arg name='' base=''/>", "[1:|base|]"},
        {"<arg name='a' TYPE='int' Name='b'/>", "[1:a|TYPE|int|Name|b]"},
        {"<arg name='a'>dropped  text</arg>", "[1:a]"},
        {"<arg name='a'><!-- c --></arg>", "[1:a]"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.content);
        EXPECT_EQ(c.items, items(c.content));
    }
}

TEST(ParseArgument, EndsEarlyAtAnElementInsideIt) {
    EXPECT_EQ(front + "Expected catalog end tag not found for catalog \"c\"\n in file: \"f.xmc\"",
              message_error("<arg name='a'><b/></arg>"));
}

TEST(ParseArgument, ReturnsAnEmptyItemIfThereIsNoArgument) {
    walk at = tokens_of("<br/>");
    xmc_file_loader loader;
    const message_item item = loader.parse_message_arg(at.cursor, at.end);
    EXPECT_EQ(message_item::type_string, item.type());
    EXPECT_EQ("", std::string(item.data()));
    EXPECT_EQ(0, at.taken());

    at.cursor = at.end;
    EXPECT_EQ(message_item::type_string, loader.parse_message_arg(at.cursor, at.end).type());
}

TEST(ParseArgument, ReportsListsThatEndEarly) {
    xmc_file_loader loader;
    const auto argument_error = [&](const std::list<token>& list) {
        walk at(list);
        return thrown([&] { loader.parse_message_arg(at.cursor, at.end); });
    };
    const outcome unexpected(14, front + "Unexpected parse error happen!");
    std::list<token> list{token(token::element_start, "arg")};
    EXPECT_EQ(unexpected, argument_error(list));
    list.push_back(token(token::attribute_name, "name"));
    EXPECT_EQ(unexpected, argument_error(list));
    list.push_back(token(token::attribute_value, "n"));
    EXPECT_EQ(unexpected, argument_error(list));
    list.push_back(token(token::attribute_name, "base"));
    list.push_back(token(token::attribute_value, "hex"));
    list.push_back(token(token::start_tag_end, ""));
    const outcome open(11, front + "Expected arg (argument) end tag not found for argument \"n\"");
    EXPECT_EQ(open, argument_error(list));
    list.push_back(token(token::character, "x"));
    EXPECT_EQ(open, argument_error(list));
    list.push_back(token(token::element_end, "arg"));
    EXPECT_EQ(unexpected, argument_error(list));
    list.push_back(token(token::element_end, "msg"));
    EXPECT_EQ(outcome(-1, "nothing thrown"), argument_error(list));
}

TEST(ParseArgument, NamesItsMessageInErrors) {
    xmc_file_loader loader;
    walk at({token(token::element_start, "msg"), token(token::attribute_name, "name"),
             token(token::attribute_value, "k"), token(token::start_tag_end, ""),
             token(token::element_start, "arg"), token(token::start_tag_end, "")});
    EXPECT_EQ(outcome(11, front + "Expected arg (argument) end tag not found for argument \"\"\n "
                                  "in message element: \"k\""),
              thrown([&] { loader.parse_message(at.cursor, at.end); }));
}

TEST(ParseArgument, NamesItsMessageAndCatalogInErrors) {
    xmc_file_loader loader;
    loader.handle_language("en");
    walk at({token(token::element_start, "catalog"), token(token::attribute_name, "name"),
             token(token::attribute_value, "c"), token(token::attribute_name, "lang"),
             token(token::attribute_value, "en"), token(token::start_tag_end, ""),
             token(token::element_start, "msg"), token(token::attribute_name, "name"),
             token(token::attribute_value, "k"), token(token::start_tag_end, ""),
             token(token::element_start, "arg")});
    EXPECT_EQ(outcome(14, front + "Unexpected parse error happen!\n in message element: \"k\"\n "
                                  "in catalog element: \"c\""),
              thrown([&] { loader.parse_catalog(at.cursor, at.end); }));
}

TEST(ParseMessageType, RecognizesEachWordInAnyLetterCase) {
    const struct {
        const char* word;
        int type;
    } cases[] = {
        {"value", 0},        {"string", 1},      {"number", 2},   {"int", 3},
        {"double", 4},       {"time", 5},        {"date", 6},     {"memory", 7},
        {"mem", 7},          {"memory_unit", 8}, {"mem_unit", 8}, {"metric", 9},
        {"metric_unit", 10}, {"duration", 11},   {"INT", 3},      {"Memory_Unit", 8},
        {"DURATION", 11},    {"Value", 0},       {"", 1},         {"integer", 1},
        {" int", 1},         {"int ", 1},        {"mem unit", 1}, {"text", 1},
    };
    xmc_file_loader loader;
    for (const auto& c : cases) {
        EXPECT_EQ(c.type, static_cast<int>(loader.parse_message_type(c.word))) << c.word;
        EXPECT_EQ("[" + std::to_string(c.type) + ":a]",
                  items("<arg name='a' type='" + std::string(c.word) + "'/>"));
    }
}

TEST(Grammar, SkipsCommentsWhitespaceAndText) {
    xmc_file_loader loader;
    walk at({token(token::comment, "c"), token(token::space, " "), token(token::character, "x"),
             token(token::start_tag_end, ""), token(token::space, " ")});
    loader.parse_ignorable(at.cursor, at.end);
    EXPECT_EQ(3, at.taken());
    at.cursor = at.end;
    loader.parse_ignorable(at.cursor, at.end);
    EXPECT_TRUE(at.cursor == at.end);
}

TEST(Grammar, LeavesTheCursorAfterTheStartTagOfTheHeader) {
    xmc_file_loader loader;
    walk at = tokens_of("<xmc version=\"1.0\"><catalog/></xmc>");
    loader.parse_xmc_header(at.cursor, at.end);
    EXPECT_EQ(4, at.taken());
    EXPECT_EQ("catalog", std::string(at.cursor->value()));
}

TEST(Grammar, ReportsHeadersThatEndEarly) {
    xmc_file_loader loader;
    const auto header = [&](const std::list<token>& list) {
        walk at(list);
        return thrown([&] { loader.parse_xmc_header(at.cursor, at.end); });
    };
    std::list<token> list;
    EXPECT_EQ(outcome(7, front + "Not XMC file, root element is not XMC but \"Value Not Defined\""),
              header(list));
    EXPECT_EQ(outcome(7, front + "Not XMC file, root element is not XMC but \"xmc\""),
              header({token(token::element_end, "xmc")}));
    list.push_back(token(token::element_start, "xmc"));
    EXPECT_EQ(outcome(14, front + "Unexpected parse error happen!"), header(list));
    list.push_back(token(token::attribute_name, "version"));
    EXPECT_EQ(14, header(list).first);
    list.push_back(token(token::attribute_value, "1.1"));
    EXPECT_EQ(-1, header(list).first);
}

TEST(Grammar, RequiresEachOperationToStartAtItsElement) {
    xmc_file_loader loader;
    walk at = tokens_of("<other/>");
    const outcome error(6, front + "Invalid element \"other\"");
    EXPECT_EQ(error, thrown([&] { loader.parse_catalog(at.cursor, at.end); }));
    EXPECT_EQ(error, thrown([&] { loader.parse_include(at.cursor, at.end); }));
    EXPECT_EQ(error, thrown([&] { loader.parse_message(at.cursor, at.end); }));

    walk ends({token(token::element_end, "msg"), token(token::character, "catalog")});
    EXPECT_EQ(6, thrown([&] { loader.parse_message(ends.cursor, ends.end); }).first);
}

TEST(Grammar, ReportsKindThirteenForASkippedCatalogThatDoesNotEnd) {
    xmc_file_loader loader;  // no locale is requested
    walk at = tokens_of("<catalog name=\"c\" lang=\"en\"><msg>x</msg>");
    EXPECT_EQ(outcome(13, front + "Expected catalog end tag not found for catalog \"c\""),
              thrown([&] { loader.parse_catalog(at.cursor, at.end); }));
}

TEST(Grammar, ReportsKindFourteenWithoutNamingTheCatalog) {
    xmc_file_loader loader;
    loader.handle_language("en");
    walk at = tokens_of("<catalog name=\"c\" lang=\"en\"><msg>x</msg>");
    EXPECT_EQ(outcome(14, front + "Unexpected parse error happen!"),
              thrown([&] { loader.parse_catalog(at.cursor, at.end); }));
}

TEST(Grammar, StaysWithinEveryPrefixOfATokenList) {
    xml_token_stream stream;
    stream.parse("<?xml?><catalog name=\"c\" lang=\"en\"> <!-- c --> <msg name=\"k\" meta=\"m\">a "
                 " <br/>b <arg name=\"n\" type=\"int\" base=\"hex\">x</arg> </msg> <msg/> "
                 "</catalog>");
    const std::list<token> whole(stream.begin(), stream.end());
    for (const char* locale : {"en", "."}) {
        for (std::size_t length = 0; length <= whole.size(); ++length) {
            SCOPED_TRACE(length);
            walk at(std::list<token>(whole.begin(), std::next(whole.begin(), length)));
            xmc_file_loader loader;
            loader.handle_language(locale);
            const int kind = thrown([&] { loader.parse_catalog(at.cursor, at.end); }).first;
            if (length == whole.size())
                EXPECT_EQ(-1, kind);
            else
                EXPECT_THAT(kind, ::testing::AnyOf(11, 13, 14));
        }
    }
}

TEST(Grammar, StaysWithinEveryPrefixOfAnInclude) {
    xmc_file_loader loader;
    const std::list<token> whole{
        token(token::element_start, "include"), token(token::attribute_name, "id"),
        token(token::attribute_value, "7"), token(token::start_tag_end, "")};
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        SCOPED_TRACE(length);
        walk at(std::list<token>(whole.begin(), std::next(whole.begin(), length)));
        EXPECT_EQ(length == whole.size() ? 12 : 14,
                  thrown([&] { loader.parse_include(at.cursor, at.end); }).first);
    }
}

}  // namespace
