#pragma once

#include <vector>

#include "model/import/ifc/SolidLines.h"

namespace ZVSmartModel {

using BooleanOperation = carve::csg::CSG::OP;

/// Knows what union, intersection or difference (A without B) of two solids should be without
/// making it: along lines through both, and by volume. Made once for all that is tried.
class BooleanCheck {
  public:
    BooleanCheck(const Solid& a, const Solid& b, BooleanOperation operation);

    /// Whether `result`, which is closed, holds no skin of nothing between two faces, has a volume
    /// that can be, and on nearly all lines is where it should be.
    bool IsRight(const Solid& result) const;

    /// Whether A and B are so far apart that neither changes the other.
    bool Apart() const { return overlap.IsEmpty(); }

  private:
    struct Expected {
        SolidLine line;
        LinePieces pieces;
    };

    void DrawLines(std::size_t lineCount);
    bool VolumeCanBe(double volume) const;

    BooleanOperation operation;
    SolidLines a, b;
    SolidBox overlap;
    std::vector<Expected> expected;
};

}  // namespace ZVSmartModel
