// XML documents in memory.
//
// events: one callback or one pulled token for each event.
// tokens: the whole document kept, as a list of tokens or as a tree.
//
// Every library counts the elements and the bytes of values and text, so that none can skip them.
#include <tova/functor/member_function.hpp>
#include <tova/parser/xml_token_stream.hpp>

#include "xml_documents.hpp"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#ifdef HAVE_EXPAT
#include <expat.h>
#endif
#ifdef HAVE_LIBXML2
#include <cstring>
#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlreader.h>
#endif
#ifdef HAVE_PUGIXML
#include <pugixml.hpp>
#endif
#ifdef HAVE_QT6
#include <QByteArray>
#include <QXmlStreamReader>
#endif
#ifdef HAVE_RAPIDXML
#include <rapidxml/rapidxml.hpp>
#endif
#ifdef HAVE_XERCES
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLString.hpp>
#endif
#ifdef HAVE_BOOST_PROPERTY_TREE
#include <boost/property_tree/ptree.hpp>
#include <boost/property_tree/xml_parser.hpp>
#include <sstream>
#endif

namespace {

using tova::functor::member_function_t;
using tova::parser::xml_parser;
using tova::parser::xml_token_stream;
using tova::strings::ustring8;

using bench_support::counts;
using bench_support::document_piece;

const std::size_t document_size = 1 << 20;

struct document {
    document(const char* kind, const document_piece& piece) : name(kind) {
        const auto made = bench_support::generate_document(document_size, piece);
        text = made.text;
        elements = made.elements;
    }

