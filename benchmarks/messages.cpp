// A message with none, one and five arguments as text. `render` begins with the message in hand (a
// parsed one where a library has that), `lookup_and_render` with a key in a catalog of a thousand
// messages. Arguments are plain values for the peers and a list that was made before for us;
// `collect_and_render` makes the list each time. Every text is compared with the others before it
// is measured.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include <tova/i18n/catalog.hpp>

#ifdef HAVE_FMT
#include <fmt/format.h>
#endif
#ifdef HAVE_BOOST_FORMAT
#include <boost/format.hpp>
#endif
#ifdef HAVE_GETTEXT
#include <clocale>
#include <libintl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif
#ifdef HAVE_QT6
#include <QString>
#endif

namespace {

namespace i18n = TOVA_2_18::i18n;
using i18n::message_item;
using i18n::message_t;
using TOVA_2_18::generic::argument;
using TOVA_2_18::generic::varg_list;
using TOVA_2_18::strings::ustring8;

const char literal_text[] = "The connection was closed by the other side before all was sent.";
const char one_text[] = "The catalog holds 12345 messages.";
const char five_text[] =
    "User Grace Hopper copied 12345 files, flags 0x00ff, ratio 3.14, took 1.250 s.";

// Values that the compiler can't see through.
struct values {
    std::string who = "Grace Hopper";
    int count = 12345;
    int flags = 255;
    double ratio = 3.14159;
    double seconds = 1.25;
};

values& arguments() {
    static values made;
    benchmark::DoNotOptimize(made);
    return made;
}

std::string as_text(const std::string& text) {
    return text;
}

#ifdef HAVE_QT6
std::string as_text(const QString& text) {
    return text.toStdString();
}
#endif

template <typename Render>
void add(const std::string& name, const std::string& expected, Render render) {
    if (as_text(render()) != expected) {
        std::fprintf(stderr, "%s gives \"%s\"\n", name.c_str(), as_text(render()).c_str());
        std::exit(1);
    }
    benchmark::RegisterBenchmark(name.c_str(), [render](benchmark::State& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(render());
    });
}

// tova

message_item item(message_item::type_t type, const char* data) {
    return message_item(data, type);
}

message_t literal_message() {
    return message_t("literal", {message_item(literal_text)});
}

message_t one_message() {
    return message_t("one", {message_item("The catalog holds "),
                             item(message_item::type_int, "count"), message_item(" messages.")});
}

message_t five_message() {
    return message_t("five", {message_item("User "), item(message_item::type_string, "who"),
                              message_item(" copied "), item(message_item::type_int, "count"),
                              message_item(" files, flags "),
                              item(message_item::type_int, "flags\x01"
                                                           "base\x01"
                                                           "hex"),
                              message_item(", ratio "), item(message_item::type_double, "ratio"),
                              message_item(", took "),
                              item(message_item::type_double, "seconds\x01precision\x01"
                                                              "3"),
                              message_item(" s.")});
}

varg_list one_argument() {
    return varg_list(argument("count", arguments().count));
}

varg_list five_arguments() {
    const values& v = arguments();
    return varg_list(argument("who", v.who), argument("count", v.count), argument("flags", v.flags),
                     argument("ratio", v.ratio), argument("seconds", v.seconds));
}

const std::size_t catalog_size = 1000;

std::string filler_key(std::size_t number) {
    return "filler_" + std::to_string(number * 7919 % catalog_size);
}

i18n::catalog_t make_catalog() {
    i18n::catalog_t catalog;
    for (std::size_t i = 3; i < catalog_size; ++i)
        catalog.message(filler_key(i), literal_message());
    catalog.message("literal", literal_message());
    catalog.message("one", one_message());
    catalog.message("five", five_message());
    return catalog;
}

void add_tova() {
    static const message_t literal = literal_message(), one = one_message(), five = five_message();
    static const varg_list none, one_list = one_argument(), five_list = five_arguments();
    static const i18n::catalog_t catalog = make_catalog();
    static const ustring8 literal_key("literal"), one_key("one"), five_key("five");

    add("render/literal/tova", literal_text, [] { return literal.as_string(none); });
    add("render/one_argument/tova", one_text, [] { return one.as_string(one_list); });
    add("render/five_arguments/tova", five_text, [] { return five.as_string(five_list); });
    add("collect_and_render/one_argument/tova", one_text,
        [] { return one.as_string(one_argument()); });
    add("collect_and_render/five_arguments/tova", five_text,
        [] { return five.as_string(five_arguments()); });
    add("lookup_and_render/literal/tova", literal_text,
        [] { return catalog.message(literal_key).as_string(none); });
    add("lookup_and_render/one_argument/tova", one_text,
        [] { return catalog.message(one_key).as_string(one_list); });
    add("lookup_and_render/five_arguments/tova", five_text,
        [] { return catalog.message(five_key).as_string(five_list); });
}

// Peers

// Those that take plain values stand beside both ways of giving arguments.
template <typename Render>
void add_peer(const std::string& what, const std::string& library, const std::string& expected,
              Render render) {
    add("render/" + what + "/" + library, expected, render);
    if (what != "literal")
        add("collect_and_render/" + what + "/" + library, expected, render);
}

void add_ostringstream() {
    add_peer("literal", "ostringstream", literal_text, [] {
        std::ostringstream stream;
        stream << literal_text;
        return stream.str();
    });
    add_peer("one_argument", "ostringstream", one_text, [] {
        std::ostringstream stream;
        stream << "The catalog holds " << arguments().count << " messages.";
        return stream.str();
    });
    add_peer("five_arguments", "ostringstream", five_text, [] {
        const values& v = arguments();
        std::ostringstream stream;
        stream << "User " << v.who << " copied " << v.count << " files, flags 0x" << std::hex
               << std::setw(4) << std::setfill('0') << v.flags << std::dec << ", ratio "
               << std::fixed << std::setprecision(2) << v.ratio << ", took " << std::setprecision(3)
               << v.seconds << " s.";
        return stream.str();
    });
}

#ifdef HAVE_FMT
void add_fmt() {
    static const std::string one = "The catalog holds {} messages.";
    static const std::string five =
        "User {} copied {} files, flags 0x{:04x}, ratio {:.2f}, took {:.3f} s.";
    add_peer("literal", "fmt", literal_text,
             [] { return fmt::format(fmt::runtime(literal_text)); });
    add_peer("one_argument", "fmt", one_text,
             [] { return fmt::format(fmt::runtime(one), arguments().count); });
    add_peer("five_arguments", "fmt", five_text, [] {
        const values& v = arguments();
        return fmt::format(fmt::runtime(five), v.who, v.count, v.flags, v.ratio, v.seconds);
    });
}
#endif

#ifdef HAVE_BOOST_FORMAT
void add_boost() {
    static const boost::format literal(literal_text), one("The catalog holds %1% messages."),
        five("User %1% copied %2% files, flags 0x%3$04x, ratio %4$.2f, took %5$.3f s.");
    add_peer("literal", "Boost.Format", literal_text, [] { return boost::format(literal).str(); });
    add_peer("one_argument", "Boost.Format", one_text,
             [] { return (boost::format(one) % arguments().count).str(); });
    add_peer("five_arguments", "Boost.Format", five_text, [] {
        const values& v = arguments();
        return (boost::format(five) % v.who % v.count % v.flags % v.ratio % v.seconds).str();
    });
}
#endif

#ifdef HAVE_QT6
void add_qt() {
    static const QString literal(literal_text), one("The catalog holds %1 messages."),
        five("User %1 copied %2 files, flags 0x%3, ratio %4, took %5 s.");
    static const QString who("Grace Hopper");
    add_peer("literal", "QString", literal_text, [] {
        return QString(literal.constData(), literal.size());  // a copy alone would share the text
    });
    add_peer("one_argument", "QString", one_text, [] { return one.arg(arguments().count); });
    add_peer("five_arguments", "QString", five_text, [] {
        const values& v = arguments();
        return five.arg(who)
            .arg(v.count)
            .arg(v.flags, 4, 16, QLatin1Char('0'))
            .arg(v.ratio, 0, 'f', 2)
            .arg(v.seconds, 0, 'f', 3);
    });
}
#endif

#ifdef HAVE_GETTEXT
// A compiled catalog: a header, the sorted keys, their texts. Keys of `messages` must be sorted.
std::string compiled(const std::vector<std::pair<std::string, std::string>>& messages) {
    const std::uint32_t count = static_cast<std::uint32_t>(messages.size());
    std::string tables, texts;
    const auto put = [](std::string& target, std::uint32_t number) {
        target.append(reinterpret_cast<const char*>(&number), sizeof number);
    };
    const std::uint32_t keys_at = 28, texts_at = keys_at + 8 * count, begin = texts_at + 8 * count;
    const auto put_text = [&](const std::string& text) {
        put(tables, static_cast<std::uint32_t>(text.size()));
        put(tables, begin + static_cast<std::uint32_t>(texts.size()));
        texts.append(text.c_str(), text.size() + 1);
    };
    for (const auto& message : messages)
        put_text(message.first);
    for (const auto& message : messages)
        put_text(message.second);

    std::string file;
    for (std::uint32_t number : {0x950412DEu, 0u, count, keys_at, texts_at, 0u, begin})
        put(file, number);
    return file + tables + texts;
}

// Installs the catalog in a directory of its own and makes it the current one.
void use_catalog() {
    std::vector<std::pair<std::string, std::string>> messages = {
        {"", "Content-Type: text/plain; charset=UTF-8\n"},
        {"five", "User %s copied %d files, flags 0x%04x, ratio %.2f, took %.3f s."},
        {"literal", literal_text},
        {"one", "The catalog holds %d messages."}};
    for (std::size_t i = 3; i < catalog_size; ++i)
        messages.push_back({filler_key(i), literal_text});
    std::sort(messages.begin(), messages.end());

    char directory[] = "/tmp/tova_bench_XXXXXX";
    if (mkdtemp(directory) == nullptr)
        std::exit(1);
    const std::string root = directory;
    const std::string locale = root + "/en", category = locale + "/LC_MESSAGES";
    const std::string file = category + "/bench.mo";
    mkdir(locale.c_str(), 0700);
    mkdir(category.c_str(), 0700);
    std::ofstream(file, std::ios::binary) << compiled(messages);
    setenv("LANGUAGE", "en", 1);
    setlocale(LC_ALL, "C.UTF-8");
    bindtextdomain("bench", directory);
    textdomain("bench");
    gettext("literal");  // loads the file, which can go then
    unlink(file.c_str());
    rmdir(category.c_str());
    rmdir(locale.c_str());
    rmdir(directory);
}

// One allocation for the result where it fits the buffer.
template <typename... Values>
std::string printed(const char* format, Values... given) {
    char buffer[256];
    const int size = std::snprintf(buffer, sizeof buffer, format, given...);
    return std::string(buffer, static_cast<std::size_t>(size));
}

void add_gettext() {
    use_catalog();
    add("lookup_and_render/literal/gettext", literal_text,
        [] { return std::string(gettext("literal")); });
    add("lookup_and_render/one_argument/gettext", one_text,
        [] { return printed(gettext("one"), arguments().count); });
    add("lookup_and_render/five_arguments/gettext", five_text, [] {
        const values& v = arguments();
        return printed(gettext("five"), v.who.c_str(), v.count, v.flags, v.ratio, v.seconds);
    });
}
#endif

const bool added = [] {
    add_tova();
    add_ostringstream();
#ifdef HAVE_FMT
    add_fmt();
#endif
#ifdef HAVE_BOOST_FORMAT
    add_boost();
#endif
#ifdef HAVE_QT6
    add_qt();
#endif
#ifdef HAVE_GETTEXT
    add_gettext();
#endif
    return true;
}();

}  // namespace
