// Parametric faces, included geometries and plan outlines that the input chooses. What is shared
// must lie on the face that it is answered for, and what can be found must be found.

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <utility>
#include <vector>

#include "Choices.h"
#include "ZVIM/Config.h"
#include "placed_faces.h"

namespace {

using namespace support;
using ZVIM::GeometryPrimitiveResource::coordinate_transf;
using ZVIM::GeometryPrimitiveResource::CZVIMGeoModelConfig;

constexpr double tolerance = 0.001;

/// Mostly a handful of sizes, often with what is about the tolerance or far below it on top;
/// sometimes anything.
double Value(Choices& choices) {
    const u8 choice = choices.Byte();
    if (choice == 0xFF) return choices.Real();
    if (choice >= 0xF8) {
        const double limits[] = {
            0, 1e11, -1e300, std::numeric_limits<double>::infinity(), std::nan(""), 1e-5, 1e5};
        return limits[choice - 0xF8U];
    }
    const double offsets[] = {0, 0, 0, 1e-7, 1e-5, 1e-4, 0.0009, 0.0011};
    return (choice / 8 - 8) * 0.25 + offsets[choice % 8];
}

CZVIMPosition Point(Choices& choices) {
    const double x = Value(choices);
    const double y = Value(choices);
    return {x, y, Value(choices)};
}

CZVIMVector Vector(Choices& choices) {
    return Point(choices) - CZVIMPosition();
}

Points SomePoints(Choices& choices, unsigned int most) {
    Points points;
    for (unsigned int left = choices.Byte() % (most + 1); left != 0; --left)
        points.push_back(Point(choices));
    return points;
}

template <class Face>
void ChooseTurn(Face& face, Choices& choices) {
    face.center = Point(choices);
    const bool isFree = choices.Byte() % 4 == 0;
    const CZVIMTransf frame = coordinate_transf({}, Vector(choices), Vector(choices));
    const double radius = Value(choices);
    const auto along = [&](double x, double y, double z) {
        return CZVIMPosition(x, y, z).TransformBy(frame) - CZVIMPosition();
    };
    face.radiusVector = isFree ? Vector(choices) : along(radius, 0, 0);
    face.refVector = isFree ? Vector(choices) : along(0, 1, 0);
    face.axis = isFree ? Vector(choices) : along(0, 0, choices.Byte() % 2 == 0 ? 1 : -1);
    face.startAngle = Value(choices);
    face.endAngle = face.startAngle + Value(choices);
    face.startHeight = Value(choices);
    face.endHeight = Value(choices);
}

/// Of one saver: the faces' own points, and what they were answered.
struct Relations {
    /// True where a geometry was stored for the face.
    template <class Face>
    bool Ask(const Face& face, const Points& own) {
        SZVLGZvgGeoRelInclude rel{L"before", {}};
        if (!Relate(saver, face, rel)) {
            Require(rel.key == L"before");
            return false;
        }
        const bool isNew = keys.insert(rel.key).second;
        Require(!isNew || rel.key == L"mater_include_key_" + std::to_wstring(keys.size() - 1));
        placed.push_back({rel, own});
        return isNew;
    }
    /// What has a geometry is found again, whatever was stored meanwhile.
    template <class Face>
    void AskTwice(const Face& face, const Points& own) {
        Ask(face, own);
        Require(!Ask(face, own));
    }

