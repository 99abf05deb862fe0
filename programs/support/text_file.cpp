#include "support/text_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <system_error>

namespace tova_programs {

namespace {

[[noreturn]] void fail(const std::string& path) {
    throw file_error(path + ": " + std::generic_category().message(errno));
}

// Closes the descriptor at the end of its scope.
class descriptor {
public:
    explicit descriptor(int number) : m_number(number) {}
    ~descriptor() { close(m_number); }
    descriptor(const descriptor&) = delete;
    descriptor& operator=(const descriptor&) = delete;

    int number() const { return m_number; }

private:
    int m_number;
};

bool write_all(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

// The file that a symbolic link leads to, or the path itself.
std::string target_of(const std::string& path) {
    char* const resolved = ::realpath(path.c_str(), nullptr);
    if (resolved == nullptr)
        return path;
    std::string target = resolved;
    std::free(resolved);
    return target;
}

// A device or a pipe. Replacing it by a file would take it away from everybody else.
bool is_special(const std::string& path) {
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) &&
           !S_ISDIR(status.st_mode);
}

mode_t mode_for(const std::string& path) {
    struct stat status;
    if (::stat(path.c_str(), &status) == 0)
        return status.st_mode & 07777;
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

}  // namespace

std::string read_file(const std::string& path) {
    const descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status;
    if (file.number() < 0 || ::fstat(file.number(), &status) != 0)
        fail(path);
    if (S_ISDIR(status.st_mode)) {
        errno = EISDIR;
        fail(path);
    }
    std::string bytes(static_cast<std::size_t>(std::max<off_t>(status.st_size, 0)), '\0');
    std::size_t filled = 0;
    for (;;) {
        if (filled == bytes.size())
            bytes.resize(filled + 4096);  // a pipe has no size, and a file may have grown
        const ssize_t count = ::read(file.number(), &bytes[filled], bytes.size() - filled);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            fail(path);
        if (count == 0)
            break;
        filled += static_cast<std::size_t>(count);
    }
    bytes.resize(filled);
    return bytes;
}

void write_file(const std::string& path, std::string_view bytes) {
    const std::string target = target_of(path);
    if (is_special(target)) {
        const descriptor file(::open(target.c_str(), O_WRONLY | O_CLOEXEC));
        if (file.number() < 0 || !write_all(file.number(), bytes))
            fail(path);
        return;
    }
    std::string fresh = target + ".XXXXXX";
    const int number = ::mkstemp(&fresh[0]);
    if (number < 0)
        fail(path);
    bool is_written = false;
    {
        const descriptor file(number);
        is_written = write_all(number, bytes) && ::fchmod(number, mode_for(target)) == 0 &&
                     ::fsync(number) == 0;
    }
    if (is_written && ::rename(fresh.c_str(), target.c_str()) == 0)
        return;
    const int reason = errno;
    ::unlink(fresh.c_str());
    errno = reason;
    fail(path);
}

line_index::line_index(std::string_view text) : m_text(text), m_begins(1, 0) {
    for (std::size_t feed = text.find('\n'); feed != text.npos; feed = text.find('\n', feed + 1))
        m_begins.push_back(feed + 1);
}

text_place line_index::at(std::size_t offset) const {
    const auto after = std::upper_bound(m_begins.begin(), m_begins.end(), offset);
    text_place place;
    place.line = static_cast<std::size_t>(after - m_begins.begin());
    place.column = offset - *(after - 1) + 1;
    return place;
}

std::string_view line_index::line(std::size_t number) const {
    if (number == 0 || number > m_begins.size())
        return {};
    const std::size_t begin = m_begins[number - 1];
    std::size_t end = number == m_begins.size() ? m_text.size() : m_begins[number] - 1;
    if (end > begin && m_text[end - 1] == '\r')
        --end;
    return m_text.substr(begin, end - begin);
}

}  // namespace tova_programs
