#include "model/plan/FloorPlan.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "model/element/ElementRecord.h"
#include "model/element/RecordNames.h"
#include "model/element/Utf8.h"
#include "model/plan/ClassStyles.h"
#include "model/plan/ComponentDrawing.h"
#include "model/plan/Outlines.h"
#include "model/plan/PlanRooms.h"
#include "model/plan/PlanSymbols.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

constexpr std::size_t bytesOfComponent = 500;
constexpr std::size_t bytesOfFloor = 2000;  // with its heading in the sheet
constexpr std::size_t mostCorners = 20000000;
constexpr std::size_t bytesOfCorner = 200;  // in all forms that it goes through, and in the sheet

/// The floor's elevation; none where the host keeps something else in that field.
std::optional<double> ElevationOf(unsigned long long data) {
    double elevation = 0;
    std::memcpy(&elevation, &data, sizeof elevation);
    constexpr double farthest = 1e6;
    constexpr double nearest = 1e-9;  // small integers are tiny as doubles
    if (elevation == 0) return 0;
    const bool plausible = std::fabs(elevation) < farthest && std::fabs(elevation) > nearest;
    return plausible ? std::optional(elevation) : std::nullopt;
}

/// Where true north is: the property is the two numbers of a direction.
std::optional<double> NorthOf(const SZVLGZvgComp& comp) {
    for (const auto& [name, value] : comp.compProperties) {
        if (name != L"Project.TrueNorth") continue;
        const std::string text = ToUtf8(value);
        double x = 0, y = 0;
        const char* const end = text.data() + text.size();
        const auto first = std::from_chars(text.data(), end, x);
        const char* next = first.ptr;
        while (next != end && (*next == ',' || *next == ' ')) ++next;
        const auto second = std::from_chars(next, end, y);
        if (first.ec != std::errc() || second.ec != std::errc()) return std::nullopt;
        const double length = std::hypot(x, y);
        return length > 0 && std::isfinite(length) ? std::optional(std::atan2(y, x)) : std::nullopt;
    }
    return std::nullopt;
}

std::string DrawnNameOf(const SZVLGZvgComp& comp) {
    for (const auto& [name, value] : comp.compProperties) {
        if (name == L"Element.Name" && !value.empty()) return ToUtf8(value);
    }
    return comp.classLevel3Name.empty() ? KeyText(comp.compGuidName) : ToUtf8(comp.classLevel3Name);
}

/// How a door or a window opens: by itself, by its type, by its panel.
std::string OperationOf(const Element& element) {
    constexpr std::pair<const char*, const char*> places[] = {
        {"Element", "OperationType"},
        {"Type", "OperationType"},
        {"IfcDoorPanelProperties", "PanelOperation"}};
    for (const auto& [set, name] : places) {
        for (const Property& property : element.properties) {
            if (property.set == set && property.name == name && property.value != "NOTDEFINED") {
                return property.value;
            }
        }
    }
    return "";
}

std::string MaterialTextOf(const Element& element) {
    std::string text;
    for (const Material& material : element.materials) text += material.name + '\n';
    return text.empty() ? element.materialName : text;
}

bool HasSymbolOfItsOwn(ClassKind kind) {
    return kind == ClassKind::Door || kind == ClassKind::Window || kind == ClassKind::Furnishing;
}

/// A component that is being drawn.
struct Drawn {
    PlanComponent named;  ///< what is the same on all floors
    Element element;
    ClassKind kind;
    const ComponentDrawing& drawing;
};

/// Draws all wanted floors of a block.
class FloorsDrawing {
  public:
    FloorsDrawing(OpenedBlock& block, PlacedRecords& records, const WantedPlans& wanted)
        : block(block), records(records), wanted(wanted) {
        // Floors that are not wanted end those below them.
        const unsigned int count = block.Reader().GetFloorNum();
        std::vector<double> elevations;
        for (unsigned int floor = 0; floor < count; ++floor) {
            const auto add = [&] { AddFloor(floor, count == 1, elevations); };
            if (!block.Within("floor " + std::to_string(floor), add)) break;
        }
        std::sort(elevations.begin(), elevations.end());
        for (PlanHeights& floor : heights) {
            const auto next = std::upper_bound(elevations.begin(), elevations.end(), floor.plane);
            if (next != elevations.end()) floor.next = *next;
        }
        if (wanted.roof) AddRoof(elevations);
        corners.resize(plans.size());
        levels.emplace(heights);
    }

    void DrawAll(const PlanStep& step) {
        const unsigned int count = block.Reader().GetFloorNum();
        for (unsigned int floor = 0; floor < count; ++floor) {
            const auto draw = [&] { DrawFiledUnder(floor, [&] { step(floor, count); }); };
            if (!block.Within("floor " + std::to_string(floor), draw)) return;
        }
    }

