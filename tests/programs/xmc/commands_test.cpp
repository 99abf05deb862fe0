#include "support/guide.hpp"
#include "support/program.hpp"
#include "support/temporary_directory.hpp"
#include "support/text_file.hpp"
#include "support/working_directory.hpp"
#include "xmc/commands/edit.hpp"
#include "xmc/commands/keys.hpp"
#include "xmc/model/locale.hpp"
#include "xmc/model/writer.hpp"
#include "xmc/scanner/verdict.hpp"

#include <tova/i18n/_private/xmc_file_loader.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

using namespace tova_programs;
using namespace tova_programs::xmc;
using test_support::read_bytes;
using test_support::run_program;
using test_support::temporary_directory;
using test_support::working_directory;

namespace {

const std::string data = TOVA_TEST_DATA "/programs/xmc";

// The command lines run in the folder of sample catalogs; the expected output of each is
// commands/NAME.txt, with the exit code in its last line.
const struct {
    const char* name;
    const char* arguments;
} commands[] = {
    {"check", "check catalogs"},
    {"check_ignore", "check --ignore cdata-space --ignore crlf,trailing-space untidy.xmc"},
    {"check_note", "check --fail-on note catalogs"},
    {"check_unknown_reference", "check catalogs --reference eng"},
    {"check_without_reference", "check catalogs/de.xmc --only argument-mismatch,crlf"},
    {"check_without_reference_quiet", "check catalogs/de.xmc --only crlf"},
    {"check_unreadable", "check untidy.xmc nowhere"},
    {"check_unreadable_json", "check --only lang-missing untidy.xmc nowhere --json"},
    {"check_unknown_rule", "check --only octal-refernce catalogs"},
    {"check_explain_unknown", "check --explain octal-refernce"},
    {"check_fix_nothing", "check --fix --dry-run ../rules/reserved-type/faulty"},
    {"unknown_command", "chek catalogs --json"},
    {"unknown_option", "diff --jsno catalogs catalogs"},
    {"unexpected_argument", "diff catalogs catalogs catalogs"},
    {"coverage_unknown_reference", "coverage catalogs --reference fr"},
    {"coverage_without_reference", "coverage catalogs/de.xmc"},
    {"coverage", "coverage catalogs"},
    {"coverage_csv", "coverage --format csv catalogs"},
    {"coverage_json", "coverage --json catalogs"},
    {"coverage_min", "coverage --min de=95% --min en=100 catalogs"},
    {"coverage_min_met", "coverage --min de=50 catalogs"},
    {"coverage_min_wrong", "coverage --min de catalogs"},
    {"coverage_untranslated", "coverage --untranslated de catalogs"},
    {"coverage_unknown_locale", "coverage --untranslated xx catalogs"},
    {"coverage_output",
     "coverage --format html catalogs -o $TOVA_OUTPUT.h; wc -l < $TOVA_OUTPUT.h"},
    {"coverage_html", "coverage --format html catalogs"},
    {"show", "show january -p catalogs"},
    {"show_for", "show january -p catalogs --lang de_AT.UTF-8"},
    {"show_json", "show app/hello -p catalogs --json"},
    {"show_missing", "show januray -p catalogs"},
    {"render", "render hello who=World -p catalogs"},
    {"render_de", "render files n:int=1234 size:double=48318382080 -p catalogs -l de_AT"},
    {"render_invalid", "render files n:int=1234 siez:int=1 -p catalogs"},
    {"render_json", "render app/files n=7 -p catalogs --json"},
    {"render_missing", "render helo -p catalogs"},
    {"render_wrong_value", "render hello who:int=x -p catalogs"},
    {"preview", "preview catalogs"},
    {"preview_de", "preview catalogs --lang de"},
    {"preview_unknown_locale", "preview catalogs --lang de,xx"},
    {"preview_output", "preview catalogs -o $TOVA_OUTPUT.p; tail -n 1 $TOVA_OUTPUT.p"},
    {"fmt", "fmt --stdout untidy.xmc"},
    {"fmt_check", "fmt --check untidy.xmc other.xmc"},
    {"diff", "diff catalogs/en.xmc other.xmc"},
    {"diff_same", "diff catalogs catalogs"},
    {"diff_json", "diff other.xmc catalogs/en.xmc --json"},
    {"merge", "merge catalogs/en.xmc catalogs/de.xmc"},
    {"merge_conflict", "merge catalogs/en.xmc other.xmc"},
    {"merge_first", "merge catalogs/en.xmc other.xmc --prefer first"},
    {"merge_last", "merge catalogs/en.xmc other.xmc --prefer last"},
    {"pseudo", "pseudo catalogs"},
    {"pseudo_unknown_locale", "pseudo catalogs --from xx"},
    {"rules_json", "check --list-rules --json"},
    {"explain_json", "check --explain crlf --json"},
    {"check_fix_json", "check --fix --dry-run --json untidy.xmc"},
    {"coverage_untranslated_json", "coverage --untranslated de --json catalogs"},
    {"preview_json", "preview catalogs --json"},
    {"fmt_json", "fmt --check --json untidy.xmc other.xmc"},
    {"fmt_stdout_json", "fmt --stdout --json untidy.xmc"},
    {"merge_json", "merge catalogs/en.xmc catalogs/de.xmc --json"},
    {"merge_conflict_json", "merge catalogs/en.xmc other.xmc --json"},
    {"merge_output_json", "merge catalogs --json -o $TOVA_OUTPUT"},
    {"pseudo_json", "pseudo catalogs --json"},
    {"export_po", "export catalogs --lang de"},
    {"export_po_template", "export catalogs --catalog dialog"},
    {"export_unknown_reference", "export catalogs --reference eng"},
    {"export_without_reference", "export catalogs/de.xmc --lang de"},
    {"export_unknown_catalog", "export catalogs --lang de --catalog nope"},
    {"export_xliff", "export catalogs --lang de --format xliff"},
    {"export_xliff2", "export catalogs --lang de --format xliff2"},
    {"export_csv", "export catalogs --lang de --format csv"},
    {"export_json", "export catalogs --lang de --json -o $TOVA_OUTPUT"},
    {"export_json_text", "export catalogs --catalog dialog --json"},
    {"import_foreign", "import foreign/pl.po --catalog app"},
    {"import_foreign_source", "import foreign/pl.po --catalog app --with-source"},
    {"import_json", "import foreign/pl.po --json -o $TOVA_OUTPUT"},
    {"import_wrong", "import foreign/wrong.po"},
    {"import_xliff", "import foreign/de.xlf"},
    {"import_csv", "import foreign/words.csv --lang de --catalog words"},
    {"import_files", "import foreign/pl.po foreign/de.xlf --catalog app --with-source -o "
                     "$TOVA_OUTPUT.i; cat $TOVA_OUTPUT.i/en.xmc $TOVA_OUTPUT.i/de.xmc"},
    {"import_files_json", "import foreign/pl.po foreign/de.xlf --json -o $TOVA_OUTPUT.j"},
    {"import_files_nowhere", "import foreign/pl.po foreign/de.xlf"},
    {"import_same_name", "import foreign/pl.po foreign/pl.po -o $TOVA_OUTPUT.k"},
    {"import_no_files", "import src -o $TOVA_OUTPUT.l"},
    {"import_no_file", "import nothing.po"},
    {"import_no_format", "import other.xmc"},
    {"keys", "keys catalogs"},
    {"keys_header_json", "keys --header --json catalogs"},
    {"preview_plurals", "preview plurals --json"},
    {"render_exported_key", "render 'words/\\x20\\x20two\\x0alines\\x20' -p plurals"},
    {"show_exported_key", "show '\\x20\\x20two\\x0alines\\x20' -p plurals"},
    {"render_not_int", "render hello who:int=abc -p catalogs"},
    {"export_plurals", "export plurals --lang pl"},
    {"keys_header", "keys --header --namespace text catalogs"},
    {"keys_json", "keys --json catalogs"},
    {"scan", "scan src -p catalogs"},
    {"scan_computed", "scan computed.src -p plurals"},
    {"scan_computed_json", "scan computed.src -p plurals --json"},
    {"scan_json", "scan src -p catalogs --json"},
    {"schema", "schema"},
    {"schema_loader", "schema --form loader"},
    {"schema_compact", "schema --form compact"},
    {"schema_xsd", "schema --form xsd"},
    {"schema_catalog", "schema --form catalog"},
    {"schema_emacs", "schema --form emacs"},
    {"schema_vscode", "schema --form vscode"},
    {"schema_json", "schema --form vscode --json"},
    {"schema_files_json", "schema --json --directory $TOVA_OUTPUT.d"},
    {"schema_twice", "schema --form xsd --directory nowhere"},
    {"scan_function", "scan src -p catalogs --function other_message"},
};

}  // namespace

