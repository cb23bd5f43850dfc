// The known word that was most likely meant is the one at the smallest edit distance.

#include "Show/KnownWords.h"

#include <algorithm>
#include <cstddef>

namespace Imaging {

namespace {

/// The number of insertions, deletions, changes and swaps of neighbours that make one word of the other.
std::size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<std::vector<std::size_t>> steps(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                steps[i][j] = i + j;
                continue;
            }
            const std::size_t change = a[i - 1] == b[j - 1] ? 0 : 1;
            steps[i][j] = std::min({steps[i - 1][j] + 1, steps[i][j - 1] + 1, steps[i - 1][j - 1] + change});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
            }
        }
    }
    return steps[a.size()][b.size()];
}

} // namespace

std::string unknownWord(const std::string& what, std::string_view word,
                        const std::vector<std::string>& known) {
    return "there is no " + what + " named '" + std::string(word) + "'; known are " + enumeration(known) +
           suggestion(word, known);
}

std::string suggestion(std::string_view word, const std::vector<std::string>& known) {
    // A third of a word may be wrong; beyond that the two have little to do with one another.
    std::size_t allowed = std::max<std::size_t>(1, word.size() / 3);
    const std::string* nearest = nullptr;
    // Words of any length may come from outside, and the comparison takes time in proportion to them.
    if (word.size() > 64) return {};
    for (const std::string& candidate : known) {
        const std::size_t distance = editDistance(word, candidate);
        if (distance > allowed || (nearest != nullptr && distance == allowed)) continue;
        allowed = distance;
        nearest = &candidate;
    }
    return nearest != nullptr ? "; did you mean '" + *nearest + "'?" : std::string();
}

std::string enumeration(const std::vector<std::string>& words) {
    std::string result;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (i > 0) result += i + 1 == words.size() ? " and " : ", ";
        result += words[i];
    }
    return result;
}

} // namespace Imaging
