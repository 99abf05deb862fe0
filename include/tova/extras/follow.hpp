/// @file
/// Reads a growing XML log as events: the starts, texts and ends of elements.
///
///     tova::extras::xml_follower log("service.log.xml");
///     tova::extras::follow_event event;
///     while (log.next(event))                                   // waits; false after stop()
///         if (event.kind == tova::extras::follow_event::start && event.name == "entry")
///             std::cout << event.line << ": " << event.attribute("level") << '\n';
///
/// A follower waits for changes with inotify, not with a timer. When the log is rotated (renamed
/// and created again, replaced, or truncated), it continues with the new file. It holds back
/// whatever the writer has not finished, so the events do not depend on how the writer splits its
/// output.
///
/// It passes only complete constructs to `parser::xml_stream_parser`, in a form that the parser
/// reads without loss. So names may contain `:`, `-` and `.`, and text may be of any size, in
/// several pieces, in CDATA sections, and directly in the root. The events of a child of the root
/// arrive when it closes.
///
/// A follower belongs to one thread at a time, except for `stop`.
#pragma once

#include <tova/abi.hpp>
#include <tova/extras/_private/follow_document.hpp>
#include <tova/extras/follow_event.hpp>
#include <tova/strings/ustring.hpp>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <string>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace TOVA_2_18 {
namespace extras {

/// Follows an XML file that another process is writing.
///
/// After an error in the document there are no more events until the file is rotated. If
/// `resume_at` lists names of elements, the follower resumes at the next start tag of one of them,
/// as a child of the root, or at the end tag of the root. It abandons the elements that were open
/// inside the root.
///
/// The file need not exist yet. On network file systems, inotify does not report writes by other
/// machines: call `poll` from time to time there. A follower keeps a temporary file in `$TMPDIR` or
/// `/tmp`, and needs memory for one child of the root.
class xml_follower {
public:
    /// Follows the file `path`. Raises `std::system_error` if its directory cannot be watched
    /// or no temporary file can be made.
    explicit xml_follower(const std::string& path, const std::vector<strings::ustring8>& resume_at =
                                                       std::vector<strings::ustring8>())
        : m_path(path), m_resume_at(resume_at),
          m_stop(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd"),
          m_inotify(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK), "inotify") {
        const std::size_t slash = path.rfind('/');
        const std::string folder = slash == std::string::npos ? "."
                                   : slash == 0               ? "/"
                                                              : path.substr(0, slash);
        if (::inotify_add_watch(m_inotify.get(), folder.c_str(),
                                IN_CREATE | IN_MOVED_TO | IN_ATTRIB | IN_ONLYDIR) < 0)
            throw std::system_error(errno, std::generic_category(), folder);
        new_document();
    }
    xml_follower(const xml_follower&) = delete;
    xml_follower& operator=(const xml_follower&) = delete;

    /// Waits for the next event. Returns false after `stop`. Raises what `poll` raises.
    bool next(follow_event& event) {
        while (!is_stopped()) {
            if (poll(event))
                return true;
            wait();
        }
        return false;
    }

    /// Fetches the next event if there is one now, even after `stop`. Returns false otherwise.
    ///
    /// Raises `std::system_error` or `std::runtime_error` if the temporary file cannot be written
    /// or read, and `std::bad_alloc`.
    bool poll(follow_event& event) {
        if (m_events.empty())
            read();
        if (m_events.empty())
            return false;
        event = std::move(m_events.front());
        m_events.pop_front();
        return true;
    }

    /// Makes `next` return false, now and from then on. Any thread and any signal handler may call
    /// it. Never fails.
    void stop() {
        m_is_stopped = true;
        const int saved = errno;
        const std::uint64_t one = 1;
        if (::write(m_stop.get(), &one, sizeof one) < 0) {
            // The counter is at its limit, so a waiting thread wakes anyway.
        }
        errno = saved;
    }

    /// Whether `stop` was called. Never fails.
    bool is_stopped() const { return m_is_stopped; }

    /// A descriptor that becomes readable when something may have changed, for a program with its
    /// own event loop. Then call `poll` until it returns false.
    int descriptor() const { return m_inotify.get(); }

private:
    static constexpr std::size_t chunk_bytes() { return 65536; }
    static constexpr std::size_t tail_bytes() { return 64; }

    void new_document() {
        m_document.reset(new _private::follow_document(m_resume_at, m_events));
        m_position = 0;
        m_tail.clear();
    }

