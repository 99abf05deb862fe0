/// @file
/// What `tova-xmc check` looks for. Every rule has a page of its own in `--explain`.
#pragma once

#include "support/findings.hpp"

namespace tova_programs::xmc {

/// All rules, in the order of the documentation: those that the loader refuses come first.
rule_list rules();

}  // namespace tova_programs::xmc
