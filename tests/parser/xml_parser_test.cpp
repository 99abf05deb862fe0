// `xml_parser`, construct by construct: header, elements, names, attributes, tags, character data,
// references, comments, CDATA sections, lines. After these come tests of whole runs, delegates,
// individual grammar functions, and random documents.
//
// A document's expected result is an `outcome`: its events as strings, then kind, line and text. If
// a rule is about one byte, `expect_for_every_byte` tries all 256.
#include <tova/parser/xml_parser.hpp>

#include <tova/functor/member_function.hpp>

#include "support/failing_allocation.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <new>
#include <ostream>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using tova::functor::member_function_t;
using tova::parser::xml_parser;
using tova::strings::ustring8;
using parse_error = xml_parser::parse_error;
using iterator = xml_parser::iterator;

const unsigned no_line = 0;

std::string of_byte(int value) {
    return std::string(1, static_cast<char>(value));
}

const std::string nul_byte = of_byte(0);

// Records the events of a parser, one string each. The destructor empties its delegates.
class recorder {
public:
    explicit recorder(xml_parser& parser) : m_parser(parser) {
        using text_handler = member_function_t<recorder, void(const ustring8&)>;
        using attribute_handler =
            member_function_t<recorder, void(const ustring8&, const ustring8&)>;
        parser.on_element_start = text_handler(this, &recorder::element_start);
        parser.on_element_end = text_handler(this, &recorder::element_end);
        parser.on_attribute = attribute_handler(this, &recorder::attribute);
        parser.on_character = text_handler(this, &recorder::character);
        parser.on_space = text_handler(this, &recorder::space);
        parser.on_comment = text_handler(this, &recorder::comment);
    }

    ~recorder() {
        const xml_parser empty;
        m_parser.on_element_start = empty.on_element_start;
        m_parser.on_element_end = empty.on_element_end;
        m_parser.on_attribute = empty.on_attribute;
        m_parser.on_character = empty.on_character;
        m_parser.on_space = empty.on_space;
        m_parser.on_comment = empty.on_comment;
    }

    recorder(const recorder&) = delete;
    recorder& operator=(const recorder&) = delete;

    void element_start(const ustring8& name) { events.push_back("start " + name); }
    void element_end(const ustring8& name) { events.push_back("end " + name); }
    void attribute(const ustring8& name, const ustring8& value) {
        events.push_back("attribute " + name + "=" + value);
    }
    void character(const ustring8& text) { events.push_back("text " + text); }
    void space(const ustring8& text) { events.push_back("space " + text); }
    void comment(const ustring8& text) { events.push_back("comment " + text); }

    std::vector<std::string> events;

private:
    xml_parser& m_parser;
};

// Everything that a run produces: its events and the three fields of its result.
struct outcome {
    std::vector<std::string> events;
    int kind;
    unsigned line;
    std::string text;
};

bool operator==(const outcome& left, const outcome& right) {
    return left.events == right.events && left.kind == right.kind && left.line == right.line &&
           left.text == right.text;
}

void PrintTo(const outcome& result, std::ostream* stream) {
    *stream << "kind " << result.kind << ", line " << result.line << ", text "
            << ::testing::PrintToString(result.text) << ", "
            << ::testing::PrintToString(result.events);
}

outcome read(xml_parser& parser, const std::string& document) {
    recorder events(parser);
    const parse_error result = parser.parse(ustring8(document));
    return outcome{events.events, result.type, result.line, result.text};
}

outcome read(const std::string& document) {
    xml_parser parser;
    return read(parser, document);
}

struct row {
    std::string document;
    outcome expected;
};

void expect_all(std::initializer_list<row> rows) {
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.document));
        EXPECT_EQ(row.expected, read(row.document));
    }
}

// The classes of the C locale, for the tests that run over all bytes.
bool is_letter(int byte) {
    return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}
bool is_digit(int byte) {
    return byte >= '0' && byte <= '9';
}
bool continues_name(int byte) {
    return is_letter(byte) || is_digit(byte) || byte == '_';
}
bool is_white_space_byte(int byte) {
    return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
}
unsigned lines_of(int byte) {
    return byte == '\n' ? 1 : 0;
}

// Replaces the '$' in a document with each of the 256 bytes and compares the outcome with
// `expected`.
template <typename Expected>
void expect_for_every_byte(const std::string& document, const Expected& expected) {
    const auto place = document.find('$');
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        std::string text = document;
        text[place] = static_cast<char>(byte);
        EXPECT_EQ(expected(byte), read(text));
    }
}

TEST(XmlParseError, NumbersItsKindsFromNoErrorToDataAfterRoot) {
    EXPECT_EQ(0, parse_error::no_error);
    EXPECT_EQ(1, parse_error::unexpected_end);
    EXPECT_EQ(2, parse_error::mismatched_end);
    EXPECT_EQ(3, parse_error::no_root);
    EXPECT_EQ(4, parse_error::no_header);
    EXPECT_EQ(5, parse_error::unexpected_character);
    EXPECT_EQ(6, parse_error::missing_quote);
    EXPECT_EQ(7, parse_error::unknown_entity);
    EXPECT_EQ(8, parse_error::missing_equals);
    EXPECT_EQ(9, parse_error::attribute_redefined);
    EXPECT_EQ(10, parse_error::data_after_root);
}

TEST(XmlParseError, HoldsItsArgumentsAndIsCopied) {
    const parse_error error(parse_error::mismatched_end, 4294967295u, ustring8("name"));
    parse_error copy(error);
    EXPECT_EQ(parse_error::mismatched_end, copy.type);
    EXPECT_EQ(4294967295u, copy.line);
    EXPECT_EQ("name", copy.text);
    copy.text += "s";
    EXPECT_EQ("name", error.text);

    copy = parse_error(parse_error::no_error, 7, ustring8());
    EXPECT_EQ(parse_error::no_error, copy.type);
    EXPECT_EQ(7u, copy.line);
    EXPECT_EQ("", copy.text);
}

TEST(XmlParser, DoesNotCallEmptyDelegates) {
    xml_parser parser;
    EXPECT_TRUE(parser.on_element_start.is_empty());
    EXPECT_TRUE(parser.on_element_end.is_empty());
    EXPECT_TRUE(parser.on_attribute.is_empty());
    EXPECT_TRUE(parser.on_character.is_empty());
    EXPECT_TRUE(parser.on_space.is_empty());
    EXPECT_TRUE(parser.on_comment.is_empty());
    const auto result = parser.parse("<?xml?><a b='c'> <!--d-->e<![CDATA[f]]></a>");
    EXPECT_EQ(parse_error::no_error, result.type);
}

TEST(XmlParser, ReportsTheEventsInDocumentOrder) {
    EXPECT_EQ((outcome{{"start catalog", "attribute name=first", "attribute lang=de", "space \n  ",
                        "start msg", "attribute key=k", "text Hello ", "start b", "end b",
                        "text , you", "end msg", "space \n  ", "comment \n   note ", "space \n",
                        "end catalog", "space \n"},
                       0,
                       0,
                       ""}),
              read("<?xml version='1.0' encoding=\"UTF-8\"?>\n"
                   "<catalog name=\"first\" lang='de'>\n"
                   "  <msg key='k'>Hello <b/>, you</msg>\n"
                   "  <!-- note -->\n"
                   "</catalog>\n"));
}

TEST(XmlParser, LetsDelegatesBeReplacedBetweenRuns) {
    xml_parser parser;
    recorder first(parser);
    EXPECT_EQ(0, parser.parse("<?xml?><a/>").type);
    {
        recorder second(parser);
        EXPECT_EQ(0, parser.parse("<?xml?><b/>").type);
        EXPECT_THAT(second.events, ::testing::ElementsAre("start b", "end b"));
    }
    EXPECT_EQ(0, parser.parse("<?xml?><c/>").type);
    EXPECT_THAT(first.events, ::testing::ElementsAre("start a", "end a"));
}

TEST(XmlParser, ParsesARangeOfALongerString) {
    const ustring8 text = "garbage<?xml?><a/>>garbage";
    xml_parser parser;
    recorder events(parser);
    EXPECT_EQ(0, parser.parse(text.begin() + 7, text.end() - 8).type);
    EXPECT_THAT(events.events, ::testing::ElementsAre("start a", "end a"));
}

// The list in the header of ordinary XML that is not supported.
TEST(XmlParser, RejectsMuchOfOrdinaryXml) {
    expect_all({
        {"<a/>", {{}, 4, 0, ""}},
        {"<!-- comment --><?xml?><a/>", {{}, 4, 0, ""}},
        {"<?xml?><!DOCTYPE a><a/>", {{}, 5, 0, "!"}},
        {"<?xml?><?xml-stylesheet href='a.css'?><a/>", {{}, 5, 0, "?"}},
        {"<?xml?><a-b/>", {{"start a"}, 5, 0, "-"}},
        {"<?xml?><a.b/>", {{"start a"}, 5, 0, "."}},
        {"<?xml?><x:a/>", {{"start x"}, 5, 0, ":"}},
        {"<?xml?><_a/>", {{}, 5, 0, "_"}},
        {"<?xml?><a data-b='1'/>", {{"start a"}, 8, 0, "data"}},
        {"<?xml?><a b.c='1'/>", {{"start a"}, 8, 0, "b"}},
        {"<?xml?><a xml:lang='de'/>", {{"start a"}, 8, 0, "xml"}},
        {"<?xml?><a xmlns:b='u'/>", {{"start a"}, 8, 0, "xmlns"}},
        {"<?xml?><a xmlns='u' xmlns:b='v'/>", {{"start a", "attribute xmlns=u"}, 9, 0, "xmlns"}},
        {"<?xml?><\xC3\xA4/>", {{}, 5, 0, "\xC3"}},
        {"<?xml?><a>&copy;</a>", {{"start a"}, 7, 0, ""}},
    });
}

TEST(XmlParserHeader, MustComeFirst) {
    expect_all({
        {"", {{}, 4, 0, ""}},
        {"<", {{}, 4, 0, ""}},
        {"<?xm", {{}, 4, 0, ""}},
        {"<?Xml?><a/>", {{}, 4, 0, ""}},
        {"<a/>", {{}, 4, 0, ""}},
        {" <?xml?><a/>", {{}, 4, 0, ""}},
        {"\n<?xml?><a/>", {{}, 4, 0, ""}},
    });
}

