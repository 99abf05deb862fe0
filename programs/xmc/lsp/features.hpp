/// @file
/// What the server does with a document. Each function returns the result of one request.
///
///     request_place here = {files, client, files.document_of(uri), uri, offset};
///     json result = hover(here);
#pragma once

#include "xmc/lsp/protocol.hpp"
#include "xmc/lsp/workspace.hpp"

#include <cstddef>
#include <string>

namespace tova_programs::xmc::lsp {

/// A document of the client, and a place in it.
struct request_place {
    workspace& files;
    const client_features& client;
    document_pointer in;
    std::string uri;
    std::size_t offset = 0;
};

/// The elements, attributes and values that can be written here, and what the reference locale has.
json completion(const request_place& at);

/// The message as the library renders it, here and in the other locales, and what the findings here
/// mean. Null for a place outside of messages.
json hover(const request_place& at);

/// The included file, or the same message or argument in the reference locale; from there, the
/// message in all other locales.
json definition(const request_place& at);

/// The message in all locales.
json references(const request_place& at, bool includes_original);

/// Catalogs and their messages.
json document_symbols(const request_place& at);

/// The certain fixes of the findings between two bytes, and one of all in the document. `wanted`
/// are the kinds that the client asks for; null for all.
json code_actions(const request_place& at, std::size_t end, const json& wanted);

/// The edits that lead to the canonical layout. Raises `response_error` for a document that the
/// loader refuses.
json formatting(const request_place& at);

}  // namespace tova_programs::xmc::lsp
