// Tests the layout of the stream parser: sizes, the offsets of all fields, and the virtual slots of
// the exception that it throws.
#include <tova/parser/xml_stream_parser.hpp>

#include "support/raw_memory.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <exception>
#include <fstream>
#include <list>
#include <set>
#include <stack>
#include <string>
#include <type_traits>
#include <utility>

namespace {

using test_support::field_at;
using test_support::part_at;
using TOVA_2_18::parser::xml_stream_parser;
using TOVA_2_18::strings::ustring8;
using error_type = xml_stream_parser::error_type;
using node = xml_stream_parser::node;
using attribute_list = std::list<std::pair<ustring8, ustring8>>;
using open_elements = std::stack<std::pair<ustring8, std::list<node>::iterator>>;

// The classes contain standard containers, so they have no standard layout; the compilers that we
// build with still support `offsetof` for them.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

static_assert(sizeof(error_type) == 4, "statuses are 32 bits");
static_assert(xml_stream_parser::no_error == 0, "");
static_assert(xml_stream_parser::out_of_data == 1, "");
static_assert(xml_stream_parser::not_recovered == 2, "");
static_assert(xml_stream_parser::end_of_document == 3, "");
static_assert(xml_stream_parser::mismatched_end_tag == 4, "");
static_assert(xml_stream_parser::duplicate_attribute == 5, "");
static_assert(xml_stream_parser::syntax_error == 6, "");
static_assert(xml_stream_parser::missing_quote == 7, "");
static_assert(xml_stream_parser::missing_equals == 9, "");
static_assert(xml_stream_parser::internal_failure == 10, "");
static_assert(xml_stream_parser::open_failed == 11, "");
static_assert(xml_stream_parser::not_xml == 12, "");

static_assert(offsetof(node, type) == 0, "");
static_assert(offsetof(node, ready) == 4, "");
static_assert(offsetof(node, name) == 8, "");
static_assert(offsetof(node, line) == 40, "");
static_assert(offsetof(node, id) == 48, "");
static_assert(offsetof(node, parent) == 56, "");
static_assert(offsetof(node, attributes) == 64, "");
static_assert(offsetof(node, text) == 88, "");
static_assert(sizeof(node) == 120 && alignof(node) == 8, "");
static_assert(!std::is_polymorphic<node>::value, "");
static_assert(std::is_same<decltype(node::type), error_type>::value, "");
static_assert(std::is_same<decltype(node::ready), bool>::value, "");
static_assert(std::is_same<decltype(node::name), ustring8>::value, "");
static_assert(std::is_same<decltype(node::line), unsigned int>::value, "");
static_assert(std::is_same<decltype(node::id), unsigned long>::value, "");
static_assert(std::is_same<decltype(node::parent), unsigned long>::value, "");
static_assert(std::is_same<decltype(node::attributes), attribute_list>::value, "");
static_assert(std::is_same<decltype(node::text), ustring8>::value, "");

static_assert(sizeof(std::ifstream) == 520, "");
static_assert(sizeof(open_elements) == 80 && sizeof(std::set<ustring8>) == 48, "");
static_assert(sizeof(xml_stream_parser) == 1024 && alignof(xml_stream_parser) == 8, "");
static_assert(!std::is_polymorphic<xml_stream_parser>::value, "");
static_assert(!std::is_copy_constructible<xml_stream_parser>::value, "");

static_assert(sizeof(xml_stream_parser::EmptyNodeQueue) == sizeof(std::exception), "no fields");
static_assert(std::is_base_of<std::exception, xml_stream_parser::EmptyNodeQueue>::value, "");

const char declaration[] = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>";

TEST(StreamParserLayout, HasItsFieldsInOrder) {
    const test_support::temporary_directory directory;
    const std::string document = std::string(declaration) + "\n<r>\n<s><a v='' w='1";
    const std::string path = directory.write("file.xml", document);
    xml_stream_parser parser(path, 2);
    const void* const object = &parser;

    const auto& buffer = part_at<ustring8>(object, 552);
    EXPECT_EQ(ustring8(65536, '\0'), buffer);
    EXPECT_EQ(path, part_at<ustring8>(object, 0));
    EXPECT_FALSE(part_at<std::ifstream>(object, 32).is_open());
    EXPECT_EQ("", part_at<ustring8>(object, 584));
    EXPECT_EQ(1, field_at<unsigned char>(object, 677));  // usable
    EXPECT_EQ(1u, field_at<unsigned>(object, 680));
    EXPECT_EQ(1u, field_at<unsigned>(object, 684));
    EXPECT_EQ(1u, field_at<unsigned long>(object, 880));
    EXPECT_EQ(1u, part_at<std::stack<unsigned long>>(object, 888).size());

    parser.parse();
    EXPECT_EQ("r", part_at<ustring8>(object, 584));
    EXPECT_EQ(&parser.root(), &part_at<ustring8>(object, 584));
    EXPECT_EQ(document.size(), field_at<unsigned long>(object, 616));      // the file position
    EXPECT_EQ(document.size(), field_at<unsigned long>(object, 624));      // the file length
    EXPECT_EQ(document.size(), field_at<unsigned long>(object, 632));      // the cursor
    EXPECT_EQ(document.size() - 4, field_at<unsigned long>(object, 640));  // the committed position
    EXPECT_EQ(document.size(), field_at<unsigned long>(object, 648));      // the end of the data
    EXPECT_EQ(0u, field_at<unsigned long>(object, 656));
    EXPECT_EQ(65536u, field_at<unsigned long>(object, 664));
    EXPECT_EQ(document, buffer.substr(0, document.size()));
    EXPECT_EQ(1, field_at<unsigned char>(object, 672));  // in a tag
    EXPECT_EQ(0, field_at<unsigned char>(object, 673));  // a '>' is expected
    EXPECT_EQ(0, field_at<unsigned char>(object, 674));  // in a comment
    EXPECT_EQ(1, field_at<unsigned char>(object, 675));  // the declaration has been read
    EXPECT_EQ(0, field_at<unsigned char>(object, 676));  // finished
    EXPECT_EQ(1, field_at<unsigned char>(object, 677));  // usable
    EXPECT_EQ(0, field_at<unsigned char>(object, 678));  // the last value was empty
    EXPECT_EQ(3u, field_at<unsigned>(object, 680));
    EXPECT_EQ(3u, field_at<unsigned>(object, 684));
    EXPECT_EQ(3u, part_at<std::list<node>>(object, 688).size());
    EXPECT_EQ(2u, field_at<unsigned>(object, 712));  // the open depth
    const auto& elements = part_at<open_elements>(object, 720);
    EXPECT_EQ(3u, elements.size());
    EXPECT_EQ("a", elements.top().first);
    EXPECT_EQ("a", elements.top().second->name);
    const auto& names = part_at<std::stack<ustring8>>(object, 800);
    EXPECT_EQ(2u, names.size());
    EXPECT_EQ("s", names.top());
    EXPECT_EQ(4u, field_at<unsigned long>(object, 880));  // the next id
    EXPECT_EQ(4u, part_at<std::stack<unsigned long>>(object, 888).size());
    EXPECT_EQ((std::set<ustring8>{"v"}), part_at<std::set<ustring8>>(object, 968));
    EXPECT_EQ(static_cast<const void*>(&parser.error()), static_cast<const char*>(object) + 1016);
}

TEST(StreamParserLayout, HasTheIdOfTheTopLevelForAnyFile) {
    const test_support::temporary_directory directory;
    directory.write("file.xml", declaration);
    ASSERT_EQ(0, ::symlink("file.xml", directory.path("link.xml").c_str()));
    for (const char* name : {"file.xml", "link.xml", "missing.xml"}) {
        SCOPED_TRACE(name);
        const xml_stream_parser parser(directory.path(name), 1);
        const auto& ids = part_at<std::stack<unsigned long>>(&parser, 888);
        ASSERT_EQ(1u, ids.size());
        EXPECT_EQ(0u, ids.top());
        EXPECT_EQ(1u, field_at<unsigned long>(&parser, 880));
    }
}

TEST(StreamParserLayout, HasItsFlagsInOrder) {
    const test_support::temporary_directory directory;
    const auto flags = [&directory](const std::string& body) {
        xml_stream_parser parser(directory.write("file.xml", declaration + body), 1);
        parser.parse();
        std::string text;
        for (std::size_t offset = 672; offset != 679; ++offset)
            text += field_at<unsigned char>(&parser, offset) != 0 ? '1' : '0';
        return text;
    };
    EXPECT_EQ("0001010", flags("<r>"));
    EXPECT_EQ("0101010", flags("<r><a></a "));
    EXPECT_EQ("0011010", flags("<r><!-- c"));
    EXPECT_EQ("0101110", flags("<r></r "));
    EXPECT_EQ("1001011", flags("<r a=''"));
}

TEST(StreamParserLayout, HasTheSlotsOfItsExceptionInOrder) {
    // The two destructors, then `what`.
    auto* const empty = new xml_stream_parser::EmptyNodeQueue;
    const void* const table = field_at<const void*>(empty, 0);
    using what = const char* (*)(const void*);
    EXPECT_STREQ("empty node queue", field_at<what>(table, 2 * sizeof(void*))(empty));
    using destroy = void (*)(void*);
    field_at<destroy>(table, sizeof(void*))(empty);  // the deleting destructor
}

}  // namespace
