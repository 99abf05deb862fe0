#include "against_loader.hpp"

#include "support/program.hpp"
#include "support/temporary_directory.hpp"
#include "support/text_file.hpp"
#include "xmc/exchange/csv.hpp"
#include "xmc/exchange/foreign_format.hpp"
#include "xmc/exchange/plural_forms.hpp"
#include "xmc/exchange/po.hpp"
#include "xmc/exchange/xliff.hpp"

#include <tova/extras/plural.hpp>

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace tova_programs;
using namespace tova_programs::xmc;
using test_support::run_program;
using test_support::temporary_directory;

namespace {

// What the library loads from a file for a locale, as one text.
std::string loaded(const std::string& bytes, const std::string& locale) {
    xmc_test::xmc_file_loader loader;
    loader.handle_language(locale);
    const auto error = loader.parse_string(bytes + '\0', "f");
    EXPECT_EQ(xmc_test::xmc_file_loader::no_error, error.type) << error.message << bytes;
    std::map<tova::strings::ustring8, tova::memory::pointers::shared_pointer<tova::i18n::catalog_t>>
        all;
    loader.combine_data(all, {});
    return xmc_test::described(all);
}

const std::vector<std::string> words = {"a",
                                        "file",
                                        " ",
                                        "  ",
                                        "\n",
                                        "\t",
                                        "\r",
                                        "{",
                                        "}",
                                        "{n}",
                                        "}}",
                                        "<",
                                        "&",
                                        "\"",
                                        "\\",
                                        "\\n",
                                        "%d",
                                        "%",
                                        "'",
                                        ",",
                                        ";",
                                        "=",
                                        "\x01",
                                        "\x7F",
                                        "\xC3\xA4",
                                        "\xFF",
                                        "\xC3",
                                        "\xED\xA0\x80",
                                        "\xEF\xBF\xBF",
                                        "/",
                                        "#",
                                        "msg",
                                        "\xF0\x9F\x98\x80",
                                        "]]>",
                                        "{n} = x",
                                        std::string("\0", 1)};

// Random catalogs: any bytes in texts, keys, notes and names of arguments, arguments of any type,
// plural forms, contexts, and messages that one of the two locales lacks.
class generator {
public:
    explicit generator(unsigned seed) : m_random(seed) {}

    std::string catalogs() {
        writer out;
        std::vector<std::pair<std::string, std::string>> keys;
        for (auto count = 1 + below(2); count != 0; --count) {
            const std::string catalog = below(3) == 0 ? text() : "app";
            for (auto messages = 1 + below(3); messages != 0; --messages)
                keys.emplace_back(catalog, below(2) == 0 ? text() : "key" + number());
            if (below(3) == 0)
                for (const char* form : {"one", "other", "few", "many"})
                    if (below(5) != 0)
                        keys.emplace_back(catalog, std::string("files.") + form);
        }
        const std::string locales[] = {"en", m_locale};
        for (const std::string& locale : locales)
            for (const auto& key : keys) {
                if (below(6) == 0 && &key != &keys[0])
                    continue;
                out.begin_catalog(key.first, locale);
                out.message(key.second, below(4) == 0 ? text() : "", pieces());
                out.end_catalog();
            }
        return out.text();
    }

    const std::string& locale() {
        static const std::vector<std::string> all = {"de",    "pl", "ja",      "ar",
                                                     "de_AT", "fr", "sr@latin"};
        return m_locale = all[below(all.size())];
    }

private:
    std::size_t below(std::size_t limit) { return m_random() % limit; }
    std::string number() { return std::to_string(below(100)); }

    std::string text() {
        std::string result;
        for (auto count = 1 + below(4); count != 0; --count)
            result += words[below(words.size())];
        return result;
    }

    std::vector<piece> pieces() {
        std::vector<piece> result;
        for (auto count = below(5); count != 0; --count) {
            piece one;
            one.is_argument = below(2) == 0;
            one.text = one.is_argument && below(3) != 0 ? "n" : text();
            if (one.is_argument) {
                one.attributes = {{"name", one.text}};
                if (below(2) == 0)
                    one.attributes.emplace_back("type", name_of(static_cast<item_type>(below(12))));
                if (below(3) == 0)
                    one.attributes.emplace_back("precision", below(4) == 0 ? text() : number());
            } else if (!result.empty() && !result.back().is_argument) {
                continue;
            }
            result.push_back(one);
        }
        return result;
    }

