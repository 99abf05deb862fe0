#include <tova/system/io.hpp>

#include "support/child_process.hpp"
#include "support/temporary_directory.hpp"
#include "support/widths.hpp"
#include "system/path_text.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

using namespace tova;
using strings::ustring8;
using test_support::entry_exists;
using test_support::path_text;
using test_support::read_bytes;
namespace io = tova::system::io;

template <typename Path>
class Io : public ::testing::Test {
protected:
    Path path(const std::string& name) const { return path_text<Path>(directory.path(name)); }
    std::string name(const std::string& entry) const { return directory.path(entry); }

    void make(const std::string& entry) {
        ASSERT_EQ(0, ::mkdir(name(entry).c_str(), 0755)) << entry;
    }
    void link_to(const std::string& target, const std::string& entry) {
        test_support::make_link(target, name(entry));
    }

    test_support::temporary_directory directory;
};
TYPED_TEST_SUITE(Io, test_support::all_widths, test_support::width_name);

TYPED_TEST(Io, DistinguishesFilesFromDirectories) {
    this->directory.write("file", "");
    this->directory.write("\xC3\xA4", "");
    this->make("folder");
    this->link_to("file", "to_file");
    this->link_to("folder", "to_folder");
    this->link_to("nothing", "to_nothing");
    ASSERT_EQ(0, ::mkfifo(this->name("pipe").c_str(), 0600));
    const struct {
        const char* entry;
        bool exists;
        bool is_file;
        bool is_directory;
    } cases[] = {
        {"file", true, true, false},         {"\xC3\xA4", true, true, false},
        {"folder", true, false, true},       {"folder/", true, false, true},
        {"to_file", true, true, false},      {"to_folder", true, false, true},
        {"to_nothing", false, false, false}, {"missing", false, false, false},
        {"file/", false, false, false},      {"file/below", false, false, false},
        {"pipe", true, false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.entry);
        EXPECT_EQ(c.exists, io::exists(this->path(c.entry)));
        EXPECT_EQ(c.is_file, io::is_file(this->path(c.entry)));
        EXPECT_EQ(c.is_directory, io::is_directory(this->path(c.entry)));
    }
    EXPECT_FALSE(io::exists(TypeParam()));
    EXPECT_FALSE(io::is_file(TypeParam()));
    EXPECT_FALSE(io::is_directory(TypeParam()));
}

TYPED_TEST(Io, TreatsASocketAsAFileAndADirectory) {
    const test_support::bound_socket socket(this->name("socket"));
    EXPECT_TRUE(io::exists(this->path("socket")));
    EXPECT_TRUE(io::is_file(this->path("socket")));
    EXPECT_TRUE(io::is_directory(this->path("socket")));
}

TYPED_TEST(Io, TreatsACharacterDeviceAsNeitherAndABlockDeviceAsADirectory) {
    const TypeParam null = path_text<TypeParam>("/dev/null");
    EXPECT_TRUE(io::exists(null));
    EXPECT_FALSE(io::is_file(null));
    EXPECT_FALSE(io::is_directory(null));
    // Only root can create a block device, and not everywhere.
    if (::mknod(this->name("block").c_str(), S_IFBLK | 0600, makedev(7, 0)) == 0) {
        EXPECT_TRUE(io::exists(this->path("block")));
        EXPECT_FALSE(io::is_file(this->path("block")));
        EXPECT_TRUE(io::is_directory(this->path("block")));
    }
}

TYPED_TEST(Io, RemoveFileRemovesFilesLinksAndEmptyDirectories) {
    this->directory.write("file", "");
    this->directory.write("target", "");
    this->directory.write("full/file", "");
    this->make("empty");
    this->link_to("target", "link");
    for (const char* entry : {"file", "link", "empty", "full", "missing"})
        io::remove_file(this->path(entry));
    io::remove_file(TypeParam());
    EXPECT_FALSE(entry_exists(this->name("file")));
    EXPECT_FALSE(entry_exists(this->name("link")));
    EXPECT_FALSE(entry_exists(this->name("empty")));
    EXPECT_TRUE(entry_exists(this->name("target")));
    EXPECT_TRUE(entry_exists(this->name("full/file")));
}

