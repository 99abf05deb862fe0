// Which bytes make a name is told by the C library, in whatever locale the program has chosen.
//
// This program puts its own classes in the place of the C library's: they are those of the C locale
// with one letter more, as an 8-bit character set has.
#include <tova/parser/xml_parser.hpp>

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tova/functor/member_function.hpp>

namespace {

const int letter = -28;  // the byte 0xE4 as a plain char

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
    return value == letter || is_ascii_letter(value) || (value >= '0' && value <= '9');
}

namespace {

using TOVA_2_18::parser::xml_parser;
using TOVA_2_18::strings::ustring8;
using parse_error = xml_parser::parse_error;

class names {
public:
    void add(ustring8 const& name) { all += name + " "; }
    std::string all;
};

TEST(XmlCharacterClasses, MakeALetterOfTheLocaleAPartOfNames) {
    names starts;
    xml_parser parser;
    parser.on_element_start =
        TOVA_2_18::functor::member_function_t<names, void(ustring8 const&)>(&starts, &names::add);
    EXPECT_EQ(parse_error::no_error, parser.parse("<?xml?><\xE4><b\xE4_1/></\xE4>").type);
    EXPECT_EQ("\xE4 b\xE4_1 ", starts.all);

    const parse_error other = parser.parse("<?xml?><\xE5/>");
    EXPECT_EQ(parse_error::unexpected_character, other.type);
    EXPECT_EQ("\xE5", other.text);
    const parse_error behind = parser.parse("<?xml?><a\xE5/>");
    EXPECT_EQ(parse_error::unexpected_character, behind.type);
    EXPECT_EQ("\xE5", behind.text);
}

TEST(XmlCharacterClasses, AreAskedForPlainCharacters) {
    asked.clear();
    xml_parser parser;
    for (int byte = 0; byte < 256; ++byte)
        parser.parse("<?xml?><" + ustring8(1, static_cast<char>(byte)) + "/>");
    EXPECT_NE(0, std::count(asked.begin(), asked.end(), letter));
    for (const int value : asked)
        EXPECT_TRUE(value >= -128 && value <= 127) << value;
}

}  // namespace
