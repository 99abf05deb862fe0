#include "xmc/commands/coverage.hpp"

#include "support/exit_code.hpp"
#include "support/table.hpp"
#include "support/text_file.hpp"
#include "xmc/check/message_index.hpp"
#include "xmc/model/documents.hpp"
#include "xmc/model/locale.hpp"
#include "xmc/output.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <utility>

// Each file is read once and becomes numbers: for every catalog and locale the set of its keys. The
// cells are computed from these sets.

namespace tova_programs::xmc {

namespace {

using keys = std::vector<std::uint32_t>;  // sorted at the end, each once

struct catalog_keys {
    std::map<std::string, keys> by_locale;
};

class counter {
public:
    explicit counter(const coverage_options& options) : m_options(options) {
        for_each_document(options.paths, [this](const document& file) { add(file); });
        for (auto& each : m_catalogs)
            for (auto& entry : each.second.by_locale)
                make_set(entry.second);
    }

    std::vector<coverage_cell> cells() {
        std::vector<coverage_cell> result;
        const std::string reference = normalized_locale(m_options.reference);
        for (const auto& each : m_catalogs) {
            const auto& by_locale = each.second.by_locale;
            const keys neutral = of(by_locale, ".");
            keys wanted = of(by_locale, reference);
            if (wanted.empty())
                for (const auto& entry : by_locale)
                    wanted = united(wanted, entry.second);
            wanted = without(wanted, neutral);
            for (const auto& entry : by_locale)
                if (entry.first != ".")
                    result.push_back(cell(each.first, entry.first, by_locale, wanted));
        }
        return result;
    }

private:
    static void make_set(keys& some) {
        std::sort(some.begin(), some.end());
        some.erase(std::unique(some.begin(), some.end()), some.end());
    }
    static keys of(const std::map<std::string, keys>& by_locale, const std::string& locale) {
        const auto found = by_locale.find(locale);
        return found == by_locale.end() ? keys() : found->second;
    }
    static keys united(const keys& a, const keys& b) {
        keys result;
        std::set_union(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(result));
        return result;
    }
    static keys without(const keys& a, const keys& b) {
        keys result;
        std::set_difference(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(result));
        return result;
    }

    void add(const document& file) {
        for (const catalog& each : file.catalogs()) {
            if (each.locale.empty())
                continue;  // it is never read
            keys& into =
                m_catalogs[std::string(each.name)].by_locale[normalized_locale(each.locale)];
            for (const message& one : file.messages(each))
                into.push_back(m_names.number_of(one.name));
        }
    }

    coverage_cell cell(const std::string& catalog, const std::string& locale,
                       const std::map<std::string, keys>& by_locale, const keys& wanted) {
        coverage_cell result;
        result.catalog = catalog;
        result.locale = locale;
        result.total = wanted.size();
        const keys not_own = without(wanted, of(by_locale, locale));
        result.own = result.total - not_own.size();
        keys left = not_own;
        for (const std::string& general : locale_chain(locale))
            left = without(left, of(by_locale, general));
        result.through_chain = result.total - left.size();
        for (const std::uint32_t key : not_own)
            result.not_own.push_back(m_names.text(key));
        std::sort(result.not_own.begin(), result.not_own.end());
        return result;
    }