TEST(Commands, HaveTheirExpectedOutputAndExitCode) {
    const working_directory inside(data + "/sample");
    const temporary_directory folder;
    ::setenv("TOVA_OUTPUT", folder.path("result").c_str(), 1);
    for (const auto& each : commands) {
        SCOPED_TRACE(each.name);
        const auto result = run_program(std::string(TOVA_XMC " ") + each.arguments);
        std::string text = result.output + "exit code " + std::to_string(result.exit_code) + "\n";
        for (auto place = text.find(folder.path()); place != text.npos;
             place = text.find(folder.path()))
            text.replace(place, folder.path().size(), "FOLDER");
        const std::string file = data + "/commands/" + each.name + ".txt";
        if (std::getenv("TOVA_UPDATE_GOLDEN") != nullptr)
            std::ofstream(file) << text;
        EXPECT_EQ(read_bytes(file), text);
    }
}

// The language server is no command for scripts.
TEST(Commands, HaveAJsonForm) {
    const std::string help = run_program(TOVA_XMC " --help").output;
    std::istringstream lines(help.substr(help.find("Subcommands:")));
    std::size_t count = 0;
    for (std::string line; std::getline(lines, line);) {
        const std::string name =
            line.substr(std::min<std::size_t>(line.size(), 2), line.find(' ', 2) - 2);
        if (line.compare(0, 2, "  ") != 0 || line[2] == ' ' || name == "lsp")
            continue;
        EXPECT_NE(std::string::npos,
                  run_program(TOVA_XMC " " + name + " --help").output.find(" --json "))
            << name;
        ++count;
    }
    EXPECT_EQ(14u, count);
}

