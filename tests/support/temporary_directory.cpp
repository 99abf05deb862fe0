#include "support/temporary_directory.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <ftw.h>
#include <iterator>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace test_support {

namespace {

int remove_entry(const char* path, const struct stat*, int, struct FTW*) {
    return ::remove(path);
}

}  // namespace

temporary_directory::temporary_directory() {
    const char* root = std::getenv("TMPDIR");
    std::string pattern = std::string(root != nullptr ? root : "/tmp") + "/tova_test_XXXXXX";
    if (::mkdtemp(&pattern[0]) == nullptr)
        throw std::runtime_error("cannot create a temporary directory at " + pattern);
    m_path = pattern;
}

temporary_directory::~temporary_directory() {
    ::nftw(m_path.c_str(), remove_entry, 16, FTW_DEPTH | FTW_PHYS);
}

std::string temporary_directory::write(const std::string& name, const std::string& bytes) const {
    const std::string full = path(name);
    for (std::size_t slash = full.find('/', m_path.size() + 1); slash != std::string::npos;
         slash = full.find('/', slash + 1))
        ::mkdir(full.substr(0, slash).c_str(), 0700);
    std::ofstream file(full, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return full;
}

std::string read_bytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

}  // namespace test_support
