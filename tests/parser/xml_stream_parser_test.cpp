#include <tova/parser/xml_stream_parser.hpp>

#include <tova/strings/unicode.hpp>

#include "support/child_process.hpp"
#include "support/failing_allocation.hpp"
#include "support/temporary_directory.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <list>
#include <random>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using tova::parser::xml_stream_parser;
using tova::strings::ustring16;
using tova::strings::ustring32;
using tova::strings::ustring8;
using node = xml_stream_parser::node;

// 55 bytes, so that any document after it is long enough to be parsed.
const std::string declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>";

// A file to which the test appends.
class growing_file {
public:
    explicit growing_file(const std::string& bytes)
        : m_path(m_directory.write("file.xml", bytes)) {}

    const std::string& path() const { return m_path; }
    void append(const std::string& bytes) const { write(bytes, std::ios::app); }
    void replace(const std::string& bytes) const { write(bytes, std::ios::trunc); }

private:
    void write(const std::string& bytes, std::ios::openmode mode) const {
        std::ofstream file(m_path, std::ios::binary | mode);
        file << bytes;
        file.close();
        ASSERT_TRUE(file.good());
    }

    test_support::temporary_directory m_directory;
    std::string m_path;
};

// A node as "TYPE NAME ID/PARENT", its attributes as NAME=VALUE, and its text in quotes if any.
std::string described(const node& one) {
    std::string text = std::to_string(one.type) + ' ' + one.name + ' ' + std::to_string(one.id) +
                       '/' + std::to_string(one.parent);
    for (const auto& attribute : one.attributes)
        text += ' ' + attribute.first + '=' + attribute.second;
    if (!one.text.empty())
        text += " \"" + one.text + '"';
    return text;
}

// Takes all nodes that are ready or become ready, each followed by "; ".
std::string taken(xml_stream_parser& parser) {
    std::string nodes;
    while (!parser.node_queue_empty())
        nodes += described(parser.node_queue_pop()) + "; ";
    return nodes;
}

// All nodes up to the end of the document, the first error or the end of the data, and the status.
std::string read_on(xml_stream_parser& parser) {
    std::string nodes;
    std::string piece;
    do {
        parser.parse();
        piece = taken(parser);
        nodes += piece;
    } while (parser.error() <= 1 && !piece.empty());
    return nodes + "status " + std::to_string(parser.error());
}

std::string read_file(const std::string& bytes, unsigned depth) {
    const growing_file file(bytes);
    xml_stream_parser parser(file.path(), depth);
    return read_on(parser);
}

std::string read(const std::string& body, unsigned depth = 1) {
    return read_file(declaration + body, depth);
}

// A document's body, the open depth, and what `read` returns for them.
struct reading {
    std::string body;
    unsigned depth;
    std::string result;
};

void expect_readings(const std::vector<reading>& readings) {
    for (const auto& one : readings)
        EXPECT_EQ(one.result, read(one.body, one.depth)) << one.body << " at depth " << one.depth;
}

// What `read` returns for a file that has only `size` bytes of the body at the first `parse`.
std::string read_in_two(const std::string& body, std::size_t size, unsigned depth = 1) {
    const growing_file file(declaration + body.substr(0, size));
    xml_stream_parser parser(file.path(), depth);
    parser.parse();
    file.append(body.substr(size));
    return read_on(parser);
}

std::string repeated(const std::string& text, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i != count; ++i)
        result += text;
    return result;
}

// --- The file -----------------------------------------------------------------------------------

TEST(StreamParserFile, IsCheckedButNotReadByTheConstructor) {
    const growing_file file(declaration + "<r></r>");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(0, parser.error());
    EXPECT_EQ(0u, parser.parse_offset());
    EXPECT_EQ(62u, parser.file_length());
    EXPECT_EQ(1u, parser.line());
    EXPECT_EQ("", parser.root());
    EXPECT_TRUE(parser.node_queue_empty());
    EXPECT_EQ(0u, parser.node_queue_size());
}

TEST(StreamParserFile, CausesStatus11PermanentlyIfItCannotBeOpened) {
    const test_support::temporary_directory directory;
    const std::string path = directory.path("later.xml");
    xml_stream_parser parser(path, 1);
    EXPECT_EQ(11, parser.error());
    EXPECT_EQ(0u, parser.file_length());
    directory.write("later.xml", declaration + "<r></r>");
    EXPECT_EQ(11, parser.parse());
    EXPECT_EQ("status 11", read_on(parser));
    EXPECT_EQ(62u, parser.file_length());
}

TEST(StreamParserFile, CausesStatus11PermanentlyIfItIsRemoved) {
    const growing_file file(declaration + "<r>");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ("1 r 1/0; status 0", read_on(parser));
    ASSERT_EQ(0, std::remove(file.path().c_str()));
    EXPECT_EQ(11, parser.parse());
    file.replace(declaration + "<r></r>");
    EXPECT_EQ(11, parser.parse());
}

TEST(StreamParserFile, CausesStatus10IfItIsASymbolicLink) {
    const growing_file file(declaration + "<r></r>");
    const std::string link = file.path() + ".link";
    ASSERT_EQ(0, ::symlink(file.path().c_str(), link.c_str()));
    xml_stream_parser parser(link, 1);
    EXPECT_EQ(10, parser.error());
    EXPECT_EQ("status 10", read_on(parser));
    EXPECT_EQ(0u, parser.parse_offset());
    EXPECT_THROW(parser.node_queue_pop(), xml_stream_parser::EmptyNodeQueue);

    ASSERT_EQ(0, std::remove(file.path().c_str()));
    EXPECT_EQ(10, xml_stream_parser(link, 1).error()) << "even if its target is missing";
}

TEST(StreamParserFile, IsParsedIfTheStatusIsResetAfterTheLinkIsReplaced) {
    const growing_file file(declaration + "<r><a></a></r>");
    const std::string link = file.path() + ".link";
    ASSERT_EQ(0, ::symlink(file.path().c_str(), link.c_str()));
    xml_stream_parser parser(link, 1);
    ASSERT_EQ(10, parser.error());
    ASSERT_EQ(0, std::rename(file.path().c_str(), link.c_str()));
    parser.error() = xml_stream_parser::no_error;
    EXPECT_EQ("1 r 1/0; 0 a 2/1; 3 r 1/0; status 3", read_on(parser));
}

TEST(StreamParserFile, IsParsedIfTheStatusIsResetAfterTheFileIsCreated) {
    const test_support::temporary_directory directory;
    xml_stream_parser parser(directory.path("later.xml"), 1);
    ASSERT_EQ(11, parser.error());
    directory.write("later.xml", declaration + "<r><a></a></r>");
    parser.error() = xml_stream_parser::no_error;
    EXPECT_EQ("1 r 1/0; 0 a 2/1; 3 r 1/0; status 3", read_on(parser));
}

TEST(StreamParserFile, MayBeReachedThroughALinkedFolder) {
    const growing_file file(declaration + "<r></r>");
    const test_support::temporary_directory directory;
    const auto folder = file.path().substr(0, file.path().rfind('/'));
    ASSERT_EQ(0, ::symlink(folder.c_str(), directory.path("link").c_str()));
    xml_stream_parser parser(directory.path("link/file.xml"), 1);
    EXPECT_EQ("1 r 1/0; 3 r 1/0; status 3", read_on(parser));
}

TEST(StreamParserFile, CausesStatus10IfItBecomesASymbolicLink) {
    const growing_file file(declaration + "<r>");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ("1 r 1/0; status 0", read_on(parser));
    const std::string moved = file.path() + ".moved";
    ASSERT_EQ(0, std::rename(file.path().c_str(), moved.c_str()));
    ASSERT_EQ(0, ::symlink(moved.c_str(), file.path().c_str()));
    EXPECT_EQ(10, parser.parse());
    ASSERT_EQ(0, std::rename(moved.c_str(), file.path().c_str()));
    EXPECT_EQ(10, parser.parse());
}

TEST(StreamParserFile, PropagatesExceptionsOfTheFileSystem) {
    const test_support::temporary_directory directory;
    EXPECT_THROW(xml_stream_parser(directory.path(std::string(300, 'x')), 1), std::runtime_error);

    const std::string path = directory.write("folder/file.xml", declaration + "<r></r>");
    xml_stream_parser parser(path, 1);
    const std::string folder = directory.path("folder");
    const std::string moved = directory.path("moved");
    ASSERT_EQ(0, std::rename(folder.c_str(), moved.c_str()));
    ASSERT_EQ(0, ::symlink(folder.c_str(), folder.c_str()));
    EXPECT_THROW(parser.parse(), std::runtime_error);
    EXPECT_EQ(0, parser.error());

    ASSERT_EQ(0, std::remove(folder.c_str()));
    ASSERT_EQ(0, std::rename(moved.c_str(), folder.c_str()));
    EXPECT_EQ("1 r 1/0; 3 r 1/0; status 3", read_on(parser));
}

TEST(StreamParserFile, PropagatesExceptionsOfTheFileSystemWhileANodeIsTaken) {
    const test_support::temporary_directory directory;
    const std::string path = directory.write("folder/file.xml", declaration + "<r>");
    xml_stream_parser parser(path, 1);
    ASSERT_EQ(0, parser.parse());
    const std::string folder = directory.path("folder");
    const std::string moved = directory.path("moved");
    ASSERT_EQ(0, std::rename(folder.c_str(), moved.c_str()));
    ASSERT_EQ(0, ::symlink(folder.c_str(), folder.c_str()));
    EXPECT_THROW(parser.node_queue_pop(), std::runtime_error);
    EXPECT_THROW(parser.recover(std::list<ustring8>{"r"}), std::runtime_error);
}

TEST(StreamParserFile, HasNoDataIfItIsAFolder) {
    const test_support::temporary_directory directory;
    xml_stream_parser parser(directory.path(), 1);
    EXPECT_EQ(0, parser.error());
    EXPECT_EQ("status 0", read_on(parser));
}

TEST(StreamParserFile, IsNamedInAnyWidth) {
    const test_support::temporary_directory directory;
    const ustring8 path =
        directory.write("gr\xC3\xBC\xC3\x9F \xE2\x82\xAC.xml", declaration + "<r></r>");
    xml_stream_parser by_8(path, 1);
    EXPECT_EQ("1 r 1/0; 3 r 1/0; status 3", read_on(by_8));
    const ustring16 units16 = tova::strings::utf8_to_utf16(path);
    xml_stream_parser by_16(units16, 1);
    EXPECT_EQ("1 r 1/0; 3 r 1/0; status 3", read_on(by_16));
    const ustring32 units32 = tova::strings::utf8_to_utf32(path);
    xml_stream_parser by_32(units32, 1);
    EXPECT_EQ("1 r 1/0; 3 r 1/0; status 3", read_on(by_32));
}

TEST(StreamParserFile, IsNotOpenBetweenCalls) {
    const auto descriptors = [] {
        unsigned count = 0;
        for (int i = 0; i != 256; ++i)
            count += ::lseek(i, 0, SEEK_CUR) != -1 ? 1 : 0;
        return count;
    };
    const growing_file file(declaration + "<r>");
    const unsigned before = descriptors();
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(before, descriptors());
    parser.parse();
    EXPECT_EQ(before, descriptors());
    taken(parser);
    EXPECT_EQ(before, descriptors());
    parser.recover(std::list<ustring8>{"x"});
    EXPECT_EQ(before, descriptors());
}

