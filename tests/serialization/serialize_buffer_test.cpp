#include <tova/serialization/serialize_buffer.hpp>

#include <tova/memory/pointers.hpp>
#include <tova/serialization/serialize_binary_buf.hpp>
#include <tova/serialization/serialize_text_buf.hpp>

#include "serialization/buffer_checks.hpp"
#include "serialization/hex_buffer.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <type_traits>

namespace {

using tova::memory::pointers::rc_pointer;
using tova::serialization::serialize_binary_buf;
using tova::serialization::serialize_buffer;
using tova::serialization::serialize_text_buf;

// Tests what both encodings have in common.
template <typename Buffer>
class SerializeBuffer : public ::testing::Test {};

using both_encodings = ::testing::Types<serialize_text_buf, serialize_binary_buf>;

struct encoding_name {
    template <typename Buffer>
    static std::string GetName(int) {
        return std::is_same<Buffer, serialize_text_buf>::value ? "Text" : "Binary";
    }
};

TYPED_TEST_SUITE(SerializeBuffer, both_encodings, encoding_name);

template <typename Buffer>
Buffer two_numbers() {
    Buffer buffer;
    buffer.append_int32(7);
    buffer.append_int32(8);
    return buffer;
}

void write_each_type(serialize_buffer& buffer, const serialize_buffer& nested) {
    buffer.append_int8(-128);
    buffer.append_int16(-32768);
    buffer.append_int32(std::numeric_limits<int>::min());
    buffer.append_int64(std::numeric_limits<long>::min());
    buffer.append_uint8(255);
    buffer.append_uint16(65535);
    buffer.append_uint32(4294967295u);
    buffer.append_uint64(18446744073709551615ul);
    buffer.append_float(0.5f, 6);
    buffer.append_double(-1234.25, 6);
    buffer.append_string(std::string("a\0\001\xFFz", 5));
    buffer.append_buffer(nested);
    buffer.append_int8(1);
}

void read_each_type(const serialize_buffer& buffer, const std::string& nested) {
    EXPECT_EQ(-128, buffer.read_int8());
    EXPECT_EQ(-32768, buffer.read_int16());
    EXPECT_EQ(std::numeric_limits<int>::min(), buffer.read_int32());
    EXPECT_EQ(std::numeric_limits<long>::min(), buffer.read_int64());
    EXPECT_EQ(255, buffer.read_uint8());
    EXPECT_EQ(65535, buffer.read_uint16());
    EXPECT_EQ(4294967295u, buffer.read_uint32());
    EXPECT_EQ(18446744073709551615ul, buffer.read_uint64());
    EXPECT_EQ(0.5f, buffer.read_float());
    EXPECT_EQ(-1234.25, buffer.read_double());
    EXPECT_EQ(std::string("a\0\001\xFFz", 5), buffer.read_string());
    const std::unique_ptr<serialize_buffer> inner(buffer.read_buffer());
    ASSERT_NE(nullptr, inner);
    EXPECT_EQ(nested, inner->as_str());
    EXPECT_FALSE(buffer.at_end());
    EXPECT_EQ(1, buffer.read_int8());
    EXPECT_TRUE(buffer.at_end());
}

TYPED_TEST(SerializeBuffer, ReadsBackEachTypeInTheOrderOfWriting) {
    TypeParam nested;
    nested.append_string("inner");
    TypeParam buffer;
    write_each_type(buffer, nested);
    read_each_type(buffer, nested.as_str());
    buffer.reset_read();
    read_each_type(buffer, nested.as_str());
}

TYPED_TEST(SerializeBuffer, ReadsAnyEncodedTextFromItsStart) {
    TypeParam nested;
    TypeParam written;
    nested.append_uint8(3);
    write_each_type(written, nested);
    const TypeParam buffer(written.as_str());
    EXPECT_EQ(written.as_str(), buffer.as_str());
    read_each_type(buffer, nested.as_str());
}

TYPED_TEST(SerializeBuffer, StoresABufferOfAnyClassAsItsBytes) {
    test_support::hex_buffer own;
    own.append_int16(-2);
    own.append_string("xy");
    EXPECT_EQ("feff,7879,", own.as_str());

    TypeParam buffer;
    buffer.append_buffer(own);
    buffer.append_int8(1);
    const std::unique_ptr<serialize_buffer> nested(buffer.read_buffer());
    ASSERT_NE(nullptr, nested);
    EXPECT_NE(nullptr, dynamic_cast<TypeParam*>(nested.get()));
    EXPECT_EQ("feff,7879,", nested->as_str());

    test_support::hex_buffer again;
    again.assign(*nested);
    EXPECT_EQ(-2, again.read_int16());
    EXPECT_EQ("xy", again.read_string());
}

TYPED_TEST(SerializeBuffer, MayBeStoredInABufferOfAnyClass) {
    const TypeParam inner = two_numbers<TypeParam>();
    test_support::hex_buffer outer;
    outer.append_buffer(inner);
    const std::unique_ptr<serialize_buffer> bytes(outer.read_buffer());
    EXPECT_EQ(inner.as_str(), bytes->as_str());
    const TypeParam again(*bytes);
    EXPECT_EQ(7, again.read_int32());
    EXPECT_EQ(8, again.read_int32());
}

TYPED_TEST(SerializeBuffer, IsInitiallyEmpty) {
    const TypeParam buffer;
    EXPECT_EQ("", buffer.as_str());
    EXPECT_TRUE(buffer.at_end());
    EXPECT_EQ(0u, buffer.count);
    EXPECT_FALSE(buffer.allocated);
    EXPECT_EQ(0, buffer.read_int8());
    EXPECT_EQ(0, buffer.read_int16());
    EXPECT_EQ(0, buffer.read_int32());
    EXPECT_EQ(0, buffer.read_int64());
    EXPECT_EQ(0u, buffer.read_uint8());
    EXPECT_EQ(0u, buffer.read_uint16());
    EXPECT_EQ(0u, buffer.read_uint32());
    EXPECT_EQ(0u, buffer.read_uint64());
    EXPECT_EQ(0.0f, buffer.read_float());
    EXPECT_EQ(0.0, buffer.read_double());
    EXPECT_EQ("", buffer.read_string());
}

TYPED_TEST(SerializeBuffer, AppendsWithoutMovingTheReadPosition) {
    TypeParam buffer = two_numbers<TypeParam>();
    EXPECT_EQ(7, buffer.read_int32());
    buffer.append_int32(9);
    EXPECT_EQ(8, buffer.read_int32());
    EXPECT_FALSE(buffer.at_end());
    EXPECT_EQ(9, buffer.read_int32());
    EXPECT_TRUE(buffer.at_end());
    buffer.append_int32(10);
    EXPECT_FALSE(buffer.at_end());
    EXPECT_EQ(10, buffer.read_int32());
}

TYPED_TEST(SerializeBuffer, AppendsItsOwnPreviousContent) {
    TypeParam buffer;
    buffer.append_string("ab");
    const std::string before = buffer.as_str();
    buffer.append_buffer(buffer);
    TypeParam expected(before);
    expected.append_string(before);
    EXPECT_EQ(expected.as_str(), buffer.as_str());

    TypeParam by_string(before);
    by_string.append_string(by_string.as_str());
    EXPECT_EQ(expected.as_str(), by_string.as_str());
}

TYPED_TEST(SerializeBuffer, IsCopiedWithItsReadPosition) {
    const TypeParam source = two_numbers<TypeParam>();
    EXPECT_EQ(7, source.read_int32());
    const TypeParam copy(source);
    EXPECT_EQ(8, copy.read_int32());
    EXPECT_EQ(8, source.read_int32());

    const std::unique_ptr<serialize_buffer> at_the_end(source.clone());
    EXPECT_TRUE(at_the_end->at_end());
    source.reset_read();
    EXPECT_EQ(7, source.read_int32());
    const std::unique_ptr<serialize_buffer> clone(source.clone());
    EXPECT_EQ(8, clone->read_int32());
}

TYPED_TEST(SerializeBuffer, DoesNotCopyTheReadPositionFromABaseReference) {
    const TypeParam source = two_numbers<TypeParam>();
    EXPECT_EQ(7, source.read_int32());
    const serialize_buffer& base = source;
    const TypeParam copy(base);
    EXPECT_EQ(7, copy.read_int32());
}

TYPED_TEST(SerializeBuffer, CopiesCountAndMark) {
    TypeParam source;
    source.count = 3;
    source.allocated = true;
    const TypeParam copy(source);
    EXPECT_EQ(3u, copy.count);
    EXPECT_TRUE(copy.allocated);
    const serialize_buffer& base = source;
    const TypeParam from_base(base);
    EXPECT_EQ(3u, from_base.count);
    EXPECT_TRUE(from_base.allocated);

    test_support::hex_buffer own;
    own.count = 9;
    const TypeParam from_own(own);
    EXPECT_EQ(9u, from_own.count);
    EXPECT_FALSE(from_own.allocated);
}

TYPED_TEST(SerializeBuffer, HasClonesThatStartWithTheCountOfTheirSource) {
    TypeParam automatic;
    {
        const rc_pointer<serialize_buffer> holder(&automatic);
        const rc_pointer<serialize_buffer> second(&automatic);
        const std::unique_ptr<serialize_buffer> clone(holder->clone());
        EXPECT_EQ(2u, clone->count);
        EXPECT_TRUE(clone->allocated);
    }
    const std::unique_ptr<serialize_buffer> clone(automatic.clone());
    EXPECT_EQ(0u, clone->count);
    EXPECT_TRUE(clone->allocated);
}

TYPED_TEST(SerializeBuffer, IsCreatedEmptyAndMarked) {
    TypeParam source = two_numbers<TypeParam>();
    source.count = 5;
    const std::unique_ptr<serialize_buffer> created(source.create());
    EXPECT_NE(nullptr, dynamic_cast<TypeParam*>(created.get()));
    EXPECT_EQ("", created->as_str());
    EXPECT_EQ(0u, created->count);
    EXPECT_TRUE(created->allocated);
    created->append_int32(1);
    EXPECT_EQ(1, created->read_int32());
}

TYPED_TEST(SerializeBuffer, StartsWithoutCountOrMarkFromAString) {
    const TypeParam buffer(std::string("abc"));
    EXPECT_EQ(0u, buffer.count);
    EXPECT_FALSE(buffer.allocated);
}

TYPED_TEST(SerializeBuffer, ReadsNestedBuffersWithoutCountButWithTheMark) {
    TypeParam inner = two_numbers<TypeParam>();
    EXPECT_EQ(7, inner.read_int32());
    TypeParam outer;
    outer.append_buffer(inner);
    outer.count = 4;
    const std::unique_ptr<serialize_buffer> read(outer.read_buffer());
    EXPECT_NE(nullptr, dynamic_cast<TypeParam*>(read.get()));
    EXPECT_EQ(0u, read->count);
    EXPECT_TRUE(read->allocated);
    EXPECT_EQ(7, read->read_int32());
}

TYPED_TEST(SerializeBuffer, IsDeletedByTheLastOfItsHolders) {
    static int destroyed;
    struct counted : TypeParam {
        ~counted() TOVA_NOTHROW override { ++destroyed; }
    };
    destroyed = 0;
    {
        counted* const made = new counted;
        made->allocated = true;
        rc_pointer<serialize_buffer> first(made);
        rc_pointer<serialize_buffer> second(first);
        EXPECT_EQ(2u, first->count);
        first = nullptr;
        EXPECT_EQ(0, destroyed);
    }
    EXPECT_EQ(1, destroyed);
}

TYPED_TEST(SerializeBuffer, KeepsTheReadPositionWhenAssigned) {
    const TypeParam other = two_numbers<TypeParam>();
    TypeParam buffer = two_numbers<TypeParam>();
    EXPECT_EQ(7, buffer.read_int32());

    TypeParam replacement;
    replacement.append_int32(1);
    replacement.append_int32(2);
    const serialize_buffer& base = replacement;
    EXPECT_EQ(&buffer, &buffer.assign(base));
    EXPECT_EQ(2, buffer.read_int32());

    buffer.assign(other.as_str());
    EXPECT_TRUE(buffer.at_end());
    buffer.reset_read();
    EXPECT_EQ(7, buffer.read_int32());

    EXPECT_EQ(&buffer, &buffer.assign(replacement.as_str().data(),
                                      static_cast<int>(replacement.as_str().size())));
    EXPECT_EQ(2, buffer.read_int32());
}

TYPED_TEST(SerializeBuffer, IsUnchangedWhenAssignedToItself) {
    TypeParam buffer = two_numbers<TypeParam>();
    const std::string before = buffer.as_str();
    EXPECT_EQ(7, buffer.read_int32());
    const serialize_buffer& base = buffer;
    EXPECT_EQ(&buffer, &buffer.assign(base));
    EXPECT_EQ(before, buffer.as_str());
    EXPECT_EQ(8, buffer.read_int32());
    buffer.assign(buffer.as_str());
    EXPECT_EQ(before, buffer.as_str());
}

TYPED_TEST(SerializeBuffer, KeepsItsCountAndMarkWhenAssigned) {
    TypeParam source;
    source.count = 3;
    source.allocated = true;
    TypeParam target;
    target.count = 1;
    target.assign(static_cast<const serialize_buffer&>(source));
    target = source;
    EXPECT_EQ(1u, target.count);
    EXPECT_FALSE(target.allocated);
    target.count = 0;
}

TYPED_TEST(SerializeBuffer, CopiesTheReadPositionInTheAssignmentOperator) {
    const TypeParam source = two_numbers<TypeParam>();
    EXPECT_EQ(7, source.read_int32());
    TypeParam target;
    EXPECT_EQ(&target, &(target = source));
    EXPECT_EQ(8, target.read_int32());
}

TYPED_TEST(SerializeBuffer, AcceptsPartsOfItsOwnContent) {
    TypeParam buffer(std::string("abcdef"));
    buffer.assign(buffer.as_str().data() + 2, 3);
    EXPECT_EQ("cde", buffer.as_str());
}

TYPED_TEST(SerializeBuffer, RejectsANullPointerWithALength) {
    TypeParam buffer(std::string("abc"));
    test_support::expect_invalid_pointers_are_refused(buffer);
    EXPECT_EQ("abc", buffer.as_str());
    buffer.assign(nullptr, 0);
    EXPECT_EQ("", buffer.as_str());
}

TYPED_TEST(SerializeBuffer, ReturnsItsOwnStringWithoutACopy) {
    TypeParam buffer = two_numbers<TypeParam>();
    const std::string& text = buffer.as_str();
    buffer.append_int32(1);
    EXPECT_EQ(&text, &buffer.as_str());
}

}  // namespace