    PlanDrawing Take() { return {std::move(plans), std::move(axes), north}; }

  private:
    static constexpr double infinity = std::numeric_limits<double>::infinity();

    void AddFloor(unsigned int floor, bool isOnly, std::vector<double>& elevations) {
        const std::wstring name = block.FloorName(floor);
        const std::optional<double> elevation = ElevationOf(block.FloorData(floor).first);
        const bool isOpen = elevation && (name != unassignedFloorName || isOnly);
        if (isOpen) elevations.push_back(*elevation);
        if (floor < wanted.floors.first || floor >= wanted.floors.second) return;
        PlanFloor plan;
        plan.summary.name = ToUtf8(name);
        plan.summary.elevation = elevation.value_or(0);
        plan.summary.plane = plan.summary.elevation + wanted.cutHeight;
        block.Limits().Memory(bytesOfFloor + 2 * plan.summary.name.size());
        heights.push_back(
            {plan.summary.elevation - wanted.depth, plan.summary.plane, infinity, isOpen});
        plans.push_back(std::move(plan));
    }

    /// Seen from above everything, with nothing in its plane.
    void AddRoof(const std::vector<double>& elevations) {
        PlanFloor plan;
        plan.isRoof = true;
        plan.summary.name = "Roof plan";
        plan.summary.elevation = elevations.empty() ? 0 : elevations.back();
        plan.summary.plane = infinity;
        block.Limits().Memory(bytesOfFloor);
        heights.push_back({-infinity, infinity, infinity, true});
        plans.push_back(std::move(plan));
    }

    void DrawFiledUnder(unsigned int floor, const std::function<void()>& atEachStep) {
        const std::size_t floors = plans.size() - (wanted.roof ? 1 : 0);
        const bool isWanted = floor >= wanted.floors.first && floor - wanted.floors.first < floors;
        std::optional<std::size_t> own;
        if (isWanted) own = floor - wanted.floors.first;
        block.ForEachComp(floor, [&](const SZVLGCompIndex& index, const SZVLGZvgComp& comp) {
            atEachStep();
            if (!north) north = NorthOf(comp);
            Draw(index, comp, own, atEachStep);
        });
    }

    void Draw(const SZVLGCompIndex& index, const SZVLGZvgComp& comp, std::optional<std::size_t> own,
              const std::function<void()>& atEachStep) {
        const std::string className = ToUtf8(comp.classLevel2Name);
        const ClassKind kind = StyleOfClass(className).kind;
        const bool isGrid = className == "IfcGrid";
        const bool staysHome = kind == ClassKind::Room || kind == ClassKind::Lines;
        const bool mayBeSeen = own || (levels->AnyHasViews() && !staysHome);
        if (!mayBeSeen && !isGrid) return;
        ComponentDrawing drawing(*levels, own, {kind == ClassKind::Stair, staysHome},
                                 block.Limits());
        std::size_t charged = 0;  // corners
        records.Visit(comp, [&](const PlacedRecord& placed) {
            atEachStep();
            if (isGrid) return AddAxes(placed);
            drawing.Add(placed);
            if (drawing.Corners() > mostCorners) ThrowTooLarge();
            block.Limits().Memory((drawing.Corners() - charged) * bytesOfCorner);
            charged = drawing.Corners();
        });
        if (isGrid) return;
        drawing.Finish();
        Drawn drawn = {{}, ElementOf(comp, {index.floorIndex, index.compIndex}, ""), kind, drawing};
        drawn.named.index = index;
        drawn.named.identity = KeyText(comp.compGuidName);
        drawn.named.name = DrawnNameOf(comp);
        drawn.named.className = className;
        drawn.named.material = MaterialTextOf(drawn.element);
        for (const std::size_t plan : drawing.Plans()) {
            drawn.named.visits = plan != own;
            std::vector<PlanComponent>& components = plans[plan].components;
            const std::size_t before = components.size();
            drawn.named.countedIn = nullptr;
            const auto countedIn = PutOn(plan, drawn, drawing.Views(plan));
            if (components.size() > before) components.back().countedIn = countedIn;
        }
    }

    void AddAxes(const PlacedRecord& placed) {
        constexpr std::wstring_view role = L"GridAxis";
        if (!placed.styleName.starts_with(role)) return;
        std::wstring_view tag = placed.styleName.substr(role.size());
        while (tag.starts_with(L' ')) tag.remove_prefix(1);
        for (PlanPath& path : PlacedCurves(*placed.record, placed.toModel)) {
            block.Limits().Memory(bytesOfComponent + path.vertices.size() * bytesOfCorner);
            axes.push_back({ToUtf8(std::wstring(tag)), std::move(path)});
        }
    }

