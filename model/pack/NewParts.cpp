#include "model/pack/NewParts.h"

#include <algorithm>
#include <string>

#include "model/element/ElementRecord.h"
#include "model/element/Utf8.h"
#include "model/import/ModelPoint.h"
#include "model/import/ifc/Metres.h"

namespace ZVSmartModel {

namespace {

[[noreturn]] void Refuse(const std::string& what, const std::string& why) {
    throw Error(Status::Usage, EscapeControls(what) + ' ' + why);
}

template <std::size_t count>
void CheckNumbers(const std::array<double, count>& numbers, const std::string& what) {
    if (std::all_of(numbers.begin(), numbers.end(), IsCoordinate)) return;
    Refuse(what, "has a coordinate that is no number or out of reach");
}

std::vector<ModelPoint> PointsOf(const std::vector<Point>& points, const std::string& what) {
    std::vector<ModelPoint> result;
    result.reserve(points.size());
    for (const Point& point : points) {
        CheckNumbers(point, what + ", point " + std::to_string(result.size()));
        result.push_back({point[0], point[1], point[2]});
    }
    return result;
}

ShapePart PartOf(const Triangles& surface, const std::string& what) {
    ShapePart part;
    if (surface.look) {
        part.colour = surface.look->colour;
        part.styleName = FromUtf8(surface.look->name);
    }
    ModelShell& shell = part.shells.emplace_back();
    shell.points = PointsOf(surface.points, what);
    shell.triangles = surface.triangles;
    for (std::size_t i = 0; i < shell.triangles.size(); ++i) {
        for (const std::uint32_t corner : shell.triangles[i]) {
            if (corner < shell.points.size()) continue;
            Refuse(what + ", triangle " + std::to_string(i),
                   "leads to point " + std::to_string(corner) + ", and there are " +
                       std::to_string(shell.points.size()));
        }
    }
    return part;
}

void CheckNumber(std::size_t number, std::size_t count, const char* of, const std::string& what) {
    if (number < count) return;
    Refuse(what, std::string("names ") + of + ' ' + std::to_string(number) + ", and there are " +
                     std::to_string(count));
}

/// The default name of the block library's GUID names says that there is none.
void CheckGuid(const std::string& guid, const std::string& what) {
    if (guid.empty() || guid == "none") Refuse(what, "has no GUID: \"" + guid + '"');
}

void CheckProperties(const std::vector<Property>& properties, const std::string& what) {
    for (const Property& property : properties) {
        if (property.name.empty()) Refuse(what, "has a property without a name");
        if (property.kind.empty() || property.kind.find(' ') != std::string::npos) {
            Refuse(what, "has the property " + EscapeControls(property.FullName()) +
                             ", whose kind is not one word");
        }
    }
}

bool Has(const std::vector<Property>& properties, const std::string& fullName) {
    return std::any_of(properties.begin(), properties.end(),
                       [&](const Property& each) { return each.FullName() == fullName; });
}

ModelMaterial MaterialOf(const Material& source, const std::string& what) {
    CheckProperties(source.properties, what + ", material " + source.name + ',');
    ModelMaterial material;
    material.name = FromUtf8(source.name);
    material.category = FromUtf8(source.category);
    if (source.thickness) {
        if (!(*source.thickness > 0) || !IsCoordinate(*source.thickness)) {
            Refuse(what + ", material " + source.name + ',', "has a thickness that is none");
        }
        if (!Has(source.properties, "LayerThickness")) {
            material.properties = PairsOf({ThicknessProperty(InMetres(*source.thickness, 1))});
        }
    }
    const ModelProperties others = PairsOf(source.properties);
    material.properties.insert(material.properties.end(), others.begin(), others.end());
    return material;
}

ModelProperties PropertiesOf(const NewElement& element) {
    std::vector<Property> properties = element.properties;
    if (!element.name.empty() && !Has(properties, "Element.Name")) {
        Property& name = *properties.emplace(properties.begin());
        name.set = "Element";
        name.name = "Name";
        name.value = element.name;
    }
    return PairsOf(properties);
}

}  // namespace

ModelStorey StoreyOf(const NewFloor& floor) {
    const std::string what = "floor " + floor.name;
    if (floor.name.empty()) Refuse("a floor", "has no name");
    CheckNumbers(std::array{floor.elevation, floor.height}, what);
    return {FromUtf8(floor.name), floor.elevation, floor.height};
}

ModelBuilding BuildingOf(const NewBuilding& building) {
    return {FromUtf8(building.guid), FromUtf8(building.name), FromUtf8(building.longName),
            FromUtf8(building.siteGuid), FromUtf8(building.siteName)};
}

ModelShape ShapeOf(const NewShape& source) {
    ModelShape shape;
    for (const Triangles& surface : source.surfaces) {
        shape.parts.push_back(
            PartOf(surface, "surface " + std::to_string(shape.parts.size()) + " of a shape"));
    }
    for (std::size_t i = 0; i < source.curves.size(); ++i) {
        const Polyline& curve = source.curves[i];
        const std::wstring role = FromUtf8(curve.role);
        auto& sets = shape.curves;
        auto set = std::find_if(sets.begin(), sets.end(),
                                [&role](const ModelCurves& each) { return each.name == role; });
        if (set == sets.end()) set = sets.insert(set, {role, {}, {}, {}, {}});
        set->polylines.push_back(
            {PointsOf(curve.points, "curve " + std::to_string(i) + " of a shape"), curve.closed});
    }
    return shape;
}

ModelElement ElementOf(const NewElement& source, std::size_t floors, std::size_t shapes) {
    const std::string what = "element " + source.guid;
    CheckGuid(source.guid, "an element");
    if (source.className.empty()) Refuse(what, "has no class");
    if (source.floor) CheckNumber(*source.floor, floors, "floor", what);
    CheckProperties(source.properties, what);
    ModelElement element;
    element.globalId = FromUtf8(source.guid);
    element.entityType = FromUtf8(source.className);
    element.typeName = FromUtf8(source.typeName);
    element.predefinedType = FromUtf8(source.predefinedType);
    element.storey = source.floor;
    for (const NewPlacement& placed : source.shapes) {
        CheckNumber(placed.shape, shapes, "shape", what);
        CheckNumbers(placed.toWorld, what + ", where it is placed,");
        element.shapes.push_back({placed.shape, WithoutNoise(placed.toWorld)});
    }
    for (const std::string& parent : source.parents) {
        CheckGuid(parent, what + ", in its parents,");
        element.belongsTo.push_back(FromUtf8(parent));
    }
    if (!source.group.empty()) CheckGuid(source.group, what + ", in its group,");
    element.group = FromUtf8(source.group);
    element.properties = PropertiesOf(source);
    for (const Material& material : source.materials) {
        element.materials.push_back(MaterialOf(material, what));
    }
    return element;
}

}  // namespace ZVSmartModel
