// Tests sizes, offsets, bases and slots of the serialize buffers, as compiled callers expect them.
#include <tova/serialization/labeled_text_buffer.hpp>
#include <tova/serialization/serialize_binary_buf.hpp>
#include <tova/serialization/serialize_text_buf.hpp>
#include <tova/types/nil.hpp>

#include "support/raw_memory.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace {

using namespace TOVA_2_18;
using generic::abilities::alloc_detection_ability;
using generic::abilities::clone_ability;
using generic::abilities::create_ability;
using generic::abilities::reference_count_pointer_ability;
using generic::abilities::reference_count_pointer_ability_b;
using serialization::labeled_serialize_buffer;
using serialization::labeled_text_buffer;
using serialization::serialize_binary_buf;
using serialization::serialize_buffer;
using serialization::serialize_text_buf;
using test_support::base_offset;
using test_support::pointer_at;
using test_support::returns;
using test_support::slot;
using types::variant;

// --- Sizes -------------------------------------------------------------------------------------

// Two pointers to slots, the heap mark and the count.
static_assert(sizeof(serialize_buffer) == 24 && alignof(serialize_buffer) == 8, "");
static_assert(sizeof(labeled_serialize_buffer) == 24, "");
static_assert(alignof(labeled_serialize_buffer) == 8, "");
// Plus a string and a position.
static_assert(sizeof(serialize_text_buf) == 64 && alignof(serialize_text_buf) == 8, "");
static_assert(sizeof(serialize_binary_buf) == 64 && alignof(serialize_binary_buf) == 8, "");
// Plus a map and a text buffer.
static_assert(sizeof(labeled_text_buffer) == 136 && alignof(labeled_text_buffer) == 8, "");

static_assert(std::is_abstract<serialize_buffer>::value, "");
static_assert(std::is_abstract<labeled_serialize_buffer>::value, "");
static_assert(std::is_base_of<serialize_buffer, serialize_text_buf>::value, "");
static_assert(std::is_base_of<serialize_buffer, serialize_binary_buf>::value, "");
static_assert(std::is_base_of<labeled_serialize_buffer, labeled_text_buffer>::value, "");
static_assert(std::has_virtual_destructor<serialize_buffer>::value, "");
static_assert(std::has_virtual_destructor<labeled_serialize_buffer>::value, "");
static_assert(sizeof(memory::pointers::rc_pointer<serialize_buffer>) == 8, "");
static_assert(sizeof(memory::pointers::rc_pointer<labeled_serialize_buffer>) == 8, "");

// --- Result types, which are not part of a symbol ------------------------------------------------

template <typename Result, typename Class, typename... Arguments>
constexpr bool returns(Result (Class::*)(Arguments...)) {
    return true;
}

static_assert(returns<const std::string&>(&serialize_buffer::as_str), "");
static_assert(returns<signed char>(&serialize_buffer::read_int8), "");
static_assert(returns<short>(&serialize_buffer::read_int16), "");
static_assert(returns<int>(&serialize_buffer::read_int32), "");
static_assert(returns<long>(&serialize_buffer::read_int64), "");
static_assert(returns<unsigned char>(&serialize_buffer::read_uint8), "");
static_assert(returns<unsigned short>(&serialize_buffer::read_uint16), "");
static_assert(returns<unsigned int>(&serialize_buffer::read_uint32), "");
static_assert(returns<unsigned long>(&serialize_buffer::read_uint64), "");
static_assert(returns<float>(&serialize_buffer::read_float), "");
static_assert(returns<double>(&serialize_buffer::read_double), "");
static_assert(returns<std::string>(&serialize_buffer::read_string), "");
static_assert(returns<serialize_buffer*>(&serialize_buffer::read_buffer), "");
static_assert(returns<bool>(&serialize_buffer::at_end), "");
static_assert(returns<void>(&serialize_buffer::reset_read), "");
static_assert(returns<serialize_buffer*>(&serialize_buffer::create), "");
static_assert(returns<serialize_buffer*>(&serialize_buffer::clone), "");
static_assert(returns<serialize_buffer*>(&serialize_text_buf::read_buffer), "");
static_assert(returns<serialize_buffer*>(&serialize_binary_buf::clone), "");

