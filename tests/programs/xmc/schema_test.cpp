// What validators say of files by the schemas, compared with what the loader and check say of them.
// A test is skipped where its program is not installed.
#include "support/program.hpp"
#include "support/temporary_directory.hpp"
#include "xmc/check/lint.hpp"
#include "xmc/commands/schema.hpp"
#include "xmc/model/document.hpp"
#include "xmc/scanner/verdict.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <iomanip>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

using namespace tova_programs::xmc;
using test_support::read_bytes;
using test_support::run_program;
using test_support::temporary_directory;

namespace {

using files = std::set<std::string>;  // by content

bool is_installed(const std::string& program) {
    return run_program("command -v " + program).exit_code == 0;
}

std::string with_message(const std::string& content) {
    return "<?xml version=\"1.0\"?>\n<xmc version=\"1.1\"><catalog name=\"a\" lang=\"en\">"
           "<msg name=\"m\">" +
           content + "</msg></catalog></xmc>";
}

// The schemas, and files with numbers for names.
class schema_folder {
public:
    schema_folder() {
        schema_options options;
        options.folder = m_folder.path();
        std::ostringstream ignored;
        run_schema(options, ignored, ignored);
    }

    void add(const std::string& content) {
        std::ostringstream name;
        name << "in/" << std::setw(6) << std::setfill('0') << m_files.size() << ".xmc";
        m_files.push_back(content);
        m_folder.write(name.str(), content);
    }

    const std::vector<std::string>& all() const { return m_files; }
    std::string path(const std::string& name) const { return m_folder.path(name); }

    files refused_by_jing(const std::string& schema) const {
        const bool is_compact = schema.back() == 'c';
        return reported_by((is_compact ? "jing -c " : "jing ") + schema, ":");
    }

    files refused_by_xmllint(const std::string& option, const std::string& schema) const {
        return reported_by("xmllint --noout --" + option + " " + schema, " fails to validate");
    }

private:
    // The files of which a command, which gets the paths of all of them, prints the path and then
    // the mark.
    files reported_by(const std::string& command, const std::string& mark) const {
        const auto result = run_program("cd " + m_folder.path() + " && find in -name '*.xmc' | " +
                                        "sort | xargs " + command);
        files found;
        std::istringstream lines(result.output);
        for (std::string line; std::getline(lines, line);) {
            const auto place = line.find("in/");
            if (place != line.npos && line.compare(place + 13, mark.size(), mark) == 0)
                found.insert(m_files.at(std::stoul(line.substr(place + 3, 6))));
        }
        return found;
    }

