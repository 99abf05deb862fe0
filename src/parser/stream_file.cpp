#include "parser/stream_file.hpp"

#include "detail/symbolic_link.hpp"

#include <ios>

namespace TOVA_2_18 {
namespace parser {
namespace detail {

namespace {

// Leaves the stream closed and in a good state, whatever happens in between. Opening allocates
// memory and may throw, so the closer must exist before the stream is opened.
class stream_closer {
public:
    explicit stream_closer(std::ifstream& stream) : m_stream(stream) {}
    ~stream_closer() {
        m_stream.close();
        m_stream.clear();
    }
    stream_closer(const stream_closer&) = delete;
    stream_closer& operator=(const stream_closer&) = delete;

private:
    std::ifstream& m_stream;
};

}  // namespace

void open_for_reading(std::ifstream& stream, const strings::ustring8& name) {
    if (!TOVA_2_18::detail::is_pipe(name))
        stream.open(name.c_str(), std::ios::in | std::ios::binary);
}

xml_stream_parser::error_type stream_file::check() {
    if (TOVA_2_18::detail::is_symbolic_link(m_name))
        return xml_stream_parser::internal_failure;
    const stream_closer closer(m_stream);
    open_for_reading(m_stream, m_name);
    return m_stream.is_open() ? xml_stream_parser::no_error : xml_stream_parser::open_failed;
}

unsigned long stream_file::load(stream_scanner& scanner, xml_stream_parser::error_type& status) {
    if (TOVA_2_18::detail::is_symbolic_link(m_name)) {
        status = xml_stream_parser::internal_failure;
        return 0;
    }
    const stream_closer closer(m_stream);
    open_for_reading(m_stream, m_name);
    if (!m_stream.is_open()) {
        status = xml_stream_parser::open_failed;
        return 0;
    }
    // Contract: this also resets status 1, which is set when the data ends within a construct, even
    // if there is no new data.
    status = xml_stream_parser::no_error;

    m_stream.seekg(0, std::ios::end);
    m_length = static_cast<unsigned long>(static_cast<std::streamoff>(m_stream.tellg()));
    // A file that has shrunk has no new data until it is longer than before.
    if (!m_stream || m_length <= m_position)
        return 0;

    const unsigned long added = m_length - m_position;
    scanner.make_room(added);
    m_stream.seekg(static_cast<std::streamoff>(m_position), std::ios::beg);
    const unsigned long count = scanner.fill(m_stream, added);
    m_position += count;
    return count;
}

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
