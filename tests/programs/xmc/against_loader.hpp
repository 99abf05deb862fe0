// Compares the scanner of tova-xmc with the library's loader: the same verdict and the same values
// for every locale. The randomized test and the fuzz target both use it.
#pragma once

#include <tova/i18n/_private/xmc_file_loader.hpp>

#include "xmc/model/document.hpp"
#include "xmc/rules.hpp"
#include "xmc/scanner/verdict.hpp"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace xmc_test {

using tova::i18n::_private::xmc_file_loader;
using tova::strings::ustring8;
using load_error = xmc_file_loader::load_error;

// One text for everything that was read: catalogs, keys, locales, meta texts and items.
inline std::string
described(const std::map<ustring8, tova::memory::pointers::shared_pointer<tova::i18n::catalog_t>>&
              loaded) {
    std::ostringstream out;
    for (const auto& entry : loaded)
        for (const auto& keyed : *entry.second) {
            out << entry.first << '|' << keyed.first << '|' << keyed.second._orginal_locale() << '|'
                << keyed.second.meta();
            for (const auto& item : keyed.second)
                out << '|' << int(item.type()) << ':' << item.data();
            out << '\n';
        }
    return out.str();
}

// What the loader would make of the document's values, for the locales of that loader.
inline std::string described(const tova_programs::xmc::document& file,
                             const xmc_file_loader& loader) {
    struct kept {
        unsigned int weight = 0;
        bool is_nil = true;
        std::string text;
    };
    std::map<std::string, std::map<std::string, kept>> result;
    for (const auto& catalog : file.catalogs()) {
        const unsigned int weight = loader.get_locale_weight(std::string(catalog.locale));
        if (weight == 0)
            continue;
        for (const auto& message : file.messages(catalog)) {
            kept& entry = result[std::string(catalog.name)][std::string(message.name)];
            if (!entry.is_nil && entry.weight >= weight)
                continue;
            std::ostringstream out;
            out << catalog.name << '|' << message.name << '|' << catalog.locale << '|'
                << message.meta;
            for (const auto& item : file.items(message))
                out << '|' << int(item.type) << ':' << file.data(item);
            entry.text = out.str() + '\n';
            entry.weight = weight;
            entry.is_nil =
                file.items(message).empty() && message.name.empty() && message.meta.empty();
        }
    }
    std::string text;
    for (const auto& catalog : result)
        for (const auto& keyed : catalog.second)
            text += keyed.second.text;
    return text;
}

inline std::string expected_message(const tova_programs::xmc::verdict& expected,
                                    const tova_programs::xmc::scan& tokens) {
    using tova_programs::xmc::load_kind;
    if (expected.kind == load_kind::xml_error) {
        const auto& error = tokens.error();
        using parse_error = tova::parser::xml_parser::parse_error;
        const parse_error parsed(static_cast<parse_error::error_type>(error.kind), error.line,
                                 error.subject);
        return load_error(xmc_file_loader::xml_error, parsed).message;
    }
    const std::string subject = expected.kind == load_kind::no_catalog ? "f" : expected.subject;
    return load_error(static_cast<xmc_file_loader::error_type>(expected.kind), subject).message;
}

// The first difference for one locale, or the empty string.
inline std::string difference_for(const tova_programs::xmc::document& file,
                                  const std::string& locale) {
    namespace xmc = tova_programs::xmc;
    xmc_file_loader loader;
    loader.handle_language(locale);
    const xmc::verdict expected =
        xmc::verdict_of(file.tokens(), [&](std::string_view, std::string_view lang) {
            return loader.is_lang_id_good(std::string(lang));
        });
    const load_error actual = loader.parse_string(file.bytes() + '\0', "f");
    if (!expected.includes.empty())
        return actual.type == xmc_file_loader::file_not_found ||
                       actual.type == xmc_file_loader::xml_error
                   ? ""
                   : "an include was not followed: " + actual.message;
    if (static_cast<int>(expected.kind) != static_cast<int>(actual.type))
        return "kind " + std::to_string(int(expected.kind)) + ", the loader says " + actual.message;
    const std::string message = expected_message(expected, file.tokens());
    if (actual.message.compare(0, message.size(), message) != 0)
        return "message " + message + ", the loader says " + actual.message;
    if (actual.type != xmc_file_loader::no_error)
        return "";
    std::map<ustring8, tova::memory::pointers::shared_pointer<tova::i18n::catalog_t>> loaded;
    loader.combine_data(loaded, {});
    const std::string values = described(file, loader);
    const std::string loaded_values = described(loaded);
    return values == loaded_values ? "" : "values " + values + ", the loader has " + loaded_values;
}

// The first difference, or the empty string. Files that include others are compared up to there.
inline std::string difference(const std::string& bytes) {
    namespace xmc = tova_programs::xmc;
    const xmc::document file("f", bytes);
    std::set<std::string> locales = {"en", "de_AT"};
    for (const xmc::catalog& each : file.catalogs())
        if (locales.size() < 6 && !each.locale.empty())
            locales.insert(std::string(each.locale));
    for (const std::string& locale : locales) {
        const std::string found = difference_for(file, locale);
        if (!found.empty())
            return "for " + locale + ": " + found;
    }

    // An error is found if and only if the loader refuses the file when it reads every catalog.
    const xmc::verdict all = xmc::verdict_of(file.tokens(), [](auto, auto) { return true; });
    const bool has_error =
        std::any_of(file.problems().begin(), file.problems().end(), [](const xmc::problem& each) {
            return xmc::rules().find(each.rule)->level == tova_programs::severity::error;
        });
    if (has_error != (all.kind != xmc::load_kind::no_error))
        return has_error ? "an error is reported, but the loader accepts the file"
                         : "no error is reported, but the loader says kind " +
                               std::to_string(int(all.kind)) + " " + all.subject;
    return "";
}

}  // namespace xmc_test
