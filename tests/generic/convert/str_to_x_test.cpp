#include <tova/generic/convert/str_to_x.hpp>

#include <tova/exceptions/exceptions.hpp>

#include "support/failing_allocation.hpp"
#include "support/global_locale.hpp"
#include "support/number_oracle.hpp"
#include "support/widths.hpp"

#include <gtest/gtest.h>

#include <pthread.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <locale>
#include <new>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace tova::generic::convert;
namespace exceptions = tova::exceptions;
using test_support::as_text;
using test_support::comma_locale;
using test_support::global_locale;
using test_support::oracle_parse;
using test_support::parse_outcome;
using test_support::text;
using test_support::wide_int;
using tova::strings::ustring16;
using tova::strings::ustring32;
using tova::strings::ustring8;
using tova::types::radix_t;

const char radix_message[] = "invalid radix value, values of 0, 2-36 are the only valid values";
const char large_message[] = "Number value is to large";
const char small_message[] = "Number value is to small";

radix_t::base radix(int number) {
    return static_cast<radix_t::base>(number);
}

// One parser of one width, with the limits of its result.
template <typename Unit>
struct parser {
    const char* name;
    wide_int (*parse)(const Unit*, unsigned long, radix_t::base, bool);
    wide_int min;
    wide_int max;
};

template <typename Unit, typename Result,
          Result (*Parse)(const Unit*, unsigned long, radix_t::base, bool)>
wide_int call(const Unit* text, unsigned long length, radix_t::base base, bool throw_on_range) {
    return Parse(text, length, base, throw_on_range);
}

// The limits are written out and not taken from the result type.
template <typename Unit>
std::vector<parser<Unit>> all_parsers() {
    const wide_int two = 2;
    const wide_int max64 = (two << 62) - 1;
    return {
        {"str_to_long", call<Unit, long, str_to_long>, -max64 - 1, max64},
        {"str_to_int", call<Unit, int, str_to_int>, -2147483647 - 1, 2147483647},
        {"str_to_short", call<Unit, short, str_to_short>, -32768, 32767},
        {"str_to_signed", call<Unit, int, str_to_signed>, -2147483647 - 1, 2147483647},
        {"str_to_int8", call<Unit, signed char, str_to_int8>, -128, 127},
        {"str_to_int16", call<Unit, short, str_to_int16>, -32768, 32767},
        {"str_to_int32", call<Unit, int, str_to_int32>, -2147483647 - 1, 2147483647},
        {"str_to_int64", call<Unit, long, str_to_int64>, -max64 - 1, max64},
        {"str_to_unsigned", call<Unit, unsigned, str_to_unsigned>, 0, 4294967295L},
        {"str_to_uint8", call<Unit, unsigned char, str_to_uint8>, 0, 255},
        {"str_to_uint16", call<Unit, unsigned short, str_to_uint16>, 0, 65535},
        {"str_to_uint32", call<Unit, unsigned, str_to_uint32>, 0, 4294967295L},
        {"str_to_uint64", call<Unit, unsigned long, str_to_uint64>, 0, 2 * max64 + 1},
    };
}

template <typename Unit>
parser<Unit> parser_of(const std::string& name) {
    for (const parser<Unit>& each : all_parsers<Unit>())
        if (each.name == name)
            return each;
    throw name;
}

template <typename Unit>
parse_outcome outcome_of(const parser<Unit>& with, const Unit* units, unsigned long length,
                         int base, bool throw_on_range) {
    try {
        return {parse_outcome::number, with.parse(units, length, radix(base), throw_on_range)};
    } catch (const exceptions::invalid_argument_value& e) {
        EXPECT_STREQ(radix_message, e.get_message());
        return {parse_outcome::bad_radix, 0};
    } catch (const exceptions::overflow_error& e) {
        EXPECT_STREQ(large_message, e.get_message());
        return {parse_outcome::overflow, 0};
    } catch (const exceptions::underflow_error& e) {
        EXPECT_STREQ(small_message, e.get_message());
        return {parse_outcome::underflow, 0};
    }
}

// Compares one call with the oracle. Prints nothing on success, because the sweeps make many calls.
template <typename String>
bool agrees(const parser<typename String::value_type>& with, const String& source,
            unsigned long length, int base, bool throw_on_range) {
    std::vector<long> units(source.begin(), source.end());
    units.push_back(0);
    const parse_outcome expected =
        oracle_parse(units, length, base, throw_on_range, with.min, with.max);
    const parse_outcome actual = outcome_of(with, source.c_str(), length, base, throw_on_range);
    if (expected == actual)
        return true;
    std::string shown;
    for (long unit : units)
        shown += unit > 32 && unit < 127 ? std::string(1, static_cast<char>(unit))
                                         : "<" + std::to_string(unit) + ">";
    ADD_FAILURE() << with.name << " of " << shown << " length " << length << " radix " << base
                  << " flag " << throw_on_range << ": expected kind " << expected.kind << " value "
                  << as_text(expected.value) << ", was kind " << actual.kind << " value "
                  << as_text(actual.value);
    return false;
}

