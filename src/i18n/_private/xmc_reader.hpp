/// @file
/// Takes one file through a load: reads its bytes, interprets its tokens, keeps its messages.
///
/// A reader lives on the stack while its file, and the files that it includes, are read. It belongs
/// to one thread.
#pragma once

#include "i18n/_private/token_cursor.hpp"
#include "i18n/_private/xmc_merge.hpp"
#include "i18n/_private/xmc_source.hpp"
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

    // A reader for the tokens of a file. The source is null if the bytes don't come from disk.
    explicit xmc_reader(const load_state& state, const xmc_source* source = nullptr)
        : m_state(state), m_source(source) {}

    // Reads another file, which the source includes, from disk. Errors are returned.
    load_error read_file(const strings::ustring8& path) const;

    // Reads the bytes of the file; the path only appears in messages. Errors are returned.
    load_error read_bytes(const strings::ustring8& bytes, const strings::ustring8& path) const;

    // Read the children of the root, each from its start. Errors are thrown.
    template <typename Cursor>
    void keep_catalog(Cursor& cursor) const;
    template <typename Cursor>
    void follow_include(Cursor& cursor) const;

    bool is_catalog_wanted(piece name) const;

private:
    load_error read_tokens(parser::detail::flat_tokens& tokens, const strings::ustring8& bytes,
                           const strings::ustring8& path) const;
    load_error read_root(flat_cursor& cursor, const strings::ustring8& path) const;
    void read_included_file(const strings::ustring8& name) const;

    const load_state m_state;
    const xmc_source* const m_source;
};

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
