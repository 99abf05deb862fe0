#include <tova/system/files.hpp>

#include "support/child_process.hpp"
#include "support/temporary_directory.hpp"
#include "support/widths.hpp"
#include "system/path_text.hpp"

#include <boost/filesystem/exception.hpp>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace tova;
using strings::ustring8;
using system::have_read_access;
using system::load_file;
using system::store_file;
using test_support::entry_exists;
using test_support::make_link;
using test_support::path_text;
using test_support::read_bytes;

std::string all_bytes() {
    std::string result;
    for (int byte = 0; byte < 256; ++byte)
        result.push_back(static_cast<char>(byte));
    return result;
}

template <typename Path>
class Files : public ::testing::Test {
protected:
    Path path(const std::string& name) const { return path_text<Path>(directory.path(name)); }

    test_support::temporary_directory directory;
    ustring8 content = "as it was before";
};
TYPED_TEST_SUITE(Files, test_support::all_widths, test_support::width_name);

TYPED_TEST(Files, AreLoadedByteForByte) {
    const std::string bytes = all_bytes();
    this->directory.write("bytes", bytes);
    EXPECT_EQ(0, load_file(this->path("bytes"), this->content));
    EXPECT_EQ(bytes, this->content);
    std::string plain;
    EXPECT_EQ(0, load_file(this->path("bytes"), plain));
    EXPECT_EQ(bytes, plain);
}

