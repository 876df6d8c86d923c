#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "ZVSmartFormat/Stream.h"
#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Values.h"

namespace ZVSmartModel {

/// What to draw.
struct PlanOptions {
    std::optional<std::string> floor;  ///< its number, else its name; none draws all floors
    std::string title;                 ///< of the document; empty takes the file's name
    double cutHeight = 1.2;            ///< metres from a floor's elevation up to its plane
    bool all = false;                  ///< draw strays as well
    /// "A0" to "A4": each floor has a sheet of this paper, lying or upright; empty for one sheet,
    /// as large as it takes.
    std::string paper;
    /// 100 for 1:100; 0 takes the largest usual scale that fits the paper.
    double scale = 0;
};

/// What became of the elements of one floor. Those that are drawn are in `cut`, `symbols` and
/// `below`; the others that are filed under the floor are counted by why they are not drawn.
struct PlanFloorSummary {
    std::string name;      ///< UTF-8; may be empty
    double elevation = 0;  ///< metres
    double plane = 0;      ///< metres: where bodies are cut

    std::size_t cut = 0;       ///< drawn as the section of their bodies
    std::size_t visiting = 0;  ///< of these, filed under other floors
    std::size_t symbols = 0;   ///< drawn by their own outlines or curves
    std::size_t below = 0;     ///< the same, their bodies below the plane

    std::size_t leftBelow = 0;  ///< below the plane, without curves
    std::size_t leftAbove = 0;  ///< above the plane, without curves
    std::size_t leftGaps = 0;   ///< above and below, with nothing in the plane; of any floor
    std::size_t leftEmpty = 0;  ///< without a body or a curve that can be drawn
    std::size_t leftFar = 0;    ///< strays, of any floor
    /// The first ten strays: their GUIDs and names.
    std::vector<std::string> strays;
};

/// What was drawn.
struct PlanSummary {
    /// That were drawn; an element counts once on however many floors it is.
    /// @{
    std::size_t floors = 0, elements = 0;
    /// @}
    double scale = 0;  ///< 100 for 1:100
    std::string lost;  ///< on one line, what could not be read; empty where all was
    /// All floors that were looked at, those of which nothing is seen as well.
    std::vector<PlanFloorSummary> perFloor;
};

/// Draws floors as an SVG plan: by the outlines of their elements and, where these have none, by
/// their sections in the horizontal plane `cutHeight` above the floor's elevation. Every body that
/// reaches through the plane is cut, whatever floor it is filed under, and stands on each floor
/// whose plane it reaches; only rooms, and what is drawn by curves alone, keep to their own floors.
/// The floor "unassigned", and one whose elevation is not known, show their own elements only.
/// Floors of which nothing is seen are left out, unless one is named.
///
/// A stray is left out unless `all` is set: an element further from the others than ten times the
/// diagonal of the box around them, and than 100 m. One element in ten may be a stray, or one of
/// at least three; where more are that far, they belong to the building.
///
/// Lengths are those of the file, which are metres where this library packed it; nothing is
/// guessed from sizes. All floors are drawn in one round scale and show one extent, so that they
/// lie on each other; in millimetres of paper, the model's Y axis up, with an arrow to true north
/// where the file knows it. Each element is a group with its GUID, its class and its name;
/// docs/GUIDE.md describes them.
///
/// Writes the document to `out` in one piece at the end. What cannot be read is left out and told
/// in the summary. Throws Error: Usage for a cut height that is not
/// finite, an unknown paper, and a scale that is none or too large for it, NotFound for a floor
/// that is not there, InputOutput where `out` does not take the document, Damaged where nothing can
/// be told from what is left, Internal, Cancelled.
ZVSM_API PlanSummary WritePlan(const BlockFile& file, ZVSmartFormat::CZVFTOutStream& out,
                               const PlanOptions& options = {}, const Progress& progress = {});

}  // namespace ZVSmartModel
