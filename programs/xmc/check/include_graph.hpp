/// @file
/// Which file includes which, and what goes wrong with it.
#pragma once

#include "support/findings.hpp"
#include "xmc/scanner/token.hpp"

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace tova_programs::xmc {

class include_graph {
public:
    struct edge {
        std::string target;  ///< the path of the included file
        std::string name;    ///< as the file names it
        span bytes;
        finding place;  ///< a finding at that place, of any rule
        bool is_readable = true;
    };

    /// A path to check: a folder, or a file, whose folder counts.
    void add_root(const std::string& path);

    void add_file(const std::string& path, std::vector<edge> edges, bool has_error);

    std::vector<finding> findings() const;

private:
    struct node {
        std::string path;
        std::vector<edge> edges;
        bool has_error = false;
    };

    const node* node_of(const std::string& path) const;
    void check_edge(const node& from, const edge& each, std::vector<finding>& found) const;
    bool leads_to(const std::string& from, const std::string& to,
                  std::set<std::string>& seen) const;
    std::size_t depth_of(const node& from, std::map<std::string, std::size_t>& known,
                         std::set<std::string>& path) const;
    double reads_of(const node& from, std::map<std::string, double>& known,
                    std::set<std::string>& path) const;

    std::vector<std::string> m_roots;
    std::map<std::string, node> m_nodes;  // by canonical path
};

}  // namespace tova_programs::xmc
