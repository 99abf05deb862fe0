/// @file
/// `tova-cfg watch`: what changes when a file changes.
#pragma once

#include "support/terminal.hpp"

#include <cstddef>
#include <ostream>
#include <string>

namespace tova_programs::cfg {

struct watch_options {
    std::string file;
    std::size_t count = 0;  ///< end after that many changes; 0: never
    bool as_json = false;   ///< an object a line
};

/// Prints each setting that is added, removed or changed, until the program is ended. A file that
/// does not exist has no settings.
int run_watch(const watch_options& options, std::ostream& out, const style& colors);

}  // namespace tova_programs::cfg
