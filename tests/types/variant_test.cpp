#include <tova/types/variant.hpp>

#include <tova/types/nil.hpp>

#include "support/child_process.hpp"
#include "support/failing_allocation.hpp"
#include "support/global_locale.hpp"
#include "support/widths.hpp"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

using test_support::comma_locale;
using test_support::global_locale;
using test_support::text;
using namespace tova::strings;
using tova::types::nil;
using tova::types::nil_t;
using tova::types::variant;

std::string printed(const variant& value) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << value;
    return stream.str();
}

// --- Every type through every conversion -------------------------------------------------------

const long min64 = LONG_MIN;
const float infinite_float = std::numeric_limits<float>::infinity();
const double infinite = std::numeric_limits<double>::infinity();
const double not_a_number = std::numeric_limits<double>::quiet_NaN();

// One value and all its conversions. `as_int`, `as_short` and `as_long` return the same as the
// conversions to 32, 16 and 64 bits, and all conversions to a string return the same ASCII string.
struct conversion_row {
    const char* name;
    variant value;
    const std::type_info* type;
    int int8;
    int int16;
    int int32;
    long int64;
    int uint8;
    int uint16;
    unsigned int uint32;
    unsigned long uint64;
    bool boolean;
    float float_value;
    double double_value;
    long double long_double_value;
    const char* text;
    const char* stream;
};

ustring16 wide16(const char* characters) {
    return text<ustring16>(characters);
}
ustring32 wide32(const char* characters) {
    return text<ustring32>(characters);
}

