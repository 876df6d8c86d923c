#pragma once

#include <vector>

#include "tools/zvg/import/ifc/BooleanCheck.h"
#include "tools/zvg/import/ifc/SolidLines.h"

/// The planes of a solid B that coincide, within 0.2 mm, with planes of a solid A, where solids
/// are hardest to cut. Moving them to where nothing depends on them, out of A for a difference,
/// makes the cut easy and leaves what comes of it as it is. `b` is borrowed.
class CoincidentPlanes {
  public:
    CoincidentPlanes(const Solid& a, Solid& b, BooleanOperation operation);

    bool None() const { return none; }

    /// Puts them `distance` metres from where they were at first.
    void Move(double distance);

    /// Puts all planes of B so far outwards.
    void MoveAll(double distance);

  private:
    struct Corner {
        SolidVector place;                ///< at first
        std::vector<std::size_t> planes;  ///< indices into `planes`
    };
    struct Plane {
        SolidVector normal;
        double offset = 0;
        int way = 0;  ///< 1 outwards, -1 inwards, 0 stays
    };

    template <typename Way>
    void MoveBy(const Way& distanceOf);
    std::size_t PlaneOf(const Solid::face_t& face);

    Solid& b;
    std::vector<Plane> planes;
    std::vector<Corner> corners;  ///< one for each vertex of B
    bool none = true;
};
