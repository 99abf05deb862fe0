#include <tova/generic/convert/binary.hpp>

#include "support/class_name.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

namespace convert = tova::generic::convert;
namespace little_endian = convert::little_endian;
namespace big_endian = convert::big_endian;

// The bytes of a literal, including embedded NULs.
template <std::size_t Size>
std::string bytes(const char (&literal)[Size]) {
    return std::string(literal, Size - 1);
}

// The functions of one set for one type. A reader that doesn't exist in the set is null.
template <typename Value>
struct function_set {
    const char* name;
    bool high_byte_first;
    std::string (*write)(const Value&);
    Value (*read_pointer)(const char*);
    Value (*read_string)(const std::string&);
    std::size_t string_limit;  // shorter strings read as 0
};

template <typename Value>
struct number {
    Value value;
    std::string low_byte_first;
    std::string high_byte_first;
};

template <typename Value>
std::vector<function_set<Value>> function_sets();

template <typename Value>
std::vector<number<Value>> numbers();

template <>
std::vector<function_set<short>> function_sets() {
    return {{"host", false, convert::int16_to_bin_str, convert::bin_str_to_int16,
             convert::bin_str_to_int16, 2},
            {"little_endian", true, little_endian::int16_to_bin_str, nullptr,
             little_endian::bin_str_to_int16, 2},
            {"big_endian", true, big_endian::int16_to_bin_str, big_endian::bin_str_to_int16,
             big_endian::bin_str_to_int16, 2}};
}

template <>
std::vector<number<short>> numbers() {
    return {{0, bytes("\x00\x00"), bytes("\x00\x00")},
            {1, bytes("\x01\x00"), bytes("\x00\x01")},
            {0x0102, bytes("\x02\x01"), bytes("\x01\x02")},
            {-2, bytes("\xFE\xFF"), bytes("\xFF\xFE")},
            {-32768, bytes("\x00\x80"), bytes("\x80\x00")},
            {32767, bytes("\xFF\x7F"), bytes("\x7F\xFF")}};
}

template <>
std::vector<function_set<int>> function_sets() {
    return {{"host", false, convert::int32_to_bin_str, convert::bin_str_to_int32,
             convert::bin_str_to_int32, 4},
            {"little_endian", true, little_endian::int32_to_bin_str,
             little_endian::bin_str_to_int32, little_endian::bin_str_to_int32, 4},
            {"big_endian", true, big_endian::int32_to_bin_str, big_endian::bin_str_to_int32,
             big_endian::bin_str_to_int32, 4}};
}

template <>
std::vector<number<int>> numbers() {
    return {{0, bytes("\x00\x00\x00\x00"), bytes("\x00\x00\x00\x00")},
            {1, bytes("\x01\x00\x00\x00"), bytes("\x00\x00\x00\x01")},
            {0x01020304, bytes("\x04\x03\x02\x01"), bytes("\x01\x02\x03\x04")},
            {-2, bytes("\xFE\xFF\xFF\xFF"), bytes("\xFF\xFF\xFF\xFE")},
            {-2147483647 - 1, bytes("\x00\x00\x00\x80"), bytes("\x80\x00\x00\x00")}};
}

template <>
std::vector<function_set<long>> function_sets() {
    return {{"host", false, convert::int64_to_bin_str, convert::bin_str_to_int64,
             convert::bin_str_to_int64, 8},
            {"little_endian", true, little_endian::int64_to_bin_str,
             little_endian::bin_str_to_int64, little_endian::bin_str_to_int64, 8},
            {"big_endian", true, big_endian::int64_to_bin_str, big_endian::bin_str_to_int64,
             big_endian::bin_str_to_int64, 8}};
}

template <>
std::vector<number<long>> numbers() {
    return {
        {0, bytes("\x00\x00\x00\x00\x00\x00\x00\x00"), bytes("\x00\x00\x00\x00\x00\x00\x00\x00")},
        {1, bytes("\x01\x00\x00\x00\x00\x00\x00\x00"), bytes("\x00\x00\x00\x00\x00\x00\x00\x01")},
        {0x0102030405060708, bytes("\x08\x07\x06\x05\x04\x03\x02\x01"),
         bytes("\x01\x02\x03\x04\x05\x06\x07\x08")},
        {-2, bytes("\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF"), bytes("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE")},
        {-9223372036854775807 - 1, bytes("\x00\x00\x00\x00\x00\x00\x00\x80"),
         bytes("\x80\x00\x00\x00\x00\x00\x00\x00")}};
}

template <>
std::vector<function_set<unsigned short>> function_sets() {
    return {{"host", false, convert::uint16_to_bin_str, convert::bin_str_to_uint16,
             convert::bin_str_to_uint16, 2},
            {"little_endian", true, little_endian::uint16_to_bin_str,
             little_endian::bin_str_to_uint16, little_endian::bin_str_to_uint16, 2},
            {"big_endian", true, big_endian::uint16_to_bin_str, big_endian::bin_str_to_uint16,
             nullptr, 0}};
}