    CZVLGBlockSaver& saver;
    std::set<std::wstring> keys = {};
    std::vector<PlacedFace> placed = {};
};

void AskRuled(Relations& relations, Choices& choices) {
    SZVLGParamRuledFace face{SomePoints(choices, 4), {}};
    for (std::size_t i = 0; i < face.firstColumn.size(); ++i)
        face.secondColumn.push_back(Point(choices));
    const bool isNew = relations.Ask(face, Rows(face));
    Require(!relations.Ask(face, Rows(face)));
    if (!isNew || !(LargestCoordinate(Rows(face)) < 1e3)) return;
    // So is the same shape in another place.
    const CZVIMTransf frame = coordinate_transf({7, -30, 50}, {1, 2, 3}, {0, 1, -4});
    for (Points* const column : {&face.firstColumn, &face.secondColumn})
        for (CZVIMPosition& point : *column) point.TransformBy(frame);
    Require(!relations.Ask(face, Rows(face)));
}

/// On both planes, whichever way the frame's Z runs: such a face may share what is elsewhere.
bool IsNearCaps(const SZVLGParamCylinderFace& face) {
    CZVIMVector up = face.radiusVector.CrossProduct(face.refVector);
    up.normalise();
    const double height = std::fabs(face.endHeight - face.startHeight);
    const Points& points = face.shell.GetPoints();
    return std::all_of(points.begin(), points.end(), [&](const CZVIMPosition& point) {
        const double z = std::fabs((point - face.center).DotProduct(up));
        return std::min(z, std::fabs(z - height)) < 2 * tolerance;
    });
}

void AskCylinder(Relations& relations, Choices& choices) {
    SZVLGParamCylinderFace face;
    ChooseTurn(face, choices);
    for (const CZVIMPosition& point : SomePoints(choices, 4)) face.shell.AddPt(point);
    if (choices.Byte() % 2 != 0) face.shell.AddFaceIndex({0, choices.Byte() % 4, 2});
    relations.AskTwice(face, IsNearCaps(face) ? Points() : face.shell.GetPoints());
}

void AskRevolved(Relations& relations, Choices& choices) {
    SZVLGParamRevolvedFace face;
    ChooseTurn(face, choices);
    face.profile = SomePoints(choices, 3);
    const double radius = face.radiusVector.len();
    if (radius > 1e6 && radius < 1e12) return;  // too many samples to ask for often
    relations.AskTwice(face, {});
}

/// Whatever is found is made of points that are there.
void FindOutline(Choices& choices) {
    SZVLGZvgGeo geo;
    Points ends;
    for (u8 edges = choices.Byte() % 8; edges != 0; --edges) {
        ends.push_back(Point(choices));
        ends.push_back(choices.Byte() % 4 != 0 ? ends[choices.Byte() % ends.size()]
                                               : Point(choices));
        const CZVIMPosition& start = ends[ends.size() - 2];
        if (choices.Byte() % 2 != 0)
            geo.lineSegments.push_back({start, ends.back()});
        else
            geo.boundArcs.push_back({{}, Vector(choices), start, ends.back(), Value(choices)});
    }
    if (choices.Byte() % 4 == 0) {
        geo.polylines.emplace_back();
        geo.polylines.back().SetClosedFlag(choices.Byte() % 2 != 0);
        for (const CZVIMPosition& point : SomePoints(choices, 4)) {
            geo.polylines.back().AddPoint(point);
            ends.push_back(point);
        }
    }
    CZVIMPolyline outline;
    const bool found = CZVLGBlockInfoDeal::GetOneCloseXOYPolyInZvgGeo(geo, outline);
    Require(found == outline.GetClosedFlag() && outline.CountOfPoint() <= ends.size());
    Require(!found || outline.CountOfPoint() >= 2);
    for (unsigned int i = 0; i < outline.CountOfPoint(); ++i) {
        const CZVIMPosition point = outline.GetPointAt(i);
        Require(point.GetZ() == 0 && std::isfinite(outline.GetBulgeAt(i)));
        Require(std::any_of(ends.begin(), ends.end(), [&point](const CZVIMPosition& end) {
            return end.GetX() == point.GetX() && end.GetY() == point.GetY();
        }));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    Choices choices(data, size);
    const double tolerances[] = {1e-6, 1e-6, 0.01, 1e-9};
    CZVIMGeoModelConfig::setabs(tolerances[choices.Byte() % 4]);
    std::vector<PlacedFace> placed;
    const Bytes file = Saved(4, 0, [&](CZVLGBlockSaver& saver) {
        Relations relations{saver};
        for (int calls = 0; choices.AnyLeft() && calls < 60; ++calls) {
            const u8 call = choices.Byte() % 8;
            if (call < 2) AskRuled(relations, choices);
            if (call == 2 || call == 3) AskCylinder(relations, choices);
            if (call == 4) AskRevolved(relations, choices);
            if (call == 5) Require(relations.keys.insert(saver.CreateIncludeBlockGeo({})).second);
            if (call > 5) FindOutline(choices);
        }
        placed = std::move(relations.placed);
    });
    Opened opened(file);
    Require(opened.ok && WhatIsOff(opened.reader, placed).empty());
    return 0;
}
