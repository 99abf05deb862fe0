// Checks shared by the tests of several buffers.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <stdexcept>
#include <string>

namespace test_support {

// A literal with exactly the bytes shown, including embedded zeros. The separator of the text
// encoding is written \001.
template <std::size_t Size>
std::string bytes(const char (&literal)[Size]) {
    return std::string(literal, Size - 1);
}

// Checks that `assign` rejects null pointers with a length and negative lengths, and then changes
// nothing.
template <typename Buffer>
void expect_invalid_pointers_are_refused(Buffer& buffer) {
    const std::string before = buffer.as_str();
    for (int length : {1, -1}) {
        SCOPED_TRACE(length);
        try {
            buffer.assign(nullptr, length);
            ADD_FAILURE() << "nothing raised";
        } catch (const std::logic_error& error) {
            EXPECT_STREQ("basic_string::_M_construct null not valid", error.what());
        }
    }
    EXPECT_THROW(buffer.assign("abc", -1), std::length_error);
    EXPECT_EQ(before, buffer.as_str());
}

}  // namespace test_support