template <typename String>
class StringToInteger : public ::testing::Test {
public:
    static wide_int parse(const char* name, const char* characters, int base = 0,
                          bool throw_on_range = false) {
        const String source = text<String>(characters);
        return parser_of<typename String::value_type>(name).parse(source.c_str(), source.size(),
                                                                  radix(base), throw_on_range);
    }
};
TYPED_TEST_SUITE(StringToInteger, test_support::all_widths, test_support::width_name);

// --- Prefixes, signs and the end of a number ---------------------------------------------------

TYPED_TEST(StringToInteger, ReadsPrefixesSignsAndDigits) {
    const struct {
        const char* input;
        int base;
        int value;
    } cases[] = {
        {"", 0, 0},
        {"0", 0, 0},
        {"\\", 0, 0},
        {"0x", 0, 0},
        {"0b", 0, 0},
        {"\\x", 0, 0},
        {"0x1F", 0, 31},
        {"0X1f", 0, 31},
        {"0b101", 0, 5},
        {"0B101", 0, 5},
        {"017", 0, 15},
        {"10", 0, 10},
        {"08", 0, 0},
        {"00", 0, 0},
        {"007", 0, 7},
        {"00x10", 0, 0},
        {"0b2", 0, 0},
        {"0xg", 0, 0},
        {"0b12", 0, 1},
        {"018", 0, 1},
        {"\\x41", 0, 65},
        {"\\X41", 0, 65},
        {"\\101", 0, 65},
        {"\\b11", 0, 3},
        {"\\\\x41", 0, 0},
        {"-0x10", 0, -16},
        {"+0b11", 0, 3},
        {"-017", 0, -15},
        {"0x1F", 16, 0},
        {"1F", 16, 31},
        {"0b101", 2, 0},
        {"b", 16, 11},
        {"017", 8, 15},
        {"017", 10, 17},
        {"\\101", 8, 0},
        {"zZ", 36, 35 * 36 + 35},
        {"Zz", 36, 35 * 36 + 35},
        {"{", 36, 0},
        {"[", 36, 0},
        {"@", 36, 0},
        {"`", 36, 0},
        {"/", 10, 0},
        {":", 36, 0},
        {"2", 2, 0},
        {"12", 2, 1},
        {"  \t\n\v\f\r12", 0, 12},
        {"+12", 0, 12},
        {"-12", 0, -12},
        {"- 12", 0, 0},
        {"--12", 0, 0},
        {"+-12", 0, 0},
        {"-", 0, 0},
        {"+", 0, 0},
        {" -", 0, 0},
        {"   ", 0, 0},
        {"12abc", 0, 12},
        {"12 34", 0, 12},
        {"1.9", 0, 1},
        {"abc", 0, 0},
        {"1,000", 10, 1},
        {"2147483647", 10, 2147483647},
        {"2147483648", 10, 2147483647},
        {"-2147483648", 10, -2147483647 - 1},
        {"-2147483649", 10, -2147483647 - 1},
        {"99999999999999999999999999", 10, 2147483647},
        {"-99999999999999999999999999x", 10, -2147483647 - 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.input) + " in radix " + std::to_string(c.base));
        EXPECT_EQ(c.value, static_cast<int>(this->parse("str_to_int", c.input, c.base)));
    }
}

