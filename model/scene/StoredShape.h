#pragma once

#include <cstdint>
#include <vector>

#include "ZVSmartModel/Body.h"
#include "ZVSmartZvg/Geo.h"
#include "model/element/Budget.h"
#include "model/scene/RecordCurves.h"
#include "model/scene/RecordWalk.h"

namespace ZVSmartModel {

/// What is read of one stored geometry, in its own coordinates.
struct StoredShape {
    std::uint64_t place = 0;  ///< as StoredGeos has it
    std::uint64_t bytes = 0;  ///< about what it takes
    bool isKnown = false;     ///< who wants it has it: nothing was read
    std::vector<Triangles> surfaces;
    std::vector<RecordCurve> curves;
    NamedPlacements placements;
};

/// What is wanted of stored geometries.
struct ShapeWants {
    bool curves = false;
    bool salvage = false;  ///< a geometry that cannot be read is left out; the block remembers
    const BodyOptions* normals =
        nullptr;                        ///< borrowed: surfaces get the normals that these ask for
    const KnownShape* known = nullptr;  ///< borrowed: shapes that need not be read again
};

/// Makes the shape of a record that lies at `place`. What is kept of it, and the work on it, is
/// charged; untrusted records are safe.
StoredShape ShapeOf(std::uint64_t place, const ZVSmartZvg::SZVLGZvgGeo& geo,
                    const ShapeWants& wants, Budget& limits);

}  // namespace ZVSmartModel
