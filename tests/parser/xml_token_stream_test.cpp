#include <tova/parser/xml_token_stream.hpp>

#include <tova/functor/member_function.hpp>

#include "support/failing_allocation.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <iterator>
#include <list>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using tova::functor::member_function_t;
using tova::parser::xml_parser;
using tova::parser::xml_token_stream;
using tova::strings::ustring8;
using parse_error = xml_parser::parse_error;
using token = xml_token_stream::token;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// A token as one string: the name of its type, followed by its value.
std::string line_of(const token& one) {
    const char* const names[] = {"element_start",   "element_end",   "attribute_name",
                                 "attribute_value", "start_tag_end", "comment",
                                 "space",           "character"};
    return names[one.type()] + (one.value().empty() ? "" : " " + one.value());
}

std::vector<std::string> lines_of(const xml_token_stream& stream) {
    std::vector<std::string> lines;
    for (const token& one : stream)
        lines.push_back(line_of(one));
    return lines;
}

std::vector<std::string> tokens_of(const std::string& document) {
    xml_token_stream stream;
    EXPECT_EQ(parse_error::no_error, stream.parse(ustring8(document)).type) << document;
    return lines_of(stream);
}

TEST(XmlToken, NumbersItsTypesFromElementStartToCharacter) {
    EXPECT_EQ(0, token::element_start);
    EXPECT_EQ(1, token::element_end);
    EXPECT_EQ(2, token::attribute_name);
    EXPECT_EQ(3, token::attribute_value);
    EXPECT_EQ(4, token::start_tag_end);
    EXPECT_EQ(5, token::comment);
    EXPECT_EQ(6, token::space);
    EXPECT_EQ(7, token::character);
}

TEST(XmlToken, HoldsATypeAndAValue) {
    ustring8 value("some text");
    const token one(token::comment, value);
    value += "!";
    EXPECT_EQ(token::comment, one.type());
    EXPECT_EQ("some text", one.value());
    EXPECT_EQ(&one.value(), &one.value());

    token copy(one);
    EXPECT_EQ("some text", copy.value());
    copy = token(token::space, " ");
    EXPECT_EQ(token::space, copy.type());
    EXPECT_EQ(" ", copy.value());
}

TEST(XmlTokenStream, IsInitiallyEmpty) {
    xml_token_stream stream;
    EXPECT_EQ(0u, stream.size());
    EXPECT_EQ(stream.begin(), stream.end());
    const xml_token_stream& constant = stream;
    EXPECT_EQ(constant.begin(), constant.end());
}

TEST(XmlTokenStream, IsNotCopyable) {
    EXPECT_FALSE(std::is_copy_constructible<xml_token_stream>::value);
    EXPECT_FALSE(std::is_copy_assignable<xml_token_stream>::value);
    EXPECT_FALSE(std::is_copy_constructible<xml_parser>::value);
    EXPECT_FALSE(std::is_copy_assignable<xml_parser>::value);
}

TEST(XmlTokenStream, KeepsTheEventsInOrder) {
    EXPECT_THAT(tokens_of("<?xml?><a x=\"1\"> <b/>text</a>"),
                ElementsAre("element_start a", "attribute_name x", "attribute_value 1",
                            "start_tag_end", "space  ", "element_start b", "start_tag_end",
                            "element_end b", "character text", "element_end a"));
}

struct token_row {
    const char* document;
    std::vector<std::string> tokens;
};

void expect_tokens(std::initializer_list<token_row> rows) {
    for (const auto& row : rows)
        EXPECT_EQ(row.tokens, tokens_of(row.document)) << row.document;
}

TEST(XmlTokenStream, EndsEveryStartTagOnce) {
    expect_tokens({
        {"<?xml?><a/>", {"element_start a", "start_tag_end", "element_end a"}},
        {"<?xml?><a></a>", {"element_start a", "start_tag_end", "element_end a"}},
        {"<?xml?><a b='c' d=''/>",
         {"element_start a", "attribute_name b", "attribute_value c", "attribute_name d",
          "attribute_value", "start_tag_end", "element_end a"}},
        {"<?xml?><a><b><c/></b></a>",
         {"element_start a", "start_tag_end", "element_start b", "start_tag_end", "element_start c",
          "start_tag_end", "element_end c", "element_end b", "element_end a"}},
        {"<?xml?><a>x</a>", {"element_start a", "start_tag_end", "character x", "element_end a"}},
        {"<?xml?><a><![CDATA[]]></a>",
         {"element_start a", "start_tag_end", "character", "element_end a"}},
        {"<?xml?><a>x  y</a>",
         {"element_start a", "start_tag_end", "character x", "space   ", "character y",
          "element_end a"}},
    });
}

