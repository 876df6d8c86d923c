#include "model/import/ifc/IfcFrames.h"

#include <ifcpp/IFC4/include/IfcAxis2Placement2D.h>
#include <ifcpp/IFC4/include/IfcAxis2Placement3D.h>
#include <ifcpp/IFC4/include/IfcCartesianPoint.h>
#include <ifcpp/IFC4/include/IfcCartesianTransformationOperator2DnonUniform.h>
#include <ifcpp/IFC4/include/IfcCartesianTransformationOperator3D.h>
#include <ifcpp/IFC4/include/IfcCartesianTransformationOperator3DnonUniform.h>
#include <ifcpp/IFC4/include/IfcDirection.h>
#include <ifcpp/IFC4/include/IfcLengthMeasure.h>
#include <ifcpp/IFC4/include/IfcReal.h>

#include <cmath>

namespace ZVSmartModel {

namespace {

constexpr ModelPoint xAxis = {1, 0, 0};
constexpr ModelPoint yAxis = {0, 1, 0};
constexpr ModelPoint zAxis = {0, 0, 1};

template <typename Numbers>
ModelPoint FromNumbers(const Numbers& numbers) {
    double values[3] = {0, 0, 0};
    for (std::size_t i = 0; i < numbers.size() && i < 3; ++i) {
        if (numbers[i]) values[i] = numbers[i]->m_value;
    }
    return {values[0], values[1], values[2]};
}

/// The part of `vector` across the unit vector `axis`, of length 1; `missing` where there is none.
ModelPoint Across(const ModelPoint& vector, const ModelPoint& axis, const ModelPoint& missing) {
    const ModelPoint across = Sum(vector, Scaled(axis, -Dot(vector, axis)));
    const double length = Length(across);
    return length > 1e-9 ? Scaled(across, 1 / length) : missing;
}

Transform FromAxes(const ModelPoint& x, const ModelPoint& y, const ModelPoint& z,
                   const ModelPoint& origin) {
    return {x.x, y.x, z.x, origin.x, x.y, y.y, z.y, origin.y, x.z, y.z, z.z, origin.z};
}

double NumberOr(const std::shared_ptr<IfcReal>& number, double missing) {
    return number ? number->m_value : missing;
}

/// Right-handed; `x` need not be perpendicular to `z`.
Transform Frame(const ModelPoint& zDirection, const ModelPoint& xDirection,
                const ModelPoint& origin) {
    const double length = Length(zDirection);
    const ModelPoint z = length > 1e-9 ? Scaled(zDirection, 1 / length) : zAxis;
    const ModelPoint aside = std::fabs(z.x) < 0.9 ? xAxis : yAxis;
    const ModelPoint x = Across(xDirection, z, Across(aside, z, xAxis));
    return FromAxes(x, Cross(z, x), z, origin);
}

}  // namespace

ModelPoint PointOf(const std::shared_ptr<IfcCartesianPoint>& point) {
    return point ? FromNumbers(point->m_Coordinates) : ModelPoint();
}

ModelPoint DirectionOf(const std::shared_ptr<IfcDirection>& direction, const ModelPoint& missing) {
    return direction ? FromNumbers(direction->m_DirectionRatios) : missing;
}

Transform FrameOf(const std::shared_ptr<IfcAxis2Placement>& placement) {
    if (const auto flat = std::dynamic_pointer_cast<IfcAxis2Placement2D>(placement)) {
        return Frame(zAxis, DirectionOf(flat->m_RefDirection, xAxis), PointOf(flat->m_Location));
    }
    if (const auto solid = std::dynamic_pointer_cast<IfcAxis2Placement3D>(placement)) {
        return Frame(DirectionOf(solid->m_Axis, zAxis), DirectionOf(solid->m_RefDirection, xAxis),
                     PointOf(solid->m_Location));
    }
    return identityTransform;
}

Transform FrameOf(const std::shared_ptr<IfcCartesianTransformationOperator>& target) {
    if (!target) return identityTransform;
    const auto solid = std::dynamic_pointer_cast<IfcCartesianTransformationOperator3D>(target);
    const ModelPoint zDirection = solid ? DirectionOf(solid->m_Axis3, zAxis) : zAxis;
    const Transform frame =
        Frame(zDirection, DirectionOf(target->m_Axis1, xAxis), PointOf(target->m_LocalOrigin));
    const ModelPoint x = {frame[0], frame[4], frame[8]};
    ModelPoint y = {frame[1], frame[5], frame[9]};
    const ModelPoint z = {frame[2], frame[6], frame[10]};
    // A second axis that points the other way mirrors.
    if (Dot(DirectionOf(target->m_Axis2, y), y) < 0) y = Scaled(y, -1);
    const double xScale = NumberOr(target->m_Scale, 1);
    double yScale = xScale;
    double zScale = xScale;
    if (const auto flat =
            std::dynamic_pointer_cast<IfcCartesianTransformationOperator2DnonUniform>(target)) {
        yScale = NumberOr(flat->m_Scale2, xScale);
    }
    if (const auto uneven =
            std::dynamic_pointer_cast<IfcCartesianTransformationOperator3DnonUniform>(target)) {
        yScale = NumberOr(uneven->m_Scale2, xScale);
        zScale = NumberOr(uneven->m_Scale3, xScale);
    }
    return FromAxes(Scaled(x, xScale), Scaled(y, yScale), Scaled(z, zScale),
                    PointOf(target->m_LocalOrigin));
}

ModelPoint Moved(const Transform& f, const ModelPoint& p) {
    return {f[0] * p.x + f[1] * p.y + f[2] * p.z + f[3],
            f[4] * p.x + f[5] * p.y + f[6] * p.z + f[7],
            f[8] * p.x + f[9] * p.y + f[10] * p.z + f[11]};
}

ModelPoint Sum(const ModelPoint& a, const ModelPoint& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

ModelPoint Scaled(const ModelPoint& vector, double factor) {
    return {vector.x * factor, vector.y * factor, vector.z * factor};
}

ModelPoint Cross(const ModelPoint& a, const ModelPoint& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

double Dot(const ModelPoint& a, const ModelPoint& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

double Length(const ModelPoint& vector) {
    return std::sqrt(Dot(vector, vector));
}

}  // namespace ZVSmartModel
