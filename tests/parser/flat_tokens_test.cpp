// Flat tokens, and those of `xml_token_stream`, which come from them, are the tokens that the
// handlers make of the events of a parser.
#include "parser/flat_tokens.hpp"

#include <tova/functor/member_function.hpp>
#include <tova/parser/xml_token_stream.hpp>

#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <memory>
#include <random>
#include <string>

namespace {

using tova::parser::xml_parser;
using tova::parser::xml_token_stream;
using tova::parser::detail::flat_tokens;
using tova::parser::detail::piece;
using tova::strings::ustring8;

// The tokens that the handlers make of the events of a parser: the plain form of a list.
class handled_tokens {
public:
    xml_parser::parse_error parse(const ustring8& document) {
        m_stream.reset(new xml_token_stream);
        bind(m_parser.on_attribute, &xml_token_stream::on_attribute);
        bind(m_parser.on_element_start, &xml_token_stream::on_element_start);
        bind(m_parser.on_character, &xml_token_stream::on_character);
        bind(m_parser.on_comment, &xml_token_stream::on_comment);
        bind(m_parser.on_element_end, &xml_token_stream::on_element_end);
        bind(m_parser.on_space, &xml_token_stream::on_space);
        return m_parser.parse(document);
    }

    // The tokens of the last document. What came before it is in the state of the parser.
    xml_token_stream& tokens() { return *m_stream; }

private:
    template <typename... Strings>
    void bind(tova::functor::delegate_t<void(Strings...)>& event,
              void (xml_token_stream::*handler)(Strings...)) {
        using handler_type = tova::functor::member_function_t<xml_token_stream, void(Strings...)>;
        event = handler_type(m_stream.get(), handler);
    }

