// Tests the layout of the catalog loader and the catalog set: their sizes and the offsets of all
// fields.
#include <tova/i18n/message_catalogs.hpp>

#include "i18n/catalog_text.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using TOVA_2_18::i18n::catalog_t;
using TOVA_2_18::i18n::message_catalogs;
using TOVA_2_18::i18n::message_t;
using TOVA_2_18::i18n::_private::xmc_file_loader;
using TOVA_2_18::memory::pointers::shared_pointer;
using TOVA_2_18::strings::ustring8;
using load_error = xmc_file_loader::load_error;
using result_type = message_catalogs::result_type;

// These classes contain standard containers, so they have no standard layout; the compilers that we
// build with still support `offsetof` for them.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

static_assert(sizeof(xmc_file_loader::error_type) == 4, "kinds are 32 bits");
static_assert(sizeof(load_error::append_type) == 4, "levels are 32 bits");
static_assert(offsetof(load_error, type) == 0, "");
static_assert(offsetof(load_error, message) == 8, "");
static_assert(sizeof(load_error) == 40 && alignof(load_error) == 8, "");
static_assert(std::is_same<decltype(load_error::type), xmc_file_loader::error_type>::value, "");
static_assert(std::is_same<decltype(load_error::message), ustring8>::value, "");
static_assert(!std::is_polymorphic<load_error>::value, "");
static_assert(!std::is_trivially_copy_constructible<load_error>::value, "");

// A vector (24), a map (48) and two strings (32 each).
static_assert(sizeof(xmc_file_loader) == 136 && alignof(xmc_file_loader) == 8, "");
static_assert(!std::is_polymorphic<xmc_file_loader>::value, "");

static_assert(sizeof(message_catalogs::error_type) == 4, "kinds are 32 bits");
static_assert(offsetof(result_type, type) == 0, "");
static_assert(offsetof(result_type, message) == 8, "");
static_assert(sizeof(result_type) == 40 && alignof(result_type) == 8, "");
static_assert(std::is_same<decltype(result_type::type), message_catalogs::error_type>::value, "");
static_assert(std::is_same<decltype(result_type::message), ustring8>::value, "");
static_assert(!std::is_polymorphic<result_type>::value, "");

// Two maps.
static_assert(sizeof(message_catalogs) == 96 && alignof(message_catalogs) == 8, "");
static_assert(!std::is_polymorphic<message_catalogs>::value, "");
static_assert(!std::is_trivially_copy_constructible<message_catalogs>::value, "");

static_assert(std::is_same<decltype(message_catalogs::s_nil_catalog), catalog_t>::value, "");
static_assert(std::is_same<decltype(message_catalogs::s_nil_message), message_t>::value, "");

template <typename Field, typename Object>
const Field& field_at(const Object& object, std::size_t offset) {
    return *reinterpret_cast<const Field*>(reinterpret_cast<const char*>(&object) + offset);
}

TEST(CatalogLayout, HasTheFieldsOfALoaderInOrder) {
    const test_support::temporary_directory files;
    const std::string path = files.write("a.xmc", test_support::xmc(test_support::catalog(
                                                      "c", "en", test_support::msg("k", "text"))));
    xmc_file_loader loader;
    ASSERT_EQ(xmc_file_loader::no_error, loader.parse(path, "de", "c").type);

    const auto& locales = field_at<std::vector<ustring8>>(loader, 0);
    EXPECT_EQ((std::vector<ustring8>{".", "en", "de", ".", "en"}), locales);
    const auto& catalogs = field_at<std::map<ustring8, std::map<ustring8, message_t>>>(loader, 24);
    ASSERT_EQ(1u, catalogs.count("c"));
    EXPECT_EQ(1u, catalogs.at("c").count("k"));
    EXPECT_EQ(files.path() + "/", std::string(field_at<ustring8>(loader, 72)));
    EXPECT_EQ("c", std::string(field_at<ustring8>(loader, 104)));
}

TEST(CatalogLayout, HasTheFieldsOfASetInOrder) {
    const test_support::temporary_directory files;
    message_catalogs set;
    set.set_resolve_container({{"a", "b"}});
    set.load_file(ustring8(files.write("a.xmc", test_support::xmc(test_support::catalog(
                                                    "c", "en", test_support::msg("k", "x"))))),
                  "en");
    const auto& catalogs = field_at<std::map<ustring8, shared_pointer<catalog_t>>>(set, 0);
    ASSERT_EQ(1u, catalogs.count("c"));
    EXPECT_EQ(&set.catalog(ustring8("c")), catalogs.at("c").get());
    const auto& resolve = field_at<std::map<ustring8, ustring8>>(set, 48);
    ASSERT_EQ(1u, resolve.size());
    EXPECT_EQ("b", std::string(resolve.at("a")));

    // A copy has its own resolve container, and removing all catalogs doesn't change it.
    const message_catalogs copy(set);
    EXPECT_TRUE((field_at<std::map<ustring8, ustring8>>(copy, 48).empty()));
    message_catalogs assigned;
    assigned.set_resolve_container({{"c", "d"}});
    assigned = set;
    EXPECT_EQ("d", std::string(field_at<std::map<ustring8, ustring8>>(assigned, 48).at("c")));
    set = TOVA_2_18::types::nil;
    EXPECT_EQ(1u, resolve.size());
    set.set_resolve_container(resolve);
    EXPECT_EQ(1u, resolve.size());
}

}  // namespace
