#include "bench/Building.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

namespace bench {

using ZVSmartZvg::CZVIMPosition;
using ZVSmartZvg::CZVIMVector;
using ZVSmartZvg::PropertyList;
using ZVSmartZvg::SZVLGZvgCompGeoRef;
using ZVSmartZvg::SZVLGZvgDisplayAttr;
using ZVSmartZvg::SZVLGZvgGeoRenderMesh;
using ZVSmartZvg::u16;
using ZVSmartZvg::u8;

namespace {

constexpr u64 seed = 0x5EED'B01D'1234'5678;

/// SplitMix64 (Steele, Lea, Flood: Fast splittable pseudorandom number generators, 2014).
class Random {
  public:
    Random(u64 stream, u64 number) : state(seed + stream * 0x1000'0000'0000 + number * 977) {}

    u64 Next() {
        state += 0x9E37'79B9'7F4A'7C15;
        u64 z = state;
        z = (z ^ (z >> 30)) * 0xBF58'476D'1CE4'E5B9;
        z = (z ^ (z >> 27)) * 0x94D0'49BB'1331'11EB;
        return z ^ (z >> 31);
    }
    u32 Below(u32 bound) { return static_cast<u32>(Next() % bound); }
    double Between(double low, double high) {
        return low + (high - low) * static_cast<double>(Next() >> 11) * 0x1p-53;
    }
    template <std::size_t n>
    const wchar_t* OneOf(const std::array<const wchar_t*, n>& texts) {
        return texts[Below(n)];
    }

