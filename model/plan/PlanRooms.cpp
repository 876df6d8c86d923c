#include "model/plan/PlanRooms.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "model/plan/Arc.h"
#include "model/plan/LabelSpots.h"

namespace ZVSmartModel {

namespace {

constexpr std::size_t longestTag = 12;  // bytes

std::string ValueOf(const Element& element, const std::string& name,
                    const std::string& set = "Element") {
    const Property* property = element.Find(set, name);
    return property != nullptr ? property->value : "";
}

/// How much a property's name says that it is the room's area; 0 where it is not.
int RankOf(const Property& property) {
    constexpr const char* names[] = {"Area",           "GSA BIM Area",
                                     "NetPlannedArea", "GrossPlannedArea",
                                     "GrossFloorArea", "NetFloorArea"};
    const auto* const found = std::find(std::begin(names), std::end(names), property.name);
    return found == std::end(names) ? 0 : static_cast<int>(found - std::begin(names)) + 1;
}

double SquareMetres(const Property& property, double number) {
    if (property.unit == "mm2" || property.unit == "mm²") return number * 1e-6;
    if (property.unit == "cm2" || property.unit == "cm²") return number * 1e-4;
    if (property.unit == "ft2" || property.unit == "ft²") return number * 0.09290304;
    return number;
}

std::optional<double> StatedArea(const Element& element) {
    std::optional<double> area;
    int rank = 0;
    for (const Property& property : element.properties) {
        const int itsRank = RankOf(property);
        const std::optional<double> number = property.Number();
        if (itsRank <= rank || !number || !(*number > 0)) continue;
        rank = itsRank;
        area = SquareMetres(property, *number);
    }
    return area;
}

}  // namespace

PlanRoom RoomOf(const Element& element, const PlanArea& outline) {
    PlanRoom room;
    room.guid = element.guid;
    room.number = element.name;
    room.name = ValueOf(element, "LongName");
    if (room.name == room.number) room.number.clear();
    room.zone = ValueOf(element, "Name", "Zone");
    room.stated = StatedArea(element);
    // By the even-odd rule: what lies in an odd number of others is a hole.
    double area = 0;
    for (const PlanPath& path : outline) {
        const auto holds = [&](const PlanPath& other) {
            return &other != &path && IsInside({other}, path.vertices.front().point);
        };
        const auto around = std::count_if(outline.begin(), outline.end(), holds);
        area += std::fabs(AreaOf(path)) * (around % 2 == 0 ? 1 : -1);
    }
    if (area > 0) room.measured = area;
    return room;
}

std::vector<std::string> LinesOf(const PlanRoom& room, bool zones) {
    std::vector<std::string> lines;
    if (!room.name.empty()) lines.push_back(room.name);
    if (!room.number.empty()) lines.push_back(room.number);
    if (const std::optional<double> area = room.stated ? room.stated : room.measured) {
        const long long hundredths = std::llround(*area * 100);
        const std::string rest = std::to_string(hundredths % 100);
        lines.push_back(std::to_string(hundredths / 100) + (rest.size() < 2 ? ".0" : ".") + rest +
                        " m²");
    }
    if (zones && !room.zone.empty()) lines.push_back(room.zone);
    return lines;
}

std::string TagOf(const Element& element) {
    for (const Property& property : element.properties) {
        if (property.name == "Mark" && !property.value.empty()) return property.value;
    }
    if (!element.name.empty() && element.name.size() <= longestTag) return element.name;
    const std::string tag = ValueOf(element, "Tag");
    return tag.size() <= longestTag ? tag : "";
}

}  // namespace ZVSmartModel
