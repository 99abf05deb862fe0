#include <tova/i18n/_private/xmc_file_loader.hpp>

#include "i18n/_private/token_cursor.hpp"
#include "i18n/_private/xmc_grammar.hpp"
#include "i18n/_private/xmc_merge.hpp"
#include "i18n/_private/xmc_reader.hpp"
#include "i18n/locale_list.hpp"

// The published operations of the loader. Each one forwards to a stage:
//
//     locale_list     which locales are wanted, and their weights
//     xmc_source      read: the bytes of a file
//     xmc_grammar     interpret: what its tokens say
//     xmc_merge       merge: which translation of a message is kept
//     xmc_reader      runs these stages for one file and the files that it includes
//     xmc_load_error  report: the error of a file and its wording
//
// Stages call downward only, and no stage calls an operation of the loader.

namespace TOVA_2_18 {
namespace i18n {
namespace _private {

using detail::list_cursor;
using strings::ustring8;
using load_error = xmc_file_loader::load_error;

// A reader that operates on the fields of a loader.
class __attribute__((visibility("hidden"))) xmc_file_loader::reader : public detail::xmc_reader {
public:
    explicit reader(xmc_file_loader& loader)
        : xmc_reader({loader.m_locales, m_keeper, loader.m_base_directory, loader.m_catalog_id}),
          m_keeper(loader.m_catalogs, loader.m_locales) {}

private:
    detail::instant_keeper m_keeper;
};

xmc_file_loader::xmc_file_loader() {}

xmc_file_loader::~xmc_file_loader() TOVA_NOTHROW {}

load_error xmc_file_loader::parse(const ustring8& file, const ustring8& lang) {
    if (lang.empty())
        return load_error(no_default_locale, "");
    handle_language(lang);
    return parse_file(file);
}

// Contract: the third form appends "." and "en" to the locale list a second time. Of two equal
// entries, the position of the first counts.
load_error xmc_file_loader::parse(const ustring8& file, const ustring8& lang,
                                  const ustring8& catalog_id) {
    m_catalog_id = catalog_id;
    handle_language(lang);
    return parse(file);
}

load_error xmc_file_loader::parse(const ustring8& file) {
    handle_language("");
    return parse_file(file);
}

unsigned long xmc_file_loader::combine_data(
    std::map<ustring8, memory::pointers::shared_pointer<catalog_t>>& target,
    const std::map<ustring8, ustring8>&) {
    return detail::merge_catalogs(target, m_catalogs, m_locales);
}

void xmc_file_loader::reset() {}

void xmc_file_loader::handle_language(const ustring8& lang) {
    detail::append_wanted_locale(m_locales, lang);
}

unsigned int xmc_file_loader::get_locale_weight(const ustring8& lang) const {
    return detail::locale_weight(m_locales, lang);
}

bool xmc_file_loader::is_lang_id_good(const ustring8& lang) const {
    return get_locale_weight(lang) != 0;
}

bool xmc_file_loader::is_cat_id_set() {
    return !m_catalog_id.empty();
}

bool xmc_file_loader::is_catalog_matched(const ustring8& name) {
    return reader(*this).is_catalog_wanted(detail::piece(name));
}

load_error xmc_file_loader::parse_file(const ustring8& file) {
    return reader(*this).read_file(file);
}

load_error xmc_file_loader::parse_string(const ustring8& text, const ustring8& file) {
    return reader(*this).read_bytes(text, file);
}

void xmc_file_loader::parse_xmc_header(token_iterator& cursor, token_iterator& end) {
    list_cursor at(cursor, end);
    detail::read_header(at);
}

void xmc_file_loader::parse_ignorable(token_iterator& cursor, token_iterator& end) {
    list_cursor at(cursor, end);
    detail::skip_ignorable(at);
}

void xmc_file_loader::parse_catalog(token_iterator& cursor, token_iterator& end) {
    list_cursor at(cursor, end);
    reader(*this).keep_catalog(at);
}

void xmc_file_loader::parse_include(token_iterator& cursor, token_iterator& end) {
    list_cursor at(cursor, end);
    reader(*this).follow_include(at);
}

message_t xmc_file_loader::parse_message(token_iterator& cursor, token_iterator& end) {
    list_cursor at(cursor, end);
    detail::message_draft draft;
    detail::read_message(at, &draft);
    message_t message;
    draft.write(message, detail::piece());
    return message;
}

message_item xmc_file_loader::parse_message_arg(token_iterator& cursor, token_iterator& end) {
    list_cursor at(cursor, end);
    detail::message_draft draft;
    detail::read_argument(at, &draft);
    return draft.only_item();
}

message_item::type_t xmc_file_loader::parse_message_type(const ustring8& word) {
    return detail::item_type(detail::piece(word));
}

void xmc_file_loader::set_message(const message_t& msg, const ustring8& catalog) {
    detail::keep_message(m_catalogs, m_locales, catalog, msg,
                         get_locale_weight(msg._orginal_locale()));
}

}  // namespace _private
}  // namespace i18n
}  // namespace TOVA_2_18
