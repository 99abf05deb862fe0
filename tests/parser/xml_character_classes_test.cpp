// The C library decides which bytes may occur in names, in the locale that the program has chosen.
//
// This program replaces the C library's classes with its own: those of the C locale plus one
// letter, as in an 8-bit character set, and a digit that is no digit in ASCII.
#include <tova/parser/xml_parser.hpp>

#include <tova/functor/member_function.hpp>
#include <tova/parser/xml_stream_parser.hpp>

#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

const int letter = -28;  // the byte 0xE4 as a plain char
const int digit = '$';

std::vector<int> asked;

bool is_ascii_letter(int value) {
    return (value >= 'a' && value <= 'z') || (value >= 'A' && value <= 'Z');
}

}  // namespace

extern "C" int isalpha(int value) {
    asked.push_back(value);
    return value == letter || is_ascii_letter(value);
}

extern "C" int isalnum(int value) {
    asked.push_back(value);
    return value == letter || value == digit || is_ascii_letter(value) ||
           (value >= '0' && value <= '9');
}

namespace {

using tova::parser::xml_parser;
using tova::strings::ustring8;
using parse_error = xml_parser::parse_error;

class names {
public:
    void add(const ustring8& name) { all += name + " "; }
    std::string all;
};

TEST(XmlCharacterClasses, AllowALetterOfTheLocaleInNames) {
    names starts;
    xml_parser parser;
    parser.on_element_start =
        tova::functor::member_function_t<names, void(const ustring8&)>(&starts, &names::add);
    EXPECT_EQ(parse_error::no_error, parser.parse("<?xml?><\xE4><b\xE4_1/></\xE4>").type);
    EXPECT_EQ("\xE4 b\xE4_1 ", starts.all);

    const parse_error other = parser.parse("<?xml?><\xE5/>");
    EXPECT_EQ(parse_error::unexpected_character, other.type);
    EXPECT_EQ("\xE5", other.text);
    const parse_error continued = parser.parse("<?xml?><a\xE5/>");
    EXPECT_EQ(parse_error::unexpected_character, continued.type);
    EXPECT_EQ("\xE5", continued.text);
}

TEST(XmlCharacterClasses, DecideAboutASingleName) {
    const ustring8 text = "\xE4$1\xE4\xE5";
    xml_parser parser;
    auto cursor = text.begin();
    auto end = text.end();
    EXPECT_EQ("\xE4$1\xE4", parser.parse_name(cursor, end));
    cursor = text.begin() + 1;
    EXPECT_THROW(parser.parse_name(cursor, end), parse_error);
}

TEST(XmlCharacterClasses, AllowOtherBytesOfTheLocaleInNamesOfTheStreamParser) {
    const test_support::temporary_directory files;
    const ustring8 path(files.write(
        "log.xml",
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><r><$a$ $='1'/>           <b%/></r>"));
    tova::parser::xml_stream_parser log(path, 1);
    EXPECT_EQ(tova::parser::xml_stream_parser::syntax_error, log.parse());
    ASSERT_EQ(2u, log.node_queue_size());
    log.node_queue_pop();
    const auto element = log.node_queue_pop();
    EXPECT_EQ("$a$", element.name);
    ASSERT_EQ(1u, element.attributes.size());
    EXPECT_EQ("$", element.attributes.front().first);
}

TEST(XmlCharacterClasses, AreQueriedWithASignedPlainChar) {
    asked.clear();
    xml_parser parser;
    for (int byte = 0; byte < 256; ++byte)
        parser.parse("<?xml?><" + ustring8(1, static_cast<char>(byte)) + "/>");
    EXPECT_NE(0, std::count(asked.begin(), asked.end(), letter));
    for (const int value : asked)
        EXPECT_TRUE(value >= -128 && value <= 127) << value;
}

}  // namespace
