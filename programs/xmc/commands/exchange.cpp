#include "xmc/commands/exchange.hpp"

#include "support/exit_code.hpp"
#include "xmc/exchange/csv.hpp"
#include "xmc/exchange/exchange.hpp"
#include "xmc/exchange/po.hpp"
#include "xmc/exchange/xliff.hpp"
#include "xmc/output.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace tova_programs::xmc {

namespace {

std::size_t targets_of(const exchange& all) {
    return static_cast<std::size_t>(
        std::count_if(all.messages.begin(), all.messages.end(),
                      [](const exchanged_message& each) { return each.target.exists; }));
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

}  // namespace tova_programs::xmc