TEST(StreamParserFile, HasItsCurrentLength) {
    const growing_file file("12345");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(5u, parser.file_length());
    file.append("678");
    EXPECT_EQ(8u, parser.file_length());
    ASSERT_EQ(0, std::remove(file.path().c_str()));
    EXPECT_EQ(0u, parser.file_length());
    EXPECT_EQ(0, parser.error());
}

TEST(StreamParserFile, HasNoNewDataAfterShrinkingUntilItIsLongerThanBefore) {
    const growing_file file(declaration + "<r><a/>");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ("1 r 1/0; 0 a 2/1; status 0", read_on(parser));
    file.replace(declaration);
    EXPECT_EQ("status 0", read_on(parser));
    EXPECT_EQ(62u, parser.parse_offset());
    file.append("<b/><c/");  // 62 bytes again
    EXPECT_EQ("status 0", read_on(parser));
    file.append("<d/></r>");
    EXPECT_EQ("0 d 3/1; 3 r 1/0; status 3", read_on(parser));
}

// --- The beginning of the document --------------------------------------------------------------

TEST(StreamParserHeader, WaitsForFiftyBytes) {
    const std::string document = "<?xml version=\"1.0\"?><r></r>";
    const growing_file file(document + std::string(49 - document.size(), ' '));
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(1, parser.parse());
    EXPECT_EQ(0, parser.parse());
    EXPECT_EQ(0, parser.parse());
    EXPECT_TRUE(parser.node_queue_empty());
    EXPECT_EQ(0u, parser.parse_offset());
    file.append(" ");
    EXPECT_EQ("1 r 1/0; 3 r 1/0; status 3", read_on(parser));
}

TEST(StreamParserHeader, WaitsForFiftyBytesHoweverTheFileGrows) {
    const std::string document = "<?xml version=\"1.0\"?><r></r>";
    const growing_file file("");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(0, parser.parse());
    for (const char byte : document) {
        file.append(std::string(1, byte));
        EXPECT_EQ(1, parser.parse());
        EXPECT_EQ(0, parser.parse());
    }
    file.append(std::string(50 - document.size(), '\n'));
    EXPECT_EQ("1 r 1/0; 3 r 1/0; status 3", read_on(parser));
}

TEST(StreamParserHeader, MayFollowThreeBytesOfAnyKind) {
    const struct {
        const char* first;
        const char* result;
    } cases[] = {
        {"", "1 r 1/0; 3 r 1/0; status 3"},
        {"\xEF\xBB\xBF", "1 r 1/0; 3 r 1/0; status 3"},
        {"xyz", "1 r 1/0; 3 r 1/0; status 3"},
        {">>>", "1 r 1/0; 3 r 1/0; status 3"},
        {"xy", "status 12"},
        {"wxyz", "status 12"},
        {"xy ", "1 r 1/0; 3 r 1/0; status 3"},
        {"xyz\n", "status 12"},
        {" ", "1 r 1/0; 3 r 1/0; status 3"},
        {" \t\r\n ", "1 r 1/0; 3 r 1/0; status 3"},
        {"\v", "status 12"},
        {"<<<", "1 r 1/0; 3 r 1/0; status 3"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.first);
        EXPECT_EQ(c.result, read_file(c.first + declaration + "<r></r>", 1));
    }
}

TEST(StreamParserHeader, MayFollowThreeBytesThatBeginADeclaration) {
    // The fourth byte is '<', so "<?x" is skipped.
    EXPECT_EQ("1 r 1/0; 3 r 1/0; status 3", read_file("<?x" + declaration + "<r></r>", 1));
}

TEST(StreamParserHeader, MustBeAnXmlDeclarationInLowerCase) {
    for (const std::string front : {"<?XML ", "<?xm ", "<r>", "<!-- -->", "?xml ", ""}) {
        SCOPED_TRACE(front);
        const growing_file file(front + "version='1.0'?><r></r>" + std::string(50, ' '));
        xml_stream_parser parser(file.path(), 1);
        EXPECT_EQ(12, parser.parse());
        EXPECT_EQ(12, parser.parse());
        EXPECT_TRUE(parser.node_queue_empty());
    }
}

TEST(StreamParserHeader, MustHaveMoreThanFiveBytesAfterTheWhitespace) {
    EXPECT_EQ("status 12", read_file(std::string(45, ' ') + "<?xml", 1));
    EXPECT_EQ("status 0", read_file(std::string(44, ' ') + "<?xml?", 1));
    EXPECT_EQ("status 12", read_file(std::string(60, ' '), 1));
}

TEST(StreamParserHeader, EndsAtTheFirstQuestionMarkOrAngle) {
    const struct {
        const char* document;
        const char* result;
    } cases[] = {
        {"<?xml version='1.0'?><r></r>", "1 r 1/0; 3 r 1/0; status 3"},
        {"<?xml version='1.0'><r></r>", "1 r 1/0; 3 r 1/0; status 3"},
        {"<?xml version='1.0'?x<r></r>", "1 r 1/0; 3 r 1/0; status 3"},
        {"<?xml version='1.0'?<r></r>", "status 6"},
        {"<?xml a='?'?><r></r>", "status 6"},
        {"<?xml a='>'?><r></r>", "status 6"},
        {"<?xml?><r></r>", "1 r 1/0; 3 r 1/0; status 3"},
        {"<?xmlish?><r></r>", "1 r 1/0; 3 r 1/0; status 3"},
        // Only the byte after the current one is compared with '>', so this one ends nothing.
        {"<?xml><q><r></r>", "1 r 1/0; 3 r 1/0; status 3"},
        {"<?xml >< r></ r>", "1 r 1/0; 3 r 1/0; status 3"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.document);
        EXPECT_EQ(c.result, read_file(c.document + std::string(50, '\n'), 1));
    }
}

TEST(StreamParserHeader, IsReadOnlyOnceAndMustBeCompleteByThen) {
    for (std::size_t size = 50; size <= declaration.size(); ++size) {
        SCOPED_TRACE(size);
        const growing_file file(declaration.substr(0, size));
        xml_stream_parser parser(file.path(), 1);
        EXPECT_EQ("status 0", read_on(parser));
        file.append(declaration.substr(size) + "<r></r>");
        // At 54 the data ends after the '?', and the '>' that has yet to arrive is skipped.
        EXPECT_EQ(size < 54 ? "status 6" : "1 r 1/0; 3 r 1/0; status 3", read_on(parser));
    }
}

// --- Levels -------------------------------------------------------------------------------------

TEST(StreamParserLevels, AreReportedTwiceUpToTheOpenDepth) {
    const std::string two = "<r><a k=\"v\"><b>text</b></a><c/></r>";
    const std::string one = "<r><a k=\"v\"><b>text</b></a></r>";
    const std::string all = "1 r 1/0; 1 a 2/1 k=v; 1 b 3/2 \"text\"; 0 b 3/0; 0 a 2/0; 3 r 1/0; ";
    expect_readings({
        {two, 0, "0 r 1/0; 0 a 2/1 k=v; 0 b 3/2 \"text\"; 0 c 4/1; status 0"},
        {two, 1, "1 r 1/0; 0 a 2/1 k=v; 0 b 3/2 \"text\"; 0 c 4/1; 3 r 1/0; status 3"},
        {one, 2, "1 r 1/0; 1 a 2/1 k=v; 0 b 3/2 \"text\"; 0 a 2/0; 3 r 1/0; status 3"},
        {one, 3, all + "status 3"},
        {one, 0xFFFFFFFF, all + "status 3"},
    });
}

TEST(StreamParserLevels, HoldBackWholeNodesUntilTheyClose) {
    const growing_file file(declaration + "<r><a><b/><c/>");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ("1 r 1/0; status 0", read_on(parser));
    EXPECT_EQ(0u, parser.node_queue_size());
    file.append("</a>");
    parser.parse();
    EXPECT_EQ(3u, parser.node_queue_size());
    EXPECT_EQ("0 a 2/1; 0 b 3/2; 0 c 4/2; ", taken(parser));
}

TEST(StreamParserLevels, HaveNoRootAtDepthZero) {
    const growing_file file(declaration + "<r></r>");
    xml_stream_parser parser(file.path(), 0);
    EXPECT_EQ("0 r 1/0; status 0", read_on(parser));
    EXPECT_EQ("", parser.root());
    file.append("<s/></s>");
    EXPECT_EQ("0 s 2/0; status 4", read_on(parser));
}

TEST(StreamParserLevels, HaveTheFirstOpenElementAsRoot) {
    const growing_file file(declaration + "<r><a>");
    xml_stream_parser parser(file.path(), 2);
    parser.parse();
    EXPECT_EQ("r", parser.root());
}

TEST(StreamParserLevels, LoseTrackAfterAnEmptyElement) {
    expect_readings({
        // The name of <a/> stays open, so </r> does not match.
        {"<r><a/></r>", 2, "1 r 1/0; 0 a 2/1; status 4"},
        {"<r><a/></r>", 1, "1 r 1/0; 0 a 2/1; 3 r 1/0; status 3"},
        // The name of the first <a> occupies the level, so the second is a whole node. It never
        // becomes ready, because its end tag closes the first.
        {"<r><a/><a>t</a></r>", 2, "1 r 1/0; 0 a 2/1; status 3"},
        {"<r/></r>", 1, "0 r 1/0; 3 r 1/0; status 3"},
        {"<r/>", 1, "0 r 1/0; status 0"},
        {"<r/><s/>", 1, "0 r 1/0; 0 s 2/0; status 0"},
        {"<r/><s/></r>", 2, "0 r 1/0; 0 s 2/0; status 4"},
    });
}

TEST(StreamParserLevels, ReportIncludeAsAWholeNode) {
    expect_readings({
        {"<r><include f='x'/></r>", 2, "1 r 1/0; 0 include 2/1 f=x; 3 r 1/0; status 3"},
        {"<r><include></include></r>", 1, "1 r 1/0; 0 include 2/1; 3 r 1/0; status 3"},
        // At an open level its name is not recorded, so its end tag does not match.
        {"<r><include></include></r>", 2, "1 r 1/0; status 4"},
        {"<include><a></a></include>", 1, "status 4"},
        {"<r><Include></Include></r>", 2,
         "1 r 1/0; 1 Include 2/1; 0 Include 2/0; 3 r 1/0; status 3"},
    });
}

TEST(StreamParserLevels, EndTheDocumentAtTheRootsNameAtAnyOpenLevel) {
    expect_readings({
        {"<r><r>t</r></r>", 2, "1 r 1/0; 1 r 2/1 \"t\"; 3 r 2/0; status 3"},
        {"<r><r>t</r></r>", 1, "1 r 1/0; 0 r 2/1 \"t\"; 3 r 1/0; status 3"},
    });
}

TEST(StreamParserLevels, NestDeeply) {
    const std::size_t depth = 100000;
    const growing_file file(declaration + repeated("<a>", depth) + repeated("</a>", depth));
    xml_stream_parser parser(file.path(), 0);
    EXPECT_EQ(0, parser.parse());
    EXPECT_EQ(depth, parser.node_queue_size());
    unsigned long id = 0;
    while (!parser.node_queue_empty()) {
        const node one = parser.node_queue_pop();
        ASSERT_EQ(id, one.parent);
        ASSERT_EQ(++id, one.id);
    }
    EXPECT_EQ(depth, id);
}

// --- Tags ---------------------------------------------------------------------------------------

