#pragma once

#include <cstddef>
#include <string>

#include "ZVSmartFormat/Stream.h"
#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Body.h"
#include "ZVSmartModel/Values.h"

namespace ZVSmartModel {

/// Whether this build compresses GLB; it needs a library for that.
ZVSM_API bool CanCompressGlb();

/// What to export, and how. What stands below `merge` is for GLB alone.
struct ExportOptions {
    /// Unlike elsewhere, rooms are left out unless they are wanted: their bodies hide the others.
    Selection selection = {std::nullopt, {}, {}, false};
    bool salvage = false;  ///< leave out what cannot be read, instead of writing nothing
    /// One mesh for each floor and look, in place of one node for each element: few to draw, but
    /// nothing tells the elements apart.
    bool merge = false;

    /// What is known of an element goes along with its node; else its GUID, place and class alone.
    bool properties = true;
    /// Which normals surfaces get. Without, viewers shade them flat.
    Normals normals = Normals::None;
    double creaseAngle = 0.5236;  ///< radians (30 degrees), for Normals::Smooth and for `edges`
    /// Lines where a surface ends or turns by the crease angle or more.
    bool edges = false;
    /// Elements of one class and floor that differ in their places alone are instances of one node
    /// (EXT_mesh_gpu_instancing), whose extras list them in the order of the instances. Not with
    /// `edges`: readers make no instances of lines, nor of what they go with.
    bool instances = false;
    /// Coordinates in 16 bits and normals in 8 (KHR_mesh_quantization): points move by up to a
    /// 65,000th of their mesh's size.
    bool quantize = false;
    /// Points and indices compressed (EXT_meshopt_compression); points of a surface change places,
    /// and its triangles theirs.
    bool compress = false;
};

/// What was exported.
struct ExportSummary {
    /// That were written.
    std::size_t elements = 0;
    std::size_t meshes = 0;   ///< bodies that differ; each is placed as often as it occurs
    std::size_t missing = 0;  ///< names that lead to no geometry in the file
    std::string lost;         ///< on one line, what was left out by `salvage`; empty where nothing
};

/// Writes elements and their bodies as binary glTF 2.0: a node for each element, with its name and
/// all that is known of it, below those of its class, its floor, its building and its site. Meshes
/// stand once however often they are placed. The root turns Z up into Y up; metres stay metres.
/// A reader that lacks an extension which the options ask for must refuse the file.
///
/// Throws Error: Damaged for what cannot be read, before anything is written; NotFound for a floor
/// that is not there, and where classes, elements or properties are named and no element is found;
/// Usage for compression in a build without, and for instances with edges; InputOutput above 4 GiB,
/// for more than 100 million merged points, and where `out` does not take it all; Internal;
/// Cancelled. After an error what was written means nothing.
ZVSM_API ExportSummary WriteGlb(const BlockFile& file, ZVSmartFormat::CZVFTOutStream& out,
                                const ExportOptions& options = {}, const Progress& progress = {});

/// Writes the same as Wavefront OBJ with Y up, an object for each element and each placement
/// written out, to `obj`, and its colours to `mtl`, which is to be found beside it under the name
/// `mtlName`. Throws as WriteGlb does, and InputOutput above 100 million points.
ZVSM_API ExportSummary WriteObj(const BlockFile& file, ZVSmartFormat::CZVFTOutStream& obj,
                                ZVSmartFormat::CZVFTOutStream& mtl, const std::string& mtlName,
                                const ExportOptions& options = {}, const Progress& progress = {});

/// Writes what is known of the elements as JSON, to stand beside an export without properties:
/// `{"schema": 1, "source": ..., "elements": {GUID: {...}}}`, each element with its name, place,
/// classification, materials, relations and properties. Of elements with one GUID, the second gets
/// " (2)" behind it, and so on. Only `selection` and `salvage` of the options matter; bodies are
/// not read. Throws as WriteGlb does.
ZVSM_API ExportSummary WriteProperties(const BlockFile& file, ZVSmartFormat::CZVFTOutStream& out,
                                       const ExportOptions& options = {},
                                       const Progress& progress = {});

/// Writes what `path` ends in: a .glb, or an .obj with an .mtl file of the same name beside it.
/// Files appear whole or not at all; those of these names are replaced. Throws as the above, Usage
/// for any other name, and InputOutput where a file cannot be written.
ZVSM_API ExportSummary ExportFile(const BlockFile& file, const std::string& path,
                                  const ExportOptions& options = {}, const Progress& progress = {});

}  // namespace ZVSmartModel