TEST(XmlTokenStream, ResolvesReferencesInValuesAndText) {
    EXPECT_THAT(tokens_of("<?xml?><a b='&lt;&#65;'>&amp;</a>"),
                ElementsAre("element_start a", "attribute_name b", "attribute_value <A",
                            "start_tag_end", "character &", "element_end a"));
}

TEST(XmlTokenStream, PutsACommentAfterAStartTagBeforeTheTokenOfItsEnd) {
    expect_tokens({
        {"<?xml?><a><!--c--></a>",
         {"element_start a", "comment c", "start_tag_end", "element_end a"}},
        {"<?xml?><a b='1'><!--c--><!--d-->x</a>",
         {"element_start a", "attribute_name b", "attribute_value 1", "comment c", "comment d",
          "start_tag_end", "character x", "element_end a"}},
        {"<?xml?><a> <!--c--></a>",
         {"element_start a", "start_tag_end", "space  ", "comment  c", "element_end a"}},
    });
}

TEST(XmlTokenStream, KeepsCommentsAndWhitespaceOutsideTheRoot) {
    EXPECT_THAT(tokens_of("<?xml?> <!--c-->\n<a/>\n"),
                ElementsAre("comment c", "space \n", "element_start a", "start_tag_end",
                            "element_end a", "space \n"));
}

TEST(XmlTokenStream, AddsNoStartTagEndAfterTheAttributesOfAnEndTag) {
    EXPECT_THAT(tokens_of("<?xml?><a></a x='1'>text"),
                ElementsAre("element_start a", "start_tag_end", "element_end a", "attribute_name x",
                            "attribute_value 1", "character text"));
}

TEST(XmlTokenStream, ReturnsTheErrorAndKeepsTheTokensBeforeIt) {
    xml_token_stream stream;
    const parse_error error = stream.parse("<?xml?><a>\n<b c='1' c='2'/></a>");
    EXPECT_EQ(parse_error::attribute_redefined, error.type);
    EXPECT_EQ(1u, error.line);
    EXPECT_EQ("c", error.text);
    EXPECT_THAT(lines_of(stream),
                ElementsAre("element_start a", "start_tag_end", "space \n", "element_start b",
                            "attribute_name c", "attribute_value 1"));
}

TEST(XmlTokenStream, ProducesNoTokenForAnEmptyDocument) {
    xml_token_stream stream;
    EXPECT_EQ(parse_error::no_header, stream.parse("").type);
    EXPECT_THAT(lines_of(stream), IsEmpty());
}

TEST(XmlTokenStream, AddsNoStartTagEndIfTheDocumentEndsThere) {
    xml_token_stream stream;
    EXPECT_EQ(parse_error::unexpected_end, stream.parse("<?xml?><a x='1'>").type);
    EXPECT_THAT(lines_of(stream),
                ElementsAre("element_start a", "attribute_name x", "attribute_value 1"));
}

TEST(XmlTokenStream, AppendsASecondDocument) {
    xml_token_stream stream;
    EXPECT_EQ(parse_error::no_error, stream.parse("<?xml?><a/>").type);
    EXPECT_EQ(parse_error::no_error, stream.parse("<?xml?><b/>").type);
    EXPECT_THAT(lines_of(stream), ElementsAre("element_start a", "start_tag_end", "element_end a",
                                              "element_start b", "start_tag_end", "element_end b"));
}

TEST(XmlTokenStream, ForgetsAStartTagThatAnEarlierDocumentLeftOpen) {
    xml_token_stream stream;
    EXPECT_EQ(parse_error::unexpected_end, stream.parse("<?xml?><a>").type);
    EXPECT_EQ(parse_error::no_error, stream.parse("<?xml?>text</a>").type);
    EXPECT_THAT(lines_of(stream),
                ElementsAre("element_start a", "character text", "element_end a"));
}

TEST(XmlTokenStream, ForgetsItEvenIfTheNextDocumentHasNoHeader) {
    xml_token_stream stream;
    EXPECT_EQ(parse_error::unexpected_end, stream.parse("<?xml?><a>").type);
    EXPECT_EQ(parse_error::no_header, stream.parse("").type);
    stream.on_space(" ");
    EXPECT_THAT(lines_of(stream), ElementsAre("element_start a", "space  "));
}

TEST(XmlTokenStream, ParsesARange) {
    const ustring8 text = "..<?xml?><a/>..";
    xml_token_stream stream;
    EXPECT_EQ(parse_error::no_error, stream.parse(text.begin() + 2, text.end() - 2).type);
    EXPECT_EQ(3u, stream.size());
    EXPECT_EQ(parse_error::no_header, stream.parse(text.begin(), text.end()).type);
}

