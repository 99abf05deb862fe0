/// @file
/// "Did you mean": the known word that is closest to an unknown one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tova_programs {

/// The insertions, deletions, replacements and swaps of neighbors that turn one into the other, in
/// bytes. Letter case does not count.
std::size_t edit_distance(std::string_view a, std::string_view b);

/// The closest word, or the empty string if none is within a third of the length of the longer one.
std::string closest_word(std::string_view word, const std::vector<std::string>& known);

/// ` (did you mean "WORD"?)`, or the empty string if no known word is close.
std::string did_you_mean(std::string_view word, const std::vector<std::string>& known);

}  // namespace tova_programs
