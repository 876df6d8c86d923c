#pragma once

#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>

#include "ZVSmartFormat/IniFile.h"
#include "ZVSmartFormat/Stream.h"
#include "model/import/Model.h"
#include "model/pack/PackJob.h"

namespace ZVSmartModel {

/// What a job names, opened.
struct PackInput {
    PackJob job;
    ZVSmartFormat::CZVFTIniFile settings;  ///< of component displacement; may hold nothing
    std::FILE* preview = nullptr;          ///< a PNG file; borrowed; null for none
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
/// throws, and Error for a preview image that cannot be read.
PackSummary PackModel(const Model& model, const PackInput& input,
                      ZVSmartFormat::CZVFTOutStream& out, const PackProgress& progress);

}  // namespace ZVSmartModel
