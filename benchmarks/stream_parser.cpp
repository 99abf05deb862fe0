// A file of 100 MB, read from its beginning to its end one piece at a time. Every library counts
// the elements and the bytes of values and text, so that none can skip them.
#include <tova/parser/xml_stream_parser.hpp>

#include "parser/plain_stream_parser.hpp"
#include "scratch_folder.hpp"
#include "xml_documents.hpp"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <fstream>
#include <string>
#include <vector>

#ifdef HAVE_EXPAT
#include <cstring>
#include <expat.h>
#endif
#ifdef HAVE_LIBXML2
#include <libxml/xmlreader.h>
#endif

namespace {

using tova::parser::xml_stream_parser;

using bench_support::counts;
using bench_support::document_piece;

const std::size_t file_size = 100 << 20;

// A generated document in a file.
class document {
public:
    document(const char* kind, const document_piece& piece) {
        static const bench_support::scratch_folder folder;
        const auto made = bench_support::generate_document(file_size, piece);
        m_path = folder / kind;
        m_size = made.text.size();
        m_elements = made.elements;
        std::ofstream(m_path, std::ios::binary) << made.text;
    }

    const std::string& path() const { return m_path; }
    std::size_t size() const { return m_size; }
    std::size_t elements() const { return m_elements; }

private:
    std::string m_path;
    std::size_t m_size;
    std::size_t m_elements;
};

std::string log_entry(const std::string& number) {
    return "  <entry id=\"" + number +
           "\" level='info' host=\"server.one\">connection from 10.0.0.1, user &quot;" + number +
           "&quot; said hello</entry>\n";
}

std::string long_text(const std::string& number) {
    std::string text = "<p>";
    for (int i = 0; i < 40; ++i)
        text += "Some words about number " + number + ", in \xC3\xA4hnlicher Form.\n";
    return text + "</p>\n";
}

// The files are made when they are first needed.
const document& log_file() {
    static const document made("log", {1, log_entry});
    return made;
}

const document& small_elements() {
    static const document made("elements", bench_support::small_elements);
    return made;
}

const document& long_texts() {
    static const document made("text", {1, long_text});
    return made;
}

void finish(benchmark::State& state, const document& source, const counts& reported) {
    bench_support::finish(state, source.elements(), source.size(), reported);
}

void tova_nodes(benchmark::State& state, const document& source) {
    counts reported;
    for (auto _ : state) {
        xml_stream_parser parser(source.path(), 1);
        while (parser.parse() <= xml_stream_parser::out_of_data || !parser.node_queue_empty()) {
            while (!parser.node_queue_empty()) {
                const xml_stream_parser::node one = parser.node_queue_pop();
                reported.elements += one.type != xml_stream_parser::end_of_document;
                reported.bytes += one.text.size();
                for (const auto& attribute : one.attributes)
                    reported.bytes += attribute.second.size();
            }
        }
    }
    finish(state, source, reported);
}

// The model with which the tests compare the parser: it reads one byte at a time from a file in
// memory.
void plain_nodes(benchmark::State& state, const document& source) {
    counts reported;
    for (auto _ : state) {
        std::ifstream stream(source.path(), std::ios::binary);
        std::string file(source.size(), '\0');
        stream.read(&file[0], static_cast<std::streamsize>(file.size()));
        test_support::plain_stream_parser parser(file, 1);
        do {
            parser.parse();
            while (parser.has_node()) {
                const xml_stream_parser::node one = parser.pop();
                reported.elements += one.type != xml_stream_parser::end_of_document;
                reported.bytes += one.text.size();
                for (const auto& attribute : one.attributes)
                    reported.bytes += attribute.second.size();
            }
        } while (parser.status <= xml_stream_parser::out_of_data);
    }
    finish(state, source, reported);
}

// The minimum: the bytes of the file, once through a buffer.
void floor_nodes(benchmark::State& state, const document& source) {
    std::vector<char> buffer(65536);
    for (auto _ : state) {
        const int file = ::open(source.path().c_str(), O_RDONLY | O_CLOEXEC);
        while (::read(file, buffer.data(), buffer.size()) > 0)
            benchmark::DoNotOptimize(buffer.data());
        ::close(file);
    }
}

#ifdef HAVE_EXPAT
void XMLCALL expat_start(void* user, const XML_Char*, const XML_Char** attributes) {
    auto& to = *static_cast<counts*>(user);
    ++to.elements;
    for (; *attributes != nullptr; attributes += 2)
        to.bytes += std::strlen(attributes[1]);
}

void XMLCALL expat_text(void* user, const XML_Char*, int length) {
    static_cast<counts*>(user)->bytes += static_cast<std::size_t>(length);
}

void expat_nodes(benchmark::State& state, const document& source) {
    counts reported;
    for (auto _ : state) {
        XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetUserData(parser, &reported);
        XML_SetStartElementHandler(parser, expat_start);
        XML_SetCharacterDataHandler(parser, expat_text);
        std::ifstream file(source.path(), std::ios::binary);
        bool is_last = false;
        while (!is_last) {
            void* const buffer = XML_GetBuffer(parser, 65536);
            file.read(static_cast<char*>(buffer), 65536);
            is_last = file.gcount() == 0;
            XML_ParseBuffer(parser, static_cast<int>(file.gcount()), is_last);
        }
        XML_ParserFree(parser);
    }
    finish(state, source, reported);
}
#endif

#ifdef HAVE_LIBXML2
void libxml2_nodes(benchmark::State& state, const document& source) {
    counts reported;
    for (auto _ : state) {
        xmlTextReaderPtr reader = xmlReaderForFile(source.path().c_str(), nullptr, 0);
        while (xmlTextReaderRead(reader) == 1) {
            switch (xmlTextReaderNodeType(reader)) {
            case XML_READER_TYPE_ELEMENT:
                ++reported.elements;
                while (xmlTextReaderMoveToNextAttribute(reader) == 1)
                    reported.bytes +=
                        static_cast<std::size_t>(xmlStrlen(xmlTextReaderConstValue(reader)));
                break;
            case XML_READER_TYPE_TEXT:
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
#endif

using operation = void (*)(benchmark::State&, const document&);

void add(const char* name, const document& (*source)(), const char* library, operation run) {
    const std::string full = std::string("follow/") + name + "/" + library;
    benchmark::RegisterBenchmark(full.c_str(), [run, source](benchmark::State& state) {
        run(state, source());
    })->Unit(benchmark::kMillisecond);
}

void add_all(const char* name, const document& (*source)()) {
    add(name, source, "tova", tova_nodes);
    add(name, source, "floor", floor_nodes);
    add(name, source, "plain", plain_nodes);
#ifdef HAVE_EXPAT
    add(name, source, "expat", expat_nodes);
#endif
#ifdef HAVE_LIBXML2
    add(name, source, "libxml2-reader", libxml2_nodes);
#endif
}

const bool added = [] {
    add_all("log", log_file);
    add_all("elements", small_elements);
    add_all("text", long_texts);
    return true;
}();

}  // namespace
