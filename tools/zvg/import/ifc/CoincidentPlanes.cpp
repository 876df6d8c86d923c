#include "tools/zvg/import/ifc/CoincidentPlanes.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr double coincides = 0.0002;  ///< metres
constexpr double parallel = 0.9999;   ///< cosine of the angle between normals
constexpr double sameNormal = 1 - 1e-9;
constexpr double sameOffset = 1e-6;  ///< metres

/// The sides of a plane of A that B has a face on.
struct Sides {
    bool same = false, opposite = false;
};

Sides SidesOf(const Solid::face_t& faceOfB, const Solid& a) {
    Sides sides;
    for (const auto* mesh : a.meshes) {
        for (const auto* face : mesh->faces) {
            const double cosine = carve::geom::dot(face->plane.N, faceOfB.plane.N);
            if (std::abs(cosine) < parallel) continue;
            const bool near = std::all_of(faceOfB.begin(), faceOfB.end(), [&](const auto& edge) {
                return std::abs(carve::geom::distance(face->plane, edge.vert->v)) < coincides;
            });
            if (near) (cosine > 0 ? sides.same : sides.opposite) = true;
        }
    }
    return sides;
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
    const int outOfFlush = operation == BooleanOperation::UNION ? -1 : 1;
    for (const auto* mesh : b.meshes) {
        for (const auto* face : mesh->faces) {
            const std::size_t index = PlaneOf(*face);
            for (const auto& edge : *face) {
                auto& own =
                    corners[static_cast<std::size_t>(edge.vert - b.vertex_storage.data())].planes;
                if (std::find(own.begin(), own.end(), index) == own.end()) own.push_back(index);
            }
            if (planes[index].way != 0) continue;
            const Sides sides = SidesOf(*face, a);
            if (sides.same) planes[index].way = outOfFlush;
            if (sides.opposite && !sides.same) planes[index].way = -outOfFlush;
            if (planes[index].way != 0) none = false;
        }
    }
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
    return planes.size() - 1;
}

template <typename Way>
void CoincidentPlanes::MoveBy(const Way& distanceOf) {
    for (std::size_t i = 0; i < corners.size(); ++i) {
        ShortestWay way;
        for (const std::size_t index : corners[i].planes) {
            way.Ask(planes[index].normal, distanceOf(planes[index]));
        }
        b.vertex_storage[i].v = corners[i].place + way.Solve();
    }
    for (auto* mesh : b.meshes) mesh->recalc();
}

void CoincidentPlanes::Move(double distance) {
    MoveBy([&](const Plane& plane) { return plane.way * distance; });
}

void CoincidentPlanes::MoveAll(double distance) {
    MoveBy([&](const Plane&) { return distance; });
}
