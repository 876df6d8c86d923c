#pragma once

#include "ZVSmartFormat/Api.h"

/// @namespace ZVIM
/// The geometry model: what shapes are made of, and how it is stored.

/// Points, vectors, transforms, curves, and the tolerances by which they compare.
namespace ZVIM::GeometryPrimitiveResource {

/// The tolerances of the whole process. Any thread may read them at any time; set them before
/// positions are put into ordered containers, whose order rests on them.
class ZVFT_API CZVIMGeoModelConfig {
  public:
    /// Below this length two points count as one; in the model's unit, 1e-6 unless set.
    static double getabs();
    /// A value that is not finite and positive is refused: the tolerance stays.
    static void setabs(double length);

    /// Below this angle two directions count as one; radians, 1e-6 unless set.
    static double getnor();
    /// A value that is not finite and positive is refused: the tolerance stays.
    static void setnor(double angleRadians);
};

}  // namespace ZVIM::GeometryPrimitiveResource