    std::mt19937 m_random;
    std::string m_locale;
};

// Writes messages in a format and reads them again.
imported round_trip(const exchange& all, const std::string& format) {
    if (format == "po")
        return read_po(po_text(all), "f.po", {});
    if (format == "csv")
        return read_csv(csv_text(all), "f.csv", {});
    const auto version = format == "xliff" ? xliff_version::v1_2 : xliff_version::v2_0;
    return read_xliff(xliff_text(all, version), "f.xlf", {});
}

exchange collected(const std::string& bytes, const std::string& locale) {
    documents files;
    files.push_back(std::make_unique<document>("f", bytes));
    return collect(files, locale, "en");
}

}  // namespace

// Each catalog in one of the formats. TOVA_EXCHANGE_ALL=1 takes all formats for each.
TEST(Exchange, KeepsTheLoadedModelOfTenThousandCatalogs) {
    const std::vector<std::string> formats = {"po", "xliff", "xliff2", "csv"};
    const bool takes_all = std::getenv("TOVA_EXCHANGE_ALL") != nullptr;
    for (unsigned seed = 0; seed < 10000; ++seed) {
        generator random(seed);
        const std::string locale = random.locale();
        const std::string before = random.catalogs();
        const exchange all = collected(before, locale);
        for (std::size_t i = 0; i < formats.size(); ++i) {
            if (!takes_all && i != seed % formats.size())
                continue;
            SCOPED_TRACE(formats[i] + ", seed " + std::to_string(seed));
            const imported back = round_trip(all, formats[i]);
            ASSERT_TRUE(back.problems.empty()) << back.problems[0].text << before;
            ASSERT_EQ(locale, back.all.locale);
            const std::string after = catalogs_of(back.all, true);
            for (const std::string& wanted : {locale, std::string("en")})
                ASSERT_EQ(loaded(before, wanted), loaded(after, wanted)) << before << po_text(all);
        }
    }
}

TEST(Exchange, JoinsPluralFormsWhereNothingIsLost) {
    const std::string before = R"(<?xml version="1.0"?><xmc version="1.1">
<catalog name="app" lang="en">
<msg name="files.one" meta="In the title">one file</msg>
<msg name="files.other" meta="In the title"><arg name="n" type="int"/> files</msg>
</catalog>
<catalog name="app" lang="pl">
<msg name="files.one">jeden plik</msg>
<msg name="files.few"><arg name="n" type="int"/> pliki</msg>
<msg name="files.many"><arg name="n" type="int"/> plików</msg>
<msg name="files.other"><arg name="n" type="int"/> pliku</msg>
</catalog></xmc>)";
    const std::string text = po_text(collected(before, "pl"));
    const auto begin = text.find("\n\n");
    EXPECT_EQ(R"(
#. Note: In the title
#. {n} = <arg name="n" type="int"/>
#, python-brace-format
msgctxt "app/files.*"
msgid "one file"
msgid_plural "{n} files"
msgstr[0] "jeden plik"
msgstr[1] "{n} pliki"
msgstr[2] "{n} plików"

#. Note: In the title
#. {n} = <arg name="n" type="int"/>
#, python-brace-format
msgctxt "app/files.other"
msgid "{n} files"
msgstr "{n} pliku"
)",
              text.substr(begin + 1));
}

