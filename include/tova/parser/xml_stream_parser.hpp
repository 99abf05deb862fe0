/// @file
/// The stream parser: an XML file that may still be growing, as a queue of nodes.
///
/// Use it for a file on disk that another process is writing, such as a log; for a document that is
/// complete in memory, `xml_parser` is stricter and simpler. Most readers want this loop:
///
///     tova::parser::xml_stream_parser parser("log.xml", 1);  // open depth 1: only the root
///     while (parser.parse() <= 1) {                          // until the end or an error
///         while (!parser.node_queue_empty())
///             print(parser.node_queue_pop());
///         wait_for_the_writer();
///     }
///
/// It still has to look at the nodes that are left after the loop; docs/stream_parser.md shows the
/// whole of it.
///
/// A parser belongs to one thread at a time. Two threads may follow the same file with a parser
/// each.
#pragma once

#include <tova/abi.hpp>
#include <tova/strings/ustring.hpp>

#include <cstddef>
#include <exception>
#include <fstream>
#include <list>
#include <set>
#include <stack>
#include <string>
#include <utility>

namespace TOVA_2_18 {
namespace parser {

/// Follows an XML file that another process may still be writing, and turns it, a piece at a time,
/// into nodes that the application takes from a queue while parsing goes on.
///
/// A caller repeats: `parse`, `node_queue_pop` until `node_queue_empty`, until the status is
/// `end_of_document` or an error. After an error `recover` looks for the next element that the
/// caller knows.
///
/// The open depth, given to the constructor, is the number of levels, counted from the root, whose
/// elements are reported twice: at their start, with their attributes, and at their end. A deeper
/// element is reported once, as a whole, when it closes; a node for each element inside it follows.
/// An element named "include" is a whole node at every level.
///
/// The file is opened and closed again for each piece, and only what was added to it is read. If
/// the data end inside a construct, it is read again from its start when more arrive. Contract: if
/// they end inside a comment, or after a reference in the same text or value, a part is lost or an
/// error is reported; docs/stream_parser.md shows how to follow whole lines instead. A file that
/// shrinks gives no data until it has grown past its old length. Memory is bounded by a buffer of
/// 65536 bytes and a queue of about 100 nodes, unless a whole node holds more than that. Contract:
/// a tag's name, an attribute or a run of text that does not fit into the buffer is never
/// completed, and nothing after it is read; `parse` then returns `no_error` forever.
///
/// Invalid input shows in the status alone. What Boost raises when the file system cannot tell
/// whether the file is a link (`boost::filesystem::filesystem_error`) passes through every
/// operation that reads: the constructor, `parse`, `recover` and `node_queue_pop`.
class TOVA_API xml_stream_parser {
public:
    /// The status of a parser, and the type of a node. The numbers are part of the interface.
    /// Statuses from 10 up are fatal: `parse` changes nothing any more.
    enum error_type {
        no_error = 0,             ///< Nothing to report. A node: a whole element, or an end.
        out_of_data = 1,          ///< The data end inside a construct. A node: a start.
        not_recovered = 2,        ///< `recover` found none of its names.
        end_of_document = 3,      ///< The root has closed. A node: the root's end.
        mismatched_end_tag = 4,   ///< An end tag that matches no open element.
        duplicate_attribute = 5,  ///< An attribute name that the element already has.
        syntax_error = 6,         ///< Anything else, including text directly in the root.
        missing_quote = 7,        ///< An attribute value that does not begin with a quote.
        missing_equals = 9,       ///< An attribute name that `=` does not follow at once.
        internal_failure = 10,    ///< The file is a symbolic link, there is no root to recover
                                  ///< in, or an exception such as `std::bad_alloc` occurred.
        open_failed = 11,         ///< The file cannot be opened, or is a pipe.
        not_xml = 12              ///< The file does not begin with an XML declaration.
    };

    /// One record of the queue.
    struct TOVA_API node {
        /// 0 for a whole element and for an end, 1 for a start, 3 for the end of the root.
        error_type type;
        /// Whether the node may leave the queue.
        bool ready;
        /// The name of the element.
        strings::ustring8 name;
        /// The line counter, from 1, when the node was made.
        ///
        /// Line feeds count between constructs, inside tags (after `<`, after names and after `=`),
        /// in comments, and before and after the declaration. Contract: those inside the
        /// declaration, in text, in attribute values, right after a comment, and in what `recover`
        /// passes over do not, so this is a lower bound.
        unsigned int line;
        /// The serial number of the element, from 1 in document order. In an end: the number of
        /// open levels, including the one that ends.
        unsigned long id;
        /// The `id` of the enclosing element; 0 for the root and in every end.
        unsigned long parent;
        /// Names and values in document order.
        std::list<std::pair<strings::ustring8, strings::ustring8>> attributes;
        /// The last run of character data directly inside the element, with references replaced and
        /// without the whitespace before it. Contract: a later run replaces an earlier one. A
        /// reference is one byte: `&nbsp;` is a space, `&#228;` the byte 0xE4, `&#;` a NUL.
        strings::ustring8 text;
    };

    /// Raised if there is no node to return.
    class TOVA_API EmptyNodeQueue : public std::exception {
    public:
        ~EmptyNodeQueue() TOVA_NOTHROW override;
        /// Returns "empty node queue". Never fails.
        const char* what() const TOVA_NOTHROW override;
    };

