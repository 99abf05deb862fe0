/// Single operations of the file system.
///
/// A path of any width goes to the system as UTF-8; one with a bad sequence becomes the text "-1".
/// Nothing here reports a failure. Tests follow links.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace system {
namespace io {

/// Whether the path leads to anything.
TOVA_API bool exists(const strings::ustring8& path);
TOVA_API bool exists(const strings::ustring16& path);
TOVA_API bool exists(const strings::ustring32& path);

/// Whether the path leads to a file. Contract: one bit of the mode is tested, and a socket has it
/// as well.
TOVA_API bool is_file(const strings::ustring8& path);
TOVA_API bool is_file(const strings::ustring16& path);
TOVA_API bool is_file(const strings::ustring32& path);

/// Whether the path leads to a directory. Contract: one bit of the mode is tested, and block
/// devices and sockets have it as well.
TOVA_API bool is_directory(const strings::ustring8& path);
TOVA_API bool is_directory(const strings::ustring16& path);
TOVA_API bool is_directory(const strings::ustring32& path);

/// Removes a file or a link, and a directory if it is empty.
TOVA_API void remove_file(const strings::ustring8& path);
TOVA_API void remove_file(const strings::ustring16& path);
TOVA_API void remove_file(const strings::ustring32& path);

/// Removes an empty directory, and nothing else.
TOVA_API void remove_dir(const strings::ustring8& path);
TOVA_API void remove_dir(const strings::ustring16& path);
TOVA_API void remove_dir(const strings::ustring32& path);

/// Renames `source` to `target`, replacing a file of that name. The target stands first.
TOVA_API void move(const strings::ustring8& target, const strings::ustring8& source);
TOVA_API void move(const strings::ustring16& target, const strings::ustring16& source);
TOVA_API void move(const strings::ustring32& target, const strings::ustring32& source);

/// Contract: makes no directory and never returns; it calls itself until the stack is used up. The
/// operation that makes directories is `create_directory`.
TOVA_API void mkdir(const strings::ustring8& path);
TOVA_API void mkdir(const strings::ustring16& path);
TOVA_API void mkdir(const strings::ustring32& path);

}  // namespace io
}  // namespace system
}  // namespace TOVA_2_18