    using Counter = std::size_t PlanFloorSummary::*;

    /// Returns where it was counted as drawn; null where it is not.
    Counter PutOn(std::size_t plan, const Drawn& drawn, const ComponentViews& views) {
        PlanFloorSummary& summary = plans[plan].summary;
        const Counter counter = Drawable(plan, drawn, views);
        if (counter == nullptr) {
            CountLeft(summary, drawn, heights[plan]);
            return nullptr;
        }
        ++(summary.*counter);
        if (drawn.kind == ClassKind::Room) {
            PutRoom(plan, drawn, views);
            return counter;
        }
        const ComponentDrawing& drawing = drawn.drawing;
        const bool hasSymbol = !drawing.Symbol().IsEmpty();
        const bool liesThere = hasSymbol && drawing.SymbolLiesOnBody();
        const bool isSymbol = liesThere && HasSymbolOfItsOwn(drawn.kind);
        summary.refused += hasSymbol && !liesThere && HasSymbolOfItsOwn(drawn.kind);
        if (counter == &PlanFloorSummary::cut) {
            summary.visiting += drawn.named.visits;
            if (isSymbol) {
                PutTag(plan, drawn);
                Put(plan, drawn, DrawnAs::Symbol, drawing.Symbol());
                return counter;
            }
            PutBelow(plan, drawn, views);
            if (drawn.kind == ClassKind::Stair || drawn.kind == ClassKind::Roof) {
                Put(plan, drawn, DrawnAs::Overhead, views.above);
            }
            PutSection(plan, drawn, *drawing.SectionAt(heights[plan].plane), liesThere);
        } else if (counter == &PlanFloorSummary::below && isSymbol) {
            Put(plan, drawn, DrawnAs::Projection, drawing.Symbol(), views.belowReach.high);
        } else if (counter == &PlanFloorSummary::below) {
            PutBelow(plan, drawn, views);
        } else if (counter == &PlanFloorSummary::overhead) {
            Put(plan, drawn, DrawnAs::Overhead, views.above);
        } else {
            Put(plan, drawn, DrawnAs::Symbol, drawing.Symbol());
        }
        return counter;
    }

    /// As what a component is drawn on a floor.
    Counter Drawable(std::size_t plan, const Drawn& drawn, const ComponentViews& views) const {
        const ComponentDrawing& drawing = drawn.drawing;
        if (drawing.SectionAt(heights[plan].plane) != nullptr) return &PlanFloorSummary::cut;
        if (!views.below.IsEmpty()) return &PlanFloorSummary::below;
        const bool isRoom = drawn.kind == ClassKind::Room;
        if (!isRoom && !views.above.IsEmpty() && HangsThere(drawn, heights[plan])) {
            return &PlanFloorSummary::overhead;
        }
        const bool isCurves = drawing.Reach().IsEmpty() && !drawing.Symbol().IsEmpty();
        return isCurves && !drawn.named.visits ? &PlanFloorSummary::symbols : nullptr;
    }

    static void CountLeft(PlanFloorSummary& summary, const Drawn& drawn, const PlanHeights& floor) {
        const HeightRange& reach = drawn.drawing.Reach();
        if (reach.IsCutAt(floor.plane)) {
            ++summary.leftGaps;
        } else if (drawn.named.visits) {
            return;  // told by its own floor
        } else if (reach.IsEmpty()) {
            ++summary.leftEmpty;
        } else {
            ++(reach.high < floor.plane ? summary.leftBelow : summary.leftAbove);
        }
    }

    /// What stands on the floor above does not hang here, nor does what would hide the floor.
    static bool HangsThere(const Drawn& drawn, const PlanHeights& floor) {
        constexpr double ofNextFloor = 0.5;  // metres that a slab and what is on it may take
        if (drawn.kind == ClassKind::Ceiling || drawn.kind == ClassKind::Furnishing) return false;
        const bool isRoof = drawn.kind == ClassKind::Roof;
        return isRoof || drawn.drawing.Reach().high <= floor.next + ofNextFloor;
    }

    void PutSection(std::size_t plan, const Drawn& drawn, const PlanShapes& section,
                    bool hasCurvesThere) {
        PutTag(plan, drawn);
        if (drawn.kind == ClassKind::Door && drawn.drawing.Placement()) {
            const std::optional<PlanShapes> door =
                DoorSymbol(section, *drawn.drawing.Placement(), OperationOf(drawn.element));
            if (door) return Put(plan, drawn, DrawnAs::Symbol, *door);
        }
        PlanShapes shapes = section;
        if (hasCurvesThere && !drawn.named.visits) {
            // Closed ones say again where the body is, and may not know of its openings.
            for (const PlanPath& line : drawn.drawing.Symbol().lines) {
                if (!line.closed) shapes.lines.push_back(line);
            }
        }
        if (drawn.kind == ClassKind::Stair) {  // its treads stay to be seen
            for (const PlanArea& area : shapes.areas) {
                shapes.lines.insert(shapes.lines.end(), area.begin(), area.end());
            }
            shapes.areas.clear();
        }
        Put(plan, drawn, DrawnAs::Section, shapes);
    }

