#include "model/plan/FloorPlan.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <map>
#include <optional>
#include <string>

#include "model/element/RecordNames.h"
#include "model/element/Utf8.h"
#include "model/plan/ComponentDrawing.h"

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

std::string NameOf(const SZVLGZvgComp& comp) {
    for (const auto& [name, value] : comp.compProperties) {
        if (name == L"Element.Name" && !value.empty()) return ToUtf8(value);
    }
    return comp.classLevel3Name.empty() ? KeyText(comp.compGuidName) : ToUtf8(comp.classLevel3Name);
}

std::size_t CornersOf(const PlanShapes& shapes) {
    std::size_t corners = 0;
    for (const PlanArea& area : shapes.areas) {
        for (const PlanPath& path : area) corners += path.vertices.size();
    }
    for (const PlanPath& path : shapes.lines) corners += path.vertices.size();
    return corners;
}

/// Draws all wanted floors of a block.
class FloorsDrawing {
  public:
    FloorsDrawing(OpenedBlock& block, PlacedRecords& records,
                  std::pair<unsigned int, unsigned int> wanted, double cutHeight)
        : block(block), records(records), wanted(wanted) {
        for (unsigned int floor = wanted.first; floor < wanted.second; ++floor) {
            const auto add = [&] { AddFloor(floor, cutHeight); };
            if (!block.Within("floor " + std::to_string(floor), add)) break;
        }
        for (const auto& [height, plan] : open) {
            if (openHeights.empty() || openHeights.back() < height) openHeights.push_back(height);
        }
        corners.resize(plans.size());
    }

    void DrawAll(const PlanStep& step) {
        const unsigned int count = block.Reader().GetFloorNum();
        for (unsigned int floor = 0; floor < count; ++floor) {
            const auto draw = [&] { DrawFiledUnder(floor, [&] { step(floor, count); }); };
            if (!block.Within("floor " + std::to_string(floor), draw)) return;
        }
    }

    PlanDrawing Take() { return {std::move(plans), north}; }

  private:
    static constexpr std::size_t notWanted = static_cast<std::size_t>(-1);

    void AddFloor(unsigned int floor, double cutHeight) {
        PlanFloor plan;
        const std::wstring name = block.FloorName(floor);
        const std::optional<double> elevation = ElevationOf(block.FloorData(floor).first);
        plan.summary.name = ToUtf8(name);
        plan.summary.elevation = elevation.value_or(0);
        plan.summary.plane = plan.summary.elevation + cutHeight;
        block.Limits().Memory(bytesOfFloor + 2 * plan.summary.name.size());
        if (elevation && name != unassignedFloorName) {
            open.emplace(plan.summary.plane, plans.size());
        }
        plans.push_back(std::move(plan));
    }

    void DrawFiledUnder(unsigned int floor, const std::function<void()>& atEachStep) {
        const bool isWanted = floor >= wanted.first && floor - wanted.first < plans.size();
        const std::size_t own = isWanted ? floor - wanted.first : notWanted;
        std::vector<double> ownHeight;
        if (isWanted) ownHeight.push_back(plans[own].summary.plane);
        std::vector<double> allHeights;
        std::set_union(openHeights.begin(), openHeights.end(), ownHeight.begin(), ownHeight.end(),
                       std::back_inserter(allHeights));
        block.ForEachComp(floor, [&](const SZVLGCompIndex& index, const SZVLGZvgComp& comp) {
            atEachStep();
            if (!north) north = NorthOf(comp);
            const bool isRoom = IsRoomClass(comp.classLevel2Name);
            if (isRoom && !isWanted) return;
            Draw(index, comp, own, isRoom ? ownHeight : allHeights, atEachStep);
        });
    }

