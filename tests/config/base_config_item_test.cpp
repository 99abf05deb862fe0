#include <tova/config/base_config_item.hpp>

#include "config/listing.hpp"
#include "config/source_checks.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

using namespace config_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using tova::config::config_item_list;
using tova::config::config_token;
using tova::generic::argument;
using tova::generic::varg_list;
using tova::memory::pointers::rc_pointer;

std::string key_and_value(const ustring8& line, config_token::tok_types stop) {
    plain_item item;
    const auto entry = item.make_key_value(line, stop);
    EXPECT_EQ(typeid(ustring8), entry.second.type());
    return entry.first + "|" + entry.second.as_string();
}

TEST(MakeKeyValue, SplitsALineAtTheFirstStopTokenAndDropsSpaces) {
    const struct {
        const char* line;
        const char* expected;
    } cases[] = {
        {"a=1", "a|1"},
        {"a b = c d", "ab|cd"},
        {"a\tb\t=\tc\td", "ab|cd"},
        {"x = \"a b\"", "x|a b"},
        {"\"a b\" = c", "a b|c"},
        {"a=b=c", "a|b=c"},
        {"a=b # c // d", "a|b#c//d"},
        {"a=b */ c", "a|b*/c"},
        {"a\nb=c", "ab|c"},
        {"a=b\nc", "a|b"},
        {"a=b\r\nc", "a|b"},
        {"a\r\nb=c", "ab|c"},
        {"a\rb=c\rd", "a\rb|c\rd"},
        {"no stop at all", "nostopatall|"},
        {"", "|"},
        {"=", "|"},
        {"=v", "|v"},
        {"k=", "k|"},
        {"a==1", "a==1|"},
        {"a:=1", "a:=1|"},
        {"a+=1=2", "a+=1|2"},
        {"a=\"b c\" d", "a|b cd"},
        {"a=\"b\\\"c\"", "a|b\\\"c"},
        {"a=\"line\nend\"", "a|line\nend"},
        {" = ", "|"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(c.expected, key_and_value(c.line, config_token::T_EQ));
    }
}

TEST(MakeKeyValue, StopsAtTheRequestedType) {
    EXPECT_EQ("a=b|c", key_and_value("a = b : c", config_token::T_COLON));
    EXPECT_EQ("a|b=c", key_and_value("a // b = c", config_token::T_FSFS));
    // The end of a C comment is returned as the start of a comment, so it stops there as well.
    EXPECT_EQ("a|b", key_and_value("a */ b", config_token::T_FSFS));
    EXPECT_EQ("a*/b|", key_and_value("a */ b", config_token::T_COMMENT_END));
    EXPECT_EQ("|bc", key_and_value("1bc", config_token::T_NUM));
    EXPECT_EQ("a|b", key_and_value("a 1b", config_token::T_NUM));
    EXPECT_EQ("ab|c", key_and_value("a b.c", config_token::T_DOT));
    EXPECT_EQ("a|b", key_and_value("a b", config_token::T_SPACE));
    EXPECT_EQ("a|b", key_and_value("a\nb", config_token::T_NEWLINE));
    EXPECT_EQ("a=b|", key_and_value("a=b", config_token::T_END));
}

TEST(BaseConfigItem, SetsAKeyToAValueAPairOrALine) {
    plain_item item;
    item.set("a.B", variant(7), 4);
    item.set(std::make_pair(ustring8("c"), variant("pair")), 0);
    item.set("d.E = x y", 0);
    item.set("f = \"x y\"", 2);
    EXPECT_THAT(content(item), ElementsAre("a: 0 true", "a.b: 5 '7' int", "c: 1 'pair'",
                                           "d: 0 true", "d.e: 1 'xy'", "f: 3 'x y'"));
}

TEST(BaseConfigItem, ParsesTheFirstOfTwoArgumentsAsALineEvenIfTheSecondIsANumber) {
    plain_item item;
    item.set("n", 1);
    item.set("m", 6);
    EXPECT_THAT(content(item), ElementsAre("m: 7 ''", "n: 1 ''"));
}

TEST(BaseConfigItem, FindsNodesAndLists) {
    plain_item item;
    item.set("a.b", variant(7), 0);
    EXPECT_EQ("1 '7' int", show(*item.get_value("A/B")));
    EXPECT_EQ(nullptr, item.get_value("b"));
    config_node_list nodes;
    item.get_value_pair_array("", nodes, false);
    item.get_value_pair_array("a", nodes, true);
    EXPECT_THAT(show(nodes), ElementsAre("a: 0 true", "b: 1 '7' int"));
    const base_config_item& unchanged = item;
    EXPECT_NE(nullptr, unchanged.get_value("a"));
}

TEST(SetArray, StoresTheArrayHeadAndTheElements) {
    plain_item item;
    item.set_array("k", varg_list(argument("x"), argument(2)), varg_list());
    EXPECT_THAT(content(item), ElementsAre("k: 3 nil", "k.0: 1 'x'", "k.1: 1 '2' int"));
    config_node_list nodes;
    item.get_array("k", nodes);
    EXPECT_THAT(show(nodes), ElementsAre("0: 1 'x'", "1: 1 '2' int"));
}

TEST(SetArray, StoresOnlyTheHeadWithoutValues) {
    plain_item item;
    item.set_array("k", varg_list(), varg_list());
    EXPECT_THAT(content(item), ElementsAre("k: 3 nil"));
    config_node_list nodes;
    item.get_array("k", nodes);
    EXPECT_THAT(nodes, IsEmpty());
}

TEST(SetArray, StoresEachElementWithTheFlagsAtItsIndex) {
    plain_item item;
    item.set_array("k", varg_list(argument("x"), argument("y")),
                   varg_list(argument(4), argument("0x6")));
    EXPECT_THAT(content(item), ElementsAre("k: 3 nil", "k.0: 5 'x'", "k.1: 7 'y'"));
}

TEST(SetArray, TurnsTheValuesPastAShortListOfFlagsIntoNumbers) {
    plain_item item;
    item.set_array("k", varg_list(argument("x"), argument("17"), argument("y"), argument(-1)),
                   varg_list(argument(4)));
    EXPECT_THAT(content(item), ElementsAre("k: 3 nil", "k.0: 5 'x'", "k.1: 1 '17' unsigned",
                                           "k.2: 1 '0' unsigned", "k.3: 1 '4294967295' unsigned"));
}

TEST(SetArray, IgnoresSurplusFlags) {
    plain_item item;
    item.set_array("k", varg_list(argument("x")), varg_list(argument(0), argument(4)));
    EXPECT_THAT(content(item), ElementsAre("k: 3 nil", "k.0: 1 'x'"));
}

TEST(SetArray, StoresTheValuesOfNamedArguments) {
    plain_item item;
    varg_list values;
    values.push_back("name", variant("x"));
    item.set_array("k", values, varg_list());
    EXPECT_THAT(content(item), ElementsAre("k: 3 nil", "k.0: 1 'x'"));
}

TEST(SetArray, KeepsTheLastElementsOfALongerArray) {
    plain_item item;
    item.set_array("k", varg_list(argument("a"), argument("b")), varg_list());
    item.set_array("k", varg_list(argument("c")), varg_list());
    EXPECT_THAT(content(item), ElementsAre("k: 3 nil", "k.0: 1 'c'", "k.1: 1 'b'"));
}

// The element's key is the head's key, "." and the number. If the head's key ends in a separator,
// this adds a segment with an empty name.
TEST(SetArray, AppendsElementNumbersToTheKeyAsWritten) {
    plain_item item;
    item.set_array("a.", varg_list(argument("x")), varg_list());
    EXPECT_THAT(content(item), ElementsAre("a: 3 nil", "a.: 0 true", "a..0: 1 'x'"));
    plain_item empty;
    empty.set_array("", varg_list(argument("x")), varg_list());
    EXPECT_EQ("3 nil", show(*empty.get_value("")));
    EXPECT_EQ("1 'x'", show(*empty.get_value(".0")));
}

TEST(BaseConfigItem, CopiesItsNameAndItsWholeTree) {
    plain_item item("name");
    item.set("a.b = 1", 0);
    item.allocated = true;
    const rc_pointer<base_config_item> clone(item.clone());
    plain_item copy(item);
    item.allocated = false;
    EXPECT_EQ("name", clone->get_id());
    EXPECT_EQ("name", copy.get_id());
    EXPECT_EQ(0u, copy.count);
    EXPECT_FALSE(copy.allocated);
    EXPECT_EQ(content(item), content(copy));
    expect_independent_clone(item);
}

TEST(BaseConfigItem, StartsWithoutANameOrNodes) {
    plain_item item;
    EXPECT_EQ("", item.get_id());
    EXPECT_THAT(content(item), IsEmpty());
}

// Counts the calls to the forms without a list.
class counting_item : public plain_item {
public:
    using base_config_item::load;
    using base_config_item::save;
    bool load() override {
        ++loads;
        return false;
    }
    bool save() override {
        ++saves;
        return false;
    }
    int loads = 0;
    int saves = 0;
};

TEST(BaseConfigItem, ForwardsLoadWithAListButNotSave) {
    counting_item item;
    const config_item_list none;
    base_config_item& base = item;
    EXPECT_FALSE(base.load(none));
    EXPECT_EQ(1, item.loads);
    EXPECT_TRUE(base.save(none));
    EXPECT_EQ(0, item.saves);
}

TEST(BaseConfigItem, DoesNothingByItself) {
    plain_item item;
    item.set("a = 1", 0);
    const config_item_list none;
    EXPECT_TRUE(item.load());
    EXPECT_TRUE(item.load(none));
    EXPECT_TRUE(item.save());
    EXPECT_TRUE(item.save(none));
    item.unload();
    EXPECT_THAT(content(item), ElementsAre("a: 1 '1'"));
}

TEST(BaseConfigItem, DumpsItsNameAndItsTree) {
    plain_item item("the name");
    item.set("s.a = v", 0);
    std::ostringstream out;
    EXPECT_EQ(&out, &item.dump(out));
    EXPECT_EQ("object : the name\n"
              "|---------------\\\n"
              "|\t\ts : true\n"
              "|\t\t|---------------\\\n"
              "|\t\t|\t\ta : 1 v\n"
              "|\t\t|\t\t|\n"
              "|\t\t|\t\tend\n"
              "|\t\tend\n"
              "end\n",
              out.str());
    std::ostringstream inserted;
    inserted << static_cast<base_config_item&>(item);
    EXPECT_EQ(out.str(), inserted.str());
}

}  // namespace
