// Catalogs from disk, and messages by their keys.
//
// load: a file in five languages, of which the wanted one is kept with its fallbacks. The XML
// libraries parse the same file and keep no messages, but for pugixml_map, which puts those of the
// wanted language and of English into a map of strings. The floor reads the file and copies the
// loaded catalog. plain walks a list of tokens and builds every message immediately. lookup: every
// message once, in a different order from the file.
#include <tova/i18n/_private/xmc_file_loader.hpp>
#include <tova/i18n/message_catalogs.hpp>
#include <tova/parser/xml_token_stream.hpp>
#include <tova/system/files.hpp>

#include "scratch_folder.hpp"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

#ifdef HAVE_EXPAT
#include <expat.h>
#endif
#ifdef HAVE_LIBXML2
#include <libxml/parser.h>
#include <libxml/tree.h>
#endif
#ifdef HAVE_PUGIXML
#include <pugixml.hpp>
#endif
#ifdef HAVE_GETTEXT
#include "gettext_catalog.hpp"
#include <clocale>
#include <libintl.h>
#include <unistd.h>
#endif

namespace {

using tova::i18n::message_catalogs;
using tova::strings::ustring8;

const bench_support::scratch_folder& scratch() {
    static const bench_support::scratch_folder folder;
    return folder;
}

struct catalog_file {
    std::string path;
    std::size_t size;
    std::size_t elements;
    std::vector<ustring8> keys;                // in the order of the lookups
    std::map<std::string, std::string> texts;  // of the wanted language
};

catalog_file generate(const std::string& name, std::size_t size) {
    const char* const languages[] = {"en", "de", "de_AT", "fr", "ja"};
    const char* const words[] = {"Copied", "Kopiert wurden", "Kopiert",
                                 "Copi\xC3\xA9s :", "\xE3\x82\xB3\xE3\x83\x94\xE3\x83\xBC"};
    const std::size_t messages = size / 5 / 225;
    catalog_file made = {scratch() / name + ".xmc", 0, 1, {}, {}};
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xmc version=\"1.1\">\n";
    for (int language = 0; language < 5; ++language) {
        text += std::string("  <catalog name=\"app\" lang=\"") + languages[language] + "\">\n";
        ++made.elements;
        for (std::size_t i = 0; i < messages; ++i) {
            const std::string key =
                "section_" + std::to_string(i % 97) + ".key_" + std::to_string(i);
            const std::string front =
                std::string(words[language]) + " &lt;" + std::to_string(i) + "&gt; ";
            text += "    <msg name=\"" + key + "\" meta=\"A note for those who translate\">" +
                    front +
                    "<arg name=\"count\" type=\"int\" base=\"spaced_dec\"/>\n        <!-- of -->\n"
                    "        <arg name=\"size\" type=\"memory\" precision=\"1\"/>, <arg "
                    "name=\"folder\"/>"
                    ".<br/>...</msg>\n";
            made.elements += 5;
            if (language == 1)
                made.texts[key] = front + "%d %s, %s.\n...";
            if (language == 0)
                made.keys.push_back(key);
        }
        text += "  </catalog>\n";
    }
    text += "</xmc>\n";
    made.size = text.size();
    std::ofstream(made.path, std::ios::binary) << text;

    std::uint32_t random = 1;
    for (std::size_t i = made.keys.size(); i > 1; --i) {
        random = random * 1664525u + 1013904223u;
        std::swap(made.keys[i - 1], made.keys[random % i]);
    }
    return made;
}

const catalog_file& small_file() {
    static const catalog_file made = generate("1MB", 1 << 20);
    return made;
}

const catalog_file& large_file() {
    static const catalog_file made = generate("20MB", 20 << 20);
    return made;
}

void count_bytes(benchmark::State& state, const catalog_file& file) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(file.size));
}

