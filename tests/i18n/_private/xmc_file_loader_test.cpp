// Tests the loader of one file: what it reads from a file, its catalogs and its includes, and the
// errors that it returns. The grammar of messages, the text of errors and the choice of
// translations have their own tests next to this one.
#include <tova/i18n/_private/xmc_file_loader.hpp>

#include "i18n/_private/loader_support.hpp"
#include "support/child_process.hpp"
#include "support/temporary_directory.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace {

using test_support::catalog;
using test_support::combined;
using test_support::front;
using test_support::load;
using test_support::loaded_catalogs;
using test_support::msg;
using test_support::outcome;
using test_support::parse;
using test_support::seen;
using test_support::temporary_directory;
using test_support::text_of;
using test_support::thrown;
using test_support::tokens_of;
using test_support::walk;
using test_support::xmc;
using tova::i18n::_private::xmc_file_loader;

// ---- catalog id

TEST(CatalogId, MatchesEveryNameWhileItIsEmpty) {
    xmc_file_loader loader;
    EXPECT_FALSE(loader.is_cat_id_set());
    EXPECT_TRUE(loader.is_catalog_matched("a"));
    EXPECT_TRUE(loader.is_catalog_matched(""));
}

TEST(CatalogId, MatchesByteForByte) {
    xmc_file_loader loader;
    loader.parse("no such file", "en", "app");
    EXPECT_TRUE(loader.is_cat_id_set());
    EXPECT_TRUE(loader.is_catalog_matched("app"));
    EXPECT_FALSE(loader.is_catalog_matched("App"));
    EXPECT_FALSE(loader.is_catalog_matched("app "));
    EXPECT_FALSE(loader.is_catalog_matched(""));
}

// ---- parse

TEST(ParseFile, ReturnsKindTwoForAnEmptyLocaleUnlessACatalogIsNamed) {
    const temporary_directory files;
    const std::string path = files.write("a.xmc", xmc(catalog("c", ".", msg("k", "dot")) +
                                                      catalog("c", "en", msg("l", "english")) +
                                                      catalog("c", "de", msg("m", "deutsch"))));
    xmc_file_loader without_id;
    EXPECT_EQ(outcome(2, front + "Default locale lookup not supported yet"),
              seen(without_id.parse(path, "")));
    EXPECT_EQ(0u, without_id.get_locale_weight("en"));

    xmc_file_loader with_id;
    EXPECT_EQ(outcome(0, front + "No Error"), seen(with_id.parse(path, "", "c")));
    const loaded_catalogs catalogs = combined(with_id);
    EXPECT_EQ("dot", text_of(catalogs, "c", "k"));
    EXPECT_EQ("english", text_of(catalogs, "c", "l"));
    EXPECT_EQ("(none)", text_of(catalogs, "c", "m"));
}

TEST(ParseFile, ReturnsKindTwoForAnEmptyLocaleEvenIfTheFileIsMissing) {
    xmc_file_loader loader;
    EXPECT_EQ(2, loader.parse("no such file", "").type);
    EXPECT_EQ(3, loader.parse("no such file", "", "").type);
}

TEST(ParseFile, ReadsOnlyTheNamedCatalog) {
    const temporary_directory files;
    const std::string path = files.write(
        "a.xmc", xmc(catalog("a", "en", msg("k", "1")) + catalog("b", "en", msg("k", "2"))));
    xmc_file_loader loader;
    EXPECT_EQ(0, loader.parse(path, "en", "b").type);
    const loaded_catalogs catalogs = combined(loader);
    EXPECT_EQ(1u, catalogs.size());
    EXPECT_EQ("2", text_of(catalogs, "b", "k"));
}

TEST(ParseFile, AppendsTheFallbacksAgainIfACatalogIsNamed) {
    xmc_file_loader loader;
    loader.parse("no such file", "de", "c");  // . en de . en
    EXPECT_EQ(1u, loader.get_locale_weight("."));
    EXPECT_EQ(2u, loader.get_locale_weight("en"));
    EXPECT_EQ(3u, loader.get_locale_weight("de"));
    loader.handle_language("fr");  // . en fr, from position 6 on
    EXPECT_EQ(8u, loader.get_locale_weight("fr"));
}

TEST(ParseFile, WithoutALocaleUsesTheFallbacks) {
    const temporary_directory files;
    const std::string path = files.write("a.xmc", xmc(catalog("c", "en", msg("k", "x"))));
    xmc_file_loader loader;
    EXPECT_EQ(0, loader.parse(path).type);
    EXPECT_EQ("x", text_of(combined(loader), "c", "k"));
}

