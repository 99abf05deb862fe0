/// @file
/// Takes one file through a load: reads its bytes, interprets its tokens, keeps its messages.
///
/// A reader reads the files in a loop, however they include each other, so the stack that it needs
/// does not depend on the files. It belongs to one thread.
#pragma once

#include "i18n/_private/token_cursor.hpp"
#include "i18n/_private/xmc_merge.hpp"
#include "i18n/locale_list.hpp"
#include <tova/i18n/_private/xmc_file_loader.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

// The state of a load. Its loader holds it, and all files of the load share it.
struct load_state {
    const locale_list& locales;
    message_keeper& keeper;
    strings::ustring8& base_directory;    // directory of this file, with its final separator
    const strings::ustring8& catalog_id;  // the only catalog to read; empty for all of them
};

class xmc_reader {
public:
    using load_error = _private::xmc_file_loader::load_error;

    explicit xmc_reader(const load_state& state) : m_state(state) {}

    // Reads a file from disk, and the files that it includes. Errors are returned.
    load_error read_file(const strings::ustring8& path) const;

    // Reads the bytes of the file; the path only appears in messages. Errors are returned.
    load_error read_bytes(const strings::ustring8& bytes, const strings::ustring8& path) const;

    // These read a child of the root from its start. Errors are thrown.
    template <typename Cursor>
    void keep_catalog(Cursor& cursor) const;
    template <typename Cursor>
    void follow_include(Cursor& cursor) const;

    bool is_catalog_wanted(piece name) const;

private:
    struct open_file;  // a file that is being read
    class open_files;  // the files being read, each included by the one before
    class unwanted_catalogs;

    // The weight of the locale of a catalog, or 0 for one that is skipped.
    unsigned int weight_of(const catalog_tag& tag) const;

    strings::ustring8 included_path(piece name) const;

    const load_state m_state;
};

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
