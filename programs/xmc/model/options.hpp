/// @file
/// The options of each type of argument, as the library's format language reads them.
#pragma once

#include "xmc/model/document.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace tova_programs::xmc {

enum class option_kind { words, natural, integer, memory_unit, metric_prefix, nothing };

struct option_rule {
    const char* name;
    option_kind kind;
    std::vector<const char*> words;  ///< in the order in which short forms are tried
};

/// The options of a type, in the order in which short forms are tried. Types without a format have
/// none.
const std::vector<option_rule>& options_of(item_type type);

/// Whether a type is shown by the format language at all; the reserved ones and strings are not.
bool is_formatted(item_type type);
bool is_reserved(item_type type);

/// The option that a name or a short form of it means; null if the type has none of that name.
const option_rule* find_option(item_type type, std::string_view name);

/// The word that a value means, written out; the empty string if it means none. A number is its own
/// word.
std::string word_of(const option_rule& option, std::string_view value);

/// The words that an option may have, for suggestions and completion; empty for numbers.
std::vector<std::string> words_of(const option_rule& option);

}  // namespace tova_programs::xmc
