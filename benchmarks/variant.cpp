// Values of no fixed type: construction, copies, conversions, and argument lists. Where a peer has
// no conversion of its own, it converts by hand, with the functions that its users take.
#include <tova/generic/varg_list.hpp>
#include <tova/types/variant.hpp>

#include <benchmark/benchmark.h>

#include <any>
#include <charconv>
#include <string>
#include <vector>

#ifdef HAVE_QT6
#include <QString>
#include <QVariant>
#include <QVariantMap>
#endif
#ifdef HAVE_BOOST_VARIANT
#include <boost/any.hpp>
#include <boost/variant.hpp>
#endif

namespace {

using tova::generic::argument;
using tova::generic::varg_list;
using tova::strings::ustring8;
using tova::types::variant;

const int number = 1234567;
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
    add("construct/double/", construct<Value, double>, 1.5);
    add("construct/short_text/", construct<Value, Source>, text);
    add("construct/long_text/", construct<Value, Source>, long_value);
    add("copy/int/", copy<Value, int>, number);
    add("copy/short_text/", copy<Value, Source>, text);
    add("copy/long_text/", copy<Value, Source>, long_value);
    add("copy_100/int/", copy_many<Value, int>, number);
    add("copy_100/long_text/", copy_many<Value, Source>, long_value);
}

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

void register_conversions() {
    const variant text(short_text.c_str());
    const variant integer(number);
    const variant floating(1234.5);
    register_step("convert/text_to_int/tova", [text] { return text.as_int(); });
    register_step("convert/int_to_text/tova", [integer] { return integer.as_string(); });
    register_step("convert/int_to_double/tova", [integer] { return integer.as_double(); });
    register_step("convert/double_to_int/tova", [floating] { return floating.as_int(); });
    register_step("convert/text_to_text/tova", [text] { return text.as_string(); });
    register_step("convert/text_to_bool/tova", [text] { return text.as_bool(); });

    const std::any any_text(short_text);
    const std::any any_integer(number);
    const std::any any_floating(1234.5);
    register_step("convert/text_to_int/std_any",
                  [any_text] { return to_int(*std::any_cast<std::string>(&any_text)); });
    register_step("convert/int_to_text/std_any",
                  [any_integer] { return std::to_string(std::any_cast<int>(any_integer)); });
    register_step("convert/int_to_double/std_any",
                  [any_integer] { return static_cast<double>(std::any_cast<int>(any_integer)); });
    register_step("convert/double_to_int/std_any",
                  [any_floating] { return static_cast<int>(std::any_cast<double>(any_floating)); });
    register_step("convert/text_to_text/std_any",
                  [any_text] { return std::any_cast<std::string>(any_text); });
#ifdef HAVE_QT6
    const QVariant qt_text(QString::fromStdString(short_text));
    const QVariant qt_integer(number);
    const QVariant qt_floating(1234.5);
    register_step("convert/text_to_int/qvariant", [qt_text] { return qt_text.toInt(); });
    register_step("convert/int_to_text/qvariant", [qt_integer] { return qt_integer.toString(); });
    register_step("convert/int_to_double/qvariant", [qt_integer] { return qt_integer.toDouble(); });
    register_step("convert/double_to_int/qvariant", [qt_floating] { return qt_floating.toInt(); });
    register_step("convert/text_to_text/qvariant", [qt_text] { return qt_text.toString(); });
    register_step("convert/text_to_bool/qvariant", [qt_text] { return qt_text.toBool(); });
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
    register_library<std::any>("std_any", short_text, long_text);
#ifdef HAVE_BOOST_VARIANT
    register_library<boost::any>("boost_any", short_text, long_text);
    register_library<boost::variant<int, double, std::string>>("boost_variant", short_text,
                                                               long_text);
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
