// Catalogs from disk, and messages by their keys.
//
// load: a file in five languages, of which the wanted one is kept with its fallbacks. The XML
// libraries parse the same file and keep no messages; gettext maps a binary catalog of the wanted
// language alone and looks up one text.
// lookup: every text once, in an order that is not that of the file.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <tova/i18n/message_catalogs.hpp>

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
#include <clocale>
#include <libintl.h>
#include <sys/stat.h>
#endif

namespace {

using TOVA_2_18::i18n::message_catalogs;
using TOVA_2_18::strings::ustring8;

// The folder of the generated files, removed at the end of the program.
class scratch_folder {
public:
    scratch_folder() {
        char name[] = "/tmp/bench_catalogs_XXXXXX";
        if (::mkdtemp(name) == nullptr)
            std::abort();
        m_path = name;
    }
    ~scratch_folder() {
        if (std::system(("rm -rf '" + m_path + "'").c_str()) != 0)
            std::fprintf(stderr, "%s is left behind\n", m_path.c_str());
    }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

const scratch_folder& scratch() {
    static const scratch_folder folder;
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
#endif

#ifdef HAVE_GETTEXT
// The binary form of a gettext catalog: a header of seven words, two tables of lengths and offsets,
// the keys in order and the texts; without the optional hash table it is searched by halving, with
// it by hashing, as msgfmt writes it.
std::string mo_file(const std::map<std::string, std::string>& texts) {
    const auto count = static_cast<std::uint32_t>(texts.size());
    std::uint32_t slots = count * 4 / 3 | 1;
    const auto is_prime = [](std::uint32_t n) {
        for (std::uint32_t d = 3; d * d <= n; d += 2)
            if (n % d == 0)
                return false;
        return true;
    };
    while (!is_prime(slots))
        slots += 2;
    const std::uint32_t keys_at = 28;
    const std::uint32_t texts_at = keys_at + 8 * count;
    const std::uint32_t hash_at = texts_at + 8 * count;
    std::uint32_t at = hash_at + 4 * slots;
    std::vector<std::uint32_t> words = {0x950412de, 0, count, keys_at, texts_at, slots, hash_at};
    std::vector<std::uint32_t> hash(slots);
    std::string strings;
    for (const auto& entry : texts) {
        words.push_back(static_cast<std::uint32_t>(entry.first.size()));
        words.push_back(at + static_cast<std::uint32_t>(strings.size()));
        strings.append(entry.first.c_str(), entry.first.size() + 1);

        std::uint32_t value = 0;
        for (const char c : entry.first) {
            value = (value << 4) + static_cast<unsigned char>(c);
            const std::uint32_t top = value & 0xf0000000u;
            if (top != 0)
                value = (value ^ (top >> 24)) ^ top;
        }
        std::uint32_t slot = value % slots;
        while (hash[slot] != 0)
            slot = (slot + 1 + value % (slots - 2)) % slots;
        hash[slot] = static_cast<std::uint32_t>((words.size() - 7) / 2);
    }
    for (const auto& entry : texts) {
        words.push_back(static_cast<std::uint32_t>(entry.second.size()));
        words.push_back(at + static_cast<std::uint32_t>(strings.size()));
        strings.append(entry.second.c_str(), entry.second.size() + 1);
    }
    words.insert(words.end(), hash.begin(), hash.end());
    return std::string(reinterpret_cast<const char*>(words.data()), 4 * words.size()) + strings;
}

// Makes the catalog known under a folder that gettext has not seen yet, so that it is read again.
bool bind_gettext(const catalog_file& file, const char* domain) {
    static int number = 0;
    static std::map<std::string, std::string> bytes;
    if (bytes[file.path].empty()) {
        // A process in the C locale translates nothing.
        if (std::setlocale(LC_ALL, "C.UTF-8") == nullptr || ::setenv("LANGUAGE", "de", 1) != 0)
            return false;
        bytes[file.path] = mo_file(file.texts);
        std::ofstream(file.path + ".mo", std::ios::binary) << bytes[file.path];
    }
    const std::string folder = scratch() / std::to_string(++number);
    ::mkdir(folder.c_str(), 0700);
    ::mkdir((folder + "/de").c_str(), 0700);
    ::mkdir((folder + "/de/LC_MESSAGES").c_str(), 0700);
    return ::link((file.path + ".mo").c_str(),
                  (folder + "/de/LC_MESSAGES/" + domain + ".mo").c_str()) == 0 &&
           ::bindtextdomain(domain, folder.c_str()) != nullptr;
}

void gettext_load(benchmark::State& state, const catalog_file& file) {
    const char* const key = file.keys.front().c_str();
    for (auto _ : state) {
        state.PauseTiming();
        const bool is_bound = bind_gettext(file, "app");
        state.ResumeTiming();
        if (!is_bound || ::dgettext("app", key) == key) {
            state.SkipWithError("not loaded");
            break;
        }
    }
    count_bytes(state, file);
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

// A library that keeps what it loads for the life of the process gets a fixed number of iterations,
// as it slows down with each.
void add(const std::string& operation, const std::string& library,
         void (*run)(benchmark::State&, const catalog_file&), int iterations = 0) {
    const auto unit = operation == "load" ? benchmark::kMillisecond : benchmark::kMicrosecond;
    const auto one = [&](const std::string& size, const catalog_file& (*file)()) {
        auto* const added =
            benchmark::RegisterBenchmark((operation + "/" + size + "/" + library).c_str(),
                                         [=](benchmark::State& state) { run(state, file()); });
        added->Unit(unit);
        if (iterations != 0)
            added->Iterations(iterations);
    };
    one("1MB", small_file);
    one("20MB", large_file);
}

const bool is_registered = [] {
    scratch();
    add("load", "tova", tova_load);
#ifdef HAVE_EXPAT
    add("load", "expat", expat_load);
#endif
#ifdef HAVE_LIBXML2
    add("load", "libxml2", libxml2_load);
#endif
#ifdef HAVE_PUGIXML
    add("load", "pugixml", pugixml_load);
#endif
    add("lookup", "tova", tova_lookup);
#ifdef HAVE_GETTEXT
    add("load", "gettext", gettext_load, 20);
    add("lookup", "gettext", gettext_lookup);
#endif
    return true;
}();

}  // namespace
