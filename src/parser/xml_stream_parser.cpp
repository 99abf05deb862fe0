#include <tova/parser/xml_stream_parser.hpp>

#include <tova/generic/convert/str_to_x.hpp>
#include <tova/strings/unicode.hpp>

#include "detail/symbolic_link.hpp"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace TOVA_2_18 {
namespace parser {

using strings::ustring16;
using strings::ustring32;
using strings::ustring8;

namespace {

using node = xml_stream_parser::node;
using node_position = std::list<node>::iterator;
using open_element = std::pair<ustring8, node_position>;
using open_elements = std::stack<open_element>;

const std::size_t buffer_size = 65536;
// Nothing is parsed until this much of the file is there.
const std::size_t least_document_size = 50;
// The queue is full with this many nodes in all and so many ready ones in front.
const std::size_t full_queue_size = 100;
const unsigned int full_queue_front = 2;
// What the shortest entity and one byte behind it take, and what the end of a comment and one byte
// behind it take: with less the parser waits for more data.
const std::size_t least_entity_size = 5;
const std::size_t least_comment_size = 4;

const auto detected_radix = static_cast<types::radix_t::base>(0);
const auto hexadecimal = static_cast<types::radix_t::base>(16);

bool is_blank(char byte) {
    return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
}

bool is_digit(char byte) {
    return byte >= '0' && byte <= '9';
}

bool is_hexadecimal_digit(char byte) {
    return is_digit(byte) || (byte >= 'a' && byte <= 'f') || (byte >= 'A' && byte <= 'F');
}

// Contract: any byte with the high bit set stands in names, so that UTF-8 passes undecoded, while
// '-', '.' and ':' do not.
bool is_name_byte(char byte) {
    if ((byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || is_digit(byte))
        return true;
    return byte == '_' || static_cast<signed char>(byte) < 0 || std::isalnum(byte) != 0;
}

// Leaves the stream closed and in a good state, whatever comes between.
class file_closer {
public:
    explicit file_closer(std::ifstream& file) : m_file(file) {}
    ~file_closer() {
        m_file.close();
        m_file.clear();
    }
    file_closer(const file_closer&) = delete;
    file_closer& operator=(const file_closer&) = delete;

private:
    std::ifstream& m_file;
};

// The elements of the stack from the outermost on, which the stack itself keeps to its heirs.
struct open_elements_access : open_elements {
    static container_type& elements(open_elements& stack) {
        return stack.*&open_elements_access::c;
    }
};

// Marks the open element whose node is the first of the queue, if it is one, as taken off. All
// marked elements lie in front of the others, so the place is found by bisection.
void mark_first_as_taken(open_elements& stack, std::list<node>& queue) {
    auto& elements = open_elements_access::elements(stack);
    const auto outermost = std::partition_point(
        elements.begin(), elements.end(),
        [&queue](const open_element& element) { return element.second == queue.end(); });
    if (outermost != elements.end() && outermost->second == queue.begin())
        outermost->second = queue.end();
}

void mark_all_as_taken(open_elements& stack, std::list<node>& queue) {
    for (auto& element : open_elements_access::elements(stack))
        element.second = queue.end();
}

}  // namespace

// What stands between two commits: one byte of whitespace, one tag's name, one attribute, one
// comment, one run of character data. Throws `error_type`.
class xml_stream_parser::run {
public:
    explicit run(xml_stream_parser& parser) : m_parser(parser) {}

    bool at_end() const { return m_parser.m_cursor >= m_parser.m_end; }
    std::size_t remaining() const { return at_end() ? 0 : m_parser.m_end - m_parser.m_cursor; }
    const char* bytes() const { return m_parser.m_buffer.data() + m_parser.m_cursor; }
    char byte() const { return *bytes(); }

    void commit() {
        m_parser.m_committed = m_parser.m_cursor;
        m_parser.m_committed_line = m_parser.m_line;
    }

    void return_to_commit() {
        m_parser.m_cursor = m_parser.m_committed;
        m_parser.m_line = m_parser.m_committed_line;
    }