    const coverage_options& m_options;
    string_pool m_names;
    std::map<std::string, catalog_keys> m_catalogs;
};

// In tenths, rounded down, so that 100 % means all.
std::string percent(std::size_t part, std::size_t total) {
    const std::size_t tenths = total == 0 ? 1000 : part * 1000 / total;
    return std::to_string(tenths / 10) + '.' + std::to_string(tenths % 10);
}

table as_table(const std::vector<coverage_cell>& cells, const style& colors) {
    table result(
        {"catalog", "locale", "messages", "own", "own %", "not own", "with fallback", "missing"},
        {align::left, align::left, align::right, align::right, align::right, align::right,
         align::right, align::right});
    for (const coverage_cell& each : cells) {
        const std::string share = percent(each.own, each.total);
        result.add({each.catalog, each.locale, std::to_string(each.total), std::to_string(each.own),
                    each.own == each.total      ? colors.green(share)
                    : each.own * 2 < each.total ? colors.red(share)
                                                : colors.yellow(share),
                    std::to_string(each.not_own.size()), std::to_string(each.through_chain),
                    std::to_string(each.total - each.through_chain)});
    }
    return result;
}

using json = nlohmann::ordered_json;

json as_json(const std::vector<coverage_cell>& cells) {
    json result = json::array();
    for (const coverage_cell& each : cells)
        result.push_back({{"catalog", each.catalog},
                          {"locale", each.locale},
                          {"messages", each.total},
                          {"own", each.own},
                          {"withFallback", each.through_chain},
                          {"missing", each.total - each.through_chain},
                          {"notOwn", each.not_own}});
    return result;
}

// One minimum: LOCALE=PERCENT, where a "%" may follow.
struct minimum {
    std::string locale;
    std::string percent;
    double share = 0;
};

bool read_minimum(const std::string& text, minimum& result) {
    const auto equals = text.find('=');
    if (equals == text.npos)
        return false;
    result.locale = normalized_locale(text.substr(0, equals));
    result.percent = text.substr(equals + 1);
    if (!result.percent.empty() && result.percent.back() == '%')
        result.percent.pop_back();
    char* end = nullptr;
    result.share = std::strtod(result.percent.c_str(), &end);
    return !result.percent.empty() && *end == '\0';
}

// Returns whether all minimums are reached, after naming those that are not.
bool are_minimums_reached(const std::vector<coverage_cell>& cells,
                          const std::vector<minimum>& minimums, std::ostream& errors) {
    bool is_reached = true;
    for (const minimum& each : minimums) {
        std::size_t own = 0;
        std::size_t total = 0;
        for (const coverage_cell& cell : cells)
            if (cell.locale == each.locale) {
                own += cell.own;
                total += cell.total;
            }
        const bool is_met = total != 0 && 100.0 * static_cast<double>(own) >=
                                              each.share * static_cast<double>(total);
        if (!is_met)
            errors << "tova-xmc: " << each.locale << ": "
                   << (total == 0 ? "0.0" : percent(own, total)) << " % translated, at least "
                   << each.percent << " % required\n";
        is_reached = is_reached && is_met;
    }
    return is_reached;
}

const char page_begin[] = R"page(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Coverage of message catalogs</title>
<style>
:root { color-scheme: light dark; --line: #c8ccd1; --soft: #f3f4f6; --bar: #2e7d4f; --rest: #d9dde2; --text: #1b1f24; --back: #fff; --link: #0b57d0; }
@media (prefers-color-scheme: dark) { :root { --line: #3d444d; --soft: #1f252c; --bar: #4caf7a; --rest: #3d444d; --text: #e6e9ec; --back: #14181c; --link: #8ab4f8; } }
body { font: 16px/1.5 system-ui, sans-serif; color: var(--text); background: var(--back); margin: 0 auto; padding: 1rem; max-width: 60rem; }
h1 { font-size: 1.4rem; }
input { font: inherit; width: 100%; box-sizing: border-box; padding: .4rem .6rem; color: inherit; background: var(--soft); border: 1px solid var(--line); border-radius: .3rem; }
table { border-collapse: collapse; width: 100%; margin-top: 1rem; }
th, td { text-align: left; padding: .35rem .5rem; border-bottom: 1px solid var(--line); }
td.number, th.number { text-align: right; font-variant-numeric: tabular-nums; }
td.number { white-space: nowrap; }
th button { font: inherit; font-weight: 600; color: inherit; background: none; border: 0; padding: 0; cursor: pointer; }
th[aria-sort=ascending] button::after { content: " \25B2"; }
th[aria-sort=descending] button::after { content: " \25BC"; }
td button { font: inherit; color: var(--link); background: none; border: 0; padding: 0; cursor: pointer; text-decoration: underline; }
.bar { display: block; height: .4rem; background: var(--rest); border-radius: .2rem; overflow: hidden; min-width: 4rem; }
.bar span { display: block; height: 100%; background: var(--bar); }
.keys td { background: var(--soft); }
.keys ul { margin: 0; padding: 0 0 0 1.2rem; columns: 14rem; overflow-wrap: anywhere; }
@media (max-width: 30rem) { .wide { display: none; } body { padding: .6rem; } th, td { padding: .3rem .25rem; } }
</style>
</head>
<body>
<h1>Coverage of message catalogs</h1>
<p id="sum"></p>
<input id="search" type="search" placeholder="Search for a catalog, locale or message" aria-label="Search">
<table>
<thead><tr>
<th data-key="catalog"><button>Catalog</button></th>
<th data-key="locale"><button>Locale</button></th>
<th data-key="share" class="number"><button>Own %</button></th>
<th class="wide"></th>
<th data-key="messages" class="number wide"><button>Messages</button></th>
<th data-key="lacking" class="number"><button>Not own</button></th>
<th data-key="fallback" class="number wide"><button>With fallback</button></th>
<th data-key="missing" class="number"><button>Missing</button></th>
</tr></thead>
<tbody id="rows"></tbody>
</table>
<script>
"use strict";
const cells = )page";

const char page_end[] = R"page(;
for (const cell of cells) {
  cell.share = cell.messages === 0 ? 1 : cell.own / cell.messages;
  cell.fallback = cell.withFallback;
  cell.lacking = cell.notOwn.length;
  cell.open = false;
}
let order = { key: "catalog", down: false };
const rows = document.getElementById("rows");
const search = document.getElementById("search");
function element(name, text, kind) {
  const made = document.createElement(name);
  if (text !== undefined) made.textContent = text;
  if (kind) made.className = kind;
  return made;
}
function percent(share) { return (Math.floor(share * 1000) / 10).toFixed(1) + " %"; }
function compare(a, b) {
  const x = a[order.key], y = b[order.key];
  const first = typeof x === "number" ? x - y : x < y ? -1 : x > y ? 1 : 0;
  return (order.down ? -first : first) || (a.catalog + a.locale < b.catalog + b.locale ? -1 : 1);
}
function show() {
  const words = search.value.toLowerCase();
  rows.textContent = "";
  let shown = 0;
  for (const cell of [...cells].sort(compare)) {
    const named = (cell.catalog + " " + cell.locale).toLowerCase().includes(words);
    const keys = named ? cell.notOwn : cell.notOwn.filter(key => key.toLowerCase().includes(words));
    if (!named && keys.length === 0) continue;
    ++shown;
    const row = element("tr");
    row.append(element("td", cell.catalog), element("td", cell.locale), element("td", percent(cell.share), "number"));
    const graph = element("td", undefined, "wide"), bar = element("span", undefined, "bar"), part = element("span");
    part.style.width = 100 * cell.share + "%";
    bar.append(part); graph.append(bar); row.append(graph);
    row.append(element("td", cell.messages, "number wide"));
    const last = element("td", undefined, "number");
    if (cell.lacking === 0) last.textContent = "0";
    else {
      const more = element("button", cell.lacking);
      more.setAttribute("aria-expanded", cell.open || (words !== "" && !named));
      more.addEventListener("click", () => { cell.open = !cell.open; show(); });
      last.append(more);
    }
    row.append(last, element("td", cell.fallback, "number wide"), element("td", cell.missing, "number"));
    rows.append(row);
    if (cell.open || (words !== "" && !named)) {
      const detail = element("tr", undefined, "keys"), content = element("td");
      content.colSpan = 8;
      const list = element("ul");
      for (const key of keys) list.append(element("li", key));
      content.append(list); detail.append(content); rows.append(detail);
    }
  }
  document.getElementById("sum").textContent = shown + " of " + cells.length + " rows";
  for (const head of document.querySelectorAll("th[data-key]"))
    head.setAttribute("aria-sort", head.dataset.key !== order.key ? "none" : order.down ? "descending" : "ascending");
}
for (const head of document.querySelectorAll("th[data-key]"))
  head.firstChild.addEventListener("click", () => {
    order = { key: head.dataset.key, down: order.key === head.dataset.key && !order.down };
    show();
  });
search.addEventListener("input", show);
show();
</script>
</body>
</html>
)page";

// JSON within a script element: "</script>" and "<!--" in a key must not end it.
std::string embedded(const json& document) {
    std::string result;
    for (const char c : dumped(document, -1))
        result += c == '<' ? std::string("\\u003c") : std::string(1, c);
    return result;
}

void list_untranslated(const std::vector<coverage_cell>& cells, const std::string& locale,
                       const std::string& format, std::ostream& out) {
    json list = json::array();
    for (const coverage_cell& each : cells) {
        if (each.locale != locale)
            continue;
        for (const std::string& key : each.not_own)
            if (format == "json")
                list.push_back({{"catalog", each.catalog}, {"key", key}});
            else
                out << each.catalog << '/' << readable_key(key) << '\n';
    }
    if (format == "json")
        write_json(out, list);
}

}  // namespace

std::vector<coverage_cell> coverage(const coverage_options& options) {
    return counter(options).cells();
}

void write_coverage_page(std::ostream& out, const std::vector<coverage_cell>& cells) {
    out << page_begin << embedded(as_json(cells)) << page_end;
}

int run_coverage(const coverage_options& options, std::ostream& out, std::ostream& errors,
                 const style& colors) {
    std::vector<minimum> minimums(options.minimums.size());
    for (std::size_t i = 0; i < minimums.size(); ++i)
        if (!read_minimum(options.minimums[i], minimums[i])) {
            errors << "tova-xmc: --min needs LOCALE=PERCENT, not \"" << options.minimums[i]
                   << "\"\n";
            return exit_usage;
        }
    const std::vector<coverage_cell> cells = coverage(options);
    if (std::none_of(cells.begin(), cells.end(), [&](const coverage_cell& each) {
            return each.locale == normalized_locale(options.reference);
        })) {
        if (options.requires_reference)
            throw file_error("no catalog has the locale " + options.reference);
        if (!cells.empty())
            errors << "tova-xmc: no catalog has the locale " << options.reference
                   << ", so the messages of all locales count; --reference names another locale\n";
    }
    std::ostringstream text;
    if (!options.untranslated_in.empty()) {
        const std::string locale = normalized_locale(options.untranslated_in);
        if (std::none_of(cells.begin(), cells.end(),
                         [&](const coverage_cell& each) { return each.locale == locale; })) {
            errors << "tova-xmc: no catalog has the locale " << options.untranslated_in << '\n';
            return exit_usage;
        }
        list_untranslated(cells, locale, options.format, text);
    } else if (options.format == "csv") {
        as_table(cells, style()).write_csv(text);
    } else if (options.format == "json") {
        write_json(text, as_json(cells));
    } else if (options.format == "html") {
        write_coverage_page(text, cells);
    } else {
        const style used = is_standard(options.output) ? colors : style();
        as_table(cells, used).write(text, used);
    }
    write_result(options.output, text.str(), out);
    return are_minimums_reached(cells, minimums, errors) ? exit_clean : exit_findings;
}

}  // namespace tova_programs::xmc
