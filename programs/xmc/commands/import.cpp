#include "xmc/commands/import.hpp"

#include "support/exit_code.hpp"
#include "support/text_file.hpp"
#include "xmc/commands/import_files.hpp"
#include "xmc/exchange/csv.hpp"
#include "xmc/exchange/exchange.hpp"
#include "xmc/exchange/po.hpp"
#include "xmc/exchange/xliff.hpp"
#include "xmc/model/documents.hpp"
#include "xmc/model/files.hpp"
#include "xmc/model/locale.hpp"
#include "xmc/output.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <string_view>
#include <utility>

// An import has three steps. All files are read; the names of the results are compared; the results
// are written. So a mistake in the command line or in a file leaves no half of a folder.

namespace tova_programs::xmc {

namespace {

using json = nlohmann::ordered_json;
namespace fs = std::filesystem;

struct read_result {
    std::string path;
    std::string folder;  // below the output; empty: the output itself
    std::string name;    // of the catalog file
    bool is_template = false;
    imported content;
};

bool is_po(const std::string& path) {
    return ends_in(path, ".po") || ends_in(path, ".pot");
}

// A locale with "_", as programs ask for it; "zh-Hant" would not be found. Other names stay.
std::string as_asked_for(const std::string& locale) {
    return is_usual_locale(locale) ? normalized_locale(locale) : locale;
}

// A template has no language; it is read as if it were of the reference.
read_result read(const import_options& options, const import_file& file) {
    read_result result;
    result.path = file.path;
    result.is_template = ends_in(file.path, ".pot");
    const std::string bytes = read_file(file.path);
    const std::string reference = options.reference.empty() ? "en" : options.reference;
    import_layout layout = is_po(file.path) ? layout_of(file, po_language(bytes)) : import_layout();
    const std::string locale = as_asked_for(options.locale);
    const auto locale_or = [&](const std::string& other) {
        return !locale.empty() ? locale : as_asked_for(other);
    };
    const std::string catalog = !options.catalog.empty()  ? options.catalog
                                : !layout.catalog.empty() ? layout.catalog
                                                          : "messages";
    if (is_po(file.path))
        result.content =
            read_po(bytes, file.path,
                    {catalog, locale_or(result.is_template ? reference : layout.locale), reference,
                     options.is_c_format});
    else if (ends_in(file.path, ".xlf") || ends_in(file.path, ".xliff") ||
             ends_in(file.path, ".xliff2"))
        result.content = read_xliff(bytes, file.path, {options.catalog, locale});
    else if (ends_in(file.path, ".csv"))
        result.content = read_csv(bytes, file.path, {catalog, locale, reference});
    else
        throw file_error(file.path +
                         ": the extension must be .po, .pot, .xlf, .xliff, .xliff2 or .csv");
    if (!is_po(file.path))
        layout = layout_of(file, result.content.all.locale);
    const std::string stem = fs::path(file.path).stem().native();
    result.name = layout.locale.empty() ? as_asked_for(stem) : locale_or(layout.locale);
    if (!layout.catalog.empty())
        result.folder = options.catalog.empty() ? layout.catalog : options.catalog;
    return result;
}

std::size_t targets_of(const exchange& all) {
    return static_cast<std::size_t>(
        std::count_if(all.messages.begin(), all.messages.end(),
                      [](const exchanged_message& each) { return each.target.exists; }));
}

json as_json(const imported& result) {
    json problems = json::array();
    for (const exchange_problem& each : result.problems)
        problems.push_back({{"line", each.line}, {"message", each.subject}, {"text", each.text}});
    return {{"locale", result.all.locale},         {"messages", targets_of(result.all)},
            {"untranslated", result.untranslated}, {"fuzzy", result.fuzzy},
            {"unflagged", result.unflagged},       {"problems", problems}};
}

bool has_problems(const imported& result) {
    return !result.problems.empty() || result.unflagged != 0;
}

// Equal problems are one line, at the place of the first.
void write_problems(const imported& result, const std::string& path, std::ostream& errors) {
    std::map<std::string_view, std::size_t> counts;
    for (const exchange_problem& each : result.problems)
        ++counts[each.text];
    const std::size_t kinds = counts.size();
    for (const exchange_problem& each : result.problems) {
        std::size_t& count = counts[each.text];
        if (count == 0)
            continue;
        errors << path << ':' << each.line << ": " << readable_key(each.subject) << ": "
               << each.text;
        if (count > 1)
            errors << " (and " << count - 1 << " more)";
        errors << '\n';
        count = 0;
    }
    if (result.problems.size() > kinds)
        errors << path << ": " << result.problems.size() << " findings of " << kinds
               << (kinds == 1 ? " kind" : " kinds") << "; --json lists all\n";
    if (result.unflagged == 1)
        errors << path
               << ": 1 message contains printf items but has no c-format flag; it stays text "
                  "(--c-format makes it an argument)\n";
    else if (result.unflagged != 0)
        errors << path << ": " << result.unflagged
               << " messages contain printf items but have no c-format flag; they stay text "
                  "(--c-format makes them arguments)\n";
}

// The sources of several files as messages of the reference.
class source_set {
public:
    // What a file in the language of the reference says itself counts more.
    void add(const exchange& from) {
        const bool is_reference =
            normalized_locale(from.locale) == normalized_locale(from.reference);
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

    const exchange& all() const { return m_sources; }

    // "4 of 5 messages, 1 not translated", counted as `coverage` does: the messages of the
    // reference in the catalogs that the file has.
    std::string count(const exchange& of) const {
        std::set<std::string_view> catalogs;
        std::size_t own = 0;
        for (const exchanged_message& each : of.messages) {
            catalogs.insert(each.catalog);
            own += each.target.exists && m_known.count({each.catalog, each.key}) != 0;
        }
        const auto total = static_cast<std::size_t>(std::count_if(
            m_sources.messages.begin(), m_sources.messages.end(),
            [&](const exchanged_message& each) { return catalogs.count(each.catalog) != 0; }));
        if (total == 0)
            return plain_count(targets_of(of));
        return std::to_string(own) + " of " + plain_count(total) + ", " +
               std::to_string(total - own) + " not translated";
    }

    std::string count() const { return plain_count(m_sources.messages.size()); }

private:
    static std::string plain_count(std::size_t messages) {
        return std::to_string(messages) + (messages == 1 ? " message" : " messages");
    }

    exchange m_sources;
    std::map<std::pair<std::string, std::string>, std::size_t> m_known;
};

int import_one(const import_options& options, std::ostream& out, std::ostream& errors) {
    const read_result file = read(options, {options.paths[0], false});
    const imported& content = file.content;
    const std::string text = catalogs_of(content.all, options.with_sources);
    if (!is_standard(options.output))
        create_folder_of(options.output);
    if (options.as_json) {
        write_json_result(options.output, text, as_json(content), out);
    } else {
        source_set sources;
        sources.add(content.all);
        write_result(options.output, text, out);
        write_problems(content, file.path, errors);
        if (!is_standard(options.output))
            errors << options.output << ": " << sources.count(content.all) << '\n';
    }
    return has_problems(content) ? exit_findings : exit_clean;
}

// Several files into a folder.
class folder_import {
public:
    folder_import(const import_options& options, std::ostream& out, std::ostream& errors)
        : m_options(options), m_out(out), m_errors(errors) {}

