#include "model/import/ifc/CoincidentPlanes.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace ZVSmartModel {

namespace {

constexpr double coincides = 0.0002;  ///< metres
constexpr double parallel = 0.9999;   ///< cosine of the angle between normals
constexpr double sameNormal = 1 - 1e-9;
constexpr double sameOffset = 1e-6;  ///< metres

SolidBox BoxAround(const Solid::face_t& face) {
    const SolidVector first = face.edge->vert->v;
    SolidBox box = {first, first};
    for (const auto& edge : face) {
        for (unsigned int i = 0; i < 3; ++i) {
            box.low.v[i] = std::min(box.low.v[i], edge.vert->v.v[i] - coincides);
            box.high.v[i] = std::max(box.high.v[i], edge.vert->v.v[i] + coincides);
        }
    }
    return box;
}

double AreaOf(const Solid::face_t& face) {
    SolidVector twice = carve::geom::VECTOR(0, 0, 0);
    const SolidVector first = face.edge->vert->v;
    for (const auto* edge = face.edge->next; edge->next != face.edge; edge = edge->next) {
        twice += carve::geom::cross(edge->vert->v - first, edge->next->vert->v - first);
    }
    return twice.length() / 2;
}

/// The shortest way that takes a point along each of the normals as far as is asked, or as
/// nearly as can be (least squares, with so little weight on the way itself that it only decides
/// where the normals leave it open).
class ShortestWay {
  public:
    void Ask(const SolidVector& normal, double distance) {
        for (unsigned int row = 0; row < 3; ++row) {
            for (unsigned int column = 0; column < 3; ++column) {
                sums[row][column] += normal.v[row] * normal.v[column];
            }
            sums[row][3] += normal.v[row] * distance;
        }
    }
    /// By Gauss's elimination; positive definite, so no row needs another's place.
    SolidVector Solve() const {
        auto rows = sums;
        for (unsigned int i = 0; i < 3; ++i) rows[i][i] += 1e-9;
        for (unsigned int i = 0; i < 3; ++i) {
            for (unsigned int below = i + 1; below < 3; ++below) {
                const double part = rows[below][i] / rows[i][i];
                for (unsigned int k = i; k < 4; ++k) rows[below][k] -= part * rows[i][k];
            }
        }
        SolidVector way = carve::geom::VECTOR(0, 0, 0);
        for (unsigned int i = 3; i-- > 0;) {
            double rest = rows[i][3];
            for (unsigned int k = i + 1; k < 3; ++k) rest -= rows[i][k] * way.v[k];
            way.v[i] = rest / rows[i][i];
        }
        return way;
    }

  private:
    std::array<std::array<double, 4>, 3> sums = {};
};

}  // namespace

CoincidentPlanes::CoincidentPlanes(const Solid& a, Solid& solidB, BooleanOperation operation)
    : b(solidB), corners(solidB.vertex_storage.size()) {
    for (std::size_t i = 0; i < corners.size(); ++i) corners[i].place = b.vertex_storage[i].v;
    // A face flush with A's is moved out of A, one that touches A from outside away from it; a
    // union is the other way round: it needs B to reach into A, and not to stick out of it.
    const int flushWay = operation == BooleanOperation::UNION ? -1 : 1;
    const std::vector<FaceOfA> facesOfA = FacesOf(a);
    for (const auto* mesh : b.meshes) {
        for (const auto* face : mesh->faces) AddFace(*face, facesOfA, flushWay);
    }
}

std::vector<CoincidentPlanes::FaceOfA> CoincidentPlanes::FacesOf(const Solid& a) {
    std::vector<FaceOfA> faces;
    for (const auto* mesh : a.meshes) {
        for (const auto* face : mesh->faces) {
            faces.push_back({BoxAround(*face), {face->plane.N, -face->plane.d, 0}, AreaOf(*face)});
        }
    }
    // Slivers know least where their plane is.
    std::stable_sort(faces.begin(), faces.end(),
                     [](const FaceOfA& x, const FaceOfA& y) { return x.area > y.area; });
    return faces;
}

void CoincidentPlanes::AddFace(const Solid::face_t& face, const std::vector<FaceOfA>& facesOfA,
                               int flushWay) {
    const std::size_t index = PlaneOf(face);
    for (const auto& edge : face) {
        auto& own = corners[static_cast<std::size_t>(edge.vert - b.vertex_storage.data())].planes;
        if (std::find(own.begin(), own.end(), index) == own.end()) own.push_back(index);
    }
    if (targets[index].way != 0) return;
    const Plane found = FoundAt(face, facesOfA, flushWay);
    if (found.way == 0) return;
    targets[index] = found;
    none = false;
}

/// The plane of A that a face of B lies in; one that looks the same way comes first.
CoincidentPlanes::Plane CoincidentPlanes::FoundAt(const Solid::face_t& face,
                                                  const std::vector<FaceOfA>& facesOfA,
                                                  int flushWay) {
    const SolidBox box = BoxAround(face);
    Plane found;
    for (const FaceOfA& ofA : facesOfA) {
        if (ofA.box.Overlap(box).IsEmpty()) continue;
        const double cosine = carve::geom::dot(ofA.plane.normal, face.plane.N);
        if (std::abs(cosine) < parallel || (cosine < 0 && found.way != 0)) continue;
        const bool near = std::all_of(face.begin(), face.end(), [&](const auto& edge) {
            const double height = carve::geom::dot(ofA.plane.normal, edge.vert->v);
            return std::abs(height - ofA.plane.offset) < coincides;
        });
        if (!near) continue;
        if (cosine > 0) return {ofA.plane.normal, ofA.plane.offset, flushWay};
        found = {-ofA.plane.normal, -ofA.plane.offset, -flushWay};
    }
    return found;
}

std::size_t CoincidentPlanes::PlaneOf(const Solid::face_t& face) {
    const SolidVector& normal = face.plane.N;
    const double offset = carve::geom::dot(normal, face.edge->vert->v);
    const auto known = std::find_if(planes.begin(), planes.end(), [&](const Plane& plane) {
        return carve::geom::dot(plane.normal, normal) > sameNormal &&
               std::abs(plane.offset - offset) < sameOffset;
    });
    if (known != planes.end()) return static_cast<std::size_t>(known - planes.begin());
    planes.push_back({normal, offset, 0});
    targets.push_back(planes.back());
    return planes.size() - 1;
}

template <typename Distance>
void CoincidentPlanes::MoveBy(const std::vector<Plane>& to, const Distance& distanceOf) {
    for (std::size_t i = 0; i < corners.size(); ++i) {
        ShortestWay way;
        for (const std::size_t index : corners[i].planes) {
            const Plane& plane = to[index];
            const double height = carve::geom::dot(plane.normal, corners[i].place);
            way.Ask(plane.normal, plane.offset - height + distanceOf(plane));
        }
        b.vertex_storage[i].v = corners[i].place + way.Solve();
    }
    for (auto* mesh : b.meshes) mesh->recalc();
}

void CoincidentPlanes::Move(double distance) {
    MoveBy(targets, [&](const Plane& plane) { return plane.way * distance; });
}

void CoincidentPlanes::MoveAll(double distance) {
    MoveBy(planes, [&](const Plane&) { return distance; });
}

}  // namespace ZVSmartModel