TYPED_TEST(Io, RemoveDirRemovesOnlyEmptyDirectories) {
    this->directory.write("file", "");
    this->directory.write("full/file", "");
    this->make("empty");
    this->make("target");
    this->link_to("target", "link");
    for (const char* entry : {"file", "full", "empty", "link", "missing"})
        io::remove_dir(this->path(entry));
    io::remove_dir(TypeParam());
    EXPECT_FALSE(entry_exists(this->name("empty")));
    EXPECT_TRUE(entry_exists(this->name("file")));
    EXPECT_TRUE(entry_exists(this->name("full/file")));
    EXPECT_TRUE(entry_exists(this->name("link")));
    EXPECT_TRUE(entry_exists(this->name("target")));
}

TYPED_TEST(Io, MovesTheSecondPathToTheFirst) {
    this->directory.write("a", "bytes of a");
    io::move(this->path("b"), this->path("a"));
    EXPECT_FALSE(entry_exists(this->name("a")));
    EXPECT_EQ("bytes of a", read_bytes(this->name("b")));
}

TYPED_TEST(Io, ReplacesAFileByMoving) {
    this->directory.write("source", "new");
    this->directory.write("target", "old");
    io::move(this->path("target"), this->path("source"));
    EXPECT_FALSE(entry_exists(this->name("source")));
    EXPECT_EQ("new", read_bytes(this->name("target")));
}

TYPED_TEST(Io, MovesDirectoriesAndMovesLinksThemselves) {
    this->directory.write("folder/file", "bytes");
    this->link_to("folder", "link");
    io::move(this->path("\xC3\xA4"), this->path("folder"));
    io::move(this->path("moved"), this->path("link"));
    EXPECT_EQ("bytes", read_bytes(this->name("\xC3\xA4/file")));
    EXPECT_TRUE(entry_exists(this->name("moved")));
    EXPECT_FALSE(entry_exists(this->name("link")));
}

TYPED_TEST(Io, DoesNotReportAFailedMove) {
    this->directory.write("file", "bytes");
    this->directory.write("full/file", "");
    io::move(this->path("file"), this->path("missing"));
    io::move(this->path("missing/file"), this->path("file"));
    io::move(this->path("full"), this->path("file"));
    io::move(TypeParam(), this->path("file"));
    EXPECT_EQ("bytes", read_bytes(this->name("file")));
    EXPECT_TRUE(entry_exists(this->name("full/file")));
    EXPECT_FALSE(entry_exists(this->name("missing")));
}

TYPED_TEST(Io, MkdirRecursesUntilTheStackOverflowsAndCreatesNothing) {
    for (const char* entry : {"new", ""}) {
        SCOPED_TRACE(entry);
        test_support::child_limits limits;
        limits.stack_bytes = 256 * 1024;
        const auto result =
            test_support::run_in_child([&] { io::mkdir(this->path(entry)); }, limits);
        if (test_support::under_sanitizer()) {
            EXPECT_NE(std::string::npos, result.output.find("stack-overflow")) << result.output;
        } else {
            EXPECT_FALSE(result.exited) << result.exit_code;
            EXPECT_EQ(SIGSEGV, result.signal);
        }
    }
    EXPECT_FALSE(entry_exists(this->name("new")));
}

typedef Io<ustring8> IoOfASystem;

TEST_F(IoOfASystem, UsesTheNameMinusOneForAnInvalidPath) {
    test_support::expect_in_child([this] {
        ASSERT_EQ(0, ::chdir(directory.path().c_str()));
        EXPECT_FALSE(io::exists(test_support::bad_utf16()));
        directory.write("-1", "bytes");
        EXPECT_TRUE(io::exists(test_support::bad_utf16()));
        EXPECT_TRUE(io::is_file(test_support::bad_utf32()));
        EXPECT_FALSE(io::is_directory(test_support::bad_utf32()));
        io::move(path_text<strings::ustring16>("moved"), test_support::bad_utf16());
        EXPECT_EQ("bytes", read_bytes("moved"));
        io::move(test_support::bad_utf32(), path_text<strings::ustring32>("moved"));
        EXPECT_EQ("bytes", read_bytes("-1"));
        io::remove_file(test_support::bad_utf32());
        EXPECT_FALSE(entry_exists("-1"));
        ASSERT_EQ(0, ::mkdir("-1", 0755));
        io::remove_dir(test_support::bad_utf16());
        EXPECT_FALSE(entry_exists("-1"));
    });
}

}  // namespace
