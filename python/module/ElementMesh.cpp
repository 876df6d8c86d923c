#include "ElementMesh.h"

#include <utility>

#include "ZVSmartModel/Error.h"

namespace ZVSmartModel::Python {

namespace {

/// Puts `more` behind `all`, or in its place where there is nothing yet.
template <class Values>
void Append(Values& all, Values&& more) {
    if (all.empty()) {
        all = std::move(more);
    } else {
        all.insert(all.end(), more.begin(), more.end());
    }
}

}  // namespace

ElementMesh::ElementMesh(Body body) : curves(std::move(body.curves)) {
    for (Triangles& surface : body.surfaces) {
        if (points.size() + surface.points.size() > 0xFFFFFFFF) {
            throw Error(Status::Usage, "the body has more points than a mesh can number");
        }
        const auto firstPoint = static_cast<std::uint32_t>(points.size());
        for (auto& triangle : surface.triangles) {
            for (std::uint32_t& corner : triangle) corner += firstPoint;
        }
        lookOf.insert(lookOf.end(), surface.triangles.size(),
                      static_cast<std::uint32_t>(looks.size()));
        looks.push_back(surface.look.value_or(Look()));
        Append(points, std::move(surface.points));
        Append(triangles, std::move(surface.triangles));
        Append(normals, std::move(surface.normals));
    }
}

BodyOptions BodyOptionsOf(py::handle normals, double creaseAngle, bool curves, double chordError) {
    BodyOptions options;
    if (!normals.is_none()) {
        const std::string name = py::str(normals);
        if (name != "flat" && name != "smooth") {
            throw py::value_error("normals are None, \"flat\" or \"smooth\"");
        }
        options.normals = name == "flat" ? Normals::Flat : Normals::Smooth;
    }
    options.creaseAngle = creaseAngle;
    options.curves = curves;
    options.chordError = chordError;
    return options;
}

}  // namespace ZVSmartModel::Python
