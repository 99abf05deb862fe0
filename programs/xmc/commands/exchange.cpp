#include "xmc/commands/exchange.hpp"

#include "support/exit_code.hpp"
#include "support/text_file.hpp"
#include "xmc/exchange/csv.hpp"
#include "xmc/exchange/exchange.hpp"
#include "xmc/exchange/po.hpp"
#include "xmc/exchange/xliff.hpp"
#include "xmc/output.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace tova_programs::xmc {

namespace {

using json = nlohmann::ordered_json;

bool ends_in(const std::string& name, const std::string& end) {
    return name.size() >= end.size() &&
           std::equal(end.rbegin(), end.rend(), name.rbegin(),
                      [](char a, char b) { return a == (b >= 'A' && b <= 'Z' ? b + 32 : b); });
}

std::size_t targets_of(const exchange& all) {
    return static_cast<std::size_t>(
        std::count_if(all.messages.begin(), all.messages.end(),
                      [](const exchanged_message& each) { return each.target.exists; }));
}

imported read(const import_options& options) {
    const std::string bytes = read_file(options.file);
    const std::string catalog = options.catalog.empty() ? "messages" : options.catalog;
    const std::string reference = options.reference.empty() ? "en" : options.reference;
    if (ends_in(options.file, ".po") || ends_in(options.file, ".pot"))
        return read_po(bytes, options.file, {catalog, options.locale, reference});
    if (ends_in(options.file, ".xlf") || ends_in(options.file, ".xliff"))
        return read_xliff(bytes, options.file, {options.catalog, options.locale});
    if (ends_in(options.file, ".csv"))
        return read_csv(bytes, options.file, {catalog, options.locale, reference});
    throw file_error(options.file + ": ends in none of .po, .pot, .xlf, .xliff and .csv");
}

}  // namespace

int run_export(const export_options& options, std::ostream& out) {
    exchange all = collect(read_documents(options.paths), options.locale, options.reference);
    const auto is_unwanted = [&](const exchanged_message& each) {
        return !options.catalogs.empty() &&
               std::find(options.catalogs.begin(), options.catalogs.end(), each.catalog) ==
                   options.catalogs.end();
    };
    all.messages.erase(std::remove_if(all.messages.begin(), all.messages.end(), is_unwanted),
                       all.messages.end());
    const std::string text = options.format == "csv"      ? csv_text(all)
                             : options.format == "xliff"  ? xliff_text(all, xliff_version::v1_2)
                             : options.format == "xliff2" ? xliff_text(all, xliff_version::v2_0)
                                                          : po_text(all);
    if (options.as_json)
        write_json_result(options.output, text,
                          {{"locale", all.locale},
                           {"reference", all.reference},
                           {"messages", all.messages.size()},
                           {"translated", targets_of(all)}},
                          out);
    else
        write_result(options.output, text, out);
    return exit_clean;
}

int run_import(const import_options& options, std::ostream& out, std::ostream& errors) {
    const imported result = read(options);
    const std::string text = catalogs_of(result.all, options.with_sources);
    if (options.as_json) {
        json problems = json::array();
        for (const exchange_problem& each : result.problems)
            problems.push_back(
                {{"line", each.line}, {"message", each.subject}, {"text", each.text}});
        write_json_result(options.output, text,
                          {{"locale", result.all.locale},
                           {"messages", targets_of(result.all)},
                           {"untranslated", result.untranslated},
                           {"fuzzy", result.fuzzy},
                           {"problems", problems}},
                          out);
    } else {
        write_result(options.output, text, out);
        for (const exchange_problem& each : result.problems)
            errors << options.file << ':' << each.line << ": " << each.subject << ": " << each.text
                   << '\n';
        if (!is_standard(options.output))
            errors << options.output << ": " << targets_of(result.all) << " messages, "
                   << result.untranslated << " not translated\n";
    }
    return result.problems.empty() ? exit_clean : exit_findings;
}

}  // namespace tova_programs::xmc
