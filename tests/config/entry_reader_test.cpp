// How the text of a configuration file is read.
#include <tova/config/file_item.hpp>

#include "config/listing.hpp"
#include "config/text_files.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace config_support;
using tova::config::file_item;

TEST(EntryReader, ReadsEntriesAndSections) {
    expect_loaded({
        {"", {}},
        {"\n\n \t\r\n", {}},
        {"a=1", {"a: 1 '1'"}},
        {"a=1\n", {"a: 1 '1'"}},
        {"a=1\r\nb=2\r\n", {"a: 1 '1'", "b: 1 '2'"}},
        {"a b = c d", {"ab: 1 'cd'"}},
        {"  a\t=\tx\ty  ", {"a: 1 'xy'"}},
        {"A.b/C = v", {"a: 0 true", "a.b: 0 true", "a.b.c: 1 'v'"}},
        {"[s]\nk=1", {"s: 0 true", "s.k: 1 '1'"}},
        {"[a.b]\nkey=1", {"a: 0 true", "a.b: 0 true", "a.b.key: 1 '1'"}},
        {"[S]k=1", {"s: 0 true", "s.k: 1 '1'"}},
        {"[s]\nk=1\n[t]\nk=2", {"s: 0 true", "s.k: 1 '1'", "t: 0 true", "t.k: 1 '2'"}},
        // An empty header returns to the top level.
        {"[s]\nk=1\n[]\nm=2", {"m: 1 '2'", "s: 0 true", "s.k: 1 '1'"}},
        {"[s]\nk=1\n[ \t\n]m=2", {"m: 1 '2'", "s: 0 true", "s.k: 1 '1'"}},
        // A header alone stores nothing.
        {"[s]\n", {}},
        // Spaces, tabs and line ends are dropped from a header, and so are quotes.
        {"[a\n b\t.\r\nc]k=1", {"ab: 0 true", "ab.c: 0 true", "ab.c.k: 1 '1'"}},
        {"[\"a b\"]k=1", {"a b: 0 true", "a b.k: 1 '1'"}},
        {"[#a//]k=1", {"#a: 0 true", "#a.: 0 true", "#a..: 0 true", "#a...k: 1 '1'"}},
        // Without a closing bracket the header runs to the end.
        {"[s\nk=1\nm=2", {}},
        {"a=1\n[s\nk=1", {"a: 1 '1'"}},
        // A header that ends in a separator adds a segment with an empty name.
        {"[s.]k=1", {"s: 0 true", "s.: 0 true", "s..k: 1 '1'"}},
        {"[.]k=1", {": 0 true", ": 0 true", "k: 1 '1'"}},
        // Once a key has started, a bracket is part of it.
        {"a[1]=2", {"a[1]: 1 '2'"}},
        {"a=1\n[s]b=2\n", {"a: 1 '1'", "s: 0 true", "s.b: 1 '2'"}},
        {"]=1", {"]: 1 '1'"}},
    });
}

TEST(EntryReader, ReadsAKeyAcrossLinesUpToTheFirstPlainEquals) {
    expect_loaded({
        {"a\nb\r\nc = 1", {"abc: 1 '1'"}},
        {"a\rb=1", {"a\rb: 1 '1'"}},
        {"\"a b\" = 1", {"a b: 1 '1'"}},
        {"\"a.b\" = 1", {"a: 0 true", "a.b: 1 '1'"}},
        {"x\"a = b\"y = 1", {"xa = by: 1 '1'"}},
        // Comments are not recognized inside a key.
        {"a # c = 1", {"a#c: 1 '1'"}},
        {"a // c = 1", {"a: 0 true", "a.: 0 true", "a..c: 1 '1'"}},
        {"a */ c = 1", {"a*: 0 true", "a*.c: 1 '1'"}},
        // "==" and the like are not "=".
        {"a==1\nb=2", {"a==1b: 1 '2'"}},
        {"a+=1\nb=2", {"a+=1b: 1 '2'"}},
        {"a:=1\nb=2\nc=3", {"a:=1b: 1 '2'", "c: 1 '3'"}},
        {"a===1", {"a==: 1 '1'"}},
        // There is no "=" at all.
        {"just words", {}},
        {"a=1\nwords", {"a: 1 '1'"}},
        // An empty key leaves the rest of the line to the next entry.
        {"=1\nb=2", {"1b: 1 '2'"}},
        {"= = a = b", {"a: 1 'b'"}},
        {"\"\" = a\nb=c", {"ab: 1 'c'"}},
        {"a=1\nA=2", {"a: 1 '2'"}},
    });
}

