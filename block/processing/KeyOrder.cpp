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

bool AreFarApart(double a, double b) {
    return std::fabs(a - b) > 2 * keyTolerance;
}

/// Most points are far apart in one coordinate already, which spares them a square root.
bool AreApart(const CZVIMPosition& a, const CZVIMPosition& b) {
    return AreFarApart(a.GetX(), b.GetX()) || AreFarApart(a.GetY(), b.GetY()) ||
           AreFarApart(a.GetZ(), b.GetZ()) || a.DistToPt(b) > keyTolerance;
}

}  // namespace

int CompareValues(double a, double b) {
    return std::fabs(a - b) > keyTolerance ? CompareExactly(a, b) : 0;
}

int ComparePoints(const std::vector<CZVIMPosition>& a, const std::vector<CZVIMPosition>& b) {
    if (a.size() != b.size()) return CompareExactly(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (AreApart(a[i], b[i])) return CompareExactly(a[i], b[i]);
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

bool AgreeValues(double a, double b) {
    return std::fabs(a - b) <= keyTolerance;
}

bool AgreePoints(const std::vector<CZVIMPosition>& a, const std::vector<CZVIMPosition>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const CZVIMPosition& pointA, const CZVIMPosition& pointB) {
                          return !AreApart(pointA, pointB);
                      });
}

bool AgreeShells(const CZVIMShell& a, const CZVIMShell& b) {
    return a.GetFacesIndex() == b.GetFacesIndex() && AgreePoints(a.GetPoints(), b.GetPoints());
}

}  // namespace ZVSmartZvg
