#include <tova/system/directories.hpp>

#include "support/child_process.hpp"
#include "support/temporary_directory.hpp"
#include "support/widths.hpp"
#include "system/path_text.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include <dirent.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace tova;
using strings::ustring16;
using strings::ustring32;
using strings::ustring8;
using system::create_directory;
using system::get_directory_files;
using system::list_directory;
using test_support::expect_in_child;
using test_support::path_text;

typedef std::vector<std::string> names;

bool is_directory(const std::string& path) {
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

names names_by_readdir(const std::string& directory) {
    names found;
    DIR* const stream = ::opendir(directory.c_str());
    if (stream == nullptr)
        return found;
    while (const dirent* entry = ::readdir(stream)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..")
            found.push_back(name);
    }
    ::closedir(stream);
    return found;
}

// All directories below, in alphabetical order.
names directories_below(const std::string& parent) {
    names found;
    for (const std::string& name : names_by_readdir(parent)) {
        if (!is_directory(parent + "/" + name))
            continue;
        found.push_back(name);
        for (const std::string& below : directories_below(parent + "/" + name))
            found.push_back(name + "/" + below);
    }
    std::sort(found.begin(), found.end());
    return found;
}

void allow_few_open_files() {
    rlimit limits;
    ASSERT_EQ(0, ::getrlimit(RLIMIT_NOFILE, &limits));
    limits.rlim_cur = 16;
    ASSERT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &limits));
}

template <typename Path>
class Directories : public ::testing::Test {
protected:
    Path path(const std::string& name) const { return path_text<Path>(directory.path(name)); }

    void make(const std::string& name, unsigned int mode = 0755) {
        ASSERT_EQ(0, ::mkdir(directory.path(name).c_str(), 0755)) << name;
        ASSERT_EQ(0, ::chmod(directory.path(name).c_str(), mode)) << name;
    }
    void link_to(const std::string& target, const std::string& name) {
        test_support::make_link(target, directory.path(name));
    }
    std::vector<Path> paths(const names& found) const {
        std::vector<Path> result;
        for (const std::string& name : found)
            result.push_back(path(name));
        return result;
    }

    test_support::temporary_directory directory;
};
TYPED_TEST_SUITE(Directories, test_support::all_widths, test_support::width_name);

