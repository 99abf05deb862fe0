// A message with no, one, three and five arguments as a string.
//
// lookup: finds a message by its key in a catalog of a thousand messages.
// render: starts with the message at hand, already parsed where a library can do that.
// lookup_and_render: starts with a key in a catalog of a thousand messages.
// collect_and_render: includes making the argument list, which `render` makes only once.
//
// plain is our own code without its fast paths: the map's own search, and a string for each item.
// The peers get plain values as arguments. Every string is compared with the expected one before it
// is measured.
#include <tova/i18n/catalog.hpp>

#include "cell.hpp"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#ifdef HAVE_ABSL
#include <absl/strings/str_format.h>
#endif
#ifdef HAVE_FMT
#include <fmt/args.h>
#include <fmt/format.h>
#endif
#ifdef HAVE_BOOST_FORMAT
#include <boost/format.hpp>
#endif
#ifdef HAVE_BOOST_LOCALE
#include <boost/locale.hpp>
#include <locale>
#endif
#ifdef HAVE_GETTEXT
#include "gettext_catalog.hpp"
#include "scratch_folder.hpp"
#include <clocale>
#include <libintl.h>
#endif
#ifdef HAVE_QT6
#include <QString>
#endif

namespace {

namespace i18n = tova::i18n;
using i18n::message_item;
using i18n::message_t;
using tova::generic::argument;
using tova::generic::varg_list;
using tova::strings::ustring8;

const char literal_text[] = "The connection was closed by the other side before all was sent.";
const char one_text[] = "The catalog holds 12345 messages.";
const char three_text[] = "User Grace Hopper copied 12345 files, ratio 3.14.";
const char five_text[] =
    "User Grace Hopper copied 12345 files, flags 0x00ff, ratio 3.14, took 1.250 s.";

// Values that the compiler cannot know.
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

message_t three_message() {
    return message_t("three", {message_item("User "), item(message_item::type_string, "who"),
                               message_item(" copied "), item(message_item::type_int, "count"),
                               message_item(" files, ratio "),
                               item(message_item::type_double, "ratio"), message_item(".")});
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

varg_list three_arguments() {
    const values& v = arguments();
    return varg_list(argument("who", v.who), argument("count", v.count),
                     argument("ratio", v.ratio));
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
    static const message_t literal = literal_message(), one = one_message(),
                           three = three_message(), five = five_message();
    static const varg_list none, one_list = one_argument(), three_list = three_arguments(),
                                 five_list = five_arguments();
    static const i18n::catalog_t catalog = make_catalog();
    static const ustring8 literal_key("literal"), one_key("one"), five_key("five");

    add("render/literal/tova", literal_text, [] { return literal.as_string(none); });
    add("render/one_argument/tova", one_text, [] { return one.as_string(one_list); });
    add("render/three_arguments/tova", three_text, [] { return three.as_string(three_list); });
    add("render/five_arguments/tova", five_text, [] { return five.as_string(five_list); });
    add("collect_and_render/one_argument/tova", one_text,
        [] { return one.as_string(one_argument()); });
    add("collect_and_render/three_arguments/tova", three_text,
        [] { return three.as_string(three_arguments()); });
    add("collect_and_render/five_arguments/tova", five_text,
        [] { return five.as_string(five_arguments()); });
    add("lookup_and_render/literal/tova", literal_text,
        [] { return catalog.message(literal_key).as_string(none); });
    add("lookup_and_render/one_argument/tova", one_text,
        [] { return catalog.message(one_key).as_string(one_list); });
    add("lookup_and_render/five_arguments/tova", five_text,
        [] { return catalog.message(five_key).as_string(five_list); });
}

// Every item as a string of its own.
std::string joined(const message_t& message, const varg_list& list) {
    std::string text;
    for (const message_item& item : message)
        text += item.as_string(list);
    return text;
}

void add_plain() {
    static const message_t one = one_message(), three = three_message(), five = five_message();
    static const varg_list one_list = one_argument(), three_list = three_arguments(),
                           five_list = five_arguments();
    add("render/one_argument/plain", one_text, [] { return joined(one, one_list); });
    add("render/three_arguments/plain", three_text, [] { return joined(three, three_list); });
    add("render/five_arguments/plain", five_text, [] { return joined(five, five_list); });
    add("collect_and_render/one_argument/plain", one_text,
        [] { return joined(one, one_argument()); });
    add("collect_and_render/three_arguments/plain", three_text,
        [] { return joined(three, three_arguments()); });
    add("collect_and_render/five_arguments/plain", five_text,
        [] { return joined(five, five_arguments()); });
}

// The least that an argument list is: a body for each value, and a copy of each name.
class floor_list {
public:
    template <typename Value>
    void add(const char* name, const Value& value) {
        m_arguments.emplace_back(name, std::make_unique<body_of<Value>>(value));
    }
    void reserve(std::size_t count) { m_arguments.reserve(count); }

private:
    struct body {
        virtual ~body() = default;
    };
    template <typename Value>
    struct body_of : body {
        explicit body_of(const Value& of) : value(of) {}
        Value value;
    };

    std::vector<std::pair<std::string, std::unique_ptr<body>>> m_arguments;
};

std::string collected(const std::string& text, int count) {
    const values& v = arguments();
    floor_list list;
    list.reserve(static_cast<std::size_t>(count));
    if (count != 1)
        list.add("who", v.who);
    list.add("count", v.count);
    if (count == 5)
        list.add("flags", v.flags);
    if (count != 1)
        list.add("ratio", v.ratio);
    if (count == 5)
        list.add("seconds", v.seconds);
    benchmark::DoNotOptimize(list);
    return text;
}

// The floors: a new string with the known result, after a list where one is made.
void add_floors() {
    static const std::string one(one_text), three(three_text), five(five_text);
    add("render/one_argument/floor", one, [] { return std::string(one); });
    add("render/three_arguments/floor", three, [] { return std::string(three); });
    add("render/five_arguments/floor", five, [] { return std::string(five); });
    add("collect_and_render/one_argument/floor", one, [] { return collected(one, 1); });
    add("collect_and_render/three_arguments/floor", three, [] { return collected(three, 3); });
    add("collect_and_render/five_arguments/floor", five, [] { return collected(five, 5); });
}

// Peers

// A peer that takes plain values is compared with both ways of passing arguments.
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
    add_peer("three_arguments", "ostringstream", three_text, [] {
        const values& v = arguments();
        std::ostringstream stream;
        stream << "User " << v.who << " copied " << v.count << " files, ratio " << std::fixed
               << std::setprecision(2) << v.ratio << ".";
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

#ifdef HAVE_ABSL
void add_abseil() {
    // Parsed by the compiler or, for the literal, not at all.
    add_peer("one_argument", "abseil", one_text,
             [] { return absl::StrFormat("The catalog holds %d messages.", arguments().count); });
    add_peer("three_arguments", "abseil", three_text, [] {
        const values& v = arguments();
        return absl::StrFormat("User %s copied %d files, ratio %.2f.", v.who, v.count, v.ratio);
    });
    add_peer("five_arguments", "abseil", five_text, [] {
        const values& v = arguments();
        return absl::StrFormat("User %s copied %d files, flags 0x%04x, ratio %.2f, took %.3f s.",
                               v.who, v.count, v.flags, v.ratio, v.seconds);
    });
}
#endif

#ifdef HAVE_FMT
void add_named_fmt() {
    static const std::string one = "The catalog holds {count} messages.";
    static const std::string three = "User {who} copied {count} files, ratio {ratio:.2f}.";
    add_peer("one_argument", "fmt_named", one_text,
             [] { return fmt::format(fmt::runtime(one), fmt::arg("count", arguments().count)); });
    add_peer("three_arguments", "fmt_named", three_text, [] {
        const values& v = arguments();
        return fmt::format(fmt::runtime(three), fmt::arg("who", v.who), fmt::arg("count", v.count),
                           fmt::arg("ratio", v.ratio));
    });
}

void add_fmt() {
    static const std::string one = "The catalog holds {} messages.";
    static const std::string three = "User {} copied {} files, ratio {:.2f}.";
    static const std::string five =
        "User {} copied {} files, flags 0x{:04x}, ratio {:.2f}, took {:.3f} s.";
    add_peer("literal", "fmt", literal_text,
             [] { return fmt::format(fmt::runtime(literal_text)); });
    add_peer("one_argument", "fmt", one_text,
             [] { return fmt::format(fmt::runtime(one), arguments().count); });
    add_peer("three_arguments", "fmt", three_text, [] {
        const values& v = arguments();
        return fmt::format(fmt::runtime(three), v.who, v.count, v.ratio);
    });
    add_peer("five_arguments", "fmt", five_text, [] {
        const values& v = arguments();
        return fmt::format(fmt::runtime(five), v.who, v.count, v.flags, v.ratio, v.seconds);
    });
}
#endif

#ifdef HAVE_BOOST_FORMAT
void add_boost() {
    static const boost::format literal(literal_text), one("The catalog holds %1% messages."),
        three("User %1% copied %2% files, ratio %3$.2f."),
        five("User %1% copied %2% files, flags 0x%3$04x, ratio %4$.2f, took %5$.3f s.");
    add_peer("literal", "Boost.Format", literal_text, [] { return boost::format(literal).str(); });
    add_peer("one_argument", "Boost.Format", one_text,
             [] { return (boost::format(one) % arguments().count).str(); });
    add_peer("three_arguments", "Boost.Format", three_text, [] {
        const values& v = arguments();
        return (boost::format(three) % v.who % v.count % v.ratio).str();
    });
    add_peer("five_arguments", "Boost.Format", five_text, [] {
        const values& v = arguments();
        return (boost::format(five) % v.who % v.count % v.flags % v.ratio % v.seconds).str();
    });
}
#endif

#ifdef HAVE_QT6
void add_qt() {
    static const QString literal(literal_text), one("The catalog holds %1 messages."),
        three("User %1 copied %2 files, ratio %3."),
        five("User %1 copied %2 files, flags 0x%3, ratio %4, took %5 s.");
    static const QString who("Grace Hopper");
    add_peer("literal", "QString", literal_text, [] {
        return QString(literal.constData(),
                       literal.size());  // a plain copy would share its characters
    });
    add_peer("one_argument", "QString", one_text, [] { return one.arg(arguments().count); });
    add_peer("three_arguments", "QString", three_text, [] {
        const values& v = arguments();
        return three.arg(who).arg(v.count).arg(v.ratio, 0, 'f', 2);
    });
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
const bench_support::scratch_folder& folder() {
    static const bench_support::scratch_folder made;
    return made;
}

// Makes a catalog of the messages the current one.
void use_catalog() {
    std::map<std::string, std::string> messages = {
        {"", "Content-Type: text/plain; charset=UTF-8\n"},
        {"five", "User %s copied %d files, flags 0x%04x, ratio %.2f, took %.3f s."},
        {"literal", literal_text},
        {"one", "The catalog holds %d messages."}};
    for (std::size_t i = 3; i < catalog_size; ++i)
        messages[filler_key(i)] = literal_text;

    const std::string file = bench_support::make_gettext_folders(folder().path(), "en", "bench");
    std::ofstream(file, std::ios::binary) << bench_support::gettext_catalog(messages);
    setenv("LANGUAGE", "en", 1);
    setlocale(LC_ALL, "C.UTF-8");
    bindtextdomain("bench", folder().path().c_str());
    textdomain("bench");
    gettext("literal");  // loads the file
}

// One allocation, for the result, which must fit the buffer.
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

// Every message of the catalog once, in another order than that of its keys. Each result is the
// string of the message, which has no arguments. The floor compares each key with itself, once.
const std::vector<ustring8>& all_keys() {
    static const std::vector<ustring8> keys = [] {
        std::vector<ustring8> made;
        for (std::size_t i = 3; i < catalog_size; ++i)
            made.push_back(filler_key(i));
        return made;
    }();
    return keys;
}

template <typename Find>
void add_lookup(const std::string& library, const Find& find) {
    benchmark::RegisterBenchmark(("lookup/1000_messages/" + library).c_str(),
                                 [find](benchmark::State& state) {
                                     for (const ustring8& key : all_keys())
                                         if (!find(key))
                                             return state.SkipWithError("not found");
                                     for (auto _ : state)
                                         for (const ustring8& key : all_keys())
                                             benchmark::DoNotOptimize(find(key));
                                 });
}

void add_lookups() {
    static const i18n::catalog_t catalog = make_catalog();
    add_lookup("tova", [](const ustring8& key) {
        return &catalog.message(key) != &i18n::catalog_t::m_nil_message;
    });
    // The map's own search.
    static const std::map<ustring8, message_t> messages(catalog.begin(), catalog.end());
    add_lookup("plain", [](const ustring8& key) { return messages.find(key) != messages.end(); });
    add_lookup("floor", [](const ustring8& key) {
        const std::size_t size = bench_support::called(key.size());
        return std::memcmp(key.data(), bench_support::called(key.data()), size) == 0;
    });
#ifdef HAVE_GETTEXT
    add_lookup("gettext", [](const ustring8& key) { return gettext(key.c_str()) != key.c_str(); });
#ifdef HAVE_BOOST_LOCALE
    boost::locale::generator generate;
    generate.add_messages_path(folder().path());
    generate.add_messages_domain("bench");
    static const std::locale english = generate("en_US.UTF-8");
    add_lookup("boost_locale", [](const ustring8& key) {
        return std::use_facet<boost::locale::message_format<char>>(english).get(
                   0, nullptr, key.c_str()) != nullptr;
    });
#endif
#endif
}

const bool added = [] {
    add_tova();
    add_plain();
    add_floors();
    add_ostringstream();
#ifdef HAVE_ABSL
    add_abseil();
#endif
#ifdef HAVE_FMT
    add_fmt();
    add_named_fmt();
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
    add_lookups();
    return true;
}();

}  // namespace
