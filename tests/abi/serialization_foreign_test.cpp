// The serialize buffers as seen by a program without the headers of the library. README.md says
// what this checks. The program also derives from the buffers, and the library calls its slots.
#include "abi/foreign/abilities.hpp"
#include "abi/foreign/nil.hpp"
#include "abi/foreign/pointers.hpp"
#include "abi/foreign/variant.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <utility>

namespace TOVA_2_18 {

namespace serialization {

class serialize_buffer
    : public generic::abilities::create_ability,
      public generic::abilities::clone_ability,
      public generic::abilities::reference_count_pointer_ability<serialize_buffer> {
public:
    ~serialize_buffer() throw() override;
    virtual serialize_buffer& assign(const serialize_buffer&) = 0;
    virtual serialize_buffer& assign(const std::string&) = 0;
    virtual serialize_buffer& assign(const char*, int) = 0;
    virtual const std::string& as_str() const = 0;
    virtual void append_int8(const signed char&) = 0;
    virtual void append_int16(const short&) = 0;
    virtual void append_int32(const int&) = 0;
    virtual void append_int64(const long&) = 0;
    virtual void append_uint8(const unsigned char&) = 0;
    virtual void append_uint16(const unsigned short&) = 0;
    virtual void append_uint32(const unsigned int&) = 0;
    virtual void append_uint64(const unsigned long&) = 0;
    virtual void append_float(const float&, const unsigned int& precision) = 0;
    virtual void append_double(const double&, const unsigned int& precision) = 0;
    virtual void append_string(const std::string&) = 0;
    virtual void append_buffer(const serialize_buffer&) = 0;
    virtual signed char read_int8() const = 0;
    virtual short read_int16() const = 0;
    virtual int read_int32() const = 0;
    virtual long read_int64() const = 0;
    virtual unsigned char read_uint8() const = 0;
    virtual unsigned short read_uint16() const = 0;
    virtual unsigned int read_uint32() const = 0;
    virtual unsigned long read_uint64() const = 0;
    virtual float read_float() const = 0;
    virtual double read_double() const = 0;
    virtual std::string read_string() const = 0;
    virtual serialize_buffer* read_buffer() const = 0;
    virtual bool at_end() const = 0;
    virtual void reset_read() const = 0;
    virtual serialize_buffer* create() const = 0;
    virtual serialize_buffer* clone() const = 0;
};

// The two encodings differ only in name, but a template would have different symbols.
class serialize_text_buf : public serialize_buffer {
public:
    serialize_text_buf();
    serialize_text_buf(const std::string& content);
    serialize_text_buf(const serialize_buffer& other);
    serialize_text_buf(const serialize_text_buf& other);
    ~serialize_text_buf() throw() override;
    serialize_buffer& assign(const serialize_buffer&) override;
    serialize_buffer& assign(const std::string&) override;
    serialize_buffer& assign(const char*, int) override;
    const std::string& as_str() const override;
    void append_int8(const signed char&) override;
    void append_int16(const short&) override;
    void append_int32(const int&) override;
    void append_int64(const long&) override;
    void append_uint8(const unsigned char&) override;
    void append_uint16(const unsigned short&) override;
    void append_uint32(const unsigned int&) override;
    void append_uint64(const unsigned long&) override;
    void append_float(const float&, const unsigned int& precision) override;
    void append_double(const double&, const unsigned int& precision) override;
    void append_string(const std::string&) override;
    void append_buffer(const serialize_buffer&) override;
    signed char read_int8() const override;
    short read_int16() const override;
    int read_int32() const override;
    long read_int64() const override;
    unsigned char read_uint8() const override;
    unsigned short read_uint16() const override;
    unsigned int read_uint32() const override;
    unsigned long read_uint64() const override;
    float read_float() const override;
    double read_double() const override;
    std::string read_string() const override;
    serialize_buffer* read_buffer() const override;
    bool at_end() const override;
    void reset_read() const override;
    serialize_buffer* create() const override;
    serialize_buffer* clone() const override;