TYPED_TEST(StringToInteger, SaturatesAtTheLimitsOfEachResult) {
    const struct {
        const char* parser;
        const char* input;
        const char* value;
    } cases[] = {
        {"str_to_long", "9223372036854775806", "9223372036854775806"},
        {"str_to_long", "9223372036854775807", "9223372036854775807"},
        {"str_to_long", "9223372036854775808", "9223372036854775807"},
        {"str_to_long", "-9223372036854775807", "-9223372036854775807"},
        {"str_to_long", "-9223372036854775808", "-9223372036854775808"},
        {"str_to_long", "-9223372036854775809", "-9223372036854775808"},
        {"str_to_long", "99999999999999999999", "9223372036854775807"},
        {"str_to_int64", "9223372036854775807", "9223372036854775807"},
        {"str_to_int64", "9223372036854775808", "9223372036854775807"},
        {"str_to_int64", "-9223372036854775808", "-9223372036854775808"},
        {"str_to_int64", "-9223372036854775809", "-9223372036854775808"},
        {"str_to_signed", "2147483648", "2147483647"},
        {"str_to_signed", "-2147483649", "-2147483648"},
        {"str_to_int32", "2147483648", "2147483647"},
        {"str_to_int32", "-2147483649", "-2147483648"},
        {"str_to_short", "32767", "32767"},
        {"str_to_short", "32768", "32767"},
        {"str_to_short", "-32768", "-32768"},
        {"str_to_short", "-32769", "-32768"},
        {"str_to_int16", "32768", "32767"},
        {"str_to_int16", "-32769", "-32768"},
        {"str_to_int8", "127", "127"},
        {"str_to_int8", "128", "127"},
        {"str_to_int8", "-128", "-128"},
        {"str_to_int8", "-129", "-128"},
        {"str_to_int8", "999", "127"},
        {"str_to_unsigned", "4294967295", "4294967295"},
        {"str_to_unsigned", "4294967296", "4294967295"},
        {"str_to_uint32", "4294967295", "4294967295"},
        {"str_to_uint32", "4294967296", "4294967295"},
        {"str_to_uint16", "65535", "65535"},
        {"str_to_uint16", "65536", "65535"},
        {"str_to_uint8", "255", "255"},
        {"str_to_uint8", "256", "255"},
        {"str_to_uint8", "-1", "0"},
        {"str_to_uint8", "-256", "0"},
        {"str_to_uint8", "-0", "0"},
        {"str_to_uint64", "18446744073709551615", "18446744073709551615"},
        {"str_to_uint64", "18446744073709551616", "18446744073709551615"},
        {"str_to_uint64", "-18446744073709551616", "0"},
        {"str_to_uint64", "-1", "0"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.parser) + " " + c.input);
        EXPECT_EQ(c.value, as_text(this->parse(c.parser, c.input)));
    }
}

TYPED_TEST(StringToInteger, RaisesAtTheLimitsIfAsked) {
    const struct {
        const char* parser;
        const char* input;
        parse_outcome::kind_t kind;
    } cases[] = {
        {"str_to_int8", "127", parse_outcome::number},
        {"str_to_int8", "128", parse_outcome::overflow},
        {"str_to_int8", "-128", parse_outcome::number},
        {"str_to_int8", "-129", parse_outcome::underflow},
        {"str_to_long", "9223372036854775808", parse_outcome::overflow},
        {"str_to_long", "-9223372036854775809", parse_outcome::underflow},
        {"str_to_uint8", "255", parse_outcome::number},
        {"str_to_uint8", "256", parse_outcome::overflow},
        {"str_to_uint8", "-0", parse_outcome::number},
        {"str_to_uint8", "-1", parse_outcome::underflow},
        {"str_to_uint8", "-255", parse_outcome::underflow},
        {"str_to_uint8", "-256", parse_outcome::underflow},
        {"str_to_uint64", "18446744073709551616", parse_outcome::overflow},
        {"str_to_uint64", "-18446744073709551616", parse_outcome::underflow},
        {"str_to_int8", "12x", parse_outcome::number},
        {"str_to_int8", "x", parse_outcome::number},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.parser) + " " + c.input);
        const auto source = text<TypeParam>(c.input);
        const auto with = parser_of<typename TypeParam::value_type>(c.parser);
        EXPECT_EQ(c.kind, outcome_of(with, source.c_str(), source.size(), 0, true).kind);
    }
}

TYPED_TEST(StringToInteger, RaisesADifferentClassForEachError) {
    EXPECT_THROW(this->parse("str_to_int8", "128", 10, true), exceptions::overflow_error);
    EXPECT_THROW(this->parse("str_to_int8", "-129", 10, true), exceptions::underflow_error);
    EXPECT_THROW(this->parse("str_to_uint8", "-1", 10, true), exceptions::underflow_error);
    EXPECT_THROW(this->parse("str_to_int8", "1", 37), exceptions::invalid_argument_value);
}

// The location that an exception carries: it has no accessor, but is stored right after the virtual
// table pointer.
const exceptions::exception::state& location_of(const exceptions::exception& raised) {
    return *reinterpret_cast<const exceptions::exception::state*>(
        reinterpret_cast<const char*>(&raised) + sizeof(void*));
}