TEST(XmlParserHeader, EndsAtTheFirstQuestionMarkBeforeAnAngleBracket) {
    expect_all({
        {"<?xml?><a/>", {{"start a", "end a"}, 0, 0, ""}},
        {"<?xmlish?><a/>", {{"start a", "end a"}, 0, 0, ""}},
        {"<?xml a?b c='?' ?><a/>", {{"start a", "end a"}, 0, 0, ""}},
        {"<?xml?\?><a/>", {{"start a", "end a"}, 0, 0, ""}},
        {"<?xml ><a/>", {{}, 4, 0, ""}},
        {"<?xml><a/>", {{}, 4, 0, ""}},
        {"<?xml <?><a/>", {{}, 4, 0, ""}},
        {"<?xml ? ><a/>", {{}, 4, 0, ""}},
        {"<?xml\n\n><a/>", {{}, 4, 0, ""}},
    });
}

TEST(XmlParserHeader, ReturnsNoRootIfTheDocumentEndsWithinOrAfterIt) {
    expect_all({
        {"<?xml", {{}, 3, 0, ""}},
        {"<?xml?", {{}, 3, 0, ""}},
        {"<?xml?>", {{}, 3, 0, ""}},
        {"<?xml version", {{}, 3, 0, ""}},
        {"<?xml ab?c?", {{}, 3, 0, ""}},
        {"<?xml?> \t\r", {{}, 3, 0, ""}},
        {"<?xml\n?>\n\n \n", {{}, 3, 3, ""}},
    });
}

TEST(XmlParserHeader, DoesNotExamineTheLastByteOfTheDocument) {
    expect_all({
        {"<?xml>", {{}, 3, 0, ""}},
        {"<?xml <", {{}, 3, 0, ""}},
        {"<?xml> ", {{}, 4, 0, ""}},
        {"<?xml <?", {{}, 4, 0, ""}},
    });
}

TEST(XmlParserHeader, MayContainAnyByteExceptAngleBrackets) {
    expect_for_every_byte("<?xml$?><a/>", [](int byte) {
        if (byte == '<' || byte == '>')
            return outcome{{}, 4, 0, ""};
        return outcome{{"start a", "end a"}, 0, 0, ""};
    });
}

TEST(XmlParserHeader, MayFollowAnyThreeBytes) {
    expect_all({
        {"\xEF\xBB\xBF<?xml?><a/>", {{"start a", "end a"}, 0, 0, ""}},
        {"abc<?xml?><a/>", {{"start a", "end a"}, 0, 0, ""}},
        {"<a><?xml?><a/>", {{"start a", "end a"}, 0, 0, ""}},
        {"\n\n\n<?xml?><a>", {{"start a"}, 1, 0, ""}},
        {"\n\n\n<?xml?>\n>", {{}, 5, 1, ">"}},
        {"ab<?xml?><a/>", {{}, 4, 0, ""}},
        {"abcd<?xml?><a/>", {{}, 4, 0, ""}},
        {"abc<", {{}, 4, 0, ""}},
        {"abc<?xml", {{}, 3, 0, ""}},
        {"abcabc<?xml?><a/>", {{}, 4, 0, ""}},
    });
    expect_for_every_byte("\xEF$\xBF<?xml?><a/>", [](int) {
        return outcome{{"start a", "end a"}, 0, 0, ""};
    });
    expect_for_every_byte("abc$?xml?><a/>", [](int byte) {
        if (byte == '<')
            return outcome{{"start a", "end a"}, 0, 0, ""};
        return outcome{{}, 4, 0, ""};
    });
}

TEST(XmlParserHeader, IsFollowedByWhitespaceThatIsNotReported) {
    EXPECT_EQ((outcome{{"start a", "end a", "space  "}, 0, 0, ""}), read("<?xml?> \n<a/> "));
}

TEST(XmlParserElements, MayBeMissing) {
    expect_all({
        {"<?xml?><!--only-->", {{"comment only"}, 0, 0, ""}},
        {"<?xml?>text", {{"text text"}, 0, 0, ""}},
        {"<?xml?><![CDATA[x]]>", {{"text x"}, 0, 0, ""}},
    });
}

TEST(XmlParserElements, NestToAnyDepth) {
    const int depth = 200000;
    std::string document = "<?xml?>";
    for (int i = 0; i < depth; ++i)
        document += "<a>";
    xml_parser parser;
    EXPECT_EQ(parse_error::unexpected_end, parser.parse(ustring8(document)).type);
    std::string closing = "<?xml?>";
    for (int i = 0; i < depth; ++i)
        closing += "</a>";
    EXPECT_EQ(parse_error::no_error, parser.parse(ustring8(closing)).type);
}

TEST(XmlParserElements, HaveOneRoot) {
    expect_all({
        {"<?xml?><a/><b/>", {{"start a", "end a"}, 10, 0, ""}},
        {"<?xml?><a></a><b>", {{"start a", "end a"}, 10, 0, ""}},
        {"<?xml?><a/>\n\n<b/>", {{"start a", "end a", "space \n\n"}, 10, 2, ""}},
        {"<?xml?><a></a>trailing", {{"start a", "end a", "text trailing"}, 0, 0, ""}},
        {"<?xml?><a/><!--x--><![CDATA[y]]>z",
         {{"start a", "end a", "comment x", "text y", "text z"}, 0, 0, ""}},
        {"<?xml?>x<!--y--><a/>", {{"text x", "comment y", "start a", "end a"}, 0, 0, ""}},
    });
}

TEST(XmlParserElements, RejectASecondRootBeforeItsNameIsRead) {
    expect_all({
        {"<?xml?><a/><!DOCTYPE b>", {{"start a", "end a"}, 10, 0, ""}},
        {"<?xml?><a/><?pi?>", {{"start a", "end a"}, 10, 0, ""}},
        {"<?xml?><a/><", {{"start a", "end a"}, 10, 0, ""}},
        {"<?xml?><a/><!-", {{"start a", "end a"}, 10, 0, ""}},
        {"<?xml?><a/><![CDATA", {{"start a", "end a"}, 10, 0, ""}},
        {"<?xml?><!DOCTYPE b><b/>", {{}, 5, 0, "!"}},
        {"<?xml?><?pi?><b/>", {{}, 5, 0, "?"}},
        {"<?xml?><a><!DOCTYPE b></a>", {{"start a"}, 5, 0, "!"}},
    });
}

TEST(XmlParserElements, EndWithTheNameOfTheInnermostOpenOne) {
    expect_all({
        {"<?xml?><a><b></b></a>", {{"start a", "start b", "end b", "end a"}, 0, 0, ""}},
        {"<?xml?><a><b></a></b>", {{"start a", "start b"}, 2, 0, "a"}},
        {"<?xml?><a></A>", {{"start a"}, 2, 0, "A"}},
        {"<?xml?><ab></a>", {{"start ab"}, 2, 0, "a"}},
        {"<?xml?><a>\n</b>", {{"start a", "space \n"}, 2, 1, "b"}},
        {"<?xml?><a></b", {{"start a"}, 2, 0, "b"}},
    });
}

TEST(XmlParserElements, AcceptAnEndTagWhileNothingIsOpen) {
    expect_all({
        {"<?xml?></a>", {{"end a"}, 0, 0, ""}},
        {"<?xml?><a/></b></c>", {{"start a", "end a", "end b", "end c"}, 0, 0, ""}},
        {"<?xml?></a><b/>", {{"end a", "start b", "end b"}, 0, 0, ""}},
        {"<?xml?></a", {{}, 1, 0, ""}},
    });
}

TEST(XmlParserElements, EndWithASlashInTheirStartTag) {
    expect_all({
        {"<?xml?><a/>", {{"start a", "end a"}, 0, 0, ""}},
        {"<?xml?><a />", {{"start a", "end a"}, 0, 0, ""}},
        {"<?xml?><a b='c'/>", {{"start a", "attribute b=c", "end a"}, 0, 0, ""}},
        {"<?xml?><a b='c'\n/>", {{"start a", "attribute b=c", "end a"}, 0, 0, ""}},
        {"<?xml?><a/ >", {{"start a"}, 5, 0, " "}},
        {"<?xml?><a/", {{"start a"}, 5, 0, nul_byte}},
    });
    expect_for_every_byte("<?xml?><a/$", [](int byte) {
        if (byte == '>')
            return outcome{{"start a", "end a"}, 0, 0, ""};
        return outcome{{"start a"}, 5, 0, of_byte(byte)};
    });
}

TEST(XmlParserElements, AreClosedByASlashInTheEndTagOfAnInnerOne) {
    expect_all({
        {"<?xml?><o><a></a/>", {{"start o", "start a", "end a", "end o"}, 0, 0, ""}},
        {"<?xml?><a></a/>", {{"start a", "end a"}, 2, 0, ""}},
        {"<?xml?></a/>", {{"end a"}, 2, 0, ""}},
        {"<?xml?>\n\n<a></a\n/>", {{"start a", "end a"}, 2, 3, ""}},
    });
}

TEST(XmlParserElements, CloseBeforeTheEndOfTheDocumentIsNoticed) {
    expect_all({
        {"<?xml?><a></a", {{"start a"}, 1, 0, ""}},
        {"<?xml?>\n<a>\n</a", {{"start a", "space \n"}, 1, 2, ""}},
        {"<?xml?><a></a ", {{"start a", "end a"}, 0, 0, ""}},
        {"<?xml?><a></", {{"start a"}, 5, 0, nul_byte}},
    });
    xml_parser parser;
    EXPECT_EQ(1, read(parser, "<?xml?><a></a").kind);
    // Nothing is open any more, so the next run rejects a second root.
    EXPECT_EQ((outcome{{"start b", "end b"}, 10, 0, ""}), read(parser, "<?xml?><b/><c/>"));
}

TEST(XmlParserElements, ReturnUnexpectedEndAndLineZeroWhenLeftOpen) {
    expect_all({
        {"<?xml?><a>", {{"start a"}, 1, 0, ""}},
        {"<?xml?><a", {{"start a"}, 1, 0, ""}},
        {"<?xml?><a ", {{"start a"}, 1, 0, ""}},
        {"<?xml?>\n<a>\n\n", {{"start a", "space \n\n"}, 1, 0, ""}},
        {"<?xml?><a><b/>text", {{"start a", "start b", "end b", "text text"}, 1, 0, ""}},
    });
}

TEST(XmlParserElements, AllowOnlyWhitespaceBeforeTheAngleBracketOfAnEndTag) {
    expect_all({
        {"<?xml?><a></a \t\r\n>", {{"start a", "end a"}, 0, 0, ""}},
        {"<?xml?><a></a<", {{"start a", "end a"}, 5, 0, "<"}},
        {"<?xml?><a></a\n\n<b>", {{"start a", "end a"}, 5, 2, "<"}},
    });
    expect_for_every_byte("<?xml?><a></a$>", [](int byte) {
        if (is_white_space_byte(byte))
            return outcome{{"start a", "end a"}, 0, 0, ""};
        if (continues_name(byte))
            return outcome{{"start a"}, 2, 0, "a" + of_byte(byte)};
        if (byte == '/')
            return outcome{{"start a", "end a"}, 2, 0, ""};
        // After a first '>' the second one begins character data.
        return outcome{{"start a", "end a"}, 5, 0, of_byte(byte)};
    });
}

