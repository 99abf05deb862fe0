// Changes the working directory for the duration of a test.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <unistd.h>

namespace test_support {

class working_directory {
public:
    explicit working_directory(const std::string& path) {
        char before[4096];
        if (getcwd(before, sizeof before) != nullptr)
            m_before = before;
        EXPECT_EQ(0, chdir(path.c_str()));
    }
    ~working_directory() { EXPECT_EQ(0, chdir(m_before.c_str())); }
    working_directory(const working_directory&) = delete;
    working_directory& operator=(const working_directory&) = delete;

private:
    std::string m_before;
};

}  // namespace test_support