    int run(const std::vector<import_file>& files) {
        if (is_standard(m_options.output))
            throw file_error("several files need --output: the folder of the catalogs");
        for (const import_file& each : files)
            m_files.push_back(read(m_options, each));
        place_templates();
        for (const read_result& each : m_files)
            m_sources[each.folder].add(each.content.all);
        find_collisions();
        bool has_any = false;
        for (const read_result& each : m_files) {
            has_any = has_any || has_problems(each.content);
            write_one(each);
        }
        if (m_options.with_sources)
            for (const auto& each : m_sources)
                if (!each.second.all().messages.empty())
                    write(source_path(each), catalogs_of(each.second.all(), false),
                          each.second.count());
        if (m_options.as_json)
            write_json(m_out, {{"files", m_written}, {"imports", m_list}});
        return has_any ? exit_findings : exit_clean;
    }

private:
    using sources_by_folder = std::map<std::string, source_set>;

    // A template beside the folders of the locales belongs to the catalog of its name.
    void place_templates() {
        std::set<std::string> folders;
        for (const read_result& each : m_files)
            if (!each.is_template)
                folders.insert(each.folder);
        for (read_result& each : m_files) {
            const std::string stem = fs::path(each.path).stem().native();
            if (!each.is_template || folders.count(stem) == 0)
                continue;
            each.folder = stem;
            if (m_options.catalog.empty())
                for (exchanged_message& one : each.content.all.messages)
                    one.catalog = stem;
        }
    }

