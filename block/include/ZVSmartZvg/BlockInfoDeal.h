#pragma once

#include <vector>

#include "ZVIM/Curve.h"
#include "ZVSmartZvg/Export.h"
#include "ZVSmartZvg/Geo.h"

namespace ZVSmartZvg {

using ZVIM::GeometryPrimitiveResource::CZVIMPolyline;

/// Derives plan outlines from geometry records.
class ZVLG_API CZVLGBlockInfoDeal {
  public:
    /// Finds a closed outline of `geo` in the XOY plane: the first of its polylines that is
    /// closed, else a loop chained from its line segments and arcs; where it has neither, the
    /// same of its sub-geometries, one level deep and in their own coordinates.
    ///
    /// On true `outline` holds the loop: Z is 0, the closed flag is set, and the bulge of a
    /// vertex belongs to the edge that leaves it. A bulge is the tangent of a quarter of the
    /// swept angle, positive counter-clockwise seen from +Z: the ratio of an arc's sagitta to
    /// half its chord, as in the DXF reference's LWPOLYLINE (group code 42).
    ///
    /// Edges meet where their ends lie no farther apart than `CZVIMGeoModelConfig::getabs()`,
    /// beyond the few units in the last place by which large coordinates may differ; the first
    /// of such ends that comes stands for all. The ends of a polyline that is not closed must lie
    /// within `getabs()` itself.
    ///
    /// A chain starts at the smallest point in the order of positions. An edge that starts where
    /// another one does turns that one round, one edge deep and without its bulge. A polyline
    /// with a coordinate that is not finite is passed over, and edges with such a number make no
    /// loop; Z is not looked at. n edges take time that grows like n log n.
    ///
    /// On false `outline` is as it was, or empty, or holds points of a chain that never came back
    /// to its start. Throws nothing of its own; untrusted records are safe.
    static bool GetOneCloseXOYPolyInZvgGeo(const SZVLGZvgGeo& geo, CZVIMPolyline& outline);

  private:
    CZVLGBlockInfoDeal() = default;
    ~CZVLGBlockInfoDeal() = default;

    static bool GetCurGeoCloseXOYPoly(const SZVLGZvgGeo& geo, CZVIMPolyline& outline);
    static bool FormSegAryAndArcAryToCloseXOYPoly(const std::vector<CZVIMLineSegment>& segments,
                                                  const std::vector<CZVIMBoundArc>& arcs,
                                                  CZVIMPolyline& outline);
};

}  // namespace ZVSmartZvg