    void PutBelow(std::size_t plan, const Drawn& drawn, const ComponentViews& views) {
        PlanShapes shapes = views.below;
        const PlanHeights& floor = heights[plan];
        const HeightRange& reach = drawn.drawing.Reach();
        constexpr double ofThisFloor = 0.5;  // metres: it begins here, not on the floor below
        const bool beginsHere = reach.low > plans[plan].summary.elevation - ofThisFloor;
        if (drawn.kind == ClassKind::Stair && beginsHere && !plans[plan].isRoof) {
            shapes.lines = StairMarks(views.levels, reach.high > floor.plane);
        }
        Put(plan, drawn, DrawnAs::Projection, shapes, views.belowReach.high);
    }

    void PutRoom(std::size_t plan, const Drawn& drawn, const ComponentViews& views) {
        PlanFloorSummary& summary = plans[plan].summary;
        PlanShapes shapes;
        if (const PlanShapes* const section = drawn.drawing.SectionAt(heights[plan].plane)) {
            shapes = *section;
        } else if (!views.below.IsEmpty()) {
            for (const PlanPart& part : views.below.parts) shapes.areas.push_back(part.cover);
        } else {
            shapes = drawn.drawing.Symbol();
        }
        PlanArea outline;
        for (const PlanArea& area : shapes.areas) {
            outline.insert(outline.end(), area.begin(), area.end());
        }
        summary.rooms.push_back(RoomOf(drawn.element, outline));
        PlanLabel label = {LinesOf(summary.rooms.back(), wanted.zones), std::move(outline), {}};
        block.Limits().Memory(bytesOfComponent + CornersOf(shapes) * sizeof(PlanVertex));
        if (!label.room.empty()) plans[plan].labels.push_back(std::move(label));
        Put(plan, drawn, DrawnAs::Section, shapes);
        if (wanted.zones && !shapes.IsEmpty()) {
            plans[plan].components.back().zone = summary.rooms.back().zone;
        }
    }

    void PutTag(std::size_t plan, const Drawn& drawn) {
        if (drawn.kind != ClassKind::Door && drawn.kind != ClassKind::Window) return;
        const std::string tag = TagOf(drawn.element);
        if (tag.empty()) return;
        block.Limits().Memory(bytesOfComponent + tag.size());
        const PlanExtent& body = drawn.drawing.BodyExtent();
        const PlanPoint at = {(body.low.x + body.high.x) / 2, (body.low.y + body.high.y) / 2};
        plans[plan].labels.push_back({{tag}, {}, at});
    }

    void Put(std::size_t plan, const Drawn& drawn, DrawnAs drawnAs, const PlanShapes& shapes,
             double top = 0) {
        if (shapes.IsEmpty()) return;
        const PlanComponent& named = drawn.named;
        const std::size_t added = CornersOf(shapes);
        corners[plan] += added;
        if (corners[plan] > mostCorners) ThrowTooLarge();
        const auto textBytes = named.identity.size() + named.name.size() + named.className.size();
        block.Limits().Memory(bytesOfComponent + 4 * textBytes + added * sizeof(PlanVertex));
        PlanComponent component = named;
        component.drawnAs = drawnAs;
        component.top = top;
        static_cast<PlanShapes&>(component) = shapes;
        plans[plan].components.push_back(std::move(component));
    }

    [[noreturn]] void ThrowTooLarge() const {
        throw block.ErrorAbout(Status::Damaged, "a floor whose plan has more than " +
                                                    std::to_string(mostCorners) + " corners");
    }

    OpenedBlock& block;
    PlacedRecords& records;
    WantedPlans wanted;
    std::vector<PlanFloor> plans;
    std::vector<PlanAxis> axes;
    std::optional<double> north;
    std::vector<PlanHeights> heights;   ///< by plan
    std::optional<FloorLevels> levels;  ///< of them
    std::vector<std::size_t> corners;   ///< by plan
};

}  // namespace

PlanDrawing DrawFloors(OpenedBlock& block, PlacedRecords& records, const WantedPlans& wanted,
                       const PlanStep& step) {
    FloorsDrawing drawing(block, records, wanted);
    drawing.DrawAll(step);
    return drawing.Take();
}

}  // namespace ZVSmartModel
