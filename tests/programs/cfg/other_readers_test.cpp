#include "cfg/check/lint.hpp"
#include "cfg/model/ini_format.hpp"
#include "support/guide.hpp"
#include "support/program.hpp"
#include "support/temporary_directory.hpp"
#include "support/working_directory.hpp"

#include <gtest/gtest.h>
#include <ini.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Compares settings files with INI files as two readers read them, Python's configparser and the C
// library inih. These tests run both readers and compare their results with what tova-cfg expects
// of them: for the files in the guide's table, generated files, files written for this test, and
// INI files of the machine.

using namespace tova_programs;
using namespace tova_programs::cfg;
using test_support::read_bytes;
using test_support::run_program;
using test_support::temporary_directory;

namespace {

namespace fs = std::filesystem;

using section_and_key = std::pair<std::string, std::string>;

// What a reader actually reads in a file.
struct reading {
    bool is_refused = false;
    bool is_refused_if_strict = false;
    bool is_interpolated_alike = true;
    std::map<section_and_key, std::string> values;
    std::vector<section_and_key> order;  // of the last time that each was set

    void set(const section_and_key& key, const std::string& value) {
        values[key] = value;
        order.erase(std::remove(order.begin(), order.end(), key), order.end());
        order.push_back(key);
    }
};

std::vector<reading> read_by_configparser(const std::vector<std::string>& texts) {
    static const char digits[] = "0123456789abcdef";
    std::string input;
    for (const std::string& text : texts) {
        for (const char c : text) {
            input += digits[static_cast<unsigned char>(c) / 16];
            input += digits[static_cast<unsigned char>(c) % 16];
        }
        input += '\n';
    }
    const temporary_directory folder;
    const std::string output =
        run_program("python3 " TOVA_READ_INI " < " + folder.write("input", input)).output;
    std::vector<reading> result;
    for (const std::string& line : test_support::lines_of(output)) {
        const auto parsed = nlohmann::json::parse(line);
        reading one;
        one.is_refused = parsed["refused"];
        one.is_refused_if_strict = parsed["strict"];
        one.is_interpolated_alike = parsed.value("interpolated", true);
        for (const auto& each : parsed["values"])
            one.set({each[0], each[1]}, each[2]);
        result.push_back(std::move(one));
    }
    EXPECT_EQ(texts.size(), result.size()) << output.substr(0, 1000);
    result.resize(texts.size());
    return result;
}

// The bytes of a file, and the line that inih reads. inih calls the handler for an entry, and again
// for each line that continues it; then the value is the line, which does not contain the key.
struct inih_input {
    std::string_view rest;
    const char* line = nullptr;
    std::size_t size = 0;  // of the buffer of the line
    reading result;
};

char* next_line(char* target, int size, void* stream) {
    inih_input& input = *static_cast<inih_input*>(stream);
    if (input.rest.empty())
        return nullptr;
    const std::size_t longest = static_cast<std::size_t>(size) - 1;
    const std::size_t feed = input.rest.find('\n');
    const std::size_t count =
        std::min({feed == input.rest.npos ? longest : feed + 1, longest, input.rest.size()});
    input.rest.copy(target, count);
    target[count] = '\0';
    input.rest.remove_prefix(count);
    input.line = target;
    input.size = longest + 1;
    return target;
}

int add_value(void* user, const char* section, const char* name, const char* value) {
    inih_input& input = *static_cast<inih_input*>(user);
    const bool is_continued = name < input.line || name >= input.line + input.size;
    const section_and_key key = {section, name};
    std::string text = value;
    if (is_continued && input.result.values.count(key) != 0)
        text = input.result.values[key] + '\n' + text;
    input.result.set(key, text);
    return 1;
}

reading read_by_inih(const std::string& text) {
    inih_input input;
    input.rest = text;
    const int code = ini_parse_stream(next_line, &input, add_value, &input);
    input.result.is_refused = code != 0;
    input.result.is_refused_if_strict = code != 0;
    return std::move(input.result);
}

std::vector<reading> read_by(ini_dialect dialect, const std::vector<std::string>& texts) {
    if (dialect == ini_dialect::configparser)
        return read_by_configparser(texts);
    std::vector<reading> result;
    for (const std::string& text : texts)
        result.push_back(read_by_inih(text));
    return result;
}

// What the reader reads in a file, according to tova-cfg.
reading predicted(ini_dialect dialect, const std::string& text) {
    const ini_reading read = read_ini(dialect, text);
    reading result;
    for (const foreign_value& each : read.values) {
        const std::string& name = each.path.back();
        result.set({each.path.size() > 1 ? each.path[0] : "",
                    dialect == ini_dialect::configparser ? configparser_key(name) : name},
                   each.values[0]);
    }
    for (const ini_refusal& each : read.refusals) {
        result.is_refused = result.is_refused || !each.is_duplicate;
        result.is_refused_if_strict = true;
    }
    return result;
}

// What the library reads in it: each key with its value, or the elements of an array.
std::map<std::string, std::string> read_here(const document& file) {
    std::map<std::string, std::string> result;
    for (const entry& each : file.entries()) {
        if (!each.is_stored)
            continue;
        std::string& text = result[each.key];
        text = each.is_array ? "[" : each.values[0].text;
        for (std::size_t i = 0; each.is_array && i < each.values.size(); ++i)
            text += (i == 0 ? "" : ", ") + each.values[i].text;
        text += each.is_array ? "]" : "";
    }
    return result;
}

bool is_array_here(const document& file, const std::string& key) {
    bool result = false;
    for (const entry& each : file.entries())
        if (each.is_stored && each.key == key)
            result = each.is_array;
    return result;
}

std::string spelled(const section_and_key& key) {
    return key.first.empty() ? key.second : key.first + '.' + key.second;
}

// The keys that the reader and the library read differently.
std::set<std::string> different_keys(const document& file, const reading& there) {
    const std::map<std::string, std::string> here = read_here(file);
    std::set<std::string> result;
    std::map<std::string, std::string> last;
    for (const section_and_key& each : there.order) {
        const std::string path = path_of(spelled(each));
        if (last.count(path) != 0)
            result.insert(path);
        last[path] = there.values.at(each);
    }
    for (const auto& each : last) {
        const auto found = here.find(each.first);
        if (found == here.end() || found->second != each.second || is_array_here(file, each.first))
            result.insert(each.first);
    }
    for (const auto& each : here)
        if (last.count(each.first) == 0)
            result.insert(each.first);
    return result;
}

// Whether a finding is about a line that the reader rejects.
bool is_refusal(const finding& found) {
    return found.text.find("refuses the file") != std::string::npos ||
           found.text.find("reports an error") != std::string::npos;
}

// Compares what tova-cfg expects of the reader with what it actually reads. Returns the number of
// keys that differ.
std::size_t compare(ini_dialect dialect, const std::string& text, const reading& real) {
    SCOPED_TRACE(std::string(name_of(dialect)) + ": " + text);
    const reading expected = predicted(dialect, text);
    EXPECT_EQ(real.is_refused, expected.is_refused);
    EXPECT_EQ(real.is_refused_if_strict, expected.is_refused_if_strict);
    const document file("f", text);
    const std::vector<finding> found = lint_written_for(file, dialect);
    const bool has_refusal = std::any_of(found.begin(), found.end(), is_refusal);
    EXPECT_EQ(real.is_refused_if_strict, has_refusal);
    if (real.is_refused && dialect == ini_dialect::configparser)
        return 0;  // it has no values
    EXPECT_EQ(real.values, expected.values);
    std::set<std::string> reported;
    bool has_percent = false;
    for (const finding& each : found)
        if (each.text.find("RawConfigParser") != std::string::npos)
            has_percent = true;
        else if (!is_refusal(each))
            reported.insert(each.subject);
    const std::set<std::string> different = different_keys(file, real);
    EXPECT_EQ(different, reported);
    if (different.empty() && !real.is_interpolated_alike) {
        EXPECT_TRUE(has_percent);
    }
    return different.size();
}

std::size_t compare_all(const std::vector<std::string>& texts) {
    std::size_t different = 0;
    for (const ini_dialect dialect : {ini_dialect::configparser, ini_dialect::inih}) {
        const std::vector<reading> real = read_by(dialect, texts);
        for (std::size_t i = 0; i < texts.size() && !testing::Test::HasFailure(); ++i)
            different += compare(dialect, texts[i], real[i]);
    }
    return different;
}

std::string replaced(std::string text, const std::string& before, const std::string& after) {
    for (std::size_t at = text.find(before); at != std::string::npos;
         at = text.find(before, at + after.size()))
        text.replace(at, before.size(), after);
    return text;
}

const std::vector<std::pair<std::string, std::string>> shown_characters = {
    {"\n", "\u21B5"}, {"\xEF\xBB\xBF", "U+FEFF"}, {"\r", "U+000D"}};

std::string as_code(std::string text) {
    for (const auto& each : shown_characters)
        text = replaced(std::move(text), each.first, each.second);
    return text.empty() ? "empty" : '`' + text + '`';
}

// A cell of the guide's table: the value of s.a, or whatever keys there are.
std::string cell(const std::vector<std::pair<std::string, std::string>>& values) {
    if (values.size() == 1 && values[0].first == "s.a")
        return as_code(values[0].second);
    std::string result;
    for (const auto& each : values)
        result +=
            (result.empty() ? "" : "; ") + as_code(each.first) + " is " + as_code(each.second);
    return result.empty() ? "nothing" : result;
}

// A line of a table as its cells.
std::vector<std::string> cells_of(const std::string& line) {
    std::vector<std::string> result;
    for (std::size_t begin = 2; begin < line.size();) {
        const std::size_t end = std::min(line.find(" |", begin), line.size());
        result.push_back(line.substr(begin, end - begin));
        begin = end + 3;
    }
    return result;
}

// The file that the first cell of a row describes.
std::string file_of(const std::string& cell) {
    std::string text = cell.substr(1, cell.size() - 2) + '\n';
    for (const auto& each : shown_characters)
        text = replaced(std::move(text), each.second, each.first);
    const bool has_beginning = text[0] == '[' || text[0] == '\n' || text[0] == '\xEF';
    return (has_beginning ? "" : "[s]\n") + text;
}

// The rules that find something without --written-for.
std::string rules_in(const document& file) {
    std::set<std::string> rules;
    for (const finding& each : lint(file, schema()))
        rules.insert(each.broken_rule->id);
    std::string names;
    for (const std::string& each : rules)
        names += (names.empty() ? "" : ", ") + each;
    return names.empty() ? "reads-differently" : names;
}

std::string cell_there(const reading& real) {
    std::vector<std::pair<std::string, std::string>> values;
    for (const section_and_key& each : real.order)
        values.emplace_back(spelled(each), real.values.at(each));
    return real.is_refused_if_strict ? "an error" : cell(values);
}

}  // namespace