    std::string text;
    mutable std::size_t read_position;
};

class serialize_binary_buf : public serialize_buffer {
public:
    serialize_binary_buf();
    serialize_binary_buf(const std::string& content);
    serialize_binary_buf(const serialize_buffer& other);
    serialize_binary_buf(const serialize_binary_buf& other);
    ~serialize_binary_buf() throw() override;
    serialize_buffer& assign(const serialize_buffer&) override;
    serialize_buffer& assign(const std::string&) override;
    serialize_buffer& assign(const char*, int) override;
    const std::string& as_str() const override;
    void append_int8(const signed char&) override;
    void append_int16(const short&) override;
    void append_int32(const int&) override;
    void append_int64(const long&) override;
    void append_uint8(const unsigned char&) override;
    void append_uint16(const unsigned short&) override;
    void append_uint32(const unsigned int&) override;
    void append_uint64(const unsigned long&) override;
    void append_float(const float&, const unsigned int& precision) override;
    void append_double(const double&, const unsigned int& precision) override;
    void append_string(const std::string&) override;
    void append_buffer(const serialize_buffer&) override;
    signed char read_int8() const override;
    short read_int16() const override;
    int read_int32() const override;
    long read_int64() const override;
    unsigned char read_uint8() const override;
    unsigned short read_uint16() const override;
    unsigned int read_uint32() const override;
    unsigned long read_uint64() const override;
    float read_float() const override;
    double read_double() const override;
    std::string read_string() const override;
    serialize_buffer* read_buffer() const override;
    bool at_end() const override;
    void reset_read() const override;
    serialize_buffer* create() const override;
    serialize_buffer* clone() const override;

    std::string text;
    mutable std::size_t read_position;
};

class labeled_serialize_buffer
    : public generic::abilities::create_ability,
      public generic::abilities::clone_ability,
      public generic::abilities::reference_count_pointer_ability<labeled_serialize_buffer> {
public:
    ~labeled_serialize_buffer() throw() override;
    virtual labeled_serialize_buffer& assign(const labeled_serialize_buffer&) = 0;
    virtual labeled_serialize_buffer& assign(const std::string&) = 0;
    virtual labeled_serialize_buffer& assign(const char*, int) = 0;
    virtual const std::string& as_str() const = 0;
    virtual bool add_value(const std::string& label, const types::variant& value) = 0;
    virtual labeled_serialize_buffer* create_group(const std::string& label) = 0;
    virtual bool has_label(const std::string&) const = 0;
    virtual bool has_value(const std::string&) const = 0;
    virtual bool has_group(const std::string&) const = 0;
    virtual bool is_empty() const = 0;
    virtual types::variant retrieve_value(const std::string&) const = 0;
    virtual const labeled_serialize_buffer* retrieve_group(const std::string&) const = 0;
    virtual labeled_serialize_buffer* retrieve_group(const std::string&) = 0;
    virtual labeled_serialize_buffer* create() const = 0;
    virtual labeled_serialize_buffer* clone() const = 0;
};

class labeled_text_buffer : public labeled_serialize_buffer {
public:
    labeled_text_buffer();
    labeled_text_buffer(const labeled_text_buffer& other);
    labeled_text_buffer(const std::string& content);
    ~labeled_text_buffer() throw() override;
    labeled_serialize_buffer& assign(const labeled_serialize_buffer&) override;
    labeled_serialize_buffer& assign(const std::string&) override;
    labeled_serialize_buffer& assign(const char*, int) override;
    const std::string& as_str() const override;
    bool add_value(const std::string& label, const types::variant& value) override;
    labeled_serialize_buffer* create_group(const std::string& label) override;
    bool has_label(const std::string&) const override;
    bool has_value(const std::string&) const override;
    bool has_group(const std::string&) const override;
    bool is_empty() const override;
    types::variant retrieve_value(const std::string&) const override;
    const labeled_serialize_buffer* retrieve_group(const std::string&) const override;
    labeled_serialize_buffer* retrieve_group(const std::string&) override;
    labeled_serialize_buffer* create() const override;
    labeled_serialize_buffer* clone() const override;
    virtual labeled_text_buffer& assign(const labeled_text_buffer&);
    void overlay(const labeled_text_buffer&);

    std::map<std::string, std::pair<labeled_text_buffer, types::variant>> entries;
    mutable serialize_text_buf text;
};

}  // namespace serialization
}  // namespace TOVA_2_18