    std::string output_path(const std::string& folder, const std::string& name) const {
        return (fs::path(m_options.output) / folder / (name + ".xmc")).native();
    }
    std::string path_of(const read_result& file) const {
        return output_path(file.folder, file.name);
    }
    std::string source_path(const sources_by_folder::value_type& each) const {
        return output_path(each.first, each.second.all().locale);
    }

    // Nothing is written for a template. What a file of the reference says is in the file of the
    // sources.
    bool is_written(const read_result& file) const {
        const exchange& all = file.content.all;
        const bool is_reference = normalized_locale(all.locale) == normalized_locale(all.reference);
        return !file.is_template && !(m_options.with_sources && is_reference);
    }

    void find_collisions() const {
        std::map<std::string, std::string> origins;  // by output
        const auto add = [&](const std::string& path, const std::string& origin) {
            const auto added = origins.insert({path, origin});
            if (!added.second)
                throw file_error(path + ": " + added.first->second + " and " + origin +
                                 " would both become this file" +
                                 (m_options.catalog.empty()
                                      ? ""
                                      : " (without --catalog the folders and names "
                                        "of the files say which catalog they are)"));
        };
        for (const read_result& each : m_files)
            if (is_written(each))
                add(path_of(each), each.path);
        if (m_options.with_sources)
            for (const auto& each : m_sources)
                if (!each.second.all().messages.empty())
                    add(source_path(each), "the sources");
    }

    void write_one(const read_result& file) {
        if (m_options.as_json) {
            json about = as_json(file.content);
            about["source"] = file.path;
            m_list.push_back(std::move(about));
        } else {
            write_problems(file.content, file.path, m_errors);
        }
        if (is_written(file))
            write(path_of(file), catalogs_of(file.content.all, false),
                  m_sources[file.folder].count(file.content.all));
    }

    void write(const std::string& path, const std::string& text, const std::string& count) {
        create_folder_of(path);
        write_file(path, text);
        if (m_options.as_json)
            m_written.push_back(path);
        else
            m_errors << path << ": " << count << '\n';
    }

    const import_options& m_options;
    std::ostream& m_out;
    std::ostream& m_errors;
    std::vector<read_result> m_files;
    sources_by_folder m_sources;
    json m_written = json::array();
    json m_list = json::array();
};

// Whether `--output` names a folder: one that exists, or a name that no catalog file would have.
bool is_folder_name(const std::string& output) {
    std::error_code error;
    if (fs::exists(output, error))
        return fs::is_directory(output, error);
    return !is_standard(output) && !has_catalog_extension(output);
}

}  // namespace

int run_import(const import_options& options, std::ostream& out, std::ostream& errors) {
    const std::vector<import_file> files = import_files(options.paths);
    std::error_code error;
    if (files.size() == 1 && !fs::is_directory(options.paths[0], error) &&
        !is_folder_name(options.output))
        return import_one(options, out, errors);
    return folder_import(options, out, errors).run(files);
}

}  // namespace tova_programs::xmc
