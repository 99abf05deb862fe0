/// @file
/// A folder for the files that a benchmark generates, removed when the program ends.
///
///     static const bench_support::scratch_folder folder;
///     std::ofstream(folder / "input.xml") << ...;
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace bench_support {

class scratch_folder {
public:
    scratch_folder() {
        char name[] = "/tmp/tova_bench_XXXXXX";
        if (::mkdtemp(name) == nullptr)
            std::abort();
        m_path = name;
    }
    ~scratch_folder() {
        if (std::system(("rm -rf '" + m_path + "'").c_str()) != 0)
            std::fprintf(stderr, "could not remove %s\n", m_path.c_str());
    }
    scratch_folder(const scratch_folder&) = delete;
    scratch_folder& operator=(const scratch_folder&) = delete;

    const std::string& path() const { return m_path; }

    /// The path of a file in the folder.
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

}  // namespace bench_support
