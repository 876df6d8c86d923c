#pragma once

#include "ZVSmartModel/Element.h"
#include "model/plan/Drawing.h"

namespace ZVSmartModel {

/// What the file says of a room, and what its outline measures, holes taken off. Its area is that
/// of a quantity or property such as BaseQuantities.NetFloorArea.
PlanRoom RoomOf(const Element& element, const PlanArea& outline);

/// Its name, its number, its area, by the file or else as measured, and, if wanted, its zone.
std::vector<std::string> LinesOf(const PlanRoom& room, bool zones);

/// What a door or window is tagged with: its mark, or else its name where that is short; empty
/// where it has none.
std::string TagOf(const Element& element);

}  // namespace ZVSmartModel
