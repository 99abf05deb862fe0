// Numbers to strings and back.
//
// Each round processes the same thousand numbers and adds up the values or lengths, so that no
// library can skip the work. Printing writes to a buffer of the caller where a library can do that,
// otherwise to a string of its own.
#include <tova/generic/convert/str_to_x.hpp>
#include <tova/generic/convert/x_to_str.hpp>
#include <tova/i18n/format.hpp>
#include <tova/types/variant.hpp>

#include "cell.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <functional>
#include <iomanip>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#ifdef HAVE_ABSL
#include <absl/strings/charconv.h>
#include <absl/strings/numbers.h>
#endif
#ifdef HAVE_DOUBLE_CONVERSION
#include <double-conversion/double-conversion.h>
#endif
#ifdef HAVE_FAST_FLOAT
#include <fast_float/fast_float.h>
#endif
#ifdef HAVE_FMT
#include <fmt/compile.h>
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

// Any exponent.
std::vector<double> wide_floats() {
    std::mt19937_64 random(3);
    std::vector<double> made;
    while (made.size() < count) {
        const std::uint64_t bits = random();
        double number;
        std::memcpy(&number, &bits, sizeof number);
        if (std::isnormal(number))
            made.push_back(number);
    }
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

std::string as_text(const std::string& text) {
    return text;
}

std::string as_text(const char* text) {
    return text;
}

template <typename Number>
std::enable_if_t<std::is_arithmetic<Number>::value, std::string> as_text(Number number) {
    std::ostringstream text;
    text << std::setprecision(17) << number;
    return text.str();
}

#ifdef HAVE_QT6
std::string as_text(const QByteArray& text) {
    return text.toStdString();
}
#endif

// What a round adds up: the value itself, or something that needs the string.
template <typename Number>
std::enable_if_t<std::is_arithmetic<Number>::value, Number> part_of_sum(Number number) {
    return number;
}

long part_of_sum(const char* text) {
    return text[0];
}

template <typename String>
std::enable_if_t<std::is_class<String>::value, long> part_of_sum(const String& text) {
    return static_cast<long>(text.size());
}

template <typename Input, typename Step>
std::vector<std::string> results_of(const std::vector<Input>& inputs, const Step& step) {
    std::vector<std::string> made;
    for (const Input& input : inputs)
        made.push_back(as_text(step(input)));
    return made;
}

// Our results for each operation, with which the others are compared. Ours is added first.
std::map<std::string, std::function<std::vector<std::string>()>>& expected() {
    static std::map<std::string, std::function<std::vector<std::string>()>> all;
    return all;
}

// A round over all inputs; the results are added up.
template <typename Input, typename Step>
void round_of(const std::string& operation, const std::string& library,
              const std::vector<Input>& inputs, const Step& step) {
    if (library == "tova")
        expected()[operation] = [inputs, step] { return results_of(inputs, step); };
    benchmark::RegisterBenchmark((operation + "/" + library).c_str(), [=](benchmark::State& state) {
        if (library != "tova" && results_of(inputs, step) != expected()[operation]())
            return state.SkipWithError("has another result");
        for (auto _ : state) {
            decltype(part_of_sum(step(inputs[0]))) sum = 0;
            for (const Input& input : inputs)
                sum += part_of_sum(step(input));
            benchmark::DoNotOptimize(sum);
        }
        state.SetItemsProcessed(static_cast<long>(state.iterations()) * count);
    });
}

// The floor of a parser: a call that reads a unit of the string and returns the known number.
template <typename Parse>
void add_parse_floor(const std::string& operation, const std::vector<ustring8>& texts,
                     const Parse& parse) {
    using number = decltype(parse(texts[0]));
    std::vector<std::pair<const ustring8*, number>> known;
    static std::deque<ustring8> kept;
    for (const ustring8& text : texts) {
        kept.push_back(text);
        known.emplace_back(&kept.back(), parse(text));
    }
    round_of(operation, "floor", known, [](const std::pair<const ustring8*, number>& one) {
        benchmark::DoNotOptimize(one.first->data()[0]);
        return bench_support::called(one.second);
    });
}

// The floor of a printer: a copy of the known string, to a buffer or as a new string.
template <typename Input, typename Print>
void add_print_floor(const std::string& operation, const std::vector<Input>& inputs,
                     const Print& print, bool is_string) {
    std::vector<ustring8> known;
    for (const Input& input : inputs)
        known.push_back(as_text(print(input)));
    if (is_string) {
        round_of(operation, "floor", known, [](const ustring8& text) { return std::string(text); });
    } else {
        round_of(operation, "floor", known, [](const ustring8& text) {
            static char buffer[66];
            std::memcpy(buffer, text.c_str(), text.size() + 1);
            benchmark::DoNotOptimize(buffer);
            return static_cast<const char*>(buffer);
        });
    }
}

// Our code without its fast path: any radix, from the last digit to the first.
__attribute__((noipa)) void plain_print(long number, char* buffer, unsigned radix) {
    unsigned long magnitude = static_cast<unsigned long>(number);
    if (number < 0) {
        *buffer++ = '-';
        magnitude = 0 - magnitude;
    }
    char* end = buffer;
    do {
        *end++ = static_cast<char>('0' + magnitude % radix);
        magnitude /= radix;
    } while (magnitude != 0);
    *end = '\0';
    std::reverse(buffer, end);
}

void parse_integers(const char* name, const std::vector<ustring8>& texts, int radix) {
    const std::string operation = std::string("parse_int/") + name;
    const auto base = static_cast<radix_t::base>(radix);
    const auto ours = [base](const ustring8& text) {
        return convert::str_to_long(text.data(), text.size(), base, false);
    };
    round_of(operation, "tova", texts, ours);
    add_parse_floor(operation, texts, ours);
    if (radix == 10) {
        // A leading space selects the parser for all radices, which reads digit by digit.
        std::vector<ustring8> spaced;
        for (const ustring8& text : texts)
            spaced.push_back(ustring8(" " + text));
        round_of(operation, "plain", spaced, ours);
    }
    round_of(operation, "strtol", texts,
             [radix](const ustring8& text) { return std::strtol(text.c_str(), nullptr, radix); });
    if (radix != 0) {
        round_of(operation, "from_chars", texts, [radix](const ustring8& text) {
            long value = 0;
            std::from_chars(text.data(), text.data() + text.size(), value, radix);
            return value;
        });
    }
#ifdef HAVE_ABSL
    if (radix == 10) {
        round_of(operation, "abseil", texts, [](const ustring8& text) {
            std::int64_t value = 0;
            benchmark::DoNotOptimize(absl::SimpleAtoi(text, &value));
            return static_cast<long>(value);
        });
    }
#endif
#ifdef HAVE_BOOST_LEXICAL_CAST
    if (radix == 10) {
        round_of(operation, "boost", texts, [](const ustring8& text) {
            return boost::lexical_cast<long>(text.data(), text.size());
        });
    }
#endif
#ifdef HAVE_QT6
    std::vector<QByteArray> bytes;
    for (const ustring8& text : texts)
        bytes.push_back(QByteArray(text.data(), static_cast<qsizetype>(text.size())));
    round_of(operation, "qt6", bytes,
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
    round_of(operation + "32", "tova", wide, [](const std::wstring& text) {
        return convert::str_to_long(text.data(), text.size(), radix_t::decimal, false);
    });
    round_of(operation + "32", "wcstol", wide,
             [](const std::wstring& text) { return std::wcstol(text.c_str(), nullptr, 10); });
    round_of(operation + "16", "tova", utf16, [](const tova::strings::ustring16& text) {
        return convert::str_to_long(text.data(), text.size(), radix_t::decimal, false);
    });
#ifdef HAVE_QT6
    std::vector<QString> qt;
    for (const ustring8& text : texts)
        qt.push_back(QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size())));
    round_of(operation + "16", "qt6", qt, [](const QString& text) { return text.toLong(); });
#endif
}

