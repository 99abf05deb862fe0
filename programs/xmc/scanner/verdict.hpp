/// @file
/// What the library's loader reports for an XMC file: the kind of the error and what its message
/// quotes.
///
/// This is the loader's own walk over the tokens, without building anything. What it includes is
/// not followed; the walk says which files it would read, in order.
#pragma once

#include "xmc/scanner/scanner.hpp"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tova_programs::xmc {

/// The kinds of the loader's errors; the numbers are the loader's.
enum class load_kind {
    no_error = 0,
    no_catalog = 1,
    file_not_found = 3,
    xml_error = 4,
    invalid_attribute = 5,
    invalid_element = 6,
    not_xmc = 7,
    bad_version = 8,
    br_not_closed = 9,
    msg_not_closed = 10,
    arg_not_closed = 11,
    include_not_closed = 12,
    catalog_not_closed = 13,
    unexpected = 14
};

struct verdict {
    load_kind kind = load_kind::no_error;
    std::string subject;                ///< what the message quotes
    span bytes;                         ///< where the walk was
    std::vector<std::string> includes;  ///< the values of `file`, up to the error
};

/// Whether a load reads the messages of a catalog, by its name and locale.
using wanted_catalog = std::function<bool(std::string_view name, std::string_view locale)>;

verdict verdict_of(const scan& tokens, const wanted_catalog& is_wanted);

}  // namespace tova_programs::xmc