namespace {

using namespace TOVA_2_18::serialization;
using TOVA_2_18::memory::pointers::rc_pointer;
using TOVA_2_18::types::nil;
using TOVA_2_18::types::variant;

template <std::size_t Size>
std::string bytes(const char (&literal)[Size]) {
    return std::string(literal, Size - 1);
}

static_assert(sizeof(serialize_text_buf) == 64 && sizeof(labeled_text_buffer) == 136, "");

template <typename Buffer>
class ForeignSequence : public ::testing::Test {};
typedef ::testing::Types<serialize_text_buf, serialize_binary_buf> encodings;
TYPED_TEST_SUITE(ForeignSequence, encodings, );

TYPED_TEST(ForeignSequence, WritesAndReadsEachTypeThroughTheSlots) {
    TypeParam object;
    serialize_buffer& buffer = object;
    buffer.append_int8(-1);
    buffer.append_int16(-2);
    buffer.append_int32(-3);
    buffer.append_int64(-4);
    buffer.append_uint8(251);
    buffer.append_uint16(65530);
    buffer.append_uint32(4294967289u);
    buffer.append_uint64(18446744073709551608ul);
    buffer.append_float(0.5f, 6);
    buffer.append_double(-0.25, 6);
    buffer.append_string(bytes("a\001b"));
    buffer.append_buffer(serialize_text_buf(bytes("7\001")));
    buffer.append_int8(1);
    const std::string content = buffer.as_str();
    EXPECT_EQ(content, object.text);

    EXPECT_EQ(-1, buffer.read_int8());
    EXPECT_EQ(-2, buffer.read_int16());
    EXPECT_EQ(-3, buffer.read_int32());
    EXPECT_EQ(-4, buffer.read_int64());
    EXPECT_EQ(251, buffer.read_uint8());
    EXPECT_EQ(65530, buffer.read_uint16());
    EXPECT_EQ(4294967289u, buffer.read_uint32());
    EXPECT_EQ(18446744073709551608ul, buffer.read_uint64());
    EXPECT_EQ(0.5f, buffer.read_float());
    EXPECT_EQ(-0.25, buffer.read_double());
    EXPECT_EQ(bytes("a\001b"), buffer.read_string());
    const rc_pointer<serialize_buffer> nested(buffer.read_buffer());
    EXPECT_NE(nullptr, dynamic_cast<TypeParam*>(nested.operator->()));
    EXPECT_EQ(bytes("7\001"), nested->as_str());
    EXPECT_TRUE(nested->allocated);
    EXPECT_EQ(1u, nested->count);
    EXPECT_FALSE(buffer.at_end());
    EXPECT_EQ(1, buffer.read_int8());
    EXPECT_TRUE(buffer.at_end());
    EXPECT_EQ(content.size(), object.read_position);
    buffer.reset_read();
    EXPECT_EQ(0u, object.read_position);
    EXPECT_EQ(content, buffer.as_str());
}

TYPED_TEST(ForeignSequence, CopiesPositionAndStateAsEachConstructorPromises) {
    TypeParam held(bytes("1\0012\001"));
    held.read_int16();
    EXPECT_EQ(2u, held.read_position);
    held.count = 3;
    held.allocated = true;

    const TypeParam copy(held);
    EXPECT_EQ(2u, copy.read_position);
    EXPECT_EQ(3u, copy.count);
    EXPECT_TRUE(copy.allocated);
    const TypeParam converted(static_cast<const serialize_buffer&>(held));
    EXPECT_EQ(0u, converted.read_position);
    EXPECT_EQ(3u, converted.count);
    EXPECT_TRUE(converted.allocated);

    held.allocated = false;
    const std::unique_ptr<serialize_buffer> clone(held.clone());
    EXPECT_EQ(3u, clone->count);
    EXPECT_TRUE(clone->allocated);
    EXPECT_EQ(2u, static_cast<TypeParam&>(*clone).read_position);
    const std::unique_ptr<serialize_buffer> created(held.create());
    EXPECT_EQ(0u, created->count);
    EXPECT_TRUE(created->allocated);
    EXPECT_EQ("", created->as_str());

    EXPECT_EQ(&held, &held.assign("xyz", 2));
    EXPECT_EQ("xy", held.text);
    held.assign(static_cast<const serialize_buffer&>(held));
    EXPECT_EQ("xy", held.text);
    EXPECT_EQ(2u, held.read_position);
}

TEST(ForeignSequence, ReadsFromAPositionStoredByThisProgram) {
    serialize_text_buf text(bytes("5\0016\001"));
    text.read_position = 2;
    EXPECT_EQ(6, text.read_int32());
    text.read_position = std::string::npos;
    EXPECT_TRUE(text.at_end());
    EXPECT_EQ(0u, text.read_uint64());
    EXPECT_EQ("", text.read_string());
    EXPECT_EQ(std::string::npos, text.read_position);
    text.read_position = 5;
    EXPECT_THROW(text.read_double(), std::out_of_range);
    EXPECT_EQ(std::string::npos, text.read_position);

    serialize_binary_buf binary(bytes("\x01\x02\x03"));
    binary.read_position = 2;
    EXPECT_EQ(3u, binary.read_uint64());
    EXPECT_EQ(10u, binary.read_position);
}

// An encoding of this program: each value becomes one letter that names its type.
class letters : public serialize_buffer {
public:
    explicit letters(const std::string& text = std::string()) : m_text(text) {}
    ~letters() throw() override { ++s_destroyed; }
    serialize_buffer& assign(const serialize_buffer& other) override {
        return assign(other.as_str());
    }
    serialize_buffer& assign(const std::string& text) override {
        m_text = text;
        return *this;
    }
    serialize_buffer& assign(const char*, int) override { return *this; }
    const std::string& as_str() const override { return m_text; }
    void append_int8(const signed char&) override { m_text += 'a'; }
    void append_int16(const short&) override { m_text += 'b'; }
    void append_int32(const int&) override { m_text += 'c'; }
    void append_int64(const long&) override { m_text += 'd'; }
    void append_uint8(const unsigned char&) override { m_text += 'e'; }
    void append_uint16(const unsigned short&) override { m_text += 'f'; }
    void append_uint32(const unsigned int&) override { m_text += 'g'; }
    void append_uint64(const unsigned long&) override { m_text += 'h'; }
    void append_float(const float&, const unsigned int&) override { m_text += 'i'; }
    void append_double(const double&, const unsigned int&) override { m_text += 'j'; }
    void append_string(const std::string&) override { m_text += 'k'; }
    void append_buffer(const serialize_buffer& other) override { m_text += other.as_str(); }
    signed char read_int8() const override { return 0; }
    short read_int16() const override { return 0; }
    int read_int32() const override { return 0; }
    long read_int64() const override { return 0; }
    unsigned char read_uint8() const override { return 0; }
    unsigned short read_uint16() const override { return 0; }
    unsigned int read_uint32() const override { return 0; }
    unsigned long read_uint64() const override { return 0; }
    float read_float() const override { return 0; }
    double read_double() const override { return 0; }
    std::string read_string() const override { return std::string(); }
    serialize_buffer* read_buffer() const override { return nullptr; }
    bool at_end() const override { return true; }
    void reset_read() const override {}
    serialize_buffer* create() const override { return marked(new letters); }
    serialize_buffer* clone() const override { return marked(new letters(m_text)); }

