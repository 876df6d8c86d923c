#include <stdexcept>

#include "tools/zvg/preview/Renderer.h"

bool CanRender() {
    return false;
}

Picture Render(const Scene&, unsigned int, unsigned int, bool) {
    throw std::runtime_error("this build draws no pictures (it needs embree)");
}