// The table lists the classes of differences. Each is a finding of `check`: by a rule of its own,
// or by the one that --written-for adds.
TEST(CfgOtherReaders, DifferAsTheGuideSays) {
    const std::string path = test_support::project_path("docs/operators.md");
    std::string page = read_bytes(path);
    std::vector<std::string> rows;
    for (const std::string& line : test_support::lines_of(page))
        if (line.compare(0, 3, "| `") == 0 && std::count(line.begin(), line.end(), '|') == 6)
            rows.push_back(line);
    ASSERT_GT(rows.size(), 35u);
    std::vector<std::string> texts;
    for (const std::string& row : rows)
        texts.push_back(file_of(cells_of(row).at(0)));
    const auto by_configparser = read_by(ini_dialect::configparser, texts);
    const auto by_inih = read_by(ini_dialect::inih, texts);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const document file("f", texts[i]);
        const auto values = read_here(file);
        const std::string expected = "| " + cells_of(rows[i])[0] + " | " +
                                     cell({values.begin(), values.end()}) + " | " +
                                     cell_there(by_configparser[i]) + " | " +
                                     cell_there(by_inih[i]) + " | " + rules_in(file) + " |";
        if (std::getenv("TOVA_UPDATE_GOLDEN") != nullptr)
            page.replace(page.find(rows[i]), rows[i].size(), expected);
        else
            EXPECT_EQ(expected, rows[i]);
        const std::size_t different =
            compare(ini_dialect::configparser, texts[i], by_configparser[i]) +
            compare(ini_dialect::inih, texts[i], by_inih[i]);
        EXPECT_TRUE(different != 0 || by_configparser[i].is_refused_if_strict ||
                    !by_configparser[i].is_interpolated_alike)
            << rows[i];
    }
    if (std::getenv("TOVA_UPDATE_GOLDEN") != nullptr)
        std::ofstream(path) << page;
}