TYPED_TEST(StringToInteger, ReportsTheSameLineOfTheInnerRoutineInEveryRelease) {
    const struct {
        const char* input;
        int base;
        unsigned signed_line;    // 0 if the signed parsers don't raise
        unsigned unsigned_line;  // 0 if the unsigned parsers don't raise
    } cases[] = {
        {"1", 1, 88, 178},
        {"1", 37, 88, 178},
        {"", 37, 88, 178},
        {"1", -1, 0, 178},
        {"99999999999999999999", 10, 131, 219},
        {"-99999999999999999999", 10, 131, 219},
        {"-1", 10, 0, 233},
    };
    for (const auto& with : all_parsers<typename TypeParam::value_type>()) {
        for (const auto& c : cases) {
            SCOPED_TRACE(std::string(with.name) + " of " + c.input + " in radix " +
                         std::to_string(c.base));
            const auto source = text<TypeParam>(c.input);
            const bool is_signed = with.min < 0;
            unsigned line = 0;
            try {
                with.parse(source.c_str(), source.size(), radix(c.base), true);
            } catch (const exceptions::exception& raised) {
                const auto& location = location_of(raised);
                EXPECT_STREQ("generic/convert/str_to_x", location.file);
                EXPECT_STREQ(is_signed ? "strtointx" : "strtouintx", location.function);
                line = location.line;
            }
            EXPECT_EQ(is_signed ? c.signed_line : c.unsigned_line, line);
        }
    }
}

TYPED_TEST(StringToInteger, NeedsNoMemoryUnlessItRaises) {
    const auto source = text<TypeParam>(" -99999999999999999999 and more");
    const auto hexadecimal = text<TypeParam>("0x7F");
    const auto parsers = all_parsers<typename TypeParam::value_type>();
    const unsigned long before = test_support::allocations();
    for (const auto& with : parsers) {
        EXPECT_TRUE(with.min == with.parse(source.c_str(), source.size(), radix(0), false));
        EXPECT_EQ(127, with.parse(hexadecimal.c_str(), hexadecimal.size(), radix(0), true));
    }
    EXPECT_EQ(before, test_support::allocations());
}

// --- The radix ---------------------------------------------------------------------------------

TYPED_TEST(StringToInteger, ChecksTheRadixOnlyAfterWhitespaceAndSign) {
    for (const auto& with : all_parsers<typename TypeParam::value_type>()) {
        SCOPED_TRACE(with.name);
        for (int base : {1, 37, 38, 1000, INT_MAX}) {
            SCOPED_TRACE(base);
            for (const char* input : {"-", "+", "  ", " -", "\t+"}) {
                const auto source = text<TypeParam>(input);
                const parse_outcome zero = {parse_outcome::number, 0};
                EXPECT_TRUE(zero == outcome_of(with, source.c_str(), source.size(), base, true))
                    << input;
            }
            for (const char* input : {"", "0", "5", "x", "-1", " 1"}) {
                const auto source = text<TypeParam>(input);
                EXPECT_EQ(parse_outcome::bad_radix,
                          outcome_of(with, source.c_str(), source.size(), base, false).kind)
                    << input;
            }
        }
    }
}

TYPED_TEST(StringToInteger, HasNoDigitsInANegativeRadixIfSignedAndRaisesIfUnsigned) {
    for (const auto& with : all_parsers<typename TypeParam::value_type>()) {
        SCOPED_TRACE(with.name);
        for (int base : {-1, -2, -36, INT_MIN})
            for (const char* input : {"", "0", "5", "-5", "z", "0x1"}) {
                SCOPED_TRACE(input);
                const auto source = text<TypeParam>(input);
                const parse_outcome actual =
                    outcome_of(with, source.c_str(), source.size(), base, true);
                EXPECT_EQ(with.min < 0 ? parse_outcome::number : parse_outcome::bad_radix,
                          actual.kind);
                EXPECT_TRUE(actual.value == 0);
            }
    }
}

TYPED_TEST(StringToInteger, AcceptsEveryRadixFromTwoToThirtySix) {
    for (int base = 2; base <= 36; ++base) {
        SCOPED_TRACE(base);
        EXPECT_EQ(as_text(base), as_text(this->parse("str_to_int", "10", base)));
        const std::string last = as_text(base - 1, base, 'a');
        EXPECT_EQ(as_text(base - 1), as_text(this->parse("str_to_int", last.c_str(), base)));
        const char beyond[] = {static_cast<char>(base < 10   ? '0' + base
                                                 : base < 36 ? 'a' + base - 10
                                                             : '{'),
                               0};
        EXPECT_EQ("0", as_text(this->parse("str_to_int", beyond, base))) << beyond;
    }
}

// --- The length --------------------------------------------------------------------------------

