/// @file
/// `tova-xmc schema`: the grammar of catalog files, for editors and validators.
///
/// There are two grammars. The loader form is what the loader accepts, as far as a grammar can say
/// it. The strict form is what a catalog should be: everything named, types that are shown, and
/// options that are written out with a value that counts. RELAX NG, its compact syntax and XSD are
/// three spellings of the strict form.
#pragma once

#include <ostream>
#include <string>

namespace tova_programs::xmc {

struct schema_options {
    std::string form = "strict";  ///< strict, loader, compact, xsd, catalog, emacs or vscode
    std::string output;           ///< empty: standard output
    std::string folder;           ///< not empty: all forms, as files that refer to each other
    bool as_json = false;
};

int run_schema(const schema_options& options, std::ostream& out, std::ostream& errors);

}  // namespace tova_programs::xmc
