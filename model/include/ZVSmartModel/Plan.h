#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "ZVSmartFormat/Stream.h"
#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Values.h"

namespace ZVSmartModel {

/// What to draw.
struct PlanOptions {
    std::optional<std::string> floor;  ///< its number, else its name; none draws all floors
    std::string title;                 ///< of the document; empty takes the file's name
};

/// What was drawn.
struct PlanSummary {
    /// That were drawn.
    /// @{
    std::size_t floors = 0, elements = 0;
    /// @}
    std::string lost;  ///< on one line, what could not be read; empty where all was
};

/// Draws floors as an SVG plan: the outlines of the elements or, where they have none, sections
/// 1.2 m above the floor. Floors of which nothing is seen are left out, unless one is named.
/// Lengths are those of the file, which are metres where this library packed it; all is drawn on
/// one sheet in one round scale, in millimetres of paper, north up. Each element is a group with
/// its GUID, its class and its name; docs/GUIDE.md describes them.
///
/// Writes the document to `out` in one piece at the end. What cannot be read is left out and told
/// in the summary. Throws Error: NotFound for a floor that is not there, InputOutput where `out`
/// does not take the document, Damaged where nothing can be told from what is left, Internal,
/// Cancelled.
ZVSM_API PlanSummary WritePlan(const BlockFile& file, ZVSmartFormat::CZVFTOutStream& out,
                               const PlanOptions& options = {}, const Progress& progress = {});

}  // namespace ZVSmartModel