  private:
    u64 state;
};

struct Point {
    double x, y, z;
};
using Ring = std::vector<Point>;

/// From the storey's own axes to the world: turned by the plot's angle, at the plot's place.
CZVIMPosition InWorld(const Point& p) {
    const double angle = 17.3 / 180 * std::numbers::pi;
    return {2'601'234.567 + p.x * std::cos(angle) - p.y * std::sin(angle),
            1'199'876.543 + p.x * std::sin(angle) + p.y * std::cos(angle), 431'250.0 + p.z};
}

CZVIMVector NormalOf(const CZVIMPosition& a, const CZVIMPosition& b, const CZVIMPosition& c) {
    CZVIMVector normal = (b - a).CrossProduct(c - a);
    normal.normalise();
    return normal;
}

/// Gathers triangles, welded (points shared, normals averaged) or split (three points each).
class MeshBuilder {
  public:
    explicit MeshBuilder(bool welded) : welded(welded) {}

    /// Joins the rings, which have equally many points, into a closed body.
    void AddSweep(const std::vector<Ring>& rings) {
        const u32 first = static_cast<u32>(points.size());
        const u32 n = static_cast<u32>(rings.front().size());
        for (const Ring& ring : rings)
            for (const Point& point : ring) points.push_back(InWorld(point));
        const u32 last = first + n * static_cast<u32>(rings.size() - 1);
        for (u32 ring = first; ring < last; ring += n) {
            for (u32 i = 0; i < n; ++i) {
                const u32 next = (i + 1) % n;
                AddTriangle(ring + i, ring + next, ring + n + next);
                AddTriangle(ring + i, ring + n + next, ring + n + i);
            }
        }
        for (u32 i = 1; i + 1 < n; ++i) {
            AddTriangle(first, first + i + 1, first + i);
            AddTriangle(last, last + i, last + i + 1);
        }
    }

    SZVLGZvgGeo Finish() {
        SZVLGZvgGeo geo;
        SZVLGZvgGeoRenderMesh& mesh = geo.renderMeshes.emplace_back();
        if (welded) {
            mesh.points = points;
            mesh.pointIndices = indices;
            mesh.vectors = AverageNormals();
            return geo;
        }
        for (std::size_t i = 0; i < indices.size(); i += 3) {
            const CZVIMPosition* const corner[] = {&points[indices[i]], &points[indices[i + 1]],
                                                   &points[indices[i + 2]]};
            const CZVIMVector normal = NormalOf(*corner[0], *corner[1], *corner[2]);
            for (const CZVIMPosition* point : corner) {
                mesh.pointIndices.push_back(static_cast<u32>(mesh.points.size()));
                mesh.points.push_back(*point);
                mesh.vectors.push_back(normal);
            }
        }
        return geo;
    }

  private:
    void AddTriangle(u32 a, u32 b, u32 c) { indices.insert(indices.end(), {a, b, c}); }

    std::vector<CZVIMVector> AverageNormals() const {
        std::vector<CZVIMVector> normals(points.size());
        for (std::size_t i = 0; i < indices.size(); i += 3) {
            const CZVIMVector normal =
                NormalOf(points[indices[i]], points[indices[i + 1]], points[indices[i + 2]]);
            for (std::size_t k = i; k < i + 3; ++k)
                normals[indices[k]] = normals[indices[k]] + normal;
        }
        for (CZVIMVector& normal : normals) normal.normalise();
        return normals;
    }

    bool welded;
    std::vector<CZVIMPosition> points;
    std::vector<u32> indices;
};

std::vector<Ring> Box(const Point& low, const Point& high) {
    const auto ring = [&](double z) {
        return Ring{{low.x, low.y, z}, {high.x, low.y, z}, {high.x, high.y, z}, {low.x, high.y, z}};
    };
    return {ring(low.z), ring(high.z)};
}

/// A wall with a door: its elevation, swept through its thickness.
void AddWall(MeshBuilder& mesh, Random& random, const Point& at) {
    const double length = random.Between(2400, 9600), height = random.Between(2500, 3200);
    const double door = random.Between(300, length - 1400);
    const double thickness = 115 + 10.0 * random.Below(26);
    const auto elevation = [&](double y) {
        return Ring{{at.x, y, at.z},
                    {at.x + door, y, at.z},
                    {at.x + door, y, at.z + 2135},
                    {at.x + door + 1010, y, at.z + 2135},
                    {at.x + door + 1010, y, at.z},
                    {at.x + length, y, at.z},
                    {at.x + length, y, at.z + height},
                    {at.x, y, at.z + height}};
    };
    mesh.AddSweep({elevation(at.y), elevation(at.y + thickness)});
}

/// A slab with a free outline.
void AddSlab(MeshBuilder& mesh, Random& random, const Point& at) {
    const u32 corners = 8 + random.Below(24);
    const double radius = random.Between(3000, 12000), thickness = 180 + 20.0 * random.Below(7);
    Ring bottom;
    for (u32 i = 0; i < corners; ++i) {
        const double angle = 2 * std::numbers::pi * i / corners;
        const double reach = radius * random.Between(0.7, 1);
        bottom.push_back({at.x + reach * std::cos(angle), at.y + reach * std::sin(angle), at.z});
    }
    Ring top = bottom;
    for (Point& point : top) point.z += thickness;
    mesh.AddSweep({bottom, top});
}

/// A window: a frame and two casements of four bars each, and their panes.
void AddWindow(MeshBuilder& mesh, Random& random, const Point& at) {
    const double width = 885 + 125.0 * random.Below(9), height = 1010 + 125.0 * random.Below(6);
    const double bar = random.Between(55, 85), depth = random.Between(68, 92);
    const auto frame = [&](double x0, double z0, double x1, double z1, double y) {
        mesh.AddSweep(Box({x0, y, z0}, {x0 + bar, y + depth, z1}));
        mesh.AddSweep(Box({x1 - bar, y, z0}, {x1, y + depth, z1}));
        mesh.AddSweep(Box({x0 + bar, y, z0}, {x1 - bar, y + depth, z0 + bar}));
        mesh.AddSweep(Box({x0 + bar, y, z1 - bar}, {x1 - bar, y + depth, z1}));
    };
    const double x1 = at.x + width, z1 = at.z + height, middle = at.x + width / 2;
    frame(at.x, at.z, x1, z1, at.y);
    for (const double left : {at.x + bar, middle}) {
        frame(left, at.z + bar, left + width / 2 - bar, z1 - bar, at.y + 14);
        mesh.AddSweep(Box({left + bar, at.y + 40, at.z + 2 * bar},
                          {left + width / 2 - 2 * bar, at.y + 64, z1 - 2 * bar}));
    }
}

/// A pipe that runs on, turns a quarter circle in plan and runs on.
void AddPipe(MeshBuilder& mesh, Random& random, const Point& at) {
    const u32 sides = random.Below(2) == 0 ? 12 : 16;
    const double radius = 5 * (3 + random.Below(20)), bend = 3 * radius;
    const auto ring = [&](double x, double y, double heading) {
        Ring points;
        for (u32 i = 0; i < sides; ++i) {
            const double angle = 2 * std::numbers::pi * i / sides;
            const double across = radius * std::cos(angle);
            points.push_back({x - across * std::sin(heading), y + across * std::cos(heading),
                              at.z + radius * std::sin(angle)});
        }
        return points;
    };
    const double run = random.Between(500, 4000);
    std::vector<Ring> rings = {ring(at.x, at.y, 0)};
    constexpr u32 steps = 4;
    for (u32 i = 0; i <= steps; ++i) {
        const double heading = std::numbers::pi / 2 * i / steps;
        rings.push_back(ring(at.x + run + bend * std::sin(heading),
                             at.y + bend * (1 - std::cos(heading)), heading));
    }
    rings.push_back(ring(at.x + run + bend, at.y + bend + run / 2, std::numbers::pi / 2));
    mesh.AddSweep(rings);
}

struct Kind {
    const wchar_t* entity;
    const wchar_t* set;
    std::array<const wchar_t*, 3> types;
    std::array<const wchar_t*, 3> materials;
    std::array<u8, 3> colour;
    void (*addShape)(MeshBuilder&, Random&, const Point&);
};

constexpr std::array<Kind, 4> kinds = {{
    {L"IfcWallStandardCase",
     L"Pset_WallCommon.",
     {L"Basic Wall:Interior - 138mm Partition", L"Basic Wall:Exterior - Brick on Block 415mm",
      L"Basic Wall:Party Wall - CMU 300mm"},
     {L"Gypsum board, metal stud 90 mm", L"Brick, insulation, concrete block", L"Masonry, plaster"},
     {0xD8, 0xD2, 0xC4},
     AddWall},
    {L"IfcSlab",
     L"Pset_SlabCommon.",
     {L"Floor:Concrete 200mm", L"Floor:Hollow core 265mm", L"Floor:Landing 180mm"},
     {L"Concrete C30/37, in situ", L"Concrete C45/55, precast", L"Concrete C25/30, screed"},
     {0xA0, 0xA0, 0x9C},
     AddSlab},
    {L"IfcWindow",
     L"Pset_WindowCommon.",
     {L"M_Casement:1135 x 1385", L"M_Fixed:885 x 1010", L"M_Tilt and turn:1385 x 1635"},
     {L"Spruce, three panes", L"Aluminium, two panes", L"Oak, two panes"},
     {0x8C, 0xB4, 0xD2},
     AddWindow},
    {L"IfcFlowSegment",
     L"Pset_PipeSegmentTypeCommon.",
     {L"Pipe Types:Domestic Hot Water", L"Pipe Types:Waste Water", L"Pipe Types:Sprinkler - Wet"},
     {L"Copper EN 1057", L"PVC-U EN 1401", L"Steel EN 10255"},
     {0xB8, 0x73, 0x33},
     AddPipe},
}};

/// `value` with `digits` digits behind the point.
std::wstring Number(double value, int digits) {
    wchar_t text[64];
    std::swprintf(text, 64, L"%.*f", digits, value);
    return text;
}

std::wstring Identifier(Random& random) {
    constexpr const wchar_t* digits =
        L"0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_$";
    std::wstring text(22, L'0');
    for (wchar_t& c : text) c = digits[random.Below(64)];
    text[0] = digits[random.Below(4)];
    return text;
}

PropertyList Properties(const Kind& kind, Random& random, u32 i) {
    constexpr std::array<const wchar_t*, 4> fire = {L"REI 30", L"REI 60", L"REI 90", L"none"};
    constexpr std::array<const wchar_t*, 3> phases = {L"New Construction", L"Existing", L"Phase 2"};
    constexpr std::array<const wchar_t*, 2> logical = {L"true", L"false"};
    const std::wstring set = kind.set;
    const double length = random.Between(300, 9600), height = random.Between(180, 3200);
    return {
        {set + L"Reference", random.OneOf(kind.types)},
        {set + L"LoadBearing", random.OneOf(logical)},
        {set + L"IsExternal", random.OneOf(logical)},
        {set + L"FireRating", random.OneOf(fire)},
        {set + L"ThermalTransmittance", Number(random.Between(0.12, 2.4), 3)},
        {L"BaseQuantities.Length", Number(length, 3)},
        {L"BaseQuantities.Height", Number(height, 3)},
        {L"BaseQuantities.GrossArea", Number(length * height * 1e-6, 6)},
        {L"PSet_Revit_Phasing.Phase Created", random.OneOf(phases)},
        {L"PSet_Revit_Identity Data.Mark", std::to_wstring(100'000 + i)},
        {L"PSet_Revit_Materials and Finishes.Structural Material", random.OneOf(kind.materials)},
        {L"Tag", std::to_wstring(random.Below(900'000) + 100'000)}};
}

}  // namespace

u32 Building::ShapeCount() const {
    const u32 rest = std::min(componentCount % componentsPerFloor, shapesPerFloor);
    return componentCount / componentsPerFloor * shapesPerFloor + rest;
}

u32 Building::ShapeOf(u32 i) const {
    return i / componentsPerFloor * shapesPerFloor + i % shapesPerFloor;
}

SZVLGZvgComp Building::Component(u32 i) const {
    Random random(1, i);
    const u32 floor = i / componentsPerFloor, shape = ShapeOf(i);
    const Kind& kind = kinds[shape % kinds.size()];
    SZVLGZvgComp comp;
    comp.classLevel1Name = L"Level " + std::to_wstring(floor);
    comp.classLevel1Id = floor;
    comp.ownerGuidName.name = kind.materials[shape % 3];
    comp.ownerTextA = L"Architecture";
    comp.classLevel2Name = L"Building";
    comp.classLevel3Name = kind.entity;
    comp.classLevel3Id = shape % kinds.size();
    comp.classLevel4Name = kind.types[shape % 3];
    comp.classLevel4Id = shape % 3;
    comp.classLevel2bName = kind.materials[shape % 3];
    for (SZVLGZvgDisplayAttr* attr :
         {&comp.classLevel4Attr, &comp.classLevel2bAttr, &comp.compAttr}) {
        attr->flags = 0x10;
        attr->red = kind.colour[0];
        attr->green = kind.colour[1];
        attr->blue = kind.colour[2];
    }
    comp.compGuidName.name = Identifier(random);
    comp.compProperties = Properties(kind, random, i);
    SZVLGZvgCompGeoRef& reference = comp.geoRefs.emplace_back();
    reference.geoIdentification = ShapeKey(shape);
    reference.geoIds.emplace_back().guidName.name = reference.geoIdentification;
    return comp;
}

std::wstring Building::ShapeKey(u32 shape) {
    Random random(2, shape);
    std::wstring key(32, L'0');
    for (wchar_t& c : key) c = L"0123456789abcdef"[random.Below(16)];
    return key;
}

SZVLGZvgGeo Building::Shape(u32 shape) {
    Random random(3, shape);
    const Kind& kind = kinds[shape % kinds.size()];
    const Point at = {random.Between(0, 80'000), random.Between(0, 40'000),
                      3200.0 * (shape / shapesPerFloor % 100)};
    MeshBuilder mesh(shape / kinds.size() % 2 == 0);
    kind.addShape(mesh, random, at);
    return mesh.Finish();
}

SZVLGZvgGeo Building::Pin(u32 number) {
    Random random(5, number);
    const Point low = {random.Between(0, 80'000), random.Between(0, 40'000),
                       random.Between(0, 9'000)};
    MeshBuilder mesh(true);
    mesh.AddSweep(Box(low, {low.x + 20, low.y + 20, low.z + 60}));
    return mesh.Finish();
}

SZVLGZvgGeo Building::Terrain(u32 pointCount) {
    Random random(4, pointCount);
    const u32 side = static_cast<u32>(std::sqrt(pointCount));
    SZVLGZvgGeo geo;
    SZVLGZvgGeoRenderMesh& mesh = geo.renderMeshes.emplace_back();
    for (u32 row = 0; row < side; ++row) {
        for (u32 column = 0; column < side; ++column) {
            const Point at = {500.0 * column, 500.0 * row, random.Between(0, 300)};
            mesh.points.push_back(InWorld(at));
            CZVIMVector normal(random.Between(-0.2, 0.2), random.Between(-0.2, 0.2), 1);
            normal.normalise();
            mesh.vectors.push_back(normal);
            if (row + 1 == side || column + 1 == side) continue;
            const u32 a = row * side + column;
            for (const u32 index : {a, a + 1, a + side + 1, a, a + side + 1, a + side})
                mesh.pointIndices.push_back(index);
        }
    }
    return geo;
}

}  // namespace bench