    const char* name;
    ustring8 text;
    std::size_t elements;
};

std::string element_of_attributes(const std::string& number) {
    return "  <row id=\"" + number + "\" name='name " + number +
           "' first='1' second=\"two &amp; more\" third='3.0' kind=\"long_value_of_a_kind\"/>\n";
}

std::string element_of_text(const std::string& number) {
    std::string text = "<p>";
    for (int i = 0; i < 8; ++i)
        text += "Some words about number " + number +
                " &amp; &lt;its&gt; neighbours, in \xC3\xA4hnlicher \xE2\x82\xAC Form.\n";
    return text + "</p>\n";
}

void finish(benchmark::State& state, const document& source, const counts& reported) {
    bench_support::finish(state, source.elements, source.text.size(), reported);
}

struct tova_counter : counts {
    void element_start(const ustring8&) { ++elements; }
    void element_end(const ustring8& name) { bytes += name.size(); }
    void attribute(const ustring8&, const ustring8& value) { bytes += value.size(); }
    void text(const ustring8& value) { bytes += value.size(); }
};

void tova_events(benchmark::State& state, const document& source) {
    using text_handler = member_function_t<tova_counter, void(const ustring8&)>;
    using attribute_handler =
        member_function_t<tova_counter, void(const ustring8&, const ustring8&)>;
    tova_counter reported;
    for (auto _ : state) {
        xml_parser parser;
        parser.on_element_start = text_handler(&reported, &tova_counter::element_start);
        parser.on_element_end = text_handler(&reported, &tova_counter::element_end);
        parser.on_attribute = attribute_handler(&reported, &tova_counter::attribute);
        parser.on_character = text_handler(&reported, &tova_counter::text);
        parser.on_space = text_handler(&reported, &tova_counter::text);
        benchmark::DoNotOptimize(parser.parse(source.text).type);
    }
    finish(state, source, reported);
}

void tova_tokens(benchmark::State& state, const document& source) {
    counts reported;
    for (auto _ : state) {
        xml_token_stream stream;
        stream.parse(source.text);
        for (const auto& one : stream) {
            reported.elements += one.type() == xml_token_stream::token::element_start;
            reported.bytes += one.value().size();
        }
    }
    finish(state, source, reported);
}

// Our own code without its fast paths: the handlers of a list, as the delegates of a parser.
void plain_tokens(benchmark::State& state, const document& source) {
    using text_handler = member_function_t<xml_token_stream, void(const ustring8&)>;
    using attribute_handler =
        member_function_t<xml_token_stream, void(const ustring8&, const ustring8&)>;
    counts reported;
    for (auto _ : state) {
        xml_token_stream stream;
        xml_parser parser;
        parser.on_attribute = attribute_handler(&stream, &xml_token_stream::on_attribute);
        parser.on_element_start = text_handler(&stream, &xml_token_stream::on_element_start);
        parser.on_character = text_handler(&stream, &xml_token_stream::on_character);
        parser.on_comment = text_handler(&stream, &xml_token_stream::on_comment);
        parser.on_element_end = text_handler(&stream, &xml_token_stream::on_element_end);
        parser.on_space = text_handler(&stream, &xml_token_stream::on_space);
        parser.parse(source.text);
        for (const auto& one : stream) {
            reported.elements += one.type() == xml_token_stream::token::element_start;
            reported.bytes += one.value().size();
        }
    }
    finish(state, source, reported);
}

// The floors: the events and the tokens of the document, known beforehand. An event is a string
// that is assigned to a reused one and handed to a delegate, a token a node of a list.
void floor_events(benchmark::State& state, const document& source) {
    using text_handler = member_function_t<tova_counter, void(const ustring8&)>;
    xml_token_stream stream;
    stream.parse(source.text);
    struct event {
        ustring8 value;
        bool is_element;
    };
    std::vector<event> events;
    for (const auto& one : stream)
        if (one.type() != xml_token_stream::token::start_tag_end)
            events.push_back({one.value(), one.type() == xml_token_stream::token::element_start});
    tova_counter reported;
    tova::functor::delegate_t<void(const ustring8&)> on_element(
        text_handler(&reported, &tova_counter::element_start)),
        on_other(text_handler(&reported, &tova_counter::text));
    ustring8 value;
    for (auto _ : state) {
        for (const event& one : events) {
            value.assign(one.value);
            (one.is_element ? on_element : on_other).invoke(value);
        }
    }
    finish(state, source, reported);
}

void floor_tokens(benchmark::State& state, const document& source) {
    xml_token_stream stream;
    stream.parse(source.text);
    counts reported;
    for (auto _ : state) {
        const std::list<xml_token_stream::token> tokens(stream.begin(), stream.end());
        for (const auto& one : tokens) {
            reported.elements += one.type() == xml_token_stream::token::element_start;
            reported.bytes += one.value().size();
        }
    }
    finish(state, source, reported);
}

// Our code without its fast paths: the parser's operations for single constructs, which work byte
// by byte. The document has only elements, attributes, text and references.
void plain_events(benchmark::State& state, const document& source) {
    tova_counter reported;
    for (auto _ : state) {
        xml_parser parser;
        xml_parser::iterator cursor = source.text.begin() + source.text.find("?>") + 2;
        xml_parser::iterator end = source.text.end();
        const auto take_start_tag = [&] {
            const ustring8 name = parser.parse_name(++cursor, end);
            reported.element_start(name);
            ++cursor;
            for (;;) {
                parser.parse_whitespace(cursor, end);
                if (*cursor == '>')
                    return;
                if (*cursor == '/') {
                    reported.element_end(name);
                    ++cursor;
                    return;
                }
                const ustring8 attribute = parser.parse_name(cursor, end);
                reported.attribute(attribute, parser.parse_attrib_value(cursor += 2, end));
                ++cursor;
            }
        };
        const auto is_space = [&](xml_parser::iterator at) { return parser.is_white_space(at); };
        while (cursor != end) {
            const ustring8 space = parser.parse_whitespace(cursor, end);
            if (!space.empty())
                reported.text(space);
            if (cursor == end)
                break;
            if (*cursor == '<') {
                if (cursor[1] == '/') {
                    reported.element_end(parser.parse_name(cursor += 2, end));
                    ++cursor;
                } else {
                    take_start_tag();
                }
                ++cursor;
                continue;
            }
            ustring8 text;
            for (; *cursor != '<' && !(is_space(cursor) && is_space(cursor + 1)); ++cursor)
                text += *cursor == '&' ? parser.parse_character(cursor, end) : ustring8(1, *cursor);
            reported.text(text);
        }
    }
    finish(state, source, reported);
}

#ifdef HAVE_EXPAT
void expat_events(benchmark::State& state, const document& source) {
    counts reported;
    for (auto _ : state) {
        XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetUserData(parser, &reported);
        XML_SetElementHandler(
            parser,
            [](void* user, const XML_Char*, const XML_Char** attributes) {
                auto& to = *static_cast<counts*>(user);
                ++to.elements;
                for (; *attributes != nullptr; attributes += 2)
                    to.bytes += std::char_traits<char>::length(attributes[1]);
            },
            [](void*, const XML_Char*) {});
        XML_SetCharacterDataHandler(parser, [](void* user, const XML_Char*, int length) {
            static_cast<counts*>(user)->bytes += static_cast<std::size_t>(length);
        });
        XML_Parse(parser, source.text.data(), static_cast<int>(source.text.size()), 1);
        XML_ParserFree(parser);
    }
    finish(state, source, reported);
}
#endif

#ifdef HAVE_LIBXML2
void libxml2_sax_start(void* user, const xmlChar*, const xmlChar*, const xmlChar*, int,
                       const xmlChar**, int attributes, int, const xmlChar** fields) {
    auto& to = *static_cast<counts*>(user);
    ++to.elements;
    for (int i = 0; i < attributes; ++i)
        to.bytes += static_cast<std::size_t>(fields[5 * i + 4] - fields[5 * i + 3]);
}

void libxml2_sax_text(void* user, const xmlChar*, int length) {
    static_cast<counts*>(user)->bytes += static_cast<std::size_t>(length);
}

void libxml2_sax_events(benchmark::State& state, const document& source) {
    counts reported;
    xmlSAXHandler handler;
    std::memset(&handler, 0, sizeof handler);
    handler.initialized = XML_SAX2_MAGIC;
    handler.startElementNs = libxml2_sax_start;
    handler.characters = libxml2_sax_text;
    handler.ignorableWhitespace = libxml2_sax_text;
    for (auto _ : state)
        xmlSAXUserParseMemory(&handler, &reported, source.text.data(),
                              static_cast<int>(source.text.size()));
    finish(state, source, reported);
}

void libxml2_reader_events(benchmark::State& state, const document& source) {
    counts reported;
    for (auto _ : state) {
        xmlTextReaderPtr reader = xmlReaderForMemory(
            source.text.data(), static_cast<int>(source.text.size()), nullptr, nullptr, 0);
        while (xmlTextReaderRead(reader) == 1) {
            switch (xmlTextReaderNodeType(reader)) {
            case XML_READER_TYPE_ELEMENT:
                ++reported.elements;
                while (xmlTextReaderMoveToNextAttribute(reader) == 1)
                    reported.bytes +=
                        static_cast<std::size_t>(xmlStrlen(xmlTextReaderConstValue(reader)));
                break;
            case XML_READER_TYPE_TEXT:
            case XML_READER_TYPE_SIGNIFICANT_WHITESPACE:
                reported.bytes +=
                    static_cast<std::size_t>(xmlStrlen(xmlTextReaderConstValue(reader)));
                break;
            default:
                break;
            }
        }
        xmlFreeTextReader(reader);
    }
    finish(state, source, reported);
}

void walk(const xmlNode* node, counts& reported) {
    for (; node != nullptr; node = node->next) {
        if (node->type == XML_TEXT_NODE)
            reported.bytes += static_cast<std::size_t>(xmlStrlen(node->content));
        if (node->type != XML_ELEMENT_NODE)
            continue;
        ++reported.elements;
        for (const xmlAttr* one = node->properties; one != nullptr; one = one->next)
            walk(one->children, reported);
        walk(node->children, reported);
    }
}

void libxml2_tree_tokens(benchmark::State& state, const document& source) {
    counts reported;
    for (auto _ : state) {
        xmlDocPtr tree = xmlReadMemory(source.text.data(), static_cast<int>(source.text.size()),
                                       nullptr, nullptr, 0);
        walk(xmlDocGetRootElement(tree), reported);
        xmlFreeDoc(tree);
    }
    finish(state, source, reported);
}
#endif

#ifdef HAVE_PUGIXML
void walk(const pugi::xml_node& parent, counts& reported) {
    for (const pugi::xml_node& node : parent) {
        reported.elements += node.type() == pugi::node_element;
        reported.bytes += std::char_traits<char>::length(node.value());
        for (const pugi::xml_attribute& one : node.attributes())
            reported.bytes += std::char_traits<char>::length(one.value());
        walk(node, reported);
    }
}

void pugixml_tokens(benchmark::State& state, const document& source) {
    counts reported;
    for (auto _ : state) {
        pugi::xml_document tree;
        tree.load_buffer(source.text.data(), source.text.size(),
                         pugi::parse_default | pugi::parse_ws_pcdata);
        walk(tree, reported);
    }
    finish(state, source, reported);
}
#endif

#ifdef HAVE_QT6
template <typename Keep>
void read_with_qt6(const QByteArray& bytes, counts& reported, const Keep& keep) {
    QXmlStreamReader reader(bytes);
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            ++reported.elements;
            keep(reader.tokenType(), reader.name());
            for (const QXmlStreamAttribute& one : reader.attributes()) {
                reported.bytes += static_cast<std::size_t>(one.value().size());
                keep(reader.tokenType(), one.name());
                keep(reader.tokenType(), one.value());
            }
            break;
        case QXmlStreamReader::EndElement:
            keep(reader.tokenType(), reader.name());
            break;
        case QXmlStreamReader::Characters:
            reported.bytes += static_cast<std::size_t>(reader.text().size());
            keep(reader.tokenType(), reader.text());
            break;
        default:
            break;
        }
    }
}