void parse_floats(const char* name, const std::vector<ustring8>& texts) {
    const std::string operation = std::string("parse_double/") + name;
    const auto ours = [](const ustring8& text) { return convert::str_to_double(text); };
    round_of(operation, "tova", texts, ours);
    add_parse_floor(operation, texts, ours);
    round_of(operation, "strtod", texts,
             [](const ustring8& text) { return std::strtod(text.c_str(), nullptr); });
    round_of(operation, "plain", texts, [](const ustring8& text) {
        std::stringstream stream(text);
        double value = 0;
        stream >> value;
        return stream.fail() ? 0.0 : value;
    });
    round_of(operation, "from_chars", texts, [](const ustring8& text) {
        double value = 0;
        std::from_chars(text.data(), text.data() + text.size(), value);
        return value;
    });
#ifdef HAVE_FAST_FLOAT
    round_of(operation, "fast_float", texts, [](const ustring8& text) {
        double value = 0;
        fast_float::from_chars(text.data(), text.data() + text.size(), value);
        return value;
    });
#endif
#ifdef HAVE_ABSL
    round_of(operation, "abseil", texts, [](const ustring8& text) {
        double value = 0;
        absl::from_chars(text.data(), text.data() + text.size(), value);
        return value;
    });
#endif
#ifdef HAVE_DOUBLE_CONVERSION
    static const double_conversion::StringToDoubleConverter converter(0, 0, 0, "inf", "nan");
    round_of(operation, "double_conversion", texts, [](const ustring8& text) {
        int used;
        return converter.StringToDouble(text.data(), static_cast<int>(text.size()), &used);
    });
#endif
#ifdef HAVE_BOOST_LEXICAL_CAST
    round_of(operation, "boost", texts, [](const ustring8& text) {
        return boost::lexical_cast<double>(text.data(), text.size());
    });
#endif
#ifdef HAVE_QT6
    std::vector<QByteArray> bytes;
    for (const ustring8& text : texts)
        bytes.push_back(QByteArray(text.data(), static_cast<qsizetype>(text.size())));
    round_of(operation, "qt6", bytes, [](const QByteArray& text) { return text.toDouble(); });
#endif
}

