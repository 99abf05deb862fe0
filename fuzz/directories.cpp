// Directories: lists and walks a random tree, creates random paths, and compares the results with
// plain system calls.
//
// Input: a byte for the number of entries, two bytes for each (its name and its kind); the rest is
// a path to create.
#include <tova/strings/ustring.hpp>
#include <tova/system/directories.hpp>
#include <tova/system/files.hpp>
#include <tova/system/io.hpp>

#include "require.hpp"
#include "scratch_tree.hpp"
#include "support/choose_form.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using fuzz_support::entries_of;
using fuzz_support::require;
using fuzz_support::scratch_tree;
using tova::strings::ustring8;

// Fills the tree. Its content is read from the system afterwards, so nothing is returned.
void fill(const scratch_tree& tree, const std::uint8_t* entries, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t name = entries[2 * i];
        const std::uint8_t kind = entries[2 * i + 1];
        // In the root, or in one of two folders that may exist.
        const std::string folder = kind & 0x40 ? "b/" : kind & 0x80 ? "a/" : "";
        const std::string path = folder + static_cast<char>('a' + name % 8);
        switch (kind % 5) {
        case 0:
        case 1:
            tree.make_directory(path);
            break;
        case 2:
            tree.write(path, "x");
            break;
        case 3:
            tree.write(path, "x");
            ::chmod(tree.path(path).c_str(), name & 0x10 ? 0044 : 0400);
            break;
        default:
            // The link leads downward, so there is no cycle.
            require(::symlink(name & 0x10 ? "nowhere" : "../c", tree.path(path).c_str()) <= 0);
            break;
        }
    }
}

bool has_bits(const std::string& path, mode_t bits) {
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 && (status.st_mode & bits) != 0;
}

void walk(const std::string& directory, std::vector<std::string>& files, int depth) {
    std::vector<std::string> folders;
    for (const std::string& entry : entries_of(directory)) {
        if (!has_bits(entry, 0x100))
            continue;
        if (has_bits(entry, 0x8000))
            files.push_back(entry);
        else if (has_bits(entry, 0x4000))
            folders.push_back(entry);
    }
    for (const std::string& folder : folders)
        if (depth < 50)
            walk(folder, files, depth + 1);
}

std::vector<std::string> plain(const std::vector<ustring8>& paths) {
    return std::vector<std::string>(paths.begin(), paths.end());
}

// Creates the part before each "/". Returns whether the last call succeeded.
bool plainly_created(const std::string& path) {
    if (has_bits(path, 0x4000))
        return true;
    std::size_t start = 0;
    if (!path.empty() && (path[0] == '.' || path[0] == '/'))
        start = path.find('/') + 1;  // 0 if there is none
    std::size_t slash = path.find('/', start);
    bool worked = ::mkdir(path.substr(0, slash).c_str(), 0775) == 0;
    // For a path without a "/", the search starts at the beginning.
    while ((slash = path.find('/', slash + 1)) != std::string::npos)
        worked = ::mkdir(path.substr(0, slash).c_str(), 0775) == 0;
    return worked;
}

// Lists everything below a directory, without the directory's own path.
void list(const std::string& directory, std::size_t skipped, std::vector<std::string>& all) {
    for (const std::string& entry : entries_of(directory)) {
        all.push_back(entry.substr(skipped));
        struct stat status;
        if (::lstat(entry.c_str(), &status) == 0 && S_ISDIR(status.st_mode))
            list(entry, skipped, all);
    }
}

std::vector<std::string> below(const std::string& directory) {
    std::vector<std::string> all;
    list(directory, directory.size(), all);
    std::sort(all.begin(), all.end());
    return all;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    // The fuzzer's directory, to which the target returns so that the corpus is found.
    static const int home = ::open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    static const scratch_tree tree;
    static const scratch_tree mine;
    static const scratch_tree theirs;
    if (size == 0 || size > 200)
        return 0;
    const std::size_t count = std::min<std::size_t>(data[0] % 16, (size - 1) / 2);
    tree.clear();
    fill(tree, data + 1, count);

    const std::vector<std::string> listed =
        plain(tova::system::list_directory(ustring8(tree.path())));
    require(listed == entries_of(tree.path()));
    for (const std::string& entry : listed) {
        require(tova::system::io::exists(ustring8(entry)) == (::access(entry.c_str(), F_OK) == 0));
        require(tova::system::io::is_file(ustring8(entry)) == has_bits(entry, 0x8000));
        require(tova::system::io::is_directory(ustring8(entry)) == has_bits(entry, 0x4000));
        require(tova::system::have_read_access(ustring8(entry)) == has_bits(entry, 0x100));
    }
    std::vector<ustring8> found(1, "kept");
    tova::system::get_directory_files(ustring8(tree.path()), found);
    std::vector<std::string> expected(1, "kept");
    walk(tree.path(), expected, 0);
    require(plain(found) == expected);

    // Short paths, in which "/", "." and names alternate. None leads upward.
    std::string path;
    for (std::size_t i = 1 + 2 * count; i < size; ++i)
        path += "ab/.cd/"[data[i] % 7];
    if (path.find("..") != std::string::npos || (!path.empty() && path[0] == '/'))
        return 0;
    mine.clear();
    theirs.clear();
    require(::chdir(mine.path().c_str()) == 0);
    const bool by_the_library = tova::system::create_directory(ustring8(path));
    require(::chdir(theirs.path().c_str()) == 0);
    require(by_the_library == plainly_created(path));
    require(::fchdir(home) == 0);
    require(below(mine.path()) == below(theirs.path()));
    return 0;
}
