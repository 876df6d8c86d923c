#include "model/import/ifc/IfcGrids.h"

#include <ifcpp/IFC4/include/IfcAxis2Placement.h>
#include <ifcpp/IFC4/include/IfcCurve.h>
#include <ifcpp/IFC4/include/IfcGrid.h>
#include <ifcpp/IFC4/include/IfcGridAxis.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcLocalPlacement.h>

#include "model/import/ifc/IfcCurves.h"
#include "model/import/ifc/IfcFrames.h"
#include "model/import/ifc/Metres.h"
#include "model/import/ifc/Texts.h"

namespace ZVSmartModel {

std::vector<ModelCurves> AxesOf(const IfcGrid& grid, const IfcUnits& units) {
    std::vector<ModelCurves> all;
    const IfcCurveMaker maker(identityTransform, units);
    for (const auto* axes : {&grid.m_UAxes, &grid.m_VAxes, &grid.m_WAxes}) {
        for (const auto& axis : *axes) {
            if (!axis || !axis->m_AxisCurve) continue;
            ModelCurves curves;
            const std::wstring tag = TextOf(axis->m_AxisTag);
            curves.name = tag.empty() ? L"GridAxis" : L"GridAxis " + tag;
            if (!maker.AddWhole(axis->m_AxisCurve, curves)) {
                maker.AddPieces(axis->m_AxisCurve, curves);
            }
            if (!curves.IsEmpty()) all.push_back(std::move(curves));
        }
    }
    return all;
}

Transform PlaceOf(const std::shared_ptr<IfcObjectPlacement>& placement, const IfcUnits& units) {
    constexpr int longestChain = 64;
    Transform whole = identityTransform;
    auto local = std::dynamic_pointer_cast<IfcLocalPlacement>(placement);
    for (int step = 0; local && step < longestChain; ++step) {
        whole = Combined(FrameOf(local->m_RelativePlacement), whole);
        local = std::dynamic_pointer_cast<IfcLocalPlacement>(local->m_PlacementRelTo);
    }
    for (std::size_t row = 0; row < 3; ++row) {
        whole[row * 4 + 3] = InMetres(whole[row * 4 + 3], units.metres);
    }
    return WithoutNoise(whole);
}

}  // namespace ZVSmartModel