// Into a buffer of the caller, with a terminator.
void print_integers(const char* name, const std::vector<long>& numbers, int radix) {
    const std::string operation = std::string("print_int/") + name;
    static char buffer[66];
    const auto written = [] {
        benchmark::DoNotOptimize(buffer);
        return static_cast<const char*>(buffer);
    };
    const auto ours = [=](long number) {
        convert::lltoa(number, buffer, static_cast<unsigned>(radix));
        return written();
    };
    round_of(operation, "tova", numbers, ours);
    add_print_floor(operation, numbers, ours, false);
    // The others print a negative number to another base than 10 as "-ff"; ours has no sign there.
    if (radix != 10)
        return;
    round_of(operation, "plain", numbers, [=](long number) {
        plain_print(number, buffer, 10);
        return written();
    });
    round_of(operation, "to_chars", numbers, [=](long number) {
        *std::to_chars(buffer, buffer + sizeof buffer, number).ptr = '\0';
        return written();
    });
    round_of(operation, "snprintf", numbers, [=](long number) {
        std::snprintf(buffer, sizeof buffer, "%ld", number);
        return written();
    });
#ifdef HAVE_ABSL
    round_of(operation, "abseil", numbers, [=](long number) {
        absl::numbers_internal::FastIntToBuffer(number, buffer);
        return written();
    });
#endif
#ifdef HAVE_FMT
    round_of(operation, "fmt", numbers, [=](long number) {
        *fmt::format_to(buffer, FMT_COMPILE("{}"), number) = '\0';
        return written();
    });
#endif
#ifdef HAVE_BOOST_LEXICAL_CAST
    round_of(operation, "boost", numbers,
             [](long number) { return boost::lexical_cast<std::string>(number); });
#endif
#ifdef HAVE_QT6
    round_of(operation, "qt6", numbers,
             [](long number) { return QByteArray::number(static_cast<qlonglong>(number)); });
#endif
}

