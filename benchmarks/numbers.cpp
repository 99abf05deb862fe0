// Numbers to strings and back.
//
// Each round processes the same thousand numbers and adds up the values or lengths, so that no
// library can skip the work. Printing writes to a buffer of the caller where a library can do that,
// otherwise to a string of its own.
#include <tova/generic/convert/str_to_x.hpp>
#include <tova/generic/convert/x_to_str.hpp>
#include <tova/types/variant.hpp>

#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#ifdef HAVE_FMT
#include <fmt/format.h>
#endif
#ifdef HAVE_QT6
#include <QByteArray>
#include <QString>
#endif
#ifdef HAVE_BOOST_LEXICAL_CAST
#include <boost/lexical_cast.hpp>
#endif

namespace {

namespace convert = tova::generic::convert;
using tova::strings::ustring8;
using tova::types::radix_t;
using tova::types::variant;

const int count = 1000;

// Numbers of 1 to `bits` bits, evenly spread over the lengths.
std::vector<long> integers(int bits) {
    std::mt19937_64 random(1);
    std::vector<long> made;
    for (int i = 0; i < count; ++i)
        made.push_back(static_cast<long>(random() >> (64 - 1 - i % bits)) *
                       (random() % 2 == 0 ? 1 : -1));
    return made;
}

std::vector<ustring8> strings_of(const std::vector<long>& numbers, const char* format) {
    std::vector<ustring8> made;
    for (long number : numbers) {
        char text[32];
        std::snprintf(text, sizeof text, format, number);
        made.push_back(text);
    }
    return made;
}

std::vector<double> floats(bool is_short) {
    std::mt19937_64 random(2);
    std::vector<double> made;
    for (int i = 0; i < count; ++i)
        made.push_back(is_short ? static_cast<double>(random() % 1000000) / 100
                                : std::uniform_real_distribution<double>(-1e6, 1e6)(random));
    return made;
}

std::vector<ustring8> strings_of(const std::vector<double>& numbers) {
    std::vector<ustring8> made;
    for (double number : numbers) {
        char text[32];
        std::snprintf(text, sizeof text, "%.17g", number);
        for (int digits = 1; digits < 17; ++digits) {
            char shorter[32];
            std::snprintf(shorter, sizeof shorter, "%.*g", digits, number);
            if (std::strtod(shorter, nullptr) == number) {
                std::strcpy(text, shorter);
                break;
            }
        }
        made.push_back(text);
    }
    return made;
}

// A round over all inputs; the results are added up.
template <typename Input, typename Step>
void round_of(const std::string& name, const std::vector<Input>& inputs, const Step& step) {
    benchmark::RegisterBenchmark(name.c_str(), [inputs, step](benchmark::State& state) {
        for (auto _ : state) {
            decltype(step(inputs[0])) sum = 0;
            for (const Input& input : inputs)
                sum += step(input);
            benchmark::DoNotOptimize(sum);
        }
        state.SetItemsProcessed(static_cast<long>(state.iterations()) * count);
    });
}

void parse_integers(const char* name, const std::vector<ustring8>& texts, int radix) {
    const std::string operation = std::string("parse_int/") + name;
    const auto base = static_cast<radix_t::base>(radix);
    round_of(operation + "/tova", texts, [base](const ustring8& text) {
        return convert::str_to_long(text.data(), text.size(), base, false);
    });
    round_of(operation + "/strtol", texts,
             [radix](const ustring8& text) { return std::strtol(text.c_str(), nullptr, radix); });
    if (radix != 0)
        round_of(operation + "/from_chars", texts, [radix](const ustring8& text) {
            long value = 0;
            std::from_chars(text.data(), text.data() + text.size(), value, radix);
            return value;
        });
#ifdef HAVE_BOOST_LEXICAL_CAST
    if (radix == 10)
        round_of(operation + "/boost", texts, [](const ustring8& text) {
            return boost::lexical_cast<long>(text.data(), text.size());
        });
#endif
#ifdef HAVE_QT6
    std::vector<QByteArray> bytes;
    for (const ustring8& text : texts)
        bytes.push_back(QByteArray(text.data(), static_cast<qsizetype>(text.size())));
    round_of(operation + "/qt6", bytes,
             [radix](const QByteArray& text) { return text.toLong(nullptr, radix); });
#endif
}

void parse_wide_integers(const char* name, const std::vector<ustring8>& texts) {
    const std::string operation = std::string("parse_int_wide/") + name;
    std::vector<std::wstring> wide;
    std::vector<tova::strings::ustring16> utf16;
    for (const ustring8& text : texts) {
        wide.emplace_back(text.begin(), text.end());
        utf16.emplace_back(text.begin(), text.end());
    }
    round_of(operation + "32/tova", wide, [](const std::wstring& text) {
        return convert::str_to_long(text.data(), text.size(), radix_t::decimal, false);
    });
    round_of(operation + "32/wcstol", wide,
             [](const std::wstring& text) { return std::wcstol(text.c_str(), nullptr, 10); });
    round_of(operation + "16/tova", utf16, [](const tova::strings::ustring16& text) {
        return convert::str_to_long(text.data(), text.size(), radix_t::decimal, false);
    });
#ifdef HAVE_QT6
    std::vector<QString> qt;
    for (const ustring8& text : texts)
        qt.push_back(QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size())));
    round_of(operation + "16/qt6", qt, [](const QString& text) { return text.toLong(); });
