// Runs work of a chosen size: `proof_growth NAME SIZE` runs one workload once, and `proof_growth
// --list` prints the names, each with its initial size and whether it is known to grow faster than
// its input. A script counts the instructions for one size and for twice that size.
//
// Each workload makes its own input in linear time, so any faster growth comes from the library.
#include <tova/tova.hpp>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace tova;
using strings::ustring16;
using strings::ustring32;
using strings::ustring8;

// --- Input --------------------------------------------------------------------------------------

std::string repeated(const std::string& piece, std::size_t count) {
    std::string text;
    text.reserve(piece.size() * count);
    for (std::size_t i = 0; i < count; ++i)
        text += piece;
    return text;
}

std::string filled_with(std::size_t size, const std::string& piece) {
    return repeated(piece, size / piece.size() + 1);
}

ustring8 narrow(const std::string& text) {
    return ustring8(text);
}
ustring16 wide16(const std::string& text) {
    return strings::utf8_to_utf16(ustring8(text));
}
ustring32 wide32(const std::string& text) {
    return strings::utf8_to_utf32(ustring8(text));
}

const char latin[] = "Gr\xC3\xBC\xC3\x9F Gott, \xC3\x96sterreich ";
const char chinese[] = "\xE4\xB8\xAD\xE6\x96\x87\xE5\xAD\x97";
const char emoji[] = "\xF0\x9F\x98\x80";
const char broken[] = "\xE4\xB8 \xFF\xC3(\x80";

volatile std::size_t g_sink;  // keeps results alive

template <typename String>
void keep(const String& text) {
    g_sink = g_sink + text.size();
}

// A path in the caller's scratch directory.
void write_file(const std::string& name, const std::string& content) {
    std::ofstream(name, std::ios::binary) << content;
}

std::string numbered(const std::string& before, std::size_t number, const std::string& after) {
    return before + std::to_string(number) + after;
}

std::string sequence(std::size_t count, const std::string& before, const std::string& after) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += numbered(before, i, after);
    return text;
}

// --- Strings ------------------------------------------------------------------------------------

struct workload {
    const char* name;
    std::size_t size;
    std::function<void(std::size_t)> run;
    bool known_to_grow;  // growth.py says why
};

typedef std::vector<workload> workloads;

template <typename Convert>
void add_conversions(workloads& all, const char* const (&names)[5], const Convert& convert) {
    const char* const pieces[] = {"plain text ", latin, chinese, emoji, broken};
    for (int i = 0; i < 5; ++i) {
        const std::string piece = pieces[i];
        all.push_back({names[i], 400000,
                       [convert, piece](std::size_t n) { convert(filled_with(n, piece)); }, false});
    }
}