void tova_load(benchmark::State& state, const catalog_file& file) {
    for (auto _ : state) {
        message_catalogs catalogs;
        const auto result = catalogs.load_file(ustring8(file.path), "de_DE");
        if (result.type != message_catalogs::no_error ||
            catalogs.count(ustring8("app")) != file.keys.size())
            state.SkipWithError("not loaded");
    }
    count_bytes(state, file);
}

void floor_load(benchmark::State& state, const catalog_file& file) {
    message_catalogs catalogs;
    catalogs.load_file(ustring8(file.path), "de_DE");
    const tova::i18n::catalog_t& loaded = catalogs.catalog(ustring8("app"));
    for (auto _ : state) {
        ustring8 text;
        tova::system::load_file(ustring8(file.path), text);
        const tova::i18n::catalog_t copy(loaded);
        benchmark::DoNotOptimize(text.data());
        benchmark::DoNotOptimize(&copy);
    }
    count_bytes(state, file);
}

// Our own code without its fast paths: the operations that a module calls on a list of tokens.
void plain_load(benchmark::State& state, const catalog_file& file) {
    using tova::i18n::_private::xmc_file_loader;
    for (auto _ : state) {
        message_catalogs::catalog_map catalogs;
        xmc_file_loader loader;
        loader.handle_language("de_DE");
        ustring8 text;
        tova::system::load_file(ustring8(file.path), text);
        tova::parser::xml_token_stream tokens;
        tokens.parse(text);
        xmc_file_loader::token_iterator cursor = tokens.begin();
        xmc_file_loader::token_iterator end = tokens.end();
        loader.parse_xmc_header(cursor, end);
        loader.parse_ignorable(cursor, end);
        while (cursor->type() == xmc_file_loader::token::element_start) {
            loader.parse_catalog(cursor, end);
            loader.parse_ignorable(cursor, end);
        }
        loader.combine_data(catalogs, {});
        if (catalogs["app"]->size() != file.keys.size())
            state.SkipWithError("not loaded");
    }
    count_bytes(state, file);
}

#ifdef HAVE_EXPAT
void expat_load(benchmark::State& state, const catalog_file& file) {
    for (auto _ : state) {
        std::size_t elements = 0;
        std::ifstream stream(file.path, std::ios::binary);
        const std::string text((std::istreambuf_iterator<char>(stream)), {});
        XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetUserData(parser, &elements);
        XML_SetElementHandler(
            parser,
            [](void* user, const XML_Char*, const XML_Char**) {
                ++*static_cast<std::size_t*>(user);
            },
            [](void*, const XML_Char*) {});
        XML_SetCharacterDataHandler(parser, [](void*, const XML_Char*, int) {});
        if (XML_Parse(parser, text.data(), static_cast<int>(text.size()), 1) != XML_STATUS_OK ||
            elements != file.elements)
            state.SkipWithError("not parsed");
        XML_ParserFree(parser);
    }
    count_bytes(state, file);
}
#endif

#ifdef HAVE_LIBXML2
void libxml2_load(benchmark::State& state, const catalog_file& file) {
    for (auto _ : state) {
        xmlDocPtr document = xmlReadFile(file.path.c_str(), nullptr, XML_PARSE_HUGE);
        if (document == nullptr)
            state.SkipWithError("not parsed");
        xmlFreeDoc(document);
    }
    count_bytes(state, file);
}
#endif

#ifdef HAVE_PUGIXML
void pugixml_load(benchmark::State& state, const catalog_file& file) {
    for (auto _ : state) {
        pugi::xml_document document;
        if (!document.load_file(file.path.c_str(), pugi::parse_full))
            state.SkipWithError("not parsed");
    }
    count_bytes(state, file);
}

