/// @file
/// The version that the program reports: that of the library.
#pragma once

namespace tova_programs::cfg {

constexpr const char version[] = "2.18.0";

}  // namespace tova_programs::cfg
