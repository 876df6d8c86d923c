#pragma once

#include <vector>

#include "model/import/Model.h"
#include "model/scene/Scene.h"

namespace ZVSmartModel {

/// A model as it is shown; its elements are components in the order of `elements`, which point
/// into it. Throws std::length_error for more placements than a scene can have.
Scene SceneOf(const Model& model, const std::vector<const ModelElement*>& elements);

}  // namespace ZVSmartModel