TEST(StreamParserTags, MustMatch) {
    const struct {
        const char* body;
        const char* result;
    } cases[] = {
        {"</r>", "status 4"},
        {"<r></s>", "1 r 1/0; status 4"},
        {"<r><a></b></a></r>", "1 r 1/0; status 4"},
        {"<r><a></r>", "1 r 1/0; status 4"},
        {"<r></rr>", "1 r 1/0; status 4"},
        {"<r></R>", "1 r 1/0; status 4"},
        {"<r></r></r>", "1 r 1/0; 3 r 1/0; status 3"},
        {"< r ></ r >", "1 r 1/0; 3 r 1/0; status 3"},
        {"<\nr\n></\r\n\tr\n>", "1 r 1/0; 3 r 1/0; status 3"},
        {"<r>\r\n\t </r>", "1 r 1/0; 3 r 1/0; status 3"},
        {"<r", "status 0"},
        {"<r>", "1 r 1/0; status 0"},
        {"<r><", "1 r 1/0; status 0"},
        {"<r></", "1 r 1/0; status 0"},
        {"<r></r", "1 r 1/0; status 0"},
        {"<r></>", "1 r 1/0; status 0"},
        {"<r></></r>", "1 r 1/0; status 0"},
        {"<r><></r>", "1 r 1/0; status 6"},
        {"<r><=></r>", "1 r 1/0; status 6"},
        {"<r><-a/></r>", "1 r 1/0; status 6"},
        {"<r><?pi?></r>", "1 r 1/0; status 6"},
        {"<r><<a/></r>", "1 r 1/0; status 6"},
        {"<r><a<b/></r>", "1 r 1/0; status 6"},
        {"<r <a/></r>", "1 r 1/0; status 6"},
        {"<r><a/ ></r>", "1 r 1/0; status 6"},
        {"<r><a//></r>", "1 r 1/0; status 6"},
        {"<r><a/", "1 r 1/0; status 0"},
        {"<r>></r>", "1 r 1/0; status 6"},
        {"<r><a/>></r>", "1 r 1/0; 0 a 2/1; status 6"},
        {"><r></r>", "status 6"},
        {"<r><1a2_/></r>", "1 r 1/0; 0 1a2_ 2/1; 3 r 1/0; status 3"},
        {"<r><\xC3\xA4\xFF/></r>", "1 r 1/0; 0 \xC3\xA4\xFF 2/1; 3 r 1/0; status 3"},
        {"<r><a-b/></r>", "1 r 1/0; status 6"},
        {"<r><a.b/></r>", "1 r 1/0; status 6"},
        {"<r><a:b/></r>", "1 r 1/0; status 6"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.body);
        EXPECT_EQ(c.result, read(c.body));
    }
}

TEST(StreamParserTags, MayHaveTextInsideAnEndTag) {
    // What follows the name is text, up to the next tag.
    expect_readings({
        {"<r><a></a x></r>", 1, "1 r 1/0; 0 a 2/1; status 6"},
        {"<r><a><b></b x></a></r>", 1, "1 r 1/0; 0 a 2/1 \"x>\"; 0 b 3/2; 3 r 1/0; status 3"},
        {"<r><a><b></b<c/>></a></r>", 1, "1 r 1/0; 0 a 2/1; 0 b 3/2; 0 c 4/2; 3 r 1/0; status 3"},
    });
}

TEST(StreamParserTags, EndTheDocumentAtTheRootsClosingAngle) {
    const growing_file file(declaration + "<r></r>more <than> this");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(3, parser.parse());
    EXPECT_EQ(3, parser.parse());
    EXPECT_EQ(61u, parser.parse_offset());
    EXPECT_EQ("1 r 1/0; 3 r 1/0; ", taken(parser));
    file.append("</than>");
    EXPECT_EQ(3, parser.parse());
    EXPECT_TRUE(parser.node_queue_empty());
}

TEST(StreamParserTags, LeaveTheRootsAngleUnreadIfItArrivesAfterASpace) {
    const growing_file file(declaration + "<r></r ");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ("1 r 1/0; 3 r 1/0; status 0", read_on(parser));
    file.append(">");
    EXPECT_EQ("status 0", read_on(parser));
}

TEST(StreamParserTags, CauseStatus1ForTextAfterTheRootsName) {
    const growing_file file(declaration + "<r></r x>");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(1, parser.parse());
    EXPECT_EQ(1, parser.parse());
    EXPECT_EQ("1 r 1/0; 3 r 1/0; ", taken(parser));
    EXPECT_EQ("1 r 1/0; 3 r 1/0; status 6", read("<r></r x><"));
}

TEST(StreamParserTags, StayAtTheEndIfTheRootsEndTagContainsAnElement) {
    EXPECT_EQ("1 r 1/0; 3 r 1/0; 1 s 2/0; 0 s 1/0; status 3", read("<r></r<s></s>", 2));
    EXPECT_EQ("1 r 1/0; 3 r 1/0; 1 s 2/0; 0 s 1/0; status 3", read("<r></r<s></s>>", 2));

    // The document ends with the root's name, so the element is not examined again.
    const growing_file file(declaration + "<r></r<s></s ");
    xml_stream_parser parser(file.path(), 2);
    EXPECT_EQ("1 r 1/0; 3 r 1/0; 1 s 2/0; 0 s 1/0; status 0", read_on(parser));
    file.append("><t/>");
    EXPECT_EQ("status 0", read_on(parser));
}

// --- Names --------------------------------------------------------------------------------------

TEST(StreamParserNames, ContainLettersDigitsUnderscoresAndHighBytes) {
    for (int value = 0; value != 256; ++value) {
        SCOPED_TRACE(value);
        const char byte = static_cast<char>(value);
        const bool is_name_byte = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                                  (byte >= '0' && byte <= '9') || byte == '_' || value >= 128;
        const std::string name = std::string("x") + byte;
        const std::string whole = "1 r 1/0; 0 a 2/1 " + name + "=1; 3 r 1/0; status 3";
        const std::string status = byte == '=' ? "7" : "9";
        EXPECT_EQ(is_name_byte ? whole : "1 r 1/0; status " + status,
                  read("<r><a " + name + "='1'/></r>"));
        EXPECT_EQ(is_name_byte, read("<" + name + ">") == "1 " + name + " 1/0; status 0");
    }
}

TEST(StreamParserNames, AreNotCutByTheEndOfTheData) {
    const growing_file file(declaration + "<ro");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ("status 0", read_on(parser));
    EXPECT_EQ("", parser.root());
    file.append("ot fir");
    EXPECT_EQ("status 0", read_on(parser));
    EXPECT_EQ("root", parser.root());
    file.append("st='1'></ro");
    EXPECT_EQ("1 root 1/0 first=1; status 0", read_on(parser));
    file.append("ot>");
    EXPECT_EQ("3 root 1/0; status 3", read_on(parser));
}

// --- Attributes ---------------------------------------------------------------------------------

TEST(StreamParserAttributes, AreInDocumentOrder) {
    const struct {
        const char* attributes;
        const char* result;
    } cases[] = {
        {"x='1'", " x=1"},
        {"z='1' y=\"2\" x='3'", " z=1 y=2 x=3"},
        {"x='1'y='2'", " x=1 y=2"},
        {"\t\r\n x='1'\n", " x=1"},
        {"x='\"' y=\"'\"", " x=\" y='"},
        {"x=''", " x="},
        {"x='' y=\"\"", " x= y="},
        {"x= '1'", " x=1"},
        {"x=\r\n\t \"1\"", " x=1"},
        {"x=' 1 '", " x= 1 "},
        {"x='a\nb'", " x=a\nb"},
        {"x='>/='", " x=>/="},
        {"1='1' _='2' \xC3\xA4='3'", " 1=1 _=2 \xC3\xA4=3"},
        {"x='&lt;&gt;&amp;&apos;&quot;&nbsp;|'", " x=<>&'\" |"},
        {"x='&#65;&#x42;' y='&#39;'", " x=AB y='"},
        {"x='&lt;' X='2'", " x=< X=2"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.attributes);
        EXPECT_EQ(std::string("1 r 1/0; 0 a 2/1") + c.result + "; 3 r 1/0; status 3",
                  read(std::string("<r><a ") + c.attributes + "/></r>"));
    }
}

TEST(StreamParserAttributes, HaveAStatusForEachError) {
    const struct {
        const char* attributes;
        int status;
    } cases[] = {
        {"x", 9},
        {"x ='1'", 9},
        {"x\n='1'", 9},
        {"x y='1'", 9},
        {"x-y='1'", 9},
        {"x:y='1'", 9},
        {"x.y='1'", 9},
        {"x'1'", 9},
        {"x=1", 7},
        {"x=", 7},
        {"x=>", 7},
        {"x=&lt;", 7},
        {"x='<'", 6},
        {"x='a<b/></r>", 6},
        {"='1'", 6},
        {"-x='1'", 6},
        {"'1'", 6},
        {"x='1'='2'", 6},
        {"x='1' x='2'", 5},
        {"x='' x=''", 5},
        {"x='1' y='2' x=\"1\"", 5},
        {"x='&bad;'", 6},
        {"x='&#;;' x='1'", 5},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.attributes);
        EXPECT_EQ("1 r 1/0; status " + std::to_string(c.status),
                  read(std::string("<r><a ") + c.attributes + "/></r>"));
    }
}

TEST(StreamParserAttributes, MayRepeatNamesOfOtherElements) {
    EXPECT_EQ("1 r 1/0 x=1; 0 a 2/1 x=2; 0 b 3/2 x=3; 0 c 4/1 x=4; 3 r 1/0; status 3",
              read("<r x='1'><a x='2'><b x='3'/></a><c x='4'/></r>"));
}

TEST(StreamParserAttributes, AreAddedOnceWhereverTheDataEnds) {
    const std::string body = "<r><i a='1' b='2' c='3'/></r>";
    for (std::size_t size = 0; size <= body.size(); ++size) {
        EXPECT_EQ("1 r 1/0; 0 i 2/1 a=1 b=2 c=3; 3 r 1/0; status 3", read_in_two(body, size))
            << size;
    }
}

TEST(StreamParserAttributes, AreCompleteWhenAnOpenElementIsReady) {
    const growing_file file(declaration + "<r a='1'");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(0, parser.parse());
    EXPECT_TRUE(parser.node_queue_empty());
    EXPECT_EQ(0u, parser.node_queue_size());
    EXPECT_THROW(parser.node_queue_front(), xml_stream_parser::EmptyNodeQueue);
    file.append(" b='2'");
    EXPECT_EQ(0, parser.parse());
    EXPECT_TRUE(parser.node_queue_empty());
    file.append(">");
    EXPECT_EQ(0, parser.parse());
    EXPECT_EQ("1 r 1/0 a=1 b=2", described(parser.node_queue_front()));
}

TEST(StreamParserAttributes, ArePresentUpToAnErrorInTheStartTag) {
    EXPECT_EQ("1 r 1/0 a=1; status 7", read("<r a='1' b=2>"));
    EXPECT_EQ("1 r 1/0; 1 s 2/1 a=1; status 5", read("<r><s a='1' a='2'>", 2));
}

// --- Character data -----------------------------------------------------------------------------

