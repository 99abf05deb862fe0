#include <tova/i18n/message_item.hpp>

#include "i18n/message_text.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>

namespace {

using test_support::item;
using test_support::with_separators;
using tova::generic::argument;
using tova::generic::varg_list;
using tova::i18n::message_item;
using tova::strings::ustring8;
using tova::types::variant;

TEST(MessageItem, NumbersItsTypes) {
    const std::pair<message_item::type_t, unsigned int> numbers[] = {
        {message_item::type_text, 0},         {message_item::type_string, 1},
        {message_item::type_number, 2},       {message_item::type_int, 3},
        {message_item::type_double, 4},       {message_item::type_time, 5},
        {message_item::type_date, 6},         {message_item::type_memory, 7},
        {message_item::type_memory_unit, 8},  {message_item::type_metric, 9},
        {message_item::type_metric_unit, 10}, {message_item::type_duration, 11},
    };
    for (const auto& n : numbers)
        EXPECT_EQ(n.second, static_cast<unsigned int>(n.first));
    static_assert(sizeof(message_item::type_t) == 4, "the enumeration has 32 bits");
}

TEST(MessageItem, IsLiteralWhenMadeFromJustAString) {
    const message_item literal("Hello");
    EXPECT_EQ(message_item::type_text, literal.type());
    EXPECT_EQ("Hello", literal.data());
    EXPECT_EQ("Hello", literal.name());
    EXPECT_EQ("Hello", literal.as_string(varg_list()));
}

TEST(MessageItem, IsNamedByItsDataUpToTheFirstSeparator) {
    const struct {
        const char* data;
        const char* name;
    } cases[] = {
        {"", ""},
        {"n", "n"},
        {"n|", "n"},
        {"n|base|hex", "n"},
        {"|base|hex", ""},
        {"|", ""},
        {"some name|a|b", "some name"},
        {"n||", "n"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.name, item(3, c.data).name()) << c.data;
        EXPECT_EQ(c.name, item(0, c.data).name()) << c.data;
        EXPECT_EQ(with_separators(c.data), item(3, c.data).data()) << c.data;
    }
}

TEST(MessageItem, KeepsEveryByteOfItsData) {
    const ustring8 data(std::string("a\0b\x01"
                                    "c\xff",
                                    6));
    const message_item literal(data);
    EXPECT_EQ(data, literal.data());
    EXPECT_EQ(data, literal.as_string(varg_list()));
    EXPECT_EQ(ustring8(std::string("a\0b", 3)), literal.name());
}

TEST(MessageItem, CopiesBothFields) {
    const message_item source = item(3, "n|base|hex");
    const message_item copy(source);
    EXPECT_EQ(message_item::type_int, copy.type());
    EXPECT_EQ(source.data(), copy.data());

    message_item target("text");
    EXPECT_EQ(&target, &(target = source));
    EXPECT_EQ(message_item::type_int, target.type());
    EXPECT_EQ(source.data(), target.data());

    message_item other("text");
    EXPECT_EQ(&other, &other.assign(source));
    EXPECT_EQ(message_item::type_int, other.type());
    EXPECT_EQ(&other, &other.assign(other));
    EXPECT_EQ(source.data(), other.data());
}

TEST(MessageItem, ShowsAnArgumentAccordingToItsType) {
    const varg_list args(argument("i", 255), argument("d", 3.14159), argument("s", "text"),
                         argument("m", 1536), argument("t", 90061.25));
    const struct {
        unsigned int type;
        const char* data;
        const char* text;
    } cases[] = {
        {1, "i", "255"},
        {1, "d", "3.14159"},
        {1, "s", "text"},
        {1, "s|base|hex", "text"},  // attributes are ignored here
        {1, "s|odd", "text"},
        {3, "i", "255"},
        {3, "i|base|hex", "0x00ff"},
        {3, "s", "0"},
        {4, "d", "3.14"},
        {4, "d|precision|4", "3.1416"},
        {7, "m|precision|1", "1.5"},
        {8, "m|precision|1", "KB"},
        {9, "m", "1.536"},
        {10, "m", "k"},
        {10, "i", ""},
        {11, "t", "1 dy 1 hr 1 min 1.25 sec"},
        {11, "t|short_form|true", "1d 1h 1m 1.25s"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.type) + " " + c.data);
        EXPECT_EQ(c.text, item(c.type, c.data).as_string(args));
    }
}

