#include "support/suggestion.hpp"

#include <algorithm>
#include <cctype>
#include <cstddef>

namespace tova_programs {

namespace {

int lower(char c) {
    return std::tolower(static_cast<unsigned char>(c));
}

}  // namespace

std::size_t edit_distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> before_last;
    std::vector<std::size_t> last(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        last[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::vector<std::size_t> row(b.size() + 1, i);
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const bool is_same = lower(a[i - 1]) == lower(b[j - 1]);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (is_same ? 0 : 1)});
            if (i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) &&
                lower(a[i - 2]) == lower(b[j - 1]))
                row[j] = std::min(row[j], before_last[j - 2] + 1);
        }
        before_last.swap(last);
        last.swap(row);
    }
    return last[b.size()];
}

std::string closest_word(std::string_view word, const std::vector<std::string>& known) {
    std::string best;
    std::size_t best_distance = static_cast<std::size_t>(-1);
    for (const std::string& candidate : known) {
        const std::size_t distance = edit_distance(word, candidate);
        if (distance < best_distance && distance * 3 <= std::max(word.size(), candidate.size())) {
            best = candidate;
            best_distance = distance;
        }
    }
    return best;
}

std::string did_you_mean(std::string_view word, const std::vector<std::string>& known) {
    const std::string best = closest_word(word, known);
    return best.empty() ? "" : " (did you mean \"" + best + "\"?)";
}

}  // namespace tova_programs
