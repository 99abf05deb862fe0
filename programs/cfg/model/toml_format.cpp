#include "cfg/model/other_formats.hpp"

#include "support/text_file.hpp"

#define TOML_ENABLE_UNRELEASED_FEATURES 0
#include <toml++/toml.h>

#include <algorithm>
#include <sstream>
#include <utility>

namespace tova_programs::cfg {

namespace {

// The characters of a string; any other value as TOML.
std::string text_of(const toml::node& value) {
    if (const auto* const text = value.as_string())
        return text->get();
    std::ostringstream out;
    value.visit([&out](const auto& each) { out << each; });
    return out.str();
}

void read_table(const toml::table& table, const std::vector<std::string>& path,
                std::vector<foreign_value>& result) {
    // The library sorts names, so the order of the file is restored from the positions.
    std::vector<std::pair<std::string, const toml::node*>> members;
    for (const auto& each : table)
        members.emplace_back(std::string(each.first.str()), &each.second);
    std::stable_sort(members.begin(), members.end(), [](const auto& a, const auto& b) {
        const auto place = [](const auto& one) {
            const toml::source_position at = one.second->source().begin;
            return std::make_pair(at.line, at.column);
        };
        return place(a) < place(b);
    });
    for (const auto& each : members) {
        foreign_value found;
        found.path = path;
        found.path.push_back(each.first);
        if (const toml::table* const below = each.second->as_table()) {
            if (!below->empty()) {
                read_table(*below, found.path, result);
                continue;
            }
            found.problem = "an empty table";
        } else if (const toml::array* const list = each.second->as_array()) {
            found.is_array = true;
            if (list->empty())
                found.problem = "an empty array";
            for (const toml::node& element : *list) {
                if (!element.is_value())
                    found.problem = "an array of tables or arrays";
                else
                    found.values.push_back(text_of(element));
            }
        } else {
            found.values.push_back(text_of(*each.second));
        }
        if (!found.problem.empty())
            found.values.clear();
        result.push_back(std::move(found));
    }
}

}  // namespace

std::vector<foreign_value> read_toml(const std::string& path, const std::string& bytes) {
    std::vector<foreign_value> result;
    try {
        read_table(toml::parse(bytes), {}, result);
    } catch (const toml::parse_error& error) {
        throw file_error(path + ':' + std::to_string(error.source().begin.line) + ": " +
                         std::string(error.description()));
    }
    return result;
}

}  // namespace tova_programs::cfg
