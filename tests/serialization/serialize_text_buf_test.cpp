#include <tova/serialization/serialize_text_buf.hpp>

#include <tova/generic/convert/str_to_x.hpp>
#include <tova/serialization/serialize_binary_buf.hpp>

#include "serialization/buffer_checks.hpp"
#include "support/global_locale.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

using test_support::bytes;
using tova::serialization::serialize_binary_buf;
using tova::serialization::serialize_buffer;
using tova::serialization::serialize_text_buf;
using tova::types::radix_t;

void expect_beyond(const std::string& position, const std::string& size,
                   const std::function<void()>& read) {
    try {
        read();
        ADD_FAILURE() << "nothing raised";
    } catch (const std::out_of_range& error) {
        EXPECT_EQ("basic_string::substr: __pos (which is " + position +
                      ") > this->size() (which is " + size + ")",
                  error.what());
    }
}

const char npos[] = "18446744073709551615";

TEST(SerializeTextBufEncoding, ClosesEachItemWithTheSeparator) {
    serialize_text_buf buffer;
    buffer.append_int32(5);
    buffer.append_string("ab");
    buffer.append_double(1.5, 6);
    EXPECT_EQ(bytes("5\0012\001ab\0011.5\001"), buffer.as_str());
    EXPECT_EQ(11u, buffer.as_str().size());
    EXPECT_EQ(5, buffer.read_int32());
    EXPECT_EQ("ab", buffer.read_string());
    EXPECT_EQ(1.5, buffer.read_double());
    EXPECT_TRUE(buffer.at_end());
}

TEST(SerializeTextBufEncoding, WritesFloatingNumbersInTheGlobalLocaleAfterOthers) {
    serialize_text_buf buffer;
    buffer.append_string("a string that is longer than one in the string object");
    const std::string before = buffer.as_str();
    const test_support::global_locale scope(test_support::comma_locale());
    for (int i = 0; i < 8; ++i)
        buffer.append_double(1.5, 6);
    std::string expected = before;
    for (int i = 0; i < 8; ++i)
        expected += bytes("1,5\001");
    EXPECT_EQ(expected, buffer.as_str());
}

TEST(SerializeTextBufEncoding, WritesFloatingNumbersWithAnyPrecisionAfterOthers) {
    serialize_text_buf buffer;
    buffer.append_string("a string that is longer than one in the string object");
    std::string expected = buffer.as_str();
    for (int i = 0; i < 8; ++i) {
        buffer.append_double(3.14159265358979, 3);
        buffer.append_float(0.1f, 9);
        buffer.append_double(3.14159265358979, 6);
        expected += bytes("3.14\0010.100000001\0013.14159\001");
    }
    EXPECT_EQ(expected, buffer.as_str());
}

TEST(SerializeTextBufEncoding, KeepsNestedBuffersOfAnySize) {
    for (std::size_t size = 0; size < 300; ++size) {
        serialize_text_buf inner;
        inner.append_string(std::string(size, 'x'));
        serialize_text_buf outer;
        outer.append_buffer(inner);
        outer.append_int32(7);
        const std::unique_ptr<serialize_buffer> read(outer.read_buffer());
        ASSERT_EQ(std::string(size, 'x'), read->read_string());
        ASSERT_EQ(7, outer.read_int32());
    }
}

TEST(SerializeTextBufEncoding, WritesIntegersInDecimal) {
    serialize_text_buf buffer;
    buffer.append_int8(-128);
    buffer.append_int8(127);
    buffer.append_int16(-32768);
    buffer.append_int16(32767);
    buffer.append_int32(-2147483647 - 1);
    buffer.append_int32(2147483647);
    EXPECT_EQ(bytes("-128\001127\001-32768\00132767\001-2147483648\0012147483647\001"),
              buffer.as_str());

    serialize_text_buf wide;
    wide.append_int64(std::numeric_limits<long>::min());
    wide.append_int64(std::numeric_limits<long>::max());
    wide.append_uint64(0);
    wide.append_uint64(18446744073709551615ul);
    EXPECT_EQ(bytes("-9223372036854775808\0019223372036854775807\0010\00118446744073709551615\001"),
              wide.as_str());

    serialize_text_buf plain;
    plain.append_uint8(255);
    plain.append_uint16(65535);
    plain.append_uint32(4294967295u);
    EXPECT_EQ(bytes("255\00165535\0014294967295\001"), plain.as_str());
}

