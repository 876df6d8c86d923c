#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ZVSmartModel/Body.h"
#include "ZVSmartZvg/Geo.h"
#include "model/element/Budget.h"
#include "model/element/Sweep.h"

namespace ZVSmartModel {

/// A curve of a record, in the record's coordinates: a polyline; or the start and the end of an
/// arc that runs between them; or a full turn without either.
struct RecordCurve {
    std::string role;
    std::vector<Point> points;
    bool closed = false;
    std::optional<Sweep> sweep;
};

/// The curves of a record and of all that is nested in it: polylines, segments, arcs and circles.
/// Their roles are the names of the display attributes that they stand under. Those that hold a
/// number which is not finite or beyond `farthest`, have a single point or turn more than once are
/// left out, so untrusted records are safe.
std::vector<RecordCurve> CurvesOf(const ZVSmartZvg::SZVLGZvgGeo& geo);

/// The curve where `placement` puts it. The chords of what is round are off by at most
/// `chordError` there and turn by 15 degrees at most, but there are never more than 4096; they are
/// charged to `limits`.
Polyline PlacedCurve(const RecordCurve& curve, const Transform& placement, double chordError,
                     Budget& limits);

}  // namespace ZVSmartModel
