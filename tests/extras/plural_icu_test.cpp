// Compares the plural rules with those of ICU: every locale, the numbers 0 to 10,000, fractions and
// compact forms. Our data come from CLDR 41, and those of ICU 72 from CLDR 42. The differences are
// listed.
#include <tova/extras/plural.hpp>

#include <gtest/gtest.h>
#include <unicode/locid.h>
#include <unicode/numberformatter.h>
#include <unicode/plurrule.h>
#include <unicode/uversion.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using tova::extras::plural_number;
using tova::extras::plural_rules;
using tova::extras::plural_type;

// Each number as displayed digits and as an ICU value.
struct sample {
    plural_number ours;
    icu::number::FormattedNumber theirs;
};

std::vector<sample> fractions() {
    std::vector<sample> found;
    UErrorCode status = U_ZERO_ERROR;
    const auto add = [&](long thousandths, int digits) {
        std::string text = std::to_string(thousandths / 1000) + "." +
                           std::to_string(1000 + thousandths % 1000).substr(1, 3);
        text.resize(text.size() - static_cast<unsigned>(3 - digits));
        auto theirs = icu::number::NumberFormatter::withLocale(icu::Locale::getRoot())
                          .precision(icu::number::Precision::fixedFraction(digits))
                          .formatDecimal(text, status);
        found.push_back({plural_number::from_string(text).value_or_raise(), std::move(theirs)});
    };
    for (long tenths = 0; tenths <= 1100; ++tenths)
        add(tenths * 100, 1);
    for (long hundredths = 0; hundredths <= 1200; ++hundredths)
        add(hundredths * 10, 2);
    for (long thousandths = 0; thousandths <= 3000; thousandths += 7)
        add(thousandths, 3);
    for (long whole = 0; whole <= 2000; whole += 13) {
        add(whole * 1000, 1);
        add(whole * 1000 + 10, 2);
        add(whole * 1000 + 110, 3);
    }
    EXPECT_TRUE(U_SUCCESS(status));
    return found;
}

// Compact forms such as "1.2M": the exponent is an operand.
std::vector<sample> compact_forms() {
    std::vector<sample> found;
    UErrorCode status = U_ZERO_ERROR;
    const auto formatter = icu::number::NumberFormatter::withLocale(icu::Locale::getEnglish())
                               .notation(icu::number::Notation::compactShort())
                               .precision(icu::number::Precision::fixedFraction(1));
    for (const int exponent : {3, 6, 9, 12})
        for (int tenths = 10; tenths < 9990; tenths += 83) {
            const std::string text =
                std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
            found.push_back(
                {plural_number::from_string(text + "c" + std::to_string(exponent)).value_or_raise(),
                 formatter.formatDecimal(text + "e" + std::to_string(exponent), status)});
        }
    EXPECT_TRUE(U_SUCCESS(status));
    return found;
}

// The locales of both lists: those with plural rules and those with any data.
std::set<std::string> locales() {
    std::set<std::string> found;
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::StringEnumeration> with_rules(
        icu::PluralRules::getAvailableLocales(status));
    while (const char* locale = with_rules->next(nullptr, status))
        found.insert(locale);
    int count = 0;
    const icu::Locale* const all = icu::Locale::getAvailableLocales(count);
    for (int i = 0; i < count; ++i)
        found.insert(all[i].getName());
    EXPECT_TRUE(U_SUCCESS(status));
    return found;
}

std::string utf8(const icu::UnicodeString& text) {
    std::string result;
    return text.toUTF8String(result);
}

