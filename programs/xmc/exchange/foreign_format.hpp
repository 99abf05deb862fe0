/// @file
/// Messages of programs that format with printf and its relatives, as items.
#pragma once

#include "xmc/exchange/exchange.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace tova_programs::xmc {

/// How a foreign message marks its arguments. `c_unflagged` is a C format that nobody has verified:
/// what would be an unusual conversion, such as the `% o` in "100% of", is text.
enum class foreign_format { none, c, c_unflagged, python, python_brace };

/// Whether a text looks like a C format with an argument.
bool has_conversion(std::string_view text);

/// The pieces of a message. `%s`, `%d`, `%5d`, `%.2f` and `%2$s` become the arguments `arg1`,
/// `arg2`, ..., `%(name)s` and `{name}` the argument `name`. What cannot become one stays text.
/// Each such specification is described in `unknown`, and so is each width, which items do not
/// have.
exchanged_text read_foreign(std::string_view text, foreign_format format,
                            std::vector<std::string>& unknown);

}  // namespace tova_programs::xmc
