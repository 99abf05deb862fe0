// The steps of the stream parser. The interface names them, but only the class itself may call
// them. They are exported like all other operations, and a program that declares the class in its
// own way can call them. Everything else about the parser is tested through its public operations.
#include <tova/parser/xml_stream_parser.hpp>

#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <list>
#include <memory>
#include <string>
#include <utility>

namespace {

using tova::parser::xml_stream_parser;
using tova::strings::ustring8;
using node = xml_stream_parser::node;

// An explicit instantiation may name private members. It defines `member`, which returns a pointer
// to one.
template <typename Step, typename Step::type Member>
struct opened {
    friend typename Step::type member(Step) { return Member; }
};

template <typename Type>
struct step {
    using type = Type;
};

struct load : step<unsigned long (xml_stream_parser::*)()> {
    friend type member(load);
};
struct do_parse : step<void (xml_stream_parser::*)()> {
    friend type member(do_parse);
};
struct parse_next : step<void (xml_stream_parser::*)()> {
    friend type member(parse_next);
};
struct queue_size_less_than : step<bool (xml_stream_parser::*)(unsigned int)> {
    friend type member(queue_size_less_than);
};
struct skip_whitespace : step<void (xml_stream_parser::*)()> {
    friend type member(skip_whitespace);
};
struct is_whitespace : step<bool (xml_stream_parser::*)()> {
    friend type member(is_whitespace);
};
struct finish_comment : step<bool (xml_stream_parser::*)()> {
    friend type member(finish_comment);
};
struct parse_name : step<ustring8 (xml_stream_parser::*)()> {
    friend type member(parse_name);
};
struct parse_entity : step<ustring8 (xml_stream_parser::*)()> {
    friend type member(parse_entity);
};
struct parse_attrib_value : step<ustring8 (xml_stream_parser::*)()> {
    friend type member(parse_attrib_value);
};
struct new_node
    : step<void (xml_stream_parser::*)(const ustring8&, xml_stream_parser::error_type, bool)> {
    friend type member(new_node);
};
struct close_tag : step<void (xml_stream_parser::*)(std::list<node>::iterator)> {
    friend type member(close_tag);
};
struct end_of_open_node
    : step<void (xml_stream_parser::*)(const ustring8&, xml_stream_parser::error_type)> {
    friend type member(end_of_open_node);
};
struct queue : step<std::list<node> xml_stream_parser::*> {
    friend type member(queue);
};

template struct opened<load, &xml_stream_parser::load>;
template struct opened<do_parse, &xml_stream_parser::do_parse>;
template struct opened<parse_next, &xml_stream_parser::parse_next>;
template struct opened<queue_size_less_than, &xml_stream_parser::queue_size_less_than>;
template struct opened<skip_whitespace, &xml_stream_parser::skip_whitespace>;
template struct opened<is_whitespace, &xml_stream_parser::is_whitespace>;
template struct opened<finish_comment, &xml_stream_parser::finish_comment>;
template struct opened<parse_name, &xml_stream_parser::parse_name>;
template struct opened<parse_entity, &xml_stream_parser::parse_entity>;
template struct opened<parse_attrib_value, &xml_stream_parser::parse_attrib_value>;
template struct opened<new_node, &xml_stream_parser::new_node>;
template struct opened<close_tag, &xml_stream_parser::close_tag>;
template struct opened<end_of_open_node, &xml_stream_parser::end_of_open_node>;
template struct opened<queue, &xml_stream_parser::m_queue>;

class StreamParserSteps : public ::testing::Test {
protected:
    // A parser that has read the bytes of a file, but parsed nothing.
    xml_stream_parser& loaded(const std::string& bytes) {
        m_path = m_directory.write("file.xml", bytes);
        m_parser.reset(new xml_stream_parser(ustring8(m_path), 1));
        EXPECT_EQ(bytes.size(), call<load>());
        return *m_parser;
    }

    void append(const std::string& bytes) const {
        std::ofstream file(m_path, std::ios::binary | std::ios::app);
        file << bytes;
    }

    template <typename Step, typename... Arguments>
    auto call(Arguments&&... arguments)
        -> decltype((std::declval<xml_stream_parser&>().*member(Step()))(arguments...)) {
        return (m_parser.get()->*member(Step()))(arguments...);
    }

