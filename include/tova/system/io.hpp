/// @file
/// Single operations on files and directories.
///
///     using namespace tova;
///     const strings::ustring8 old_name("state.new");
///     if (system::io::is_file(old_name))
///         system::io::move(strings::ustring8("state"), old_name);  // the target comes first
///
/// A path of any width goes to the system as UTF-8. A 16- or 32-bit path that is not valid becomes
/// the name "-1". The tests follow links, and nothing here reports a failure.
///
/// Threads: nothing is shared and nothing is locked. Any number of threads may call these.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace system {
namespace io {

/// Whether anything exists at the path.
TOVA_API bool exists(const strings::ustring8& path);
TOVA_API bool exists(const strings::ustring16& path);
TOVA_API bool exists(const strings::ustring32& path);

/// Whether the path names a file. Contract: a single bit of the mode is tested, and a socket has it
/// as well.
TOVA_API bool is_file(const strings::ustring8& path);
TOVA_API bool is_file(const strings::ustring16& path);
TOVA_API bool is_file(const strings::ustring32& path);

/// Whether the path names a directory. Contract: a single bit of the mode is tested, and block
/// devices and sockets have it as well.
TOVA_API bool is_directory(const strings::ustring8& path);
TOVA_API bool is_directory(const strings::ustring16& path);
TOVA_API bool is_directory(const strings::ustring32& path);

/// Removes a file, a link or an empty directory.
TOVA_API void remove_file(const strings::ustring8& path);
TOVA_API void remove_file(const strings::ustring16& path);
TOVA_API void remove_file(const strings::ustring32& path);

/// Removes an empty directory and nothing else.
TOVA_API void remove_dir(const strings::ustring8& path);
TOVA_API void remove_dir(const strings::ustring16& path);
TOVA_API void remove_dir(const strings::ustring32& path);

/// Renames `source` to `target`, replacing a file of that name. The target comes first.
TOVA_API void move(const strings::ustring8& target, const strings::ustring8& source);
TOVA_API void move(const strings::ustring16& target, const strings::ustring16& source);
TOVA_API void move(const strings::ustring32& target, const strings::ustring32& source);

/// Never returns, and creates no directory: use `create_directory`.
///
/// Contract: the function calls itself until the stack is exhausted.
TOVA_API void mkdir(const strings::ustring8& path);
TOVA_API void mkdir(const strings::ustring16& path);
TOVA_API void mkdir(const strings::ustring32& path);

}  // namespace io
}  // namespace system
}  // namespace TOVA_2_18
