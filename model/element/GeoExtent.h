#pragma once

#include <limits>

#include "ZVSmartZvg/Geo.h"

namespace ZVSmartModel {

/// How much geometry there is and where. Points that are not finite count but do not extend the
/// box.
struct GeoExtent {
    unsigned long long points = 0;
    unsigned long long faces = 0;
    double low[3] = {infinity, infinity, infinity};  ///< above `high` while nothing is in the box
    double high[3] = {-infinity, -infinity, -infinity};

    bool IsBoxEmpty() const { return !(low[0] <= high[0]); }
    void Add(const GeoExtent& other);

    static constexpr double infinity = std::numeric_limits<double>::infinity();
};

/// The extent of what `geo` itself holds: shells, visual shells, render meshes, poly face meshes,
/// meshes, curves and point lists. Nothing is placed and `subGeos` are left out.
///
/// Faces are those of shells, visual shells and poly face meshes, and the cells of meshes; what a
/// face list announces beyond its end does not count, so untrusted records are safe.
GeoExtent MeasureGeo(const ZVSmartZvg::SZVLGZvgGeo& geo);

}  // namespace ZVSmartModel
