#pragma once

// The geometry part of libifcplusplus, with its boolean step replaced by ours. It takes the
// compiler most of a gigabyte each time: one file includes it.

#define checkMeshSetValidAndClosed checkMeshSetOfLibrary
#define computeCSG computeCSGOfLibrary
#include <ifcpp/geometry/Carve/CSG_Adapter.h>
#undef computeCSG
#undef checkMeshSetValidAndClosed

namespace CSG_Adapter {

/// What the library calls before it cuts openings out of a solid: whether that can be done.
bool checkMeshSetValidAndClosed(const std::shared_ptr<meshset_t>& solid, StatusCallback*,
                                BuildingEntity*);

/// What the library calls for openings, with the element that they are cut out of, and for
/// boolean results, with these. `result` always becomes a solid, which may be empty.
void computeCSG(std::shared_ptr<meshset_t>& a, std::shared_ptr<meshset_t>& b,
                carve::csg::CSG::OP operation, std::shared_ptr<meshset_t>& result, StatusCallback*,
                BuildingEntity* entity);

}  // namespace CSG_Adapter

#include <ifcpp/geometry/Carve/Sweeper.h>

// Discs that are swept along a line have eight or twelve sides whatever is asked for, and those
// whose line begins upright become nothing. So what is asked for is handed on, and upright lines
// are laid down for the sweep.
namespace swept_discs {

inline bool IsUpright(const std::vector<vec3>& path) {
    if (path.size() < 2) return false;
    const vec3 way = path[1] - path[0];
    return std::abs(way.z) > 0.999 * way.length();
}

/// X to Y, Y to Z, Z to X.
inline std::vector<vec3> Laid(std::vector<vec3> path) {
    if (!IsUpright(path)) return path;
    for (vec3& point : path) point = carve::geom::VECTOR(point.z, point.x, point.y);
    return path;
}

inline void SetUp(const std::vector<vec3>& path, ItemShapeData& disc) {
    if (!IsUpright(path)) return;
    disc.applyTransformToItem(carve::math::Matrix(0, 1, 0, 0, 0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0, 1));
}

}  // namespace swept_discs

#define sweepDisk(path, entity, item, sides, radius, inner)                                 \
    sweepDisk(swept_discs::Laid(path), entity, item, static_cast<std::size_t>(nvc), radius, \
              inner),                                                                       \
        swept_discs::SetUp(path, *(item))
#include <ifcpp/geometry/Carve/GeometryConverter.h>
#undef sweepDisk