std::vector<conversion_row> conversion_rows() {
    using sc = signed char;
    using uc = unsigned char;
    const auto& n = typeid(nil_t);
    const auto& t8 = typeid(ustring8);
    const auto& t16 = typeid(ustring16);
    const auto& t32 = typeid(ustring32);
    // clang-format off
    return {
        //                                              8      16     32           64      u8   u16    u32          u64
        {"nil", variant(), &n,                          0,     0,     0,           0,      0,   0,     0,           0, false, 0, 0, 0, "", "0"},
        {"nil_t", variant(nil), &n,                     0,     0,     0,           0,      0,   0,     0,           0, false, 0, 0, 0, "", "0"},
        {"sc 0", variant(sc(0)), &typeid(sc),           0,     0,     0,           0,      0,   0,     0,           0, false, 0, 0, 0, "0", nullptr},
        {"sc 65", variant(sc(65)), &typeid(sc),         65,    65,    65,          65,     65,  65,    65,          65, true, 65, 65, 65, "65", "A"},
        {"sc -1", variant(sc(-1)), &typeid(sc),         -1,    -1,    -1,          -1,     255, 65535, 4294967295u, 18446744073709551615ul, true, -1, -1, -1, "-1", "\xFF"},
        {"sc min", variant(sc(-128)), &typeid(sc),      -128,  -128,  -128,        -128,   128, 65408, 4294967168u, 18446744073709551488ul, true, -128, -128, -128, "-128", "\x80"},
        {"short 258", variant(short(258)), &typeid(short), 2,  258,   258,         258,    2,   258,   258,         258, true, 258, 258, 258, "258", "258"},
        {"short min", variant(short(-32768)), &typeid(short), 0, -32768, -32768,   -32768, 0,   32768, 4294934528u, 18446744073709518848ul, true, -32768, -32768, -32768, "-32768", "-32768"},
        {"int 0", variant(0), &typeid(int),             0,     0,     0,           0,      0,   0,     0,           0, false, 0, 0, 0, "0", "0"},
        {"int -1", variant(-1), &typeid(int),           -1,    -1,    -1,          -1,     255, 65535, 4294967295u, 18446744073709551615ul, true, -1, -1, -1, "-1", "-1"},
        {"int", variant(0x12345678), &typeid(int),      0x78,  0x5678, 305419896,  305419896, 0x78, 0x5678, 305419896u, 305419896, true, 305419904.0f, 305419896.0, 305419896.0L, "305419896", "305419896"},
        {"int 200", variant(200), &typeid(int),         -56,   200,   200,         200,    200, 200,   200,         200, true, 200, 200, 200, "200", "200"},
        {"int min", variant(INT_MIN), &typeid(int),     0,     0,     INT_MIN,     -2147483648L, 0, 0, 2147483648u, 18446744071562067968ul, true, -2147483648.0f, -2147483648.0, -2147483648.0L, "-2147483648", "-2147483648"},
        {"long", variant(0x123456789ABCDEF0L), &typeid(long), -16, -8464, -1698898192, 0x123456789ABCDEF0L, 0xF0, 0xDEF0, 0x9ABCDEF0u, 0x123456789ABCDEF0ul, true, 1311768467463790320.0f, 1311768467463790320.0, 1311768467463790320.0L, "1311768467463790320", "1311768467463790320"},
        {"long min", variant(min64), &typeid(long),     0,     0,     0,           min64,  0,   0,     0,           9223372036854775808ul, true, -9223372036854775808.0f, -9223372036854775808.0, -9223372036854775808.0L, "-9223372036854775808", "-9223372036854775808"},
        {"long 256", variant(256L), &typeid(long),      0,     256,   256,         256,    0,   256,   256,         256, true, 256, 256, 256, "256", "256"},
        {"uc 65", variant(uc(65)), &typeid(uc),         65,    65,    65,          65,     65,  65,    65,          65, true, 65, 65, 65, "65", "A"},
        {"uc 200", variant(uc(200)), &typeid(uc),       -56,   200,   200,         200,    200, 200,   200,         200, true, 200, 200, 200, "200", "\xC8"},
        {"ushort", variant(static_cast<unsigned short>(65535)), &typeid(unsigned short), -1, -1, 65535, 65535, 255, 65535, 65535, 65535, true, 65535, 65535, 65535, "65535", "65535"},
        {"unsigned", variant(4294967295u), &typeid(unsigned), -1, -1, -1,          4294967295L, 255, 65535, 4294967295u, 4294967295ul, true, 4294967296.0f, 4294967295.0, 4294967295.0L, "4294967295", "4294967295"},
        {"ulong", variant(18446744073709551615ul), &typeid(unsigned long), -1, -1, -1, -1, 255, 65535, 4294967295u, 18446744073709551615ul, true, 18446744073709551616.0f, 18446744073709551616.0, 18446744073709551615.0L, "18446744073709551615", "18446744073709551615"},
        {"ulong rounding", variant(9223372036854776833ul), &typeid(unsigned long), 1, 1025, 1025, -9223372036854774783L, 1, 1025, 1025, 9223372036854776833ul, true, 9223372036854775808.0f, 9223372036854777856.0, 9223372036854776833.0L, "9223372036854776833", "9223372036854776833"},
        {"true", variant(true), &typeid(bool),          1,     1,     1,           1,      1,   1,     1,           1, true, 1, 1, 1, "1", "1"},
        {"false", variant(false), &typeid(bool),        0,     0,     0,           0,      0,   0,     0,           0, false, 0, 0, 0, "0", "0"},
        {"float", variant(1.5f), &typeid(float),        1,     1,     1,           1,      1,   1,     1,           1, true, 1.5f, 1.5, 1.5L, "1.5", "1.5"},
        {"float -2.75", variant(-2.75f), &typeid(float), -2,   -2,    -2,          -2,     254, 65534, 4294967294u, 18446744073709551614ul, true, -2.75f, -2.75, -2.75L, "-2.75", "-2.75"},
        {"float 70000", variant(70000.0f), &typeid(float), 112, 4464, 70000,       70000,  112, 4464,  70000,       70000, true, 70000, 70000, 70000, "70000", "70000"},
        {"float inf", variant(infinite_float), &typeid(float), 0, 0,  INT_MIN,     min64,  0,   0,     0,           0, true, infinite_float, infinite, infinite, "inf", "inf"},
        {"double", variant(1234567.0), &typeid(double), -121,  -10617, 1234567,    1234567, 135, 54919, 1234567,    1234567, true, 1234567.0f, 1234567.0, 1234567.0L, "1.23457e+06", "1.23457e+06"},
        {"double 70000", variant(70000.9), &typeid(double), 112, 4464, 70000,      70000,  112, 4464,  70000,       70000, true, 70000.9f, 70000.9, static_cast<long double>(70000.9), "70000.9", "70000.9"},
        {"double 3e9", variant(3000000000.0), &typeid(double), 0, 0,  INT_MIN,     3000000000L, 0, 0,  3000000000u, 3000000000ul, true, 3000000000.0f, 3000000000.0, 3000000000.0L, "3e+09", "3e+09"},
        {"double -0.9", variant(-0.9), &typeid(double), 0,     0,     0,           0,      0,   0,     0,           0, true, -0.9f, -0.9, static_cast<long double>(-0.9), "-0.9", "-0.9"},
        {"double int max", variant(2147483647.9), &typeid(double), -1, -1, INT_MAX, 2147483647, 255, 65535, 2147483647, 2147483647, true, 2147483648.0f, 2147483647.9, static_cast<long double>(2147483647.9), "2.14748e+09", "2.14748e+09"},
        {"double int min", variant(-2147483648.9), &typeid(double), 0, 0, INT_MIN, -2147483648L, 0, 0, 2147483648u, 18446744071562067968ul, true, -2147483648.0f, -2147483648.9, static_cast<long double>(-2147483648.9), "-2.14748e+09", "-2.14748e+09"},
        {"double above int", variant(2147483648.0), &typeid(double), 0, 0, INT_MIN, 2147483648L, 0, 0, 2147483648u, 2147483648ul, true, 2147483648.0f, 2147483648.0, 2147483648.0L, "2.14748e+09", "2.14748e+09"},
        {"double 2^63", variant(9223372036854775808.0), &typeid(double), 0, 0, INT_MIN, min64, 0, 0, 0, 9223372036854775808ul, true, 9223372036854775808.0f, 9223372036854775808.0, 9223372036854775808.0L, "9.22337e+18", "9.22337e+18"},
        {"double below 2^64", variant(18446744073709549568.0), &typeid(double), 0, 0, INT_MIN, min64, 0, 0, 0, 18446744073709549568ul, true, 18446744073709551616.0f, 18446744073709549568.0, 18446744073709549568.0L, "1.84467e+19", "1.84467e+19"},
        {"double 2^64", variant(18446744073709551616.0), &typeid(double), 0, 0, INT_MIN, min64, 0, 0, 0, 0, true, 18446744073709551616.0f, 18446744073709551616.0, 18446744073709551616.0L, "1.84467e+19", "1.84467e+19"},
        {"double -1", variant(-1.0), &typeid(double),   -1,    -1,    -1,          -1,     255, 65535, 4294967295u, 18446744073709551615ul, true, -1, -1, -1, "-1", "-1"},
        {"double -1e300", variant(-1e300), &typeid(double), 0, 0,     INT_MIN,     min64,  0,   0,     0,           9223372036854775808ul, true, -infinite_float, -1e300, static_cast<long double>(-1e300), "-1e+300", "-1e+300"},
        {"double 0", variant(0.0), &typeid(double),     0,     0,     0,           0,      0,   0,     0,           0, false, 0, 0, 0, "0", "0"},
        {"double -0", variant(-0.0), &typeid(double),   0,     0,     0,           0,      0,   0,     0,           0, false, -0.0f, -0.0, -0.0L, "-0", "-0"},
        {"double 0.0001", variant(0.0000123456789), &typeid(double), 0, 0, 0,      0,      0,   0,     0,           0, true, 0.0000123456789f, 0.0000123456789, static_cast<long double>(0.0000123456789), "1.23457e-05", "1.23457e-05"},
        {"long double", variant(70000.5L), &typeid(long double), 112, 4464, 70000, 70000,  112, 4464,  70000,       70000, true, 70000.5f, 70000.5, 70000.5L, "70000.5", "70000.5"},
        {"long double max", variant(18446744073709551615.0L), &typeid(long double), 0, 0, INT_MIN, min64, 0, 0, 0, 18446744073709551615ul, true, 18446744073709551616.0f, 18446744073709551616.0, 18446744073709551615.0L, "1.84467e+19", "1.84467e+19"},
        {"long double -2^63", variant(-9223372036854775808.0L), &typeid(long double), 0, 0, INT_MIN, min64, 0, 0, 0, 9223372036854775808ul, true, -9223372036854775808.0f, -9223372036854775808.0, -9223372036854775808.0L, "-9.22337e+18", "-9.22337e+18"},
        {"text 12abc", variant("12abc"), &t8,           12,    12,    12,          12,     12,  12,    12,          12, true, 12, 12, 12, "12abc", "12abc"},
        {"text 0x10", variant("0x10"), &t8,             16,    16,    16,          16,     16,  16,    16,          16, true, 0, 0, 0, "0x10", "0x10"},
        {"text 0b11", variant("0b11"), &t8,             3,     3,     3,           3,      3,   3,     3,           3, true, 0, 0, 0, "0b11", "0b11"},
        {"text 017", variant("017"), &t8,               15,    15,    15,          15,     15,  15,    15,          15, true, 17, 17, 17, "017", "017"},
        {"text large", variant("99999999999"), &t8,     127,   32767, INT_MAX,     99999999999L, 255, 65535, 4294967295u, 99999999999ul, true, 99999999999.0f, 99999999999.0, 99999999999.0L, "99999999999", "99999999999"},
        {"text larger", variant("99999999999999999999"), &t8, 127, 32767, INT_MAX, LONG_MAX, 255, 65535, 4294967295u, 18446744073709551615ul, true, 1e20f, 1e20, 1e20L, "99999999999999999999", "99999999999999999999"},
        {"text -1", variant("-1"), &t8,                 -1,    -1,    -1,          -1,     0,   0,     0,           0, true, -1, -1, -1, "-1", "-1"},
        {"text -99999999999999999999", variant("-99999999999999999999"), &t8, -128, -32768, INT_MIN, min64, 0, 0, 0, 0, true, -1e20f, -1e20, -1e20L, "-99999999999999999999", "-99999999999999999999"},
        {"text 1.5", variant("1.5"), &t8,               1,     1,     1,           1,      1,   1,     1,           1, true, 1.5f, 1.5, 1.5L, "1.5", "1.5"},
        {"text 0.5", variant("0.5"), &t8,               0,     0,     0,           0,      0,   0,     0,           0, false, 0.5f, 0.5, 0.5L, "0.5", "0.5"},
        {"text empty", variant(""), &t8,                0,     0,     0,           0,      0,   0,     0,           0, false, 0, 0, 0, "", ""},
        {"text abc", variant("abc"), &t8,               0,     0,     0,           0,      0,   0,     0,           0, false, 0, 0, 0, "abc", "abc"},
        {"text YES", variant("YES"), &t8,               0,     0,     0,           0,      0,   0,     0,           0, true, 0, 0, 0, "YES", "YES"},
        {"ustring8", variant(ustring8("-300")), &t8,    -128,  -300,  -300,        -300,   0,   0,     0,           0, true, -300, -300, -300, "-300", "-300"},
        {"const unsigned short*", variant(wide16("-300").c_str()), &t16, -128, -300, -300, -300, 0, 0, 0,           0, true, -300, -300, -300, "-300", "-300"},
        {"ustring16", variant(wide16("0x1F")), &t16,    31,    31,    31,          31,     31,  31,    31,          31, true, 0, 0, 0, "0x1F", "0x1F"},
        {"ustring16 1e2", variant(wide16("1e2")), &t16, 1,     1,     1,           1,      1,   1,     1,           1, true, 100, 100, 100, "1e2", "1e2"},
        {"const wchar_t*", variant(L"70000"), &t32,     127,   32767, 70000,       70000,  255, 65535, 70000,       70000, true, 70000, 70000, 70000, "70000", "70000"},
        {"ustring32", variant(wide32("2.5e1")), &t32,   2,     2,     2,           2,      2,   2,     2,           2, true, 25, 25, 25, "2.5e1", "2.5e1"},
        {"std::string", variant(std::string("0x7Fg")), &typeid(std::string), 127, 127, 127, 127, 127, 127, 127,     127, true, 0, 0, 0, "0x7Fg", "0x7Fg"},
        {"std::string 2.5", variant(std::string("2.5")), &typeid(std::string), 2, 2, 2, 2, 2, 2, 2, 2, true, 2.5f, 2.5, 2.5L, "2.5", "2.5"},
        {"std::string large", variant(std::string("4294967296")), &typeid(std::string), 127, 32767, INT_MAX, 4294967296L, 255, 65535, 4294967295u, 4294967296ul, true, 4294967296.0f, 4294967296.0, 4294967296.0L, "4294967296", "4294967296"},
        {"std::wstring", variant(std::wstring(L"-1.25")), &typeid(std::wstring), -1, -1, -1, -1, 0, 0, 0,           0, true, -1.25f, -1.25, -1.25L, "-1.25", nullptr},
        {"std::wstring true", variant(std::wstring(L"tRuE")), &typeid(std::wstring), 0, 0, 0, 0, 0, 0, 0,           0, true, 0, 0, 0, "tRuE", nullptr},
    };
    // clang-format on
}