static_assert(returns<const std::string&>(&labeled_serialize_buffer::as_str), "");
static_assert(returns<bool>(&labeled_serialize_buffer::add_value), "");
static_assert(returns<labeled_serialize_buffer*>(&labeled_serialize_buffer::create_group), "");
static_assert(returns<bool>(&labeled_serialize_buffer::has_label), "");
static_assert(returns<bool>(&labeled_serialize_buffer::has_value), "");
static_assert(returns<bool>(&labeled_serialize_buffer::has_group), "");
static_assert(returns<bool>(&labeled_serialize_buffer::is_empty), "");
static_assert(returns<variant>(&labeled_serialize_buffer::retrieve_value), "");
static_assert(returns<labeled_serialize_buffer*>(&labeled_serialize_buffer::create), "");
static_assert(returns<labeled_serialize_buffer*>(&labeled_serialize_buffer::clone), "");

// --- Bases and fields ----------------------------------------------------------------------------

template <typename Counted, typename Buffer>
void expect_bases(Buffer& buffer) {
    EXPECT_EQ(0, base_offset<create_ability>(buffer));
    EXPECT_EQ(8, base_offset<clone_ability>(buffer));
    EXPECT_EQ(16, base_offset<Counted>(buffer));
    EXPECT_EQ(16, base_offset<reference_count_pointer_ability_b>(buffer));
    EXPECT_EQ(16, base_offset<alloc_detection_ability>(buffer));

    const char* const raw = reinterpret_cast<const char*>(&buffer);
    EXPECT_EQ(raw + 16, reinterpret_cast<const char*>(&buffer.allocated));
    EXPECT_EQ(raw + 20, reinterpret_cast<const char*>(&buffer.count));
}

std::size_t size_at(const void* object, std::size_t offset) {
    return reinterpret_cast<std::size_t>(pointer_at(object, offset));
}

TEST(SerializationLayout, BasesAreInOrder) {
    typedef reference_count_pointer_ability<serialize_buffer> counted;
    typedef reference_count_pointer_ability<labeled_serialize_buffer> counted_tree;
    serialize_text_buf text;
    serialize_binary_buf binary;
    labeled_text_buffer tree;
    expect_bases<counted>(text);
    expect_bases<counted>(binary);
    expect_bases<counted_tree>(tree);
    EXPECT_EQ(0, base_offset<serialize_buffer>(text));
    EXPECT_EQ(0, base_offset<serialize_buffer>(binary));
    EXPECT_EQ(0, base_offset<labeled_serialize_buffer>(tree));
}

template <typename Buffer>
void expect_text_and_position() {
    Buffer buffer(std::string("1\0012\001"));
    EXPECT_EQ(reinterpret_cast<const char*>(&buffer) + 24,
              reinterpret_cast<const char*>(&buffer.as_str()));
    EXPECT_EQ(0u, size_at(&buffer, 56));
    buffer.read_int16();
    EXPECT_EQ(2u, size_at(&buffer, 56));
    buffer.reset_read();
    EXPECT_EQ(0u, size_at(&buffer, 56));
}

TEST(SerializationLayout, ABufferIsItsTextAndItsReadPosition) {
    expect_text_and_position<serialize_text_buf>();
    expect_text_and_position<serialize_binary_buf>();
    const serialize_text_buf open(std::string("1"));
    open.read_int16();
    EXPECT_EQ(std::string::npos, size_at(&open, 56));
}