// An untranslated plural is one entry. Filling it also gives the form for fractions, and a form
// that is filled so needs no entry of its own when the file is exported again.
TEST(Exchange, WritesTheFormForFractionsOnlyIfItDiffers) {
    const std::string english = R"(<?xml version="1.0"?><xmc version="1.1">
<catalog name="app" lang="en">
<msg name="files.one"><arg name="n" type="int"/> file</msg>
<msg name="files.other"><arg name="n" type="int"/> files</msg>
</catalog>)";
    std::string text = po_text(collected(english + "</xmc>", "pl"));
    EXPECT_EQ(std::string::npos, text.find("files.other")) << text;
    const char* const forms[] = {"{n} plik", "{n} pliki", "{n} plików"};
    for (std::size_t i = 0; i < 3; ++i) {
        const std::string empty = "msgstr[" + std::to_string(i) + "] \"\"";
        const auto at = text.find(empty);
        ASSERT_NE(std::string::npos, at) << text;
        text.replace(at, empty.size(), empty.substr(0, empty.size() - 1) + forms[i] + '"');
    }
    const imported back = read_po(text, "f.po", {});
    EXPECT_TRUE(back.problems.empty());
    EXPECT_EQ(0u, back.untranslated);
    const std::string polish = catalogs_of(back.all, false);
    EXPECT_NE(std::string::npos,
              polish.find("<msg name=\"files.other\"><arg name=\"n\" type=\"int\"/> plików</msg>"))
        << polish;
    EXPECT_EQ(text, po_text(back.all));
}

TEST(Exchange, UsesTheUsualPluralFormsIfTheHeaderHasNone) {
    const std::string entry = "\nmsgid \"file\"\nmsgid_plural \"files\"\n";
    const std::string polish = "msgstr[0] \"plik\"\nmsgstr[1] \"pliki\"\nmsgstr[2] \"plików\"\n";
    const struct {
        std::string header;
        std::string entry;
        std::size_t messages;
        std::size_t untranslated;
        std::vector<const char*> problems;
    } cases[] = {
        {"Language: pl\\n",
         entry + polish,
         4,
         0,
         {"no valid Plural-Forms in the header; the usual plural forms of pl are used"}},
        {"Language: pl\\nPlural-Forms: nplurals=INTEGER; plural=EXPRESSION;\\n",
         entry + polish,
         4,
         0,
         {"no valid Plural-Forms in the header; the usual plural forms of pl are used"}},
        {"Language: de\\n",
         entry + polish,
         0,
         0,
         {"no valid Plural-Forms in the header; plural entries are left out"}},
        {"Language: pl\\n", entry + "msgstr[0] \"\"\nmsgstr[1] \"\"\n", 0, 1, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.header + c.entry);
        const imported result =
            read_po("msgid \"\"\nmsgstr \"" + c.header + "\"\n" + c.entry, "f.po", {});
        std::size_t messages = 0;
        for (const exchanged_message& each : result.all.messages)
            messages += each.target.exists ? 1 : 0;
        EXPECT_EQ(c.messages, messages);
        EXPECT_EQ(c.untranslated, result.untranslated);
        ASSERT_EQ(c.problems.size(), result.problems.size());
        for (std::size_t i = 0; i < c.problems.size(); ++i)
            EXPECT_EQ(c.problems[i], result.problems[i].text);
    }
}

