// Tests the catalog set: loading files, directories and lists in all widths, lookups, copies.
#include <tova/i18n/message_catalogs.hpp>

#include "i18n/catalog_text.hpp"
#include "support/child_process.hpp"
#include "support/temporary_directory.hpp"
#include "support/widths.hpp"
#include <tova/strings/unicode.hpp>
#include <tova/system/directories.hpp>
#include <tova/types/nil.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using test_support::catalog;
using test_support::msg;
using test_support::temporary_directory;
using test_support::xmc;
using tova::generic::varg_list;
using tova::i18n::catalog_t;
using tova::i18n::message_catalogs;
using tova::i18n::message_t;
using tova::strings::ustring16;
using tova::strings::ustring32;
using tova::strings::ustring8;
using tova::system::list_directory;
using tova::types::nil;

using result_type = message_catalogs::result_type;
using outcome = std::pair<int, std::string>;

const std::string front = "message_catalogs::result_type - ";
const std::string loader_front = "xmc_file_loader::load_error - ";
const outcome plain_success(0, "message_catalogs::result_type - No Error");
const outcome file_success(
    0, "message_catalogs::result_type - No Error\n xmc_file_loader::load_error - No Error");

outcome seen(const result_type& result) {
    return outcome(result.type, result.message);
}

std::string rendered(const message_catalogs& set, const char* catalog_name, const char* key) {
    return set.message(ustring8(catalog_name), ustring8(key)).as_string(varg_list());
}

// A file that adds the message `key` to the catalog `name`, in English.
std::string small_file(const std::string& name, const std::string& key,
                       const std::string& text = "x") {
    return xmc(catalog(name, "en", msg(key, text)));
}

// ---- all three widths

template <typename String>
class MessageCatalogs : public ::testing::Test {
protected:
    // A string of this width. Paths, names and messages of the tests are ASCII or UTF-8.
    static String s(const std::string& utf8) {
        return convert(utf8, static_cast<String*>(nullptr));
    }
    static ustring8 convert(const std::string& utf8, ustring8*) { return utf8; }
    static ustring16 convert(const std::string& utf8, ustring16*) {
        return tova::strings::utf8_to_utf16(utf8);
    }
    static ustring32 convert(const std::string& utf8, ustring32*) {
        return tova::strings::utf8_to_utf32(utf8);
    }

    std::string path(const std::string& name) const { return files.path(name); }
    std::string in_file(const std::string& name) const {
        return "\n in file: \"" + path(name) + "\"";
    }

    temporary_directory files;
    message_catalogs set;
};
TYPED_TEST_SUITE(MessageCatalogs, test_support::all_widths, test_support::width_name);

TYPED_TEST(MessageCatalogs, LoadsAFile) {
    const TypeParam file = this->s(this->files.write("a.txt", small_file("c", "k")));
    EXPECT_EQ(file_success, seen(this->set.load_file(file, this->s("en"))));
    EXPECT_EQ(1u, this->set.count());
    EXPECT_EQ("x", rendered(this->set, "c", "k"));
}

TYPED_TEST(MessageCatalogs, LoadsTheNamedCatalogOfAFile) {
    const TypeParam file = this->s(this->files.write(
        "a", xmc(catalog("a", "en", msg("k", "1")) + catalog("b", "en", msg("k", "2")))));
    EXPECT_EQ(file_success, seen(this->set.load_file(file, this->s("en"), this->s("b"))));
    EXPECT_FALSE(this->set.has_catalog(this->s("a")));
    EXPECT_EQ("2", rendered(this->set, "b", "k"));
    EXPECT_EQ(file_success, seen(this->set.load_file(file, this->s("en"), this->s(""))));
    EXPECT_EQ(2u, this->set.count());
}

TYPED_TEST(MessageCatalogs, LoadsNothingForAnUnknownCatalogName) {
    const TypeParam file = this->s(this->files.write("a", small_file("c", "k")));
    EXPECT_EQ(file_success, seen(this->set.load_file(file, this->s("en"), this->s("z"))));
    EXPECT_TRUE(this->set == nil);
    EXPECT_EQ(outcome(1, front + "No catalog was loaded in file: \"" + this->path("a") + "\""),
              seen(this->set.load(file, this->s("en"), this->s("z"))));
}

TYPED_TEST(MessageCatalogs, RejectsAnEmptyLocaleUnlessACatalogIsNamed) {
    this->files.write("d/a.xmc", xmc(catalog("c", ".", msg("k", "dot")) +
                                     catalog("c", "de", msg("l", "deutsch"))));
    const TypeParam none = this->s("");
    const outcome refused(2, front + "Default locale lookup not supported yet\n " + loader_front +
                                 "Default locale lookup not supported yet");
    EXPECT_EQ(refused, seen(this->set.load_file(this->s(this->path("d/a.xmc")), none)));
    EXPECT_EQ(refused, seen(this->set.load_directory(this->s(this->path("d")), none)));
    EXPECT_EQ(refused, seen(this->set.load(this->s(this->path("d")), none)));
    EXPECT_EQ(refused, seen(this->set.load(this->s(this->path("d/a.xmc")), none)));
    EXPECT_TRUE(this->set == nil);

    EXPECT_EQ(file_success, seen(this->set.load_directory(this->s(this->path("d")), none, none)));
    EXPECT_EQ("dot", rendered(this->set, "c", "k"));
    EXPECT_FALSE(this->set.has_message(this->s("c"), this->s("l")));
}

