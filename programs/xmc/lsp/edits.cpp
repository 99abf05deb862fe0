#include "support/text_file.hpp"
#include "xmc/lsp/diagnostics.hpp"
#include "xmc/lsp/features.hpp"
#include "xmc/model/writer.hpp"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace tova_programs::xmc::lsp {

namespace {

const char quick_fix[] = "quickfix";
const char fix_all[] = "source.fixAll.tova-xmc";

// A kind that is asked for includes those below it: "source" includes "source.fixAll".
bool is_wanted(const json& wanted, const std::string& kind) {
    if (!wanted.is_array())
        return true;
    return std::any_of(wanted.begin(), wanted.end(), [&kind](const json& each) {
        if (!each.is_string())
            return false;
        const std::string name = each.get<std::string>();
        return name.empty() || kind == name || kind.compare(0, name.size() + 1, name + '.') == 0;
    });
}

json edits_of(const finding& found, const line_map& lines) {
    json edits = json::array();
    for (const edit& each : found.edits)
        edits.push_back({{"range", range_json(lines, each.offset, each.offset + each.length)},
                         {"newText", each.text}});
    return edits;
}

json version_of(const request_place& at) {
    const buffer* const open = at.files.find(at.uri);
    return open == nullptr ? json() : json(open->version);
}

// JSON has no form for other bytes, such as those of &#246;. They would become another character.
json checked_edits(const line_map& lines, const std::string& before, const std::string& after) {
    if (!is_utf8(after))
        throw response_error(request_failed, "the result would not be UTF-8");
    return line_edits(lines, before, after);
}

// All fixes that do not overlap; another request does the others.
json action_for_all(const request_place& at, const line_map& lines,
                    const std::vector<const finding*>& fixable) {
    const std::string& before = at.in->file.bytes();
    std::string after = before;
    const std::size_t count = apply_fixes(after, fixable);
    json edits = checked_edits(lines, before, after);
    return {{"title", count == 1 ? "Make the certain fix"
                                 : "Make all " + std::to_string(count) + " certain fixes"},
            {"kind", fix_all},
            {"edit", workspace_edit(at.client, at.uri, version_of(at), std::move(edits))}};
}

}  // namespace

json code_actions(const request_place& at, std::size_t end, const json& wanted) {
    json result = json::array();
    if (!at.client.has_code_actions)
        return result;
    line_maps maps(at.files, at.client.units);
    const line_map& lines = maps.of(at.in);
    std::vector<const finding*> fixable;
    // Only findings about one document by itself have a certain fix.
    for (const finding& each : at.in->findings) {
        if (each.edits.empty() || !is_reported(at.files.options(), each))
            continue;
        fixable.push_back(&each);
        const bool is_here = each.offset <= end && at.offset <= each.offset + each.length;
        if (!is_here || !is_wanted(wanted, quick_fix))
            continue;
        result.push_back(
            {{"title", "Fix: " + each.text},
             {"kind", quick_fix},
             {"isPreferred", true},
             {"diagnostics", json::array({diagnostic_of(each, maps, at.files, at.client)})},
             {"edit", workspace_edit(at.client, at.uri, version_of(at), edits_of(each, lines))}});
    }
    if (!fixable.empty() && is_wanted(wanted, fix_all) && is_utf8(at.in->file.bytes()))
        result.push_back(action_for_all(at, lines, fixable));
    return result;
}

json formatting(const request_place& at) {
    const std::string& before = at.in->file.bytes();
    const line_map lines(before, at.client.units);
    try {
        return checked_edits(lines, before, formatted(at.in->file));
    } catch (const file_error& error) {
        throw response_error(request_failed, error.what());
    }
}

}  // namespace tova_programs::xmc::lsp
