#include <tova/generic/convert/x_to_str.hpp>

#include <tova/generic/convert/str_to_x.hpp>
#include <tova/types/variant.hpp>

#include "support/child_process.hpp"
#include "support/failing_allocation.hpp"
#include "support/global_locale.hpp"
#include "support/number_oracle.hpp"
#include "support/widths.hpp"

#include <gtest/gtest.h>

#include <climits>
#include <csignal>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace tova::generic::convert;
using test_support::as_text;
using test_support::text;
using test_support::wide_int;
using tova::strings::ustring8;
using tova::types::radix_t;

// The string that `print` writes. The units after its terminator must be unchanged.
template <typename String, typename Value>
String printed(void (*print)(Value, typename String::value_type*, unsigned int), Value value,
               int base) {
    using unit = typename String::value_type;
    const unit untouched = 0x55;
    std::vector<unit> buffer(80, untouched);
    print(value, buffer.data(), static_cast<unsigned>(base));
    const String result(buffer.data());
    for (std::size_t i = result.size() + 1; i < buffer.size(); ++i)
        EXPECT_EQ(untouched, buffer[i]) << "unit " << i;
    return result;
}

template <typename String>
class IntegerToString : public ::testing::Test {};
TYPED_TEST_SUITE(IntegerToString, test_support::all_widths, test_support::width_name);

TYPED_TEST(IntegerToString, WritesLtoa) {
    const struct {
        int value;
        int base;
        const char* expected;
    } cases[] = {
        {0, 10, "0"},
        {0, 2, "0"},
        {7, 10, "7"},
        {-7, 10, "-7"},
        {10, 10, "10"},
        {255, 16, "ff"},
        {-255, 16, "-ff"},
        {-5, 2, "-101"},
        {35, 36, "z"},
        {36, 36, "10"},
        {2147483647, 10, "2147483647"},
        {-2147483647 - 1, 10, "-2147483648"},
        {-2147483647 - 1, 16, "-80000000"},
        {-2147483647 - 1, 2, "-10000000000000000000000000000000"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.expected);
        EXPECT_EQ(text<TypeParam>(c.expected), (printed<TypeParam, int>(ltoa, c.value, c.base)));
    }
}

TYPED_TEST(IntegerToString, WritesUltoa) {
    const struct {
        unsigned value;
        int base;
        const char* expected;
    } cases[] = {
        {0, 10, "0"},
        {4294967295u, 10, "4294967295"},
        {4294967295u, 16, "ffffffff"},
        {4294967295u, 2, "11111111111111111111111111111111"},
        {2147483648u, 10, "2147483648"},
        {4294967295u, 36, "1z141z3"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.expected);
        EXPECT_EQ(text<TypeParam>(c.expected),
                  (printed<TypeParam, unsigned>(ultoa, c.value, c.base)));
    }
}

TYPED_TEST(IntegerToString, WritesLltoa) {
    const struct {
        long value;
        int base;
        const char* expected;
    } cases[] = {
        {0, 10, "0"},
        {-1, 10, "-1"},
        {9223372036854775807L, 10, "9223372036854775807"},
        {-9223372036854775807L - 1, 10, "-9223372036854775808"},
        {-9223372036854775807L - 1, 16, "-8000000000000000"},
        {-9223372036854775807L - 1, 2,
         "-1000000000000000000000000000000000000000000000000000000000000000"},
        {-9223372036854775807L - 1, 36, "-1y2p0ij32e8e8"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.expected);
        EXPECT_EQ(text<TypeParam>(c.expected), (printed<TypeParam, long>(lltoa, c.value, c.base)));
    }
}

TYPED_TEST(IntegerToString, WritesUlltoa) {
    const struct {
        unsigned long value;
        int base;
        const char* expected;
    } cases[] = {
        {0, 10, "0"},
        {18446744073709551615ul, 10, "18446744073709551615"},
        {18446744073709551615ul, 16, "ffffffffffffffff"},
        {18446744073709551615ul, 36, "3w5e11264sgsf"},
        {9223372036854775808ul, 10, "9223372036854775808"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.expected);
        EXPECT_EQ(text<TypeParam>(c.expected),
                  (printed<TypeParam, unsigned long>(ulltoa, c.value, c.base)));
    }
}

