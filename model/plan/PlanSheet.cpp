#include "model/plan/PlanSheet.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <map>
#include <numbers>
#include <string_view>
#include <tuple>
#include <utility>

#include "model/plan/ClassStyles.h"
#include "model/plan/PlanDimensions.h"
#include "model/plan/SheetAnnotations.h"
#include "model/plan/SvgPath.h"
#include "model/plan/WallJoins.h"
#include "model/plan/XmlText.h"

namespace ZVSmartModel {

namespace {

constexpr double wantedScaleBar = 50;  // millimetres
constexpr double longestScaleBar = 70;
const char* const noteColour = "#5b6066";

std::string MetresText(double metres) {
    return metres < 1 ? SvgNumber(metres * 1000) + " mm" : SvgNumber(metres) + " m";
}

const char* WordOf(DrawnAs drawnAs) {
    switch (drawnAs) {
        case DrawnAs::Section:
            return "section";
        case DrawnAs::Symbol:
            return "symbol";
        case DrawnAs::Projection:
            return "projection";
        case DrawnAs::Overhead:
            break;
    }
    return "overhead";
}

/// A point of the paper, millimetres right of and below its upper left corner.
PlanPoint OnPaper(double x, double y) {
    return {x, -y};
}

PlanPath Rectangle(double left, double top, double width, double height) {
    return {{{OnPaper(left, top)},
             {OnPaper(left + width, top)},
             {OnPaper(left + width, top + height)},
             {OnPaper(left, top + height)}},
            true};
}

using ZoneColours = std::map<std::string, const char*>;

/// A pale colour for each zone, by the order of their names; the eighth has the first one's again.
ZoneColours ZoneColoursOf(const PlanDrawing& drawing) {
    constexpr std::array colours = {"#d5e6f5", "#fae0c8", "#d9efd3", "#ecdcf1",
                                    "#fbf0bf", "#cfeeee", "#f8d7dc"};
    ZoneColours zones;
    for (const PlanFloor& floor : drawing.floors) {
        for (const PlanComponent& component : floor.components) {
            if (!component.zone.empty()) zones.emplace(component.zone, nullptr);
        }
    }
    std::size_t next = 0;
    for (auto& [name, colour] : zones) colour = colours[next++ % colours.size()];
    return zones;
}

class Sheet {
  public:
    Sheet(const PlanDrawing& drawing, const SheetLayout& layout, Canvas& canvas)
        : drawing(drawing), layout(layout), canvas(canvas), zoneColours(ZoneColoursOf(drawing)) {}

    std::size_t Draw(const std::string& title) {
        for (const SheetPage& page : layout.pages) {
            canvas.BeginPage(page.size);
            for (const SheetCell& cell : page.cells) DrawFloor(drawing.floors[cell.floor], cell);
            canvas.SetFrame(paper);
            Write(title, sheetMargin, page.size.height - sheetMargin + 3, 4, "plan-title");
            canvas.EndPage();
        }
        return homeless;
    }

  private:
    void DrawFloor(const PlanFloor& floor, const SheetCell& cell) {
        const std::string number = "floor-" + std::to_string(cell.floor);
        canvas.BeginFloor({identifiers.Take(number), {"plan-floor"}, "", floor.summary.name, ""});
        canvas.SetFrame(paper);
        Write(floor.summary.name, cell.left, cell.top + 5, 5, "plan-heading", true);
        WriteNote(NoteOf(floor), cell.left, cell.top + 9.5);
        if (!floor.components.empty()) {
            const SheetFrame frame = layout.FrameAt(cell.left, cell.top);
            canvas.SetFrame(frame);
            DrawComponents(floor, number);
            DrawAxes(drawing.axes, layout, frame, canvas);
            DrawDimensions(floor, drawing.axes, layout, frame, canvas);
            homeless += WriteLabels(floor, layout, frame, canvas);
            canvas.SetFrame(paper);
            DrawNorthArrow(cell.left + layout.cellWidth - 6, cell.top + 5);
            DrawScaleBar(cell.left, cell.top + layout.cellHeight - footHeight + 6);
        }
        canvas.EndFloor();
    }

    static std::string NoteOf(const PlanFloor& floor) {
        const double elevation = floor.summary.elevation;
        std::string note = elevation < 0 ? "elevation " : "elevation +";
        note += SvgNumber(elevation) + " m";
        if (floor.components.empty()) return note + ", nothing to draw";
        if (floor.isRoof) return "seen from above";
        const double cut = floor.summary.plane - elevation;
        return note + ", cut at " + (cut < 0 ? "" : "+") + SvgNumber(cut) + " m";
    }