    static int s_destroyed;

private:
    static serialize_buffer* marked(serialize_buffer* made) {
        made->allocated = true;
        return made;
    }

    std::string m_text;
};

int letters::s_destroyed = 0;

TEST(ForeignSequence, OfThisProgramIsNestedAndOwnedByTheLibrary) {
    letters own("xyz");
    serialize_text_buf text;
    text.append_buffer(own);
    EXPECT_EQ(bytes("3\001xyz\001"), text.as_str());
    serialize_binary_buf binary;
    binary.append_buffer(own);
    EXPECT_EQ(bytes("\x03\0\0\0xyz"), binary.as_str());
    text.assign(static_cast<const serialize_buffer&>(own));
    EXPECT_EQ("xyz", text.as_str());
    EXPECT_EQ("xyz", serialize_text_buf(static_cast<const serialize_buffer&>(own)).as_str());
    own.append_buffer(binary);
    EXPECT_EQ(bytes("xyz\x03\0\0\0xyz"), own.as_str());

    letters::s_destroyed = 0;
    {
        const rc_pointer<serialize_buffer> first(own.clone());
        const rc_pointer<serialize_buffer> second(first);
        EXPECT_EQ(2u, first->count);
    }
    EXPECT_EQ(1, letters::s_destroyed);
}

// Classes derived from an encoding. The library calls `at_end` and `read_int32` through their
// slots.
class stopping_text : public serialize_text_buf {
public:
    explicit stopping_text(const std::string& content) : serialize_text_buf(content) {}
    int read_int32() const override { return serialize_text_buf::read_int32() - 1; }
};

class stopping_binary : public serialize_binary_buf {
public:
    explicit stopping_binary(const std::string& content) : serialize_binary_buf(content) {}
    bool at_end() const override { return read_position >= 4; }
};

TEST(ForeignSequence, CallsTheSlotsOfADerivedClass) {
    const stopping_text text(bytes("3\001abc\001"));
    EXPECT_EQ("ab", text.read_string());
    const stopping_binary binary(bytes("\x01\0\0\0x"));
    EXPECT_EQ("", binary.read_string());
    EXPECT_EQ(4u, binary.read_position);
    EXPECT_EQ(nullptr, binary.read_buffer());
    EXPECT_EQ(0, binary.read_int8());
    EXPECT_EQ(4u, binary.read_position);
}

TEST(ForeignTree, WritesAndReadsThroughTheSlots) {
    labeled_text_buffer object;
    labeled_serialize_buffer& tree = object;
    EXPECT_TRUE(tree.is_empty());
    EXPECT_FALSE(tree.add_value(" a ", 1));
    EXPECT_TRUE(tree.add_value("a", 2));
    labeled_serialize_buffer* const group = tree.create_group("g");
    group->add_value("b", "x");
    EXPECT_EQ("1\001a\0011\0012\0012\001g \0018\0011\001b\0011\001x\001\001", tree.as_str());
    EXPECT_EQ(tree.as_str(), object.text.text);

    const labeled_serialize_buffer& constant = tree;
    EXPECT_EQ(group, tree.retrieve_group("g"));
    EXPECT_EQ(group, constant.retrieve_group("g"));
    EXPECT_EQ(group, &object.entries.find("g")->second.first);
    EXPECT_TRUE(object.entries.find("g")->second.second.equal(nil));
    EXPECT_TRUE(tree.has_label("a") && tree.has_value("a") && tree.has_group("g"));
    EXPECT_FALSE(tree.has_label(" a ") || tree.has_value("g") || tree.has_group("a"));
    EXPECT_EQ(2, tree.retrieve_value("a").as_int());
    EXPECT_TRUE(tree.retrieve_value("b").equal(nil));

    const rc_pointer<labeled_serialize_buffer> clone(tree.clone());
    EXPECT_TRUE(clone->retrieve_value("a").type() == typeid(int));
    const rc_pointer<labeled_serialize_buffer> read(tree.create());
    EXPECT_EQ(read.operator->(), &read->assign(tree));
    EXPECT_TRUE(read->retrieve_value("a").type() == typeid(std::string));
    EXPECT_EQ("2", read->retrieve_value("a").as_ustring());
    EXPECT_EQ(tree.as_str(), read->as_str());
    read->assign(tree.as_str().data(), 8);
    EXPECT_FALSE(read->has_label("g"));
    read->assign(std::string());
    EXPECT_TRUE(read->is_empty());
}

TEST(ForeignTree, IsCopiedAssignedAndOverlaidByItsOwnClass) {
    labeled_text_buffer tree(bytes("1\001a\0011\0015\001"));
    tree.count = 2;
    tree.allocated = true;
    labeled_text_buffer copy(tree);
    EXPECT_EQ(0u, copy.count);
    EXPECT_FALSE(copy.allocated);
    EXPECT_EQ("5", copy.entries.find("a")->second.second.as_ustring());

    labeled_text_buffer other;
    other.add_value("n", 1.5);
    EXPECT_EQ(&copy, &copy.assign(other));
    EXPECT_TRUE(copy.retrieve_value("n").type() == typeid(double));
    copy.overlay(tree);
    EXPECT_EQ("1\001a\0011\0015\0011\001n\0013\0011.5\001", copy.as_str());
}

TEST(ForeignTree, ChangesItsTextOnlyAsDocumented) {
    const std::string content = bytes("1\001a\0011\0015\001");
    labeled_text_buffer tree(content);
    EXPECT_EQ(content, tree.text.text);
    EXPECT_EQ(content.size(), tree.text.read_position);

    tree.text.read_position = 3;
    tree.add_value("b", 6);
    EXPECT_EQ(content, tree.text.text);
    EXPECT_EQ(content + bytes("1\001b\0011\0016\001"), tree.as_str());
    EXPECT_EQ(3u, tree.text.read_position);

    const labeled_text_buffer copy(tree);
    EXPECT_EQ(tree.text.text, copy.text.text);
    EXPECT_EQ(3u, copy.text.read_position);

    labeled_text_buffer outer;
    labeled_serialize_buffer* const group = outer.create_group("g");
    group->add_value("a", 5);
    group->as_str();
    const labeled_text_buffer copied(outer);
    EXPECT_EQ(content, copied.entries.find("g")->second.first.text.text);

    labeled_text_buffer other;
    tree.assign(other);
    EXPECT_TRUE(tree.entries.empty());
    EXPECT_EQ(copy.text.text, tree.text.text);
    EXPECT_EQ(3u, tree.text.read_position);
    tree.overlay(copy);
    EXPECT_EQ(3u, tree.text.read_position);

    // Nothing is read after an empty label.
    tree.assign(bytes("0\001\0011\001a\001"));
    EXPECT_TRUE(tree.entries.empty());
    EXPECT_EQ(3u, tree.text.read_position);
}

// Logs the slots through which the library calls a derived class.
class noting_tree : public labeled_text_buffer {
public:
    using labeled_text_buffer::assign;