template <>
std::vector<number<unsigned short>> numbers() {
    return {{0, bytes("\x00\x00"), bytes("\x00\x00")},
            {0x0102, bytes("\x02\x01"), bytes("\x01\x02")},
            {65535, bytes("\xFF\xFF"), bytes("\xFF\xFF")},
            {0x8000, bytes("\x00\x80"), bytes("\x80\x00")}};
}

template <>
std::vector<function_set<unsigned int>> function_sets() {
    return {{"host", false, convert::uint32_to_bin_str, convert::bin_str_to_uint32,
             convert::bin_str_to_uint32, 4},
            {"little_endian", true, little_endian::uint32_to_bin_str,
             little_endian::bin_str_to_uint32, little_endian::bin_str_to_uint32, 4},
            {"big_endian", true, big_endian::uint32_to_bin_str, big_endian::bin_str_to_uint32,
             big_endian::bin_str_to_uint32, 4}};
}

template <>
std::vector<number<unsigned int>> numbers() {
    return {{0, bytes("\x00\x00\x00\x00"), bytes("\x00\x00\x00\x00")},
            {0x01020304, bytes("\x04\x03\x02\x01"), bytes("\x01\x02\x03\x04")},
            {0xFFFFFFFEu, bytes("\xFE\xFF\xFF\xFF"), bytes("\xFF\xFF\xFF\xFE")}};
}

template <>
std::vector<function_set<unsigned long>> function_sets() {
    return {{"host", false, convert::uint64_to_bin_str, convert::bin_str_to_uint64,
             convert::bin_str_to_uint64, 8},
            {"little_endian", true, little_endian::uint64_to_bin_str,
             little_endian::bin_str_to_uint64, little_endian::bin_str_to_uint64, 8},
            {"big_endian", true, big_endian::uint64_to_bin_str, big_endian::bin_str_to_uint64,
             big_endian::bin_str_to_uint64, 8}};
}

template <>
std::vector<number<unsigned long>> numbers() {
    return {
        {0, bytes("\x00\x00\x00\x00\x00\x00\x00\x00"), bytes("\x00\x00\x00\x00\x00\x00\x00\x00")},
        {0x0102030405060708, bytes("\x08\x07\x06\x05\x04\x03\x02\x01"),
         bytes("\x01\x02\x03\x04\x05\x06\x07\x08")},
        {0xFFFFFFFFFFFFFFFEul, bytes("\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF"),
         bytes("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE")}};
}

// The limits of the string readers of `float` and `double` in host order are swapped.
template <>
std::vector<function_set<float>> function_sets() {
    return {{"host", false, convert::float_to_bin_str, convert::bin_str_to_float,
             convert::bin_str_to_float, 8},
            {"little_endian", true, little_endian::float_to_bin_str,
             little_endian::bin_str_to_float, little_endian::bin_str_to_float, 4},
            {"big_endian", true, big_endian::float_to_bin_str, nullptr, nullptr, 0}};
}

template <>
std::vector<number<float>> numbers() {
    return {{0.0f, bytes("\x00\x00\x00\x00"), bytes("\x00\x00\x00\x00")},
            {1.0f, bytes("\x00\x00\x80\x3F"), bytes("\x3F\x80\x00\x00")},
            {-1.5f, bytes("\x00\x00\xC0\xBF"), bytes("\xBF\xC0\x00\x00")},
            {16777217.0f, bytes("\x00\x00\x80\x4B"), bytes("\x4B\x80\x00\x00")}};
}

template <>
std::vector<function_set<double>> function_sets() {
    return {{"host", false, convert::double_to_bin_str, convert::bin_str_to_double,
             convert::bin_str_to_double, 4},
            {"little_endian", true, little_endian::double_to_bin_str,
             little_endian::bin_str_to_double, little_endian::bin_str_to_double, 8},
            {"big_endian", true, big_endian::double_to_bin_str, big_endian::bin_str_to_double,
             nullptr, 0}};
}

template <>
std::vector<number<double>> numbers() {
    return {
        {0.0, bytes("\x00\x00\x00\x00\x00\x00\x00\x00"), bytes("\x00\x00\x00\x00\x00\x00\x00\x00")},
        {1.0, bytes("\x00\x00\x00\x00\x00\x00\xF0\x3F"), bytes("\x3F\xF0\x00\x00\x00\x00\x00\x00")},
        {-1.5, bytes("\x00\x00\x00\x00\x00\x00\xF8\xBF"),
         bytes("\xBF\xF8\x00\x00\x00\x00\x00\x00")},
        {0.1, bytes("\x9A\x99\x99\x99\x99\x99\xB9\x3F"),
         bytes("\x3F\xB9\x99\x99\x99\x99\x99\x9A")}};
}

template <typename Value>
class NumberBytes : public ::testing::Test {};
using all_values =
    ::testing::Types<short, int, long, unsigned short, unsigned int, unsigned long, float, double>;
TYPED_TEST_SUITE(NumberBytes, all_values, test_support::class_name);