TEST(SerializeTextBufEncoding, WritesFloatingPointValuesWithSignificantDigits) {
    const struct {
        double value;
        unsigned int precision;
        const char* text;
    } cases[] = {
        {3.14159274, 3, "3.14\001"},
        {1.5, 6, "1.5\001"},
        {0.0, 6, "0\001"},
        {-0.0, 6, "-0\001"},
        {1234567.0, 6, "1.23457e+06\001"},
        {1234567.0, 7, "1234567\001"},
        {0.00001, 6, "1e-05\001"},
        {2.75, 1, "3\001"},
        {2.75, 0, "3\001"},
        {0.1, 17, "0.10000000000000001\001"},
        {std::numeric_limits<double>::infinity(), 6, "inf\001"},
        {-std::numeric_limits<double>::infinity(), 6, "-inf\001"},
        {std::numeric_limits<double>::quiet_NaN(), 6, "nan\001"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        serialize_text_buf buffer;
        buffer.append_double(c.value, c.precision);
        EXPECT_EQ(c.text, buffer.as_str());
    }
    serialize_text_buf single;
    single.append_float(3.14159274f, 3);
    single.append_float(0.1f, 9);
    EXPECT_EQ(bytes("3.14\0010.100000001\001"), single.as_str());
    EXPECT_EQ(3.14f, single.read_float());
    EXPECT_EQ(0.1f, single.read_float());
}

TEST(SerializeTextBufEncoding, ReadsInfinityAndNotANumberAsZero) {
    serialize_text_buf buffer;
    buffer.append_double(std::numeric_limits<double>::infinity(), 6);
    buffer.append_float(std::numeric_limits<float>::quiet_NaN(), 6);
    buffer.append_int32(4);
    EXPECT_EQ(0.0, buffer.read_double());
    EXPECT_EQ(0.0f, buffer.read_float());
    EXPECT_EQ(4, buffer.read_int32());
}

TEST(SerializeTextBufEncoding, AppliesTheGlobalLocaleToFloatingPointValuesOnly) {
    const test_support::global_locale scope(test_support::comma_locale());
    serialize_text_buf buffer;
    buffer.append_double(1.5, 6);
    buffer.append_double(1234567.0, 7);
    buffer.append_float(2500.0f, 6);
    buffer.append_int32(1234567);
    buffer.append_uint64(1234567);
    buffer.append_string(std::string(1234, 'x'));
    const std::string head = bytes("1,5\0011.234.567\0012.500\0011234567\0011234567\0011234\001");
    ASSERT_EQ(head.size() + 1235, buffer.as_str().size());
    EXPECT_EQ(head, buffer.as_str().substr(0, head.size()));
    EXPECT_EQ(1.5, buffer.read_double());
    EXPECT_EQ(1234567.0, buffer.read_double());
    EXPECT_EQ(2500.0f, buffer.read_float());
    EXPECT_EQ(1234567, buffer.read_int32());
    EXPECT_EQ(1234567u, buffer.read_uint64());
    EXPECT_EQ(1234u, buffer.read_string().size());
}

TEST(SerializeTextBufEncoding, WritesStringsAndBuffersWithTheirLengthInBytes) {
    serialize_text_buf buffer;
    buffer.append_string("");
    buffer.append_string(bytes("\001"));
    buffer.append_string(bytes("a\0b"));
    EXPECT_EQ(bytes("0\001\0011\001\001\0013\001a\0b\001"), buffer.as_str());

    serialize_text_buf nested;
    nested.append_int8(-1);
    serialize_text_buf outer;
    outer.append_buffer(nested);
    outer.append_buffer(serialize_text_buf());
    EXPECT_EQ(bytes("3\001-1\001\0010\001\001"), outer.as_str());

    serialize_binary_buf binary;
    binary.append_uint16(0x0102);
    serialize_text_buf mixed;
    mixed.append_buffer(binary);
    EXPECT_EQ(bytes("2\001\002\001\001"), mixed.as_str());
    const std::unique_ptr<serialize_buffer> read(mixed.read_buffer());
    EXPECT_NE(nullptr, dynamic_cast<serialize_text_buf*>(read.get()));
    EXPECT_EQ(0x0102, serialize_binary_buf(read->as_str()).read_uint16());
}

TEST(SerializeTextBufReading, SaturatesAtTheRangeOfTheTypeRead) {
    const serialize_text_buf buffer(
        bytes("300\001-300\00140000\001-40000\0019999999999\001-9999999999\001"
              "9223372036854775808\001-9223372036854775809\001"
              "256\001-1\00165536\001-1\0014294967296\001-1\00118446744073709551616\001-1\001"));
    EXPECT_EQ(127, buffer.read_int8());
    EXPECT_EQ(-128, buffer.read_int8());
    EXPECT_EQ(32767, buffer.read_int16());
    EXPECT_EQ(-32768, buffer.read_int16());
    EXPECT_EQ(2147483647, buffer.read_int32());
    EXPECT_EQ(-2147483647 - 1, buffer.read_int32());
    EXPECT_EQ(std::numeric_limits<long>::max(), buffer.read_int64());
    EXPECT_EQ(std::numeric_limits<long>::min(), buffer.read_int64());
    EXPECT_EQ(255, buffer.read_uint8());
    EXPECT_EQ(0, buffer.read_uint8());
    EXPECT_EQ(65535, buffer.read_uint16());
    EXPECT_EQ(0, buffer.read_uint16());
    EXPECT_EQ(4294967295u, buffer.read_uint32());
    EXPECT_EQ(0u, buffer.read_uint32());
    EXPECT_EQ(18446744073709551615ul, buffer.read_uint64());
    EXPECT_EQ(0u, buffer.read_uint64());
    EXPECT_TRUE(buffer.at_end());
}

TEST(SerializeTextBufReading, TreatsPrefixesSpacesAndTrailingTextLikeTheNumberParsers) {
    const struct {
        const char* field;
        int as_int;
        unsigned int as_uint;
        double as_double;
    } cases[] = {
        {"0x1F", 31, 31, 0.0},  // a stream reads the 0 and leaves the rest
        {"0b101", 5, 5, 0.0},  {"010", 8, 8, 10.0},     {"0", 0, 0, 0.0},   {"00", 0, 0, 0.0},
        {"07", 7, 7, 7.0},     {"-010", -8, 0, -10.0},  {"08", 0, 0, 8.0},  {"  7", 7, 7, 7.0},
        {"+7", 7, 7, 7.0},     {"12abc", 12, 12, 12.0}, {"abc", 0, 0, 0.0}, {"", 0, 0, 0.0},
        {"-", 0, 0, 0.0},      {"   ", 0, 0, 0.0},      {"1.5", 1, 1, 1.5}, {"1e999", 1, 1, 0.0},
        {"-3", -3, 0, -3.0},   {"\xC3\xA4", 0, 0, 0.0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.field);
        // Short numbers are read in another way if enough follows them.
        for (const char* end : {"\001", "", "\0015\001", "\001a string of many bytes\001"}) {
            const serialize_text_buf buffer(std::string(c.field) + end);
            EXPECT_EQ(c.as_int, buffer.read_int8());
            buffer.reset_read();
            EXPECT_EQ(c.as_int, buffer.read_int16());
            buffer.reset_read();
            EXPECT_EQ(c.as_int, buffer.read_int32());
            buffer.reset_read();
            EXPECT_EQ(c.as_int, buffer.read_int64());
            buffer.reset_read();
            EXPECT_EQ(c.as_uint, buffer.read_uint8());
            buffer.reset_read();
            EXPECT_EQ(c.as_uint, buffer.read_uint16());
            buffer.reset_read();
            EXPECT_EQ(c.as_uint, buffer.read_uint32());
            buffer.reset_read();
            EXPECT_EQ(c.as_uint, buffer.read_uint64());
            buffer.reset_read();
            EXPECT_EQ(c.as_double, buffer.read_double());
            buffer.reset_read();
            EXPECT_EQ(static_cast<float>(c.as_double), buffer.read_float());
        }
    }
}

TEST(SerializeTextBufReading, ReadsNothingPastAnEmptyField) {
    const serialize_text_buf buffer(bytes("\00142\001"));
    EXPECT_EQ(0, buffer.read_int32());
    EXPECT_EQ(42, buffer.read_int32());
    const serialize_text_buf space(bytes(" \00142\001"));
    EXPECT_EQ(0, space.read_int32());
    EXPECT_EQ(42, space.read_int32());
}

TEST(SerializeTextBufReading, ReadsALastFieldWithoutASeparator) {
    const serialize_text_buf buffer(bytes("1\00123"));
    EXPECT_EQ(1, buffer.read_int32());
    EXPECT_FALSE(buffer.at_end());
    EXPECT_EQ(23, buffer.read_int32());
    EXPECT_TRUE(buffer.at_end());
    EXPECT_EQ(0, buffer.read_int32());
    EXPECT_TRUE(buffer.at_end());
}

TEST(SerializeTextBufReading, ReturnsZerosAfterTheLastItem) {
    serialize_text_buf buffer;
    buffer.append_int32(3);
    EXPECT_EQ(3, buffer.read_int32());
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(buffer.at_end());
        EXPECT_EQ(0, buffer.read_int32());
        EXPECT_EQ(0.0, buffer.read_double());
        EXPECT_EQ(0u, buffer.read_uint64());
    }
    // At npos a string or buffer is empty as well, and the position doesn't move.
    EXPECT_EQ("", buffer.read_string());
    EXPECT_TRUE(buffer.at_end());
    const std::unique_ptr<serialize_buffer> nested(buffer.read_buffer());
    ASSERT_NE(nullptr, nested);
    EXPECT_EQ("", nested->as_str());
    EXPECT_TRUE(nested->allocated);
    EXPECT_TRUE(buffer.at_end());
}

