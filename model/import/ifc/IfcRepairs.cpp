#include "model/import/ifc/IfcRepairs.h"

#include <ifcpp/IFC4/include/IfcAxis2Placement3D.h>
#include <ifcpp/IFC4/include/IfcBlock.h>
#include <ifcpp/IFC4/include/IfcBoolean.h>
#include <ifcpp/IFC4/include/IfcBooleanResult.h>
#include <ifcpp/IFC4/include/IfcBoxedHalfSpace.h>
#include <ifcpp/IFC4/include/IfcCartesianPoint.h>
#include <ifcpp/IFC4/include/IfcClosedShell.h>
#include <ifcpp/IFC4/include/IfcConnectedFaceSet.h>
#include <ifcpp/IFC4/include/IfcCsgPrimitive3D.h>
#include <ifcpp/IFC4/include/IfcCsgSolid.h>
#include <ifcpp/IFC4/include/IfcDirection.h>
#include <ifcpp/IFC4/include/IfcFace.h>
#include <ifcpp/IFC4/include/IfcFaceBasedSurfaceModel.h>
#include <ifcpp/IFC4/include/IfcFaceOuterBound.h>
#include <ifcpp/IFC4/include/IfcLengthMeasure.h>
#include <ifcpp/IFC4/include/IfcManifoldSolidBrep.h>
#include <ifcpp/IFC4/include/IfcPolyLoop.h>
#include <ifcpp/IFC4/include/IfcPositiveLengthMeasure.h>
#include <ifcpp/IFC4/include/IfcReal.h>
#include <ifcpp/IFC4/include/IfcRectangularPyramid.h>
#include <ifcpp/IFC4/include/IfcRepresentation.h>
#include <ifcpp/IFC4/include/IfcShell.h>
#include <ifcpp/IFC4/include/IfcShellBasedSurfaceModel.h>
#include <ifcpp/IFC4/include/IfcSphere.h>
#include <ifcpp/IFC4/include/IfcStyledItem.h>
#include <ifcpp/IFC4/include/IfcSurface.h>
#include <ifcpp/model/BuildingModel.h>
#include <ifcpp/model/UnitConverter.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "model/import/ifc/PerClass.h"

