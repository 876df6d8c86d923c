#include "model/plan/FloorPlan.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <optional>

#include "model/element/RecordNames.h"
#include "model/element/Utf8.h"
#include "model/plan/MeshSection.h"
#include "model/plan/Outlines.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

constexpr std::size_t bytesOfComponent = 500;
constexpr std::size_t bytesOfFloor = 2000;  // with its heading in the sheet
constexpr std::size_t mostCorners = 20000000;
constexpr std::size_t bytesOfCorner = 200;  // in all forms that it goes through, and in the sheet

/// The floor's elevation; 0 where the host keeps something else in that field.
double ElevationOf(const SZVLGZvgComp& comp) {
    double elevation = 0;
    std::memcpy(&elevation, &comp.classLevel1DataA, sizeof elevation);
    constexpr double farthest = 1e6;
    return std::fabs(elevation) < farthest ? elevation + 0.0 : 0;
}

std::string NameOf(const SZVLGZvgComp& comp) {
    for (const auto& [name, value] : comp.compProperties) {
        if (name == L"Element.Name" && !value.empty()) return ToUtf8(value);
    }
    return comp.classLevel3Name.empty() ? KeyText(comp.compGuidName) : ToUtf8(comp.classLevel3Name);
}

/// Draws one component in both ways, as its outlines may come after its surfaces.
class ComponentDrawing {
  public:
    explicit ComponentDrawing(double cutElevation) : cutElevation(cutElevation) {}

    void Add(const PlacedRecord& placed) {
        if (placed.styleName == L"Axis") return;  // a construction line that nobody sees
        const SZVLGZvgGeo& record = *placed.record;
        const CZVIMTransf& toModel = placed.toModel;
        std::vector<PlanPath> curves = PlacedCurves(record, toModel);
        for (const PlanPath& curve : curves) corners += curve.vertices.size();
        std::move(curves.begin(), curves.end(), std::back_inserter(outlined.lines));
        if (std::optional<PlanPath> outline = PlacedOutline(record, toModel)) {
            outlined.areas.push_back({std::move(*outline)});
        }
        if (!outlined.areas.empty()) return;
        for (const SurfaceSection& section : CutSurfaces(record, toModel, cutElevation)) {
            corners += section.size();
            const SurfaceSection rest = AddRings(section, cut);
            open.insert(open.end(), rest.begin(), rest.end());
        }
    }

    /// About how many corners the drawing has by now.
    std::size_t Corners() const { return corners; }

    PlanComponent Take() {
        if (!outlined.areas.empty()) return std::move(outlined);
        // Some bodies are sewn of open surfaces, whose sections close together only.
        AddLines(AddRings(open, cut), cut);
        std::move(outlined.lines.begin(), outlined.lines.end(), std::back_inserter(cut.lines));
        return std::move(cut);
    }

  private:
    double cutElevation;
    PlanComponent outlined;
    PlanComponent cut;
    SurfaceSection open;  ///< pieces that close no loop in a surface of their own
    std::size_t corners = 0;
};

/// Draws the components of one floor up to a number of corners.
class FloorDrawing {
  public:
    FloorDrawing(OpenedBlock& block, PlacedRecords& records,
                 const std::function<void()>& atEachStep)
        : block(block), records(records), atEachStep(atEachStep) {}

    PlanComponent Draw(const SZVLGZvgComp& comp, double elevation) {
        ComponentDrawing drawing(elevation + cutHeight);
        std::size_t charged = 0;  // corners
        atEachStep();
        records.Visit(comp, [&](const PlacedRecord& placed) {
            atEachStep();
            drawing.Add(placed);
            if (corners + drawing.Corners() > mostCorners) ThrowTooLarge();
            block.Limits().Memory((drawing.Corners() - charged) * bytesOfCorner);
            charged = drawing.Corners();
        });
        corners += drawing.Corners();
        PlanComponent component = drawing.Take();
        component.identity = KeyText(comp.compGuidName);
        component.name = NameOf(comp);
        component.className = ToUtf8(comp.classLevel2Name);
        const auto textBytes =
            component.identity.size() + component.name.size() + component.className.size();
        block.Limits().Memory(bytesOfComponent + 4 * textBytes);
        return component;
    }

  private:
    [[noreturn]] void ThrowTooLarge() const {
        throw block.ErrorAbout(Status::Damaged, "a floor whose plan has more than " +
                                                    std::to_string(mostCorners) + " corners");
    }

    OpenedBlock& block;
    PlacedRecords& records;
    const std::function<void()>& atEachStep;
    std::size_t corners = 0;
};

}  // namespace

PlanFloor DrawFloor(OpenedBlock& block, PlacedRecords& records, unsigned int floor,
                    const std::function<void()>& atEachStep) {
    PlanFloor plan;
    plan.name = ToUtf8(block.FloorName(floor));
    block.Limits().Memory(bytesOfFloor + 2 * plan.name.size());
    FloorDrawing drawing(block, records, atEachStep);
    block.ForEachComp(floor, [&](const SZVLGCompIndex&, const SZVLGZvgComp& comp) {
        plan.elevation = ElevationOf(comp);  // the same for the whole floor
        PlanComponent component = drawing.Draw(comp, plan.elevation);
        const bool visible = !component.areas.empty() || !component.lines.empty();
        if (visible) plan.components.push_back(std::move(component));
    });
    return plan;
}

}  // namespace ZVSmartModel
