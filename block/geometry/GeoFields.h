#pragma once

#include <span>
#include <type_traits>
#include <vector>

#include "ZVSmartZvg/Geo.h"
#include "layout/DisplayAttrFields.h"
#include "stream/FieldReader.h"
#include "stream/FieldWriter.h"
#include "stream/RecordInStream.h"

// A geometry record:
//   u16  flags, a bit per list that is not empty (below)
//   for each of them, in ascending order of its bit: a u32 count and the elements
//
//   0x0002 blobs           3 texts; u32 dataSize; version 4 on: versioned transform; the bytes
//   0x0004 visualShells    versioned            0x0100 shells          plain
//   0x0008 renderMeshes    below                0x0200 meshes          plain
//   0x0010 lineSegments    versioned            0x0400 polyFaceMeshes  versioned
//   0x0020 boundArcs       versioned            0x0800 namedTransfs    text; versioned transform
//   0x0040 polylines       versioned            0x1000 pointLists      positions; 2 × 8 bytes
//   0x0080 circles         versioned            0x4000 namedTransfs2   as 0x0800
//   0x2000 images          u32 width, height; text; versioned transform; the pixels
//   0x8000 subGeos         display attributes, then a geometry record
//
//   A render mesh: before version 2 a u8 0; positions; u32s; pairs of f64; vectors; version 4 on:
//   u32s. Each list begins with its u32 count. Plain is the object's serial form; versioned is a
//   u32 1, then that form.