namespace ZVSmartModel {

namespace {

using Point = std::array<double, 3>;
using Item = std::shared_ptr<IfcRepresentationItem>;

Point PointOf(const IfcCartesianPoint& source) {
    Point point = {};
    for (std::size_t i = 0; i < std::min<std::size_t>(3, source.m_Coordinates.size()); ++i) {
        if (source.m_Coordinates[i]) point[i] = source.m_Coordinates[i]->m_value;
    }
    return point;
}

/// Of a loop of points; 0 for others.
double AreaOf(const IfcFaceBound& bound) {
    const auto loop = std::dynamic_pointer_cast<IfcPolyLoop>(bound.m_Bound);
    if (!loop || loop->m_Polygon.empty()) return 0;
    Point sum = {};
    Point before = loop->m_Polygon.back() ? PointOf(*loop->m_Polygon.back()) : Point{};
    for (const auto& corner : loop->m_Polygon) {
        if (!corner) continue;
        const Point here = PointOf(*corner);
        for (std::size_t i = 0; i < 3; ++i) {
            const std::size_t u = (i + 1) % 3;
            const std::size_t v = (i + 2) % 3;
            sum[i] += before[u] * here[v] - before[v] * here[u];
        }
        before = here;
    }
    return std::hypot(sum[0], sum[1], sum[2]) / 2;
}

void PutOuterBoundFirst(IfcFace& face) {
    auto& bounds = face.m_Bounds;
    if (bounds.size() < 2) return;
    auto outer = std::find_if(bounds.begin(), bounds.end(), [](const auto& bound) {
        return std::dynamic_pointer_cast<IfcFaceOuterBound>(bound) != nullptr;
    });
    if (outer == bounds.end()) {
        outer = std::max_element(bounds.begin(), bounds.end(), [](const auto& a, const auto& b) {
            return (a ? AreaOf(*a) : 0) < (b ? AreaOf(*b) : 0);
        });
    }
    std::rotate(bounds.begin(), outer, outer + 1);
}

/// What lies below an item and is drawn with it; null where that is nothing of its own.
Item FirstPartOf(const IfcRepresentationItem& item) {
    if (const auto* result = dynamic_cast<const IfcBooleanResult*>(&item)) {
        return std::dynamic_pointer_cast<IfcRepresentationItem>(result->m_FirstOperand);
    }
    if (const auto* csg = dynamic_cast<const IfcCsgSolid*>(&item)) {
        return std::dynamic_pointer_cast<IfcRepresentationItem>(csg->m_TreeRootExpression);
    }
    if (const auto* brep = dynamic_cast<const IfcManifoldSolidBrep*>(&item)) return brep->m_Outer;
    return nullptr;
}

void TakeStyleOfFirstPart(IfcRepresentationItem& item) {
    if (!item.m_StyledByItem_inverse.empty()) return;
    constexpr int deepest = 10000;  // a damaged file may lead round and round
    Item part = FirstPartOf(item);
    for (int depth = 0; part && depth < deepest; ++depth) {
        if (!part->m_StyledByItem_inverse.empty()) {
            item.m_StyledByItem_inverse = part->m_StyledByItem_inverse;
            return;
        }
        part = FirstPartOf(*part);
    }
}

/// A model of one shell alone, which looks as the shell does, or else as the whole model.
template <typename SurfaceModel, typename Shell>
Item ModelOf(const SurfaceModel& whole, std::vector<std::shared_ptr<Shell>> SurfaceModel::*shells,
             const std::shared_ptr<Shell>& shell) {
    auto alone = std::make_shared<SurfaceModel>(whole.m_entity_id);
    ((*alone).*shells).push_back(shell);
    const auto item = std::dynamic_pointer_cast<IfcRepresentationItem>(shell);
    const bool styled = item && !item->m_StyledByItem_inverse.empty();
    alone->m_StyledByItem_inverse =
        styled ? item->m_StyledByItem_inverse : whole.m_StyledByItem_inverse;
    return alone;
}

template <typename SurfaceModel, typename Shell>
bool AddModels(const Item& item, std::vector<std::shared_ptr<Shell>> SurfaceModel::*shells,
               std::vector<Item>& models) {
    const auto whole = std::dynamic_pointer_cast<SurfaceModel>(item);
    if (!whole) return false;
    const auto& all = (*whole).*shells;
    const bool anyStyled = std::any_of(all.begin(), all.end(), [](const auto& shell) {
        const auto part = std::dynamic_pointer_cast<IfcRepresentationItem>(shell);
        return part && !part->m_StyledByItem_inverse.empty();
    });
    if (!anyStyled) return false;
    for (const auto& shell : all) models.push_back(ModelOf(*whole, shells, shell));
    return true;
}

void SeparateStyledShells(IfcRepresentation& representation) {
    std::vector<Item> items;
    for (const Item& item : representation.m_Items) {
        const bool separated = AddModels(item, &IfcShellBasedSurfaceModel::m_SbsmBoundary, items) ||
                               AddModels(item, &IfcFaceBasedSurfaceModel::m_FbsmFaces, items);
        if (!separated) items.push_back(item);
    }
    representation.m_Items = std::move(items);
}

/// The box only says where the half space is needed, and the library takes it for something else.
void TakeOutOfBox(std::shared_ptr<IfcBooleanOperand>& operand) {
    const auto boxed = std::dynamic_pointer_cast<IfcBoxedHalfSpace>(operand);
    if (!boxed) return;
    const auto free = std::make_shared<IfcHalfSpaceSolid>(boxed->m_entity_id);
    free->m_BaseSurface = boxed->m_BaseSurface;
    free->m_AgreementFlag = boxed->m_AgreementFlag;
    operand = free;
}

Point Normalised(const Point& v) {
    const double length = std::hypot(v[0], v[1], v[2]);
    return length == 0 ? v : Point{v[0] / length, v[1] / length, v[2] / length};
}

Point Cross(const Point& a, const Point& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Point DirectionOf(const std::shared_ptr<IfcDirection>& source, const Point& otherwise) {
    if (!source || source->m_DirectionRatios.size() != 3) return otherwise;
    Point direction = {};
    for (std::size_t i = 0; i < 3; ++i) {
        if (source->m_DirectionRatios[i]) direction[i] = source->m_DirectionRatios[i]->m_value;
    }
    return direction;
}

/// The library puts primitives with their middle where their corner should be. Positions may be
/// shared, so a new one is made.
void MoveAlongItsAxes(IfcCsgPrimitive3D& primitive, const Point& way) {
    if (!primitive.m_Position || !primitive.m_Position->m_Location) return;
    const IfcAxis2Placement3D& old = *primitive.m_Position;
    const Point z = Normalised(DirectionOf(old.m_Axis, {0, 0, 1}));
    Point y = Cross(z, DirectionOf(old.m_RefDirection, {1, 0, 0}));
    if (y == Point{}) y = Cross(z, {0, 0, 1});  // as where no direction is given along X
    y = Normalised(y);
    const Point x = Cross(y, z);
    const Point place = PointOf(*old.m_Location);
    const auto location = std::make_shared<IfcCartesianPoint>(old.m_Location->m_entity_id);
    for (std::size_t i = 0; i < 3; ++i) {
        location->m_Coordinates.push_back(std::make_shared<IfcLengthMeasure>(
            place[i] + x[i] * way[0] + y[i] * way[1] + z[i] * way[2]));
    }
    const auto position = std::make_shared<IfcAxis2Placement3D>(old.m_entity_id);
    position->m_Location = location;
    position->m_Axis = old.m_Axis;
    position->m_RefDirection = old.m_RefDirection;
    primitive.m_Position = position;
}

void PutPrimitiveRight(IfcCsgPrimitive3D& primitive, double unitInMetres) {
    if (auto* block = dynamic_cast<IfcBlock*>(&primitive)) {
        if (!block->m_XLength || !block->m_YLength || !block->m_ZLength) return;
        MoveAlongItsAxes(primitive, {block->m_XLength->m_value / 2, block->m_YLength->m_value / 2,
                                     block->m_ZLength->m_value / 2});
    } else if (auto* pyramid = dynamic_cast<IfcRectangularPyramid*>(&primitive)) {
        if (!pyramid->m_XLength || !pyramid->m_YLength || !pyramid->m_Height) return;
        MoveAlongItsAxes(primitive,
                         {pyramid->m_XLength->m_value / 2, pyramid->m_YLength->m_value / 2, 0});
        pyramid->m_Height->m_value *= 2;  // the library halves it
    } else if (auto* sphere = dynamic_cast<IfcSphere*>(&primitive)) {
        if (sphere->m_Radius) sphere->m_Radius->m_value *= unitInMetres;  // the library does not
    }
}

template <typename... Types>
bool IsAnyOf(const BuildingEntity& entity) {
    return (... || (dynamic_cast<const Types*>(&entity) != nullptr));
}

/// Of the items those that have a first part, and primitives: points and curves are most of a
/// model.
bool MayNeedRepair(const BuildingEntity& entity) {
    return IsAnyOf<IfcFace, IfcRepresentation, IfcBooleanResult, IfcCsgSolid, IfcManifoldSolidBrep,
                   IfcCsgPrimitive3D>(entity);
}

}  // namespace

void RepairForShapes(BuildingModel& model) {
    const double unit = model.getUnitConverter()->getLengthInMeterFactor();
    PerClass<bool> mayNeedRepair;
    for (const auto& [id, entity] : model.getMapIfcEntities()) {
        if (!entity || !mayNeedRepair.Of(*entity, MayNeedRepair)) continue;
        if (const auto face = std::dynamic_pointer_cast<IfcFace>(entity)) {
            PutOuterBoundFirst(*face);
        } else if (const auto item = std::dynamic_pointer_cast<IfcRepresentationItem>(entity)) {
            TakeStyleOfFirstPart(*item);
            if (const auto result = std::dynamic_pointer_cast<IfcBooleanResult>(item)) {
                TakeOutOfBox(result->m_FirstOperand);
                TakeOutOfBox(result->m_SecondOperand);
            } else if (const auto primitive = std::dynamic_pointer_cast<IfcCsgPrimitive3D>(item)) {
                PutPrimitiveRight(*primitive, unit);
            }
        } else if (const auto shown = std::dynamic_pointer_cast<IfcRepresentation>(entity)) {
            SeparateStyledShells(*shown);
        }
    }
}

}  // namespace ZVSmartModel
