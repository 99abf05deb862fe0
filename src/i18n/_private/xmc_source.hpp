/// @file
/// The first stage of a load: a file on disk, its bytes, and the chain of files that include it.
///
/// The chain of sources lives on the stack of one load and belongs to its thread.
#pragma once

#include <tova/strings/ustring.hpp>

#include <sys/stat.h>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

class xmc_source {
public:
    // A file, and the file that includes it, or null. Both arguments must outlive the source. The
    // constructor queries the file system once, and a second time only for a symbolic link.
    xmc_source(const strings::ustring8& path, const xmc_source* includer);

    // Whether the path exists, following links.
    bool exists() const { return m_exists; }

    // Whether this file is already part of the chain of includes, however the paths are spelled.
    // The file must exist.
    bool is_included_by_itself() const;

    // The path up to and including its last "/" or "\", or "./" if it has neither. Relative
    // includes start from here.
    strings::ustring8 directory() const;

    // The bytes of the file, followed by one NUL byte. A file that can't be read counts as empty.
    strings::ustring8 read() const;

private:
    const strings::ustring8& m_path;
    const xmc_source* m_includer;
    struct stat m_status;  // of the path itself, without following a link
    bool m_exists;
};

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
