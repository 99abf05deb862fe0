#include "support/findings.hpp"

#include <nlohmann/json.hpp>

// The forms for other programs. Strings come from files that need not be UTF-8, so invalid bytes
// are replaced rather than refused.

namespace tova_programs {

namespace {

using json = nlohmann::ordered_json;

void dump(std::ostream& out, const json& document) {
    out << document.dump(2, ' ', false, json::error_handler_t::replace) << '\n';
}

json json_of(const finding& found) {
    json one;
    one["file"] = found.file;
    if (found.line != 0) {
        one["line"] = found.line;
        one["column"] = found.column;
        one["endLine"] = found.end_line;
        one["endColumn"] = found.end_column;
    }
    one["offset"] = found.offset;
    one["length"] = found.length;
    one["severity"] = name_of(found.level);
    one["rule"] = found.broken_rule->id;
    if (!found.subject.empty())
        one["subject"] = found.subject;
    one["text"] = found.text;
    if (!found.edits.empty()) {
        for (const edit& each : found.edits)
            one["fix"].push_back(
                {{"offset", each.offset}, {"length", each.length}, {"text", each.text}});
    }
    return one;
}

// A path as a relative reference: bytes that are no part of a path in a URI are escaped.
std::string uri_of(const std::string& path) {
    static const char digits[] = "0123456789ABCDEF";
    std::string result = !path.empty() && path[0] == '/' ? "file://" : "";
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        const bool is_plain = (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z') ||
                              (byte >= 'A' && byte <= 'Z') ||
                              std::string_view("-._~/").find(c) != std::string_view::npos;
        if (is_plain)
            result += c;
        else
            result += {'%', digits[byte >> 4], digits[byte & 15]};
    }
    return result;
}

json sarif_of(const finding& found) {
    json one;
    one["ruleId"] = found.broken_rule->id;
    one["level"] = name_of(found.level);
    one["message"]["text"] = found.subject.empty() ? found.text : found.subject + ": " + found.text;
    json place;
    place["artifactLocation"]["uri"] = uri_of(found.file);
    if (found.line != 0)
        place["region"] = {{"startLine", found.line},    {"startColumn", found.column},
                           {"endLine", found.end_line},  {"endColumn", found.end_column},
                           {"byteOffset", found.offset}, {"byteLength", found.length}};
    one["locations"] = json::array({{{"physicalLocation", place}}});
    return one;
}

}  // namespace

void report::write_json(std::ostream& out) const {
    json document;
    document["program"] = m_program;
    document["version"] = m_version;
    document["findings"] = json::array();
    for (const finding& found : m_findings)
        document["findings"].push_back(json_of(found));
    document["counts"] = {{"error", count(severity::error)},
                          {"warning", count(severity::warning)},
                          {"note", count(severity::note)}};
    if (!m_failures.empty())
        document["failures"] = m_failures;
    dump(out, document);
}

// Version 2.1.0 of the format. Columns are counted in UTF-16 units by default there, and ours are
// bytes, so a reader that needs an exact place uses the byte offsets.
void report::write_sarif(std::ostream& out) const {
    json driver;
    driver["name"] = m_program;
    driver["version"] = m_version;
    driver["rules"] = json::array();
    for (const rule& one : m_rules)
        driver["rules"].push_back({{"id", one.id},
                                   {"shortDescription", {{"text", one.summary}}},
                                   {"fullDescription", {{"text", one.explanation}}},
                                   {"defaultConfiguration", {{"level", name_of(one.level)}}}});
    json run;
    run["tool"]["driver"] = driver;
    run["results"] = json::array();
    for (const finding& found : m_findings)
        run["results"].push_back(sarif_of(found));
    json document;
    document["$schema"] = "https://json.schemastore.org/sarif-2.1.0.json";
    document["version"] = "2.1.0";
    document["runs"] = json::array({run});
    dump(out, document);
}

}  // namespace tova_programs
