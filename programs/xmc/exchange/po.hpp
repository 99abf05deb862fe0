/// @file
/// Messages as PO files, those of other programs included.
///
/// A file of our own has a line `X-Tova-Locale` in its header; each entry names its message in
/// `msgctxt` as `CATALOG/KEY`, and the forms of a plural, `files.one` and `files.other`, are the
/// entry `CATALOG/files.*`. In other files the `msgid` is the key, a context is added as
/// `key@context`, and the forms of a plural get the keys `key.one`, `key.other` and so on.
///
/// The functions are pure.
#pragma once

#include "xmc/exchange/exchange.hpp"

#include <string>

namespace tova_programs::xmc {

std::string po_text(const exchange& all);

struct po_defaults {
    std::string catalog = "messages";
    std::string locale;  ///< empty: the `Language` of the header
    std::string reference = "en";
    bool is_c_format = false;  ///< entries without any format flag are C formats
};

/// Reads a file. Its own header wins over `defaults.reference` and, in a file of our own, over all
/// of them. Raises `file_error` for what is no PO file.
imported read_po(const std::string& bytes, const std::string& path, const po_defaults& defaults);

/// The `Language` of the header, or the empty string. Reads the header only.
std::string po_language(const std::string& bytes);

}  // namespace tova_programs::xmc