// Six digits in a string: what a variant converts to. The variants are made beforehand, as the
// strings of the parsers are.
void print_floats(const char* name, const std::vector<double>& numbers) {
    const std::string operation = std::string("print_double/") + name;
    const auto ours = [](const variant& number) { return number.as_string(); };
    const std::vector<variant> variants(numbers.begin(), numbers.end());
    round_of(operation, "tova", variants, ours);
    add_print_floor(operation, variants, ours, true);
    round_of(operation, "plain", numbers, [](double number) {
        std::stringstream stream;
        stream << number;
        return ustring8(stream.str());
    });
    round_of(operation, "to_chars", numbers, [](double number) {
        char buffer[32];
        return std::string(buffer, std::to_chars(buffer, buffer + sizeof buffer, number,
                                                 std::chars_format::general, 6)
                                       .ptr);
    });
#ifdef HAVE_ABSL
    round_of(operation, "abseil", numbers, [](double number) {
        char buffer[absl::numbers_internal::kSixDigitsToBufferSize];
        return std::string(buffer, absl::numbers_internal::SixDigitsToBuffer(number, buffer));
    });
#endif
#ifdef HAVE_FMT
    round_of(operation, "fmt", numbers,
             [](double number) { return fmt::format(FMT_COMPILE("{:g}"), number); });
#endif
#ifdef HAVE_QT6
    round_of(operation, "qt6", numbers,
             [](double number) { return QByteArray::number(number, 'g', 6); });
#endif
}

// Two decimals in a string: how a message shows a number.
void print_decimals(const char* name, const std::vector<double>& numbers) {
    const std::string operation = std::string("print_decimals/") + name;
    const auto ours = [](double number) {
        static const ustring8 two_decimals;
        return tova::i18n::_private::format_double(number, two_decimals);
    };
    round_of(operation, "tova", numbers, ours);
    add_print_floor(operation, numbers, ours, true);
    round_of(operation, "to_chars", numbers, [](double number) {
        char buffer[400];
        return std::string(
            buffer,
            std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::fixed, 2).ptr);
    });
    round_of(operation, "plain", numbers, [](double number) {
        char buffer[400];
        return ustring8(
            buffer, static_cast<std::size_t>(std::snprintf(buffer, sizeof buffer, "%.2f", number)));
    });
#ifdef HAVE_FMT
    round_of(operation, "fmt", numbers,
             [](double number) { return fmt::format(FMT_COMPILE("{:.2f}"), number); });
#endif
#ifdef HAVE_QT6
    round_of(operation, "qt6", numbers,
             [](double number) { return QByteArray::number(number, 'f', 2); });
#endif
}

const bool registered = [] {
    const auto all = integers(63);
    const auto small = integers(14);
    auto positive = all;
    for (long& number : positive)
        number = std::abs(number);
    const auto decimal = strings_of(all, "%ld");
    parse_integers("decimal", decimal, 10);
    parse_integers("decimal_small", strings_of(small, "%ld"), 10);
    parse_integers("detect", decimal, 0);
    parse_integers("hexadecimal", strings_of(positive, "%lx"), 16);
    parse_wide_integers("decimal", decimal);
    parse_floats("short", strings_of(floats(true)));
    parse_floats("long", strings_of(floats(false)));
    parse_floats("wide", strings_of(wide_floats()));
    print_integers("decimal", all, 10);
    print_integers("decimal_small", small, 10);
    print_integers("hexadecimal", all, 16);
    print_floats("short", floats(true));
    print_floats("long", floats(false));
    print_floats("wide", wide_floats());
    print_decimals("short", floats(true));
    print_decimals("long", floats(false));
    return true;
}();

}  // namespace
