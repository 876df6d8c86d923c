#include "processing/ShapeIndex.h"

#include <cmath>

#include "processing/KeyAgreement.h"

namespace ZVSmartZvg {

namespace {

constexpr double reach = 2 * keyTolerance;
/// Seven of eight numbers have all that agrees with them within one cell.
constexpr double cellWidth = 16 * reach;
/// What averages of distances lose to rounding, as a part of them.
constexpr double roundingShare = 1e-14;

/// A good mixer of 64 bits, after the finaliser of MurmurHash3.
std::uint64_t Mixed(std::uint64_t hash, std::uint64_t value) {
    hash = (hash ^ value) * 0xFF51AFD7ED558CCDU;
    return hash ^ (hash >> 32);
}

/// Steps from 0, in two's complement. The measures of usable points are far below 2^63 of them.
std::uint64_t StepOf(double measure) {
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(std::floor(measure / cellWidth)));
}

/// The average of distances between counterparts, each weighing what it is told.
class Average {
  public:
    void Add(const CZVIMPosition& a, const CZVIMPosition& b, double weight) {
        sum += weight * a.DistToPt(b);
        weights += weight;
    }
    double Value() const { return weights > 0 ? sum / weights : 0; }

  private:
    double sum = 0;
    double weights = 0;
};

}  // namespace

ShapeSignature SignatureOf(const CZVIMShell& localShell) {
    const std::vector<CZVIMPosition>& points = localShell.GetPoints();
    ShapeSignature signature;
    signature.exact = Mixed(1, points.size());
    for (const int entry : localShell.GetFacesIndex()) {
        signature.exact = Mixed(signature.exact, static_cast<std::uint32_t>(entry));
    }
    Average fromOrigin;
    Average fromFirst;
    Average fromLast;
    // By weights that grow, the order of the points counts too.
    for (std::size_t i = 0; i < points.size(); ++i) {
        const auto weight = static_cast<double>(i);
        fromOrigin.Add(points[i], {}, 1);
        fromFirst.Add(points[i], points.front(), weight);
        fromLast.Add(points[i], points.back(), weight);
    }
    signature.measures = {fromOrigin.Value(), fromFirst.Value(), fromLast.Value()};
    return signature;
}

ShapeCell CellOf(const ShapeSignature& signature) {
    ShapeCell cell = signature.exact;
    for (const double measure : signature.measures) cell = Mixed(cell, StepOf(measure));
    return cell;
}

ShapeCells CellsAround(const ShapeSignature& signature) {
    ShapeCells around;
    around.cells[around.count++] = signature.exact;
    for (const double measure : signature.measures) {
        const double margin = reach + roundingShare * std::fabs(measure);
        const std::uint64_t below = StepOf(measure - margin);
        const std::uint64_t above = StepOf(measure + margin);
        const std::size_t coarser = around.count;
        for (std::size_t i = 0; i < coarser; ++i) {
            if (above != below) around.cells[around.count++] = Mixed(around.cells[i], above);
            around.cells[i] = Mixed(around.cells[i], below);
        }
    }
    return around;
}

}  // namespace ZVSmartZvg
