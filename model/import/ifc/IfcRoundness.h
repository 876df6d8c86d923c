#pragma once

#include <memory>
#include <vector>

class IfcProduct;
class IfcRevolvedAreaSolid;

namespace ZVSmartModel {

/// The lines that stand for a circle: no farther from it than `tolerance` and at least 24, a
/// multiple of 4 so that the circle is as wide as it should be, and 120 at most. In metres.
int SidesOfCircle(double radius, double tolerance);

/// The revolved solids that an element's representations are made of, those in mapped items and
/// boolean results as well.
std::vector<std::shared_ptr<IfcRevolvedAreaSolid>> RevolvedSolidsOf(const IfcProduct& element);

/// Metres from the solid's axis to the point (x, y) of its profile, which are metres.
double DistanceFromAxis(const IfcRevolvedAreaSolid& solid, double x, double y, double unitInMetres);

}  // namespace ZVSmartModel
