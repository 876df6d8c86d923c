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

// Discs that are swept along a line have eight or twelve sides whatever is asked for, unless what
// is asked for is handed on here.
#include <ifcpp/geometry/Carve/Sweeper.h>
#define sweepDisk(path, entity, item, sides, radius, inner) \
    sweepDisk(path, entity, item, static_cast<std::size_t>(nvc), radius, inner)
#include <ifcpp/geometry/Carve/GeometryConverter.h>
#undef sweepDisk