TEST(VariantConversions, ConvertEveryTypeToEveryNumber) {
    for (const conversion_row& row : conversion_rows()) {
        SCOPED_TRACE(row.name);
        const variant& value = row.value;
        EXPECT_EQ(row.int8, value.as_int8());
        EXPECT_EQ(row.int16, value.as_int16());
        EXPECT_EQ(row.int16, value.as_short());
        EXPECT_EQ(row.int32, value.as_int32());
        EXPECT_EQ(row.int32, value.as_int());
        EXPECT_EQ(row.int64, value.as_int64());
        EXPECT_EQ(row.int64, value.as_long());
        EXPECT_EQ(row.uint8, value.as_uint8());
        EXPECT_EQ(row.uint16, value.as_uint16());
        EXPECT_EQ(row.uint32, value.as_uint32());
        EXPECT_EQ(row.uint64, value.as_uint64());
        EXPECT_EQ(row.boolean, value.as_bool());
        EXPECT_EQ(row.float_value, value.as_float());
        EXPECT_EQ(row.double_value, value.as_double());
        EXPECT_EQ(row.long_double_value, value.as_long_double());
        EXPECT_EQ(std::signbit(row.double_value), std::signbit(value.as_double()));
    }
}

TEST(VariantConversions, ConvertEveryTypeToAString) {
    for (const conversion_row& row : conversion_rows()) {
        SCOPED_TRACE(row.name);
        const variant& value = row.value;
        EXPECT_EQ(row.text, value.as_string());
        EXPECT_EQ(row.text, value.as_utf8());
        EXPECT_EQ(row.text, value.as_ustring());
        EXPECT_EQ(text<ustring16>(row.text), value.as_utf16());
        EXPECT_EQ(text<ustring32>(row.text), value.as_utf32());
        EXPECT_EQ(std::wstring(text<ustring32>(row.text)), value.as_wstring());
        if (row.stream != nullptr) {
            EXPECT_EQ(row.stream, printed(value));
        }
    }
}