TEST(SerializeTextBufReading, StaysAtTheEndAfterAReadFoundNoSeparatorEvenIfMoreIsAppended) {
    serialize_text_buf buffer(bytes("1"));
    EXPECT_EQ(1, buffer.read_int32());
    buffer.append_int32(2);
    EXPECT_TRUE(buffer.at_end());
    EXPECT_EQ(0, buffer.read_int32());
    buffer.reset_read();
    EXPECT_EQ(12, buffer.read_int32());
}

TEST(SerializeTextBufReading, StartsOverAfterAStringIsReadAtTheEnd) {
    serialize_text_buf buffer;
    buffer.append_int32(3);
    buffer.append_int32(4);
    EXPECT_EQ(3, buffer.read_int32());
    EXPECT_EQ(4, buffer.read_int32());
    EXPECT_TRUE(buffer.at_end());
    EXPECT_EQ("", buffer.read_string());
    EXPECT_FALSE(buffer.at_end());
    EXPECT_EQ(3, buffer.read_int32());

    EXPECT_EQ(4, buffer.read_int32());
    const std::unique_ptr<serialize_buffer> nested(buffer.read_buffer());
    EXPECT_EQ("", nested->as_str());
    EXPECT_TRUE(nested->allocated);
    EXPECT_FALSE(buffer.at_end());
    EXPECT_EQ(3, buffer.read_int32());
}