TYPED_TEST(StringToInteger, MeasuresAStringOfLengthZeroInTheSignedParsersOnly) {
    const struct {
        const char* input;
        const char* signed_value;
        const char* unsigned_value;
    } cases[] = {
        {"", "0", "0"},     {"12", "12", "1"},   {"7", "7", "7"},     {" 12", "12", "0"},
        {"+12", "12", "0"}, {"-12", "-12", "0"}, {"0x10", "16", "0"}, {"017", "15", "0"},
        {"\\7", "7", "0"},  {"x", "0", "0"},
    };
    for (const auto& with : all_parsers<typename TypeParam::value_type>()) {
        SCOPED_TRACE(with.name);
        for (const auto& c : cases) {
            SCOPED_TRACE(c.input);
            const auto source = text<TypeParam>(c.input);
            EXPECT_EQ(with.min < 0 ? c.signed_value : c.unsigned_value,
                      as_text(with.parse(source.c_str(), 0, radix(0), true)));
        }
    }
}

TYPED_TEST(StringToInteger, DoesNotReadPastTheLength) {
    const auto source = text<TypeParam>("  -123456");
    const struct {
        unsigned long length;
        int value;
    } cases[] = {{1, 0}, {2, 0}, {3, 0}, {4, -1}, {5, -12}, {6, -123}, {9, -123456}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.length);
        EXPECT_EQ(c.value, str_to_int(source.c_str(), c.length, radix_t::detect, true));
    }
}

TYPED_TEST(StringToInteger, NeedsNoTerminatorAfterTheLength) {
    const typename TypeParam::value_type units[] = {'4', '2', '1', '9'};
    EXPECT_EQ(42, str_to_int(units, 2, radix_t::decimal, false));
    EXPECT_EQ(42u, str_to_unsigned(units, 2, radix_t::decimal, false));
    const std::vector<typename TypeParam::value_type> exact(units, units + 3);
    EXPECT_EQ(421, str_to_int(exact.data(), 3, radix_t::decimal, false));
    EXPECT_EQ(421u, str_to_unsigned(exact.data(), 3, radix_t::decimal, false));
}

TYPED_TEST(StringToInteger, TreatsANulLikeAnyOtherUnit) {
    const auto source = text<TypeParam>("1\0002");
    EXPECT_EQ(1, str_to_int(source.c_str(), 3, radix_t::decimal, false));
    const auto front = text<TypeParam>("\00012");
    EXPECT_EQ(0, str_to_int(front.c_str(), 3, radix_t::decimal, false));
}

// --- Sweeps against the oracle -----------------------------------------------------------------

TYPED_TEST(StringToInteger, AgreesWithThePlainOracleOnAll8BitNumbersInEveryRadix) {
    using unit = typename TypeParam::value_type;
    const parser<unit> both[] = {parser_of<unit>("str_to_int8"), parser_of<unit>("str_to_uint8")};
    for (int base = 2; base <= 36; ++base)
        for (int value = -300; value <= 300; ++value)
            for (char letter : {'a', 'A'}) {
                const auto source = text<TypeParam>(as_text(value, base, letter).c_str());
                for (const auto& with : both)
                    for (bool flag : {false, true})
                        ASSERT_TRUE(agrees(with, source, source.size(), base, flag));
            }
}

TYPED_TEST(StringToInteger, AgreesWithThePlainOracleOnAll16BitNumbers) {
    using unit = typename TypeParam::value_type;
    const parser<unit> both[] = {parser_of<unit>("str_to_int16"), parser_of<unit>("str_to_uint16")};
    for (int base : {2, 10, 16, 36})
        for (int value = -66000; value <= 66000; value += sizeof(unit) == 1 ? 1 : 7) {
            const auto source = text<TypeParam>(as_text(value, base, 'a').c_str());
            for (const auto& with : both)
                ASSERT_TRUE(agrees(with, source, source.size(), base, false));
        }
}

TYPED_TEST(StringToInteger, AgreesWithThePlainOracleAroundEveryLimitInEveryRadix) {
    for (const auto& with : all_parsers<typename TypeParam::value_type>())
        for (int base = 2; base <= 36; ++base)
            for (wide_int limit : {with.min, with.max, -with.max, with.max * base, wide_int(0)})
                for (wide_int value = limit - 40; value <= limit + 40; ++value) {
                    const auto source = text<TypeParam>(as_text(value, base, 'A').c_str());
                    ASSERT_TRUE(agrees(with, source, source.size(), base, false));
                    const bool close = value >= limit - 2 && value <= limit + 2;
                    ASSERT_TRUE(!close || agrees(with, source, source.size(), base, true));
                }
}