    /// What is drawn first comes first: it is covered by what follows.
    static auto Order(const PlanFloor& floor, const PlanComponent& component) {
        const ClassStyle& style = StyleOfClass(component.className);
        const bool isRoom = style.kind == ClassKind::Room;
        constexpr double overFloor = 0.1;  // metres: a room hides the slab and no furniture
        const double top = isRoom ? floor.summary.elevation + overFloor : component.top;
        int phase = 4;
        if (component.drawnAs == DrawnAs::Projection || isRoom) phase = 0;
        if (component.drawnAs == DrawnAs::Overhead) phase = 1;
        if (component.drawnAs == DrawnAs::Section && !isRoom) phase = 2;
        if (component.drawnAs == DrawnAs::Symbol && style.kind != ClassKind::Lines) phase = 3;
        const long long level = phase == 0 ? std::llround(top * 100) : 0;
        return std::tuple(phase, level, style.layer, std::string_view(component.className));
    }

    static bool IsJoined(const PlanComponent& component) {
        return component.drawnAs == DrawnAs::Section && component.lines.empty() &&
               StyleOfClass(component.className).kind == ClassKind::Wall;
    }

    void DrawComponents(const PlanFloor& floor, const std::string& number) {
        std::vector<const PlanComponent*> ordered;
        for (const PlanComponent& component : floor.components) ordered.push_back(&component);
        std::stable_sort(ordered.begin(), ordered.end(), [&](const auto* a, const auto* b) {
            return Order(floor, *a) < Order(floor, *b);
        });
        const PlanComponent* last = nullptr;
        bool isJoined = false;
        for (const PlanComponent* component : ordered) {
            const bool isOther = last == nullptr || last->className != component->className ||
                                 last->drawnAs != component->drawnAs;
            if (isOther && last != nullptr) canvas.EndLayer();
            const bool isBehindCuts = component->drawnAs == DrawnAs::Symbol &&
                                      StyleOfClass(component->className).layer > 7;
            if (isBehindCuts && !isJoined) {
                DrawJoins(ordered);
                isJoined = true;
            }
            if (isOther) BeginLayer(*component, number);
            DrawComponent(*component);
            last = component;
        }
        if (last != nullptr) canvas.EndLayer();
        if (!isJoined) DrawJoins(ordered);
    }

    /// The outlines of walls of one class and material as one.
    void DrawJoins(const std::vector<const PlanComponent*>& components) {
        std::map<std::pair<std::string, std::string>, std::vector<const PlanArea*>> materials;
        for (const PlanComponent* component : components) {
            if (!IsJoined(*component)) continue;
            const char* const fill = StyleOfClass(component->className).fill;
            auto& areas = materials[{fill, component->material}];
            for (const PlanArea& area : component->areas) areas.push_back(&area);
        }
        for (const auto& [material, areas] : materials) {
            canvas.BeginLayer({"", {"plan-joined"}, "", "", ""}, {"none", inkColour, 0.25});
            canvas.Draw(JoinedOutline(areas));
            canvas.EndLayer();
        }
    }

    /// Three quarters of the way to white.
    static std::string Pale(const std::string& colour) {
        constexpr char digits[] = "0123456789abcdef";
        if (colour.size() != 7) return colour;
        std::string pale = "#";
        for (std::size_t i = 1; i < 7; i += 2) {
            const int value = 255 - (255 - std::stoi(colour.substr(i, 2), nullptr, 16)) / 4;
            pale += digits[value / 16];
            pale += digits[value % 16];
        }
        return pale;
    }

    static Ink InkOf(const PlanComponent& component) {
        const ClassStyle& style = StyleOfClass(component.className);
        constexpr double thin = 0.13;
        if (IsJoined(component)) return {style.fill, style.fill, 0.05};
        if (component.drawnAs == DrawnAs::Overhead) return {"none", style.stroke, thin, true};
        if (component.drawnAs == DrawnAs::Projection) {
            const bool isDark = style.kind == ClassKind::Wall;  // dark is what is cut
            return {isDark ? "#f3f3f2" : Pale(style.fill), style.stroke, thin, false, true};
        }
        if (component.drawnAs == DrawnAs::Symbol)
            return {"#ffffff", style.stroke, style.strokeWidth};
        return {style.fill, style.stroke, style.strokeWidth};
    }

    void BeginLayer(const PlanComponent& first, const std::string& number) {
        const char* const word = WordOf(first.drawnAs);
        const std::string id = number + '-' + first.className + '-' + word;
        canvas.BeginLayer({identifiers.Take(id), {"plan-layer", first.className, word}, "", "", ""},
                          InkOf(first));
    }

