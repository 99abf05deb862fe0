/// @file
/// The files of an import, and what their folders say about them.
///
/// Three layouts are usual: `po/de.po`, `po/de/app.po` (or `po/de/LC_MESSAGES/app.po`), and
/// `po/app/de.po`. In the last two the folders name the catalog `app` and the locale `de`.
///
/// Functions without state.
#pragma once

#include <string>
#include <vector>

namespace tova_programs::xmc {

/// A file to import.
struct import_file {
    std::string path;
    bool is_in_subfolder = false;  ///< of a folder that was named
};

/// The files named, and those in the folders named and in their subfolders, in the order of their
/// names. Raises `file_error` for a folder without any.
std::vector<import_file> import_files(const std::vector<std::string>& paths);

/// Whether a name ends in `end`, which is in lower case. Letter case of the name does not count.
bool ends_in(const std::string& name, const std::string& end);

/// What the folders of a file say. Empty: nothing.
struct import_layout {
    std::string catalog;
    std::string locale;
};

/// The layout of a file in the language `stated`. A folder names the locale if its name is a locale
/// of that language and the file is not named after it. If the file states no language, the folder
/// must be a subfolder, or `LC_MESSAGES` must be below it.
import_layout layout_of(const import_file& file, const std::string& stated);

}  // namespace tova_programs::xmc
