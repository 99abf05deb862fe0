/// @file
/// The rules that look at one file only.
#pragma once

#include "xmc/model/document.hpp"

#include <vector>

namespace tova_programs::xmc {

/// The problems of a document, those of its reading included, in no particular order.
std::vector<problem> lint(const document& file);

}  // namespace tova_programs::xmc