TYPED_TEST(IntegerToString, AgreesWithThePlainOracleAndReadsBackInEveryRadix) {
    std::vector<long> values;
    for (int shift = 0; shift < 64; ++shift)
        for (long near : {-2, -1, 0, 1, 2})
            values.push_back(static_cast<long>((1UL << shift) + static_cast<unsigned long>(near)));
    for (int base = 2; base <= 36; ++base)
        for (long value : values) {
            const auto number = printed<TypeParam, long>(lltoa, value, base);
            ASSERT_EQ(text<TypeParam>(as_text(value, base, 'a').c_str()), number);
            const auto radix = static_cast<radix_t::base>(base);
            ASSERT_EQ(value, str_to_long(number.c_str(), number.size(), radix, true));

            const auto natural = static_cast<unsigned long>(value);
            const auto unsigned_number = printed<TypeParam, unsigned long>(ulltoa, natural, base);
            ASSERT_EQ(text<TypeParam>(as_text(natural, base, 'a').c_str()), unsigned_number);
            ASSERT_EQ(natural,
                      str_to_uint64(unsigned_number.c_str(), unsigned_number.size(), radix, true));

            const int low = static_cast<int>(value);
            ASSERT_EQ(text<TypeParam>(as_text(low, base, 'a').c_str()),
                      (printed<TypeParam, int>(ltoa, low, base)));
            const unsigned low_unsigned = static_cast<unsigned>(value);
            ASSERT_EQ(text<TypeParam>(as_text(low_unsigned, base, 'a').c_str()),
                      (printed<TypeParam, unsigned>(ultoa, low_unsigned, base)));
        }
}

TYPED_TEST(IntegerToString, WritesTheCharactersAfterZForARadixAboveThirtySix) {
    EXPECT_EQ(text<TypeParam>("{"), (printed<TypeParam, int>(ltoa, 36, 40)));
    EXPECT_EQ(text<TypeParam>("1}"), (printed<TypeParam, int>(ltoa, 78, 40)));
}

TYPED_TEST(IntegerToString, FitsALongInRadixTwoInto66Units) {
    typename TypeParam::value_type buffer[66];
    lltoa(LONG_MIN, buffer, 2);
    EXPECT_EQ(65u, TypeParam(buffer).size());
}

TYPED_TEST(IntegerToString, IgnoresTheGlobalLocale) {
    const test_support::global_locale locale(test_support::comma_locale());
    EXPECT_EQ(text<TypeParam>("1234567"), (printed<TypeParam, int>(ltoa, 1234567, 10)));
}

TYPED_TEST(IntegerToString, NeedsNoMemory) {
    typename TypeParam::value_type buffer[66];
    const unsigned long before = test_support::allocations();
    ltoa(INT_MIN, buffer, 2);
    ultoa(UINT_MAX, buffer, 2);
    lltoa(LONG_MIN, buffer, 2);
    ulltoa(ULONG_MAX, buffer, 2);
    EXPECT_EQ(before, test_support::allocations());
}

TYPED_TEST(IntegerToString, DividesByARadixOfZero) {
    typename TypeParam::value_type buffer[66];
    const std::function<void()> calls[] = {
        [&] { ltoa(1, buffer, 0); }, [&] { ultoa(0, buffer, 0); }, [&] { lltoa(-1, buffer, 0); },
        [&] { ulltoa(1, buffer, 0); }};
    for (const auto& call : calls) {
        const auto result = test_support::run_in_child(call);
        EXPECT_FALSE(result.exited && result.exit_code == 0);
        if (!result.exited && !test_support::under_sanitizer()) {
            EXPECT_EQ(SIGFPE, result.signal);
        }
    }
}

