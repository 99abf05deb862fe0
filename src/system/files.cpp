// The 8-bit form of each operation does the work, in the published order: test for a link, open,
// and then steps that report no errors. The other two forms convert the path to UTF-8.
#include <tova/system/files.hpp>

#include <tova/strings/unicode.hpp>

#include "system/file_status.hpp"

#include <algorithm>
#include <fstream>

namespace TOVA_2_18 {
namespace system {

using strings::ustring16;
using strings::ustring32;
using strings::ustring8;

namespace {

const int success = 0;
const int failure = 1;

const mode_t owner_may_read = 0x100;  // Contract: the owner's permission bit, whoever the caller is

int load(const ustring8& path, std::string& content) {
    if (detail::is_symbolic_link(path))
        return failure;
    std::ifstream file(path.c_str(), std::ios::binary);
    if (!file.is_open())
        return failure;

    // Contract: the size passes through a 32-bit `int`. A position of -1, which an unseekable file
    // reports, or a size of 2 GiB or more becomes a huge length that the string rejects.
    file.seekg(0, std::ios::end);
    const std::streamoff end = file.tellg();
    content.assign(static_cast<std::string::size_type>(static_cast<int>(end)), '\0');
    file.seekg(0, std::ios::beg);
    // Only for a file of 4 GiB or more, which is out of range anyway, is the content shorter than
    // the file; the read must not go past its end.
    file.read(&content[0], std::min(end, static_cast<std::streamoff>(content.size())));
    file.close();
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
    std::ofstream file(path.c_str(), std::ios::binary);
    if (!file.is_open())
        return failure;
    // Contract: the size passes through 32 bits, so content of 2 GiB or more isn't written.
    file.write(content.data(), static_cast<int>(content.size()));
    file.close();
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