TEST(XmlParserNames, BeginWithALetter) {
    expect_for_every_byte("<?xml?><$/>", [](int byte) {
        if (is_letter(byte))
            return outcome{{"start " + of_byte(byte), "end " + of_byte(byte)}, 0, 0, ""};
        return outcome{{}, 5, 0, of_byte(byte)};
    });
    expect_for_every_byte("<?xml?></$>", [](int byte) {
        if (is_letter(byte))
            return outcome{{"end " + of_byte(byte)}, 0, 0, ""};
        return outcome{{}, 5, 0, of_byte(byte)};
    });
    expect_for_every_byte("<?xml?><a $='1'/>", [](int byte) {
        if (is_letter(byte))
            return outcome{{"start a", "attribute " + of_byte(byte) + "=1", "end a"}, 0, 0, ""};
        switch (byte) {
        case ' ':
        case '\t':
        case '\r':
            return outcome{{"start a"}, 5, 0, "="};
        case '\n':
            return outcome{{"start a"}, 5, 1, "="};
        case '/':
            return outcome{{"start a"}, 5, 0, "="};
        case '>':
            return outcome{{"start a", "text ='1'/>"}, 1, 0, ""};
        default:
            return outcome{{"start a"}, 5, 0, of_byte(byte)};
        }
    });
}

TEST(XmlParserNames, ContinueWithLettersDigitsAndUnderscores) {
    expect_for_every_byte("<?xml?><a$/>", [](int byte) {
        if (continues_name(byte))
            return outcome{{"start a" + of_byte(byte), "end a" + of_byte(byte)}, 0, 0, ""};
        if (is_white_space_byte(byte))
            return outcome{{"start a", "end a"}, 0, 0, ""};
        if (byte == '>')
            return outcome{{"start a", "text />"}, 1, 0, ""};
        return outcome{{"start a"}, 5, 0, of_byte(byte)};
    });
    EXPECT_EQ((outcome{{"start aZ9_0", "end aZ9_0"}, 0, 0, ""}), read("<?xml?><aZ9_0></aZ9_0>"));
}

TEST(XmlParserNames, EndAtColonsDotsAndDashes) {
    expect_all({
        {"<?xml?><a xml:lang='de'/>", {{"start a"}, 8, 0, "xml"}},
        {"<?xml?><a b-c='1'/>", {{"start a"}, 8, 0, "b"}},
        {"<?xml?><a b.c='1'/>", {{"start a"}, 8, 0, "b"}},
        {"<?xml?><x:a/>", {{"start x"}, 5, 0, ":"}},
        {"<?xml?><x-a/>", {{"start x"}, 5, 0, "-"}},
        {"<?xml?><x.a/>", {{"start x"}, 5, 0, "."}},
        {"<?xml?><_a>", {{}, 5, 0, "_"}},
        {"<?xml?><\xC3\xA4/>", {{}, 5, 0, "\xC3"}},
        {"<?xml?><", {{}, 5, 0, nul_byte}},
    });
}

TEST(XmlParserNames, MayBeLong) {
    const std::string name(100000, 'n');
    EXPECT_EQ((outcome{{"start " + name, "attribute " + name + "=v", "end " + name}, 0, 0, ""}),
              read("<?xml?><" + name + " " + name + "='v'></" + name + ">"));
}

TEST(XmlParserAttributes, MayHaveWhitespaceOnBothSidesOfTheEqualsSign) {
    expect_all({
        {"<?xml?><a b='1'c=\"2\"/>",
         {{"start a", "attribute b=1", "attribute c=2", "end a"}, 0, 0, ""}},
        {"<?xml?><a b = \"1\" />", {{"start a", "attribute b=1", "end a"}, 0, 0, ""}},
        {"<?xml?><a\n\tb\r\n=\n'1'\n/>", {{"start a", "attribute b=1", "end a"}, 0, 0, ""}},
        {"<?xml?><a b=''/>", {{"start a", "attribute b=", "end a"}, 0, 0, ""}},
        {"<?xml?><a b='\"'/>", {{"start a", "attribute b=\"", "end a"}, 0, 0, ""}},
        {"<?xml?><a b=\"'\"/>", {{"start a", "attribute b='", "end a"}, 0, 0, ""}},
        {"<?xml?><a b='>'/>", {{"start a", "attribute b=>", "end a"}, 0, 0, ""}},
        {"<?xml?><a b=' x  y\n'/>", {{"start a", "attribute b= x  y\n", "end a"}, 0, 0, ""}},
        {"<?xml?><a b='&lt;&amp;x&quot;'/>", {{"start a", "attribute b=<&x\"", "end a"}, 0, 0, ""}},
    });
}

TEST(XmlParserAttributes, RequireAnEqualsSign) {
    expect_all({
        {"<?xml?><a b>", {{"start a"}, 8, 0, "b"}},
        {"<?xml?><a b", {{"start a"}, 8, 0, "b"}},
        {"<?xml?><a b ", {{"start a"}, 8, 0, "b"}},
        {"<?xml?><a bcd\n\n/>", {{"start a"}, 8, 2, "bcd"}},
        {"<?xml?><a b c='1'>", {{"start a"}, 8, 0, "b"}},
        {"<?xml?><a b'1'>", {{"start a"}, 8, 0, "b"}},
    });
    expect_for_every_byte("<?xml?><a b$'1'/>", [](int byte) {
        if (byte == '=')
            return outcome{{"start a", "attribute b=1", "end a"}, 0, 0, ""};
        if (continues_name(byte))
            return outcome{{"start a"}, 8, 0, "b" + of_byte(byte)};
        return outcome{{"start a"}, 8, lines_of(byte), "b"};
    });
}

TEST(XmlParserAttributes, RequireAQuoteBeforeTheirValue) {
    expect_all({
        {"<?xml?><a b=1>", {{"start a"}, 6, 0, ""}},
        {"<?xml?><a b=", {{"start a"}, 6, 0, ""}},
        {"<?xml?><a b= \n", {{"start a"}, 6, 1, ""}},
        {"<?xml?><a b=/>", {{"start a"}, 6, 0, ""}},
        {"<?xml?><a b=<", {{"start a"}, 6, 0, ""}},
        {"<?xml?><a b==''>", {{"start a"}, 6, 0, ""}},
    });
    expect_for_every_byte("<?xml?><a b=$1'/>", [](int byte) {
        if (byte == '\'')
            return outcome{{"start a", "attribute b=1", "end a"}, 0, 0, ""};
        if (byte == '"')
            return outcome{{"start a", "attribute b=1'/>"}, 6, 0, "b"};
        return outcome{{"start a"}, 6, lines_of(byte), ""};
    });
}

TEST(XmlParserAttributes, AreReportedBeforeAMissingClosingQuoteIs) {
    expect_all({
        {"<?xml?><a b='", {{"start a", "attribute b="}, 6, 0, "b"}},
        {"<?xml?><a b='1", {{"start a", "attribute b=1"}, 6, 0, "b"}},
        {"<?xml?><a b='1\">", {{"start a", "attribute b=1\">"}, 6, 0, "b"}},
        {"<?xml?>\n<a\nb='\n\n&gt;", {{"start a", "attribute b=\n\n>"}, 6, 2, "b"}},
        {"<?xml?><a b='1'", {{"start a", "attribute b=1"}, 1, 0, ""}},
    });
}

TEST(XmlParserAttributes, MayContainAnyByteExceptTheQuoteAngleBracketAndAmpersand) {
    expect_for_every_byte("<?xml?><a b='$'/>", [](int byte) {
        switch (byte) {
        case '\'':
            return outcome{{"start a", "attribute b="}, 5, 0, "'"};
        case '<':
            return outcome{{"start a"}, 5, 0, "<"};
        case '&':
            return outcome{{"start a"}, 7, 0, ""};
        default:
            return outcome{{"start a", "attribute b=" + of_byte(byte), "end a"}, 0, 0, ""};
        }
    });
}

TEST(XmlParserAttributes, MayAppearOnceInATag) {
    expect_all({
        {"<?xml?><a x=\"1\" x=\"2\">", {{"start a", "attribute x=1"}, 9, 0, "x"}},
        {"<?xml?><a x='1'\nlong_1='2'\nlong_1>",
         {{"start a", "attribute x=1", "attribute long_1=2"}, 9, 2, "long_1"}},
        {"<?xml?><a x='1' X='2'/>",
         {{"start a", "attribute x=1", "attribute X=2", "end a"}, 0, 0, ""}},
        {"<?xml?><a x='1'><b x='2'/></a>",
         {{"start a", "attribute x=1", "start b", "attribute x=2", "end b", "end a"}, 0, 0, ""}},
    });
}

TEST(XmlParserAttributes, MayAppearInEndTagsAndShareTheSetOfTheLastStartTag) {
    expect_all({
        {"<?xml?><a></a x='1'>", {{"start a", "end a", "attribute x=1"}, 0, 0, ""}},
        {"<?xml?><a x='1'></a x='2'>", {{"start a", "attribute x=1", "end a"}, 9, 0, "x"}},
        {"<?xml?><a x='1'><b/></a x='2'>",
         {{"start a", "attribute x=1", "start b", "end b", "end a", "attribute x=2"}, 0, 0, ""}},
        {"<?xml?><a x='1'><b></b></a x='2'>",
         {{"start a", "attribute x=1", "start b", "end b", "end a", "attribute x=2"}, 0, 0, ""}},
        {"<?xml?><a></a x='1'></b x='2'>",
         {{"start a", "end a", "attribute x=1", "end b"}, 9, 0, "x"}},
    });
}

TEST(XmlParserAttributes, MayBeMany) {
    std::string document = "<?xml?><a";
    for (int i = 0; i < 50000; ++i)
        document += " b" + std::to_string(i) + "='" + std::to_string(i) + "'";
    const outcome result = read(document + "/>");
    ASSERT_EQ(50002u, result.events.size());
    EXPECT_EQ("attribute b0=0", result.events[1]);
    EXPECT_EQ("attribute b49999=49999", result.events[50000]);
    EXPECT_EQ(0, result.kind);
    EXPECT_EQ("b777", read(document + " b777=''").text);
}

TEST(XmlParserTags, RejectAnAngleBracketInside) {
    expect_all({
        {"<?xml?><a<b>", {{"start a"}, 5, 0, "<"}},
        {"<?xml?><a <b>", {{"start a"}, 5, 0, "<"}},
        {"<?xml?><a\n\nb='1'\n<!-- -->", {{"start a", "attribute b=1"}, 5, 3, "<"}},
    });
}

