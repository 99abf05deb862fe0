// Tests the plural categories, and the messages that they select.
#include <tova/extras/plural.hpp>

#include "support/guide.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

namespace {

using tova::extras::check_error;
using tova::extras::plural_category;
using tova::extras::plural_number;
using tova::extras::plural_rules;
using tova::extras::plural_type;
namespace extras = tova::extras;

std::string category(const char* locale, const plural_number& number) {
    return extras::name(extras::plural(locale, number));
}
std::string ordinal(const char* locale, const plural_number& number) {
    return extras::name(extras::plural(locale, number, plural_type::ordinal));
}

std::string operands(const plural_number& number) {
    std::ostringstream out;
    out << number.i() << ' ' << number.v() << ' ' << number.w() << ' ' << number.f() << ' '
        << number.t() << ' ' << number.c();
    return out.str();
}

TEST(ExtrasPluralNumber, HasTheOperandsOfTheVisibleDigits) {
    const struct {
        const char* text;
        const char* operands;  // i v w f t c
    } cases[] = {
        {"1", "1 0 0 0 0 0"},
        {"-1", "1 0 0 0 0 0"},
        {"1.0", "1 1 0 0 0 0"},
        {"1.00", "1 2 0 0 0 0"},
        {"1.3", "1 1 1 3 3 0"},
        {"1.30", "1 2 1 30 3 0"},
        {"1.03", "1 2 2 3 3 0"},
        {"1.230", "1 3 2 230 23 0"},
        {"1200000", "1200000 0 0 0 0 0"},
        {"1.2c6", "1200000 0 0 0 0 6"},
        {"123c6", "123000000 0 0 0 0 6"},
        {"123c5", "12300000 0 0 0 0 5"},
        {"1200.50", "1200 2 1 50 5 0"},
        {"1.20050c3", "1200 2 1 50 5 3"},
        {"1e3", "1000 0 0 0 0 3"},
        {"007", "7 0 0 0 0 0"},
        {"1234567890123456789012", "1567890123456789012 0 0 0 0 0"},
    };
    for (const auto& c : cases) {
        const auto number = plural_number::from_string(c.text);
        ASSERT_TRUE(number.has_value()) << c.text;
        EXPECT_EQ(c.operands, operands(*number)) << c.text;
    }
}

TEST(ExtrasPluralNumber, RejectsEverythingElseWithItsPosition) {
    const struct {
        const char* text;
        check_error error;
        unsigned long position;
    } cases[] = {
        {"", check_error::empty, 0},        {"-", check_error::incomplete, 1},
        {"x", check_error::invalid, 0},     {".5", check_error::invalid, 0},
        {"1.", check_error::incomplete, 2}, {"1.2.3", check_error::invalid, 3},
        {"1,5", check_error::invalid, 1},   {"1c", check_error::incomplete, 2},
        {"1cx", check_error::invalid, 2},   {"1c2000", check_error::out_of_range, 5},
        {"1 ", check_error::invalid, 1},    {"+-1", check_error::invalid, 1},
    };
    for (const auto& c : cases) {
        const auto number = plural_number::from_string(c.text);
        EXPECT_EQ(c.error, number.code()) << c.text;
        EXPECT_EQ(c.position, number.position()) << c.text;
    }
}

TEST(ExtrasPluralNumber, AcceptsEveryArithmeticType) {
    EXPECT_EQ("3 0 0 0 0 0", operands(static_cast<signed char>(-3)));
    EXPECT_EQ("200 0 0 0 0 0", operands(static_cast<unsigned char>(200)));
    EXPECT_EQ("1223372036854775808 0 0 0 0 0", operands(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ("1446744073709551615 0 0 0 0 0", operands(std::numeric_limits<std::uint64_t>::max()));
    EXPECT_EQ("1 0 0 0 0 0", operands(1.0));
    EXPECT_EQ("0 1 1 1 1 0", operands(0.1));
    EXPECT_EQ("0 3 3 25 25 0", operands(-0.025));
    EXPECT_EQ("1500 0 0 0 0 0", operands(1.5e3));
    EXPECT_EQ("0 0 0 0 0 0", operands(0.0));
    EXPECT_EQ("1 2 0 0 0 0", operands(plural_number::fixed(1, 2)));
    EXPECT_EQ("2 0 0 0 0 0", operands(plural_number::fixed(1.5, 0)));
    EXPECT_EQ("1 2 1 50 5 0", operands(plural_number::fixed(-1.5, 2)));
    EXPECT_EQ("1000000000000000000 0 0 0 0 0", operands(1e300));
    EXPECT_FALSE(plural_number(std::numeric_limits<double>::infinity()).is_finite());
    EXPECT_FALSE(plural_number::fixed(std::numeric_limits<double>::quiet_NaN(), 2).is_finite());
    EXPECT_EQ("other", category("en", std::numeric_limits<double>::quiet_NaN()));
}

TEST(ExtrasPlural, ChoosesTheCategoryOfTheLanguage) {
    const struct {
        const char* locale;
        const char* categories;  // of 0, 1, 2, 3, 5, 11, 21, 100 and 1.5
    } cases[] = {
        {"en", "other one other other other other other other other "},
        {"fr", "one one other other other other other other one "},
        {"ja", "other other other other other other other other other "},
        {"pl", "many one few few many many many many other "},
        {"ru", "many one few few many many one many other "},
        {"ar", "zero one two few few many many other other "},
        {"cy", "zero one two few other other other other other "},
        {"lv", "zero one other other other zero one zero other "},
        {"xx", "other other other other other other other other other "},
    };
    for (const auto& c : cases) {
        std::string found;
        for (const plural_number& number :
             {plural_number(0), plural_number(1), plural_number(2), plural_number(3),
              plural_number(5), plural_number(11), plural_number(21), plural_number(100),
              plural_number(1.5)})
            found += category(c.locale, number) + " ";
        EXPECT_EQ(c.categories, found) << c.locale;
    }
    EXPECT_EQ("one two few other other one two other",
              ordinal("en", 1) + " " + ordinal("en", 2) + " " + ordinal("en", 3) + " " +
                  ordinal("en", 4) + " " + ordinal("en", 11) + " " + ordinal("en", 21) + " " +
                  ordinal("en", 22) + " " + ordinal("en", 112));
}

TEST(ExtrasPlural, DependsOnTheVisibleDigits) {
    EXPECT_EQ("one", category("en", 1));
    EXPECT_EQ("one", category("en", 1.0));
    EXPECT_EQ("other", category("en", plural_number::fixed(1, 1)));
    EXPECT_EQ("other", category("fr", 1000001));
    EXPECT_EQ("many", category("fr", 1000000));
    EXPECT_EQ("many", category("fr", *plural_number::from_string("1.5c6")));
    EXPECT_EQ("other", category("fr", 1500000));
}

TEST(ExtrasPlural, FindsTheRulesOfTheNearestParent) {
    const struct {
        const char* locale;
        const char* rules;
    } cases[] = {
        {"de_AT", "de"},       {"DE-at", "de"},           {"pt", "pt"},
        {"pt_BR", "pt"},       {"pt_PT", "pt_PT"},        {"PT-pt", "pt_PT"},
        {"pt_AO", "pt_PT"},    {"pt.PT", "pt_PT"},        {"pt_PT.UTF-8", "pt_PT"},
        {"sr_RS@latin", "sr"}, {"zh-Hant-TW", "zh"},      {"ZH-hANT-tw", "zh"},
        {"bs_Cyrl", "bs"},     {"hi_Latn", "en"},         {"", "root"},
        {"root", "root"},      {"nobody_speaks", "root"}, {"_", "root"},
        {"@euro", "root"},     {"\xFF", "root"},
    };
    for (const auto& c : cases)
        EXPECT_STREQ(c.rules, plural_rules(c.locale).locale()) << c.locale;
    EXPECT_STREQ("pt", plural_rules("pt_PT", plural_type::ordinal).locale());
}

// Both ends of every range in CLDR's own samples, including compact forms.
TEST(ExtrasPlural, AgreesWithTheSamplesOfItsRules) {
    std::ifstream file(TOVA_TEST_DATA "/extras/plural_samples.txt");
    std::string line;
    ASSERT_TRUE(std::getline(file, line));
    unsigned count = 0;
    while (std::getline(file, line)) {
        std::istringstream fields(line);
        std::string kind, locales, expected, numbers;
        std::getline(fields, kind, '\t');
        std::getline(fields, locales, '\t');
        std::getline(fields, expected, '\t');
        std::getline(fields, numbers);
        std::istringstream list(locales);
        for (std::string locale; list >> locale;) {
            const plural_rules rules(locale, kind == "ordinal" ? plural_type::ordinal
                                                               : plural_type::cardinal);
            EXPECT_EQ(locale, rules.locale());
            std::istringstream samples(numbers);
            for (std::string sample; samples >> sample; ++count)
                EXPECT_EQ(expected, extras::name(rules.category(
                                        plural_number::from_string(sample).value_or_raise())))
                    << kind << ' ' << locale << ' ' << sample;
        }
    }
    EXPECT_EQ(6966u, count);
    // ./run prove reads this line.
    if (!HasFailure())
        std::printf("CLDR's samples: %u compared, 0 unexplained\n", count);
}

// --- Messages ------------------------------------------------------------------------------------

class ExtrasPluralMessage : public ::testing::Test {
protected:
    void load(const char* locale) {
        std::ofstream(m_directory.path() + "/app.xmc") << R"(<?xml version="1.0"?>
<xmc version="1.1">
  <catalog name="app" lang="en">
    <msg name="files.one">one file</msg>
    <msg name="files.other"><arg name="n"/> files</msg>
    <msg name="days.one">a day</msg>
    <msg name="days.other"><arg name="n"/> days</msg>
    <msg name="place.one"><arg name="n"/>st</msg>
    <msg name="place.two"><arg name="n"/>nd</msg>
    <msg name="place.few"><arg name="n"/>rd</msg>
    <msg name="place.other"><arg name="n"/>th</msg>
    <msg name="sheep"><arg name="n"/> sheep</msg>
    <msg name="oxen"><arg name="n"/> oxen</msg>
    <msg name="oxen.one">one ox</msg>
    <msg name="items@cart.other"><arg name="n"/> items in the cart</msg>
    <msg name="items.other"><arg name="n"/> items</msg>
    <msg name="open">Open</msg>
    <msg name="open@door">It is open.</msg>
  </catalog>
  <catalog name="app" lang="pl">
    <msg name="files.one">jeden plik</msg>
    <msg name="files.few"><arg name="n"/> pliki</msg>
    <msg name="files.many"><arg name="n"/> plików</msg>
    <msg name="files.other"><arg name="n"/> pliku</msg>
    <msg name="sheep.other"><arg name="n"/> owiec</msg>
  </catalog>
</xmc>
)";
        ASSERT_EQ(tova::i18n::message_catalogs::no_error,
                  m_catalogs.load(m_directory.path(), locale).type);
    }

    std::string text(const char* key, const plural_number& number, const char* shown,
                     plural_type type = plural_type::cardinal) const {
        return extras::plural_message(m_catalogs, "app", key, number, type)
            .as_string(tova::generic::varg_list(tova::generic::argument("n", shown)));
    }

    tova::i18n::message_catalogs m_catalogs;

private:
    test_support::temporary_directory m_directory;
};

TEST_F(ExtrasPluralMessage, HasTheFormOfItsLanguage) {
    load("pl_PL");
    EXPECT_EQ("jeden plik", text("files", 1, "1"));
    EXPECT_EQ("3 pliki", text("files", 3, "3"));
    EXPECT_EQ("5 plików", text("files", 5, "5"));
    EXPECT_EQ("1.5 pliku", text("files", 1.5, "1.5"));
}

TEST_F(ExtrasPluralMessage, FollowsTheRulesOfTheFallbackLanguage) {
    load("pl");
    EXPECT_EQ("a day", text("days", 1, "1"));
    EXPECT_EQ("3 days", text("days", 3, "3"));
    EXPECT_EQ("21st", text("place", 21, "21", plural_type::ordinal));
}

TEST_F(ExtrasPluralMessage, FallsBackToOtherAndThenToTheKey) {
    load("en");
    EXPECT_EQ("1 sheep", text("sheep", 1, "1"));
    EXPECT_EQ("one ox", text("oxen", 1, "1"));
    EXPECT_EQ("2 oxen", text("oxen", 2, "2"));
    EXPECT_EQ("1 items", text("items", 1, "1"));
    EXPECT_EQ("", text("nothing", 1, "1"));
    EXPECT_TRUE(extras::plural_message(m_catalogs, "no_such", "files", 1) == tova::types::nil);
}

TEST_F(ExtrasPluralMessage, UsesNoFormOfAnotherLanguage) {
    load("pl");
    EXPECT_EQ("1 owiec", text("sheep", 1, "1"));
    m_catalogs.erase();
    load("pl");
    EXPECT_EQ("one ox", text("oxen", 1, "1"));
    EXPECT_EQ("3 oxen", text("oxen", 3, "3"));
}

TEST_F(ExtrasPluralMessage, ForAContextFallsBackToThePlainKey) {
    load("en");
    EXPECT_EQ("2 items in the cart", text(extras::in_context("items", "cart").c_str(), 2, "2"));
    EXPECT_EQ("2 items", text("items@shelf", 2, "2"));
    EXPECT_EQ("one file", text("files@trash@full", 1, "1"));
    const tova::generic::varg_list none;
    const auto open = [&](const char* key) {
        return extras::context_message(m_catalogs, "app", key).as_string(none);
    };
    EXPECT_EQ("It is open.", open("open@door"));
    EXPECT_EQ("Open", open("open@menu"));
    EXPECT_EQ("Open", open("open"));
    EXPECT_EQ("", open("closed@door"));
}

}  // namespace
