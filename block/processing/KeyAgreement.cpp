#include "processing/KeyAgreement.h"

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

namespace {

using Points = std::vector<CZVIMPosition>;

/// Each refinement squares what the turn still lacks; from a frame of the same far points on both
/// sides one is nearly always enough.
constexpr int mostRefinements = 3;

CZVIMVector FromOrigin(const CZVIMPosition& point) {
    return point - CZVIMPosition();
}

bool AgreeDistances(const Points& a, const Points& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const CZVIMPosition& pointA, const CZVIMPosition& pointB) {
                          return AgreeValues(FromOrigin(pointA).len(), FromOrigin(pointB).len());
                      });
}

template <class Measure>
std::size_t IndexOfLargest(const Points& points, Measure measure) {
    std::size_t largest = 0;
    double most = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const double value = measure(FromOrigin(points[i]));
        if (value <= most) continue;
        most = value;
        largest = i;
    }
    return largest;
}

/// From the point farthest from the origin and the one farthest from the line to it.
CZVIMTransf FirstTurn(const Points& from, const Points& to) {
    const std::size_t far =
        IndexOfLargest(from, [](const CZVIMVector& vector) { return vector.len(); });
    CZVIMVector line = FromOrigin(from[far]);
    line.normalise();
    const std::size_t beside = IndexOfLargest(
        from, [&line](const CZVIMVector& vector) { return line.CrossProduct(vector).len(); });
    const auto frame = [far, beside](const Points& points) {
        return coordinate_transf({}, FromOrigin(points[far]), FromOrigin(points[beside]));
    };
    return frame(to) * frame(from).inverse();
}

/// One step of the Gauss-Newton method: the small turn that brings `points` closest to `to` in
/// the sum of squares, from the moment of inertia and the torque of what is missing.
CZVIMTransf Refinement(const Points& points, const Points& to) {
    CZVIMTransf inertia;
    for (int i = 0; i < 3; ++i) inertia.SetAt(i, i, 0);
    CZVIMVector torque;
    for (std::size_t k = 0; k < points.size(); ++k) {
        const CZVIMVector arm = FromOrigin(points[k]);
        const double numbers[3] = {arm.GetX(), arm.GetY(), arm.GetZ()};
        const double square = arm.DotProduct(arm);
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 3; ++column) {
                const double diagonal = row == column ? square : 0;
                inertia.SetAt(
                    row, column,
                    inertia.GetAt(row, column) + diagonal - numbers[row] * numbers[column]);
            }
        }
        torque = torque + arm.CrossProduct(to[k] - points[k]);
    }
    const CZVIMVector turn = FromOrigin(
        CZVIMPosition(torque.GetX(), torque.GetY(), torque.GetZ()).TransformBy(inertia.inverse()));
    CZVIMVector xAxis(1, 0, 0);
    CZVIMVector yAxis(0, 1, 0);
    xAxis.RotateByAxis(turn.len(), turn);
    yAxis.RotateByAxis(turn.len(), turn);
    return coordinate_transf({}, xAxis, yAxis);
}

}  // namespace

std::optional<CZVIMTransf> FittingTurn(const Points& from, const Points& to) {
    if (from.empty() || !AgreeDistances(from, to)) return std::nullopt;
    CZVIMTransf turn = FirstTurn(from, to);
    for (int refinements = 0;; ++refinements) {
        Points turned = from;
        for (CZVIMPosition& point : turned) point.TransformBy(turn);
        // One refinement at least: the frame of a few points carries all their noise.
        if (refinements > 0 && AgreePoints(turned, to)) return turn;
        if (refinements == mostRefinements) return std::nullopt;
        turn = Refinement(turned, to) * turn;
    }
}

std::optional<CZVIMTransf> FittingTurn(const CZVIMShell& from, double fromRadius,
                                       const CZVIMShell& to, double toRadius) {
    if (from.GetFacesIndex() != to.GetFacesIndex()) return std::nullopt;
    const auto withTips = [](const CZVIMShell& shell, double radius) {
        Points points = shell.GetPoints();
        points.insert(points.end(), {{radius, 0, 0}, {0, radius, 0}});
        return points;
    };
    return FittingTurn(withTips(from, fromRadius), withTips(to, toRadius));
}

}  // namespace ZVSmartZvg