TEST(XmlTokenStream, HasConstantAndMutableIterators) {
    xml_token_stream stream;
    ASSERT_EQ(parse_error::no_error, stream.parse("<?xml?><a/>").type);
    const xml_token_stream& constant = stream;
    EXPECT_EQ(3u, constant.size());
    EXPECT_EQ(3, std::distance(constant.begin(), constant.end()));
    EXPECT_EQ(3, std::distance(stream.begin(), stream.end()));
    EXPECT_EQ("element_end a", line_of(*std::prev(constant.end())));
    *stream.begin() = token(token::comment, "changed");
    EXPECT_EQ("comment changed", line_of(*constant.begin()));
    EXPECT_TRUE((std::is_same<std::list<token>::iterator, decltype(stream.begin())>::value));
    EXPECT_TRUE((std::is_same<std::list<token>::const_iterator, decltype(constant.end())>::value));
    EXPECT_TRUE((std::is_same<unsigned long, decltype(constant.size())>::value));
}

// What each handler does in the two states that a stream can be in. The state after the call is
// visible in whether a space then adds a start_tag_end.
struct handler_row {
    const char* name;
    void (*call)(xml_token_stream&);
    std::vector<std::string> closed;  // with no start_tag_end pending
    std::vector<std::string> open;    // with one pending
};