    void wait() const {
        pollfd wanted[] = {{m_inotify.get(), POLLIN, 0}, {m_stop.get(), POLLIN, 0}};
        if (::poll(wanted, 2, -1) < 0 && errno != EINTR)
            throw std::system_error(errno, std::generic_category(), "poll");
    }

    // Reads until there is an event or the end of the file. It clears the notifications first,
    // because later changes cause new ones.
    void read() {
        alignas(inotify_event) char notifications[4096];
        while (::read(m_inotify.get(), notifications, sizeof notifications) > 0) {
        }
        while (m_events.empty()) {
            if (m_file.get() < 0 && !open())
                return;
            if (is_truncated())
                begin_next();
            else if (!read_chunk() && !follow_rotation())
                return;
        }
    }

    bool open() {
        // Without O_NONBLOCK, a pipe would wait for its writer.
        m_file.reset(::open(m_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        struct stat about;
        const bool is_open = m_file.get() >= 0 && ::fstat(m_file.get(), &about) == 0;
        if (!is_open || !S_ISREG(about.st_mode)) {
            if ((is_open || errno != ENOENT) && !m_cannot_open)
                add_event(follow_event::error, follow_error::cannot_open);
            m_cannot_open = is_open || errno != ENOENT;
            m_file.reset(-1);
            return false;
        }
        m_cannot_open = false;
        m_device = about.st_dev;
        m_inode = about.st_ino;
        if (m_watch >= 0)
            ::inotify_rm_watch(m_inotify.get(), m_watch);
        // Uses the descriptor, because the path may already lead to another file.
        const std::string link = "/proc/self/fd/" + std::to_string(m_file.get());
        m_watch = ::inotify_add_watch(m_inotify.get(), link.c_str(), IN_MODIFY);
        if (m_watch < 0)
            m_watch = ::inotify_add_watch(m_inotify.get(), m_path.c_str(), IN_MODIFY);
        return true;
    }

    // Reads the added bytes. Returns false if there are none.
    bool read_chunk() {
        std::string bytes(chunk_bytes(), '\0');
        ssize_t count = 0;
        do
            count = ::pread(m_file.get(), &bytes[0], bytes.size(), static_cast<off_t>(m_position));
        while (count < 0 && errno == EINTR);
        if (count < 0 && !m_cannot_open)
            add_event(follow_event::error, follow_error::cannot_open);
        m_cannot_open = count < 0;
        if (count <= 0)
            return false;
        const std::size_t length = static_cast<std::size_t>(count);
        m_position += length;
        m_tail.append(bytes, 0, length);
        m_tail.erase(0, m_tail.size() - std::min(m_tail.size(), tail_bytes()));
        m_document->feed(bytes.data(), length);
        return true;
    }

    // Whether the file is shorter than the part already read, or its last bytes before that have
    // changed.
    bool is_truncated() const {
        char bytes[tail_bytes()];
        const ssize_t count = ::pread(m_file.get(), bytes, m_tail.size(),
                                      static_cast<off_t>(m_position - m_tail.size()));
        return count >= 0 &&
               m_tail.compare(0, m_tail.size(), bytes, static_cast<std::size_t>(count)) != 0;
    }

    // Whether the path now leads to another file. Until it does, the old one may still grow.
    bool follow_rotation() {
        struct stat about;
        if (::stat(m_path.c_str(), &about) != 0 ||
            (about.st_dev == m_device && about.st_ino == m_inode))
            return false;
        // The writer may have added its last bytes before it created the new file.
        while (read_chunk()) {
        }
        m_file.reset(-1);
        begin_next();
        return true;
    }

    void begin_next() {
        m_document->finish();
        add_event(follow_event::rotated, follow_error::none);
        new_document();
    }

    void add_event(follow_event::kind_type kind, follow_error error) {
        follow_event event;
        event.kind = kind;
        event.error_code = error;
        m_events.push_back(event);
    }

    std::string m_path;
    std::vector<strings::ustring8> m_resume_at;
    std::atomic<bool> m_is_stopped{false};
    _private::descriptor m_stop;
    _private::descriptor m_inotify;
    int m_watch = -1;  // on the file; the watch on the directory is permanent

    _private::descriptor m_file;
    dev_t m_device = 0;
    ino_t m_inode = 0;
    bool m_cannot_open = false;    // it was already reported
    unsigned long m_position = 0;  // how many bytes of the file were read
    std::string m_tail;            // the last bytes before that
    std::deque<follow_event> m_events;
    std::unique_ptr<_private::follow_document> m_document;
};

}  // namespace extras
}  // namespace TOVA_2_18
