#pragma once

#include <ifcpp/geometry/Carve/IncludeCarveHeaders.h>

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace ZVSmartModel {

using Solid = carve::mesh::MeshSet<3>;
using SolidVector = carve::geom::vector<3>;

struct SolidLine {
    SolidVector origin, direction;  ///< direction of length 1
};

struct SolidBox {
    SolidVector low, high;

    bool IsEmpty() const;
    SolidBox Overlap(const SolidBox& other) const;
};

/// Pieces of a line by their distances from its origin: ascending, apart from each other.
using LinePieces = std::vector<std::pair<double, double>>;

/// The surface of a solid, prepared for lines to be drawn through it. Of polygons, which may be
/// joined to their holes by edges that are there twice. Keeps no pointer to the solid.
class SolidLines {
  public:
    explicit SolidLines(const Solid& solid);

    /// The pieces of the line that are inside; none where the line meets edges or corners so that
    /// it cannot be told.
    std::optional<LinePieces> Inside(const SolidLine& line) const;

    /// The smallest distance, along the line, between a place where it enters and one where it
    /// leaves; infinite where it does not meet the surface.
    double Thinnest(const SolidLine& line) const;

    double Volume() const { return volume; }  ///< negative where the surface is inside out
    const SolidBox& Box() const { return box; }
    std::size_t FaceCount() const { return faces.size(); }
    SolidVector NormalOfLargestFace() const;

  private:
    struct Face {
        SolidVector normal;  ///< of twice the face's area
        SolidVector middle;
        double radius = 0;
        std::size_t first = 0, count = 0;  ///< corners
    };
    struct Crossing {
        double distance;
        int step;  ///< 1 enters, -1 leaves
    };

    void Add(const Solid::face_t& face);
    bool Meets(const Face& face, const SolidLine& line, double& distance) const;
    std::vector<Crossing> Crossings(const SolidLine& line) const;

    std::vector<Face> faces;
    std::vector<SolidVector> corners;
    SolidBox box;
    double volume = 0;
};

}  // namespace ZVSmartModel
