// A private directory for the files of one test, removed with all it holds.
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

    // Path of an entry below the directory; nothing is made.
    std::string path(const std::string& name) const { return m_path + "/" + name; }

    // Writes a file below the directory, making the folders on the way, and gives its path.
    std::string write(const std::string& name, const std::string& bytes) const;

private:
    std::string m_path;
};

// All bytes of a file; a missing file gives an empty text and fails the running test.
std::string read_bytes(const std::string& path);

}  // namespace test_support
