#pragma once

#include <string>
#include <utility>
#include <vector>

#include "ZVIM/Curve.h"
#include "ZVIM/Mesh.h"
#include "ZVIM/Position.h"
#include "ZVIM/Shell.h"
#include "ZVIM/Transf.h"
#include "ZVIM/Vector.h"
#include "ZVIM/Visual.h"
#include "ZVSmartZvg/DisplayAttr.h"
#include "ZVSmartZvg/Export.h"
#include "ZVSmartZvg/GeoIndex.h"

namespace ZVSmartZvg {

using ZVIM::GeometryModelResource::CZVIMMesh;
using ZVIM::GeometryModelResource::CZVIMShell;
using ZVIM::GeometryModelResource::CZVIMVisualPolyFaceMesh;
using ZVIM::GeometryModelResource::CZVIMVisualShell;
using ZVIM::GeometryPrimitiveResource::CZVIMBoundArc;
using ZVIM::GeometryPrimitiveResource::CZVIMCircle;
using ZVIM::GeometryPrimitiveResource::CZVIMLineSegment;
using ZVIM::GeometryPrimitiveResource::CZVIMPolyline3D;
using ZVIM::GeometryPrimitiveResource::CZVIMPosition;
using ZVIM::GeometryPrimitiveResource::CZVIMVector;

/// Bytes of the host's own with three texts and a placement.
///
/// Copies are deep: they throw CZVFTStreamException "bad malloc memory" where the bytes cannot
/// be allocated, and leave the target as it was. A moved-from blob has no bytes.
struct ZVLG_API SZVLGZvgGeoBlob {
    std::wstring str1, str2, str3;
    u32 dataSize = 0;    ///< bytes at `data`
    u8* data = nullptr;  ///< from `malloc`; owned, freed with `free`
    CZVIMTransf transf;  ///< stored from format version 4 on

    SZVLGZvgGeoBlob();
    SZVLGZvgGeoBlob(const SZVLGZvgGeoBlob& other);
    SZVLGZvgGeoBlob(SZVLGZvgGeoBlob&& other) noexcept;
    SZVLGZvgGeoBlob& operator=(const SZVLGZvgGeoBlob& other);
    SZVLGZvgGeoBlob& operator=(SZVLGZvgGeoBlob&& other) noexcept;
    ~SZVLGZvgGeoBlob();
};

/// A record of a render mesh that is kept in memory only.
struct SZVLGZvgGeoAuxRecord {
    double values[4] = {};
};

/// A render mesh. The first five lists are stored, the others are for the host's use in memory.
struct SZVLGZvgGeoRenderMesh {
    std::vector<CZVIMPosition> points;
    std::vector<u32> pointIndices;
    std::vector<std::pair<double, double>> coordPairs;
    std::vector<CZVIMVector> vectors;
    std::vector<u32> extraIndices;  ///< stored from format version 4 on
    std::vector<u32> auxInts;
    std::vector<u8> auxBytesA;
    std::vector<u8> auxBytesB;
    std::vector<SZVLGZvgGeoAuxRecord> auxRecords;
};

/// A placement of something that has a name, such as a geometry stored under an identification.
struct SZVLGZvgGeoNamedTransf {
    std::wstring name;
    CZVIMTransf transf;
};

/// Points with two values of the host's own.
struct SZVLGZvgGeoPointList {
    std::vector<CZVIMPosition> points;
    u64 valueA = 0;
    u64 valueB = 0;
};

/// An image of 4 bytes per pixel, in a channel order of the host's choosing, rows one after
/// another.
///
/// Copies are deep: they throw CZVFTStreamException "bad malloc memory" where the pixels cannot
/// be allocated, and leave the target as it was. A moved-from image has no pixels.
struct ZVLG_API SZVLGZvgGeoImage {
    u32 width = 0;   ///< pixels
    u32 height = 0;  ///< pixels
    std::wstring name;
    u8* pixels =
        nullptr;  ///< `PixelBytes()` bytes from `malloc`, or null; owned, freed with `free`
    CZVIMTransf transf;

    SZVLGZvgGeoImage();
    SZVLGZvgGeoImage(const SZVLGZvgGeoImage& other);
    SZVLGZvgGeoImage(SZVLGZvgGeoImage&& other) noexcept;
    SZVLGZvgGeoImage& operator=(const SZVLGZvgGeoImage& other);
    SZVLGZvgGeoImage& operator=(SZVLGZvgGeoImage&& other) noexcept;
    ~SZVLGZvgGeoImage();

    /// width × height × 4 in 32-bit unsigned arithmetic, as the file counts them.
    u32 PixelBytes() const;
};

struct SZVLGZvgSubGeo;

/// One stored geometry: fifteen lists, any of which may be empty. Lengths are in the model's
/// unit.
///
/// Copying, moving and destroying are loops, whatever the depth of `subGeos`. A copy throws what
/// its parts throw and leaves the target empty or as it was.
struct ZVLG_API SZVLGZvgGeo {
    std::vector<SZVLGZvgGeoBlob> blobs;
    std::vector<CZVIMVisualShell> visualShells;
    std::vector<SZVLGZvgGeoRenderMesh> renderMeshes;
    std::vector<CZVIMLineSegment> lineSegments;
    std::vector<CZVIMBoundArc> boundArcs;
    std::vector<CZVIMPolyline3D> polylines;
    std::vector<CZVIMCircle> circles;
    std::vector<CZVIMShell> shells;
    std::vector<CZVIMMesh> meshes;
    std::vector<CZVIMVisualPolyFaceMesh> polyFaceMeshes;
    std::vector<SZVLGZvgGeoNamedTransf> namedTransfs;
    std::vector<SZVLGZvgGeoPointList> pointLists;
    std::vector<SZVLGZvgGeoImage> images;
    std::vector<SZVLGZvgGeoNamedTransf> namedTransfs2;
    std::vector<SZVLGZvgSubGeo> subGeos;

    SZVLGZvgGeo();
    SZVLGZvgGeo(const SZVLGZvgGeo& other);
    SZVLGZvgGeo(SZVLGZvgGeo&& other) noexcept;
    SZVLGZvgGeo& operator=(const SZVLGZvgGeo& other);
    SZVLGZvgGeo& operator=(SZVLGZvgGeo&& other) noexcept;
    ~SZVLGZvgGeo();

    /// Whether all fifteen lists are empty.
    bool IsEmpty() const;
};

/// A nested geometry with display attributes of its own.
struct SZVLGZvgSubGeo {
    SZVLGZvgDisplayAttr attr;
    SZVLGZvgGeo geo;
};

}  // namespace ZVSmartZvg