TEST(ParseFile, NamesAMissingFileWithoutAFileLine) {
    xmc_file_loader loader;
    EXPECT_EQ(outcome(3, front + "File \"no/such.xmc\" was not found on disk"),
              seen(loader.parse("no/such.xmc", "en")));
}

TEST(ParseFile, ReturnsKindThreeForADanglingLink) {
    const temporary_directory files;
    const std::string dangling = files.path("dangling.xmc");
    const std::string circle = files.path("circle.xmc");
    ASSERT_EQ(0, ::symlink("nowhere", dangling.c_str()));
    ASSERT_EQ(0, ::symlink("circle.xmc", circle.c_str()));
    for (const std::string& path : {dangling, circle, files.path("dangling.xmc/a.xmc")}) {
        xmc_file_loader loader;
        EXPECT_EQ(outcome(3, front + "File \"" + path + "\" was not found on disk"),
                  seen(loader.parse(path, "en")));
    }
}

TEST(ParseFile, TreatsAFileThatCannotBeReadAsEmpty) {
    const temporary_directory files;
    const std::string target = files.write("target.xmc", xmc(catalog("c", "en", "")));
    const std::string link = files.path("link.xmc");
    ASSERT_EQ(0, ::symlink(target.c_str(), link.c_str()));
    const std::string empty = files.write("empty.xmc", "");
    const std::string folder_link = files.path("folder.xmc");
    ASSERT_EQ(0, ::symlink(".", folder_link.c_str()));
    for (const std::string& path :
         {link, empty, files.path(), folder_link, std::string("/proc/self/status")}) {
        xmc_file_loader loader;
        EXPECT_EQ(outcome(4, front + "Valid XML header not found\n at line: \"0\"\n in file: \"" +
                                 path + "\""),
                  seen(loader.parse(path, "en")));
    }
}

TEST(ParseFile, AppendsANulByteThatCanBeTheUnexpectedCharacter) {
    const temporary_directory files;
    const std::string path = files.write("a.xmc", "<?xml?>\n<xmc version=\"1.1\"></xmc");
    xmc_file_loader loader;
    EXPECT_EQ(outcome(4, front + "Unexpected character \"" + std::string(1, '\0') +
                             "\" found while parsing\n at line: \"1\"\n in file: \"" + path + "\""),
              seen(loader.parse(path, "en")));
}

TEST(ParseFile, SkipsAByteOrderMark) {
    const temporary_directory files;
    const std::string path =
        files.write("a.xmc", "\xEF\xBB\xBF" + xmc(catalog("c", "en", msg("k", "x"))));
    xmc_file_loader loader;
    EXPECT_EQ(0, loader.parse(path, "en").type);
    EXPECT_EQ("x", text_of(combined(loader), "c", "k"));
}

TEST(ParseFile, AddsToTheCatalogsOfAnEarlierParse) {
    const temporary_directory files;
    const std::string first = files.write("a.xmc", xmc(catalog("a", "en", msg("k", "1"))));
    const std::string second = files.write("b.xmc", xmc(catalog("b", "fr", msg("k", "2"))));
    xmc_file_loader loader;
    EXPECT_EQ(0, loader.parse(first, "en").type);
    loader.reset();
    EXPECT_EQ(0, loader.parse(second, "fr").type);
    const loaded_catalogs catalogs = combined(loader);
    EXPECT_EQ("1", text_of(catalogs, "a", "k"));
    EXPECT_EQ("2", text_of(catalogs, "b", "k"));
}

// ---- parse_string