    temporary_directory m_folder;
    std::vector<std::string> m_files;
};

// Each element and attribute, where it can be and where it cannot.
void add_structures(schema_folder& folder) {
    const std::string head = "<?xml version=\"1.0\"?>\n";
    const std::string msg = "<msg name=\"m\">x</msg>";
    const std::string catalog = "<catalog name=\"a\" lang=\"en\">" + msg + "</catalog>";
    const std::string roots[] = {
        "<xmc version=\"1.0\">" + catalog + "</xmc>",
        "<xmc version=\"1.2\">" + catalog + "</xmc>",
        "<xmc>" + catalog + "</xmc>",
        "<xmc version=\"1.1\" name=\"a\">" + catalog + "</xmc>",
        "<cmx version=\"1.1\">" + catalog + "</cmx>",
        "<xmc version=\"1.1\"></xmc>",
        "<xmc version=\"1.1\"> </xmc>",
        "<xmc version=\"1.1\">text " + catalog + " text</xmc>",
        "<xmc version=\"1.1\">" + catalog + " <!-- c --> " + catalog + "</xmc>",
        "<xmc version=\"1.1\">" + catalog + msg + "</xmc>",
        "<xmc version=\"1.1\">" + catalog + "<other/></xmc>",
    };
    for (const std::string& each : roots)
        folder.add(head + each);
    const std::string children[] = {
        "<catalog lang=\"en\"></catalog>",
        "<catalog name=\"\" lang=\"en\"/>",
        "<catalog name=\"a\"></catalog>",
        "<catalog name=\"a\" lang=\"\"></catalog>",
        "<catalog name=\"a\" lang=\".\"></catalog>",
        "<catalog name=\"a\" lang=\"de_AT\"></catalog>",
        "<catalog name=\"a\" lang=\"de-AT\"></catalog>",
        "<catalog name=\"a\" lang=\"sr@latin\"></catalog>",
        "<catalog name=\"a\" lang=\"en\" file=\"b\"></catalog>",
        "<catalog name=\"a\" lang=\"en\">text " + msg + "</catalog>",
        "<catalog name=\"a\" lang=\"en\">" + msg + " <!-- c --> " + msg + " </catalog>",
        "<catalog name=\"a\" lang=\"en\">" + msg + "<br/></catalog>",
        "<catalog name=\"a\" lang=\"en\"><msg>x</msg></catalog>",
        "<catalog name=\"a\" lang=\"en\"><msg name=\"\">x</msg></catalog>",
        "<catalog name=\"a\" lang=\"en\"><msg name=\"m\" meta=\"\">x</msg></catalog>",
        "<catalog name=\"a\" lang=\"en\"><msg name=\"m\" meta=\"n\">x</msg></catalog>",
        "<catalog name=\"a\" lang=\"en\"><msg name=\"m\" lang=\"en\">x</msg></catalog>",
    };
    for (const std::string& each : children)
        folder.add(head + "<xmc version=\"1.1\">" + each + "</xmc>");
    for (const char* const content :
         {"", "x", "x<br/>y", "<br></br>", "<br> </br>", "<br class=\"a\"/>", "<b>x</b>",
          "<arg name=\"a\"/>", "<arg name=\"a\"></arg>", "<arg name=\"a\"> </arg>",
          "<arg name=\"a\">x</arg>", "<arg name=\"a\"><br/></arg>", "<argument name=\"a\"/>",
          "<arg/>", "<arg name=\"\"/>", "<arg type=\"int\" name=\"a\"/>",
          "<arg name=\"a\" type=\"int\" base=\"hex\"/> &amp; <![CDATA[<b>]]>"})
        folder.add(with_message(content));
}

// Each type with each option, and each option with each value.
void add_arguments(schema_folder& folder) {
    for (const std::string type :
         {"", "value", "string", "int", "double", "memory", "memory_unit", "metric", "metric_unit",
          "duration", "mem", "mem_unit", "number", "time", "date", "float"}) {
        const std::string argument =
            "<arg name=\"n\"" + (type.empty() ? "" : " type=\"" + type + "\"");
        folder.add(with_message(argument + "/>"));
        for (const std::string option : {"base", "fieldsize", "precision", "short_form",
                                         "target_unit", "base_unit", "any", "width", "prec"})
            for (const char* const value :
                 {"",     "0", "99", "100", "101", "-1",   "-100", "-101", "x", "dec",
                  "hexa", "B", "KB", "kB",  "mc",  "base", "kilo", "true", "f", " 1"})
                folder.add(with_message(argument + ' ' + option + "=\"" + value + "\"/>"));
    }
}

std::string difference(const files& expected, const files& actual) {
    files missing;
    files added;
    std::set_difference(expected.begin(), expected.end(), actual.begin(), actual.end(),
                        std::inserter(missing, missing.end()));
    std::set_difference(actual.begin(), actual.end(), expected.begin(), expected.end(),
                        std::inserter(added, added.end()));
    std::string result;
    for (const std::string& each : missing)
        result += "accepted: " + each + '\n';
    for (const std::string& each : added)
        result += "refused: " + each + '\n';
    return result;
}

// Both validators, each with the forms that it reads.
void expect_refused(const schema_folder& folder, const files& expected,
                    const std::vector<std::string>& for_jing, const std::string& for_xmllint) {
    std::size_t validators = 0;
    if (is_installed("jing")) {
        for (const std::string& each : for_jing)
            EXPECT_EQ("", difference(expected, folder.refused_by_jing(each))) << each;
        ++validators;
    }
    if (is_installed("xmllint")) {
        EXPECT_EQ("", difference(expected, folder.refused_by_xmllint("relaxng", for_xmllint)));
        ++validators;
    }
    if (validators == 0)
        GTEST_SKIP() << "neither jing nor xmllint is installed";
}

bool is_loaded(const std::string& bytes) {
    const document file("f", bytes);
    return verdict_of(file.tokens(), [](auto, auto) { return true; }).kind == load_kind::no_error;
}

// Notes are about what may be meant, and whether a field is read depends on another option.
bool is_beyond_a_grammar(const problem& each) {
    const std::string rule = each.rule;
    return rule == "empty-message" || rule == "lang-modifier" ||
           each.text == "\"fieldsize\" has no effect where the precision is 0";
}

}  // namespace

