#include "xmc/model/files.hpp"

#include "support/text_file.hpp"

#include <algorithm>
#include <filesystem>
#include <set>

namespace tova_programs::xmc {

namespace {

namespace fs = std::filesystem;

void add_folder(const fs::path& folder, std::vector<std::string>& files) {
    std::vector<fs::path> entries;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(folder, ignored))
        entries.push_back(entry.path());
    std::sort(entries.begin(), entries.end());
    for (const fs::path& entry : entries) {
        // Links between folders may form a cycle, which ends where the path is too long.
        if (fs::is_directory(entry, ignored))
            add_folder(entry, files);
        else if (fs::exists(entry, ignored) && has_catalog_extension(entry.native()))
            files.push_back(entry.native());
    }
}

}  // namespace

void create_folder_of(const std::string& path) {
    const fs::path folder = fs::path(path).parent_path();
    std::error_code error;
    if (!folder.empty() && !fs::is_directory(folder, error))
        fs::create_directories(folder, error);
    if (error)
        throw file_error(folder.native() + ": " + error.message());
}

bool has_catalog_extension(std::string_view path) {
    if (path.size() < 4)
        return false;
    std::string end(path.substr(path.size() - 4));
    for (char& c : end)
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return end == ".xmc" || end == ".xml";
}

std::vector<std::string> catalog_files(const std::vector<std::string>& paths) {
    std::vector<std::string> failures;
    std::vector<std::string> files = catalog_files(paths, failures);
    if (!failures.empty())
        throw file_error(failures[0]);
    return files;
}

std::vector<std::string> catalog_files(const std::vector<std::string>& paths,
                                       std::vector<std::string>& failures) {
    std::vector<std::string> files;
    for (const std::string& path : paths) {
        std::error_code error;
        if (fs::is_directory(path, error)) {
            const std::size_t count = files.size();
            add_folder(path, files);
            // Most likely the wrong folder, and nothing to say about it would look like success.
            if (files.size() == count)
                failures.push_back("no catalog below " + path);
        } else if (fs::exists(path, error)) {
            files.push_back(path);
        } else {
            failures.push_back(path + ": No such file or directory");
        }
    }
    std::set<std::string> seen;
    files.erase(std::remove_if(files.begin(), files.end(),
                               [&seen](const std::string& file) {
                                   return !seen.insert(canonical_path(file)).second &&
                                          !fs::is_symlink(file);
                               }),
                files.end());
    return files;
}

std::vector<std::string> catalog_files_below(const std::string& folder) {
    std::vector<std::string> files;
    add_folder(folder, files);
    return files;
}

std::string included_path(std::string_view includer, std::string_view name) {
    // Separators and drive letters of all systems are recognized, as the loader does.
    if (name[0] == '/' || name[0] == '\\' || (name.size() >= 3 && name[1] == ':'))
        return std::string(name);
    const auto separator = includer.find_last_of("\\/");
    if (separator == includer.npos)
        return std::string(name);
    return std::string(includer.substr(0, separator + 1)) += name;
}

std::string canonical_path(const std::string& path) {
    std::error_code error;
    const fs::path result = fs::weakly_canonical(path, error);
    return error ? path : result.native();
}

}  // namespace tova_programs::xmc