void add_strings(workloads& all) {
    add_conversions(all,
                    {"utf8 to utf16, ASCII", "utf8 to utf16, Latin", "utf8 to utf16, CJK",
                     "utf8 to utf16, emoji", "utf8 to utf16, invalid"},
                    [](const std::string& text) { keep(strings::utf8_to_utf16(narrow(text))); });
    add_conversions(all,
                    {"utf8 to utf32, ASCII", "utf8 to utf32, Latin", "utf8 to utf32, CJK",
                     "utf8 to utf32, emoji", "utf8 to utf32, invalid"},
                    [](const std::string& text) { keep(strings::utf8_to_utf32(narrow(text))); });
    add_conversions(all,
                    {"utf16 to utf8, ASCII", "utf16 to utf8, Latin", "utf16 to utf8, CJK",
                     "utf16 to utf8, emoji", "utf16 to utf8, bytes as units"},
                    [](const std::string& text) {
                        ustring16 wide = wide16(text);
                        if (wide.size() < text.size() / 8) {  // invalid input became "-1"
                            wide = ustring16();
                            for (const char byte : text)
                                wide += static_cast<unsigned short>(0xD800 + (byte & 0x7FF));
                        }
                        keep(strings::utf16_to_utf8(wide));
                        keep(strings::utf16_to_utf32(wide));
                    });
    add_conversions(all,
                    {"utf32 to utf8 and utf16, ASCII", "utf32 to utf8 and utf16, Latin",
                     "utf32 to utf8 and utf16, CJK", "utf32 to utf8 and utf16, emoji",
                     "utf32 to utf8 and utf16, invalid"},
                    [](const std::string& text) {
                        ustring32 wide;
                        for (const char byte : text)
                            wide += static_cast<wchar_t>(byte);
                        keep(strings::utf32_to_utf8(wide));
                        keep(strings::utf32_to_utf16(wide));
                    });
    all.push_back({"character_index and unichar", 200000,
                   [](std::size_t n) {
                       const ustring8 text = narrow(filled_with(n, chinese));
                       g_sink = g_sink + strings::character_index(text, n / 4);
                   },
                   false});
    all.push_back({"swapped bytes, and a byte order mark", 400000,
                   [](std::size_t n) {
                       ustring16 text = wide16(filled_with(n, latin));
                       keep(strings::swap_string_bytes_order(text));
                       strings::check_BOM_and_modify_swap(text);
                   },
                   false});
    all.push_back({"case, 8 bits", 400000,
                   [](std::size_t n) {
                       const ustring8 text = narrow(filled_with(n, latin));
                       keep(strings::to_lower(text));
                       keep(strings::to_upper(text));
                       keep(strings::lower_case(text, 1, n / 2));
                   },
                   false});
    all.push_back({"case, 16 bits", 400000,
                   [](std::size_t n) { keep(strings::to_upper(wide16(filled_with(n, latin)))); },
                   false});
    all.push_back({"case, 32 bits", 400000,
                   [](std::size_t n) { keep(strings::to_lower(wide32(filled_with(n, latin)))); },
                   false});
    all.push_back({"gh2 case, length and validation", 200000,
                   [](std::size_t n) {
                       const std::string text = filled_with(n, latin);
                       keep(strings::gh2::tolower(text));
                       keep(strings::gh2::toupper(text));
                       g_sink = g_sink + strings::gh2::get_utf8_length(text.data(), text.size()) +
                                strings::gh2::validate_utf8(text.data(), text.size());
                   },
                   false});
    all.push_back({"gh2 to and from the locale's characters", 100000,
                   [](std::size_t n) {
                       keep(strings::gh2::to_ansi(filled_with(n, latin)));
                       keep(strings::gh2::from_ansi(filled_with(n, latin)));
                   },
                   false});
    all.push_back({"split, short fields", 200000,
                   [](std::size_t n) {
                       keep(strings::split_string(narrow(filled_with(n, "ab,")), ustring8(","), 0));
                       keep(strings::split_string(filled_with(n, "ab,"), std::string(","), 0));
                   },
                   false});
    all.push_back({"split, 16 and 32 bits", 100000,
                   [](std::size_t n) {
                       const std::string text = filled_with(n, "field one; ");
                       keep(strings::split_string(wide16(text), wide16("; "), 0));
                       keep(strings::split_string(wide32(text), wide32("; "), 0));
                   },
                   false});
    all.push_back(
        {"split by half of a text that almost matches", 100000,
         [](std::size_t n) {
             const std::string separator = std::string(n / 2, 'a') + 'b';
             keep(strings::split_string(narrow(std::string(n, 'a')), narrow(separator), 0));
         },
         false});
    all.push_back({"split by such a text, 16 and 32 bits", 50000,
                   [](std::size_t n) {
                       const std::string text(n, 'a');
                       const std::string separator = std::string(n / 2, 'a') + 'b';
                       keep(strings::split_string(wide16(text), wide16(separator), 0));
                       keep(strings::split_string(wide32(text), wide32(separator), 0));
                   },
                   false});
    const struct {
        const char* name;
        const char* search;
        const char* replacement;
    } replacements[] = {{"replace by the same size", "ab", "xy"},
                        {"replace by less", "ab", ""},
                        {"replace by more", "ab", "longer"}};
    for (const auto& one : replacements)
        all.push_back({one.name, 200000,
                       [one](std::size_t n) {
                           const std::string text = filled_with(n, "ab cd ");
                           std::string bytes = text;
                           g_sink = g_sink + strings::replace_all(bytes, std::string(one.search),
                                                                  std::string(one.replacement));
                           ustring16 units = wide16(text);
                           g_sink = g_sink + strings::replace_all(units, wide16(one.search),
                                                                  wide16(one.replacement));
                           ustring32 wide = wide32(text);
                           g_sink = g_sink + strings::replace_all(wide, wide32(one.search),
                                                                  wide32(one.replacement));
                       },
                       false});
    all.push_back({"replace half of a text that almost matches", 100000,
                   [](std::size_t n) {
                       ustring8 text = narrow(std::string(n, 'a'));
                       g_sink = g_sink + strings::replace_all(text,
                                                              narrow('b' + std::string(n / 2, 'a')),
                                                              ustring8("x"));
                   },
                   false});
    all.push_back({"gh2::replace_all, half of a text that almost matches", 100000,
                   [](std::size_t n) {
                       std::string text(n, 'a');
                       g_sink = g_sink +
                                strings::gh2::replace_all(text, 'b' + std::string(n / 2, 'a'), "x");
                   },
                   false});
    const struct {
        const char* name;
        const char* piece;
    } in_c_locale[] = {{"gh2::to_ansi in the C locale: ASCII", "Gruess Gott, Oesterreich "},
                       {"gh2::to_ansi in the C locale: German", latin}};
    for (const auto& one : in_c_locale)
        all.push_back(
            {one.name, 200000,
             [one](std::size_t n) { keep(strings::gh2::to_ansi(filled_with(n, one.piece))); },
             false});
    const struct {
        const char* name;
        const char* piece;
    } encoded_1252[] = {{"code page 1252, encoded: its own characters", latin},
                        {"code page 1252, encoded: Chinese", chinese}};
    for (const auto& one : encoded_1252)
        all.push_back({one.name, 200000,
                       [one](std::size_t n) {
                           keep(strings::code_page(strings::code_page::encoding_1252)
                                    .encode(narrow(filled_with(n, one.piece))));
                       },
                       false});
    for (const int page : {932, 936, 949, 950, 1252, 1255, 20866, 28591}) {
        static std::vector<std::string> names;
        names.reserve(64);
        const auto add = [&](const std::string& name, const std::string& piece) {
            names.push_back(name + std::to_string(page));
            all.push_back({names.back().c_str(), 50000,
                           [page, piece](std::size_t n) {
                               const auto type =
                                   static_cast<strings::code_page::encoding_type>(page);
                               const strings::code_page converter(type);
                               const std::string encoded =
                                   converter.encode(narrow(filled_with(n, piece)));
                               keep(encoded);
                               keep(converter.as_utf8(encoded));
                           },
                           false});
        };
        add("code page, what it has: ", "plain text ");
        add("code page, what it lacks: ", emoji);
    }
}

