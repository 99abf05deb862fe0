// Integers in the usual radix are written eight digits at a time (decimal_digits.hpp), the others
// digit by digit from the last one.
#include <tova/generic/convert/x_to_str.hpp>

#include "generic/convert/decimal_digits.hpp"

#include <algorithm>
#include <cstring>

namespace TOVA_2_18 {
namespace generic {
namespace convert {

namespace {

// Writes the digits in reverse order and returns the end. At least one digit is written, so 0
// becomes "0".
template <typename Unit, typename Value>
inline Unit* write_reversed(Value value, Unit* end, Value radix) {
    do {
        const Value digit = value % radix;
        *end++ = static_cast<Unit>(digit < 10 ? '0' + digit : 'a' + (digit - 10));
        value /= radix;
    } while (value != 0);
    return end;
}

// Stores the first `size` bytes of the word, 2 to 8, and none after them: the caller's buffer may
// end there.
inline void store_exactly(char* text, unsigned long word, int size) {
    if (size >= 4) {
        std::memcpy(text, &word, 4);
        word >>= 8 * (size - 4);
        std::memcpy(text + size - 4, &word, 4);
    } else {
        std::memcpy(text, &word, 2);
        text[size - 1] = static_cast<char>(word >> (8 * (size - 1)));
    }
}

// The digits and the terminator.
inline void write_decimal_string(unsigned long value, char* text) {
    if (value >= detail::hundred_million) {
        // The first digits are stored as eight characters, of which the next eight overwrite the
        // rest.
        char* const last = text + detail::write_decimal(text, value / detail::hundred_million);
        detail::store_eight(last, detail::digit_values(value % detail::hundred_million) |
                                      detail::ascii_zeros);
        last[8] = '\0';
        return;
    }
    const unsigned long values = detail::digit_values(value);
    const int zeros = value == 0 ? 7 : __builtin_ctzl(values) / 8;
    // Zero bytes move in at the top, and the first of them is the terminator.
    const unsigned long digits = (values | detail::ascii_zeros) >> (8 * zeros);
    if (zeros != 0) {
        store_exactly(text, digits, 9 - zeros);
    } else {
        detail::store_eight(text, digits);
        text[8] = '\0';
    }
}

template <typename Unit>
inline void write_decimal_string(unsigned long value, Unit* text) {
    char digits[detail::max_decimal_size];
    Unit* const end = std::copy(digits, digits + detail::write_decimal(digits, value), text);
    *end = Unit();
}

// Contract: the radix is not checked. 0 divides by zero, 1 never ends for any value except 0, and a
// radix above 36 writes the characters after z.
template <typename Unit, typename Value>
inline void write_unsigned(Value value, Unit* first, unsigned int radix) {
    if (radix == 10) {
        write_decimal_string(value, first);
        return;
    }
    Unit* const end = write_reversed(value, first, Value{radix});
    *end = Unit();
    std::reverse(first, end);
}

// The magnitude is unsigned, so the smallest value has one, too.
template <typename Value, typename Signed, typename Unit>
void write_signed(Signed value, Unit* buffer, unsigned int radix) {
    Value magnitude = static_cast<Value>(value);
    if (value < 0) {
        *buffer++ = '-';
        magnitude = 0 - magnitude;
    }
    write_unsigned(magnitude, buffer, radix);
}

}  // namespace

void ltoa(int value, char* buffer, unsigned int radix) {
    write_signed<unsigned int>(value, buffer, radix);
}

void ltoa(int value, unsigned short* buffer, unsigned int radix) {
    write_signed<unsigned int>(value, buffer, radix);
}

void ltoa(int value, wchar_t* buffer, unsigned int radix) {
    write_signed<unsigned int>(value, buffer, radix);
}

void ultoa(unsigned int value, char* buffer, unsigned int radix) {
    write_unsigned(value, buffer, radix);
}

void ultoa(unsigned int value, unsigned short* buffer, unsigned int radix) {
    write_unsigned(value, buffer, radix);
}

void ultoa(unsigned int value, wchar_t* buffer, unsigned int radix) {
    write_unsigned(value, buffer, radix);
}

void lltoa(long value, char* buffer, unsigned int radix) {
    write_signed<unsigned long>(value, buffer, radix);
}

void lltoa(long value, unsigned short* buffer, unsigned int radix) {
    write_signed<unsigned long>(value, buffer, radix);
}

void lltoa(long value, wchar_t* buffer, unsigned int radix) {
    write_signed<unsigned long>(value, buffer, radix);
}

void ulltoa(unsigned long value, char* buffer, unsigned int radix) {
    write_unsigned(value, buffer, radix);
}

void ulltoa(unsigned long value, unsigned short* buffer, unsigned int radix) {
    write_unsigned(value, buffer, radix);
}

void ulltoa(unsigned long value, wchar_t* buffer, unsigned int radix) {
    write_unsigned(value, buffer, radix);
}

template <>
strings::ustring8 to_str<char>(const char& value) {
    return strings::ustring8(1, value);
}

strings::ustring8 to_str(unsigned int value) {
    char digits[detail::max_decimal_size];
    return strings::ustring8(digits, detail::write_decimal(digits, value));
}

}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
