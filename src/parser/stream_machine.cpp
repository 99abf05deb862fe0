// The state machine of the stream parser.
//
// The states of a whole parser, in the order in which `parse` checks them:
//
//     state     condition            what `parse` does
//     --------  -------------------  --------------------------------------------------------
//     fatal     status from 10 up    nothing
//     finished  m_finished           nothing
//     lost      not m_usable         sets status 2; only a successful `recover` leads out
//     header    not m_header_done    waits for 50 bytes, takes the declaration, enters body
//     body      otherwise            takes constructs up to the end of the data
//
// In the body the action depends on the byte at the cursor and on whether the cursor is in a start
// tag (`m_in_tag`):
//
//     byte           in content                        in a start tag
//     -------------  --------------------------------  -----------------------------------
//     space tab CR   is skipped                        is skipped
//     line feed      is counted                        is counted
//     < and /        end tag; sets m_expect_close      any <: syntax_error
//     < and !        comment; sets m_in_comment
//     < and others   start tag; sets m_in_tag
//     >              end of an end tag; clears         end of the tag; clears m_in_tag
//                    m_expect_close (if that is not
//                    set: syntax_error); status 3
//                    if m_finished
//     /              character data                    and >: element closes; clears
//                                                      m_in_tag; else syntax_error
//     others         character data                    attribute
//
// Three flags refine this. `m_in_comment` outlives the end of the data: the next run first searches
// for the end of the comment. `m_start_waits` means that the innermost node becomes ready when its
// start tag is complete, or when an error ends the tag. `m_finished` is set by the name in the
// root's end tag, and status 3 follows at its `>`.
//
// An element below the open levels that has only attributes and text is usually taken as a whole
// (`take_usual_element`), which has the same result as its constructs.
//
// One turn of the loop in `take_constructs` takes one construct, steps over its last byte and
// commits. If the data ends inside a construct, the turn stops without a commit, and the next run
// starts that construct again. Nodes and stacks change only when a construct (a tag's name, an
// attribute, a run of text) is complete, so nothing is recorded twice. Invalid input is thrown as
// an `error_type` and becomes the status in `parse_next`.
//
// `xml_parser` has similar states for a document in memory, but it reports events instead of
// records, stops at the first error, supports CDATA sections, and accepts attributes in end tags.
// The two share only the layers below them: blocks of classified bytes and the names of a tag.
#include "parser/stream_machine.hpp"

#include "parser/equal_bytes.hpp"

#include <utility>

