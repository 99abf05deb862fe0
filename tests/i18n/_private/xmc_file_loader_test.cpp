#include <tova/i18n/_private/xmc_file_loader.hpp>

#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <tuple>
#include <typeinfo>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "i18n/catalog_text.hpp"
#include "support/child_process.hpp"
#include "support/temporary_directory.hpp"

namespace {

using test_support::catalog;
using test_support::combined;
using test_support::items_of;
using test_support::loaded_catalogs;
using test_support::msg;
using test_support::temporary_directory;
using test_support::text_of;
using test_support::xmc;
using TOVA_2_18::i18n::catalog_t;
using TOVA_2_18::i18n::message_item;
using TOVA_2_18::i18n::message_t;
using TOVA_2_18::i18n::_private::xmc_file_loader;
using TOVA_2_18::parser::xml_parser;
using TOVA_2_18::parser::xml_token_stream;
using TOVA_2_18::strings::ustring8;

using load_error = xmc_file_loader::load_error;
using token = xml_token_stream::token;
using parse_error = xml_parser::parse_error;

using outcome = std::pair<int, std::string>;

outcome seen(const load_error& error) {
    return outcome(error.type, error.message);
}

const std::string front = "xmc_file_loader::load_error - ";

// The outcome of a text that is read for a wanted locale, under the file name "f.xmc".
outcome parse(const std::string& text, const std::string& locale = "en") {
    xmc_file_loader loader;
    loader.handle_language(locale);
    return seen(loader.parse_string(text, "f.xmc"));
}

loaded_catalogs load(const std::string& text, const std::string& locale = "en") {
    xmc_file_loader loader;
    loader.handle_language(locale);
    const load_error error = loader.parse_string(text, "f.xmc");
    EXPECT_EQ(xmc_file_loader::no_error, error.type) << error.message;
    return combined(loader);
}

// The items of a message with that content.
std::string items(const std::string& content) {
    const loaded_catalogs catalogs = load(xmc(catalog("c", "en", msg("k", content))));
    const auto entry = catalogs.find("c");
    return entry == catalogs.end() ? "(none)" : items_of(entry->second->message("k"));
}

// The fault of a message with that content, all lines of it.
std::string message_fault(const std::string& content) {
    return parse(xmc(catalog("c", "en", msg("k", content)))).second;
}

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

// A token list and the two ends that the grammar operations take.
struct walk {
    explicit walk(std::list<token> list) : tokens(std::move(list)) { rewind(); }
    void rewind() {
        cursor = tokens.begin();
        end = tokens.end();
    }
    long taken() const {
        return std::distance(std::list<token>::const_iterator(tokens.begin()), cursor);
    }

