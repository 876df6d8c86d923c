#include "model/scene/StoredShape.h"

#include "model/element/RecordBytes.h"
#include "model/scene/Normals.h"
#include "model/scene/RecordSurfaces.h"

namespace ZVSmartModel {

StoredShape ShapeOf(std::uint64_t place, const ZVSmartZvg::SZVLGZvgGeo& geo,
                    const ShapeWants& wants, Budget& limits) {
    StoredShape shape;
    shape.place = place;
    shape.bytes = sizeof shape + BytesOf(geo);  // about what stays of it
    limits.Memory(shape.bytes);
    shape.surfaces = SurfacesOf(geo, limits);
    if (wants.normals != nullptr) {
        for (Triangles& surface : shape.surfaces) AddNormals(surface, *wants.normals, limits);
    }
    if (wants.curves) shape.curves = CurvesOf(geo);
    shape.placements = PlacementsIn(geo);
    return shape;
}

}  // namespace ZVSmartModel
