#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ZVSmartModel/Values.h"
#include "model/element/PropertyKinds.h"
#include "model/import/ImportFindings.h"
#include "model/import/ModelCurves.h"
#include "model/import/ModelPoint.h"

namespace ZVSmartModel {

// A building model as the importers hand it on. Lengths are metres, Z is up.

/// From parts of 0 to 1; what lies outside is cut.
Rgba MakeColour(double red, double green, double blue, double alpha);

/// Sets to zero what is meant as zero: turned axes leave numbers such as 6e-17.
Transform WithoutNoise(const Transform& placement);

/// Applies `b` first.
Transform Combined(const Transform& a, const Transform& b);

/// A connected surface of triangles, counter-clockwise as seen from outside.
struct ModelShell {
    std::vector<ModelPoint> points;
    std::vector<std::array<std::uint32_t, 3>> triangles;  ///< indices into `points`
};

/// The shells of a shape that look the same.
struct ShapePart {
    std::optional<Rgba> colour;
    std::wstring styleName;  ///< of the colour; may be empty
    std::vector<ModelShell> shells;
};

/// A body, or the curves beside it, in local coordinates, which elements place.
struct ModelShape {
    std::vector<ShapePart> parts;
    std::vector<ModelCurves> curves;
    std::size_t unusable = 0;  ///< triangles and curves left out: their numbers are no coordinates
};

struct PlacedShape {
    std::size_t shape = 0;  ///< index into Model::shapes
    Transform placement = identityTransform;
};

/// In the order of the source, in the form in which they are stored.
using ModelProperties = PropertyPairs;

/// The property of a material that it is a layer, so many metres thick.
StoredProperty ThicknessProperty(double metres);

struct ModelMaterial {
    std::wstring name;
    std::wstring category;
    ModelProperties properties;
};

struct ModelStorey {
    std::wstring name;     ///< unique within the model
    double elevation = 0;  ///< metres
    double height = 0;     ///< metres up to the next storey; 0 for the topmost
};

struct ModelBuilding {
    std::wstring globalId, name, longName;
    std::wstring siteGlobalId, siteName;

    friend bool operator==(const ModelBuilding&, const ModelBuilding&) = default;
};

struct ModelElement {
    std::wstring globalId;
    std::wstring entityType;  ///< such as IfcWall
    std::wstring typeName;
    std::wstring predefinedType;
    std::optional<std::size_t> storey;    ///< index into Model::storeys
    std::optional<std::size_t> building;  ///< index into Model::buildings
    std::vector<std::wstring> belongsTo;  ///< GlobalIds of the host and of the aggregates
    std::wstring group;                   ///< GlobalId of the first group it is in; or empty
    ModelProperties properties;           ///< names as "set.property"
    std::vector<ModelMaterial> materials;
    std::vector<PlacedShape> shapes;
};

struct Model {
    std::wstring schema;               ///< of the source, such as IFC2X3
    std::vector<ModelStorey> storeys;  ///< by elevation
    std::vector<ModelBuilding> buildings;
    std::vector<ModelShape> shapes;
    std::vector<ModelElement> elements;  ///< in the order of the source
    ImportFindings findings;             ///< what the importer has to tell
};

}  // namespace ZVSmartModel
