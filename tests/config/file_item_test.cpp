#include <tova/config/file_item.hpp>

#include "config/listing.hpp"
#include "config/source_checks.hpp"
#include "support/temporary_directory.hpp"
#include "support/working_directory.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <stdlib.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace {

using namespace config_support;
using test_support::read_bytes;
using test_support::temporary_directory;
using tova::config::config_item_list;
using tova::config::file_item;
using tova::config::quote_value;
using tova::memory::pointers::rc_pointer;

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

TEST(FileItem, ClonesWithItsTree) {
    file_item item("");
    expect_independent_clone(item);
}

TEST(FileItem, LoadsAndUnloadsThroughItsBaseClass) {
    const temporary_directory directory;
    file_item item(directory.write("x.cfg", "a=1\n"));
    expect_loads_and_unloads(item, {"a: 1 '1'"});
    EXPECT_EQ(directory.path("x.cfg"), item.get_filename());
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

// Counts how often any process opens a file while the object exists.
class open_counter {
public:
    explicit open_counter(const std::string& path) : m_queue(inotify_init1(IN_NONBLOCK)) {
        EXPECT_LE(0, inotify_add_watch(m_queue, path.c_str(), IN_OPEN)) << path;
    }
    ~open_counter() { close(m_queue); }
    open_counter(const open_counter&) = delete;
    open_counter& operator=(const open_counter&) = delete;

    // The count since the last call. The kernel merges equal events, so only 0 is exact.
    std::size_t events() const {
        alignas(inotify_event) char buffer[4096];
        const ssize_t size = read(m_queue, buffer, sizeof buffer);
        return size < 0 ? 0 : static_cast<std::size_t>(size) / sizeof(inotify_event);
    }

private:
    int m_queue;
};

TEST(FileItem, OpensAFileButNotTheTargetOfASymbolicLink) {
    const temporary_directory directory;
    const std::string file = directory.write("target.cfg", "a=1\n");
    const std::string pipe = directory.path("pipe");
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    // A private terminal represents devices, because nobody else opens it.
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

TEST(FileItem, RejectsAFileOfTwoGibibytes) {
    const temporary_directory directory;
    const std::string path = directory.write("x.cfg", "a=1\n");
    ASSERT_EQ(0, truncate(path.c_str(), 0x80000000L));
    file_item item(path);
    item.set("b = 2", 0);
    EXPECT_TRUE(item.load());
    EXPECT_EQ((lines{"b: 1 '2'"}), content(item));
}

// Chooses a file from a list of sources, some of which name one.
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

TEST_F(FileChoice, ChoosesTheFirstFileThatCanBeOpened) {
    add("");
    add(("cfg_file=\"" + missing + "\"").c_str());
    add(("cfg_file=\"" + one + "\"").c_str());
    add(("cfg_file=\"" + two + "\"").c_str());
    EXPECT_EQ(one, chosen(""));
    EXPECT_EQ(one, chosen(two));
    EXPECT_EQ(one, chosen(missing));
}

TEST_F(FileChoice, KeepsTheGivenNameIfNoFileCanBeOpened) {
    add(("cfg_file=\"" + missing + "\"").c_str());
    add(("application.name.raw=\"" + directory.path("one") + "\"").c_str());
    EXPECT_EQ(two, chosen(two));
    EXPECT_EQ(directory.path("other.cfg"), chosen(directory.path("other.cfg")));
}

TEST_F(FileChoice, TriesTheProgramsNameOnlyForAnEmptyName) {
    add(("application.name.raw=\"" + directory.path("missing") + "\"").c_str());
    add(("application.name.raw=\"" + directory.path("two") + "\"").c_str());
    add(("application.name.raw=\"" + directory.path("one") + "\"").c_str());
    EXPECT_EQ(two, chosen(""));
    EXPECT_EQ(one, chosen(one));
}

TEST_F(FileChoice, PrefersCfgFileInAnySourceToTheProgramsName) {
    add(("application.name.raw=\"" + directory.path("two") + "\"").c_str());
    add(("cfg_file=\"" + one + "\"").c_str());
    EXPECT_EQ(one, chosen(""));
}

TEST_F(FileChoice, LeavesTheNameEmptyIfNoFileCanBeOpened) {
    add("cfg_file=");
    add(("application.name.raw=\"" + missing + "\"").c_str());
    EXPECT_EQ("", chosen(""));
}

TEST_F(FileChoice, ChoosesALinkThatCanBeOpenedAndThenReadsNothing) {
    ASSERT_EQ(0, symlink(one.c_str(), directory.path("link.cfg").c_str()));
    add(("cfg_file=\"" + directory.path("link.cfg") + "\"").c_str());
    file_item item("");
    EXPECT_TRUE(item.load(items));
    EXPECT_EQ(directory.path("link.cfg"), item.get_filename());
    EXPECT_EQ(lines(), content(item));
}

TEST_F(FileChoice, SkipsADirectoryAndAPipe) {
    ASSERT_EQ(0, mkfifo(directory.path("pipe").c_str(), 0600));
    add(("cfg_file=\"" + directory.path("pipe") + "\"").c_str());
    add(("cfg_file=\"" + directory.path() + "\"").c_str());
    add(("cfg_file=\"" + one + "\"").c_str());
    EXPECT_EQ(one, chosen(""));
}

TEST_F(FileChoice, AcceptsNamesOfAnyType) {
    const test_support::working_directory here(directory.path());
    directory.write("12", "a=3\n");
    add("");
    items.back()->set("cfg_file", variant(12), 0);
    EXPECT_EQ("12", chosen(""));
}

TEST(ParseComment, StopsBeforeTheLineEnd) {
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

TEST(QuoteValue, QuotesStringsWithSpacesTabsOrLineEnds) {
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

TEST(FileItem, SavesThroughItsBaseClassWithAndWithoutAList) {
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

TEST(FileItem, ReturnsTrueEvenIfASaveFails) {
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

TEST(FileItem, SavesToAPipeWithAReader) {
    const temporary_directory directory;
    const std::string pipe = directory.path("pipe");
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    // Opened without blocking: if nothing is written, the test fails rather than hangs.
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

}  // namespace