    std::list<node>& nodes() { return m_parser.get()->*member(queue()); }

private:
    test_support::temporary_directory m_directory;
    std::string m_path;
    std::unique_ptr<xml_stream_parser> m_parser;
};

TEST_F(StreamParserSteps, LoadReturnsTheNumberOfNewBytes) {
    xml_stream_parser& parser = loaded("0123456789");
    EXPECT_EQ(0U, call<load>());
    append("abc");
    EXPECT_EQ(3U, call<load>());
    EXPECT_EQ(0U, parser.parse_offset());
    EXPECT_EQ(13U, parser.file_length());
}

TEST_F(StreamParserSteps, WhitespaceIsFourBytes) {
    xml_stream_parser& parser = loaded(" \t\r\n\n\f");
    EXPECT_TRUE(call<is_whitespace>());
    call<skip_whitespace>();
    EXPECT_FALSE(call<is_whitespace>());
    EXPECT_EQ(3U, parser.line());

    loaded("");
    EXPECT_FALSE(call<is_whitespace>());
    loaded("  ");
    call<skip_whitespace>();
    EXPECT_FALSE(call<is_whitespace>());
}

TEST_F(StreamParserSteps, NamesEndBeforeTheFirstOtherByte) {
    loaded(" na_me9\xC3\xA4-x");
    EXPECT_EQ(ustring8("na_me9\xC3\xA4"), call<parse_name>());
    // The end of the data may cut a name, so it has to wait for another byte.
    loaded("name");
    EXPECT_TRUE(call<parse_name>().empty());
}

TEST_F(StreamParserSteps, ReferencesBecomeOneByte) {
    loaded("&amp;rest");
    EXPECT_EQ(ustring8("&"), call<parse_entity>());
    loaded("&#65; rest");
    EXPECT_EQ(ustring8("A"), call<parse_entity>());
    loaded("&lt");
    EXPECT_TRUE(call<parse_entity>().empty());
    for (const char* other : {"", "amp;amp;"}) {
        loaded(other);
        EXPECT_THROW(call<parse_entity>(), xml_stream_parser::error_type);
    }
}

TEST_F(StreamParserSteps, ValuesAreQuoted) {
    loaded(" 'a&lt;\"b' rest");
    EXPECT_EQ(ustring8("a<\"b"), call<parse_attrib_value>());
    loaded("\"open");
    EXPECT_TRUE(call<parse_attrib_value>().empty());
    loaded("plain");
    EXPECT_THROW(call<parse_attrib_value>(), xml_stream_parser::error_type);
}

TEST_F(StreamParserSteps, CommentsEndAtTheirMark) {
    loaded("the rest of\na comment -->x");
    EXPECT_TRUE(call<finish_comment>());
    loaded("no end");
    EXPECT_FALSE(call<finish_comment>());
    loaded("a -- b -->");
    EXPECT_THROW(call<finish_comment>(), xml_stream_parser::error_type);
}

TEST_F(StreamParserSteps, NodesAreOpenedAndClosed) {
    xml_stream_parser& parser = loaded("");
    call<new_node>("root", xml_stream_parser::out_of_data, true);
    call<new_node>("a", xml_stream_parser::out_of_data, false);
    ASSERT_EQ(2U, nodes().size());
    EXPECT_EQ(1U, nodes().front().id);
    EXPECT_EQ(0U, nodes().front().parent);
    EXPECT_EQ(2U, nodes().back().id);
    EXPECT_EQ(1U, nodes().back().parent);
    EXPECT_FALSE(nodes().back().ready);
    EXPECT_FALSE(call<queue_size_less_than>(1U));
    EXPECT_TRUE(call<queue_size_less_than>(2U));

    call<close_tag>(std::prev(nodes().end()));
    EXPECT_TRUE(nodes().back().ready);
    EXPECT_EQ(xml_stream_parser::no_error, nodes().back().type);
    EXPECT_FALSE(call<queue_size_less_than>(2U));

    call<end_of_open_node>("root", xml_stream_parser::end_of_document);
    ASSERT_EQ(3U, parser.node_queue_size());
    EXPECT_EQ(ustring8("root"), nodes().back().name);
    EXPECT_EQ(xml_stream_parser::end_of_document, nodes().back().type);
    EXPECT_EQ(0U, nodes().back().parent);
}

// The 0 of the top level is the parent even after more numbers were removed than added.
TEST_F(StreamParserSteps, NodesThatAreClosedTwiceLeaveTheTopLevel) {
    loaded("");
    call<new_node>("root", xml_stream_parser::out_of_data, true);
    call<end_of_open_node>("root", xml_stream_parser::no_error);
    call<close_tag>(nodes().begin());
    call<new_node>("a", xml_stream_parser::out_of_data, true);
    EXPECT_EQ(2U, nodes().back().id);
    EXPECT_EQ(0U, nodes().back().parent);
}

TEST_F(StreamParserSteps, TagsOfAClosedElementEndWithAnError) {
    xml_stream_parser& parser = loaded("<root a='1'");
    call<parse_next>();
    call<close_tag>(nodes().begin());
    append("/>");
    call<load>();
    call<parse_next>();
    EXPECT_EQ(xml_stream_parser::mismatched_end_tag, parser.error());
}

TEST_F(StreamParserSteps, ConstructsAreParsedWithoutADeclaration) {
    xml_stream_parser& parser = loaded("<root><a b='1'/><c");
    call<parse_next>();
    ASSERT_EQ(2U, parser.node_queue_size());
    EXPECT_EQ(ustring8("a"), nodes().back().name);

    append(">text</c></root>");
    call<do_parse>();  // parses what is there before it loads more
    EXPECT_EQ(xml_stream_parser::end_of_document, parser.error());
    EXPECT_EQ(4U, parser.node_queue_size());
    EXPECT_EQ(ustring8("root"), parser.root());
}

}  // namespace
