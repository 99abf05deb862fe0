// Tests which of several translations is kept, within a load and between loads.
#include <tova/i18n/_private/xmc_file_loader.hpp>

#include "i18n/_private/loader_support.hpp"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using test_support::combined;
using test_support::loaded_catalogs;
using test_support::text_of;
using tova::i18n::catalog_t;
using tova::i18n::message_item;
using tova::i18n::message_t;
using tova::i18n::_private::xmc_file_loader;

// A message with one text item, or with none for the empty string.
message_t message(const std::string& key, const std::string& locale, const std::string& text) {
    std::vector<message_item> text_items;
    if (!text.empty())
        text_items.push_back(message_item(text));
    message_t result(key, text_items);
    result._orginal_locale(locale);
    return result;
}

TEST(SetMessage, StoresTheMessageOfHigherWeightAndKeepsTheFirstOnATie) {
    xmc_file_loader loader;
    loader.handle_language("de");
    loader.set_message(message("k", "en", "1"), "c");
    loader.set_message(message("k", "en", "2"), "c");
    EXPECT_EQ("1", text_of(combined(loader), "c", "k"));
    loader.set_message(message("k", "de", "3"), "c");
    EXPECT_EQ("3", text_of(combined(loader), "c", "k"));
    loader.set_message(message("k", ".", "4"), "c");
    loader.set_message(message("k", "unknown", "5"), "c");
    EXPECT_EQ("3", text_of(combined(loader), "c", "k"));
}

TEST(SetMessage, StoresAMessageOfAnUnknownLocaleIfThereIsNone) {
    xmc_file_loader loader;
    loader.set_message(message("k", "xx", "1"), "c");
    loader.set_message(message("k", "yy", "2"), "c");
    EXPECT_EQ("1", text_of(combined(loader), "c", "k"));
}

TEST(CombineData, AddsCatalogsAndReturnsTheNumberOfMessagesStored) {
    xmc_file_loader loader;
    loader.handle_language("en");
    loader.set_message(message("k", "en", "1"), "c");
    loader.set_message(message("l", "en", "2"), "c");
    loader.set_message(message("k", "en", "3"), "d");
    loaded_catalogs target;
    EXPECT_EQ(3u, loader.combine_data(target, {{"a", "b"}}));
    ASSERT_EQ(2u, target.size());
    EXPECT_EQ("c", std::string(target.at("c")->name()));
    EXPECT_EQ("2", text_of(target, "c", "l"));
    EXPECT_EQ("3", text_of(target, "d", "k"));
    EXPECT_TRUE(target.at("c")->allocated);
    EXPECT_EQ(1u, target.at("c")->count);
}

TEST(CombineData, ReplacesAMessageWithALaterOneOfTheSameWeight) {
    loaded_catalogs target;
    for (const char* text : {"1", "2"}) {
        xmc_file_loader loader;
        loader.handle_language("en");
        loader.set_message(message("k", "en", text), "c");
        EXPECT_EQ(1u, loader.combine_data(target, {}));
        EXPECT_EQ(text, text_of(target, "c", "k"));
    }
}

TEST(CombineData, KeepsAStoredMessageOfHigherWeight) {
    xmc_file_loader german;
    german.handle_language("de");
    german.set_message(message("k", "de", "deutsch"), "c");
    loaded_catalogs target = combined(german);

    xmc_file_loader again;
    again.handle_language("de");
    again.set_message(message("k", "en", "english"), "c");
    EXPECT_EQ(0u, again.combine_data(target, {}));
    EXPECT_EQ("deutsch", text_of(target, "c", "k"));
}

TEST(CombineData, RanksTheStoredLocaleByTheNewList) {
    xmc_file_loader german;
    german.handle_language("de");
    german.set_message(message("k", "de", "deutsch"), "c");
    loaded_catalogs target = combined(german);

    xmc_file_loader french;
    french.handle_language("fr");
    french.set_message(message("k", ".", "neutral"), "c");
    EXPECT_EQ(1u, french.combine_data(target, {}));
    EXPECT_EQ("neutral", text_of(target, "c", "k"));
}

TEST(CombineData, TreatsAStoredNilMessageAsAbsent) {
    xmc_file_loader nil;
    nil.handle_language("de");
    nil.set_message(message("", "de", ""), "c");
    loaded_catalogs target = combined(nil);
    ASSERT_EQ(1u, target.at("c")->size());

    xmc_file_loader loader;
    loader.handle_language("de");
    loader.set_message(message("", "en", "english"), "c");
    EXPECT_EQ(1u, loader.combine_data(target, {}));
    EXPECT_EQ("english", text_of(target, "c", ""));
}

TEST(CombineData, SetsTheNameOfAPresentCatalog) {
    loaded_catalogs target;
    catalog_t present;
    target.insert(std::make_pair("c", &present));
    xmc_file_loader loader;
    loader.set_message(message("k", "en", "1"), "c");
    EXPECT_EQ(1u, loader.combine_data(target, {}));
    EXPECT_EQ("c", std::string(present.name()));
    EXPECT_EQ(1u, present.size());
    target.clear();
}

TEST(CombineData, ThrowsACharacterArrayForAnEntryWithoutACatalog) {
    loaded_catalogs target;
    target["c"];
    xmc_file_loader loader;
    loader.set_message(message("k", "en", "1"), "c");
    try {
        loader.combine_data(target, {});
        FAIL() << "nothing thrown";
    } catch (const char* text) {
        EXPECT_STREQ("unreferanced object", text);
    }
}

TEST(CombineData, DoesNotChangeOtherCatalogs) {
    loaded_catalogs target;
    target["other"];  // empty, but not accessed
    xmc_file_loader loader;
    EXPECT_EQ(0u, loader.combine_data(target, {}));
    loader.set_message(message("k", "en", "1"), "c");
    EXPECT_EQ(1u, loader.combine_data(target, {}));
    EXPECT_EQ(2u, target.size());
}

}  // namespace