    xml_parser m_parser;
    std::unique_ptr<xml_token_stream> m_stream;
};

void expect_error(const xml_parser::parse_error& expected, const xml_parser::parse_error& result) {
    EXPECT_EQ(expected.type, result.type);
    EXPECT_EQ(expected.line, result.line);
    EXPECT_EQ(expected.text, result.text);
}

// From `begin` on, the tokens of the stream are those of the list.
void expect_tokens(const xml_token_stream& list, const xml_token_stream& stream,
                   std::size_t begin) {
    ASSERT_EQ(begin + list.size(), stream.size());
    auto one = std::next(stream.begin(), static_cast<std::ptrdiff_t>(begin));
    for (const xml_token_stream::token& token : list) {
        EXPECT_EQ(token.type(), one->type());
        EXPECT_EQ(token.value(), one->value());
        ++one;
    }
}

// A stream has the same state after a document, too: the handlers and a second document show it.
void expect_stream(handled_tokens& list, const ustring8& document) {
    xml_token_stream stream;
    expect_error(list.parse(document), stream.parse(document));
    expect_tokens(list.tokens(), stream, 0);
    list.tokens().on_space(" ");
    stream.on_space(" ");
    expect_tokens(list.tokens(), stream, 0);

    const ustring8 next = "<?xml?></a x='' c='' name=''></a><b/>";
    const std::size_t size = stream.size();
    expect_error(list.parse(next), stream.parse(next));
    expect_tokens(list.tokens(), stream, size);
}

void expect_list(const std::string& bytes) {
    SCOPED_TRACE(bytes);
    const ustring8 document(bytes);
    handled_tokens list;
    expect_stream(list, document);

    flat_tokens flat;
    handled_tokens fresh;
    expect_error(fresh.parse(document), flat.parse(document));
    ASSERT_EQ(fresh.tokens().size(), flat.size());
    const flat_tokens::token* one = flat.begin();
    for (const xml_token_stream::token& token : fresh.tokens()) {
        EXPECT_EQ(token.type(), one->type());
        EXPECT_EQ(token.value(), one->value().string());
        ++one;
    }
    EXPECT_EQ(flat.end(), one);
}

TEST(FlatTokens, EqualTheListForEveryConstruct) {
    expect_list("");
    expect_list("<?xml?><a/>");
    expect_list("<?xml?> <a x=\"1\"> <b/>text</a>");
    expect_list("<?xml?><a x='&lt;&#65;' y=''><!-- c --><![CDATA[ d ]]> <![CDATA[e]]></a >");
    expect_list("<?xml?><a>one  two &amp; three</a> <!-- after --> text");
    expect_list("<?xml?><a x='1' x='2'/>");
    expect_list("<?xml?><a><b></a>");
    expect_list("<?xml?><a>\n\n&x;</a>");
    expect_list("<?xml?><a x='cut");
}

TEST(FlatTokens, KeepValuesWithReferencesOfAnyLength) {
    std::string document = "<?xml?><a>";
    for (const std::size_t size : {0, 1, 100, 16382, 16383, 16384, 40000, 5})
        document += "<b>&lt;" + std::string(size, 'x') + "</b>";
    expect_list(document + "</a>");
}

TEST(FlatTokens, KeepTextWithAnyNumberOfReferences) {
    std::string document = "<?xml?><a>";
    std::string text;
    for (int count = 0; count != 150; ++count) {
        document += "<b>" + text + "</b>";
        text += std::string(static_cast<std::size_t>(count % 7), 'x') + "&gt;";
    }
    expect_list(document + text + "</a>");
}

TEST(FlatTokens, KeepAttributeValuesWithAnyNumberOfReferences) {
    std::string document = "<?xml?><a>";
    std::string value;
    for (int count = 0; count != 150; ++count) {
        document += "<b x=\"" + value + "'\" y='" + value + "\"'/>";
        value += std::string(static_cast<std::size_t>(count % 7), 'x') + "&gt;";
    }
    expect_list(document + "</a>");
}

// Far from the end of a document, and close to it.
TEST(FlatTokens, EqualTheListForEveryReferenceInAValue) {
    for (const char* const value : {"&lt;",        "&gt;",          "&amp;",
                                    "&apos;",      "&quot;",        "&nbsp;",
                                    "a&lt;b&gt;c", "&#65;",         "&lt;&#x41;",
                                    "&x;",         "&lt;&x;",       "&lt",
                                    "&",           "&lt;&",         "&lt;<",
                                    "<&lt;",       "&lt;\n\n",      "&lt;\"",
                                    "&lt;' x='",   "&lt;' x='&gt;", "&lt;' y='' y='&gt;"})
        for (const std::size_t after : {0, 1, 50, 200}) {
            SCOPED_TRACE(value);
            const std::string padding(after, ' ');
            expect_list(std::string("<?xml?><r><a x='") + value + "'/></r>" + padding);
            expect_list(std::string("<?xml?><r><a x=\"") + value + "\">text</a>" + padding);
        }
}

TEST(FlatTokens, EqualTheListForRandomDocuments) {
    const char* const words[] = {
        "<a>",         "</a>",  "<b x='1'",         "/>",     ">",   " ",         "\n ",
        "text",        "&amp;", "&#x41;",           "<!--",   "-->", "<![CDATA[", "]]>",
        " y=\"&gt;\"", "'",     "<msg name=\"k\">", "</msg>", "&",   "="};
    std::mt19937 random(6);
    for (int round = 0; round < 20000; ++round) {
        std::string document = "<?xml?>";
        for (auto i = random() % 20; i > 0; --i)
            document += words[random() % 20];
        expect_list(document);
        if (HasFailure())
            return;
    }
}

// A document long enough that most of its constructs are far from its end, of every kind.
std::string long_document() {
    std::string made = "<?xml version=\"1.0\"?>\n<xmc version=\"1.1\">\n"
                       "  <catalog name=\"app\" lang=\"en\">\n";
    for (int i = 0; i < 3; ++i)
        made += "    <msg name=\"section.key_" + std::to_string(i) +
                "\" meta='It&apos;s a note'>Copied &lt;1&gt; &amp;&quot;"
                "<arg name=\"count\" type=\"int\"\n base=\"spaced_dec\"/>\n\n        "
                "<!-- of -->\n \t <arg name='size' precision = \"1\"/>, <!--x--><arg "
                "name=\"folder\"  />"
                ".<br/>two  spaces &#65; <![CDATA[ raw ]]> <![CDATA[raw]]>...</msg  >\n";
    return made + "  </catalog>\n  <include file=\"other.xmc\"/>\n</xmc>\n";
}

TEST(FlatTokens, EqualTheListWhereverTheDocumentEnds) {
    const std::string document = long_document();
    for (std::size_t size = 0; size <= document.size(); ++size)
        expect_list(document.substr(0, size));
}

TEST(FlatTokens, EqualTheListWhateverByteIsReplaced) {
    const std::string document = long_document() + std::string(100, '\n');
    for (std::size_t at = 0; at < document.size() && !HasFailure(); ++at) {
        for (const char byte : {'<', '>', '&', '/', '"', '\'', '=', ' ', '\n', '!', '-', 'x', '\0',
                                '\xE4', ';', '?'}) {
            std::string changed = document;
            changed[at] = byte;
            expect_list(changed);
        }
    }
}

TEST(FlatTokens, EqualTheListWhateverByteIsMissingOrDoubled) {
    const std::string document = long_document() + std::string(100, '\n');
    for (std::size_t at = 0; at < document.size() && !HasFailure(); ++at) {
        expect_list(std::string(document).erase(at, 1));
        expect_list(std::string(document).insert(at, 1, document[at]));
    }
}

// Blocks begin where a search asks for them, so each construct meets the end of a block in turn.
TEST(FlatTokens, EqualTheListAtEveryPlaceOfABlock) {
    const std::string document = long_document();
    const auto begin = document.find("<msg");
    for (std::size_t size = 0; size < 130; ++size) {
        expect_list(std::string(document).insert(begin, size, ' '));
        expect_list(std::string(document).insert(begin, size, 'x'));
        expect_list(std::string(document).insert(begin + 11, size, 'x'));
        expect_list(std::string(document).insert(begin + 4, size, 'x'));
    }
}

TEST(FlatTokens, EqualTheListForLongRandomDocuments) {
    const char* const words[] = {"<a>",
                                 "</a>",
                                 "</a>",
                                 "<a x=\"1\"/>",
                                 "<a y='2'>",
                                 "text",
                                 " ",
                                 "\n    ",
                                 "&lt;",
                                 "&#x41;",
                                 "<!-- c -->",
                                 "<![CDATA[d]]>",
                                 "a longer piece of text",
                                 "</a>",
                                 "<a z=\"&amp;\" >"};
    std::mt19937 random(7);
    for (int round = 0; round < 5000 && !HasFailure(); ++round) {
        std::string document = "<?xml?><a><a>";
        for (auto i = random() % 100; i > 0; --i)
            document += words[random() % 15];
        expect_list(document + std::string(random() % 200, ' '));
    }
}

TEST(FlatTokens, FindAttributesThatAreThereAgainHoweverManyThereAre) {
    for (const int count : {1, 2, 23, 24, 25, 26, 70}) {
        std::string tag;
        for (int i = 0; i < count; ++i)
            tag += " name" + std::to_string(i) + "=\"" + std::to_string(i) + "\"";
        const std::string end = "/><b c=\"\"/></a></r>" + std::string(100, ' ');
        expect_list("<?xml?><r><a><b" + tag + end);
        for (int again = 0; again < count; ++again)
            expect_list("<?xml?><r><a><b" + tag + " name" + std::to_string(again) + "=\"\"" + end);
        expect_list("<?xml?><r><a><b" + tag + "/><b" + tag + " d=\"\" d=\"\"" + end);
    }
}

// Leaves out the contents of elements that have an attribute "x".
class without_x : public flat_tokens::filter {
public:
    bool is_left_out(const flat_tokens::token* start,
                     const flat_tokens::token* end) const override {
        EXPECT_EQ(xml_token_stream::token::element_start, start->type());
        return end - start > 1 && start[1].value().is("x");
    }
};

std::string names_of_tokens(const std::string& bytes) {
    const ustring8 document(bytes);
    flat_tokens tokens;
    const without_x filter;
    const xml_parser::parse_error result = tokens.parse(document, &filter);
    std::string names = std::to_string(result.type);
    for (const flat_tokens::token& one : tokens)
        names += " " + std::to_string(one.type()) + one.value().string();
    return names;
}

TEST(FlatTokens, LeaveOutTheContentsOfChildrenOfTheRootThatAFilterNames) {
    const std::string space(100, ' ');
    const struct {
        const char* document;
        const char* names;
    } cases[] = {
        {"<r><a><b/></a></r>", "0 0r 4 0a 4 0b 4 1b 1a 1r"},
        {"<r><a x=''><b/>text&lt;<!--c--><b></b></a></r>", "0 0r 4 0a 2x 3 4 1a 1r"},
        {"<r><a x=''/><b/></r>", "0 0r 4 0a 2x 3 4 1a 0b 4 1b 1r"},
        {"<r><a x='&lt;'><b y='&lt;&gt;'/></a><c/></r>", "0 0r 4 0a 2x 3< 4 1a 0c 4 1c 1r"},
        {"<r><a x=''><b/><a/><c/></a><d/></r>", "0 0r 4 0a 2x 3 4 1a 0c 4 1c 1a 0d 4 1d 1r"},
        {"<r><a><b x=''>text</b></a></r>", "0 0r 4 0a 4 0b 2x 3 4 7text 1b 1a 1r"},
        {"<r x=''><a>text</a></r>", "0 0r 2x 3 4 0a 4 7text 1a 1r"},
        {"<r><a x=''><!--c-->text</a><a>b</a></r>", "0 0r 4 0a 2x 3 5c 4 1a 0a 4 7b 1a 1r"},
        {"<r><a x=''><b></c></a></r>", "2 0r 4 0a 2x 3 4"},
        {"<r><a x=''><b y='' y=''/></a></r>", "9 0r 4 0a 2x 3 4"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.document);
        const std::string document = std::string("<?xml?>") + c.document;
        EXPECT_EQ(c.names, names_of_tokens(document));
        const std::string padded = names_of_tokens(document + space);
        const bool is_valid = c.names[0] == '0';
        EXPECT_EQ(c.names + (is_valid ? " 6" + space : ""), padded);
    }
}

// Tokens are handed on some hundred at a time, with values of their own in chunks of memory.
TEST(FlatTokens, EqualTheListForDocumentsOfManyTokens) {
    for (const std::size_t size : {1, 15, 16, 17, 33, 1000, 17000}) {
        std::string document = "<?xml?><r>";
        for (int i = 0; i < 200; ++i)
            document += "<a x='" + std::string(size, 'v') + "&amp;'>" + std::string(size, 't') +
                        (i % 2 == 0 ? "&lt;" : "  <![CDATA[]]>") + "<!--c--><b/></a >";
        expect_list(document + "</r>");
        expect_list(document + "</s>");
    }
}

TEST(Piece, ComparesWithALiteral) {
    EXPECT_TRUE(piece().empty());
    EXPECT_TRUE(piece().is(""));
    EXPECT_TRUE(piece("msg ", 3).is("msg"));
    EXPECT_FALSE(piece("msg ", 4).is("msg"));
    EXPECT_FALSE(piece("msh", 3).is("msg"));
    EXPECT_EQ("ms", piece("msg", 2).string());
}

}  // namespace
