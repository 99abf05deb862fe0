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
#include <filesystem>
#include <iterator>
#include <map>
#include <set>
#include <utility>

namespace tova_programs::xmc {

namespace {

using json = nlohmann::ordered_json;
namespace fs = std::filesystem;

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

const char* const endings[] = {".po", ".pot", ".xlf", ".xliff", ".csv"};

bool has_known_ending(const std::string& path) {
    return std::any_of(std::begin(endings), std::end(endings),
                       [&](const char* each) { return ends_in(path, each); });
}

// A template has no language; it is read as if it were of the reference.
imported read(const import_options& options, const std::string& path) {
    const std::string bytes = read_file(path);
    const std::string catalog = options.catalog.empty() ? "messages" : options.catalog;
    const std::string reference = options.reference.empty() ? "en" : options.reference;
    const std::string locale =
        options.locale.empty() && ends_in(path, ".pot") ? reference : options.locale;
    if (ends_in(path, ".po") || ends_in(path, ".pot"))
        return read_po(bytes, path, {catalog, locale, reference});
    if (ends_in(path, ".xlf") || ends_in(path, ".xliff"))
        return read_xliff(bytes, path, {options.catalog, locale});
    if (ends_in(path, ".csv"))
        return read_csv(bytes, path, {catalog, locale, reference});
    throw file_error(path + ": ends in none of .po, .pot, .xlf, .xliff and .csv");
}

// The files named, and those in the folders named, in the order of their names.
std::vector<std::string> files_of(const std::vector<std::string>& paths) {
    std::vector<std::string> result;
    for (const std::string& path : paths) {
        std::error_code error;
        if (!fs::is_directory(path, error)) {
            result.push_back(path);
            continue;
        }
        std::vector<std::string> inside;
        for (const auto& entry : fs::directory_iterator(path, error))
            if (has_known_ending(entry.path().native()))
                inside.push_back(entry.path().native());
        if (error)
            throw file_error(path + ": " + error.message());
        if (inside.empty())
            throw file_error(path + ": has no .po, .pot, .xlf, .xliff or .csv file");
        std::sort(inside.begin(), inside.end());
        result.insert(result.end(), inside.begin(), inside.end());
    }
    return result;
}

json as_json(const imported& result) {
    json problems = json::array();
    for (const exchange_problem& each : result.problems)
        problems.push_back({{"line", each.line}, {"message", each.subject}, {"text", each.text}});
    return {{"locale", result.all.locale},
            {"messages", targets_of(result.all)},
            {"untranslated", result.untranslated},
            {"fuzzy", result.fuzzy},
            {"problems", problems}};
}

void write_problems(const imported& result, const std::string& path, std::ostream& errors) {
    for (const exchange_problem& each : result.problems)
        errors << path << ':' << each.line << ": " << each.subject << ": " << each.text << '\n';
}

void write_counts(const std::string& path, std::size_t messages, std::size_t untranslated,
                  std::ostream& errors) {
    errors << path << ": " << messages << (messages == 1 ? " message, " : " messages, ")
           << untranslated << " not translated\n";
}

int import_one(const import_options& options, const std::string& path, std::ostream& out,
               std::ostream& errors) {
    const imported result = read(options, path);
    const std::string text = catalogs_of(result.all, options.with_sources);
    if (options.as_json) {
        write_json_result(options.output, text, as_json(result), out);
    } else {
        write_result(options.output, text, out);
        write_problems(result, path, errors);
        if (!is_standard(options.output))
            write_counts(options.output, targets_of(result.all), result.untranslated, errors);
    }
    return result.problems.empty() ? exit_clean : exit_findings;
}

// Several files into a folder.
class folder_import {
public:
    folder_import(const import_options& options, std::ostream& out, std::ostream& errors)
        : m_options(options), m_out(out), m_errors(errors) {}

    int run(const std::vector<std::string>& paths) {
        if (is_standard(m_options.output))
            throw file_error("several files need --output: the folder of the catalogs");
        std::error_code error;
        fs::create_directories(m_options.output, error);
        if (error)
            throw file_error(m_options.output + ": " + error.message());
        for (const std::string& path : paths)
            import(path);
        if (m_options.with_sources && !m_sources.messages.empty())
            write(catalogs_of(m_sources, false), m_sources.locale, targets_of(m_sources), 0);
        if (m_options.as_json)
            write_json(m_out, {{"files", m_files}, {"imports", m_list}});
        return m_has_problems ? exit_findings : exit_clean;
    }

private:
    void import(const std::string& path) {
        const imported result = read(m_options, path);
        m_has_problems = m_has_problems || !result.problems.empty();
        json about = as_json(result);
        about["source"] = path;
        m_list.push_back(std::move(about));
        if (!m_options.as_json)
            write_problems(result, path, m_errors);
        const bool is_reference =
            normalized_locale(result.all.locale) == normalized_locale(result.all.reference);
        if (m_options.with_sources)
            add_sources(result.all, is_reference);
        // What a file of the reference says is in the file of the sources.
        if (ends_in(path, ".pot") || (m_options.with_sources && is_reference))
            return;
        write(catalogs_of(result.all, false), fs::path(path).stem().native(),
              targets_of(result.all), result.untranslated);
    }

    // The sources as messages of the reference. What a file in that language says itself counts
    // more.
    void add_sources(const exchange& from, bool is_reference) {
        m_sources.locale = from.reference;
        m_sources.reference = from.reference;
        for (const exchanged_message& each : from.messages) {
            const bool has_own = is_reference && each.target.exists;
            const exchanged_text& text = has_own ? each.target : each.source;
            if (!text.exists)
                continue;
            const auto added =
                m_known.insert({{each.catalog, each.key}, m_sources.messages.size()});
            if (added.second)
                m_sources.messages.push_back({each.catalog, each.key, {}, text});
            else if (has_own)
                m_sources.messages[added.first->second].target = text;
        }
    }

    void write(const std::string& text, const std::string& name, std::size_t messages,
               std::size_t untranslated) {
        const std::string path = (fs::path(m_options.output) / (name + ".xmc")).native();
        if (!m_written.insert(path).second)
            throw file_error(path + ": two of the files would become this one");
        write_file(path, text);
        if (m_options.as_json)
            m_files.push_back(path);
        else
            write_counts(path, messages, untranslated, m_errors);
    }

    const import_options& m_options;
    std::ostream& m_out;
    std::ostream& m_errors;
    exchange m_sources;
    std::map<std::pair<std::string, std::string>, std::size_t> m_known;
    std::set<std::string> m_written;
    json m_files = json::array();
    json m_list = json::array();
    bool m_has_problems = false;
};

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
    const std::vector<std::string> files = files_of(options.paths);
    std::error_code error;
    if (files.size() == 1 && !fs::is_directory(options.paths[0], error))
        return import_one(options, files[0], out, errors);
    return folder_import(options, out, errors).run(files);
}

}  // namespace tova_programs::xmc