TEST(XmlTokenStream, EndsStartTagsByTheTableOfHandlers) {
    const handler_row rows[] = {
        {"on_element_start",
         [](xml_token_stream& stream) { stream.on_element_start("n"); },
         {"element_start n", "start_tag_end", "space  "},
         {"start_tag_end", "element_start n", "start_tag_end", "space  "}},
        {"on_element_end",
         [](xml_token_stream& stream) { stream.on_element_end("n"); },
         {"element_end n", "space  "},
         {"start_tag_end", "element_end n", "space  "}},
        {"on_space",
         [](xml_token_stream& stream) { stream.on_space("\n"); },
         {"space \n", "space  "},
         {"start_tag_end", "space \n", "space  "}},
        {"on_character",
         [](xml_token_stream& stream) { stream.on_character("t"); },
         {"character t", "space  "},
         {"start_tag_end", "character t", "space  "}},
        {"on_attribute",
         [](xml_token_stream& stream) { stream.on_attribute("n", "v"); },
         {"attribute_name n", "attribute_value v", "space  "},
         {"attribute_name n", "attribute_value v", "start_tag_end", "space  "}},
        {"on_comment",
         [](xml_token_stream& stream) { stream.on_comment("c"); },
         {"comment c", "space  "},
         {"comment c", "start_tag_end", "space  "}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        xml_token_stream closed;
        row.call(closed);
        closed.on_space(" ");
        EXPECT_EQ(row.closed, lines_of(closed));

        xml_token_stream open;
        open.on_element_start("o");
        row.call(open);
        open.on_space(" ");
        std::vector<std::string> expected = {"element_start o"};
        expected.insert(expected.end(), row.open.begin(), row.open.end());
        EXPECT_EQ(expected, lines_of(open));
    }
}

TEST(XmlTokenStream, KeepsNulBytesAndBytesAboveAscii) {
    const std::string value("\0\xE4", 2);
    xml_token_stream stream;
    EXPECT_EQ(parse_error::no_error, stream.parse("<?xml?><a b='&#0;&#228;'/>").type);
    EXPECT_EQ(value, std::next(stream.begin(), 2)->value());
}

TEST(XmlTokenStream, HoldsTheTokensOfManyElements) {
    std::string document = "<?xml?><r>";
    for (int i = 0; i < 100000; ++i)
        document += "<e/>";
    xml_token_stream stream;
    EXPECT_EQ(parse_error::no_error, stream.parse(ustring8(document + "</r>")).type);
    EXPECT_EQ(300003u, stream.size());
}

// Values of every size, which are not followed by any other bytes at the end. Each has the capacity
// of a copy.
TEST(XmlTokenStream, HoldsValuesOfAnySizeInNoMoreMemoryThanACopy) {
    for (std::size_t size = 1; size != 200; ++size) {
        const ustring8 value(std::string(size, 'v'));
        xml_token_stream stream;
        stream.parse(ustring8("<?xml?><a><b x='" + value + "'>" + value + "</b></a>" + value));
        int count = 0;
        for (const auto& one : stream)
            if (one.value() == value) {
                ++count;
                EXPECT_EQ(ustring8(value).capacity(), one.value().capacity()) << size;
            }
        EXPECT_EQ(3, count) << size;
    }
}

// A name, a value and pieces of text that are too long for a string without an allocation.
const char long_document[] =
    "<?xml?><a_name_of_many_letters an_attribute_of_many_letters='a value of many letters'>"
    "<!-- a comment of many letters --> a text of many letters                    &amp;<b/>"
    "</a_name_of_many_letters>";

TEST(XmlTokenStream, ReadsAnyNumberOfReferencesFarFromTheEnd) {
    const std::string rest(200, '-');
    std::string source;
    std::string resolved;
    for (int count = 0; count <= 140; ++count) {
        const auto tokens =
            tokens_of("<?xml?><a x='" + source + "'>" + source + "!" + rest + "</a>");
        EXPECT_EQ("attribute_value" + (count == 0 ? "" : " " + resolved), tokens[2]);
        EXPECT_EQ("character " + resolved + "!" + rest, tokens[4]);
        source += count % 2 == 0 ? "&lt;" : "b&amp;";
        resolved += count % 2 == 0 ? "<" : "b&";
    }
}

TEST(XmlTokenStream, ReturnsErrorsFarFromTheEnd) {
    const std::string rest(200, ' ');
    xml_token_stream stream;
    const parse_error error = stream.parse(ustring8("<?xml?><a x='1' y='2' x='3'/>" + rest));
    EXPECT_EQ(parse_error::attribute_redefined, error.type);
    EXPECT_EQ("x", error.text);
    EXPECT_EQ(5u, stream.size());

    const std::string name(300, 'n');
    for (const std::size_t size : {1, 100, 299}) {
        xml_token_stream cut;
        EXPECT_EQ(parse_error::mismatched_end,
                  cut.parse(ustring8("<?xml?><" + name + "></" + name.substr(0, size))).type);
        EXPECT_EQ(1u, cut.size());
    }
}

TEST(XmlTokenStream, KeepsTheAttributesOfTheLastStartTagHoweverManyThereAre) {
    for (int count = 1; count <= 60; ++count) {
        SCOPED_TRACE(count);
        std::string tag = "<?xml?><a";
        for (int i = 0; i < count; ++i)
            tag += " x" + std::to_string(i) + "='1'";
        xml_token_stream stream;
        ASSERT_EQ(parse_error::no_error, stream.parse(ustring8(tag + "></a>")).type);
        const std::string last = "x" + std::to_string(count - 1);
        const parse_error error = stream.parse(ustring8("<?xml?></b " + last + "='1'>"));
        EXPECT_EQ(parse_error::attribute_redefined, error.type);
        EXPECT_EQ(last, error.text);
        EXPECT_EQ(parse_error::no_error, stream.parse(ustring8("<?xml?></b y='1'>")).type);
    }
}

TEST(XmlTokenStream, PropagatesAFailedAllocationAndLeaksNothing) {
    const ustring8 text(long_document);
    unsigned failures = 0;
    for (bool failed = true; failed; ++failures) {
        const long live = test_support::live_allocations();
        {
            const test_support::failing_allocation failure(failures);
            try {
                xml_token_stream stream;
                EXPECT_EQ(parse_error::no_error, stream.parse(text).type);
                EXPECT_EQ(13u, stream.size());
            } catch (const std::bad_alloc&) {
            }
            failed = failure.failed();
        }
        ASSERT_EQ(live, test_support::live_allocations()) << failures;
    }
    EXPECT_GT(failures, 20u);
}

TEST(XmlTokenStream, LeaksNothingForAnyPrefixOfADocument) {
    const std::string document(long_document);
    for (std::size_t length = 0; length < document.size(); ++length) {
        const ustring8 text(document.substr(0, length));
        const long live = test_support::live_allocations();
        {
            xml_token_stream stream;
            EXPECT_NE(parse_error::no_error, stream.parse(text).type) << text;
        }
        ASSERT_EQ(live, test_support::live_allocations()) << text;
    }
}

// The bindings that the library instantiates and exports.
using text_handler = member_function_t<xml_token_stream, void(const ustring8&)>;
using attribute_handler =
    member_function_t<xml_token_stream, void(const ustring8&, const ustring8&)>;

TEST(XmlTokenStreamHandlers, AreCalledThroughTheirBindings) {
    xml_token_stream stream;
    text_handler comment(&stream, &xml_token_stream::on_comment);
    attribute_handler attribute(&stream, &xml_token_stream::on_attribute);
    comment.invoke("c");
    attribute.invoke("n", "v");
    EXPECT_THAT(lines_of(stream),
                ElementsAre("comment c", "attribute_name n", "attribute_value v"));
}

TEST(XmlTokenStreamHandlers, AreEqualForTheSameObjectAndHandler) {
    xml_token_stream first;
    xml_token_stream second;
    const text_handler comment(&first, &xml_token_stream::on_comment);
    EXPECT_TRUE(comment.do_equal(text_handler(&first, &xml_token_stream::on_comment)));
    EXPECT_FALSE(comment.do_equal(text_handler(&first, &xml_token_stream::on_space)));
    EXPECT_FALSE(comment.do_equal(text_handler(&second, &xml_token_stream::on_comment)));

    auto* const clone = comment.do_clone();
    EXPECT_TRUE(clone->do_equal(comment));
    delete clone;
}

}  // namespace
