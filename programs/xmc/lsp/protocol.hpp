/// @file
/// The values of the language server protocol that several features use: error codes, what a client
/// can do, positions and ranges as JSON.
///
/// Functions that read JSON raise `nlohmann::json::exception` or `response_error` for wrong
/// parameters.
#pragma once

#include "xmc/lsp/positions.hpp"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <stdexcept>
#include <string>

namespace tova_programs::xmc::lsp {

using json = nlohmann::json;

enum error_code : int {
    parse_error = -32700,
    invalid_request = -32600,
    method_not_found = -32601,
    invalid_params = -32602,
    internal_error = -32603,
    server_not_initialized = -32002,
    request_failed = -32803,
    request_cancelled = -32800
};

/// Ends a request with an error response.
class response_error : public std::runtime_error {
public:
    response_error(error_code code, const std::string& message)
        : std::runtime_error(message), m_code(code) {}

    error_code code() const { return m_code; }

private:
    error_code m_code;
};

/// What the client can do, from the parameters of `initialize`. Whatever it does not mention, it
/// cannot.
struct client_features {
    explicit client_features(const json& params = json::object());

    encoding units = encoding::utf16;
    bool has_snippets = false;
    bool has_markdown = false;
    bool has_nested_symbols = false;
    bool has_related_information = false;
    bool has_unnecessary_tag = false;
    bool has_diagnostic_data = false;
    bool has_versioned_edits = false;
    bool has_code_actions = false;
    bool watches_files = false;
};

/// A number that is not negative. Larger ones than the protocol allows are taken as they are.
std::size_t natural(const json& value);

position position_of(const json& value);

json json_of(const position& where);
json range_json(const line_map& lines, std::size_t begin, std::size_t end);

/// A change of a document: its edits, with the version that they are for if the client reads it.
json workspace_edit(const client_features& client, const std::string& uri, const json& version,
                    json edits);

/// The smallest edit of whole lines that turns one text into the other; none if they are equal.
json line_edits(const line_map& lines, const std::string& before, const std::string& after);

}  // namespace tova_programs::xmc::lsp
