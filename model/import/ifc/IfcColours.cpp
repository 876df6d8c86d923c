#include "model/import/ifc/IfcColours.h"

#include <ifcpp/IFC4/include/IfcColourRgb.h>
#include <ifcpp/IFC4/include/IfcNormalisedRatioMeasure.h>
#include <ifcpp/IFC4/include/IfcSurfaceStyle.h>
#include <ifcpp/IFC4/include/IfcSurfaceStyleShading.h>

#include <algorithm>

namespace ZVSmartModel {

namespace {

constexpr double leastOpacity = 0.1;

double ValueOf(const std::shared_ptr<IfcNormalisedRatioMeasure>& measure, double otherwise) {
    return measure ? measure->m_value : otherwise;
}

}  // namespace

std::optional<Rgba> ColourOf(const IfcSurfaceStyle& style) {
    for (const auto& element : style.m_Styles) {
        const auto shading = std::dynamic_pointer_cast<IfcSurfaceStyleShading>(element);
        if (!shading || !shading->m_SurfaceColour) continue;
        const IfcColourRgb& colour = *shading->m_SurfaceColour;
        return MakeColour(ValueOf(colour.m_Red, 0), ValueOf(colour.m_Green, 0),
                          ValueOf(colour.m_Blue, 0),
                          std::max(leastOpacity, 1 - ValueOf(shading->m_Transparency, 0)));
    }
    return std::nullopt;
}

}  // namespace ZVSmartModel