    /// Checks the file without reading it: the status is then 0, 10 for a symbolic link, or 11. A
    /// pipe is never opened, because that could block forever. The 16- and 32-bit forms convert the
    /// name to UTF-8.
    xml_stream_parser(const strings::ustring8& file, unsigned int open_depth);
    xml_stream_parser(const strings::ustring16& file, unsigned int open_depth);
    xml_stream_parser(const strings::ustring32& file, unsigned int open_depth);
    xml_stream_parser(const xml_stream_parser&) = delete;
    xml_stream_parser& operator=(const xml_stream_parser&) = delete;
    ~xml_stream_parser() TOVA_NOTHROW;

    /// Goes on parsing until the data end, the document ends, an error occurs, or the queue holds
    /// 100 nodes and the first two are ready. Returns the status, which remains part of the parser.
    ///
    /// Contract: nothing is parsed while the file holds fewer than 50 bytes. That returns status 1
    /// once and 0 from then on. Data that end inside a construct return 0 as well.
    error_type& parse();

    /// The status. A caller may set it; while a fatal status remains, `parse` does nothing.
    error_type& error();

    /// Whether no node is ready. An element at an open level is ready when its start tag is
    /// complete, a whole one when it has closed; each waits for those before it.
    bool node_queue_empty() const;

    /// The number of nodes that are ready.
    unsigned int node_queue_size() const;

    /// The next node. Raises `EmptyNodeQueue` if none is ready.
    node& node_queue_front();

    /// Removes the next node and returns it. Goes on parsing if that was the last ready one and the
    /// status is 0 or 1.
    ///
    /// If a start has been taken, its later text is dropped. Raises `EmptyNodeQueue` if no node is
    /// ready. Contract: a first node that is not ready is removed and lost.
    node node_queue_pop();

    /// The name of the root; empty until its start tag has been read, and always at open depth 0.
    strings::ustring8& root();

    /// The line counter, from 1. See `node::line` for what counts.
    unsigned int line();

    /// The offset in the file, in bytes, up to which everything is parsed.
    unsigned long parse_offset();

    /// The current length of the file, in bytes; 0 if it cannot be opened.
    unsigned long file_length();

    /// Looks for the next start tag of one of the names, and leaves it to the next `parse`.
    ///
    /// Empties the queue; the open levels stay open. Returns status 0, status 2 if the file holds
    /// no such tag yet or `names` is empty, status 10 if no root has been seen. Call it again after
    /// status 2 when the file has grown. No line feeds are counted on the way.
    ///
    /// Contract: a name that the end of the data cuts is passed over, and its element is not found
    /// when the rest arrives; a `<` that ends the data is kept and looked at again. A complete file
    /// is searched in blocks of up to 65536 bytes, whose ends cut names in the same way. After the
    /// end of the document (status 3) a search that finds nothing never returns.
    error_type& recover(const std::list<strings::ustring8>& names);
    error_type& recover(const std::list<std::string>& names);

private:
    class __attribute__((visibility("hidden"))) machine;  // what the operations forward to

    void init(const strings::ustring8& file);
    unsigned long load();
    void do_parse();
    void parse_next();
    bool queue_size_less_than(unsigned int count);
    void skip_whitespace();
    bool is_whitespace();
    bool finish_comment();
    void close_tag(std::list<node>::iterator position);
    strings::ustring8 parse_name();
    strings::ustring8 parse_entity();
    strings::ustring8 parse_attrib_value();
    void new_node(const strings::ustring8& name, error_type type, bool ready);
    void end_of_open_node(const strings::ustring8& name, error_type type);

    strings::ustring8 m_file_name;
    std::ifstream m_file;  // never open; keeps its place in the layout
    strings::ustring8 m_buffer;
    strings::ustring8 m_root;
    unsigned long m_file_position;  // the number of bytes read so far
    unsigned long m_file_length;    // as last seen
    // Positions in the buffer, as offsets and not as pointers or iterators: they stay valid when
    // the buffer's bytes move to its front, they subtract and compare with file positions, and the
    // cursor and the committed position may be one past the end of the data, over a byte that has
    // yet to arrive. The last two limit the 65536 bytes that may hold data; this range moves
    // through the buffer as data is dropped.
    std::size_t m_cursor;
    std::size_t m_committed;
    std::size_t m_end;
    std::size_t m_first;
    std::size_t m_last;
    bool m_in_tag;
    bool m_expect_close;  // the `>` of an end tag is due
    bool m_in_comment;
    bool m_header_done;
    bool m_finished;
    bool m_usable;
    bool m_empty_value;  // the last attribute value was present and empty
    bool m_start_waits;  // the last node becomes ready when its start tag is complete
    unsigned int m_line;
    unsigned int m_committed_line;
    std::list<node> m_queue;
    unsigned int m_open_depth;
    // The open elements, innermost on top. If the node of an element has left the queue, the
    // position is the queue's end; these are the outermost ones, as nodes leave in document order.
    std::stack<std::pair<strings::ustring8, std::list<node>::iterator>> m_open_elements;
    std::stack<strings::ustring8> m_open_names;  // those at open levels
    unsigned long m_next_id;
    std::stack<unsigned long> m_open_ids;  // a 0 for the top level at the bottom
    std::set<strings::ustring8> m_attribute_names;
    error_type m_status;
};

}  // namespace parser
}  // namespace TOVA_2_18