// --- Numbers, values and arguments --------------------------------------------------------------

void add_values(workloads& all) {
    all.push_back({"integer of many digits", 400000,
                   [](std::size_t n) {
                       const std::string text = std::string(n, '0') + "7";
                       g_sink =
                           g_sink + static_cast<std::size_t>(generic::convert::str_to_long(
                                        text.data(), text.size(), types::radix_t::decimal, false));
                   },
                   false});
    all.push_back({"floating-point number of many digits", 100000,
                   [](std::size_t n) {
                       g_sink = g_sink + (generic::convert::str_to_double(
                                              narrow("1." + std::string(n, '3'))) > 1);
                   },
                   false});
    all.push_back({"floating-point number that is nearly a tie", 100000,
                   [](std::size_t n) {
                       g_sink = g_sink +
                                (generic::convert::str_to_double(
                                     narrow("9007199254740993." + std::string(n, '0') + "1")) > 1);
                   },
                   false});
    all.push_back({"long texts in variants", 400000,
                   [](std::size_t n) {
                       const types::variant value(narrow(filled_with(n, latin)));
                       const types::variant copy(value);
                       keep(copy.as_string());
                       keep(types::variant(copy.as_string()).as_string());
                   },
                   false});
    all.push_back({"many variants", 40000,
                   [](std::size_t n) {
                       std::vector<types::variant> values;
                       for (std::size_t i = 0; i < n; ++i)
                           values.push_back(types::variant(static_cast<int>(i)));
                       const std::vector<types::variant> copies(values);
                       for (const auto& value : copies)
                           g_sink = g_sink + static_cast<std::size_t>(value.as_int());
                   },
                   false});
    // A new name is compared with all others, as the header documents.
    all.push_back({"a list of arguments, filled, copied and cleared", 2000,
                   [](std::size_t n) {
                       generic::varg_list list;
                       for (std::size_t i = 0; i < n; ++i)
                           list.push_back(narrow(numbered("name", i, "")), static_cast<int>(i));
                       generic::varg_list copy(list);
                       copy.clear();
                   },
                   true});
}