    // Takes one construct after the other up to the end of the data.
    void take_constructs() {
        return_to_commit();
        // Contract: the answer is not looked at. While the end of the comment is yet to come, the
        // last three bytes of the data are read as if they stood outside of it.
        if (m_parser.m_in_comment)
            m_parser.finish_comment();
        while (!at_end() && take_construct()) {
            ++m_parser.m_cursor;
            commit();
        }
    }

    // A fault within a start tag lets its node go as far as it came.
    void let_start_go() {
        if (m_parser.m_start_waits && is_in_queue(innermost()))
            innermost()->ready = true;
        m_parser.m_start_waits = false;
    }

    // Contract: what stands within the declaration is not looked at. The first `?` or `>` ends it;
    // behind a `?` one byte more is passed over, whatever it is.
    void take_declaration() {
        for (m_parser.m_cursor += 5; !at_end(); ++m_parser.m_cursor) {
            if (byte() == '?' || (remaining() > 1 && bytes()[1] == '>')) {
                m_parser.m_cursor += 2;
                break;
            }
        }
    }

    // Takes the letters of an entity and leaves the cursor on the last of them.
    void take_letters(const char* letters) {
        for (; *letters != '\0'; ++letters, ++m_parser.m_cursor) {
            if (at_end() || byte() != *letters)
                throw syntax_error;
        }
        --m_parser.m_cursor;
    }

    bool begins_with(const char* text) const {
        const std::size_t size = std::strlen(text);
        return remaining() >= size && std::memcmp(bytes(), text, size) == 0;
    }

    // The entities below stand with their first letter at the cursor. An empty answer means that
    // more data are needed.
    ustring8 take_entity_of_a() {
        if (remaining() < 5)
            return ustring8();
        ++m_parser.m_cursor;
        const bool is_amp = begins_with("mp;");
        if (is_amp || begins_with("pos;"))
            return take_named(is_amp ? "mp;" : "pos;", is_amp ? '&' : '\'', 0);
        if (remaining() < 5)
            return ustring8();
        throw syntax_error;
    }

    ustring8 take_named(const char* letters, char result, std::size_t least_size) {
        if (remaining() < least_size)
            return ustring8();
        take_letters(letters);
        return ustring8(1, result);
    }

    // Contract: a reference gives one byte and not a UTF-8 sequence. Numbers above 255 give the
    // byte 255, and a decimal number with a leading 0 is read as an octal one.
    ustring8 take_reference() {
        ++m_parser.m_cursor;
        const bool is_hexadecimal = byte() == 'x';
        m_parser.m_cursor += is_hexadecimal;
        const char* const digits = bytes();
        while (!at_end() && (is_hexadecimal ? is_hexadecimal_digit(byte()) : is_digit(byte())))
            ++m_parser.m_cursor;
        if (at_end())
            return ustring8();
        if (byte() != ';')
            throw syntax_error;
        const unsigned char value =
            generic::convert::str_to_uint8(digits, static_cast<unsigned long>(bytes() - digits),
                                           is_hexadecimal ? hexadecimal : detected_radix, false);
        return ustring8(1, static_cast<char>(value));
    }

    // Looks for the start tag of one of the names. Leaves the cursor on its `<`; if there is none,
    // on a `<` that is the last byte of the data, or at the end of the data.
    bool find_start_tag(std::list<ustring8> const& names) {
        const unsigned int line = m_parser.m_line;  // what is passed over here does not count
        bool is_found = false;
        while (!is_found && skip_to_tag()) {
            m_parser.m_committed = m_parser.m_cursor;
            // What this `<` begins is known only when more data arrive.
            if (remaining() == 1)
                break;
            ++m_parser.m_cursor;
            if (byte() == '/' || byte() == '!')
                continue;
            const ustring8 name = m_parser.parse_name();
            is_found = !name.empty() && std::find(names.begin(), names.end(), name) != names.end();
            // Contract: a name that the end of the data cuts is passed over, and so is the byte
            // that stands in the place of a name behind blanks, be it a `<`.
            if (!at_end())
                ++m_parser.m_cursor;
        }
        m_parser.m_line = line;
        if (is_found)
            m_parser.m_cursor = m_parser.m_committed;
        return is_found;
    }

private:
    // Takes the construct at the cursor. Answers true with the cursor on its last byte, and false
    // if there is nothing more to do for now.
    bool take_construct() {
        switch (byte()) {
        case '\n':
            ++m_parser.m_line;
            return true;
        case ' ':
        case '\t':
        case '\r':
            return true;
        case '/':
            return m_parser.m_in_tag ? take_end_of_empty_element() : take_character_data();
        case '<':
            if (m_parser.m_in_tag)
                throw syntax_error;
            return take_markup();
        case '>':
            return m_parser.m_in_tag ? take_end_of_start_tag() : take_end_of_end_tag();
        default:
            return m_parser.m_in_tag ? take_attribute() : take_character_data();
        }
    }

