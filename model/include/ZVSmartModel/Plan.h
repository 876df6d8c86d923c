#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "ZVSmartFormat/Stream.h"
#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Values.h"

namespace ZVSmartModel {

/// What a plan is written as. SVG shows names and layers; PDF has a page for each sheet; DXF
/// (ASCII, release 12) lies in the model's metres, each floor after the first beside the one before
/// it.
enum class PlanFormat { Svg, Pdf, Dxf };

/// What to draw.
struct PlanOptions {
    std::optional<std::string> floor;  ///< its number, else its name; none draws all floors
    std::string title;                 ///< of the document; empty takes the file's name
    double cutHeight = 1.2;            ///< metres from a floor's elevation up to its plane
    double depth = 0.5;  ///< metres from a floor's elevation down to where things are still seen
    bool all = false;    ///< draw strays as well
    bool roof = false;   ///< draw all as seen from above on one more sheet, the last
    bool zones = false;  ///< give rooms a colour for each zone, and its name below their areas
    /// "A0" to "A4": each floor has a sheet of this paper, lying or upright; empty for one sheet,
    /// as large as it takes.
    std::string paper = {};
    /// 100 for 1:100; 0 takes the largest usual scale that fits the paper.
    double scale = 0;
    PlanFormat format = PlanFormat::Svg;  ///< what it is written as
};

/// A room on a floor.
struct PlanRoom {
    /// UTF-8; each may be empty.
    /// @{
    std::string guid, number, name;
    std::string zone;  ///< the name of the first zone that it belongs to
    /// @}
    std::optional<double> stated;    ///< square metres, by a quantity or property of the file
    std::optional<double> measured;  ///< of what is drawn of it

    /// Whether both are known and differ by more than 1 %.
    bool Differs() const {
        if (!stated || !measured) return false;
        const double apart = *stated < *measured ? *measured - *stated : *stated - *measured;
        return apart > 0.01 * *stated;
    }
};

/// What became of the elements that are filed under a floor or reach into it. Each that is drawn
/// counts in one of `cut`, `symbols`, `below` and `overhead`; those that are filed under the floor
/// and not drawn are counted by why.
struct PlanFloorSummary {
    std::string name;      ///< UTF-8; may be empty
    double elevation = 0;  ///< metres
    double plane = 0;      ///< metres: where bodies are cut; infinite for the roof

    std::size_t cut = 0;       ///< drawn as the section of their bodies
    std::size_t visiting = 0;  ///< of these, filed under other floors
    std::size_t symbols = 0;   ///< drawn by their own outlines and curves
    std::size_t below = 0;     ///< seen below the plane
    std::size_t overhead = 0;  ///< dashed, above the plane
    std::size_t refused = 0;   ///< of all these, whose own outlines lie elsewhere than their bodies

    std::size_t leftBelow = 0;  ///< too far below the floor
    std::size_t leftAbove = 0;  ///< above the plane, and hidden or on the floor above
    std::size_t leftGaps = 0;   ///< above and below, with nothing in the plane; of any floor
    std::size_t leftEmpty = 0;  ///< without a body or a curve that can be drawn
    std::size_t leftFar = 0;    ///< strays, of any floor
    /// The first ten strays: their GUIDs and names.
    std::vector<std::string> strays;
    /// Those that are filed under the floor.
    std::vector<PlanRoom> rooms;
};

/// What was drawn.
struct PlanSummary {
    /// That were drawn; an element counts once on however many floors it is.
    /// @{
    std::size_t floors = 0, elements = 0;
    /// @}
    double scale = 0;            ///< 100 for 1:100
    std::size_t axes = 0;        ///< building axes that the file holds
    std::size_t labelsLeft = 0;  ///< texts for which there is no room
    std::string lost;            ///< on one line, what could not be read; empty where all was
    /// All floors that were looked at, those of which nothing is seen as well.
    std::vector<PlanFloorSummary> perFloor;
};

/// Draws floors as a plan. Every body that reaches through the horizontal plane `cutHeight`
/// above a floor's elevation is cut there, whatever floor it is filed under; what lies between
/// that plane and `depth` below the floor is seen from above, what is higher covering what is
/// lower; the outlines of what hangs between the plane and the next floor are dashed. A door, a
/// window, furniture and the like are drawn by outlines and curves of their own where these lie on
/// their bodies; a door else gets leaf and swing by its operation type. Rooms keep to their own
/// floors. The floor "unassigned", where it is not the only one, and one whose elevation is not
/// known show their own elements only, as they are cut. Floors of which nothing is seen are left
/// out, unless one is named.
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
/// in the summary. Throws Error: Usage for a height that is not
/// finite, an unknown paper, a scale that is none or too large for it, and PDF
/// where this library was built without it, NotFound for a floor
/// that is not there, InputOutput where `out` does not take the document, Damaged where nothing can
/// be told from what is left, Internal, Cancelled.
ZVSM_API PlanSummary WritePlan(const BlockFile& file, ZVSmartFormat::CZVFTOutStream& out,
                               const PlanOptions& options = {}, const Progress& progress = {});

}  // namespace ZVSmartModel
