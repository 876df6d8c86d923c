#pragma once

#include <string>
#include <vector>

#include "model/plan/Drawing.h"

namespace ZVSmartModel {

/// The floors on one sheet as an SVG document, north up, in one round scale, each under its name
/// and with a scale bar. Millimetres on paper are the document's units.
///
/// A component is a group: its id comes from its identity, which is also its
/// `data-guid`, its SVG class from its class name, its title from its name; `data-drawn` says
/// whether it is a section, a symbol or a projection. Its areas are filled by
/// the even-odd rule.
std::string SvgSheet(const std::string& title, const std::vector<PlanFloor>& floors);

}  // namespace ZVSmartModel