TEST(MessageItem, ShowsReservedAndUnknownTypesAsInvalid) {
    const varg_list args(argument("n", 1));
    for (unsigned int type : {2u, 5u, 6u, 12u, 13u, 100u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        EXPECT_EQ("?invalid?", item(type, "n").as_string(args)) << type;
        EXPECT_EQ(type, static_cast<unsigned int>(item(type, "n").type()));
    }
}

TEST(MessageItem, ShowsAMissingArgumentAsInvalid) {
    const varg_list args(argument("name", 1));
    for (unsigned int type = 1; type <= 12; ++type)
        for (const char* data : {"other", "Name", "NAME", "nam", "name ", "other|base|hex"})
            EXPECT_EQ("?invalid?", item(type, data).as_string(args)) << type << " " << data;
}

TEST(MessageItem, ShowsAnInvalidFormatAsInvalid) {
    const varg_list args(argument("n", 255));
    const struct {
        unsigned int type;
        const char* data;
    } cases[] = {
        {3, "n|base"},
        {3, "n|base|x"},
        {3, "n|fieldsize|2"},
        {4, "n|x|1"},
        {7, "n|x|1"},
        {7, "n|target_unit|any"},
        {8, "n|target_unit|any"},
        {9, "n|base_unit|kilo"},
        {10, "n|base_unit|kilo"},
        {11, "n|fieldsize|2"},
    };
    for (const auto& c : cases)
        EXPECT_EQ("?invalid?", item(c.type, c.data).as_string(args)) << c.type << " " << c.data;
}

TEST(MessageItem, ShowsANumberThatLooksLikeTheMarkerAsInvalid) {
    const varg_list args(argument("n", -0.3), argument("text", "-0"));
    EXPECT_EQ("?invalid?", item(4, "n|precision|0").as_string(args));
    EXPECT_EQ("-0.3", item(4, "n|precision|1").as_string(args));
    EXPECT_EQ(" -0", item(4, "n|precision|0|fieldsize|3").as_string(args));
    EXPECT_EQ("-0", item(1, "text").as_string(args));
    EXPECT_EQ("-0 sec", item(11, "n|precision|0").as_string(args));
    EXPECT_EQ("-0 sec", item(11, "n|precision||short_form|false").as_string(args));
}

TEST(MessageItem, ShowsANamedNilAsAnEmptyStringAndAsTheNumber0) {
    const varg_list args(argument("n", variant()));
    EXPECT_EQ("", item(1, "n").as_string(args));
    EXPECT_EQ("0", item(3, "n").as_string(args));
    EXPECT_EQ("0.00", item(4, "n").as_string(args));
    EXPECT_EQ("0.00 sec", item(11, "n").as_string(args));
}

TEST(MessageItem, UsesTheFirstArgumentWithAName) {
    varg_list args(argument("n", 1), argument("m", 2));
    args[1].name("n");
    EXPECT_EQ("1", item(1, "n").as_string(args));
    EXPECT_EQ("1", item(3, "n").as_string(args));
}

TEST(MessageItem, FindsTheFirstUnnamedArgumentByTheEmptyName) {
    const varg_list args(argument("n", 1), argument(variant(255)));
    EXPECT_EQ("255", item(1, "").as_string(args));
    EXPECT_EQ("0x00ff", item(3, "|base|hex").as_string(args));
    EXPECT_EQ("?invalid?", item(1, "").as_string(varg_list(argument("n", 1))));
}

TEST(MessageItem, FindsAnArgumentByALongName) {
    const std::string name(100, 'n');
    const varg_list args(argument(ustring8(name), 255));
    EXPECT_EQ("0x00ff", item(3, name + "|base|hex").as_string(args));
    EXPECT_EQ("255", item(1, name).as_string(args));
    EXPECT_EQ("?invalid?", item(1, name + "n").as_string(args));
}

// Names are compared eight bytes at a time, and what is after the end of a string doesn't count.
TEST(MessageItem, FindsAnArgumentByANameOfAnyLength) {
    const std::string letters("abcdefghijklmnopqrstuvwxyz0123456789");
    for (std::size_t size = 0; size <= 34; ++size) {
        SCOPED_TRACE(size);
        ustring8 shortened(letters);
        shortened.replace(size, 1, "\x01");
        shortened.resize(size);
        varg_list args;
        for (std::size_t other = 1; other <= letters.size(); ++other)
            if (other != size)
                args.push_back(argument(ustring8(letters.substr(0, other)), 1));
        if (size != 0) {
            std::string last_differs = letters.substr(0, size);
            last_differs.back() = '?';
            args.push_back(argument(ustring8(last_differs), 2));
        }
        const message_item plain(shortened, message_item::type_int);
        const message_item formatted(shortened + "\x01"
                                                 "base\x01"
                                                 "hex",
                                     message_item::type_int);
        EXPECT_EQ(shortened, formatted.name());
        EXPECT_EQ("?invalid?", plain.as_string(args));
        EXPECT_EQ("?invalid?", formatted.as_string(args));

        args.push_back(argument(shortened, 255));
        EXPECT_EQ("255", plain.as_string(args));
        EXPECT_EQ("0x00ff", formatted.as_string(args));
    }
}

}  // namespace
