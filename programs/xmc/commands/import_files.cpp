#include "xmc/commands/import_files.hpp"

#include "support/text_file.hpp"
#include "xmc/model/locale.hpp"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <system_error>

namespace tova_programs::xmc {

namespace {

namespace fs = std::filesystem;

const char* const endings[] = {".po", ".pot", ".xlf", ".xliff", ".xliff2", ".csv"};
const char messages_folder[] = "LC_MESSAGES";

bool has_known_ending(const std::string& path) {
    return std::any_of(std::begin(endings), std::end(endings),
                       [&](const char* each) { return ends_in(path, each); });
}

// Adds the files of a folder, and those of its subfolders unless it is one itself.
void add_folder(const fs::path& folder, bool is_subfolder, std::vector<import_file>& files) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        std::error_code ignored;
        if (fs::is_directory(entry.path(), ignored)) {
            if (!is_subfolder || entry.path().filename() == messages_folder)
                add_folder(entry.path(), true, files);
        } else if (has_known_ending(entry.path().native())) {
            files.push_back({entry.path().native(), is_subfolder});
        }
    }
    if (error)
        throw file_error(folder.native() + ": " + error.message());
}

bool have_same_language(const std::string& a, const std::string& b) {
    const char* const separators = "_-.@";
    return a.substr(0, a.find_first_of(separators)) == b.substr(0, b.find_first_of(separators));
}

}  // namespace

bool ends_in(const std::string& name, const std::string& end) {
    return name.size() >= end.size() &&
           std::equal(end.rbegin(), end.rend(), name.rbegin(),
                      [](char a, char b) { return a == (b >= 'A' && b <= 'Z' ? b + 32 : b); });
}

std::vector<import_file> import_files(const std::vector<std::string>& paths) {
    std::vector<import_file> result;
    for (const std::string& path : paths) {
        std::error_code error;
        if (!fs::is_directory(path, error)) {
            result.push_back({path, false});
            continue;
        }
        std::vector<import_file> inside;
        add_folder(path, false, inside);
        if (inside.empty())
            throw file_error(path + ": has no .po, .pot, .xlf, .xliff, .xliff2 or .csv file");
        std::sort(inside.begin(), inside.end(),
                  [](const import_file& a, const import_file& b) { return a.path < b.path; });
        result.insert(result.end(), inside.begin(), inside.end());
    }
    return result;
}

import_layout layout_of(const import_file& file, const std::string& stated) {
    const fs::path path = fs::absolute(file.path).lexically_normal();
    const std::string stem = path.stem().native();
    fs::path folder = path.parent_path();
    const bool is_in_messages = folder.filename() == messages_folder;
    if (is_in_messages)
        folder = folder.parent_path();
    const std::string name = folder.filename().native();
    const bool is_of_language =
        stated.empty() ? is_in_messages || file.is_in_subfolder : have_same_language(name, stated);
    if (is_usual_locale(name) && is_of_language &&
        normalized_locale(name) != normalized_locale(stem))
        return {stem, name};
    return {file.is_in_subfolder ? name : "", ""};
}

}  // namespace tova_programs::xmc