TEST(XmlParserTags, DoNotReportTheirWhitespace) {
    EXPECT_EQ((outcome{{"start a", "attribute b=1", "end a"}, 0, 0, ""}),
              read("<?xml?><a \n  b='1' \n ></a \n >"));
}

TEST(XmlParserCharacterData, RejectsAnAngleBracketOnlyAtItsBeginning) {
    expect_all({
        {"<?xml?><a>></a>", {{"start a"}, 5, 0, ">"}},
        {"<?xml?>>", {{}, 5, 0, ">"}},
        {"<?xml?><a>\n >", {{"start a", "space \n "}, 5, 1, ">"}},
        {"<?xml?><a>x></a>", {{"start a", "text x>", "end a"}, 0, 0, ""}},
        {"<?xml?><a>x >y</a>", {{"start a", "text x >y", "end a"}, 0, 0, ""}},
        {"<?xml?><a>x  >y</a>", {{"start a", "text x", "space   "}, 5, 0, ">"}},
    });
    expect_for_every_byte("<?xml?><a>$</a>", [](int byte) {
        if (is_white_space_byte(byte))
            return outcome{{"start a", "space " + of_byte(byte), "end a"}, 0, 0, ""};
        if (byte == '<' || byte == '>')
            return outcome{{"start a"}, 5, 0, of_byte(byte)};
        if (byte == '&')
            return outcome{{"start a"}, 7, 0, ""};
        return outcome{{"start a", "text " + of_byte(byte), "end a"}, 0, 0, ""};
    });
    expect_for_every_byte("<?xml?><a>t$</a>", [](int byte) {
        if (byte == '<')
            return outcome{{"start a", "text t"}, 5, 0, "<"};
        if (byte == '&')
            return outcome{{"start a"}, 7, 0, ""};
        return outcome{{"start a", "text t" + of_byte(byte), "end a"}, 0, 0, ""};
    });
}

TEST(XmlParserCharacterData, IsSplitAtTwoWhitespaceBytesInARow) {
    expect_all({
        {"<?xml?><a>one  two</a>",
         {{"start a", "text one", "space   ", "text two", "end a"}, 0, 0, ""}},
        {"<?xml?><a>one two</a>", {{"start a", "text one two", "end a"}, 0, 0, ""}},
        {"<?xml?><a>one\ntwo</a>", {{"start a", "text one\ntwo", "end a"}, 0, 0, ""}},
        {"<?xml?><a>one\r\ntwo</a>",
         {{"start a", "text one", "space \r\n", "text two", "end a"}, 0, 0, ""}},
        {"<?xml?><a>one </a>", {{"start a", "text one ", "end a"}, 0, 0, ""}},
        {"<?xml?><a>one  </a>", {{"start a", "text one", "space   ", "end a"}, 0, 0, ""}},
        {"<?xml?><a> one</a>", {{"start a", "space  ", "text one", "end a"}, 0, 0, ""}},
        {"<?xml?><a>one<b/> two</a>",
         {{"start a", "text one", "start b", "end b", "space  ", "text two", "end a"}, 0, 0, ""}},
        {"<?xml?>one ", {{"text one "}, 0, 0, ""}},
        {"<?xml?>one  ", {{"text one", "space   "}, 0, 0, ""}},
        {"<?xml?>a b  c\t\t\td e",
         {{"text a b", "space   ", "text c", "space \t\t\t", "text d e"}, 0, 0, ""}},
        {"<?xml?>a&#32; b", {{"text a  b"}, 0, 0, ""}},
        {"<?xml?>a &#32;b", {{"text a  b"}, 0, 0, ""}},
    });
    for (const char first : {' ', '\t', '\r', '\n'}) {
        for (const char second : {' ', '\t', '\r', '\n'}) {
            const std::string pair = {first, second};
            EXPECT_EQ((outcome{{"text x", "space " + pair, "text y"}, 0, 0, ""}),
                      read("<?xml?>x" + pair + "y"));
        }
    }
}

TEST(XmlParserCharacterData, MayContainSlashesAndQuotes) {
    expect_all({
        {"<?xml?><a>/b/</a>", {{"start a", "text /b/", "end a"}, 0, 0, ""}},
        {"<?xml?>/>", {{"text />"}, 0, 0, ""}},
        {"<?xml?><a>=\"'?!-]]></a>", {{"start a", "text =\"'?!-]]>", "end a"}, 0, 0, ""}},
    });
}

TEST(XmlParserCharacterData, KeepsNulBytes) {
    EXPECT_EQ((outcome{{"start a", "end a", "text " + nul_byte}, 0, 0, ""}),
              read("<?xml?><a/>" + nul_byte));
    EXPECT_EQ((outcome{{"start a", "text x" + nul_byte + "y", "end a"}, 0, 0, ""}),
              read("<?xml?><a>x" + nul_byte + "y</a>"));
}

TEST(XmlParserReferences, RecognizeSixNames) {
    expect_all({
        {"<?xml?>&amp;", {{"text &"}, 0, 0, ""}},
        {"<?xml?>&apos;", {{"text '"}, 0, 0, ""}},
        {"<?xml?>&gt;", {{"text >"}, 0, 0, ""}},
        {"<?xml?>&lt;", {{"text <"}, 0, 0, ""}},
        {"<?xml?>&nbsp;", {{"text  "}, 0, 0, ""}},
        {"<?xml?>&quot;", {{"text \""}, 0, 0, ""}},
        {"<?xml?>a&amp;b&lt;&gt;c&apos;&quot;&nbsp;d", {{"text a&b<>c'\" d"}, 0, 0, ""}},
        {"<?xml?>&amp;lt;", {{"text &lt;"}, 0, 0, ""}},
    });
}

TEST(XmlParserReferences, RejectTheAmpersandOfAWordThatBeginsLikeAnEntity) {
    const char* words[] = {"a;",    "am;",  "amp",   "amp ;", "ampx;", "ap;",  "apos",
                           "aposs", "apo;", "AMP;a", "g;",    "g",     "gt",   "gtx;",
                           "l;",    "l",    "lt",    "lt ",   "n;",    "nbsp", "nb;",
                           "n",     "quot", "quo;",  "q",     "a",     "aamp;"};
    for (const std::string word : words) {
        SCOPED_TRACE(word);
        const bool known_letter = word[0] != 'A';
        EXPECT_EQ((outcome{{}, known_letter ? 5 : 7, 0, known_letter ? "&" : ""}),
                  read("<?xml?>x&" + word));
        EXPECT_EQ((outcome{{"start a"}, known_letter ? 5 : 7, 0, known_letter ? "&" : ""}),
                  read("<?xml?><a b='&" + word));
        EXPECT_EQ((outcome{{}, known_letter ? 5 : 7, 0, known_letter ? "&" : ""}),
                  read("<?xml?>x&" + word + "x and much more"));
    }
}

// Each reference after any number of bytes, with any number of bytes after it.
TEST(XmlParserReferences, AreResolvedAtEveryDistanceFromOthersAndFromTheEnd) {
    const struct {
        const char* reference;
        char meant;
    } cases[] = {{"&amp;", '&'},  {"&apos;", '\''}, {"&gt;", '>'},  {"&lt;", '<'},
                 {"&nbsp;", ' '}, {"&quot;", '"'},  {"&#65;", 'A'}, {"&#x42;", 'B'}};
    for (const auto& c : cases)
        for (std::size_t before = 0; before < 140; before += 1 + before / 40)
            for (std::size_t after = 0; after < 80; ++after) {
                const std::string start = "-" + std::string(before, 'b');
                const std::string end(after, 'a');
                const std::string written = start + c.reference + start + c.reference + end;
                const std::string meant = start + c.meant + start + c.meant + end;
                ASSERT_EQ((outcome{{"text " + meant}, 0, 0, ""}), read("<?xml?>" + written));
                ASSERT_EQ((outcome{{"start a", "attribute b=" + meant}, 6, 0, "b"}),
                          read("<?xml?><a b='" + written));
            }
}

TEST(XmlParserReferences, ReturnUnknownEntityForAnyOtherByteAfterTheAmpersand) {
    expect_for_every_byte("<?xml?>&$;", [](int byte) {
        switch (byte) {
        case 'a':
        case 'g':
        case 'l':
        case 'n':
        case 'q':
            return outcome{{}, 5, 0, "&"};
        case '#':
            return outcome{{"text " + nul_byte}, 0, 0, ""};
        default:
            return outcome{{}, 7, 0, ""};
        }
    });
    expect_all({
        {"<?xml?>&", {{}, 7, 0, ""}},
        {"<?xml?>\n&", {{}, 7, 1, ""}},
        {"<?xml?>&copy;", {{}, 7, 0, ""}},
        {"<?xml?>& b", {{}, 7, 0, ""}},
        {"<?xml?>&<", {{}, 7, 0, ""}},
    });
}

TEST(XmlParserReferences, ProduceOneByteForANumber) {
    const char hexadecimal[] = "0123456789abcdef";
    for (int number = 0; number <= 300; ++number) {
        SCOPED_TRACE(number);
        const std::string byte = of_byte(number < 255 ? number : 255);
        EXPECT_EQ((outcome{{"text " + byte}, 0, 0, ""}),
                  read("<?xml?>&#" + std::to_string(number) + ";"));
        const std::string digits = {hexadecimal[number / 256], hexadecimal[number / 16 % 16],
                                    hexadecimal[number % 16]};
        EXPECT_EQ((outcome{{"text " + byte}, 0, 0, ""}), read("<?xml?>&#x" + digits + ";"));
    }
    expect_all({
        {"<?xml?>&#65;&#x42;", {{"text AB"}, 0, 0, ""}},
        {"<?xml?>&#228;", {{"text \xE4"}, 0, 0, ""}},
        {"<?xml?>&#x4A;&#x4a;", {{"text JJ"}, 0, 0, ""}},
        {"<?xml?>&#8364;", {{"text \xFF"}, 0, 0, ""}},
        {"<?xml?>&#99999999999999999999999999;", {{"text \xFF"}, 0, 0, ""}},
        {"<?xml?>&#xffffffffffffffffffffffffff;", {{"text \xFF"}, 0, 0, ""}},
    });
}

TEST(XmlParserReferences, ReadADecimalNumberWithALeadingZeroAsOctal) {
    expect_all({
        {"<?xml?>&#0101;", {{"text A"}, 0, 0, ""}},
        {"<?xml?>&#0377;", {{"text \xFF"}, 0, 0, ""}},
        {"<?xml?>&#0400;", {{"text \xFF"}, 0, 0, ""}},
        {"<?xml?>&#065;", {{"text 5"}, 0, 0, ""}},
        {"<?xml?>&#08;", {{"text " + nul_byte}, 0, 0, ""}},
        {"<?xml?>&#0;", {{"text " + nul_byte}, 0, 0, ""}},
        {"<?xml?>&#00000065;", {{"text 5"}, 0, 0, ""}},
        {"<?xml?>&#x0041;", {{"text A"}, 0, 0, ""}},
    });
}

