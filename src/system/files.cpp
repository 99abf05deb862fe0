// The 8-bit form of each operation does the work; the other two forms convert the path to UTF-8. A
// link is rejected before anything else is done: writing checks for a link, and reading opens the
// file in a way that fails for a link. The steps after opening report no errors.
#include <tova/system/files.hpp>

#include <tova/strings/unicode.hpp>

#include "strings/unfilled.hpp"
#include "system/file_status.hpp"
#include "system/open_file.hpp"

#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace TOVA_2_18 {
namespace system {

using strings::ustring16;
using strings::ustring32;
using strings::ustring8;

namespace {

const int success = 0;
const int failure = 1;

const mode_t owner_may_read = 0x100;  // Contract: the owner's permission bit, whoever the caller is

// The C library maps blocks of more than this for themselves, and unmaps them when they are freed.
const std::size_t largest_shared_block = 32 << 20;

// Large pages for a new string that is about to be filled: most of the time for a huge file is
// spent in the faults of its pages. The kernel may refuse, which changes nothing.
void prefer_large_pages(char* bytes, std::size_t size) {
#if defined(MADV_HUGEPAGE)
    if (size <= largest_shared_block)
        return;
    const std::size_t page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    const std::size_t skipped = (page - reinterpret_cast<std::uintptr_t>(bytes) % page) % page;
    const int caller_errno = errno;
    ::madvise(bytes + skipped, (size - skipped) / page * page, MADV_HUGEPAGE);
    errno = caller_errno;
#else
    static_cast<void>(bytes);
    static_cast<void>(size);
#endif
}

int load(const ustring8& path, std::string& content) {
    // A pipe can be opened without a writer. It has no size, so nothing is read from it.
    const detail::open_file file(path, O_RDONLY | O_NONBLOCK | O_NOFOLLOW);
    if (!file.is_open()) {
        // Contract: raises for a path whose status cannot be read.
        detail::is_symbolic_link(path);
        return failure;
    }

    // Contract: the size passes through a 32-bit `int`. A position of -1, which an unseekable file
    // reports, or a size of 2 GiB or more becomes a huge length that the string rejects.
    const int size = static_cast<int>(file.end());
    if (size < 0) {
        content.assign(static_cast<std::string::size_type>(size), '\0');
        return failure;  // never reached
    }
    // A string that is too small is replaced only after the new one is allocated, so it is
    // unchanged if memory runs out.
    const std::size_t room = static_cast<std::size_t>(size);
    std::string larger;
    std::string& target = content.capacity() < room ? larger : content;
    target.clear();
    const bool is_new = &target == &larger;
    strings::detail::append_unfilled(target, room, [&file, room, is_new](char* bytes) {
        if (is_new)
            prefer_large_pages(bytes, room);
        // Bytes that cannot be read are zeros: the file has become shorter, or it is a directory.
        const std::size_t done = file.read(bytes, room);
        std::memset(bytes + done, 0, room - done);
        return room;
    });
    if (is_new)
        content.swap(larger);
    return success;
}

}  // namespace

int load_file(const ustring8& path, ustring8& content) {
    return load(path, content);
}
int load_file(const ustring16& path, ustring8& content) {
    return load(strings::utf16_to_utf8(path), content);
}
int load_file(const ustring32& path, ustring8& content) {
    return load(strings::utf32_to_utf8(path), content);
}

int load_file(const ustring8& path, std::string& content) {
    return load(path, content);
}
int load_file(const ustring16& path, std::string& content) {
    return load(strings::utf16_to_utf8(path), content);
}
int load_file(const ustring32& path, std::string& content) {
    return load(strings::utf32_to_utf8(path), content);
}

int store_file(const ustring8& path, const ustring8& content) {
    if (detail::is_symbolic_link(path))
        return failure;
    const detail::open_file file(path, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW);
    if (!file.is_open())
        return failure;
    // Contract: the size passes through a 32-bit `int`. Content of 2 GiB or more isn't written. Of
    // 4 GiB or more, only as many bytes are written as the low 32 bits of the size say.
    const int size = static_cast<int>(content.size());
    file.write(content.data(), static_cast<std::size_t>(std::max(size, 0)));
    return success;
}
int store_file(const ustring16& path, const ustring8& content) {
    return store_file(strings::utf16_to_utf8(path), content);
}
int store_file(const ustring32& path, const ustring8& content) {
    return store_file(strings::utf32_to_utf8(path), content);
}

bool have_read_access(const ustring8& path) {
    return detail::has_mode_bits(path, owner_may_read);
}
bool have_read_access(const ustring16& path) {
    return have_read_access(strings::utf16_to_utf8(path));
}
bool have_read_access(const ustring32& path) {
    return have_read_access(strings::utf32_to_utf8(path));
}

}  // namespace system
}  // namespace TOVA_2_18
