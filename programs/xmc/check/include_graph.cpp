#include "xmc/check/include_graph.hpp"

#include "xmc/model/files.hpp"
#include "xmc/rules.hpp"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace tova_programs::xmc {

namespace {

const std::size_t deepest = 16;  // levels of includes
const double most_reads = 1000;  // of files, from one

std::string quoted(const std::string& text) {
    return '"' + text + '"';
}

finding at(const include_graph::edge& each, const char* id, std::string text) {
    finding found = each.place;
    found.broken_rule = rules().find(id);
    found.level = found.broken_rule->level;
    found.text = std::move(text);
    return found;
}

}  // namespace

void include_graph::add_root(const std::string& path) {
    std::error_code error;
    std::string folder = canonical_path(path);
    if (!std::filesystem::is_directory(path, error))
        folder = std::filesystem::path(folder).parent_path().native();
    m_roots.push_back(folder + '/');
}

void include_graph::add_file(const std::string& path, std::vector<edge> edges, bool has_error) {
    m_nodes[canonical_path(path)] = {path, std::move(edges), has_error};
}

const include_graph::node* include_graph::node_of(const std::string& path) const {
    const auto found = m_nodes.find(canonical_path(path));
    return found == m_nodes.end() ? nullptr : &found->second;
}

bool include_graph::leads_to(const std::string& from, const std::string& to,
                             std::set<std::string>& seen) const {
    if (from == to)
        return true;
    const auto found = m_nodes.find(from);
    if (found == m_nodes.end() || !seen.insert(from).second)
        return false;
    return std::any_of(
        found->second.edges.begin(), found->second.edges.end(),
        [&](const edge& each) { return leads_to(canonical_path(each.target), to, seen); });
}

// Each file is followed once, since a few files can include each other along very many paths.
std::size_t include_graph::depth_of(const node& from, std::map<std::string, std::size_t>& known,
                                    std::set<std::string>& path) const {
    std::size_t deepest_below = 0;
    for (const edge& each : from.edges) {
        const node* const target = node_of(each.target);
        const std::string name = canonical_path(each.target);
        if (target == nullptr || !path.insert(name).second)
            continue;
        if (known.find(name) == known.end())
            known[name] = 1 + depth_of(*target, known, path);
        deepest_below = std::max(deepest_below, known[name]);
        path.erase(name);
    }
    return deepest_below;
}

double include_graph::reads_of(const node& from, std::map<std::string, double>& known,
                               std::set<std::string>& path) const {
    double reads = 0;
    for (const edge& each : from.edges) {
        const std::string name = canonical_path(each.target);
        const node* const target = node_of(each.target);
        if (target == nullptr || !path.insert(name).second)
            continue;
        if (known.find(name) == known.end())
            known[name] = 1 + reads_of(*target, known, path);
        reads += known[name];
        path.erase(name);
    }
    return reads;
}

void include_graph::check_edge(const node& from, const edge& each,
                               std::vector<finding>& found) const {
    if (!each.is_readable) {
        found.push_back(
            at(each, "include-missing",
               quoted(each.name) + " cannot be read: there is no file " + quoted(each.target)));
        return;
    }
    const std::string target = canonical_path(each.target);
    if (std::none_of(m_roots.begin(), m_roots.end(), [&target](const std::string& root) {
            return target.compare(0, root.size(), root) == 0;
        }))
        found.push_back(
            at(each, "include-outside", quoted(each.name) + " is outside of the folder"));
    if (has_catalog_extension(each.target))
        found.push_back(
            at(each, "include-read-twice",
               quoted(each.name) + " is also read by itself, because of its extension"));
    std::set<std::string> seen;
    const node* const included = node_of(each.target);
    if (leads_to(target, canonical_path(from.path), seen))
        found.push_back(at(each, "include-cycle", quoted(each.name) + " leads back to this file"));
    else if (included != nullptr && included->has_error)
        found.push_back(at(each, "include-invalid", quoted(each.name) + " has an error"));
}

std::vector<finding> include_graph::findings() const {
    std::vector<finding> found;
    std::map<std::string, double> known;
    std::map<std::string, std::size_t> known_depths;
    for (const auto& entry : m_nodes) {
        const node& from = entry.second;
        for (const edge& each : from.edges)
            check_edge(from, each, found);
        if (from.edges.empty())
            continue;
        std::set<std::string> path = {entry.first};
        if (depth_of(from, known_depths, path) > deepest)
            found.push_back(at(from.edges[0], "include-depth",
                               "more than " + std::to_string(deepest) + " levels of includes"));
        path = {entry.first};
        const double reads = reads_of(from, known, path);
        if (reads > most_reads)
            found.push_back(at(from.edges[0], "include-fan-out",
                               "includes lead to more than " +
                                   std::to_string(static_cast<int>(most_reads)) +
                                   " reads of files"));
    }
    return found;
}

}  // namespace tova_programs::xmc
