/// @file
/// The content of a file after a program has loaded and saved it.
#pragma once

#include "cfg/scanner/document.hpp"

#include <string>

namespace tova_programs::cfg {

struct saved_file {
    bool is_too_large = false;  ///< more than the limit; then there is no text
    std::size_t size = 0;       ///< in bytes; an estimate if it is too large
    std::string text;
};

/// Loads and saves the bytes with the library, through a file in a temporary folder. A save can
/// make a file many times larger, so nothing is written that would exceed the limit. Raises
/// `file_error` if the temporary file cannot be written.
saved_file saved(const std::string& bytes, std::size_t limit = 16 << 20);

}  // namespace tova_programs::cfg
