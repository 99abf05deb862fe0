#include "xmc/lsp/diagnostics.hpp"

#include <algorithm>
#include <utility>

namespace tova_programs::xmc::lsp {

namespace {

const int unnecessary = 1;  // the tag

int severity_of(const finding& found) {
    switch (found.level) {
    case severity::error:
        return 1;
    case severity::warning:
        return 2;
    default:
        return 3;
    }
}

// What could be deleted without another result.
bool is_unnecessary(const finding& found) {
    const std::string_view id = found.broken_rule->id;
    return id == "unread-option" || id == "ignored-text";
}

json related_json(const finding& found, line_maps& maps, const workspace& files) {
    json result = json::array();
    for (const related_place& each : found.related) {
        json range = range_json(maps.of(each.file), each.offset, each.offset + each.length);
        result.push_back(
            {{"location", {{"uri", files.uri_for(each.file)}, {"range", std::move(range)}}},
             {"message", each.text}});
    }
    return result;
}

}  // namespace

const line_map& line_maps::of(const document_pointer& document) {
    const auto found = m_entries.find(document.get());
    if (found != m_entries.end())
        return found->second.lines;
    entry fresh = {document, line_map(document->file.bytes(), m_units)};
    return m_entries.emplace(document.get(), std::move(fresh)).first->second.lines;
}

const line_map& line_maps::of(const std::string& path) {
    if (const buffer* const open = m_files.find(path))
        return of(m_files.document_of(open->uri));
    // A link is found, but never read.
    static const line_map no_lines({}, encoding::utf8);
    return m_files.has_file(path) ? of(m_files.document(path)) : no_lines;
}

json diagnostic_of(const finding& found, line_maps& maps, const workspace& files,
                   const client_features& client) {
    const rule& broken = *found.broken_rule;
    const line_map& lines = maps.of(found.file);
    json result = {{"range", range_json(lines, found.offset, found.offset + found.length)},
                   {"severity", severity_of(found)},
                   {"code", broken.id},
                   {"source", "tova-xmc"},
                   {"message", found.text}};
    if (client.has_related_information && !found.related.empty())
        result["relatedInformation"] = related_json(found, maps, files);
    if (client.has_unnecessary_tag && is_unnecessary(found))
        result["tags"] = json::array({unnecessary});
    if (client.has_diagnostic_data)
        result["data"] = {{"summary", broken.summary}, {"explanation", broken.explanation}};
    return result;
}

void publisher::publish(const report& found, workspace& files, const client_features& client,
                        const send_function& send) {
    line_maps maps(files, client.units);
    std::map<std::string, json> all;
    for (const auto& open : files.buffers())
        all[open.first] = {
            {"uri", open.first}, {"version", open.second.version}, {"diagnostics", json::array()}};
    std::map<std::string, std::string> uris;  // by path, since each costs a look at the disk
    for (const finding& each : found.findings()) {
        std::string& uri = uris[each.file];
        if (uri.empty())
            uri = files.uri_for(each.file);
        json& params = all[uri];
        if (params.is_null())
            params = {{"uri", uri}, {"diagnostics", json::array()}};
        params["diagnostics"].push_back(diagnostic_of(each, maps, files, client));
    }
    for (const auto& sent : m_sent)
        if (all.find(sent.first) == all.end() && !sent.second["diagnostics"].empty())
            all[sent.first] = {{"uri", sent.first}, {"diagnostics", json::array()}};
    for (const auto& each : all) {
        const auto sent = m_sent.find(each.first);
        if (sent == m_sent.end() || sent->second != each.second)
            send(each.second);
    }
    m_sent = std::move(all);
}

}  // namespace tova_programs::xmc::lsp
