/// @file
/// The state machine of `xml_stream_parser`; its states are listed in stream_machine.cpp.
///
/// It decides which construct the byte at the cursor begins, lets the scanner take it, and records
/// it in the nodes. For each call, the exported operations of the parser create a machine over the
/// parser's fields and forward to it:
///
///     void xml_stream_parser::parse_next() {
///         machine(*this).parse_next();
///     }
///
/// Calls go one way: machine, then file, nodes and scanner. A machine owns nothing and belongs to
/// one thread at a time.
#pragma once

#include <tova/parser/xml_stream_parser.hpp>
#include <tova/strings/ustring.hpp>

#include "parser/stream_file.hpp"
#include "parser/stream_nodes.hpp"
#include "parser/stream_scanner.hpp"

#include <list>

namespace TOVA_2_18 {
namespace parser {

class xml_stream_parser::machine {
public:
    explicit machine(xml_stream_parser& parser);

    detail::stream_scanner& scanner() { return m_scanner; }
    detail::stream_nodes& nodes() { return m_nodes; }

    /// @name The operations of the parser of the same names
    /// @{
    void check_file() { m_status = m_file.check(); }
    unsigned long load();
    void parse();
    void do_parse();
    void parse_next();
    bool finish_comment();
    strings::ustring8 parse_attrib_value();
    void recover(const std::list<strings::ustring8>& names);
    /// @}

private:
    bool take_header();
    void take_constructs();

    // Each takes one construct and leaves the cursor on its last byte. They return false if there
    // is nothing more to do for now.
    bool take_construct();
    bool take_end_of_empty_element();
    bool take_end_of_start_tag();
    bool take_end_of_end_tag();
    bool take_markup();
    bool take_usual_element();
    bool take_start_tag();
    bool take_end_tag();
    bool take_comment();
    bool take_attribute();
    bool take_character_data();

    void end_open_level(detail::piece name);
    void release_start();
    bool wait();

    detail::stream_scanner m_scanner;
    detail::stream_nodes m_nodes;
    detail::stream_file m_file;

    // Fields of the parser.
    const unsigned int& m_open_depth;
    strings::ustring8& m_root;
    bool& m_in_tag;
    bool& m_expect_close;
    bool& m_in_comment;
    bool& m_header_done;
    bool& m_finished;
    bool& m_usable;
    bool& m_empty_value;
    bool& m_start_waits;
    error_type& m_status;
};

}  // namespace parser
}  // namespace TOVA_2_18