TYPED_TEST(Directories, AreCreatedUpToTheLastSlashOfAPath) {
    const struct {
        const char* path;
        bool result;
        names created;
        bool second_result;
        names created_then;
    } cases[] = {
        {"one", true, {"one"}, true, {"one"}},
        {"one/", true, {"one"}, true, {"one"}},
        {"a/b/", true, {"a", "a/b"}, true, {"a", "a/b"}},
        {"a/b/c/", true, {"a", "a/b", "a/b/c"}, true, {"a", "a/b", "a/b/c"}},
        {"a/b", true, {"a"}, false, {"a"}},
        {"a/b/c", true, {"a", "a/b"}, false, {"a", "a/b"}},
        {"a//", false, {"a"}, true, {"a"}},
        {"a//b/", true, {"a", "a/b"}, true, {"a", "a/b"}},
        {".hidden", true, {".hidden"}, true, {".hidden"}},
        {".hidden/", false, {".hidden"}, true, {".hidden"}},
        {".hidden/a/", false, {}, false, {}},
        {".hidden/a", true, {".hidden"}, false, {".hidden", ".hidden/a"}},
        {"./one", false, {"one"}, true, {"one"}},
        {"./one/", true, {"one"}, true, {"one"}},
        {"./a/b/", true, {"a", "a/b"}, true, {"a", "a/b"}},
        {"./a/b", true, {"a"}, false, {"a"}},
        {"..a", true, {"..a"}, true, {"..a"}},
        {"..a/b", true, {"..a"}, false, {"..a", "..a/b"}},
        {"..a/b/", false, {}, false, {}},
        {"./.hidden/", true, {".hidden"}, true, {".hidden"}},
        {"./.hidden/a/", true, {".hidden", ".hidden/a"}, true, {".hidden", ".hidden/a"}},
        {"./..a/b/", true, {"..a", "..a/b"}, true, {"..a", "..a/b"}},
        {"", false, {}, false, {}},
        {".", true, {}, true, {}},
        {"..", true, {}, true, {}},
        {"./", true, {}, true, {}},
        {"\xC3\xA4/\xE2\x82\xAC/",
         true,
         {"\xC3\xA4", "\xC3\xA4/\xE2\x82\xAC"},
         true,
         {"\xC3\xA4", "\xC3\xA4/\xE2\x82\xAC"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        test_support::temporary_directory place;
        expect_in_child([&] {
            ASSERT_EQ(0, ::chdir(place.path().c_str()));
            EXPECT_EQ(c.result, create_directory(path_text<TypeParam>(c.path)));
            EXPECT_EQ(c.created, directories_below("."));
            EXPECT_EQ(c.second_result, create_directory(path_text<TypeParam>(c.path)));
            EXPECT_EQ(c.created_then, directories_below("."));
        });
    }
}

TYPED_TEST(Directories, AreCreatedNextToTheCurrentOneAlthoughTheResultIsFalse) {
    this->make("inner");
    expect_in_child([&] {
        ASSERT_EQ(0, ::chdir(this->directory.path("inner").c_str()));
        EXPECT_FALSE(create_directory(path_text<TypeParam>("../one")));
        EXPECT_TRUE(create_directory(path_text<TypeParam>("../two/")));
    });
    EXPECT_EQ(names({"inner", "one", "two"}), directories_below(this->directory.path()));
}

TYPED_TEST(Directories, AreCreatedBelowAnAbsolutePath) {
    EXPECT_TRUE(create_directory(this->path("one/two/")));
    EXPECT_TRUE(create_directory(this->path("one/two/three/four")));
    EXPECT_FALSE(create_directory(this->path("one/two/three/four")));
    EXPECT_EQ(names({"one", "one/two", "one/two/three"}),
              directories_below(this->directory.path()));
    EXPECT_TRUE(create_directory(path_text<TypeParam>("/")));
}

TYPED_TEST(Directories, BelowTheRootAreCreatedAlthoughTheResultIsFalse) {
    expect_in_child([&] {
        // Only root can change its root directory; for other users nothing is created.
        const bool is_root = ::geteuid() == 0 && ::chroot(this->directory.path().c_str()) == 0;
        EXPECT_FALSE(create_directory(path_text<TypeParam>("/tova_test_below_the_root")));
        EXPECT_EQ(is_root, is_directory("/tova_test_below_the_root"));
    });
}

TYPED_TEST(Directories, ThatExistAreUnchanged) {
    this->make("locked", 0500);
    this->link_to("locked", "link");
    EXPECT_TRUE(create_directory(this->path("locked")));
    EXPECT_TRUE(create_directory(this->path("locked/")));
    EXPECT_TRUE(create_directory(this->path("link")));
    EXPECT_TRUE(create_directory(this->path("link/")));
    struct stat status;
    ASSERT_EQ(0, ::stat(this->directory.path("locked").c_str(), &status));
    EXPECT_EQ(0500u, status.st_mode & 07777u);
}

TYPED_TEST(Directories, CannotBeCreatedInPlaceOfAFile) {
    this->directory.write("file", "bytes");
    expect_in_child([&] {
        ASSERT_EQ(0, ::chdir(this->directory.path().c_str()));
        EXPECT_FALSE(create_directory(path_text<TypeParam>("file")));
        EXPECT_FALSE(create_directory(path_text<TypeParam>("file/")));
        EXPECT_FALSE(create_directory(path_text<TypeParam>("file/below/")));
    });
    EXPECT_EQ("bytes", test_support::read_bytes(this->directory.path("file")));
}

TYPED_TEST(Directories, AreCreatedWithMode0775) {
    expect_in_child([&] {
        ::umask(0);
        EXPECT_TRUE(create_directory(this->path("one/two/")));
        for (const char* name : {"one", "one/two"}) {
            struct stat status;
            ASSERT_EQ(0, ::stat(this->directory.path(name).c_str(), &status));
            EXPECT_EQ(0775u, status.st_mode & 07777u);
        }
    });
}

TYPED_TEST(Directories, ListTheirEntriesInTheOrderOfTheSystem) {
    this->directory.write("file", "");
    this->directory.write("folder/below", "");
    this->directory.write(".hidden", "");
    this->directory.write("\xC3\xA4\xF0\x9F\x98\x80", "");
    this->directory.write("..more", "");
    this->link_to("nothing", "dangling");
    const names expected = names_by_readdir(this->directory.path());
    ASSERT_EQ(6u, expected.size());
    EXPECT_EQ(this->paths(expected), list_directory(path_text<TypeParam>(this->directory.path())));
}

TYPED_TEST(Directories, KeepATrailingSlashInTheListedPaths) {
    this->directory.write("file", "");
    const TypeParam asked = path_text<TypeParam>(this->directory.path() + "/");
    const std::vector<TypeParam> expected = {
        path_text<TypeParam>(this->directory.path() + "//file")};
    EXPECT_EQ(expected, list_directory(asked));
    std::vector<TypeParam> files;
    get_directory_files(asked, files);
    EXPECT_EQ(expected, files);
}

TYPED_TEST(Directories, ListNothingIfTheyCannotBeOpenedOrAreEmpty) {
    this->make("empty");
    this->directory.write("file", "");
    for (const char* name : {"empty", "file", "missing"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(std::vector<TypeParam>(), list_directory(this->path(name)));
    }
    EXPECT_EQ(std::vector<TypeParam>(), list_directory(TypeParam()));
}

TYPED_TEST(Directories, AppendTheirFilesToTheList) {
    const std::vector<TypeParam> before(1, path_text<TypeParam>("before"));
    std::vector<TypeParam> files(before);
    this->make("empty");
    this->directory.write("file", "");
    for (const char* name : {"empty", "file", "missing"}) {
        SCOPED_TRACE(name);
        get_directory_files(this->path(name), files);
        EXPECT_EQ(before, files);
    }
    get_directory_files(path_text<TypeParam>(this->directory.path()), files);
    EXPECT_EQ((std::vector<TypeParam>{path_text<TypeParam>("before"), this->path("file")}), files);
    get_directory_files(path_text<TypeParam>(this->directory.path()), files);
    EXPECT_EQ(3u, files.size());
}

TYPED_TEST(Directories, ListTheirOwnFilesBeforeThoseBelow) {
    const names written = {"a/deep/file", "a/file", "b/file", "m", "z/1", "z/2", "\xC3\xA4"};
    for (const std::string& name : written)
        this->directory.write(name, "");

    names expected;
    names folders;
    for (const std::string& name : names_by_readdir(this->directory.path()))
        (is_directory(this->directory.path(name)) ? folders : expected).push_back(name);
    for (const std::string& folder : folders) {
        const names inner = names_by_readdir(this->directory.path(folder));
        for (const std::string& name : inner)
            if (name != "deep")
                expected.push_back(folder + "/" + name);
        if (folder == "a")
            expected.push_back("a/deep/file");
    }
    ASSERT_EQ(written.size(), expected.size());

    std::vector<TypeParam> files;
    get_directory_files(path_text<TypeParam>(this->directory.path()), files);
    EXPECT_EQ(this->paths(expected), files);
}

TYPED_TEST(Directories, ListOnlyFilesThatTheirOwnerMayRead) {
    this->directory.write("readable", "");
    ASSERT_EQ(0, ::chmod(this->directory.write("unreadable", "").c_str(), 0044));
    this->directory.write("closed/file", "");
    ASSERT_EQ(0, ::chmod(this->directory.path("closed").c_str(), 0377));
    ASSERT_EQ(0, ::mkfifo(this->directory.path("pipe").c_str(), 0600));
    this->link_to("nothing", "dangling");
    std::vector<TypeParam> files;
    get_directory_files(path_text<TypeParam>(this->directory.path()), files);
    EXPECT_EQ(this->paths({"readable"}), files);
    ASSERT_EQ(0, ::chmod(this->directory.path("closed").c_str(), 0755));
}

TYPED_TEST(Directories, FollowLinks) {
    test_support::temporary_directory elsewhere;
    elsewhere.write("file", "");
    this->link_to(elsewhere.path(), "folder");
    this->link_to(elsewhere.path("file"), "link");
    std::vector<TypeParam> files;
    get_directory_files(path_text<TypeParam>(this->directory.path()), files);
    EXPECT_EQ(this->paths({"link", "folder/file"}), files);
}

typedef Directories<ustring8> DirectoriesOfASystem;

TEST_F(DirectoriesOfASystem, ListASocketAsAFile) {
    const test_support::bound_socket socket(directory.path("socket"));
    std::vector<ustring8> files;
    get_directory_files(directory.path(), files);
    EXPECT_EQ(paths({"socket"}), files);
}

TEST_F(DirectoriesOfASystem, FollowACycleOfLinksUntilTheSystemEndsIt) {
    directory.write("file", "");
    link_to(".", "loop");
    std::vector<ustring8> files;
    get_directory_files(directory.path(), files);
    ASSERT_GT(files.size(), 10u);
    std::string expected = directory.path();
    for (const ustring8& file : files) {
        EXPECT_EQ(expected + "/file", file);
        expected += "/loop";
    }
}

TEST_F(DirectoriesOfASystem, AreClosedBeforeTheirSubdirectoriesAreOpened) {
    std::string deepest;
    for (int depth = 0; depth < 60; ++depth)
        deepest += "d/";
    directory.write(deepest + "file", "");
    expect_in_child([this, &deepest] {
        allow_few_open_files();
        std::vector<ustring8> files;
        get_directory_files(directory.path(), files);
        EXPECT_EQ(paths({deepest + "file"}), files);
    });
}

TEST_F(DirectoriesOfASystem, ListNamesThatAreNotUtf8AsEachWidthCan) {
    directory.write("bad\xFFname", "");
    const std::vector<ustring8> bytes = {ustring8(directory.path("bad\xFFname"))};
    EXPECT_EQ(bytes, list_directory(ustring8(directory.path())));

    const std::vector<ustring16> minus_one = {path_text<ustring16>("-1")};
    EXPECT_EQ(minus_one, list_directory(path_text<ustring16>(directory.path())));
    std::vector<ustring16> files16;
    get_directory_files(path_text<ustring16>(directory.path()), files16);
    EXPECT_EQ(minus_one, files16);

    const std::vector<ustring32> marked = {path_text<ustring32>(directory.path("bad?name"))};
    EXPECT_EQ(marked, list_directory(path_text<ustring32>(directory.path())));
    std::vector<ustring32> files32;
    get_directory_files(path_text<ustring32>(directory.path()), files32);
    EXPECT_EQ(marked, files32);
}

TEST_F(DirectoriesOfASystem, AreNamedMinusOneForAnInvalidPath) {
    expect_in_child([this] {
        ASSERT_EQ(0, ::chdir(directory.path().c_str()));
        EXPECT_TRUE(create_directory(test_support::bad_utf16()));
        EXPECT_TRUE(is_directory("-1"));
        EXPECT_TRUE(create_directory(test_support::bad_utf32()));
        directory.write("-1/file", "");
        EXPECT_EQ(std::vector<ustring32>(1, path_text<ustring32>("-1/file")),
                  list_directory(test_support::bad_utf32()));
        std::vector<ustring16> files;
        get_directory_files(test_support::bad_utf16(), files);
        EXPECT_EQ(std::vector<ustring16>(1, path_text<ustring16>("-1/file")), files);
    });
}

TEST_F(DirectoriesOfASystem, AreTriedInTimeProportionalToThePath) {
    // Copying the path once per part would take minutes.
    EXPECT_FALSE(create_directory(ustring8(500000, '/')));
}

TEST_F(DirectoriesOfASystem, EndTheirNamesAtANulByte) {
    // The parts after the NUL byte name "a/b/" again, and the last of them decides the result.
    EXPECT_FALSE(create_directory(path("a/b/") + ustring8("\0c/d/", 5)));
    EXPECT_TRUE(create_directory(path("a/b/") + ustring8("\0c/d/", 5)));
    EXPECT_EQ(names({"a", "a/b"}), directories_below(directory.path()));
}

TEST_F(DirectoriesOfASystem, AreClosedAgainAfterAListing) {
    make("folder");
    expect_in_child([this] {
        allow_few_open_files();
        for (int i = 0; i < 50; ++i) {
            EXPECT_EQ(1u, list_directory(directory.path()).size());
            std::vector<ustring8> files;
            get_directory_files(directory.path(), files);
        }
    });
}

}  // namespace