TYPED_TEST(StringToInteger, AgreesWithThePlainOracleOnAllShortStrings) {
    using unit = typename TypeParam::value_type;
    const parser<unit> both[] = {parser_of<unit>("str_to_int8"), parser_of<unit>("str_to_uint8")};
    const char alphabet[] = {' ', '-', '+', '0', '1', '9', 'x', 'B', '\\', 'z', '\0', '\x80'};
    const int size = sizeof alphabet;
    for (int length = 0, count = 1; length <= 4; ++length, count *= size)
        for (int number = 0; number < count; ++number) {
            TypeParam source;
            for (int rest = number, i = 0; i < length; rest /= size, ++i)
                source.push_back(static_cast<unit>(alphabet[rest % size]));
            for (const auto& with : both)
                for (int base : {0, 10, 36})
                    for (unsigned long read = 0; read <= source.size(); ++read)
                        ASSERT_TRUE(agrees(with, source, read, base, false));
        }
}

// Each unit at each place of a number, with a sign and without.
TYPED_TEST(StringToInteger, AgreesWithThePlainOracleOnEveryUnitAmongDigits) {
    using unit = typename TypeParam::value_type;
    for (const char* digits : {"9", "98", "987", "9876", "98765", "-1", "-12", "-123", "-1234"}) {
        const TypeParam number = text<TypeParam>(digits);
        for (std::size_t place = 0; place != number.size(); ++place)
            for (int value = 0; value <= 255; ++value) {
                TypeParam source = number;
                source[place] = static_cast<unit>(value);
                for (const auto& with : all_parsers<unit>())
                    for (int base : {0, 10})
                        ASSERT_TRUE(agrees(with, source, source.size(), base, false));
            }
    }
}

TYPED_TEST(StringToInteger, HasNoDigitsOutsideAscii) {
    using unit = typename TypeParam::value_type;
    const long units[] = {0x80,   0xB2,   0xFF,   0x130,   0x131,   0x139, 0x161, 0x0660,
                          0xFF11, 0x8031, 0xD831, 0x10031, 0x1D7D8, -0x80, -0xCF, 0x7FFF0031};
    for (long number : units) {
        SCOPED_TRACE(number);
        const unit cut = static_cast<unit>(number);
        if (static_cast<long>(cut) >= '0' && static_cast<long>(cut) <= 'z')
            continue;  // the unit is too narrow for the number
        const unit source[] = {cut, '1', 0};
        for (const auto& with : all_parsers<unit>())
            EXPECT_EQ("0", as_text(with.parse(source, 2, radix(36), true))) << with.name;
        const unit trailing[] = {'1', cut, 0};
        for (const auto& with : all_parsers<unit>())
            EXPECT_EQ("1", as_text(with.parse(trailing, 2, radix(36), true))) << with.name;
    }
}

TYPED_TEST(StringToInteger, IgnoresUnitsThatMatchAPrefixInTheirLowByteOnly) {
    using unit = typename TypeParam::value_type;
    if (sizeof(unit) == 1)
        return;
    const unit letter[] = {'0', static_cast<unit>(0x178), '1', 0};
    EXPECT_EQ(0, str_to_int(letter, 3, radix_t::detect, false));
    const unit zero[] = {static_cast<unit>(0x130), 'x', '1', 0};
    EXPECT_EQ(0, str_to_int(zero, 3, radix_t::detect, false));
    const unit minus[] = {static_cast<unit>(0x12D), '1', 0};
    EXPECT_EQ(0, str_to_int(minus, 2, radix_t::detect, false));
}

TYPED_TEST(StringToInteger, IgnoresTheGlobalLocale) {
    const global_locale locale(comma_locale());
    EXPECT_EQ("1", as_text(this->parse("str_to_int", "1.234", 10)));
    EXPECT_EQ("1234", as_text(this->parse("str_to_int", "1234", 10)));
}

// --- Whitespace ---------------------------------------------------------------------------------

TEST(IsSpace, IsTrueForTheSixWhitespaceCharactersOfTheCLocaleOnly) {
    for (int value = -128; value <= 127; ++value)
        EXPECT_EQ(value == ' ' || (value >= '\t' && value <= '\r'),
                  is_space(static_cast<char>(value)))
            << value;
    for (int value = 0; value <= 0xFFFF; ++value)
        EXPECT_EQ(value == ' ' || (value >= '\t' && value <= '\r'),
                  is_space(static_cast<unsigned short>(value)))
            << value;
    for (int value = -70000; value <= 0x20000; ++value)
        EXPECT_EQ(value == ' ' || (value >= '\t' && value <= '\r'),
                  is_space(static_cast<wchar_t>(value)))
            << value;
}

TEST(IsSpace, IsFalseForUnitsOutsideTheCLibrarysTable) {
    for (int value : {INT_MIN, INT_MIN + 32, -129, 256, 256 + ' ', 0x3000, 0x2028, INT_MAX})
        EXPECT_FALSE(is_space(static_cast<wchar_t>(value))) << value;
}