TYPED_TEST(NumberBytes, AreWrittenLowByteFirstInHostOrderAndHighByteFirstInBothNamedOrders) {
    for (const auto& set : function_sets<TypeParam>())
        for (const auto& n : numbers<TypeParam>()) {
            SCOPED_TRACE(::testing::Message() << set.name << " " << n.value);
            EXPECT_EQ(set.high_byte_first ? n.high_byte_first : n.low_byte_first,
                      set.write(n.value));
        }
}

TYPED_TEST(NumberBytes, AreReadBackFromAPointer) {
    for (const auto& set : function_sets<TypeParam>())
        for (const auto& n : numbers<TypeParam>()) {
            SCOPED_TRACE(::testing::Message() << set.name << " " << n.value);
            const std::string& stored = set.high_byte_first ? n.high_byte_first : n.low_byte_first;
            if (set.read_pointer != nullptr) {
                EXPECT_EQ(n.value, set.read_pointer(stored.data()));
            }
        }
}

TYPED_TEST(NumberBytes, AreReadBackFromAStringOfTheLimitOrLonger) {
    for (const auto& set : function_sets<TypeParam>())
        for (const auto& n : numbers<TypeParam>()) {
            SCOPED_TRACE(::testing::Message() << set.name << " " << n.value);
            const std::string& stored = set.high_byte_first ? n.high_byte_first : n.low_byte_first;
            if (set.read_string == nullptr)
                continue;
            if (stored.size() >= set.string_limit) {
                EXPECT_EQ(n.value, set.read_string(stored));
            }
            EXPECT_EQ(n.value, set.read_string(stored + "more"));
        }
}

TYPED_TEST(NumberBytes, OfAStringBelowTheLimitAreZero) {
    const std::string ones(8, '\x01');
    for (const auto& set : function_sets<TypeParam>()) {
        SCOPED_TRACE(set.name);
        if (set.read_string == nullptr)
            continue;
        for (std::size_t size = 0; size < set.string_limit; ++size)
            EXPECT_EQ(TypeParam(), set.read_string(ones.substr(0, size))) << size;
        EXPECT_NE(TypeParam(), set.read_string(ones.substr(0, set.string_limit)));
    }
}

// --- Surprises -------------------------------------------------------------------------------

TEST(NumberBytesInHostOrder, OfAFloatNeedAStringOfEightBytes) {
    const std::string one = convert::float_to_bin_str(1.0f);
    EXPECT_EQ(4u, one.size());
    EXPECT_EQ(0.0f, convert::bin_str_to_float(one));
    EXPECT_EQ(1.0f, convert::bin_str_to_float(one.data()));
    EXPECT_EQ(0.0f, convert::bin_str_to_float(one + "abc"));
    EXPECT_EQ(1.0f, convert::bin_str_to_float(one + "abcd"));
}

TEST(NumberBytesInHostOrder, OfADoubleNeedAStringOfFourBytesAndMissingBytesReadAsZero) {
    const std::string all = bytes("\x01\x02\x03\x04\x05\x06\x07\x40");
    for (unsigned size = 0; size < 4; ++size)
        EXPECT_EQ(0.0, convert::bin_str_to_double(all.substr(0, size))) << size;
    for (unsigned size = 4; size <= 8; ++size) {
        std::string padded = all.substr(0, size);
        padded.resize(8);
        EXPECT_EQ(convert::bin_str_to_double(padded.data()),
                  convert::bin_str_to_double(all.substr(0, size)))
            << size;
        EXPECT_NE(0.0, convert::bin_str_to_double(all.substr(0, size))) << size;
    }
    EXPECT_EQ(5e-324, convert::bin_str_to_double(bytes("\x01\x00\x00\x00")));
}

TEST(NumberBytesInNamedOrders, AreTheSameInBoth) {
    EXPECT_EQ(bytes("\x00\x00\x00\x01"), big_endian::int32_to_bin_str(1));
    EXPECT_EQ(bytes("\x00\x00\x00\x01"), little_endian::int32_to_bin_str(1));
    EXPECT_EQ(bytes("\x01\x00\x00\x00"), convert::int32_to_bin_str(1));
}

TEST(NumberBytesOfDouble, KeepEveryBitPattern) {
    const unsigned long patterns[] = {0x7FF8000000000001ul, 0xFFF0000000000000ul,
                                      0x8000000000000000ul, 0x0000000000000001ul};
    for (unsigned long pattern : patterns) {
        SCOPED_TRACE(pattern);
        double value;
        std::memcpy(&value, &pattern, sizeof value);
        const std::string stored = convert::double_to_bin_str(value);
        EXPECT_EQ(convert::uint64_to_bin_str(pattern), stored);
        for (const double read :
             {convert::bin_str_to_double(stored), convert::bin_str_to_double(stored.data()),
              little_endian::bin_str_to_double(little_endian::double_to_bin_str(value)),
              big_endian::bin_str_to_double(big_endian::double_to_bin_str(value).data())})
            EXPECT_EQ(0, std::memcmp(&pattern, &read, sizeof read));
    }
}

}  // namespace
