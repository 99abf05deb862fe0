/// @file
/// Reads and replaces whole files for the add-ons, and says why an operation failed.
///
///     const file_status stored = store_atomically("state.dat", bytes);
///     if (!stored)
///         std::cerr << "state.dat: " << stored.message << '\n';
///
/// Threads share nothing here. If two threads store the same file at the same time, the file has
/// one of the two contents afterwards, complete.
#pragma once

#include <tova/abi.hpp>

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>

namespace TOVA_2_18 {
namespace extras {
namespace _private {

/// The result of an operation on a file. An empty message means success.
struct file_status {
    std::string message;  ///< What failed, and why: "cannot open: No such file or directory".
    int number;           ///< The `errno` of the failure, or 0.

    /// Whether the operation succeeded. Never fails.
    explicit operator bool() const { return message.empty(); }
};

inline file_status file_failure(const char* what, int number) {
    return {std::string(what) + ": " + std::generic_category().message(number), number};
}

// Closes a file at the end of its scope.
class file_descriptor {
public:
    explicit file_descriptor(int number) : m_number(number) {}
    ~file_descriptor() {
        if (m_number >= 0)
            ::close(m_number);
    }
    file_descriptor(const file_descriptor&) = delete;
    file_descriptor& operator=(const file_descriptor&) = delete;

    int number() const { return m_number; }
    int close() {
        const int result = ::close(m_number);
        m_number = -1;
        return result;
    }

private:
    int m_number;
};

/// Reads a whole file into `bytes`, which is unchanged after a failure. Links are followed. Only
/// regular files are read, because a pipe or terminal could block.
inline file_status read_whole(const std::string& path, std::string& bytes) {
    const file_descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file.number() < 0)
        return file_failure("cannot open", errno);
    struct stat status;
    if (::fstat(file.number(), &status) != 0)
        return file_failure("cannot open", errno);
    if (!S_ISREG(status.st_mode))
        return {"not a regular file", 0};

    std::string content;
    content.reserve(static_cast<std::size_t>(status.st_size) + 1);
    char block[16384];
    for (;;) {
        const ssize_t count = ::read(file.number(), block, sizeof block);
        if (count == 0)
            break;
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return file_failure("cannot read", errno);
        content.append(block, static_cast<std::size_t>(count));
    }
    bytes.swap(content);
    return {std::string(), 0};
}

// The new file, next to the one that it replaces. It is removed at the end of the scope unless it
// was renamed.
class file_beside {
public:
    file_beside(const std::string& directory, mode_t mode) : m_file(create(directory, mode)) {}
    ~file_beside() {
        if (!m_is_renamed && m_file.number() >= 0)
            ::unlink(m_path.c_str());
    }
    file_beside(const file_beside&) = delete;
    file_beside& operator=(const file_beside&) = delete;

    const std::string& path() const { return m_path; }
    int number() const { return m_file.number(); }

    // Returns false and sets `errno` if the bytes could not be written and synced to the disk.
    bool write(const std::string& bytes) {
        for (std::size_t done = 0; done < bytes.size();) {
            const ssize_t count =
                ::write(m_file.number(), bytes.data() + done, bytes.size() - done);
            if (count < 0 && errno != EINTR)
                return false;
            if (count > 0)
                done += static_cast<std::size_t>(count);
        }
        return ::fsync(m_file.number()) == 0;
    }

    bool rename(const std::string& target) {
        m_is_renamed = std::rename(m_path.c_str(), target.c_str()) == 0;
        return m_is_renamed;
    }

private:
    // The name is short and does not depend on the target's, whose length may be at the limit.
    int create(const std::string& directory, mode_t mode) {
        static std::atomic<unsigned> s_counter(0);
        for (int attempt = 0; attempt < 100; ++attempt) {
            m_path = directory + ".tova-" + std::to_string(::getpid()) + '-' +
                     std::to_string(++s_counter) + ".tmp";
            const int number =
                ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
            if (number >= 0 || errno != EEXIST)
                return number;
        }
        return -1;
    }

    std::string m_path;
    file_descriptor m_file;
    bool m_is_renamed = false;
};

// Returns the target of a link, or the path itself. For a broken link it returns an empty string
// and sets `errno`.
inline std::string link_target(const std::string& path) {
    struct stat status;
    if (::lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode))
        return path;
    char* const resolved = ::realpath(path.c_str(), nullptr);
    if (resolved == nullptr)
        return std::string();
    const std::string target(resolved);
    ::free(resolved);
    return target;
}

// Writes the entries of a directory to the disk. File systems that cannot do so report EINVAL.
inline bool sync_directory(const std::string& directory) {
    const file_descriptor file(
        ::open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return file.number() >= 0 && (::fsync(file.number()) == 0 || errno == EINVAL);
}

/// Replaces a file, or creates it: at any moment, and after a crash, the path leads to either the
/// old or the new content.
///
/// The bytes are written to a new file in the same directory and synced; `check(path_of_that_file)`
/// may reject it with a message; then it is renamed, and the directory is synced. The mode of an
/// existing file is kept, and so are its owner and group if the process has permission. Access
/// control lists and other hard links are not kept. If the path is a link, the file that it leads
/// to is replaced.
template <typename Check>
file_status store_atomically(const std::string& path, const std::string& bytes, Check check) {
    if (path.empty())
        return {"the path is empty", ENOENT};
    const std::string target = link_target(path);
    if (target.empty())
        return file_failure("cannot follow the link", errno);
    struct stat existing;
    const bool exists = ::stat(target.c_str(), &existing) == 0;
    if (!exists && errno != ENOENT)
        return file_failure("cannot write", errno);
    if (exists && !S_ISREG(existing.st_mode))
        return {"not a regular file", 0};

    const std::string directory = target.substr(0, target.rfind('/') + 1);
    file_beside file(directory, exists ? 0600 : 0666);
    if (file.number() < 0)
        return file_failure("cannot create a file beside it", errno);
    if (exists) {
        // Only root may change the owner; for other users the new file is their own.
        const bool is_given = ::fchown(file.number(), existing.st_uid, existing.st_gid) == 0;
        const mode_t permissions = is_given ? 07777 : 0777;
        if (::fchmod(file.number(), existing.st_mode & permissions) != 0)
            return file_failure("cannot set the mode of the new file", errno);
    }
    if (!file.write(bytes))
        return file_failure("cannot write", errno);
    const std::string refusal = check(file.path());
    if (!refusal.empty())
        return {refusal, 0};
    if (!file.rename(target))
        return file_failure("cannot replace the file", errno);
    if (!sync_directory(directory))
        return file_failure("replaced, but the directory cannot be synced", errno);
    return {std::string(), 0};
}

inline file_status store_atomically(const std::string& path, const std::string& bytes) {
    return store_atomically(path, bytes, [](const std::string&) { return std::string(); });
}

}  // namespace _private
}  // namespace extras
}  // namespace TOVA_2_18