void qt6_events(benchmark::State& state, const document& source) {
    const auto bytes =
        QByteArray::fromRawData(source.text.data(), static_cast<qsizetype>(source.text.size()));
    counts reported;
    for (auto _ : state)
        read_with_qt6(bytes, reported, [](QXmlStreamReader::TokenType, QStringView) {});
    finish(state, source, reported);
}

void qt6_tokens(benchmark::State& state, const document& source) {
    const auto bytes =
        QByteArray::fromRawData(source.text.data(), static_cast<qsizetype>(source.text.size()));
    counts reported;
    for (auto _ : state) {
        std::list<std::pair<QXmlStreamReader::TokenType, QString>> tokens;
        read_with_qt6(bytes, reported, [&](QXmlStreamReader::TokenType type, QStringView text) {
            tokens.emplace_back(type, text.toString());
        });
        benchmark::DoNotOptimize(tokens.size());
    }
    finish(state, source, reported);
}
#endif

#ifdef HAVE_BOOST_PROPERTY_TREE
void walk(const boost::property_tree::ptree& parent, counts& reported) {
    for (const auto& child : parent) {
        const bool is_attributes = child.first == "<xmlattr>";
        reported.elements += !is_attributes;
        reported.bytes += child.second.data().size();
        if (is_attributes) {
            for (const auto& one : child.second)
                reported.bytes += one.second.data().size();
        } else {
            walk(child.second, reported);
        }
    }
}

