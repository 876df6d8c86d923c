#include "ZVSmartZvg/BlockInfoDeal.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "ZVIM/Config.h"
#include "processing/MeetingPoints.h"

namespace ZVSmartZvg {

namespace {

using ZVIM::GeometryPrimitiveResource::CZVIMGeoModelConfig;

CZVIMPosition Flattened(CZVIMPosition point) {
    point.SetZ(0.0);
    return point;
}

bool IsFlatFinite(const CZVIMPosition& point) {
    return std::isfinite(point.GetX()) && std::isfinite(point.GetY());
}

/// How many of the polyline's points an outline takes: all of a closed one, all but the last of
/// one whose ends meet, 0 where it is no outline.
unsigned int OutlinePointCount(const CZVIMPolyline3D& polyline) {
    const unsigned int count = polyline.CountOfPoint();
    if (count < 3) return 0;
    for (unsigned int i = 0; i < count; ++i) {
        if (!IsFlatFinite(polyline.GetPointAt(i))) return 0;
    }
    if (polyline.GetClosedFlag()) return count;
    const CZVIMPosition first = Flattened(polyline.GetPointAt(0));
    const CZVIMPosition last = Flattened(polyline.GetPointAt(count - 1));
    const bool meets = first.DistToPt(last) <= CZVIMGeoModelConfig::getabs();
    return meets ? count - 1 : 0;
}

/// Edges on flattened points. A point keeps one leaving edge at most.
class ChainingTable {
  public:
    /// False, with nothing added, for an edge with a number that is not finite.
    bool AddEdge(const CZVIMPosition& start, const CZVIMPosition& end, double bulge) {
        if (!IsFlatFinite(start) || !IsFlatFinite(end) || !std::isfinite(bulge)) return false;
        const std::size_t endNumber = NumberOf(end);
        const std::size_t startNumber = NumberOf(start);
        Entry& startEntry = entries[startNumber];
        // An edge that leaves here already turns round. Its bulge stays behind and is
        // overwritten; what turns its sign is the bulge of the edge that it displaces.
        if (startEntry.next != none) {
            Entry& earlierEnd = entries[startEntry.next];
            earlierEnd.next = startNumber;
            if (earlierEnd.bulge != 0.0) earlierEnd.bulge = -earlierEnd.bulge;
        }
        startEntry.next = endNumber;
        startEntry.bulge = bulge;
        return true;
    }

    bool IsEmpty() const { return entries.empty(); }

    /// Follows the edges from the smallest point until they come back to it.
    bool WalkInto(CZVIMPolyline& outline) const {
        outline.Clearup();
        const std::vector<CZVIMPosition>& points = meetings.Points();
        const auto smallest = std::min_element(points.begin(), points.end());
        const auto first = static_cast<std::size_t>(smallest - points.begin());
        std::size_t current = first;
        for (std::size_t i = 0; i < entries.size(); ++i) {
            outline.AddPoint(points[current], entries[current].bulge);
            current = entries[current].next;
            if (current == first && i > 0) {
                outline.SetClosedFlag();
                return true;
            }
            if (current == none || current == first) {
                outline.Clearup();
                return false;
            }
        }
        return false;
    }

  private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    struct Entry {
        double bulge = 0.0;       ///< of the edge that leaves this point
        std::size_t next = none;  ///< the number of the point in which that edge ends
    };

    std::size_t NumberOf(const CZVIMPosition& point) {
        const std::size_t number = meetings.NumberOf(Flattened(point));
        if (number == entries.size()) entries.emplace_back();
        return number;
    }

    MeetingPoints meetings;
    std::vector<Entry> entries;  ///< by the numbers of the points
};

}  // namespace

bool CZVLGBlockInfoDeal::GetOneCloseXOYPolyInZvgGeo(const SZVLGZvgGeo& geo,
                                                    CZVIMPolyline& outline) {
    if (GetCurGeoCloseXOYPoly(geo, outline)) return true;
    for (const SZVLGZvgSubGeo& subGeo : geo.subGeos) {
        if (GetCurGeoCloseXOYPoly(subGeo.geo, outline)) return true;
    }
    return false;
}

bool CZVLGBlockInfoDeal::GetCurGeoCloseXOYPoly(const SZVLGZvgGeo& geo, CZVIMPolyline& outline) {
    for (const CZVIMPolyline3D& polyline : geo.polylines) {
        const unsigned int count = OutlinePointCount(polyline);
        if (count == 0) continue;
        outline.Clearup();
        for (unsigned int i = 0; i < count; ++i) {
            outline.AddPoint(Flattened(polyline.GetPointAt(i)), 0.0);
        }
        outline.SetClosedFlag();
        return true;
    }
    if (geo.lineSegments.empty() && geo.boundArcs.empty()) return false;
    return FormSegAryAndArcAryToCloseXOYPoly(geo.lineSegments, geo.boundArcs, outline);
}

bool CZVLGBlockInfoDeal::FormSegAryAndArcAryToCloseXOYPoly(
    const std::vector<CZVIMLineSegment>& segments, const std::vector<CZVIMBoundArc>& arcs,
    CZVIMPolyline& outline) {
    ChainingTable table;
    for (const CZVIMLineSegment& segment : segments) {
        if (!table.AddEdge(segment.getStartpt(), segment.getEndpt(), 0.0)) return false;
    }
    for (const CZVIMBoundArc& arc : arcs) {
        double bulge = std::tan(arc.getSubtend() * 0.25);
        if (arc.getNormal().GetZ() < 0) bulge = -bulge;
        if (!table.AddEdge(arc.getStartpt(), arc.getEndpt(), bulge)) return false;
    }
    if (table.IsEmpty()) return false;
    return table.WalkInto(outline);
}

}  // namespace ZVSmartZvg
