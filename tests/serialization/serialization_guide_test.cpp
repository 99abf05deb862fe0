// Checks the byte tables of docs/serialization.md and compiles and runs its code.
#include <tova/serialization/labeled_text_buffer.hpp>
#include <tova/serialization/serialize_binary_buf.hpp>
#include <tova/serialization/serialize_text_buf.hpp>

#include "support/guide.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

using test_support::guide_blocks;
using test_support::lines_of;
using tova::serialization::labeled_serialize_buffer;
using tova::serialization::labeled_text_buffer;
using tova::serialization::serialize_binary_buf;
using tova::serialization::serialize_buffer;
using tova::serialization::serialize_text_buf;

const char guide[] = "docs/serialization.md";

// The bytes of a table. Two spaces separate the bytes of a line from its remark.
std::string bytes_of(const std::string& table) {
    std::string bytes;
    for (const auto& line : lines_of(table)) {
        std::istringstream pairs(line.substr(0, line.find("  ")));
        for (std::string pair; pairs >> pair;)
            bytes += static_cast<char>(std::strtol(pair.c_str(), nullptr, 16));
    }
    return bytes;
}

void write_record(serialize_buffer& buffer) {
    buffer.append_int32(5);
    buffer.append_string("ab");
    buffer.append_double(1.5, 6);
}

serialize_text_buf text_with_nested_buffers() {
    serialize_text_buf inner;
    inner.append_uint8(7);
    serialize_binary_buf binary;
    binary.append_uint16(258);
    serialize_text_buf outer;
    outer.append_buffer(inner);
    outer.append_buffer(binary);
    return outer;
}

std::map<std::string, std::string> examples() {
    std::map<std::string, std::string> written;

    serialize_text_buf text;
    write_record(text);
    written["text-record"] = text.as_str();

    serialize_text_buf strings;
    strings.append_int8(-128);
    strings.append_string("");
    strings.append_string("a\001b");
    written["text-strings"] = strings.as_str();

    written["text-nested"] = text_with_nested_buffers().as_str();

    serialize_binary_buf binary;
    write_record(binary);
    written["binary-record"] = binary.as_str();

    serialize_binary_buf one;
    one.append_int8(1);
    serialize_binary_buf types;
    types.append_int8(1);
    types.append_uint8(1);
    types.append_int16(1);
    types.append_uint16(1);
    types.append_int32(1);
    types.append_uint32(1);
    types.append_int64(1);
    types.append_uint64(1);
    types.append_float(1, 6);
    types.append_double(1, 6);
    types.append_string("x");
    types.append_buffer(one);
    written["binary-types"] = types.as_str();

    labeled_text_buffer tree;
    tree.add_value("a", 1);
    tree.create_group("g")->add_value("b", "x");
    written["labeled-tree"] = tree.as_str();

    labeled_text_buffer cases;
    cases.add_value("b", 2);
    cases.create_group("b")->add_value("k", tova::types::variant());
    cases.create_group("e");
    written["labeled-cases"] = cases.as_str();
    return written;
}

TEST(SerializationGuide, ShowsTheBytesThatAreWritten) {
    const auto written = examples();
    std::map<std::string, std::string> shown;
    for (const auto& block : guide_blocks(guide, "bytes"))
        shown[block.detail] = bytes_of(block.text);
    EXPECT_EQ(written, shown);
    EXPECT_EQ(7u, shown.size());
}

TEST(SerializationGuide, ShowsCodeThatRuns) {
    serialize_text_buf buffer;
    buffer.append_int32(5);
    buffer.append_string("ab");
    buffer.append_double(1.5, 6);

    const serialize_text_buf received(buffer.as_str());
    const int number = received.read_int32();
    const std::string name = received.read_string();
    const double share = received.read_double();
    EXPECT_EQ(5, number);
    EXPECT_EQ("ab", name);
    EXPECT_EQ(1.5, share);

    const serialize_text_buf nested = text_with_nested_buffers();
    const std::unique_ptr<serialize_buffer> first(nested.read_buffer());
    const std::unique_ptr<serialize_buffer> second(nested.read_buffer());
    const int seven = first->read_uint8();
    const int word = serialize_binary_buf(second->as_str()).read_uint16();
    EXPECT_EQ(7, seven);
    EXPECT_EQ(258, word);

    labeled_text_buffer tree;
    tree.add_value("a", 1);
    labeled_serialize_buffer* const group = tree.create_group("g");
    group->add_value("b", "x");
    const labeled_text_buffer loaded(tree.as_str());
    const tova::types::variant value = loaded.retrieve_value("a");
    const bool is_text = value.type() == typeid(std::string);
    const int one = value.as_int();
    EXPECT_TRUE(is_text);
    EXPECT_EQ(1, one);
}

TEST(SerializationGuide, ShowsTheCodeOfThisTest) {
    EXPECT_EQ(4u, guide_blocks(guide, "cpp").size());
    test_support::expect_code_of_guide(guide, "tests/serialization/serialization_guide_test.cpp",
                                       "ShowsCodeThatRuns");
}

}  // namespace
