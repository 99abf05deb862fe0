#include "xmc/lsp/protocol.hpp"

#include <algorithm>

namespace tova_programs::xmc::lsp {

namespace {

// A value deep inside of an object; null if anything on the way is missing.
const json& value_at(const json& object, const char* path) {
    static const json nothing;
    const json::json_pointer pointer(path);
    return object.contains(pointer) ? object.at(pointer) : nothing;
}

bool flag(const json& object, const char* path) {
    const json& value = value_at(object, path);
    return value.is_boolean() && value.get<bool>();
}

bool has(const json& object, const char* path, const json& element) {
    const json& list = value_at(object, path);
    return list.is_array() && std::find(list.begin(), list.end(), element) != list.end();
}

bool begins_line(const std::string& text, std::size_t offset) {
    return offset == 0 || text[offset - 1] == '\n';
}

}  // namespace

client_features::client_features(const json& params) {
    const json& all = value_at(params, "/capabilities");
    if (has(all, "/general/positionEncodings", "utf-8"))
        units = encoding::utf8;
    has_snippets = flag(all, "/textDocument/completion/completionItem/snippetSupport");
    has_markdown = has(all, "/textDocument/hover/contentFormat", "markdown");
    has_nested_symbols =
        flag(all, "/textDocument/documentSymbol/hierarchicalDocumentSymbolSupport");
    has_related_information = flag(all, "/textDocument/publishDiagnostics/relatedInformation");
    has_unnecessary_tag = has(all, "/textDocument/publishDiagnostics/tagSupport/valueSet", 1);
    has_diagnostic_data = flag(all, "/textDocument/publishDiagnostics/dataSupport");
    has_versioned_edits = flag(all, "/workspace/workspaceEdit/documentChanges");
    has_code_actions =
        value_at(all, "/textDocument/codeAction/codeActionLiteralSupport").is_object();
    watches_files = flag(all, "/workspace/didChangeWatchedFiles/dynamicRegistration");
}

std::size_t natural(const json& value) {
    if (!value.is_number_unsigned())
        throw response_error(invalid_params, "a line or character is no natural number");
    return value.get<std::size_t>();
}

position position_of(const json& value) {
    return {natural(value.at("line")), natural(value.at("character"))};
}

json json_of(const position& where) {
    return {{"line", where.line}, {"character", where.character}};
}

json range_json(const line_map& lines, std::size_t begin, std::size_t end) {
    return {{"start", json_of(lines.at(begin))}, {"end", json_of(lines.at(end))}};
}

json workspace_edit(const client_features& client, const std::string& uri, const json& version,
                    json edits) {
    if (!client.has_versioned_edits)
        return {{"changes", {{uri, std::move(edits)}}}};
    json document = {{"textDocument", {{"uri", uri}, {"version", version}}},
                     {"edits", std::move(edits)}};
    return {{"documentChanges", json::array({std::move(document)})}};
}

json line_edits(const line_map& lines, const std::string& before, const std::string& after) {
    if (before == after)
        return json::array();
    const std::size_t shorter = std::min(before.size(), after.size());
    std::size_t begin = static_cast<std::size_t>(
        std::mismatch(before.begin(), before.begin() + static_cast<std::ptrdiff_t>(shorter),
                      after.begin())
            .first -
        before.begin());
    begin = begin == 0 ? 0 : before.rfind('\n', begin - 1) + 1;  // npos + 1 is 0
    std::size_t same = 0;
    while (same < shorter - begin &&
           before[before.size() - 1 - same] == after[after.size() - 1 - same])
        ++same;
    while (same != 0 &&
           !(begins_line(before, before.size() - same) && begins_line(after, after.size() - same)))
        --same;
    return json::array({{{"range", range_json(lines, begin, before.size() - same)},
                         {"newText", after.substr(begin, after.size() - begin - same)}}});
}

}  // namespace tova_programs::xmc::lsp
