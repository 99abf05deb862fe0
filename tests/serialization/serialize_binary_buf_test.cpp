#include <tova/serialization/serialize_binary_buf.hpp>

#include <tova/serialization/serialize_text_buf.hpp>

#include "serialization/buffer_checks.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <string>

namespace {

using test_support::bytes;
using tova::serialization::serialize_binary_buf;
using tova::serialization::serialize_buffer;
using tova::serialization::serialize_text_buf;

TEST(SerializeBinaryBufEncoding, WritesTheLeastSignificantByteFirst) {
    const struct {
        const char* name;
        std::function<void(serialize_binary_buf&)> append;
        std::string expected;
    } cases[] = {
        {"int8", [](serialize_binary_buf& b) { b.append_int8(-2); }, bytes("\xFE")},
        {"uint8", [](serialize_binary_buf& b) { b.append_uint8(0xAB); }, bytes("\xAB")},
        {"int16", [](serialize_binary_buf& b) { b.append_int16(-2); }, bytes("\xFE\xFF")},
        {"uint16", [](serialize_binary_buf& b) { b.append_uint16(0x0102); }, bytes("\x02\x01")},
        {"int32", [](serialize_binary_buf& b) { b.append_int32(-2); }, bytes("\xFE\xFF\xFF\xFF")},
        {"uint32", [](serialize_binary_buf& b) { b.append_uint32(0x01020304); },
         bytes("\x04\x03\x02\x01")},
        {"int64", [](serialize_binary_buf& b) { b.append_int64(-2); },
         bytes("\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF")},
        {"uint64", [](serialize_binary_buf& b) { b.append_uint64(0xF102030405060708ul); },
         bytes("\x08\x07\x06\x05\x04\x03\x02\xF1")},
        {"float", [](serialize_binary_buf& b) { b.append_float(1.0f, 6); },
         bytes("\x00\x00\x80\x3F")},
        {"double", [](serialize_binary_buf& b) { b.append_double(-2.0, 6); },
         bytes("\0\0\0\0\0\0\0\xC0")},
        {"string", [](serialize_binary_buf& b) { b.append_string("ab"); },
         bytes("\x02\0\0\0\x61\x62")},
        {"empty string", [](serialize_binary_buf& b) { b.append_string(""); }, bytes("\0\0\0\0")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        serialize_binary_buf buffer;
        c.append(buffer);
        EXPECT_EQ(c.expected, buffer.as_str());
    }
}

TEST(SerializeBinaryBufEncoding, WritesItemsOneAfterAnotherWithoutPadding) {
    serialize_binary_buf inner;
    inner.append_uint16(0x0102);
    serialize_binary_buf buffer;
    buffer.append_uint8(9);
    buffer.append_buffer(inner);
    buffer.append_int16(3);
    EXPECT_EQ(bytes("\x09\x02\0\0\0\x02\x01\x03\0"), buffer.as_str());

    serialize_text_buf text;
    text.append_int32(5);
    serialize_binary_buf mixed;
    mixed.append_buffer(text);
    EXPECT_EQ(bytes("\x02\0\0\0\x35\x01"), mixed.as_str());
}

TEST(SerializeBinaryBufEncoding, IgnoresThePrecision) {
    for (unsigned int precision : {0u, 1u, 9u, 4294967295u}) {
        serialize_binary_buf buffer;
        buffer.append_float(0.1f, precision);
        buffer.append_double(0.1, precision);
        EXPECT_EQ(bytes("\xCD\xCC\xCC\x3D\x9A\x99\x99\x99\x99\x99\xB9\x3F"), buffer.as_str());
    }
}

TEST(SerializeBinaryBufEncoding, KeepsTheBitsOfFloatingValues) {
    const double values[] = {std::numeric_limits<double>::infinity(),
                             std::numeric_limits<double>::quiet_NaN(),
                             std::numeric_limits<double>::denorm_min(), -0.0};
    for (double value : values) {
        serialize_binary_buf buffer;
        buffer.append_double(value, 6);
        buffer.append_float(static_cast<float>(value), 6);
        const double read = buffer.read_double();
        EXPECT_EQ(0, std::memcmp(&value, &read, sizeof value)) << value;
        const float expected = static_cast<float>(value);
        const float read_single = buffer.read_float();
        EXPECT_EQ(0, std::memcmp(&expected, &read_single, sizeof expected)) << value;
    }
}

TEST(SerializeBinaryBufReading, ReadsBackAString) {
    const serialize_binary_buf buffer(bytes("\x02\0\0\0\x61\x62"));
    EXPECT_EQ("ab", buffer.read_string());
    EXPECT_TRUE(buffer.at_end());
}

TEST(SerializeBinaryBufReading, ReturnsNothingFromEmptyContent) {
    const serialize_binary_buf buffer;
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(buffer.at_end());
        EXPECT_EQ(0, buffer.read_int8());
        EXPECT_EQ(0u, buffer.read_uint64());
        EXPECT_EQ(0.0, buffer.read_double());
        EXPECT_EQ("", buffer.read_string());
        EXPECT_EQ(nullptr, buffer.read_buffer());
    }
}

// Every fixed-size read, with fewer bytes left than it needs, down to one.
TEST(SerializeBinaryBufReading, CountsMissingBytesAsZerosAndGoesPastTheEnd) {
    const std::string content = bytes("\x11\x22\x33\x44\x55\x66\x77");
    const unsigned long all = 0x0077665544332211ul;
    for (std::size_t left = 1; left <= content.size(); ++left) {
        SCOPED_TRACE(left);
        const unsigned long rest = all & ((1ul << (8 * left)) - 1);
        const serialize_binary_buf buffer(content.substr(0, left));
        EXPECT_EQ(rest, buffer.read_uint64());
        EXPECT_TRUE(buffer.at_end());
        EXPECT_EQ(0u, buffer.read_uint64());
        buffer.reset_read();
        EXPECT_EQ(static_cast<long>(rest), buffer.read_int64());
        buffer.reset_read();
        double expected = 0;
        std::memcpy(&expected, &rest, sizeof expected);
        EXPECT_EQ(expected, buffer.read_double());
        if (left >= 4)
            continue;
        const auto half = static_cast<unsigned int>(rest);
        buffer.reset_read();
        EXPECT_EQ(half, buffer.read_uint32());
        EXPECT_TRUE(buffer.at_end());
        buffer.reset_read();
        EXPECT_EQ(static_cast<int>(half), buffer.read_int32());
        buffer.reset_read();
        float single = 0;
        std::memcpy(&single, &half, sizeof single);
        EXPECT_EQ(single, buffer.read_float());
    }
    const serialize_binary_buf one(bytes("\xFE"));
    EXPECT_EQ(0x00FE, one.read_int16());
    one.reset_read();
    EXPECT_EQ(0x00FE, one.read_uint16());
    EXPECT_TRUE(one.at_end());
}

TEST(SerializeBinaryBufReading, MovesThePositionByTheSizeOfTheTypeEvenPastTheEnd) {
    serialize_binary_buf buffer(bytes("\x01"));
    EXPECT_EQ(1u, buffer.read_uint32());
    buffer.assign(bytes("\x01\x02\x03\x04\x05"));
    EXPECT_FALSE(buffer.at_end());
    EXPECT_EQ(5, buffer.read_int8());
}

TEST(SerializeBinaryBufReading, ReadsAnEmptyStringInTheMiddleAndAtTheEnd) {
    serialize_binary_buf buffer;
    buffer.append_string("");
    buffer.append_int8(5);
    buffer.append_string("");
    EXPECT_EQ("", buffer.read_string());
    EXPECT_EQ(5, buffer.read_int8());
    EXPECT_FALSE(buffer.at_end());
    EXPECT_EQ("", buffer.read_string());
    EXPECT_TRUE(buffer.at_end());
}

TEST(SerializeBinaryBufReading, ReturnsAnEmptyBufferInTheMiddleAndNullAtTheEnd) {
    serialize_binary_buf buffer;
    buffer.append_buffer(serialize_binary_buf());
    buffer.append_buffer(serialize_binary_buf());
    const std::unique_ptr<serialize_buffer> middle(buffer.read_buffer());
    ASSERT_NE(nullptr, middle);
    EXPECT_NE(nullptr, dynamic_cast<serialize_binary_buf*>(middle.get()));
    EXPECT_EQ("", middle->as_str());
    EXPECT_TRUE(middle->allocated);
    EXPECT_EQ(0u, middle->count);
    EXPECT_FALSE(buffer.at_end());
    EXPECT_EQ(nullptr, buffer.read_buffer());
    EXPECT_TRUE(buffer.at_end());
}

TEST(SerializeBinaryBufReading, IgnoresALengthThatComesLast) {
    serialize_binary_buf buffer(bytes("\x10\0\0\0"));
    EXPECT_EQ(nullptr, buffer.read_buffer());
    // The position moves by four bytes, not by sixteen more.
    buffer.assign(bytes("\x10\0\0\0\x07"));
    EXPECT_FALSE(buffer.at_end());
    EXPECT_EQ(7, buffer.read_int8());

    serialize_binary_buf string(bytes("\x10\0\0\0"));
    EXPECT_EQ("", string.read_string());
    string.assign(bytes("\x10\0\0\0\x07"));
    EXPECT_EQ(7, string.read_int8());
}

TEST(SerializeBinaryBufReading, MovesByTheFullLengthOfAStringThatIsCutOff) {
    serialize_binary_buf buffer(bytes("\x05\0\0\0ab"));
    EXPECT_EQ("ab", buffer.read_string());
    EXPECT_TRUE(buffer.at_end());
    EXPECT_EQ("", buffer.read_string());
    buffer.assign(bytes("\x05\0\0\0abcdeX"));
    EXPECT_EQ('X', buffer.read_int8());

    serialize_binary_buf nested(bytes("\x05\0\0\0ab"));
    const std::unique_ptr<serialize_buffer> cut(nested.read_buffer());
    ASSERT_NE(nullptr, cut);
    EXPECT_EQ("ab", cut->as_str());
    EXPECT_TRUE(nested.at_end());
    EXPECT_EQ(nullptr, nested.read_buffer());
}

TEST(SerializeBinaryBufReading, ReadsTheLengthAsUnsigned) {
    const serialize_binary_buf buffer(bytes("\xFF\xFF\xFF\xFFrest"));
    EXPECT_EQ("rest", buffer.read_string());
    EXPECT_TRUE(buffer.at_end());
    EXPECT_EQ(0, buffer.read_int8());
}

TEST(SerializeBinaryBufReading, AcceptsALengthThatIsCutOff) {
    const serialize_binary_buf buffer(bytes("\x01\0"));
    EXPECT_EQ("", buffer.read_string());
    EXPECT_TRUE(buffer.at_end());
    buffer.reset_read();
    EXPECT_EQ(nullptr, buffer.read_buffer());
}

TEST(SerializeBinaryBufReading, DoesNotRaisePastTheEndOfShorterContent) {
    serialize_binary_buf buffer(bytes("\x01\x02\x03\x04\x05\x06\x07\x08"));
    EXPECT_EQ(0x0807060504030201, buffer.read_int64());
    buffer.assign(bytes("\x01"));
    EXPECT_TRUE(buffer.at_end());
    EXPECT_EQ(0, buffer.read_int32());
    EXPECT_EQ("", buffer.read_string());
    EXPECT_EQ(nullptr, buffer.read_buffer());
}

TEST(SerializeBinaryBufReading, CallsTheVirtualAtEnd) {
    struct closed : serialize_binary_buf {
        explicit closed(const std::string& text) : serialize_binary_buf(text) {}
        bool at_end() const override { return end || serialize_binary_buf::at_end(); }
        bool end = true;
    };
    closed buffer(bytes("\x01\0\0\0\x02"));
    EXPECT_EQ(0, buffer.read_int8());
    EXPECT_EQ("", buffer.read_string());
    EXPECT_EQ(nullptr, buffer.read_buffer());
    buffer.end = false;
    EXPECT_EQ(1, buffer.read_int8());  // the position had not moved

    struct open : serialize_binary_buf {
        explicit open(const std::string& text) : serialize_binary_buf(text) {}
        bool at_end() const override { return false; }
    };
    const open endless(bytes("\x07"));
    EXPECT_EQ(7, endless.read_int32());
    EXPECT_EQ(0, endless.read_int64());  // past the end, where no memory is read
    EXPECT_THROW(endless.read_string(), std::out_of_range);
}

TEST(SerializeBinaryBufEncoding, CopiesTheBytesOfATextBufferUnchanged) {
    serialize_text_buf text;
    text.append_uint8(5);
    const serialize_binary_buf buffer(text);
    EXPECT_EQ(bytes("5\001"), buffer.as_str());
    EXPECT_EQ(0x0135, buffer.read_int16());
}

// Strings of every length after every number of bytes, so that the content grows in the middle of
// each of them.
TEST(SerializeBinaryBufStrings, KeepTheirBytesWhateverTheirLength) {
    for (std::size_t before = 0; before != 70; ++before)
        for (std::size_t length = 0; length != 150; ++length) {
            std::string text(length, '\0');
            for (std::size_t i = 0; i != length; ++i)
                text[i] = static_cast<char>(i * 37 + length);
            serialize_binary_buf buffer{std::string(before, 'x')};
            buffer.append_string(text);
            buffer.append_string("end");
            const char field[] = {static_cast<char>(length), 0, 0, 0};
            ASSERT_EQ(std::string(before, 'x') + std::string(field, 4) + text +
                          bytes("\3\0\0\0end"),
                      buffer.as_str());
            for (std::size_t i = 0; i != before; ++i)
                buffer.read_uint8();
            ASSERT_EQ(text, buffer.read_string());
            ASSERT_EQ("end", buffer.read_string());
        }
}

TEST(SerializeBinaryBufStrings, MayBeTheContentItself) {
    for (std::size_t length = 0; length != 150; ++length) {
        serialize_binary_buf buffer{std::string(length, 'x')};
        buffer.append_string(buffer.as_str());
        const char field[] = {static_cast<char>(length), 0, 0, 0};
        ASSERT_EQ(std::string(length, 'x') + std::string(field, 4) + std::string(length, 'x'),
                  buffer.as_str());
    }
}

}  // namespace