TYPED_TEST(MessageCatalogs, ReportsAMissingPathBeforeAnEmptyLocale) {
    const TypeParam missing = this->s(this->path("missing"));
    EXPECT_EQ(5, this->set.load(missing, this->s("")).type);
    EXPECT_EQ(4, this->set.load_directory(missing, this->s("")).type);
    EXPECT_EQ(2, this->set.load_file(missing, this->s("")).type);
}

TYPED_TEST(MessageCatalogs, ReportsAMissingFileInTwoLines) {
    EXPECT_EQ(outcome(3, front + "File was not found on disk\n " + loader_front + "File \"" +
                             this->path("no") + "\" was not found on disk"),
              seen(this->set.load_file(this->s(this->path("no")), this->s("en"))));
}

TYPED_TEST(MessageCatalogs, ReportsAMissingDirectoryUnlessACatalogIsNamed) {
    const TypeParam missing = this->s(this->path("no"));
    EXPECT_EQ(outcome(4, front + "Directory \"" + this->path("no") + "\" was not found on disk"),
              seen(this->set.load_directory(missing, this->s("en"))));
    EXPECT_EQ(plain_success, seen(this->set.load_directory(missing, this->s("en"), this->s("c"))));
}

TYPED_TEST(MessageCatalogs, ReportsAMissingEntity) {
    const TypeParam missing = this->s(this->path("no"));
    const outcome error(5, front + "Entity (file or directory) \"" + this->path("no") +
                               "\" was not found on disk");
    EXPECT_EQ(error, seen(this->set.load(missing, this->s("en"))));
    EXPECT_EQ(error, seen(this->set.load(missing, this->s("en"), this->s("c"))));
    EXPECT_EQ(5, this->set.load(this->s(""), this->s("en")).type);
}

TYPED_TEST(MessageCatalogs, ScansADirectoryAtAnyDepth) {
    this->files.write("d/a.xmc", small_file("a", "k"));
    this->files.write("d/b/c/d/b.xml", small_file("b", "k"));
    this->files.write("d/b/notes.txt", "not a catalog");
    EXPECT_EQ(0, this->set.load_directory(this->s(this->path("d")), this->s("en")).type);
    EXPECT_EQ(2u, this->set.count());

    message_catalogs again;
    EXPECT_EQ(0, again.load(this->s(this->path("d")), this->s("en"), this->s("b")).type);
    EXPECT_EQ(1u, again.count());
    EXPECT_EQ("x", rendered(again, "b", "k"));
}