TEST(SerializationLayout, ATreeIsItsEntriesAndItsText) {
    typedef std::map<std::string, std::pair<labeled_text_buffer, variant>> entries;
    labeled_text_buffer tree;
    tree.add_value("a", 1);
    const labeled_serialize_buffer* const group = tree.create_group("b");
    const char* const raw = reinterpret_cast<const char*>(&tree);
    const entries& stored = *reinterpret_cast<const entries*>(raw + 24);
    ASSERT_EQ(2u, stored.size());
    EXPECT_EQ(1, stored.at("a").second.as_int());
    EXPECT_EQ(group, &stored.at("b").first);
    EXPECT_TRUE(stored.at("b").second == types::nil);
    const serialize_text_buf& text = *reinterpret_cast<const serialize_text_buf*>(raw + 72);
    EXPECT_EQ(&text.as_str(), &tree.as_str());
}

// --- Slots -------------------------------------------------------------------------------------

// Records the operation that was reached, and returns the number of its slot.
class recording_buffer : public serialize_buffer {
public:
    ~recording_buffer() TOVA_NOTHROW override { ++destroyed; }
    serialize_buffer& assign(const serialize_buffer&) override { return record(2); }
    serialize_buffer& assign(const std::string&) override { return record(3); }
    serialize_buffer& assign(const char*, int) override { return record(4); }
    const std::string& as_str() const override {
        record(5);
        return text;
    }
    void append_int8(const signed char&) override { record(6); }
    void append_int16(const short&) override { record(7); }
    void append_int32(const int&) override { record(8); }
    void append_int64(const long&) override { record(9); }
    void append_uint8(const unsigned char&) override { record(10); }
    void append_uint16(const unsigned short&) override { record(11); }
    void append_uint32(const unsigned int&) override { record(12); }
    void append_uint64(const unsigned long&) override { record(13); }
    void append_float(const float&, const unsigned int&) override { record(14); }
    void append_double(const double&, const unsigned int&) override { record(15); }
    void append_string(const std::string&) override { record(16); }
    void append_buffer(const serialize_buffer&) override { record(17); }
    signed char read_int8() const override { return number<signed char>(18); }
    short read_int16() const override { return number<short>(19); }
    int read_int32() const override { return number<int>(20); }
    long read_int64() const override { return number<long>(21); }
    unsigned char read_uint8() const override { return number<unsigned char>(22); }
    unsigned short read_uint16() const override { return number<unsigned short>(23); }
    unsigned int read_uint32() const override { return number<unsigned int>(24); }
    unsigned long read_uint64() const override { return number<unsigned long>(25); }
    float read_float() const override { return number<float>(26); }
    double read_double() const override { return number<double>(27); }
    std::string read_string() const override {
        record(28);
        return text;
    }
    serialize_buffer* read_buffer() const override { return &record(29); }
    bool at_end() const override { return number<int>(30) != 0; }
    void reset_read() const override { record(31); }
    serialize_buffer* create() const override { return &record(32); }
    serialize_buffer* clone() const override { return &record(33); }

    std::string text = "text";
    mutable int reached = 0;
    static int destroyed;

private:
    recording_buffer& record(int number) const {
        reached = number;
        return const_cast<recording_buffer&>(*this);
    }
    template <typename Number>
    Number number(int slot_number) const {
        record(slot_number);
        return static_cast<Number>(slot_number);
    }
};

int recording_buffer::destroyed = 0;

// Calls a slot by its number, as compiled code does.
template <typename Result, typename... Arguments>
Result call(const void* object, std::size_t number, Arguments... arguments) {
    return slot<Result(const void*, Arguments...)>(object, number)(object, arguments...);
}

