#include "model/plan/SvgSheet.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "model/plan/ClassStyles.h"
#include "model/plan/PlanExtent.h"
#include "model/plan/SvgPath.h"
#include "model/plan/XmlText.h"

namespace ZVSmartModel {

namespace {

// Millimetres on paper.
constexpr double margin = 12;
constexpr double headingHeight = 12;
constexpr double footHeight = 14;
constexpr double smallestCell = 90;  ///< leaves room for the heading and the scale bar
constexpr double wantedDrawing = 380;
constexpr double wantedScaleBar = 50;

/// The smallest of 1, 2, 5, 10, 20, ... that is not below `wanted`.
double RoundNumber(double wanted) {
    double power = std::pow(10, std::floor(std::log10(std::max(wanted, 1e-3))));
    for (const double step : {1.0, 2.0, 5.0}) {
        if (step * power >= wanted * (1 - 1e-9)) return step * power;
    }
    return 10 * power;
}

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
            break;
    }
    return "projection";
}

/// The frame of one floor on the sheet.
struct Cell {
    PlanExtent extent;
    double left = 0, top = 0, width = 0, height = 0;
};

class Sheet {
  public:
    Sheet(const std::string& title, const std::vector<PlanFloor>& floors) : floors(floors) {
        for (const PlanFloor& floor : floors) cells.push_back({ExtentOf(floor)});
        double largest = 0;
        for (const Cell& cell : cells) {
            largest = std::max({largest, cell.extent.Width(), cell.extent.Height()});
        }
        denominator = RoundNumber(largest * 1000 / wantedDrawing);
        if (largest == 0) denominator = 100;
        LayOut();
        WriteHead(title);
        for (std::size_t i = 0; i < floors.size(); ++i) WriteFloor(floors[i], cells[i]);
        out += "</svg>\n";
    }

    std::string Take() { return std::move(out); }

  private:
    double OnPaper(double metres) const { return metres * 1000 / denominator; }

