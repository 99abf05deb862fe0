/// @file
/// One call of `message_catalogs::load` and its siblings: find the files, load each into the set,
/// return the outcome of the last one.
///
/// An object is created for one call. It changes the set that it refers to and belongs to one
/// thread.
#pragma once

#include <tova/i18n/message_catalogs.hpp>
#include <tova/strings/ustring.hpp>

#include <vector>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

class catalog_loading {
public:
    using result_type = message_catalogs::result_type;
    using catalog_map = message_catalogs::catalog_map;

    // The set to load into, and the requested locale. All arguments must outlive the object. A
    // catalog id restricts the load to the catalog with that name.
    //
    // Contract: the two constructors select two kinds of load even if the id is empty. With an id,
    // an empty locale is accepted and a missing directory is a success.
    catalog_loading(catalog_map& catalogs, const strings::ustring8& locale)
        : m_catalogs(catalogs), m_locale(locale), m_catalog_id(nullptr) {}
    catalog_loading(catalog_map& catalogs, const strings::ustring8& locale,
                    const strings::ustring8& catalog_id)
        : m_catalogs(catalogs), m_locale(locale), m_catalog_id(&catalog_id) {}

    // Implement the four families of published operations.
    result_type load(const strings::ustring8& path);
    result_type load(const std::vector<strings::ustring8>& paths);
    result_type load_directory(const strings::ustring8& directory);
    result_type load_file(const strings::ustring8& file);

private:
    result_type load_entity(const strings::ustring8& path);
    result_type scan_directory(const strings::ustring8& directory);

    catalog_map& m_catalogs;
    const strings::ustring8& m_locale;
    const strings::ustring8* m_catalog_id;  // null for all catalogs
};

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
