// A private directory for the files of one test, removed with its content at the end.
#pragma once

#include <string>

namespace test_support {

class temporary_directory {
public:
    temporary_directory();
    ~temporary_directory();
    temporary_directory(const temporary_directory&) = delete;
    temporary_directory& operator=(const temporary_directory&) = delete;

    const std::string& path() const { return m_path; }

    // The path of an entry below the directory. Creates nothing.
    std::string path(const std::string& name) const { return m_path + "/" + name; }

    // Writes a file below the directory, creates the folders on its path, and returns that path.
    std::string write(const std::string& name, const std::string& bytes) const;

private:
    std::string m_path;
};

// All bytes of a file. If it cannot be opened, the running test fails and the result is empty.
std::string read_bytes(const std::string& path);

}  // namespace test_support
