// The 8-bit form of each operation is one system call. The other two convert the path to UTF-8,
// which turns an invalid path into the name "-1".
#include <tova/system/io.hpp>

#include <tova/strings/unicode.hpp>

#include "system/file_status.hpp"

#include <cstdio>

#include <sys/stat.h>
#include <unistd.h>

namespace TOVA_2_18 {
namespace system {
namespace io {

using strings::ustring16;
using strings::ustring32;
using strings::ustring8;

namespace {

// Contract: these are single bits of the file type and not whole types, so each is set for more
// than one kind of file: a socket (0xC000) has both, a block device (0x6000) has the second.
const mode_t file_bit = 0x8000;
const mode_t directory_bit = 0x4000;

// Contract: the operations report nothing, whatever the system returns.
void ignore(int) {}

}  // namespace

bool exists(const ustring8& path) {
    return detail::has_mode_bits(path, 0);
}
bool exists(const ustring16& path) {
    return exists(strings::utf16_to_utf8(path));
}
bool exists(const ustring32& path) {
    return exists(strings::utf32_to_utf8(path));
}

bool is_file(const ustring8& path) {
    return detail::has_mode_bits(path, file_bit);
}
bool is_file(const ustring16& path) {
    return is_file(strings::utf16_to_utf8(path));
}
bool is_file(const ustring32& path) {
    return is_file(strings::utf32_to_utf8(path));
}

bool is_directory(const ustring8& path) {
    return detail::has_mode_bits(path, directory_bit);
}
bool is_directory(const ustring16& path) {
    return is_directory(strings::utf16_to_utf8(path));
}
bool is_directory(const ustring32& path) {
    return is_directory(strings::utf32_to_utf8(path));
}

void remove_file(const ustring8& path) {
    ignore(std::remove(path.c_str()));
}
void remove_file(const ustring16& path) {
    remove_file(strings::utf16_to_utf8(path));
}
void remove_file(const ustring32& path) {
    remove_file(strings::utf32_to_utf8(path));
}

void remove_dir(const ustring8& path) {
    ignore(::rmdir(path.c_str()));
}
void remove_dir(const ustring16& path) {
    remove_dir(strings::utf16_to_utf8(path));
}
void remove_dir(const ustring32& path) {
    remove_dir(strings::utf32_to_utf8(path));
}

void move(const ustring8& target, const ustring8& source) {
    ignore(std::rename(source.c_str(), target.c_str()));
}
void move(const ustring16& target, const ustring16& source) {
    move(strings::utf16_to_utf8(target), strings::utf16_to_utf8(source));
}
void move(const ustring32& target, const ustring32& source) {
    move(strings::utf32_to_utf8(target), strings::utf32_to_utf8(source));
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winfinite-recursion"

// Contract: the operation calls itself until the stack is exhausted. The copies live across the
// call, which keeps the compiler from turning the recursion into a loop.
void mkdir(const ustring8& path) {
    const ustring8 copy(path);  // NOLINT(performance-unnecessary-copy-initialization)
    mkdir(ustring8(copy.c_str()));
}

#pragma GCC diagnostic pop

void mkdir(const ustring16& path) {
    const ustring8 copy(strings::utf16_to_utf8(path));
    mkdir(ustring8(copy.c_str()));
}
void mkdir(const ustring32& path) {
    const ustring8 copy(strings::utf32_to_utf8(path));
    mkdir(ustring8(copy.c_str()));
}

}  // namespace io
}  // namespace system
}  // namespace TOVA_2_18