namespace TOVA_2_18 {
namespace parser {

using detail::piece;
using strings::ustring8;

namespace {

// Nothing is parsed until the file has this many bytes.
const std::size_t least_document_size = 50;

// With this many nodes in the queue, the first two of them ready, no run starts. Within a run, a
// start tag waits if there is one more node than that.
const std::size_t full_queue_size = 100;

bool are_equal(const ustring8& string, piece name) {
    return string.size() == name.size &&
           detail::have_equal_bytes(string.data(), name.data, name.size);
}

}  // namespace

xml_stream_parser::machine::machine(xml_stream_parser& parser)
    : m_scanner(parser.m_buffer, parser.m_first, parser.m_last, parser.m_cursor, parser.m_committed,
                parser.m_end, parser.m_line, parser.m_committed_line),
      m_nodes(parser.m_queue, parser.m_open_elements, parser.m_open_names, parser.m_next_id,
              parser.m_open_ids, parser.m_attribute_names),
      m_file(parser.m_file_name, parser.m_file_position, parser.m_file_length),
      m_open_depth(parser.m_open_depth), m_root(parser.m_root), m_in_tag(parser.m_in_tag),
      m_expect_close(parser.m_expect_close), m_in_comment(parser.m_in_comment),
      m_header_done(parser.m_header_done), m_finished(parser.m_finished), m_usable(parser.m_usable),
      m_empty_value(parser.m_empty_value), m_start_waits(parser.m_start_waits),
      m_status(parser.m_status) {}

// --- The whole parser ---------------------------------------------------------------------------

unsigned long xml_stream_parser::machine::load() {
    return m_finished ? 0 : m_file.load(m_scanner, m_status);
}

void xml_stream_parser::machine::parse() {
    if (m_status >= internal_failure || m_finished)
        return;
    if (!m_usable) {
        m_status = not_recovered;
        return;
    }
    m_status = no_error;
    if (m_header_done || take_header())
        do_parse();
}

// Contract: three bytes of any kind may precede the declaration, usually a byte order mark.
bool xml_stream_parser::machine::take_header() {
    if (load() == 0)
        return false;
    if (m_scanner.remaining() < least_document_size) {
        m_status = out_of_data;
        return false;
    }
    if (m_scanner.byte(3) == '<')
        m_scanner.advance(3);
    m_scanner.skip_whitespace();
    if (m_scanner.remaining() <= 5 || !m_scanner.begins_with("<?xml")) {
        m_status = not_xml;
        return false;
    }
    m_scanner.skip_declaration();
    m_header_done = true;
    m_scanner.skip_whitespace();
    m_scanner.commit();
    return true;
}

void xml_stream_parser::machine::do_parse() {
    while (!m_finished && !m_nodes.is_full(full_queue_size)) {
        parse_next();
        if (m_status > out_of_data || load() == 0)
            return;
    }
}

void xml_stream_parser::machine::parse_next() {
    try {
        take_constructs();
        m_nodes.separate_attribute_names();
    } catch (error_type error) {
        m_status = error;
        release_start();
        m_nodes.separate_attribute_names();
    } catch (...) {
        m_status = internal_failure;
        release_start();
        throw;
    }
}

void xml_stream_parser::machine::recover(const std::list<ustring8>& names) {
    if (m_root.empty()) {
        m_status = internal_failure;
        return;
    }
    if (names.empty()) {
        m_status = not_recovered;
        return;
    }

    m_nodes.keep_levels_only();
    m_in_tag = m_expect_close = m_in_comment = m_start_waits = false;
    m_usable = false;
    while (!m_scanner.find_start_tag(names)) {
        m_scanner.commit();
        // Contract: after the end of the document no more data can be loaded, so the search never
        // ends.
        if (load() == 0 && m_status != end_of_document) {
            m_status = not_recovered;
            return;
        }
    }
    m_status = no_error;
    m_usable = true;
}

// --- One construct ------------------------------------------------------------------------------

void xml_stream_parser::machine::take_constructs() {
    m_scanner.return_to_commit();
    // Contract: the result is ignored. Until the end of the comment arrives, the last three bytes
    // of the data are parsed as if they were outside it.
    if (m_in_comment)
        finish_comment();
    // Whitespace is skipped as a run and committed as a whole.
    for (m_scanner.skip_whitespace(); !m_scanner.at_end(); m_scanner.skip_whitespace()) {
        m_scanner.commit();
        if (!take_construct())
            return;
        m_scanner.advance(1);
        m_scanner.commit();
    }
    m_scanner.commit();
}

bool xml_stream_parser::machine::take_construct() {
    switch (m_scanner.byte()) {
    case '<':
        if (m_in_tag)
            throw syntax_error;
        return take_markup();
    case '>':
        return m_in_tag ? take_end_of_start_tag() : take_end_of_end_tag();
    case '/':
        return m_in_tag ? take_end_of_empty_element() : take_character_data();
    default:
        return m_in_tag ? take_attribute() : take_character_data();
    }
}

bool xml_stream_parser::machine::wait() {
    m_status = out_of_data;
    return false;
}

bool xml_stream_parser::machine::take_markup() {
    if (m_scanner.remaining() < 2)
        return wait();
    switch (m_scanner.byte(1)) {
    case '/':
        return take_end_tag();
    case '!':
        return take_comment();
    default:
        return take_start_tag();
    }
}

// A whole element at once, if it is below the open levels, has no elements in it, is complete in
// the data and is written in the usual way. The result is that of the constructs that it consists
// of. Returns false and changes nothing for any other element.
bool xml_stream_parser::machine::take_usual_element() {
    // Text needs an enclosing element, and the end tag must not end an open level.
    if (m_finished || m_nodes.level_count() < m_open_depth || m_nodes.open_count() == 0 ||
        m_nodes.open_count() < m_open_depth)
        return false;
    detail::usual_element element;
    if (!m_scanner.find_usual_element(element))
        return false;
    m_nodes.append_whole(element, m_scanner.line());
    m_scanner.take(element);
    if (element.attribute_count != 0) {
        const auto& last = element.attributes[element.attribute_count - 1];
        m_empty_value = last.equals + 2 == last.last;
    }
    if (!element.is_empty_tag)
        m_expect_close = false;
    m_start_waits = false;
    return true;
}

bool xml_stream_parser::machine::take_start_tag() {
    if (m_nodes.is_full(full_queue_size + 1)) {
        m_scanner.commit();
        return false;
    }
    if (take_usual_element())
        return true;

    m_scanner.advance(1);
    m_in_tag = true;
    const piece name = m_scanner.take_name();
    if (name.empty()) {
        if (!m_scanner.at_end())
            throw syntax_error;
        m_in_tag = false;
        return wait();
    }

    const bool is_open_level = m_nodes.level_count() < m_open_depth && !name.is("include");
    if (is_open_level) {
        if (m_root.empty())
            m_root = name.string();
        m_nodes.open_level(name.string());
    }
    // A node that a consumer takes before its attributes have arrived would lose them, so a node
    // becomes ready at the end of its start tag, or when an error prevents that end from being
    // reached.
    m_nodes.open(name, out_of_data, false, m_scanner.line());
    m_start_waits = is_open_level;
    m_nodes.forget_attribute_names();
    return true;
}

bool xml_stream_parser::machine::take_attribute() {
    piece usual_name;
    piece usual_value;
    if (m_scanner.take_usual_attribute(usual_name, usual_value)) {
        m_empty_value = usual_value.empty();
        if (!m_nodes.add_attribute(usual_name, m_scanner.readable_at(usual_name), usual_value))
            throw duplicate_attribute;
        return true;
    }
    const piece name = m_scanner.take_name();
    if (name.empty()) {
        if (!m_scanner.at_end())
            throw syntax_error;
        return wait();
    }
    // A name is complete only if a byte follows it.
    m_scanner.advance(1);
    // Contract: whitespace may follow the `=`, but not precede it.
    if (m_scanner.byte() != '=')
        throw missing_equals;
    m_scanner.advance(1);
    ustring8 value = parse_attrib_value();
    if (value.empty() && !m_empty_value)
        return wait();
    if (!m_nodes.add_attribute(name, m_scanner.readable_at(name), std::move(value)))
        throw duplicate_attribute;
    return true;
}

ustring8 xml_stream_parser::machine::parse_attrib_value() {
    m_empty_value = false;
    ustring8 value;
    if (!m_scanner.take_value(value))
        return ustring8();
    m_empty_value = value.empty();
    return value;
}

bool xml_stream_parser::machine::take_end_of_start_tag() {
    m_in_tag = false;
    release_start();
    return true;
}

void xml_stream_parser::machine::release_start() {
    if (m_start_waits)
        m_nodes.make_innermost_ready();
    m_start_waits = false;
}

// Contract: the name of an element at an open level stays on its stack, so the end tag of the
// enclosing element no longer matches.
bool xml_stream_parser::machine::take_end_of_empty_element() {
    m_scanner.advance(1);
    if (m_scanner.at_end())
        return false;
    if (m_scanner.byte() != '>')
        throw syntax_error;
    if (m_nodes.open_count() == 0)
        throw mismatched_end_tag;
    m_in_tag = false;
    m_start_waits = false;
    m_nodes.close_innermost();
    return true;
}

bool xml_stream_parser::machine::take_end_tag() {
    m_scanner.advance(2);
    const piece name = m_scanner.take_name();
    // Contract: `</>` is not an error; the parser waits there.
    if (name.empty())
        return wait();
    if (m_nodes.open_count() <= m_open_depth)
        end_open_level(name);
    else if (!are_equal(m_nodes.innermost_name(), name))
        throw mismatched_end_tag;
    else
        m_nodes.close_innermost();
    m_expect_close = true;
    return true;
}

// Contract: the root's end is identified by name alone, so an element with the same name at an open
// level within the root ends the document, too. Nothing undoes this: elements within the root's own
// end tag may still close.
void xml_stream_parser::machine::end_open_level(piece name) {
    if (m_nodes.level_count() == 0 || !are_equal(m_nodes.level_name(), name))
        throw mismatched_end_tag;
    const bool is_root = are_equal(m_root, name);
    m_nodes.append_end(name, is_root ? end_of_document : no_error, m_scanner.line());
    if (is_root)
        m_finished = true;
    else
        m_status = no_error;
    m_nodes.close_level();
}

bool xml_stream_parser::machine::take_end_of_end_tag() {
    if (!m_expect_close)
        throw syntax_error;
    m_expect_close = false;
    if (!m_finished)
        return true;
    m_status = end_of_document;
    return false;
}

// Contract: the byte right after a comment is lost, because the cursor is already on it, unless the
// data ended within the comment. Markup that is not a comment loses its `<` and becomes character
// data.
bool xml_stream_parser::machine::take_comment() {
    m_scanner.commit();
    if (m_scanner.remaining() < 4)
        return wait();
    if (!m_scanner.begins_with("<!--"))
        return true;
    m_scanner.advance(4);
    m_in_comment = true;
    if (!finish_comment())
        return wait();
    return true;
}

bool xml_stream_parser::machine::finish_comment() {
    if (!m_scanner.skip_comment())
        return false;
    m_in_comment = false;
    return true;
}

// Contract: line feeds in text are not counted.
bool xml_stream_parser::machine::take_character_data() {
    ustring8 text;
    if (!m_scanner.take_text(text))
        return wait();
    m_scanner.step_back();
    // Contract: the root cannot have character data of its own.
    if (m_nodes.open_count() < 2)
        throw syntax_error;
    m_nodes.set_text(std::move(text));
    return true;
}

}  // namespace parser
}  // namespace TOVA_2_18