TEST(Exchange, MakesKeysOfForeignMessages) {
    const std::string po = R"(# A comment
msgid ""
msgstr ""
"Language: pl\n"
"Content-Type: text/plain; charset=ISO-8859-2\n"
"Plural-Forms: nplurals=3; plural=n==1 ? 0 : n%10>=2 && n%10<=4 && (n%100<10 || n%100>=20) ? 1 : 2;\n"

#. A button
msgctxt "menu"
msgid "Open"
msgstr "Otw)"
                           "\xF3"
                           R"(rz"

#, c-format
msgid "%d file"
msgid_plural "%d files"
msgstr[0] "%d plik"
msgstr[1] "%d pliki"
msgstr[2] "%d plik)"
                           "\xF3"
                           R"(w"

#, fuzzy
msgid "Close"
msgstr "Zamknij"

#, c-format
msgid ""
"Used: "
"%5.1f%%"
msgstr "Zaj\304\231te: %5.1f%%"

msgid "Untranslated"
msgstr ""

#~ msgid "Gone"
#~ msgstr "Stare"
)";
    std::string bytes = po;
    // The file is in ISO 8859-2.
    const auto escape = bytes.find("\\304\\231");
    bytes.replace(escape, 8, "\xEA");
    for (auto at = bytes.find("\\xF3"); at != bytes.npos; at = bytes.find("\\xF3"))
        bytes.replace(at, 4, "\xF3");
    const imported result = read_po(bytes, "pl.po", {"app", "", "en"});
    EXPECT_EQ(R"(<?xml version="1.0" encoding="UTF-8"?>
<xmc version="1.1">
  <catalog name="app" lang="pl">
    <msg name="Open@menu">Otwórz</msg>
    <msg name="%d file.one"><arg name="arg1" type="int"/> plik</msg>
    <msg name="%d file.other"><arg name="arg1" type="int"/> plików</msg>
    <msg name="%d file.few"><arg name="arg1" type="int"/> pliki</msg>
    <msg name="%d file.many"><arg name="arg1" type="int"/> plików</msg>
    <msg name="Used: %5.1f%%">Zajęte: <arg name="arg1" type="double" precision="1"/>%</msg>
  </catalog>
</xmc>
)",
              catalogs_of(result.all, false));
    EXPECT_EQ(2u, result.untranslated);
    EXPECT_EQ(1u, result.fuzzy);
    ASSERT_EQ(1u, result.problems.size());
    EXPECT_EQ("\"%5.1f\" is shown without its width", result.problems[0].text);
    EXPECT_EQ(25u, result.problems[0].line);
}

// A template has sources only, and a file in the language of the reference may say more than they
// do.
TEST(Exchange, ImportsAFolderWithOneFileOfSources) {
    const temporary_directory folder;
    folder.write("po/app.pot", "msgid \"Quit\"\nmsgstr \"\"\n\nmsgid \"Undo\"\nmsgstr \"\"\n");
    folder.write("po/de.po", "msgid \"\"\nmsgstr \"Language: de\\n\"\n\n"
                             "msgid \"Quit\"\nmsgstr \"Beenden\"\n");
    folder.write("po/en.po", "msgid \"\"\nmsgstr \"Language: en\\n\"\n\n"
                             "msgid \"Quit\"\nmsgstr \"Quit this program\"\n");
    const auto result =
        run_program("cd " + folder.path() +
                    " && " TOVA_XMC " import po --catalog app --with-source -o out && ls out");
    EXPECT_EQ("out/de.xmc: 1 of 2 messages, 1 not translated\n"
              "out/en.xmc: 2 messages\nde.xmc\nen.xmc\n",
              result.output);
    EXPECT_EQ(R"(<?xml version="1.0" encoding="UTF-8"?>
<xmc version="1.1">
  <catalog name="app" lang="en">
    <msg name="Quit">Quit this program</msg>
    <msg name="Undo">Undo</msg>
  </catalog>
</xmc>
)",
              read_file(folder.path("out/en.xmc")));
}

namespace {

std::string po_of(const std::string& locale, const std::string& id, const std::string& text) {
    return "msgid \"\"\nmsgstr \"Language: " + locale + "\\n\"\n\nmsgid \"" + id + "\"\nmsgstr \"" +
           text + "\"\n";
}

// What an import in a folder prints, and the catalogs that it writes to `out`: their paths, and the
// locale and name of each catalog in them.
std::string imported_in(const temporary_directory& folder, const std::string& arguments) {
    const auto result =
        run_program("cd " + folder.path() + " && " TOVA_XMC " import " + arguments +
                    "; code=$?; test ! -e out || grep -ro '<catalog .*' out | sort; exit $code");
    return result.output + "exit code " + std::to_string(result.exit_code) + "\n";
}

}  // namespace

TEST(Import, TakesCatalogAndLocaleFromTheFolders) {
    const struct {
        const char* file;
        const char* language;
    } layouts[] = {
        {"po/de/app.po", "de"},
        {"po/de/LC_MESSAGES/app.po", ""},
        {"po/app/de.po", "de"},
        {"po/de/app.po", ""},
    };
    for (const auto& each : layouts) {
        SCOPED_TRACE(each.file);
        const temporary_directory folder;
        folder.write(each.file, po_of(each.language, "Quit", "Beenden"));
        EXPECT_EQ("out/app/de.xmc: 1 of 1 message, 0 not translated\n"
                  "out/app/de.xmc:<catalog name=\"app\" lang=\"de\">\nexit code 0\n",
                  imported_in(folder, "po -o out"));
    }
}

