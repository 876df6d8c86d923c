#pragma once

#include <vector>

#include "tools/zvg/import/Model.h"
#include "tools/zvg/scene/Scene.h"

/// A model as it is shown; its elements are components in the order of `elements`, which point
/// into it. Throws std::length_error for more placements than a scene can have.
Scene SceneOf(const Model& model, const std::vector<const ModelElement*>& elements);