TYPED_TEST(MessageCatalogs, RecognizesCatalogFilesByTheirExtensionInAnyCase) {
    const struct {
        const char* name;
        bool is_read;
    } cases[] = {
        {"a.xmc", true},   {"a.xml", true},   {"NOTES.XML", true}, {"A.XmC", true},
        {".xmc", true},    {".XML", true},    {"a.b.xml", true},   {"a.xmc.bak", false},
        {"a.xmcx", false}, {"axmc", false},   {"xml", false},      {"a", false},
        {"a.xm", false},   {"a.xmc ", false}, {"a.xmd", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const temporary_directory directory;
        directory.write(c.name, small_file("c", "k"));
        message_catalogs fresh;
        EXPECT_EQ(c.is_read ? file_success : plain_success,
                  seen(fresh.load_directory(this->s(directory.path()), this->s("en"))));
        EXPECT_EQ(c.is_read ? 1u : 0u, fresh.count());
    }
}

// The path of an entry may be shorter than an extension.
TYPED_TEST(MessageCatalogs, SkipsAFileWithAPathOfThreeBytes) {
    this->files.write("d/x", "no catalog");
    this->files.write("d/y/z", "no catalog");
    test_support::expect_in_child([this] {
        ASSERT_EQ(0, ::chdir(this->files.path().c_str()));
        EXPECT_EQ(plain_success, seen(this->set.load_directory(this->s("d"), this->s("en"))));
    });
}

TYPED_TEST(MessageCatalogs, EntersDirectoriesThatAreNamedLikeCatalogFiles) {
    this->files.write("d/x.xmc/a.xmc", small_file("c", "k"));
    EXPECT_EQ(file_success,
              seen(this->set.load_directory(this->s(this->path("d")), this->s("en"))));
    EXPECT_EQ("x", rendered(this->set, "c", "k"));
}

TYPED_TEST(MessageCatalogs, ReturnsPlainSuccessForADirectoryWithoutCatalogFiles) {
    this->files.write("d/readme.txt", "text");
    const TypeParam directory = this->s(this->path("d"));
    EXPECT_EQ(plain_success, seen(this->set.load_directory(directory, this->s("en"))));
    EXPECT_EQ(outcome(1, front + "No catalog was loaded in file: \"" + this->path("d") + "\""),
              seen(this->set.load(directory, this->s("en"))));
    EXPECT_EQ(outcome(1, front + "No catalog was loaded in file: \"" + this->path("d") + "\""),
              seen(this->set.load(directory, this->s("en"), this->s("c"))));
}

TYPED_TEST(MessageCatalogs, ReportsAnEmptySetButNotAnEmptyLoad) {
    this->files.write("a.xmc", small_file("c", "k"));
    this->files.write("d/readme.txt", "text");
    EXPECT_EQ(file_success, seen(this->set.load(this->s(this->path("a.xmc")), this->s("en"))));
    EXPECT_EQ(plain_success, seen(this->set.load(this->s(this->path("d")), this->s("en"))));
    this->set.erase();
    EXPECT_EQ(1, this->set.load(this->s(this->path("d")), this->s("en")).type);
}

TYPED_TEST(MessageCatalogs, ReportsASkippedCatalogOnlyIfTheSetIsEmpty) {
    const TypeParam file =
        this->s(this->files.write("a.xmc", xmc(catalog("c", "fr", msg("k", "x")))));
    EXPECT_EQ(file_success, seen(this->set.load_file(file, this->s("en"))));
    EXPECT_EQ(1, this->set.load(file, this->s("en")).type);
}

TYPED_TEST(MessageCatalogs, StopsAScanAtTheFirstErrorAndKeepsWhatWasLoaded) {
    // An invalid file ends the scan wherever it comes in the order.
    this->files.write("d/NOTES.XML", "<?xml?><notes/>");
    EXPECT_EQ(outcome(7, front + "XMC file is not valid\n " + loader_front +
                             "Not XMC file, root element is not XMC but \"notes\"" +
                             this->in_file("d/NOTES.XML")),
              seen(this->set.load_directory(this->s(this->path("d")), this->s("en"))));

    this->files.write("e/1/a.xmc", small_file("a", "k"));
    std::vector<TypeParam> paths;
    for (const char* name : {"e/1", "d", "e/2"})
        paths.push_back(this->s(this->path(name)));
    EXPECT_EQ(7, this->set.load(paths, this->s("en")).type);
    EXPECT_EQ("x", rendered(this->set, "a", "k"));
}

TYPED_TEST(MessageCatalogs, StopsAScanAtAnErrorInASubdirectory) {
    this->files.write("d/e/f/a.xmc", "");
    EXPECT_EQ(outcome(6, front + "XML parse error, XML file not well formed\n " + loader_front +
                             "Valid XML header not found\n at line: \"0\"" +
                             this->in_file("d/e/f/a.xmc")),
              seen(this->set.load(this->s(this->path("d")), this->s("en"))));
}

TYPED_TEST(MessageCatalogs, StopsAScanAtALinkToACatalogFile) {
    const std::string target = this->files.write("target", small_file("c", "k"));
    this->files.write("d/readme.txt", "text");
    ASSERT_EQ(0, ::symlink(target.c_str(), this->path("d/a.xmc").c_str()));
    EXPECT_EQ(outcome(6, front + "XML parse error, XML file not well formed\n " + loader_front +
                             "Valid XML header not found\n at line: \"0\"" +
                             this->in_file("d/a.xmc")),
              seen(this->set.load_directory(this->s(this->path("d")), this->s("en"))));
}

TYPED_TEST(MessageCatalogs, FollowsALinkToADirectoryAndSkipsADanglingOne) {
    this->files.write("target/a.xmc", small_file("c", "k"));
    this->files.write("d/readme.txt", "text");
    ASSERT_EQ(0, ::symlink("../target", this->path("d/link").c_str()));
    ASSERT_EQ(0, ::symlink("nowhere", this->path("d/dangling.xmc").c_str()));
    EXPECT_EQ(0, this->set.load_directory(this->s(this->path("d")), this->s("en")).type);
    EXPECT_EQ("x", rendered(this->set, "c", "k"));
}

TYPED_TEST(MessageCatalogs, DoublesTheSeparatorOfADirectoryThatEndsInOne) {
    this->files.write("d/a.xmc", "");
    EXPECT_THAT(seen(this->set.load_directory(this->s(this->path("d/")), this->s("en"))).second,
                ::testing::EndsWith(this->in_file("d//a.xmc")));
}

TYPED_TEST(MessageCatalogs, LoadsAListInOrderAndReturnsTheLastOutcome) {
    this->files.write("a", small_file("a", "k", "1"));
    this->files.write("b", small_file("a", "k", "2"));
    this->files.write("d/readme.txt", "text");
    const std::vector<TypeParam> paths{this->s(this->path("a")), this->s(this->path("b")),
                                       this->s(this->path("d"))};
    EXPECT_EQ(plain_success, seen(this->set.load(paths, this->s("en"))));
    EXPECT_EQ("2", rendered(this->set, "a", "k")) << "of two equals the later one stays";

    message_catalogs named;
    EXPECT_EQ(plain_success, seen(named.load(paths, this->s("en"), this->s("a"))));
    EXPECT_EQ(1u, named.count());
    EXPECT_EQ(plain_success, seen(named.load(paths, this->s("en"), this->s("z"))));
}

TYPED_TEST(MessageCatalogs, StopsAListAtAMissingPath) {
    this->files.write("a", small_file("a", "k"));
    this->files.write("b", small_file("b", "k"));
    const std::vector<TypeParam> paths{this->s(this->path("a")), this->s(this->path("no")),
                                       this->s(this->path("b"))};
    const outcome error(5, front + "Entity (file or directory) \"" + this->path("no") +
                               "\" was not found on disk");
    EXPECT_EQ(error, seen(this->set.load(paths, this->s("en"))));
    EXPECT_TRUE(this->set.has_catalog(this->s("a")));
    EXPECT_FALSE(this->set.has_catalog(this->s("b")));

    message_catalogs named;
    EXPECT_EQ(error, seen(named.load(paths, this->s("en"), this->s("a"))));
}

TYPED_TEST(MessageCatalogs, ReturnsSuccessForAListThatLoadsNothing) {
    EXPECT_EQ(plain_success, seen(this->set.load(std::vector<TypeParam>(), this->s("en"))));
    EXPECT_EQ(plain_success, seen(this->set.load(std::vector<TypeParam>(), this->s(""))));
    this->files.write("d/readme.txt", "text");
    EXPECT_EQ(plain_success, seen(this->set.load(std::vector<TypeParam>{this->s(this->path("d"))},
                                                 this->s("en"))));
    EXPECT_TRUE(this->set == nil);
}

TYPED_TEST(MessageCatalogs, LoadsListsOfStandardStrings) {
    this->files.write("a", small_file("a", "k"));
    this->files.write("d/b.xmc", small_file("b", "k"));
    const std::vector<std::string> narrow{this->path("a"), this->path("d")};
    std::vector<std::wstring> wide;
    for (const std::string& path : narrow)
        wide.push_back(tova::strings::utf8_to_utf32(path));

    message_catalogs sets[4];
    EXPECT_EQ(file_success, seen(sets[0].load(narrow, this->s("en"))));
    EXPECT_EQ(file_success, seen(sets[1].load(wide, this->s("en"))));
    EXPECT_EQ(file_success, seen(sets[2].load(narrow, this->s("en"), this->s("b"))));
    EXPECT_EQ(file_success, seen(sets[3].load(wide, this->s("en"), this->s("b"))));
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(i < 2 ? 2u : 1u, sets[i].count());
        EXPECT_EQ("x", rendered(sets[i], "b", "k"));
    }
}

