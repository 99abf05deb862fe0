#include "i18n/catalog_loading.hpp"

#include <tova/i18n/_private/xmc_file_loader.hpp>
#include <tova/strings/case.hpp>
#include <tova/system/directories.hpp>
#include <tova/system/io.hpp>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

using _private::xmc_file_loader;
using strings::ustring8;
using result_type = catalog_loading::result_type;

// Which files a call loads. Here a path is only tested for its kind; whether a file can be read is
// for the loader to find out. A socket counts as a file. What is neither a file nor a directory,
// such as a link that leads nowhere, is skipped in a directory and is an error anywhere else.

namespace {

result_type success() {
    return result_type(message_catalogs::no_error, "");
}

bool is_success(const result_type& result) {
    return result.type == message_catalogs::no_error;
}

bool has_catalog_extension(const ustring8& path) {
    const ustring8 name = strings::to_lower(path);
    if (name.size() < 4)
        return false;
    const auto extension = name.size() - 4;
    return name.compare(extension, 4, ".xmc") == 0 || name.compare(extension, 4, ".xml") == 0;
}

}  // namespace

result_type catalog_loading::load(const ustring8& path) {
    const result_type result = load_entity(path);
    // Contract: it is the whole set that must not be empty. A load that adds nothing to a set with
    // catalogs of an earlier load is a success.
    if (is_success(result) && m_catalogs.empty())
        return result_type(message_catalogs::no_catalog, path);
    return result;
}

// Contract: an empty set is no error after a list, not even after an empty list.
result_type catalog_loading::load(const std::vector<ustring8>& paths) {
    result_type result = success();
    for (const ustring8& path : paths) {
        result = load_entity(path);
        if (!is_success(result))
            break;
    }
    return result;
}

result_type catalog_loading::load_directory(const ustring8& directory) {
    if (m_catalog_id == nullptr && !system::io::exists(directory))
        return result_type(message_catalogs::directory_not_found, directory);
    return scan_directory(directory);
}

result_type catalog_loading::load_entity(const ustring8& path) {
    if (system::io::is_file(path))
        return load_file(path);
    if (system::io::is_directory(path))
        return scan_directory(path);
    return result_type(message_catalogs::entity_not_found, path);
}

// Contract: entries come in the order of the file system, and the outcome is that of the last
// catalog file or directory: a directory without catalog files makes it a plain success again. A
// scan stops at the first error; what it loaded before stays.
//
// The files of a directory are loaded as they are found, rather than found first and loaded then.
// Links may make a circle of directories, which an error in one of the files has to end.
result_type catalog_loading::scan_directory(const ustring8& directory) {
    result_type result = success();
    for (const ustring8& entry : system::list_directory(directory)) {
        if (system::io::is_file(entry)) {
            if (has_catalog_extension(entry))
                result = load_file(entry);
        } else if (system::io::is_directory(entry)) {
            result = scan_directory(entry);
        }
        if (!is_success(result))
            break;
    }
    return result;
}

// A file is merged only after all of it was read, so a file with an error changes nothing.
result_type catalog_loading::load_file(const ustring8& file) {
    xmc_file_loader loader;
    const xmc_file_loader::load_error outcome = m_catalog_id == nullptr
                                                    ? loader.parse(file, m_locale)
                                                    : loader.parse(file, m_locale, *m_catalog_id);
    if (outcome.type == xmc_file_loader::no_error)
        loader.combine_data(m_catalogs, m_resolve);
    return result_type(outcome);
}

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