// The first number on which the rules differ, or the empty string.
std::string difference(const std::string& locale, plural_type type,
                       const std::vector<sample>& samples) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::PluralRules> theirs(icu::PluralRules::forLocale(
        icu::Locale(locale.c_str()),
        type == plural_type::cardinal ? UPLURAL_TYPE_CARDINAL : UPLURAL_TYPE_ORDINAL, status));
    const plural_rules ours(locale, type);
    EXPECT_TRUE(U_SUCCESS(status)) << locale;
    const icu::UnicodeString names[] = {"zero", "one", "two", "few", "many", "other"};
    const auto is_same = [&](const plural_number& number, const icu::UnicodeString& category) {
        return names[static_cast<int>(ours.category(number))] == category;
    };
    for (int number = 0; number <= 10000; ++number)
        if (!is_same(number, theirs->select(number)))
            return std::to_string(number) + " is " + utf8(theirs->select(number));
    for (const int number : {100000, 123456, 1000000, 1000001, 2000000, 2100000000})
        if (!is_same(number, theirs->select(number)))
            return std::to_string(number) + " is " + utf8(theirs->select(number));
    for (const sample& each : samples) {
        const icu::UnicodeString category = theirs->select(each.theirs, status);
        if (!is_same(each.ours, category))
            return utf8(each.theirs.toString(status)) + " is " + utf8(category);
    }
    EXPECT_TRUE(U_SUCCESS(status)) << locale;
    return "";
}

// `compared` becomes the number of comparisons; those after a difference do not take place.
std::vector<std::string> differences(plural_type type, std::size_t* compared) {
    std::vector<sample> samples = fractions();
    for (sample& each : compact_forms())
        samples.push_back(std::move(each));
    std::vector<std::string> found;
    for (const std::string& locale : locales()) {
        const std::string where = difference(locale, type, samples);
        if (!where.empty())
            found.push_back(locale + ": " + where);
        else
            *compared += 10001 + 6 + samples.size();
    }
    return found;
}

// Both lists are sorted. ./run prove reads the line that is printed.
void expect_differences(const char* what, const std::vector<std::string>& expected,
                        plural_type type) {
    std::size_t compared = 0;
    const std::vector<std::string> found = differences(type, &compared);
    EXPECT_EQ(expected, found);
    std::vector<std::string> unexplained;
    std::set_symmetric_difference(expected.begin(), expected.end(), found.begin(), found.end(),
                                  std::back_inserter(unexplained));
    std::printf("ICU's %s: %zu compared, %zu listed differences, %zu unexplained\n", what, compared,
                expected.size(), unexplained.size());
}

TEST(PluralRulesAndIcu, HaveManyLocalesToCompare) {
    EXPECT_GT(locales().size(), 800u);
    EXPECT_GT(fractions().size() + compact_forms().size(), 3500u);
}

// CLDR 42 changed the rules of six languages; iw and mo are old codes of two of them. Each of the
// other locales uses the rules of its parent here, but in ICU the rules of its name without the
// last part: Portuguese outside Brazil follows Portugal, and Hindi in Latin script follows English.
TEST(PluralRulesAndIcu, AgreeOnCardinals) {
    if (U_ICU_VERSION_MAJOR_NUM != 72)
        GTEST_SKIP() << "the differences are listed for ICU 72";
    const std::vector<std::string> expected = {
        "ca: 1000000 is many",    "ca_AD: 1000000 is many", "ca_ES: 1000000 is many",
        "ca_FR: 1000000 is many", "ca_IT: 1000000 is many", "he: 20 is other",
        "he_IL: 20 is other",     "hi_Latn: 0 is one",      "hi_Latn_IN: 0 is one",
        "is: 0.2 is other",       "is_IS: 0.2 is other",    "iw: 20 is other",
        "mo: 101 is few",         "mt: 2 is two",           "mt_MT: 2 is two",
        "pt_AO: 0 is one",        "pt_CH: 0 is one",        "pt_CV: 0 is one",
        "pt_GQ: 0 is one",        "pt_GW: 0 is one",        "pt_LU: 0 is one",
        "pt_MO: 0 is one",        "pt_MZ: 0 is one",        "pt_ST: 0 is one",
        "pt_TL: 0 is one",        "ro: 101 is few",         "ro_MD: 101 is few",
        "ro_RO: 101 is few",      "vec: 1 is one"};
    expect_differences("cardinals", expected, plural_type::cardinal);
}

TEST(PluralRulesAndIcu, AgreeOnOrdinals) {
    if (U_ICU_VERSION_MAJOR_NUM != 72)
        GTEST_SKIP() << "the differences are listed for ICU 72";
    const std::vector<std::string> expected = {"hi_Latn: 3 is two", "hi_Latn_IN: 3 is two",
                                               "vec: 8 is many"};
    expect_differences("ordinals", expected, plural_type::ordinal);
}

}  // namespace
