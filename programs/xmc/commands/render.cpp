#include "xmc/commands/render.hpp"

#include "support/exit_code.hpp"
#include "support/suggestion.hpp"
#include "support/table.hpp"
#include "support/text_file.hpp"
#include "xmc/exchange/exchange.hpp"
#include "xmc/exchange/plural_forms.hpp"
#include "xmc/model/documents.hpp"
#include "xmc/model/files.hpp"
#include "xmc/model/locale.hpp"
#include "xmc/model/rendering.hpp"
#include "xmc/output.hpp"

#include <tova/generic/varg_list.hpp>
#include <tova/i18n/message_catalogs.hpp>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>
#include <sstream>
#include <utility>

namespace tova_programs::xmc {

namespace {

using tova::generic::varg_list;
using tova::i18n::message_catalogs;
using tova::i18n::message_item;
using tova::i18n::message_t;
using tova::strings::ustring8;
using json = nlohmann::ordered_json;

std::string quoted(const std::string& text) {
    return '"' + text + '"';
}

// Raises `file_error` with the library's own report, after the file that it is about.
void load(message_catalogs& catalogs, const std::vector<std::string>& paths,
          const std::string& locale) {
    const std::vector<std::string> files = catalog_files(paths);
    const std::vector<ustring8> all(paths.begin(), paths.end());
    const auto result = catalogs.load(all, ustring8(locale));
    if (result.type == message_catalogs::no_error)
        return;
    for (const std::string& file : files) {
        message_catalogs alone;
        if (alone.load(std::vector<ustring8>{ustring8(file)}, ustring8(locale)).type !=
            message_catalogs::no_error)
            throw file_error(std::string(file)
                                 .append(" cannot be loaded; run tova-xmc check ")
                                 .append(file)
                                 .append("\n")
                                 .append(result.message));
    }
    throw file_error(result.message);
}

// A value as `NAME=VALUE` (a string) or `NAME:TYPE=VALUE`. Returns whether it is valid.
bool add_value(varg_list& values, const std::string& text, std::string& reason) {
    const auto equals = text.find('=');
    if (equals == text.npos || equals == 0) {
        reason = "a value is NAME=VALUE or NAME:TYPE=VALUE, not " + quoted(text);
        return false;
    }
    std::string name = text.substr(0, equals);
    std::string type = "string";
    const std::string value = text.substr(equals + 1);
    const auto colon = name.rfind(':');
    if (colon != name.npos) {
        type = name.substr(colon + 1);
        name.erase(colon);
    }
    char* end = nullptr;
    if (type == "int") {
        const long number = std::strtol(value.c_str(), &end, 10);
        values.push_back(ustring8(name), number);
    } else if (type == "double") {
        const double number = std::strtod(value.c_str(), &end);
        values.push_back(ustring8(name), number);
    } else if (type == "bool" && (value == "true" || value == "false")) {
        values.push_back(ustring8(name), value == "true");
        return true;
    } else if (type == "string") {
        values.push_back(ustring8(name), ustring8(value));
        return true;
    } else {
        reason = "the types of values are string, int, double and bool (true or false)";
        return false;
    }
    if (end == value.c_str() || *end != '\0') {
        reason = quoted(value) + " is not " + (type == "int" ? "an " : "a ") + type;
        return false;
    }
    return true;
}

using found_messages = std::vector<std::pair<std::string, const message_t*>>;

// The catalogs and messages that a key may mean.
found_messages find_exactly(const message_catalogs& set, const std::string& key) {
    found_messages result;
    const auto slash = key.find('/');
    for (const auto& each : set) {
        const std::string name = each.first;
        if (each.second->has_message(ustring8(key)))
            result.emplace_back(name, &each.second->message(ustring8(key)));
        else if (slash != key.npos && name == key.substr(0, slash) &&
                 each.second->has_message(ustring8(key.substr(slash + 1))))
            result.emplace_back(name, &each.second->message(ustring8(key.substr(slash + 1))));
    }
    return result;
}

// The same; a key that does not exist may be one with escapes, as `keys` or an export has it.
found_messages find_messages(const message_catalogs& set, const std::string& key) {
    found_messages result = find_exactly(set, key);
    if (!result.empty() || key.find('\\') == key.npos)
        return result;
    for (const auto& each : set)
        for (const auto& keyed : *each.second) {
            const std::string readable = readable_key(keyed.first);
            if (readable == key || std::string(each.first) + '/' + readable == key)
                result.emplace_back(each.first, &keyed.second);
        }
    return result.empty() ? find_exactly(set, from_portable(key)) : result;
}

std::string no_such_message(const message_catalogs& set, const std::string& key) {
    std::vector<std::string> known;
    for (const auto& each : set)
        for (const auto& keyed : *each.second)
            known.push_back(readable_key(keyed.first));
    return "there is no message " + quoted(readable_key(key)) + " for this locale" +
           did_you_mean(readable_key(key), known);
}

}  // namespace

int run_render(const render_options& options, std::ostream& out, std::ostream& errors) {
    varg_list values;
    std::string reason;
    for (const std::string& each : options.values)
        if (!add_value(values, each, reason)) {
            errors << "tova-xmc: " << reason << '\n';
            return exit_usage;
        }
    message_catalogs catalogs;
    load(catalogs, options.paths, options.locale);
    const auto found = find_messages(catalogs, options.key);
    if (found.empty()) {
        errors << "tova-xmc: " << no_such_message(catalogs, options.key) << '\n';
        return exit_findings;
    }
    json list = json::array();
    bool is_valid = true;
    for (const auto& each : found) {
        const std::string text = each.second->as_string(values);
        json problems = json::array();
        for (const message_item& item : *each.second) {
            const std::string why = reason_for_invalid(item, values);
            if (why.empty())
                continue;
            is_valid = false;
            problems.push_back({{"argument", item.name()}, {"reason", why}});
            if (!options.as_json)
                errors << each.first << '/' << readable_key(std::string(each.second->name()))
                       << ": argument " << quoted(item.name()) << " is invalid: " << why << '\n';
        }
        list.push_back({{"catalog", each.first},
                        {"key", each.second->name()},
                        {"locale", each.second->_orginal_locale()},
                        {"text", text},
                        {"invalid", problems}});
        if (!options.as_json)
            out << text << '\n';
    }
    if (options.as_json)
        write_json(out, list);
    return is_valid ? exit_clean : exit_findings;
}

namespace {

bool is_meant(const placed_message& each, const std::string& name, const std::string& key) {
    return name == key || std::string(each.of->name) + '/' + name == key;
}

// The messages that a key may mean. If there is none, it may be one with escapes, as `keys` or an
// export has it.
std::vector<placed_message> find_placed(const std::vector<placed_message>& all,
                                        const std::string& key) {
    std::vector<placed_message> result;
    for (const placed_message& each : all)
        if (is_meant(each, std::string(each.what->name), key))
            result.push_back(each);
    if (result.empty())
        for (const placed_message& each : all)
            if (is_meant(each, readable_key(each.what->name), key))
                result.push_back(each);
    if (result.empty() && from_portable(key) != key)
        return find_placed(all, from_portable(key));
    return result;
}

// The message that wins for a chain, per catalog and key: the one of the highest weight; within one
// file the first, of several files the one that is read last.
std::set<const message*> winners(const std::vector<placed_message>& found,
                                 const std::vector<std::string>& chain) {
    std::map<std::pair<std::string_view, std::string_view>, placed_message> best;
    for (const placed_message& each : found) {
        const unsigned int weight = locale_weight(chain, each.of->locale);
        if (weight == 0)
            continue;
        const auto added = best.insert({{each.of->name, each.what->name}, each});
        placed_message& known = added.first->second;
        const unsigned int known_weight = locale_weight(chain, known.of->locale);
        if (weight > known_weight || (weight == known_weight && each.file != known.file))
            known = each;
    }
    std::set<const message*> result;
    for (const auto& each : best)
        result.insert(each.second.what);
    return result;
}

std::string explained(const placed_message& each, const std::vector<std::string>& chain,
                      bool wins) {
    const unsigned int weight = locale_weight(chain, each.of->locale);
    if (weight == 0)
        return "not read";
    if (wins)
        return "shown: " + std::to_string(weight) + " of " + std::to_string(chain.size());
    return "weight " + std::to_string(weight);
}

json described(const placed_message& each) {
    json one = {{"catalog", each.of->name},
                {"key", each.what->name},
                {"locale", each.of->locale},
                {"place", place_of(each)},
                {"text", readable_text(*each.file, *each.what)}};
    if (!each.what->meta.empty())
        one["meta"] = each.what->meta;
    return one;
}

// Writes the messages found, with a column on the choice for a wanted locale, if there is one.
void write_shown(const show_options& options, const std::vector<placed_message>& found,
                 std::ostream& out, const style& colors) {
    const std::vector<std::string> chain =
        options.locale.empty() ? std::vector<std::string>() : locale_chain(options.locale);
    const std::set<const message*> shown = winners(found, chain);
    std::vector<std::string> headers = {"catalog", "locale", "place", "text"};
    if (!chain.empty())
        headers.insert(headers.begin() + 2, "for " + options.locale);
    table list(headers);
    json all = json::array();
    for (const placed_message& each : found) {
        json one = described(each);
        std::vector<std::string> row = {std::string(each.of->name), std::string(each.of->locale),
                                        place_of(each), readable_text(*each.file, *each.what)};
        if (!chain.empty()) {
            const bool wins = shown.count(each.what) != 0;
            const std::string why = explained(each, chain, wins);
            row.insert(row.begin() + 2, wins ? colors.green(why) : colors.dim(why));
            one["shown"] = wins;
        }
        list.add(std::move(row));
        all.push_back(std::move(one));
    }
    if (options.as_json)
        write_json(out, all);
    else
        list.write(out, colors);
}

}  // namespace

int run_show(const show_options& options, std::ostream& out, std::ostream& errors,
             const style& colors) {
    const documents files = read_documents(options.paths);
    const std::vector<placed_message> all = all_messages(files);
    std::vector<placed_message> found = find_placed(all, options.key);
    if (found.empty()) {
        std::vector<std::string> known;
        known.reserve(all.size());
        for (const placed_message& each : all)
            known.push_back(readable_key(each.what->name));
        const std::string key = readable_key(options.key);
        errors << "tova-xmc: there is no message " << quoted(key) << did_you_mean(key, known)
               << '\n';
        return exit_findings;
    }
    std::stable_sort(found.begin(), found.end(), [](const auto& a, const auto& b) {
        return std::make_pair(a.of->name, a.of->locale) < std::make_pair(b.of->name, b.of->locale);
    });
    write_shown(options, found, out, colors);
    return exit_clean;
}

namespace {

std::string html(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '>')
            result += "&gt;";
        else if (c == '"')
            result += "&quot;";
        else if (c == '\n')
            result += "<br>";
        else
            result += c;
    }
    return result;
}

