#include "model/import/ifc/CheckedBoolean.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <vector>

#include "model/import/ifc/CoincidentPlanes.h"

namespace ZVSmartModel {

namespace {

// Metres. What coincides moves away from where it matters; all planes move only so far that the
// difference is not noticed.
constexpr std::array coincidentMoves = {0.0, 0.0001, 0.0003, 0.001, 0.00003};
constexpr std::array moves = {0.00003, -0.00003, 0.0001, -0.0001};
constexpr double nearOrigin = 100;          ///< metres; farther away digits are lost
constexpr double leastVolume = 1e-9;        ///< cubic metres; smaller shells are crumbs
constexpr double cornerStep = 0.000000001;  ///< metres; corners that are nearer become one

double VolumeOf(const Solid::mesh_t& mesh) {
    double volume = 0;
    const SolidVector origin = mesh.faces.front()->edge->vert->v;
    for (const auto* face : mesh.faces) {
        const SolidVector first = face->edge->vert->v - origin;
        for (const auto* edge = face->edge->next; edge->next != face->edge; edge = edge->next) {
            volume +=
                carve::geom::dotcross(first, edge->vert->v - origin, edge->next->vert->v - origin) /
                6;
        }
    }
    return volume;
}

/// A mesh of triangles that is built face by face. Its order depends on where the corners are
/// alone, not on that of the library's faces and corners, which comes from addresses.
class TriangleMesh {
  public:
    void Add(const Solid::face_t& face) {
        std::vector<SolidVector> corners;
        const auto* const first = FirstEdge(face);
        const auto* edge = first;
        do {
            corners.push_back(Rounded(edge->vert->v));
            edge = edge->next;
        } while (edge != first);
        for (const auto& t : TrianglesOf(face, corners)) {
            Triangle triangle = {corners[t.a], corners[t.b], corners[t.c]};
            std::rotate(triangle.begin(), std::min_element(triangle.begin(), triangle.end()),
                        triangle.end());
            const auto& [a, b, c] = triangle;
            if (a != b && b != c && c != a) triangles.push_back(triangle);
        }
    }
    std::unique_ptr<Solid> Finish() {
        if (triangles.empty()) return EmptySolid();
        std::sort(triangles.begin(), triangles.end());
        carve::input::PolyhedronData data;
        std::map<SolidVector, int> indices;
        for (const Triangle& triangle : triangles) {
            std::array<int, 3> corners = {};
            for (std::size_t i = 0; i < 3; ++i) {
                const auto [place, isNew] = indices.try_emplace(triangle[i], 0);
                if (isNew) place->second = static_cast<int>(data.addVertex(triangle[i]));
                corners[i] = place->second;
            }
            data.addFace(corners[0], corners[1], corners[2]);
        }
        return std::unique_ptr<Solid>(data.createMesh(carve::input::opts()));
    }

  private:
    using Triangle = std::array<SolidVector, 3>;

    static SolidVector Rounded(const SolidVector& corner) {
        SolidVector rounded = corner;
        for (double& number : rounded.v) {
            number = std::round(number / cornerStep) * cornerStep + 0.0;
        }
        return rounded;
    }
    static const Solid::edge_t* FirstEdge(const Solid::face_t& face) {
        const auto* first = face.edge;
        for (const auto* edge = face.edge->next; edge != face.edge; edge = edge->next) {
            const bool before =
                edge->vert->v < first->vert->v ||
                (edge->vert->v == first->vert->v && edge->next->vert->v < first->next->vert->v);
            if (before) first = edge;
        }
        return first;
    }
    static std::vector<carve::triangulate::tri_idx> TrianglesOf(
        const Solid::face_t& face, const std::vector<SolidVector>& corners) {
        if (corners.size() == 3) return {{0, 1, 2}};
        std::vector<carve::geom::vector<2>> flat;
        for (const SolidVector& corner : corners) flat.push_back(face.project(corner));
        std::vector<carve::triangulate::tri_idx> triangles;
        carve::triangulate::triangulate(flat, triangles);
        carve::triangulate::improve(flat, triangles);
        return triangles;
    }