namespace ZVSmartZvg {

namespace GeoBit {

constexpr u16 blobs = 0x0002, visualShells = 0x0004, renderMeshes = 0x0008;
constexpr u16 lineSegments = 0x0010, boundArcs = 0x0020, polylines = 0x0040, circles = 0x0080;
constexpr u16 shells = 0x0100, meshes = 0x0200, polyFaceMeshes = 0x0400, namedTransfs = 0x0800;
constexpr u16 pointLists = 0x1000, images = 0x2000, namedTransfs2 = 0x4000, subGeos = 0x8000;

}  // namespace GeoBit

constexpr bool HasMeshLeadByte(unsigned int version) {
    return version < 2;
}
constexpr bool HasBlobTransf(unsigned int version) {
    return version > 3;
}
constexpr bool HasExtraIndices(unsigned int version) {
    return version > 3;
}

/// The fewest bytes of an element, by which counts are checked.
namespace Smallest {

constexpr u64 position = 24, versionWord = 4, transf = versionWord + 96;
constexpr u64 shell = 8, mesh = 12, visualShell = versionWord + 16;
constexpr u64 lineSegment = versionWord + 48, boundArc = versionWord + 104;
constexpr u64 polyline = versionWord + 5, circle = versionWord + 56;
constexpr u64 polyFaceMesh = versionWord + 16, namedTransf = 4 + transf;
constexpr u64 pointList = 20, image = 12 + transf;
constexpr u64 Blob(unsigned int version) {
    return 16 + (HasBlobTransf(version) ? transf : 0);
}
constexpr u64 renderMesh = 16;
constexpr u64 SubGeo(unsigned int version) {
    return SmallestDisplayAttr(version) + 2;
}

}  // namespace Smallest

using RecordReader = ZVSmartSerial::FieldReader<ZVSmartFormat::RecordInStream>;
using RecordWriter = ZVSmartSerial::FieldWriter;

template <class Visitor, class Blob>
void VisitBlob(Visitor& visitor, Blob& blob, unsigned int version) {
    visitor.DropBuffer(blob.data);
    visitor.Text(blob.str1);
    visitor.Text(blob.str2);
    visitor.Text(blob.str3);
    visitor.U32(blob.dataSize);
    if (HasBlobTransf(version)) visitor.Versioned(blob.transf);
    visitor.Buffer(blob.data, blob.dataSize);
}

template <class Visitor, class Mesh>
void VisitRenderMesh(Visitor& visitor, Mesh& mesh, unsigned int version) {
    u8 leadByte = 0;
    if (HasMeshLeadByte(version)) visitor.U8(leadByte);
    visitor.F64List(mesh.points);
    visitor.U32List(mesh.pointIndices);
    visitor.F64List(mesh.coordPairs);
    visitor.F64List(mesh.vectors);
    if (HasExtraIndices(version)) visitor.U32List(mesh.extraIndices);
}

template <class Visitor, class NamedTransf>
void VisitNamedTransf(Visitor& visitor, NamedTransf& named) {
    visitor.Text(named.name);
    visitor.Versioned(named.transf);
}

template <class Visitor, class PointList>
void VisitPointList(Visitor& visitor, PointList& list) {
    visitor.F64List(list.points);
    visitor.U64(list.valueA);
    visitor.U64(list.valueB);
}

template <class Visitor, class Image>
void VisitImage(Visitor& visitor, Image& image) {
    visitor.DropBuffer(image.pixels);
    visitor.U32(image.width);
    visitor.U32(image.height);
    visitor.Text(image.name);
    visitor.Versioned(image.transf);
    visitor.Buffer(image.pixels, image.PixelBytes());
}

inline u16 FlagsOf(const SZVLGZvgGeo& geo) {
    u32 flags = 0;
    const auto mark = [&flags](const auto& list, u16 bit) { flags |= list.empty() ? 0U : bit; };
    mark(geo.blobs, GeoBit::blobs);
    mark(geo.visualShells, GeoBit::visualShells);
    mark(geo.renderMeshes, GeoBit::renderMeshes);
    mark(geo.lineSegments, GeoBit::lineSegments);
    mark(geo.boundArcs, GeoBit::boundArcs);
    mark(geo.polylines, GeoBit::polylines);
    mark(geo.circles, GeoBit::circles);
    mark(geo.shells, GeoBit::shells);
    mark(geo.meshes, GeoBit::meshes);
    mark(geo.polyFaceMeshes, GeoBit::polyFaceMeshes);
    mark(geo.namedTransfs, GeoBit::namedTransfs);
    mark(geo.pointLists, GeoBit::pointLists);
    mark(geo.images, GeoBit::images);
    mark(geo.namedTransfs2, GeoBit::namedTransfs2);
    mark(geo.subGeos, GeoBit::subGeos);
    return static_cast<u16>(flags);
}

/// The lists of one record that `flags` announces, all but `subGeos`.
template <class Visitor, class Geo>
void VisitFlatLists(Visitor& visitor, Geo& geo, u16 flags, unsigned int version) {
    const auto plain = [&](auto& object) { visitor.Plain(object); };
    const auto versioned = [&](auto& object) { visitor.Versioned(object); };
    const auto named = [&](auto& object) { VisitNamedTransf(visitor, object); };
    const auto list = [&](u16 bit, auto& elements, u64 smallest, const auto& visit) {
        if (flags & bit) visitor.List(elements, smallest, visit);
    };
    list(GeoBit::blobs, geo.blobs, Smallest::Blob(version),
         [&](auto& blob) { VisitBlob(visitor, blob, version); });
    list(GeoBit::visualShells, geo.visualShells, Smallest::visualShell, versioned);
    list(GeoBit::renderMeshes, geo.renderMeshes, Smallest::renderMesh,
         [&](auto& mesh) { VisitRenderMesh(visitor, mesh, version); });
    list(GeoBit::lineSegments, geo.lineSegments, Smallest::lineSegment, versioned);
    list(GeoBit::boundArcs, geo.boundArcs, Smallest::boundArc, versioned);
    list(GeoBit::polylines, geo.polylines, Smallest::polyline, versioned);
    list(GeoBit::circles, geo.circles, Smallest::circle, versioned);
    list(GeoBit::shells, geo.shells, Smallest::shell, plain);
    list(GeoBit::meshes, geo.meshes, Smallest::mesh, plain);
    list(GeoBit::polyFaceMeshes, geo.polyFaceMeshes, Smallest::polyFaceMesh, versioned);
    list(GeoBit::namedTransfs, geo.namedTransfs, Smallest::namedTransf, named);
    list(GeoBit::pointLists, geo.pointLists, Smallest::pointList,
         [&](auto& points) { VisitPointList(visitor, points); });
    list(GeoBit::images, geo.images, Smallest::image,
         [&](auto& image) { VisitImage(visitor, image); });
    list(GeoBit::namedTransfs2, geo.namedTransfs2, Smallest::namedTransf, named);
}

/// A whole record, told once for both directions. `subGeos` come last in a record, so a walk in
/// depth-first order is the order of the bytes; a list whose last element is under way is
/// forgotten, so that a deep chain needs no memory.
template <class Visitor, class Geo>
void VisitGeo(Visitor& visitor, Geo& root, unsigned int version) {
    using SubGeo = std::remove_reference_t<decltype(root.subGeos.front())>;
    std::vector<std::span<SubGeo>> open;
    const auto enter = [&](Geo& geo) {
        u16 flags = 0;
        if constexpr (!Visitor::reading) flags = FlagsOf(geo);
        visitor.U16(flags);
        VisitFlatLists(visitor, geo, flags, version);
        if ((flags & GeoBit::subGeos) == 0) return;
        visitor.List(geo.subGeos, Smallest::SubGeo(version), [](auto&) {});
        if (!geo.subGeos.empty()) open.emplace_back(geo.subGeos);
    };
    enter(root);
    while (!open.empty()) {
        SubGeo& next = open.back().front();
        if (open.back().size() == 1) {
            open.pop_back();
        } else {
            open.back() = open.back().subspan(1);
        }
        VisitDisplayAttr(visitor, next.attr, version);
        enter(next.geo);
    }
}

}  // namespace ZVSmartZvg