TYPED_TEST(MessageCatalogs, ReportsMissingPathsInListsOfStandardStrings) {
    const std::string missing = this->path("\xC3\xA4");
    const std::vector<std::string> narrow{missing};
    const std::vector<std::wstring> wide{tova::strings::utf8_to_utf32(missing)};
    const outcome error(5, front + "Entity (file or directory) \"" + missing +
                               "\" was not found on disk");
    EXPECT_EQ(error, seen(this->set.load(narrow, this->s("en"))));
    EXPECT_EQ(error, seen(this->set.load(wide, this->s("en"))));
    EXPECT_EQ(error, seen(this->set.load(narrow, this->s("en"), this->s("c"))));
    EXPECT_EQ(error, seen(this->set.load(wide, this->s("en"), this->s("c"))));
    EXPECT_EQ(plain_success, seen(this->set.load(std::vector<std::string>(), this->s("en"))));
    EXPECT_EQ(plain_success, seen(this->set.load(std::vector<std::wstring>(), this->s("en"))));
}

TYPED_TEST(MessageCatalogs, ReadsTheRequestedLocale) {
    const TypeParam file = this->s(this->files.write(
        "a", xmc(catalog("c", "de", msg("k", "deutsch")) + catalog("c", "en", msg("k", "english")) +
                 catalog("c", "ja", msg("k", "nihongo")))));
    for (const auto& c : {std::make_pair("de_AT.UTF-8", "deutsch"), std::make_pair("en", "english"),
                          std::make_pair("ja_JP", "nihongo"), std::make_pair("fr", "english")}) {
        message_catalogs fresh;
        EXPECT_EQ(0, fresh.load(file, this->s(c.first)).type);
        EXPECT_EQ(c.second, rendered(fresh, "c", "k"));
    }
}

TYPED_TEST(MessageCatalogs, AcceptsNamesAndKeysInAnyScript) {
    const std::string name = "k\xC3\xA4se\xE2\x82\xAC";
    const TypeParam file = this->s(this->files.write(
        "\xE6\x97\xA5.xmc", xmc(catalog(name, "en", msg("\xF0\x9F\x98\x80", "x")))));
    EXPECT_EQ(0, this->set.load(file, this->s("en"), this->s(name)).type);
    EXPECT_TRUE(this->set.has_catalog(this->s(name)));
    EXPECT_TRUE(this->set.has_message(this->s(name), this->s("\xF0\x9F\x98\x80")));
    EXPECT_EQ(1u, this->set.count(this->s(name)));
}

TYPED_TEST(MessageCatalogs, FindsCatalogsAndMessagesByExactName) {
    this->set.load_file(ustring8(this->files.write("a", small_file("App", "Key"))), "en");
    EXPECT_TRUE(this->set.has_catalog(this->s("App")));
    EXPECT_FALSE(this->set.has_catalog(this->s("app")));
    EXPECT_EQ("App", std::string(this->set.catalog(this->s("App")).name()));
    EXPECT_TRUE(this->set.has_message(this->s("App"), this->s("Key")));
    EXPECT_FALSE(this->set.has_message(this->s("App"), this->s("key")));
    EXPECT_FALSE(this->set.has_message(this->s("app"), this->s("Key")));
    EXPECT_EQ("Key", std::string(this->set.message(this->s("App"), this->s("Key")).name()));
}

TYPED_TEST(MessageCatalogs, FindsNoMessageWhoseKeyOnlyBeginsLikeAnother) {
    const std::string key = "a_key_of_twenty_byte";
    this->set.load_file(ustring8(this->files.write("a", small_file("c", key))), "en");
    EXPECT_TRUE(this->set.has_message(this->s("c"), this->s(key)));
    for (const char* other : {"a_key_of_twenty_", "a_key_of_twenty_b", "a_key_of_twenty_bytes",
                              "a_key_of_twenty_bytf", "a_key_of_twenty_bytd"})
        EXPECT_FALSE(this->set.has_message(this->s("c"), this->s(other))) << other;
}

