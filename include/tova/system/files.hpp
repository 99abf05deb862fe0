/// @file
/// Whole files, read and written as bytes.
///
///     tova::strings::ustring8 content;
///     if (tova::system::load_file(tova::strings::ustring8("notes.txt"), content) == 0)
///         tova::system::store_file(tova::strings::ustring8("copy.txt"), content);
///
/// A path of any width goes to the system as UTF-8. A 16- or 32-bit path that is not valid becomes
/// the name "-1". The content is bytes, never converted, with a byte order mark still at its start.
///
/// Threads: nothing is shared and nothing is locked. Any number of threads may call these; two that
/// write the same file mix their bytes.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

#include <string>

namespace TOVA_2_18 {
namespace system {

/// Reads a whole file of less than 2 GiB. Returns 0, or 1 if the file is a symbolic link or cannot
/// be opened; `content` is unchanged then. A read that fails after the open is not noticed: the
/// missing bytes are 0.
///
/// Contract: the size passes through a 32-bit `int`. From 2 GiB on, that raises
/// `std::length_error`. From 4 GiB on, only the low 32 bits count: 4 GiB and 10 bytes load as 10
/// bytes, and 5 GiB as 1 GiB, with the result 0.
///
/// Contract: a path whose last component is a symbolic link is refused, whatever the link points
/// to. Links before it are followed. Raises `boost::filesystem::filesystem_error` if the test for a
/// link fails for a reason other than a missing file, such as a folder that may not be searched.
/// Raises `std::length_error` for a file without a known size, such as most of /proc, a pipe or a
/// terminal; the call never blocks on these. `content` is unchanged after any exception, including
/// `std::bad_alloc`.
TOVA_API int load_file(const strings::ustring8& path, strings::ustring8& content);
TOVA_API int load_file(const strings::ustring16& path, strings::ustring8& content);
TOVA_API int load_file(const strings::ustring32& path, strings::ustring8& content);
TOVA_API int load_file(const strings::ustring8& path, std::string& content);
TOVA_API int load_file(const strings::ustring16& path, std::string& content);
TOVA_API int load_file(const strings::ustring32& path, std::string& content);

/// Creates or replaces a file with less than 2 GiB of content. Of a larger content, only as many
/// bytes are written as the low 32 bits of its size say, and none if these are negative as an
/// `int`. Returns 0, or 1 if the path is a symbolic link or cannot be opened. A write that fails
/// after the open is not noticed: the file is then cut short, because opening it removes its old
/// content. Links and `boost::filesystem::filesystem_error` are handled as in `load_file`. A pipe
/// is written, and the call waits for a reader.
TOVA_API int store_file(const strings::ustring8& path, const strings::ustring8& content);
TOVA_API int store_file(const strings::ustring16& path, const strings::ustring8& content);
TOVA_API int store_file(const strings::ustring32& path, const strings::ustring8& content);

/// Whether the owner of a file or directory has read permission for it, whoever asks. False for a
/// missing one. Links are followed. Never fails.
TOVA_API bool have_read_access(const strings::ustring8& path);
TOVA_API bool have_read_access(const strings::ustring16& path);
TOVA_API bool have_read_access(const strings::ustring32& path);

}  // namespace system
}  // namespace TOVA_2_18