TEST(SerializeTextBufReading, ReturnsANewEmptyBufferFromEmptyContent) {
    const serialize_text_buf buffer;
    EXPECT_EQ("", buffer.read_string());
    EXPECT_TRUE(buffer.at_end());
    const std::unique_ptr<serialize_buffer> nested(buffer.read_buffer());
    ASSERT_NE(nullptr, nested);
    EXPECT_NE(nullptr, dynamic_cast<serialize_text_buf*>(nested.get()));
    EXPECT_EQ("", nested->as_str());
    EXPECT_EQ(0u, nested->count);
    EXPECT_TRUE(nested->allocated);
}

TEST(SerializeTextBufReading, SkipsTheByteAfterAStringWithoutExaminingIt) {
    const serialize_text_buf buffer(bytes("2\001abX7\001"));
    EXPECT_EQ("ab", buffer.read_string());
    EXPECT_EQ(7, buffer.read_int32());
    const serialize_text_buf empty(bytes("0\001X7\001"));
    EXPECT_EQ("", empty.read_string());
    EXPECT_EQ(7, empty.read_int32());
}

TEST(SerializeTextBufReading, SkipsBothSeparatorsOfAnEmptyString) {
    serialize_text_buf buffer;
    buffer.append_string("");
    EXPECT_EQ(bytes("0\001\001"), buffer.as_str());
    EXPECT_EQ("", buffer.read_string());
    EXPECT_TRUE(buffer.at_end());
    buffer.append_int32(6);
    EXPECT_EQ(6, buffer.read_int32());
}