void property_tree_tokens(benchmark::State& state, const document& source) {
    counts reported;
    for (auto _ : state) {
        std::istringstream stream(source.text);
        boost::property_tree::ptree tree;
        boost::property_tree::read_xml(stream, tree);
        walk(tree, reported);
    }
    finish(state, source, reported);
}
#endif

#ifdef HAVE_RAPIDXML
void walk(const rapidxml::xml_node<>* parent, counts& reported) {
    for (const auto* node = parent->first_node(); node != nullptr; node = node->next_sibling()) {
        reported.elements += node->type() == rapidxml::node_element;
        if (node->type() == rapidxml::node_data)
            reported.bytes += node->value_size();
        for (const auto* one = node->first_attribute(); one != nullptr; one = one->next_attribute())
            reported.bytes += one->value_size();
        walk(node, reported);
    }
}

// It parses in place and has no events, so it gets a copy of the document and a walk over the tree.
void rapidxml_events(benchmark::State& state, const document& source) {
    counts reported;
    const auto tree = std::make_unique<rapidxml::xml_document<>>();  // large, for the stack
    for (auto _ : state) {
        std::string text = source.text;
        tree->parse<0>(&text[0]);
        walk(tree.get(), reported);
        tree->clear();
    }
    finish(state, source, reported);
}

using token_list = std::list<std::pair<rapidxml::node_type, std::string>>;

