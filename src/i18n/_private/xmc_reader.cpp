#include "i18n/_private/xmc_reader.hpp"

#include "i18n/_private/xmc_grammar.hpp"
#include "i18n/_private/xmc_source.hpp"
#include "parser/flat_tokens.hpp"

#include <memory>
#include <utility>
#include <vector>

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
// Files that include other files wait in a list. Each round of the loop in `open_files::read`
// continues with the last file, up to an include, an error or its end:
//
//     include   the file that it names is added to the list
//     end       the file leaves the list, and the file before it continues
//     error     all files leave the list, and each adds a line to the error
//
// The grammar and the functions that read the root of a file throw errors; `read` returns them.

namespace {

load_error included_by_itself(const ustring8& path) {
    load_error error(xmc_file_loader::unexpected, "");
    error.message += "\n in an include of a file by itself: \"" + path + "\"";
    return error;
}

// Contract: both separators and a drive letter are recognized on every platform, so that one
// catalog works for programs on all of them. The name isn't empty.
bool is_used_as_written(const ustring8& file) {
    return file[0] == '/' || file[0] == '\\' || (file.size() >= 3 && file[1] == ':');
}

}  // namespace

struct xmc_reader::open_file {
    explicit open_file(const ustring8& name)
        : path(name), content(new tokenized_file), cursor(nullptr, nullptr) {}

    const ustring8 path;
    std::unique_ptr<const xmc_source> source;  // null if the bytes don't come from disk
    std::unique_ptr<tokenized_file> content;
    flat_cursor cursor;
    include_element include;
    bool is_in_include = false;
    bool is_anything_read = false;
    ustring8 base_directory;  // while an included file is read
};

// Leaves out the messages of catalogs that `keep_catalog` skips, because nothing reads them. The
// grammar finds errors in the start tag.
class xmc_reader::unwanted_catalogs : public flat_tokens::filter {
public:
    explicit unwanted_catalogs(const xmc_reader& reader) : m_reader(reader) {}

    bool is_left_out(const flat_tokens::token* start,
                     const flat_tokens::token* end) const override {
        if (!start->value().is("catalog"))
            return false;
        catalog_tag tag;
        for (const flat_tokens::token* one = start + 1; one != end; one += 2) {
            if (one->type() != token::attribute_name)
                return false;
            if (one->value().is("name"))
                tag.name = one[1].value();
            else if (one->value().is("lang"))
                tag.locale = one[1].value();
            else
                return false;
        }
        return m_reader.weight_of(tag) == 0;
    }

private:
    const xmc_reader& m_reader;
};

class xmc_reader::open_files {
public:
    explicit open_files(const xmc_reader& reader) : m_reader(reader) {}

    // The first file is read from disk, or from bytes; error messages then use the given path.
    load_error read_file(const ustring8& path) {
        return read([this, &path] { add(path); });
    }
    load_error read_bytes(const ustring8& bytes, const ustring8& path) {
        return read([this, &bytes, &path] {
            m_files.push_back(std::unique_ptr<open_file>(new open_file(path)));
            begin(bytes);
        });
    }

private:
    template <typename Begin>
    load_error read(Begin begin_first) {
        try {
            begin_first();
            while (!m_files.empty())
                read_on();
        } catch (load_error& error) {
            for (; !m_files.empty(); m_files.pop_back())
                error.append_error_stack(load_error::in_file, m_files.back()->path);
            return error;
        }
        return load_error(xmc_file_loader::no_error, "");
    }

    // A file whose error doesn't name it isn't in the list when the error is thrown.
    void add(const ustring8& path) {
        std::unique_ptr<open_file> added(new open_file(path));
        added->source.reset(new xmc_source(added->path));
        const xmc_source& source = *added->source;
        if (!source.exists())
            throw load_error(xmc_file_loader::file_not_found, path);
        if (m_chain.has(source))
            throw included_by_itself(path);
        added->content->bytes = source.read();
        m_reader.m_state.base_directory = source.directory();
        m_files.push_back(std::move(added));
        m_chain.add(source);
        begin(m_files.back()->content->bytes);
    }