TEST(VariantConversions, ReportTheirType) {
    for (const conversion_row& row : conversion_rows()) {
        SCOPED_TRACE(row.name);
        EXPECT_TRUE(*row.type == row.value.type());
        EXPECT_EQ(*row.type == typeid(nil_t), row.value == nil);
    }
}

TEST(VariantConversions, UseTheSignedSlotsForTheAlternativeNames) {
    for (const conversion_row& row : conversion_rows()) {
        SCOPED_TRACE(row.name);
        const variant& value = row.value;
        EXPECT_EQ(row.int32, value.as_signed());
        EXPECT_EQ(static_cast<unsigned>(row.int32), value.as_unsigned());
        EXPECT_EQ(static_cast<unsigned>(row.int32), value.as_uint());
        EXPECT_EQ(static_cast<unsigned long>(row.int64), value.as_ulong());
        EXPECT_EQ(static_cast<unsigned short>(row.int16), value.as_ushort());
    }
}

TEST(VariantConversions, SaturateAtTheSignedLimitUnderTheAlternativeNames) {
    const variant large("99999999999999999999");
    EXPECT_EQ(2147483647u, large.as_uint());
    EXPECT_EQ(2147483647u, large.as_unsigned());
    EXPECT_EQ(9223372036854775807ul, large.as_ulong());
    EXPECT_EQ(32767, large.as_ushort());
    EXPECT_EQ(4294967295u, large.as_uint32());
    EXPECT_EQ(2147483647u, variant("4294967295").as_uint());
    EXPECT_EQ(4294967295u, variant(-1).as_uint());
    EXPECT_EQ(2147483648u, variant(3000000000.0).as_uint());
    EXPECT_EQ(3000000000u, variant(3000000000.0).as_uint32());
}

