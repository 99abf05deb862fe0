// The 8-bit form of each operation does the work. The other two convert the path to UTF-8 and
// convert the paths found back.
#include <tova/system/directories.hpp>

#include <tova/strings/unicode.hpp>
#include <tova/system/files.hpp>
#include <tova/system/io.hpp>

#include <cstring>
#include <memory>

#include <dirent.h>
#include <sys/stat.h>

namespace TOVA_2_18 {
namespace system {

using strings::ustring16;
using strings::ustring32;
using strings::ustring8;

namespace {

const mode_t directory_mode = 0775;

// Creates the directory named by the first `position` bytes of the path, or by the whole path for
// `npos`. The path is cut for the call and restored after it, so a path of many parts isn't copied
// once per part.
bool make_directory(ustring8& path, ustring8::size_type position) {
    if (position == ustring8::npos)
        return ::mkdir(path.c_str(), directory_mode) == 0;
    path[position] = '\0';
    const bool made = ::mkdir(path.c_str(), directory_mode) == 0;
    path[position] = '/';
    return made;
}

bool is_self_or_parent(const char* name) {
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

struct directory_closer {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

}  // namespace

bool create_directory(const ustring8& path) {
    if (io::exists(path) && io::is_directory(path))
        return true;

    // Contract: `npos + 1` is 0, here and in the loop. A path that begins with "." or "/" and has
    // no other "/" is created as a whole; then the loop starts over at the beginning and tries the
    // part before the first "/". That part exists or is empty, so the result is false. Only if the
    // parent was missing at first ("..a/b") does the second attempt succeed.
    ustring8::size_type start = 0;
    if (!path.empty() && (path[0] == '.' || path[0] == '/'))
        start = path.find('/') + 1;

    ustring8 work(path);
    ustring8::size_type position = path.find('/', start);
    bool made = make_directory(work, position);
    while ((position = path.find('/', position + 1)) != ustring8::npos)
        made = make_directory(work, position);
    return made;
}
bool create_directory(const ustring16& path) {
    return create_directory(strings::utf16_to_utf8(path));
}
bool create_directory(const ustring32& path) {
    return create_directory(strings::utf32_to_utf8(path));
}

void get_directory_files(const ustring8& directory, std::vector<ustring8>& files) {
    std::vector<ustring8> subdirectories;
    for (const ustring8& entry : list_directory(directory)) {
        const bool readable = have_read_access(entry);
        if (readable && io::is_file(entry))
            files.push_back(entry);
        else if (readable && io::is_directory(entry))
            subdirectories.push_back(entry);
    }
    // Contract: the directory is closed by now, so a deep tree doesn't use up the file descriptors,
    // and the directory's own files come before all others.
    for (const ustring8& subdirectory : subdirectories)
        get_directory_files(subdirectory, files);
}
void get_directory_files(const ustring16& directory, std::vector<ustring16>& files) {
    std::vector<ustring8> found;
    get_directory_files(strings::utf16_to_utf8(directory), found);
    for (const ustring8& file : found)
        files.push_back(strings::utf8_to_utf16(file));
}
void get_directory_files(const ustring32& directory, std::vector<ustring32>& files) {
    std::vector<ustring8> found;
    get_directory_files(strings::utf32_to_utf8(directory), found);
    for (const ustring8& file : found)
        files.push_back(strings::utf8_to_utf32(file));
}

std::vector<ustring8> list_directory(const ustring8& directory) {
    std::vector<ustring8> entries;
    const std::unique_ptr<DIR, directory_closer> stream(::opendir(directory.c_str()));
    if (stream == nullptr)
        return entries;
    ::rewinddir(stream.get());
    while (const dirent* entry = ::readdir(stream.get())) {
        if (is_self_or_parent(entry->d_name))
            continue;
        ustring8 path(directory);
        path.append("/").append(entry->d_name);
        entries.push_back(path);
    }
    return entries;
}
std::vector<ustring16> list_directory(const ustring16& directory) {
    std::vector<ustring16> entries;
    for (const ustring8& entry : list_directory(strings::utf16_to_utf8(directory)))
        entries.push_back(strings::utf8_to_utf16(entry));
    return entries;
}
std::vector<ustring32> list_directory(const ustring32& directory) {
    std::vector<ustring32> entries;
    for (const ustring8& entry : list_directory(strings::utf32_to_utf8(directory)))
        entries.push_back(strings::utf8_to_utf32(entry));
    return entries;
}

}  // namespace system
}  // namespace TOVA_2_18