TEST(SerializeTextBufReading, CutsAStringOffAtTheEndOfTheContent) {
    const serialize_text_buf buffer(bytes("5\001abc"));
    EXPECT_EQ("abc", buffer.read_string());
    EXPECT_TRUE(buffer.at_end());
    // The position is past the end but not npos: reading a number raises and sets npos.
    expect_beyond("8", "5", [&] { buffer.read_int32(); });
    EXPECT_TRUE(buffer.at_end());
    EXPECT_EQ(0, buffer.read_int32());

    const serialize_text_buf nested(bytes("5\001abc"));
    const std::unique_ptr<serialize_buffer> cut(nested.read_buffer());
    EXPECT_EQ("abc", cut->as_str());
}

TEST(SerializeTextBufReading, ReadsTheLengthAsA32BitNumber) {
    for (const char* length : {"2147483647", "2147483648", "99999999999999"}) {
        SCOPED_TRACE(length);
        const serialize_text_buf buffer(std::string(length) + bytes("\001abc\001"));
        EXPECT_EQ(bytes("abc\001"), buffer.read_string());
        const std::string after = std::to_string(std::string(length).size() + 1 + 2147483648ul);
        expect_beyond(after, std::to_string(buffer.as_str().size()), [&] { buffer.read_uint8(); });
    }
    EXPECT_EQ("ab", serialize_text_buf(bytes("0x2\001ab\001")).read_string());
    EXPECT_EQ("12345678", serialize_text_buf(bytes("010\00112345678\001")).read_string());
}

TEST(SerializeTextBufReading, MovesBackwardsByANegativeLength) {
    const serialize_text_buf buffer(bytes("7\001-4\001abc\001"));
    EXPECT_EQ(7, buffer.read_int32());
    // The rest of the content is read, and the position is 5 - 4 + 1.
    EXPECT_EQ(bytes("abc\001"), buffer.read_string());
    EXPECT_EQ(-4, buffer.read_int32());

    // If the sum is npos, the position is at the end.
    const serialize_text_buf ends(bytes("-5\001ab\001"));
    EXPECT_EQ(bytes("ab\001"), ends.read_string());
    EXPECT_TRUE(ends.at_end());
    EXPECT_EQ("", ends.read_string());
    EXPECT_TRUE(ends.at_end());
}

TEST(SerializeTextBufReading, RaisesForALengthWithoutASeparator) {
    const serialize_text_buf buffer(bytes("1\0013"));
    EXPECT_EQ(1, buffer.read_int32());
    expect_beyond(npos, "3", [&] { buffer.read_string(); });
    // The position moves before the bytes are taken: npos + 3 + 1.
    EXPECT_TRUE(buffer.at_end());
    buffer.reset_read();
    EXPECT_EQ(1, buffer.read_int32());
    expect_beyond(npos, "3", [&] { delete buffer.read_buffer(); });

    const serialize_text_buf wraps(bytes("1\0011"));
    EXPECT_EQ(1, wraps.read_int32());
    expect_beyond(npos, "3", [&] { wraps.read_string(); });
    EXPECT_FALSE(wraps.at_end());
    EXPECT_EQ(0, wraps.read_int32());  // the separator is at position 1
    EXPECT_EQ(1, wraps.read_int32());

    const serialize_text_buf zero(bytes("5\0010"));
    EXPECT_EQ(5, zero.read_int32());
    EXPECT_EQ("", zero.read_string());
    EXPECT_EQ(5, zero.read_int32());
}