TEST(StreamParserText, IsTheLastRunOfAnElement) {
    const struct {
        const char* content;
        const char* text;
    } cases[] = {
        {"text", " \"text\""},
        {" \r\n\ttext \n", " \"text \n\""},
        {"", ""},
        {" \n", ""},
        {"a b", " \"a b\""},
        {"a>b'c\"d=e/f", " \"a>b'c\"d=e/f\""},
        {"/", " \"/\""},
        {"one<!-- -->.two", " \"two\""},
        {"one<!-- -->. ", " \"one\""},
        {"&lt;b&gt; &amp; &quot;&apos;&nbsp;", " \"<b> & \"' \""},
        {" &nbsp;x", " \" x\""},
        {"\xE2\x82\xAC", " \"\xE2\x82\xAC\""},
        {"<![CDATA[x]]>", " \"![CDATA[x]]>\""},
        {"<!DOCTYPE x>y", " \"!DOCTYPE x>y\""},
        {"<!->z", " \"!->z\""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.content);
        EXPECT_EQ(std::string("1 r 1/0; 0 a 2/1") + c.text + "; 3 r 1/0; status 3",
                  read(std::string("<r><a>") + c.content + "</a></r>"));
    }
    EXPECT_EQ("1 r 1/0; 0 a 2/1 \"two\"; 0 b 3/2 \"in\"; 3 r 1/0; status 3",
              read("<r><a>one<b>in</b>two</a></r>"));
}

TEST(StreamParserText, MayContainAnyByte) {
    for (int value = 0; value != 256; ++value) {
        SCOPED_TRACE(value);
        const std::string text = std::string("x") + static_cast<char>(value) + "y";
        if (value != '<' && value != '&') {
            EXPECT_EQ("1 r 1/0; 0 a 2/1 \"" + text + "\"; 3 r 1/0; status 3",
                      read("<r><a>" + text + "</a></r>"));
        }
    }
}

TEST(StreamParserText, MustNotBeInTheRootOrOutsideIt) {
    expect_readings({
        {"<a>text</a>", 1, "1 a 1/0; status 6"},
        {"<a/>text<b/>", 1, "0 a 1/0; status 6"},
        {"<r><a>></a></r>", 1, "1 r 1/0; status 6"},
        {"<r><a> ></a></r>", 1, "1 r 1/0; status 6"},
        {"text<a></a>", 1, "status 6"},
        {"<!DOCTYPE a><a></a>", 1, "status 6"},
        {"<a>&lt;</a>", 1, "1 a 1/0; status 6"},
        {"<a>text</a>", 0, "status 6"},
        {"<r><b/>text</r>", 1, "1 r 1/0; 0 b 2/1; status 6"},
        // There is no tag to end the text yet.
        {"<r>text", 1, "1 r 1/0; status 0"},
    });
}

TEST(StreamParserText, GoesToAnOpenElementThatIsStillInTheQueue) {
    EXPECT_EQ("1 r 1/0; 1 s 2/1 \"text\"; 0 s 2/0; 3 r 1/0; status 3",
              read("<r><s>text</s></r>", 2));
    const growing_file file(declaration + "<r><s>");
    xml_stream_parser parser(file.path(), 2);
    EXPECT_EQ("1 r 1/0; 1 s 2/1; status 0", read_on(parser));
    file.append("text</s><s>more</s></r>");
    EXPECT_EQ("0 s 2/0; 1 s 3/1 \"more\"; 0 s 2/0; 3 r 1/0; status 3", read_on(parser));
}

// --- References ---------------------------------------------------------------------------------

TEST(StreamParserReferences, AreOneByte) {
    const struct {
        const char* entity;
        std::string byte;
    } cases[] = {
        {"&lt;", "<"},
        {"&gt;", ">"},
        {"&amp;", "&"},
        {"&apos;", "'"},
        {"&quot;", "\""},
        {"&nbsp;", " "},
        {"&#65;", "A"},
        {"&#x41;", "A"},
        {"&#xaF;", "\xAF"},
        {"&#228;", "\xE4"},
        {"&#255;", "\xFF"},
        {"&#256;", "\xFF"},
        {"&#300;", "\xFF"},
        {"&#8364;", "\xFF"},
        {"&#x20AC;", "\xFF"},
        {"&#065;", "5"},
        {"&#0101;", "A"},
        {"&#0x41;", ""},
        {"&#x041;", "A"},
        {"&#99999999999999999999999;", "\xFF"},
        {"&#08;", std::string(1, '\0')},
        {"&#;", std::string(1, '\0')},
        {"&#x;", std::string(1, '\0')},
        {"&#0;", std::string(1, '\0')},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.entity);
        const std::string entity = c.entity;
        const std::string good = "1 r 1/0; 0 a 2/1 \"x" + c.byte + "y\"; 3 r 1/0; status 3";
        const std::string bad = "1 r 1/0; status 6";
        EXPECT_EQ(c.byte.empty() ? bad : good, read("<r><a>x" + entity + "y</a></r>"));
        const std::string value = "1 r 1/0; 0 a 2/1 v=x" + c.byte + "y; 3 r 1/0; status 3";
        EXPECT_EQ(c.byte.empty() ? bad : value, read("<r><a v='x" + entity + "y'/></r>"));
    }
}

TEST(StreamParserReferences, AreErrorsOtherwise) {
    for (const std::string entity : {"&",      "& ",    "&;",     "&x;",     "&LT;",   "&lt ",
                                     "&lx;",   "&gt:",  "&am;",   "&ampx",   "&apo;",  "&aqos;",
                                     "&apoz;", "&quo;", "&quoz;", "&nbs;",   "&nbsq;", "&copy;",
                                     "&#-1;",  "&#+1;", "&# 1;",  "&#X41;",  "&#xg;",  "&#12",
                                     "&#x12",  "&#1a;", "&&amp;", "&#\xE4;", "&\xE4;"}) {
        SCOPED_TRACE(entity);
        EXPECT_EQ("1 r 1/0; status 6", read("<r><a>x" + entity + "yyyyyy</a></r>"));
        EXPECT_EQ("1 r 1/0; status 6", read("<r><a v='x" + entity + "yyyyyy'/></r>"));
    }
}

// Where the parser has committed in a run of text cut off by the end of the data: at its beginning,
// which counts as 0, or at the ';' of the last reference. The status follows.
std::string committed_in_text(const std::string& text) {
    const growing_file file(declaration + "<r><a>" + text);
    xml_stream_parser parser(file.path(), 1);
    parser.parse();
    return std::to_string(parser.parse_offset() - 61) + " status " + std::to_string(parser.error());
}

TEST(StreamParserReferences, WaitForTheirLengthAndOftenForOneByteMore) {
    const struct {
        std::string entity;
        std::size_t bytes_after;
    } cases[] = {
        {"&lt;", 1},  {"&gt;", 1}, {"&amp;", 1},  {"&apos;", 0}, {"&quot;", 1}, {"&nbsp;", 1},
        {"&#65;", 0}, {"&#9;", 1}, {"&#x41;", 0}, {"&#x9;", 0},  {"&#;", 2},    {"&#255;", 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.entity);
        for (std::size_t size = 1; size < c.entity.size(); ++size)
            EXPECT_EQ("0 status 0", committed_in_text("x" + c.entity.substr(0, size))) << size;
        for (std::size_t more = 0; more != 4; ++more) {
            const std::string place = more < c.bytes_after ? "0" : std::to_string(c.entity.size());
            EXPECT_EQ(place + " status 0",
                      committed_in_text("x" + c.entity + std::string(more, 'z')))
                << more;
        }
    }
}

TEST(StreamParserReferences, AreErrorsAsSoonAsEnoughBytesArrive) {
    const struct {
        const char* text;
        int status;
    } cases[] = {
        {"&x;z", 0},    {"&x;zz", 6},   {"&lx;z", 6},   {"&lx;", 0},   {"&gx;z", 6},
        {"&apx;", 0},   {"&apx;z", 0},  {"&apx;zz", 6}, {"&ax;z", 0},  {"&ax;zz", 0},
        {"&ax;zzz", 6}, {"&amx;z", 0},  {"&amx;zz", 6}, {"&quo;z", 0}, {"&quo;zz", 6},
        {"&nbs;z", 0},  {"&nbs;zz", 6}, {"&#a;z", 6},   {"&#a;", 0},   {"&#xz;", 6},
        {"&#12z", 6},   {"&#12345", 0}, {"&;zz", 0},    {"&;zzz", 6},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ("0 status " + std::to_string(c.status), committed_in_text(c.text));
    }
}

TEST(StreamParserReferences, CommitSoThatTextIsResumedAtTheSemicolon) {
    const growing_file file(declaration + "<r><a>one&amp;two");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ("1 r 1/0; status 0", read_on(parser));
    file.append(" three</a></r>");
    EXPECT_EQ("0 a 2/1 \";two three\"; 3 r 1/0; status 3", read_on(parser));
}

TEST(StreamParserReferences, CommitSoThatAValueIsResumedAsAnAttribute) {
    const growing_file file(declaration + "<r><a v='one&amp;two");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(0, parser.parse());
    EXPECT_EQ(55u + 16u, parser.parse_offset());
    // No more data is needed to detect that.
    EXPECT_EQ(6, parser.parse());
    file.append("'/></r>");
    EXPECT_EQ("1 r 1/0; status 6", read_on(parser));
}

TEST(StreamParserReferences, CommitTheLineAsWell) {
    const growing_file file(declaration + "<r><a v=\n'one&amp;two");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(0, parser.parse());
    EXPECT_EQ(2u, parser.line());
    EXPECT_EQ(6, parser.parse());
    EXPECT_EQ(2u, parser.line());
}