TEST(CfgOtherReaders, AreKnownExactlyInGeneratedFiles) {
    std::vector<std::string> pieces = {"a = 1\n",
                                       "b: 2\n",
                                       "A=3 # c\n",
                                       "  c = 4\n",
                                       "\t d\n",
                                       "[t]\n",
                                       "[T]  ; x\n",
                                       "[u v]\n",
                                       "[w\n",
                                       "[]\n",
                                       "[x] y = [z]\n",
                                       "; note\n",
                                       "# \"note\n",
                                       "\n",
                                       "   \n",
                                       "e =\n",
                                       "f = \"g h\"\n",
                                       "i[] = 1, 2,\n  3\n",
                                       "j == 5\n",
                                       "k += 6 ; l\n",
                                       "m = http://n/#o\n",
                                       "= p\n",
                                       ": q\n",
                                       "r = %(a)s %%\n",
                                       "[DEFAULT]\n",
                                       "s/t = u\n",
                                       "s.t = v\r\n",
                                       "w = x\ry\n",
                                       "\xC3\x84 = \xC3\xA4\n",
                                       "z = \xC2\xA0 1 \xE3\x80\x80\n",
                                       "\xC2\x85 z = 2\n",
                                       "aa ;= 1\n",
                                       "bb = ;c\n",
                                       "\v\f cc = dd\n",
                                       "\x1Czz = 1\n",
                                       "  more\n",
                                       "hh = 1; 2\n",
                                       "// note\n",
                                       "ii = */ 1\n",
                                       "jj"};
    // Longer than the lines that inih reads in one piece.
    pieces.push_back(std::string(60, 'f') + " = 1\n");
    pieces.push_back("g = " + std::string(230, 'g') + " h = i\n");
    pieces.push_back('[' + std::string(55, 's') + "]\n");
    const std::vector<std::string> signs = {"a", "b",  "=", "=",  ":",        ";",  "#",  "[",
                                            "]", "\"", "/", " ",  "\t",       "\n", "\n", "\r",
                                            ",", ".",  "%", "\\", "\xC3\x84", "*",  "+"};
    std::mt19937 random(14);
    const auto below = [&random](std::size_t limit) { return random() % limit; };
    std::vector<std::string> texts;
    for (int i = 0; i < 4000; ++i) {
        std::string text = i % 8 == 0 ? "" : "[s]\n";
        if (i % 50 == 1)
            text = "\xEF\xBB\xBF" + text;
        if (i % 2 == 0)
            for (std::size_t count = below(9); count != 0; --count)
                text += pieces[below(pieces.size())];
        else
            for (std::size_t count = below(30); count != 0; --count)
                text += signs[below(signs.size())];
        texts.push_back(std::move(text));
    }
    EXPECT_GT(compare_all(texts), 3000u);
}