// --- Documents ----------------------------------------------------------------------------------

const char declaration[] = "<?xml version='1.0'?>";

void parse_both(const std::string& body) {
    const ustring8 text = narrow(declaration + body);
    parser::xml_parser events;
    g_sink = g_sink + static_cast<std::size_t>(events.parse(text).type);
    parser::xml_token_stream tokens;
    g_sink = g_sink + static_cast<std::size_t>(tokens.parse(text).type);
}

void follow(const std::string& body, unsigned int open_depth) {
    write_file("log.xml", declaration + body);
    parser::xml_stream_parser log(ustring8("log.xml"), open_depth);
    unsigned long read = 0;
    do {
        read = log.parse_offset();
        log.parse();
        while (!log.node_queue_empty())
            keep(log.node_queue_pop().name);
    } while (log.error() == parser::xml_stream_parser::no_error && log.parse_offset() > read);
}

void add_document(workloads& all, const char* in_memory, const char* followed, std::size_t size,
                  const std::function<std::string(std::size_t)>& body) {
    all.push_back({in_memory, size, [body](std::size_t n) { parse_both(body(n)); }, false});
    if (followed)
        all.push_back({followed, size, [body](std::size_t n) { follow(body(n), 1); }, false});
}

void add_documents(workloads& all) {
    add_document(all, "XML: elements", "followed XML: elements", 20000, [](std::size_t n) {
        return "<r>" + sequence(n, "<a i='", "'>text</a>\n") + "</r>";
    });
    add_document(all, "XML: depth", "followed XML: depth", 20000,
                 [](std::size_t n) { return repeated("<a>", n) + repeated("</a>", n); });
    add_document(all, "XML: attributes of one element", nullptr, 10000,
                 [](std::size_t n) { return "<r " + sequence(n, "a", "='v' ") + "/>"; });
    add_document(all, "XML: a long text", nullptr, 300000,
                 [](std::size_t n) { return "<r>" + filled_with(n, latin) + "</r>"; });
    add_document(all, "XML: a long attribute", nullptr, 300000,
                 [](std::size_t n) { return "<r a='" + filled_with(n, latin) + "'/>"; });
    add_document(all, "XML: a long comment", "followed XML: a long comment", 300000,
                 [](std::size_t n) { return "<r><!-- " + filled_with(n, "- ->") + " --></r>"; });
    add_document(all, "XML: white space", "followed XML: white space", 300000,
                 [](std::size_t n) { return "<r>" + filled_with(n, " \n\t") + "</r>"; });
    add_document(all, "XML: entities and references", "followed XML: entities and references",
                 30000,
                 [](std::size_t n) { return "<r>" + repeated("&amp;&#65;&lt;", n) + "</r>"; });
    add_document(all, "XML: a long name", nullptr, 200000,
                 [](std::size_t n) { return "<" + std::string(n, 'n') + "/>"; });
    add_document(all, "XML: elements that nobody closes", "followed XML: nobody closes", 20000,
                 [](std::size_t n) { return repeated("<a>", n); });
    add_document(all, "XML: an entity that nobody ends", nullptr, 300000,
                 [](std::size_t n) { return "<r>&" + std::string(n, 'e') + "</r>"; });
    // No construct of a followed file may be longer than the parser's 64 KiB.
    all.push_back({"followed XML: texts and attributes of 30 KiB", 10,
                   [](std::size_t n) {
                       const std::string text = filled_with(30000, latin);
                       follow("<r>" + repeated("<a b='" + text + "'>" + text + "</a>", n) + "</r>",
                              1);
                   },
                   false});
    all.push_back({"followed XML: recovery after each broken element", 3000,
                   [](std::size_t n) {
                       write_file("log.xml",
                                  declaration + ("<r>" + repeated("<a></b><c/>", n) + "</r>"));
                       parser::xml_stream_parser log(ustring8("log.xml"), 1);
                       const std::list<ustring8> wanted(1, ustring8("c"));
                       for (std::size_t i = 0; i < n; ++i) {
                           log.parse();
                           while (!log.node_queue_empty())
                               log.node_queue_pop();
                           if (log.error() == parser::xml_stream_parser::no_error)
                               break;
                           log.recover(wanted);
                       }
                   },
                   false});
    all.push_back({"followed XML: a file that grows by one element", 500,
                   [](std::size_t n) {
                       write_file("log.xml", std::string(declaration) + "<r>");
                       parser::xml_stream_parser log(ustring8("log.xml"), 1);
                       for (std::size_t i = 0; i < n; ++i) {
                           std::ofstream("log.xml", std::ios::app) << "<a i='1'>text</a>\n";
                           log.parse();
                           while (!log.node_queue_empty())
                               log.node_queue_pop();
                       }
                   },
                   false});
}

