/// @file
/// The first stage of a load: a file on disk, its bytes, and the chain of files that include it.
///
/// Sources and chains belong to the thread of their load.
#pragma once

#include <tova/strings/ustring.hpp>

#include <sys/stat.h>

#include <map>
#include <utility>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

class xmc_source {
public:
    // The path must outlive the source. The constructor queries the file system once, and a second
    // time only for a symbolic link.
    explicit xmc_source(const strings::ustring8& path);

    // Whether the path exists, following links.
    bool exists() const { return m_exists; }

    // The identity of the file, if it exists.
    std::pair<dev_t, ino_t> identity() const { return {m_status.st_dev, m_status.st_ino}; }

    // The path up to and including its last "/" or "\", or "./" if it has neither. Relative
    // includes start from here.
    strings::ustring8 directory() const;

    // The bytes of the file, followed by one NUL byte. A file that can't be read counts as empty.
    strings::ustring8 read() const;

private:
    const strings::ustring8& m_path;
    struct stat m_status;  // of the path itself, without following a link
    bool m_exists;
};

// The files that are being read, each of which includes the next. They are looked up by identity,
// so that a file costs the same in a long chain as in a short one.
class include_chain {
public:
    // Whether this file is already part of the chain, however the paths are spelled. It must exist.
    bool has(const xmc_source& source) const;

    // The source must stay where it is until it is removed.
    void add(const xmc_source& source) { m_sources.emplace(source.identity(), &source); }
    void remove(const xmc_source& source);

private:
    std::multimap<std::pair<dev_t, ino_t>, const xmc_source*> m_sources;
};

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