TEST(Import, WritesLocalesAsProgramsAskForThem) {
    const struct {
        const char* file;
        const char* language;
        const char* arguments;
        const char* result;
    } cases[] = {
        {"po/zh-Hant.po", "zh-Hant", "", "out/zh_Hant.xmc:<catalog name=\"app\" lang=\"zh_Hant\">"},
        {"po/zh-Hant/app.po", "zh-Hant", "",
         "out/app/zh_Hant.xmc:<catalog name=\"app\" lang=\"zh_Hant\">"},
        {"po/zh-Hant/app.po", "", "",
         "out/app/zh_Hant.xmc:<catalog name=\"app\" lang=\"zh_Hant\">"},
        {"po/my-app.po", "de", " --lang pt-BR",
         "out/my-app.xmc:<catalog name=\"app\" lang=\"pt_BR\">"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.file + std::string(each.arguments));
        const temporary_directory folder;
        folder.write(each.file, po_of(each.language, "Quit", "..."));
        const std::string output =
            imported_in(folder, std::string("po --catalog app -o out") + each.arguments);
        EXPECT_NE(std::string::npos, output.find(each.result)) << output;
    }
}

TEST(Import, ReadsXliffByAnyOfItsExtensions) {
    const temporary_directory folder;
    folder.write("en.xmc", "<?xml version=\"1.0\"?><xmc version=\"1.1\"><catalog name=\"app\" "
                           "lang=\"en\"><msg name=\"a\">A</msg></catalog><catalog name=\"app\" "
                           "lang=\"de\"><msg name=\"a\">B</msg></catalog></xmc>");
    for (const std::string format : {"xliff", "xliff2"})
        for (const std::string extension : {"xlf", "xliff", "xliff2"}) {
            SCOPED_TRACE(format + extension);
            const std::string file = "f." + extension;
            run_program("cd " + folder.path() +
                        " && " TOVA_XMC " export en.xmc --lang de --format " + format + " -o " +
                        file);
            EXPECT_EQ("out/f.xmc: 1 of 1 message, 0 not translated\n"
                      "out/f.xmc:<catalog name=\"app\" lang=\"de\">\nexit code 0\n",
                      imported_in(folder, file + " -o out"));
        }
}

TEST(Import, ReadsFilesOfSeveralCatalogsInFoldersOfLocales) {
    const temporary_directory folder;
    folder.write("po/app.pot", po_of("", "Quit", ""));
    for (const std::string locale : {"de", "pt_BR"})
        for (const std::string catalog : {"app", "tools"})
            folder.write("po/" + locale + "/" + catalog + ".po",
                         po_of(locale, "I am " + catalog, "..."));
    const std::string all = "out/app/de.xmc:<catalog name=\"app\" lang=\"de\">\n"
                            "out/app/pt_BR.xmc:<catalog name=\"app\" lang=\"pt_BR\">\n"
                            "out/tools/de.xmc:<catalog name=\"tools\" lang=\"de\">\n"
                            "out/tools/pt_BR.xmc:<catalog name=\"tools\" lang=\"pt_BR\">\n"
                            "exit code 0\n";
    EXPECT_EQ("out/app/de.xmc: 1 of 2 messages, 1 not translated\n"
              "out/tools/de.xmc: 1 of 1 message, 0 not translated\n"
              "out/app/pt_BR.xmc: 1 of 2 messages, 1 not translated\n"
              "out/tools/pt_BR.xmc: 1 of 1 message, 0 not translated\n" +
                  all,
              imported_in(folder, "po -o out"));
    // The same files one by one, and with their sources.
    run_program("rm -r " + folder.path("out"));
    EXPECT_NE(std::string::npos, imported_in(folder, "po/app.pot po/*/*.po -o out").find(all));
    EXPECT_NE(std::string::npos, imported_in(folder, "po --with-source -o out")
                                     .find("out/app/en.xmc: 2 messages\n"
                                           "out/tools/en.xmc: 1 message\n"));
}

