#include "i18n/catalog_loading.hpp"

#include "i18n/_private/xmc_merge.hpp"
#include "i18n/_private/xmc_reader.hpp"
#include "i18n/locale_list.hpp"
#include <tova/i18n/_private/xmc_file_loader.hpp>
#include <tova/strings/case.hpp>
#include <tova/system/directories.hpp>
#include <tova/system/io.hpp>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

using _private::xmc_file_loader;
using strings::ustring8;
using load_error = xmc_file_loader::load_error;
using result_type = catalog_loading::result_type;

// Decides which files a call loads. It only tests whether a path is a file or a directory; whether
// a file can be read is found out by the loader. A socket counts as a file. Anything else, such as
// a dangling link, is skipped in a directory and is an error anywhere else.

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
    // Contract: the check is that the whole set is not empty. A load that adds nothing is a success
    // if an earlier load has filled the set.
    if (is_success(result) && m_catalogs.empty())
        return result_type(message_catalogs::no_catalog, path);
    return result;
}

// Contract: an empty set is not an error after loading a list, not even an empty list.
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
// scan stops at the first error; files loaded before it stay loaded.
//
// The files of a directory are loaded as they are found, not collected first. Links may form a
// cycle of directories, and only an error in one of the files ends the scan then.
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

// A file is merged only after it has been read completely, so a file with an error changes nothing.
//
// The stages are the same as in an `xmc_file_loader` that is discarded afterwards. Messages are
// built only when they are merged, because nobody can see messages that were read but not merged.
result_type catalog_loading::load_file(const ustring8& file) {
    const ustring8 all_catalogs;
    locale_list locales;
    append_wanted_locale(locales, m_locale);
    if (m_catalog_id == nullptr && m_locale.empty())
        return result_type(load_error(xmc_file_loader::no_default_locale, ""));

    late_keeper keeper(locales);
    ustring8 base_directory;
    const load_state state = {locales, keeper, base_directory,
                              m_catalog_id == nullptr ? all_catalogs : *m_catalog_id};
    const load_error outcome = xmc_reader(state).read_file(file);
    if (outcome.type == xmc_file_loader::no_error)
        keeper.merge_into(m_catalogs);
    return result_type(outcome);
}

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