// Files like those that programs ship, with the findings of check.
TEST(CfgOtherReaders, AreKnownExactlyInFilesOfManyKinds) {
    const std::string folder = TOVA_TEST_DATA "/programs/cfg/written_for";
    std::vector<std::string> names;
    for (const auto& each : fs::directory_iterator(folder))
        if (each.path().extension() != ".expected")
            names.push_back(each.path().filename().native());
    std::sort(names.begin(), names.end());
    ASSERT_GT(names.size(), 7u);
    std::vector<std::string> texts;
    for (const std::string& name : names)
        texts.push_back(read_bytes(folder + "/" + name));
    EXPECT_GT(compare_all(texts), 20u);
    const test_support::working_directory inside(folder);
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        std::string output;
        for (const char* reader : {"configparser", "inih"}) {
            const std::string arguments = std::string("check --written-for ") + reader + ' ' + name;
            output +=
                "$ tova-cfg " + arguments + '\n' + run_program(TOVA_CFG " " + arguments).output;
        }
        if (std::getenv("TOVA_UPDATE_GOLDEN") != nullptr)
            std::ofstream(name + ".expected") << output;
        EXPECT_EQ(read_bytes(name + ".expected"), output);
    }
}

// Compares the INI files that are installed. On a machine without such files it compares nothing.
TEST(CfgOtherReaders, AreKnownExactlyInTheFilesOfThisMachine) {
    std::vector<std::string> paths;
    for (const char* folder : {"/etc", "/usr/share", "/usr/lib"}) {
        std::error_code error;
        fs::recursive_directory_iterator each(folder, fs::directory_options::skip_permission_denied,
                                              error);
        for (; !error && each != fs::recursive_directory_iterator(); each.increment(error)) {
            const std::string extension = each->path().extension().native();
            if (extension != ".cfg" && extension != ".ini" && extension != ".conf")
                continue;
            std::error_code ignored;
            if (each->symlink_status(ignored).type() == fs::file_type::regular &&
                each->file_size(ignored) < 20000)
                paths.push_back(each->path().native());
        }
    }
    std::sort(paths.begin(), paths.end());
    std::vector<std::string> texts;
    for (const std::string& path : paths) {
        std::ifstream in(path, std::ios::binary);
        std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        // configparser cannot decode bytes that are not UTF-8, and inih ends a line at a NUL byte.
        const std::vector<finding> found = lint(document(path, text), schema());
        if (text.find('=') != std::string::npos && texts.size() < 700 &&
            std::none_of(found.begin(), found.end(), [](const finding& each) {
                return std::string_view(each.broken_rule->id) == "not-utf8";
            }))
            texts.push_back(std::move(text));
    }
    const std::size_t different = compare_all(texts);
    std::cout << texts.size() << " files, " << different << " keys that differ\n";
}
