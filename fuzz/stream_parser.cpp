// A parser follows a file that grows. The fuzzer chooses the open depth, the pieces and the calls
// after each piece. Checked: every status is a known one, the nodes are well formed, the offset
// never goes back and stays inside the file.
//
// The input is a byte for the open depth and then pieces. A piece is a byte for the calls after it,
// a byte for its size, and that many bytes for the file; the last piece takes what is left.
#include <tova/parser/xml_stream_parser.hpp>

#include "require.hpp"
#include "support/choose_form.hpp"

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <list>
#include <string>

namespace {

using fuzz_support::require;
using tova::parser::xml_stream_parser;
using tova::strings::ustring8;
using node = xml_stream_parser::node;

// One file for the whole run, in memory if the system offers that.
class growing_file {
public:
    growing_file() {
        const char* const folder = ::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
        m_path = std::string(folder) + "/tova_fuzz_stream_parser_XXXXXX";
        const int descriptor = ::mkstemp(&m_path[0]);
        require(descriptor != -1);
        ::close(descriptor);
    }
    ~growing_file() { ::unlink(m_path.c_str()); }

    const std::string& path() const { return m_path; }
    void clear() const { std::ofstream(m_path, std::ios::binary | std::ios::trunc); }
    void append(const std::string& bytes) const {
        std::ofstream(m_path, std::ios::binary | std::ios::app) << bytes;
    }

private:
    std::string m_path;
};

class checked_parser {
public:
    checked_parser(const std::string& path, unsigned depth) : m_parser(path, depth) {}

    void parse() {
        const int before = m_parser.error();
        const int status = m_parser.parse();
        require(status >= 0 && status <= 12 && status != 8);
        require(before < 10 || status == before);
        check_queue();
    }

    void take_all() {
        while (!m_parser.node_queue_empty())
            check_node(m_parser.node_queue_pop());
        check_queue();
    }

    // Even if nothing is ready.
    void take_one() {
        const bool is_empty = m_parser.node_queue_empty();
        bool has_thrown = false;
        try {
            check_node(m_parser.node_queue_pop());
        } catch (const xml_stream_parser::EmptyNodeQueue&) {
            has_thrown = true;
        }
        require(has_thrown == is_empty);
        check_queue();
    }

    // A caller may do that, even after a fatal status.
    void reset_status() { m_parser.error() = xml_stream_parser::no_error; }

    void recover(const std::string& name) {
        // After the end of a document a search that finds nothing never returns.
        if (m_parser.error() == xml_stream_parser::end_of_document)
            return;
        const std::list<ustring8> names = {"a", "r", name};
        const int status = m_parser.recover(names);
        require(status == 0 || status == 2 || status == 10);
        check_queue();
    }

private:
    void check_queue() {
        require(m_parser.node_queue_empty() == (m_parser.node_queue_size() == 0));
        const auto offset = m_parser.parse_offset();
        // Only the declaration may reach past the data: the byte after its `?` is passed over, even
        // if it has yet to arrive.
        const unsigned long beyond = m_parser.root().empty() ? 1 : 0;
        require(offset >= m_offset && offset <= m_parser.file_length() + beyond);
        m_offset = offset;
        require(m_parser.line() >= 1);
    }

    void check_node(const node& one) {
        require(one.ready && !one.name.empty());
        require(one.type == 0 || one.type == 1 || one.type == 3);
        require(one.parent < one.id);
        for (const auto& attribute : one.attributes)
            require(!attribute.first.empty());
    }

    xml_stream_parser m_parser;
    unsigned long m_offset = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    static const growing_file file;
    if (size == 0)
        return 0;
    file.clear();
    // Most inputs should get past the declaration.
    if ((data[0] & 0x80) == 0)
        file.append("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>");
    checked_parser parser(file.path(), data[0] & 0x07);

    std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    while (!bytes.empty()) {
        const auto what = static_cast<unsigned char>(bytes[0]);
        const std::size_t length = bytes.size() < 2 ? 0 : static_cast<unsigned char>(bytes[1]);
        const std::string piece = bytes.size() < 2 ? "" : bytes.substr(2, length);
        bytes.erase(0, 2 + piece.size());
        // Some pieces move what follows across the end of the buffer.
        if ((what & 0xE0) == 0xE0)
            file.append(std::string(65536 - 64 * (what & 0x0F), what & 0x10 ? ' ' : 'x'));
        file.append(piece);
        if (what & 0x01)
            parser.parse();
        if (what & 0x02)
            parser.take_all();
        if (what & 0x04)
            parser.take_one();
        if (what & 0x08)
            parser.recover(piece.substr(0, 3));
        if ((what & 0x30) == 0x30)
            parser.reset_status();
    }
    parser.parse();
    parser.take_all();
    parser.recover("x");
    parser.parse();
    parser.take_all();
    return 0;
}
