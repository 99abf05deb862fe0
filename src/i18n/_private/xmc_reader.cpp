#include "i18n/_private/xmc_reader.hpp"

#include "i18n/_private/xmc_grammar.hpp"
#include "parser/flat_tokens.hpp"

#include <memory>
#include <utility>

namespace TOVA_2_18 {
namespace i18n {
namespace detail {

using _private::xmc_file_loader;
using parser::xml_parser;
using parser::detail::flat_tokens;
using strings::ustring8;
using load_error = xmc_reader::load_error;
using token = xmc_file_loader::token;

// Elements are processed in the order of the file: an include is read where it appears, so a
// message before it is stored first and wins a tie, and an error after it is found later. Messages
// go into the state of the load at once. After an error they stay there, and the caller must not
// merge them.
//
// Errors propagate as exceptions from the grammar to `read_bytes`, and each level adds a line. For
// an included file, the including file rethrows the result of `read_bytes`, so that both files are
// named.

namespace {

load_error included_by_itself(const ustring8& path) {
    load_error error(xmc_file_loader::unexpected, "");
    error.message += "\n in an include of a file by itself: \"" + path + "\"";
    return error;
}

load_error in_file(load_error error, const ustring8& path) {
    error.append_error_stack(load_error::in_file, path);
    return error;
}

// Contract: both separators and a drive letter are recognized on every platform, so that one
// catalog works for programs on all of them. The name isn't empty.
bool is_used_as_written(const ustring8& file) {
    return file[0] == '/' || file[0] == '\\' || (file.size() >= 3 && file[1] == ':');
}

}  // namespace

load_error xmc_reader::read_file(const ustring8& path) const {
    const xmc_source source(path, m_source);
    if (!source.exists())
        return load_error(xmc_file_loader::file_not_found, path);
    if (source.is_included_by_itself())
        return included_by_itself(path);

    std::unique_ptr<tokenized_file> file(new tokenized_file);
    file->bytes = source.read();
    m_state.base_directory = source.directory();
    const load_error result =
        xmc_reader(m_state, &source).read_tokens(file->tokens, file->bytes, path);
    if (result.type == xmc_file_loader::no_error)
        m_state.keeper.retain(std::move(file));
    return result;
}

load_error xmc_reader::read_bytes(const ustring8& bytes, const ustring8& path) const {
    flat_tokens tokens;
    return read_tokens(tokens, bytes, path);
}

load_error xmc_reader::read_tokens(flat_tokens& tokens, const ustring8& bytes,
                                   const ustring8& path) const {
    const xml_parser::parse_error xml_error = tokens.parse(bytes);
    if (xml_error.type != xml_parser::parse_error::no_error)
        return in_file(load_error(xmc_file_loader::xml_error, xml_error), path);

    flat_cursor cursor(tokens.begin(), tokens.end());
    if (cursor.at_end())
        return load_error(xmc_file_loader::unexpected, "Nothing of interest in the file.");
    try {
        return read_root(cursor, path);
    } catch (const load_error& error) {
        return in_file(error, path);
    }
}

bool xmc_reader::is_catalog_wanted(piece name) const {
    return m_state.catalog_id.empty() || name.string() == m_state.catalog_id;
}

load_error xmc_reader::read_root(flat_cursor& cursor, const ustring8& path) const {
    skip_ignorable(cursor);
    read_header(cursor);
    skip_ignorable(cursor);

    bool is_anything_read = false;
    while (true) {
        if (cursor.is_at(token::element_start, "catalog"))
            keep_catalog(cursor);
        else if (cursor.is_at(token::element_start, "include"))
            follow_include(cursor);
        else
            break;
        skip_ignorable(cursor);
        is_anything_read = true;
    }

    // Anything after the end of the root is ignored.
    if (!cursor.at_end() && !cursor.is_at(token::element_end, "xmc"))
        throw load_error(xmc_file_loader::invalid_element, cursor.value().string());
    // Contract: a skipped catalog counts as read. An empty root is valid, so its error is returned
    // rather than thrown and gets no line for the file.
    return is_anything_read ? load_error(xmc_file_loader::no_error, "")
                            : load_error(xmc_file_loader::no_catalog, path);
}

template <typename Cursor>
void xmc_reader::keep_catalog(Cursor& cursor) const {
    const catalog_tag tag = read_catalog_tag(cursor);
    const unsigned int weight =
        is_catalog_wanted(tag.name) ? locale_weight(m_state.locales, tag.locale.string()) : 0;
    if (weight != 0)
        read_messages(cursor, tag, [&] { m_state.keeper.take(cursor, tag, weight); });
    else
        skip_messages(cursor);
    read_catalog_end(cursor, tag);
}

template <typename Cursor>
void xmc_reader::follow_include(Cursor& cursor) const {
    read_include(cursor, [this](piece name) { read_included_file(name.string()); });
}

template void xmc_reader::keep_catalog(list_cursor&) const;
template void xmc_reader::follow_include(list_cursor&) const;

void xmc_reader::read_included_file(const ustring8& name) const {
    if (name.empty())
        throw load_error(xmc_file_loader::file_not_found, "");

    // Contract: the base directory is restored only on success. An error ends the whole load.
    const ustring8 base_directory = m_state.base_directory;
    const ustring8 path = is_used_as_written(name) ? name : base_directory + name;
    const load_error result = read_file(path);
    if (result.type != xmc_file_loader::no_error)
        throw load_error(result);
    m_state.base_directory = base_directory;
}

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