    void DrawComponent(const PlanComponent& component) {
        canvas.BeginElement({identifiers.Take(component.identity),
                             {component.className},
                             component.identity,
                             component.name,
                             WordOf(component.drawnAs)});
        Ink ink = InkOf(component);
        const auto zone = zoneColours.find(component.zone);
        const bool hasZone = zone != zoneColours.end();
        if (hasZone) ink.fill = zone->second;
        for (const PlanArea& area : component.areas) {
            if (hasZone) {
                canvas.Draw(area, ink);
            } else {
                canvas.Draw(area);
            }
        }
        const std::string stroke = ink.stroke;
        for (const PlanPart& part : component.parts) {
            ink.stroke = "none";
            canvas.Draw(part.cover, ink);
            if (!part.edges.empty()) canvas.Draw(part.edges, {"none", stroke, ink.width});
        }
        const Ink thin = {"none", stroke, 0.13, ink.isDashed};
        if (!component.lines.empty()) canvas.Draw(component.lines, thin);
        canvas.EndElement();
    }

    /// A needle in a circle, which points where the model's true north is.
    void DrawNorthArrow(double x, double y) {
        if (!drawing.north) return;
        const double radius = 4.5;
        const auto at = [&](double fraction, double turned) {
            const double angle = *drawing.north + turned;
            return OnPaper(x + fraction * radius * std::cos(angle),
                           y - fraction * radius * std::sin(angle));
        };
        constexpr double half = std::numbers::pi;
        const PlanPath circle = {{{OnPaper(x - radius, y), 1}, {OnPaper(x + radius, y), 1}}, true};
        const PlanPath needle = {{{at(1, 0)}, {at(1, 2.6)}, {at(0.4, half)}, {at(1, -2.6)}}, true};
        canvas.BeginLayer({"", {"plan-north"}, "", "", ""}, {"none", inkColour, 0.18});
        canvas.Draw({circle});
        canvas.Draw({needle}, {inkColour, inkColour, 0.18});
        const PlanPoint end = at(1.45, 0);
        canvas.Write(
            {"N", {end.x, end.y - 1}, 3, TextAnchor::Middle, 0, true, inkColour, "plan-note"});
        canvas.EndLayer();
    }

    /// Two halves, one black, as on paper plans.
    void DrawScaleBar(double left, double top) {
        double length = RoundNumber(wantedScaleBar * layout.denominator / 1000);
        if (layout.OnPaper(length) > longestScaleBar) length = RoundNumber(length / 2.5);
        const double half = layout.OnPaper(length) / 2;
        canvas.BeginLayer({"", {"plan-scale"}, "", "", ""}, {"none", inkColour, 0.25});
        canvas.Draw({Rectangle(left, top, half, 1.5)}, {inkColour, "none"});
        canvas.Draw({Rectangle(left, top, 2 * half, 1.5)});
        WriteNote("0", left, top + 5);
        WriteNote(MetresText(length), left + 2 * half - 2, top + 5);
        WriteNote("1:" + SvgNumber(layout.denominator), left + 2 * half + 6, top + 1.6);
        canvas.EndLayer();
    }

    void Write(const std::string& text, double x, double y, double size, const char* kind,
               bool isBold = false) {
        canvas.Write({text, OnPaper(x, y), size, TextAnchor::Start, 0, isBold, inkColour, kind});
    }
    void WriteNote(const std::string& text, double x, double y) {
        canvas.Write(
            {text, OnPaper(x, y), 3, TextAnchor::Start, 0, false, noteColour, "plan-note"});
    }

    static constexpr SheetFrame paper = {0, 0, 0, 0, 1, false};

    const PlanDrawing& drawing;
    const SheetLayout& layout;
    Canvas& canvas;
    ZoneColours zoneColours;
    UniqueIdentifiers identifiers;
    std::size_t homeless = 0;  ///< labels
};

}  // namespace

PlanExtent ExtentOf(const PlanDrawing& drawing) {
    PlanExtent extent;
    for (const PlanFloor& floor : drawing.floors) {
        extent.Add(ExtentOf(floor));
        const std::optional<WallBox> walls = WallBoxOf(floor);
        if (!walls || walls->angle == 0) continue;
        // Dimensions stand around it.
        const PlanPoint &low = walls->extent.low, &high = walls->extent.high;
        for (const double x : {low.x, high.x}) {
            for (const double y : {low.y, high.y}) extent.Add(walls->InModel({x, y}));
        }
    }
    return extent;
}

std::size_t DrawSheet(const PlanDrawing& drawing, const std::string& title,
                      const SheetLayout& layout, Canvas& canvas) {
    return Sheet(drawing, layout, canvas).Draw(title);
}

}  // namespace ZVSmartModel
