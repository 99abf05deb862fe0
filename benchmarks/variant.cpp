// Values of no fixed type: construction, copies, conversions, and argument lists. Where a peer has
// no conversion of its own, it converts by hand, with the functions that its users take.
#include <tova/generic/varg_list.hpp>
#include <tova/types/variant.hpp>

#include "cell.hpp"

#include <algorithm>
#include <any>
#include <charconv>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#ifdef HAVE_BOOST_LEXICAL_CAST
#include <boost/lexical_cast.hpp>
#endif
#ifdef HAVE_BOOST_VARIANT
#include <boost/any.hpp>
#include <boost/variant.hpp>
#endif
#ifdef HAVE_POCO
#include <Poco/Dynamic/Var.h>
#endif
#ifdef HAVE_QT6
#include <QString>
#include <QVariant>
#include <QVariantMap>
#endif

namespace {

using bench_support::cell;
using tova::generic::argument;
using tova::generic::varg_list;
using tova::strings::ustring8;
using tova::types::variant;

const int number = 1234567;
const double real = 1234.5;
const std::string short_text = "1234567";
const std::string long_text(100, 'x');

template <typename Value, typename Source>
void construct(benchmark::State& state, const Source& source) {
    for (auto _ : state) {
        Value value(source);
        benchmark::DoNotOptimize(value);
    }
}

template <typename Value, typename Source>
void copy(benchmark::State& state, const Source& source) {
    const Value value(source);
    for (auto _ : state) {
        Value another(value);
        benchmark::DoNotOptimize(another);
    }
}

// Copies a vector of a hundred values: the cost of an argument list.
template <typename Value, typename Source>
void copy_many(benchmark::State& state, const Source& source) {
    const std::vector<Value> values(100, Value(source));
    for (auto _ : state) {
        std::vector<Value> another(values);
        benchmark::DoNotOptimize(another.data());
    }
    state.SetItemsProcessed(static_cast<long>(state.iterations()) * 100);
}

template <typename Value, typename Source>
void register_library(const std::string& library, const Source& text, const Source& long_value) {
    const auto add = [&library](const char* name, auto function, auto source) {
        benchmark::RegisterBenchmark((name + library).c_str(),
                                     [=](benchmark::State& state) { function(state, source); });
    };
    add("construct/int/", construct<Value, int>, number);
    add("construct/double/", construct<Value, double>, real);
    add("construct/short_text/", construct<Value, Source>, text);
    add("construct/long_text/", construct<Value, Source>, long_value);
    add("copy/int/", copy<Value, int>, number);
    add("copy/short_text/", copy<Value, Source>, text);
    add("copy/long_text/", copy<Value, Source>, long_value);
    add("copy_100/int/", copy_many<Value, int>, number);
    add("copy_100/long_text/", copy_many<Value, Source>, long_value);
}

// The floor of our own: one allocation for each value, shared by its copies.
class counted_value {
public:
    template <typename Value>
    explicit counted_value(const Value& value) : m_body(new typed<Value>(value)) {}
    counted_value(const counted_value& other) : m_body(other.m_body) { ++m_body->count; }
    counted_value& operator=(const counted_value&) = delete;
    ~counted_value() {
        if (--m_body->count == 0)
            delete m_body;
    }

private:
    struct body {
        virtual ~body() {}
        unsigned count = 1;
    };
    template <typename Value>
    struct typed : body {
        explicit typed(const Value& source) : value(source) {}
        Value value;
    };
    body* m_body;
};

// Repeats a step on one value.
template <typename Step>
void register_step(const std::string& name, const Step& step) {
    benchmark::RegisterBenchmark(name.c_str(), [step](benchmark::State& state) {
        for (auto _ : state) {
            auto result = step();
            benchmark::DoNotOptimize(result);
        }
    });
}

// What a user of a plain holder writes to read a string as a number.
int to_int(const std::string& text) {
    int value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

// Our code without its fast paths: it parses digit by digit and writes to a stream.
__attribute__((noinline)) int plain_int(const std::string& text) {
    const bool negative = !text.empty() && text[0] == '-';
    long value = 0;
    for (std::size_t i = negative ? 1 : 0; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i)
        value = std::min(value * 10 + (text[i] - '0'), 0x7fffffffL + (negative ? 1 : 0));
    return static_cast<int>(negative ? -value : value);
}

template <typename Number>
std::string plain_text(Number value) {
    std::stringstream stream;
    stream << value;
    return stream.str();
}

void register_text_to_int() {
    const variant text(short_text.c_str());
    const std::any any(short_text);
    cell work("convert/text_to_int", [text] { return text.as_int(); });
    work.add("floor", [] { return bench_support::called(number); });
    work.add("plain", [text] { return plain_int(text.as_string()); });
    work.add("std_any", [any] { return to_int(*std::any_cast<std::string>(&any)); });
#ifdef HAVE_BOOST_LEXICAL_CAST
    const boost::any boosted(short_text);
    work.add("boost_any", [boosted] {
        return boost::lexical_cast<int>(*boost::any_cast<std::string>(&boosted));
    });
#endif
#ifdef HAVE_POCO
    const Poco::Dynamic::Var poco(short_text);
    work.add("poco", [poco] { return poco.convert<int>(); });
#endif
#ifdef HAVE_QT6
    const QVariant qt(QString::fromStdString(short_text));
    work.add("qvariant", [qt] { return qt.toInt(); });
#endif
}

// From a number of either type to a string.
template <typename Number>
void register_to_text(const std::string& name, Number value) {
    const variant ours(value);
    cell work("convert/" + name, [ours] { return ours.as_string(); });
    work.floor_is_a_copy();
    work.add("plain", [value] { return plain_text(value); });
    if constexpr (std::is_same<Number, int>::value) {
        const std::any any(value);
        work.add("std_any", [any] { return std::to_string(std::any_cast<int>(any)); });
    }
#ifdef HAVE_BOOST_LEXICAL_CAST
    const boost::any boosted(value);
    work.add("boost_any", [boosted] {
        return boost::lexical_cast<std::string>(boost::any_cast<Number>(boosted));
    });
#endif
#ifdef HAVE_POCO
    const Poco::Dynamic::Var poco(value);
    work.add("poco", [poco] { return poco.convert<std::string>(); });
#endif
#ifdef HAVE_QT6
    const QVariant qt(value);
    work.add("qvariant", [qt] { return qt.toString(); });
#endif
}

void register_conversions() {
    register_text_to_int();
    register_to_text("int_to_text", number);
    register_to_text("double_to_text", real);

    const variant text(short_text.c_str()), integer(number), floating(real);
    const std::any any_text(short_text), any_integer(number), any_floating(real);
    cell to_double("convert/int_to_double", [integer] { return integer.as_double(); });
    cell to_int("convert/double_to_int", [floating] { return floating.as_int(); });
    cell to_text("convert/text_to_text", [text] { return text.as_string(); });
    cell to_bool("convert/text_to_bool", [text] { return text.as_bool(); });
    to_double.add("std_any", [=] { return static_cast<double>(std::any_cast<int>(any_integer)); });
    to_int.add("std_any", [=] { return static_cast<int>(std::any_cast<double>(any_floating)); });
    to_text.add("std_any", [any_text] { return std::any_cast<std::string>(any_text); });
    to_text.floor_is_a_copy();
#ifdef HAVE_QT6
    const QVariant qt_text(QString::fromStdString(short_text)), qt_integer(number), qt_real(real);
    to_double.add("qvariant", [qt_integer] { return qt_integer.toDouble(); });
    // It rounds, where ours truncates.
    to_int.add("qvariant", [qt_real] { return static_cast<int>(qt_real.toDouble()); });
    to_text.add("qvariant", [qt_text] { return qt_text.toString(); });
    to_bool.add("qvariant", [qt_text] { return qt_text.toBool(); });
#endif
}

void register_lists() {
    register_step("arguments/make_8/tova", [] {
        return varg_list(argument("a", 1), argument("b", 2), argument("c", 3), argument("d", 4),
                         argument("e", 5), argument("f", 6), argument("g", 7), argument("h", 8))
            .count();
    });
    const varg_list list(argument("a", 1), argument("b", 2), argument("c", 3), argument("d", 4),
                         argument("e", 5), argument("f", 6), argument("g", 7), argument("h", 8));
    const ustring8 name("h");
    register_step("arguments/find_last_of_8/tova",
                  [list, name] { return list.at(name).value().as_int(); });
#ifdef HAVE_QT6
    register_step("arguments/make_8/qvariant", [] {
        return QVariantMap{{"a", 1}, {"b", 2}, {"c", 3}, {"d", 4},
                           {"e", 5}, {"f", 6}, {"g", 7}, {"h", 8}}
            .size();
    });
    const QVariantMap map{{"a", 1}, {"b", 2}, {"c", 3}, {"d", 4},
                          {"e", 5}, {"f", 6}, {"g", 7}, {"h", 8}};
    const QString qt_name("h");
    register_step("arguments/find_last_of_8/qvariant",
                  [map, qt_name] { return map.value(qt_name).toInt(); });
#endif
}

const bool registered = [] {
    register_library<variant>("tova", short_text, long_text);
    register_library<counted_value>("floor", short_text, long_text);
    register_library<std::any>("std_any", short_text, long_text);
    register_library<std::variant<int, double, std::string>>("std_variant", short_text, long_text);
#ifdef HAVE_BOOST_VARIANT
    register_library<boost::any>("boost_any", short_text, long_text);
    register_library<boost::variant<int, double, std::string>>("boost_variant", short_text,
                                                               long_text);
#endif
#ifdef HAVE_POCO
    register_library<Poco::Dynamic::Var>("poco", short_text, long_text);
#endif
#ifdef HAVE_QT6
    register_library<QVariant>("qvariant", QString::fromStdString(short_text),
                               QString::fromStdString(long_text));
#endif
    register_conversions();
    register_lists();
    return true;
}();

}  // namespace