TYPED_TEST(MessageCatalogs, ReturnsDifferentNilObjectsForAnAbsentCatalogAndAnAbsentKey) {
    this->set.load_file(ustring8(this->files.write("a", small_file("c", "k"))), "en");
    const message_t& no_catalog = this->set.message(this->s("z"), this->s("k"));
    const message_t& no_key = this->set.message(this->s("c"), this->s("z"));
    EXPECT_EQ(&message_catalogs::s_nil_message, &no_catalog);
    EXPECT_EQ(&catalog_t::m_nil_message, &no_key);
    EXPECT_TRUE(no_catalog == nil);
    EXPECT_TRUE(no_key == nil);
    EXPECT_EQ("", no_catalog.as_string(varg_list()));
    EXPECT_EQ(&message_catalogs::s_nil_catalog, &this->set.catalog(this->s("z")));
    EXPECT_TRUE(this->set.catalog(this->s("z")) == nil);
}

TYPED_TEST(MessageCatalogs, HasNoMessageIfTheStoredOneIsNil) {
    this->set.load_file(
        ustring8(this->files.write("a", xmc(catalog("c", "en", "<msg/><msg name=\"k\"/>")))), "en");
    EXPECT_FALSE(this->set.has_message(this->s("c"), this->s("")));
    EXPECT_TRUE(this->set.catalog(this->s("c")).has_message(this->s("")));
    EXPECT_TRUE(this->set.has_message(this->s("c"), this->s("k"))) << "its key is not empty";
    EXPECT_EQ(2u, this->set.count(this->s("c")));
}

TYPED_TEST(MessageCatalogs, CountsCatalogsAndTheirMessages) {
    EXPECT_EQ(0u, this->set.count());
    EXPECT_EQ(0u, this->set.size());
    this->set.load_file(
        ustring8(this->files.write("a", xmc(catalog("c", "en", msg("k", "1") + msg("l", "2")) +
                                            catalog("d", "en", msg("k", "3"))))),
        "en");
    EXPECT_EQ(2u, this->set.count());
    EXPECT_EQ(2u, this->set.size());
    EXPECT_EQ(2u, this->set.count(this->s("c")));
    EXPECT_EQ(2u, this->set.size(this->s("c")));
    EXPECT_EQ(1u, this->set.size(this->s("d")));
    EXPECT_EQ(0u, this->set.count(this->s("z")));
    EXPECT_EQ(0u, this->set.size(this->s("z")));
}

TYPED_TEST(MessageCatalogs, IteratesOverMessagesInTheByteOrderOfTheirKeys) {
    this->set.load_file(
        ustring8(this->files.write(
            "a", xmc(catalog("c", "en", msg("b", "1") + msg("a", "2") + msg("B", "3"))))),
        "en");
    std::string keys;
    for (auto m = this->set.begin(this->s("c")); m != this->set.end(this->s("c")); ++m)
        keys += m->first;
    EXPECT_EQ("Bab", keys);
    EXPECT_TRUE(this->set.begin(this->s("z")) == this->set.end(this->s("z")));
    EXPECT_TRUE(this->set.begin(this->s("z")) == message_catalogs::s_nil_catalog.begin());
}

TYPED_TEST(MessageCatalogs, ErasesOneCatalog) {
    this->set.load_file(ustring8(this->files.write("a", small_file("c", "k"))), "en");
    this->set.erase(this->s("z"));
    EXPECT_EQ(1u, this->set.count());
    this->set.erase(this->s("c"));
    EXPECT_TRUE(this->set == nil);
}