TEST(ParseString, WrapsAnXmlErrorWithItsLineAndTheFile) {
    const struct {
        const char* text;
        const char* message;
    } cases[] = {
        {"", "Valid XML header not found\n at line: \"0\""},
        {"<xmc/>", "Valid XML header not found\n at line: \"0\""},
        {"<?xml?>", "No root element was found\n at line: \"0\""},
        {"<?xml?>\n<xmc>", "Unexpected end of file during XML parsing\n at line: \"0\""},
        {"<?xml?>\n<xmc>\n</cmx>", "Mismatched end element \"cmx\" was found\n at line: \"2\""},
        {"<?xml?><xmc>\n\n&lt &amp;</xmc>",
         "Unexpected character \"&\" found while parsing\n at line: \"2\""},
        {"<?xml?><xmc a=1/>", "Missing \" while parsing attribute \"\"\n at line: \"0\""},
        {"<?xml?><xmc>\n&uuml;</xmc>", "Unknown enity being parsed\n at line: \"1\""},
        {"<?xml?><xmc a/>", "Missing = sign for attribute \"a\"\n at line: \"0\""},
        {"<?xml?><xmc a='' a=''/>", "attribute \"a\" is being redefined\n at line: \"0\""},
        {"<?xml?><xmc/><xmc/>", "Data found after root element\n at line: \"0\""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(outcome(4, front + c.message + "\n in file: \"f.xmc\""), parse(c.text));
    }
}

TEST(ParseString, RejectsARootThatIsNotXmc) {
    EXPECT_EQ(outcome(7, front + "Not XMC file, root element is not XMC but \"notes\"\n in file: "
                                 "\"f.xmc\""),
              parse("<?xml?><notes/>"));
    EXPECT_EQ(7, parse("<?xml?><XMC version=\"1.1\"/>").first);
}

TEST(ParseString, ReportsARootWithoutANameIfThereIsNoElement) {
    EXPECT_EQ(outcome(7, front + "Not XMC file, root element is not XMC but \"Value Not "
                                 "Defined\"\n in file: \"f.xmc\""),
              parse("<?xml?><!-- alone -->"));
    EXPECT_EQ(7, parse("<?xml?>text").first);
}

TEST(ParseString, RequiresAVersionAsTheFirstAttribute) {
    EXPECT_EQ(outcome(5, front + "Invalid attibute \"\"\n in file: \"f.xmc\""),
              parse("<?xml?><xmc/>"));
    EXPECT_EQ(outcome(5, front + "Invalid attibute \"name\"\n in file: \"f.xmc\""),
              parse("<?xml?><xmc name=\"a\" version=\"1.1\"/>"));
    EXPECT_EQ(outcome(5, front + "Invalid attibute \"Version\"\n in file: \"f.xmc\""),
              parse("<?xml?><xmc Version=\"1.1\"/>"));
    // A comment in place of the attribute is read as an attribute.
    EXPECT_EQ(outcome(5, front + "Invalid attibute \"version\"\n in file: \"f.xmc\""),
              parse("<?xml?><xmc><!--version--></xmc>"));
}

TEST(ParseString, AcceptsExactlyTwoVersions) {
    for (const char* version : {"1.0", "1.1"})
        EXPECT_EQ(0, parse("<?xml?><xmc version=\"" + std::string(version) + "\">" +
                           catalog("c", "en", "") + "</xmc>")
                         .first)
            << version;
    for (const char* version : {"2.0", "1", "", "1.10", "1.2", " 1.1"})
        EXPECT_EQ(outcome(8, front + "XMC version \"" + version +
                                 "\" is not supported\n in file: \"f.xmc\""),
                  parse("<?xml?><xmc version=\"" + std::string(version) + "\"/>"));
}

TEST(ParseString, MisreadsASecondAttributeOfTheRoot) {
    EXPECT_EQ(outcome(6, front + "Invalid element \"x\"\n in file: \"f.xmc\""),
              parse("<?xml?><xmc version=\"1.1\" a=\"x\">" + catalog("c", "en", "") + "</xmc>"));
}

TEST(ParseString, ReturnsKindOneWithoutAFileLineForARootWithoutElements) {
    for (const char* content : {"", "text", " ", "<!-- a --> text "})
        EXPECT_EQ(outcome(1, front + "No catalog was loaded in file: \"f.xmc\""),
                  parse(xmc(" " + std::string(content))));
}

TEST(ParseString, CountsASkippedCatalogAsRead) {
    EXPECT_EQ(outcome(0, front + "No Error"), parse(xmc(catalog("c", "fr", msg("k", "x")))));
    EXPECT_TRUE(load(xmc(catalog("c", "fr", msg("k", "x")))).empty());
}

TEST(ParseString, IgnoresTextAndCommentsBetweenElements) {
    const loaded_catalogs catalogs =
        load("<?xml?> <!-- front --> lead <xmc version=\"1.1\"> a <!-- b -->" +
             catalog("c", "en", " c " + msg("k", "x") + "<!-- d --> e " + msg("l", "y") + " f ") +
             " g <!-- h --> <![CDATA[<i>]]>" + catalog("d", "en", msg("k", "z")) + " j </xmc> k");
    EXPECT_EQ("x", text_of(catalogs, "c", "k"));
    EXPECT_EQ("y", text_of(catalogs, "c", "l"));
    EXPECT_EQ("z", text_of(catalogs, "d", "k"));
}

TEST(ParseString, RejectsOtherElementsInTheRoot) {
    EXPECT_EQ(outcome(6, front + "Invalid element \"msg\"\n in file: \"f.xmc\""),
              parse(xmc(msg("k", "x"))));
    EXPECT_EQ(outcome(6, front + "Invalid element \"Catalog\"\n in file: \"f.xmc\""),
              parse(xmc(catalog("c", "en", "") + "<Catalog/>")));
}

TEST(ParseString, IgnoresEverythingAfterTheRoot) {
    EXPECT_EQ(0, parse(xmc(catalog("c", "en", "")) + " trailing words <!-- and more -->").first);
    // The XML parser accepts an end tag that closes nothing, so this is accepted as well.
    EXPECT_EQ(0, parse(xmc(catalog("c", "en", "")) + "</more>").first);
}

TEST(ParseString, ReadsACommentDirectlyAfterTheRootTagAsTheEndOfTheTag) {
    EXPECT_EQ(outcome(6, front + "Invalid element \"\"\n in file: \"f.xmc\""),
              parse(xmc("<!-- c -->" + catalog("c", "en", ""))));
    EXPECT_EQ(0, parse(xmc(" <!-- c -->" + catalog("c", "en", ""))).first);
}

// ---- catalog

TEST(ParseCatalog, AcceptsNameAndLangInAnyOrderAndNothingElse) {
    EXPECT_EQ("x",
              text_of(load(xmc("<catalog lang=\"en\" name=\"c\">" + msg("k", "x") + "</catalog>")),
                      "c", "k"));
    EXPECT_EQ(outcome(5, front + "Invalid attibute \"id\"\n in file: \"f.xmc\""),
              parse(xmc("<catalog name=\"c\" id=\"7\" lang=\"en\"/>")));
    EXPECT_EQ(outcome(5, front + "Invalid attibute \"Name\"\n in file: \"f.xmc\""),
              parse(xmc("<catalog Name=\"c\"/>")));
}

TEST(ParseCatalog, ChecksAttributesEvenIfTheCatalogIsSkipped) {
    EXPECT_EQ(outcome(5, front + "Invalid attibute \"x\"\n in file: \"f.xmc\""),
              parse(xmc("<catalog name=\"c\" lang=\"fr\" x=\"\"/>")));
}

TEST(ParseCatalog, TreatsAMissingNameAsEmpty) {
    EXPECT_EQ("x",
              text_of(load(xmc("<catalog lang=\"en\">" + msg("k", "x") + "</catalog>")), "", "k"));
}

TEST(ParseCatalog, SkipsACatalogWithoutALocale) {
    EXPECT_TRUE(load(xmc("<catalog name=\"c\">" + msg("k", "x") + "</catalog>")).empty());
}

TEST(ParseCatalog, DoesNotExamineWhatItSkips) {
    EXPECT_EQ(0,
              parse(xmc(catalog("c", "fr", "<msg bad=\"\"><b><br/></b></msg><other/>text<msg/>") +
                        catalog("d", "en", msg("k", "x"))))
                  .first);
    EXPECT_EQ(6, parse(xmc(catalog("c", "fr", "<catalog/>"))).first)
        << "the first end of a catalog ends the skipping";
}

TEST(ParseCatalog, AddsNoCatalogWithoutMessages) {
    EXPECT_TRUE(load(xmc(catalog("c", "en", " <!-- nothing --> "))).empty());
}

TEST(ParseCatalog, RejectsElementsOtherThanMessages) {
    EXPECT_EQ(outcome(13, front + "Expected catalog end tag not found for catalog \"c\"\n in "
                                  "file: \"f.xmc\""),
              parse(xmc(catalog("c", "en", msg("k", "x") + "<text/>"))));
    EXPECT_EQ(13, parse(xmc(catalog("c", "en", "<include file=\"a\"/>"))).first);
}

TEST(ParseCatalog, ReadsACommentDirectlyAfterItsTagAsAnAttribute) {
    EXPECT_EQ(outcome(5, front + "Invalid attibute \" c \"\n in file: \"f.xmc\""),
              parse(xmc("<catalog name=\"c\" lang=\"en\"><!-- c --></catalog>")));
    EXPECT_EQ(outcome(5, front + "Invalid attibute \"lang\"\n in file: \"f.xmc\""),
              parse(xmc("<catalog name=\"c\" lang=\"en\"><!--lang--></catalog>")));
    EXPECT_EQ(0, parse(xmc(catalog("c", "en", "\n<!-- c -->"))).first);
}

TEST(ParseCatalog, StoresTheLocaleAsSpelledInTheFile) {
    const loaded_catalogs catalogs =
        load(xmc(catalog("c", "de-DE", msg("k", "x")) + catalog("d", ".", msg("k", "y"))),
             "de_DE.UTF-8");
    EXPECT_EQ("de-DE", std::string(catalogs.at("c")->message("k")._orginal_locale()));
    EXPECT_EQ(".", std::string(catalogs.at("d")->message("k")._orginal_locale()));
}

TEST(ParseCatalog, KeepsTheLocaleOfTheHighestWeightInAnyOrder) {
    const std::string english = catalog("c", "en", msg("k", "english"));
    const std::string german = catalog("c", "de", msg("k", "deutsch"));
    const std::string austrian = catalog("c", "de_AT", msg("k", "\xC3\xB6sterreichisch"));
    const std::string neutral = catalog("c", ".", msg("k", "neutral"));
    const std::string french = catalog("c", "fr",
                                       msg("k", "fran\xC3\xA7"
                                                "ais"));

    EXPECT_EQ("deutsch", text_of(load(xmc(english + german), "de_AT"), "c", "k"));
    EXPECT_EQ("deutsch", text_of(load(xmc(german + english), "de_AT"), "c", "k"));
    EXPECT_EQ("\xC3\xB6sterreichisch",
              text_of(load(xmc(neutral + austrian + german + english), "de_AT"), "c", "k"));
    EXPECT_EQ("deutsch", text_of(load(xmc(austrian + german + english), "de"), "c", "k"));
    EXPECT_EQ("english", text_of(load(xmc(neutral + english + german), "ja"), "c", "k"));
    EXPECT_EQ("neutral", text_of(load(xmc(neutral + german + french), "ja"), "c", "k"));
    EXPECT_EQ("(none)", text_of(load(xmc(german + french), "ja"), "c", "k"));
}

TEST(ParseCatalog, KeepsTheFirstMessageOfEqualLocalesWithinOneLoad) {
    EXPECT_EQ("1", text_of(load(xmc(catalog("c", "en", msg("k", "1") + msg("k", "2")))), "c", "k"));
    EXPECT_EQ("1", text_of(load(xmc(catalog("c", "en", msg("k", "1")) +
                                    catalog("c", "en", msg("k", "2")))),
                           "c", "k"));
    EXPECT_EQ("1", text_of(load(xmc(catalog("c", "de_AT", msg("k", "1")) +
                                    catalog("c", "de-AT", msg("k", "2"))),
                                "de_AT"),
                           "c", "k"));
}

TEST(ParseCatalog, TreatsAnEmptyMessageWithoutANameAsAbsent) {
    // Its locale has a higher weight, but it is still replaced.
    EXPECT_EQ(
        "x",
        text_of(load(xmc(catalog("c", "de", "<msg/>") + catalog("c", "en", "<msg>x</msg>")), "de"),
                "c", ""));
    // A key or a meta text is enough to keep it.
    EXPECT_EQ("", text_of(load(xmc(catalog("c", "de", "<msg meta=\"m\"/>") +
                                   catalog("c", "en", "<msg>x</msg>")),
                               "de"),
                          "c", ""));
}

TEST(ParseCatalog, NamesTheCatalogInErrorsOfItsMessages) {
    EXPECT_EQ(outcome(5, front + "Invalid attibute \"style\"\n in catalog element: \"c\"\n in "
                                 "file: \"f.xmc\""),
              parse(xmc(catalog("c", "en", "<msg style=\"\"/>"))));
}

// ---- include

class Include : public ::testing::Test {
protected:
    outcome load(const std::string& name, const std::string& locale = "en") {
        return seen(loader.parse(files.path(name), locale));
    }
    std::string in_file(const std::string& name) const {
        return "\n in file: \"" + files.path(name) + "\"";
    }
    std::string text(const std::string& catalog_name, const std::string& key) {
        return text_of(combined(loader), catalog_name, key);
    }

    temporary_directory files;
    xmc_file_loader loader;
};

TEST_F(Include, ReadsIntoTheSameCatalogs) {
    files.write("a.xmc", xmc(catalog("c", "en", msg("k", "a")) + "<include file=\"b.xmc\"/>" +
                             catalog("c", "en", msg("m", "a"))));
    files.write("b.xmc", xmc(catalog("c", "en", msg("k", "b") + msg("l", "b")) +
                             catalog("d", "en", msg("k", "b"))));
    EXPECT_EQ(outcome(0, front + "No Error"), load("a.xmc"));
    EXPECT_EQ("a", text("c", "k"));
    EXPECT_EQ("b", text("c", "l"));
    EXPECT_EQ("a", text("c", "m"));
    EXPECT_EQ("b", text("d", "k"));
}

TEST_F(Include, CountsAsReadOnItsOwn) {
    files.write("a.xmc", xmc("<include/>"));
    EXPECT_EQ(0, load("a.xmc").first);
    files.write("b.xmc", xmc("<include id=\"7\" File=\"x\"></include>"));
    EXPECT_EQ(0, load("b.xmc").first) << "other attributes are ignored";
}

TEST_F(Include, StartsFromTheDirectoryOfItsFile) {
    files.write("a.xmc", xmc("<include file=\"sub/b.xmc\"/><include file=\"sub/c.xmc\"/>"));
    files.write("sub/b.xmc", xmc("<include file=\"deep/d.xmc\"/><include file=\"../e.xmc\"/>" +
                                 catalog("b", "en", msg("k", "b"))));
    files.write("sub/c.xmc", xmc(catalog("c", "en", msg("k", "c"))));
    files.write("sub/deep/d.xmc", xmc(catalog("d", "en", msg("k", "d"))));
    files.write("e.xmc", xmc(catalog("e", "en", msg("k", "e"))));
    EXPECT_EQ(outcome(0, front + "No Error"), load("a.xmc"));
    for (const char* name : {"b", "c", "d", "e"})
        EXPECT_EQ(name, text(name, "k"));
}

TEST_F(Include, UsesAbsoluteNamesAsWritten) {
    const std::string other = files.write("other/b.xmc", xmc(catalog("b", "en", msg("k", "b"))));
    files.write("a.xmc", xmc("<include file=\"" + other + "\"/>"));
    EXPECT_EQ(0, load("a.xmc").first);
    EXPECT_EQ("b", text("b", "k"));
}

TEST_F(Include, PrefixesTheDirectoryToRelativeNamesOnly) {
    const struct {
        const char* name;
        bool is_prefixed;
    } cases[] = {
        {"/no/such", false}, {"\\no", false}, {"C:/x.xmc", false}, {"a:b", false},
        {"::x", false},      {"a:", true},    {":", true},         {"x", true},
        {"ab:c", true},      {"./x", true},   {"../x", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        files.write("a.xmc", xmc(std::string("<include file=\"") + c.name + "\"/>"));
        const std::string name = c.is_prefixed ? files.path(c.name) : c.name;
        xmc_file_loader fresh;
        EXPECT_EQ(
            outcome(3, front + "File \"" + name + "\" was not found on disk" + in_file("a.xmc")),
            seen(fresh.parse(files.path("a.xmc"), "en")));
    }
}

TEST_F(Include, StartsFromTheWorkingDirectoryForAPlainName) {
    xmc_file_loader fresh;
    fresh.handle_language("en");
    EXPECT_EQ(3, fresh.parse_file("no_such_file").type);
    // Nothing was read, so the base directory is still empty.
    walk at = tokens_of("<include file=\"x.xmc\"/>");
    EXPECT_EQ(outcome(3, front + "File \"x.xmc\" was not found on disk"),
              thrown([&] { fresh.parse_include(at.cursor, at.end); }));

    char previous[4096];
    ASSERT_NE(nullptr, ::getcwd(previous, sizeof previous));
    files.write("a.xmc", xmc("<include file=\"x.xmc\"/>"));
    ASSERT_EQ(0, ::chdir(files.path().c_str()));
    EXPECT_EQ(outcome(3, front + "File \"./x.xmc\" was not found on disk\n in file: \"a.xmc\""),
              seen(fresh.parse_file("a.xmc")));
    // After the error the base directory is still that of its file.
    at.rewind();
    EXPECT_EQ(outcome(3, front + "File \"./x.xmc\" was not found on disk"),
              thrown([&] { fresh.parse_include(at.cursor, at.end); }));
    ASSERT_EQ(0, ::chdir(previous));
}

TEST_F(Include, DoesNotRestoreTheDirectoryAfterAnError) {
    files.write("a.xmc", xmc("<include file=\"sub/b.xmc\"/>"));
    files.write("sub/b.xmc", xmc("<other/>"));
    EXPECT_EQ(6, load("a.xmc").first);
    walk at = tokens_of("<include file=\"x.xmc\"/>");
    EXPECT_EQ(outcome(3, front + "File \"" + files.path("sub/x.xmc") + "\" was not found on disk"),
              thrown([&] { loader.parse_include(at.cursor, at.end); }));
}

TEST_F(Include, EndsTheDirectoryAtEitherSeparator) {
    files.write("sub\\a.xmc", xmc("<include file=\"b.xmc\"/>"));
    EXPECT_EQ(outcome(3, front + "File \"" + files.path("sub\\b.xmc") + "\" was not found on disk" +
                             in_file("sub\\a.xmc")),
              load("sub\\a.xmc"));
}

TEST_F(Include, RejectsAnEmptyName) {
    files.write("a.xmc", xmc("<include file=\"\"/>"));
    EXPECT_EQ(outcome(3, front + "File \"\" was not found on disk" + in_file("a.xmc")),
              load("a.xmc"));
}

TEST_F(Include, NamesBothFilesInErrors) {
    files.write("a.xmc", xmc("<include file=\"b.xmc\"/>"));
    files.write("b.xmc", xmc(catalog("c", "en", "<msg><i/></msg>")));
    EXPECT_EQ(outcome(6, front + "Invalid element \"i\"\n in catalog element: \"c\"" +
                             in_file("b.xmc") + in_file("a.xmc")),
              load("a.xmc"));
    files.write("b.xmc", "<?xml?>\n<xmc");
    EXPECT_EQ(4, seen(xmc_file_loader().parse(files.path("a.xmc"), "en")).first);
}

TEST_F(Include, FailsForAFileWithoutElements) {
    files.write("a.xmc", xmc("<include file=\"b.xmc\"/>"));
    files.write("b.xmc", xmc(""));
    EXPECT_EQ(outcome(1, front + "No catalog was loaded in file: \"" + files.path("b.xmc") + "\"" +
                             in_file("a.xmc")),
              load("a.xmc"));
}

TEST_F(Include, RequiresAnEmptyElement) {
    for (const char* content : {" ", "x", "<br/>"}) {
        files.write("a.xmc", xmc(std::string("<include>") + content + "</include>"));
        xmc_file_loader fresh;
        EXPECT_EQ(outcome(12, front + "Expected \"include\" end tag not found" + in_file("a.xmc")),
                  seen(fresh.parse(files.path("a.xmc"), "en")));
    }
    files.write("a.xmc", xmc("<include><!-- c --></include>"));
    EXPECT_EQ(0, load("a.xmc").first) << "a comment there comes before the end of the start tag";
}

TEST_F(Include, ReportsAFileThatIncludesItself) {
    files.write("a.xmc", xmc(catalog("c", "en", msg("k", "x")) + "<include file=\"a.xmc\"/>"));
    EXPECT_EQ(outcome(14, front +
                              "Unexpected parse error happen!\n in an include of a file by "
                              "itself: \"" +
                              files.path("a.xmc") + "\"" + in_file("a.xmc")),
              load("a.xmc"));
}

TEST_F(Include, ReportsACycleOfFilesHoweverTheirPathsAreSpelled) {
    files.write("a.xmc", xmc("<include file=\"sub/b.xmc\"/>"));
    files.write("sub/b.xmc", xmc("<include file=\".././a.xmc\"/>"));
    EXPECT_EQ(outcome(14, front +
                              "Unexpected parse error happen!\n in an include of a file by "
                              "itself: \"" +
                              files.path("sub/.././a.xmc") + "\"" + in_file("sub/b.xmc") +
                              in_file("a.xmc")),
              load("a.xmc"));
}

// A chain of files, each of which includes the next one and has its own message. The last file has
// the given content.
void write_chain(const temporary_directory& files, int size, const std::string& last) {
    for (int i = 0; i < size; ++i)
        files.write(std::to_string(i), xmc(catalog("c", "en", msg(std::to_string(i), "x")) +
                                           "<include file=\"" + std::to_string(i + 1) + "\"/>"));
    files.write(std::to_string(size), last);
}

// The kind and the message of a load in a child with a small stack, and the number of messages.
std::string load_with_small_stack(const std::string& path) {
    test_support::child_limits limits;
    limits.stack_bytes = 256 * 1024;
    limits.cpu_seconds = 100;
    const auto result = test_support::run_in_child(
        [&path] {
            xmc_file_loader loader;
            const outcome loaded = seen(loader.parse(path, "en"));
            const loaded_catalogs catalogs = combined(loader);
            std::printf("%d %s\n%lu", loaded.first, loaded.second.c_str(),
                        catalogs.at("c")->size());
        },
        limits);
    EXPECT_TRUE(result.exited) << result.signal;
    return result.output;
}

TEST_F(Include, NeedsNoMoreStackForALongChain) {
    write_chain(files, 20000, xmc(catalog("c", "en", msg("last", "y"))));
    EXPECT_EQ("0 " + front + "No Error\n20001", load_with_small_stack(files.path("0")));
}

TEST_F(Include, NamesEachFileOfALongChainInAnError) {
    const int size = 2000;
    write_chain(files, size, xmc("<include file=\"1000\"/>"));
    std::string expected =
        "14 " + front + "Unexpected parse error happen!\n in an include of a file by itself: \"" +
        files.path("1000") + "\"";
    for (int i = size; i >= 0; --i)
        expected += in_file(std::to_string(i));
    EXPECT_EQ(expected + "\n2000", load_with_small_stack(files.path("0")));
}

TEST_F(Include, TreatsALinkToItsOwnFileAsEmptyLikeAnyOtherLink) {
    files.write("a.xmc", xmc("<include file=\"link.xmc\"/>"));
    ASSERT_EQ(0, ::symlink("a.xmc", files.path("link.xmc").c_str()));
    EXPECT_EQ(outcome(4, front + "Valid XML header not found\n at line: \"0\"" +
                             in_file("link.xmc") + in_file("a.xmc")),
              load("a.xmc"));
}

TEST_F(Include, ReportsACycleThroughALinkToADirectory) {
    files.write("a.xmc", xmc("<include file=\"here/a.xmc\"/>"));
    ASSERT_EQ(0, ::symlink(".", files.path("here").c_str()));
    EXPECT_EQ(14, load("a.xmc").first);
}

TEST_F(Include, MayReadAFileTwice) {
    files.write("a.xmc", xmc("<include file=\"b.xmc\"/><include file=\"b.xmc\"/>"
                             "<include file=\"c.xmc\"/>"));
    files.write("b.xmc", xmc(catalog("b", "en", msg("k", "b"))));
    files.write("c.xmc", xmc("<include file=\"b.xmc\"/>"));
    EXPECT_EQ(0, load("a.xmc").first);
    EXPECT_EQ("b", text("b", "k"));
}

TEST_F(Include, DistinguishesHardLinksInTwoDirectories) {
    files.write("a.xmc", xmc("<include file=\"sub/a.xmc\"/>"));
    ASSERT_EQ(0, ::mkdir(files.path("sub").c_str(), 0777));
    ASSERT_EQ(0, ::link(files.path("a.xmc").c_str(), files.path("sub/a.xmc").c_str()));
    files.write("sub/sub/a.xmc", xmc(catalog("c", "en", msg("k", "x"))));
    EXPECT_EQ(0, load("a.xmc").first);
    EXPECT_EQ("x", text("c", "k"));
}

TEST_F(Include, FollowsAThousandFiles) {
    for (int i = 0; i < 1000; ++i)
        files.write(std::to_string(i), xmc("<include file=\"" + std::to_string(i + 1) + "\"/>"));
    files.write("1000", xmc(catalog("c", "en", msg("k", "x"))));
    EXPECT_EQ(0, load("0").first);
    EXPECT_EQ("x", text("c", "k"));
}

// ---- bad input

const char complete[] =
    "<?xml version=\"1.0\"?>\n<xmc version=\"1.1\"> <!-- c -->\n"
    "<catalog name=\"app\" lang=\"en\">\n"
    "<msg name=\"hello\" meta=\"greeting\">Hello  <arg name='who' type='int' base='hex'/><br/>"
    "&lt;&#65;<![CDATA[ <x> ]]></msg>\n</catalog>\n</xmc>";

TEST(BadInput, EveryPrefixOfACatalogIsAnXmlError) {
    const std::string whole = complete;
    ASSERT_EQ(0, parse(whole).first);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        SCOPED_TRACE(length);
        const outcome result = parse(whole.substr(0, length));
        EXPECT_EQ(4, result.first);
        EXPECT_THAT(result.second, ::testing::StartsWith(front));
        EXPECT_THAT(result.second, ::testing::EndsWith("\n in file: \"f.xmc\""));
    }
}

TEST(BadInput, EveryPrefixOfAFileIsAnError) {
    const temporary_directory files;
    const std::string whole = complete;
    const std::size_t declaration = whole.find("?>") + 2;
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        SCOPED_TRACE(length);
        // After the declaration or its line, the appended NUL byte is text without a root.
        const bool has_text_only = length == declaration || length == declaration + 1;
        const int expected = length == whole.size() ? 0 : has_text_only ? 7 : 4;
        xmc_file_loader loader;
        const std::string path = files.write("a.xmc", whole.substr(0, length));
        EXPECT_EQ(expected, loader.parse(path, "en").type);
    }
}

TEST(BadInput, EveryByteMayBeRemovedOrReplaced) {
    const std::string whole = complete;
    const std::string replacements("<>/\"'=&; \n!-]?a\x01\x80\xFF", 18);
    for (std::size_t at = 0; at < whole.size(); ++at) {
        std::string lost = whole;
        lost.erase(at, 1);
        EXPECT_THAT(parse(lost).second, ::testing::StartsWith(front));
        for (const char replacement : replacements + '\0') {
            std::string changed = whole;
            changed[at] = replacement;
            const outcome result = parse(changed);
            EXPECT_LE(0, result.first);
            EXPECT_GE(14, result.first);
            EXPECT_THAT(result.second, ::testing::StartsWith(front));
        }
    }
}

}  // namespace
