/// @file
/// `tova-cfg schema`: documentation, a sample file or completions from a declaration of keys.
#pragma once

#include <ostream>
#include <string>

namespace tova_programs::cfg {

struct schema_options {
    std::string file;
    std::string format = "markdown";  ///< markdown, json, cfg (a sample file), bash (completion)
    std::string program = "program";  ///< the program to complete
    bool is_settings = false;         ///< the file is a settings file: write a schema that fits it
};

int run_schema(const schema_options& options, std::ostream& out);

}  // namespace tova_programs::cfg
