// Tests sizes, offsets and bases of the message classes, as compiled callers expect them.
#include <tova/i18n/catalog.hpp>
#include <tova/i18n/format.hpp>
#include <tova/i18n/message.hpp>
#include <tova/i18n/message_item.hpp>

#include "support/raw_memory.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using namespace TOVA_2_18;
using generic::varg_list;
using i18n::catalog_t;
using i18n::message_item;
using i18n::message_t;
using strings::ustring16;
using strings::ustring32;
using strings::ustring8;
using test_support::base_offset;

typedef generic::abilities::reference_count_pointer_ability<catalog_t> counted;

static_assert(sizeof(message_item) == 40 && alignof(message_item) == 8, "message_item");
static_assert(sizeof(message_item::type_t) == 4, "message_item::type_t");
static_assert(!std::is_polymorphic<message_item>::value, "message_item");
static_assert(sizeof(message_t) == 120 && alignof(message_t) == 8, "message_t");
static_assert(!std::is_polymorphic<message_t>::value, "message_t");
static_assert(sizeof(catalog_t) == 136 && alignof(catalog_t) == 8, "catalog_t");
static_assert(!std::is_polymorphic<catalog_t>::value, "catalog_t");
static_assert(std::is_base_of<counted, catalog_t>::value, "catalog_t");
static_assert(sizeof(memory::pointers::shared_pointer<catalog_t>) == 8, "shared_pointer");

// Result types are not part of a mangled name, so the list of symbols does not check them.
static_assert(std::is_same<ustring8, decltype(std::declval<const message_item&>().data())>::value,
              "a copy");
static_assert(std::is_same<std::string, decltype(std::declval<const message_t&>().as_string(
                                            varg_list()))>::value,
              "as_string");
static_assert(
    std::is_same<ustring8, decltype(std::declval<const message_t&>().as_utf8(varg_list()))>::value,
    "as_utf8");
static_assert(std::is_same<std::string, decltype(std::declval<const message_t&>().as_ustring(
                                            varg_list()))>::value,
              "as_ustring");
static_assert(std::is_same<ustring16,
                           decltype(std::declval<const message_t&>().as_utf16(varg_list()))>::value,
              "as_utf16");
static_assert(std::is_same<ustring32,
                           decltype(std::declval<const message_t&>().as_utf32(varg_list()))>::value,
              "as_utf32");
static_assert(std::is_same<std::wstring, decltype(std::declval<const message_t&>().as_wstring(
                                             varg_list()))>::value,
              "as_wstring");
static_assert(
    std::is_same<message_t&, decltype(std::declval<message_t&>().name(ustring8()))>::value,
    "the setter of the key returns the message");
static_assert(std::is_same<const message_t&,
                           decltype(std::declval<const catalog_t&>().message(ustring8()))>::value,
              "message");
static_assert(std::is_same<message_t, decltype(catalog_t::m_nil_message)>::value, "m_nil_message");
static_assert(std::is_same<int, decltype(i18n::_private::thousands(ustring8()))>::value,
              "thousands");

template <typename Field>
const Field& field_at(const void* object, std::size_t offset) {
    return *reinterpret_cast<const Field*>(static_cast<const char*>(object) + offset);
}

TEST(MessageLayout, ItemsStoreTheirDataBeforeTheirType) {
    const message_item item("data", message_item::type_metric);
    EXPECT_EQ("data", field_at<ustring8>(&item, 0));
    EXPECT_EQ(9u, field_at<unsigned int>(&item, 32));
}

TEST(MessageLayout, MessagesStoreKeyItemsLocaleAndMetaText) {
    message_t message("key", std::vector<message_item>{message_item("a"), message_item("b")},
                      "meta");
    message._orginal_locale("de");
    EXPECT_EQ("key", field_at<ustring8>(&message, 0));
    EXPECT_EQ(2u, (field_at<std::vector<message_item>>(&message, 32).size()));
    EXPECT_EQ("de", field_at<ustring8>(&message, 56));
    EXPECT_EQ("meta", field_at<ustring8>(&message, 88));
    EXPECT_EQ(static_cast<void*>(&message), &message.name("other"));
}

TEST(MessageLayout, CatalogsStoreMarkCountNameLocalesAndMessages) {
    catalog_t catalog;
    catalog._name("app");
    catalog.message("a", message_t());
    catalog.gen_lang_set();
    EXPECT_EQ(0, base_offset<counted>(catalog));
    catalog.allocated = true;
    catalog.count = 7;
    EXPECT_TRUE(field_at<bool>(&catalog, 0));
    EXPECT_EQ(7u, field_at<unsigned int>(&catalog, 4));
    EXPECT_EQ("app", field_at<ustring8>(&catalog, 8));
    EXPECT_EQ(1u, (field_at<std::set<ustring8>>(&catalog, 40).count("")));
    EXPECT_EQ(1u, (field_at<std::map<ustring8, message_t>>(&catalog, 88).count("a")));

    // The set of locales is copied unchanged, and cleared when a message is stored.
    catalog_t target;
    target.assign(catalog);
    EXPECT_EQ(1u, (field_at<std::set<ustring8>>(&target, 40).size()));
    target.message("b", message_t());
    EXPECT_TRUE((field_at<std::set<ustring8>>(&target, 40).empty()));
}

}  // namespace