TEST(Import, WritesNothingIfTwoFilesWouldBecomeOne) {
    const temporary_directory folder;
    folder.write("po/de/app.po", po_of("de", "a", "b"));
    folder.write("po/de/tools.po", po_of("de", "a", "b"));
    EXPECT_EQ("tova-xmc: out/app/de.xmc: po/de/app.po and po/de/tools.po would both become this "
              "file (without --catalog the folders and names of the files say which catalog they "
              "are)\nexit code 2\n",
              imported_in(folder, "po --catalog app -o out"));
    folder.write("other/x/app.po", po_of("de", "a", "b"));
    folder.write("other/y/app.po", po_of("de", "a", "b"));
    EXPECT_EQ("tova-xmc: out/app.xmc: other/x/app.po and other/y/app.po would both become this "
              "file\nexit code 2\n",
              imported_in(folder, "other/*/app.po -o out"));
}

TEST(Import, MakesTheFoldersOfItsOutput) {
    const temporary_directory folder;
    folder.write("po/de.po", po_of("de", "a", "b"));
    EXPECT_EQ("out/x/y.xmc: 1 of 1 message, 0 not translated\n"
              "out/x/y.xmc:<catalog name=\"app\" lang=\"de\">\nexit code 0\n",
              imported_in(folder, "po/de.po --catalog app -o out/x/y.xmc"));
    run_program("rm -r " + folder.path("out"));
    // A name that no catalog has is a folder.
    EXPECT_EQ("out/x/de.xmc: 1 of 1 message, 0 not translated\n"
              "out/x/de.xmc:<catalog name=\"app\" lang=\"de\">\nexit code 0\n",
              imported_in(folder, "po/de.po --catalog app -o out/x"));
}

TEST(Import, CountsFormatsWithoutAFlagOrTakesThem) {
    const temporary_directory folder;
    const std::string flagged = "\n#, no-c-format\nmsgid \"%d is text\"\nmsgstr \"%d\"\n";
    folder.write("de.po", po_of("de", "100% of %s", "%s: 100 %") + flagged);
    EXPECT_EQ("de.po: 1 message contains printf items but has no c-format flag; it stays text "
              "(--c-format makes it an argument)\n"
              "out/de.xmc: 2 of 2 messages, 0 not translated\n"
              "out/de.xmc:<catalog name=\"messages\" lang=\"de\">\nexit code 1\n",
              imported_in(folder, "de.po -o out"));
    EXPECT_NE(
        std::string::npos,
        read_file(folder.path("out/de.xmc")).find("<msg name=\"100% of %s\">%s: 100 %</msg>"));
    EXPECT_EQ("out/de.xmc: 2 of 2 messages, 0 not translated\n"
              "out/de.xmc:<catalog name=\"messages\" lang=\"de\">\nexit code 0\n",
              imported_in(folder, "de.po --c-format -o out"));
    const std::string text = read_file(folder.path("out/de.xmc"));
    EXPECT_NE(std::string::npos,
              text.find("<msg name=\"100% of %s\"><arg name=\"arg1\"/>: 100 %</msg>"))
        << text;
    EXPECT_NE(std::string::npos, text.find("<msg name=\"%d is text\">%d</msg>")) << text;
}

TEST(Import, ListsEqualProblemsOnce) {
    const temporary_directory folder;
    std::string po = po_of("de", "a", "b");
    for (const char* const key : {"one", "two", "three"})
        po += std::string("\n#, c-format\nmsgid \"") + key + " %x\"\nmsgstr \"%x\"\n";
    po += "\n#, c-format\nmsgid \"%o\"\nmsgstr \"%o\"\n";
    folder.write("de.po", po);
    EXPECT_EQ("de.po:8: one %x: \"%x\" cannot become an argument and stays text (and 2 more)\n"
              "de.po:20: %o: \"%o\" cannot become an argument and stays text\n"
              "de.po: 4 findings of 2 kinds; --json lists all\n"
              "out.xmc: 5 of 5 messages, 0 not translated\nexit code 1\n",
              imported_in(folder, "de.po -o out.xmc"));
}

