// A file of 100 MB, read from its beginning to its end a piece at a time. Every library counts the
// elements and the bytes of values and text that it was told of, so that none gets away without
// looking at them.
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <string>

#include <benchmark/benchmark.h>

#include <tova/parser/xml_stream_parser.hpp>

#ifdef HAVE_EXPAT
#include <cstring>
#include <expat.h>
#endif
#ifdef HAVE_LIBXML2
#include <libxml/xmlreader.h>
#endif

namespace {

using TOVA_2_18::parser::xml_stream_parser;

const std::size_t file_size = 100 << 20;

// A file of the run, removed at its end.
class document {
public:
    template <typename Piece>
    document(std::size_t elements_of_a_piece, const Piece& piece)
        : m_path("/tmp/tova_bench_stream_parser_XXXXXX") {
        const int descriptor = ::mkstemp(&m_path[0]);
        if (descriptor == -1)
            std::abort();
        ::close(descriptor);
        std::ofstream file(m_path, std::ios::binary);
        file << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n";
        for (std::size_t i = 0; m_size < file_size; ++i) {
            const std::string text = piece(std::to_string(i));
            file << text;
            m_size += text.size();
            m_elements += elements_of_a_piece;
        }
        file << "</root>\n";
    }
    ~document() { ::unlink(m_path.c_str()); }
    document(const document&) = delete;
    document& operator=(const document&) = delete;

    const std::string& path() const { return m_path; }
    std::size_t size() const { return m_size; }
    std::size_t elements() const { return m_elements; }

private:
    std::string m_path;
    std::size_t m_size = 0;
    std::size_t m_elements = 1;
};

const document& log_file() {
    static const document made(1, [](const std::string& number) {
        return "  <entry id=\"" + number +
               "\" level='info' host=\"server.one\">connection from 10.0.0.1, user &quot;" +
               number + "&quot; said hello</entry>\n";
    });
    return made;
}

const document& small_elements() {
    static const document made(4, [](const std::string& number) {
        return "  <item><id>" + number + "</id><on/><name>n" + number + "</name></item>\n";
    });
    return made;
}

const document& long_texts() {
    static const document made(1, [](const std::string& number) {
        std::string text = "<p>";
        for (int i = 0; i < 40; ++i)
            text += "Some words about number " + number + ", in \xC3\xA4hnlicher Form.\n";
        return text + "</p>\n";
    });
    return made;
}

// What a library has told of a file.
struct counts {
    std::size_t elements = 0;
    std::size_t bytes = 0;
};

void finish(benchmark::State& state, const document& source, const counts& told) {
    if (told.elements != source.elements() * static_cast<std::size_t>(state.iterations()))
        state.SkipWithError("wrong number of elements");
    auto bytes = told.bytes;
    benchmark::DoNotOptimize(bytes);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(source.size()));
}

void tova_nodes(benchmark::State& state, const document& source) {
    counts told;
    for (auto _ : state) {
        xml_stream_parser parser(source.path(), 1);
        while (parser.parse() <= xml_stream_parser::out_of_data || !parser.node_queue_empty()) {
            while (!parser.node_queue_empty()) {
                const xml_stream_parser::node one = parser.node_queue_pop();
                told.elements += one.type != xml_stream_parser::end_of_document;
                told.bytes += one.text.size();
                for (const auto& attribute : one.attributes)
                    told.bytes += attribute.second.size();
            }
        }
    }
    finish(state, source, told);
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
    counts told;
    for (auto _ : state) {
        XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetUserData(parser, &told);
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
    finish(state, source, told);
}
#endif

#ifdef HAVE_LIBXML2
void libxml2_nodes(benchmark::State& state, const document& source) {
    counts told;
    for (auto _ : state) {
        xmlTextReaderPtr reader = xmlReaderForFile(source.path().c_str(), nullptr, 0);
        while (xmlTextReaderRead(reader) == 1) {
            switch (xmlTextReaderNodeType(reader)) {
            case XML_READER_TYPE_ELEMENT:
                ++told.elements;
                while (xmlTextReaderMoveToNextAttribute(reader) == 1)
                    told.bytes +=
                        static_cast<std::size_t>(xmlStrlen(xmlTextReaderConstValue(reader)));
                break;
            case XML_READER_TYPE_TEXT:
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
