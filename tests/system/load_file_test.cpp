#include <tova/system/files.hpp>

#include "support/failing_allocation.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <new>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace {

using tova::strings::ustring8;
using tova::system::load_file;

std::string counting_bytes(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i != size; ++i)
        bytes[i] = static_cast<char>(i * 7 + i / 256);
    return bytes;
}

// The string has more room than the file needs, exactly as much, less, or none.
TEST(LoadFile, ReplacesTheContentWhateverItsCapacity) {
    const test_support::temporary_directory folder;
    for (const std::size_t size : {0, 1, 15, 16, 17, 4095, 4096, 100000}) {
        SCOPED_TRACE(size);
        const std::string bytes = counting_bytes(size);
        const ustring8 path(folder.write("file", bytes));
        for (const std::size_t before : {0ul, size / 2, size, size + 1, 2 * size + 40}) {
            std::string content(before, 'x');
            EXPECT_EQ(0, load_file(path, content));
            EXPECT_EQ(bytes, content);
            EXPECT_EQ('\0', content.c_str()[size]);
        }
    }
}

// Larger than the blocks that the C library keeps together, and no whole number of pages.
TEST(LoadFile, ReadsAHugeFile) {
    const test_support::temporary_directory folder;
    const std::string bytes = counting_bytes((40 << 20) + 123);
    const ustring8 path(folder.write("file", bytes));
    std::string content;
    errno = 77;
    EXPECT_EQ(0, load_file(path, content));
    EXPECT_EQ(77, errno);
    EXPECT_TRUE(bytes == content);
    EXPECT_EQ(0, load_file(path, content));
    EXPECT_TRUE(bytes == content);
}

TEST(LoadFile, ReadsIntoTheStringThatNamesTheFile) {
    const test_support::temporary_directory folder;
    ustring8 path(folder.write("file", counting_bytes(500)));
    EXPECT_EQ(0, load_file(path, path));
    EXPECT_EQ(counting_bytes(500), path);
}

TEST(LoadFile, LeavesTheContentAloneWithoutMemory) {
    const test_support::temporary_directory folder;
    const ustring8 path(folder.write("file", counting_bytes(500)));
    std::string content = "before";
    {
        const test_support::failing_allocation shortage;
        EXPECT_THROW(load_file(path, content), std::bad_alloc);
    }
    EXPECT_EQ("before", content);
}

// A leaked descriptor would change the lowest free one.
TEST(LoadFile, ClosesTheFileInEveryCase) {
    const test_support::temporary_directory folder;
    const ustring8 path(folder.write("file", counting_bytes(500)));
    const auto lowest_free = [] {
        const int descriptor = ::open("/dev/null", O_RDONLY);
        ::close(descriptor);
        return descriptor;
    };
    const int before = lowest_free();
    std::string content;
    EXPECT_EQ(0, load_file(path, content));
    EXPECT_EQ(1, load_file(ustring8(folder.path("missing")), content));
    EXPECT_ANY_THROW(load_file(ustring8("/proc/self/status"), content));  // has no end
    {
        std::string small;
        const test_support::failing_allocation shortage;
        EXPECT_THROW(load_file(path, small), std::bad_alloc);
    }
    EXPECT_EQ(before, lowest_free());
}

}  // namespace
