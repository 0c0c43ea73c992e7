#include <engine/base/Suggestion.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <numeric>
#include <string>
#include <utility>

namespace qrv {

namespace {

/// The number of mistakes between two texts: Damerau's distance, in which nothing changes twice.
int mistakes(const std::wstring& typed, const std::wstring& meant) {
    // From the first i units of the one to the first j of the other, for i, i - 1 and i - 2.
    std::vector<int> row(meant.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    std::vector<int> above(row);
    std::vector<int> twoAbove(row);
    for (std::size_t i = 1; i <= typed.size(); ++i) {
        std::swap(above, twoAbove);
        std::swap(row, above);
        row[0] = static_cast<int>(i);
        for (std::size_t j = 1; j <= meant.size(); ++j) {
            const int replaced = above[j - 1] + (typed[i - 1] == meant[j - 1] ? 0 : 1);
            row[j] = std::min({replaced, above[j] + 1, row[j - 1] + 1});
            const bool isSwapped =
                i > 1 && j > 1 && typed[i - 1] == meant[j - 2] && typed[i - 2] == meant[j - 1];
            if (isSwapped)
                row[j] = std::min(row[j], twoAbove[j - 2] + 1);
        }
    }
    return row.back();
}

int mostMistakes(const OdString& word) {
    if (word.getLength() < 3)
        return 0;
    return word.getLength() < 6 ? 1 : 2;
}

}  // namespace

std::optional<OdString> closest(const OdString& word, const std::vector<OdString>& candidates) {
    const OdString typed = OdString(word).makeLower();
    std::optional<OdString> best;
    int fewest = mostMistakes(word) + 1;
    for (const OdString& candidate : candidates) {
        // Also keeps the comparison of a huge word short.
        if (std::abs(candidate.getLength() - typed.getLength()) >= fewest)
            continue;
        const int count = mistakes(typed.toWide(), OdString(candidate).makeLower().toWide());
        if (count < fewest) {
            fewest = count;
            best = candidate;
        }
    }
    return best;
}

}  // namespace qrv
