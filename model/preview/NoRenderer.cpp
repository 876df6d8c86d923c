#include "model/preview/Renderer.h"

namespace ZVSmartModel {

bool CanRender() {
    return false;
}

Picture Render(const Scene&, unsigned int, unsigned int, bool, const std::function<void(double)>&,
               unsigned int) {
    throw RenderFailed("this build draws no pictures (it needs embree)");
}

}  // namespace ZVSmartModel
