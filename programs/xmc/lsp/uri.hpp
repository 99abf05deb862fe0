/// @file
/// `file:` URIs and paths. Functions without state.
#pragma once

#include <string>
#include <string_view>

namespace tova_programs::xmc::lsp {

/// The absolute path that a URI names; the empty string for a URI of another scheme or host.
std::string path_of(std::string_view uri);

/// The URI of an absolute path.
std::string uri_of(std::string_view path);

}  // namespace tova_programs::xmc::lsp
