#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "model/import/ModelPoint.h"

namespace ZVSmartModel {

// Curves that stand beside a body: its plan, its axis, its lines. Lengths are metres.

struct ModelSegment {
    ModelPoint from, to;

    friend bool operator==(const ModelSegment&, const ModelSegment&) = default;
};

struct ModelArc {
    ModelPoint center, normal, from, to;
    double sweepRadians = 0;  ///< from `from` to `to`, by the right hand about `normal`

    friend bool operator==(const ModelArc&, const ModelArc&) = default;
};

struct ModelCircle {
    ModelPoint center, normal;
    double radius = 0;

    friend bool operator==(const ModelCircle&, const ModelCircle&) = default;
};

struct ModelPolyline {
    std::vector<ModelPoint> points;
    bool closed = false;

    friend bool operator==(const ModelPolyline&, const ModelPolyline&) = default;
};

/// Curves that belong together.
struct ModelCurves {
    std::wstring name;  ///< what they show, such as FootPrint or Axis
    std::vector<ModelPolyline> polylines;
    std::vector<ModelSegment> segments;
    std::vector<ModelArc> arcs;
    std::vector<ModelCircle> circles;

    bool IsEmpty() const;
    friend bool operator==(const ModelCurves&, const ModelCurves&) = default;
};

/// Every number of the curves, in their order and with the counts that tell their lists apart.
std::vector<double> NumbersOf(const ModelCurves& curves);

/// The number of curves with a number that is no coordinate, or a radius below zero.
std::size_t UnusableCurves(const ModelCurves& curves);

/// The curves with their points and radii rounded to multiples of `coordinateStep`, without those
/// that are unusable or shorter than a step.
ModelCurves RoundedCurves(const ModelCurves& curves, double coordinateStep);

}  // namespace ZVSmartModel
