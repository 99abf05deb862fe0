// Text and number conversion: the integer parsers in all widths compared with the second
// implementation of the tests, the floating-point ones with a stream, the printers with the
// parsers.
//
// Input: one byte for the radix, one for flags, then the text.
#include <tova/exceptions/exceptions.hpp>
#include <tova/generic/convert/str_to_x.hpp>
#include <tova/generic/convert/x_to_str.hpp>

#include "../tests/support/number_oracle.hpp"
#include "require.hpp"
#include "support/choose_form.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace tova::generic::convert;
namespace exceptions = tova::exceptions;
using fuzz_support::require;
using test_support::parse_outcome;
using test_support::wide_int;
using tova::strings::ustring8;
using tova::types::radix_t;

struct request {
    std::vector<long> units;  // with a terminator
    std::size_t length;
    int radix;
    bool throw_on_range;
};

template <typename Unit, typename Result>
void compare(Result (*parse)(const Unit*, unsigned long, radix_t::base, bool), wide_int min,
             wide_int max, const request& asked) {
    // A buffer of exactly this size, so that a read past its end is noticed.
    const std::vector<Unit> text(asked.units.begin(), asked.units.end());
    std::vector<long> seen(text.begin(), text.end());
    parse_outcome actual = {parse_outcome::number, 0};
    try {
        actual.value = parse(text.data(), asked.length, static_cast<radix_t::base>(asked.radix),
                             asked.throw_on_range);
    } catch (const exceptions::invalid_argument_value&) {
        actual.kind = parse_outcome::bad_radix;
    } catch (const exceptions::overflow_error&) {
        actual.kind = parse_outcome::overflow;
    } catch (const exceptions::underflow_error&) {
        actual.kind = parse_outcome::underflow;
    }
    require(actual == test_support::oracle_parse(seen, asked.length, asked.radix,
                                                 asked.throw_on_range, min, max));
}

template <typename Unit>
void compare_all(const request& asked) {
    const wide_int max64 = (wide_int(1) << 63) - 1;
    compare<Unit, long>(str_to_long, -max64 - 1, max64, asked);
    compare<Unit, int>(str_to_int, -2147483647 - 1, 2147483647, asked);
    compare<Unit, short>(str_to_short, -32768, 32767, asked);
    compare<Unit, int>(str_to_signed, -2147483647 - 1, 2147483647, asked);
    compare<Unit, signed char>(str_to_int8, -128, 127, asked);
    compare<Unit, short>(str_to_int16, -32768, 32767, asked);
    compare<Unit, int>(str_to_int32, -2147483647 - 1, 2147483647, asked);
    compare<Unit, long>(str_to_int64, -max64 - 1, max64, asked);
    compare<Unit, unsigned int>(str_to_unsigned, 0, 4294967295L, asked);
    compare<Unit, unsigned char>(str_to_uint8, 0, 255, asked);
    compare<Unit, unsigned short>(str_to_uint16, 0, 65535, asked);
    compare<Unit, unsigned int>(str_to_uint32, 0, 4294967295L, asked);
    compare<Unit, unsigned long>(str_to_uint64, 0, 2 * max64 + 1, asked);
}

template <typename Value>
void compare_with_stream(Value (*parse)(const ustring8&), const std::string& text) {
    std::stringstream stream(text);
    Value expected = 0;
    stream >> expected;
    if (stream.fail())
        expected = 0;
    const Value actual = parse(text);
    // The sign of zero counts; the six padding bytes of a long double do not.
    require(std::memcmp(&actual, &expected, sizeof(Value) > 10 ? 10 : sizeof(Value)) == 0);
}

template <typename Unit>
void print_and_read_back(unsigned long number, int radix) {
    const auto base = static_cast<radix_t::base>(radix);
    Unit buffer[66];
    lltoa(static_cast<long>(number), buffer, static_cast<unsigned>(radix));
    require(str_to_long(buffer, 0, base, true) == static_cast<long>(number));
    ltoa(static_cast<int>(number), buffer, static_cast<unsigned>(radix));
    require(str_to_int(buffer, 0, base, true) == static_cast<int>(number));
    ulltoa(number, buffer, static_cast<unsigned>(radix));
    unsigned long length = 0;
    while (buffer[length] != 0)
        ++length;
    require(str_to_uint64(buffer, length, base, true) == number);
    ultoa(static_cast<unsigned>(number), buffer, static_cast<unsigned>(radix));
    for (length = 0; buffer[length] != 0;)
        ++length;
    require(str_to_uint32(buffer, length, base, true) == static_cast<unsigned>(number));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    if (size < 2)
        return 0;
    request asked;
    asked.radix = data[0] % 40;
    asked.throw_on_range = (data[1] & 1) != 0;
    const std::string text(reinterpret_cast<const char*>(data + 2), size - 2);
    asked.length = (data[1] & 2) != 0 ? 0 : text.size();

    asked.units.assign(text.begin(), text.end());
    asked.units.push_back(0);
    compare_all<char>(asked);
    compare_all<unsigned short>(asked);
    compare_all<wchar_t>(asked);

    // The same bytes as wide units.
    for (std::size_t i = 0; i + 1 < asked.units.size(); ++i)
        if ((data[1] & 4) != 0 && i % 3 == 0)
            asked.units[i] = (asked.units[i] & 0xFF) << 8 | (asked.units[i + 1] & 0xFF);
    compare_all<unsigned short>(asked);
    compare_all<wchar_t>(asked);

    compare_with_stream<float>(str_to_float, text);
    compare_with_stream<double>(str_to_double, text);
    compare_with_stream<long double>(str_to_long_double, text);

    unsigned long number = 0;
    std::memcpy(&number, text.data(), text.size() < sizeof number ? text.size() : sizeof number);
    const int radix = 2 + data[0] % 35;
    print_and_read_back<char>(number, radix);
    print_and_read_back<unsigned short>(number, radix);
    print_and_read_back<wchar_t>(number, radix);
    return 0;
}
