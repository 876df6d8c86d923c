#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "model/plan/Canvas.h"
#include "model/plan/PlanExtent.h"

namespace ZVSmartModel {

/// Room around a drawing, in millimetres of paper, for what is drawn outside the building.
struct SheetApron {
    double left = 0, top = 0, right = 0, bottom = 0;
};

/// Where one floor is drawn: its frame's upper left corner on the page, in millimetres.
struct SheetCell {
    std::size_t floor;
    double left, top;
};

struct SheetPage {
    PageSize size;
    std::vector<SheetCell> cells;
};

/// How floors lie on pages. All cells show the same extent in one scale, so that floors lie on
/// each other.
struct SheetLayout {
    PlanExtent extent;
    SheetApron apron;
    double denominator = 100;  ///< of the scale, 1 : denominator
    double cellWidth = 0;      ///< millimetres
    double cellHeight = 0;     ///< with heading and foot
    std::vector<SheetPage> pages;

    double OnPaper(double metres) const { return metres * 1000 / denominator; }
    /// What a cell's frame shows at `left`, `top`.
    SheetFrame FrameAt(double left, double top) const;
};

// Millimetres of a cell.
constexpr double sheetMargin = 12;
constexpr double headingHeight = 12;
constexpr double footHeight = 14;
constexpr double titleHeight = 8;  ///< of a page, below its cells

/// Lays `floors` floors out. Without a paper's name all are on one page as large as it takes, in
/// rows, in the scale 1 : `denominator` or, where that is 0, in a round one in which the largest
/// side takes up to 380 mm. With it each has a page of this paper, lying or upright, in the
/// largest usual scale that fits unless one is given. Throws Error, Usage, for a paper that is not
/// A0 to A4, a scale that is no number above 0, and one in which the floors do not fit; what would
/// fit is said.
SheetLayout LayOutSheet(std::size_t floors, const PlanExtent& extent, const SheetApron& apron,
                        const std::string& paper, double denominator);

/// The smallest of 1, 2, 5, 10, 20, ... that is not below `wanted`.
double RoundNumber(double wanted);

}  // namespace ZVSmartModel
