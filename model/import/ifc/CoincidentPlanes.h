#pragma once

#include <vector>

#include "model/import/ifc/BooleanCheck.h"
#include "model/import/ifc/SolidLines.h"

namespace ZVSmartModel {

/// The planes of a solid B that coincide, within 0.2 mm, with planes of a solid A, where solids
/// are hardest to cut. Moving them to where nothing depends on them, out of A for a difference,
/// makes the cut easy and leaves what comes of it as it is. `b` is borrowed.
class CoincidentPlanes {
  public:
    CoincidentPlanes(const Solid& a, Solid& b, BooleanOperation operation);

    bool None() const { return none; }

    /// Puts them `distance` metres away from A's; with 0 exactly there, so that it is not left to
    /// chance which of two places a nanometre apart counts.
    void Move(double distance);

    /// Puts all planes of B `distance` outwards of where they were at first.
    void MoveAll(double distance);

  private:
    struct Corner {
        SolidVector place;                ///< at first
        std::vector<std::size_t> planes;  ///< indices into `planes`
    };
    struct Plane {
        SolidVector normal;  ///< outwards of B
        double offset = 0;
        int way = 0;  ///< 1 outwards, -1 inwards, 0 stays
    };
    struct FaceOfA {
        SolidBox box;  ///< with what is near
        Plane plane;
        double area = 0;
    };

    void AddFace(const Solid::face_t& face, const std::vector<FaceOfA>& facesOfA, int flushWay);
    std::size_t PlaneOf(const Solid::face_t& face);
    template <typename Distance>
    void MoveBy(const std::vector<Plane>& to, const Distance& distanceOf);

    static std::vector<FaceOfA> FacesOf(const Solid& a);
    static Plane FoundAt(const Solid::face_t& face, const std::vector<FaceOfA>& facesOfA,
                         int flushWay);

    Solid& b;
    std::vector<Plane> planes;    ///< as they were at first
    std::vector<Plane> targets;   ///< where they coincide with A's, these
    std::vector<Corner> corners;  ///< one for each vertex of B
    bool none = true;
};

}  // namespace ZVSmartModel