    // Consumes the tokens of the last file up to the children of its root.
    void begin(const ustring8& bytes) {
        open_file& file = *m_files.back();
        flat_tokens& tokens = file.content->tokens;
        const unwanted_catalogs unwanted(m_reader);
        const xml_parser::parse_error xml_error = tokens.parse(bytes, &unwanted);
        if (xml_error.type != xml_parser::parse_error::no_error)
            throw load_error(xmc_file_loader::xml_error, xml_error);
        file.cursor = flat_cursor(tokens.begin(), tokens.end());
        if (file.cursor.at_end()) {
            m_files.pop_back();
            throw load_error(xmc_file_loader::unexpected, "Nothing of interest in the file.");
        }
        skip_ignorable(file.cursor);
        read_header(file.cursor);
        skip_ignorable(file.cursor);
    }

    // Continues with the last file until it includes another file or ends.
    void read_on() {
        open_file& file = *m_files.back();
        for (;;) {
            if (file.is_in_include) {
                piece name;
                if (file.include.next(file.cursor, name))
                    return add_included(name);
                file.is_in_include = false;
            } else if (file.cursor.is_at(token::element_start, "catalog")) {
                m_reader.keep_catalog(file.cursor);
            } else if (file.cursor.is_at(token::element_start, "include")) {
                file.include = include_element();
                file.is_in_include = true;
                continue;
            } else {
                return end();
            }
            skip_ignorable(file.cursor);
            file.is_anything_read = true;
        }
    }

    void add_included(piece name) {
        const ustring8 path = m_reader.included_path(name);
        m_files.back()->base_directory = m_reader.m_state.base_directory;
        add(path);
    }

    // Anything after the end of the root is ignored.
    void end() {
        const std::unique_ptr<open_file> file = remove_checked();
        if (file->source != nullptr)
            m_reader.m_state.keeper.retain(std::move(file->content));
        if (!m_files.empty())
            m_reader.m_state.base_directory = m_files.back()->base_directory;
    }

    // Contract: a skipped catalog counts as read. An empty root is valid, so its error gets no line
    // for the file.
    std::unique_ptr<open_file> remove_checked() {
        const flat_cursor& cursor = m_files.back()->cursor;
        if (!cursor.is_at(token::element_end, "xmc"))
            throw load_error(xmc_file_loader::invalid_element, cursor.value().string());
        std::unique_ptr<open_file> file = std::move(m_files.back());
        m_files.pop_back();
        if (file->source != nullptr)
            m_chain.remove(*file->source);
        if (!file->is_anything_read)
            throw load_error(xmc_file_loader::no_catalog, file->path);
        return file;
    }

    const xmc_reader& m_reader;
    std::vector<std::unique_ptr<open_file>> m_files;
    include_chain m_chain;
};

load_error xmc_reader::read_file(const ustring8& path) const {
    return open_files(*this).read_file(path);
}

load_error xmc_reader::read_bytes(const ustring8& bytes, const ustring8& path) const {
    return open_files(*this).read_bytes(bytes, path);
}

bool xmc_reader::is_catalog_wanted(piece name) const {
    return m_state.catalog_id.empty() || name.string() == m_state.catalog_id;
}

unsigned int xmc_reader::weight_of(const catalog_tag& tag) const {
    return is_catalog_wanted(tag.name) ? locale_weight(m_state.locales, tag.locale.string()) : 0;
}

template <typename Cursor>
void xmc_reader::keep_catalog(Cursor& cursor) const {
    const catalog_tag tag = read_catalog_tag(cursor);
    const unsigned int weight = weight_of(tag);
    if (weight != 0)
        read_messages(cursor, tag, [&] { m_state.keeper.take(cursor, tag, weight); });
    else
        skip_messages(cursor);
    read_catalog_end(cursor, tag);
}

// Contract: the base directory is restored only on success. An error ends the whole load.
template <typename Cursor>
void xmc_reader::follow_include(Cursor& cursor) const {
    include_element include;
    piece name;
    while (include.next(cursor, name)) {
        const ustring8 path = included_path(name);
        const ustring8 base_directory = m_state.base_directory;
        const load_error result = read_file(path);
        if (result.type != xmc_file_loader::no_error)
            throw load_error(result);
        m_state.base_directory = base_directory;
    }
}

template void xmc_reader::keep_catalog(list_cursor&) const;
template void xmc_reader::follow_include(list_cursor&) const;

ustring8 xmc_reader::included_path(piece name) const {
    if (name.empty())
        throw load_error(xmc_file_loader::file_not_found, "");
    const ustring8 file = name.string();
    return is_used_as_written(file) ? file : m_state.base_directory + file;
}

}  // namespace detail
}  // namespace i18n
}  // namespace TOVA_2_18
