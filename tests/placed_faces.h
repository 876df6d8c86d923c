#pragma once

// Parametric faces, with what a saver answered for them: what is shared must lie on the face.

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "support.h"

namespace support {

using Points = std::vector<CZVIMPosition>;

/// Where a face's geometry is, and the face's own points; none where they are not looked at.
using PlacedFace = std::pair<SZVLGZvgGeoRelInclude, Points>;

/// A ruled face's points, row by row.
inline Points Rows(const SZVLGParamRuledFace& face) {
    Points rows;
    for (std::size_t row = 0; row < face.firstColumn.size(); ++row)
        rows.insert(rows.end(), {face.firstColumn[row], face.secondColumn[row]});
    return rows;
}

inline double LargestCoordinate(const Points& points) {
    double largest = 0;
    for (const CZVIMPosition& point : points)
        for (const double value : {point.GetX(), point.GetY(), point.GetZ()})
            largest = std::max(largest, std::fabs(value));
    return largest;
}

/// Whether each face's geometry is there and lies on its points, but for what rounding moves those
/// far from the origin. Empty, or what is wrong.
inline std::string WhatIsOff(CZVLGBlockReader& reader, const std::vector<PlacedFace>& faces) {
    for (const auto& [rel, own] : faces) {
        SZVLGZvgGeo geo;
        if (!reader.GetGeoByIdentification(rel.key, geo) || geo.shells.size() != 1)
            return "a geometry that is not there";
        const Points& points = geo.shells[0].TransformBy(rel.transform).GetPoints();
        if (!own.empty() && points.size() != own.size()) return "a geometry of another face";
        const double moved = 1e-14 * (LargestCoordinate(points) + LargestCoordinate(own));
        for (std::size_t i = 0; i < own.size(); ++i)
            if (!(points[i].DistToPt(own[i]) <= 0.001 + 1e-9 + moved)) return "a point too far off";
    }
    return "";
}

}  // namespace support
