/// Whole files, read and written as bytes.
///
/// A path of any width goes to the system as UTF-8; one with a bad sequence becomes the text "-1".
/// The content is bytes in any case, with a byte order mark still in front. Nothing is locked.
#pragma once

#include <string>

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace system {

/// Reads a whole file of less than 2 GiB. Returns 0, or 1 if the file is a symbolic link or cannot
/// be opened, and `content` is as before then. A read that fails behind the open isn't noticed: the
/// missing bytes are 0.
///
/// Contract: a link is refused whatever it points at, as the last component of the path. Links in
/// front of it are followed. Raises `boost::filesystem::filesystem_error` if that test itself fails
/// for another reason than a missing file, as with a folder that may not be searched, and
/// `std::length_error` for what has no size that can be told, such as most of /proc.
TOVA_API int load_file(const strings::ustring8& path, strings::ustring8& content);
TOVA_API int load_file(const strings::ustring16& path, strings::ustring8& content);
TOVA_API int load_file(const strings::ustring32& path, strings::ustring8& content);
TOVA_API int load_file(const strings::ustring8& path, std::string& content);
TOVA_API int load_file(const strings::ustring16& path, std::string& content);
TOVA_API int load_file(const strings::ustring32& path, std::string& content);

/// Makes or replaces a whole file with less than 2 GiB of content. Returns 0, or 1 if the file is a
/// symbolic link or cannot be opened. A write that fails behind the open isn't noticed. Links and
/// exceptions are as in `load_file`.
TOVA_API int store_file(const strings::ustring8& path, const strings::ustring8& content);
TOVA_API int store_file(const strings::ustring16& path, const strings::ustring8& content);
TOVA_API int store_file(const strings::ustring32& path, const strings::ustring8& content);

/// Whether there is a file or directory with the read permission of its owner, whoever asks. Links
/// are followed. Never fails.
TOVA_API bool have_read_access(const strings::ustring8& path);
TOVA_API bool have_read_access(const strings::ustring16& path);
TOVA_API bool have_read_access(const strings::ustring32& path);

}  // namespace system
}  // namespace TOVA_2_18
