// Compares the reader and the writer of files with a second, simple implementation.
#include <tova/config/file_item.hpp>

#include "config/cfg_oracle.hpp"
#include "config/listing.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace {

using config_support::content;
using config_support::ustring8;
using tova::config::file_item;

// A text of random pieces, most of which have a meaning in the syntax of a file.
std::string random_text(std::mt19937& random, const std::vector<std::string>& pieces) {
    std::string text;
    for (unsigned long left = random() % 40; left != 0; --left)
        text += pieces[random() % pieces.size()];
    return text;
}

class FileOracle : public ::testing::Test {
protected:
    // Checks that both read the same nodes and write the same file from them.
    void expect_equal(const std::string& text) {
        SCOPED_TRACE(::testing::PrintToString(text));
        const std::string path = directory.write("x.cfg", text);
        file_item item(path);
        item.load();
        const cfg_oracle::nodes expected = cfg_oracle::read(text);
        ASSERT_EQ(cfg_oracle::show(expected), content(item));
        // A new file each time, since some file systems sync a file that is replaced.
        std::remove(path.c_str());
        item.save();
        ASSERT_EQ(cfg_oracle::write(expected), test_support::read_bytes(path));
        std::remove(path.c_str());
    }

    test_support::temporary_directory directory;
};

TEST_F(FileOracle, AgreesOnTypicalFiles) {
    std::mt19937 random(1);
    const std::vector<std::string> entries = {
        "a=1\n",
        "b = two words\n",
        "c = \"two words\"\r\n",
        "[s]\n",
        "[t.u]\n",
        "[]\n",
        "k[]=x,y\n",
        "k[] = x,\n  y # z\n",
        "# note\n",
        "// \"quoted\"\n",
        "d = v // note\n",
        "s.a=3\n",
        "12=n\n",
        "m[]=\n",
        "[ab]\n",
        "l[]=0,1,2,3,4,5,6,7,8,9,10,11\n",
        "7[]=q\n",
        "8=r\n",
        "\n",
        "e=\n",
    };
    for (int i = 0; i < 3000; ++i)
        ASSERT_NO_FATAL_FAILURE(expect_equal(random_text(random, entries)));
}

TEST_F(FileOracle, AgreesOnRandomTokens) {
    std::mt19937 random(2);
    const std::vector<std::string> pieces = {"a",  "B",    "k",    "1",    "2",    "=",  "=",
                                             "=",  "==",   "+=",   "[",    "]",    "[]", "[s]",
                                             ".",  "/",    "\\",   "//",   "#",    "*/", "\"",
                                             "\"", "\\\"", ",",    ",",    "\n",   "\n", "\r",
                                             " ",  "  ",   "\t",   "\r\n", "k[]=", "*",  "\xC3\xA4",
                                             "-",  ":",    "\x7F", "%",    "\xFF"};
    for (int i = 0; i < 6000; ++i)
        ASSERT_NO_FATAL_FAILURE(expect_equal(random_text(random, pieces)));
}

TEST_F(FileOracle, AgreesOnRandomBytes) {
    std::mt19937 random(3);
    for (int i = 0; i < 2000; ++i) {
        std::string text;
        for (unsigned long left = random() % 60; left != 0; --left)
            text += static_cast<char>(random() % 4 == 0 ? random() : "=\n[]\"#/,. "[random() % 10]);
        ASSERT_NO_FATAL_FAILURE(expect_equal(text));
    }
}

// All prefixes of a text that contains an example of every construct.
TEST_F(FileOracle, AgreesOnEveryPrefixOfAFile) {
    const std::string text = "# note \"a\nb\" c\r\ntop = 1\n[s.t]\r\nk[] = 1, \"2, 3\",\n  4 # e\n"
                             "\"a b\" = c \"d\\\" e\" // f\n[u]\nx+=1\ny = [z]\n[]\nk[]=,\"\"\n"
                             "l[]=5\nend";
    for (std::size_t size = 0; size <= text.size(); ++size)
        ASSERT_NO_FATAL_FAILURE(expect_equal(text.substr(0, size)));
}

}  // namespace