    void Draw(const SZVLGCompIndex& index, const SZVLGZvgComp& comp, std::size_t own,
              const std::vector<double>& heights, const std::function<void()>& atEachStep) {
        ComponentDrawing drawing(heights, block.Limits());
        std::size_t charged = 0;  // corners
        records.Visit(comp, [&](const PlacedRecord& placed) {
            atEachStep();
            drawing.Add(placed);
            if (drawing.Corners() > mostCorners) ThrowTooLarge();
            block.Limits().Memory((drawing.Corners() - charged) * bytesOfCorner);
            charged = drawing.Corners();
        });
        PlanComponent named;
        named.index = index;
        named.identity = KeyText(comp.compGuidName);
        named.name = NameOf(comp);
        named.className = ToUtf8(comp.classLevel2Name);
        const std::map<double, PlanShapes> sections = drawing.TakeSections();
        if (own != notWanted) PutOnOwn(own, named, drawing, sections);
        named.visits = true;
        for (const double height : heights) {
            if (!drawing.Reach().IsCutAt(height) || IsRoomClass(comp.classLevel2Name)) continue;
            const auto section = sections.find(height);
            const auto [first, end] = open.equal_range(height);
            for (auto at = first; at != end; ++at) {
                const std::size_t plan = at->second;
                if (plan == own) continue;
                PlanFloorSummary& summary = plans[plan].summary;
                if (section == sections.end()) {
                    ++summary.leftGaps;
                } else {
                    ++summary.cut;
                    ++summary.visiting;
                    Put(plan, named, DrawnAs::Section, section->second);
                }
            }
        }
    }

    /// On the floor that the component is filed under its own outlines and curves count as well.
    void PutOnOwn(std::size_t own, const PlanComponent& named, const ComponentDrawing& drawing,
                  const std::map<double, PlanShapes>& sections) {
        PlanFloorSummary& summary = plans[own].summary;
        const HeightRange& reach = drawing.Reach();
        const PlanShapes& symbol = drawing.Symbol();
        const auto section = sections.find(summary.plane);
        if (symbol.areas.empty() && section != sections.end()) {
            PlanShapes shapes = section->second;
            shapes.lines.insert(shapes.lines.end(), symbol.lines.begin(), symbol.lines.end());
            ++summary.cut;
            return Put(own, named, DrawnAs::Section, shapes);
        }
        const bool isBelow = !reach.IsEmpty() && reach.high < summary.plane;
        if (!symbol.IsEmpty()) {
            ++(isBelow ? summary.below : summary.symbols);
            return Put(own, named, isBelow ? DrawnAs::Projection : DrawnAs::Symbol, symbol);
        }
        if (reach.IsEmpty()) {
            ++summary.leftEmpty;
        } else if (isBelow) {
            ++summary.leftBelow;
        } else if (reach.IsCutAt(summary.plane)) {
            ++summary.leftGaps;
        } else {
            ++summary.leftAbove;
        }
    }

    void Put(std::size_t plan, const PlanComponent& named, DrawnAs drawnAs,
             const PlanShapes& shapes) {
        const std::size_t added = CornersOf(shapes);
        corners[plan] += added;
        if (corners[plan] > mostCorners) ThrowTooLarge();
        const auto textBytes = named.identity.size() + named.name.size() + named.className.size();
        block.Limits().Memory(bytesOfComponent + 4 * textBytes);
        // Its drawing was charged once, and may stand on several floors.
        if (drawnAs == DrawnAs::Section) block.Limits().Memory(added * sizeof(PlanVertex));
        PlanComponent component = named;
        component.drawnAs = drawnAs;
        static_cast<PlanShapes&>(component) = shapes;
        plans[plan].components.push_back(std::move(component));
    }

    [[noreturn]] void ThrowTooLarge() const {
        throw block.ErrorAbout(Status::Damaged, "a floor whose plan has more than " +
                                                    std::to_string(mostCorners) + " corners");
    }

    OpenedBlock& block;
    PlacedRecords& records;
    std::pair<unsigned int, unsigned int> wanted;
    std::vector<PlanFloor> plans;
    std::optional<double> north;
    std::vector<std::size_t> corners;         ///< by plan
    std::multimap<double, std::size_t> open;  ///< plans that cut whatever reaches their planes
    std::vector<double> openHeights;          ///< of these, ascending, none twice
};

}  // namespace

PlanDrawing DrawFloors(OpenedBlock& block, PlacedRecords& records,
                       std::pair<unsigned int, unsigned int> wanted, double cutHeight,
                       const PlanStep& step) {
    FloorsDrawing drawing(block, records, wanted, cutHeight);
    drawing.DrawAll(step);
    return drawing.Take();
}

}  // namespace ZVSmartModel
