/// @file
/// The file that `xml_stream_parser` follows. It is opened for each piece and closed again, so that
/// another process may write, and no descriptor is held between calls.
///
/// Belongs to one thread at a time.
#pragma once

#include <tova/parser/xml_stream_parser.hpp>
#include <tova/strings/ustring.hpp>

#include "parser/stream_scanner.hpp"

#include <fstream>

namespace TOVA_2_18 {
namespace parser {
namespace detail {

class stream_file {
public:
    /// A view of fields of the parser: the name, a stream that is open within `load` only, the
    /// number of bytes read so far, and the length of the file as last seen.
    stream_file(const strings::ustring8& name, std::ifstream& stream, unsigned long& position,
                unsigned long& length)
        : m_name(name), m_stream(stream), m_position(position), m_length(length) {}

    /// Status 0 if the file can be opened, 10 if its name is a symbolic link, 11 otherwise. Raises
    /// `boost::filesystem::filesystem_error` if the file system cannot tell about links.
    xml_stream_parser::error_type check();

    /// Adds to the buffer what the file holds beyond the bytes read so far, as far as there is
    /// room. Returns the number of bytes added and sets the status as `check` returns it.
    unsigned long load(stream_scanner& scanner, xml_stream_parser::error_type& status);

private:
    const strings::ustring8& m_name;
    std::ifstream& m_stream;
    unsigned long& m_position;
    unsigned long& m_length;
};

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
