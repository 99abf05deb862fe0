// A simple reference for the integer parsers: it reads the whole number first and then clamps it to
// the range of the type.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace test_support {

__extension__ typedef __int128 wide_int;

struct parse_outcome {
    enum kind_t { number, bad_radix, overflow, underflow };
    kind_t kind;
    wide_int value;

    bool operator==(const parse_outcome& other) const {
        return kind == other.kind && value == other.value;
    }
};

inline std::string as_text(wide_int value) {
    if (value == 0)
        return "0";
    std::string digits;
    for (wide_int rest = value < 0 ? -value : value; rest != 0; rest /= 10)
        digits.insert(digits.begin(), static_cast<char>('0' + static_cast<int>(rest % 10)));
    return (value < 0 ? "-" : "") + digits;
}

// The number in a radix; `letter_a` is 'a' or 'A' and sets the case of the digits above 9.
inline std::string as_text(wide_int value, int radix, char letter_a) {
    std::string digits;
    wide_int rest = value < 0 ? -value : value;
    do {
        const int digit = static_cast<int>(rest % radix);
        digits.insert(digits.begin(),
                      static_cast<char>(digit < 10 ? '0' + digit : letter_a + digit - 10));
        rest /= radix;
    } while (rest != 0);
    return (value < 0 ? "-" : "") + digits;
}

inline bool oracle_space(long unit) {
    return unit == ' ' || (unit >= '\t' && unit <= '\r');
}

inline int oracle_digit(long unit, long radix) {
    int digit = -1;
    if (unit >= '0' && unit <= '9')
        digit = static_cast<int>(unit - '0');
    else if (unit >= 'a' && unit <= 'z')
        digit = static_cast<int>(unit - 'a') + 10;
    else if (unit >= 'A' && unit <= 'Z')
        digit = static_cast<int>(unit - 'A') + 10;
    return digit < radix ? digit : -1;
}

// The result of a parser for the range from `min` to `max`. `text` ends with a unit 0, which
// `length` does not count. The radix is not negative; 0 means that the prefix of the number
// decides.
inline parse_outcome oracle_parse(const std::vector<long>& text, std::size_t length, long radix,
                                  bool throw_on_range, wide_int min, wide_int max) {
    const parse_outcome zero = {parse_outcome::number, 0};
    const bool is_unsigned = min == 0;
    if (length == 0 && !is_unsigned)
        while (text[length] != 0)
            ++length;

    std::size_t i = 0;
    while (oracle_space(text[i]))
        if (++i >= length)
            return zero;
    const bool negative = text[i] == '-';
    if (negative || text[i] == '+')
        if (++i >= length)
            return zero;

    if (radix == 1 || radix > 36)
        return {parse_outcome::bad_radix, 0};
    if (radix == 0) {
        radix = 10;
        if (text[i] == '0' || text[i] == '\\') {
            if (++i >= length)
                return zero;
            radix = 8;
            if (text[i] == 'x' || text[i] == 'X')
                radix = 16;
            if (text[i] == 'b' || text[i] == 'B')
                radix = 2;
            if (radix != 8 && ++i >= length)
                return zero;
        }
    }

    const wide_int enough = wide_int(1) << 100;
    wide_int value = 0;
    for (bool first = true; first || i < length; first = false, ++i) {
        const int digit = oracle_digit(text[i], radix);
        if (digit < 0)
            break;
        if (value < enough)
            value = value * radix + digit;
    }
    if (negative)
        value = -value;
    if (value >= min && value <= max)
        return {parse_outcome::number, value};
    if (throw_on_range)
        return {negative ? parse_outcome::underflow : parse_outcome::overflow, 0};
    return {parse_outcome::number, negative ? min : max};
}

}  // namespace test_support