TEST(ToStr, ReturnsTheCharacterOfAChar) {
    EXPECT_EQ("A", to_str('A'));
    EXPECT_EQ(ustring8(1, '\0'), to_str('\0'));
    EXPECT_EQ("\xFF", to_str('\xFF'));
}

TEST(ToStr, ReturnsTheDigitsOfAnUnsignedInt) {
    EXPECT_EQ("0", to_str(0u));
    EXPECT_EQ("42", to_str(42u));
    EXPECT_EQ("4294967295", to_str(4294967295u));
}

// The plain form: it writes the digits one by one, from the last to the first.
std::string plain_digits(unsigned long magnitude, bool negative) {
    std::string digits;
    do {
        digits.insert(digits.begin(), static_cast<char>('0' + magnitude % 10));
        magnitude /= 10;
    } while (magnitude != 0);
    return negative ? '-' + digits : digits;
}

// Nothing after the terminator is written, whatever the number of digits and the sign.
TYPED_TEST(IntegerToString, AgreesWithThePlainOracleOnAllShortNumbers) {
    for (long value = -20000; value <= 20000; ++value) {
        const auto expected = text<TypeParam>(as_text(value, 10, 'a').c_str());
        ASSERT_EQ(expected, (printed<TypeParam, long>(lltoa, value, 10)));
        ASSERT_EQ(expected, (printed<TypeParam, int>(ltoa, static_cast<int>(value), 10)));
        if (value < 0)
            continue;
        const auto natural = static_cast<unsigned long>(value);
        ASSERT_EQ(expected, (printed<TypeParam, unsigned long>(ulltoa, natural, 10)));
        ASSERT_EQ(expected,
                  (printed<TypeParam, unsigned>(ultoa, static_cast<unsigned>(value), 10)));
    }
}

// Each number of up to five digits, and numbers of every bit length, with both signs.
TEST(DecimalDigits, AreThoseOfThePlainForm) {
    std::vector<unsigned long> magnitudes;
    for (unsigned long number = 0; number != 100000; ++number)
        magnitudes.push_back(number);
    for (unsigned long power = 1, digits = 1; digits <= 20; power *= 10, ++digits)
        magnitudes.insert(magnitudes.end(), {power - 1, power, power + 1});
    std::mt19937_64 random(1);
    for (int i = 0; i != 200000; ++i)
        magnitudes.push_back(random() >> (i % 64));
    for (const unsigned long magnitude : magnitudes) {
        const long number = static_cast<long>(magnitude);
        char text[30];
        ulltoa(magnitude, text, 10);
        ASSERT_EQ(plain_digits(magnitude, false), text);
        ASSERT_EQ(text, tova::types::variant(magnitude).as_string());
        lltoa(number, text, 10);
        ASSERT_EQ(plain_digits(number < 0 ? 0 - magnitude : magnitude, number < 0), text);
        ASSERT_EQ(text, tova::types::variant(number).as_string());
        const unsigned int narrow = static_cast<unsigned int>(magnitude);
        ASSERT_EQ(plain_digits(narrow, false), to_str(narrow));
        lltoa(static_cast<long>(0 - magnitude), text, 10);
        const bool is_negative = static_cast<long>(0 - magnitude) < 0;
        ASSERT_EQ(plain_digits(is_negative ? magnitude : 0 - magnitude, is_negative), text);
    }
}

TEST(ToStr, StreamsAnyOtherValue) {
    EXPECT_EQ("-7", to_str(-7));
    EXPECT_EQ("1.5", to_str(1.5));
    EXPECT_EQ("1.23457e+06", to_str(1234567.0));
    EXPECT_EQ("text", to_str(std::string("text")));
}

TEST(ToStr, UsesTheGlobalLocaleInTheStreamedFormOnly) {
    const test_support::global_locale locale(test_support::comma_locale());
    EXPECT_EQ("1.234.567", to_str(1234567));
    EXPECT_EQ("1234567", to_str(1234567u));
}

}  // namespace
