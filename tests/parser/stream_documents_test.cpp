// Tests that the stream parser agrees with its plain model on random documents, most of them
// invalid, in a file that grows by random pieces.
#include <tova/parser/xml_stream_parser.hpp>

#include "parser/plain_stream_parser.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <list>
#include <random>
#include <string>
#include <vector>

namespace {

using test_support::plain_stream_parser;
using tova::parser::xml_stream_parser;
using tova::strings::ustring8;
using node = xml_stream_parser::node;

unsigned long popped_nodes = 0;

class random_document {
public:
    explicit random_document(unsigned seed) : m_random(seed) {}

    unsigned below(unsigned limit) { return static_cast<unsigned>(m_random() % limit); }

    // Elements up to about the given size. One in `odd` pieces is unusual.
    std::string body(std::size_t size, unsigned odd) {
        std::string made = "<r>";
        while (made.size() < size)
            made += below(odd) == 0 ? odd_piece() : element(0);
        return made + (below(4) == 0 ? "" : "</r>\n");
    }

    std::vector<std::string> names() {
        std::vector<std::string> made;
        for (unsigned i = below(3); i > 0; --i)
            made.push_back(one_of({"a", "b", "n\xC3\xA4me", "include", "r", "absent"}));
        return made;
    }

private:
    template <std::size_t Size>
    const char* one_of(const char* const (&all)[Size]) {
        return all[below(Size)];
    }

    std::string element(int depth) {
        const std::string name =
            one_of({"a", "b", "_1", "n\xC3\xA4me", "include", "a_name_of_more_than_15_bytes"});
        std::string made = "<" + name;
        for (unsigned i = below(8) == 0 ? below(40) : below(3); i > 0; --i)
            made += one_of({" ", "\n  ", "\t"}) + attribute(i);
        if (below(4) == 0)
            return made + one_of({"/>", " />", "/>\n"});
        made += one_of({">", " >", ">\n"});
        for (unsigned i = below(4); i > 0; --i)
            made += depth < 4 && below(2) == 0 ? element(depth + 1) : piece();
        return made + "</" + (below(1000) == 0 ? "x" : name) + one_of({">", " >", "\n>", ">\n\n"});
    }

    std::string attribute(unsigned number) {
        const std::string value = one_of(
            {"", "1", "two words", "&lt;&#65;&amp;", "a value that needs memory of its own &gt;"});
        const bool is_single = below(2) == 0;
        return "x" + std::to_string(below(1000) == 0 ? 1 : number) + one_of({"=", "= ", "=\n"}) +
               (is_single ? "'" + value + "'" : "\"" + value + "\"");
    }

    std::string piece() {
        switch (below(12)) {
        case 0:
            return "<!-- a comment\nof - two lines --> ";
        case 1:
            return "&quot;&apos;&nbsp;&#x41; ";
        case 2:
            return std::string(below(300), 'x');
        case 3:
            return below(60) == 0 ? std::string(below(70000), 'y') : "\r\n \t";
        case 4:
            return "<!--" + std::string(below(200), ' ') + "\n-->\n";
        default:
            return one_of({"text", "one  two\nthree ", " ", "\n\n", "1 > 0", "/", "a&amp;b"});
        }
    }

    std::string odd_piece() {
        return one_of(
            {"<a",         "</a>", "<",   ">",           "<!DOCTYPE x>", "<![CDATA[ x ]]>",
             "&x;",        "&a",   "&#",  "<a x=1>",     "<a x>",        "<a x ='1'/>",
             "<a x='<'/>", "<-/>", "</>", "<!-- -- -->", "<a 'x'/>",     "&#300;",
             "<a x='1'",   "</r>", "<r>", "&amx;",       "&apox;zz"});
    }

    std::mt19937 m_random;
};

// The two parsers, and the file that both read.
class pair_of_parsers {
public:
    pair_of_parsers(const std::string& path, unsigned depth)
        : m_path(path), m_plain(m_bytes, depth), m_parser(emptied(path), depth) {}

    void append(const std::string& bytes) {
        m_bytes += bytes;
        std::ofstream(m_path, std::ios::binary | std::ios::app) << bytes;
    }

    void parse() {
        m_plain.parse();
        m_parser.parse();
    }

    bool has_node() const { return m_plain.has_node(); }

