// Random and difficult values and strings for the floating-point conversions, and the results of a
// standard stream for them. The test in the suite uses a few of them, the proof many.
#pragma once

#include <tova/generic/convert/str_to_x.hpp>
#include <tova/i18n/format.hpp>
#include <tova/serialization/serialize_text_buf.hpp>
#include <tova/types/variant.hpp>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>
#include <string>

namespace test_support {

typedef std::mt19937_64 generator;

template <typename Floating>
bool same_bits(Floating left, Floating right) {
    // Ten bytes of a long double are its value, the others are padding.
    return std::memcmp(&left, &right, sizeof left < 10 ? sizeof left : 10) == 0;
}

inline double from_bits(unsigned long bits) {
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// Values of many kinds: random bits, decimal fractions, integers, numbers next to a power of two or
// ten, subnormal numbers, and midpoints between two numbers with few digits.
inline double random_value(generator& random) {
    const unsigned long bits = random();
    const double sign = bits & 1 ? -1 : 1;
    const int digits = static_cast<int>(random() % 17) + 1;
    const double below =
        static_cast<double>(random() % static_cast<unsigned long>(std::pow(10, digits)));
    switch (random() % 8) {
    case 0:
    case 1:
        return from_bits(random());
    case 2:
        return sign * below / std::pow(10, static_cast<int>(random() % 20));
    case 3:
        return sign * below * std::pow(10, static_cast<int>(random() % 20));
    case 4:
        return from_bits((random() % 2 << 63) | (random() >> (12 + random() % 52)));
    case 5: {
        const double power = random() % 2 != 0
                                 ? std::ldexp(1, static_cast<int>(random() % 2098) - 1074)
                                 : std::pow(10, static_cast<int>(random() % 632) - 323);
        unsigned long near;
        std::memcpy(&near, &power, sizeof near);
        return sign * from_bits(near + random() % 5 - 2);
    }
    case 6:  // odd multiples of one half, one quarter and so on: ties in decimal
        return sign * (2 * below + 1) / static_cast<double>(1UL << (random() % 20 + 1));
    default:
        return sign * static_cast<double>(random() % 1000000) / 100;
    }
}

// The exact midpoint between a double and its neighbor: up to 767 digits.
inline std::string middle_after(double value) {
    const double next = std::nextafter(value, std::numeric_limits<double>::infinity());
    const long double middle = (static_cast<long double>(value) + next) / 2;
    char text[900];
    std::snprintf(text, sizeof text, "%.800Le", middle);
    return text;
}

inline std::string random_digits(generator& random, unsigned long count) {
    std::string digits;
    const unsigned kind = random() % 4;
    for (unsigned long i = 0; i != count; ++i)
        digits += static_cast<char>(kind == 0 ? '0' : kind == 1 ? '9' : '0' + random() % 10);
    return digits;
}

// A string that in most cases begins like a number.
inline std::string random_text(generator& random) {
    char text[900];
    const unsigned kind = random() % 16;
    if (kind < 4) {
        std::snprintf(text, sizeof text, "%.*g", static_cast<int>(random() % 22),
                      random_value(random));
        return text;
    }
    if (kind == 4) {
        std::snprintf(text, sizeof text, "%.*f", static_cast<int>(random() % 12),
                      static_cast<double>(random() % 100000000) / 10000);
        return text;
    }
    if (kind == 5) {
        // Cut anywhere, the midpoint is a difficult case with that many digits.
        std::string middle = middle_after(random_value(random));
        const auto exponent = middle.find('e');
        if (exponent == std::string::npos)
            return middle;
        const std::string tail = middle.substr(exponent);
        middle.resize(random() % 4 == 0 ? exponent : random() % 40 + 3);
        if (random() % 3 == 0)
            middle += static_cast<char>('0' + random() % 10);
        return middle + tail;
    }
    if (kind == 6) {
        static const char units[] = "0123456789..eE+-  x\tnif,";
        std::string any;
        for (unsigned long i = random() % 24; i != 0; --i)
            any += units[random() % (sizeof units - 1)];
        return any;
    }
    std::string number;
    static const char* const starts[] = {"", "", "", "", "-", "+", " ", "\t\n -", "00", "-0"};
    number += starts[random() % 10];
    number += random_digits(random, random() % (random() % 8 == 0 ? 60 : 20));
    if (random() % 2 == 0) {
        number += '.';
        number += random_digits(random, random() % (random() % 8 == 0 ? 60 : 20));
    }
    if (random() % 2 == 0) {
        number += random() % 2 == 0 ? 'e' : 'E';
        static const char* const signs[] = {"", "-", "+"};
        number += signs[random() % 3];
        if (random() % 16 != 0)
            number += std::to_string(random() % (random() % 8 == 0 ? 20000000000 : 345));
    }
    static const char* const tails[] = {"", "", "", "", "x", "e", ".", " 1"};
    return number + tails[random() % 8];
}

template <typename Floating>
Floating read_by_stream(const std::string& text) {
    std::stringstream stream(text);
    Floating value;
    stream >> value;
    return stream.fail() ? Floating(0) : value;
}

template <typename Floating>
std::string written_by_stream(Floating value, unsigned precision = 6) {
    std::stringstream stream;
    stream.precision(precision);
    stream << value;
    return stream.str();
}

// The differences between our conversions and the stream's, one per line; empty if there are none.

inline std::string check_reading(const std::string& text) {
    namespace convert = tova::generic::convert;
    const tova::strings::ustring8 ours(text);
    std::string wrong;
    if (!same_bits(convert::str_to_double(ours), read_by_stream<double>(text)))
        wrong += "str_to_double(\"" + text + "\")\n";
    if (!same_bits(convert::str_to_float(ours), read_by_stream<float>(text)))
        wrong += "str_to_float(\"" + text + "\")\n";
    return wrong;
}

inline std::string check_reading_long_double(const std::string& text) {
    const long double ours = tova::generic::convert::str_to_long_double(text);
    return same_bits(ours, read_by_stream<long double>(text))
               ? ""
               : "str_to_long_double(\"" + text + "\")\n";
}

inline std::string check_writing(double value, unsigned precision, int decimals) {
    char exact[64];
    std::snprintf(exact, sizeof exact, "%a", value);
    std::string wrong;
    if (tova::types::variant(value).as_string() != written_by_stream(value))
        wrong += std::string("variant ") + exact + "\n";
    tova::serialization::serialize_text_buf buffer;
    buffer.append_double(value, precision);
    if (buffer.as_str() != written_by_stream(value, precision) + '\x01')
        wrong += std::string("append_double ") + exact + " " + std::to_string(precision) + "\n";
    if (!(std::abs(value) < 1e19))
        return wrong;
    char fixed[64];
    std::snprintf(fixed, sizeof fixed, "%.*f", decimals, value);
    const tova::strings::ustring8 format("p\x01" + std::to_string(decimals));
    if (tova::i18n::_private::format_double(value, format) != fixed)
        wrong += std::string("format_double ") + exact + " " + std::to_string(decimals) + "\n";
    std::snprintf(fixed, sizeof fixed, "%.2f", value);
    if (tova::i18n::_private::format_double(value, "") != fixed)
        wrong += std::string("format_double ") + exact + " without options\n";
    return wrong;
}

}  // namespace test_support
