/// @file
/// `tova-cfg schema`: what comes from a declaration of keys.
#pragma once

#include <ostream>
#include <string>

namespace tova_programs::cfg {

struct schema_options {
    std::string file;
    std::string format = "markdown";  ///< markdown, json, cfg (a sample file), bash (completion)
    std::string program = "program";  ///< whose completion it is
    bool is_settings = false;         ///< the file has settings: write a schema that fits them
};

int run_schema(const schema_options& options, std::ostream& out);

}  // namespace tova_programs::cfg
