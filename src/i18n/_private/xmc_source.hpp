/// @file
/// The first stage of a load: a file on disk, its bytes, and the files whose includes led to it.
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
    // A file, and the one that includes it or null. Both arguments outlive the source. The file
    // system is asked once here, and a second time only for a symbolic link.
    xmc_source(const strings::ustring8& path, const xmc_source* includer);

    // Whether the path leads to anything, links followed.
    bool exists() const { return m_exists; }

    // Whether one of the files that led here is this very file, however the paths are spelled. The
    // file must exist.
    bool is_included_by_itself() const;

    // The path up to and with its last "/" or "\", and "./" without one. Relative includes start
    // from here.
    strings::ustring8 directory() const;

    // The bytes of the file, followed by one NUL byte. What can't be read counts as empty.
    strings::ustring8 read() const;

private:
    const strings::ustring8& m_path;
    const xmc_source* m_includer;
    struct stat m_status;  // of the path itself, a link not followed
    bool m_exists;
};

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