TYPED_TEST(MessageCatalogs, KnowsTheLocalesOfTheMessagesInACatalog) {
    this->set.load_file(
        ustring8(this->files.write(
            "a", xmc(catalog("c", "de_DE", msg("a", "1")) + catalog("c", ".", msg("b", "2")) +
                     catalog("c", "de-AT", msg("c", "3")) + catalog("c", "en", msg("a", "4"))))),
        "de_DE");
    const struct {
        const char* locale;
        bool is_held;
    } cases[] = {
        {"de_DE", true},
        {"de-DE", true},
        {"de.DE", true},
        {".", true},
        {"-", false},
        {"_", false},
        {"", false},
        {"de", false},
        {"en", false},  // its one message lost
                        // to a heavier one
        {"de_AT", false},
        {"DE_DE", false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.is_held, this->set.has_catalog(this->s("c"), this->s(c.locale))) << c.locale;
    EXPECT_FALSE(this->set.has_catalog(this->s("z"), this->s("de_DE")));
    EXPECT_FALSE(this->set.catalog(this->s("c")).is_language_loaded(this->s(".")))
        << "the catalog itself looks for \"_\"";
}

TYPED_TEST(MessageCatalogs, NeverFindsAStoredLocaleWithAHyphen) {
    this->set.load_file(ustring8(this->files.write("a", xmc(catalog("c", "de-DE", msg("a", "1"))))),
                        "de_DE");
    EXPECT_EQ("1", rendered(this->set, "c", "a"));
    EXPECT_FALSE(this->set.has_catalog(this->s("c"), this->s("de-DE")));
    EXPECT_FALSE(this->set.has_catalog(this->s("c"), this->s("de_DE")));
}

// ---- what needs only one width

class CatalogSet : public ::testing::Test {
protected:
    ustring8 file(const std::string& name, const std::string& bytes) {
        return files.write(name, bytes);
    }

    temporary_directory files;
    message_catalogs set;
};

TEST_F(CatalogSet, IsNilWithoutCatalogs) {
    EXPECT_TRUE(set == nil);
    EXPECT_FALSE(set != nil);
    EXPECT_TRUE(set.equal(nil));
    set.load_file(file("a", small_file("c", "k")), "en");
    EXPECT_FALSE(set == nil);
    EXPECT_TRUE(set != nil);
    EXPECT_FALSE(set.equal(nil));
    EXPECT_EQ(&set, &(set = nil));
    EXPECT_TRUE(set == nil);
    set.load_file(file("a", small_file("c", "k")), "en");
    EXPECT_EQ(&set, &set.assign(nil));
    EXPECT_TRUE(set == nil);
}

TEST_F(CatalogSet, SharesItsCatalogsWithItsCopies) {
    set.load_file(file("a", small_file("c", "k", "1")), "en");
    message_catalogs copy(set);
    message_catalogs assigned;
    EXPECT_EQ(&assigned, &(assigned = set));
    message_catalogs named;
    EXPECT_EQ(&named, &named.assign(set));
    EXPECT_EQ(&set.catalog(ustring8("c")), &copy.catalog(ustring8("c")));
    EXPECT_EQ(&set.catalog(ustring8("c")), &assigned.catalog(ustring8("c")));
    EXPECT_EQ(&set.catalog(ustring8("c")), &named.catalog(ustring8("c")));
    EXPECT_EQ(4u, set.catalog(ustring8("c")).count);

    // All of them see what a load adds to a shared catalog. A new catalog belongs only to the copy.
    copy.load_file(file("b", xmc(catalog("c", "en", msg("k", "2") + msg("l", "3")) +
                                 catalog("d", "en", msg("k", "4")))),
                   "en");
    EXPECT_EQ("2", rendered(set, "c", "k"));
    EXPECT_EQ("3", rendered(set, "c", "l"));
    EXPECT_FALSE(set.has_catalog(ustring8("d")));

    set.erase();
    EXPECT_EQ("2", rendered(copy, "c", "k"));
    EXPECT_EQ(3u, copy.catalog(ustring8("c")).count);
}

TEST_F(CatalogSet, SurvivesAssignmentToItself) {
    set.load_file(file("a", small_file("c", "k")), "en");
    message_catalogs& same = set;
    set = same;
    EXPECT_EQ("x", rendered(set, "c", "k"));
    EXPECT_EQ(1u, set.catalog(ustring8("c")).count);
}

TEST_F(CatalogSet, IteratesOverCatalogsInTheByteOrderOfTheirNames) {
    set.load_file(
        file("a", xmc(catalog("b", "en", msg("k", "1")) + catalog("a", "en", msg("k", "2")))),
        "en");
    std::string names;
    for (const auto& entry : set)
        names += entry.first;
    const message_catalogs& constant = set;
    for (auto entry = constant.begin(); entry != constant.end(); ++entry)
        names += entry->second->name();
    EXPECT_EQ("abab", names);
    static_assert(std::is_same<decltype(set.begin()), message_catalogs::iterator>::value, "");
    static_assert(std::is_same<decltype(constant.end()), message_catalogs::const_iterator>::value,
                  "");
}

TEST_F(CatalogSet, IgnoresTheResolveContainer) {
    set.load_file(file("a", small_file("c", "k", "a")), "en");
    set.set_resolve_container({{"a", "b"}, {"c", "d"}, {"k", "l"}});
    set.load_file(file("b", small_file("c", "l", "a")), "en");
    EXPECT_EQ("a", rendered(set, "c", "k"));
    EXPECT_EQ("a", rendered(set, "c", "l"));
    EXPECT_TRUE(set.has_catalog(ustring8("c")));
    set = nil;
    set.load_file(file("b", small_file("c", "l", "a")), "en");
    EXPECT_EQ("a", rendered(set, "c", "l"));
}

TEST_F(CatalogSet, RanksStoredMessagesByTheLocaleOfTheNewLoad) {
    set.load_file(file("a", xmc(catalog("c", "de", msg("k", "deutsch")))), "de");
    set.load_file(file("b", xmc(catalog("c", "en", msg("k", "english")))), "de");
    EXPECT_EQ("deutsch", rendered(set, "c", "k"));
    set.load_file(file("b", xmc(catalog("c", ".", msg("k", "neutral")))), "fr");
    EXPECT_EQ("neutral", rendered(set, "c", "k"));
}

TEST_F(CatalogSet, ChoosesAmongMessagesWhoseKeysBeginAlike) {
    const std::string german =
        catalog("c", "de", msg("settings.a", "1") + msg("settings.b", "2") + msg("other", "3"));
    const std::string english = catalog("c", "en", msg("settings.a", "4"));
    for (const std::string& body : {german + english, english + german}) {
        message_catalogs fresh;
        EXPECT_EQ(file_success, seen(fresh.load_file(file("a", xmc(body)), "de")));
        EXPECT_EQ("1", rendered(fresh, "c", "settings.a"));
        EXPECT_EQ("2", rendered(fresh, "c", "settings.b"));
        EXPECT_EQ("3", rendered(fresh, "c", "other"));
    }
}

TEST_F(CatalogSet, IsUnchangedByAnInvalidFile) {
    set.load_file(file("a", small_file("c", "k", "before")), "en");
    const std::string good = catalog("c", "en", msg("k", "after") + msg("l", "new")) +
                             catalog("d", "en", msg("k", "new"));
    const std::string bodies[] = {
        good + "<other/>",
        good + catalog("e", "en", "<msg><b/></msg>"),
        good + "<include file=\"missing\"/>",
        good + "<catalog",
        good + "<catalog x=\"\"/>",
        "<include file=\"good\"/>" + catalog("e", "en", "<b/>"),
    };
    file("good", xmc(good));
    for (const std::string& body : bodies) {
        SCOPED_TRACE(body);
        EXPECT_NE(0, set.load_file(file("b", xmc(body)), "en").type);
        EXPECT_EQ(1u, set.count());
        EXPECT_EQ(1u, set.count(ustring8("c")));
        EXPECT_EQ("before", rendered(set, "c", "k"));
    }
}

TEST_F(CatalogSet, IsUnchangedByEveryPrefixOfAFile) {
    set.load_file(file("a", small_file("c", "k", "before")), "en");
    const std::string whole =
        xmc(catalog("c", "en", msg("k", "after")) + catalog("d", "en", msg("k", "x")));
    for (std::size_t length = 0; length < whole.size(); ++length) {
        SCOPED_TRACE(length);
        EXPECT_NE(0, set.load_file(file("b", whole.substr(0, length)), "en").type);
        EXPECT_EQ(1u, set.count());
        EXPECT_EQ("before", rendered(set, "c", "k"));
    }
    EXPECT_EQ(0, set.load_file(file("b", whole), "en").type);
    EXPECT_EQ("after", rendered(set, "c", "k"));
}

// A scan follows the order of the file system, which is also that of `list_directory`.
TEST_F(CatalogSet, ReadsNothingAfterTheErrorThatEndsAScan) {
    for (const char* name : {"a", "b", "c", "d", "e"})
        file(std::string("d/") + name + ".xmc", small_file(name, "k"));
    const std::vector<ustring8> entries = list_directory(files.path("d"));
    ASSERT_EQ(5u, entries.size());
    const auto name_of = [](const ustring8& entry) { return ustring8(1, entry[entry.size() - 5]); };
    file(std::string("d/") + name_of(entries[2]) + ".xmc", xmc("<other/>"));

    for (const bool is_one_named : {false, true}) {
        message_catalogs fresh;
        const ustring8 directory = files.path("d");
        EXPECT_EQ(7, (is_one_named ? fresh.load_directory(directory, "en", "")
                                   : fresh.load_directory(directory, "en"))
                         .type);
        for (std::size_t i = 0; i < entries.size(); ++i)
            EXPECT_EQ(i < 2, fresh.has_catalog(name_of(entries[i]))) << i;
    }
}

TEST_F(CatalogSet, OtherFilesOfAScanDoNotChangeTheOutcome) {
    const ustring8 catalog_file = file("d/a.xmc", small_file("c", "k"));
    for (int i = 0; list_directory(files.path("d")).back() == catalog_file; ++i) {
        ASSERT_GT(1000, i);
        file("d/" + std::to_string(i) + ".txt", "text");
    }
    EXPECT_EQ(file_success, seen(set.load_directory(ustring8(files.path("d")), "en")));
}

TEST_F(CatalogSet, ASubdirectoryWithoutCatalogsResetsTheOutcome) {
    const ustring8 catalog_file = file("d/a.xmc", small_file("c", "k"));
    for (int i = 0; list_directory(files.path("d")).back() == catalog_file; ++i) {
        ASSERT_GT(1000, i);
        file("d/" + std::to_string(i) + "/readme.txt", "text");
    }
    EXPECT_EQ(plain_success, seen(set.load_directory(ustring8(files.path("d")), "en")));
    EXPECT_TRUE(set.has_catalog(ustring8("c")));
}

TEST_F(CatalogSet, HasNoCatalogForTheEmptyLocaleEvenIfItHasSuchMessages) {
    set.load_file(file("a", xmc("<catalog name=\"c\"><msg name=\"k\">x</msg></catalog>")), "_");
    EXPECT_EQ("x", rendered(set, "c", "k"));
    EXPECT_TRUE(set.catalog(ustring8("c")).is_language_loaded(ustring8()));
    EXPECT_FALSE(set.has_catalog(ustring8("c"), ustring8()));
}

TEST_F(CatalogSet, ReportsAnErrorInnermostLevelFirst) {
    file("b.part", "<?xml?>\n<xmc version=\"1.1\">\n<catalog name=\"c\" lang=\"en\">\n"
                   "<msg name=\"k\">a & b</msg></catalog></xmc>");
    const ustring8 outer = file("a.xmc", xmc("<include file=\"b.part\"/>"));
    EXPECT_EQ(outcome(6, "message_catalogs::result_type - XML parse error, XML file not well "
                         "formed\n xmc_file_loader::load_error - Unknown enity being parsed\n at "
                         "line: \"3\"\n in file: \"" +
                             files.path("b.part") + "\"\n in file: \"" + files.path("a.xmc") +
                             "\""),
              seen(set.load(outer, "en")));
}

TEST_F(CatalogSet, ReportsAFileThatIncludesItself) {
    const ustring8 path = file("a.xmc", xmc("<include file=\"a.xmc\"/>"));
    EXPECT_EQ(outcome(8, front + "Unexpected error happened during loading\n " + loader_front +
                             "Unexpected parse error happen!\n in an include of a file by itself: "
                             "\"" +
                             path + "\"\n in file: \"" + path + "\""),
              seen(set.load(path, "en")));
}

TEST_F(CatalogSet, TreatsASocketAsAFile) {
    const std::string path = files.path("s");
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof address.sun_path);
    std::memcpy(address.sun_path, path.c_str(), path.size());
    ASSERT_EQ(0, ::bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address));
    EXPECT_EQ(outcome(6, front + "XML parse error, XML file not well formed\n " + loader_front +
                             "Valid XML header not found\n at line: \"0\"\n in file: \"" + path +
                             "\""),
              seen(set.load(ustring8(path), "en")));
    ::close(descriptor);
}