TEST(SerializeTextBufReading, RaisesOnceAfterShorterContentIsAssigned) {
    serialize_text_buf buffer(bytes("1\0012\0013\001"));
    EXPECT_EQ(1, buffer.read_int32());
    EXPECT_EQ(2, buffer.read_int32());
    buffer.assign(bytes("9\001"));
    EXPECT_TRUE(buffer.at_end());
    expect_beyond("4", "2", [&] { buffer.read_int32(); });
    EXPECT_EQ(0, buffer.read_int32());
    buffer.assign(bytes("8\001"));
    EXPECT_EQ(0, buffer.read_int32());  // npos is kept as well
    buffer.reset_read();
    EXPECT_EQ(8, buffer.read_int32());
}

TEST(SerializeTextBufReading, RaisesFromEveryReadPastTheContent) {
    const std::function<void(const serialize_text_buf&)> reads[] = {
        [](const serialize_text_buf& b) { b.read_int8(); },
        [](const serialize_text_buf& b) { b.read_int16(); },
        [](const serialize_text_buf& b) { b.read_int32(); },
        [](const serialize_text_buf& b) { b.read_int64(); },
        [](const serialize_text_buf& b) { b.read_uint8(); },
        [](const serialize_text_buf& b) { b.read_uint16(); },
        [](const serialize_text_buf& b) { b.read_uint32(); },
        [](const serialize_text_buf& b) { b.read_uint64(); },
        [](const serialize_text_buf& b) { b.read_float(); },
        [](const serialize_text_buf& b) { b.read_double(); },
        [](const serialize_text_buf& b) { b.read_string(); },
        [](const serialize_text_buf& b) { delete b.read_buffer(); },
    };
    int number = 0;
    for (const auto& read : reads) {
        SCOPED_TRACE(number++);
        serialize_text_buf buffer(bytes("1\001"));
        EXPECT_EQ(1, buffer.read_int32());
        buffer.assign("");
        expect_beyond("2", "0", [&] { read(buffer); });
        EXPECT_TRUE(buffer.at_end());
    }
}

TEST(SerializeTextBufReading, CallsTheVirtualReadInt32ForTheLength) {
    struct backwards : serialize_text_buf {
        explicit backwards(const std::string& text) : serialize_text_buf(text) {}
        int read_int32() const override { return serialize_text_buf::read_int32() + 1; }
    };
    const backwards buffer(bytes("2\001abX2\001abX"));
    EXPECT_EQ("abX", buffer.read_string());
    buffer.reset_read();
    const std::unique_ptr<serialize_buffer> nested(buffer.read_buffer());
    EXPECT_EQ("abX", nested->as_str());
}

TEST(SerializeTextBufReading, IsAtTheEndFromThePositionOfTheSizeOn) {
    const serialize_text_buf buffer(bytes("1\001"));
    EXPECT_FALSE(buffer.at_end());
    EXPECT_EQ(1, buffer.read_int32());  // position 2, the size
    EXPECT_TRUE(buffer.at_end());
    EXPECT_EQ(0, buffer.read_int32());  // npos
    EXPECT_TRUE(buffer.at_end());
    buffer.reset_read();
    EXPECT_FALSE(buffer.at_end());
}

// The separator at every distance, after bytes that differ from it in one bit or by one, or are
// separators themselves.
TEST(SerializeTextBufFields, EndAtTheFirstSeparator) {
    for (const char other : {'5', '\0', '\x02', '\x81', '\xff'})
        for (std::size_t before = 0; before != 10; ++before)
            for (std::size_t length = 0; length != 60; ++length) {
                const std::string start(before, '\x01');
                const serialize_text_buf buffer(start + std::string(length, other) + "\x01\x01" +
                                                "7\x01");
                for (std::size_t i = 0; i != before; ++i)
                    ASSERT_EQ(0, buffer.read_int32());
                const int expected = other != '5' || length == 0 ? 0
                                     : length < 10 ? std::stoi(std::string(length, '5'))
                                                   : std::numeric_limits<int>::max();
                ASSERT_EQ(expected, buffer.read_int32()) << length;
                ASSERT_EQ(0, buffer.read_int32());
                ASSERT_EQ(7, buffer.read_int32());
                ASSERT_TRUE(buffer.at_end());
            }
}

