#include <tova/i18n/message.hpp>

#include "i18n/message_text.hpp"
#include "support/failing_allocation.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <new>
#include <string>
#include <vector>

namespace {

namespace types = tova::types;
using namespace tova::strings;
using test_support::item;
using test_support::with_separators;
using testing::ElementsAre;
using tova::generic::argument;
using tova::generic::varg_list;
using tova::i18n::message_item;
using tova::i18n::message_t;

typedef std::vector<message_item> items;

// "Size: {n in hexadecimal} of {what}."
message_t sample() {
    return message_t("size",
                     items{message_item("Size: "), item(3, "n|base|hex"), message_item(" of "),
                           item(1, "what"), message_item(".")},
                     "for the log");
}

TEST(Message, IsEmptyByDefaultAndFromNil) {
    const message_t made, nil(types::nil);
    for (const message_t* message : {&made, &nil}) {
        EXPECT_EQ("", message->name());
        EXPECT_EQ("", message->meta());
        EXPECT_EQ("", message->_orginal_locale());
        EXPECT_EQ(0u, message->count());
        EXPECT_EQ("", message->as_string(varg_list()));
        EXPECT_TRUE(*message == types::nil);
        EXPECT_TRUE(message->begin() == message->end());
    }
}

// Most messages are short. A text of this length is moved to a string before the next item.
TEST(Message, RendersEveryItemAfterALongText) {
    const std::string before(400, 'x');
    const varg_list args(argument("n", -1234567), argument("d", -0.3), argument("s", "end"));
    const struct {
        message_item last;
        const char* rendered;
    } cases[] = {
        {item(3, "n"), "-1234567"},
        {item(4, "d"), "-0.30"},
        {item(4, "d|precision|3"), "-0.300"},
        {item(4, "d|precision|0"), "?invalid?"},
        {item(1, "s"), "end"},
        {item(3, "none"), "?invalid?"},
    };
    for (const auto& c : cases) {
        const message_t message("k", items{message_item(before), c.last, message_item("!")});
        EXPECT_EQ(before + c.rendered + "!", message.as_string(args));
    }
}

TEST(Message, IsMadeFromAKeyItemsAndMetaText) {
    const message_t two("key", items{message_item("a")});
    EXPECT_EQ("key", two.name());
    EXPECT_EQ(1u, two.count());
    EXPECT_EQ("", two.meta());
    EXPECT_EQ("", two._orginal_locale());

    const message_t three("key", items{message_item("a")}, "meta");
    EXPECT_EQ("meta", three.meta());
    EXPECT_EQ("", three._orginal_locale());
}

TEST(Message, RendersItsItemsInOrder) {
    EXPECT_EQ("Size: 0x00ff of files.",
              sample().as_string(varg_list(argument("what", "files"), argument("n", 255))));
    EXPECT_EQ("ab",
              message_t("k", items{message_item("a"), message_item("b")}).as_string(varg_list()));
    EXPECT_EQ("ba", message_t("k", items{message_item("b"), message_item(""), message_item("a")})
                        .as_string(varg_list()));
}

TEST(Message, ShowsAnInvalidItemAsInvalidAndRendersTheRest) {
    EXPECT_EQ("Size: ?invalid? of ?invalid?.", sample().as_string(varg_list()));
    EXPECT_EQ("Size: ?invalid? of files.",
              sample().as_string(varg_list(argument("what", "files"))));
    EXPECT_EQ("Size: 0x0001 of ?invalid?.", sample().as_string(varg_list(argument("n", 1))));
    EXPECT_EQ("a?invalid?b",
              message_t("k", items{message_item("a"), item(3, "n|base"), message_item("b")})
                  .as_string(varg_list(argument("n", 1))));
    EXPECT_EQ("a?invalid?b?invalid?",
              message_t("k", items{message_item("a"), item(5, "n"), message_item("b"),
                                   item(4, "d|precision|0")})
                  .as_string(varg_list(argument("n", 1), argument("d", -0.3))));
}

TEST(Message, IgnoresPositionsAndUnnamedAndUnusedArguments) {
    const varg_list args(argument(types::variant("unnamed")), argument("x", 1), argument("n", 16),
                         argument("what", "it"));
    EXPECT_EQ("Size: 0x0010 of it.", sample().as_string(args));
    EXPECT_EQ(
        "Size: ?invalid? of ?invalid?.",
        sample().as_string(varg_list(argument(types::variant(1)), argument(types::variant(2)))));
}

TEST(Message, ShowsNumberAndUnitOfOneArgumentInTwoItems) {
    const message_t message("k", items{item(7, "m|precision|1"), message_item(" "),
                                       item(8, "m|precision|1"), message_item(", "), item(9, "q"),
                                       message_item(" "), item(10, "q")});
    EXPECT_EQ("1.5 KB, 2.500 M",
              message.as_string(varg_list(argument("m", 1536), argument("q", 2500000))));
}

TEST(Message, RendersTheSameTextInEveryWidth) {
    // One to four bytes: a, e with acute, the euro sign, an emoji.
    const ustring8 bytes("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
    const message_t message("k", items{item(1, "x"), message_item("\xC3\xA9")});
    const varg_list args(argument("x", bytes));

    EXPECT_EQ(std::string(bytes) + "\xC3\xA9", message.as_string(args));
    EXPECT_EQ(bytes + "\xC3\xA9", message.as_utf8(args));
    EXPECT_EQ(std::string(bytes) + "\xC3\xA9", message.as_ustring(args));
    EXPECT_EQ((ustring16{'a', 0xE9, 0x20AC, 0xD83D, 0xDE00, 0xE9}), message.as_utf16(args));
    EXPECT_EQ((ustring32{'a', 0xE9, 0x20AC, 0x1F600, 0xE9}), message.as_utf32(args));
    EXPECT_EQ(L"a\xE9\x20AC\x1F600\xE9", message.as_wstring(args));
}

TEST(Message, ConvertsInvalidUtf8AccordingToEachWidth) {
    const message_t message("k", items{message_item("ok \xFF\xFE")});
    EXPECT_EQ("ok \xFF\xFE", message.as_string(varg_list()));
    EXPECT_EQ((ustring16{'-', '1'}), message.as_utf16(varg_list()));
    EXPECT_EQ((ustring32{'o', 'k', ' ', '?', '?'}), message.as_utf32(varg_list()));
    EXPECT_EQ(L"ok ??", message.as_wstring(varg_list()));
}

TEST(Message, RendersLongStringsAndManyItemsCompletely) {
    items parts;
    std::string expected;
    for (int i = 0; i < 3000; ++i) {
        parts.push_back(message_item(std::to_string(i) + ","));
        parts.push_back(item(1, i % 2 ? "long" : "none"));
        expected += std::to_string(i) + "," + (i % 2 ? std::string(500, 'x') : "?invalid?");
    }
    EXPECT_EQ(expected,
              message_t("k", parts).as_string(varg_list(argument("long", std::string(500, 'x')))));
}

TEST(Message, JoinsPiecesOfEveryLengthAtEveryPlace) {
    for (std::size_t first = 300; first <= 400; ++first) {
        std::string expected(first, 'f');
        std::vector<message_item> items = {message_item(ustring8(expected))};
        for (std::size_t size = 0; size <= 20; ++size) {
            ustring8 piece("abcdefghijklmnopqrstuvwxyz");
            piece.resize(size);
            items.push_back(message_item(piece));
            expected += piece;
        }
        EXPECT_EQ(expected, message_t("key", items).as_string(varg_list()));
    }
}

TEST(Message, RendersWithOneAllocation) {
    const message_t message("k", items{message_item("The user "), item(1, "who"),
                                       message_item(" copied "), item(3, "n"),
                                       message_item(" files, flags "), item(3, "f|base|hex"),
                                       message_item(", ratio "), item(4, "r|precision|3"),
                                       message_item(", took "), item(11, "t")});
    const varg_list args(argument("who", "Grace Hopper"), argument("n", 12345), argument("f", 255),
                         argument("r", 3.14159), argument("t", 61.5));
    const unsigned long before = test_support::allocations();
    const std::string text = message.as_string(args);
    EXPECT_EQ(1u, test_support::allocations() - before);
    EXPECT_EQ("The user Grace Hopper copied 12345 files, flags 0x00ff, ratio 3.142, "
              "took 1 min 1.50 sec",
              text);
}

TEST(Message, RaisesBadAllocAndLeaksNothing) {
    const message_t message("k", items{message_item(std::string(100, 'x'))});
    const varg_list args;
    const long before = test_support::live_allocations();
    bool raised = false;
    {
        test_support::failing_allocation failure;
        try {
            message.as_string(args);
        } catch (const std::bad_alloc&) {
            raised = true;
        }
    }
    EXPECT_TRUE(raised);
    EXPECT_EQ(before, test_support::live_allocations());
    EXPECT_EQ(std::string(100, 'x'), message.as_string(args));
}

TEST(Message, CountsItemsAndArgumentItems) {
    EXPECT_EQ(5u, sample().count());
    EXPECT_EQ(5u, sample().size());
    EXPECT_EQ(2u, sample().argument_count());
    EXPECT_EQ(0u, message_t().argument_count());
    // Items of reserved and unknown types count, and items with the same argument count separately.
    const message_t message(
        "k", items{item(7, "m"), item(8, "m"), item(2, "x"), item(99, "y"), message_item("text")});
    EXPECT_EQ(4u, message.argument_count());
    EXPECT_EQ(5u, message.count());
}

TEST(Message, ListsItsArgumentsUnderTheWholeDataOfTheirItems) {
    const message_t message("k", items{item(3, "n|base|hex"), message_item("text"), item(1, "n"),
                                       item(3, "n|base|hex"), item(5, "t")});
    const varg_list arguments = message.arguments();
    ASSERT_EQ(3u, arguments.count());
    EXPECT_EQ(with_separators("n|base|hex"), arguments[0].name());
    EXPECT_EQ("n", arguments[1].name());
    EXPECT_EQ("t", arguments[2].name());
    for (unsigned long i = 0; i < 3; ++i)
        EXPECT_TRUE(arguments[i].value() == types::nil);
    EXPECT_EQ(0u, message_t("k", items{message_item("text")}).arguments().count());
}

TEST(Message, ListsManyArgumentsOnceEachAndInOrder) {
    const int names = 50000;  // takes minutes in quadratic time
    items parts;
    for (int i = 0; i < 2 * names; ++i)
        parts.push_back(item(3, "n" + std::to_string(i % names)));
    const varg_list arguments = message_t("k", parts).arguments();
    ASSERT_EQ(static_cast<unsigned long>(names), arguments.count());
    for (int i = 0; i < names; ++i)
        ASSERT_EQ("n" + std::to_string(i), arguments[static_cast<unsigned long>(i)].name());
}

TEST(Message, ListsEveryArgumentWithoutAName) {
    EXPECT_EQ(2u, message_t("k", items{item(1, ""), item(3, "")}).arguments().count());
}

TEST(Message, HasValidArgumentsIfEachItemFindsItsNameAndTheListIsLongEnough) {
    EXPECT_TRUE(sample().has_valid_args(varg_list(argument("n", 1), argument("what", 2))));
    EXPECT_TRUE(sample().has_valid_args(varg_list(argument("what", types::variant()),
                                                  argument("x", 2), argument("n", "no number"))));
    EXPECT_FALSE(sample().has_valid_args(varg_list()));
    EXPECT_FALSE(sample().has_valid_args(varg_list(argument("n", 1))));
    EXPECT_FALSE(sample().has_valid_args(varg_list(argument("n", 1), argument("What", 2))));
    EXPECT_FALSE(sample().has_valid_args(varg_list(argument("n", 1), argument(types::variant(2)))));
}

TEST(Message, HasValidArgumentsForLiteralsOnlyButNotWithoutItems) {
    const message_t literals("k", items{message_item("a"), message_item("b")});
    EXPECT_TRUE(literals.has_valid_args(varg_list()));
    EXPECT_EQ("ab", literals.as_string(varg_list()));
    EXPECT_FALSE(message_t().has_valid_args(varg_list()));
    EXPECT_FALSE(message_t("k", items()).has_valid_args(varg_list(argument("n", 1))));
}

TEST(Message, CountsItemsAndNotNamesForValidArguments) {
    const message_t message("k", items{item(7, "m"), item(8, "m")});
    EXPECT_FALSE(message.has_valid_args(varg_list(argument("m", 1))));
    EXPECT_TRUE(message.has_valid_args(varg_list(argument("m", 1), argument("x", 1))));
    // Reserved types require their argument, although they never show it.
    EXPECT_FALSE(message_t("k", items{item(5, "t")}).has_valid_args(varg_list(argument("x", 1))));
    EXPECT_TRUE(message_t("k", items{item(5, "t")}).has_valid_args(varg_list(argument("t", 1))));
}

TEST(Message, IteratesOverItsItems) {
    const message_t fixed = sample();
    std::vector<std::string> data;
    for (const message_item& part : fixed)
        data.push_back(part.name());
    EXPECT_THAT(data, ElementsAre("Size: ", "n", " of ", "what", "."));

    message_t message = sample();
    *message.begin() = message_item("Bytes: ");
    EXPECT_EQ("Bytes: ", message.begin()->data());
    EXPECT_EQ(5, message.end() - message.begin());
}

TEST(Message, ReturnsTheFieldFromASetterButTheMessageFromTheSetterOfTheKey) {
    message_t message;
    message_t& whole = message.name("key");
    EXPECT_EQ(&message, &whole);
    const ustring8& meta = message.meta("meta");
    const ustring8& locale = message._orginal_locale("de_DE");
    const message_t& fixed = message;
    EXPECT_EQ(&fixed.meta(), &meta);
    EXPECT_EQ(&fixed._orginal_locale(), &locale);
    EXPECT_EQ("key", fixed.name());
    EXPECT_EQ("meta", fixed.meta());
    EXPECT_EQ("de_DE", fixed._orginal_locale());
}

TEST(Message, IgnoresResolve) {
    message_t message = sample();
    message.resolve({{"n", "other"}, {"size", "x"}});
    EXPECT_EQ("size", message.name());
    EXPECT_EQ("Size: 0x0001 of a.",
              message.as_string(varg_list(argument("n", 1), argument("what", "a"))));
}

TEST(Message, CopiesEveryField) {
    message_t source = sample();
    source._orginal_locale("de");
    const message_t copy(source);
    message_t assigned, forwarded;
    EXPECT_EQ(&assigned, &(assigned = source));
    EXPECT_EQ(&forwarded, &forwarded.assign(source));
    for (const message_t* message : {&copy, const_cast<const message_t*>(&assigned),
                                     const_cast<const message_t*>(&forwarded)}) {
        EXPECT_EQ("size", message->name());
        EXPECT_EQ("for the log", message->meta());
        EXPECT_EQ("de", message->_orginal_locale());
        EXPECT_EQ(5u, message->count());
    }
    source.name("changed");
    EXPECT_EQ("size", copy.name());
}

TEST(Message, IsUnchangedBySelfAssignment) {
    message_t message = sample();
    EXPECT_EQ(&message, &message.assign(message));
    EXPECT_EQ("size", message.name());
    EXPECT_EQ(5u, message.count());
}

TEST(Message, KeepsItsLocaleWhenNilIsAssigned) {
    for (bool by_operator : {true, false}) {
        message_t message = sample();
        message._orginal_locale("de");
        EXPECT_EQ(&message, by_operator ? &(message = types::nil) : &message.assign(types::nil));
        EXPECT_EQ("", message.name());
        EXPECT_EQ("", message.meta());
        EXPECT_EQ(0u, message.count());
        EXPECT_EQ("de", message._orginal_locale());
        EXPECT_TRUE(message == types::nil);
    }
}

TEST(Message, IsNilWithoutItemsKeyAndMetaTextWhateverTheLocale) {
    message_t message;
    message._orginal_locale("de");
    EXPECT_TRUE(message == types::nil);
    EXPECT_TRUE(message.equal(types::nil));
    EXPECT_FALSE(message_t().name("k") == types::nil);
    EXPECT_FALSE(message_t("", items{message_item("")}).equal(types::nil));
    EXPECT_FALSE(message_t("", items(), "m") == types::nil);
}

}  // namespace
