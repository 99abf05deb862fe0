#include <tova/i18n/catalog.hpp>

#include "i18n/message_text.hpp"
#include "support/widths.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

namespace {

namespace types = tova::types;
using namespace tova::strings;
using testing::ElementsAre;
using tova::generic::varg_list;
using tova::i18n::catalog_t;
using tova::i18n::message_item;
using tova::i18n::message_t;
using tova::memory::pointers::shared_pointer;

message_t message(const char* text, const char* locale = "") {
    message_t result("k", std::vector<message_item>{message_item(text)});
    result._orginal_locale(locale);
    return result;
}

std::string text_of(const message_t& message) {
    return message.as_string(varg_list());
}

std::vector<std::string> languages(const catalog_t& catalog) {
    return std::vector<std::string>(catalog.languages_begin(), catalog.languages_end());
}

TEST(Catalog, IsEmptyByDefaultWithoutHeapMarkOrHolders) {
    const catalog_t catalog;
    EXPECT_EQ("", catalog.name());
    EXPECT_EQ(0u, catalog.size());
    EXPECT_TRUE(catalog.begin() == catalog.end());
    EXPECT_TRUE(catalog.languages_begin() == catalog.languages_end());
    EXPECT_FALSE(catalog.allocated);
    EXPECT_EQ(0u, catalog.count);
    EXPECT_TRUE(catalog == types::nil);
}

TEST(Catalog, ReturnsACopyOfItsName) {
    catalog_t catalog;
    catalog._name("app");
    EXPECT_EQ("app", catalog.name());
    ustring8 copy = catalog.name();
    copy += "x";
    EXPECT_EQ("app", catalog.name());
    static_assert(!std::is_reference<decltype(catalog.name())>::value, "the name is a copy");
}

TEST(Catalog, ReplacesTheMessageOfAKeyInPlace) {
    catalog_t catalog;
    catalog.message("a", message("first"));
    const message_t* place = &catalog.message("a");
    catalog.message("a", message("second"));
    EXPECT_EQ(1u, catalog.size());
    EXPECT_EQ(place, &catalog.message("a"));
    EXPECT_EQ("second", text_of(catalog.message("a")));
}

TEST(Catalog, StoresAMessageUnderTheKeyAndNotUnderItsOwnName) {
    catalog_t catalog;
    catalog.message("key", message("text"));
    EXPECT_TRUE(catalog.has_message("key"));
    EXPECT_FALSE(catalog.has_message("k"));
    EXPECT_EQ("k", catalog.message("key").name());
}

TEST(Catalog, ListsItsMessagesInTheByteOrderOfTheirKeys) {
    catalog_t catalog;
    for (const char* key : {"b", "\xC3\xA9", "B", "", "a", "aa"})
        catalog.message(key, message(key));
    std::vector<std::string> keys;
    for (const auto& entry : catalog)
        keys.push_back(entry.first);
    EXPECT_THAT(keys, ElementsAre("", "B", "a", "aa", "b", "\xC3\xA9"));
    EXPECT_EQ(6u, catalog.size());
}

template <typename String>
class CatalogLookup : public ::testing::Test {};
TYPED_TEST_SUITE(CatalogLookup, test_support::all_widths, test_support::width_name);

TYPED_TEST(CatalogLookup, FindsExactlyTheKey) {
    catalog_t catalog;
    catalog.message("key", message("text"));
    EXPECT_EQ("text", text_of(catalog.message(test_support::text<TypeParam>("key"))));
    EXPECT_TRUE(catalog.has_message(test_support::text<TypeParam>("key")));
    for (const char* other : {"", "Key", "ke", "keys", "key "}) {
        const TypeParam key = test_support::text<TypeParam>(other);
        EXPECT_EQ(&catalog_t::m_nil_message, &catalog.message(key)) << other;
        EXPECT_FALSE(catalog.has_message(key)) << other;
    }
}

TYPED_TEST(CatalogLookup, ReadsDotAndDashOfALocaleAsUnderscore) {
    catalog_t catalog;
    catalog.message("k", message("text", "en_US"));
    for (const char* locale : {"en_US", "en-US", "en.US"})
        EXPECT_TRUE(catalog.is_language_loaded(test_support::text<TypeParam>(locale))) << locale;
    for (const char* locale : {"", "en", "en_us", "en__US", "en_US_", "_"})
        EXPECT_FALSE(catalog.is_language_loaded(test_support::text<TypeParam>(locale))) << locale;
}

TEST(Catalog, FindsKeysOutsideAsciiInEveryWidth) {
    catalog_t catalog;
    catalog.message("\xE2\x82\xAC\xF0\x9F\x98\x80", message("text", "\xE2\x82\xAC_a"));
    const ustring16 key16{0x20AC, 0xD83D, 0xDE00}, locale16{0x20AC, '-', 'a'};
    const ustring32 key32{0x20AC, 0x1F600}, locale32{0x20AC, '.', 'a'};
    EXPECT_TRUE(catalog.has_message(key16));
    EXPECT_TRUE(catalog.has_message(key32));
    EXPECT_EQ("text", text_of(catalog.message(key16)));
    EXPECT_EQ("text", text_of(catalog.message(key32)));
    EXPECT_TRUE(catalog.is_language_loaded(locale16));
    EXPECT_TRUE(catalog.is_language_loaded(locale32));
}

TEST(Catalog, LooksUpAnInvalidKeyByTheFailureStringOfItsConversion) {
    catalog_t catalog;
    catalog.message("-1", message("text"));
    EXPECT_TRUE(catalog.has_message(ustring16{0xD800}));
    EXPECT_TRUE(catalog.has_message(ustring32{0xD800}));
}

TEST(Catalog, DoesNotFindALocaleThatIsStoredWithDotOrDash) {
    catalog_t catalog;
    catalog.message("a", message("text", "de-DE"));
    catalog.message("b", message("text", "."));
    for (const char* locale : {"de-DE", "de_DE", "de.DE", ".", "_", "-"})
        EXPECT_FALSE(catalog.is_language_loaded(ustring8(locale))) << locale;
    catalog.message("c", message("text", "_"));
    for (const char* locale : {".", "_", "-"})
        EXPECT_TRUE(catalog.is_language_loaded(ustring8(locale))) << locale;
}

TEST(Catalog, ReturnsTheNilMessageForAnAbsentKey) {
    const catalog_t catalog;
    const message_t& absent = catalog.message("a");
    EXPECT_EQ(&catalog_t::m_nil_message, &absent);
    EXPECT_TRUE(absent == types::nil);
    EXPECT_EQ("", text_of(absent));
    EXPECT_EQ("", absent._orginal_locale());
}

TEST(Catalog, HasAMessageEvenIfItIsNil) {
    catalog_t catalog;
    catalog.message("", message_t());
    EXPECT_TRUE(catalog.has_message(""));
    EXPECT_TRUE(catalog.message("") == types::nil);
    EXPECT_NE(&catalog_t::m_nil_message, &catalog.message(""));
    EXPECT_TRUE(catalog != types::nil);
}

TEST(Catalog, ListsEachLocaleOnceIncludingTheEmptyOne) {
    catalog_t catalog;
    catalog.message("a", message("text", "en"));
    catalog.message("b", message("text", "de"));
    catalog.message("c", message("text", "en"));
    catalog.message("d", message("text", ""));
    EXPECT_THAT(languages(catalog), ElementsAre("", "de", "en"));
    EXPECT_TRUE(catalog.is_language_loaded(ustring8("")));
    EXPECT_TRUE(catalog.is_language_loaded(ustring8("de")));
    EXPECT_FALSE(catalog.is_language_loaded(ustring8("fr")));
}

TEST(Catalog, ClearsItsLocalesWhenAMessageIsStored) {
    catalog_t catalog;
    catalog.message("a", message("text", "en"));
    EXPECT_THAT(languages(catalog), ElementsAre("en"));
    catalog.message("a", message("text", "de"));
    EXPECT_THAT(languages(catalog), ElementsAre("de"));
    EXPECT_FALSE(catalog.is_language_loaded(ustring8("en")));
}

TEST(Catalog, CollectsItsLocalesInEveryQuery) {
    catalog_t catalog;
    catalog.message("a", message("text", "en"));
    {
        const catalog_t fresh(catalog);
        EXPECT_TRUE(fresh.is_language_loaded(ustring8("en")));
    }
    {
        const catalog_t fresh(catalog);
        const auto end = fresh.languages_end();
        EXPECT_EQ("en", *std::prev(end));
    }
    const catalog_t fresh(catalog);
    const auto begin = fresh.languages_begin();
    ASSERT_TRUE(begin != fresh.languages_end());
    EXPECT_EQ("en", *begin);
}

TEST(Catalog, AddsToTheLocalesItAlreadyHas) {
    const catalog_t catalog;
    catalog.gen_lang_set();
    EXPECT_TRUE(catalog == types::nil);

    // The cache of locales is copied with the messages.
    catalog_t source;
    source.message("a", message("text", "en"));
    source.gen_lang_set();
    source.gen_lang_set();
    catalog_t target;
    target = source;
    target.gen_lang_set();
    EXPECT_THAT(languages(target), ElementsAre("en"));
}

TEST(Catalog, CopiesNameLocalesAndMessagesButNeitherCountNorHeapMark) {
    shared_pointer<catalog_t> source(new catalog_t);
    source->allocated = true;
    source->_name("app");
    source->message("a", message("text", "en"));

    catalog_t target;
    target.message("b", message("other"));
    catalog_t* volatile const place = &target;  // otherwise compilers warn about a delete
    shared_pointer<catalog_t> first(place), second(place);
    EXPECT_EQ(&target, &(target = *source));
    EXPECT_EQ("app", target.name());
    EXPECT_EQ(1u, target.size());
    EXPECT_EQ("text", text_of(target.message("a")));
    EXPECT_FALSE(target.allocated);
    EXPECT_EQ(2u, target.count);
    EXPECT_TRUE(source->allocated);
    EXPECT_EQ(1u, source->count);

    const catalog_t copy(*source);
    EXPECT_EQ("app", copy.name());
    EXPECT_FALSE(copy.allocated);
    EXPECT_EQ(0u, copy.count);
}

TEST(Catalog, ReplacesItsLocalesWithThoseOfTheSource) {
    catalog_t source, target;
    source.message("a", message("text", "en"));
    target.message("a", message("text", "fr"));
    target.gen_lang_set();
    target = source;
    EXPECT_THAT(languages(target), ElementsAre("en"));
}

TEST(Catalog, IsUnchangedBySelfAssignment) {
    catalog_t catalog;
    catalog._name("app");
    catalog.message("a", message("text", "en"));
    EXPECT_EQ(&catalog, &catalog.assign(catalog));
    EXPECT_EQ("app", catalog.name());
    EXPECT_EQ("text", text_of(catalog.message("a")));
}

TEST(Catalog, IsEmptiedByAssigningNil) {
    for (bool by_operator : {true, false}) {
        catalog_t catalog;
        catalog._name("app");
        catalog.message("a", message("text", "en"));
        catalog.gen_lang_set();
        EXPECT_EQ(&catalog, by_operator ? &(catalog = types::nil) : &catalog.assign(types::nil));
        EXPECT_EQ("", catalog.name());
        EXPECT_EQ(0u, catalog.size());
        EXPECT_TRUE(languages(catalog).empty());
        EXPECT_TRUE(catalog == types::nil);
    }
}

TEST(Catalog, IsNilWithoutANameAndMessages) {
    catalog_t named, filled;
    named._name("app");
    filled.message("a", message_t());
    EXPECT_FALSE(named == types::nil);
    EXPECT_TRUE(named != types::nil);
    EXPECT_FALSE(named.equal(types::nil));
    EXPECT_FALSE(filled == types::nil);
    EXPECT_TRUE(filled != types::nil);
    EXPECT_TRUE(catalog_t().equal(types::nil));
    EXPECT_FALSE(catalog_t() != types::nil);
}

TEST(Catalog, IsDeletedByItsLastHolderIfItHasTheHeapMark) {
    catalog_t* const raw = new catalog_t;
    raw->allocated = true;
    shared_pointer<catalog_t> first(raw);
    {
        const shared_pointer<catalog_t> second(first);
        EXPECT_EQ(2u, raw->count);
        second->message("a", message("text"));
    }
    EXPECT_EQ(1u, first->count);
    EXPECT_EQ("text", text_of(first->message("a")));
}  // the address sanitizer reports a leak or a second delete

}  // namespace