    /// Rows of about as many cells as there are rows, from the lowest floor on.
    void LayOut() {
        const auto columns = static_cast<std::size_t>(
            std::ceil(std::sqrt(static_cast<double>(std::max<std::size_t>(cells.size(), 1)))));
        double left = margin, top = margin, rowHeight = 0;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            if (i % columns == 0 && i != 0) {
                top += rowHeight + margin;
                left = margin;
                rowHeight = 0;
            }
            Cell& cell = cells[i];
            cell.left = left;
            cell.top = top;
            cell.width = std::max(OnPaper(cell.extent.Width()), smallestCell);
            cell.height = OnPaper(cell.extent.Height()) + headingHeight + footHeight;
            left += cell.width + margin;
            rowHeight = std::max(rowHeight, cell.height);
            width = std::max(width, left);
            height = std::max(height, top + cell.height + margin);
        }
    }

    void WriteHead(const std::string& title) {
        const std::string w = SvgNumber(width), h = SvgNumber(height);
        out +=
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\" width=\"" +
            w + "mm\" height=\"" + h + "mm\" viewBox=\"0 0 " + w + ' ' + h + "\">\n<title>" +
            EscapeXml(title) + "</title>\n";
        WriteStyles();
        out += R"(<rect class="plan-paper" width=")" + w + "\" height=\"" + h + "\"/>\n";
    }

    void WriteStyles() {
        out +=
            "<style>\n"
            ".plan-paper { fill: #ffffff; }\n"
            ".plan-floor path { stroke-linejoin: round; stroke-linecap: round; }\n"
            ".plan-floor .line { fill: none; stroke-width: 0.13; }\n"
            "text { font-family: \"DejaVu Sans\", Helvetica, Arial, sans-serif; "
            "fill: #26292d; }\n"
            ".plan-heading { font-size: 5px; font-weight: bold; }\n"
            ".plan-note { font-size: 3px; fill: #5b6066; }\n"
            ".plan-scale path { fill: none; stroke: #26292d; stroke-width: 0.25; }\n"
            ".plan-scale rect { fill: #26292d; }\n";
        std::set<std::string> classes;
        for (const PlanFloor& floor : floors) {
            for (const PlanComponent& component : floor.components) {
                if (classes.insert(Identifier(component.className)).second) {
                    WriteStyle(component.className);
                }
            }
        }
        out += "</style>\n";
    }

    void WriteStyle(const std::string& className) {
        const ClassStyle& style = StyleOfClass(className);
        out += '.';
        out += Identifier(className);
        out += std::string(" { fill: ") + style.fill +
               "; fill-rule: evenodd; stroke: " + style.stroke +
               "; stroke-width: " + SvgNumber(style.strokeWidth) + "; }\n";
    }

    void WriteFloor(const PlanFloor& floor, const Cell& cell) {
        out += "<g class=\"plan-floor\">\n";
        WriteText("plan-heading", cell.left, cell.top + 5, floor.summary.name);
        WriteText("plan-note", cell.left, cell.top + 9.5, NoteOf(floor));
        if (floor.components.empty()) {
            out += "</g>\n";
            return;
        }
        const SvgFrame frame = {cell.left, cell.top + headingHeight, cell.extent.low.x,
                                cell.extent.high.y, 1000 / denominator};
        for (const PlanComponent* component : InLayers(floor)) WriteComponent(*component, frame);
        WriteScaleBar(cell.left, cell.top + cell.height - footHeight + 6);
        out += "</g>\n";
    }

    static std::string NoteOf(const PlanFloor& floor) {
        const double elevation = floor.summary.elevation;
        std::string note = elevation < 0 ? "elevation " : "elevation +";
        note += SvgNumber(elevation);
        note += " m";
        if (floor.components.empty()) return note + ", nothing to draw";
        const double cut = floor.summary.plane - elevation;
        return note + ", cut at " + (cut < 0 ? "" : "+") + SvgNumber(cut) + " m";
    }

    static std::vector<const PlanComponent*> InLayers(const PlanFloor& floor) {
        std::vector<const PlanComponent*> ordered;
        for (const PlanComponent& component : floor.components) ordered.push_back(&component);
        std::stable_sort(ordered.begin(), ordered.end(), [](const auto* a, const auto* b) {
            return StyleOfClass(a->className).layer < StyleOfClass(b->className).layer;
        });
        return ordered;
    }

    void WriteComponent(const PlanComponent& component, const SvgFrame& frame) {
        const std::string id = identifiers.Take(component.identity);
        out += "<g id=\"" + id + "\" class=\"" + Identifier(component.className) +
               "\" data-guid=\"" + EscapeXml(component.identity) + "\" data-drawn=\"" +
               WordOf(component.drawnAs) + '"';
        out += "><title>" + EscapeXml(component.name) + "</title>\n";
        for (const PlanArea& area : component.areas) {
            out += "<path d=\"" + SvgPathData(area, frame) + "\"/>\n";
        }
        if (!component.lines.empty()) {
            out += R"(<path class="line" d=")" + SvgPathData(component.lines, frame) + "\"/>\n";
        }
        out += "</g>\n";
    }

    /// Two halves, one black, as on paper plans.
    void WriteScaleBar(double left, double top) {
        double length = RoundNumber(wantedScaleBar * denominator / 1000);
        if (OnPaper(length) > smallestCell - 20) length = RoundNumber(length / 2.5);
        const double half = OnPaper(length) / 2;
        const auto number = [](double value) { return SvgNumber(value); };
        out += R"(<g class="plan-scale"><rect x=")" + number(left) + "\" y=\"" + number(top) +
               "\" width=\"" + number(half) + R"(" height="1.5"/><path d="M)" + number(left) + ' ' +
               number(top) + 'h' + number(2 * half) + "v1.5h" + number(-2 * half) + "z\"/>";
        WriteText("plan-note", left, top + 5, "0");
        WriteText("plan-note", left + 2 * half - 2, top + 5, MetresText(length));
        WriteText("plan-note", left + 2 * half + 6, top + 1.6, "1:" + SvgNumber(denominator));
        out += "</g>\n";
    }

    void WriteText(const char* className, double x, double y, const std::string& text) {
        out += std::string("<text class=\"") + className + "\" x=\"" + SvgNumber(x) + "\" y=\"" +
               SvgNumber(y) + "\">" + EscapeXml(text) + "</text>\n";
    }

    const std::vector<PlanFloor>& floors;
    std::vector<Cell> cells;
    double denominator = 100;  ///< of the scale, 1 : denominator
    double width = margin * 2;
    double height = margin * 2;
    UniqueIdentifiers identifiers;
    std::string out;
};

}  // namespace

std::string SvgSheet(const std::string& title, const std::vector<PlanFloor>& floors) {
    return Sheet(title, floors).Take();
}

}  // namespace ZVSmartModel
