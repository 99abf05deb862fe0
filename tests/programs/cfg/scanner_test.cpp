#include "cfg/scanner/document.hpp"
#include "programs/cfg/against_loader.hpp"
#include "support/guide.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

using namespace tova_programs::cfg;
using test_support::temporary_directory;

namespace {

// The pieces of random files: common ones, and frequent mistakes.
const std::vector<std::string> pieces = {"a",
                                         "B",
                                         "key",
                                         "key2",
                                         "1",
                                         "0",
                                         " ",
                                         "  ",
                                         "\t",
                                         "\n",
                                         "\r\n",
                                         "\r",
                                         "=",
                                         "==",
                                         ":=",
                                         "+=",
                                         "-=",
                                         "*=",
                                         "/=",
                                         "<=",
                                         ">=",
                                         "<",
                                         ">",
                                         ":",
                                         "+",
                                         "-",
                                         "*",
                                         "/",
                                         "//",
                                         "*/",
                                         "#",
                                         ";",
                                         ",",
                                         ".",
                                         "\\",
                                         "[",
                                         "]",
                                         "[]",
                                         "[]=",
                                         "[s]",
                                         "[s.t]",
                                         "[]\n",
                                         "[ s\n]",
                                         "\"",
                                         "\"\"",
                                         "\"a b\"",
                                         "\\\"",
                                         "\"x\ny\"",
                                         "\"\\\"\"",
                                         "\n[s]\nk = 1\n",
                                         "k[] = 1, 2\n",
                                         "k = v # c\n",
                                         "\xC3\xA4",
                                         "\xEF\xBB\xBF",
                                         std::string("\0", 1),
                                         "$",
                                         "%",
                                         "http://x/",
                                         "..",
                                         "a.",
                                         "\n= b\n"};

const std::string valid =
    "# The server.\n[server]\nport = 8080  // plain\nhost = localhost\r\n"
    "Title = \"Test machine\"\n\n[server.limits]\nusers += = 20\n[]\n"
    "top/key = a\\\"b\n[paths]\nsearch[] = /usr/share/app, /opt/app,\n"
    "   \"/home/me, my app\" # end\nempty[] = 1, 2,\n\nnext[] = \"\", 3\nlast";

using random_source = std::mt19937;

std::size_t below(random_source& random, std::size_t limit) {
    return static_cast<std::size_t>(random()) % limit;
}

std::string assembled(random_source& random) {
    std::string text;
    for (std::size_t count = below(random, 16); count != 0; --count)
        text += pieces[below(random, pieces.size())];
    return text;
}

// A common file after a few changes: a byte or a piece is added, removed or moved.
std::string changed(random_source& random) {
    std::string text = valid;
    for (std::size_t count = 1 + below(random, 4); count != 0 && !text.empty(); --count) {
        const std::size_t at = below(random, text.size());
        switch (below(random, 4)) {
        case 0:
            text.erase(at, 1 + below(random, 8));
            break;
        case 1:
            text.insert(at, pieces[below(random, pieces.size())]);
            break;
        case 2:
            text[at] = static_cast<char>(below(random, 256));
            break;
        default:
            text.insert(at, text.substr(below(random, text.size()), below(random, 40)));
        }
    }
    return text;
}

}  // namespace

TEST(CfgScanner, HasTheValuesOfTheLoaderForEveryPrefix) {
    const temporary_directory folder;
    for (std::size_t size = 0; size <= valid.size(); ++size)
        ASSERT_EQ("", cfg_test::difference(valid.substr(0, size), folder.path("f.cfg"))) << size;
}

TEST(CfgScanner, HasTheValuesOfTheLoaderWithEachPieceAtEachPlace) {
    const temporary_directory folder;
    for (const std::string& piece : pieces)
        for (std::size_t at = 0; at <= valid.size(); at += 3) {
            std::string text = valid;
            text.insert(at, piece);
            ASSERT_EQ("", cfg_test::difference(text, folder.path("f.cfg"))) << text;
        }
}

TEST(CfgScanner, HasTheValuesOfTheLoaderForEachPairOfPiecesInAKeyAndAValue) {
    const temporary_directory folder;
    for (const std::string& first : pieces)
        for (const std::string& second : pieces)
            for (const char* const frame : {"k = v|\nn = 1\n", "k|k = v\n", "[|]\nk[] = 1,|2\n"}) {
                std::string text = frame;
                for (std::size_t at = text.find('|'); at != text.npos; at = text.find('|', at))
                    text.replace(at, 1, first + second);
                ASSERT_EQ("", cfg_test::difference(text, folder.path("f.cfg"))) << text;
            }
}

TEST(CfgScanner, HasTheValuesOfTheLoaderForRandomFiles) {
    const temporary_directory folder;
    random_source random(20240229);
    for (int i = 0; i < 20000; ++i) {
        const std::string text = i % 2 == 0 ? assembled(random) : changed(random);
        ASSERT_EQ("", cfg_test::difference(text, folder.path("f.cfg"))) << text;
    }
}

TEST(CfgScanner, ReadsTheExamplesOfTheGuideAsTheLoaderDoes) {
    const temporary_directory folder;
    std::size_t entries = 0;
    for (const auto& block : test_support::guide_blocks("docs/configuration.md", "cfg")) {
        EXPECT_EQ("", cfg_test::difference(block.text, folder.path("f.cfg"))) << block.text;
        entries += document("f", block.text).entries().size();
    }
    EXPECT_GT(entries, 30u);
}

TEST(CfgScanner, KnowsThePlaceOfEachThing) {
    const document file("f",
                        "# note\n[Net]  # x\n port = 80  # plain\n\"a b\"[] = 1, \"2 3\" ,4\n");
    ASSERT_EQ(2u, file.sections().size());
    EXPECT_EQ("[Net]", file.source(file.sections()[1].bytes));
    ASSERT_EQ(3u, file.comments().size());
    EXPECT_EQ("# note", file.source(file.comments()[0].bytes));
    EXPECT_EQ("# plain", file.source(file.comments()[2].bytes));
    ASSERT_EQ(2u, file.entries().size());
    const entry& port = file.entries()[0];
    EXPECT_EQ("net.port", port.key);
    EXPECT_EQ("port = 80", file.source(port.bytes));
    EXPECT_EQ("port", file.source(port.key_bytes));
    EXPECT_EQ("80", file.source(port.value_bytes));
    const entry& list = file.entries()[1];
    EXPECT_EQ("net.a b", list.key);
    EXPECT_EQ("\"a b\"[]", file.source(list.key_bytes));
    EXPECT_EQ("1, \"2 3\" ,4", file.source(list.value_bytes));
    ASSERT_EQ(3u, list.values.size());
    EXPECT_EQ("2 3", list.values[1].text);
    EXPECT_EQ("\"2 3\"", file.source(list.values[1].bytes));
}

TEST(CfgScanner, ComparesKeysByTheirPaths) {
    const struct {
        const char* key;
        const char* path;
    } cases[] = {{"a.b", "a.b"}, {"A/b", "a.b"}, {"a\\b.", "a.b"}, {"a.b..", "a.b."},
                 {"", ""},       {".", ""},      {"..", "."},      {"\xC3\x84", "\xC3\x84"}};
    for (const auto& c : cases) {
        EXPECT_EQ(c.path, path_of(c.key)) << c.key;
        EXPECT_EQ(c.path, path_of(key_with_path(c.path))) << c.key;
    }
}