    void pop() {
        ++popped_nodes;
        const node expected = m_plain.pop();
        const node one = m_parser.node_queue_pop();
        EXPECT_EQ(expected.type, one.type);
        EXPECT_EQ(expected.ready, one.ready);
        EXPECT_EQ(expected.name, one.name);
        EXPECT_EQ(expected.line, one.line);
        EXPECT_EQ(expected.id, one.id);
        EXPECT_EQ(expected.parent, one.parent);
        EXPECT_EQ(expected.attributes, one.attributes);
        EXPECT_EQ(expected.text, one.text);
    }

    void recover(const std::vector<std::string>& names) {
        m_plain.recover(names);
        m_parser.recover(std::list<std::string>(names.begin(), names.end()));
    }

    int status() const { return m_plain.status; }

    bool is_same() {
        EXPECT_EQ(m_plain.status, m_parser.error());
        EXPECT_EQ(m_plain.line, m_parser.line());
        EXPECT_EQ(m_plain.parse_offset(), m_parser.parse_offset());
        EXPECT_EQ(m_plain.root, m_parser.root());
        EXPECT_EQ(m_plain.queue_size(), m_parser.node_queue_size());
        return !::testing::Test::HasFailure();
    }

private:
    static const std::string& emptied(const std::string& path) {
        std::ofstream(path, std::ios::binary | std::ios::trunc).flush();
        return path;
    }

    std::string m_path;
    std::string m_bytes;
    plain_stream_parser m_plain;
    xml_stream_parser m_parser;
};

// Appends the document in pieces. After each piece, it parses, takes nodes and recovers.
void expect_same(const std::string& path, const std::string& document, unsigned longest_piece,
                 unsigned depth, random_document& random, std::vector<int>& seen) {
    SCOPED_TRACE(document.substr(0, 2000));
    pair_of_parsers both(path, depth);
    for (std::size_t begin = 0; begin < document.size();) {
        const std::size_t size = 1 + random.below(longest_piece);
        both.append(document.substr(begin, size));
        begin += size;
        for (unsigned turn = 1 + random.below(4); turn > 0; --turn) {
            both.parse();
            if (!both.is_same())
                return;
            ++seen[static_cast<std::size_t>(both.status())];
            for (unsigned i = random.below(2) == 0 ? 1000000 : random.below(30);
                 i > 0 && both.has_node(); --i)
                both.pop();
            // After the end of the document the parser may search forever.
            const int status = both.status();
            if (status != 3 && (status > 3 ? random.below(3) != 0 : random.below(200) == 0))
                both.recover(random.names());
            if (!both.is_same())
                return;
        }
    }
}

TEST(StreamParserDocuments, AgreeWithThePlainModel) {
    const test_support::temporary_directory folder;
    random_document random(11);
    std::vector<int> seen(16);
    for (int round = 0; round < 1500 && !HasFailure(); ++round) {
        const std::string document = "<?xml version='1.0'?>" + std::string(random.below(40), ' ') +
                                     random.body(random.below(3000), 30);
        expect_same(folder.path("short"), document, 1 + random.below(600), random.below(4), random,
                    seen);
    }
    // The parser reads pieces of 64 KiB, so it cuts these documents itself.
    for (int round = 0; round < 30 && !HasFailure(); ++round) {
        const std::string document = "<?xml version='1.0'?>" + random.body(400000, 3000);
        expect_same(folder.path("long"), document, 300000, random.below(3), random, seen);
    }
    // Every status that a file can cause.
    for (const int status : {0, 1, 2, 3, 4, 5, 6, 7, 9, 10})
        EXPECT_LT(0, seen[static_cast<std::size_t>(status)]) << status;
}

// Cuts one document into two pieces at every byte.
TEST(StreamParserDocuments, AgreeWithThePlainModelAfterEveryCut) {
    const test_support::temporary_directory folder;
    const std::string document = "<?xml version='1.0'?>                                 <r "
                                 "x='1'>\n<a y=\"&lt;\" z=''>one &amp;"
                                 "\ntwo</a><!-- a\nb --> <b/><n\xC3\xA4me "
                                 "x='&#65;'>&quot;</n\xC3\xA4me >\n<a>x<c/></a></r>\n";
    for (std::size_t cut = 1; cut < document.size(); ++cut) {
        SCOPED_TRACE(cut);
        pair_of_parsers both(folder.path("cut"), 1);
        for (const std::string& piece : {document.substr(0, cut), document.substr(cut)}) {
            both.append(piece);
            both.parse();
            while (both.has_node())
                both.pop();
            both.parse();
            ASSERT_TRUE(both.is_same());
        }
    }
}

}  // namespace