// The same list as ours, except for the whitespace between elements. Types that the tree does not
// otherwise use mark attributes and the ends of tags.
void list(const rapidxml::xml_node<>* parent, token_list& tokens) {
    for (const auto* node = parent->first_node(); node != nullptr; node = node->next_sibling()) {
        if (node->type() == rapidxml::node_data) {
            tokens.emplace_back(node->type(), std::string(node->value(), node->value_size()));
            continue;
        }
        const std::string name(node->name(), node->name_size());
        tokens.emplace_back(node->type(), name);
        for (const auto* one = node->first_attribute(); one != nullptr;
             one = one->next_attribute()) {
            tokens.emplace_back(rapidxml::node_pi, std::string(one->name(), one->name_size()));
            tokens.emplace_back(rapidxml::node_cdata, std::string(one->value(), one->value_size()));
        }
        tokens.emplace_back(rapidxml::node_comment, std::string());
        list(node, tokens);
        tokens.emplace_back(rapidxml::node_document, name);
    }
}

void rapidxml_tokens(benchmark::State& state, const document& source) {
    counts reported;
    const auto tree = std::make_unique<rapidxml::xml_document<>>();
    for (auto _ : state) {
        std::string text = source.text;
        tree->parse<0>(&text[0]);
        token_list tokens;
        list(tree.get(), tokens);
        tree->clear();
        for (const auto& one : tokens) {
            reported.elements += one.first == rapidxml::node_element;
            reported.bytes += one.second.size();
        }
    }
    finish(state, source, reported);
}
#endif

#ifdef HAVE_XERCES
struct xerces_counter : xercesc::DefaultHandler {
    counts reported;
    void startElement(const XMLCh*, const XMLCh*, const XMLCh*,
                      const xercesc::Attributes& attributes) override {
        ++reported.elements;
        for (XMLSize_t i = 0; i < attributes.getLength(); ++i)
            reported.bytes += xercesc::XMLString::stringLen(attributes.getValue(i));
    }
    void characters(const XMLCh*, const XMLSize_t length) override { reported.bytes += length; }
};

void xerces_events(benchmark::State& state, const document& source) {
    static const bool is_ready = (xercesc::XMLPlatformUtils::Initialize(), true);
    benchmark::DoNotOptimize(is_ready);
    xerces_counter counter;
    for (auto _ : state) {
        const std::unique_ptr<xercesc::SAX2XMLReader> reader(
            xercesc::XMLReaderFactory::createXMLReader());
        reader->setContentHandler(&counter);
        const xercesc::MemBufInputSource input(reinterpret_cast<const XMLByte*>(source.text.data()),
                                               source.text.size(), "memory");
        reader->parse(input);
    }
    finish(state, source, counter.reported);
}
#endif

using operation = void (*)(benchmark::State&, const document&);

void add(const char* name, const document& source, const char* library, operation run) {
    const std::string full = std::string(name) + "/" + source.name + "/" + library;
    benchmark::RegisterBenchmark(full.c_str(), [run, &source](benchmark::State& state) {
        run(state, source);
    })->Unit(benchmark::kMillisecond);
}

const bool added = [] {
    static const document documents[] = {{"elements", bench_support::small_elements},
                                         {"attributes", {1, element_of_attributes}},
                                         {"text", {1, element_of_text}}};
    for (const document& source : documents) {
        add("events", source, "tova", tova_events);
        add("tokens", source, "tova", tova_tokens);
        add("events", source, "floor", floor_events);
        add("events", source, "plain", plain_events);
        add("tokens", source, "floor", floor_tokens);
        add("tokens", source, "plain", plain_tokens);
#ifdef HAVE_RAPIDXML
        add("events", source, "rapidxml", rapidxml_events);
        add("tokens", source, "rapidxml", rapidxml_tokens);
#endif
#ifdef HAVE_XERCES
        add("events", source, "xerces", xerces_events);
#endif
#ifdef HAVE_EXPAT
        add("events", source, "expat", expat_events);
#endif
#ifdef HAVE_LIBXML2
        add("events", source, "libxml2-sax", libxml2_sax_events);
        add("events", source, "libxml2-reader", libxml2_reader_events);
        add("tokens", source, "libxml2-tree", libxml2_tree_tokens);
#endif
#ifdef HAVE_PUGIXML
        add("tokens", source, "pugixml", pugixml_tokens);
#endif
#ifdef HAVE_QT6
        add("events", source, "qt6", qt6_events);
        add("tokens", source, "qt6", qt6_tokens);
#endif
#ifdef HAVE_BOOST_PROPERTY_TREE
        add("tokens", source, "boost-property-tree", property_tree_tokens);
#endif
    }
    return true;
}();

}  // namespace