TEST(SerializationSlots, OfASequenceAreInOrder) {
    recording_buffer buffer;
    serialize_buffer* const self = &buffer;
    const void* const raw = self;
    const std::string text("x");
    const signed char i8 = 1;
    const short i16 = 1;
    const int i32 = 1;
    const long i64 = 1;
    const unsigned char u8 = 1;
    const unsigned short u16 = 1;
    const unsigned int u32 = 1;
    const unsigned long u64 = 1;
    const float single = 1;
    const double real = 1;

    EXPECT_EQ(self, (&call<serialize_buffer&, const serialize_buffer&>(raw, 2, buffer)));
    EXPECT_EQ(2, buffer.reached);
    EXPECT_EQ(self, (&call<serialize_buffer&, const std::string&>(raw, 3, text)));
    EXPECT_EQ(3, buffer.reached);
    EXPECT_EQ(self, (&call<serialize_buffer&, const char*, int>(raw, 4, "x", 1)));
    EXPECT_EQ(4, buffer.reached);
    EXPECT_EQ(&buffer.text, (&call<const std::string&>(raw, 5)));
    EXPECT_EQ(5, buffer.reached);
    call<void, const signed char&>(raw, 6, i8);
    EXPECT_EQ(6, buffer.reached);
    call<void, const short&>(raw, 7, i16);
    EXPECT_EQ(7, buffer.reached);
    call<void, const int&>(raw, 8, i32);
    EXPECT_EQ(8, buffer.reached);
    call<void, const long&>(raw, 9, i64);
    EXPECT_EQ(9, buffer.reached);
    call<void, const unsigned char&>(raw, 10, u8);
    EXPECT_EQ(10, buffer.reached);
    call<void, const unsigned short&>(raw, 11, u16);
    EXPECT_EQ(11, buffer.reached);
    call<void, const unsigned int&>(raw, 12, u32);
    EXPECT_EQ(12, buffer.reached);
    call<void, const unsigned long&>(raw, 13, u64);
    EXPECT_EQ(13, buffer.reached);
    call<void, const float&, const unsigned int&>(raw, 14, single, u32);
    EXPECT_EQ(14, buffer.reached);
    call<void, const double&, const unsigned int&>(raw, 15, real, u32);
    EXPECT_EQ(15, buffer.reached);
    call<void, const std::string&>(raw, 16, text);
    EXPECT_EQ(16, buffer.reached);
    call<void, const serialize_buffer&>(raw, 17, buffer);
    EXPECT_EQ(17, buffer.reached);
    EXPECT_EQ(18, call<signed char>(raw, 18));
    EXPECT_EQ(19, call<short>(raw, 19));
    EXPECT_EQ(20, call<int>(raw, 20));
    EXPECT_EQ(21, call<long>(raw, 21));
    EXPECT_EQ(22, call<unsigned char>(raw, 22));
    EXPECT_EQ(23, call<unsigned short>(raw, 23));
    EXPECT_EQ(24u, call<unsigned int>(raw, 24));
    EXPECT_EQ(25u, call<unsigned long>(raw, 25));
    EXPECT_EQ(26.0f, call<float>(raw, 26));
    EXPECT_EQ(27.0, call<double>(raw, 27));
    EXPECT_EQ(27, buffer.reached);
    EXPECT_EQ("text", call<std::string>(raw, 28));
    EXPECT_EQ(28, buffer.reached);
    EXPECT_EQ(self, call<serialize_buffer*>(raw, 29));
    EXPECT_EQ(29, buffer.reached);
    EXPECT_TRUE(call<bool>(raw, 30));
    EXPECT_EQ(30, buffer.reached);
    call<void>(raw, 31);
    EXPECT_EQ(31, buffer.reached);
    EXPECT_EQ(self, call<serialize_buffer*>(raw, 32));
    EXPECT_EQ(32, buffer.reached);
    EXPECT_EQ(self, call<serialize_buffer*>(raw, 33));
    EXPECT_EQ(33, buffer.reached);
}

// The same through the base class, which is how other modules call a user's class.
TEST(SerializationSlots, OfASequenceAreReachedThroughTheBaseClass) {
    recording_buffer own;
    const serialize_buffer& constant = own;
    serialize_text_buf text(constant);
    EXPECT_EQ(5, own.reached);
    EXPECT_EQ("text", text.as_str());
    own.reached = 0;
    text.append_buffer(own);
    EXPECT_EQ(5, own.reached);
    constant.read_uint64();
    EXPECT_EQ(25, own.reached);
    constant.clone();
    EXPECT_EQ(33, own.reached);
}