TEST(Commands, RefuseAFolderWithoutCatalogs) {
    const temporary_directory folder;
    folder.write("po/de.po", "");
    for (const char* const arguments :
         {"check po", "check --fix po", "coverage po", "coverage --json po", "keys po",
          "preview po", "fmt po", "diff po po", "merge po", "pseudo po", "export po",
          "show hello -p po", "render hello -p po", "scan po -p po"}) {
        const auto result = run_program("cd " + folder.path() + " && " TOVA_XMC " " + arguments);
        EXPECT_EQ(2, result.exit_code) << arguments;
        EXPECT_EQ("tova-xmc: no catalog below po\n", result.output) << arguments;
    }
}

TEST(Commands, ShowKeysOfSeveralLinesInOneAndFindThemSo) {
    const temporary_directory folder;
    const auto write = [&](const std::string& locale, const std::string& messages) {
        folder.write("in/" + locale + ".xmc",
                     "<?xml version=\"1.0\"?><xmc version=\"1.1\"><catalog name=\"app\" lang=\"" +
                         locale + "\">" + messages + "</catalog></xmc>");
    };
    write("en", "<msg name=\"one\ntwo\">1<arg name=\"n\"/></msg><msg name=\"a\\nb\">3</msg>");
    write("de", "<msg name=\"one\ntwo\">2</msg>");
    const std::string keys = "app/a\\nb\napp/one\\ntwo\n";
    const struct {
        const char* arguments;
        std::string output;
    } cases[] = {
        {"keys in", keys},
        {"coverage --untranslated de in", "app/a\\nb\n"},
        {"render 'one\\ntwo' n=0 -p in", "10\n"},
        {"render 'app/one\\ntwo' n=0 -p in", "10\n"},
        {"render 'a\\nb' -p in", "3\n"},
        {"render 'one\\ntow' -p in",
         "tova-xmc: there is no message \"one\\ntow\" for this locale (did "
         "you mean \"one\\ntwo\"?)\n"},
        {"show 'one\\ntow' -p in",
         "tova-xmc: there is no message \"one\\ntow\" (did you mean \"one\\ntwo\"?)\n"},
        {"check in", "in/de.xmc:1:71: warning: one\\ntwo: argument \"n\" of en is missing "
                     "[argument-mismatch]\n1 warning\n"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(each.output,
                  run_program("cd " + folder.path() + " && " TOVA_XMC " " + each.arguments).output)
            << each.arguments;
    const auto shown =
        run_program("cd " + folder.path() + " && " TOVA_XMC " show 'one\\ntwo' -p in");
    EXPECT_EQ(0, shown.exit_code);
    EXPECT_NE(std::string::npos, shown.output.find("1{n}")) << shown.output;
}

TEST(Preview, ShowsLineEndsInKeysSpacesInTextsAndWhatIsNotTranslated) {
    const std::string page = run_program(TOVA_XMC " preview " + data + "/sample/plurals").output;
    for (const char* const part :
         {"<h3>  two\\nlines </h3>", "white-space: pre-wrap",
          "<dt>en</dt><dd><bdi lang=\"en\">  spaced  out </bdi></dd>",
          "<dt>pl</dt><dd><span class=\"missing\">not translated; shown in en:</span> "
          "<bdi lang=\"en\">  spaced  out </bdi></dd>",
          "<dt>ar</dt><dd><span class=\"missing\">not translated; nothing is shown</span></dd>",
          "<bdi lang=\"ar\" dir=\"rtl\">"})
        EXPECT_NE(std::string::npos, page.find(part)) << part << '\n' << page;
    // With one locale, the others are only what replaces it.
    const std::string polish =
        run_program(TOVA_XMC " preview --lang pl " + data + "/sample/plurals").output;
    EXPECT_EQ(std::string::npos, polish.find("<dt>en</dt>"));
    EXPECT_NE(std::string::npos, polish.find("shown in en:"));
}

TEST(Render, NamesTheFileThatCannotBeLoaded) {
    const temporary_directory folder;
    folder.write("in/good.xmc", "<?xml version=\"1.0\"?><xmc version=\"1.1\"><catalog name=\"app\" "
                                "lang=\"en\"><msg name=\"a\">A</msg></catalog></xmc>");
    folder.write("in/wrong.xmc", "<?xml version=\"1.0\"?><xmc version=\"1.1\"><catalog>");
    for (const char* const arguments : {"render a -p in", "preview in --lang en"}) {
        const auto result = run_program("cd " + folder.path() + " && " TOVA_XMC " " + arguments);
        EXPECT_EQ(2, result.exit_code);
        const std::string begin = "tova-xmc: in/wrong.xmc cannot be loaded; run tova-xmc check "
                                  "in/wrong.xmc\n";
        EXPECT_EQ(begin, result.output.substr(0, begin.size()));
        EXPECT_GT(result.output.size(), begin.size());
    }
}

TEST(Fmt, ChangesTheLayoutOnlyAndNothingTheSecondTime) {
    std::size_t formatted_files = 0;
    for (const auto& block : test_support::guide_blocks("docs/catalogs.md")) {
        if (block.kind != "xmc")
            continue;
        const std::string head = "<?xml version=\"1.0\"?><xmc version=\"1.1\">";
        const document file("f", head + "<catalog name=\"a\" lang=\"en\"><msg name=\"m\">" +
                                     block.text + "</msg></catalog></xmc>");
        if (verdict_of(file.tokens(), [](auto, auto) { return true; }).kind != load_kind::no_error)
            continue;
        SCOPED_TRACE(block.text);
        const std::string once = formatted(file);
        EXPECT_TRUE(have_equal_values(file, document("f", once)));
        EXPECT_EQ(once, formatted(document("f", once)));
        ++formatted_files;
    }
    EXPECT_GT(formatted_files, 30u);
}

// Texts of characters that are special anywhere, between arguments and alone.
TEST(Writer, WritesEveryTextSoThatItLoadsAsItIs) {
    std::mt19937 random(11);
    const std::vector<std::string> parts = {" ",
                                            "  ",
                                            "\n",
                                            "\t",
                                            "\r",
                                            "<",
                                            ">",
                                            "&",
                                            "\"",
                                            "'",
                                            "msg",
                                            "m",
                                            "a",
                                            ";",
                                            "]]>",
                                            "-->",
                                            "\xC3\xA4",
                                            "\x01",
                                            std::string("\0", 1),
                                            "\x7F",
                                            "/",
                                            "="};
    for (int i = 0; i < 5000; ++i) {
        std::vector<piece> pieces;
        std::string expected;
        for (auto count = 1 + random() % 5; count != 0; --count) {
            piece one;
            one.is_argument = !pieces.empty() && !pieces.back().is_argument && random() % 2 == 0;
            for (auto length = 1 + random() % 4; length != 0; --length)
                one.text += parts[random() % parts.size()];
            if (one.is_argument)
                one.attributes = {{"name", one.text}};
            else if (!pieces.empty() && !pieces.back().is_argument)
                continue;
            pieces.push_back(one);
        }
        writer out;
        out.begin_catalog(parts[random() % parts.size()], "en");
        out.message(parts[random() % parts.size()], parts[random() % parts.size()], pieces);
        out.end_catalog();
        const document file("f", out.text());
        ASSERT_TRUE(file.problems().empty()) << out.text() << file.problems()[0].text;
        ASSERT_EQ(1u, file.messages().size());
        const auto items = file.items(file.messages()[0]);
        ASSERT_EQ(pieces.size(), items.size()) << out.text();
        for (std::size_t k = 0; k < pieces.size(); ++k)
            ASSERT_EQ(pieces[k].text, items[k].text) << out.text();
    }
}

TEST(Pseudo, KeepsArgumentsAndLoads) {
    EXPECT_EQ("\xC3\x85 \xC3\xA7\xC3\xA5t", pseudo_text("A cat"));
    const temporary_directory folder;
    const std::string output = folder.path("pseudo.xmc");
    ASSERT_EQ(0,
              run_program(TOVA_XMC " pseudo " + data + "/sample/catalogs -o " + output).exit_code);
    EXPECT_EQ(0, run_program(TOVA_XMC " check " + data + "/sample/catalogs " + output).exit_code);
}

TEST(Keys, AreConstantsThatCompile) {
    const temporary_directory folder;
    const auto header = run_program(TOVA_XMC " keys --header " + data + "/sample/catalogs");
    folder.write("keys.hpp", header.output);
    const std::string source =
        folder.write("a.cpp", "#include \"keys.hpp\"\n"
                              "static_assert(messages::app::hello[0] == 'h', \"\");\n"
                              "int main() { return messages::app::class_[0] == 'c' ? 0 : 1; }\n");
    const std::string program = folder.path("a");
    ASSERT_EQ(0, run_program("c++ -std=c++14 -Wall -Werror -o " + program + " " + source).exit_code)
        << header.output;
    EXPECT_EQ(0, run_program(program).exit_code);
}

TEST(Keys, BecomeValidIdentifiers) {
    const struct {
        const char* key;
        const char* identifier;
    } cases[] = {
        {"hello", "hello"}, {"month.1", "month_1"}, {"1st", "key_1st"}, {"class", "class_"},
        {"", "key_"},       {"a--b", "a_b"},        {"_x", "key_x"},    {"\xC3\xA4", "key_"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.identifier, identifier_of(c.key)) << c.key;
}

TEST(Locales, HaveTheWeightsOfTheLoader) {
    using tova::i18n::_private::xmc_file_loader;
    const std::vector<std::string> names = {
        "",      ".", "en",          "de", "de_AT",    "de-AT",       "de.AT", "_DE", "de_",
        "de__x", "-", "en_GB.UTF-8", "EN", "sr@latin", "sr_RS@latin", "d",     "en_"};
    for (const std::string& wanted : names) {
        xmc_file_loader loader;
        loader.handle_language(wanted);
        const auto chain = locale_chain(wanted);
        for (const std::string& name : names)
            EXPECT_EQ(loader.get_locale_weight(name), locale_weight(chain, name))
                << wanted << ", " << name;
    }
}
