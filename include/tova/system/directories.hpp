/// Directories: making them and listing what they hold.
///
/// A path of any width goes to the system as UTF-8; one with a bad sequence becomes the text "-1".
#pragma once

#include <vector>

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace system {

/// Makes the directories of a path that ends in "/", each with the mode 0775. Answers whether the
/// last one was made; true at once if the whole path is a directory already.
///
/// Contract: what stands behind the last "/" isn't made, unless there is no "/" in the path at all.
/// A path that begins with "." or "/" is taken from behind its first "/"; if no other "/" follows,
/// the directory is made and the answer is false.
TOVA_API bool create_directory(const strings::ustring8& path);
TOVA_API bool create_directory(const strings::ustring16& path);
TOVA_API bool create_directory(const strings::ustring32& path);

/// Appends the paths of all readable files below a directory: first its own, then those of its
/// readable subdirectories one after the other, each in the order of the file system. Readable is
/// what has its owner's read permission. A directory that cannot be opened adds nothing.
///
/// Contract: links are followed and a cycle of them isn't noticed.
TOVA_API void get_directory_files(const strings::ustring8& directory,
                                  std::vector<strings::ustring8>& files);
TOVA_API void get_directory_files(const strings::ustring16& directory,
                                  std::vector<strings::ustring16>& files);
TOVA_API void get_directory_files(const strings::ustring32& directory,
                                  std::vector<strings::ustring32>& files);

/// The entries of a directory but "." and "..", as `directory`, "/" and the name, in the order of
/// the file system. Answers with nothing if the directory cannot be opened.
TOVA_API std::vector<strings::ustring8> list_directory(const strings::ustring8& directory);
TOVA_API std::vector<strings::ustring16> list_directory(const strings::ustring16& directory);
TOVA_API std::vector<strings::ustring32> list_directory(const strings::ustring32& directory);

}  // namespace system
}  // namespace TOVA_2_18
