/// @file
/// What every program returns to its caller.
#pragma once

namespace tova_programs {

enum exit_code {
    exit_clean = 0,     ///< the work is done, and nothing was found
    exit_findings = 1,  ///< something was found, or a comparison showed a difference
    exit_usage = 2      ///< the command line is wrong, or a file cannot be read or written
};

}  // namespace tova_programs
