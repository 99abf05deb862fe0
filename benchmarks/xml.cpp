// XML texts in memory: events (a callback or a pull for each) and tokens (all of the document
// kept). Every library counts the elements and the bytes of values and text that it was told of, so
// that none gets away without looking at them.
#include <cstddef>
#include <string>

#include <benchmark/benchmark.h>

#include <tova/functor/member_function.hpp>
#include <tova/parser/xml_token_stream.hpp>

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
#include <list>
#include <utility>
#endif
#ifdef HAVE_BOOST_PROPERTY_TREE
#include <boost/property_tree/ptree.hpp>
#include <boost/property_tree/xml_parser.hpp>
#include <sstream>
#endif

namespace {

using TOVA_2_18::functor::member_function_t;
using TOVA_2_18::parser::xml_parser;
using TOVA_2_18::parser::xml_token_stream;
using TOVA_2_18::strings::ustring8;

const std::size_t document_size = 1 << 20;

struct document {
    const char* name;
    ustring8 text;
    std::size_t elements;
};

template <typename Piece>
document make(const char* name, std::size_t elements_of_a_piece, const Piece& piece) {
    document made = {name, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n", 1};
    for (std::size_t i = 0; made.text.size() < document_size; ++i) {
        made.text += piece(std::to_string(i));
        made.elements += elements_of_a_piece;
    }
    made.text += "</root>\n";
    return made;
}

const document& small_elements() {
    static const document made = make("elements", 4, [](const std::string& number) {
        return "  <item><id>" + number + "</id><on/><name>n" + number + "</name></item>\n";
    });
    return made;
}

const document& attribute_heavy() {
    static const document made = make("attributes", 1, [](const std::string& number) {
        return "  <row id=\"" + number + "\" name='name " + number +
               "' first='1' second=\"two &amp; more\" third='3.0' "
               "kind=\"long_value_of_a_kind\"/>\n";
    });
    return made;
}

const document& text_heavy() {
    static const document made = make("text", 1, [](const std::string& number) {
        std::string text = "<p>";
        for (int i = 0; i < 8; ++i)
            text += "Some words about number " + number +
                    " &amp; &lt;its&gt; neighbours, in \xC3\xA4hnlicher \xE2\x82\xAC Form.\n";
        return text + "</p>\n";
    });
    return made;
}

// What a library has told of a document.
struct counts {
    std::size_t elements = 0;
    std::size_t bytes = 0;
};

void finish(benchmark::State& state, const document& source, const counts& told) {
    if (told.elements != source.elements * static_cast<std::size_t>(state.iterations()))
        state.SkipWithError("wrong number of elements");
    auto bytes = told.bytes;
    benchmark::DoNotOptimize(bytes);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(source.text.size()));
}

struct tova_counter : counts {
    void element_start(ustring8 const&) { ++elements; }
    void element_end(ustring8 const& name) { bytes += name.size(); }
    void attribute(ustring8 const&, ustring8 const& value) { bytes += value.size(); }
    void text(ustring8 const& value) { bytes += value.size(); }
};

void tova_events(benchmark::State& state, const document& source) {
    using text_handler = member_function_t<tova_counter, void(ustring8 const&)>;
    using attribute_handler =
        member_function_t<tova_counter, void(ustring8 const&, ustring8 const&)>;
    tova_counter told;
    for (auto _ : state) {
        xml_parser parser;
        parser.on_element_start = text_handler(&told, &tova_counter::element_start);
        parser.on_element_end = text_handler(&told, &tova_counter::element_end);
        parser.on_attribute = attribute_handler(&told, &tova_counter::attribute);
        parser.on_character = text_handler(&told, &tova_counter::text);
        parser.on_space = text_handler(&told, &tova_counter::text);
        benchmark::DoNotOptimize(parser.parse(source.text).type);
    }
    finish(state, source, told);
}

void tova_tokens(benchmark::State& state, const document& source) {
    counts told;
    for (auto _ : state) {
        xml_token_stream stream;
        stream.parse(source.text);
        for (const auto& one : stream) {
            told.elements += one.type() == xml_token_stream::token::element_start;
            told.bytes += one.value().size();
        }
    }
    finish(state, source, told);
}

#ifdef HAVE_EXPAT
void expat_events(benchmark::State& state, const document& source) {
    counts told;
    for (auto _ : state) {
        XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetUserData(parser, &told);
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
    finish(state, source, told);
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
    counts told;
    xmlSAXHandler handler;
    std::memset(&handler, 0, sizeof handler);
    handler.initialized = XML_SAX2_MAGIC;
    handler.startElementNs = libxml2_sax_start;
    handler.characters = libxml2_sax_text;
    handler.ignorableWhitespace = libxml2_sax_text;
    for (auto _ : state)
        xmlSAXUserParseMemory(&handler, &told, source.text.data(),
                              static_cast<int>(source.text.size()));
    finish(state, source, told);
}

void libxml2_reader_events(benchmark::State& state, const document& source) {
    counts told;
    for (auto _ : state) {
        xmlTextReaderPtr reader = xmlReaderForMemory(
            source.text.data(), static_cast<int>(source.text.size()), nullptr, nullptr, 0);
        while (xmlTextReaderRead(reader) == 1) {
            switch (xmlTextReaderNodeType(reader)) {
            case XML_READER_TYPE_ELEMENT:
                ++told.elements;
                while (xmlTextReaderMoveToNextAttribute(reader) == 1)
                    told.bytes +=
                        static_cast<std::size_t>(xmlStrlen(xmlTextReaderConstValue(reader)));
                break;
            case XML_READER_TYPE_TEXT:
            case XML_READER_TYPE_SIGNIFICANT_WHITESPACE:
                told.bytes += static_cast<std::size_t>(xmlStrlen(xmlTextReaderConstValue(reader)));
                break;
            default:
                break;
            }
        }
        xmlFreeTextReader(reader);
    }
    finish(state, source, told);
}

void walk(const xmlNode* node, counts& told) {
    for (; node != nullptr; node = node->next) {
        if (node->type == XML_TEXT_NODE)
            told.bytes += static_cast<std::size_t>(xmlStrlen(node->content));
        if (node->type != XML_ELEMENT_NODE)
            continue;
        ++told.elements;
        for (const xmlAttr* one = node->properties; one != nullptr; one = one->next)
            walk(one->children, told);
        walk(node->children, told);
    }
}

void libxml2_tree_tokens(benchmark::State& state, const document& source) {
    counts told;
    for (auto _ : state) {
        xmlDocPtr tree = xmlReadMemory(source.text.data(), static_cast<int>(source.text.size()),
                                       nullptr, nullptr, 0);
        walk(xmlDocGetRootElement(tree), told);
        xmlFreeDoc(tree);
    }
    finish(state, source, told);
}
#endif

#ifdef HAVE_PUGIXML
void walk(const pugi::xml_node& parent, counts& told) {
    for (const pugi::xml_node& node : parent) {
        told.elements += node.type() == pugi::node_element;
        told.bytes += std::char_traits<char>::length(node.value());
        for (const pugi::xml_attribute& one : node.attributes())
            told.bytes += std::char_traits<char>::length(one.value());
        walk(node, told);
    }
}

void pugixml_tokens(benchmark::State& state, const document& source) {
    counts told;
    for (auto _ : state) {
        pugi::xml_document tree;
        tree.load_buffer(source.text.data(), source.text.size(),
                         pugi::parse_default | pugi::parse_ws_pcdata);
        walk(tree, told);
    }
    finish(state, source, told);
}
#endif

#ifdef HAVE_QT6
template <typename Keep>
void read_with_qt6(const QByteArray& bytes, counts& told, const Keep& keep) {
    QXmlStreamReader reader(bytes);
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            ++told.elements;
            keep(reader.tokenType(), reader.name());
            for (const QXmlStreamAttribute& one : reader.attributes()) {
                told.bytes += static_cast<std::size_t>(one.value().size());
                keep(reader.tokenType(), one.name());
                keep(reader.tokenType(), one.value());
            }
            break;
        case QXmlStreamReader::EndElement:
            keep(reader.tokenType(), reader.name());
            break;
        case QXmlStreamReader::Characters:
            told.bytes += static_cast<std::size_t>(reader.text().size());
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
    counts told;
    for (auto _ : state)
        read_with_qt6(bytes, told, [](QXmlStreamReader::TokenType, QStringView) {});
    finish(state, source, told);
}

void qt6_tokens(benchmark::State& state, const document& source) {
    const auto bytes =
        QByteArray::fromRawData(source.text.data(), static_cast<qsizetype>(source.text.size()));
    counts told;
    for (auto _ : state) {
        std::list<std::pair<QXmlStreamReader::TokenType, QString>> tokens;
        read_with_qt6(bytes, told, [&](QXmlStreamReader::TokenType type, QStringView text) {
            tokens.emplace_back(type, text.toString());
        });
        benchmark::DoNotOptimize(tokens.size());
    }
    finish(state, source, told);
}
#endif

#ifdef HAVE_BOOST_PROPERTY_TREE
void walk(const boost::property_tree::ptree& parent, counts& told) {
    for (const auto& child : parent) {
        const bool is_attributes = child.first == "<xmlattr>";
        told.elements += !is_attributes;
        told.bytes += child.second.data().size();
        if (is_attributes) {
            for (const auto& one : child.second)
                told.bytes += one.second.data().size();
        } else {
            walk(child.second, told);
        }
    }
}

void property_tree_tokens(benchmark::State& state, const document& source) {
    counts told;
    for (auto _ : state) {
        std::istringstream stream(source.text);
        boost::property_tree::ptree tree;
        boost::property_tree::read_xml(stream, tree);
        walk(tree, told);
    }
    finish(state, source, told);
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
    for (const document* source : {&small_elements(), &attribute_heavy(), &text_heavy()}) {
        add("events", *source, "tova", tova_events);
        add("tokens", *source, "tova", tova_tokens);
#ifdef HAVE_EXPAT
        add("events", *source, "expat", expat_events);
#endif
#ifdef HAVE_LIBXML2
        add("events", *source, "libxml2-sax", libxml2_sax_events);
        add("events", *source, "libxml2-reader", libxml2_reader_events);
        add("tokens", *source, "libxml2-tree", libxml2_tree_tokens);
#endif
#ifdef HAVE_PUGIXML
        add("tokens", *source, "pugixml", pugixml_tokens);
#endif
#ifdef HAVE_QT6
        add("events", *source, "qt6", qt6_events);
        add("tokens", *source, "qt6", qt6_tokens);
#endif
#ifdef HAVE_BOOST_PROPERTY_TREE
        add("tokens", *source, "boost-property-tree", property_tree_tokens);
#endif
    }
    return true;
}();

}  // namespace
