#include <tova/config/file_item.hpp>

#include <fcntl.h>
#include <stdlib.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "config/listing.hpp"
#include "support/temporary_directory.hpp"
#include "support/working_directory.hpp"

namespace {

using config_support::base_config_item;
using config_support::config_node_list;
using config_support::content;
using config_support::lines;
using config_support::plain_item;
using config_support::show;
using config_support::ustring8;
using config_support::variant;
using test_support::read_bytes;
using test_support::temporary_directory;
using TOVA_2_18::config::config_item_list;
using TOVA_2_18::config::file_item;
using TOVA_2_18::config::quote_value;
using TOVA_2_18::generic::argument;
using TOVA_2_18::generic::varg_list;
using TOVA_2_18::memory::pointers::rc_pointer;

// The nodes that a text gives.
lines loaded(const std::string& text) {
    const temporary_directory directory;
    file_item item(directory.write("x.cfg", text));
    EXPECT_TRUE(item.load());
    return content(item);
}

// What a save writes for the nodes that `fill` sets.
template <typename Fill>
std::string saved(Fill fill) {
    const temporary_directory directory;
    file_item item(directory.path("x.cfg"));
    fill(item);
    EXPECT_TRUE(item.save());
    return read_bytes(directory.path("x.cfg"));
}

std::string saved_again(const std::string& text) {
    const temporary_directory directory;
    file_item item(directory.write("x.cfg", text));
    item.load();
    item.save();
    return read_bytes(directory.path("x.cfg"));
}

TEST(FileItem, IsAlwaysNamedStandardFile) {
    file_item item("some.cfg");
    EXPECT_EQ("standard file", item.get_id());
    EXPECT_EQ("some.cfg", item.get_filename());
    file_item copy(item);
    EXPECT_EQ("standard file", copy.get_id());
    EXPECT_EQ("some.cfg", copy.get_filename());
    const rc_pointer<file_item> clone(item.clone());
    EXPECT_EQ("standard file", clone->get_id());
    EXPECT_EQ("some.cfg", clone->get_filename());
    EXPECT_TRUE(clone->allocated);
    EXPECT_EQ(1u, clone->count);
}

TEST(FileItem, CopiesItsTree) {
    file_item item("");
    item.set("a = 1", 0);
    const rc_pointer<base_config_item> clone(static_cast<const base_config_item&>(item).clone());
    clone->set("a = 2", 0);
    EXPECT_EQ((lines{"a: 1 '1'"}), content(item));
    EXPECT_EQ((lines{"a: 1 '2'"}), content(*clone));
}

TEST(FileReader, ReadsEntriesAndSections) {
    const struct {
        const char* text;
        lines expected;
    } cases[] = {
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
        // An empty header is the top level again.
        {"[s]\nk=1\n[]\nm=2", {"m: 1 '2'", "s: 0 true", "s.k: 1 '1'"}},
        {"[s]\nk=1\n[ \t\n]m=2", {"m: 1 '2'", "s: 0 true", "s.k: 1 '1'"}},
        // A header alone stores nothing.
        {"[s]\n", {}},
        // Blanks, tabs and line ends vanish from a header, quotes do as well.
        {"[a\n b\t.\r\nc]k=1", {"ab: 0 true", "ab.c: 0 true", "ab.c.k: 1 '1'"}},
        {"[\"a b\"]k=1", {"a b: 0 true", "a b.k: 1 '1'"}},
        {"[#a//]k=1", {"#a: 0 true", "#a.: 0 true", "#a..: 0 true", "#a...k: 1 '1'"}},
        // Without a closing bracket the header runs to the end.
        {"[s\nk=1\nm=2", {}},
        {"a=1\n[s\nk=1", {"a: 1 '1'"}},
        // A header that ends in a separator brings a segment with the empty name.
        {"[s.]k=1", {"s: 0 true", "s.: 0 true", "s..k: 1 '1'"}},
        {"[.]k=1", {": 0 true", ": 0 true", "k: 1 '1'"}},
        // A bracket behind the key's begin is part of the key.
        {"a[1]=2", {"a[1]: 1 '2'"}},
        {"a=1\n[s]b=2\n", {"a: 1 '1'", "s: 0 true", "s.b: 1 '2'"}},
        {"]=1", {"]: 1 '1'"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.expected, loaded(c.text));
    }
}

TEST(FileReader, ReadsAKeyOverLinesUpToTheFirstPlainEquals) {
    const struct {
        const char* text;
        lines expected;
    } cases[] = {
        {"a\nb\r\nc = 1", {"abc: 1 '1'"}},
        {"a\rb=1", {"a\rb: 1 '1'"}},
        {"\"a b\" = 1", {"a b: 1 '1'"}},
        {"\"a.b\" = 1", {"a: 0 true", "a.b: 1 '1'"}},
        {"x\"a = b\"y = 1", {"xa = by: 1 '1'"}},
        // No comment begins inside a key.
        {"a # c = 1", {"a#c: 1 '1'"}},
        {"a // c = 1", {"a: 0 true", "a.: 0 true", "a..c: 1 '1'"}},
        {"a */ c = 1", {"a*: 0 true", "a*.c: 1 '1'"}},
        // "==" and its fellows are no "=".
        {"a==1\nb=2", {"a==1b: 1 '2'"}},
        {"a+=1\nb=2", {"a+=1b: 1 '2'"}},
        {"a:=1\nb=2\nc=3", {"a:=1b: 1 '2'", "c: 1 '3'"}},
        {"a===1", {"a==: 1 '1'"}},
        // No "=" at all.
        {"just words", {}},
        {"a=1\nwords", {"a: 1 '1'"}},
        // An empty key leaves the rest of the line to the next entry.
        {"=1\nb=2", {"1b: 1 '2'"}},
        {"= = a = b", {"a: 1 'b'"}},
        {"\"\" = a\nb=c", {"ab: 1 'c'"}},
        {"a=1\nA=2", {"a: 1 '2'"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.expected, loaded(c.text));
    }
}

TEST(FileReader, ReadsAValueUpToTheLineEndOrAComment) {
    const struct {
        const char* text;
        lines expected;
    } cases[] = {
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
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.expected, loaded(c.text));
    }
}

TEST(FileReader, PassesOverComments) {
    const struct {
        const char* text;
        lines expected;
    } cases[] = {
        {"# a = 1\nb = 2", {"b: 1 '2'"}},
        {"// a = 1\nb = 2", {"b: 1 '2'"}},
        {"*/ a = 1\nb = 2", {"b: 1 '2'"}},
        {"# a\r\n  # b\n\t// c\nd=1 # e", {"d: 1 '1'"}},
        {"# to the end", {}},
        {"#", {}},
        {"#\n", {}},
        // A comment in C's form isn't known: "/" and "*" are text.
        {"/* a */ \nb=1", {": 0 true", "*a*: 0 true", "*a*.b: 1 '1'"}},
        // A double quote opens a string in a comment: the line end inside doesn't count.
        {"# don't \"say\na=1\n\" b=2\nc=3", {"c: 1 '3'"}},
        {"# open \" quote\na=1\nb=2", {}},
        {"a=1 # \"x\nb=2\n\" y\nc=3", {"a: 1 '1'", "c: 1 '3'"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.expected, loaded(c.text));
    }
}

TEST(FileReader, ReadsArrays) {
    const struct {
        const char* text;
        lines expected;
    } cases[] = {
        {"k[] = a", {"k: 3 nil", "k.0: 1 'a'"}},
        {"k[] = a, b , c", {"k: 3 nil", "k.0: 1 'a'", "k.1: 1 'b'", "k.2: 1 'c'"}},
        {"K [ ] = a", {"k: 3 nil", "k.0: 1 'a'"}},
        {"\"k[]\" = a", {"k: 3 nil", "k.0: 1 'a'"}},
        {"k[\n] = a", {"k: 3 nil", "k.0: 1 'a'"}},
        {"k[]x = a", {"k[]x: 1 'a'"}},
        {"[s]\nk[] = a,b", {"s: 0 true", "s.k: 3 nil", "s.k.0: 1 'a'", "s.k.1: 1 'b'"}},
        {"k[] = \"a, b\", c d", {"k: 3 nil", "k.0: 1 'a, b'", "k.1: 1 'cd'"}},
        // Only a comma separates.
        {"k[] = a_b;c'd%e\xC3\xA4", {"k: 3 nil", "k.0: 1 'a_b;c'd%e\xC3\xA4'"}},
        {"k[] = ,a", {"k: 3 nil", "k.0: 1 ''", "k.1: 1 'a'"}},
        {"k[] = a,,b", {"k: 3 nil", "k.0: 1 'a'", "k.1: 1 ''", "k.2: 1 'b'"}},
        // A line end behind a comma goes on, also with a comment between; behind an element it
        // ends.
        {"k[] = 1, 2,\n3", {"k: 3 nil", "k.0: 1 '1'", "k.1: 1 '2'", "k.2: 1 '3'"}},
        {"k[] = 1, # one\r\n  2 # two\nm=3", {"k: 3 nil", "k.0: 1 '1'", "k.1: 1 '2'", "m: 1 '3'"}},
        {"k[] = 1,\n\n\n2", {"k: 3 nil", "k.0: 1 '1'", "k.1: 1 '2'"}},
        {"k[] = 1, 2\n3 = 4", {"3: 1 '4'", "k: 3 nil", "k.0: 1 '1'", "k.1: 1 '2'"}},
        {"k[] = 1\n, 2 = 3", {",2: 1 '3'", "k: 3 nil", "k.0: 1 '1'"}},
        // A comma at the line end takes the whole next line.
        {"k[] = 1,\nm = 2\nn=3", {"k: 3 nil", "k.0: 1 '1'", "k.1: 1 'm=2'", "n: 1 '3'"}},
        {"k[] = 1,\n[s]\nn=3", {"k: 3 nil", "k.0: 1 '1'", "k.1: 1 '[s]'", "n: 1 '3'"}},
        // Nothing behind "=" stores nothing, not even a head.
        {"k[] =", {}},
        {"k[] =\nm=1", {"m: 1 '1'"}},
        {"k[] = \t# none\nm=1", {"m: 1 '1'"}},
        {"k[]", {}},
        {"k[] = \"\"\nm=1", {"m: 1 '1'"}},
        // A second array replaces the elements it has and leaves the others.
        {"k[]=a,b\nk[]=c", {"k: 3 nil", "k.0: 1 'c'", "k.1: 1 'b'"}},
        {"k[]=a\nk=b", {"k: 1 'b'", "k.0: 1 'a'"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.expected, loaded(c.text));
    }
}

TEST(FileReader, KeepsTheValuesOfADroppedArrayForTheNextOne) {
    EXPECT_EQ((lines{"m: 3 nil", "m.0: 1 '1'", "m.1: 1 '2'", "m.2: 1 '3'"}),
              loaded("k[] = 1, 2, \"\"\nm[] = 3"));
    // A comma at the end of the file leaves an empty last value.
    EXPECT_EQ(lines(), loaded("k[] = 1, 2,"));
    EXPECT_EQ(
        (lines{"n: 3 nil", "n.0: 1 'a'", "n.1: 1 'b'", "n.2: 1 'c'", "s: 0 true", "s.k: 1 'v'"}),
        loaded("x[]=a,\"\"\n[s]\nk=v\ny[]=b,\"\"\n[]\nn[]=c\n"));
}

// With an empty name the array is the section itself; its elements lie one empty segment deeper, as
// their keys are built from the prefix with its separator, a second separator and the number.
TEST(FileReader, TakesTheSectionForAnArrayWithoutAName) {
    EXPECT_EQ((lines{"s: 3 nil", "s.: 0 true", "s..0: 1 'a'"}), loaded("[s]\n\"[]\"=a"));
    EXPECT_EQ((lines{": 3 nil", "0: 1 'a'"}), loaded("\"[]\"=a"));
    EXPECT_EQ((lines{"s: 0 true", "s.: 3 nil", "s..: 0 true", "s...0: 1 'a'"}),
              loaded("[s]\n\".[]\"=a"));
}

TEST(FileReader, BuildsArrayKeysFromTextAlsoBehindASeparator) {
    EXPECT_EQ((lines{"k: 3 nil", "k.: 0 true", "k..0: 1 'a'"}), loaded("k.[] = a"));
    EXPECT_EQ((lines{"s: 0 true", "s.k: 3 nil", "s.k.: 0 true", "s.k..0: 1 'a'"}),
              loaded("[s]\nk/[] = a"));
}

TEST(FileReader, TakesAnyBytes) {
    EXPECT_EQ((lines{std::string("\0a: 1 '\0\xFF\x01'", 11)}),
              loaded(std::string("\0A = \0\xFF\x01\n", 9)));
    // A byte order mark is text like any other.
    EXPECT_EQ((lines{"\xEF\xBB\xBF"
                     "a: 1 '1'"}),
              loaded("\xEF\xBB\xBF"
                     "a=1"));
}

TEST(FileReader, AddsToWhatTheTreeHolds) {
    const temporary_directory directory;
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

TEST(FileItem, LoadsNothingFromAFileThatCannotBeRead) {
    const temporary_directory directory;
    const std::string target = directory.write("target.cfg", "a=1\n");
    ASSERT_EQ(0, symlink(target.c_str(), directory.path("link.cfg").c_str()));
    ASSERT_EQ(0, symlink("loop", directory.path("loop").c_str()));
    ASSERT_EQ(0, mkfifo(directory.path("pipe").c_str(), 0600));
    const std::string names[] = {"",
                                 directory.path("pipe"),
                                 directory.path("missing.cfg"),
                                 directory.path("link.cfg"),
                                 directory.path(),
                                 directory.path("x.cfg/y.cfg"),
                                 directory.path("loop/y.cfg"),
                                 directory.path(std::string(5000, 'n')),
                                 "/dev/null"};
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        file_item item(name);
        EXPECT_TRUE(item.load());
        EXPECT_TRUE(item.load(config_item_list()));
        EXPECT_EQ(lines(), content(item));
        EXPECT_EQ(name, item.get_filename());
    }
}

// Counts how often a file is opened, by anybody, from its making on.
class open_counter {
public:
    explicit open_counter(const std::string& path) : m_queue(inotify_init1(IN_NONBLOCK)) {
        EXPECT_LE(0, inotify_add_watch(m_queue, path.c_str(), IN_OPEN)) << path;
    }
    ~open_counter() { close(m_queue); }
    open_counter(const open_counter&) = delete;
    open_counter& operator=(const open_counter&) = delete;

    // Equal events in a row are reported as one, so this is 0 or at least 1.
    std::size_t events() const {
        alignas(inotify_event) char buffer[4096];
        const ssize_t size = read(m_queue, buffer, sizeof buffer);
        return size < 0 ? 0 : static_cast<std::size_t>(size) / sizeof(inotify_event);
    }

private:
    int m_queue;
};

TEST(FileItem, OpensAFileButNotWhatASymbolicLinkPointsTo) {
    const temporary_directory directory;
    const std::string file = directory.write("target.cfg", "a=1\n");
    const std::string pipe = directory.path("pipe");
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    // A terminal of our own stands for the devices: nobody else opens it.
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_LE(0, terminal);
    ASSERT_EQ(0, grantpt(terminal));
    ASSERT_EQ(0, unlockpt(terminal));
    const std::string device = ptsname(terminal);

    const open_counter file_opened(file);
    EXPECT_TRUE(file_item(file).load());
    EXPECT_LE(1u, file_opened.events());

    const std::string link = directory.path("link.cfg");
    for (const std::string& target : {file, pipe, device}) {
        SCOPED_TRACE(target);
        ASSERT_EQ(0, symlink(target.c_str(), link.c_str()));
        const open_counter opened(target);
        file_item item(link);
        EXPECT_TRUE(item.load());
        EXPECT_TRUE(item.load(config_item_list()));
        EXPECT_TRUE(item.save());
        EXPECT_EQ(0u, opened.events());
        EXPECT_EQ(lines(), content(item));
        ASSERT_EQ(0, unlink(link.c_str()));
    }
    close(terminal);
    EXPECT_EQ("a=1\n", read_bytes(file));
}

TEST(FileItem, RefusesAFileOfTwoGibibytes) {
    const temporary_directory directory;
    const std::string path = directory.write("x.cfg", "a=1\n");
    ASSERT_EQ(0, truncate(path.c_str(), 0x80000000L));
    file_item item(path);
    item.set("b = 2", 0);
    EXPECT_TRUE(item.load());
    EXPECT_EQ((lines{"b: 1 '2'"}), content(item));
}

// A list of sources in which some name a file.
class FileChoice : public ::testing::Test {
protected:
    void add(const char* line) {
        plain_item* const item = new plain_item;
        item->allocated = true;
        if (*line != '\0')
            item->set(line, 0);
        items.push_back(rc_pointer<base_config_item>(item));
    }
    ustring8 chosen(const ustring8& given) {
        file_item item(given);
        EXPECT_TRUE(item.load(items));
        return item.get_filename();
    }

    temporary_directory directory;
    std::string one = directory.write("one.cfg", "a=1\n");
    std::string two = directory.write("two.cfg", "a=2\n");
    std::string missing = directory.path("missing.cfg");
    config_item_list items;
};

TEST_F(FileChoice, TakesTheFirstFileThatOpens) {
    add("");
    add(("cfg_file=\"" + missing + "\"").c_str());
    add(("cfg_file=\"" + one + "\"").c_str());
    add(("cfg_file=\"" + two + "\"").c_str());
    EXPECT_EQ(one, chosen(""));
    EXPECT_EQ(one, chosen(two));
    EXPECT_EQ(one, chosen(missing));
}

TEST_F(FileChoice, KeepsTheGivenNameIfNoneOpens) {
    add(("cfg_file=\"" + missing + "\"").c_str());
    add(("application.name.raw=\"" + directory.path("one") + "\"").c_str());
    EXPECT_EQ(two, chosen(two));
    EXPECT_EQ(directory.path("other.cfg"), chosen(directory.path("other.cfg")));
}

TEST_F(FileChoice, TriesTheProgramsNameForAnEmptyNameOnly) {
    add(("application.name.raw=\"" + directory.path("missing") + "\"").c_str());
    add(("application.name.raw=\"" + directory.path("two") + "\"").c_str());
    add(("application.name.raw=\"" + directory.path("one") + "\"").c_str());
    EXPECT_EQ(two, chosen(""));
    EXPECT_EQ(one, chosen(one));
}

TEST_F(FileChoice, PrefersCfgFileInAnyItemToTheProgramsName) {
    add(("application.name.raw=\"" + directory.path("two") + "\"").c_str());
    add(("cfg_file=\"" + one + "\"").c_str());
    EXPECT_EQ(one, chosen(""));
}

TEST_F(FileChoice, LeavesTheNameEmptyIfNothingOpens) {
    add("cfg_file=");
    add(("application.name.raw=\"" + missing + "\"").c_str());
    EXPECT_EQ("", chosen(""));
}

TEST_F(FileChoice, TakesALinkThatOpensAndThenReadsNothing) {
    ASSERT_EQ(0, symlink(one.c_str(), directory.path("link.cfg").c_str()));
    add(("cfg_file=\"" + directory.path("link.cfg") + "\"").c_str());
    file_item item("");
    EXPECT_TRUE(item.load(items));
    EXPECT_EQ(directory.path("link.cfg"), item.get_filename());
    EXPECT_EQ(lines(), content(item));
}

TEST_F(FileChoice, PassesOverADirectoryAndAPipe) {
    ASSERT_EQ(0, mkfifo(directory.path("pipe").c_str(), 0600));
    add(("cfg_file=\"" + directory.path("pipe") + "\"").c_str());
    add(("cfg_file=\"" + directory.path() + "\"").c_str());
    add(("cfg_file=\"" + one + "\"").c_str());
    EXPECT_EQ(one, chosen(""));
}

TEST_F(FileChoice, TakesValuesOfAnyTypeAsText) {
    const test_support::working_directory here(directory.path());
    directory.write("12", "a=3\n");
    add("");
    items.back()->set("cfg_file", variant(12), 0);
    EXPECT_EQ("12", chosen(""));
}

TEST(ParseComment, StopsInFrontOfTheLineEnd) {
    const struct {
        const char* text;
        unsigned from, to;
    } cases[] = {
        {"# a b\nc", 1, 5},
        {"# a b\r\nc", 1, 5},
        {"# a", 1, 3},
        {"", 0, 0},
        {"\nx", 0, 0},
        {"abc\n", 0, 3},
        {"# \"x\ny\" z\nw", 1, 9},
        {"# \"x\ny", 1, 6},
        {"a\rb\nc", 0, 3},
        {"ab", 2, 2},
        {"a\n\n", 2, 2},
        {"ab", 7, 7},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        file_item item("");
        unsigned position = c.from;
        item.parse_comment(c.text, position);
        EXPECT_EQ(c.to, position);
    }
}

TEST(QuoteValue, QuotesWhatHoldsABlankOrALineEndCharacter) {
    const struct {
        const char* text;
        const char* expected;
    } cases[] = {
        {"", ""},
        {"abc", "abc"},
        {"a b", "\"a b\""},
        {" ", "\" \""},
        {"a\tb", "\"a\tb\""},
        {"a\nb", "\"a\nb\""},
        {"a\rb", "\"a\rb\""},
        {"a,b#c//d", "a,b#c//d"},
        {"a\"b", "a\"b"},
        {"a \"b\"", "\"a \"b\"\""},
        {"a\vb\fc", "a\vb\fc"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.expected, quote_value(c.text));
    }
}

TEST(FileWriter, WritesASectionWithItsEntriesAndAnEmptyLine) {
    EXPECT_EQ("[s]\na=12\n\n", saved_again("[s]\na=1 2\n"));
    EXPECT_EQ("[s]\na=\"1 2\"\n\n", saved_again("[s]\na=\"1 2\"\n"));
    EXPECT_EQ("", saved_again(""));
}

TEST(FileWriter, WritesInTreeOrderAndLowerCaseWithoutComments) {
    EXPECT_EQ("[a]\nx=1\ny=2\n\n[bb]\nm=3\n\n",
              saved_again("# remark\n[BB]\nM=3 # remark\n\n[A]\nY=2\nX=1\n"));
}

TEST(FileWriter, LosesEntriesOutsideOfAnySection) {
    EXPECT_EQ("[s]\nk=2\n\n", saved_again("top=1\n[s]\nk=2\n"));
    EXPECT_EQ("", saved_again("top=1\narray[]=1,2\n"));
}

TEST(FileWriter, GivesAnEntryToEverySectionWithANameOfEqualLength) {
    EXPECT_EQ("[a]\nx=1\ny=2\n\n[b]\nx=1\ny=2\n\n", saved_again("[a]\nx=1\n[b]\ny=2\n"));
    EXPECT_EQ("[a]\nx=1\n\n[bb]\ny=2\n\n", saved_again("[a]\nx=1\n[bb]\ny=2\n"));
    // The parent itself may be an entry: its children come under a section as long as its path.
    EXPECT_EQ("[z]\nsub=2\nx=1\n\n", saved([](file_item& item) {
                  item.set("z.x = 1", 0);
                  item.set("k = top", 0);
                  item.set("k.sub = 2", 0);
              }));
}

TEST(FileWriter, WritesASectionForEachStepOfAPath) {
    EXPECT_EQ("[a]\n\n[a.b]\nk=1\n\n", saved_again("[a.b]\nk=1\n"));
    EXPECT_EQ("[\"a b\"]\nk=1\n\n", saved_again("[\"a b\"]\nk=1\n"));
}

TEST(FileWriter, WritesArraysOnOneLine) {
    EXPECT_EQ("[s]\nk[]=a,\"b c\",d\nm=1\n\n", saved_again("[s]\nm=1\nk[]=a,\"b c\",\nd\n"));
}

TEST(FileWriter, WritesMoreThanTenElementsInByteOrder) {
    EXPECT_EQ("[s]\nk[]=0,1,10,11,2,3,4,5,6,7,8,9\n\n",
              saved_again("[s]\nk[]=0,1,2,3,4,5,6,7,8,9,10,11\n"));
}

TEST(FileWriter, WritesElementsOnceMoreUnderASectionAsLongAsTheArraysPath) {
    EXPECT_EQ("[abc]\nx=1\n0=a\n1=b\n\n[s]\nk[]=a,b\n\n",
              saved_again("[s]\nk[]=a,b\n[abc]\nx=1\n"));
}

TEST(FileWriter, TakesAKeyThatReadsAsANumberIntoTheArrayInFrontOfIt) {
    EXPECT_EQ("[s]\n1[]=a,v\nx=w\n\n", saved_again("[s]\n1[]=a\n5=v\nx=w\n"));
    // The number may have a sign or a prefix and text behind it; what reads as 0 is none.
    EXPECT_EQ("[s]\n![]=a,v,w\n08=x\n9=y\n\n", saved_again("[s]\n![]=a\n-5=v\n07z=w\n08=x\n9=y\n"));
}

TEST(FileWriter, WritesElementsBehindAGapButNoneWithoutTheFirst) {
    EXPECT_EQ("[s]\nk[]=a,c\n\n", saved([](file_item& item) {
                  item.set_array("s.k", varg_list(argument("a")), varg_list());
                  item.set("s.k.2 = c", 0);
              }));
    EXPECT_EQ("[s]\nk[]=\n\n", saved([](file_item& item) {
                  item.set_array("s.k", varg_list(), varg_list());
                  item.set("s.k.1 = b", 0);
              }));
}

TEST(FileWriter, EndsAnArrayAtAnElementWithChildren) {
    EXPECT_EQ("[s]\nk[]=a\n\n", saved([](file_item& item) {
                  item.set_array("s.k", varg_list(argument("a"), argument("b")), varg_list());
                  item.set("s.k.0.x = deep", 0);
              }));
}

TEST(FileWriter, WritesAnArrayWithoutElementsAlsoAsTheVeryLastEntry) {
    EXPECT_EQ("[s]\nk[]=\n\n",
              saved([](file_item& item) { item.set_array("s.k", varg_list(), varg_list()); }));
    EXPECT_EQ("[s]\nk[]=\nm=1\n\n", saved([](file_item& item) {
                  item.set_array("s.k", varg_list(), varg_list());
                  item.set("s.m = 1", 0);
              }));
}

TEST(FileWriter, TakesTheWordThreeAloneForAnArrayAndZeroAloneForASection) {
    EXPECT_EQ("[s]\nalias=t\nk=v\nn=\n\n", saved([](file_item& item) {
                  item.set("s.alias", variant("t"), 4);
                  item.set("s.k", variant("v"), 6);
                  item.set("s.k.0", variant("x"), 0);
                  item.set("s.n", variant(), 0);
              }));
}

TEST(FileWriter, WritesValuesOfAnyTypeAsText) {
    EXPECT_EQ("[s]\na=-7\nb=1\nc=\xC3\xA4\nd=2.5\n\n", saved([](file_item& item) {
                  item.set("s.a", variant(-7), 0);
                  item.set("s.b", variant(true), 0);
                  item.set("s.c", variant(L"\xE4"), 0);
                  item.set("s.d", variant(2.5), 0);
              }));
}

TEST(FileWriter, QuotesKeysAndSectionsToo) {
    EXPECT_EQ("[\"s t\"]\n\"a b\"=\"c d\"\n\"k l\"[]=\"x y\",z\n\n", saved([](file_item& item) {
                  item.set("s t.a b", variant("c d"), 0);
                  item.set_array("s t.k l", varg_list(argument("x y"), argument("z")), varg_list());
              }));
}

TEST(FileWriter, ListsAnEmptyNameLikeAnyOther) {
    // The section "a" has an entry with the empty name.
    EXPECT_EQ("[a]\n=1\nx=2\n\n", saved([](file_item& item) {
                  item.set("a.. = 1", 0);
                  item.set("a.x = 2", 0);
              }));
    // What lies below a child of the root with the empty name is listed as if it lay in the root.
    EXPECT_EQ("[]\n\n", saved([](file_item& item) { item.set(".x = 1", 0); }));
}

TEST(FileWriter, ReadsBackAnArrayOfTwoFromAValueWithAComma) {
    EXPECT_EQ("[s]\nk[]=a,b,c\n\n", saved_again("[s]\nk[]=\"a,b\",c\n"));
    EXPECT_EQ((lines{"s: 0 true", "s.k: 3 nil", "s.k.0: 1 'a'", "s.k.1: 1 'b'", "s.k.2: 1 'c'"}),
              loaded(saved_again("[s]\nk[]=\"a,b\",c\n")));
}

TEST(FileItem, SavesThroughItsBaseWithAndWithoutAList) {
    const temporary_directory directory;
    file_item item(directory.path("x.cfg"));
    item.set("s.a = 1", 0);
    base_config_item& base = item;
    EXPECT_TRUE(base.save(config_item_list()));
    EXPECT_EQ("[s]\na=1\n\n", read_bytes(item.get_filename()));
    item.set("s.a = 2", 0);
    EXPECT_TRUE(base.save());
    EXPECT_EQ("[s]\na=2\n\n", read_bytes(item.get_filename()));
}

TEST(FileItem, ReportsASaveThatCannotBeWrittenAsDone) {
    const temporary_directory directory;
    const std::string target = directory.write("target.cfg", "kept");
    ASSERT_EQ(0, symlink(target.c_str(), directory.path("link.cfg").c_str()));
    ASSERT_EQ(0, symlink("loop", directory.path("loop").c_str()));
    const std::string names[] = {"",
                                 directory.path("link.cfg"),
                                 directory.path(),
                                 directory.path("missing/x.cfg"),
                                 directory.path("loop/x.cfg"),
                                 directory.path(std::string(300, 'n'))};
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        file_item item(name);
        item.set("s.a = 1", 0);
        EXPECT_TRUE(item.save());
        EXPECT_TRUE(item.load());
    }
    EXPECT_EQ("kept", read_bytes(target));
}

TEST(FileItem, SavesToAPipeForWhoeverReadsIt) {
    const temporary_directory directory;
    const std::string pipe = directory.path("pipe");
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    // Opened without waiting, so that a save that leaves the pipe alone fails here and hangs
    // nobody.
    const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_LE(0, reader);
    file_item item(pipe);
    item.set("s.a = 1", 0);
    EXPECT_TRUE(item.save());
    char received[64];
    const ssize_t size = read(reader, received, sizeof received);
    close(reader);
    ASSERT_LE(0, size);
    EXPECT_EQ("[s]\na=1\n\n", std::string(received, static_cast<std::size_t>(size)));
}

// Time and stack stay in proportion to the text: a section of very many segments with very many
// entries, a key of very many segments, and one line of very many elements.
TEST(FileReader, TakesLargeTextsInLinearTime) {
    std::string text = "[";
    for (int i = 0; i < 100000; ++i)
        text += "a.";
    text += "end]\n";
    for (int i = 0; i < 100000; ++i)
        text += "k" + std::to_string(i) + "=v\nm" + std::to_string(i) + "[]=1,2\n";
    text += "[]\nlist[]=0";
    for (int i = 1; i < 200000; ++i)
        text += "," + std::to_string(i);
    const temporary_directory directory;
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