    bool wait() {
        m_parser.m_status = out_of_data;
        return false;
    }

    bool take_end_of_empty_element() {
        ++m_parser.m_cursor;
        if (at_end())
            return false;
        if (byte() != '>')
            throw syntax_error;
        if (m_parser.m_open_elements.empty())
            throw mismatched_end_tag;
        m_parser.m_in_tag = false;
        m_parser.m_start_waits = false;
        // Contract: the name of an element of an open level stays on its stack, so the end tag
        // around it does not fit any more.
        m_parser.close_tag(innermost());
        return true;
    }

    bool take_end_of_start_tag() {
        m_parser.m_in_tag = false;
        let_start_go();
        return true;
    }

    bool take_end_of_end_tag() {
        if (!m_parser.m_expect_close)
            throw syntax_error;
        m_parser.m_expect_close = false;
        if (!m_parser.m_finished)
            return true;
        m_parser.m_status = end_of_document;
        return false;
    }

    bool take_markup() {
        if (remaining() < 2)
            return wait();
        switch (bytes()[1]) {
        case '/':
            return take_end_tag();
        case '!':
            return take_comment();
        default:
            return take_start_tag();
        }
    }

    bool take_end_tag() {
        m_parser.m_cursor += 2;
        const ustring8 name = m_parser.parse_name();
        // Contract: `</>` is no fault; the parser waits there.
        if (name.empty())
            return wait();
        if (m_parser.m_open_elements.size() <= m_parser.m_open_depth)
            end_open_level(name);
        else if (m_parser.m_open_elements.top().first != name)
            throw mismatched_end_tag;
        else
            m_parser.close_tag(innermost());
        m_parser.m_expect_close = true;
        return true;
    }

    void end_open_level(const ustring8& name) {
        if (m_parser.m_open_names.empty() || m_parser.m_open_names.top() != name)
            throw mismatched_end_tag;
        // Contract: the name alone tells the root's end, so an element of an open level within it
        // that bears the same name ends the document, too.
        // Nothing takes it back: elements that follow in the root's own end tag may close, too.
        const bool is_root = name == m_parser.m_root;
        m_parser.end_of_open_node(name, is_root ? end_of_document : no_error);
        if (is_root)
            m_parser.m_finished = true;
        else
            m_parser.m_status = no_error;
        // `<r/>` has left its name behind, but no element.
        if (!m_parser.m_open_elements.empty())
            m_parser.m_open_elements.pop();
        m_parser.m_open_names.pop();
    }

    // Contract: the byte right behind a comment is lost, as the cursor stands on it already, unless
    // the data ended within the comment. Markup that is no comment loses its `<` and is character
    // data.
    bool take_comment() {
        commit();
        if (remaining() < 4)
            return wait();
        if (bytes()[2] != '-' || bytes()[3] != '-')
            return true;
        m_parser.m_cursor += 4;
        m_parser.m_in_comment = true;
        return m_parser.finish_comment() || wait();
    }

