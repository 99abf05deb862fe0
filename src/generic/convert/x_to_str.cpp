#include <tova/generic/convert/x_to_str.hpp>

#include <algorithm>

namespace TOVA_2_18 {
namespace generic {
namespace convert {

namespace {

// Writes the digits with the last one first and returns the end. At least one digit is written, so
// that 0 is "0".
template <typename Unit, typename Value>
inline Unit* write_reversed(Value value, Unit* end, Value radix) {
    do {
        const Value digit = value % radix;
        *end++ = static_cast<Unit>(digit < 10 ? '0' + digit : 'a' + (digit - 10));
        value /= radix;
    } while (value != 0);
    return end;
}

// Contract: the radix is not checked. 0 divides by zero, 1 never ends for any value but 0, and a
// radix above 36 writes the characters after z.
template <typename Unit, typename Value>
void write_unsigned(Value value, Unit* first, unsigned int radix) {
    // The common radix is a constant, so that no division is needed.
    Unit* const end = radix == 10 ? write_reversed(value, first, Value{10})
                                  : write_reversed(value, first, Value{radix});
    *end = Unit();
    std::reverse(first, end);
}

// The magnitude is unsigned, so that the least value has one too.
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

template TOVA_API strings::ustring8 to_str<char>(const char& value);

strings::ustring8 to_str(unsigned int value) {
    char buffer[11];  // ten digits and the terminator
    ultoa(value, buffer, 10);
    return strings::ustring8(buffer);
}

}  // namespace convert
}  // namespace generic
}  // namespace TOVA_2_18
