#include "cli/suggestion.h"

#include <algorithm>
#include <numeric>

namespace rt305 {

namespace {

/// The fewest letters to insert, remove, replace or exchange with the next that make one word of the other.
std::size_t distanceBetween(const std::string& one, const std::string& other) {
    std::vector<std::vector<std::size_t>> rows(one.size() + 1, std::vector<std::size_t>(other.size() + 1));
    std::iota(rows[0].begin(), rows[0].end(), std::size_t{0});
    for (std::size_t i = 1; i <= one.size(); ++i) {
        rows[i][0] = i;
        for (std::size_t j = 1; j <= other.size(); ++j) {
            const std::size_t replaced = rows[i - 1][j - 1] + (one[i - 1] == other[j - 1] ? 0 : 1);
            rows[i][j] = std::min({rows[i - 1][j] + 1, rows[i][j - 1] + 1, replaced});
            if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1]) {
                rows[i][j] = std::min(rows[i][j], rows[i - 2][j - 2] + 1);
            }
        }
    }
    return rows.back().back();
}

}  // namespace

std::string suggestionFor(const std::string& word, const std::vector<std::string>& names) {
    constexpr std::size_t longestWord = 100;
    const std::string* closest = nullptr;
    std::size_t least = std::max<std::size_t>(1, word.size() / 3) + 1;
    for (const std::string& name : names) {
        const std::size_t distance = word.size() > longestWord ? least : distanceBetween(word, name);
        if (distance < least) {
            least = distance;
            closest = &name;
        }
    }
    return closest == nullptr ? "" : "; did you mean " + *closest + "?";
}

}  // namespace rt305
