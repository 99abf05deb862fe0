/// @file
/// Files opened with system calls. A stream cannot be told not to wait for a pipe or not to follow
/// a link, and it swallows `std::bad_alloc`.
///
/// An object belongs to one thread.
#pragma once

#include <tova/strings/ustring.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace TOVA_2_18 {
namespace system {
namespace detail {

/// A file that is open during one call. A terminal does not become the controlling terminal of the
/// process.
class open_file {
public:
    /// Opens the path with flags of the system call. `O_NOFOLLOW` rejects a link, even if the path
    /// has become one since a check, and `O_NONBLOCK` does not wait for the writer of a pipe.
    open_file(const strings::ustring8& path, int flags)
        : m_descriptor(::open(path.c_str(), flags | O_NOCTTY | O_CLOEXEC, 0666)) {}
    ~open_file() {
        if (is_open())
            ::close(m_descriptor);
    }
    open_file(const open_file&) = delete;
    open_file& operator=(const open_file&) = delete;

    bool is_open() const { return m_descriptor != -1; }

    /// The position of the end, or -1 for a file without positions.
    off_t end() const { return ::lseek(m_descriptor, 0, SEEK_END); }

    /// Reads up to `size` bytes from the start. Returns the number of bytes before the end or an
    /// error.
    std::size_t read(char* bytes, std::size_t size) const {
        return transfer(size, [this, bytes](std::size_t done, std::size_t rest) {
            return ::pread(m_descriptor, bytes + done, rest, static_cast<off_t>(done));
        });
    }

    /// Writes up to `size` bytes, until an error.
    void write(const char* bytes, std::size_t size) const {
        transfer(size, [this, bytes](std::size_t done, std::size_t rest) {
            return ::write(m_descriptor, bytes + done, rest);
        });
    }

private:
    // Calls `step(done, rest)`, which returns the number of bytes that it transferred, until
    // nothing is left.
    template <typename Step>
    std::size_t transfer(std::size_t size, Step step) const {
        std::size_t done = 0;
        while (done != size) {
            const ssize_t count = step(done, size - done);
            if (count > 0)
                done += static_cast<std::size_t>(count);
            else if (count == 0 || errno != EINTR)
                break;
        }
        return done;
    }

    int m_descriptor;
};

}  // namespace detail
}  // namespace system
}  // namespace TOVA_2_18
