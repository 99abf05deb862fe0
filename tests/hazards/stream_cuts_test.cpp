// Cuts a log at every byte. Tests what the stream parser loses, and the methods by which a writer
// or a reader loses nothing. docs/stream_parser.md shows both methods.
#include <tova/parser/xml_stream_parser.hpp>

#include "support/child_process.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <string>

namespace {

using tova::parser::xml_stream_parser;

const std::string head = "<?xml version='1.0' encoding='UTF-8'?>\n<log>\n";
const std::string body = "<e>fish &amp; chips</e>\n<!-- a <i> -->\n<e a='&lt;1'>x</e>\n</log>\n";

void append(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary | std::ios::app) << bytes;
}

// What a reader sees: names, attributes and texts of the nodes, and the status.
class reader {
public:
    explicit reader(const std::string& path) : m_parser(path, 1) {}

    void parse() {
        m_parser.parse();
        while (!m_parser.node_queue_empty()) {
            const xml_stream_parser::node one = m_parser.node_queue_pop();
            m_seen += one.name;
            for (const auto& attribute : one.attributes)
                m_seen += " " + attribute.first + "=" + attribute.second;
            m_seen += "[" + one.text + "] ";
        }
    }
    std::string seen() { return m_seen + std::to_string(m_parser.error()); }

private:
    xml_stream_parser m_parser;
    std::string m_seen;
};

const char whole[] = "log[] e[fish & chips] e a=<1[x] log[] 3";

std::string read_with_a_cut(std::size_t cut) {
    const test_support::temporary_directory files;
    const std::string path = files.write("log.xml", head + body.substr(0, cut));
    reader log(path);
    log.parse();
    append(path, body.substr(cut));
    log.parse();
    log.parse();
    return log.seen();
}

// The documentation lists the cuts that do harm: after a reference in a text or value, and inside a
// comment.
TEST(StreamCut, LosesOrFailsOnlyAfterAReferenceAndInsideAComment) {
    const std::size_t text_begin = body.find("amp;");
    const std::size_t text_end = body.find("</e>");
    const std::size_t comment_begin = body.find("<!--");
    const std::size_t comment_end = body.find("-->") + 3;
    const std::size_t value_begin = body.find("lt;1");
    const std::size_t value_end = body.find("'>x");
    test_support::child_limits limits;
    limits.stack_bytes = std::size_t(1) << 20;
    limits.address_space_bytes = std::size_t(1) << 29;
    test_support::expect_in_child(
        [&] {
            unsigned wrong = 0;
            for (std::size_t cut = 0; cut <= body.size(); ++cut) {
                SCOPED_TRACE(body.substr(0, cut));
                const bool may_be_wrong = (cut > text_begin && cut <= text_end) ||
                                          (cut > comment_begin && cut <= comment_end) ||
                                          (cut > value_begin && cut <= value_end);
                const std::string seen = read_with_a_cut(cut);
                if (may_be_wrong)
                    wrong += seen != whole;
                else
                    EXPECT_EQ(whole, seen);
            }
            EXPECT_LT(0u, wrong);
        },
        limits);
}

TEST(StreamCut, LosesNothingIfTheWriterWritesWholeLines) {
    const test_support::temporary_directory files;
    const std::string path = files.write("log.xml", head);
    reader log(path);
    log.parse();
    for (std::size_t begin = 0; begin < body.size();) {
        const std::size_t end = body.find('\n', begin) + 1;
        append(path, body.substr(begin, end - begin));
        log.parse();
        begin = end;
    }
    EXPECT_EQ(whole, log.seen());
}

// Appends the complete lines of `from` after its byte `position` to the file `to`.
void follow_lines(const std::string& from, const std::string& to, std::size_t& position) {
    std::string bytes = test_support::read_bytes(from).substr(position);
    bytes.resize(bytes.rfind('\n') + 1);
    append(to, bytes);
    position += bytes.size();
}

TEST(StreamCut, LosesNothingIfTheReaderFollowsWholeLines) {
    for (std::size_t cut = 0; cut <= body.size(); ++cut) {
        SCOPED_TRACE(cut);
        const test_support::temporary_directory files;
        const std::string path = files.write("log.xml", head + body.substr(0, cut));
        const std::string copy = files.write("copy.xml", "");
        std::size_t position = 0;
        follow_lines(path, copy, position);
        reader log(copy);
        log.parse();
        append(path, body.substr(cut));
        follow_lines(path, copy, position);
        log.parse();
        EXPECT_EQ(whole, log.seen());
    }
}

}  // namespace
