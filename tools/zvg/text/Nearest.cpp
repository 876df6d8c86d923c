#include "tools/zvg/text/Nearest.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace ZVSmartModel::Tool {

namespace {

/// The optimal string alignment distance, row by row.
std::size_t Distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> beforeLast, last(b.size() + 1), row(b.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t change = a[i - 1] == b[j - 1] ? 0 : 1;
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + change});
            const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
            if (swapped) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
        beforeLast = std::exchange(last, row);
    }
    return last.back();
}

}  // namespace

std::string Nearest(const std::string& typed, const std::vector<std::string>& words) {
    std::string nearest;
    std::size_t fewest = std::string::npos;
    for (const std::string& word : words) {
        const std::size_t distance = Distance(typed, word);
        const bool isNear = 3 * distance <= std::max(typed.size(), word.size());
        if (!isNear || distance >= fewest) continue;
        nearest = word;
        fewest = distance;
    }
    return nearest;
}

}  // namespace ZVSmartModel::Tool
