// Decimal integers are written in groups of two and eight digits (decimal_digits.hpp), all others
// digit by digit, starting with the last.
#include <tova/generic/convert/x_to_str.hpp>

#include "generic/convert/decimal_digits.hpp"
#include "generic/convert/number_string.hpp"

#include <algorithm>

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

// Writes the digits and the terminator, and nothing after them, because the caller's buffer may end
// there.
__attribute__((noinline)) void write_long_decimal_string(unsigned long value, char* text) {
    *detail::write_digits_of(text, value) = '\0';
}

// Short numbers are written without another call, as a word of two or four digits. A leading zero
// is shifted out of the word, and the terminator follows the last digit.
inline void write_decimal_string(unsigned long value, char* text) {
    if (value < 100) {
        const unsigned zeros = value < 10 ? 1 : 0;
        detail::store_two(text, detail::load_pair(static_cast<unsigned>(value)) >> (8 * zeros));
        text[2 - zeros] = '\0';
    } else if (value < 10000) {
        const unsigned number = static_cast<unsigned>(value);
        const unsigned zeros = number < 1000 ? 1 : 0;
        const unsigned upper = number / 100;
        const unsigned word = detail::load_pair(upper) | detail::load_pair(number - 100 * upper)
                                                             << 16;
        detail::store_four(text, word >> (8 * zeros));
        text[4 - zeros] = '\0';
    } else {
        write_long_decimal_string(value, text);
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
    if (__builtin_expect(radix == 10, 1)) {
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
    // Without a branch, because signs are hard to predict: the first digit overwrites an unneeded
    // sign.
    const Value sign = value < 0 ? 1 : 0;
    *buffer = '-';
    write_unsigned((static_cast<Value>(value) ^ (0 - sign)) + sign, buffer + sign, radix);
}

}  // namespace

// clang-format off
const char detail::digit_pairs[201] =
    "0001020304050607080910111213141516171819"
    "2021222324252627282930313233343536373839"
    "4041424344454647484950515253545556575859"
    "6061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";
// clang-format on

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
    return detail::decimal_string(static_cast<unsigned long>(value));
}

}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
