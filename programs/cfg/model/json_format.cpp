#include "cfg/model/other_formats.hpp"

#include "support/text_file.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace tova_programs::cfg {

namespace {

using nlohmann::ordered_json;

// The characters of a string; any other value as JSON.
std::string text_of(const ordered_json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

void read_value(const ordered_json& value, const std::vector<std::string>& path,
                std::vector<foreign_value>& result) {
    foreign_value found;
    found.path = path;
    if (value.is_object() && !value.empty()) {
        for (const auto& each : value.items()) {
            std::vector<std::string> below = path;
            below.push_back(each.key());
            read_value(each.value(), below, result);
        }
        return;
    }
    if (value.is_object())
        found.problem = "an empty object";
    else if (value.is_null())
        found.problem = "null";
    else if (value.is_array() && value.empty())
        found.problem = "an empty array";
    else if (!value.is_array())
        found.values.push_back(text_of(value));
    else
        found.is_array = true;
    if (found.is_array)
        for (const ordered_json& each : value) {
            if (each.is_structured() || each.is_null())
                found.problem = "an array of objects, arrays or null";
            found.values.push_back(text_of(each));
        }
    if (!found.problem.empty())
        found.values.clear();
    result.push_back(std::move(found));
}

}  // namespace

std::vector<foreign_value> read_json(const std::string& path, const std::string& bytes) {
    std::vector<foreign_value> result;
    try {
        const ordered_json all = ordered_json::parse(bytes);
        if (!all.is_object())
            throw file_error(path + ": the file is not a JSON object");
        for (const auto& each : all.items())
            read_value(each.value(), {each.key()}, result);
    } catch (const ordered_json::parse_error& error) {
        const text_place at = line_index(bytes).at(std::min<std::size_t>(error.byte, bytes.size()));
        throw file_error(path + ':' + std::to_string(at.line) + ": not valid JSON");
    }
    return result;
}

}  // namespace tova_programs::cfg
