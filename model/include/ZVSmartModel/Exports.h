#pragma once

#include <cstddef>
#include <string>

#include "ZVSmartFormat/Stream.h"
#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Values.h"

namespace ZVSmartModel {

/// Whether this build writes GLB; it needs a library for glTF.
ZVSM_API bool CanWriteGlb();

/// What to export.
struct ExportOptions {
    /// Unlike elsewhere, rooms are left out unless they are wanted: their bodies hide the others.
    Selection selection = {std::nullopt, {}, {}, false};
    bool salvage = false;  ///< leave out what cannot be read, instead of writing nothing
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
///
/// Throws Error: Damaged for what cannot be read, before anything is written; NotFound for a floor
/// that is not there, and where classes, elements or properties are named and no element is found;
/// Usage where this build writes no GLB; InputOutput above 4 GiB and where `out` does not take it
/// all; Internal; Cancelled. After an error what was written means nothing.
ZVSM_API ExportSummary WriteGlb(const BlockFile& file, ZVSmartFormat::CZVFTOutStream& out,
                                const ExportOptions& options = {}, const Progress& progress = {});

/// Writes the same as Wavefront OBJ with Y up, an object for each element and each placement
/// written out, to `obj`, and its colours to `mtl`, which is to be found beside it under the name
/// `mtlName`. Throws as WriteGlb does, and InputOutput above 100 million points.
ZVSM_API ExportSummary WriteObj(const BlockFile& file, ZVSmartFormat::CZVFTOutStream& obj,
                                ZVSmartFormat::CZVFTOutStream& mtl, const std::string& mtlName,
                                const ExportOptions& options = {}, const Progress& progress = {});

/// Writes what `path` ends in: a .glb, or an .obj with an .mtl file of the same name beside it.
/// Files appear whole or not at all; those of these names are replaced. Throws as the above, Usage
/// for any other name, and InputOutput where a file cannot be written.
ZVSM_API ExportSummary ExportFile(const BlockFile& file, const std::string& path,
                                  const ExportOptions& options = {}, const Progress& progress = {});

}  // namespace ZVSmartModel
