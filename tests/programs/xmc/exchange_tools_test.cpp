// What other programs say about exported files, and what gettext says about imported ones. A test
// is skipped where its program is not installed.
#include "support/program.hpp"
#include "support/temporary_directory.hpp"
#include "support/text_file.hpp"
#include "xmc/exchange/po.hpp"

#include <tova/generic/varg_list.hpp>
#include <tova/i18n/message_catalogs.hpp>

#include <gtest/gtest.h>

#include <dirent.h>
#include <libintl.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <string>
#include <vector>

// Tells gettext that the language has changed.
extern "C" int _nl_msg_cat_cntr;

using namespace tova_programs;
using namespace tova_programs::xmc;
using test_support::run_program;
using test_support::temporary_directory;
using tova::strings::ustring8;

namespace {

const std::string sample = TOVA_TEST_DATA "/programs/xmc/sample/";

bool is_installed(const std::string& program) {
    return run_program("command -v " + program).exit_code == 0;
}

// The sample in German, with plural forms and awkward texts.
std::string exported(const temporary_directory& folder, const std::string& format,
                     const std::string& name) {
    folder.write("in/plural.xmc", R"(<?xml version="1.0"?><xmc version="1.1">
<catalog name="more" lang="en">
<msg name="files.one">one file</msg>
<msg name="files.other"><arg name="n" type="int"/> files</msg>
<msg name="braces">{<arg name="n"/>} &amp; "quotes" \</msg>
<msg name="lines">one<br/>two</msg>
<msg name="control">a&#1;b<arg name="n"/></msg>
</catalog><catalog name="more" lang="de">
<msg name="files.one">eine Datei</msg>
<msg name="files.other"><arg name="n" type="int" base="spaced_dec"/> Dateien</msg>
<msg name="braces">{<arg name="n"/>} &amp; "Zeichen" \</msg>
<msg name="lines">eins<br/>zwei</msg>
<msg name="control">c&#1;d<arg name="n"/></msg>
</catalog></xmc>)");
    const std::string output = folder.path(name);
    const auto result = run_program(TOVA_XMC " export " + sample + "catalogs " + folder.path("in") +
                                    " --lang de --format " + format + " -o " + output);
    EXPECT_EQ(0, result.exit_code) << result.output;
    return output;
}

// All names in a folder that begin with a text.
std::vector<std::string> names_in(const std::string& folder, const std::string& begin) {
    std::vector<std::string> result;
    DIR* const open = ::opendir(folder.c_str());
    if (open == nullptr)
        return result;
    while (const dirent* const each = ::readdir(open)) {
        const std::string name = each->d_name;
        if (name[0] != '.' && name.compare(0, begin.size(), begin) == 0)
            result.push_back(name);
    }
    ::closedir(open);
    std::sort(result.begin(), result.end());
    return result;
}

}  // namespace

TEST(ExportedPo, IsAcceptedByMsgfmt) {
    if (!is_installed("msgfmt"))
        GTEST_SKIP() << "msgfmt is not installed";
    const temporary_directory folder;
    const std::string file = exported(folder, "po", "de.po");
    const auto result =
        run_program("LC_ALL=C msgfmt --check --statistics -o " + folder.path("de.mo") + " " + file);
    EXPECT_EQ(0, result.exit_code);
    EXPECT_EQ("8 translated messages, 3 untranslated messages.\n", result.output);
    // It verifies the arguments.
    std::string text = read_file(file);
    const auto at = text.find("Hallo {who}");
    ASSERT_NE(text.npos, at);
    text.replace(at, 11, "Hallo {wer}");
    const auto wrong = run_program("LC_ALL=C msgfmt --check -o " + folder.path("de.mo") + " " +
                                   folder.write("wrong.po", text));
    EXPECT_EQ(1, wrong.exit_code);
    EXPECT_NE(std::string::npos, wrong.output.find("argument 'wer'")) << wrong.output;
}

TEST(ExportedPo, IsTheSameAfterMsgcat) {
    if (!is_installed("msgcat"))
        GTEST_SKIP() << "msgcat is not installed";
    const temporary_directory folder;
    const std::string file = exported(folder, "po", "de.po");
    const std::string after = folder.path("after.po");
    ASSERT_EQ("", run_program("msgcat -o " + after + " " + file).output);
    for (const std::string& each : {file, after})
        ASSERT_EQ(0, run_program(TOVA_XMC " import --with-source " + each + " -o " + each + ".xmc")
                         .exit_code);
    EXPECT_EQ(read_file(file + ".xmc"), read_file(after + ".xmc"));
}

TEST(ExportedPo, HasNoFailuresForPofilter) {
    if (!is_installed("pofilter"))
        GTEST_SKIP() << "pofilter is not installed";
    const temporary_directory folder;
    const std::string file = exported(folder, "po", "de.po");
    const std::string output = folder.path("found.po");
    const auto result = run_program("pofilter --progress=none -t variables -t pythonbraceformat -t "
                                    "printf -t escapes -t newlines"
                                    " -t numbers -i " +
                                    file + " -o " + output);
    EXPECT_EQ(0, result.exit_code) << result.output;
    // It compares the plural form with the singular one, which has no number. Nothing else is
    // found.
    const std::string found = read_file(output);
    const auto first = found.find("(pofilter)");
    EXPECT_NE(found.npos,
              found.find("pythonbraceformat: Unknown named placeholders in translation: {n}"));
    EXPECT_NE(found.npos, found.find("msgctxt \"more/files.*\"", first));
    EXPECT_EQ(found.npos, found.find("(pofilter)", first + 1)) << found;
}