TEST_F(CatalogSet, TreatsADirectoryGivenAsAFileAsEmpty) {
    EXPECT_EQ(outcome(6, front + "XML parse error, XML file not well formed\n " + loader_front +
                             "Valid XML header not found\n at line: \"0\"\n in file: \"" +
                             files.path() + "\""),
              seen(set.load_file(ustring8(files.path()), "en")));
}

TEST_F(CatalogSet, LooksForAFileNamedMinusOneIfThePathIsInvalid) {
    const outcome error(5, front + "Entity (file or directory) \"-1\" was not found on disk");
    const ustring16 bad16(1, static_cast<unsigned short>(0xD800));
    const ustring32 bad32(1, static_cast<wchar_t>(0xD800));
    const ustring16 en16 = tova::strings::utf8_to_utf16("en");
    EXPECT_EQ(error, seen(set.load(bad16, en16)));
    EXPECT_EQ(error, seen(set.load(std::vector<ustring16>(1, bad16), en16)));
    EXPECT_EQ(error, seen(set.load(bad32, ustring32(L"en"))));
    EXPECT_EQ(error, seen(set.load(std::vector<ustring32>(1, bad32), ustring32(L"en"))));
    EXPECT_EQ(error, seen(set.load(std::vector<std::wstring>(1, bad32), ustring8("en"))));
    EXPECT_EQ(error,
              seen(set.load(std::vector<std::wstring>(1, bad32), ustring8("en"), ustring8("c"))));
}