TEST(StreamParserReferences, AreDroppedFromAValueIfTheDataEndsSoonAfterThem) {
    const struct {
        const char* value;  // with what follows it, up to the end of the data
        const char* rest;
        const char* result;
    } cases[] = {
        {"\"u&b\">", "</a></r>", "0 a 2/1 v=ub; 3 r 1/0; status 3"},
        {"\"u&b\">\n", "</a></r>", "status 6"},
        {"\"&\">", "</a></r>", "0 a 2/1 v=; 3 r 1/0; status 3"},
        {"\"&lt\">", "</a></r>", "status 6"},
        {"\"&lt\"", "/></r>", "0 a 2/1 v=lt; 3 r 1/0; status 3"},
        {"\"&quo\">", "</a></r>", "0 a 2/1 v=uo; 3 r 1/0; status 3"},
        {"\"&quo\">\n", "</a></r>", "status 6"},
        {"\"&nb\">\n", "</a></r>", "0 a 2/1 v=b; 3 r 1/0; status 3"},
        {"\"&am\">", "</a></r>", "0 a 2/1 v=m; 3 r 1/0; status 3"},
        {"\"&amp\">", "</a></r>", "0 a 2/1 v=p; 3 r 1/0; status 3"},
        {"\"&a\">", "</a></r>", "0 a 2/1 v=a; 3 r 1/0; status 3"},
        {"\"&a\">\n", "</a></r>", "0 a 2/1 v=; 3 r 1/0; status 3"},
        // The dropped byte may be the closing quote, and then the value continues.
        {"\"&a\">\n\n", "\"></a></r>", "status 6"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        const growing_file file(declaration + "<r><a v=" + c.value);
        xml_stream_parser parser(file.path(), 1);
        const std::string first = read_on(parser);
        file.append(c.rest);
        const std::string second = read_on(parser);
        EXPECT_EQ("1 r 1/0; ", first.substr(0, 9));
        EXPECT_EQ(c.result, second);
    }
}

// --- Comments -----------------------------------------------------------------------------------

TEST(StreamParserComments, LoseTheByteAfterThem) {
    const struct {
        const char* body;
        const char* result;
    } cases[] = {
        {"<r><!-- c -->x<a/></r>", "1 r 1/0; 0 a 2/1; 3 r 1/0; status 3"},
        {"<r><!-- c -->\n<a/></r>", "1 r 1/0; 0 a 2/1; 3 r 1/0; status 3"},
        {"<r><!-- c --><a/></r>", "1 r 1/0; status 6"},
        {"<r><a><!-- c -->xy</a></r>", "1 r 1/0; 0 a 2/1 \"y\"; 3 r 1/0; status 3"},
        {"<r><a><!-- c --></a></r>", "1 r 1/0; status 4"},
        {"<!-- c -->.<r></r>", "1 r 1/0; 3 r 1/0; status 3"},
        {"<r><!---->.<a/></r>", "1 r 1/0; 0 a 2/1; 3 r 1/0; status 3"},
        {"<r><!-->--><a/></r>", "1 r 1/0; status 6"},
        {"<r><!-->-->.<a/></r>", "1 r 1/0; 0 a 2/1; 3 r 1/0; status 3"},
        {"<r><!--->-->.<a/></r>", "1 r 1/0; 0 a 2/1; 3 r 1/0; status 3"},
        {"<r><!-- - -> <x> &bad; - -->.<a/></r>", "1 r 1/0; 0 a 2/1; 3 r 1/0; status 3"},
        {"<r><!-- a -- b -->.<a/></r>", "1 r 1/0; status 6"},
        {"<r><!-- a --->.<a/></r>", "1 r 1/0; status 6"},
        {"<r><!--x-->.<!--y-->.<a/></r>", "1 r 1/0; 0 a 2/1; 3 r 1/0; status 3"},
        {"<r><!--x--><!--y-->.<a/></r>", "1 r 1/0; status 6"},
        {"<r><!-- never closed <a/></r>", "1 r 1/0; status 0"},
        {"<r><!", "1 r 1/0; status 0"},
        {"<r><!-", "1 r 1/0; status 0"},
        {"<r><!--", "1 r 1/0; status 0"},
        {"<r a='1' <!-- c -->>", "1 r 1/0 a=1; status 6"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.body);
        EXPECT_EQ(c.result, read(c.body));
    }
}

// Whether the byte after the comment is lost if the data first ends `size` bytes after its
// beginning.
bool loses_a_byte(const std::string& comment, std::size_t size) {
    return size < 4 || size > comment.size();
}

TEST(StreamParserComments, LoseNoByteIfTheDataEndsWithinThem) {
    const std::string comment = "<!-- c\n-\n c -->";
    const std::string body = "<r><a>" + comment + "xy</a></r>";
    const std::size_t begin = 6;
    for (std::size_t size = 0; size <= body.size(); ++size) {
        const bool is_lost = size < begin || loses_a_byte(comment, size - begin);
        EXPECT_EQ(std::string("1 r 1/0; 0 a 2/1 \"") + (is_lost ? "y" : "xy") +
                      "\"; 3 r 1/0; status 3",
                  read_in_two(body, size))
            << size;
    }
}

TEST(StreamParserComments, LoseNoByteIfTheBufferEndsWithinThem) {
    const std::string comment = "<!-- c -->";
    for (std::size_t size = 0; size != comment.size() + 3; ++size) {
        SCOPED_TRACE(size);
        std::string document = declaration + "<r><a>";
        document.resize(65536 - size, '\n');
        document += comment + "xy</a></r>";
        EXPECT_EQ(std::string("1 r 1/0; 0 a 2/1 \"") + (loses_a_byte(comment, size) ? "y" : "xy") +
                      "\"; 3 r 1/0; status 3",
                  read_file(document, 1));
    }
}

TEST(StreamParserComments, HaveTheirLastThreeBytesReadAsMarkupByTheNextCall) {
    const struct {
        const char* body;
        const char* result;  // of the rest
    } cases[] = {
        {"<r><!-- a <i>", "1 r 1/0; status 4"},  // <i> is an open element now
        {"<r><!-- a <i> ", "1 r 1/0; 0 j 2/1; 3 r 1/0; status 3"},
        {"<r><!-- a \n\n", "1 r 1/0; 0 j 2/1; 3 r 1/0; status 3"},
        {"<r><!-- abc", "1 r 1/0; 0 j 2/1; 3 r 1/0; status 3"},
        {"<r><!-- a >", "1 r 1/0; 0 j 2/1; 3 r 1/0; status 3"},  // text from "a" on
        {"<r><!-- a >  ", "1 r 1/0; status 6"},
        {"<r><!-- a >   ", "1 r 1/0; 0 j 2/1; 3 r 1/0; status 3"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.body);
        const growing_file file(declaration + c.body);
        xml_stream_parser parser(file.path(), 1);
        EXPECT_EQ(0, parser.parse());
        file.append(" --><j/></r>");
        EXPECT_EQ(c.result, read_on(parser));
        EXPECT_EQ("1 r 1/0; 0 j 2/1; 3 r 1/0; status 3",
                  read_file(declaration + c.body + " -->.<j/></r>", 1));
    }
}

TEST(StreamParserComments, MayBeLongerThanTheBuffer) {
    const growing_file file(declaration + "<r><!--" + repeated("comment\n", 40000) + "--><a/></r>");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(3, parser.parse());
    parser.node_queue_pop();
    EXPECT_EQ(40001u, parser.node_queue_front().line);
    EXPECT_EQ("0 a 2/1; 3 r 1/0; ", taken(parser));
}

// --- Lines and offsets --------------------------------------------------------------------------

TEST(StreamParserLines, AreCountedByLineFeedsBetweenAndInsideTags) {
    const struct {
        const char* body;
        std::vector<unsigned> lines;  // lines of the nodes, and of the parser at the end
    } cases[] = {
        {"<r></r>", {1, 1, 1}},
        {"\n<r>\n\n</r>", {2, 4, 4}},
        {"\r\n<r>\r\r</r>\n", {2, 2, 2}},
        {"<r\n a='1'\n\n><b/></r>", {1, 4, 4, 4}},
        {"<\n\nr></\nr\n>", {3, 4, 5}},
        {"<r a=\n'1'><b/></r>", {1, 2, 2, 2}},
        {"<r a='\n\n'><b/></r>", {1, 1, 1, 1}},
        {"<r><a>\nx\ny\n</a><b/></r>", {1, 1, 2, 2, 2}},
        {"<r><!--\n\n-->.<b/></r>", {1, 3, 3, 3}},
        {"<r><!--\n\n-->\n<b/></r>", {1, 3, 3, 3}},
        {"<r><!--\n\n-->\n\n<b/></r>", {1, 4, 4, 4}},
        {"<r><a>x&#10;\n&#10;</a><b/></r>", {1, 1, 1, 1, 1}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.body);
        const growing_file file(declaration + c.body);
        xml_stream_parser parser(file.path(), 1);
        ASSERT_EQ(3, parser.parse());
        std::vector<unsigned> lines;
        while (!parser.node_queue_empty())
            lines.push_back(parser.node_queue_pop().line);
        lines.push_back(parser.line());
        EXPECT_EQ(c.lines, lines);
    }
}

TEST(StreamParserLines, IncludeThoseBeforeAndAfterTheDeclaration) {
    const growing_file file("\n\n" + declaration + "\n<r></r>");
    xml_stream_parser parser(file.path(), 1);
    ASSERT_EQ(3, parser.parse());
    EXPECT_EQ(4u, parser.node_queue_front().line);
}

TEST(StreamParserLines, AreCountedOnceWhereverTheDataEnds) {
    const std::string body = "\n<\nr\na=\n'1'\n>\n<a\n/>\n<!--\n\n-->\t\n<b\n>t</b\n>\n</\nr\n>";
    for (std::size_t size = 0; size <= body.size(); ++size) {
        SCOPED_TRACE(size);
        const growing_file file(declaration + body.substr(0, size));
        xml_stream_parser parser(file.path(), 1);
        parser.parse();
        file.append(body.substr(size));
        parser.parse();
        std::vector<unsigned> lines;
        while (!parser.node_queue_empty())
            lines.push_back(parser.node_queue_pop().line);
        EXPECT_EQ((std::vector<unsigned>{3, 7, 12, 16}), lines);
    }
}

TEST(StreamParserLines, AreCommittedAtTheEndOfAResumedComment) {
    const growing_file file(declaration + "<r><!--\n\nxxxx");
    xml_stream_parser parser(file.path(), 1);
    parser.parse();
    file.append("\n--><a");
    parser.parse();
    EXPECT_EQ(4u, parser.line());
    file.append("/></r>");
    EXPECT_EQ(3, parser.parse());
    parser.node_queue_pop();
    EXPECT_EQ(4u, parser.node_queue_front().line);
}

TEST(StreamParserOffset, IsTheEndOfTheLastCompleteConstruct) {
    const struct {
        const char* body;
        unsigned long offset;  // after the declaration
    } cases[] = {
        {"", 0},
        {"\n", 1},
        {"\n<", 1},
        {"<r", 0},
        {"<r ", 3},
        {"<r a", 3},
        {"<r a=", 3},
        {"<r a='1", 3},
        {"<r a='1'", 8},
        {"<r a='1'>", 9},
        {"<r a='1'/", 8},
        {"<r><a>text", 6},
        {"<r><!-", 3},
        {"<r><!--", 7},
        {"<r><!--abcd", 8},
        {"<r><!-- -->", 8},
        {"<r><!-- -->x", 12},
        {"<r></", 3},
        {"<r></r", 3},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.body);
        const growing_file file(declaration + c.body);
        xml_stream_parser parser(file.path(), 1);
        parser.parse();
        EXPECT_EQ(declaration.size() + c.offset, parser.parse_offset());
    }
}

// --- The queue ----------------------------------------------------------------------------------

TEST(StreamParserQueue, ThrowsIfThereIsNoNode) {
    const growing_file file(declaration);
    xml_stream_parser parser(file.path(), 1);
    EXPECT_THROW(parser.node_queue_front(), xml_stream_parser::EmptyNodeQueue);
    try {
        parser.node_queue_pop();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::exception& error) {
        EXPECT_STREQ("empty node queue", error.what());
        EXPECT_NE(nullptr, dynamic_cast<const xml_stream_parser::EmptyNodeQueue*>(&error));
    }
}

TEST(StreamParserQueue, LosesANodeThatIsPoppedTooEarly) {
    const growing_file file(declaration + "<r><a x='1'>");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ("1 r 1/0; status 0", read_on(parser));
    EXPECT_THROW(parser.node_queue_front(), xml_stream_parser::EmptyNodeQueue);
    EXPECT_THROW(parser.node_queue_front(), xml_stream_parser::EmptyNodeQueue);
    file.append("<b/></a><c/><d><e>");
    parser.parse();
    EXPECT_EQ("0 a 2/1 x=1; 0 b 3/2; 0 c 4/1; ", taken(parser));

    EXPECT_THROW(parser.node_queue_pop(), xml_stream_parser::EmptyNodeQueue);  // d
    file.append("text</e>text</d></r>");
    EXPECT_EQ("0 e 6/5 \"text\"; 3 r 1/0; status 3", read_on(parser));
}