TEST(ExportedXliff, IsWellFormedAndReadByTheTranslateToolkit) {
    const temporary_directory folder;
    for (const char* const format : {"xliff", "xliff2"}) {
        const std::string file = exported(folder, format, std::string(format) + ".xlf");
        if (is_installed("xmllint")) {
            EXPECT_EQ("", run_program("xmllint --noout " + file).output);
        }
    }
    if (!is_installed("xliff2po"))
        GTEST_SKIP() << "the translate toolkit is not installed";
    const std::string po = folder.path("x.po");
    const auto result =
        run_program("xliff2po --progress=none -i " + folder.path("xliff.xlf") + " -o " + po);
    ASSERT_EQ(0, result.exit_code) << result.output;
    const std::string text = read_file(po);
    EXPECT_NE(std::string::npos, text.find("msgstr \"Januar\"")) << text;
    EXPECT_NE(std::string::npos, text.find("msgid \"January\"")) << text;
}

TEST(ExportedXliff, IsReadByLconvert) {
    const std::string program = is_installed("lconvert") ? "lconvert" : "/usr/lib/qt6/bin/lconvert";
    if (!is_installed(program))
        GTEST_SKIP() << "lconvert is not installed";
    const temporary_directory folder;
    for (const char* const format : {"po", "xliff"}) {
        const std::string ending = format == std::string("po") ? "po" : "xlf";
        const std::string file = exported(folder, format, "de." + ending);
        const auto result = run_program(program + " -of ts -i " + file + " -o " +
                                        folder.path(std::string(format) + ".ts"));
        EXPECT_EQ(0, result.exit_code) << result.output;
        EXPECT_NE(std::string::npos,
                  read_file(folder.path(std::string(format) + ".ts")).find("Januar"));
    }
}

// The names of countries, currencies, languages and scripts in some languages; with
// TOVA_EXCHANGE_ALL=1 in all of them.
TEST(ImportedPo, SaysWhatGettextSaysForTheIsoCodes) {
    const std::string root = "/usr/share/locale";
    if (!is_installed("msgunfmt") || names_in(root + "/de/LC_MESSAGES", "iso_").empty())
        GTEST_SKIP() << "gettext or iso-codes is not installed";
    if (std::setlocale(LC_ALL, "C.UTF-8") == nullptr)
        GTEST_SKIP() << "there is no locale C.UTF-8";
    const bool takes_all = std::getenv("TOVA_EXCHANGE_ALL") != nullptr;
    const std::vector<std::string> languages =
        takes_all ? names_in(root, "")
                  : std::vector<std::string>{"de", "ja", "pl", "sr@latin", "zh_TW"};
    const temporary_directory folder;
    std::size_t count = 0;
    for (const std::string& language : languages)
        for (const std::string& file : names_in(root + "/" + language + "/LC_MESSAGES", "iso_")) {
            const std::string domain = file.substr(0, file.size() - 3);
            if (!takes_all && domain != "iso_3166-1" && domain != "iso_4217" &&
                domain != "iso_15924")
                continue;
            SCOPED_TRACE(language + " " + domain);
            const std::string po = folder.path("x.po");
            ASSERT_EQ("", run_program("msgunfmt --force-po -o " + po + " " + root + "/" + language +
                                      "/LC_MESSAGES/" + file)
                              .output);
            const imported all = read_po(read_file(po), po, {"iso", language, "en"});
            EXPECT_TRUE(all.problems.empty());
            const std::string path = folder.write("x.xmc", catalogs_of(all.all, false));
            tova::i18n::message_catalogs catalogs;
            const auto result =
                catalogs.load(std::vector<ustring8>{ustring8(path)}, ustring8(language));
            ASSERT_EQ(tova::i18n::message_catalogs::no_error, result.type) << result.message;
            ::setenv("LANGUAGE", language.c_str(), 1);
            ++_nl_msg_cat_cntr;
            ::bindtextdomain(domain.c_str(), root.c_str());
            ::bind_textdomain_codeset(domain.c_str(), "UTF-8");
            for (const exchanged_message& each : all.all.messages) {
                if (!each.target.exists)
                    continue;
                const std::string text = catalogs.message(ustring8("iso"), ustring8(each.key))
                                             .as_string(tova::generic::varg_list());
                ASSERT_EQ(::dgettext(domain.c_str(), each.key.c_str()), text);
                ++count;
            }
        }
    RecordProperty("messages", static_cast<int>(count));
    EXPECT_GT(count, 1000u);
    // The first difference ends the test. ./run prove reads this line.
    printf("iso-codes and gettext: %zu compared, 0 unexplained\n", count);
}
