#include "hostile_files.h"

#include <cmath>
#include <stdexcept>

namespace hostile {

namespace {

using namespace support;

using Fill = std::function<void(CZVLGBlockSaver&)>;

Bytes Saved(const Fill& fill, unsigned int geosPerBlock = 0) {
    return support::Saved(4, geosPerBlock, [&](CZVLGBlockSaver& saver) {
        saver.SetEncodeFastMod(true);
        fill(saver);
    });
}

SZVLGZvgComp RefersTo(const std::wstring& geo, u32 number = 0) {
    SZVLGZvgComp comp = Comp(SerialKey(std::to_wstring(number)));
    comp.geoRefs.resize(1);
    comp.geoRefs[0].geoIdentification = geo;
    return comp;
}

/// One component whose body is `geo`.
Bytes BodyFile(const SZVLGZvgGeo& geo) {
    return Saved([&](CZVLGBlockSaver& saver) {
        saver.AddIdentificationGeo(L"body", geo);
        saver.AddComp(RefersTo(L"body"));
    });
}

CZVIMTransf Moved(double x, double y, double z) {
    CZVIMTransf transf;
    const double by[] = {x, y, z};
    for (int row = 0; row < 3; ++row) transf.SetAt(row, 3, by[row]);
    return transf;
}

CZVIMTransf Tilted() {
    CZVIMTransf transf;
    transf.SetAt(0, 2, 0.5);
    return transf;
}

SZVLGZvgGeo Places(const std::wstring& name, std::size_t times,
                   const CZVIMTransf& transf = CZVIMTransf()) {
    SZVLGZvgGeo geo;
    geo.namedTransfs.assign(times, {name, transf});
    return geo;
}

/// One component that places `geo` so many times.
Bytes PlacedFile(const SZVLGZvgGeo& geo, std::size_t times,
                 const CZVIMTransf& transf = CZVIMTransf()) {
    return Saved([&](CZVLGBlockSaver& saver) {
        saver.AddIdentificationGeo(L"geo", geo);
        saver.AddIdentificationGeo(L"places", Places(L"geo", times, transf));
        saver.AddComp(RefersTo(L"places"));
    });
}

SZVLGZvgGeo Triangles(const std::vector<CZVIMPosition>& points) {
    SZVLGZvgGeo geo;
    SZVLGZvgGeoRenderMesh& mesh = geo.renderMeshes.emplace_back();
    mesh.points = points;
    for (u32 i = 0; i < points.size(); ++i) mesh.pointIndices.push_back(i);
    return geo;
}

SZVLGZvgGeo Triangle() {
    return Triangles({{0, 0, 0}, {4, 0, 0}, {0, 3, 2}});
}

/// Triangles across the whole of a cube, each turned a little further.
std::vector<CZVIMPosition> Crossing(int count) {
    std::vector<CZVIMPosition> points;
    for (int i = 0; i < count; ++i) {
        const double a = 0.001 * i;
        points.insert(points.end(), {{std::cos(a), std::sin(a), std::sin(3 * a)},
                                     {-std::sin(a), std::cos(2 * a), -std::cos(a)},
                                     {-std::cos(2 * a), -std::sin(a), std::cos(5 * a)}});
    }
    return points;
}

/// A comb: every other corner blocks the ears of its neighbours.
SZVLGZvgGeo Polygons(int corners, int faces) {
    CZVIMShell shell;
    std::vector<int> face;
    for (int i = 0; i < corners; ++i) {
        const double angle = 6.283 * i / corners;
        const double radius = i % 2 == 0 ? 10 : 9.99 - 0.001 * i;
        shell.AddPt({radius * std::cos(angle), radius * std::sin(angle), 0});
        face.push_back(i);
    }
    for (int i = 0; i < faces; ++i) shell.AddFaceIndex(face);
    SZVLGZvgGeo geo;
    geo.shells = {shell};
    return geo;
}

/// The grid of a hill whose cells all are cut by a plan.
SZVLGZvgGeo Hill(int side) {
    SZVLGZvgGeo geo;
    CZVIMMesh& mesh = geo.meshes.emplace_back();
    mesh.SetRow(side);
    mesh.SetColumn(side);
    for (int i = 0; i < side * side; ++i) {
        mesh.AddPt({0.01 * (i % side), 0.01 * (i / side), 1.2 + (i % 2 == 0 ? 1 : -1)});
    }
    return geo;
}

SZVLGZvgGeo Nested(int width, int depth, const SZVLGZvgDisplayAttr& attr = {}) {
    SZVLGZvgGeo geo;
    for (int level = 0; level < depth; ++level) {
        SZVLGZvgGeo outer;
        outer.subGeos.resize(static_cast<std::size_t>(width));
        for (SZVLGZvgSubGeo& sub : outer.subGeos) sub.attr = attr;
        outer.subGeos[0].geo = std::move(geo);
        geo = std::move(outer);
    }
    return geo;
}

SZVLGZvgGeo Blob(u32 bytes) {
    SZVLGZvgGeo geo;
    geo.blobs = {SomeBlob(bytes)};
    return geo;
}

/// A section in which each record is the same one.
Bytes Repeated(const Bytes& record, u32 times) {
    const u32 size = static_cast<u32>(13 + record.size());
    Bytes section =
        Bytes{0x80} + BigEndian(size + 4 * times) + BigEndian(times) + BigEndian(size) + record;
    for (u32 i = 0; i < times; ++i) PutU32(section, 13);
    return section;
}

/// A saved file with its first geometry block and its first floor named so many times.
Bytes Multiplied(const Bytes& file, u32 blockTimes, u32 floorTimes) {
    constexpr std::size_t offsetAt = 22;
    const std::size_t floorsAt = NumberAt(file, offsetAt);
    const Table blocks(file, offsetAt + 4);
    const Table floors(file, floorsAt);
    const Bytes geoSection = blockTimes == 1 ? Slice(file, offsetAt + 4, floorsAt)
                                             : Repeated(blocks.Record(file, 0), blockTimes);
    const Bytes floorSection = floorTimes == 1 ? Slice(file, floorsAt, floors.end)
                                               : Repeated(floors.Record(file, 0), floorTimes);
    return Slice(file, 0, offsetAt) +
           BigEndian(static_cast<u32>(offsetAt + 4 + geoSection.size())) + geoSection +
           floorSection + Slice(file, floors.end, file.size());
}

/// Many identifications that lead to one record, which places them all.
Bytes IdentificationsFile(u32 count) {
    SZVLGZvgGeo places = Triangle();
    std::vector<std::wstring> names;
    for (u32 i = 0; i < count; ++i) names.push_back(L"n" + std::to_wstring(count + i));
    for (u32 i = 0; i < count; i += 10) places.namedTransfs.push_back({names[i], Shifted()});
    Parts parts = PartsOf(Saved([&](CZVLGBlockSaver& saver) {
        saver.AddIdentificationGeo(names[0], places);
        for (u32 i = 0; i < 100; ++i) saver.AddComp(RefersTo(names[i * (count / 100)], i));
    }));
    const Table classes(parts.index.content, 0);
    Bytes index = Slice(parts.index.content, 0, classes.end) + BigEndian(count);
    for (const std::wstring& name : names) {
        PutU32(index, static_cast<u32>(name.size()));
        for (const wchar_t unit : name) {
            index.insert(index.end(), {0, static_cast<u8>(unit)});
        }
        index = std::move(index) + BigEndian(0) + BigEndian(0);
    }
    parts.index = {index, {}};
    return PutTogether(parts);
}

Bytes ComponentsFile(u32 count, const std::function<void(SZVLGZvgComp&)>& change) {
    return Saved([&](CZVLGBlockSaver& saver) {
        for (u32 i = 0; i < count; ++i) {
            SZVLGZvgComp comp = Comp(SerialKey(std::to_wstring(i)));
            comp.classLevel2Name = L"Wall";
            change(comp);
            saver.AddComp(comp);
        }
    });
}

/// Each level places the next one ten times.
Bytes ChainFile(int levels) {
    return Saved([&](CZVLGBlockSaver& saver) {
        for (int i = 0; i < levels; ++i) {
            saver.AddIdentificationGeo(std::to_wstring(i), Places(std::to_wstring(i + 1), 10));
        }
        saver.AddIdentificationGeo(std::to_wstring(levels), Triangle());
        saver.AddComp(RefersTo(L"0"));
    });
}

SZVLGZvgGeo Segments(int count) {
    SZVLGZvgGeo geo;
    for (int i = 0; i < count; ++i) {
        geo.lineSegments.emplace_back(CZVIMPosition(i, 0, 0), CZVIMPosition(i + 1, i % 2, 0));
    }
    return geo;
}

SZVLGZvgGeo Circles(int count) {
    SZVLGZvgGeo geo;
    for (int i = 0; i < count; ++i) {
        geo.circles.push_back({CZVIMPosition(i, 0, 0), CZVIMVector(0, 0, 1), 2});
    }
    return geo;
}

SZVLGZvgGeo Glass(SZVLGZvgGeo geo) {
    SZVLGZvgGeo outer;
    SZVLGZvgSubGeo& sub = outer.subGeos.emplace_back();
    sub.attr.flags = 0x10;
    sub.attr.alpha = 0x40;
    sub.geo = std::move(geo);
    return outer;
}

SZVLGZvgDisplayAttr Styled(std::size_t nameLength) {
    SZVLGZvgDisplayAttr attr;
    attr.flags = 0x80;
    attr.styleName.assign(nameLength, L's');
    return attr;
}

Bytes RowsFile(u32 components, std::size_t rows) {
    return ComponentsFile(components, [&](SZVLGZvgComp& comp) {
        comp.geoRefs.resize(1);
        comp.geoRefs[0].geoIds.assign(rows, {SerialKey(L"row"), std::wstring(300, L'a'), L""});
    });
}

Bytes PropertiesFile(u32 components, std::size_t properties) {
    const PropertyList list(properties, {L"name", L"value"});
    return ComponentsFile(components, [&](SZVLGZvgComp& comp) { comp.compProperties = list; });
}

Bytes MaterialsFile(u32 count) {
    return ComponentsFile(1, [&](SZVLGZvgComp& comp) {
        comp.geoRefs.resize(1);
        for (u32 i = 0; i < count; ++i) comp.geoRefs[0].materials[i].textA = L"stone";
    });
}

Bytes CoincidentTriangles(std::size_t count) {
    SZVLGZvgGeo geo = Triangle();
    const std::vector<u32> once = geo.renderMeshes[0].pointIndices;
    std::vector<u32>& all = geo.renderMeshes[0].pointIndices;
    while (all.size() < 3 * count) all.insert(all.end(), once.begin(), once.end());
    return BodyFile(geo);
}

/// As many shapes as crossing triangles, each with a box that all rays meet.
Bytes CrossingShapes(u32 count) {
    const std::vector<CZVIMPosition> points = Crossing(static_cast<int>(count));
    return Saved([&](CZVLGBlockSaver& saver) {
        for (u32 i = 0; i < count; ++i) {
            const auto first = points.begin() + 3 * i;
            saver.AddIdentificationGeo(std::to_wstring(i), Triangles({first, first + 3}));
            saver.AddComp(RefersTo(std::to_wstring(i), i));
        }
    });
}

}  // namespace

const std::vector<HostileFile>& HostileFiles() {
    static const std::vector<HostileFile> files = {
        {"rows", [] { return RowsFile(60, 20000); }},
        {"many_rows", [] { return RowsFile(3, 50000); }},
        {"long_class",
         [] {
             const std::wstring name(300000, L'c');
             return ComponentsFile(1400, [&](SZVLGZvgComp& comp) { comp.classLevel3Name = name; });
         }},
        {"properties", [] { return PropertiesFile(1, 400000); }},
        {"many_properties", [] { return PropertiesFile(100, 8000); }},
        {"materials", [] { return MaterialsFile(300000); }},
        {"floors", [] { return Multiplied(ComponentsFile(20, [](SZVLGZvgComp&) {}), 1, 40000); }},
        {"long_floors",
         [] {
             const std::wstring name(20000, L'f');
             const Bytes file =
                 ComponentsFile(2, [&](SZVLGZvgComp& comp) { comp.classLevel1Name = name; });
             return Multiplied(file, 1, 20000);
         }},
        {"geo_blocks", [] { return Multiplied(BodyFile(Blob(4 << 20)), 50000, 1); }},
        {"floor_blocks",
         [] {
             const PropertyList list(100000, {L"name", L"value"});
             const Bytes file =
                 ComponentsFile(1, [&](SZVLGZvgComp& comp) { comp.compProperties = list; });
             return Multiplied(file, 1, 5000);
         }},
        {"large_block", [] { return BodyFile(Blob(64 << 20)); }},
        {"polygons_1000", [] { return BodyFile(Polygons(1000, 5000)); }},
        {"polygons_300", [] { return BodyFile(Polygons(300, 20000)); }},
        {"polygons_placed", [] { return PlacedFile(Polygons(900, 50), 100); }},
        {"placed", [] { return PlacedFile(Triangle(), 12000); }},
        {"placed_often", [] { return PlacedFile(Triangle(), 200000); }},
        {"placed_hill", [] { return PlacedFile(Hill(300), 2000); }},
        {"placed_segments", [] { return PlacedFile(Segments(20000), 2000); }},
        {"placed_circles", [] { return PlacedFile(Circles(5000), 1000, Tilted()); }},
        {"chain", [] { return ChainFile(14); }},
        {"identifications", [] { return IdentificationsFile(20000); }},
        {"nested_wide", [] { return BodyFile(Nested(40000, 1)); }},
        {"nested_deep", [] { return BodyFile(Nested(1, 200000)); }},
        {"nested_styles", [] { return BodyFile(Nested(3000, 1, Styled(5000))); }},
        {"transforms", [] { return BodyFile(Places(L"none", 250000)); }},
        {"coincident", [] { return CoincidentTriangles(1000000); }},
        {"coincident_placed", [] { return PlacedFile(Triangle(), 40000, Moved(1, 2, 3)); }},
        {"crossing", [] { return BodyFile(Triangles(Crossing(4000))); }},
        {"crossing_glass", [] { return BodyFile(Glass(Triangles(Crossing(4000)))); }},
        {"crossing_shapes", [] { return CrossingShapes(5000); }},
    };
    return files;
}

Bytes HostileFileNamed(const std::string& name) {
    for (const HostileFile& file : HostileFiles()) {
        if (file.name == name) return file.make();
    }
    throw std::logic_error("no hostile file " + name);
}

}  // namespace hostile
