/// @file
/// `tova-xmc lsp`: a language server for catalogs over standard input and output.
#pragma once

#include "xmc/check/check.hpp"

namespace tova_programs::xmc {

/// Serves until the client says `exit` or closes its end. Returns the exit code that the protocol
/// demands: 0 after a shutdown, otherwise 1.
int run_lsp(const check_options& options, int in, int out);

}  // namespace tova_programs::xmc
