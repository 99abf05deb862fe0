// A parser follows a growing file and must agree with its plain model: the same status, position
// and line after each call, and the same nodes with the same contents. The fuzzer chooses the open
// depth, the pieces and the calls after each piece. The same bytes are then followed twice more, in
// a few large pieces and in many small ones, whose sizes are random.
//
// The input is a byte for the open depth and then pieces. A piece is a byte for the calls after it,
// a byte for its size, and that many bytes for the file; the last piece takes what is left.
#include <tova/parser/xml_stream_parser.hpp>

#include "parser/plain_stream_parser.hpp"
#include "require.hpp"
#include "support/choose_form.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <list>
#include <random>
#include <string>

namespace {

using fuzz_support::require;
using test_support::plain_stream_parser;
using tova::parser::xml_stream_parser;
using node = xml_stream_parser::node;

// One file for the whole run, in memory if the system offers that.
class growing_file {
public:
    growing_file() {
        const char* const folder = ::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
        m_path = std::string(folder) + "/tova_fuzz_stream_parser_XXXXXX";
        m_descriptor = ::mkostemp(&m_path[0], O_APPEND);
        require(m_descriptor != -1);
    }
    ~growing_file() {
        ::close(m_descriptor);
        ::unlink(m_path.c_str());
    }

    const std::string& path() const { return m_path; }
    void clear() const { require(::ftruncate(m_descriptor, 0) == 0); }
    void append(const std::string& bytes) const {
        require(::write(m_descriptor, bytes.data(), bytes.size()) == ssize_t(bytes.size()));
    }

private:
    std::string m_path;
    int m_descriptor;
};

// The parser and its model, which read the same bytes. Each call goes to both.
class pair_of_parsers {
public:
    pair_of_parsers(const growing_file& file, unsigned depth)
        : m_file((file.clear(), file)), m_plain(m_bytes, depth), m_parser(file.path(), depth) {}

    const std::string& bytes() const { return m_bytes; }

    void append(const std::string& bytes) {
        m_bytes += bytes;
        m_file.append(bytes);
    }

    void parse() {
        m_plain.parse();
        m_parser.parse();
        require_same();
    }

    void take_all() {
        while (m_plain.has_node())
            take_one();
    }

    // This is called even if nothing is ready: the first waiting node is then lost.
    void take_one() {
        if (!m_plain.has_node()) {
            m_plain.lose_first();
            bool has_thrown = false;
            try {
                m_parser.node_queue_pop();
            } catch (const xml_stream_parser::EmptyNodeQueue&) {
                has_thrown = true;
            }
            require(has_thrown);
        } else {
            const node expected = m_plain.pop();
            const node one = m_parser.node_queue_pop();
            require(one.type == expected.type && one.ready && one.name == expected.name);
            require(one.line == expected.line && one.id == expected.id);
            require(one.parent == expected.parent && one.attributes == expected.attributes);
            require(one.text == expected.text);
        }
        require_same();
    }

    // A caller may do that, even after a fatal status.
    void reset_status() {
        m_plain.status = 0;
        m_parser.error() = xml_stream_parser::no_error;
    }

    void recover(const std::string& name) {
        // After the end of a document a search that finds nothing never returns.
        if (m_has_ended)
            return;
        m_plain.recover({"a", "r", name});
        m_parser.recover(std::list<std::string>{"a", "r", name});
        require_same();
    }

private:
    void require_same() {
        const int status = m_parser.error();
        require(status == m_plain.status);
        m_has_ended |= status == xml_stream_parser::end_of_document;
        require(m_parser.line() == m_plain.line);
        require(m_parser.root() == m_plain.root);
        require(m_parser.node_queue_size() == m_plain.queue_size());
        require(m_parser.node_queue_empty() == !m_plain.has_node());
        const auto offset = m_parser.parse_offset();
        require(offset == m_plain.parse_offset() && offset >= m_offset);
        m_offset = offset;
    }

    const growing_file& m_file;
    std::string m_bytes;
    plain_stream_parser m_plain;
    xml_stream_parser m_parser;
    unsigned long m_offset = 0;
    bool m_has_ended = false;
};

// Appends the pieces and makes the calls that the input describes. Returns all bytes of the file.
std::string follow_input(const growing_file& file, unsigned char first, std::string input) {
    pair_of_parsers both(file, first & 0x07);
    // Most inputs should get past the declaration.
    if ((first & 0x80) == 0)
        both.append("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>");
    while (!input.empty()) {
        const auto what = static_cast<unsigned char>(input[0]);
        const std::size_t length = input.size() < 2 ? 0 : static_cast<unsigned char>(input[1]);
        const std::string piece = input.size() < 2 ? "" : input.substr(2, length);
        input.erase(0, 2 + piece.size());
        // Some pieces move what follows across the end of the buffer.
        if ((what & 0xE0) == 0xE0)
            both.append(std::string(65536 - 64 * (what & 0x0F), what & 0x10 ? ' ' : 'x'));
        both.append(piece);
        if (what & 0x01)
            both.parse();
        if (what & 0x02)
            both.take_all();
        if (what & 0x04)
            both.take_one();
        if (what & 0x08)
            both.recover(piece.substr(0, 3));
        if ((what & 0x30) == 0x30)
            both.reset_status();
    }
    both.parse();
    both.take_all();
    both.recover("x");
    both.parse();
    both.take_all();
    return both.bytes();
}

// Follows a file that grows by pieces of up to the given size. Skips errors if possible.
void follow_pieces(const growing_file& file, unsigned depth, const std::string& bytes,
                   std::size_t longest, std::mt19937& random) {
    pair_of_parsers both(file, depth);
    for (std::size_t begin = 0; begin < bytes.size();) {
        const std::size_t size = 1 + random() % longest;
        both.append(bytes.substr(begin, size));
        begin += size;
        both.parse();
        both.take_all();
        if (random() % 4 == 0)
            both.recover("b");
    }
    both.parse();
    both.take_all();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    static const growing_file file;
    if (size == 0)
        return 0;
    const std::string bytes =
        follow_input(file, data[0], std::string(reinterpret_cast<const char*>(data) + 1, size - 1));
    std::mt19937 random(static_cast<unsigned>(size));
    const unsigned depth = data[0] & 0x07;
    follow_pieces(file, depth, bytes, bytes.size(), random);
    follow_pieces(file, depth, bytes, bytes.size() < 4096 ? 40 : 20000, random);
    return 0;
}
