#include "xmc/lsp/diagnostics.hpp"
#include "xmc/lsp/features.hpp"
#include "xmc/lsp/lookup.hpp"
#include "xmc/lsp/uri.hpp"
#include "xmc/model/documents.hpp"
#include "xmc/model/files.hpp"

#include <algorithm>
#include <string>
#include <utility>

namespace tova_programs::xmc::lsp {

namespace {

enum symbol_kind { symbol_namespace = 3, symbol_string = 15 };

bool has(span bytes, std::size_t offset) {
    return bytes.begin <= offset && offset <= bytes.end;
}

// Where a message is named.
span name_of(const message& each) {
    return each.name_bytes.size() != 0 ? each.name_bytes : each.tag;
}

std::string shown(std::string_view name) {
    return name.empty() ? "(no name)" : std::string(name);
}

json location_of(const found_message& each, span bytes, const request_place& at, line_maps& maps) {
    return {{"uri", at.files.uri_for(each.in->file.path())},
            {"range", range_json(maps.of(each.in), bytes.begin, bytes.end)}};
}

// The file that an include at the place names. A document that is no file has no folder either.
json included_file(const request_place& at) {
    if (path_of(at.uri).empty())
        return json::array();
    const document& file = at.in->file;
    for (const include& each : file.includes()) {
        if (each.file.empty() || !has(each.bytes, at.offset))
            continue;
        const std::string target = included_path(file.path(), each.file);
        if (!at.files.has_file(target))
            break;
        const json start = json_of({0, 0});
        return json::array({{{"uri", at.files.uri_for(canonical_path(target))},
                             {"range", {{"start", start}, {"end", start}}}}});
    }
    return json::array();
}

// The bytes of the argument of that name, or those of the message's name.
span argument_or_name(const found_message& in, std::string_view argument) {
    if (!argument.empty())
        for (const item& each : in.in->file.items(*in.what))
            if (each.is_argument && each.text == argument)
                return each.bytes;
    return name_of(*in.what);
}

std::string_view argument_at(const found_message& here, std::size_t offset) {
    for (const item& each : here.in->file.items(*here.what))
        if (each.is_argument && each.bytes.begin <= offset && offset < each.bytes.end)
            return each.text;
    return {};
}

}  // namespace

json definition(const request_place& at) {
    json result = included_file(at);
    const found_message here = message_at(at.in, at.offset);
    if (!result.empty() || !here)
        return result;
    line_maps maps(at.files, at.client.units);
    const auto all = messages_of(at.files.documents(at.in), here.of->name, here.what->name);
    const std::string& reference = at.files.options().reference;
    const std::string_view argument = argument_at(here, at.offset);
    const std::string own = normalized_locale(here.of->locale);
    const found_message original = original_of(all, reference, own);
    const bool goes_to_original =
        original && normalized_locale(original.of->locale) == normalized_locale(reference);
    for (const found_message& each : all)
        if (goes_to_original ? each.what == original.what
                             : normalized_locale(each.of->locale) != own)
            result.push_back(location_of(each, argument_or_name(each, argument), at, maps));
    return result;
}

json references(const request_place& at, bool includes_original) {
    json result = json::array();
    const found_message here = message_at(at.in, at.offset);
    if (!here)
        return result;
    line_maps maps(at.files, at.client.units);
    const std::string reference = normalized_locale(at.files.options().reference);
    for (const found_message& each :
         messages_of(at.files.documents(at.in), here.of->name, here.what->name))
        if (includes_original || normalized_locale(each.of->locale) != reference)
            result.push_back(location_of(each, name_of(*each.what), at, maps));
    return result;
}

namespace {

json nested_symbol(const std::string& name, const std::string& detail, int kind,
                   const line_map& lines, span bytes, span selected) {
    return {{"name", name},
            {"detail", detail},
            {"kind", kind},
            {"range", range_json(lines, bytes.begin, bytes.end)},
            {"selectionRange", range_json(lines, selected.begin, selected.end)}};
}

}  // namespace

json document_symbols(const request_place& at) {
    const document& file = at.in->file;
    const line_map lines(file.bytes(), at.client.units);
    json result = json::array();
    for (const catalog& of : file.catalogs()) {
        const std::string catalog_name = shown(of.name) + " [" + std::string(of.locale) + ']';
        json messages = json::array();
        for (const message& each : file.messages(of)) {
            if (at.client.has_nested_symbols)
                messages.push_back(nested_symbol(shown(each.name), readable_text(file, each),
                                                 symbol_string, lines, each.bytes, name_of(each)));
            else
                result.push_back(
                    {{"name", shown(each.name)},
                     {"kind", symbol_string},
                     {"containerName", catalog_name},
                     {"location",
                      {{"uri", at.uri},
                       {"range", range_json(lines, each.bytes.begin, each.bytes.end)}}}});
        }
        if (!at.client.has_nested_symbols)
            continue;
        const span selected = of.name_bytes.size() != 0 ? of.name_bytes : of.tag;
        json symbol = nested_symbol(shown(of.name), std::string(of.locale), symbol_namespace, lines,
                                    of.bytes, selected);
        symbol["children"] = std::move(messages);
        result.push_back(std::move(symbol));
    }
    return result;
}

}  // namespace tova_programs::xmc::lsp
