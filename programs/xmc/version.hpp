/// @file
/// The version that the programs report: that of the library.
#pragma once

namespace tova_programs::xmc {

constexpr const char version[] = "2.18.0";

}  // namespace tova_programs::xmc