// --- Messages -----------------------------------------------------------------------------------

void load_catalogs(const std::string& file, const char* locale) {
    i18n::message_catalogs catalogs;
    auto result = catalogs.load_file(ustring8(file), ustring8(locale));
    g_sink = g_sink + static_cast<std::size_t>(result.type);
}

std::string catalog_file(const std::string& content) {
    return std::string("<?xml version=\"1.0\"?>\n<xmc version=\"1.1\">\n") + content + "</xmc>\n";
}

void add_messages(workloads& all) {
    all.push_back({"catalog: messages", 3000,
                   [](std::size_t n) {
                       write_file("a.xmc",
                                  catalog_file("<catalog name='a' lang='en'>" +
                                               sequence(n, "<msg name='m", "'>one text</msg>\n") +
                                               "</catalog>"));
                       load_catalogs("a.xmc", "en");
                   },
                   false});
    all.push_back({"catalog: messages of one name", 3000,
                   [](std::size_t n) {
                       write_file("a.xmc",
                                  catalog_file("<catalog name='a' lang='en'>" +
                                               repeated("<msg name='m'>one text</msg>\n", n) +
                                               "</catalog>"));
                       load_catalogs("a.xmc", "en");
                   },
                   false});
    all.push_back({"catalog: catalogs", 2000,
                   [](std::size_t n) {
                       write_file("a.xmc", catalog_file(sequence(
                                               n, "<catalog name='c",
                                               "' lang='en'><msg name='m'>t</msg></catalog>\n")));
                       load_catalogs("a.xmc", "en");
                   },
                   false});
    all.push_back({"catalog: languages of one catalog", 2000,
                   [](std::size_t n) {
                       write_file("a.xmc",
                                  catalog_file(sequence(n, "<catalog name='c' lang='l",
                                                        "'><msg name='m'>t</msg></catalog>\n")));
                       load_catalogs("a.xmc", "l7");
                   },
                   false});
    all.push_back({"catalog: items of one message", 3000,
                   [](std::size_t n) {
                       write_file("a.xmc",
                                  catalog_file("<catalog name='a' lang='en'><msg name='m'>" +
                                               repeated("text <arg name='n' type='int'/> ", n) +
                                               "</msg></catalog>"));
                       load_catalogs("a.xmc", "en");
                   },
                   false});
    all.push_back({"catalog: a long text", 200000,
                   [](std::size_t n) {
                       write_file("a.xmc",
                                  catalog_file("<catalog name='a' lang='en'><msg name='m'>" +
                                               filled_with(n, latin) + "</msg></catalog>"));
                       load_catalogs("a.xmc", "en");
                   },
                   false});
    all.push_back({"catalog: includes of one file", 300,
                   [](std::size_t n) {
                       write_file("a.xmc",
                                  catalog_file(sequence(n, "<include file='b", ".xmc'/>\n")));
                       for (std::size_t i = 0; i < n; ++i)
                           write_file(numbered("b", i, ".xmc"), catalog_file(""));
                       load_catalogs("a.xmc", "en");
                   },
                   false});
    all.push_back({"catalog: a chain of includes", 300,
                   [](std::size_t n) {
                       for (std::size_t i = 0; i < n; ++i)
                           write_file(
                               numbered("b", i, ".xmc"),
                               catalog_file(numbered("<include file='b", i + 1, ".xmc'/>\n")));
                       write_file(numbered("b", n, ".xmc"), catalog_file(""));
                       load_catalogs("b0.xmc", "en");
                   },
                   false});
    all.push_back({"message: looked up among many", 3000,
                   [](std::size_t n) {
                       write_file("a.xmc", catalog_file("<catalog name='a' lang='en'>" +
                                                        sequence(n, "<msg name='m", "'>t</msg>\n") +
                                                        "</catalog>"));
                       i18n::message_catalogs catalogs;
                       catalogs.load_file(ustring8("a.xmc"), ustring8("en"));
                       for (std::size_t i = 0; i < n; ++i)
                           keep(catalogs.message("a", narrow(numbered("m", i, "")))
                                    .as_string(generic::varg_list()));
                   },
                   false});
    all.push_back({"message: many items rendered", 3000,
                   [](std::size_t n) {
                       write_file("a.xmc",
                                  catalog_file("<catalog name='a' lang='en'><msg name='m'>" +
                                               repeated("text <arg name='n' type='int'/> ", n) +
                                               "</msg></catalog>"));
                       i18n::message_catalogs catalogs;
                       catalogs.load_file(ustring8("a.xmc"), ustring8("en"));
                       generic::varg_list arguments;
                       arguments.push_back("n", 42);
                       keep(catalogs.message("a", "m").as_string(arguments));
                   },
                   false});
    all.push_back({"message: a long argument rendered", 300000,
                   [](std::size_t n) {
                       write_file("a.xmc", catalog_file("<catalog name='a' lang='en'><msg name='m'>"
                                                        "<arg name='n'/></msg></catalog>"));
                       i18n::message_catalogs catalogs;
                       catalogs.load_file(ustring8("a.xmc"), ustring8("en"));
                       generic::varg_list arguments;
                       arguments.push_back("n", narrow(filled_with(n, latin)));
                       keep(catalogs.message("a", "m").as_string(arguments));
                   },
                   false});
}