TEST(XmlParserReferences, ProduceANulByteForANumberWithoutDigits) {
    expect_all({
        {"<?xml?>a&#;b", {{"text a" + nul_byte + "b"}, 0, 0, ""}},
        {"<?xml?>a&#x;b", {{"text a" + nul_byte + "b"}, 0, 0, ""}},
        {"<?xml?><a b='&#;'/>", {{"start a", "attribute b=" + nul_byte, "end a"}, 0, 0, ""}},
    });
}

TEST(XmlParserReferences, RejectTheByteAfterANumberUnlessItIsASemicolon) {
    expect_for_every_byte("<?xml?>&#1$;", [](int byte) {
        if (is_digit(byte))
            return outcome{{"text " + of_byte(10 + byte - '0')}, 0, 0, ""};
        if (byte == ';')
            return outcome{{"text \x01;"}, 0, 0, ""};
        return outcome{{}, 5, 0, of_byte(byte)};
    });
    expect_for_every_byte("<?xml?>&#x1$;", [](int byte) {
        if (is_digit(byte))
            return outcome{{"text " + of_byte(16 + byte - '0')}, 0, 0, ""};
        if (byte >= 'a' && byte <= 'f')
            return outcome{{"text " + of_byte(26 + byte - 'a')}, 0, 0, ""};
        if (byte >= 'A' && byte <= 'F')
            return outcome{{"text " + of_byte(26 + byte - 'A')}, 0, 0, ""};
        if (byte == ';')
            return outcome{{"text \x01;"}, 0, 0, ""};
        return outcome{{}, 5, 0, of_byte(byte)};
    });
    expect_all({
        {"<?xml?>&#", {{}, 5, 0, nul_byte}},
        {"<?xml?>&#x", {{}, 5, 0, nul_byte}},
        {"<?xml?>&#12", {{}, 5, 0, nul_byte}},
        {"<?xml?>&#x1f", {{}, 5, 0, nul_byte}},
        {"<?xml?>&#X41;", {{}, 5, 0, "X"}},
        {"<?xml?>&#-1;", {{}, 5, 0, "-"}},
        {"<?xml?>&#+1;", {{}, 5, 0, "+"}},
        {"<?xml?>&# 1;", {{}, 5, 0, " "}},
        {"<?xml?>&#0x41;", {{}, 5, 0, "x"}},
        {"<?xml?>&#1a;", {{}, 5, 0, "a"}},
        {"<?xml?>&#x1g;", {{}, 5, 0, "g"}},
    });
}

TEST(XmlParserComments, AreReportedUpToTheirEnd) {
    expect_all({
        {"<?xml?><!--x-->", {{"comment x"}, 0, 0, ""}},
        {"<?xml?><!---->", {{"comment "}, 0, 0, ""}},
        {"<?xml?><!----->", {{"comment -"}, 0, 0, ""}},
        {"<?xml?><!-- a -- b ->c> & < --->", {{"comment  a -- b ->c> & < -"}, 0, 0, ""}},
        {"<?xml?><!--&lt;<a b='c'>-->", {{"comment &lt;<a b='c'>"}, 0, 0, ""}},
        {"<?xml?><a><!--x--></a>", {{"start a", "comment x", "end a"}, 0, 0, ""}},
        {"<?xml?><!--x--><!--y-->", {{"comment x", "comment y"}, 0, 0, ""}},
        {"<?xml?><!--x-->>", {{"comment x"}, 5, 0, ">"}},
        {"<?xml?>t<!--x-->u", {{"text t", "comment x", "text u"}, 0, 0, ""}},
    });
    expect_for_every_byte("<?xml?><!--$-->", [](int byte) {
        return outcome{{"comment " + of_byte(byte)}, 0, 0, ""};
    });
}

TEST(XmlParserComments, BeginWithTheWhitespaceBeforeThem) {
    expect_all({
        {"<?xml?><a>\n  <!--x--></a>",
         {{"start a", "space \n  ", "comment \n  x", "end a"}, 0, 0, ""}},
        {"<?xml?><a>t  <!--x--></a>",
         {{"start a", "text t", "space   ", "comment   x", "end a"}, 0, 0, ""}},
        {"<?xml?><a>t <!--x--></a>", {{"start a", "text t ", "comment x", "end a"}, 0, 0, ""}},
        {"<?xml?> <!--x-->", {{"comment x"}, 0, 0, ""}},
        {"<?xml?><!--x--> <!--y-->", {{"comment x", "space  ", "comment  y"}, 0, 0, ""}},
        {"<?xml?><a ><!--x--></a>", {{"start a", "comment x", "end a"}, 0, 0, ""}},
        {"<?xml?> <a/>\t<!--x-->", {{"start a", "end a", "space \t", "comment \tx"}, 0, 0, ""}},
    });
}

TEST(XmlParserComments, ReturnUnexpectedEndAndTheLineWhenLeftOpen) {
    expect_all({
        {"<?xml?><!--", {{}, 1, 0, ""}},
        {"<?xml?><!-->", {{}, 1, 0, ""}},
        {"<?xml?><!--->", {{}, 1, 0, ""}},
        {"<?xml?><!---", {{}, 1, 0, ""}},
        {"<?xml?><!----", {{}, 1, 0, ""}},
        {"<?xml?>\n\n<!--\nx--", {{}, 1, 2, ""}},
        {"<?xml?>\n<a>\n<!--\nx-- >", {{"start a", "space \n"}, 1, 2, ""}},
        {"<?xml?><!-", {{}, 5, 0, "!"}},
        {"<?xml?><!", {{}, 5, 0, "!"}},
        {"<?xml?><!x-->", {{}, 5, 0, "!"}},
        {"<?xml?><!-x-->", {{}, 5, 0, "!"}},
    });
}

TEST(XmlParserSections, AreReportedWithoutInterpretingTheirContent) {
    expect_all({
        {"<?xml?><a><![CDATA[x]]></a>", {{"start a", "text x", "end a"}, 0, 0, ""}},
        {"<?xml?><![CDATA[]]>", {{"text "}, 0, 0, ""}},
        {"<?xml?><![CDATA[]]]>", {{"text ]"}, 0, 0, ""}},
        {"<?xml?><![CDATA[a  b &lt; <c> ]] > ]>]]>", {{"text a  b &lt; <c> ]] > ]>"}, 0, 0, ""}},
        {"<?xml?>x<![CDATA[y]]>z", {{"text x", "text y", "text z"}, 0, 0, ""}},
        {"<?xml?><![CDATA[<![CDATA[]]>", {{"text <![CDATA["}, 0, 0, ""}},
    });
    expect_for_every_byte("<?xml?><![CDATA[$]]>", [](int byte) {
        return outcome{{"text " + of_byte(byte)}, 0, 0, ""};
    });
}

TEST(XmlParserSections, BeginWithTheWhitespaceBeforeThem) {
    expect_all({
        {"<?xml?><a> <![CDATA[x]]></a>", {{"start a", "space  ", "text  x", "end a"}, 0, 0, ""}},
        {"<?xml?>t\n\n<![CDATA[x]]>", {{"text t", "space \n\n", "text \n\nx"}, 0, 0, ""}},
        {"<?xml?>t\n<![CDATA[x]]>", {{"text t\n", "text x"}, 0, 0, ""}},
    });
}

TEST(XmlParserSections, ReturnUnexpectedEndAndTheLineWhenLeftOpen) {
    expect_all({
        {"<?xml?><![CDATA[", {{}, 1, 0, ""}},
        {"<?xml?><![CDATA[>", {{}, 1, 0, ""}},
        {"<?xml?><![CDATA[]", {{}, 1, 0, ""}},
        {"<?xml?><![CDATA[]]", {{}, 1, 0, ""}},
        {"<?xml?><![CDATA[]>", {{}, 1, 0, ""}},
        {"<?xml?>\n<![CDATA[\n]] >", {{}, 1, 1, ""}},
        {"<?xml?><![CDATA", {{}, 5, 0, "!"}},
        {"<?xml?><![cdata[x]]>", {{}, 5, 0, "!"}},
        {"<?xml?><![", {{}, 5, 0, "!"}},
    });
}

TEST(XmlParserLines, CountOnlyInWhitespaceBetweenAndWithinTags) {
    expect_all({
        // After the header, between tags, and within a tag.
        {"<?xml?>\n\n\n>", {{}, 5, 3, ">"}},
        {"<?xml?><a>\n<b>\n\n</b>\n>",
         {{"start a", "space \n", "start b", "space \n\n", "end b", "space \n"}, 5, 4, ">"}},
        {"<?xml?><a\n\n\n:", {{"start a"}, 5, 3, ":"}},
        {"<?xml?><a\nb\n=\n'1'\n:", {{"start a", "attribute b=1"}, 5, 4, ":"}},
        {"<?xml?><a></a\n\n:", {{"start a", "end a"}, 5, 2, ":"}},
        {"<?xml?>x\n\ny&", {{"text x", "space \n\n"}, 7, 2, ""}},
        // Not within the header, character data, values, comments or sections.
        {"<?xml\n\n?><:", {{}, 5, 0, ":"}},
        {"<?xml?>x\ny\nz&", {{}, 7, 0, ""}},
        {"<?xml?>x\n<:", {{"text x\n"}, 5, 0, ":"}},
        {"<?xml?><a b='\n\n'\n:", {{"start a", "attribute b=\n\n"}, 5, 1, ":"}},
        {"<?xml?><!--\n\n--><:", {{"comment \n\n"}, 5, 0, ":"}},
        {"<?xml?><![CDATA[\n\n]]><:", {{"text \n\n"}, 5, 0, ":"}},
        {"<?xml?>&#10;&#10;<:", {{"text \n\n"}, 5, 0, ":"}},
        // Carriage returns are not counted.
        {"<?xml?>\r\r\n\r<:", {{}, 5, 1, ":"}},
    });
}

TEST(XmlParserLines, StartAtZeroInEachRun) {
    xml_parser parser;
    EXPECT_EQ(2u, parser.parse("<?xml?>\n\n>").line);
    EXPECT_EQ(1u, parser.parse("<?xml?>\n>").line);
    EXPECT_EQ(0u, parser.parse("").line);
}

TEST(XmlParserRuns, StartOutsideAnyTag) {
    xml_parser parser;
    EXPECT_EQ(5, read(parser, "<?xml?></a<").kind);
    EXPECT_EQ((outcome{{"start b", "end b"}, 0, 0, ""}), read(parser, "<?xml?><b/>"));
}

