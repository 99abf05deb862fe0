/// @file
/// `tova-cfg watch`: prints the settings that change in a file.
#pragma once

#include "support/terminal.hpp"

#include <cstddef>
#include <ostream>
#include <string>

namespace tova_programs::cfg {

struct watch_options {
    std::string file;
    std::size_t count = 0;  ///< exit after that many changes; 0: never
    bool as_json = false;   ///< one object per line
};

/// Prints each setting that is added, removed or changed, until the program is stopped. A file that
/// does not exist has no settings.
int run_watch(const watch_options& options, std::ostream& out, std::ostream& errors,
              const style& colors);

}  // namespace tova_programs::cfg