// --- Settings -----------------------------------------------------------------------------------

void load_settings(const std::string& content) {
    write_file("a.cfg", content);
    config::file_item file(ustring8("a.cfg"));
    config::config_item_list none;
    file.load(none);
    g_sink = g_sink + (file.get_value(ustring8("key1")) != nullptr);
}

void add_settings(workloads& all) {
    all.push_back({"settings: entries", 3000,
                   [](std::size_t n) { load_settings(sequence(n, "key", " = value\n")); }, false});
    all.push_back({"settings: sections", 2000,
                   [](std::size_t n) { load_settings(sequence(n, "[s", "]\nkey = value\n")); },
                   false});
    all.push_back({"settings: depth of a key", 2000,
                   [](std::size_t n) { load_settings(repeated("k.", n) + "last = 1\n"); }, false});
    all.push_back(
        {"settings: elements of an array", 3000,
         [](std::size_t n) { load_settings("list[] = " + repeated("item, ", n) + "end\n"); },
         false});
    all.push_back(
        {"settings: a long value", 200000,
         [](std::size_t n) { load_settings("key = \"" + filled_with(n, latin) + "\"\n"); }, false});
    all.push_back({"settings: comments", 30000,
                   [](std::size_t n) { load_settings(repeated("# a remark\n", n)); }, false});
    all.push_back({"settings: a long comment", 300000,
                   [](std::size_t n) { load_settings("# " + std::string(n, 'c')); }, false});
    all.push_back({"settings: one key again and again", 3000,
                   [](std::size_t n) { load_settings(repeated("key = value\n", n)); }, false});
    all.push_back({"settings: entries saved", 2000,
                   [](std::size_t n) {
                       write_file("a.cfg", "[s]\n" + sequence(n, "key", " = value\n"));
                       config::file_item file(ustring8("a.cfg"));
                       config::config_item_list none;
                       file.load(none);
                       file.save(none);
                   },
                   false});
    all.push_back({"settings: a deep key saved", 300,
                   [](std::size_t n) {
                       write_file("a.cfg", repeated("k.", n) + "last = 1\n");
                       config::file_item file(ustring8("a.cfg"));
                       config::config_item_list none;
                       file.load(none);
                       file.save(none);
                   },
                   true});
    all.push_back({"settings: arguments of the command line", 3000,
                   [](std::size_t n) {
                       std::vector<std::string> words;
                       for (std::size_t i = 0; i < n; ++i)
                           words.push_back(numbered("-key", i, "=value"));
                       std::vector<const char*> pointers(1, "program");
                       for (const auto& word : words)
                           pointers.push_back(word.c_str());
                       config::commandline_item item(static_cast<unsigned int>(pointers.size()),
                                                     pointers.data());
                       config::config_item_list none;
                       item.load(none);
                   },
                   false});
    all.push_back({"settings: a long argument of the command line", 100000,
                   [](std::size_t n) {
                       const std::string word = "-key=" + filled_with(n, "value");
                       const char* const pointers[] = {"program", word.c_str(), nullptr};
                       config::commandline_item item(2, pointers);
                       config::config_item_list none;
                       item.load(none);
                   },
                   false});
    all.push_back({"settings: variables of the environment", 3000,
                   [](std::size_t n) {
                       std::vector<std::string> words;
                       for (std::size_t i = 0; i < n; ++i)
                           words.push_back(numbered("key_", i, "=value"));
                       std::vector<const char*> pointers;
                       for (const auto& word : words)
                           pointers.push_back(word.c_str());
                       pointers.push_back(nullptr);
                       config::enviroment_item item(pointers.data());
                       config::config_item_list none;
                       item.load(none);
                   },
                   false});
    all.push_back({"settings: a tree, filled, copied, listed and erased", 3000,
                   [](std::size_t n) {
                       config::config_tree tree;
                       for (std::size_t i = 0; i < n; ++i)
                           tree.set_node(narrow(numbered("a.b", i % 100, numbered(".c", i, ""))),
                                         types::variant(1), 0);
                       config::config_tree copy(tree);
                       config::config_node_list nodes;
                       copy.get_value_pair_array(ustring8(), nodes, true, ustring8());
                       copy.erase();
                   },
                   false});
    all.push_back({"settings: names of a deep tree", 300,
                   [](std::size_t n) {
                       config::config_tree tree;
                       tree.set_node(narrow(repeated("k.", n) + "last"), types::variant(1), 0);
                       config::config_node_list nodes;
                       tree.get_value_pair_array(ustring8(), nodes, true, ustring8());
                       std::ostringstream out;
                       tree.dump(out, 0);
                   },
                   true});
}

