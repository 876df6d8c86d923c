#include "model/plan/SheetLayout.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "ZVSmartModel/Error.h"
#include "model/plan/SvgPath.h"

namespace ZVSmartModel {

namespace {

constexpr double smallestCell = 90;  // leaves room for the heading and the scale bar
constexpr double wantedDrawing = 380;
constexpr double largestScale = 1e7;

/// ISO 216, upright.
PageSize PaperSize(const std::string& name) {
    constexpr PageSize sizes[] = {{841, 1189}, {594, 841}, {420, 594}, {297, 420}, {210, 297}};
    const bool isKnown =
        name.size() == 2 && (name[0] == 'A' || name[0] == 'a') && name[1] >= '0' && name[1] <= '4';
    if (!isKnown) throw Error(Status::Usage, name + ": the paper must be A0, A1, A2, A3 or A4");
    return sizes[name[1] - '0'];
}

void SizeCells(SheetLayout& layout) {
    const SheetApron& apron = layout.apron;
    const double wide = layout.OnPaper(layout.extent.Width()) + apron.left + apron.right;
    const double high = layout.OnPaper(layout.extent.Height()) + apron.top + apron.bottom;
    layout.cellWidth = std::max(wide, smallestCell);
    layout.cellHeight = high + headingHeight + footHeight;
}

bool Fits(const SheetLayout& layout, const PageSize& paper) {
    return layout.cellWidth <= paper.width - 2 * sheetMargin &&
           layout.cellHeight <= paper.height - 2 * sheetMargin - titleHeight;
}

/// The paper as it must lie for the floors in the layout's scale; none where they do not fit.
std::optional<PageSize> Laid(SheetLayout& layout, const PageSize& upright) {
    SizeCells(layout);
    const PageSize lying = {upright.height, upright.width};
    if (Fits(layout, lying)) return lying;
    return Fits(layout, upright) ? std::optional(upright) : std::nullopt;
}

/// 1, 2, 2.5 and 5 times the powers of ten, without 2.5 itself.
std::optional<PageSize> FitScale(SheetLayout& layout, const PageSize& upright) {
    double power = 1;
    while (power <= largestScale) {
        for (const double step : {1.0, 2.0, 2.5, 5.0}) {
            layout.denominator = step * power;
            if (layout.denominator == 2.5) continue;
            if (const std::optional<PageSize> paper = Laid(layout, upright)) return paper;
        }
        power *= 10;
    }
    return std::nullopt;
}

void LayOutPages(SheetLayout& layout, std::size_t floors, const std::string& paperName,
                 double denominator) {
    const PageSize upright = PaperSize(paperName);
    layout.denominator = denominator;
    const bool isGiven = denominator > 0;
    std::optional<PageSize> paper = isGiven ? Laid(layout, upright) : FitScale(layout, upright);
    if (!paper) {
        std::string reason = "the floors do not fit " + paperName;
        if (isGiven) reason += " at 1:" + SvgNumber(denominator);
        if (isGiven && FitScale(layout, upright)) {
            reason += "; 1:" + SvgNumber(layout.denominator) + " does";
        }
        throw Error(Status::Usage, reason);
    }
    for (std::size_t i = 0; i < floors; ++i) {
        const double room = paper->height - 2 * sheetMargin - titleHeight - layout.cellHeight;
        const double left = std::max(sheetMargin, (paper->width - layout.cellWidth) / 2);
        layout.pages.push_back({*paper, {{i, left, sheetMargin + room / 2}}});
    }
    if (floors == 0) layout.pages.push_back({*paper, {}});
}

/// Rows of about as many cells as there are rows, from the lowest floor on.
void LayOutRows(SheetLayout& layout, std::size_t floors) {
    SizeCells(layout);
    const auto columns = static_cast<std::size_t>(
        std::ceil(std::sqrt(static_cast<double>(std::max<std::size_t>(floors, 1)))));
    SheetPage page;
    for (std::size_t i = 0; i < floors; ++i) {
        const auto column = static_cast<double>(i % columns);
        const std::size_t above = i / columns;
        const auto row = static_cast<double>(above);
        page.cells.push_back({i, sheetMargin + column * (layout.cellWidth + sheetMargin),
                              sheetMargin + row * (layout.cellHeight + sheetMargin)});
    }
    const std::size_t rows = (floors + columns - 1) / columns;
    const auto used = static_cast<double>(std::min(columns, floors));
    page.size.width = sheetMargin + used * (layout.cellWidth + sheetMargin);
    page.size.height = sheetMargin + static_cast<double>(rows) * (layout.cellHeight + sheetMargin);
    page.size.width = std::max(page.size.width, smallestCell + 2 * sheetMargin);
    page.size.height += titleHeight;
    layout.pages.push_back(std::move(page));
}

}  // namespace

SheetFrame SheetLayout::FrameAt(double left, double top) const {
    return {left + apron.left, top + headingHeight + apron.top, extent.low.x, extent.high.y,
            1000 / denominator};
}

SheetLayout LayOutSheet(std::size_t floors, const PlanExtent& extent, const SheetApron& apron,
                        const std::string& paper, double denominator) {
    if (!std::isfinite(denominator) || denominator < 0 || denominator > largestScale) {
        throw Error(Status::Usage, "the scale is no number above 0");
    }
    SheetLayout layout;
    layout.extent = extent;
    layout.apron = apron;
    if (!paper.empty()) {
        LayOutPages(layout, floors, paper, denominator);
        return layout;
    }
    const double largest = std::max(extent.Width(), extent.Height());
    layout.denominator = RoundNumber(largest * 1000 / wantedDrawing);
    if (largest == 0) layout.denominator = 100;
    if (denominator > 0) layout.denominator = denominator;
    LayOutRows(layout, floors);
    return layout;
}

double RoundNumber(double wanted) {
    const double power = std::pow(10, std::floor(std::log10(std::max(wanted, 1e-3))));
    for (const double step : {1.0, 2.0, 5.0}) {
        if (step * power >= wanted * (1 - 1e-9)) return step * power;
    }
    return 10 * power;
}

}  // namespace ZVSmartModel
