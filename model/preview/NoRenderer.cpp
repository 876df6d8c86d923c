#include <stdexcept>

#include "model/preview/Renderer.h"

namespace ZVSmartModel {

bool CanRender() {
    return false;
}

Picture Render(const Scene&, unsigned int, unsigned int, bool) {
    throw std::runtime_error("this build draws no pictures (it needs embree)");
}

}  // namespace ZVSmartModel