template <typename Buffer>
void expect_destructor_slots() {
    // Slot 0 destroys the object, slot 1 also frees it.
    void* const memory = std::malloc(sizeof(Buffer));
    const void* const object = new (memory) Buffer;
    recording_buffer::destroyed = 0;
    call<void>(object, 0);
    std::free(memory);
    EXPECT_EQ((std::is_same<Buffer, recording_buffer>::value ? 1 : 0), recording_buffer::destroyed);
    call<void>(new Buffer, 1);
    // The second table has only the destructor, which adjusts the pointer to the whole object.
    Buffer* const made = new Buffer;
    const void* const second = static_cast<const clone_ability*>(made);
    slot<void(const void*)>(second, 1)(second);
}

TEST(SerializationSlots, BeginWithTheDestructor) {
    expect_destructor_slots<recording_buffer>();
    EXPECT_EQ(3, recording_buffer::destroyed);
    expect_destructor_slots<serialize_text_buf>();
    expect_destructor_slots<serialize_binary_buf>();
    expect_destructor_slots<labeled_text_buffer>();
}

// A few slots of both encodings, from each kind of operation.
TEST(SerializationSlots, OfTheEncodingsAreThoseOfTheBaseClass) {
    const serialize_text_buf text;
    const serialize_binary_buf binary;
    for (const serialize_buffer* buffer : {static_cast<const serialize_buffer*>(&text),
                                           static_cast<const serialize_buffer*>(&binary)}) {
        const signed char small = -3;
        const unsigned long large = 5;
        const std::string bytes("ab");
        call<void, const signed char&>(buffer, 6, small);
        call<void, const unsigned long&>(buffer, 13, large);
        call<void, const std::string&>(buffer, 16, bytes);
        EXPECT_FALSE(call<bool>(buffer, 30));
        EXPECT_EQ(-3, call<signed char>(buffer, 18));
        EXPECT_EQ(5u, call<unsigned long>(buffer, 25));
        EXPECT_EQ("ab", call<std::string>(buffer, 28));
        EXPECT_TRUE(call<bool>(buffer, 30));
        call<void>(buffer, 31);
        EXPECT_EQ(-3, call<signed char>(buffer, 18));
        const std::unique_ptr<serialize_buffer> created(call<serialize_buffer*>(buffer, 32));
        EXPECT_EQ("", created->as_str());
        const std::unique_ptr<serialize_buffer> clone(call<serialize_buffer*>(buffer, 33));
        EXPECT_EQ(buffer->as_str(), clone->as_str());
    }
}

class recording_tree : public labeled_serialize_buffer {
public:
    labeled_serialize_buffer& assign(const labeled_serialize_buffer&) override { return record(2); }
    labeled_serialize_buffer& assign(const std::string&) override { return record(3); }
    labeled_serialize_buffer& assign(const char*, int) override { return record(4); }
    const std::string& as_str() const override {
        record(5);
        return text;
    }
    bool add_value(const std::string&, const variant&) override { return flag(6); }
    labeled_serialize_buffer* create_group(const std::string&) override { return &record(7); }
    bool has_label(const std::string&) const override { return flag(8); }
    bool has_value(const std::string&) const override { return flag(9); }
    bool has_group(const std::string&) const override { return flag(10); }
    bool is_empty() const override { return flag(11); }
    variant retrieve_value(const std::string&) const override {
        record(12);
        return variant(12);
    }
    const labeled_serialize_buffer* retrieve_group(const std::string&) const override {
        return &record(13);
    }
    labeled_serialize_buffer* retrieve_group(const std::string&) override { return &record(14); }
    labeled_serialize_buffer* create() const override { return &record(15); }
    labeled_serialize_buffer* clone() const override { return &record(16); }