TEST(XmlParserRuns, KeepElementsThatAFailedRunLeftOpen) {
    xml_parser parser;
    EXPECT_EQ((outcome{{"start a", "start b"}, 1, 0, ""}), read(parser, "<?xml?><a><b>"));
    // Both are still open, so several roots are allowed and the document ends too soon.
    EXPECT_EQ((outcome{{"start c", "end c", "start d", "end d"}, 1, 0, ""}),
              read(parser, "<?xml?><c/><d/>"));
    EXPECT_EQ((outcome{{}, 2, 0, "a"}), read(parser, "<?xml?></a>"));
    EXPECT_EQ((outcome{{"end b"}, 1, 0, ""}), read(parser, "<?xml?></b>"));
    EXPECT_EQ((outcome{{"end a"}, 0, 0, ""}), read(parser, "<?xml?></a>"));
}

TEST(XmlParserRuns, KeepElementsThatAFailedRunLeftOpenEvenAfterADocumentWithoutAHeader) {
    xml_parser parser;
    EXPECT_EQ(1, read(parser, "<?xml?><a>").kind);
    EXPECT_EQ(4, read(parser, "").kind);
    EXPECT_EQ((outcome{{"start b", "end b"}, 1, 0, ""}), read(parser, "<?xml?><b/>"));
}

TEST(XmlParserRuns, KeepTheAttributesOfTheLastStartTag) {
    xml_parser parser;
    EXPECT_EQ((outcome{{"start a", "attribute x=1", "end a"}, 0, 0, ""}),
              read(parser, "<?xml?><a x='1'></a>"));
    EXPECT_EQ((outcome{{"end b"}, 9, 0, "x"}), read(parser, "<?xml?></b x='2'>"));
    EXPECT_EQ((outcome{{"start c", "attribute x=3", "end c"}, 0, 0, ""}),
              read(parser, "<?xml?><c x='3'/>"));
    EXPECT_EQ((outcome{{"end b", "attribute x=2"}, 0, 0, ""}), read(parser, "<?xml?></b x='2'>"));
}

// At the end of a run, names may be stored in another form. No name is lost if that fails.
TEST(XmlParserRuns, KeepTheAttributesEvenIfMemoryRunsOut) {
    const ustring8 first = "<?xml?><a first_attribute='1' second_attribute='2'></a>";
    const ustring8 again = "<?xml?></b second_attribute='3'>";
    unsigned swallowed = 0;
    bool failed = true;
    for (unsigned successes = 0; failed; ++successes) {
        xml_parser parser;
        try {
            const test_support::failing_allocation failure(successes);
            const parse_error result = parser.parse(first);
            failed = failure.failed();
            EXPECT_EQ(parse_error::no_error, result.type);
        } catch (const std::bad_alloc&) {
            continue;
        }
        swallowed += failed;
        EXPECT_EQ(parse_error::attribute_redefined, parser.parse(again).type) << successes;
    }
    EXPECT_LE(1u, swallowed);
}

// A document, and the kind returned for each of its prefixes, starting with the empty one: one
// digit each, 'A' for 10.
const struct {
    std::string document;
    std::string kinds;
} documents[] = {
    {"<?xml?> <a b='c'>t&lt;<!--x--></a>", "44444"
                                           "3333"
                                           "5"
                                           "11"
                                           "8"
                                           "666"
                                           "111"
                                           "7"
                                           "55"
                                           "1"
                                           "555"
                                           "11111"
                                           "55"
                                           "1"
                                           "0"},
    {"<?xml?><r><e/></r><![CDATA[x]]>&#65;", "44444"
                                             "333"
                                             "5"
                                             "11"
                                             "5"
                                             "1"
                                             "5"
                                             "1"
                                             "55"
                                             "1"
                                             "0"
                                             "AAAAAAAA"
                                             "1111"
                                             "0"
                                             "7"
                                             "555"
                                             "0"},
    {"\xEF\xBB\xBF<?xml?>x y", "44444444"
                               "333"
                               "000"},
};

TEST(XmlParserRuns, ReturnTheDocumentedKindForEveryPrefix) {
    for (const auto& c : documents) {
        ASSERT_EQ(c.document.size() + 1, c.kinds.size());
        std::string kinds;
        for (std::size_t length = 0; length <= c.document.size(); ++length)
            kinds += "0123456789A"[read(c.document.substr(0, length)).kind];
        EXPECT_EQ(c.kinds, kinds) << c.document;
    }
}

TEST(XmlParserRuns, ReadNothingPastTheEndOfTheirRange) {
    for (const auto& c : documents) {
        for (std::size_t length = 0; length <= c.document.size(); ++length) {
            const outcome expected = read(c.document.substr(0, length));
            for (int byte = 0; byte < 256; ++byte) {
                const ustring8 text =
                    c.document.substr(0, length) + std::string(12, static_cast<char>(byte));
                xml_parser parser;
                recorder events(parser);
                const auto result =
                    parser.parse(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length));
                ASSERT_EQ(expected, (outcome{events.events, result.type, result.line, result.text}))
                    << ::testing::PrintToString(text);
            }
        }
    }
}

TEST(XmlParserRuns, ReturnAValidKindWhateverByteIsReplaced) {
    for (const auto& c : documents) {
        for (std::size_t place = 0; place < c.document.size(); ++place) {
            for (int byte = 0; byte < 256; ++byte) {
                std::string text = c.document;
                text[place] = static_cast<char>(byte);
                const outcome result = read(text);
                ASSERT_TRUE(result.kind >= 0 && result.kind <= 10)
                    << ::testing::PrintToString(text);
                const std::size_t least[] = {0, 0, 0, 0, 0, 1, 0, 0, 1, 1, 0};
                const std::size_t most[] = {0, 0, 3, 0, 0, 1, 2, 0, 3, 3, 0};
                ASSERT_LE(least[result.kind], result.text.size()) << ::testing::PrintToString(text);
                ASSERT_GE(most[result.kind], result.text.size()) << ::testing::PrintToString(text);
            }
        }
    }
}

TEST(XmlParserRuns, LeaveTheCursorWhereTheyEnd) {
    const ustring8 text = "<?xml?><a>\n:</a>";
    xml_parser parser;
    iterator cursor = text.begin();
    iterator end = text.end();
    EXPECT_EQ(0, parser.do_parse(cursor, end).type);
    EXPECT_EQ(text.end(), cursor);
    EXPECT_EQ(text.end(), end);

    const ustring8 invalid = "<?xml?><a:/>";
    cursor = invalid.begin();
    end = invalid.end();
    EXPECT_EQ(5, parser.do_parse(cursor, end).type);
    EXPECT_EQ(':', *cursor);
}

// A target that moves the end of the document when an element starts.
class shortener {
public:
    shortener(iterator& end, iterator place) : m_end(end), m_place(place) {}
    void cut(const ustring8&) { m_end = m_place; }

private:
    iterator& m_end;
    iterator m_place;
};

TEST(XmlParserRuns, EndWhereAHandlerMovesTheEnd) {
    const ustring8 text = "<?xml?><a/><b/>";
    xml_parser parser;
    iterator cursor = text.begin();
    iterator end = text.end();
    EXPECT_EQ(parse_error::data_after_root, parser.do_parse(cursor, end).type);

    cursor = text.begin();
    end = text.end();
    shortener target(end, text.begin() + 11);
    parser.on_element_start =
        member_function_t<shortener, void(const ustring8&)>(&target, &shortener::cut);
    EXPECT_EQ(parse_error::no_error, parser.do_parse(cursor, end).type);
    EXPECT_EQ(text.begin() + 11, cursor);
}

// The target of handlers that throw.
class thrower {
public:
    void raise(const ustring8&) { throw std::runtime_error("from a delegate"); }
    void attribute(const ustring8&, const ustring8&) {
        throw parse_error(parse_error::no_root, 77, "own");
    }
    void raise_parse_error(const ustring8&) {
        throw parse_error(parse_error::no_header, 78, "own");
    }
};

using throwing_handler = member_function_t<thrower, void(const ustring8&)>;

TEST(XmlParserDelegates, MayRaiseThroughTheParser) {
    thrower target;
    const throwing_handler handler(&target, &thrower::raise);
    xml_parser parser;
    const char document[] = "<?xml?><a>t  <!--c--></a>";
    EXPECT_EQ(0, parser.parse(document).type);

    parser.on_element_end = handler;
    EXPECT_THROW(parser.parse(document), std::runtime_error);
    parser.on_comment = handler;
    EXPECT_THROW(parser.parse(document), std::runtime_error);
    parser.on_space = handler;
    EXPECT_THROW(parser.parse(document), std::runtime_error);
    parser.on_character = handler;
    EXPECT_THROW(parser.parse(document), std::runtime_error);
    parser.on_element_start = handler;
    EXPECT_THROW(parser.parse(document), std::runtime_error);
}

TEST(XmlParserDelegates, MayRaiseAParseErrorOfTheirOwn) {
    thrower target;
    xml_parser parser;
    parser.on_attribute = member_function_t<thrower, void(const ustring8&, const ustring8&)>(
        &target, &thrower::attribute);
    try {
        parser.parse("<?xml?><a b='c'/>");
        FAIL() << "nothing was raised";
    } catch (const parse_error& error) {
        EXPECT_EQ(parse_error::no_root, error.type);
        EXPECT_EQ(77u, error.line);
        EXPECT_EQ("own", error.text);
    }

    parser.on_comment = throwing_handler(&target, &thrower::raise_parse_error);
    try {
        parser.parse("<?xml?><!--x-->");
        FAIL() << "nothing was raised";
    } catch (const parse_error& error) {
        EXPECT_EQ(parse_error::no_header, error.type);
        EXPECT_EQ(78u, error.line);
    }
}

TEST(XmlParserDelegates, MayRaiseAndLeaveTheParserUsable) {
    thrower target;
    xml_parser parser;
    parser.on_element_start = throwing_handler(&target, &thrower::raise);
    EXPECT_THROW(parser.parse("<?xml?><a>"), std::runtime_error);
    // The element was opened before its event.
    EXPECT_EQ((outcome{{"start b", "end b", "end a"}, 0, 0, ""}),
              read(parser, "<?xml?><b></b></a>"));
}

TEST(XmlParserDelegates, ReceiveTheEndOfAnEmptyElementBeforeItIsClosed) {
    thrower target;
    xml_parser parser;
    parser.on_element_end = throwing_handler(&target, &thrower::raise);
    EXPECT_THROW(parser.parse("<?xml?><a/>"), std::runtime_error);
    EXPECT_EQ((outcome{{}, 2, 0, "b"}), read(parser, "<?xml?></b>"));
    EXPECT_EQ((outcome{{"end a"}, 0, 0, ""}), read(parser, "<?xml?></a>"));

    parser.on_element_end = throwing_handler(&target, &thrower::raise);
    EXPECT_THROW(parser.parse("<?xml?><a></a>"), std::runtime_error);
    EXPECT_EQ((outcome{{"start b", "end b"}, 0, 0, ""}), read(parser, "<?xml?><b/>"));
}