TEST_F(CatalogSet, AcceptsLiteralsAndStandardStrings) {
    const std::string path = files.write("a", small_file("c", "k"));
    EXPECT_EQ(0, set.load(path.c_str(), "en").type);
    EXPECT_EQ(0, set.load(path, "en", "c").type);
    EXPECT_EQ(0, set.load(std::vector<std::string>{path}, "en").type);
    EXPECT_TRUE(set.has_catalog("c"));
    EXPECT_TRUE(set.has_catalog("c", "en"));
    EXPECT_EQ("x", set.message("c", std::string("k")).as_string(varg_list()));
    EXPECT_EQ(1u, set.count("c"));
    set.erase("c");
    EXPECT_EQ(0u, set.count());
}

// A message without a key, a meta text and content is nil.
TEST(CatalogFile, ReplacesANilMessageByALaterOneOfTheSameLocale) {
    const temporary_directory files;
    const std::string path =
        files.write("a", xmc(catalog("c", "en", "<msg/><msg>1</msg><msg>2</msg>")));
    message_catalogs set;
    EXPECT_EQ(file_success, seen(set.load_file(ustring8(path), "en")));
    EXPECT_EQ(1u, set.count(ustring8("c")));
    EXPECT_EQ("1", rendered(set, "c", ""));
}

// The size of a file counts modulo 4 GiB. The file is sparse.
TEST(CatalogFile, OfFourGiBAndSomeBytesIsReadAsTheseBytes) {
    const temporary_directory files;
    const std::string text = small_file("c", "k");
    const std::string path = files.write("a", text);
    ASSERT_EQ(0, ::truncate(path.c_str(), (1L << 32) + static_cast<off_t>(text.size())));
    message_catalogs set;
    EXPECT_EQ(file_success, seen(set.load_file(ustring8(path), "en")));
    EXPECT_EQ("x", rendered(set, "c", "k"));
}

TEST(CatalogFile, RaisesIfThereIsNoMemoryForItsTokens) {
    if (test_support::under_sanitizer())
        GTEST_SKIP() << "the sanitizer's allocator does not return null";
    const temporary_directory files;
    std::string comments;
    while (comments.size() < 8 << 20)
        comments += "<!---->";
    const ustring8 path(files.write("a", xmc(comments)));
    test_support::expect_in_child([&path] {
        unsigned long pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        // Enough for the bytes of the file, but not for its tokens.
        const rlim_t limit = pages * 4096 + (12 << 20);
        const rlimit limits = {limit, limit};
        ASSERT_EQ(0, ::setrlimit(RLIMIT_AS, &limits));
        message_catalogs set;
        EXPECT_THROW(set.load_file(path, "en"), std::bad_alloc);
        EXPECT_TRUE(set == nil);
    });
}

TEST(NilObjects, AreNilAndRenderAsTheEmptyString) {
    EXPECT_TRUE(message_catalogs::s_nil_catalog == nil);
    EXPECT_TRUE(message_catalogs::s_nil_message == nil);
    EXPECT_EQ(0u, message_catalogs::s_nil_catalog.size());
    EXPECT_EQ("", message_catalogs::s_nil_message.as_string(varg_list()));
    EXPECT_FALSE(message_catalogs::s_nil_catalog.allocated);
    EXPECT_NE(&message_catalogs::s_nil_message, &catalog_t::m_nil_message);
}

}  // namespace
