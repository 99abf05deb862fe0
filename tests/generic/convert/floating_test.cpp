#include "generic/convert/floating_samples.hpp"

#include <tova/generic/convert/x_to_str.hpp>

#include "support/failing_allocation.hpp"
#include "support/global_locale.hpp"
#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <cfenv>
#include <clocale>
#include <cstdlib>
#include <functional>
#include <new>

namespace {

using tova::serialization::serialize_text_buf;
using tova::strings::ustring8;
using tova::types::variant;
namespace convert = tova::generic::convert;
using test_support::generator;

TEST(FloatingReader, AcceptsWhatAStreamExtracts) {
    const double least = std::numeric_limits<double>::denorm_min();
    const double epsilon = std::numeric_limits<double>::epsilon();
    const double greatest = std::numeric_limits<double>::max();
    const struct {
        const char* text;
        double value;
    } cases[] = {
        {"", 0.0},
        {"-", 0.0},
        {".", 0.0},
        {"-.", 0.0},
        {"-.e5", 0.0},
        {"-0", -0.0},
        {"+.5", 0.5},
        {"5.", 5.0},
        {"1.5abc", 1.5},
        {"1.5.5", 1.5},
        {"1,5", 1.0},
        {" \t\n\v\f\r1", 1.0},
        {"- 1", 0.0},
        {"1e", 0.0},
        {"1e+", 0.0},
        {"1.5e+x", 0.0},
        {"1e5e5", 1e5},
        {"1e5.5", 1e5},
        {"1e--5", 0.0},
        {"E5", 0.0},
        {"0x10", 0.0},
        {"inf", 0.0},
        {"nan", 0.0},
        {"1e308", 1e308},
        {"1.7976931348623157e308", greatest},
        {"1.7976931348623158e308", greatest},
        {"1.7976931348623159e308", 0.0},
        {"-1e309", 0.0},
        {"1e999999999999999999999", 0.0},
        {"0e999999999999999999999", 0.0},
        {"-1e-999999999999999999999", -0.0},
        {"4.9406564584124654e-324", least},
        {"2.4703282292062328e-324", least},
        {"2.4703282292062327e-324", 0.0},
        {"2.2250738585072011e-308", std::numeric_limits<double>::min() - least},
        {"9007199254740991e22", 9007199254740991e22},
        {"-9007199254740991e-22", -9007199254740991e-22},
        {"9007199254740992e22", 9007199254740992e22},
        {"1e23", 1e23},
        {"1234567", 1234567.0},
        {"1234567.", 1234567.0},
        {"1234567.5", 1234567.5},
        {"12345678", 12345678.0},
        {"12345678.", 12345678.0},
        {"12345678.25", 12345678.25},
        {"1.234567", 1.234567},
        {"1.2345678", 1.2345678},
        {"-.1234567", -.1234567},
        {"1.e7", 1e7},
        {"12345678e5", 12345678e5},
        {"1234567890123e-7", 1234567890123e-7},
        {"-123456.7e-1", -123456.7e-1},
        {"562949953421311.5", 562949953421311.5},
        {"562949953421312", 562949953421312.0},
        {"-4503599627370496.5", -4503599627370496.5},
        {"1700000000123456", 1700000000123456.0},
        {"17000000001234.56", 17000000001234.56},
        {"9007199254740993", 9007199254740992.0},
        {"9007199254740993.0000000000000000000000", 9007199254740992.0},
        {"9007199254740993.0000000000000000000001", 9007199254740994.0},
        {"9007199254740995", 9007199254740996.0},
        {"0.5000000000000000277555756156289135105907917022705078125", 0.5},
        {"0.500000000000000166533453693773481063544750213623046875", 0.5 + epsilon},
        {"123456789012345678901234567890", 123456789012345678901234567890.0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_TRUE(test_support::same_bits(c.value, convert::str_to_double(c.text)))
            << convert::str_to_double(c.text);
        EXPECT_EQ("", test_support::check_reading(c.text));
        EXPECT_EQ("", test_support::check_reading_long_double(c.text));
    }
}

TEST(FloatingReader, StopsAtAnEmbeddedNul) {
    EXPECT_EQ(1.5, convert::str_to_double(ustring8("1.5\0007", 5)));
}

// Each prefix of a number, so that the scan ends in every state.
TEST(FloatingReader, ReadsEveryPrefixLikeAStream) {
    const std::string texts[] = {
        " -00012345678901234567890.00123456789012345678e-0012x", "+.000000000000000000000123E+200",
        "98765432109876543210987654321098765432109876543210", "1e00000000000000000000000000000305"};
    for (const std::string& text : texts)
        for (std::size_t length = 0; length <= text.size(); ++length) {
            EXPECT_EQ("", test_support::check_reading(text.substr(0, length)));
            EXPECT_EQ("", test_support::check_reading_long_double(text.substr(0, length)));
        }
}

TEST(FloatingReader, ReadsRandomStringsLikeAStream) {
    generator random(1);
    for (int i = 0; i != 100000; ++i)
        ASSERT_EQ("", test_support::check_reading(test_support::random_text(random)));
    for (int i = 0; i != 20000; ++i)
        ASSERT_EQ("", test_support::check_reading_long_double(test_support::random_text(random)));
}

// The midpoint between two neighbors, and the numbers that differ from it only in the last digit.
TEST(FloatingReader, ReadsTheMidpointBetweenTwoNumbersLikeAStream) {
    generator random(2);
    for (int i = 0; i != 3000; ++i) {
        std::string text = test_support::middle_after(test_support::random_value(random));
        const auto exponent = text.find('e');
        if (exponent == std::string::npos)
            continue;
        ASSERT_EQ("", test_support::check_reading(text));
        const auto last = text.find_last_not_of('0', exponent - 1);
        for (const char digit : {'4', '6'}) {
            text[last] = digit;
            ASSERT_EQ("", test_support::check_reading(text));
        }
        text[last] = '5';
        text[exponent - 1] = '1';
        ASSERT_EQ("", test_support::check_reading(text));
    }
}

TEST(FloatingReader, FollowsTheRoundingModeOfTheCLibrary) {
    generator random(3);
    for (const int mode : {FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO}) {
        for (int i = 0; i != 5000; ++i) {
            const std::string text = test_support::random_text(random);
            std::fesetround(mode);
            const std::string difference = test_support::check_reading(text);
            std::fesetround(FE_TONEAREST);
            ASSERT_EQ("", difference);
        }
    }
}

#if defined(__x86_64__)
// The processor has a setting of its own, which the C library doesn't follow: directed rounding,
// and subnormal numbers as zeros.
TEST(FloatingReader, IgnoresHowTheProcessorRounds) {
    generator random(7);
    const unsigned usual = __builtin_ia32_stmxcsr();
    for (const unsigned setting : {0x2000u, 0x4000u, 0x6000u, 0x8040u}) {
        SCOPED_TRACE(setting);
        for (int i = 0; i != 5000; ++i) {
            const double number = test_support::random_value(random);
            char digits[40];
            std::snprintf(digits, sizeof digits, "%.*g", i % 17 + 1, number);
            // The C library rounds with the processor at the ends of the range.
            if (!std::isfinite(number) || std::abs(std::log10(std::abs(number))) > 37)
                continue;
            const ustring8 text(digits);
            const double expected = convert::str_to_double(text);
            const float expected_float = convert::str_to_float(text);
            __builtin_ia32_ldmxcsr(usual | setting);
            const double value = convert::str_to_double(text);
            const float value_float = convert::str_to_float(text);
            __builtin_ia32_ldmxcsr(usual);
            ASSERT_TRUE(test_support::same_bits(expected, value)) << text;
            ASSERT_TRUE(test_support::same_bits(expected_float, value_float)) << text;
        }
    }
}
#endif

TEST(FloatingReader, LeavesErrnoAlone) {
    errno = 77;
    EXPECT_EQ(0.0, convert::str_to_double("1e999"));
    EXPECT_EQ(0.0f, convert::str_to_float("1e-999"));
    EXPECT_EQ(0.0L, convert::str_to_long_double("1e-99999"));
    EXPECT_EQ(77, errno);
}

TEST(FloatingWriter, WritesWhatAStreamInserts) {
    const struct {
        double value;
        unsigned precision;
        const char* text;
    } cases[] = {
        {0.0, 6, "0"},
        {-0.0, 6, "-0"},
        {1234567.0, 6, "1.23457e+06"},
        {1234565.0, 6, "1.23456e+06"},
        {1234575.0, 6, "1.23458e+06"},
        {999999.5, 6, "1e+06"},
        {999999.4, 6, "999999"},
        {-99999.96, 6, "-100000"},
        {-1.23457e-308, 6, "-1.23457e-308"},
        {-1.23457e+308, 6, "-1.23457e+308"},
        {-0.000123457, 6, "-0.000123457"},
        {-1.23457e-05, 6, "-1.23457e-05"},
        {1e10, 6, "1e+10"},
        {9.5e99, 6, "9.5e+99"},
        {1e100, 6, "1e+100"},
        {0.00001, 6, "1e-05"},
        {0.0001, 6, "0.0001"},
        {100000.0, 6, "100000"},
        {1e-300, 17, "1e-300"},
        {1.23e-300, 17, "1.23e-300"},
        {0.1, 17, "0.10000000000000001"},
        {0.1, 30, "0.100000000000000005551115123126"},
        {2.5, 0, "2"},
        {3.5, 1, "4"},
        {2.5, 4294967295u, "2.5"},
        {1.0 / 3, 4294967295u, "0.333333"},
        {std::numeric_limits<double>::infinity(), 6, "inf"},
        {-std::numeric_limits<double>::infinity(), 6, "-inf"},
        {std::numeric_limits<double>::quiet_NaN(), 6, "nan"},
        {-std::numeric_limits<double>::quiet_NaN(), 6, "-nan"},
        {5e-324, 17, "4.9406564584124654e-324"},
        {1.7976931348623157e308, 17, "1.7976931348623157e+308"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        serialize_text_buf buffer;
        buffer.append_double(c.value, c.precision);
        EXPECT_EQ(std::string(c.text) + '\x01', buffer.as_str());
        EXPECT_EQ("", test_support::check_writing(c.value, c.precision, 2));
    }
}

TEST(FloatingWriter, WritesAllDigitsOfTheLongestNumber) {
    const double least = std::numeric_limits<double>::min();
    const double longest = 2 * least - std::numeric_limits<double>::denorm_min();
    for (const unsigned precision : {700u, 766u, 767u, 768u, 5000u})
        EXPECT_EQ("", test_support::check_writing(longest, precision, 0));
}

// Every length of the result, and the point at every place.
TEST(FloatingWriter, WritesEveryNumberOfDigitsWithEveryExponent) {
    for (const double sign : {1.0, -1.0})
        for (int digits = 1; digits <= 7; ++digits)
            for (int exponent = -330; exponent != 310; ++exponent) {
                const std::string text =
                    std::string("9876543").substr(0, static_cast<std::size_t>(digits)) + "e" +
                    std::to_string(exponent);
                const double value = sign * std::strtod(text.c_str(), nullptr);
                ASSERT_EQ("", test_support::check_writing(value, 6, 2)) << text;
            }
}

// Ties and their neighbors, in numbers of every size.
TEST(FloatingWriter, RoundsHundredthsLikePrintf) {
    for (double unit = 0.125; unit > 1e-5; unit /= 2)
        for (int i = -2000; i != 2000; ++i)
            ASSERT_EQ("", test_support::check_writing(i * unit, 6, 2)) << i << " * " << unit;
    for (double power = 1; power < 1e18; power *= 10)
        for (const double fraction : {0.0, 0.005, 0.125, 0.375, 0.994, 0.995, 0.996})
            for (const double value : {power + fraction, power - fraction, -power - fraction})
                ASSERT_EQ("", test_support::check_writing(value, 6, 2)) << value;
}

TEST(FloatingWriter, WritesRandomValuesLikeAStream) {
    generator random(4);
    for (int i = 0; i != 100000; ++i)
        ASSERT_EQ("", test_support::check_writing(test_support::random_value(random),
                                                  static_cast<unsigned>(random() % 24),
                                                  static_cast<int>(random() % 20)));
}

TEST(FloatingWriter, FollowsTheRoundingModeOfTheCLibrary) {
    generator random(5);
    for (const int mode : {FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO}) {
        for (int i = 0; i != 5000; ++i) {
            const double value = test_support::random_value(random);
            std::fesetround(mode);
            const std::string difference = test_support::check_writing(value, 6, 2);
            std::fesetround(FE_TONEAREST);
            ASSERT_EQ("", difference);
        }
    }
}

TEST(FloatingWriter, WritesLongDoublesLikeAStream) {
    generator random(6);
    for (int i = 0; i != 5000; ++i) {
        const long double value = std::ldexp(static_cast<long double>(random()),
                                             static_cast<int>(random() % 32000) - 16000);
        std::wostringstream wide;
        wide << value;
        ASSERT_EQ(test_support::written_by_stream(value), variant(value).as_string());
        ASSERT_EQ(wide.str(), variant(value).as_wstring());
    }
}

// A locale with a decimal comma for the C library only. Few machines have one installed, so it is
// compiled from the sources that come with the C library.
class c_locale_with_comma {
public:
    c_locale_with_comma() {
        const std::string command =
            "localedef -i de_DE -f UTF-8 " + m_folder.path("comma") + " >/dev/null 2>&1";
        if (std::system(command.c_str()) != 0)
            return;
        setenv("LOCPATH", m_folder.path().c_str(), 1);
        m_is_set = std::setlocale(LC_NUMERIC, "comma") != nullptr;
    }
    ~c_locale_with_comma() {
        std::setlocale(LC_NUMERIC, "C");
        unsetenv("LOCPATH");
    }

    bool is_set() const { return m_is_set; }

private:
    test_support::temporary_directory m_folder;
    bool m_is_set = false;
};

// Streams don't follow this locale, `printf` does.
TEST(Floating, IgnoresTheDecimalPointOfTheCLocaleWhereStreamsDo) {
    double read;
    serialize_text_buf buffer;
    std::string variants;
    std::string fixed;
    {
        const c_locale_with_comma comma;
        if (!comma.is_set())
            GTEST_SKIP() << "no locale with a decimal comma";
        read = convert::str_to_double("0.30000000000000000000000000000000000000001");
        buffer.append_double(0.1, 20);
        variants = variant(1234565.0).as_string() + " " + variant(2.5L).as_string();
        fixed = tova::i18n::_private::format_double(1.5, "");
    }
    EXPECT_EQ(0.3, read);
    EXPECT_EQ("0.10000000000000000555\x01", buffer.as_str());
    EXPECT_EQ("1.23456e+06 2.5", variants);
    EXPECT_EQ("1,50", fixed);
}

TEST(Floating, FollowsTheGlobalLocale) {
    const test_support::global_locale comma(test_support::comma_locale());
    EXPECT_EQ(1234.5, convert::str_to_double("1.234,5"));
    EXPECT_EQ(1.5, convert::str_to_double("1.5", std::locale::classic()));
    EXPECT_EQ("1,5", variant(1.5).as_string());
    serialize_text_buf buffer;
    buffer.append_double(1234.5, 17);
    EXPECT_EQ("1.234,5\x01", buffer.as_str());
    EXPECT_EQ("1,5", variant(1.5L).as_string());
    EXPECT_EQ("1", variant(true).as_string());
}

// When memory runs out, a conversion either raises or returns the right result, never a wrong
// number.
TEST(Floating, NeverYieldsAWrongNumberWithoutMemory) {
    const double value = 1.2345678901234568e-300;
    const ustring8 dotted("1.2345678901234568e-300");
    const ustring8 comma("1,2345678901234568e-300");
    for (const bool classic : {true, false}) {
        SCOPED_TRACE(classic ? "classic" : "comma");
        const test_support::global_locale locale(classic ? std::locale::classic()
                                                         : test_support::comma_locale());
        const ustring8& text = classic ? dotted : comma;
        const struct {
            const char* name;
            std::function<bool()> is_right;
        } operations[] = {
            {"append_double",
             [&] {
                 serialize_text_buf buffer;
                 buffer.append_double(value, 17);
                 return buffer.as_str() == text + '\x01';
             }},
            {"read_double",
             [&] { return serialize_text_buf(text + '\x01').read_double() == value; }},
            {"str_to_double", [&] { return convert::str_to_double(text) == value; }},
            {"str_to_double in a locale",
             [&] { return convert::str_to_double(text, std::locale()) == value; }},
            {"str_to_long_double", [&] { return convert::str_to_long_double(text) != 0; }},
            {"to_str", [] { return convert::to_str('x') == "x"; }},
            {"format_double",
             [] {
                 return tova::i18n::_private::format_double(1e15 / 7, "") == "142857142857142.84";
             }},
        };
        for (const auto& operation : operations) {
            SCOPED_TRACE(operation.name);
            ASSERT_TRUE(operation.is_right());
            for (unsigned successes = 0;; ++successes) {
                test_support::failing_allocation shortage(successes);
                bool right = true;
                try {
                    right = operation.is_right();
                } catch (const std::bad_alloc&) {
                }
                EXPECT_TRUE(right) << "allocation " << successes << " fails";
                if (!shortage.failed())
                    break;
            }
        }
    }
}

}  // namespace