TEST(VariantConversions, ConvertNotANumberToTheSmallestIntegerAndToTrue) {
    for (const variant& value : {variant(static_cast<float>(not_a_number)), variant(not_a_number),
                                 variant(static_cast<long double>(not_a_number))}) {
        SCOPED_TRACE(value.type().name());
        EXPECT_EQ(0, value.as_int8());
        EXPECT_EQ(0, value.as_int16());
        EXPECT_EQ(0, value.as_uint16());
        EXPECT_EQ(INT_MIN, value.as_int());
        EXPECT_EQ(LONG_MIN, value.as_long());
        EXPECT_EQ(0u, value.as_uint32());
        EXPECT_EQ(9223372036854775808ul, value.as_uint64());
        EXPECT_TRUE(value.as_bool());
        EXPECT_TRUE(std::isnan(value.as_float()));
        EXPECT_TRUE(std::isnan(value.as_double()));
        EXPECT_TRUE(std::isnan(value.as_long_double()));
        EXPECT_EQ("nan", value.as_string());
    }
}

TEST(VariantConversions, TruncateAsTheProcessorDoesAroundEveryPowerOfTwo) {
    for (int power = 0; power < 70; ++power)
        for (double sign : {1.0, -1.0})
            for (double step : {-1.5, -1.0, -0.5, 0.0, 0.5, 1.0}) {
                const double value = sign * (std::ldexp(1.0, power) + step);
                SCOPED_TRACE(value);
                const double whole = std::trunc(value);
                const bool fits32 = whole >= -2147483648.0 && whole <= 2147483647.0;
                const bool fits64 =
                    whole >= -9223372036854775808.0 && whole < 9223372036854775808.0;
                const int low = fits32 ? static_cast<int>(whole) : INT_MIN;
                const long high = fits64 ? static_cast<long>(whole) : LONG_MIN;
                EXPECT_EQ(low, variant(value).as_int());
                EXPECT_EQ(low, variant(static_cast<long double>(value)).as_int());
                EXPECT_EQ(static_cast<short>(low), variant(value).as_short());
                EXPECT_EQ(static_cast<unsigned char>(low), variant(value).as_uint8());
                EXPECT_EQ(high, variant(value).as_long());
                EXPECT_EQ(high, variant(static_cast<long double>(value)).as_long());
                EXPECT_EQ(static_cast<unsigned>(high), variant(value).as_uint32());
                if (whole < 18446744073709551616.0) {
                    const unsigned long expected = whole < 0 ? static_cast<unsigned long>(high)
                                                             : static_cast<unsigned long>(whole);
                    EXPECT_EQ(expected, variant(value).as_uint64());
                }
            }
}

// --- Strings as booleans -----------------------------------------------------------------------

template <typename Value>
class VariantBoolean : public ::testing::Test {
public:
    static variant of(const char* characters) {
        Value value;
        for (; *characters != '\0'; ++characters)
            value.push_back(static_cast<typename Value::value_type>(*characters));
        return variant(value);
    }
};
TYPED_TEST_SUITE(VariantBoolean, test_support::text_types, test_support::text_type_name);

TYPED_TEST(VariantBoolean, IsTrueForThreeWordsAndEveryNumberExceptZero) {
    const struct {
        const char* input;
        bool value;
    } cases[] = {
        {"yes", true}, {"YES", true},  {"On", true},     {"on", true},   {"tRuE", true},
        {"no", false}, {"off", false}, {"false", false}, {"", false},    {"2", true},
        {"0x1", true}, {"0.5", false}, {"yes ", false},  {" on", false}, {"truest", false},
        {"-7", true},  {"0x", false},  {"tru", false},   {"0", false},   {"+1", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.input);
        EXPECT_EQ(c.value, this->of(c.input).as_bool());
    }
}

TEST(VariantBoolean, DoesNotMistakeAWideUnitForALetter) {
    EXPECT_FALSE(variant(ustring32{0x16F, 0x16E}).as_bool());
    EXPECT_FALSE(variant(std::wstring{0x10006F, 'n'}).as_bool());
    EXPECT_FALSE(variant(ustring16{0x014F, 'N'}).as_bool());
}

// --- Strings beyond ASCII ----------------------------------------------------------------------

TEST(VariantString, ConvertsBetweenTheWidths) {
    const char utf8[] = "\xC3\xA4\xF0\x9F\x98\x80";
    const ustring16 utf16{0x00E4, 0xD83D, 0xDE00};
    const ustring32 utf32{0xE4, 0x1F600};
    const variant sources[] = {variant(utf8), variant(std::string(utf8)), variant(utf16),
                               variant(utf32), variant(std::wstring(utf32))};
    for (const variant& source : sources) {
        SCOPED_TRACE(source.type().name());
        EXPECT_EQ(utf8, source.as_string());
        EXPECT_EQ(utf8, source.as_utf8());
        EXPECT_EQ(utf8, source.as_ustring());
        EXPECT_EQ(utf32, source.as_utf32());
        EXPECT_EQ(std::wstring(utf32), source.as_wstring());
    }
    EXPECT_EQ(utf16, variant(utf8).as_utf16());
    EXPECT_EQ(utf16, variant(std::string(utf8)).as_utf16());
    EXPECT_EQ(utf16, variant(utf16).as_utf16());
}