// --- bool --------------------------------------------------------------------------------------

TEST(StrToBool, IsTrueForThreeWordsAndForNumbersOtherThanZero) {
    const struct {
        const char* input;
        bool value;
    } cases[] = {
        {"yes", true},
        {"YES", true},
        {"yEs", true},
        {"on", true},
        {"On", true},
        {"true", true},
        {"tRuE", true},
        {"TRUE", true},
        {"no", false},
        {"off", false},
        {"false", false},
        {"", false},
        {"0", false},
        {"1", true},
        {"2", true},
        {"-1", true},
        {"0x1", true},
        {"0b0", false},
        {"0.5", false},
        {"1.5", true},
        {" yes", false},
        {"yes ", false},
        {"ye", false},
        {"yess", false},
        {"o", false},
        {" 7", true},
        {"y", false},
        {"t", false},
        {"00", false},
        {"08", false},
        {"99999999999999999999", true},
        {"-99999999999999999999", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.input);
        EXPECT_EQ(c.value, str_to_bool(text<ustring16>(c.input)));
    }
}

TEST(StrToBool, IgnoresUnitsThatMatchALetterInTheirLowByteOnly) {
    EXPECT_FALSE(str_to_bool(ustring16{'o', 0x16E}));
    EXPECT_FALSE(str_to_bool(ustring16{0x179, 'e', 's'}));
    EXPECT_FALSE(str_to_bool(ustring16{0xFF4F, 0xFF4E}));
    EXPECT_FALSE(str_to_bool(ustring16{'o', 'n', 0}));
}

// --- Floating point ----------------------------------------------------------------------------

TEST(StrToDouble, ReadsAsAStreamDoes) {
    const struct {
        const char* input;
        double value;
    } cases[] = {
        {"", 0.0},
        {"1.5", 1.5},
        {"1.5abc", 1.5},
        {"abc", 0.0},
        {"  \t\n-2.25 7", -2.25},
        {"+3", 3.0},
        {".5", 0.5},
        {"5.", 5.0},
        {".", 0.0},
        {"-", 0.0},
        {"1e3", 1000.0},
        {"1E-2", 0.01},
        {"1.5e+", 0.0},
        {"1.5e", 0.0},
        {"1.5e+2", 150.0},
        {"1e999", 0.0},
        {"-1e999", 0.0},
        {"1e-999", 0.0},
        {"1.7976931348623157e308", 1.7976931348623157e308},
        {"1.7976931348623159e308", 0.0},
        {"2.2250738585072014e-308", 2.2250738585072014e-308},
        {"inf", 0.0},
        {"nan", 0.0},
        {"infinity", 0.0},
        {"0x10", 0.0},
        {"1,000", 1.0},
        {"--1", 0.0},
        {"- 1", 0.0},
        {"1..2", 1.0},
        {"0.1", 0.1},
        {"9007199254740993", 9007199254740992.0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.input);
        EXPECT_EQ(c.value, str_to_double(c.input));
        EXPECT_EQ(c.value, str_to_double(c.input, std::locale::classic()));
    }
}

TEST(StrToFloat, RoundsOnceAndReturnsZeroOutsideTheRangeOfAFloat) {
    EXPECT_EQ(1.5f, str_to_float("1.5abc"));
    // Just above the midpoint of two floats; rounded to a double first, it would become 1.
    EXPECT_EQ(1.00000012f, str_to_float("1.000000059604644775390626"));
    EXPECT_EQ(3.4028235e38f, str_to_float("3.4028235e38"));
    EXPECT_EQ(0.0f, str_to_float("3.5e38"));
    EXPECT_EQ(0.0f, str_to_float("-1e39"));
    EXPECT_EQ(0.0f, str_to_float("x"));
    EXPECT_EQ(2.5f, str_to_float("2.5", std::locale::classic()));
}

TEST(StrToLongDouble, KeepsItsFullPrecision) {
    EXPECT_EQ(0.1L, str_to_long_double("0.1"));
    EXPECT_NE(static_cast<long double>(0.1), str_to_long_double("0.1"));
    EXPECT_EQ(1e400L, str_to_long_double("1e400"));
    EXPECT_EQ(0.0L, str_to_long_double("1e5000"));
    EXPECT_EQ(0.0L, str_to_long_double("x"));
    EXPECT_EQ(9007199254740993.0L, str_to_long_double("9007199254740993"));
    EXPECT_EQ(2.5L, str_to_long_double("2.5", std::locale::classic()));
}