// The messages of the wanted language, or of English where it has none, as strings. Each argument
// is its name after a '%'.
void pugixml_map_load(benchmark::State& state, const catalog_file& file) {
    for (auto _ : state) {
        pugi::xml_document document;
        document.load_file(file.path.c_str(), pugi::parse_default | pugi::parse_ws_pcdata);
        std::map<std::string, std::pair<int, std::string>> messages;
        for (const pugi::xml_node& catalog : document.child("xmc").children("catalog")) {
            const std::string language = catalog.attribute("lang").value();
            const int weight = language == "de" ? 2 : language == "en" ? 1 : 0;
            if (weight == 0)
                continue;
            for (const pugi::xml_node& message : catalog.children("msg")) {
                auto& kept = messages[message.attribute("name").value()];
                if (kept.first > weight)
                    continue;
                kept.first = weight;
                std::string& text = kept.second;
                text.clear();
                for (const pugi::xml_node& part : message.children()) {
                    if (part.type() == pugi::node_pcdata)
                        text += part.value();
                    else
                        text.append("%").append(part.attribute("name").value());
                }
            }
        }
        if (messages.size() != file.keys.size())
            state.SkipWithError("not loaded");
    }
    count_bytes(state, file);
}
#endif

#ifdef HAVE_GETTEXT
// Binds a domain to a folder that gettext has not seen yet, so that it reads the catalog again.
bool bind_gettext(const catalog_file& file, const char* domain) {
    static int number = 0;
    static std::map<std::string, std::string> bytes;
    if (bytes[file.path].empty()) {
        // A process in the C locale translates nothing.
        if (std::setlocale(LC_ALL, "C.UTF-8") == nullptr || ::setenv("LANGUAGE", "de", 1) != 0)
            return false;
        bytes[file.path] = bench_support::gettext_catalog(file.texts);
        std::ofstream(file.path + ".mo", std::ios::binary) << bytes[file.path];
    }
    const std::string folder = scratch() / std::to_string(++number);
    const std::string path = bench_support::make_gettext_folders(folder, "de", domain);
    return ::link((file.path + ".mo").c_str(), path.c_str()) == 0 &&
           ::bindtextdomain(domain, folder.c_str()) != nullptr;
}

void gettext_lookup(benchmark::State& state, const catalog_file& file) {
    // Bound once for all runs.
    static const bool is_bound =
        bind_gettext(small_file(), "small") && bind_gettext(large_file(), "large");
    const char* const domain = &file == &small_file() ? "small" : "large";
    if (!is_bound || ::dgettext(domain, file.keys[0].c_str()) == file.keys[0].c_str())
        return state.SkipWithError("not loaded");
    for (auto _ : state)
        for (const ustring8& key : file.keys)
            benchmark::DoNotOptimize(::dgettext(domain, key.c_str()));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(file.keys.size()));
}
#endif

void tova_lookup(benchmark::State& state, const catalog_file& file) {
    message_catalogs catalogs;
    catalogs.load_file(ustring8(file.path), "de_DE");
    const ustring8 name("app");
    for (auto _ : state)
        for (const ustring8& key : file.keys)
            benchmark::DoNotOptimize(&catalogs.message(name, key));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(file.keys.size()));
}

void add(const std::string& operation, const std::string& library,
         void (*run)(benchmark::State&, const catalog_file&)) {
    const auto unit = operation == "load" ? benchmark::kMillisecond : benchmark::kMicrosecond;
    const auto one = [&](const std::string& size, const catalog_file& (*file)()) {
        benchmark::RegisterBenchmark((operation + "/" + size + "/" + library).c_str(),
                                     [=](benchmark::State& state) { run(state, file()); })
            ->Unit(unit);
    };
    one("1MB", small_file);
    one("20MB", large_file);
}

const bool is_registered = [] {
    scratch();
    add("load", "tova", tova_load);
    add("load", "floor", floor_load);
    add("load", "plain", plain_load);
#ifdef HAVE_EXPAT
    add("load", "expat", expat_load);
#endif
#ifdef HAVE_LIBXML2
    add("load", "libxml2", libxml2_load);
#endif
#ifdef HAVE_PUGIXML
    add("load", "pugixml", pugixml_load);
    add("load", "pugixml_map", pugixml_map_load);
#endif
    add("lookup", "tova", tova_lookup);
#ifdef HAVE_GETTEXT
    add("lookup", "gettext", gettext_lookup);
#endif
    return true;
}();

}  // namespace