TEST(Exchange, KeepsTheFirstOfAMessageThatAppearsAgain) {
    const imported po = read_po("msgid \"a\"\nmsgstr \"1\"\n\nmsgid \"a\"\nmsgstr \"2\"\n", "f.po",
                                {"app", "de", "en"});
    const imported csv =
        read_csv("catalog,key,source,target\napp,a,a,1\napp,a,a,2\n", "f.csv", {"app", "de", "en"});
    const imported xliff =
        read_xliff("<xliff version=\"1.2\"><file original=\"app\" source-language=\"en\"><body>\n"
                   "<trans-unit id=\"a\"><source>a</source><target>1</target></trans-unit>\n"
                   "<trans-unit id=\"a\"><source>a</source><target>2</target></trans-unit>\n"
                   "</body></file></xliff>",
                   "f.xlf", {"", "de"});
    for (const imported* each : {&po, &csv, &xliff}) {
        ASSERT_EQ(1u, each->all.messages.size());
        EXPECT_EQ("1", each->all.messages[0].target.pieces[0].text);
        ASSERT_EQ(1u, each->problems.size());
        EXPECT_STREQ(appears_again, each->problems[0].text.c_str());
    }
    EXPECT_EQ(4u, po.problems[0].line);
    EXPECT_EQ(3u, csv.problems[0].line);
    EXPECT_EQ(3u, xliff.problems[0].line);
}

TEST(Exchange, RefusesXliffThatIsNestedTooDeeply) {
    const auto file = [](std::size_t depth) {
        std::string text = "<xliff version=\"1.2\"><file original=\"a\" target-language=\"de\">";
        for (std::size_t i = 0; i < depth; ++i)
            text += "<group>";
        text += "<trans-unit id=\"a\"><source>a</source><target>b</target></trans-unit>";
        for (std::size_t i = 0; i < depth; ++i)
            text += "</group>";
        return text + "</file></xliff>";
    };
    EXPECT_EQ(1u, read_xliff(file(200), "f.xlf", {}).all.messages.size());
    EXPECT_THROW(read_xliff(file(201), "f.xlf", {}), file_error);
    EXPECT_THROW(read_xliff(file(100000), "f.xlf", {}), file_error);
}

TEST(Exchange, NamesTheLineOfWhatIsNoPoFile) {
    const struct {
        const char* text;
        const char* message;
    } cases[] = {
        {"msgid \"a\"\nmsgstr \"b\"\n", "f.po: does not name its language; give it with --lang"},
        {"msgid a\n", "f.po:1: a string in quotes is missing"},
        {"\nmsgid \"a\nmsgstr \"b\"\n", "f.po:2: the string is not closed: \" is missing"},
        {"msgid \"a\"b\"\n", "f.po:1: a quote within a string: write \\\""},
        {"msgstr \"a\"\n", "f.po:1: \"msgstr\" without \"msgid\""},
        {"hello\n", "f.po:1: neither a comment, a keyword nor a string"},
    };
    for (const auto& c : cases) {
        try {
            read_po(c.text, "f.po", {});
            ADD_FAILURE() << c.text;
        } catch (const file_error& error) {
            EXPECT_STREQ(c.message, error.what());
        }
    }
}

TEST(PluralForms, AreThoseOfEveryLanguageThatHasAUsualHeader) {
    std::size_t found = 0;
    for (const char* const locale :
         {"en", "de", "fr", "es", "it", "pt", "pl", "ru", "uk", "cs", "sk", "lt", "lv", "ro",
          "sl", "ar", "ga", "he", "ja", "zh", "ko", "hu", "tr", "fi", "sv", "hr", "sr", "cy",
          "mt", "gd", "is", "fa", "hi", "vi", "id", "bg", "el", "nl", "da", "nb"}) {
        SCOPED_TRACE(locale);
        const plural_header header(plural_header_for(locale));
        ASSERT_TRUE(header.is_valid());
        const auto forms = categories_of_forms(header, locale);
        for (unsigned long n = 0; n < 3000; ++n) {
            const auto form = header.form_of(n);
            ASSERT_LT(form, forms.size());
            ASSERT_EQ(category_of(locale, n), forms[form].at(0)) << n;
        }
        ++found;
    }
    EXPECT_EQ(40u, found);
}

