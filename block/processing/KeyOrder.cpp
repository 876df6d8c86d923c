#include "processing/KeyOrder.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace ZVSmartZvg {

namespace {

template <class Value>
int CompareExactly(const Value& a, const Value& b) {
    if (a < b) return -1;
    return b < a ? 1 : 0;
}

}  // namespace

int CompareValues(double a, double b) {
    return std::fabs(a - b) > keyTolerance ? CompareExactly(a, b) : 0;
}

int ComparePoints(const std::vector<CZVIMPosition>& a, const std::vector<CZVIMPosition>& b) {
    if (a.size() != b.size()) return CompareExactly(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i].DistToPt(b[i]) > keyTolerance) return CompareExactly(a[i], b[i]);
    }
    return 0;
}

int CompareShells(const CZVIMShell& a, const CZVIMShell& b) {
    const auto& pointsA = a.GetPoints();
    const auto& pointsB = b.GetPoints();
    if (pointsA.size() != pointsB.size()) return CompareExactly(pointsA.size(), pointsB.size());
    const auto& facesA = a.GetFacesIndex();
    const auto& facesB = b.GetFacesIndex();
    if (facesA.size() != facesB.size()) return CompareExactly(facesA.size(), facesB.size());
    const auto [entryA, entryB] = std::mismatch(facesA.begin(), facesA.end(), facesB.begin());
    if (entryA != facesA.end()) return CompareExactly(*entryA, *entryB);
    return ComparePoints(pointsA, pointsB);
}

}  // namespace ZVSmartZvg