    std::string text = "text";
    mutable int reached = 0;

private:
    recording_tree& record(int number) const {
        reached = number;
        return const_cast<recording_tree&>(*this);
    }
    bool flag(int number) const {
        record(number);
        return true;
    }
};

TEST(SerializationSlots, OfATreeAreInOrder) {
    recording_tree tree;
    labeled_serialize_buffer* const self = &tree;
    const void* const raw = self;
    const std::string label("x");
    const variant value(1);
    typedef labeled_serialize_buffer base;

    EXPECT_EQ(self, (&call<base&, const base&>(raw, 2, tree)));
    EXPECT_EQ(2, tree.reached);
    EXPECT_EQ(self, (&call<base&, const std::string&>(raw, 3, label)));
    EXPECT_EQ(3, tree.reached);
    EXPECT_EQ(self, (&call<base&, const char*, int>(raw, 4, "x", 1)));
    EXPECT_EQ(4, tree.reached);
    EXPECT_EQ(&tree.text, (&call<const std::string&>(raw, 5)));
    EXPECT_EQ(5, tree.reached);
    EXPECT_TRUE((call<bool, const std::string&, const variant&>(raw, 6, label, value)));
    EXPECT_EQ(6, tree.reached);
    EXPECT_EQ(self, (call<base*, const std::string&>(raw, 7, label)));
    EXPECT_EQ(7, tree.reached);
    EXPECT_TRUE((call<bool, const std::string&>(raw, 8, label)));
    EXPECT_EQ(8, tree.reached);
    EXPECT_TRUE((call<bool, const std::string&>(raw, 9, label)));
    EXPECT_EQ(9, tree.reached);
    EXPECT_TRUE((call<bool, const std::string&>(raw, 10, label)));
    EXPECT_EQ(10, tree.reached);
    EXPECT_TRUE(call<bool>(raw, 11));
    EXPECT_EQ(11, tree.reached);
    EXPECT_EQ(12, (call<variant, const std::string&>(raw, 12, label).as_int()));
    EXPECT_EQ(12, tree.reached);
    EXPECT_EQ(self, (call<const base*, const std::string&>(raw, 13, label)));
    EXPECT_EQ(13, tree.reached);
    EXPECT_EQ(self, (call<base*, const std::string&>(raw, 14, label)));
    EXPECT_EQ(14, tree.reached);
    EXPECT_EQ(self, call<base*>(raw, 15));
    EXPECT_EQ(15, tree.reached);
    EXPECT_EQ(self, call<base*>(raw, 16));
    EXPECT_EQ(16, tree.reached);
}

TEST(SerializationSlots, OfATreeAsTextEndWithTheAssignmentOfItsOwnClass) {
    labeled_text_buffer source;
    source.add_value("n", 5);
    labeled_text_buffer target;
    const std::string label("n");
    typedef labeled_serialize_buffer base;

    EXPECT_EQ(&target,
              (&call<labeled_text_buffer&, const labeled_text_buffer&>(&target, 17, source)));
    EXPECT_TRUE(target.retrieve_value("n").type() == typeid(int));
    EXPECT_EQ(&target, (&call<base&, const base&>(&target, 2, source)));
    EXPECT_TRUE(target.retrieve_value("n").type() == typeid(std::string));
    EXPECT_EQ(5, (call<variant, const std::string&>(&target, 12, label).as_int()));
    EXPECT_EQ("1\001n\0011\0015\001", call<const std::string&>(&target, 5));

    // Calls a derived class through that slot.
    struct recording : labeled_text_buffer {
        using labeled_text_buffer::assign;
        labeled_text_buffer& assign(const labeled_text_buffer&) override {
            reached = true;
            return *this;
        }
        bool reached = false;
    } own;
    labeled_text_buffer& through_base = own;
    through_base.assign(source);
    EXPECT_TRUE(own.reached);
}

}  // namespace
