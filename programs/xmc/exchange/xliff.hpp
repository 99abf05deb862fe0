/// @file
/// Messages as XLIFF 1.2 and 2.0.
///
/// A catalog is a `file`, a message a `trans-unit` or `unit`, and a code a `ph` that holds what the
/// catalog has there: `<arg name="n" type="int"/>`. An attribute of our own keeps the locale as
/// catalogs spell it.
///
/// The functions are pure.
#pragma once

#include "xmc/exchange/exchange.hpp"

#include <string>

namespace tova_programs::xmc {

enum class xliff_version { v1_2, v2_0 };

std::string xliff_text(const exchange& all, xliff_version version);

struct xliff_defaults {
    std::string catalog;  ///< empty: the name of each `file`
    std::string locale;   ///< empty: that of the file
};

/// Reads either version. Codes of other programs become text and are listed. Raises `file_error`
/// for what is no XLIFF file.
imported read_xliff(const std::string& bytes, const std::string& path,
                    const xliff_defaults& defaults);

}  // namespace tova_programs::xmc