    std::vector<Triangle> triangles;
};

std::unique_ptr<Solid> Copy(const Solid& solid) {
    return std::unique_ptr<Solid>(solid.clone());
}

void AddShells(const Solid& solid, TriangleMesh& triangles) {
    for (const auto* mesh : solid.meshes) {
        if (mesh->isClosed() && std::abs(VolumeOf(*mesh)) < leastVolume) continue;
        for (const auto* face : mesh->faces) triangles.Add(*face);
    }
}

std::unique_ptr<Solid> InTriangles(const Solid& solid) {
    TriangleMesh triangles;
    AddShells(solid, triangles);
    return triangles.Finish();
}

void MoveBy(Solid& solid, const SolidVector& way) {
    solid.transform([&](const SolidVector& place) { return place + way; });
}

/// What the library makes of it, unchecked; null where it gives up.
std::unique_ptr<Solid> Attempt(const Solid& a, const Solid& b, BooleanOperation operation) {
    try {
        const std::unique_ptr<Solid> ownA(a.clone());  // the library alters what it is given
        const std::unique_ptr<Solid> ownB(b.clone());
        carve::csg::CSG csg;
        const std::unique_ptr<Solid> made(csg.compute(ownA.get(), ownB.get(), operation, nullptr,
                                                      carve::csg::CSG::CLASSIFY_EDGE));
        if (!made) return nullptr;
        return InTriangles(*made);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        return nullptr;  // its own exceptions, and what containers throw at indices gone astray
    }
}

std::unique_ptr<Solid> Made(const Solid& a, Solid& b, BooleanOperation operation) {
    const BooleanCheck check(a, b, operation);
    if (check.Apart() && operation == BooleanOperation::A_MINUS_B) return Copy(a);
    if (check.Apart() && operation == BooleanOperation::INTERSECTION) return EmptySolid();
    CoincidentPlanes planes(a, b, operation);
    std::unique_ptr<Solid> result;
    const auto accept = [&] {
        result = Attempt(a, b, operation);
        return result && IsClosed(*result) && check.IsRight(*result);
    };
    if (planes.None() && accept()) return result;
    for (const double distance : coincidentMoves) {
        if (planes.None()) break;
        planes.Move(distance);
        if (accept()) return result;
    }
    for (const double distance : moves) {
        planes.MoveAll(distance);
        if (accept()) return result;
    }
    return nullptr;
}

}  // namespace

std::unique_ptr<Solid> EmptySolid() {
    std::vector<Solid::mesh_t*> none;
    return std::make_unique<Solid>(none);
}

std::unique_ptr<Solid> Together(const Solid& a, const Solid& b) {
    TriangleMesh triangles;
    AddShells(a, triangles);
    AddShells(b, triangles);
    return triangles.Finish();
}

bool IsClosed(const Solid& solid) {
    return std::all_of(solid.meshes.begin(), solid.meshes.end(),
                       [](const auto* mesh) { return mesh->open_edges.empty(); });
}

void TurnRightSideOut(Solid& solid) {
    double volume = 0;
    for (const auto* mesh : solid.meshes) volume += VolumeOf(*mesh);
    if (volume < 0) solid.invert();
}

std::unique_ptr<Solid> CheckedBoolean(const Solid& a, const Solid& b, BooleanOperation operation) {
    if (a.meshes.empty()) return operation == BooleanOperation::UNION ? Copy(b) : EmptySolid();
    if (b.meshes.empty()) {
        return operation == BooleanOperation::INTERSECTION ? EmptySolid() : Copy(a);
    }
    if (!IsClosed(a) || !IsClosed(b)) return nullptr;
    const auto ownA = Copy(a);
    const auto ownB = Copy(b);
    TurnRightSideOut(*ownA);
    TurnRightSideOut(*ownB);
    const SolidVector middle = ownA->getAABB().pos;
    if (middle.length() < nearOrigin) return Made(*ownA, *ownB, operation);
    MoveBy(*ownA, -middle);
    MoveBy(*ownB, -middle);
    auto result = Made(*ownA, *ownB, operation);
    if (result) MoveBy(*result, middle);
    return result;
}

}  // namespace ZVSmartModel