TEST(EntryReader, ReadsAValueUpToTheLineEndOrAComment) {
    expect_loaded({
        {"path = /usr/bin", {"path: 1 '/usr/bin'"}},
        {"url = a//b", {"url: 1 'a'"}},
        {"a = b # c\nd = e", {"a: 1 'b'", "d: 1 'e'"}},
        {"a = b // c\nd = e", {"a: 1 'b'", "d: 1 'e'"}},
        {"a = b */ c\nd = e", {"a: 1 'b'", "d: 1 'e'"}},
        {"a = \"b # c\"", {"a: 1 'b # c'"}},
        {"a = \"b // c\" # d", {"a: 1 'b // c'"}},
        {"a = \"b\" \"c d\" e", {"a: 1 'bc de'"}},
        {"a = \"b\\\"c\"", {"a: 1 'b\\\"c'"}},
        {"a = \"two\nlines\"\nb=1", {"a: 1 'two\nlines'", "b: 1 '1'"}},
        {"a = \"open\nb=1", {"a: 1 'open\nb=1'"}},
        {"a = b=c==d", {"a: 1 'b=c==d'"}},
        {"a = [x], y", {"a: 1 '[x],y'"}},
        {"a = b\rc", {"a: 1 'b\rc'"}},
        {"a = 1.5e-3", {"a: 1 '1.5e-3'"}},
        {"a = \xC3\xA4\xFF", {"a: 1 '\xC3\xA4\xFF'"}},
        // An empty value stores nothing, and keeps an earlier one.
        {"a =\nb=1", {"b: 1 '1'"}},
        {"a =   # nothing\nb=1", {"b: 1 '1'"}},
        {"a = \"\"\nb=1", {"b: 1 '1'"}},
        {"a =", {}},
        {"a = 1\na =\n", {"a: 1 '1'"}},
    });
}

TEST(EntryReader, SkipsComments) {
    expect_loaded({
        {"# a = 1\nb = 2", {"b: 1 '2'"}},
        {"// a = 1\nb = 2", {"b: 1 '2'"}},
        {"*/ a = 1\nb = 2", {"b: 1 '2'"}},
        {"# a\r\n  # b\n\t// c\nd=1 # e", {"d: 1 '1'"}},
        {"# to the end", {}},
        {"#", {}},
        {"#\n", {}},
        // A C comment isn't recognized: "/" and "*" are part of the key.
        {"/* a */ \nb=1", {": 0 true", "*a*: 0 true", "*a*.b: 1 '1'"}},
        // A double quote in a comment opens a string: the line end inside doesn't count.
        {"# don't \"say\na=1\n\" b=2\nc=3", {"c: 1 '3'"}},
        {"# open \" quote\na=1\nb=2", {}},
        {"a=1 # \"x\nb=2\n\" y\nc=3", {"a: 1 '1'", "c: 1 '3'"}},
    });
}

TEST(EntryReader, ReadsArrays) {
    expect_loaded({
        {"k[] = a", {"k: 3 nil", "k.0: 1 'a'"}},
        {"k[] = a, b , c", {"k: 3 nil", "k.0: 1 'a'", "k.1: 1 'b'", "k.2: 1 'c'"}},
        {"K [ ] = a", {"k: 3 nil", "k.0: 1 'a'"}},
        {"\"k[]\" = a", {"k: 3 nil", "k.0: 1 'a'"}},
        {"k[\n] = a", {"k: 3 nil", "k.0: 1 'a'"}},
        {"k[]x = a", {"k[]x: 1 'a'"}},
        {"[s]\nk[] = a,b", {"s: 0 true", "s.k: 3 nil", "s.k.0: 1 'a'", "s.k.1: 1 'b'"}},
        {"k[] = \"a, b\", c d", {"k: 3 nil", "k.0: 1 'a, b'", "k.1: 1 'cd'"}},
        // Only a comma separates elements.
        {"k[] = a_b;c'd%e\xC3\xA4", {"k: 3 nil", "k.0: 1 'a_b;c'd%e\xC3\xA4'"}},
        {"k[] = ,a", {"k: 3 nil", "k.0: 1 ''", "k.1: 1 'a'"}},
        {"k[] = a,,b", {"k: 3 nil", "k.0: 1 'a'", "k.1: 1 ''", "k.2: 1 'b'"}},
        // A line end after a comma is skipped, also after a comment; after an element it ends the
        // array.
        {"k[] = 1, 2,\n3", {"k: 3 nil", "k.0: 1 '1'", "k.1: 1 '2'", "k.2: 1 '3'"}},
        {"k[] = 1, # one\r\n  2 # two\nm=3", {"k: 3 nil", "k.0: 1 '1'", "k.1: 1 '2'", "m: 1 '3'"}},
        {"k[] = 1,\n\n\n2", {"k: 3 nil", "k.0: 1 '1'", "k.1: 1 '2'"}},
        {"k[] = 1, 2\n3 = 4", {"3: 1 '4'", "k: 3 nil", "k.0: 1 '1'", "k.1: 1 '2'"}},
        {"k[] = 1\n, 2 = 3", {",2: 1 '3'", "k: 3 nil", "k.0: 1 '1'"}},
        // After a comma at the line end, the whole next line is part of the array.
        {"k[] = 1,\nm = 2\nn=3", {"k: 3 nil", "k.0: 1 '1'", "k.1: 1 'm=2'", "n: 1 '3'"}},
        {"k[] = 1,\n[s]\nn=3", {"k: 3 nil", "k.0: 1 '1'", "k.1: 1 '[s]'", "n: 1 '3'"}},
        // With nothing after "=", nothing is stored, not even an array head.
        {"k[] =", {}},
        {"k[] =\nm=1", {"m: 1 '1'"}},
        {"k[] = \t# none\nm=1", {"m: 1 '1'"}},
        {"k[]", {}},
        {"k[] = \"\"\nm=1", {"m: 1 '1'"}},
        // A second array replaces as many elements as it has and keeps the others.
        {"k[]=a,b\nk[]=c", {"k: 3 nil", "k.0: 1 'c'", "k.1: 1 'b'"}},
        {"k[]=a\nk=b", {"k: 1 'b'", "k.0: 1 'a'"}},
    });
}

