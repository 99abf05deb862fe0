// The exported operations. Each forwards to the state machine (stream_machine.hpp), to its scanner
// or to its nodes; the fields that they share are here in the parser object, because its layout is
// part of the binary interface.
#include <tova/parser/xml_stream_parser.hpp>

#include <tova/strings/unicode.hpp>

#include "parser/stream_machine.hpp"

namespace TOVA_2_18 {
namespace parser {

using strings::ustring16;
using strings::ustring32;
using strings::ustring8;

namespace {

const std::size_t buffer_size = 65536;

}  // namespace

xml_stream_parser::EmptyNodeQueue::~EmptyNodeQueue() TOVA_NOTHROW {}
const char* xml_stream_parser::EmptyNodeQueue::what() const TOVA_NOTHROW {
    return "empty node queue";
}

xml_stream_parser::xml_stream_parser(const ustring8& file, unsigned int open_depth)
    : m_file_position(0), m_file_length(0), m_cursor(0), m_committed(0), m_end(0), m_first(0),
      m_last(0), m_in_tag(false), m_expect_close(false), m_in_comment(false), m_header_done(false),
      m_finished(false), m_usable(true), m_empty_value(false), m_start_waits(false), m_line(1),
      m_committed_line(1), m_open_depth(open_depth), m_next_id(1), m_status(no_error) {
    init(file);
}
xml_stream_parser::xml_stream_parser(const ustring16& file, unsigned int open_depth)
    : xml_stream_parser(strings::utf16_to_utf8(file), open_depth) {}
xml_stream_parser::xml_stream_parser(const ustring32& file, unsigned int open_depth)
    : xml_stream_parser(strings::utf32_to_utf8(file), open_depth) {}
xml_stream_parser::~xml_stream_parser() TOVA_NOTHROW {}

void xml_stream_parser::init(const ustring8& file) {
    m_line = m_committed_line = 1;
    m_file_position = m_file_length = 0;
    m_in_tag = m_expect_close = m_in_comment = m_header_done = m_finished = false;
    m_usable = true;
    m_root.clear();

    m_buffer.resize(buffer_size);
    m_first = 0;
    m_last = m_buffer.size();
    m_cursor = m_committed = m_end = m_first;

    // The id 0 of the top level is pushed even if the file cannot be used: a caller who resets the
    // status after a failure parses with these stacks.
    m_next_id = 1;
    m_open_ids.push(0);

    m_file_name = file;
    machine(*this).check_file();
}

// --- Parsing ------------------------------------------------------------------------------------

xml_stream_parser::error_type& xml_stream_parser::parse() {
    machine(*this).parse();
    return m_status;
}

xml_stream_parser::error_type& xml_stream_parser::recover(const std::list<ustring8>& names) {
    machine(*this).recover(names);
    return m_status;
}

xml_stream_parser::error_type& xml_stream_parser::recover(const std::list<std::string>& names) {
    return recover(std::list<ustring8>(names.begin(), names.end()));
}

unsigned long xml_stream_parser::load() {
    return machine(*this).load();
}

void xml_stream_parser::do_parse() {
    machine(*this).do_parse();
}

void xml_stream_parser::parse_next() {
    machine(*this).parse_next();
}

// --- What was parsed ----------------------------------------------------------------------------

xml_stream_parser::error_type& xml_stream_parser::error() {
    return m_status;
}

ustring8& xml_stream_parser::root() {
    return m_root;
}

unsigned int xml_stream_parser::line() {
    return m_line;
}

unsigned long xml_stream_parser::parse_offset() {
    return m_file_position - m_end + m_committed;
}

unsigned long xml_stream_parser::file_length() {
    return detail::length_of_file(m_file_name);
}

bool xml_stream_parser::node_queue_empty() const {
    return m_queue.empty() || !m_queue.front().ready;
}

unsigned int xml_stream_parser::node_queue_size() const {
    return detail::stream_nodes::ready_count(m_queue);
}

xml_stream_parser::node& xml_stream_parser::node_queue_front() {
    if (node_queue_empty())
        throw EmptyNodeQueue();
    return m_queue.front();
}

// Most calls find enough nodes. The parser continues only if the queue runs low.
xml_stream_parser::node xml_stream_parser::node_queue_pop() {
    if (m_queue.empty())
        throw EmptyNodeQueue();
    node first = detail::stream_nodes(m_queue, m_open_elements, m_open_names, m_next_id, m_open_ids,
                                      m_attribute_names)
                     .take_first();
    // Contract: the node is removed, while `node_queue_front` leaves it in the queue.
    if (!first.ready)
        throw EmptyNodeQueue();
    if (m_status <= out_of_data && node_queue_empty())
        do_parse();
    return first;
}

bool xml_stream_parser::queue_size_less_than(unsigned int count) {
    return machine(*this).nodes().has_fewer_ready_than(count);
}

// --- Constructs ---------------------------------------------------------------------------------

void xml_stream_parser::skip_whitespace() {
    machine(*this).scanner().skip_whitespace();
}

bool xml_stream_parser::is_whitespace() {
    return machine(*this).scanner().is_at_whitespace();
}

bool xml_stream_parser::finish_comment() {
    return machine(*this).finish_comment();
}

ustring8 xml_stream_parser::parse_name() {
    return machine(*this).scanner().take_name().string();
}

ustring8 xml_stream_parser::parse_entity() {
    return machine(*this).scanner().take_reference();
}

ustring8 xml_stream_parser::parse_attrib_value() {
    return machine(*this).parse_attrib_value();
}

void xml_stream_parser::new_node(const ustring8& name, error_type type, bool ready) {
    machine(*this).nodes().open(detail::piece(name), type, ready, m_line);
}

void xml_stream_parser::close_tag(std::list<node>::iterator position) {
    machine(*this).nodes().close(position);
}

void xml_stream_parser::end_of_open_node(const ustring8& name, error_type type) {
    machine(*this).nodes().append_end(detail::piece(name), type, m_line);
}

}  // namespace parser
}  // namespace TOVA_2_18