TEST(FloatingParsers, KeepTheSignOfZero) {
    EXPECT_TRUE(std::signbit(str_to_double("-0")));
    EXPECT_TRUE(std::signbit(str_to_float("-0.0")));
    EXPECT_FALSE(std::signbit(str_to_double("-x")));
    EXPECT_FALSE(std::signbit(str_to_double("-1e999")));
}

TEST(FloatingParsers, StopAtAnEmbeddedNul) {
    EXPECT_EQ(1.5, str_to_double(ustring8("1.5\0007", 5)));
    EXPECT_EQ(0.0, str_to_double(ustring8("\0001.5", 4)));
}

TEST(FloatingParsers, FollowTheGlobalLocaleUnlessGivenOne) {
    EXPECT_EQ(1.0, str_to_double("1,5"));
    EXPECT_EQ(1.5, str_to_double("1,5", comma_locale()));
    EXPECT_EQ(1.5f, str_to_float("1,5", comma_locale()));
    EXPECT_EQ(1.5L, str_to_long_double("1,5", comma_locale()));
    EXPECT_EQ(1234567.5, str_to_double("1.234.567,5", comma_locale()));
    EXPECT_EQ(0.0, str_to_double("12.34,5", comma_locale()));  // ill-formed groups

    const global_locale locale(comma_locale());
    EXPECT_EQ(1.5, str_to_double("1,5"));
    EXPECT_EQ(1.5f, str_to_float("1,5"));
    EXPECT_EQ(1.5L, str_to_long_double("1,5"));
    EXPECT_EQ(1234567.0, str_to_double("1.234.567"));
    EXPECT_EQ(1.0, str_to_double("1,5", std::locale::classic()));
}

// A locale with the name of the classic one.
TEST(FloatingParsers, ReadAsInCWithALocaleThatEqualsTheClassicOne) {
    const std::locale same(std::locale::classic(), "C", std::locale::numeric);
    ASSERT_TRUE(same == std::locale::classic());
    EXPECT_EQ(1.5, str_to_double("1.5", same));
    EXPECT_EQ(1.0, str_to_double("1,5", same));
    const global_locale global(same);
    EXPECT_EQ(1.5, str_to_double("1.5"));
}

// A facet whose operation ends in another way than by returning.
class failing_reader : public std::num_get<char> {
public:
    explicit failing_reader(std::function<void()> fail) : m_fail(std::move(fail)) {}

protected:
    iter_type do_get(iter_type begin, iter_type, std::ios_base&, std::ios_base::iostate&,
                     double&) const override {
        m_fail();
        return begin;
    }

private:
    std::function<void()> m_fail;
};

TEST(FloatingParsers, Return0IfTheLocaleRaises) {
    const std::locale locale(std::locale::classic(),
                             new failing_reader([] { throw std::runtime_error("from a facet"); }));
    EXPECT_EQ(0.0, str_to_double("1.5", locale));
}

TEST(FloatingParsers, RaiseIfTheLocaleRunsOutOfMemory) {
    const std::locale locale(std::locale::classic(),
                             new failing_reader([] { throw std::bad_alloc(); }));
    EXPECT_THROW(str_to_double("1.5", locale), std::bad_alloc);
}

// The C library ends the thread by an exception that nobody may stop.
void* read_in_cancelled_thread(void* locale) {
    ::pthread_cancel(::pthread_self());
    str_to_double("1.5", *static_cast<const std::locale*>(locale));
    return nullptr;
}

TEST(FloatingParsers, LetAThreadBeCancelledInTheLocale) {
    std::locale locale(std::locale::classic(), new failing_reader([] { ::pthread_testcancel(); }));
    pthread_t thread;
    ASSERT_EQ(0, ::pthread_create(&thread, nullptr, read_in_cancelled_thread, &locale));
    void* result = nullptr;
    ASSERT_EQ(0, ::pthread_join(thread, &result));
    EXPECT_EQ(PTHREAD_CANCELED, result);
}

template <typename Result>
Result extracted(const std::string& source) {
    std::stringstream stream(source);
    Result value = Result();
    stream >> value;
    return stream.fail() ? Result() : value;
}

TEST(FloatingParsers, AgreeWithAStreamOnRandomStrings) {
    std::mt19937 random(20180218);
    const char alphabet[] = "0123456789.eE+-, x\tin";
    for (int round = 0; round < 20000; ++round) {
        std::string source;
        for (auto length = random() % 14; length != 0; --length)
            source += alphabet[random() % (sizeof alphabet - 1)];
        ASSERT_EQ(extracted<float>(source), str_to_float(source)) << source;
        ASSERT_EQ(extracted<double>(source), str_to_double(source)) << source;
        ASSERT_EQ(extracted<long double>(source), str_to_long_double(source)) << source;
    }
}

}  // namespace