TYPED_TEST(Files, AreLoadedWithTheirByteOrderMark) {
    const struct {
        const char* name;
        std::string bytes;
    } cases[] = {
        {"utf8", "\xEF\xBB\xBFtext"},
        {"utf16", std::string("\xFF\xFEt\0", 4)},
        {"utf16_big", std::string("\xFE\xFF\0t", 4)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        this->directory.write(c.name, c.bytes);
        EXPECT_EQ(0, load_file(this->path(c.name), this->content));
        EXPECT_EQ(c.bytes, this->content);
    }
}

TYPED_TEST(Files, HaveNamesInUtf8) {
    const char* const name = "\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80";
    EXPECT_EQ(0, store_file(this->path(name), ustring8("stored")));
    EXPECT_EQ("stored", read_bytes(this->directory.path(name)));
    EXPECT_EQ(0, load_file(this->path(name), this->content));
    EXPECT_EQ("stored", this->content);
    EXPECT_TRUE(have_read_access(this->path(name)));
}

TYPED_TEST(Files, LeaveTheContentUnchangedIfTheyCannotBeOpened) {
    std::string plain = "plain";
    this->directory.write("file", "bytes");
    for (const char* name : {"missing", "missing/below", "file/below"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(1, load_file(this->path(name), this->content));
        EXPECT_EQ(1, load_file(this->path(name), plain));
    }
    EXPECT_EQ(1, load_file(TypeParam(), this->content));
    EXPECT_EQ("as it was before", this->content);
    EXPECT_EQ("plain", plain);
}

TYPED_TEST(Files, AreLoadedAsEmptyContentIfTheyAreEmpty) {
    this->directory.write("empty", "");
    EXPECT_EQ(0, load_file(this->path("empty"), this->content));
    EXPECT_EQ("", this->content);
    std::string plain = "plain";
    EXPECT_EQ(0, load_file(this->path("empty"), plain));
    EXPECT_EQ("", plain);
}

TYPED_TEST(Files, ReplaceLongerAndShorterContent) {
    this->directory.write("short", "ab");
    EXPECT_EQ(0, load_file(this->path("short"), this->content));
    EXPECT_EQ("ab", this->content);
    this->directory.write("long", std::string(100000, 'x'));
    EXPECT_EQ(0, load_file(this->path("long"), this->content));
    EXPECT_EQ(std::string(100000, 'x'), this->content);
}

TYPED_TEST(Files, AreNotLoadedThroughALinkWhateverItsTarget) {
    this->directory.write("file", "bytes");
    this->directory.write("folder/file", "bytes");
    make_link("file", this->directory.path("to_file"));
    make_link("folder", this->directory.path("to_folder"));
    make_link("nothing", this->directory.path("to_nothing"));
    make_link("to_file", this->directory.path("to_link"));
    std::string plain = "plain";
    for (const char* name : {"to_file", "to_folder", "to_nothing", "to_link"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(1, load_file(this->path(name), this->content));
        EXPECT_EQ(1, load_file(this->path(name), plain));
    }
    EXPECT_EQ("as it was before", this->content);
    EXPECT_EQ("plain", plain);
    EXPECT_EQ(0, load_file(this->path("file"), this->content));
    EXPECT_EQ("bytes", this->content);
}

TYPED_TEST(Files, AreFoundThroughALinkInThePathBeforeTheName) {
    this->directory.write("folder/file", "bytes");
    make_link("folder", this->directory.path("link"));
    EXPECT_EQ(0, load_file(this->path("link/file"), this->content));
    EXPECT_EQ("bytes", this->content);
    EXPECT_EQ(0, store_file(this->path("link/file"), ustring8("new")));
    EXPECT_EQ("new", read_bytes(this->directory.path("folder/file")));
}

TYPED_TEST(Files, AreStoredByteForByte) {
    const ustring8 bytes(all_bytes());
    EXPECT_EQ(0, store_file(this->path("new"), bytes));
    EXPECT_EQ(bytes, read_bytes(this->directory.path("new")));
    const ustring8 large(std::string(5000000, 'l') + '\0');
    EXPECT_EQ(0, store_file(this->path("large"), large));
    EXPECT_TRUE(large == read_bytes(this->directory.path("large")));
    EXPECT_EQ(0, load_file(this->path("large"), this->content));
    EXPECT_TRUE(large == this->content);
}

TYPED_TEST(Files, AreReplacedEntirelyWhenStored) {
    this->directory.write("file", "a longer text than the new one");
    EXPECT_EQ(0, store_file(this->path("file"), ustring8("new")));
    EXPECT_EQ("new", read_bytes(this->directory.path("file")));
    EXPECT_EQ(0, store_file(this->path("file"), ustring8()));
    EXPECT_EQ("", read_bytes(this->directory.path("file")));
}

TYPED_TEST(Files, AreNotStoredThroughALink) {
    this->directory.write("file", "bytes");
    make_link("file", this->directory.path("to_file"));
    make_link("nothing", this->directory.path("to_nothing"));
    EXPECT_EQ(1, store_file(this->path("to_file"), ustring8("new")));
    EXPECT_EQ(1, store_file(this->path("to_nothing"), ustring8("new")));
    EXPECT_EQ("bytes", read_bytes(this->directory.path("file")));
    EXPECT_FALSE(entry_exists(this->directory.path("nothing")));
}

TYPED_TEST(Files, CannotBeStoredWhereTheyCannotBeOpened) {
    EXPECT_EQ(1, store_file(this->path("missing/file"), ustring8("new")));
    EXPECT_EQ(1, store_file(path_text<TypeParam>(this->directory.path()), ustring8("new")));
    EXPECT_EQ(1, store_file(TypeParam(), ustring8("new")));
}

TYPED_TEST(Files, AreReadableIfTheirOwnerMayReadThemWhoeverCalls) {
    const struct {
        const char* name;
        unsigned int mode;
        bool readable;
    } cases[] = {
        {"owner", 0400, true}, {"all", 0777, true},         {"others", 0044, false},
        {"none", 0000, false}, {"others all", 0377, false}, {"owner read write", 0600, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string file = this->directory.write(c.name, "bytes");
        ASSERT_EQ(0, ::chmod(file.c_str(), c.mode));
        EXPECT_EQ(c.readable, have_read_access(path_text<TypeParam>(file)));
    }
    make_link("owner", this->directory.path("to_owner"));
    make_link("others", this->directory.path("to_others"));
    make_link("nothing", this->directory.path("to_nothing"));
    EXPECT_TRUE(have_read_access(this->path("to_owner")));
    EXPECT_FALSE(have_read_access(this->path("to_others")));
    EXPECT_FALSE(have_read_access(this->path("to_nothing")));
    EXPECT_FALSE(have_read_access(this->path("missing")));
    EXPECT_FALSE(have_read_access(TypeParam()));
    EXPECT_TRUE(have_read_access(path_text<TypeParam>(this->directory.path())));
}

TYPED_TEST(Files, RaiseWhenTheTestForALinkFails) {
    make_link("loop", this->directory.path("loop"));
    const TypeParam looped = this->path("loop/file");
    const TypeParam too_long = this->path(std::string(300, 'n'));
    std::string plain = "plain";
    EXPECT_THROW(load_file(looped, this->content), boost::filesystem::filesystem_error);
    EXPECT_THROW(load_file(looped, plain), boost::filesystem::filesystem_error);
    EXPECT_THROW(store_file(looped, ustring8()), boost::filesystem::filesystem_error);
    EXPECT_THROW(load_file(too_long, this->content), boost::filesystem::filesystem_error);
    EXPECT_THROW(store_file(too_long, ustring8()), boost::filesystem::filesystem_error);
    EXPECT_EQ("as it was before", this->content);
    EXPECT_EQ("plain", plain);
    EXPECT_FALSE(have_read_access(looped));
    EXPECT_FALSE(have_read_access(too_long));
}

typedef Files<ustring8> FilesOfAUser;

TEST_F(FilesOfAUser, RaiseInADirectoryWithoutSearchPermission) {
    ASSERT_EQ(0, ::chmod(directory.path().c_str(), 0755));
    directory.write("locked/file", "bytes");
    ASSERT_EQ(0, ::chmod(directory.path("locked").c_str(), 0));
    test_support::expect_as_plain_user([this] {
        EXPECT_THROW(load_file(path("locked/file"), content), boost::filesystem::filesystem_error);
        EXPECT_THROW(store_file(path("locked/file"), ustring8("new")),
                     boost::filesystem::filesystem_error);
        EXPECT_FALSE(have_read_access(path("locked/file")));
    });
    ASSERT_EQ(0, ::chmod(directory.path("locked").c_str(), 0755));
    EXPECT_EQ("bytes", read_bytes(directory.path("locked/file")));
}

TEST_F(FilesOfAUser, FailWithoutPermissionToOpenThem) {
    ASSERT_EQ(0, ::chmod(directory.path().c_str(), 0755));
    for (const char* name : {"private", "readable"})
        directory.write(name, "bytes");
    ASSERT_EQ(0, ::chmod(directory.path("private").c_str(), 0000));
    ASSERT_EQ(0, ::chmod(directory.path("readable").c_str(), 0444));
    test_support::expect_as_plain_user([this] {
        EXPECT_EQ(1, load_file(path("private"), content));
        EXPECT_EQ("as it was before", content);
        EXPECT_EQ(1, store_file(path("private"), ustring8("new")));
        EXPECT_EQ(1, store_file(path("readable"), ustring8("new")));
        EXPECT_EQ(0, load_file(path("readable"), content));
        EXPECT_EQ("bytes", content);
    });
}

TEST_F(FilesOfAUser, MayBeReadableOnlyByTheirOwner) {
    ASSERT_EQ(0, ::chmod(directory.path().c_str(), 0755));
    ASSERT_EQ(0, ::chmod(directory.write("file", "bytes").c_str(), 0400));
    // A plain user cannot create a file that someone else owns, but the first process has one.
    const ustring8 foreign = ::geteuid() == 0 ? path("file") : ustring8("/proc/1/environ");
    test_support::expect_as_plain_user([this, &foreign] {
        EXPECT_TRUE(have_read_access(foreign));
        if (::access(foreign.c_str(), R_OK) != 0) {
            EXPECT_EQ(1, load_file(foreign, content));
        }
    });
}

TEST_F(FilesOfAUser, ReportNoErrorWhenWritingFails) {
    EXPECT_EQ(0, store_file(ustring8("/dev/full"), ustring8("bytes")));
}

TEST_F(FilesOfAUser, RaiseLengthErrorIfTheirSizeIsUnknown) {
    EXPECT_THROW(load_file(ustring8("/proc/self/status"), content), std::length_error);
    EXPECT_EQ("as it was before", content);
}

TEST_F(FilesOfAUser, AreOutOfRangeFrom2GibOn) {
    const std::string file = directory.write("sparse", "front");
    ASSERT_EQ(0, ::truncate(file.c_str(), 0x80000000L));
    EXPECT_THROW(load_file(path("sparse"), content), std::length_error);
    EXPECT_EQ("as it was before", content);
}

// The files are sparse, so they need no disk space.
TEST_F(FilesOfAUser, LoadAsTheLowBitsOfTheirSizeFrom4GibOn) {
    const std::string file = directory.write("sparse", "0123456789ab");
    const off_t gib = 1L << 30;
    const struct {
        off_t size;
        std::size_t loaded;
    } cases[] = {
        {4 * gib, 0}, {4 * gib + 10, 10}, {4 * gib + (1 << 20), 1 << 20}, {8 * gib + 3, 3}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.size);
        ASSERT_EQ(0, ::truncate(file.c_str(), c.size));
        EXPECT_EQ(0, load_file(path("sparse"), content));
        EXPECT_EQ(c.loaded, content.size());
        EXPECT_EQ(std::string("0123456789ab").substr(0, c.loaded), content.substr(0, 12));
    }
    for (const off_t size : {2 * gib, 4 * gib - 1, 6 * gib, 8 * gib - 1}) {
        SCOPED_TRACE(size);
        ASSERT_EQ(0, ::truncate(file.c_str(), size));
        EXPECT_THROW(load_file(path("sparse"), content), std::length_error);
        EXPECT_EQ("012", content);
    }
}

TEST_F(FilesOfAUser, LoadAGibibyteOfFive) {
    const std::string file = directory.write("sparse", "front");
    ASSERT_EQ(0, ::truncate(file.c_str(), 5L << 30));
    test_support::expect_in_child([this] {
        EXPECT_EQ(0, load_file(path("sparse"), content));
        EXPECT_EQ(std::size_t(1) << 30, content.size());
        EXPECT_EQ("front", content.substr(0, 5));
    });
}

TEST_F(FilesOfAUser, AreNamedMinusOneForAnInvalidPath) {
    test_support::expect_in_child([this] {
        ASSERT_EQ(0, ::chdir(directory.path().c_str()));
        EXPECT_EQ(1, load_file(test_support::bad_utf16(), content));
        EXPECT_EQ(0, store_file(test_support::bad_utf16(), ustring8("16")));
        EXPECT_EQ("16", read_bytes("-1"));
        EXPECT_EQ(0, store_file(test_support::bad_utf32(), ustring8("32")));
        EXPECT_EQ("32", read_bytes("-1"));
        EXPECT_EQ(0, load_file(test_support::bad_utf16(), content));
        EXPECT_EQ("32", content);
        EXPECT_TRUE(have_read_access(test_support::bad_utf32()));
    });
}

TEST_F(FilesOfAUser, EndTheirNamesAtANulByte) {
    EXPECT_EQ(0, store_file(path("name") + ustring8("\0after", 6), ustring8("bytes")));
    EXPECT_EQ("bytes", read_bytes(directory.path("name")));
    EXPECT_EQ(0, load_file(path("name") + ustring8("\0other", 6), content));
    EXPECT_EQ("bytes", content);
}

}  // namespace