    std::list<token> tokens;
    std::list<token>::const_iterator cursor;
    std::list<token>::const_iterator end;
};

// The tokens of an element, made from text without a declaration.
walk tokens_of(const std::string& element) {
    xml_token_stream stream;
    stream.parse("<?xml?>" + element);
    return walk(std::list<token>(stream.begin(), stream.end()));
}

template <typename Operation>
outcome thrown(Operation operation) {
    try {
        operation();
    } catch (const load_error& error) {
        return seen(error);
    }
    return outcome(-1, "nothing thrown");
}

// ---- load_error

TEST(LoadError, RendersEachKindWithItsText) {
    const struct {
        xmc_file_loader::error_type kind;
        const char* message;
    } cases[] = {
        {xmc_file_loader::no_error, "xmc_file_loader::load_error - No Error"},
        {xmc_file_loader::no_catalog,
         "xmc_file_loader::load_error - No catalog was loaded in file: \"T\""},
        {xmc_file_loader::no_default_locale,
         "xmc_file_loader::load_error - Default locale lookup not supported yet"},
        {xmc_file_loader::file_not_found,
         "xmc_file_loader::load_error - File \"T\" was not found on disk"},
        {xmc_file_loader::invalid_attribute,
         "xmc_file_loader::load_error - Invalid attibute \"T\""},
        {xmc_file_loader::invalid_element, "xmc_file_loader::load_error - Invalid element \"T\""},
        {xmc_file_loader::not_xmc,
         "xmc_file_loader::load_error - Not XMC file, root element is not XMC but \"T\""},
        {xmc_file_loader::bad_version,
         "xmc_file_loader::load_error - XMC version \"T\" is not supported"},
        {xmc_file_loader::br_not_closed,
         "xmc_file_loader::load_error - Expected BR end tag not found"},
        {xmc_file_loader::msg_not_closed, "xmc_file_loader::load_error - Expected msg (message) "
                                          "end tag not found for message \"T\""},
        {xmc_file_loader::arg_not_closed, "xmc_file_loader::load_error - Expected arg (argument) "
                                          "end tag not found for argument \"T\""},
        {xmc_file_loader::include_not_closed,
         "xmc_file_loader::load_error - Expected \"include\" end tag not found"},
        {xmc_file_loader::catalog_not_closed,
         "xmc_file_loader::load_error - Expected catalog end tag not found for catalog \"T\""},
        {xmc_file_loader::unexpected,
         "xmc_file_loader::load_error - Unexpected parse error happen!"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        const load_error error(c.kind, "T");
        EXPECT_EQ(outcome(c.kind, c.message), seen(error));
    }
}

TEST(LoadError, NumbersItsKindsFromZeroToFourteen) {
    EXPECT_EQ(0, xmc_file_loader::no_error);
    EXPECT_EQ(1, xmc_file_loader::no_catalog);
    EXPECT_EQ(2, xmc_file_loader::no_default_locale);
    EXPECT_EQ(3, xmc_file_loader::file_not_found);
    EXPECT_EQ(4, xmc_file_loader::xml_error);
    EXPECT_EQ(5, xmc_file_loader::invalid_attribute);
    EXPECT_EQ(6, xmc_file_loader::invalid_element);
    EXPECT_EQ(7, xmc_file_loader::not_xmc);
    EXPECT_EQ(8, xmc_file_loader::bad_version);
    EXPECT_EQ(9, xmc_file_loader::br_not_closed);
    EXPECT_EQ(10, xmc_file_loader::msg_not_closed);
    EXPECT_EQ(11, xmc_file_loader::arg_not_closed);
    EXPECT_EQ(12, xmc_file_loader::include_not_closed);
    EXPECT_EQ(13, xmc_file_loader::catalog_not_closed);
    EXPECT_EQ(14, xmc_file_loader::unexpected);
    EXPECT_EQ(4u, sizeof(xmc_file_loader::error_type));
    EXPECT_EQ(4u, sizeof(load_error::append_type));
}

TEST(LoadError, RendersXmlFaultsWithoutTheirParseErrorAsUnknown) {
    const std::string type = "N9TOVA_2_184i18n8_private15xmc_file_loader10error_typeE";
    EXPECT_EQ("unknown, or unhandle case happened! < " + type + " value of 4 > str data=T",
              load_error(xmc_file_loader::xml_error, "T").message);
    EXPECT_EQ("unknown, or unhandle case happened! < " + type + " value of 15 > str data=",
              load_error(static_cast<xmc_file_loader::error_type>(15), "").message);
    EXPECT_EQ("unknown, or unhandle case happened! < " + type + " value of -1 > str data=T",
              load_error(static_cast<xmc_file_loader::error_type>(-1), "T").message);
    EXPECT_EQ(15, load_error(static_cast<xmc_file_loader::error_type>(15), "").type);
}

TEST(LoadError, RendersAParseErrorByItsOwnKindAndStoresTheGivenOne) {
    const struct {
        parse_error::error_type kind;
        const char* message;
    } cases[] = {
        {parse_error::unexpected_end, "Unexpected end of file during XML parsing"},
        {parse_error::mismatched_end, "Mismatched end element \"T\" was found"},
        {parse_error::no_root, "No root element was found"},
        {parse_error::no_header, "Valid XML header not found"},
        {parse_error::unexpected_character, "Unexpected character \"T\" found while parsing"},
        {parse_error::missing_quote, "Missing \" while parsing attribute \"T\""},
        {parse_error::unknown_entity, "Unknown enity being parsed"},
        {parse_error::missing_equals, "Missing = sign for attribute \"T\""},
        {parse_error::attribute_redefined, "attribute \"T\" is being redefined"},
        {parse_error::data_after_root, "Data found after root element"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        const load_error error(xmc_file_loader::not_xmc, parse_error(c.kind, 4000000000u, "T"));
        EXPECT_EQ(outcome(7, front + c.message + "\n at line: \"4000000000\""), seen(error));
    }
}

TEST(LoadError, RendersNoFaultAndUnknownFaultsOfTheParserWithoutALine) {
    for (const int kind : {0, 11, 12}) {
        const parse_error fault(static_cast<parse_error::error_type>(kind), 3, "T");
        EXPECT_EQ(outcome(4, front + "Unknown Parse error"),
                  seen(load_error(xmc_file_loader::xml_error, fault)));
    }
}

TEST(LoadError, AppendsALineForEachLevel) {
    load_error error(xmc_file_loader::br_not_closed, "");
    error.append_error_stack(load_error::in_message, "m");
    error.append_error_stack(load_error::in_catalog, "c");
    error.append_error_stack(load_error::in_file, "f");
    error.append_error_stack(load_error::at_line, "12");
    EXPECT_EQ(front + "Expected BR end tag not found\n in message element: \"m\"\n in catalog "
                      "element: \"c\"\n in file: \"f\"\n at line: \"12\"",
              std::string(error.message));
    EXPECT_EQ(1, load_error::in_message);
    EXPECT_EQ(2, load_error::in_catalog);
    EXPECT_EQ(3, load_error::in_file);
    EXPECT_EQ(4, load_error::at_line);
}

TEST(LoadError, AppendsAnUnknownLevelWithItsNumber) {
    load_error error(xmc_file_loader::no_error, "");
    error.append_error_stack(static_cast<load_error::append_type>(5), "T");
    EXPECT_EQ(front + "No Error\n unknown, or unhandle case happened! < "
                      "N9TOVA_2_184i18n8_private15xmc_file_loader10load_error11append_typeE value "
                      "of 5 > str data=T",
              std::string(error.message));
}

TEST(LoadError, FormatsWithoutChangingItself) {
    load_error error(xmc_file_loader::no_error, "");
    EXPECT_EQ(front + "Invalid element \"x\"",
              std::string(error.format_msg(xmc_file_loader::invalid_element, "x")));
    EXPECT_EQ("\n in file: \"x\"", std::string(error.format_msg(load_error::in_file, "x")));
    EXPECT_EQ(front + "No root element was found\n at line: \"0\"",
              std::string(error.format_msg(parse_error(parse_error::no_root, 0, ""))));
    EXPECT_EQ(outcome(0, front + "No Error"), seen(error));
}

TEST(LoadError, KeepsEmbeddedZeroBytes) {
    const ustring8 text(3, '\0');
    EXPECT_EQ(front + "Invalid attibute \"" + std::string(3, '\0') + "\"",
              std::string(load_error(xmc_file_loader::invalid_attribute, text).message));
}

TEST(LoadError, CopiesKindAndMessage) {
    const load_error error(xmc_file_loader::bad_version, "3");
    const load_error copy(error);
    EXPECT_EQ(seen(error), seen(copy));
}

// ---- locales

TEST(LocaleList, PutsSpecialLocalesBehindGeneralOnes) {
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

TEST(LocaleList, HoldsTheTwoFallbacksAloneForNoLocale) {
    xmc_file_loader loader;
    loader.handle_language("");
    EXPECT_EQ(1u, loader.get_locale_weight("."));
    EXPECT_EQ(2u, loader.get_locale_weight("en"));
    EXPECT_EQ(0u, loader.get_locale_weight(""));
}

TEST(LocaleList, IsEmptyAtFirst) {
    xmc_file_loader loader;
    EXPECT_EQ(0u, loader.get_locale_weight("."));
    EXPECT_EQ(0u, loader.get_locale_weight("en"));
    EXPECT_FALSE(loader.is_lang_id_good("en"));
}

TEST(LocaleList, IsAppendedToAndTheFirstOfEqualsWeighs) {
    xmc_file_loader loader;
    loader.handle_language("de");  // . en de
    loader.handle_language("fr");  // . en fr
    EXPECT_EQ(1u, loader.get_locale_weight("."));
    EXPECT_EQ(2u, loader.get_locale_weight("en"));
    EXPECT_EQ(3u, loader.get_locale_weight("de"));
    EXPECT_EQ(6u, loader.get_locale_weight("fr"));
}

TEST(LocaleList, ReadsDotsAndHyphensOfTheAskedLocaleAsUnderscores) {
    xmc_file_loader loader;
    loader.handle_language("de-AT.utf8");
    for (const char* name : {"de_AT", "de-AT", "de.AT"})
        EXPECT_EQ(4u, loader.get_locale_weight(name)) << name;
    EXPECT_EQ(5u, loader.get_locale_weight("de.AT-utf8"));
    EXPECT_TRUE(loader.is_lang_id_good("de-AT"));
    EXPECT_FALSE(loader.is_lang_id_good("at"));
}

TEST(LocaleList, LeavesALocaleOfOneByteAsItIs) {
    xmc_file_loader dot;
    dot.handle_language(".");  // . en .
    EXPECT_EQ(1u, dot.get_locale_weight("."));
    EXPECT_EQ(0u, dot.get_locale_weight("_"));

    xmc_file_loader hyphen;
    hyphen.handle_language("-");
    EXPECT_EQ(3u, hyphen.get_locale_weight("-"));
    EXPECT_EQ(0u, hyphen.get_locale_weight("_"));
}

TEST(LocaleList, TakesAnEmptyPartAsAnEntry) {
    xmc_file_loader underscore;
    underscore.handle_language("_");  // . en and the empty text
    EXPECT_EQ(3u, underscore.get_locale_weight(""));

    xmc_file_loader doubled;
    doubled.handle_language("de__AT");
    EXPECT_EQ(4u, doubled.get_locale_weight("de_"));
    EXPECT_EQ(5u, doubled.get_locale_weight("de__AT"));
    EXPECT_EQ(0u, doubled.get_locale_weight("de_AT"));

    // The catalog without a locale is read then.
    EXPECT_EQ("x", text_of(load(xmc("<catalog name=\"c\"><msg name=\"k\">x</msg></catalog>"), "_"),
                           "c", "k"));
}

TEST(LocaleList, OpensNoEntryBehindATrailingSeparator) {
    xmc_file_loader loader;
    loader.handle_language("de_");
    EXPECT_EQ(3u, loader.get_locale_weight("de"));
    EXPECT_EQ(0u, loader.get_locale_weight("de_"));
}

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

TEST(ParseFile, GivesKindTwoForNoLocaleUnlessACatalogIsNamed) {
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

TEST(ParseFile, GivesKindTwoForNoLocaleEvenIfTheFileIsMissing) {
    xmc_file_loader loader;
    EXPECT_EQ(2, loader.parse("no such file", "").type);
    EXPECT_EQ(3, loader.parse("no such file", "", "").type);
}

TEST(ParseFile, ReadsTheNamedCatalogAlone) {
    const temporary_directory files;
    const std::string path = files.write(
        "a.xmc", xmc(catalog("a", "en", msg("k", "1")) + catalog("b", "en", msg("k", "2"))));
    xmc_file_loader loader;
    EXPECT_EQ(0, loader.parse(path, "en", "b").type);
    const loaded_catalogs catalogs = combined(loader);
    EXPECT_EQ(1u, catalogs.size());
    EXPECT_EQ("2", text_of(catalogs, "b", "k"));
}

TEST(ParseFile, AppendsTheFallbacksOnceMoreWithACatalogName) {
    xmc_file_loader loader;
    loader.parse("no such file", "de", "c");  // . en de . en
    EXPECT_EQ(1u, loader.get_locale_weight("."));
    EXPECT_EQ(2u, loader.get_locale_weight("en"));
    EXPECT_EQ(3u, loader.get_locale_weight("de"));
    loader.handle_language("fr");  // . en fr, from the sixth place on
    EXPECT_EQ(8u, loader.get_locale_weight("fr"));
}

TEST(ParseFile, WithoutALocaleReadsForTheFallbacks) {
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

TEST(ParseFile, ReturnsKindThreeForALinkThatLeadsNowhere) {
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

TEST(ParseFile, TakesWhatCannotBeReadForEmpty) {
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

TEST(ParseFile, AppendsAZeroByteThatCanBeTheOffendingCharacter) {
    const temporary_directory files;
    const std::string path = files.write("a.xmc", "<?xml?>\n<xmc version=\"1.1\"></xmc");
    xmc_file_loader loader;
    EXPECT_EQ(outcome(4, front + "Unexpected character \"" + std::string(1, '\0') +
                             "\" found while parsing\n at line: \"1\"\n in file: \"" + path + "\""),
              seen(loader.parse(path, "en")));
}

TEST(ParseFile, PassesOverAByteOrderMark) {
    const temporary_directory files;
    const std::string path =
        files.write("a.xmc", "\xEF\xBB\xBF" + xmc(catalog("c", "en", msg("k", "x"))));
    xmc_file_loader loader;
    EXPECT_EQ(0, loader.parse(path, "en").type);
    EXPECT_EQ("x", text_of(combined(loader), "c", "k"));
}

TEST(ParseFile, AddsToWhatAnEarlierParseRead) {
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

TEST(ParseString, WrapsAnXmlFaultWithItsLineAndTheFile) {
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

TEST(ParseString, RefusesARootThatIsNotXmc) {
    EXPECT_EQ(outcome(7, front + "Not XMC file, root element is not XMC but \"notes\"\n in file: "
                                 "\"f.xmc\""),
              parse("<?xml?><notes/>"));
    EXPECT_EQ(7, parse("<?xml?><XMC version=\"1.1\"/>").first);
}

TEST(ParseString, TakesATextWithoutAnElementForARootWithoutAName) {
    EXPECT_EQ(outcome(7, front + "Not XMC file, root element is not XMC but \"Value Not "
                                 "Defined\"\n in file: \"f.xmc\""),
              parse("<?xml?><!-- alone -->"));
    EXPECT_EQ(7, parse("<?xml?>text").first);
}

TEST(ParseString, WantsAVersionAsTheFirstAttribute) {
    EXPECT_EQ(outcome(5, front + "Invalid attibute \"\"\n in file: \"f.xmc\""),
              parse("<?xml?><xmc/>"));
    EXPECT_EQ(outcome(5, front + "Invalid attibute \"name\"\n in file: \"f.xmc\""),
              parse("<?xml?><xmc name=\"a\" version=\"1.1\"/>"));
    EXPECT_EQ(outcome(5, front + "Invalid attibute \"Version\"\n in file: \"f.xmc\""),
              parse("<?xml?><xmc Version=\"1.1\"/>"));
    // A comment in the place of the attribute is taken for one.
    EXPECT_EQ(outcome(5, front + "Invalid attibute \"version\"\n in file: \"f.xmc\""),
              parse("<?xml?><xmc><!--version--></xmc>"));
}

TEST(ParseString, AcceptsTwoVersions) {
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

TEST(ParseString, IsDerailedByASecondAttributeOfTheRoot) {
    EXPECT_EQ(outcome(6, front + "Invalid element \"x\"\n in file: \"f.xmc\""),
              parse("<?xml?><xmc version=\"1.1\" a=\"x\">" + catalog("c", "en", "") + "</xmc>"));
}

TEST(ParseString, GivesKindOneForARootWithoutElementsAndNoFileLine) {
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

TEST(ParseString, RefusesOtherElementsInTheRoot) {
    EXPECT_EQ(outcome(6, front + "Invalid element \"msg\"\n in file: \"f.xmc\""),
              parse(xmc(msg("k", "x"))));
    EXPECT_EQ(outcome(6, front + "Invalid element \"Catalog\"\n in file: \"f.xmc\""),
              parse(xmc(catalog("c", "en", "") + "<Catalog/>")));
}

TEST(ParseString, DoesNotLookBehindTheRoot) {
    EXPECT_EQ(0, parse(xmc(catalog("c", "en", "")) + " trailing words <!-- and more -->").first);
    // An end tag that closes nothing is the parser's business and passes, too.
    EXPECT_EQ(0, parse(xmc(catalog("c", "en", "")) + "</more>").first);
}

TEST(ParseString, TakesACommentRightBehindTheRootTagForTheEndOfTheTag) {
    EXPECT_EQ(outcome(6, front + "Invalid element \"\"\n in file: \"f.xmc\""),
              parse(xmc("<!-- c -->" + catalog("c", "en", ""))));
    EXPECT_EQ(0, parse(xmc(" <!-- c -->" + catalog("c", "en", ""))).first);
}

// ---- catalog

TEST(ParseCatalog, TakesNameAndLangInAnyOrderAndNothingElse) {
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

TEST(ParseCatalog, TakesAMissingNameForTheEmptyOne) {
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

TEST(ParseCatalog, RefusesOtherElementsThanMessages) {
    EXPECT_EQ(outcome(13, front + "Expected catalog end tag not found for catalog \"c\"\n in "
                                  "file: \"f.xmc\""),
              parse(xmc(catalog("c", "en", msg("k", "x") + "<text/>"))));
    EXPECT_EQ(13, parse(xmc(catalog("c", "en", "<include file=\"a\"/>"))).first);
}

TEST(ParseCatalog, TakesACommentRightBehindItsTagForAnAttribute) {
    EXPECT_EQ(outcome(5, front + "Invalid attibute \" c \"\n in file: \"f.xmc\""),
              parse(xmc("<catalog name=\"c\" lang=\"en\"><!-- c --></catalog>")));
    EXPECT_EQ(outcome(5, front + "Invalid attibute \"lang\"\n in file: \"f.xmc\""),
              parse(xmc("<catalog name=\"c\" lang=\"en\"><!--lang--></catalog>")));
    EXPECT_EQ(0, parse(xmc(catalog("c", "en", "\n<!-- c -->"))).first);
}

TEST(ParseCatalog, StoresTheLocaleAsTheFileWritesIt) {
    const loaded_catalogs catalogs =
        load(xmc(catalog("c", "de-DE", msg("k", "x")) + catalog("d", ".", msg("k", "y"))),
             "de_DE.UTF-8");
    EXPECT_EQ("de-DE", std::string(catalogs.at("c")->message("k")._orginal_locale()));
    EXPECT_EQ(".", std::string(catalogs.at("d")->message("k")._orginal_locale()));
}

TEST(ParseCatalog, LetsTheHeaviestLocaleWinWhereverItStands) {
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

TEST(ParseCatalog, KeepsTheFirstOfTwoEqualsWithinOneLoad) {
    EXPECT_EQ("1", text_of(load(xmc(catalog("c", "en", msg("k", "1") + msg("k", "2")))), "c", "k"));
    EXPECT_EQ("1", text_of(load(xmc(catalog("c", "en", msg("k", "1")) +
                                    catalog("c", "en", msg("k", "2")))),
                           "c", "k"));
    EXPECT_EQ("1", text_of(load(xmc(catalog("c", "de_AT", msg("k", "1")) +
                                    catalog("c", "de-AT", msg("k", "2"))),
                                "de_AT"),
                           "c", "k"));
}

TEST(ParseCatalog, TakesAnEmptyNamelessMessageForAbsent) {
    // Its locale weighs more, and it gives way all the same.
    EXPECT_EQ(
        "x",
        text_of(load(xmc(catalog("c", "de", "<msg/>") + catalog("c", "en", "<msg>x</msg>")), "de"),
                "c", ""));
    // A name or a meta text is enough to stay.
    EXPECT_EQ("", text_of(load(xmc(catalog("c", "de", "<msg meta=\"m\"/>") +
                                   catalog("c", "en", "<msg>x</msg>")),
                               "de"),
                          "c", ""));
}

TEST(ParseCatalog, NamesTheCatalogBehindTheFaultsOfItsMessages) {
    EXPECT_EQ(outcome(5, front + "Invalid attibute \"style\"\n in catalog element: \"c\"\n in "
                                 "file: \"f.xmc\""),
              parse(xmc(catalog("c", "en", "<msg style=\"\"/>"))));
}

// ---- message

TEST(ParseMessage, HasKeyMetaAndItems) {
    const loaded_catalogs catalogs =
        load("<?xml version=\"1.0\"?><xmc version=\"1.1\"><catalog name=\"app\" lang=\"en\"><msg "
             "name=\"hello\" meta=\"greeting\">Hello <arg name=\"who\" "
             "type=\"string\"/><br/></msg></catalog></xmc>");
    const message_t& hello = catalogs.at("app")->message("hello");
    EXPECT_EQ("hello", std::string(hello.name()));
    EXPECT_EQ("greeting", std::string(hello.meta()));
    EXPECT_EQ("en", std::string(hello._orginal_locale()));
    EXPECT_EQ("[0:Hello ][1:who][0:\n]", items_of(hello));
    EXPECT_EQ("app", std::string(catalogs.at("app")->name()));
}

TEST(ParseMessage, TakesAMissingNameForTheEmptyOne) {
    EXPECT_EQ("x", text_of(load(xmc(catalog("c", "en", "<msg>x</msg>"))), "c", ""));
}

TEST(ParseMessage, KeepsSingleWhitespaceAndJoinsRunsToOneBlank) {
    const struct {
        const char* content;
        const char* items;
    } cases[] = {
        {"", ""},
        {"a b", "[0:a b]"},
        {"a\nb", "[0:a\nb]"},
        {"a\tb", "[0:a\tb]"},
        {"a  b", "[0:a b]"},
        {"a \n\t b", "[0:a b]"},
        {"a b  c   d", "[0:a b c d]"},
        {" a", "[0:a]"},
        {"\n   a", "[0:a]"},
        {"a ", "[0:a ]"},
        {"a\n", "[0:a\n]"},
        {"a  ", "[0:a ]"},
        {"   ", ""},
        {"a <br/>", "[0:a \n]"},
        {"a  <br/>", "[0:a \n]"},
        {"one<br/>two", "[0:one\ntwo]"},
        {"one<br/> two", "[0:one\n two]"},
        {"one<br/>\n   two", "[0:one\n two]"},
        {"<br/>", "[0:\n]"},
        {"<br></br>", "[0:\n]"},
        {" <br/> <br/> ", "[0:\n \n ]"},
        {"a &amp; b", "[0:a & b]"},
        {"a&nbsp;&nbsp;b", "[0:a  b]"},
        {"a&nbsp;", "[0:a ]"},
        {"&#65;&#x42;", "[0:AB]"},
        {"<![CDATA[a  <b>  c]]>", "[0:a  <b>  c]"},
        {"x  <![CDATA[a]]>", "[0:x   a]"},  // the section keeps the whitespace in front of it
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.content);
        EXPECT_EQ(c.items, items(c.content));
    }
}

TEST(ParseMessage, MakesAnItemOfTheBlankBehindAnArgument) {
    const struct {
        const char* content;
        const char* items;
    } cases[] = {
        {"<arg name='a'/> <arg name='b'/>", "[1:a][0: ][1:b]"},
        {"<arg name='a'/>\n\t  <arg name='b'/>", "[1:a][0: ][1:b]"},
        {"<arg name='a'/><arg name='b'/>", "[1:a][1:b]"},
        {"<arg name='a'/> ", "[1:a][0: ]"},
        {" <arg name='a'/>", "[1:a]"},
        {"<arg name='a'/> x", "[1:a][0: x]"},
        {"<arg name='a'/>x  ", "[1:a][0:x ]"},
        {"x <arg name='a'/>", "[0:x ][1:a]"},
        {"x  <arg name='a'/>", "[0:x ][1:a]"},
        {"<arg name='a'/><br/> <arg name='b'/>", "[1:a][0:\n ][1:b]"},
        {"<arg name='a'/> <!-- c --> <arg name='b'/>", "[1:a][0: ][1:b]"},
        {"<arg name='a'/><!-- c --> <arg name='b'/>", "[1:a][1:b]"},  // not right behind
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.content);
        EXPECT_EQ(c.items, items(c.content));
    }
}

TEST(ParseMessage, PassesOverComments) {
    EXPECT_EQ("[0:ab]", items("a<!-- c -->b"));
    EXPECT_EQ("[0:a b]", items("a  <!-- c -->  b"));
    EXPECT_EQ("[0:b]", items(" <!-- c --> b"));
}

TEST(ParseMessage, TakesACommentRightBehindItsTagForAnAttribute) {
    EXPECT_EQ(front + "Invalid attibute \"c\"\n in catalog element: \"c\"\n in file: \"f.xmc\"",
              message_fault("<!--c-->x"));
}

TEST(ParseMessage, RefusesOtherAttributes) {
    EXPECT_EQ(5, parse(xmc(catalog("c", "en", "<msg lang=\"de\" name=\"k\">x</msg>"))).first);
}

TEST(ParseMessage, RefusesOtherElements) {
    EXPECT_EQ(front + "Invalid element \"b\"\n in catalog element: \"c\"\n in file: \"f.xmc\"",
              message_fault("a <b>bold</b>"));
    EXPECT_EQ(front + "Invalid element \"Arg\"\n in catalog element: \"c\"\n in file: \"f.xmc\"",
              message_fault("<Arg name='a'/>"));
}

TEST(ParseMessage, WantsAnEmptyBr) {
    EXPECT_EQ(front + "Invalid attibute \"x\"\n in catalog element: \"c\"\n in file: \"f.xmc\"",
              message_fault("<br x=''/>"));
    EXPECT_EQ(front + "Expected BR end tag not found\n in catalog element: \"c\"\n in file: "
                      "\"f.xmc\"",
              message_fault("<br>x</br>"));
    EXPECT_EQ(front + "Invalid attibute \"c\"\n in catalog element: \"c\"\n in file: \"f.xmc\"",
              message_fault("<br><!--c--></br>"));
}

TEST(ParseMessage, EndsAtAnyTokenThatReadsMsg) {
    const std::string fault =
        front + "Expected catalog end tag not found for catalog \"c\"\n in file: \"f.xmc\"";
    for (const char* content : {"msg", "<![CDATA[msg]]>", "a<!--msg-->", "<msg/>", " msg"}) {
        SCOPED_TRACE(content);
        EXPECT_EQ(fault, message_fault(content));
    }
    EXPECT_EQ("[0: msg]", items("&nbsp;msg"));
    EXPECT_EQ("[0:msg ]", items("msg "));
}

// ---- argument

TEST(ParseArgument, TakesTheNameAndAppendsOtherAttributesToIt) {
    const struct {
        const char* content;
        const char* items;
    } cases[] = {
        {"<arg/>", "[1:]"},
        {"<arg name='a'/>", "[1:a]"},
        {"<argument name='a'/>", "[1:a]"},
        {"<arg name='a' type='int' base='hex' fieldsize='8'/>", "[3:a|base|hex|fieldsize|8]"},
        {"<arg name='a' base='hex' type='int'/>", "[3:a|base|hex]"},
        {"<arg base='hex' name='a' type='int'/>", "[3:a]"},
        {"<arg base='hex' name='a' fieldsize='8' type='int'/>", "[3:a|fieldsize|8]"},
        {"<arg base='hex'/>", "[1:|base|hex]"},
        {"<arg name='' base=''/>", "[1:|base|]"},
        {"<arg name='a' TYPE='int' Name='b'/>", "[1:a|TYPE|int|Name|b]"},
        {"<arg name='a'>dropped  text</arg>", "[1:a]"},
        {"<arg name='a'><!-- c --></arg>", "[1:a]"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.content);
        EXPECT_EQ(c.items, items(c.content));
    }
}

TEST(ParseArgument, IsEndedEarlyByAnElementInIt) {
    EXPECT_EQ(front + "Expected catalog end tag not found for catalog \"c\"\n in file: \"f.xmc\"",
              message_fault("<arg name='a'><b/></arg>"));
}

TEST(ParseArgument, GivesAnEmptyItemWhereNoArgumentStands) {
    walk at = tokens_of("<br/>");
    xmc_file_loader loader;
    const message_item item = loader.parse_message_arg(at.cursor, at.end);
    EXPECT_EQ(message_item::type_string, item.type());
    EXPECT_EQ("", std::string(item.data()));
    EXPECT_EQ(0, at.taken());

    at.cursor = at.end;
    EXPECT_EQ(message_item::type_string, loader.parse_message_arg(at.cursor, at.end).type());
}

TEST(ParseArgument, FindsFaultsInListsThatEndEarly) {
    xmc_file_loader loader;
    const auto argument_fault = [&](const std::list<token>& list) {
        walk at(list);
        return thrown([&] { loader.parse_message_arg(at.cursor, at.end); });
    };
    const outcome unexpected(14, front + "Unexpected parse error happen!");
    std::list<token> list{token(token::element_start, "arg")};
    EXPECT_EQ(unexpected, argument_fault(list));
    list.push_back(token(token::attribute_name, "name"));
    EXPECT_EQ(unexpected, argument_fault(list));
    list.push_back(token(token::attribute_value, "n"));
    EXPECT_EQ(unexpected, argument_fault(list));
    list.push_back(token(token::attribute_name, "base"));
    list.push_back(token(token::attribute_value, "hex"));
    list.push_back(token(token::start_tag_end, ""));
    const outcome open(11, front + "Expected arg (argument) end tag not found for argument \"n\"");
    EXPECT_EQ(open, argument_fault(list));
    list.push_back(token(token::character, "x"));
    EXPECT_EQ(open, argument_fault(list));
    list.push_back(token(token::element_end, "arg"));
    EXPECT_EQ(unexpected, argument_fault(list));
    list.push_back(token(token::element_end, "msg"));
    EXPECT_EQ(outcome(-1, "nothing thrown"), argument_fault(list));
}

TEST(ParseArgument, NamesTheMessageBehindItsFaults) {
    xmc_file_loader loader;
    walk at({token(token::element_start, "msg"), token(token::attribute_name, "name"),
             token(token::attribute_value, "k"), token(token::start_tag_end, ""),
             token(token::element_start, "arg"), token(token::start_tag_end, "")});
    EXPECT_EQ(outcome(11, front + "Expected arg (argument) end tag not found for argument \"\"\n "
                                  "in message element: \"k\""),
              thrown([&] { loader.parse_message(at.cursor, at.end); }));
}

TEST(ParseArgument, NamesMessageAndCatalogInTurn) {
    xmc_file_loader loader;
    loader.handle_language("en");
    walk at({token(token::element_start, "catalog"), token(token::attribute_name, "name"),
             token(token::attribute_value, "c"), token(token::attribute_name, "lang"),
             token(token::attribute_value, "en"), token(token::start_tag_end, ""),
             token(token::element_start, "msg"), token(token::attribute_name, "name"),
             token(token::attribute_value, "k"), token(token::start_tag_end, ""),
             token(token::element_start, "arg")});
    EXPECT_EQ(outcome(14, front + "Unexpected parse error happen!\n in message element: \"k\"\n "
                                  "in catalog element: \"c\""),
              thrown([&] { loader.parse_catalog(at.cursor, at.end); }));
}

TEST(ParseMessageType, KnowsEachWordInAnyLetterCase) {
    const struct {
        const char* word;
        int type;
    } cases[] = {
        {"value", 0},        {"string", 1},      {"number", 2},   {"int", 3},
        {"double", 4},       {"time", 5},        {"date", 6},     {"memory", 7},
        {"mem", 7},          {"memory_unit", 8}, {"mem_unit", 8}, {"metric", 9},
        {"metric_unit", 10}, {"duration", 11},   {"INT", 3},      {"Memory_Unit", 8},
        {"DURATION", 11},    {"Value", 0},       {"", 1},         {"integer", 1},
        {" int", 1},         {"int ", 1},        {"mem unit", 1}, {"text", 1},
    };
    xmc_file_loader loader;
    for (const auto& c : cases) {
        EXPECT_EQ(c.type, static_cast<int>(loader.parse_message_type(c.word))) << c.word;
        EXPECT_EQ("[" + std::to_string(c.type) + ":a]",
                  items("<arg name='a' type='" + std::string(c.word) + "'/>"));
    }
}

// ---- grammar operations on token lists

TEST(Grammar, StepsOverWhatCanBeIgnored) {
    xmc_file_loader loader;
    walk at({token(token::comment, "c"), token(token::space, " "), token(token::character, "x"),
             token(token::start_tag_end, ""), token(token::space, " ")});
    loader.parse_ignorable(at.cursor, at.end);
    EXPECT_EQ(3, at.taken());
    at.cursor = at.end;
    loader.parse_ignorable(at.cursor, at.end);
    EXPECT_TRUE(at.cursor == at.end);
}

TEST(Grammar, ReadsTheHeaderUpToBehindItsTag) {
    xmc_file_loader loader;
    walk at = tokens_of("<xmc version=\"1.0\"><catalog/></xmc>");
    loader.parse_xmc_header(at.cursor, at.end);
    EXPECT_EQ(4, at.taken());
    EXPECT_EQ("catalog", std::string(at.cursor->value()));
}

TEST(Grammar, FindsHeaderFaultsInListsThatEndEarly) {
    xmc_file_loader loader;
    const auto header = [&](const std::list<token>& list) {
        walk at(list);
        return thrown([&] { loader.parse_xmc_header(at.cursor, at.end); });
    };
    std::list<token> list;
    EXPECT_EQ(outcome(7, front + "Not XMC file, root element is not XMC but \"Value Not Defined\""),
              header(list));
    EXPECT_EQ(outcome(7, front + "Not XMC file, root element is not XMC but \"xmc\""),
              header({token(token::element_end, "xmc")}));
    list.push_back(token(token::element_start, "xmc"));
    EXPECT_EQ(outcome(14, front + "Unexpected parse error happen!"), header(list));
    list.push_back(token(token::attribute_name, "version"));
    EXPECT_EQ(14, header(list).first);
    list.push_back(token(token::attribute_value, "1.1"));
    EXPECT_EQ(-1, header(list).first);
}

TEST(Grammar, StartsEachOperationAtItsElement) {
    xmc_file_loader loader;
    walk at = tokens_of("<other/>");
    const outcome fault(6, front + "Invalid element \"other\"");
    EXPECT_EQ(fault, thrown([&] { loader.parse_catalog(at.cursor, at.end); }));
    EXPECT_EQ(fault, thrown([&] { loader.parse_include(at.cursor, at.end); }));
    EXPECT_EQ(fault, thrown([&] { loader.parse_message(at.cursor, at.end); }));

    walk ends({token(token::element_end, "msg"), token(token::character, "catalog")});
    EXPECT_EQ(6, thrown([&] { loader.parse_message(ends.cursor, ends.end); }).first);
}

TEST(Grammar, GivesKindThirteenForASkippedCatalogThatDoesNotEnd) {
    xmc_file_loader loader;  // no locale is wanted
    walk at = tokens_of("<catalog name=\"c\" lang=\"en\"><msg>x</msg>");
    EXPECT_EQ(outcome(13, front + "Expected catalog end tag not found for catalog \"c\""),
              thrown([&] { loader.parse_catalog(at.cursor, at.end); }));
}

TEST(Grammar, GivesKindFourteenForACatalogWithoutItsLevelLine) {
    xmc_file_loader loader;
    loader.handle_language("en");
    walk at = tokens_of("<catalog name=\"c\" lang=\"en\"><msg>x</msg>");
    EXPECT_EQ(outcome(14, front + "Unexpected parse error happen!"),
              thrown([&] { loader.parse_catalog(at.cursor, at.end); }));
}

TEST(Grammar, StaysWithinEveryPrefixOfATokenList) {
    xml_token_stream stream;
    stream.parse("<?xml?><catalog name=\"c\" lang=\"en\"> <!-- c --> <msg name=\"k\" meta=\"m\">a "
                 " <br/>b <arg name=\"n\" type=\"int\" base=\"hex\">x</arg> </msg> <msg/> "
                 "</catalog>");
    const std::list<token> whole(stream.begin(), stream.end());
    for (const char* locale : {"en", "."}) {
        for (std::size_t length = 0; length <= whole.size(); ++length) {
            SCOPED_TRACE(length);
            walk at(std::list<token>(whole.begin(), std::next(whole.begin(), length)));
            xmc_file_loader loader;
            loader.handle_language(locale);
            const int kind = thrown([&] { loader.parse_catalog(at.cursor, at.end); }).first;
            if (length == whole.size())
                EXPECT_EQ(-1, kind);
            else
                EXPECT_THAT(kind, ::testing::AnyOf(11, 13, 14));
        }
    }
}

TEST(Grammar, StaysWithinEveryPrefixOfAnInclude) {
    xmc_file_loader loader;
    const std::list<token> whole{
        token(token::element_start, "include"), token(token::attribute_name, "id"),
        token(token::attribute_value, "7"), token(token::start_tag_end, "")};
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        SCOPED_TRACE(length);
        walk at(std::list<token>(whole.begin(), std::next(whole.begin(), length)));
        EXPECT_EQ(length == whole.size() ? 12 : 14,
                  thrown([&] { loader.parse_include(at.cursor, at.end); }).first);
    }
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

TEST_F(Include, AloneCountsAsRead) {
    files.write("a.xmc", xmc("<include/>"));
    EXPECT_EQ(0, load("a.xmc").first);
    files.write("b.xmc", xmc("<include id=\"7\" File=\"x\"></include>"));
    EXPECT_EQ(0, load("b.xmc").first) << "other attributes are passed over";
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

TEST_F(Include, TakesAbsoluteNamesAsWritten) {
    const std::string other = files.write("other/b.xmc", xmc(catalog("b", "en", msg("k", "b"))));
    files.write("a.xmc", xmc("<include file=\"" + other + "\"/>"));
    EXPECT_EQ(0, load("a.xmc").first);
    EXPECT_EQ("b", text("b", "k"));
}

TEST_F(Include, PrefixesTheDirectoryByTheFormOfTheName) {
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
    // The fault left the directory of the file behind.
    at.rewind();
    EXPECT_EQ(outcome(3, front + "File \"./x.xmc\" was not found on disk"),
              thrown([&] { fresh.parse_include(at.cursor, at.end); }));
    ASSERT_EQ(0, ::chdir(previous));
}

TEST_F(Include, LeavesTheDirectoryOfAFileWithAFaultBehind) {
    files.write("a.xmc", xmc("<include file=\"sub/b.xmc\"/>"));
    files.write("sub/b.xmc", xmc("<other/>"));
    EXPECT_EQ(6, load("a.xmc").first);
    walk at = tokens_of("<include file=\"x.xmc\"/>");
    EXPECT_EQ(outcome(3, front + "File \"" + files.path("sub/x.xmc") + "\" was not found on disk"),
              thrown([&] { loader.parse_include(at.cursor, at.end); }));
}

TEST_F(Include, TakesBothSeparatorsForTheEndOfTheDirectory) {
    files.write("sub\\a.xmc", xmc("<include file=\"b.xmc\"/>"));
    EXPECT_EQ(outcome(3, front + "File \"" + files.path("sub\\b.xmc") + "\" was not found on disk" +
                             in_file("sub\\a.xmc")),
              load("sub\\a.xmc"));
}

TEST_F(Include, RefusesAnEmptyName) {
    files.write("a.xmc", xmc("<include file=\"\"/>"));
    EXPECT_EQ(outcome(3, front + "File \"\" was not found on disk" + in_file("a.xmc")),
              load("a.xmc"));
}

TEST_F(Include, NamesBothFilesOfAFault) {
    files.write("a.xmc", xmc("<include file=\"b.xmc\"/>"));
    files.write("b.xmc", xmc(catalog("c", "en", "<msg><i/></msg>")));
    EXPECT_EQ(outcome(6, front + "Invalid element \"i\"\n in catalog element: \"c\"" +
                             in_file("b.xmc") + in_file("a.xmc")),
              load("a.xmc"));
    files.write("b.xmc", "<?xml?>\n<xmc");
    EXPECT_EQ(4, seen(xmc_file_loader().parse(files.path("a.xmc"), "en")).first);
}

TEST_F(Include, FailsWithAFileThatReadsNothing) {
    files.write("a.xmc", xmc("<include file=\"b.xmc\"/>"));
    files.write("b.xmc", xmc(""));
    EXPECT_EQ(outcome(1, front + "No catalog was loaded in file: \"" + files.path("b.xmc") + "\"" +
                             in_file("a.xmc")),
              load("a.xmc"));
}

TEST_F(Include, WantsNothingInIt) {
    for (const char* content : {" ", "x", "<br/>"}) {
        files.write("a.xmc", xmc(std::string("<include>") + content + "</include>"));
        xmc_file_loader fresh;
        EXPECT_EQ(outcome(12, front + "Expected \"include\" end tag not found" + in_file("a.xmc")),
                  seen(fresh.parse(files.path("a.xmc"), "en")));
    }
    files.write("a.xmc", xmc("<include><!-- c --></include>"));
    EXPECT_EQ(0, load("a.xmc").first) << "a comment there stands in front of the end of the tag";
}

TEST_F(Include, TellsOfAFileThatIncludesItself) {
    files.write("a.xmc", xmc(catalog("c", "en", msg("k", "x")) + "<include file=\"a.xmc\"/>"));
    EXPECT_EQ(outcome(14, front +
                              "Unexpected parse error happen!\n in an include of a file by "
                              "itself: \"" +
                              files.path("a.xmc") + "\"" + in_file("a.xmc")),
              load("a.xmc"));
}

TEST_F(Include, TellsOfACircleOfFilesHoweverTheyAreSpelled) {
    files.write("a.xmc", xmc("<include file=\"sub/b.xmc\"/>"));
    files.write("sub/b.xmc", xmc("<include file=\".././a.xmc\"/>"));
    EXPECT_EQ(outcome(14, front +
                              "Unexpected parse error happen!\n in an include of a file by "
                              "itself: \"" +
                              files.path("sub/.././a.xmc") + "\"" + in_file("sub/b.xmc") +
                              in_file("a.xmc")),
              load("a.xmc"));
}

TEST_F(Include, TakesALinkToItsOwnFileForEmptyLikeAnyOtherLink) {
    files.write("a.xmc", xmc("<include file=\"link.xmc\"/>"));
    ASSERT_EQ(0, ::symlink("a.xmc", files.path("link.xmc").c_str()));
    EXPECT_EQ(outcome(4, front + "Valid XML header not found\n at line: \"0\"" +
                             in_file("link.xmc") + in_file("a.xmc")),
              load("a.xmc"));
}

TEST_F(Include, TellsOfACircleThroughALinkToADirectory) {
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

TEST_F(Include, TellsFilesOfOneContentInTwoDirectoriesApart) {
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

// ---- set_message and combine_data

message_t message(const std::string& key, const std::string& locale, const std::string& text) {
    std::vector<message_item> text_items;
    if (!text.empty())
        text_items.push_back(message_item(text));
    message_t result(key, text_items);
    result._orginal_locale(locale);
    return result;
}

TEST(SetMessage, StoresTheHeavierAndKeepsTheFirstOfEquals) {
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

TEST(SetMessage, TakesAMessageOfAnUnknownLocaleIfThereIsNone) {
    xmc_file_loader loader;
    loader.set_message(message("k", "xx", "1"), "c");
    loader.set_message(message("k", "yy", "2"), "c");
    EXPECT_EQ("1", text_of(combined(loader), "c", "k"));
}

TEST(CombineData, AddsCatalogsAndCountsWhatItStored) {
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

TEST(CombineData, LetsTheLaterOfEqualsReplaceTheEarlier) {
    loaded_catalogs target;
    for (const char* text : {"1", "2"}) {
        xmc_file_loader loader;
        loader.handle_language("en");
        loader.set_message(message("k", "en", text), "c");
        EXPECT_EQ(1u, loader.combine_data(target, {}));
        EXPECT_EQ(text, text_of(target, "c", "k"));
    }
}

TEST(CombineData, KeepsAStoredMessageThatWeighsMore) {
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

TEST(CombineData, WeighsTheStoredLocaleByTheNewList) {
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

TEST(CombineData, TakesAStoredNilMessageForAbsent) {
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

TEST(CombineData, SetsTheNameOfACatalogThatIsThere) {
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

TEST(CombineData, ThrowsATextForAnEntryWithoutACatalog) {
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

TEST(CombineData, LeavesOtherCatalogsAlone) {
    loaded_catalogs target;
    target["other"];  // empty, and not looked at
    xmc_file_loader loader;
    EXPECT_EQ(0u, loader.combine_data(target, {}));
    loader.set_message(message("k", "en", "1"), "c");
    EXPECT_EQ(1u, loader.combine_data(target, {}));
    EXPECT_EQ(2u, target.size());
}

// ---- bad input

const char complete[] =
    "<?xml version=\"1.0\"?>\n<xmc version=\"1.1\"> <!-- c -->\n"
    "<catalog name=\"app\" lang=\"en\">\n"
    "<msg name=\"hello\" meta=\"greeting\">Hello  <arg name='who' type='int' base='hex'/><br/>"
    "&lt;&#65;<![CDATA[ <x> ]]></msg>\n</catalog>\n</xmc>";

TEST(BadInput, EveryPrefixOfACatalogIsAFaultOfItsXml) {
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

TEST(BadInput, EveryPrefixOfAFileIsAFault) {
    const temporary_directory files;
    const std::string whole = complete;
    const std::size_t declaration = whole.find("?>") + 2;
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        SCOPED_TRACE(length);
        // Behind the declaration, or its line, the appended zero byte is a text without a root.
        const bool has_text_only = length == declaration || length == declaration + 1;
        const int expected = length == whole.size() ? 0 : has_text_only ? 7 : 4;
        xmc_file_loader loader;
        const std::string path = files.write("a.xmc", whole.substr(0, length));
        EXPECT_EQ(expected, loader.parse(path, "en").type);
    }
}

TEST(BadInput, EveryByteMayBeLostOrReplaced) {
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