TEST(StreamParserQueue, DropsLaterAttributesOfATakenNode) {
    const growing_file file(declaration + "<r><a x='1' ");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ("1 r 1/0; status 0", read_on(parser));
    EXPECT_THROW(parser.node_queue_pop(), xml_stream_parser::EmptyNodeQueue);
    file.append("y='2' z='&lt;'><b/></a></r>");
    EXPECT_EQ("0 b 3/2; 3 r 1/0; status 3", read_on(parser));
}

TEST(StreamParserQueue, StaysSafeWheneverOpenNodesAreTaken) {
    // Later text and attributes of nodes that have been taken are dropped.
    const std::string body = "<r a='1' b='2'><s c='3' d='4'>text<t e='5'><u>more</u>last</t>"
                             "</s><s f='6'/>";
    for (unsigned depth = 0; depth != 5; ++depth) {
        for (std::size_t size = 0; size <= body.size(); ++size) {
            SCOPED_TRACE(size);
            const growing_file file(declaration + body.substr(0, size));
            xml_stream_parser parser(file.path(), depth);
            parser.parse();
            bool is_empty = false;
            for (int i = 0; i != 10 && !is_empty; ++i) {
                try {
                    parser.node_queue_pop();
                } catch (const xml_stream_parser::EmptyNodeQueue&) {
                    is_empty = i > 5;
                }
            }
            file.append(body.substr(size) + "<z></z></t></s></r>");
            parser.parse();
            while (!parser.node_queue_empty()) {
                const node one = parser.node_queue_pop();
                EXPECT_TRUE(one.ready);
                EXPECT_FALSE(one.name.empty());
            }
            EXPECT_LE(parser.error(), 4);
        }
    }
}

TEST(StreamParserQueue, ReturnsItsFirstNodeByReference) {
    const growing_file file(declaration + "<r>");
    xml_stream_parser parser(file.path(), 1);
    parser.parse();
    parser.node_queue_front().text = "noted";
    EXPECT_EQ("1 r 1/0 \"noted\"", described(parser.node_queue_pop()));
}

TEST(StreamParserQueue, MakesAStartTagWaitAfterAHundredNodes) {
    const growing_file file(declaration + "<r>" + repeated("<i/>", 300));
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(0, parser.parse());
    EXPECT_EQ(101u, parser.node_queue_size());
    EXPECT_EQ(55u + 3 + 100 * 4, parser.parse_offset());
    EXPECT_EQ(0, parser.parse());
    EXPECT_EQ(101u, parser.node_queue_size());
}

TEST(StreamParserQueue, NeverMakesAnEndTagWait) {
    for (const std::size_t children : {98u, 99u, 100u}) {
        const growing_file file(declaration + "<r>" + repeated("<i/>", children) + "</r>");
        xml_stream_parser parser(file.path(), 1);
        EXPECT_EQ(3, parser.parse());
        EXPECT_EQ(children + 2, parser.node_queue_size());
    }
    const growing_file file(declaration + "<r>" + repeated("<i/>", 101) + "</r>");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(0, parser.parse());
    EXPECT_EQ(101u, parser.node_queue_size());
}

TEST(StreamParserQueue, IsFullForTheNextCallWithAHundredNodes) {
    for (const std::size_t nodes : {99u, 100u}) {
        SCOPED_TRACE(nodes);
        const growing_file file(declaration + "<r>" + repeated("<i/>", nodes - 1));
        xml_stream_parser parser(file.path(), 1);
        parser.parse();
        EXPECT_EQ(nodes, parser.node_queue_size());
        file.append("<i/><i/><i/>");
        parser.parse();
        EXPECT_EQ(nodes == 99 ? 101u : 100u, parser.node_queue_size());
    }
}

TEST(StreamParserQueue, HasNoLimitWithFewerThanTwoReadyNodesAtTheFront) {
    const std::string children = repeated("<i/>", 300);
    const growing_file one_ready(declaration + "<r><w>" + children);
    xml_stream_parser unlimited(one_ready.path(), 1);
    unlimited.parse();
    EXPECT_EQ(1u, unlimited.node_queue_size());
    EXPECT_EQ(55u + 6 + 1200, unlimited.parse_offset());

    const growing_file two_ready(declaration + "<r><s/><w>" + children);
    xml_stream_parser limited(two_ready.path(), 1);
    limited.parse();
    EXPECT_EQ(2u, limited.node_queue_size());
    EXPECT_EQ(55u + 10 + 98 * 4, limited.parse_offset());
    EXPECT_EQ("r", limited.node_queue_pop().name);
    EXPECT_EQ(55u + 10 + 98 * 4, limited.parse_offset());
    EXPECT_EQ("s", limited.node_queue_pop().name);  // continues parsing, since w is not ready
    EXPECT_EQ(55u + 10 + 1200, limited.parse_offset());
    two_ready.append("</w>");
    limited.parse();
    EXPECT_EQ(301u, limited.node_queue_size());
}

TEST(StreamParserQueue, IsRefilledWhenTheLastReadyNodeIsTaken) {
    const growing_file file(declaration + "<r>" + repeated("<i/>", 150) + "</r>");
    xml_stream_parser parser(file.path(), 1);
    parser.parse();
    for (unsigned i = 101; i > 1; --i) {
        ASSERT_EQ(i, parser.node_queue_size());
        parser.node_queue_pop();
    }
    EXPECT_EQ(100u, parser.node_queue_front().id - 1);
    parser.node_queue_pop();
    EXPECT_EQ(51u, parser.node_queue_size());
    EXPECT_EQ(3, parser.error());
}

TEST(StreamParserQueue, IsNotRefilledAfterAnError) {
    const growing_file file(declaration + "<r></x>");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(4, parser.parse());
    EXPECT_EQ("1 r 1/0; ", taken(parser));
    EXPECT_EQ(4, parser.error());
    parser.error() = xml_stream_parser::no_error;
    EXPECT_THROW(parser.node_queue_pop(), xml_stream_parser::EmptyNodeQueue);
    EXPECT_EQ(0, parser.error());
}

TEST(StreamParserQueue, HidesAnErrorFromTheNextCallWhileItIsFull) {
    const growing_file file(declaration + "<r>" + repeated("<i/>", 99) + "</x>");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(4, parser.parse());
    EXPECT_EQ(100u, parser.node_queue_size());
    EXPECT_EQ(0, parser.parse());
    while (parser.node_queue_size() > 1)
        parser.node_queue_pop();
    EXPECT_EQ(4, parser.parse());
}

TEST(StreamParserQueue, KeepsTheErrorWithoutRecovery) {
    for (const std::string body : {"<r></x>", "<r><a x='1' x='2'/>", "<r>text</r>", "<r a b='1'>",
                                   "<r a=1>", "<r><=a>", "<r><!-- -- -->"}) {
        SCOPED_TRACE(body);
        const growing_file file(declaration + body);
        xml_stream_parser parser(file.path(), 1);
        const int status = parser.parse();
        EXPECT_LE(4, status);
        EXPECT_EQ(status, parser.parse());
        file.append("<more/>");
        EXPECT_EQ(status, parser.parse());
        EXPECT_EQ("1 r 1/0; ", taken(parser));
    }
}

// --- Recovery -----------------------------------------------------------------------------------

const std::list<ustring8> only(const char* name) {
    return std::list<ustring8>(1, name);
}

TEST(StreamParserRecovery, ResumesAtTheNextElementWithANameOnTheList) {
    const struct {
        const char* body;
        std::list<ustring8> names;
        const char* result;
    } cases[] = {
        {"<r><a/><b x='1' x='2'/><c/><d/></r>", {"d"}, "0 d 4/0; 3 r 1/0; status 3"},
        {"<r><a/><b x='1' x='2'/><c/><d/></r>", {"d", "c"}, "0 c 4/0; 0 d 5/0; 3 r 1/0; status 3"},
        {"<r><b x='1' x='2'/><b x='3'/></r>", {"b"}, "0 b 3/0 x=3; 3 r 1/0; status 3"},
        {"<r><b x='1' x='2'/>< \n b></b></r>", {"b"}, "0 b 3/0; 3 r 1/0; status 3"},
        {"<r><b =/><bb/><b/></r>", {"b"}, "0 b 3/0; 3 r 1/0; status 3"},
        {"<r><b =/></c><!c><c/></r>", {"c"}, "0 c 3/0; 3 r 1/0; status 3"},
        {"<r><b =/><<c/></r>", {"c"}, "0 c 3/0; 3 r 1/0; status 3"},
        // The second '<' is skipped, like any byte after whitespace that is not a name byte.
        {"<r><b =/>< <c/><c n='2'/></r>", {"c"}, "0 c 3/0 n=2; 3 r 1/0; status 3"},
        {"<r><b =/><!<c/></r>", {"c"}, "0 c 3/0; 3 r 1/0; status 3"},
        // The search includes comments and values.
        {"<r><b =/><!-- <c n='1'/> --><c n='2'/></r>", {"c"}, "0 c 3/0 n=1; status 6"},
        {"<r><b =/><d v='<c/>'/><c n='2'/></r>", {"c"}, "0 c 3/0; status 6"},
        // An error in a deeper element closes all deeper elements.
        {"<r><a><b><=</b></a><c/></r>", {"c"}, "0 c 4/0; 3 r 1/0; status 3"},
        {"<r><=<r/></r>", {"r"}, "0 r 2/0; 3 r 1/0; status 3"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.body);
        const growing_file file(declaration + c.body);
        xml_stream_parser parser(file.path(), 1);
        parser.parse();
        EXPECT_LE(4, parser.error());
        EXPECT_EQ(0, parser.recover(c.names));
        EXPECT_TRUE(parser.node_queue_empty());
        EXPECT_EQ(c.result, read_on(parser));
    }
}

TEST(StreamParserRecovery, AcceptsStandardStrings) {
    const growing_file file(declaration + "<r><=<c/></r>");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(6, parser.parse());
    EXPECT_EQ(0, parser.recover(std::list<std::string>{"b", "c"}));
    EXPECT_EQ("0 c 2/0; 3 r 1/0; status 3", read_on(parser));
}

TEST(StreamParserRecovery, KeepsTheOpenLevelsOpen) {
    const growing_file file(declaration + "<r><s><a x=1/><a x='2'/></s><s><a x='3'/></s></r>");
    xml_stream_parser parser(file.path(), 2);
    EXPECT_EQ("1 r 1/0; 1 s 2/1; status 7", read_on(parser));
    EXPECT_EQ(0, parser.recover(only("a")));
    EXPECT_EQ("0 a 4/0 x=2; 0 s 2/0; 1 s 5/0; 0 a 6/5 x=3; 0 s 2/0; 3 r 1/0; status 3",
              read_on(parser));
}

TEST(StreamParserRecovery, KeepsAnElementAtAnOpenLevelOpenIfTheErrorWasInIt) {
    const growing_file file(declaration + "<r><a x=1/><a x='2'/></r>");
    xml_stream_parser parser(file.path(), 2);
    EXPECT_EQ("1 r 1/0; 1 a 2/1; status 7", read_on(parser));
    EXPECT_EQ(0, parser.recover(only("a")));
    EXPECT_EQ("0 a 3/0 x=2; status 4", read_on(parser));
}

