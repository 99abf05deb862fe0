/// @file
/// The words of catalog files, each with a sentence for those who write them. The options of
/// arguments are in model/options.hpp; here are their sentences.
///
/// Functions without state.
#pragma once

#include <string_view>
#include <vector>

namespace tova_programs::xmc::lsp {

struct described_word {
    const char* name;
    const char* text;
};

struct element_words {
    const char* name;
    const char* text;
    std::vector<described_word> attributes;
    std::vector<const char*> children;
    const char*
        source;  ///< the element as it is inserted, with the places to fill in as $1, $2, $0
};

/// Null for an unknown element. The empty name is the file itself, whose child is the root.
const element_words* find_element(std::string_view name);

/// The types of arguments that show something.
const std::vector<described_word>& described_types();

/// What an option does; the empty string if nothing is known of it.
const char* option_text(std::string_view option);

}  // namespace tova_programs::xmc::lsp
