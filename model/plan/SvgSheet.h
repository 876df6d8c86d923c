#pragma once

#include <string>
#include <vector>

#include "model/plan/Drawing.h"

namespace ZVSmartModel {

/// The floors on one sheet as an SVG document, north up, in one round scale, each under its name
/// and with a scale bar. Millimetres on paper are the document's units.
///
/// A component is a group: its id comes from its identity (as `data-guid` where the id had to
/// differ), its SVG class from its class name, its title from its name. Its areas are filled by
/// the even-odd rule.
std::string SvgSheet(const std::string& title, const std::vector<PlanFloor>& floors);

}  // namespace ZVSmartModel