// --- Serialization and files --------------------------------------------------------------------

template <typename Buffer>
void write_and_read(std::size_t n) {
    Buffer buffer;
    for (std::size_t i = 0; i < n; ++i) {
        buffer.append_int32(static_cast<int>(i));
        buffer.append_double(1.0 / static_cast<double>(i + 1), 17);
        buffer.append_string("some text");
    }
    const Buffer copy(buffer.as_str());
    for (std::size_t i = 0; i < n; ++i) {
        g_sink = g_sink + static_cast<std::size_t>(copy.read_int32());
        g_sink = g_sink + (copy.read_double() > 0);
        keep(copy.read_string());
    }
}

void add_buffers(workloads& all) {
    using serialization::labeled_serialize_buffer;
    using serialization::labeled_text_buffer;
    all.push_back(
        {"text buffer: values", 5000, write_and_read<serialization::serialize_text_buf>, false});
    all.push_back({"binary buffer: values", 10000,
                   write_and_read<serialization::serialize_binary_buf>, false});
    all.push_back({"text buffer: a long string", 300000,
                   [](std::size_t n) {
                       serialization::serialize_text_buf buffer;
                       buffer.append_string(std::string(n, 'x'));
                       keep(buffer.read_string());
                   },
                   false});
    all.push_back({"text buffer: buffers inside", 3000,
                   [](std::size_t n) {
                       serialization::serialize_text_buf buffer;
                       serialization::serialize_text_buf inner;
                       inner.append_string("text");
                       for (std::size_t i = 0; i < n; ++i)
                           buffer.append_buffer(inner);
                       for (std::size_t i = 0; i < n; ++i)
                           delete buffer.read_buffer();
                   },
                   false});
    all.push_back({"labelled buffer: values", 5000,
                   [](std::size_t n) {
                       labeled_text_buffer buffer;
                       for (std::size_t i = 0; i < n; ++i)
                           buffer.add_value(numbered("label", i, ""), types::variant(1));
                       const labeled_text_buffer read(buffer.as_str());
                       keep(read.as_str());
                   },
                   false});
    all.push_back({"labelled buffer: groups in groups", 5000,
                   [](std::size_t n) {
                       labeled_text_buffer buffer;
                       labeled_serialize_buffer* group = &buffer;
                       for (std::size_t i = 0; i < n; ++i)
                           group = group->create_group("g");
                       group->add_value("v", types::variant(1));
                       const labeled_text_buffer read(buffer.as_str());
                       const labeled_serialize_buffer* walk = &read;
                       while (walk->has_group("g"))
                           walk = walk->retrieve_group("g");
                       keep(read.as_str());
                   },
                   false});
    all.push_back(
        {"labelled buffer: merged", 5000,
         [](std::size_t n) {
             labeled_text_buffer one;
             labeled_text_buffer two;
             for (std::size_t i = 0; i < n; ++i) {
                 one.add_value(numbered("a", i, ""), types::variant(1));
                 two.create_group(numbered("a", i, ""))->add_value("v", types::variant(2));
             }
             one.overlay(two);
             labeled_text_buffer copy(one);
             copy.assign(two);
         },
         false});
    all.push_back({"file: stored and loaded", 1000000,
                   [](std::size_t n) {
                       system::store_file(ustring8("a.bin"), narrow(std::string(n, 'x')));
                       ustring8 content;
                       system::load_file(ustring8("a.bin"), content);
                       keep(content);
                   },
                   false});
    all.push_back({"directory: files listed", 500,
                   [](std::size_t n) {
                       system::create_directory(ustring8("./files/"));
                       for (std::size_t i = 0; i < n; ++i)
                           write_file(numbered("files/f", i, ""), "");
                       std::vector<ustring8> files;
                       system::get_directory_files(ustring8("files"), files);
                       keep(files);
                       keep(system::list_directory(ustring8("files")));
                   },
                   false});
    all.push_back({"delegates: copied and called", 20000,
                   [](std::size_t n) {
                       struct target {
                           void call(int) { ++count; }
                           std::size_t count;
                       } object = {0};
                       functor::delegate_t<void(int)> one =
                           functor::member_function_t<target, void(int)>(&object, &target::call);
                       std::vector<functor::delegate_t<void(int)>> copies(n, one);
                       for (auto& copy : copies)
                           copy.invoke(1);
                       g_sink = g_sink + object.count;
                   },
                   false});
}

workloads all_workloads() {
    workloads all;
    add_strings(all);
    add_values(all);
    add_documents(all);
    add_messages(all);
    add_settings(all);
    add_buffers(all);
    return all;
}

}  // namespace

int main(int count, char** words) {
    const workloads all = all_workloads();
    if (count == 2 && std::strcmp(words[1], "--list") == 0) {
        for (const auto& one : all)
            std::cout << one.size << '\t' << one.known_to_grow << '\t' << one.name << '\n';
        return 0;
    }
    if (count == 3) {
        const std::size_t size = std::strtoul(words[2], nullptr, 10);
        for (const auto& one : all) {
            if (one.name == std::string(words[1])) {
                if (size > 0)
                    one.run(size);
                return 0;
            }
        }
    }
    std::cerr << "usage: proof_growth --list | proof_growth NAME SIZE\n";
    return 2;
}
