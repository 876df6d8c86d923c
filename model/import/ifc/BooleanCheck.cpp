#include "model/import/ifc/BooleanCheck.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace ZVSmartModel {

namespace {

constexpr double noticed = 0.0003;      ///< metres that a line may be off
constexpr double skinThickness = 2e-5;  ///< metres; what is thinner is nothing between two faces
constexpr double linesOff = 0.05;       ///< part of the lines that may be off
constexpr double lengthOff = 0.02;      ///< part of the summed length
constexpr double volumeOff = 0.001;     ///< part of the volumes

constexpr std::size_t fewestLines = 18, mostLines = 72;
/// Lines are fewer through solids of many faces, so that a check stays within two milliseconds.
constexpr std::size_t mostMeetings = 300000;

bool IsInside(BooleanOperation operation, bool inA, bool inB) {
    switch (operation) {
        case BooleanOperation::UNION:
            return inA || inB;
        case BooleanOperation::INTERSECTION:
            return inA && inB;
        default:
            return inA && !inB;
    }
}

/// Goes along both lists of pieces and calls `step(from, to, inA, inB)` for what lies between two
/// of their ends.
template <typename Step>
void Walk(const LinePieces& a, const LinePieces& b, const Step& step) {
    struct End {
        double distance;
        bool ofA;
    };
    std::vector<End> ends;
    for (const auto& [from, to] : a) ends.insert(ends.end(), {{from, true}, {to, true}});
    for (const auto& [from, to] : b) ends.insert(ends.end(), {{from, false}, {to, false}});
    std::stable_sort(ends.begin(), ends.end(),
                     [](const End& x, const End& y) { return x.distance < y.distance; });
    bool inA = false;
    bool inB = false;
    for (std::size_t i = 0; i + 1 < ends.size(); ++i) {
        bool& in = ends[i].ofA ? inA : inB;
        in = !in;
        step(ends[i].distance, ends[i + 1].distance, inA, inB);
    }
}

LinePieces CombinedPieces(BooleanOperation operation, const LinePieces& a, const LinePieces& b) {
    LinePieces pieces;
    Walk(a, b, [&](double from, double to, bool inA, bool inB) {
        if (from == to || !IsInside(operation, inA, inB)) return;
        if (!pieces.empty() && pieces.back().second == from) {
            pieces.back().second = to;
        } else {
            pieces.emplace_back(from, to);
        }
    });
    return pieces;
}

double LengthOf(const LinePieces& pieces) {
    double length = 0;
    for (const auto& [from, to] : pieces) length += to - from;
    return length;
}

double Difference(const LinePieces& a, const LinePieces& b) {
    double length = 0;
    Walk(a, b, [&](double from, double to, bool inA, bool inB) {
        if (inA != inB) length += to - from;
    });
    return length;
}

/// The part behind the point of n times a number whose multiples are spread evenly: the
/// generalised golden ratios (Roberts, The unreasonable effectiveness of quasirandom sequences).
double Spread(std::size_t n, unsigned int dimension) {
    constexpr double root = 1.1347241384015194;  // of x^6 = x + 1, for five dimensions
    const double value = 0.5 + static_cast<double>(n + 1) / std::pow(root, dimension + 1);
    return value - std::floor(value);
}

/// Of length 1, within `degrees` of the axis.
SolidVector Tilted(const SolidVector& axis, double degrees, double tilt, double turn) {
    const int smallest = carve::geom::smallestAxis(axis);
    SolidVector other = carve::geom::VECTOR(0, 0, 0);
    other.v[smallest] = 1;
    const SolidVector u = carve::geom::cross(axis, other).normalized();
    const SolidVector v = carve::geom::cross(axis, u);
    const double angle = degrees * tilt * std::numbers::pi / 180;
    const double around = 2 * std::numbers::pi * turn;
    return axis * std::cos(angle) + (u * std::cos(around) + v * std::sin(around)) * std::sin(angle);
}

}  // namespace

BooleanCheck::BooleanCheck(const Solid& solidA, const Solid& solidB, BooleanOperation operation)
    : operation(operation), a(solidA), b(solidB), overlap(a.Box().Overlap(b.Box())) {
    if (Apart()) return;
    const std::size_t faceCount = a.FaceCount() + b.FaceCount();
    DrawLines(
        std::clamp(mostMeetings / std::max<std::size_t>(faceCount, 1), fewestLines, mostLines));
}

void BooleanCheck::DrawLines(std::size_t lineCount) {
    const SolidVector axis = b.NormalOfLargestFace();
    const SolidVector size = overlap.high - overlap.low;
    // Lines that meet an edge tell nothing, and others are drawn instead.
    for (std::size_t n = 0; expected.size() < lineCount && n < 2 * lineCount; ++n) {
        SolidLine line;
        for (unsigned int i = 0; i < 3; ++i) {
            line.origin.v[i] = overlap.low.v[i] + size.v[i] * Spread(n, i);
        }
        constexpr double steep = 3;
        constexpr double skew = 60;
        line.direction = Tilted(axis, n % 3 == 2 ? skew : steep, Spread(n, 3), Spread(n, 4));
        const auto insideA = a.Inside(line);
        const auto insideB = b.Inside(line);
        if (!insideA || !insideB) continue;
        expected.push_back({line, CombinedPieces(operation, *insideA, *insideB)});
    }
}

bool BooleanCheck::VolumeCanBe(double volume) const {
    const double ofA = a.Volume();
    const double ofB = b.Volume();
    const double slack = volumeOff * ofA + skinThickness * skinThickness * skinThickness;
    switch (operation) {
        case BooleanOperation::UNION:
            return volume >= std::max(ofA, ofB) - slack && volume <= ofA + ofB + slack;
        case BooleanOperation::INTERSECTION:
            return volume >= -slack && volume <= std::min(ofA, ofB) + slack;
        default:
            return volume >= ofA - ofB - slack && volume <= ofA + slack;
    }
}

bool BooleanCheck::IsRight(const Solid& result) const {
    const SolidLines made(result);
    if (!VolumeCanBe(made.Volume())) return false;
    std::size_t off = 0;
    double length = 0;
    double expectedLength = 0;
    for (const Expected& should : expected) {
        const auto inside = made.Inside(should.line);
        if (!inside || Difference(*inside, should.pieces) > noticed) ++off;
        if (made.Thinnest(should.line) < skinThickness) return false;
        length += inside ? LengthOf(*inside) : 0;
        expectedLength += LengthOf(should.pieces);
    }
    const auto lineCount = static_cast<double>(expected.size());
    return static_cast<double>(off) <= linesOff * lineCount &&
           std::abs(length - expectedLength) <= lengthOff * expectedLength + noticed * lineCount;
}

}  // namespace ZVSmartModel