TEST(StreamParserRecovery, DropsLaterTextOfNodesThatItRemoved) {
    const growing_file file(declaration + "<r><s><=<a/>text</s></r>");
    xml_stream_parser parser(file.path(), 2);
    EXPECT_EQ(6, parser.parse());
    EXPECT_EQ(2u, parser.node_queue_size());
    EXPECT_EQ(0, parser.recover(only("a")));
    EXPECT_EQ(0u, parser.node_queue_size());
    EXPECT_EQ("0 a 3/0; 0 s 2/0; 3 r 1/0; status 3", read_on(parser));
}

TEST(StreamParserRecovery, ClearsTheFlagsOfTheConstructThatFailed) {
    // Inside a comment, inside a tag, and before the '>' of an end tag.
    for (const std::string broken : {"<!-- -- >", "<b x='1'", "<b></b &;zzz>"}) {
        SCOPED_TRACE(broken);
        const growing_file file(declaration + "<r>" + broken + "<c/></r>");
        xml_stream_parser parser(file.path(), 1);
        EXPECT_EQ(6, parser.parse());
        EXPECT_EQ(0, parser.recover(only("c")));
        EXPECT_THAT(read_on(parser), testing::HasSubstr("; 3 r 1/0; status 3"));
    }
    const growing_file file(declaration + "<r><b></b &;zzz><c/>></r>");
    xml_stream_parser parser(file.path(), 1);
    parser.parse();
    parser.recover(only("c"));
    EXPECT_EQ("0 c 3/0; status 6", read_on(parser)) << "no '>' is due";
}

TEST(StreamParserRecovery, FailsUntilTheFileHasSuchAnElement) {
    const growing_file file(declaration + "<r><b =/>");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(6, parser.parse());
    EXPECT_EQ(2, parser.recover(only("c")));
    EXPECT_EQ(2, parser.parse());
    file.append("<d/><c/></r>");
    EXPECT_EQ(2, parser.parse());
    EXPECT_EQ(2, parser.error());
    EXPECT_EQ(0, parser.recover(only("c")));
    EXPECT_EQ("0 c 3/0; 3 r 1/0; status 3", read_on(parser));
}

TEST(StreamParserRecovery, WaitsAtAnAngleThatEndsTheData) {
    const growing_file file(declaration + "<r><b =/><");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(6, parser.parse());
    for (int call = 0; call != 2; ++call) {
        EXPECT_EQ(2, parser.recover(only("c")));
        EXPECT_EQ(64u, parser.parse_offset());
    }
    file.append("c n='1'/><c n='2'/></r>");
    EXPECT_EQ(0, parser.recover(only("c")));
    EXPECT_EQ("0 c 3/0 n=1; 0 c 4/0 n=2; 3 r 1/0; status 3", read_on(parser));
}

TEST(StreamParserRecovery, LooksAgainAtAnAngleThatEndedTheData) {
    const struct {
        const char* rest;
        const char* result;
    } cases[] = {
        {" c/></r>", "0 c 3/0; 3 r 1/0; status 3"},
        {"/d><c/></r>", "0 c 3/0; 3 r 1/0; status 3"},
        {"!-- d --><c/></r>", "0 c 3/0; 3 r 1/0; status 3"},
        {"<c/></r>", "0 c 3/0; 3 r 1/0; status 3"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.rest);
        const growing_file file(declaration + "<r><b =/><");
        xml_stream_parser parser(file.path(), 1);
        EXPECT_EQ(6, parser.parse());
        EXPECT_EQ(2, parser.recover(only("c")));
        file.append(c.rest);
        EXPECT_EQ(0, parser.recover(only("c")));
        EXPECT_EQ(c.result, read_on(parser));
    }
}

TEST(StreamParserRecovery, SkipsANameCutOffByTheEndOfTheData) {
    for (const std::string cut : {"<c", "< ", "<cc", "< c"}) {
        SCOPED_TRACE(cut);
        const growing_file file(declaration + "<r><b =/>" + cut);
        xml_stream_parser parser(file.path(), 1);
        EXPECT_EQ(6, parser.parse());
        EXPECT_EQ(2, parser.recover(only("c")));
        EXPECT_EQ(64u + cut.size(), parser.parse_offset());
        file.append(" n='1'/><c n='2'/></r>");
        EXPECT_EQ(0, parser.recover(only("c")));
        EXPECT_EQ("0 c 3/0 n=2; 3 r 1/0; status 3", read_on(parser));
    }
}

// The file is complete, but the search sees 65536 bytes of it at a time.
TEST(StreamParserRecovery, SkipsANameCutOffByTheEndOfTheBuffer) {
    for (std::size_t inside = 0; inside != 8; ++inside) {
        SCOPED_TRACE(inside);  // bytes of the first tag within the first 65536
        std::string document = declaration + "<r><b =/>";
        document.resize(65536 - inside, ' ');
        const growing_file file(document + "<item n='1'/><item n='2'/></r>");
        xml_stream_parser parser(file.path(), 1);
        EXPECT_EQ(6, parser.parse());
        EXPECT_EQ(0, parser.recover(only("item")));
        const bool is_cut = inside >= 2 && inside <= 5;
        EXPECT_EQ(is_cut ? "0 item 3/0 n=2; 3 r 1/0; status 3"
                         : "0 item 3/0 n=1; 0 item 4/0 n=2; 3 r 1/0; status 3",
                  read_on(parser));
    }
}

TEST(StreamParserRecovery, LosesNoByteAfterAReferenceCutOffByTheEndOfTheData) {
    for (const std::string cut :
         {"<a x='q&#x41", "<a x='&#65", "<a x=\"q&#1234567", "<a x='&amp;&#x4"}) {
        SCOPED_TRACE(cut);
        const growing_file file(declaration + "<root>" + cut);
        xml_stream_parser parser(file.path(), 1);
        EXPECT_EQ(0, parser.parse());
        file.append("<b y='1'/></root>");
        EXPECT_EQ(0, parser.recover(only("b")));
        EXPECT_EQ("0 b 3/0 y=1; 3 root 1/0; status 3", read_on(parser));
    }
}

TEST(StreamParserAttributes, MayBeManyButEachOnlyOnce) {
    std::string attributes;
    for (int count = 0; count != 12; ++count) {
        SCOPED_TRACE(count);
        for (const std::string end : {">text</a></r>", "/></r>", "></a></r>"}) {
            const growing_file file(declaration + "<r><a" + attributes + end);
            xml_stream_parser parser(file.path(), 1);
            EXPECT_EQ(3, parser.parse());
            parser.node_queue_pop();
            const auto one = parser.node_queue_pop();
            EXPECT_EQ(static_cast<std::size_t>(count), one.attributes.size());
            int number = 0;
            for (const auto& attribute : one.attributes) {
                EXPECT_EQ("name_" + std::to_string(number), attribute.first);
                const ustring8 value(
                    std::string(static_cast<std::size_t>(number++ * 3), 'v').c_str());
                EXPECT_EQ(value, attribute.second);
                EXPECT_EQ(ustring8(value).capacity(), attribute.second.capacity());
            }
            for (int i = 0; i != count; ++i) {
                const growing_file twice(declaration + "<r><a" + attributes + " name_" +
                                         std::to_string(i) + "=''" + end);
                xml_stream_parser second(twice.path(), 1);
                EXPECT_EQ(5, second.parse());
            }
        }
        attributes += " name_" + std::to_string(count) + "='" +
                      std::string(static_cast<std::size_t>(count * 3), 'v') + "'";
    }
}

TEST(StreamParserText, HasReferencesAtAnyDistance) {
    for (std::size_t before = 0; before != 70; ++before) {
        const std::string start = "-" + std::string(before, 'b');
        std::string document = declaration + "<r>";
        for (std::size_t after = 0; after != 40; ++after)
            document +=
                "<a>" + start + "&quot;" + start + "&lt;&gt;" + std::string(after, 'a') + "</a>";
        const growing_file file(document + "</r>");
        xml_stream_parser parser(file.path(), 1);
        EXPECT_EQ(3, parser.parse());
        parser.node_queue_pop();
        for (std::size_t after = 0; after != 40; ++after)
            ASSERT_EQ(start + "\"" + start + "<>" + std::string(after, 'a'),
                      parser.node_queue_pop().text);
    }
}

TEST(StreamParserText, MayContainAnyNumberOfReferences) {
    const std::size_t counts = 40;
    std::string document = declaration + "<r>";
    std::string references;
    for (std::size_t count = 0; count != counts; ++count, references += "&amp;, ")
        document += "<a>text: " + references + "</a><b>" + references + "end</b>";
    const growing_file file(document + "</r>");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(3, parser.parse());
    parser.node_queue_pop();
    std::string expected;
    for (std::size_t count = 0; count != counts; ++count, expected += "&, ") {
        SCOPED_TRACE(count);
        EXPECT_EQ("text: " + expected, parser.node_queue_pop().text);
        EXPECT_EQ(expected + "end", parser.node_queue_pop().text);
    }
}

TEST(StreamParserRecovery, StopsAtTheEndOfTheDataAfterAnyCut) {
    const std::string body =
        "<a x='q&#x41;&lt;&amp;&apos;' y=\"&#65;&nbsp;&quot;&gt;\" "
        "z=''>one&#x41;&#65;&amp;&apos;two"
        "<!-- c -->\n<![CDATA[&lt;]]>\n<c/ ><d >text</d\n></a><!-- d -->\n<e = '1'>";
    for (std::size_t size = 0; size <= body.size(); ++size) {
        SCOPED_TRACE(body.substr(0, size));
        const growing_file file(declaration + "<root>" + body.substr(0, size));
        {
            xml_stream_parser parser(file.path(), 1);
            parser.parse();
            EXPECT_EQ(2, parser.recover(only("b")));
            EXPECT_GE(parser.file_length(), parser.parse_offset());
        }
        xml_stream_parser parser(file.path(), 1);
        parser.parse();
        file.append("<b y='1'/></root>");
        EXPECT_EQ(0, parser.recover(only("b")));
        EXPECT_THAT(read_on(parser),
                    testing::MatchesRegex("0 b [0-9]+/0 y=1; 3 root 1/0; status 3"));
    }
}

TEST(StreamParserRecovery, ReadsTheWholeFile) {
    const growing_file file(declaration + "<r><b =/>" + repeated("<d>some text</d>\n", 20000) +
                            "<c/></r>");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(6, parser.parse());
    EXPECT_EQ(0, parser.recover(only("c")));
    EXPECT_EQ("0 c 3/0; 3 r 1/0; status 3", read_on(parser));
}

TEST(StreamParserRecovery, CountsNoLines) {
    const growing_file file(declaration + "\n<r>\n<b =/>\n\n<\n\nd/>\n<\nc/>\n<c/></r>");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(6, parser.parse());
    EXPECT_EQ(3u, parser.line());
    EXPECT_EQ(0, parser.recover(only("c")));
    EXPECT_EQ(3u, parser.line());
    EXPECT_EQ(3, parser.parse());
    EXPECT_EQ(4u, parser.node_queue_pop().line);
    EXPECT_EQ(5u, parser.node_queue_pop().line);
}

TEST(StreamParserRecovery, IsFatalWithoutARoot) {
    const test_support::temporary_directory directory;
    const std::string bad = directory.write("bad.xml", declaration + "text<r></r>");
    xml_stream_parser broken(bad, 1);
    EXPECT_EQ(6, broken.parse());
    EXPECT_EQ(10, broken.recover(only("r")));
    EXPECT_EQ(10, broken.parse());

    xml_stream_parser missing(directory.path("missing.xml"), 1);
    EXPECT_EQ(11, missing.error());
    EXPECT_EQ(10, missing.recover(std::list<ustring8>()));

    xml_stream_parser other(directory.write("other.xml", std::string(60, 'x')), 1);
    EXPECT_EQ(12, other.parse());
    EXPECT_EQ(10, other.recover(only("r")));
}

