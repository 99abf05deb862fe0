/// @file
/// How the commands write their result: as a text or as JSON, to a file or to standard output.
///
/// Functions without state.
#pragma once

#include <nlohmann/json.hpp>

#include <ostream>
#include <string>

namespace tova_programs::xmc {

/// Whether the value of `--output` means standard output: it is empty or "-".
bool is_standard(const std::string& output);

void write_result(const std::string& output, const std::string& text, std::ostream& out);

/// The document as text. Bytes that are not UTF-8 become U+FFFD.
std::string dumped(const nlohmann::ordered_json& document, int indent = 2);

void write_json(std::ostream& out, const nlohmann::ordered_json& document);

/// Writes what is said about a result as JSON, with the name of the file that now holds the result
/// (`file`), or with the result itself (`text`).
void write_json_result(const std::string& output, const std::string& text,
                       nlohmann::ordered_json about, std::ostream& out);

}  // namespace tova_programs::xmc
