#include "parser/stream_file.hpp"

#include "detail/symbolic_link.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace TOVA_2_18 {
namespace parser {
namespace detail {

namespace {

// A descriptor that is closed at the end of the scope. A pipe is not opened: that would wait for a
// writer, and a pipe has no positions at which to continue.
class open_file {
public:
    open_file(const strings::ustring8& name, bool is_pipe)
        : m_descriptor(is_pipe ? -1 : ::open(name.c_str(), O_RDONLY | O_CLOEXEC)) {}
    ~open_file() {
        if (is_open())
            ::close(m_descriptor);
    }
    open_file(const open_file&) = delete;
    open_file& operator=(const open_file&) = delete;

    bool is_open() const { return m_descriptor >= 0; }
    int descriptor() const { return m_descriptor; }

    // Leaves the position at the end. Returns a negative number for an error.
    off_t length() const { return ::lseek(m_descriptor, 0, SEEK_END); }

private:
    const int m_descriptor;
};

// The type of the file, without following links. Making a path object for each load would take
// longer than the query, so only an error is left to the general function, which raises the right
// exception.
mode_t type_of(const strings::ustring8& name) {
    struct stat status;
    if (::lstat(name.c_str(), &status) == 0)
        return status.st_mode;
    return TOVA_2_18::detail::is_symbolic_link(name) ? S_IFLNK : S_IFREG;
}

}  // namespace

unsigned long length_of_file(const strings::ustring8& name) {
    const open_file file(name, TOVA_2_18::detail::is_pipe(name));
    const off_t length = file.is_open() ? file.length() : 0;
    return length < 0 ? 0 : static_cast<unsigned long>(length);
}

xml_stream_parser::error_type stream_file::check() {
    const mode_t type = type_of(m_name);
    if (S_ISLNK(type))
        return xml_stream_parser::internal_failure;
    return open_file(m_name, S_ISFIFO(type)).is_open() ? xml_stream_parser::no_error
                                                       : xml_stream_parser::open_failed;
}

unsigned long stream_file::load(stream_scanner& scanner, xml_stream_parser::error_type& status) {
    const mode_t type = type_of(m_name);
    if (S_ISLNK(type)) {
        status = xml_stream_parser::internal_failure;
        return 0;
    }
    const open_file file(m_name, S_ISFIFO(type));
    if (!file.is_open()) {
        status = xml_stream_parser::open_failed;
        return 0;
    }
    // Contract: this also resets status 1, which is set when the data ends within a construct, even
    // if there is no new data.
    status = xml_stream_parser::no_error;

    const off_t length = file.length();
    m_length = static_cast<unsigned long>(length);
    // A file that has shrunk has no new data until it is longer than before.
    if (length < 0 || m_length <= m_position)
        return 0;

    const unsigned long added = m_length - m_position;
    scanner.make_room(added);
    const unsigned long count = scanner.fill(file.descriptor(), m_position, added);
    m_position += count;
    return count;
}

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
