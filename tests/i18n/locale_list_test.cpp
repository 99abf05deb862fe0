// Tests the locale list of a load through the operations of the loader.
#include <tova/i18n/_private/xmc_file_loader.hpp>

#include "i18n/_private/loader_support.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using test_support::catalog;
using test_support::load;
using test_support::msg;
using test_support::text_of;
using test_support::xmc;
using tova::i18n::_private::xmc_file_loader;

// The weights of some locales for a requested locale, separated by spaces: "en=2" and so on.
std::vector<std::string> locale_list(const std::string& wanted, const std::string& candidates) {
    xmc_file_loader loader;
    loader.handle_language(wanted);
    std::vector<std::string> weights;
    std::string name;
    for (const char c : candidates + " ") {
        if (c != ' ') {
            name += c;
            continue;
        }
        weights.push_back(name + "=" + std::to_string(loader.get_locale_weight(name)));
        name.clear();
    }
    return weights;
}

TEST(LocaleList, PutsSpecificLocalesAfterGeneralOnes) {
    using ::testing::ElementsAre;
    EXPECT_THAT(locale_list("de_DE.UTF-8", ". en de de_DE de_DE_UTF de_DE_UTF_8"),
                ElementsAre(".=1", "en=2", "de=3", "de_DE=4", "de_DE_UTF=5", "de_DE_UTF_8=6"));
    EXPECT_THAT(locale_list("en_GB", ". en en_GB de"),
                ElementsAre(".=1", "en=2", "en_GB=3", "de=0"));
    EXPECT_THAT(locale_list("en", ". en"), ElementsAre(".=1", "en=2"));
    EXPECT_THAT(locale_list("de_AT", "de de_AT de_DE EN En d"),
                ElementsAre("de=3", "de_AT=4", "de_DE=0", "EN=0", "En=0", "d=0"));
    EXPECT_THAT(locale_list("de", "de de_DE"), ElementsAre("de=3", "de_DE=0"));
}

TEST(LocaleList, HasOnlyTheTwoFallbacksForTheEmptyLocale) {
    xmc_file_loader loader;
    loader.handle_language("");
    EXPECT_EQ(1u, loader.get_locale_weight("."));
    EXPECT_EQ(2u, loader.get_locale_weight("en"));
    EXPECT_EQ(0u, loader.get_locale_weight(""));
}

TEST(LocaleList, IsInitiallyEmpty) {
    xmc_file_loader loader;
    EXPECT_EQ(0u, loader.get_locale_weight("."));
    EXPECT_EQ(0u, loader.get_locale_weight("en"));
    EXPECT_FALSE(loader.is_lang_id_good("en"));
}

TEST(LocaleList, GrowsAndUsesTheFirstOfEqualEntries) {
    xmc_file_loader loader;
    loader.handle_language("de");  // . en de
    loader.handle_language("fr");  // . en fr
    EXPECT_EQ(1u, loader.get_locale_weight("."));
    EXPECT_EQ(2u, loader.get_locale_weight("en"));
    EXPECT_EQ(3u, loader.get_locale_weight("de"));
    EXPECT_EQ(6u, loader.get_locale_weight("fr"));
}

TEST(LocaleList, ReadsDotsAndHyphensOfTheRequestedLocaleAsUnderscores) {
    xmc_file_loader loader;
    loader.handle_language("de-AT.utf8");
    for (const char* name : {"de_AT", "de-AT", "de.AT"})
        EXPECT_EQ(4u, loader.get_locale_weight(name)) << name;
    EXPECT_EQ(5u, loader.get_locale_weight("de.AT-utf8"));
    EXPECT_TRUE(loader.is_lang_id_good("de-AT"));
    EXPECT_FALSE(loader.is_lang_id_good("at"));
}

TEST(LocaleList, DoesNotChangeAOneByteLocale) {
    xmc_file_loader dot;
    dot.handle_language(".");  // . en .
    EXPECT_EQ(1u, dot.get_locale_weight("."));
    EXPECT_EQ(0u, dot.get_locale_weight("_"));

    xmc_file_loader hyphen;
    hyphen.handle_language("-");
    EXPECT_EQ(3u, hyphen.get_locale_weight("-"));
    EXPECT_EQ(0u, hyphen.get_locale_weight("_"));
}

TEST(LocaleList, KeepsAnEmptyPartAsAnEntry) {
    xmc_file_loader underscore;
    underscore.handle_language("_");  // . en and the empty string
    EXPECT_EQ(3u, underscore.get_locale_weight(""));

    xmc_file_loader doubled;
    doubled.handle_language("de__AT");
    EXPECT_EQ(4u, doubled.get_locale_weight("de_"));
    EXPECT_EQ(5u, doubled.get_locale_weight("de__AT"));
    EXPECT_EQ(0u, doubled.get_locale_weight("de_AT"));

    // Then a catalog without a locale is read.
    EXPECT_EQ("x", text_of(load(xmc("<catalog name=\"c\"><msg name=\"k\">x</msg></catalog>"), "_"),
                           "c", "k"));
}

TEST(LocaleList, StartsNoEntryAfterATrailingSeparator) {
    xmc_file_loader loader;
    loader.handle_language("de_");
    EXPECT_EQ(3u, loader.get_locale_weight("de"));
    EXPECT_EQ(0u, loader.get_locale_weight("de_"));
}

}  // namespace