TEST(VariantString, KeepsTheSurrogateArithmeticOfTheConversionToUtf16) {
    const ustring16 pair{0xD83D + 0x40, 0xDE00};  // 0x10000 is not subtracted
    EXPECT_EQ(pair, variant(ustring32{0x1F600}).as_utf16());
    EXPECT_EQ(pair, variant(std::wstring{0x1F600}).as_utf16());
}

TEST(VariantString, ParsesIntegersFromCodeUnitsButFloatingPointValuesFromUtf8) {
    const variant unpaired(ustring16{'5', 0xD800});
    EXPECT_EQ(5, unpaired.as_int());
    EXPECT_TRUE(unpaired.as_bool());
    EXPECT_EQ(-1.0, unpaired.as_double());
    EXPECT_EQ(-1.0f, unpaired.as_float());
    EXPECT_EQ(-1.0L, unpaired.as_long_double());
    EXPECT_EQ("-1", unpaired.as_string());

    const variant surrogate(ustring32{'5', 0xD800});
    EXPECT_EQ(5, surrogate.as_int());
    EXPECT_EQ(-1.0, surrogate.as_double());
    const variant plain(std::wstring{'5', 0xD800});
    EXPECT_EQ(5, plain.as_int());
    EXPECT_EQ(-1.0, plain.as_double());
}

TEST(VariantString, ConvertsInvalidUtf8AccordingToEachWidth) {
    const variant bad("1\xFF");
    EXPECT_EQ("1\xFF", bad.as_string());
    EXPECT_EQ(wide16("-1"), bad.as_utf16());
    EXPECT_EQ(wide32("1?"), bad.as_utf32());
    EXPECT_EQ(L"1?", bad.as_wstring());
}

TEST(VariantString, KeepsEmbeddedNulsButPrintsUpToTheFirst) {
    const std::string all("a\0b", 3);
    EXPECT_EQ("a", variant(all.c_str()).as_string());
    EXPECT_EQ(ustring8(all), variant(ustring8(all)).as_string());
    EXPECT_EQ("a", printed(variant(ustring8(all))));
    EXPECT_EQ("a", printed(variant(ustring16{'a', 0, 'b'})));
    EXPECT_EQ("a", printed(variant(ustring32{'a', 0, 'b'})));
    EXPECT_EQ(all, printed(variant(all)));
}

TEST(VariantString, PrintsAWideStandardStringAsADebuggingMark) {
    const variant value(std::wstring(L"text"));
    const std::string mark = printed(value);
    const std::string begin = std::string("< ") + typeid(std::wstring).name() + " instance at 0x";
    ASSERT_LT(begin.size() + 2, mark.size());
    EXPECT_EQ(begin, mark.substr(0, begin.size()));
    EXPECT_EQ(" >", mark.substr(mark.size() - 2));
    EXPECT_EQ(mark, printed(variant(value)));  // the copy shares the value and so its address
    EXPECT_NE(mark, printed(variant(std::wstring(L"text"))));
}

TEST(VariantString, IsPrintedWithTheStateOfTheStream) {
    std::ostringstream stream;
    stream << std::boolalpha << std::hex << variant(true) << ' ' << variant(255) << ' ';
    stream.precision(3);
    stream << variant(1.23456) << ' ';
    stream.width(5);
    stream << variant("ab");
    EXPECT_EQ("true ff 1.23    ab", stream.str());
    EXPECT_EQ(&stream, &(stream << variant()));
}

// --- Constructors ------------------------------------------------------------------------------

TEST(VariantConstructor, RejectsNullPointersAndLeaksNothing) {
    const long live = test_support::live_allocations();
    const auto message_of = [](const auto* pointer) -> std::string {
        try {
            const variant value(pointer);
            return "none";
        } catch (const std::logic_error& e) {
            EXPECT_TRUE(typeid(e) == typeid(std::logic_error));
            return e.what();
        }
    };
    const char expected[] = "basic_string::_M_construct null not valid";
    EXPECT_EQ(expected, message_of(static_cast<const char*>(nullptr)));
    EXPECT_EQ(expected, message_of(static_cast<const unsigned short*>(nullptr)));
    EXPECT_EQ(expected, message_of(static_cast<const wchar_t*>(nullptr)));
    EXPECT_EQ(live, test_support::live_allocations());
}

TEST(VariantConstructor, LeaksNothingWhenMemoryRunsOut) {
    const std::string long_text(100, 'x');
    const ustring16 long_text16(100, 'x');
    const long live = test_support::live_allocations();
    for (unsigned successes = 0;; ++successes) {
        const test_support::failing_allocation limit(successes);
        try {
            const variant value(long_text);
            const variant value16(long_text16);
            const variant pointer(long_text.c_str());
            const variant empty;
        } catch (const std::bad_alloc&) {
        }
        ASSERT_EQ(live, test_support::live_allocations()) << successes;
        if (!limit.failed())
            break;
        ASSERT_LT(successes, 100u);
    }
}

