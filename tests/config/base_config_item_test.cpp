#include <tova/config/base_config_item.hpp>

#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "config/listing.hpp"

namespace {

using config_support::base_config_item;
using config_support::config_node;
using config_support::config_node_list;
using config_support::content;
using config_support::lines;
using config_support::plain_item;
using config_support::show;
using config_support::ustring8;
using config_support::variant;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using TOVA_2_18::config::config_item_list;
using TOVA_2_18::config::config_token;
using TOVA_2_18::generic::argument;
using TOVA_2_18::generic::varg_list;
using TOVA_2_18::memory::pointers::rc_pointer;

// Each piece of a text as "returned/stored start-end text".
lines pieces(const ustring8& text) {
    plain_item item;
    lines result;
    unsigned position = 0;
    config_token token;
    token.text = "before";
    for (;;) {
        const unsigned at = position;
        const int returned = item.get_token(text, position, token);
        if (returned == config_token::T_END)
            break;
        EXPECT_EQ(at, token.start);
        EXPECT_EQ(position, token.end);
        EXPECT_LT(at, position);
        std::string kind = std::to_string(returned);
        if (returned != token.type)
            kind += "/" + std::to_string(token.type);
        result.push_back(kind + " " + std::to_string(token.start) + "-" +
                         std::to_string(token.end) + " " + token.text);
    }
    EXPECT_EQ(config_token::T_END, token.type);
    EXPECT_EQ(text.size(), position);
    return result;
}

TEST(GetToken, KnowsEveryKind) {
    const struct {
        const char* text;
        lines expected;
    } cases[] = {
        {"", {}},
        {"abc", {"0 0-3 abc"}},
        {"123", {"1 0-3 123"}},
        {"\n", {"2 0-1 \n"}},
        {"\r\n", {"2 0-2 \n"}},
        {"\t", {"3 0-1 \t"}},
        {"\r", {"4 0-1 \r"}},
        {"   ", {"6 0-3 before"}},
        {"=", {"7 0-1 ="}},
        {"==", {"8 0-2 =="}},
        {">", {"9 0-1 >"}},
        {">=", {"10 0-2 >="}},
        {"<", {"11 0-1 <"}},
        {"<=", {"12 0-2 <="}},
        {":", {"13 0-1 :"}},
        {":=", {"14 0-2 :="}},
        {"#", {"15 0-1 #"}},
        {"//", {"16 0-2 //"}},
        {".", {"17 0-1 ."}},
        {"[", {"18 0-1 ["}},
        {"]", {"19 0-1 ]"}},
        {"+", {"20 0-1 +"}},
        {"-", {"21 0-1 -"}},
        {"+=", {"22 0-2 +="}},
        {"-=", {"23 0-2 -="}},
        {"*/", {"16/24 0-2 */"}},
        {"*", {"26 0-1 *"}},
        {"/", {"27 0-1 /"}},
        {"*=", {"28 0-2 *="}},
        {"/=", {"29 0-2 /="}},
        {"\"a b\"", {"30 0-5 a b"}},
        {"_", {"31 0-1 _"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.expected, pieces(c.text));
    }
}

TEST(GetToken, CutsRunsAndPairsGreedilyFromTheLeft) {
    const struct {
        const char* text;
        lines expected;
    } cases[] = {
        {"a=1", {"0 0-1 a", "7 1-2 =", "1 2-3 1"}},
        {"abc_1", {"0 0-3 abc", "31 3-4 _", "1 4-5 1"}},
        {"a1b", {"0 0-1 a", "1 1-2 1", "0 2-3 b"}},
        {"1.5", {"1 0-1 1", "17 1-2 .", "1 2-3 5"}},
        {"-5e+3", {"21 0-1 -", "1 1-2 5", "0 2-3 e", "20 3-4 +", "1 4-5 3"}},
        {"===", {"8 0-2 ==", "7 2-3 ="}},
        {"////", {"16 0-2 //", "16 2-4 //"}},
        {"///", {"16 0-2 //", "27 2-3 /"}},
        {"/*", {"27 0-1 /", "26 1-2 *"}},
        {"**/", {"26 0-1 *", "16/24 1-3 */"}},
        {"*//", {"16/24 0-2 */", "27 2-3 /"}},
        {"\t\t", {"3 0-1 \t", "3 1-2 \t"}},
        {"\n\n", {"2 0-1 \n", "2 1-2 \n"}},
        {"\r\r\n", {"4 0-1 \r", "2 1-3 \n"}},
        {"[]", {"18 0-1 [", "19 1-2 ]"}},
        {"..", {"17 0-1 .", "17 1-2 ."}},
        {"##", {"15 0-1 #", "15 1-2 #"}},
        {"<>", {"11 0-1 <", "9 1-2 >"}},
        {"\xC3\xA4", {"31 0-1 \xC3", "31 1-2 \xA4"}},
        {"',;!", {"31 0-1 '", "31 1-2 ,", "31 2-3 ;", "31 3-4 !"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.expected, pieces(c.text));
    }
}

TEST(GetToken, LeavesTheTextOfTheTokenBeforeToBlanks) {
    EXPECT_EQ((lines{"0 0-1 a", "6 1-3 a", "0 3-4 b", "6 4-5 b"}), pieces("a  b "));
    EXPECT_EQ((lines{"30 0-3 x", "6 3-4 x"}), pieces("\"x\" "));
}

TEST(GetToken, KeepsABackslashInAStringAndTheByteBehindIt) {
    const struct {
        const char* text;
        lines expected;
    } cases[] = {
        {"\"\"", {"30 0-2 "}},
        {"\"a\\\"b\"", {"30 0-6 a\\\"b"}},
        {"\"\\\\\"x", {"30 0-4 \\\\", "0 4-5 x"}},
        {"\"\\n\"", {"30 0-4 \\n"}},
        {"\"a#//=[\n\r\t\"", {"30 0-11 a#//=[\n\r\t"}},
        // Without a closing quote the string ends with the text.
        {"\"", {"30 0-1 "}},
        {"\"abc", {"30 0-4 abc"}},
        {"\"abc\\", {"30 0-5 abc\\"}},
        {"\"abc\\\"", {"30 0-6 abc\\\""}},
        {"a\"b\"c", {"0 0-1 a", "30 1-4 b", "0 4-5 c"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.expected, pieces(c.text));
    }
}

TEST(GetToken, TakesANulByteForAnyOtherCharacter) {
    plain_item item;
    const ustring8 text("=\0=\"\0\"", 6);
    unsigned position = 0;
    config_token token;
    EXPECT_EQ(config_token::T_EQ, item.get_token(text, position, token));
    EXPECT_EQ(config_token::T_NON_ALPHA_NUM, item.get_token(text, position, token));
    EXPECT_EQ(std::string(1, '\0'), token.text);
    EXPECT_EQ(config_token::T_EQ, item.get_token(text, position, token));
    EXPECT_EQ(config_token::T_STRING, item.get_token(text, position, token));
    EXPECT_EQ(std::string(1, '\0'), token.text);
}

TEST(GetToken, StoresTheKindAloneAtTheEnd) {
    plain_item item;
    config_token token;
    token.text = "kept";
    token.start = 11;
    token.end = 22;
    token.type = config_token::T_VAR;
    unsigned position = 3;
    EXPECT_EQ(config_token::T_END, item.get_token("abc", position, token));
    EXPECT_EQ(3u, position);
    EXPECT_EQ("kept", token.text);
    EXPECT_EQ(11u, token.start);
    EXPECT_EQ(22u, token.end);
    EXPECT_EQ(config_token::T_END, token.type);
    position = 4000000000u;
    EXPECT_EQ(config_token::T_END, item.get_token("abc", position, token));
    EXPECT_EQ(4000000000u, position);
}

// All texts of two bytes: what a single byte gives, and when a second one joins it.
TEST(GetToken, CutsEveryPairOfBytes) {
    const std::string singles = "]\n[.#\t<>=:+-/*\r";
    plain_item item;
    for (int first = 0; first < 256; ++first)
        for (int second = 0; second < 256; ++second) {
            const char a = static_cast<char>(first), b = static_cast<char>(second);
            const ustring8 text{a, b};
            const auto letter = [](char c) {
                return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
            };
            const auto digit = [](char c) { return c >= '0' && c <= '9'; };
            bool joined = a == '"' || (a == b && (a == ' ' || a == '/')) ||
                          (letter(a) && letter(b)) || (digit(a) && digit(b)) ||
                          (b == '=' && std::string("<>=:+-/*").find(a) != std::string::npos) ||
                          (a == '*' && b == '/') || (a == '\r' && b == '\n');
            unsigned position = 0;
            config_token token;
            const int type = item.get_token(text, position, token);
            ASSERT_EQ(joined ? 2u : 1u, position) << first << " " << second;
            if (letter(a)) {
                ASSERT_EQ(config_token::T_VAR, type);
            } else if (digit(a)) {
                ASSERT_EQ(config_token::T_NUM, type);
            } else if (a != ' ' && a != '"' && singles.find(a) == std::string::npos) {
                ASSERT_EQ(config_token::T_NON_ALPHA_NUM, type) << first;
            }
        }
}

std::string key_and_value(const ustring8& line, config_token::tok_types stop) {
    plain_item item;
    const auto entry = item.make_key_value(line, stop);
    EXPECT_EQ(typeid(ustring8), entry.second.type());
    return entry.first + "|" + entry.second.as_string();
}

TEST(MakeKeyValue, DividesALineAtTheFirstStopAndDropsBlanks) {
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

TEST(MakeKeyValue, StopsAtTheKindThatIsAsked) {
    EXPECT_EQ("a=b|c", key_and_value("a = b : c", config_token::T_COLON));
    EXPECT_EQ("a|b=c", key_and_value("a // b = c", config_token::T_FSFS));
    // The end of a C comment is returned as the begin of a comment, so it stops there as well.
    EXPECT_EQ("a|b", key_and_value("a */ b", config_token::T_FSFS));
    EXPECT_EQ("a*/b|", key_and_value("a */ b", config_token::T_COMMENT_END));
    EXPECT_EQ("|bc", key_and_value("1bc", config_token::T_NUM));
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

TEST(BaseConfigItem, TakesTwoArgumentsForALineAlsoWithANumber) {
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

TEST(SetArray, StoresAHeadAndTheElements) {
    plain_item item;
    item.set_array("k", varg_list(argument("x"), argument(2)), varg_list());
    EXPECT_THAT(content(item), ElementsAre("k: 3 nil", "k.0: 1 'x'", "k.1: 1 '2' int"));
    config_node_list nodes;
    item.get_array("k", nodes);
    EXPECT_THAT(show(nodes), ElementsAre("0: 1 'x'", "1: 1 '2' int"));
}

TEST(SetArray, StoresTheHeadAloneWithoutValues) {
    plain_item item;
    item.set_array("k", varg_list(), varg_list());
    EXPECT_THAT(content(item), ElementsAre("k: 3 nil"));
    config_node_list nodes;
    item.get_array("k", nodes);
    EXPECT_THAT(nodes, IsEmpty());
}

TEST(SetArray, GivesEachElementTheFlagsOfItsPlace) {
    plain_item item;
    item.set_array("k", varg_list(argument("x"), argument("y")),
                   varg_list(argument(4), argument("0x6")));
    EXPECT_THAT(content(item), ElementsAre("k: 3 nil", "k.0: 5 'x'", "k.1: 7 'y'"));
}

TEST(SetArray, TurnsTheValuesBehindAShortListOfFlagsIntoNumbers) {
    plain_item item;
    item.set_array("k", varg_list(argument("x"), argument("17"), argument("y"), argument(-1)),
                   varg_list(argument(4)));
    EXPECT_THAT(content(item), ElementsAre("k: 3 nil", "k.0: 5 'x'", "k.1: 1 '17' unsigned",
                                           "k.2: 1 '0' unsigned", "k.3: 1 '4294967295' unsigned"));
}

TEST(SetArray, IgnoresFlagsThatAreTooMany) {
    plain_item item;
    item.set_array("k", varg_list(argument("x")), varg_list(argument(0), argument(4)));
    EXPECT_THAT(content(item), ElementsAre("k: 3 nil", "k.0: 1 'x'"));
}

TEST(SetArray, TakesTheValuesOfNamedArguments) {
    plain_item item;
    varg_list values;
    values.push_back("name", variant("x"));
    item.set_array("k", values, varg_list());
    EXPECT_THAT(content(item), ElementsAre("k: 3 nil", "k.0: 1 'x'"));
}

TEST(SetArray, LeavesLongerTailsOfAnOlderArray) {
    plain_item item;
    item.set_array("k", varg_list(argument("a"), argument("b")), varg_list());
    item.set_array("k", varg_list(argument("c")), varg_list());
    EXPECT_THAT(content(item), ElementsAre("k: 3 nil", "k.0: 1 'c'", "k.1: 1 'b'"));
}

// The element's key is the head's key, "." and the number: behind a separator that is one more
// segment with the empty name.
TEST(SetArray, BuildsTheKeysOfElementsFromTheTextOfTheKey) {
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
    const rc_pointer<base_config_item> copy(item.clone());
    item.allocated = false;
    EXPECT_EQ("name", copy->get_id());
    EXPECT_EQ(1u, copy->count);
    EXPECT_TRUE(copy->allocated);
    EXPECT_EQ(content(item), content(*copy));
    copy->set("a.b = 2", 0);
    EXPECT_EQ("1 '1'", show(*item.get_value("a.b")));

    const plain_item second(item);
    EXPECT_EQ(0u, second.count);
    EXPECT_FALSE(second.allocated);
}

TEST(BaseConfigItem, HasNoNameAndNoNodesAtFirst) {
    plain_item item;
    EXPECT_EQ("", item.get_id());
    EXPECT_THAT(content(item), IsEmpty());
}

// Counts the calls of the forms without a list.
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

TEST(BaseConfigItem, ForwardsLoadingWithAListButNotSaving) {
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