    bool take_start_tag() {
        ++m_parser.m_cursor;
        if (m_parser.m_queue.size() > full_queue_size &&
            !m_parser.queue_size_less_than(full_queue_front)) {
            --m_parser.m_cursor;
            commit();
            return false;
        }

        m_parser.m_in_tag = true;
        const ustring8 name = m_parser.parse_name();
        if (name.empty()) {
            if (!at_end())
                throw syntax_error;
            m_parser.m_in_tag = false;
            return wait();
        }

        const bool is_open_level =
            m_parser.m_open_names.size() < m_parser.m_open_depth && name != "include";
        if (is_open_level) {
            if (m_parser.m_root.empty())
                m_parser.m_root = name;
            m_parser.m_open_names.push(name);
        }
        // A node that a consumer can take before its attributes are there would lose them, so the
        // flag is set at the end of the start tag, or when a fault keeps that from coming.
        m_parser.new_node(name, out_of_data, false);
        m_parser.m_start_waits = is_open_level;
        m_parser.m_attribute_names.clear();
        return true;
    }

    bool take_attribute() {
        ustring8 name = m_parser.parse_name();
        if (name.empty()) {
            if (!at_end())
                throw syntax_error;
            return wait();
        }
        ++m_parser.m_cursor;
        if (at_end())
            return wait();
        // Contract: whitespace may stand behind the `=`, but not in front of it.
        if (byte() != '=')
            throw missing_equals;
        ++m_parser.m_cursor;
        ustring8 value = m_parser.parse_attrib_value();
        if (value.empty() && !m_parser.m_empty_value) {
            if (!at_end())
                throw syntax_error;
            return wait();
        }
        if (!m_parser.m_attribute_names.insert(name).second)
            throw duplicate_attribute;
        if (is_in_queue(innermost()))
            innermost()->attributes.emplace_back(std::move(name), std::move(value));
        return true;
    }

    // Contract: line feeds do not count here.
    bool take_character_data() {
        // Up to the next tag, as far as the data reach: an entity is committed where it ends, also
        // if no tag is there yet.
        const void* const tag = std::memchr(bytes(), '<', remaining());
        const std::size_t size =
            tag == nullptr ? remaining()
                           : static_cast<std::size_t>(static_cast<const char*>(tag) - bytes());
        ustring8 text;
        if (!take_text(size, text) || tag == nullptr)
            return wait();
        --m_parser.m_cursor;
        // Contract: the root cannot hold character data of its own.
        if (m_parser.m_open_elements.size() < 2)
            throw syntax_error;
        if (is_in_queue(innermost()))
            innermost()->text = std::move(text);
        return true;
    }

    // Takes `size` bytes of text without a tag. Answers false where an entity needs more data.
    bool take_text(std::size_t size, ustring8& text) {
        const std::size_t end = m_parser.m_cursor + size;
        while (m_parser.m_cursor < end) {
            const char* const begin = bytes();
            const std::size_t left = end - m_parser.m_cursor;
            const void* const entity = std::memchr(begin, '&', left);
            const std::size_t plain =
                entity == nullptr
                    ? left
                    : static_cast<std::size_t>(static_cast<const char*>(entity) - begin);
            text.append(begin, plain);
            m_parser.m_cursor += plain;
            if (entity == nullptr)
                break;
            const ustring8 result = m_parser.parse_entity();
            if (result.empty())
                return false;
            text += result;
            ++m_parser.m_cursor;
        }
        return true;
    }

    bool skip_to_tag() {
        const void* const tag = at_end() ? nullptr : std::memchr(bytes(), '<', remaining());
        if (tag != nullptr)
            m_parser.m_cursor += static_cast<std::size_t>(static_cast<const char*>(tag) - bytes());
        else
            m_parser.m_cursor = std::max(m_parser.m_cursor, m_parser.m_end);
        return tag != nullptr;
    }

    node_position innermost() const {
        return m_parser.m_open_elements.empty() ? m_parser.m_queue.end()
                                                : m_parser.m_open_elements.top().second;
    }
    // Not so for an element whose node the consumer has taken already; what comes then is dropped.
    bool is_in_queue(node_position position) const { return position != m_parser.m_queue.end(); }