#endif
}

void parse_floats(const char* name, const std::vector<ustring8>& texts) {
    const std::string operation = std::string("parse_double/") + name;
    round_of(operation + "/tova", texts,
             [](const ustring8& text) { return convert::str_to_double(text); });
    round_of(operation + "/strtod", texts,
             [](const ustring8& text) { return std::strtod(text.c_str(), nullptr); });
    round_of(operation + "/stringstream", texts, [](const ustring8& text) {
        std::stringstream stream(text);
        double value = 0;
        stream >> value;
        return value;
    });
    round_of(operation + "/from_chars", texts, [](const ustring8& text) {
        double value = 0;
        std::from_chars(text.data(), text.data() + text.size(), value);
        return value;
    });
#ifdef HAVE_BOOST_LEXICAL_CAST
    round_of(operation + "/boost", texts, [](const ustring8& text) {
        return boost::lexical_cast<double>(text.data(), text.size());
    });
#endif
#ifdef HAVE_QT6
    std::vector<QByteArray> bytes;
    for (const ustring8& text : texts)
        bytes.push_back(QByteArray(text.data(), static_cast<qsizetype>(text.size())));
    round_of(operation + "/qt6", bytes, [](const QByteArray& text) { return text.toDouble(); });
#endif
}

void print_integers(const char* name, const std::vector<long>& numbers, int radix) {
    const std::string operation = std::string("print_int/") + name;
    round_of(operation + "/tova", numbers, [radix](long number) {
        char buffer[66];
        convert::lltoa(number, buffer, static_cast<unsigned>(radix));
        benchmark::DoNotOptimize(buffer);
        return static_cast<long>(buffer[0]);
    });
    round_of(operation + "/to_chars", numbers, [radix](long number) {
        char buffer[66];
        *std::to_chars(buffer, buffer + sizeof buffer, number, radix).ptr = '\0';
        benchmark::DoNotOptimize(buffer);
        return static_cast<long>(buffer[0]);
    });
    if (radix == 10) {
        round_of(operation + "/snprintf", numbers, [](long number) {
            char buffer[66];
            std::snprintf(buffer, sizeof buffer, "%ld", number);
            benchmark::DoNotOptimize(buffer);
            return static_cast<long>(buffer[0]);
        });
#ifdef HAVE_FMT
        round_of(operation + "/fmt", numbers, [](long number) {
            const fmt::format_int text(number);
            benchmark::DoNotOptimize(text.c_str());
            return static_cast<long>(text.c_str()[0]);
        });
#endif
#ifdef HAVE_BOOST_LEXICAL_CAST
        round_of(operation + "/boost", numbers, [](long number) {
            return static_cast<long>(boost::lexical_cast<std::string>(number).size());
        });
#endif
    }
#ifdef HAVE_QT6
    round_of(operation + "/qt6", numbers, [radix](long number) {
        return static_cast<long>(QByteArray::number(static_cast<qlonglong>(number), radix).size());
    });
#endif
}

// Six digits in a string: what a variant converts to. The round includes making the variant, since
// there is no other way to the string.
void print_floats(const char* name, const std::vector<double>& numbers) {
    const std::string operation = std::string("print_double/") + name;
    round_of(operation + "/tova", numbers,
             [](double number) { return variant(number).as_string().size(); });
    round_of(operation + "/stringstream", numbers, [](double number) {
        std::stringstream stream;
        stream << number;
        return stream.str().size();
    });
    round_of(operation + "/to_chars", numbers, [](double number) {
        char buffer[32];
        return std::string(buffer, std::to_chars(buffer, buffer + sizeof buffer, number,
                                                 std::chars_format::general, 6)
                                       .ptr)
            .size();
    });
#ifdef HAVE_FMT
    round_of(operation + "/fmt", numbers,
             [](double number) { return fmt::format("{:g}", number).size(); });
#endif
#ifdef HAVE_BOOST_LEXICAL_CAST
    round_of(operation + "/boost", numbers,
             [](double number) { return boost::lexical_cast<std::string>(number).size(); });
#endif
#ifdef HAVE_QT6
    round_of(operation + "/qt6", numbers, [](double number) {
        return static_cast<std::size_t>(QByteArray::number(number, 'g', 6).size());
    });
#endif
}

const bool registered = [] {
    const auto all = integers(63);
    const auto small = integers(14);
    const auto decimal = strings_of(all, "%ld");
    parse_integers("decimal", decimal, 10);
    parse_integers("decimal_small", strings_of(small, "%ld"), 10);
    parse_integers("detect", decimal, 0);
    parse_integers("hexadecimal", strings_of(all, "%lx"), 16);
    parse_wide_integers("decimal", decimal);
    parse_floats("short", strings_of(floats(true)));
    parse_floats("long", strings_of(floats(false)));
    print_integers("decimal", all, 10);
    print_integers("decimal_small", small, 10);
    print_integers("hexadecimal", all, 16);
    print_floats("short", floats(true));
    print_floats("long", floats(false));
    return true;
}();

}  // namespace