TEST(EntryReader, KeepsTheElementsOfADroppedArrayForTheNextOne) {
    EXPECT_EQ((lines{"m: 3 nil", "m.0: 1 '1'", "m.1: 1 '2'", "m.2: 1 '3'"}),
              loaded("k[] = 1, 2, \"\"\nm[] = 3"));
    // A comma at the end of the file leaves an empty last value.
    EXPECT_EQ(lines(), loaded("k[] = 1, 2,"));
    EXPECT_EQ(
        (lines{"n: 3 nil", "n.0: 1 'a'", "n.1: 1 'b'", "n.2: 1 'c'", "s: 0 true", "s.k: 1 'v'"}),
        loaded("x[]=a,\"\"\n[s]\nk=v\ny[]=b,\"\"\n[]\nn[]=c\n"));
}

// An array with an empty name is the section itself. Its elements are below a child with an empty
// name, because their keys are the prefix with its separator, a second separator and the number.
TEST(EntryReader, StoresAnArrayWithoutANameInTheSectionItself) {
    EXPECT_EQ((lines{"s: 3 nil", "s.: 0 true", "s..0: 1 'a'"}), loaded("[s]\n\"[]\"=a"));
    EXPECT_EQ((lines{": 3 nil", "0: 1 'a'"}), loaded("\"[]\"=a"));
    EXPECT_EQ((lines{"s: 0 true", "s.: 3 nil", "s..: 0 true", "s...0: 1 'a'"}),
              loaded("[s]\n\".[]\"=a"));
}

TEST(EntryReader, AppendsElementNumbersToAKeyThatEndsInASeparator) {
    EXPECT_EQ((lines{"k: 3 nil", "k.: 0 true", "k..0: 1 'a'"}), loaded("k.[] = a"));
    EXPECT_EQ((lines{"s: 0 true", "s.k: 3 nil", "s.k.: 0 true", "s.k..0: 1 'a'"}),
              loaded("[s]\nk/[] = a"));
}

TEST(EntryReader, AcceptsAnyBytes) {
    EXPECT_EQ((lines{std::string("\0a: 1 '\0\xFF\x01'", 11)}),
              loaded(std::string("\0A = \0\xFF\x01\n", 9)));
    // A byte order mark is part of the first key.
    EXPECT_EQ((lines{"\xEF\xBB\xBF"
                     "a: 1 '1'"}),
              loaded("\xEF\xBB\xBF"
                     "a=1"));
}

TEST(EntryReader, AddsToTheNodesOfTheTree) {
    const test_support::temporary_directory directory;
    file_item item(directory.write("x.cfg", "a=1\n"));
    item.set("b = 2", 0);
    item.load_file();
    item.load_file();
    EXPECT_EQ((lines{"a: 1 '1'", "b: 1 '2'"}), content(item));
    base_config_item& base = item;
    base.unload();
    EXPECT_EQ(lines(), content(item));
    EXPECT_NE("", item.get_filename());
}

// Time is linear in the size of the text, and the stack doesn't overflow: a section name with
// thousands of segments and thousands of entries, a key with thousands of segments, and a line with
// thousands of elements.
TEST(EntryReader, ReadsLargeFilesInLinearTime) {
    std::string text = "[";
    for (int i = 0; i < 100000; ++i)
        text += "a.";
    text += "end]\n";
    for (int i = 0; i < 100000; ++i)
        text += "k" + std::to_string(i) + "=v\nm" + std::to_string(i) + "[]=1,2\n";
    text += "[]\nlist[]=0";
    for (int i = 1; i < 200000; ++i)
        text += "," + std::to_string(i);
    const test_support::temporary_directory directory;
    file_item item(directory.write("x.cfg", text));
    item.load();
    config_node_list elements;
    item.get_array("list", elements);
    ASSERT_EQ(200000u, elements.size());
    EXPECT_EQ("1 '199999'", show(elements.back().second));
    std::string section;
    for (int i = 0; i < 100000; ++i)
        section += "a.";
    EXPECT_EQ("1 'v'", show(*item.get_value(section + "end.k99999")));
    EXPECT_EQ("1 '2'", show(*item.get_value(section + "end.m99999.1")));
}

}  // namespace