    labeled_serialize_buffer& assign(const std::string& content) override {
        calls += "s";
        return labeled_text_buffer::assign(content);
    }
    bool add_value(const std::string& label, const variant& value) override {
        calls += "v";
        return labeled_text_buffer::add_value(label, value);
    }
    labeled_serialize_buffer* create_group(const std::string& label) override {
        calls += "g";
        return labeled_text_buffer::create_group(label);
    }
    labeled_text_buffer& assign(const labeled_text_buffer& other) override {
        calls += "t";
        return labeled_text_buffer::assign(other);
    }

    std::string calls;
};

TEST(ForeignTree, CallsTheSlotsOfADerivedClass) {
    noting_tree noting;
    labeled_serialize_buffer& base = noting;
    const labeled_text_buffer source(
        bytes("1\001a\0011\0015\0012\001g \0018\0011\001b\0011\001x\001\001"));
    base.assign(source);
    EXPECT_EQ("svg", noting.calls);
    noting.calls.clear();
    base.assign(source.text.text.data(), 8);
    EXPECT_EQ("sv", noting.calls);
    noting.calls.clear();
    static_cast<labeled_text_buffer&>(noting).assign(source);
    EXPECT_EQ("t", noting.calls);
}

// A tree of this program. The library needs only its text.
class fixed_tree : public labeled_serialize_buffer {
public:
    labeled_serialize_buffer& assign(const labeled_serialize_buffer& other) override {
        return assign(other.as_str());
    }
    labeled_serialize_buffer& assign(const std::string& text) override {
        m_text = text;
        return *this;
    }
    labeled_serialize_buffer& assign(const char*, int) override { return *this; }
    const std::string& as_str() const override { return m_text; }
    bool add_value(const std::string&, const variant&) override { return false; }
    labeled_serialize_buffer* create_group(const std::string&) override { return nullptr; }
    bool has_label(const std::string&) const override { return false; }
    bool has_value(const std::string&) const override { return false; }
    bool has_group(const std::string&) const override { return false; }
    bool is_empty() const override { return false; }
    variant retrieve_value(const std::string&) const override { return variant(); }
    const labeled_serialize_buffer* retrieve_group(const std::string&) const override {
        return nullptr;
    }
    labeled_serialize_buffer* retrieve_group(const std::string&) override { return nullptr; }
    labeled_serialize_buffer* create() const override { return nullptr; }
    labeled_serialize_buffer* clone() const override { return nullptr; }

private:
    std::string m_text;
};

TEST(ForeignTree, OfThisProgramIsReadByTheLibrary) {
    fixed_tree own;
    own.assign(bytes("1\001a\0011\0015\001"));
    labeled_text_buffer tree;
    tree.assign(static_cast<const labeled_serialize_buffer&>(own));
    EXPECT_EQ("5", tree.retrieve_value("a").as_ustring());
    tree.add_value("b", std::string("6"));
    own.assign(static_cast<const labeled_serialize_buffer&>(tree));
    EXPECT_EQ("1\001a\0011\0015\0011\001b\0011\0016\001", own.as_str());
}

}  // namespace