// Records events like `recorder`. At the event named `event` it also parses `inner` with the same
// parser, once, and then either continues or throws.
class intruder {
public:
    intruder(xml_parser& parser, const std::string& event, const std::string& inner, bool raises)
        : m_parser(parser), m_event(event), m_inner(inner), m_raises(raises) {
        using text_handler = member_function_t<intruder, void(const ustring8&)>;
        using attribute_handler =
            member_function_t<intruder, void(const ustring8&, const ustring8&)>;
        parser.on_element_start = text_handler(this, &intruder::element_start);
        parser.on_element_end = text_handler(this, &intruder::element_end);
        parser.on_attribute = attribute_handler(this, &intruder::attribute);
        parser.on_character = text_handler(this, &intruder::character);
        parser.on_space = text_handler(this, &intruder::space);
        parser.on_comment = text_handler(this, &intruder::comment);
    }

    void element_start(const ustring8& name) { record("start", name, name); }
    void element_end(const ustring8& name) { record("end", name, name); }
    void attribute(const ustring8& name, const ustring8& value) {
        record("attribute", name, name + "=" + value);
    }
    void character(const ustring8& text) { record("text", text, text); }
    void space(const ustring8& text) { record("space", text, text); }
    void comment(const ustring8& text) { record("comment", text, text); }

    std::vector<std::string> events;

private:
    void record(const std::string& event, const ustring8& handed_over, const std::string& text) {
        events.push_back(event + " " + text);
        if (event != m_event)
            return;
        m_event.clear();
        const std::string before = handed_over;
        if (!m_inner.empty()) {
            events.push_back("(");
            const auto result = m_parser.parse(ustring8(m_inner));
            events.push_back(") kind " + std::to_string(result.type));
        }
        EXPECT_EQ(before, handed_over) << "the inner run changed the outer one's event";
        if (m_raises)
            throw std::runtime_error("from a handler");
    }

    xml_parser& m_parser;
    std::string m_event;
    std::string m_inner;
    bool m_raises;
};

// Whatever state a handler has left, the parser can parse the next document.
void expect_usable(xml_parser& parser) {
    recorder events(parser);
    parser.parse("<?xml?><a b='c'> <!--d-->e</a>");
    EXPECT_THAT(events.events, ::testing::Contains("start a"));
}

// Long because it is one table.
TEST(XmlParserDelegates, MayParseWithTheSameParser) {
    // The inner run shares the open elements, the attribute set, the line counter and whether a tag
    // is open; the outer run continues with the state that the inner one left.
    const struct {
        const char* event;
        const char* outer;
        const char* inner;
        outcome expected;
    } cases[] = {
        {"end",
         "<?xml?><a/>",
         "<?xml version='1.0'?></a>",
         {{"start a", "end a", "(", "end a", ") kind 0"}, 0, 0, ""}},
        {"end",
         "<?xml?><a/>",
         "<?xml?><b>",
         {{"start a", "end a", "(", "start b", ") kind 1"}, 1, 0, ""}},
        {"end",
         "<?xml?><o><a/></o>",
         "<?xml?></a></o>",
         {{"start o", "start a", "end a", "(", "end a", "end o", ") kind 0", "end o"}, 0, 0, ""}},
        {"end",
         "<?xml?><a></a>",
         "<?xml?><b/>",
         {{"start a", "end a", "(", "start b", "end b", ") kind 0"}, 5, 0, ">"}},
        {"start",
         "<?xml?><a/>",
         "<?xml?></a>",
         {{"start a", "(", "end a", ") kind 0", "text />"}, 0, 0, ""}},
        {"start",
         "<?xml?><a b='1'/>",
         "<?xml?><c></a",
         {{"start a", "(", "start c", ") kind 2", "attribute b=1", "end c"}, 1, 0, ""}},
        {"attribute",
         "<?xml?><a b='1' c='2'/>",
         "<?xml?></a>",
         {{"start a", "attribute b=1", "(", "end a", ") kind 0", "space  ", "text c='2'/>"},
          0,
          0,
          ""}},
        {"attribute",
         "<?xml?><a b='1' c='2'/>",
         "<?xml?></a ",
         {{"start a", "attribute b=1", "(", "end a", ") kind 0", "attribute c=2"}, 2, 0, ""}},
        {"text",
         "<?xml?><a>t</a>",
         "<?xml?></a>",
         {{"start a", "text t", "(", "end a", ") kind 0", "end a"}, 0, 0, ""}},
        {"text",
         "<?xml?><a><![CDATA[t]]></a>",
         "<?xml?><b>",
         {{"start a", "text t", "(", "start b", ") kind 1"}, 2, 0, "a"}},
        {"space",
         "<?xml?><a> <b/></a>",
         "<?xml?></a>",
         {{"start a", "space  ", "(", "end a", ") kind 0"}, 10, 0, ""}},
        {"comment",
         "<?xml?><a>\n\n<!--c--></b>",
         "<?xml?>\n</a>",
         {{"start a", "space \n\n", "comment \n\nc", "(", "end a", ") kind 0", "end b"}, 0, 0, ""}},
        {"comment",
         "<?xml?>\n\n\n<a><!--c-->>",
         "<?xml?>\n>",
         {{"start a", "comment c", "(", ") kind 5"}, 5, 1, ">"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.event) + " in " + c.outer + " parses " + c.inner);
        xml_parser parser;
        intruder handlers(parser, c.event, c.inner, false);
        const parse_error result = parser.parse(c.outer);
        EXPECT_EQ(c.expected, (outcome{handlers.events, result.type, result.line, result.text}));
        expect_usable(parser);
    }
}

TEST(XmlParserDelegates, MayParseWithTheSameParserAndRaiseAtEveryEvent) {
    const char outer[] = "<?xml?><a_name_of_many_letters b='a value of many letters'> \n"
                         "a text of many letters<!--a comment of many letters--><c/>"
                         "</a_name_of_many_letters>";
    const char* const inner[] = {
        "",                                       // raises without parsing
        "<?xml?>",                                // finds no root
        "<?xml?></c></a_name_of_many_letters>",   // closes all, or one that is not open
        "<?xml?></a_name_of_many_letters>",       // closes the outer element
        "<?xml?></a_name_of_many_letters ",       // ends within a tag
        "<?xml?><another_name_of_many_letters>",  // opens one more
        "<?xml?><d e='f'/> <!--g-->\n<",          // ends in an error
    };
    for (const std::string event : {"start", "end", "attribute", "text", "space", "comment"}) {
        for (const char* const text : inner) {
            for (const bool raises : {false, true}) {
                SCOPED_TRACE(event + " parses " + text + (raises ? " and raises" : ""));
                xml_parser parser;
                intruder handlers(parser, event, text, raises);
                if (raises)
                    EXPECT_THROW(parser.parse(outer), std::runtime_error);
                else
                    EXPECT_LE(parser.parse(outer).type, parse_error::data_after_root);
                EXPECT_FALSE(handlers.events.empty());
                expect_usable(parser);
            }
        }
    }
}

TEST(XmlParserDelegates, MayRaiseThroughARunWithinARun) {
    xml_parser parser;
    const intruder raising(parser, "end", "", true);
    EXPECT_THROW(parser.parse("<?xml?><a/>"), std::runtime_error);
    // `a` is still open, since its end was reported before it was closed.
    EXPECT_EQ((outcome{{"end a"}, 0, 0, ""}), read(parser, "<?xml?></a>"));

    // The handler of the inner run raises, so the exception crosses both runs.
    const intruder outer(parser, "start", "<?xml?><!--x-->", false);
    thrower target;
    parser.on_comment = throwing_handler(&target, &thrower::raise);
    EXPECT_THROW(parser.parse("<?xml?><b>"), std::runtime_error);
    EXPECT_EQ((outcome{{"end b"}, 0, 0, ""}), read(parser, "<?xml?></b>"));
}

// The result of one grammar function for one string: what it returned or threw, and where it left
// the cursor.
struct piece {
    std::string result;
    long cursor;
    int kind;
    unsigned line;
    std::string text;
};

bool operator==(const piece& left, const piece& right) {
    return left.result == right.result && left.cursor == right.cursor && left.kind == right.kind &&
           left.line == right.line && left.text == right.text;
}

void PrintTo(const piece& p, std::ostream* stream) {
    *stream << ::testing::PrintToString(p.result) << ", cursor " << p.cursor << ", kind " << p.kind
            << ", line " << p.line << ", text " << ::testing::PrintToString(p.text);
}

using grammar_function = ustring8 (xml_parser::*)(iterator&, iterator&);

piece take(xml_parser& parser, grammar_function function, const std::string& bytes) {
    const ustring8 text(bytes);
    iterator cursor = text.begin();
    iterator end = text.end();
    try {
        const ustring8 result = (parser.*function)(cursor, end);
        return piece{result, cursor - text.begin(), 0, no_line, ""};
    } catch (const parse_error& error) {
        return piece{"", cursor - text.begin(), error.type, error.line, error.text};
    }
}

piece take(grammar_function function, const std::string& bytes) {
    xml_parser parser;
    return take(parser, function, bytes);
}

TEST(XmlParserGrammar, TakesARunOfWhitespaceAndCountsItsLines) {
    EXPECT_EQ((piece{"", 0, 0, 0, ""}), take(&xml_parser::parse_whitespace, ""));
    EXPECT_EQ((piece{"", 0, 0, 0, ""}), take(&xml_parser::parse_whitespace, "a "));
    EXPECT_EQ((piece{" \t\r\n", 4, 0, 0, ""}), take(&xml_parser::parse_whitespace, " \t\r\na"));
    EXPECT_EQ((piece{"  ", 2, 0, 0, ""}), take(&xml_parser::parse_whitespace, "  "));
    EXPECT_EQ((piece{" ", 1, 0, 0, ""}), take(&xml_parser::parse_whitespace, " \v "));

    xml_parser parser;
    take(parser, &xml_parser::parse_whitespace, "\n\n \r\n");
    EXPECT_EQ((piece{"", 0, 5, 3, "?"}), take(parser, &xml_parser::parse_name, "?"));
    take(parser, &xml_parser::parse_whitespace, "\n");
    EXPECT_EQ((piece{"", 0, 5, 4, "?"}), take(parser, &xml_parser::parse_name, "?"));
}

TEST(XmlParserGrammar, RecognizesFourWhitespaceBytes) {
    const xml_parser parser;
    for (int byte = 0; byte < 256; ++byte) {
        const ustring8 text(1, static_cast<char>(byte));
        EXPECT_EQ(byte == 9 || byte == 10 || byte == 13 || byte == 32,
                  parser.is_white_space(text.begin()))
            << byte;
    }
}

