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
    /// Texts of the host's own.
    /// @{
    std::wstring str1, str2, str3;
    /// @}
    u32 dataSize = 0;    ///< bytes at `data`
    u8* data = nullptr;  ///< from `malloc`; owned, freed with `free`
    CZVIMTransf transf;  ///< stored from format version 4 on

    /// No bytes.
    SZVLGZvgGeoBlob();
    /// A copy has bytes of its own; a move takes them over.
    /// @{
    SZVLGZvgGeoBlob(const SZVLGZvgGeoBlob& other);
    SZVLGZvgGeoBlob(SZVLGZvgGeoBlob&& other) noexcept;
    SZVLGZvgGeoBlob& operator=(const SZVLGZvgGeoBlob& other);
    SZVLGZvgGeoBlob& operator=(SZVLGZvgGeoBlob&& other) noexcept;
    /// @}
    /// Frees the bytes.
    ~SZVLGZvgGeoBlob();
};

/// A record of a render mesh that is kept in memory only.
struct SZVLGZvgGeoAuxRecord {
    double values[4] = {};  ///< the host's own
};

/// A render mesh. The first five lists are stored, the others are for the host's use in memory.
struct SZVLGZvgGeoRenderMesh {
    std::vector<CZVIMPosition> points;                  ///< in the model's unit
    std::vector<u32> pointIndices;                      ///< into `points`; not checked
    std::vector<std::pair<double, double>> coordPairs;  ///< such as texture coordinates
    std::vector<CZVIMVector> vectors;                   ///< such as normals
    std::vector<u32> extraIndices;                      ///< stored from format version 4 on
    std::vector<u32> auxInts;                           ///< not stored
    std::vector<u8> auxBytesA;                          ///< not stored
    std::vector<u8> auxBytesB;                          ///< not stored
    std::vector<SZVLGZvgGeoAuxRecord> auxRecords;       ///< not stored
};

/// A placement of something that has a name, such as a geometry stored under an identification.
struct SZVLGZvgGeoNamedTransf {
    std::wstring name;   ///< what is placed
    CZVIMTransf transf;  ///< where
};

/// Points with two values of the host's own.
struct SZVLGZvgGeoPointList {
    std::vector<CZVIMPosition> points;  ///< in the model's unit
    u64 valueA = 0;                     ///< the host's own
    u64 valueB = 0;                     ///< the host's own
};

/// An image of 4 bytes per pixel, in a channel order of the host's choosing, rows one after
/// another.
///
/// Copies are deep: they throw CZVFTStreamException "bad malloc memory" where the pixels cannot
/// be allocated, and leave the target as it was. A moved-from image has no pixels.
struct ZVLG_API SZVLGZvgGeoImage {
    u32 width = 0;      ///< pixels
    u32 height = 0;     ///< pixels
    std::wstring name;  ///< the host's own
    u8* pixels =
        nullptr;         ///< `PixelBytes()` bytes from `malloc`, or null; owned, freed with `free`
    CZVIMTransf transf;  ///< where the image stands

    /// No pixels.
    SZVLGZvgGeoImage();
    /// A copy has pixels of its own; a move takes them over.
    /// @{
    SZVLGZvgGeoImage(const SZVLGZvgGeoImage& other);
    SZVLGZvgGeoImage(SZVLGZvgGeoImage&& other) noexcept;
    SZVLGZvgGeoImage& operator=(const SZVLGZvgGeoImage& other);
    SZVLGZvgGeoImage& operator=(SZVLGZvgGeoImage&& other) noexcept;
    /// @}
    /// Frees the pixels.
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
    std::vector<SZVLGZvgGeoBlob> blobs;                   ///< bytes of the host's own
    std::vector<CZVIMVisualShell> visualShells;           ///< shells with normals and colours
    std::vector<SZVLGZvgGeoRenderMesh> renderMeshes;      ///< meshes made for display
    std::vector<CZVIMLineSegment> lineSegments;           ///< straight pieces
    std::vector<CZVIMBoundArc> boundArcs;                 ///< pieces of circles
    std::vector<CZVIMPolyline3D> polylines;               ///< chains of straight pieces
    std::vector<CZVIMCircle> circles;                     ///< full circles
    std::vector<CZVIMShell> shells;                       ///< points and faces
    std::vector<CZVIMMesh> meshes;                        ///< grids of points
    std::vector<CZVIMVisualPolyFaceMesh> polyFaceMeshes;  ///< faces with colours and edges
    std::vector<SZVLGZvgGeoNamedTransf> namedTransfs;     ///< placements of other geometries
    std::vector<SZVLGZvgGeoPointList> pointLists;         ///< loose points
    std::vector<SZVLGZvgGeoImage> images;                 ///< pictures
    std::vector<SZVLGZvgGeoNamedTransf> namedTransfs2;    ///< more placements, the host's own
    std::vector<SZVLGZvgSubGeo> subGeos;                  ///< nested geometries, to any depth

    /// All lists empty.
    SZVLGZvgGeo();
    /// A copy is deep; a move takes the lists over and leaves them empty.
    /// @{
    SZVLGZvgGeo(const SZVLGZvgGeo& other);
    SZVLGZvgGeo(SZVLGZvgGeo&& other) noexcept;
    SZVLGZvgGeo& operator=(const SZVLGZvgGeo& other);
    SZVLGZvgGeo& operator=(SZVLGZvgGeo&& other) noexcept;
    /// @}
    /// Frees what the lists hold.
    ~SZVLGZvgGeo();

    /// Whether all fifteen lists are empty.
    bool IsEmpty() const;
};

/// A nested geometry with display attributes of its own.
struct SZVLGZvgSubGeo {
    SZVLGZvgDisplayAttr attr;  ///< how it looks
    SZVLGZvgGeo geo;           ///< what it is
};

}  // namespace ZVSmartZvg
