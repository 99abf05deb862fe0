#include "i18n/_private/xmc_source.hpp"

#include <tova/system/files.hpp>

#include <algorithm>
#include <cstddef>
#include <stdexcept>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

using strings::ustring8;

namespace {

const off_t largest_file = 0x7fffffff;  // bytes, the limit of `system::load_file`

bool is_same(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool is_same_directory(const ustring8& a, const ustring8& b) {
    struct stat status_a;
    struct stat status_b;
    return ::stat(a.c_str(), &status_a) == 0 && ::stat(b.c_str(), &status_b) == 0 &&
           is_same(status_a, status_b);
}

}  // namespace

xmc_source::xmc_source(const ustring8& path) : m_path(path), m_status(), m_exists(false) {
    if (::lstat(path.c_str(), &m_status) != 0)
        return;
    struct stat target;
    m_exists = !S_ISLNK(m_status.st_mode) || ::stat(path.c_str(), &target) == 0;
}

ustring8 xmc_source::directory() const {
    const auto separator = m_path.find_last_of("\\/");
    return separator == ustring8::npos ? ustring8("./") : ustring8(m_path, 0, separator + 1);
}

// Contract: the NUL byte is part of the parsed text, so the last token of a file is often a piece
// of text that contains it, and an XML error at the end may quote it.
//
// Contract: there is no check whether the file could be read. For a symbolic link, a directory, a
// pipe or an unreadable file only the NUL byte is parsed, and the error is the missing XML
// declaration. A failed system call never makes a load throw.
ustring8 xmc_source::read() const {
    ustring8 bytes;
    if (m_status.st_size < largest_file)
        bytes.reserve(static_cast<std::size_t>(m_status.st_size) + 1);  // the NUL byte fits, too
    try {
        system::load_file(m_path, bytes);
    } catch (const std::length_error&) {
        bytes.clear();  // a directory, a pipe, or a device without a size
    } catch (const std::runtime_error&) {
        bytes.clear();  // there is no way to find out whether the path is a link
    }
    bytes.push_back('\0');
    return bytes;
}

// The same file in the same directory would include the same files again and again. A file that
// is hard-linked into two directories counts as two files, since its relative includes resolve
// differently. A symbolic link is never found here: it reads as empty and includes nothing.
bool include_chain::has(const xmc_source& source) const {
    const auto same_files = m_sources.equal_range(source.identity());
    return std::any_of(same_files.first, same_files.second, [&source](const auto& outer) {
        return is_same_directory(source.directory(), outer.second->directory());
    });
}

void include_chain::remove(const xmc_source& source) {
    const auto same_files = m_sources.equal_range(source.identity());
    m_sources.erase(std::find_if(same_files.first, same_files.second,
                                 [&source](const auto& one) { return one.second == &source; }));
}

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