TEST(VariantConstructor, MakesOneAllocationForANilAndForANumber) {
    const auto allocations_of = [](const auto& make) {
        const unsigned long before = test_support::allocations();
        make();
        return test_support::allocations() - before;
    };
    EXPECT_EQ(1u, allocations_of([] { variant(); }));
    EXPECT_EQ(1u, allocations_of([] { const variant value(nil); }));
    EXPECT_EQ(1u, allocations_of([] { variant(7); }));
    EXPECT_EQ(1u, allocations_of([] { variant(1.5L); }));
    EXPECT_EQ(1u, allocations_of([] { variant("short"); }));

    const std::string long_text(100, 'x');
    EXPECT_EQ(2u, allocations_of([&] { const variant value(long_text); }));
    EXPECT_EQ(2u, allocations_of([&] { const variant value(long_text.c_str()); }));

    const variant source(long_text);
    variant target;
    EXPECT_EQ(0u, allocations_of([&] { const variant copy(source); }));
    EXPECT_EQ(0u, allocations_of([&] { target = source; }));
    EXPECT_EQ(1u, allocations_of([&] { target = nil; }));
    EXPECT_EQ(1u, allocations_of([&] { target = nil; }));
}

TEST(VariantConstructor, StoresACharAsAnInt) {
    EXPECT_TRUE(typeid(int) == variant('A').type());
    EXPECT_EQ("65", variant('A').as_string());
}

TEST(VariantConstructor, ReadsAStringOfItsWidthFromEachPointer) {
    EXPECT_TRUE(typeid(ustring8) == variant("a").type());
    EXPECT_TRUE(typeid(ustring16) == variant(ustring16{'a'}.c_str()).type());
    EXPECT_TRUE(typeid(ustring32) == variant(L"a").type());
    const unsigned short units[] = {'a', 0x20AC, 0, 'b'};
    EXPECT_EQ((ustring16{'a', 0x20AC}), variant(units).as_utf16());
}

TEST(VariantConstructor, CopiesItsArgument) {
    ustring8 source("before");
    const variant value(source);
    source[0] = 'X';
    EXPECT_EQ("before", value.as_string());
}

// --- Handles -----------------------------------------------------------------------------------

TEST(VariantHandle, SharesItsBodyWithItsCopies) {
    const variant first(std::wstring(L"shared"));
    const variant second(first);
    variant third;
    third = second;
    variant fourth;
    EXPECT_EQ(&fourth, &fourth.assign(third));
    // The mark of a wide string shows the address of the stored value.
    EXPECT_EQ(printed(first), printed(second));
    EXPECT_EQ(printed(first), printed(third));
    EXPECT_EQ(printed(first), printed(fourth));
    EXPECT_EQ(&first.type(), &fourth.type());
}

TEST(VariantHandle, ReleasesABodyWithItsLastHandle) {
    const long live = test_support::live_allocations();
    {
        variant first(std::string(100, 'x'));
        EXPECT_EQ(live + 2, test_support::live_allocations());
        {
            const variant second(first);
            first = nil;
            EXPECT_EQ(live + 3, test_support::live_allocations());
            EXPECT_EQ(100u, second.as_string().size());
        }
        EXPECT_EQ(live + 1, test_support::live_allocations());
        first = variant(1);
        EXPECT_EQ(live + 1, test_support::live_allocations());
    }
    EXPECT_EQ(live, test_support::live_allocations());
}

TEST(VariantHandle, IsUnchangedBySelfAssignment) {
    variant value("text");
    variant& same = value;
    EXPECT_EQ(&value, &(value = same));
    EXPECT_EQ("text", value.as_string());
    value.assign(same);
    EXPECT_EQ("text", value.as_string());
    variant copy(value);
    value = copy;
    EXPECT_EQ("text", value.as_string());
}

TEST(VariantHandle, BecomesNilWithoutItsCopies) {
    variant first("text");
    const variant second(first);
    EXPECT_EQ(&first, &(first = nil));
    EXPECT_TRUE(first == nil);
    EXPECT_EQ("text", second.as_string());
}

TEST(VariantHandle, IsUnchangedWhenNoNilBodyCanBeAllocated) {
    variant value("text");
    {
        const test_support::failing_allocation limit;
        EXPECT_THROW(value = nil, std::bad_alloc);
    }
    EXPECT_EQ("text", value.as_string());
}

TEST(VariantHandle, IsNilOnlyWithoutAValue) {
    EXPECT_TRUE(variant() == nil);
    EXPECT_TRUE(variant(nil) == nil);
    EXPECT_TRUE(variant().equal(nil));
    EXPECT_FALSE(variant() != nil);
    for (const variant& value :
         {variant(0), variant(false), variant(""), variant(0.0), variant(std::wstring())}) {
        SCOPED_TRACE(value.type().name());
        EXPECT_FALSE(value == nil);
        EXPECT_TRUE(value != nil);
        EXPECT_FALSE(value.equal(nil));
    }
}

TEST(VariantHandle, HidesTheStringOfANilBodyButPrintsIt) {
    const variant value;
    EXPECT_EQ("", value.as_string());
    EXPECT_EQ("", value.as_utf8());
    EXPECT_EQ("", value.as_ustring());
    EXPECT_EQ(L"", value.as_wstring());
    EXPECT_EQ(ustring16(), value.as_utf16());
    EXPECT_EQ(ustring32(), value.as_utf32());
    EXPECT_EQ("0", printed(value));
}

// --- The global locale -------------------------------------------------------------------------

std::locale two_faced_locale() {
    return std::locale(
        std::locale(std::locale::classic(), new test_support::punctuation<char>(',', '.')),
        new test_support::punctuation<wchar_t>(L';', L'_'));
}