TEST(StreamParserRecovery, FailsWithoutNames) {
    const growing_file file(declaration + "<r><a/></x></r>");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(4, parser.parse());
    EXPECT_EQ(2, parser.recover(std::list<ustring8>()));
    EXPECT_EQ(2u, parser.node_queue_size());
    EXPECT_EQ(4, parser.parse());
    EXPECT_EQ(2, parser.recover(std::list<std::string>()));
}

TEST(StreamParserRecovery, ReturnsStatus2IfTheFileIsGone) {
    const growing_file file(declaration + "<r><=");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(6, parser.parse());
    ASSERT_EQ(0, std::remove(file.path().c_str()));
    EXPECT_EQ(2, parser.recover(only("a")));
    EXPECT_EQ(2, parser.parse());
}

TEST(StreamParserRecovery, FindsTagsAfterTheEndButParsesNothing) {
    const growing_file file(declaration + "<r></r><s/>");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(3, parser.parse());
    EXPECT_EQ(0, parser.recover(only("s")));
    EXPECT_EQ("status 0", read_on(parser));
}

TEST(StreamParserRecovery, NeverReturnsAfterTheEndIfItFindsNothing) {
    const growing_file file(declaration + "<r></r><s/>");
    test_support::child_limits limits;
    limits.cpu_seconds = 1;
    const auto result = test_support::run_in_child(
        [&file] {
            xml_stream_parser parser(file.path(), 1);
            parser.parse();
            parser.recover(only("t"));
        },
        limits);
    EXPECT_FALSE(result.exited);
    EXPECT_TRUE(result.signal == SIGXCPU || result.signal == SIGKILL) << result.signal;
}

TEST(StreamParserRecovery, FailsAfterAnEndTagWithAnError) {
    const growing_file file(declaration + "<r></r x><t");
    xml_stream_parser parser(file.path(), 1);
    EXPECT_EQ(6, parser.parse());
    EXPECT_EQ(2, parser.recover(only("s")));
}

// --- Growth -------------------------------------------------------------------------------------

// The declaration has 39 bytes, so the fiftieth byte is inside the root's start tag.
const char growth_document[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<journal host='one'>\n"
    "  <day date=\"2020-01-01\" kind=''>\n"
    "    <entry level=\"1\" >first text, > and so on </entry >\n"
    "    <entry level='2'><who name='me'/><what>\xC3\xA4\xE2\x82\xAC</what></entry>\n"
    "    <include file= 'other.xml'/>\n"
    "  </day>\n"
    "  <day date='2020-01-02'></day>\n"
    "</journal>\n";
const char growth_nodes[] =
    "1 journal 1/0 host=one; "
    "1 day 2/1 date=2020-01-01 kind=; "
    "0 entry 3/2 level=1 \"first text, > and so on \"; "
    "0 entry 4/2 level=2; 0 who 5/4 name=me; 0 what 6/4 \"\xC3\xA4\xE2\x82\xAC\"; "
    "0 include 7/2 file=other.xml; "
    "0 day 2/0; 1 day 8/1 date=2020-01-02; 0 day 2/0; 3 journal 1/0; ";

TEST(StreamParserGrowth, ProducesTheSameNodesForEverySplitInTwo) {
    const std::string document = growth_document;
    for (std::size_t size = 0; size <= document.size(); ++size) {
        SCOPED_TRACE(size);
        const growing_file file(document.substr(0, size));
        xml_stream_parser parser(file.path(), 2);
        parser.parse();
        std::string nodes = taken(parser);
        file.append(document.substr(size));
        parser.parse();
        nodes += taken(parser);
        EXPECT_EQ(growth_nodes, nodes);
        EXPECT_EQ(3, parser.error());
        EXPECT_EQ(9u, parser.line());
    }
}

TEST(StreamParserGrowth, ProducesTheSameNodesForRandomPieces) {
    const std::string document = growth_document;
    std::mt19937 random(1);
    for (int round = 0; round != 60; ++round) {
        SCOPED_TRACE(round);
        const growing_file file("");
        xml_stream_parser parser(file.path(), 2);
        std::string nodes;
        const std::size_t largest = round == 0 ? 1 : 1 + random() % 40;
        for (std::size_t place = 0; place < document.size();) {
            const std::size_t size = 1 + random() % largest;
            file.append(document.substr(place, size));
            place += size;
            for (auto calls = random() % 3; calls != 0; --calls) {
                EXPECT_GE(1, parser.parse() % 3);
                nodes += taken(parser);
            }
        }
        parser.parse();
        EXPECT_EQ(growth_nodes, nodes + taken(parser));
        EXPECT_EQ(3, parser.error());
    }
}

TEST(StreamParserGrowth, LosesTextBeforeACommittedReference) {
    // '&' is at 1, ';' at 5 and the tag's '<' at 8. With 7 bytes the entity is taken and committed,
    // and with up to 8 there is no tag to complete the text.
    const std::string text = "a&amp;bc</a></r>";
    for (std::size_t size = 0; size <= text.size(); ++size) {
        const bool is_cut = size >= 7 && size <= 8;
        EXPECT_EQ(std::string("1 r 1/0; 0 a 2/1 \"") + (is_cut ? ";bc" : "a&bc") +
                      "\"; 3 r 1/0; status 3",
                  read_in_two("<r><a>" + text, 6 + size))
            << size;
    }
}

// --- The buffer ---------------------------------------------------------------------------------

TEST(StreamParserBuffer, HoldsARunOfTextAndOneByteOfTheNextTag) {
    for (const std::size_t size : {65535u, 65536u}) {
        SCOPED_TRACE(size);
        const growing_file file(declaration + "<r><a>" + std::string(size, 'x') + "</a></r>");
        xml_stream_parser parser(file.path(), 1);
        EXPECT_EQ(size == 65535 ? 3 : 0, parser.parse());
        EXPECT_EQ(size == 65535 ? 3u : 1u, parser.node_queue_size());
        if (size == 65535) {
            parser.node_queue_pop();
            EXPECT_EQ(size, parser.node_queue_pop().text.size());
        } else {
            EXPECT_EQ(0, parser.parse()) << "forever";
            EXPECT_EQ(61u, parser.parse_offset());
        }
    }
}

TEST(StreamParserBuffer, HoldsANameAndTheByteAfterIt) {
    for (const std::size_t size : {65534u, 65535u}) {
        SCOPED_TRACE(size);
        const std::string name(size, 'x');
        const growing_file file(declaration + "<r><" + name + "/></r>");
        xml_stream_parser parser(file.path(), 1);
        EXPECT_EQ(size == 65534 ? 3 : 0, parser.parse());
        if (size == 65534) {
            parser.node_queue_pop();
            EXPECT_EQ(name, parser.node_queue_pop().name);
        }
    }
}

TEST(StreamParserBuffer, HoldsAnAttribute) {
    for (const std::size_t size : {65532u, 65533u}) {
        SCOPED_TRACE(size);
        const growing_file file(declaration + "<r><a n='" + std::string(size, 'x') + "'/></r>");
        xml_stream_parser parser(file.path(), 1);
        EXPECT_EQ(size == 65532 ? 3 : 0, parser.parse());
        if (size == 65532) {
            parser.node_queue_pop();
            EXPECT_EQ(size, parser.node_queue_pop().attributes.front().second.size());
        }
    }
}

TEST(StreamParserBuffer, IsRefilledInsideAnyConstruct) {
    const std::string body = "<aa x='1' y='2'>text</aa><b\n/>";
    for (std::size_t size = 0; size <= body.size(); ++size) {
        SCOPED_TRACE(size);
        std::string document = declaration + "<r>";
        document.resize(65536 - size, '\n');
        const std::size_t lines = document.size() - 57;
        const growing_file file(document + body + "</r>");
        xml_stream_parser parser(file.path(), 1);
        EXPECT_EQ(3, parser.parse());
        EXPECT_EQ(lines + 1, parser.line());
        EXPECT_EQ("1 r 1/0; 0 aa 2/1 x=1 y=2 \"text\"; 0 b 3/1; 3 r 1/0; ", taken(parser));
    }
}

TEST(StreamParserBuffer, ResumesAValueAtItsFirstByte) {
    // After the buffer is refilled, its first byte is the ';' of the entity, with nothing before
    // it.
    std::string document = declaration + "<r><a v='";
    document.resize(65536 - 11, 'x');
    EXPECT_EQ("1 r 1/0; status 6", read_file(document + "&amp;xxxxxxxxxx'/></r>", 1));
}

TEST(StreamParserBuffer, BoundsTheMemoryForAFileOfAnyLength) {
    const growing_file file(declaration + "<r>\n");
    const std::string piece =
        repeated("<entry id='1' name=\"a name\">some text &amp; more</entry>\n"
                 "<!-- a comment -->\n",
                 1000);
    for (int i = 0; i != 40; ++i)
        file.append(piece);
    file.append("</r>");
    xml_stream_parser parser(file.path(), 1);
    const long before = test_support::live_allocations();
    long most = 0;
    std::size_t nodes = 0;
    std::size_t longest_queue = 0;
    parser.parse();
    while (!parser.node_queue_empty()) {
        longest_queue = std::max<std::size_t>(longest_queue, parser.node_queue_size());
        most = std::max(most, test_support::live_allocations() - before);
        parser.node_queue_pop();
        ++nodes;
    }
    EXPECT_EQ(3, parser.error());
    EXPECT_EQ(40002u, nodes);
    EXPECT_GE(102u, longest_queue);
    EXPECT_GE(1000, most);
}

// --- Exceptions ---------------------------------------------------------------------------------

TEST(StreamParserExceptions, AreFatalDuringParsingAndLeakNothing) {
    const growing_file file(declaration + "<root_of_a_document attribute_name_one='a value of it'>"
                                          "<child_of_the_document>a run of text, not short"
                                          "</child_of_the_document></root_of_a_document>");
    const std::string path = file.path();
    bool was_fatal = false;
    for (unsigned successes = 0;; ++successes) {
        SCOPED_TRACE(successes);
        ASSERT_GT(1000u, successes);
        const long before = test_support::live_allocations();
        bool has_thrown = false;
        bool has_failed;
        {
            xml_stream_parser parser(path, 1);
            {
                const test_support::failing_allocation failure(successes);
                try {
                    parser.parse();
                } catch (const std::bad_alloc&) {
                    has_thrown = true;
                }
                has_failed = failure.failed();
            }
            EXPECT_EQ(has_failed, has_thrown);
            if (parser.error() == 10) {
                EXPECT_TRUE(has_thrown);
                EXPECT_EQ(10, parser.parse());
                was_fatal = true;
            } else {
                EXPECT_EQ("1 root_of_a_document 1/0 attribute_name_one=a value of it; "
                          "0 child_of_the_document 2/1 \"a run of text, not short\"; "
                          "3 root_of_a_document 1/0; status 3",
                          read_on(parser));
            }
        }
        EXPECT_EQ(before, test_support::live_allocations());
        if (!has_failed)
            break;
    }
    EXPECT_TRUE(was_fatal);
}

}  // namespace