    xml_stream_parser& m_parser;
};

xml_stream_parser::EmptyNodeQueue::~EmptyNodeQueue() TOVA_NOTHROW {}
const char* xml_stream_parser::EmptyNodeQueue::what() const TOVA_NOTHROW {
    return "empty node queue";
}

xml_stream_parser::xml_stream_parser(ustring8 const& file, unsigned int open_depth)
    : m_file_position(0), m_file_length(0), m_cursor(0), m_committed(0), m_end(0), m_first(0),
      m_last(0), m_in_tag(false), m_expect_close(false), m_in_comment(false), m_header_done(false),
      m_finished(false), m_usable(true), m_empty_value(false), m_start_waits(false), m_line(1),
      m_committed_line(1), m_open_depth(open_depth), m_next_id(1), m_status(no_error) {
    init(file);
}
xml_stream_parser::xml_stream_parser(ustring16 const& file, unsigned int open_depth)
    : xml_stream_parser(strings::utf16_to_utf8(file), open_depth) {}
xml_stream_parser::xml_stream_parser(ustring32 const& file, unsigned int open_depth)
    : xml_stream_parser(strings::utf32_to_utf8(file), open_depth) {}
xml_stream_parser::~xml_stream_parser() TOVA_NOTHROW {}

void xml_stream_parser::init(ustring8 const& file) {
    m_line = m_committed_line = 1;
    m_file_position = m_file_length = 0;
    m_in_tag = m_expect_close = m_in_comment = m_header_done = m_finished = false;
    m_usable = true;
    m_root.clear();

    m_buffer.resize(buffer_size);
    m_first = 0;
    m_last = m_buffer.size();
    m_cursor = m_committed = m_end = m_first;

    // The id 0 of the top level is there whatever becomes of the file: a caller who resets the
    // status after a failure parses with these stacks.
    m_next_id = 1;
    m_open_ids.push(0);

    m_file_name = file;
    if (detail::is_symbolic_link(m_file_name)) {
        m_status = internal_failure;
        return;
    }
    {
        const file_closer closer(m_file);
        m_file.open(m_file_name.c_str(), std::ios::in | std::ios::binary);
        m_status = m_file.is_open() ? no_error : open_failed;
    }
}

unsigned long xml_stream_parser::load() {
    if (m_finished)
        return 0;
    if (detail::is_symbolic_link(m_file_name)) {
        m_status = internal_failure;
        return 0;
    }
    const file_closer closer(m_file);
    m_file.open(m_file_name.c_str(), std::ios::in | std::ios::binary);
    if (!m_file.is_open()) {
        m_status = open_failed;
        return 0;
    }
    // Contract: this also takes back the status 1 of data that end within a construct, whether
    // there is anything new or not.
    m_status = no_error;

    m_file.seekg(0, std::ios::end);
    m_file_length = static_cast<unsigned long>(static_cast<std::streamoff>(m_file.tellg()));
    // A file that has become shorter has nothing new until it is longer than it was.
    if (!m_file || m_file_length <= m_file_position)
        return 0;

    const unsigned long delta = m_file_length - m_file_position;
    if (m_committed != m_first && delta > m_last - m_end) {
        const std::size_t begin = std::min(m_committed, m_end);
        std::memmove(&m_buffer[m_first], &m_buffer[begin], m_end - begin);
        m_cursor = m_committed = m_committed - begin;
        m_end -= begin;
    }
    m_file.seekg(static_cast<std::streamoff>(m_file_position), std::ios::beg);
    m_file.read(&m_buffer[m_end],
                static_cast<std::streamsize>(std::min<unsigned long>(m_last - m_end, delta)));
    const auto count = static_cast<unsigned long>(m_file.gcount());
    m_end += count;
    m_file_position += count;
    return count;
}

xml_stream_parser::error_type& xml_stream_parser::parse() {
    if (m_status >= internal_failure || m_finished)
        return m_status;
    if (!m_usable)
        return m_status = not_recovered;
    m_status = no_error;
    if (m_header_done) {
        do_parse();
        return m_status;
    }

    if (load() == 0)
        return m_status;
    run header(*this);
    if (header.remaining() < least_document_size)
        return m_status = out_of_data;
    // Contract: three bytes of any kind may stand in front, in general a byte order mark.
    if (header.bytes()[3] == '<')
        m_cursor += 3;
    skip_whitespace();
    if (header.remaining() <= 5 || !header.begins_with("<?xml"))
        return m_status = not_xml;
    header.take_declaration();
    m_header_done = true;
    skip_whitespace();
    header.commit();
    do_parse();
    return m_status;
}

xml_stream_parser::error_type& xml_stream_parser::error() {
    return m_status;
}

void xml_stream_parser::do_parse() {
    while (!m_finished) {
        if (m_queue.size() >= full_queue_size && !queue_size_less_than(full_queue_front))
            return;
        parse_next();
        if (m_finished || m_status > out_of_data || load() == 0)
            return;
    }
}

void xml_stream_parser::parse_next() {
    run constructs(*this);
    try {
        constructs.take_constructs();
    } catch (error_type fault) {
        m_status = fault;
        constructs.let_start_go();
    } catch (...) {
        m_status = internal_failure;
        constructs.let_start_go();
        throw;
    }
}

bool xml_stream_parser::queue_size_less_than(unsigned int count) {
    for (const node& one : m_queue) {
        if (count == 0 || !one.ready)
            break;
        --count;
    }
    return count != 0;
}

void xml_stream_parser::skip_whitespace() {
    for (; is_whitespace(); ++m_cursor) {
        if (m_buffer[m_cursor] == '\n')
            ++m_line;
    }
}

bool xml_stream_parser::is_whitespace() {
    return m_cursor < m_end && is_blank(m_buffer[m_cursor]);
}

bool xml_stream_parser::finish_comment() {
    run comment(*this);
    for (; comment.remaining() >= least_comment_size; ++m_cursor) {
        const char* const bytes = comment.bytes();
        if (*bytes == '\n')
            ++m_line;
        if (bytes[0] != '-' || bytes[1] != '-')
            continue;
        if (bytes[2] != '>')
            throw syntax_error;
        m_cursor += 3;
        m_in_comment = false;
        comment.commit();
        return true;
    }
    comment.commit();
    return false;
}

void xml_stream_parser::close_tag(std::list<node>::iterator position) {
    if (position != m_queue.end()) {
        position->type = no_error;
        position->ready = true;
    }
    m_open_elements.pop();
    m_attribute_names.clear();
    // The 0 of the top level stays.
    if (m_open_ids.size() > 1)
        m_open_ids.pop();
}

ustring8 xml_stream_parser::parse_name() {
    run text(*this);
    skip_whitespace();
    const char* const bytes = m_buffer.data();
    const std::size_t begin = m_cursor;
    std::size_t cursor = begin;
    while (cursor < m_end && is_name_byte(bytes[cursor]))
        ++cursor;
    m_cursor = cursor;
    // A name that touches the end of the data may not be complete.
    if (text.at_end())
        return ustring8();
    ustring8 name(bytes + begin, cursor - begin);
    // Contract: the cursor goes back one byte in any case; without a name it then stands in front
    // of the byte that is none, as far as the buffer reaches, and whitespace is skipped again.
    if (m_cursor != m_first)
        --m_cursor;
    skip_whitespace();
    return name;
}

ustring8 xml_stream_parser::parse_entity() {
    run entity(*this);
    if (entity.at_end() || entity.byte() != '&')
        throw syntax_error;
    if (entity.remaining() < least_entity_size)
        return ustring8();

    ++m_cursor;
    ustring8 result;
    switch (entity.byte()) {
    case 'l':
        result = entity.take_named("lt;", '<', 0);
        break;
    case 'g':
        result = entity.take_named("gt;", '>', 0);
        break;
    case 'a':
        result = entity.take_entity_of_a();
        break;
    case 'q':
        result = entity.take_named("quot;", '"', 6);
        break;
    case 'n':
        result = entity.take_named("nbsp;", ' ', 6);
        break;
    case '#':
        result = entity.take_reference();
        break;
    default:
        throw syntax_error;
    }
    // Contract: if the data end later in the same text or value, it is resumed at the `;`, without
    // what stood in front.
    if (!result.empty())
        entity.commit();
    return result;
}

ustring8 xml_stream_parser::parse_attrib_value() {
    run text(*this);
    m_empty_value = false;
    skip_whitespace();
    if (text.at_end())
        return ustring8();
    const char quote = text.byte();
    if (quote != '\'' && quote != '"')
        throw missing_quote;

    ustring8 value;
    std::size_t plain = ++m_cursor;  // what is not in the value yet
    for (; !text.at_end(); ++m_cursor) {
        const char byte = text.byte();
        if (byte == '<')
            throw syntax_error;
        if (byte == quote) {
            value.append(m_buffer, plain, m_cursor - plain);
            m_empty_value = value.empty();
            return value;
        }
        if (byte == '&') {
            value.append(m_buffer, plain, m_cursor - plain);
            // Contract: an entity that needs more data drops the byte that it stopped at, and the
            // value goes on behind it.
            value += parse_entity();
            // A character reference may have reached the end of the data. The byte there has yet
            // to arrive, so it must not be stepped over.
            if (text.at_end())
                break;
            plain = m_cursor + 1;
        }
    }
    return ustring8();
}

void xml_stream_parser::new_node(ustring8 const& name, error_type type, bool ready) {
    m_queue.emplace_back();
    node& made = m_queue.back();
    made.type = type;
    made.ready = ready;
    made.name = name;
    made.line = m_line;
    made.id = m_next_id++;
    made.parent = m_open_ids.top();
    m_open_ids.push(made.id);
    m_open_elements.emplace(name, std::prev(m_queue.end()));
}

void xml_stream_parser::end_of_open_node(ustring8 const& name, error_type type) {
    m_queue.emplace_back();
    node& made = m_queue.back();
    made.type = type;
    made.ready = true;
    made.name = name;
    made.line = m_line;
    made.id = m_open_names.size();
    made.parent = 0;
    if (m_open_ids.size() > 1)
        m_open_ids.pop();
}

bool xml_stream_parser::node_queue_empty() const {
    return m_queue.empty() || !m_queue.front().ready;
}

unsigned int xml_stream_parser::node_queue_size() const {
    const auto end =
        std::find_if(m_queue.begin(), m_queue.end(), [](const node& one) { return !one.ready; });
    return static_cast<unsigned int>(std::distance(m_queue.begin(), end));
}

xml_stream_parser::node& xml_stream_parser::node_queue_front() {
    if (node_queue_empty())
        throw EmptyNodeQueue();
    return m_queue.front();
}

xml_stream_parser::node xml_stream_parser::node_queue_pop() {
    if (m_queue.empty())
        throw EmptyNodeQueue();
    node first = std::move(m_queue.front());
    mark_first_as_taken(m_open_elements, m_queue);
    m_queue.pop_front();
    // Contract: the node is gone, while `node_queue_front` would have left it.
    if (!first.ready)
        throw EmptyNodeQueue();
    if (m_status <= out_of_data && node_queue_empty())
        do_parse();
    return first;
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
    std::ifstream file(m_file_name.c_str(), std::ios::in | std::ios::binary);
    if (!file.is_open())
        return 0;
    file.seekg(0, std::ios::end);
    const std::streamoff end = file.tellg();
    return end < 0 ? 0 : static_cast<unsigned long>(end);
}

xml_stream_parser::error_type& xml_stream_parser::recover(std::list<ustring8> const& names) {
    if (m_root.empty())
        return m_status = internal_failure;
    if (names.empty())
        return m_status = not_recovered;

    m_attribute_names.clear();
    m_in_tag = m_expect_close = m_in_comment = m_start_waits = false;
    while (m_open_elements.size() > m_open_names.size())
        m_open_elements.pop();
    m_queue.clear();
    mark_all_as_taken(m_open_elements, m_queue);
    while (m_open_ids.size() > 1)
        m_open_ids.pop();
    m_usable = false;

    run scan(*this);
    while (!scan.find_start_tag(names)) {
        scan.commit();
        // Contract: behind the end of the document nothing can come, and the search does not end.
        if (load() == 0 && m_status != end_of_document)
            return m_status = not_recovered;
    }
    m_status = no_error;
    m_usable = true;
    return m_status;
}

xml_stream_parser::error_type& xml_stream_parser::recover(std::list<std::string> const& names) {
    return recover(std::list<ustring8>(names.begin(), names.end()));
}

}  // namespace parser
}  // namespace TOVA_2_18