TEST(VariantInALocale, PunctuatesOnlyFloatingPointValues) {
    const global_locale locale(two_faced_locale());
    EXPECT_EQ("1,5", variant(1.5f).as_string());
    EXPECT_EQ("1,5", variant(1.5).as_utf8());
    EXPECT_EQ("123.456", variant(123456.0L).as_ustring());
    EXPECT_EQ(wide16("1,5"), variant(1.5).as_utf16());
    EXPECT_EQ(wide32("123.456"), variant(123456.0L).as_utf32());
    EXPECT_EQ("1234567", variant(1234567).as_string());
    EXPECT_EQ("18446744073709551615", variant(18446744073709551615ul).as_string());
    EXPECT_EQ(L"1234567", variant(1234567L).as_wstring());
    EXPECT_EQ("0", variant(0).as_string());
}

TEST(VariantInALocale, WritesTheWideStringOfALongDoubleThroughAWideStream) {
    const global_locale locale(two_faced_locale());
    EXPECT_EQ(L"1,5", variant(1.5f).as_wstring());
    EXPECT_EQ(L"1,5", variant(1.5).as_wstring());
    EXPECT_EQ(L"1;5", variant(1.5L).as_wstring());
    EXPECT_EQ(L"123_456", variant(123456.0L).as_wstring());
}

TEST(VariantInALocale, ParsesFloatingPointValuesButNotIntegersByTheLocale) {
    const global_locale locale(two_faced_locale());
    EXPECT_EQ(1.5, variant("1,5").as_double());
    EXPECT_EQ(1234.0f, variant(wide16("1.234")).as_float());
    EXPECT_EQ(1234.0L, variant(std::wstring(L"1.234")).as_long_double());
    EXPECT_EQ(1, variant("1.234").as_int());
}

// Writes false and true as two consecutive letters.
template <typename Unit>
class letters : public std::num_put<Unit> {
public:
    explicit letters(Unit letter) : m_letter(letter) {}

protected:
    using iterator = typename std::num_put<Unit>::iter_type;
    iterator do_put(iterator to, std::ios_base&, Unit, bool value) const override {
        *to++ = static_cast<Unit>(m_letter + value);
        return to;
    }

private:
    Unit m_letter;
};

TEST(VariantInALocale, WritesTheStringsOfABoolThroughAStreamOfTheirWidth) {
    const global_locale locale(std::locale(
        std::locale(std::locale::classic(), new letters<char>('a')), new letters<wchar_t>(L'A')));
    EXPECT_EQ("b", variant(true).as_string());
    EXPECT_EQ("a", variant(false).as_utf8());
    EXPECT_EQ("b", variant(true).as_ustring());
    EXPECT_EQ(wide16("b"), variant(true).as_utf16());
    EXPECT_EQ(wide32("b"), variant(true).as_utf32());
    EXPECT_EQ(L"B", variant(true).as_wstring());
    EXPECT_EQ(L"A", variant(false).as_wstring());
}

// --- Exceptions that try to leave a conversion -------------------------------------------------

TEST(VariantConversions, EndTheProcessThroughUnexpectedWhenMemoryRunsOut) {
    const std::string long_text(100, '1');
    const ustring32 long_text32(100, L'1');
    const variant narrow(long_text);
    const variant wide(long_text32);
    const std::function<void()> conversions[] = {
        [&] { narrow.as_string(); },    [&] { narrow.as_utf8(); },  [&] { narrow.as_ustring(); },
        [&] { narrow.as_utf16(); },     [&] { narrow.as_utf32(); }, [&] { narrow.as_wstring(); },
        [&] { narrow.as_double(); },    [&] { wide.as_string(); },  [&] { wide.as_float(); },
        [&] { wide.as_long_double(); },
    };
    for (const auto& conversion : conversions) {
        const auto result = test_support::run_in_child([&] {
            test_support::exit_42_on_unexpected();
            const test_support::failing_allocation limit;
            conversion();
        });
        EXPECT_TRUE(result.exited);
        EXPECT_EQ(42, result.exit_code) << (&conversion - conversions) << result.output;
    }
}

TEST(VariantConversions, EndTheProcessThroughUnexpectedWhenAStreamThrows) {
    const auto result = test_support::run_in_child([] {
        test_support::exit_42_on_unexpected();
        std::ostream stream(nullptr);  // without a buffer the stream is bad from the start
        stream.clear(std::ios::goodbit);
        try {
            stream.exceptions(std::ios::badbit);
        } catch (const std::ios_base::failure&) {
        }
        stream << variant(7);
    });
    EXPECT_TRUE(result.exited);
    EXPECT_EQ(42, result.exit_code) << result.output;
}

TEST(VariantConversions, NeedNoMemoryForIntegers) {
    const variant number(-1234567);
    const variant narrow("0x7FFFFFFF and more");
    const variant wide(L" -42");
    const variant word("TRUE");
    const test_support::failing_allocation limit;
    EXPECT_EQ("-1234567", number.as_string());
    EXPECT_EQ(2147483647, narrow.as_int());
    EXPECT_EQ(-42, wide.as_long());
    EXPECT_TRUE(word.as_bool());
    EXPECT_FALSE(limit.failed());
}

}  // namespace
