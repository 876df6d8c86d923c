#pragma once

#include <memory>

#include "model/import/Model.h"

class IfcAxis2Placement;
class IfcCartesianPoint;
class IfcCartesianTransformationOperator;
class IfcDirection;

namespace ZVSmartModel {

// Points and frames of the file, in the file's unit. What is missing takes the value that IFC
// gives it: the origin, the X and the Z axis.

/// A point of 1 to 3 coordinates.
ModelPoint PointOf(const std::shared_ptr<IfcCartesianPoint>& point);
/// A direction as it stands, of any length; `missing` where there is none.
ModelPoint DirectionOf(const std::shared_ptr<IfcDirection>& direction, const ModelPoint& missing);

/// The frame's coordinates to those it is given in.
Transform FrameOf(const std::shared_ptr<IfcAxis2Placement>& placement);
Transform FrameOf(const std::shared_ptr<IfcCartesianTransformationOperator>& target);

ModelPoint Moved(const Transform& frame, const ModelPoint& point);

ModelPoint Sum(const ModelPoint& a, const ModelPoint& b);
ModelPoint Scaled(const ModelPoint& vector, double factor);
ModelPoint Cross(const ModelPoint& a, const ModelPoint& b);
double Dot(const ModelPoint& a, const ModelPoint& b);
double Length(const ModelPoint& vector);

}  // namespace ZVSmartModel