TEST(LoaderSchema, RefusesWhatTheLoaderRefuses) {
    schema_folder folder;
    add_structures(folder);
    add_arguments(folder);
    files expected;
    for (const std::string& each : folder.all())
        if (!is_loaded(each))
            expected.insert(each);
    EXPECT_GT(expected.size(), 10u);
    expect_refused(folder, expected, {"xmc-loader.rng"}, "xmc-loader.rng");
}

TEST(StrictSchema, RefusesWhatCheckReports) {
    schema_folder folder;
    add_structures(folder);
    add_arguments(folder);
    files expected;
    for (const std::string& each : folder.all())
        for (const problem& found : lint(document("f", each)))
            if (!is_beyond_a_grammar(found))
                expected.insert(each);
    // Without effect, and not reported by check.
    for (const char* const content :
         {"<arg name=\"a\"> </arg>", "<arg name=\"a\">x</arg>", "<argument name=\"a\"/>"})
        expected.insert(with_message(content));
    EXPECT_GT(expected.size(), 1000u);
    EXPECT_GT(folder.all().size() - expected.size(), 100u);
    expect_refused(folder, expected, {"xmc.rng", "xmc.rnc"}, "xmc.rng");
}

TEST(Xsd, IsTheStrictFormInAllButTheTypesOfOptions) {
    if (!is_installed("xmllint"))
        GTEST_SKIP() << "xmllint is not installed";
    schema_folder structures;
    add_structures(structures);
    EXPECT_EQ("", difference(structures.refused_by_xmllint("relaxng", "xmc.rng"),
                             structures.refused_by_xmllint("schema", "xmc.xsd")));
    schema_folder arguments;
    add_arguments(arguments);
    const files by_xsd = arguments.refused_by_xmllint("schema", "xmc.xsd");
    const files by_rng = arguments.refused_by_xmllint("relaxng", "xmc.rng");
    EXPECT_GT(by_xsd.size(), 500u);
    EXPECT_TRUE(std::includes(by_rng.begin(), by_rng.end(), by_xsd.begin(), by_xsd.end()));
    if (!is_installed("trang"))
        GTEST_SKIP() << "trang is not installed";
    run_program("trang " + arguments.path("xmc.rng") + " " + arguments.path("trang.xsd"));
    EXPECT_EQ("", difference(arguments.refused_by_xmllint("schema", "trang.xsd"), by_xsd));
}

TEST(SchemaFiles, AreFoundThroughTheFilesForEditors) {
    const schema_folder folder;
    const auto settings = nlohmann::json::parse(read_bytes(folder.path("settings.json")));
    const std::string schema = settings["xml.fileAssociations"][0]["systemId"];
    EXPECT_NE("", read_bytes(folder.path(schema)));
    if (!is_installed("xmllint"))
        GTEST_SKIP() << "xmllint is not installed";
    const auto rules =
        run_program("xmllint --xpath 'string(//@uri)' " + folder.path("schemas.xml"));
    EXPECT_NE("", read_bytes(folder.path(rules.output.substr(0, rules.output.find('\n')))));
    for (const std::string name : {"rng", "loader", "rnc", "xsd"}) {
        const auto found =
            run_program("cd " + folder.path("") +
                        " && xmlcatalog catalog.xml '' urn:tova:xmc:" + name + " | tail -n 1");
        EXPECT_NE("", read_bytes(folder.path(found.output.substr(0, found.output.find('\n')))))
            << name;
    }
}
