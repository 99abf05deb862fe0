#include "xmc/commands/exchange.hpp"

#include "support/exit_code.hpp"
#include "support/text_file.hpp"
#include "xmc/exchange/csv.hpp"
#include "xmc/exchange/exchange.hpp"
#include "xmc/exchange/po.hpp"
#include "xmc/exchange/xliff.hpp"
#include "xmc/model/locale.hpp"
#include "xmc/output.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>

namespace tova_programs::xmc {

namespace {

std::size_t targets_of(const exchange& all) {
    return static_cast<std::size_t>(
        std::count_if(all.messages.begin(), all.messages.end(),
                      [](const exchanged_message& each) { return each.target.exists; }));
}

void require_catalogs(const documents& files, const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        const auto has_name = [&name](const catalog& each) { return each.name == name; };
        if (std::none_of(files.begin(), files.end(), [&](const auto& file) {
                return std::any_of(file->catalogs().begin(), file->catalogs().end(), has_name);
            }))
            throw file_error("no catalog is named " + name);
    }
}

}  // namespace

int run_export(const export_options& options, std::ostream& out, std::ostream& errors) {
    const documents files = read_documents(options.paths);
    const std::set<std::string> locales = locales_of(files);
    if (options.requires_reference)
        require_locale(locales, options.reference);
    else if (locales.count(normalized_locale(options.reference)) == 0)
        errors << "tova-xmc: no catalog has the locale " << options.reference
               << ", so the keys stand for the original messages; --reference names another "
                  "locale\n";
    require_catalogs(files, options.catalogs);
    exchange all = collect(files, options.locale, options.reference);
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

}  // namespace tova_programs::xmc