TEST(PluralForms, OfAHeaderAreReadAsC) {
    const struct {
        const char* header;
        unsigned long number;
        unsigned long form;
    } cases[] = {
        {"nplurals=2; plural=n!=1;", 1, 0},
        {"nplurals=2; plural=(n != 1);\n", 2, 1},
        {"nplurals=3; plural=n==1 ? 0 : n>=2 && n<=4 ? 1 : 2;", 3, 1},
        {"nplurals=3; plural=n==1 ? 0 : n>=2 && n<=4 ? 1 : 2;", 5, 2},
        {"nplurals=2; plural=!(n==1 || n%10*2-2 == 0 && n/100 < 1);", 11, 0},
        {"nplurals=2; plural=n + 1 > 2;", 1, 0},
    };
    for (const auto& c : cases) {
        std::string text = c.header;
        text.erase(text.find_last_not_of('\n') + 1);
        EXPECT_EQ(c.form, plural_header(text).form_of(c.number)) << c.header;
    }
    for (const char* wrong : {"", "nplurals=2", "nplurals=2; plural=", "nplurals=2; plural=n=1;",
                              "nplurals=1; plural=n;", "nplurals=2; plural=(n;",
                              "nplurals=2; plural=n/0;", "nplurals=99; plural=0;"})
        EXPECT_FALSE(plural_header(wrong).is_valid()) << wrong;
}

TEST(ForeignFormat, BecomesItemsOrIsListed) {
    const struct {
        const char* text;
        foreign_format format;
        const char* content;
        std::vector<std::string> unknown;
    } cases[] = {
        {"100%", foreign_format::none, "100%", {}},
        {"%s has %d",
         foreign_format::c,
         "<arg name=\"arg1\"/> has <arg name=\"arg2\" type=\"int\"/>",
         {}},
        {"%2$s, %1$lu",
         foreign_format::c,
         "<arg name=\"arg2\"/>, <arg name=\"arg1\" type=\"int\"/>",
         {}},
        {"%.2f%%", foreign_format::c, "<arg name=\"arg1\" type=\"double\" precision=\"2\"/>%", {}},
        {"%f", foreign_format::c, "<arg name=\"arg1\" type=\"double\" precision=\"6\"/>", {}},
        {"%5d",
         foreign_format::c,
         "<arg name=\"arg1\" type=\"int\"/>",
         {"\"%5d\" is shown without its width"}},
        {"%-5s", foreign_format::c, "%-5s", {"\"%-5s\" cannot become an argument and stays text"}},
        {"%x %s",
         foreign_format::c,
         "%x <arg name=\"arg2\"/>",
         {"\"%x\" cannot become an argument and stays text"}},
        {"%*d", foreign_format::c, "%*d", {"\"%*d\" cannot become an argument and stays text"}},
        {"50 %", foreign_format::c, "50 %", {"\"%\" cannot become an argument and stays text"}},
        {"%(who)s: %(n)d",
         foreign_format::python,
         "<arg name=\"who\"/>: <arg name=\"n\" type=\"int\"/>",
         {}},
        {"{who} {{0}} {0}",
         foreign_format::python_brace,
         "<arg name=\"who\"/> {0} <arg name=\"arg1\"/>",
         {}},
        {"100% of %s: %d %%",
         foreign_format::c_unflagged,
         "100% of <arg name=\"arg1\"/>: <arg name=\"arg2\" type=\"int\"/> %",
         {}},
        {"{n:>5}",
         foreign_format::python_brace,
         "{n:&gt;5}",
         {"\"{n:>5}\" cannot become an argument and stays text"}},
    };
    for (const auto& c : cases) {
        std::vector<std::string> unknown;
        EXPECT_EQ(c.content, content_of(read_foreign(c.text, c.format, unknown).pieces)) << c.text;
        EXPECT_EQ(c.unknown, unknown) << c.text;
    }
}
