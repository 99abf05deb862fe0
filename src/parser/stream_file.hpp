/// @file
/// The file that `xml_stream_parser` follows. It is opened and closed again for each piece, so
/// another process may write to it, and no descriptor is held between calls.
///
/// Belongs to one thread at a time.
#pragma once

#include <tova/parser/xml_stream_parser.hpp>
#include <tova/strings/ustring.hpp>

#include "parser/stream_scanner.hpp"

namespace TOVA_2_18 {
namespace parser {
namespace detail {

/// The length of the file that a name refers to, following links; 0 if it can't be opened. A pipe
/// is not opened.
unsigned long length_of_file(const strings::ustring8& name);

class stream_file {
public:
    /// A view of fields of the parser: the file name, the number of bytes read so far, and the last
    /// known length of the file.
    stream_file(const strings::ustring8& name, unsigned long& position, unsigned long& length)
        : m_name(name), m_position(position), m_length(length) {}

    /// Status 0 if the file can be opened, 10 if its name is a symbolic link, 11 otherwise. Raises
    /// `boost::filesystem::filesystem_error` if the status of the path cannot be read.
    xml_stream_parser::error_type check();

    /// Appends the unread bytes of the file to the buffer, as far as there is room. Returns the
    /// number of bytes added and sets the status that `check` returns.
    unsigned long load(stream_scanner& scanner, xml_stream_parser::error_type& status);

private:
    const strings::ustring8& m_name;
    unsigned long& m_position;
    unsigned long& m_length;
};

}  // namespace detail
}  // namespace parser
}  // namespace TOVA_2_18
