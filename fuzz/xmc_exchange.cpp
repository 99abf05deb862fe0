// Reads any bytes as a PO, XLIFF or CSV file, as `tova-xmc import` does. The messages must be the
// same after they are exported in any format and read again.
//
// Input: a byte that chooses the format, '0' for PO, '1' for XLIFF, '2' for CSV; the file.
#include "require.hpp"
#include "support/choose_form.hpp"
#include "support/text_file.hpp"
#include "xmc/exchange/csv.hpp"
#include "xmc/exchange/po.hpp"
#include "xmc/exchange/xliff.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <utility>

namespace {

using namespace tova_programs::xmc;

enum class format { po, xliff, csv };

imported read(format from, const std::string& bytes) {
    switch (from) {
    case format::po:
        return read_po(bytes, "f.po", {});
    case format::xliff:
        return read_xliff(bytes, "f.xlf", {});
    case format::csv:
        break;
    }
    return read_csv(bytes, "f.csv", {});
}

std::string described(const exchanged_text& text) {
    return text.exists ? content_of(text.pieces) + "\n  note " + text.meta : "none";
}

// All messages, sorted by name, because exporting moves all forms of a plural to the first one. A
// message without texts says nothing: in PO, a plural that lacks a form looks the same.
std::string described(const exchange& all) {
    std::map<std::pair<std::string, std::string>, std::string> messages;
    for (const exchanged_message& each : all.messages) {
        if (!each.source.exists && !each.target.exists)
            continue;
        const bool is_new = messages
                                .insert({{each.catalog, each.key},
                                         "\n source " + described(each.source) + "\n target " +
                                             described(each.target) + '\n'})
                                .second;
        fuzz_support::require(is_new);
    }
    std::string result = all.locale + " from " + all.reference + '\n';
    for (const auto& each : messages)
        result += each.first.first + '/' + each.first.second + each.second;
    return result;
}

void require_same(const std::string& expected, const imported& back, const std::string& file) {
    const std::string found = described(back.all);
    if (expected != found || !back.problems.empty())
        std::fprintf(stderr, "Expected:\n%s\nFound:\n%s\n%s\nIn:\n%s\n", expected.c_str(),
                     found.c_str(), back.problems.empty() ? "" : back.problems[0].text.c_str(),
                     file.c_str());
    fuzz_support::require(expected == found && back.problems.empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    if (size == 0)
        return 0;
    const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    imported first;
    try {
        first = read(static_cast<format>(data[0] % 3), bytes);
    } catch (const tova_programs::file_error&) {
        return 0;
    }
    const std::string expected = described(first.all);
    fuzz_support::require(!catalogs_of(first.all, true).empty());
    // A table names its locale in its rows.
    if (first.all.messages.empty())
        return 0;
    const std::string po = po_text(first.all);
    require_same(expected, read(format::po, po), po);
    const std::string csv = csv_text(first.all);
    require_same(expected, read(format::csv, csv), csv);
    for (const xliff_version version : {xliff_version::v1_2, xliff_version::v2_0}) {
        const std::string xliff = xliff_text(first.all, version);
        require_same(expected, read(format::xliff, xliff), xliff);
    }
    return 0;
}