// Mirrored scripts by their language.
bool is_right_to_left(const std::string& locale) {
    const std::string language = locale.substr(0, locale.find_first_of("_-.@"));
    return language == "ar" || language == "he" || language == "fa" || language == "ur" ||
           language == "yi" || language == "ps" || language == "sd" || language == "ug";
}

const char preview_begin[] = R"page(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Preview of message catalogs</title>
<style>
:root { color-scheme: light dark; --line: #c8ccd1; --soft: #f3f4f6; --text: #1b1f24; --back: #fff; --bad: #b3261e; }
@media (prefers-color-scheme: dark) { :root { --line: #3d444d; --soft: #1f252c; --text: #e6e9ec; --back: #14181c; --bad: #f2b8b5; } }
body { font: 16px/1.5 system-ui, sans-serif; color: var(--text); background: var(--back); margin: 0 auto; padding: 1rem; max-width: 60rem; }
h1 { font-size: 1.4rem; } h2 { font-size: 1.2rem; margin-top: 2rem; }
input { font: inherit; width: 100%; box-sizing: border-box; padding: .4rem .6rem; color: inherit; background: var(--soft); border: 1px solid var(--line); border-radius: .3rem; }
section { border-top: 1px solid var(--line); padding: .6rem 0; overflow-wrap: anywhere; }
section h3 { font: 600 1rem monospace; margin: 0 0 .2rem; }
section p.note { margin: 0 0 .4rem; opacity: .75; }
dl { display: grid; grid-template-columns: minmax(4rem, max-content) 1fr; gap: .2rem .8rem; margin: 0; }
dt { font-family: monospace; opacity: .75; } dd { margin: 0; }
bdi { display: block; white-space: pre-wrap; }
.missing { opacity: .75; font-style: italic; }
.invalid { color: var(--bad); font-weight: 600; }
</style>
</head>
<body>
<h1>Preview of message catalogs</h1>
<p>Every message as a program shows it, with sample values.</p>
<input id="search" type="search" placeholder="Search" aria-label="Search">
)page";

const char preview_end[] = R"page(<script>
"use strict";
document.getElementById("search").addEventListener("input", event => {
  const words = event.target.value.toLowerCase();
  for (const section of document.querySelectorAll("section"))
    section.hidden = !section.textContent.toLowerCase().includes(words);
});
</script>
</body>
</html>
)page";

std::string marked(const std::string& text) {
    std::string result = html(text);
    const std::string mark = std::string("<span class=\"invalid\">") + invalid_item + "</span>";
    for (std::size_t at = result.find(invalid_item); at != result.npos;
         at = result.find(invalid_item, at + mark.size()))
        result.replace(at, sizeof invalid_item - 1, mark);
    return result;
}

struct previewed_text {
    std::string text;
    std::string locale;  // where it comes from; empty: nothing is shown
};

struct previewed {
    std::string note;
    std::map<std::string, previewed_text> texts;  // by locale
};

std::set<std::string> previewed_locales(const preview_options& options) {
    std::set<std::string> existing;
    for_each_document(options.paths, [&existing](const document& file) {
        for (const catalog& each : file.catalogs())
            if (!each.locale.empty() && each.locale != ".")
                existing.insert(std::string(each.locale));
    });
    std::set<std::string> normalized;
    for (const std::string& each : existing)
        normalized.insert(normalized_locale(each));
    for (const std::string& each : options.locales)
        require_locale(normalized, each);
    return options.locales.empty()
               ? existing
               : std::set<std::string>(options.locales.begin(), options.locales.end());
}

// Whether programs never ask for the key in the locale: it is a plural form of other languages.
bool is_foreign_form(const std::string& key, const std::string& locale) {
    const std::string form = key.substr(key.rfind('.') + 1);
    const std::vector<std::string> used = whole_categories(locale);
    return form != "other" && is_category(form) &&
           std::find(used.begin(), used.end(), form) == used.end();
}

bool is_own(const std::string& locale, const previewed_text& text) {
    return normalized_locale(text.locale) == normalized_locale(locale);
}

// Adds the locales for which nothing was loaded, and removes plural forms that they do not have.
void add_untranslated(previewed& message, const std::string& key,
                      const std::set<std::string>& locales) {
    for (const std::string& locale : locales) {
        const previewed_text& text = message.texts[locale];
        if ((text.locale.empty() && message.texts.count(".") != 0) ||
            (!is_own(locale, text) && is_foreign_form(key, locale)))
            message.texts.erase(locale);
    }
}

// What each locale shows, by catalog and key. A text without a language is there once, as that of
// the locale ".".
std::map<std::string, std::map<std::string, previewed>>
previewed_messages(const preview_options& options) {
    const std::set<std::string> locales = previewed_locales(options);
    std::map<std::string, std::map<std::string, previewed>> all;
    for (const std::string& locale : locales) {
        message_catalogs catalogs;
        load(catalogs, options.paths, locale);
        for (const auto& each : catalogs)
            for (const auto& keyed : *each.second) {
                const message_t& one = keyed.second;
                previewed& entry = all[each.first][keyed.first];
                if (!one.meta().empty())
                    entry.note = one.meta();
                const std::string origin = one._orginal_locale();
                entry.texts[origin == "." ? origin : locale] = {
                    one.as_string(samples_for(one, origin)), origin};
            }
    }
    for (auto& catalog : all)
        for (auto& keyed : catalog.second)
            add_untranslated(keyed.second, keyed.first, locales);
    return all;
}

json as_json(const std::string& catalog, const std::string& key, const previewed& message) {
    json texts = json::object();
    json instead = json::object();
    for (const auto& each : message.texts)
        if (is_own(each.first, each.second))
            texts[each.first] = each.second.text;
        else if (each.second.locale.empty())
            instead[each.first] = nullptr;
        else
            instead[each.first] = {{"locale", each.second.locale}, {"text", each.second.text}};
    return {{"catalog", catalog},
            {"key", key},
            {"note", message.note},
            {"texts", texts},
            {"instead", instead}};
}

void write_texts(std::ostream& page, const previewed& message) {
    page << "<dl>";
    for (const auto& each : message.texts) {
        const previewed_text& text = each.second;
        const std::string& language = text.locale.empty() ? each.first : text.locale;
        page << "<dt>" << html(each.first) << "</dt><dd>";
        if (!is_own(each.first, text))
            page << "<span class=\"missing\">not translated; "
                 << (text.locale.empty() ? "nothing is shown"
                                         : "shown in " + html(text.locale) + ":")
                 << "</span>" << (text.locale.empty() ? "" : " ");
        if (!text.locale.empty())
            page << "<bdi lang=\"" << html(language) << '"'
                 << (is_right_to_left(language) ? " dir=\"rtl\"" : "") << '>' << marked(text.text)
                 << "</bdi>";
        page << "</dd>";
    }
    page << "</dl>";
}

}  // namespace

int run_preview(const preview_options& options, std::ostream& out) {
    const auto all = previewed_messages(options);
    std::ostringstream page;
    if (options.as_json) {
        json list = json::array();
        for (const auto& catalog : all)
            for (const auto& keyed : catalog.second)
                list.push_back(as_json(catalog.first, keyed.first, keyed.second));
        write_json(page, list);
        write_result(options.output, page.str(), out);
        return exit_clean;
    }
    page << preview_begin;
    for (const auto& catalog : all) {
        page << "<h2>" << html(catalog.first) << "</h2>\n";
        for (const auto& keyed : catalog.second) {
            page << "<section><h3>" << html(readable_key(keyed.first)) << "</h3>";
            if (!keyed.second.note.empty())
                page << "<p class=\"note\">" << html(keyed.second.note) << "</p>";
            write_texts(page, keyed.second);
            page << "</section>\n";
        }
    }
    page << preview_end;
    write_result(options.output, page.str(), out);
    return exit_clean;
}

}  // namespace tova_programs::xmc
