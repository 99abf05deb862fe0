/// @file
/// A directory for the fuzz targets that work on files. It is in memory if the system supports
/// that.
#pragma once

#include "require.hpp"

#include <dirent.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace fuzz_support {

class scratch_tree {
public:
    scratch_tree() {
        m_path = ::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
        m_path += "/tova_fuzz_XXXXXX";
        require(::mkdtemp(&m_path[0]) != nullptr);
    }
    ~scratch_tree() { ::nftw(m_path.c_str(), remove_entry, 16, FTW_DEPTH | FTW_PHYS); }
    scratch_tree(const scratch_tree&) = delete;
    scratch_tree& operator=(const scratch_tree&) = delete;

    const std::string& path() const { return m_path; }
    std::string path(const std::string& name) const { return m_path + "/" + name; }

    void write(const std::string& name, const std::string& bytes) const {
        std::ofstream(path(name), std::ios::binary) << bytes;
    }
    void make_directory(const std::string& name) const { ::mkdir(path(name).c_str(), 0755); }

    void clear() const {
        ::nftw(m_path.c_str(), remove_entry, 16, FTW_DEPTH | FTW_PHYS);
        require(::mkdir(m_path.c_str(), 0755) == 0);
    }

private:
    static int remove_entry(const char* path, const struct stat*, int, FTW*) {
        return ::remove(path);
    }

    std::string m_path;
};

/// The paths of the entries of a directory, in the order of the file system.
inline std::vector<std::string> entries_of(const std::string& directory) {
    std::vector<std::string> result;
    DIR* const open = ::opendir(directory.c_str());
    if (open == nullptr)
        return result;
    while (const dirent* entry = ::readdir(open)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..")
            result.push_back(directory + "/" + name);
    }
    ::closedir(open);
    return result;
}

}  // namespace fuzz_support
