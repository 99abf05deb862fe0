/// @file
/// What `tova-cfg check` looks for. `--explain` describes each rule.
#pragma once

#include "support/findings.hpp"

namespace tova_programs::cfg {

/// All rules, in the order in which the guide lists them.
rule_list rules();

}  // namespace tova_programs::cfg
