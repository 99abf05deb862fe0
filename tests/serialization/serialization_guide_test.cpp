// Checks the byte tables of docs/serialization.md. tests/docs runs its code.
#include <tova/serialization/labeled_text_buffer.hpp>
#include <tova/serialization/serialize_binary_buf.hpp>
#include <tova/serialization/serialize_text_buf.hpp>

#include "support/guide.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

using test_support::guide_blocks;
using test_support::lines_of;
using tova::serialization::labeled_text_buffer;
using tova::serialization::serialize_binary_buf;
using tova::serialization::serialize_buffer;
using tova::serialization::serialize_text_buf;

const char guide[] = "docs/serialization.md";

// The bytes of a table. Two spaces separate the bytes of a line from its note.
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

}  // namespace
