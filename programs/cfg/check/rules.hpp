/// @file
/// What `tova-cfg check` looks for. Every rule has a page of its own in `--explain`.
#pragma once

#include "support/findings.hpp"

namespace tova_programs::cfg {

/// All rules, in the order of the documentation: those that lose or change a value come first.
rule_list rules();

}  // namespace tova_programs::cfg
