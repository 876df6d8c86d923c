#pragma once

class BuildingModel;

namespace ZVSmartModel {

/// Changes a loaded model so that the geometry part of libifcplusplus, which takes some things
/// for others, makes of it what the file says:
/// faces get their outer bound first, as only the first counts as such;
/// boolean results get the style of their first operand, and shells that have styles of their own
/// become models of their own, as only the styles of a representation's items are seen;
/// spheres, blocks, pyramids and half spaces in boxes get the sizes and places meant for them.
void RepairForShapes(BuildingModel& model);

}  // namespace ZVSmartModel
