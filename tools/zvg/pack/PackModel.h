#pragma once

#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>

#include "ZVSmartFormat/IniFile.h"
#include "ZVSmartFormat/Stream.h"
#include "tools/zvg/import/Model.h"

/// How to write a block file.
struct PackOptions {
    const char* modelPath = "";
    const char* outputPath = "";           ///< for messages only
    ZVSmartFormat::CZVFTIniFile settings;  ///< of component displacement; may hold nothing
    const char* previewPath = "";          ///< of `preview`, for messages only
    std::FILE* preview = nullptr;          ///< a PNG file; borrowed; null for none
    bool drawPreview = true;               ///< where there is no such file and this build can draw
    unsigned int geosPerBlock = 0;         ///< 0 chooses by the sizes of the geometries
    unsigned int formatVersion = 4;        ///< 0 to 4
    bool fast = false;                     ///< compress faster and weaker
    bool seal = false;                     ///< write a checksum of the file behind its end
    double tolerance = 1;  ///< millimetres that lines may be off curves of the model
    bool strict = false;   ///< pack nothing of a model of which something is lost
};

/// What was written.
struct PackSummary {
    std::size_t floors = 0;
    std::size_t components = 0;
    std::size_t shapes = 0;
    std::size_t placements = 0;
    std::string previewFailure;  ///< why no preview could be drawn; else empty
};

/// Told the work under way, and how much of it is done; `total` is 0 where nobody knows.
using PackProgress = std::function<void(const char* work, std::size_t done, std::size_t total)>;

/// Writes `model` as a block file at the stream's position. Floors stand in order of elevation,
/// within a floor what has one class and type stands together, and each shape stands before the
/// first component that places it. `progress` is told what begins, or how many components of how
/// many are packed. The same model gives the same bytes. Throws what the saver
/// throws, and ToolError for a preview image that cannot be read.
PackSummary PackModel(const Model& model, const PackOptions& options,
                      ZVSmartFormat::CZVFTOutStream& out, const PackProgress& progress);