TEST(XmlParserGrammar, TakesANameAndStopsOnItsLastByte) {
    EXPECT_EQ((piece{"a", 0, 0, 0, ""}), take(&xml_parser::parse_name, "a"));
    EXPECT_EQ((piece{"ab_1", 3, 0, 0, ""}), take(&xml_parser::parse_name, "ab_1"));
    EXPECT_EQ((piece{"ab_1", 3, 0, 0, ""}), take(&xml_parser::parse_name, "ab_1-c"));
    EXPECT_EQ((piece{"", 0, 5, 0, "1"}), take(&xml_parser::parse_name, "1a"));
    EXPECT_EQ((piece{"", 0, 5, 0, "_"}), take(&xml_parser::parse_name, "_a"));
    EXPECT_EQ((piece{"", 0, 5, 0, nul_byte}), take(&xml_parser::parse_name, ""));
    EXPECT_EQ((piece{"", 0, 5, 0, nul_byte}), take(&xml_parser::parse_name, nul_byte));
}

TEST(XmlParserGrammar, TakesAReferenceAndStopsOnItsSemicolon) {
    EXPECT_EQ((piece{"&", 4, 0, 0, ""}), take(&xml_parser::parse_character, "&amp;x"));
    EXPECT_EQ((piece{"'", 5, 0, 0, ""}), take(&xml_parser::parse_character, "&apos;"));
    EXPECT_EQ((piece{">", 3, 0, 0, ""}), take(&xml_parser::parse_character, "&gt;"));
    EXPECT_EQ((piece{"<", 3, 0, 0, ""}), take(&xml_parser::parse_character, "&lt;"));
    EXPECT_EQ((piece{" ", 5, 0, 0, ""}), take(&xml_parser::parse_character, "&nbsp;"));
    EXPECT_EQ((piece{"\"", 5, 0, 0, ""}), take(&xml_parser::parse_character, "&quot;"));
    EXPECT_EQ((piece{"A", 4, 0, 0, ""}), take(&xml_parser::parse_character, "&#65;x"));
    EXPECT_EQ((piece{"A", 5, 0, 0, ""}), take(&xml_parser::parse_character, "&#x41;x"));
    EXPECT_EQ((piece{nul_byte, 3, 0, 0, ""}), take(&xml_parser::parse_character, "&#0;"));
    EXPECT_EQ((piece{nul_byte, 2, 0, 0, ""}), take(&xml_parser::parse_character, "&#;"));
    EXPECT_EQ((piece{"", 0, 5, 0, "a"}), take(&xml_parser::parse_character, "amp;"));
    EXPECT_EQ((piece{"", 0, 5, 0, nul_byte}), take(&xml_parser::parse_character, ""));
    EXPECT_EQ((piece{"", 0, 5, 0, "&"}), take(&xml_parser::parse_character, "&am"));
    EXPECT_EQ((piece{"", 0, 7, 0, ""}), take(&xml_parser::parse_character, "&b"));
    EXPECT_EQ((piece{"", 0, 7, 0, ""}), take(&xml_parser::parse_character, "&"));
}

TEST(XmlParserGrammar, TakesAValueAndStopsOnItsClosingQuote) {
    EXPECT_EQ((piece{"", 1, 0, 0, ""}), take(&xml_parser::parse_attrib_value, "''"));
    EXPECT_EQ((piece{"a\"b", 4, 0, 0, ""}), take(&xml_parser::parse_attrib_value, "'a\"b' c"));
    EXPECT_EQ((piece{"a'b", 4, 0, 0, ""}), take(&xml_parser::parse_attrib_value, "\"a'b\""));
    EXPECT_EQ((piece{"a<b", 7, 0, 0, ""}), take(&xml_parser::parse_attrib_value, "'a&lt;b'"));
    EXPECT_EQ((piece{"ab", 3, 0, 0, ""}), take(&xml_parser::parse_attrib_value, "'ab"));
    EXPECT_EQ((piece{"", 1, 0, 0, ""}), take(&xml_parser::parse_attrib_value, "'"));
    EXPECT_EQ((piece{"", 2, 5, 0, "<"}), take(&xml_parser::parse_attrib_value, "'a<'"));
    EXPECT_EQ((piece{"", 2, 7, 0, ""}), take(&xml_parser::parse_attrib_value, "'a&;'"));
    EXPECT_EQ((piece{"", 0, 6, 0, ""}), take(&xml_parser::parse_attrib_value, "a"));
    EXPECT_EQ((piece{"", 0, 6, 0, ""}), take(&xml_parser::parse_attrib_value, " ''"));
    EXPECT_EQ((piece{"", 0, 6, 0, ""}), take(&xml_parser::parse_attrib_value, ""));
}

// Writes a random well-formed document, and the events that it must produce.
class document_writer {
public:
    explicit document_writer(unsigned seed) : m_random(seed) {
        m_text = one_of({"<?xml?>", "<?xml version='1.0'?>\n", "\xEF\xBB\xBF<?xml ?a?> "});
        if (below(2) != 0) {
            m_text += "<!--head-->";
            m_events.push_back("comment head");
        }
        element(0);
    }

    const std::string& text() const { return m_text; }
    const std::vector<std::string>& events() const { return m_events; }

private:
    unsigned below(unsigned limit) { return static_cast<unsigned>(m_random() % limit); }

    std::string one_of(std::initializer_list<const char*> texts) {
        return texts.begin()[below(static_cast<unsigned>(texts.size()))];
    }

    std::string whitespace(unsigned least) {
        std::string result;
        for (unsigned count = least + below(3); result.size() < count;)
            result += one_of({" ", "\t", "\r", "\n"});
        return result;
    }

    void element(int depth) {
        const std::string name = one_of({"a", "b2", "long_name_of_an_element", "Q"});
        m_text += "<" + name;
        m_events.push_back("start " + name);
        for (const std::string attribute : {"first", "second", "third"}) {
            if (below(3) != 0)
                continue;
            const std::string quote = one_of({"'", "\""});
            m_text += whitespace(1) + attribute + whitespace(0) + "=" + whitespace(0) + quote;
            std::string value;
            for (unsigned pieces = below(4); pieces != 0; --pieces)
                data(value, true);
            m_text += quote;
            m_events.push_back("attribute " + attribute + "=" + value);
        }
        m_text += whitespace(0);
        if (below(4) == 0) {
            m_text += "/>";
        } else {
            m_text += ">";
            content(depth + 1);
            m_text += "</" + name + whitespace(0) + ">";
        }
        m_events.push_back("end " + name);
    }

    // A piece of text that neither begins nor ends with whitespace, unless it is quoted.
    void data(std::string& value, bool quoted) {
        const struct {
            const char* written;
            const char* meant;
        } pieces[] = {{"word", "word"},     {"a b", "a b"},  {"\xC3\xA4", "\xC3\xA4"},
                      {"&amp;", "&"},       {"&#x41;", "A"}, {"&lt;tag", "<tag"},
                      {"&#0101;", "A"},     {"/", "/"},      {"x\ny>", "x\ny>"},
                      {"&nbsp;&#32;", "  "}};
        const auto& piece = pieces[below(10)];
        m_text += piece.written;
        value += piece.meant;
        if (quoted && below(3) == 0) {
            m_text += "  \n";
            value += "  \n";
        }
    }

    void content(int depth) {
        bool after_text = false;
        for (unsigned items = below(depth < 6 ? 6 : 1); items != 0; --items) {
            std::string space = whitespace(0);
            if (after_text && space.size() == 1)
                space += " ";
            m_text += space;
            if (!space.empty())
                m_events.push_back("space " + space);
            const bool may_be_text = !after_text || !space.empty();
            after_text = false;
            switch (below(may_be_text ? 4 : 3)) {
            case 0:
                element(depth);
                break;
            case 1:
                m_text += "<!-- <no> &tag -->";
                m_events.push_back("comment " + space + " <no> &tag ");
                break;
            case 2:
                m_text += "<![CDATA[ <no>  &tag]]>";
                m_events.push_back("text " + space + " <no>  &tag");
                break;
            default:
                std::string value;
                for (unsigned pieces = 1 + below(3); pieces != 0; --pieces)
                    data(value, false);
                m_events.push_back("text " + value);
                after_text = true;
            }
        }
    }

    std::mt19937 m_random;
    std::string m_text;
    std::vector<std::string> m_events;
};

TEST(XmlParserRuns, ReportTheEventsFromWhichAWellFormedDocumentWasWritten) {
    std::size_t longest = 0;
    for (unsigned round = 0; round < 3000; ++round) {
        const document_writer document(round);
        ASSERT_EQ((outcome{document.events(), 0, 0, ""}), read(document.text()))
            << "round " << round << ": " << document.text();
        longest = std::max(longest, document.events().size());
    }
    EXPECT_GT(longest, 100u);
}

TEST(XmlParserRuns, ReportTheEventsOfATruncatedDocumentUpToItsEnd) {
    for (unsigned seed = 0; seed < 60; ++seed) {
        const document_writer document(seed);
        const auto& all = document.events();
        for (std::size_t length = 0; length < document.text().size(); ++length) {
            const outcome result = read(document.text().substr(0, length));
            // Only a document cut before its root or after its last event is accepted.
            if (result.kind == 0 && result.events != std::vector<std::string>{"comment head"}) {
                ASSERT_EQ(all, result.events) << document.text().substr(0, length);
            }
            // All events except the last are those of the whole document; the last may be cut off.
            ASSERT_LE(result.events.size(), all.size());
            for (std::size_t i = 0; i + 1 < result.events.size(); ++i)
                ASSERT_EQ(all[i], result.events[i]);
        }
    }
}

TEST(XmlParserRuns, TakeTimeProportionalToTheText) {
    // A quadratic parser would need hours for these.
    const std::size_t size = 4000000;
    EXPECT_EQ(1, read("<?xml?><!--" + std::string(size, '-')).kind);
    EXPECT_EQ(1, read("<?xml?><![CDATA[" + std::string(size, '>')).kind);
    EXPECT_EQ(0, read("<?xml?>" + std::string(size, 'x')).kind);
    EXPECT_EQ(8, read("<?xml?><a b" + std::string(size, ' ')).kind);
    EXPECT_EQ(6, read("<?xml?><a b='" + std::string(size, '>')).kind);
    EXPECT_EQ(5, read("<?xml?>&#" + std::string(size, '1')).kind);
    EXPECT_EQ(3, read("<?xml" + std::string(size, '?')).kind);
    std::string words;
    while (words.size() < size)
        words += "a  ";
    EXPECT_EQ(0, read("<?xml?>" + words).kind);
}

}  // namespace
