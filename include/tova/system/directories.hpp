/// @file
/// Creating directories, and listing what they contain.
///
///     using namespace tova;
///     system::create_directory(strings::ustring8("state/cache/"));  // mind the last "/"
///     std::vector<strings::ustring8> files;
///     system::get_directory_files(strings::ustring8("catalogs"), files);
///
/// A path of any width goes to the system as UTF-8. A 16- or 32-bit path that is not valid becomes
/// the name "-1".
///
/// Threads: nothing is shared and nothing is locked. Any number of threads may call these, and the
/// file system may change between any two of their steps.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

#include <vector>

namespace TOVA_2_18 {
namespace system {

/// Creates the directories of a path, each with mode 0775, and returns whether the last attempt
/// succeeded. Returns true at once if the whole path is a directory already.
///
/// Contract: a directory is created for each "/" from left to right, so what follows the last "/"
/// is left out: "a/b" creates a alone and returns true. Without any "/" the whole path is created.
///
/// Contract: in a path that begins with "." or "/" the first "/" doesn't count. If no other "/"
/// follows, the whole path is tried. If the path has a "/" at all, the part before the first one is
/// tried next, and that second attempt decides:
///
///     path             creates       returns
///     ".h"             .h            true, since there is no second attempt
///     ".i/"            .i            false, since .i exists by then
///     "./one" "/one"   one           false
///     "..a/b"          ..a alone     true; a second call creates b and returns false
///
/// A path that begins with "./" or "/" and ends in "/" has none of these surprises: write "./.i/"
/// and "./..a/b/".
TOVA_API bool create_directory(const strings::ustring8& path);
TOVA_API bool create_directory(const strings::ustring16& path);
TOVA_API bool create_directory(const strings::ustring32& path);

/// Appends the paths of all readable files below a directory: its own files first, then those of
/// each readable subdirectory, all in the order of the file system. An entry is readable if its
/// owner has read permission. A directory that cannot be opened adds nothing.
///
/// Contract: links are followed, and a cycle of links is not detected. One link to its own
/// directory lists it about 40 times; two of them take exponential time, practically forever.
/// For trees that others may write to, use `list_directory` and skip links.
TOVA_API void get_directory_files(const strings::ustring8& directory,
                                  std::vector<strings::ustring8>& files);
TOVA_API void get_directory_files(const strings::ustring16& directory,
                                  std::vector<strings::ustring16>& files);
TOVA_API void get_directory_files(const strings::ustring32& directory,
                                  std::vector<strings::ustring32>& files);

/// The entries of a directory except "." and "..", each as `directory`, "/" and its name, in the
/// order of the file system. Empty if the directory cannot be opened.
TOVA_API std::vector<strings::ustring8> list_directory(const strings::ustring8& directory);
TOVA_API std::vector<strings::ustring16> list_directory(const strings::ustring16& directory);
TOVA_API std::vector<strings::ustring32> list_directory(const strings::ustring32& directory);

}  // namespace system
}  // namespace TOVA_2_18