// Reads the field and compares with the parser of the type. `rest` follows the separator: it is
// empty or begins with the number 7.
template <typename Number>
void expect_parsed(const std::string& field, const std::string& rest,
                   Number (serialize_text_buf::*read)() const,
                   Number (*parse)(const char*, unsigned long, radix_t::base, bool)) {
    const serialize_text_buf buffer(field + '\x01' + rest);
    const Number expected =
        field.empty() ? Number(0) : parse(field.data(), field.size(), radix_t::detect, false);
    ASSERT_EQ(expected, (buffer.*read)());
    ASSERT_EQ(rest.empty(), buffer.at_end());
    if (!rest.empty()) {
        ASSERT_EQ(7, buffer.read_int32());
    }
}

void expect_parsed_by_every_type(const std::string& field, const std::string& rest) {
    namespace convert = tova::generic::convert;
    typedef serialize_text_buf buffer;
    SCOPED_TRACE(field + " and " + std::to_string(rest.size()) + " bytes");
    expect_parsed<signed char>(field, rest, &buffer::read_int8, convert::str_to_int8);
    expect_parsed<short>(field, rest, &buffer::read_int16, convert::str_to_int16);
    expect_parsed<int>(field, rest, &buffer::read_int32, convert::str_to_int32);
    expect_parsed<long>(field, rest, &buffer::read_int64, convert::str_to_int64);
    expect_parsed<unsigned char>(field, rest, &buffer::read_uint8, convert::str_to_uint8);
    expect_parsed<unsigned short>(field, rest, &buffer::read_uint16, convert::str_to_uint16);
    expect_parsed<unsigned int>(field, rest, &buffer::read_uint32, convert::str_to_uint32);
    expect_parsed<unsigned long>(field, rest, &buffer::read_uint64, convert::str_to_uint64);
}

// Numbers of up to 22 digits, and the same with another byte in each position. They end the
// content, or more or fewer than eight bytes follow.
TEST(SerializeTextBufFields, AreParsedAlikeWhateverFollows) {
    const std::string numbers[] = {"1234567890123456789012", "9999999999999999999999",
                                   "2147483648000000000000", "6553512832767255000000",
                                   "1844674407370955161600", "0000000000000000000000"};
    const std::string rests[] = {"", bytes("7\001"), bytes("7\001") + std::string(40, '1')};
    for (const std::string& number : numbers)
        for (const char* sign : {"", "-", "+", "--"})
            for (std::size_t length = 0; length <= number.size(); ++length)
                for (const std::string& rest : rests) {
                    const std::string field = sign + number.substr(0, length);
                    expect_parsed_by_every_type(field, rest);
                    for (const char other : {'0', 'a', ' ', '-', '\0', '\x02', '\x81', '\xb1'})
                        for (std::size_t i = 0; i < field.size(); i += 1 + i / 4) {
                            std::string changed = field;
                            changed[i] = other;
                            expect_parsed_by_every_type(changed, rest);
                        }
                }
}

// Every value is also written where the content has no room for it and grows.
TEST(SerializeTextBufItems, AreAppendedToContentOfAnyLength) {
    for (std::size_t before = 0; before != 200; ++before) {
        serialize_text_buf buffer{std::string(before, 'x')};
        buffer.append_int64(std::numeric_limits<long>::min());
        buffer.append_uint8(0);
        buffer.append_double(-1.23457e-300, 6);
        buffer.append_double(0, 6);
        buffer.append_float(0.5f, 6);
        buffer.append_string("four");
        ASSERT_EQ(std::string(before, 'x') + "-9223372036854775808\x01" + "0\x01" +
                      "-1.23457e-300\x01" + "0\x01" + "0.5\x01" + "4\x01" + "four\x01",
                  buffer.as_str());
    }
}

TEST(SerializeTextBufStrings, KeepTheirBytesWhateverTheirLength) {
    for (std::size_t length = 0; length != 150; ++length) {
        std::string text(length, '\x01');
        for (std::size_t i = 0; i < length; i += 2)
            text[i] = static_cast<char>(i + length);
        serialize_text_buf buffer;
        buffer.append_string(text);
        buffer.append_int32(7);
        ASSERT_EQ(std::to_string(length) + "\x01" + text + "\x01" + "7\x01", buffer.as_str());
        ASSERT_EQ(text, buffer.read_string());
        ASSERT_EQ(7, buffer.read_int32());
    }
}

}  // namespace
