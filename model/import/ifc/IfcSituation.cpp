#include "model/import/ifc/IfcSituation.h"

#include <ifcpp/IFC4/include/IfcBuilding.h>
#include <ifcpp/IFC4/include/IfcCompoundPlaneAngleMeasure.h>
#include <ifcpp/IFC4/include/IfcCoordinateOperation.h>
#include <ifcpp/IFC4/include/IfcCoordinateReferenceSystem.h>
#include <ifcpp/IFC4/include/IfcDirection.h>
#include <ifcpp/IFC4/include/IfcGeometricRepresentationContext.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcPostalAddress.h>
#include <ifcpp/IFC4/include/IfcProject.h>
#include <ifcpp/IFC4/include/IfcReal.h>
#include <ifcpp/IFC4/include/IfcSite.h>

#include <cmath>

#include "model/import/ifc/IfcProperties.h"
#include "model/import/ifc/Texts.h"

namespace ZVSmartModel {

namespace {

void AddAddress(const std::shared_ptr<IfcPostalAddress>& address, const IfcUnitSymbols& units,
                PropertyGatherer& gatherer) {
    if (!address) return;
    AddAttributes(L"Address", *address, units, gatherer);
    std::wstring lines;
    for (const auto& line : address->m_AddressLines) {
        // The library leaves the apostrophes on the strings of a list.
        std::wstring text = TextOf(line);
        if (text.size() > 1 && text.front() == L'\'' && text.back() == L'\'') {
            text = text.substr(1, text.size() - 2);
        }
        lines += (lines.empty() ? L"" : L", ") + text;
    }
    gatherer.AddText(L"Address.AddressLines", lines);
}

/// Degrees, minutes, seconds and millionths of a second, all of one sign.
void AddDegrees(const std::wstring& name,
                const std::shared_ptr<IfcCompoundPlaneAngleMeasure>& angle,
                PropertyGatherer& gatherer) {
    if (!angle || angle->m_vec.empty()) return;
    constexpr double parts[] = {1, 60, 3600, 3600e6};
    double degrees = 0;
    for (std::size_t i = 0; i < angle->m_vec.size() && i < std::size(parts); ++i) {
        degrees += angle->m_vec[i] / parts[i];
    }
    // A millionth of a second is 3e-10 degrees.
    gatherer.Add({name, NumberText(std::round(degrees * 1e10) / 1e10), L"angle", L"deg"});
}

void AddTrueNorth(const IfcDirection& north, PropertyGatherer& gatherer) {
    std::wstring text;
    for (const auto& ratio : north.m_DirectionRatios) {
        if (ratio) text += (text.empty() ? L"" : L", ") + NumberText(ratio->m_value);
    }
    gatherer.Add({L"Project.TrueNorth", text, L"list:real", L""});
}

void AddContexts(const IfcProject& project, const IfcUnitSymbols& units,
                 PropertyGatherer& gatherer) {
    for (const auto& any : project.m_RepresentationContexts) {
        const auto context = std::dynamic_pointer_cast<IfcGeometricRepresentationContext>(any);
        if (!context) continue;
        if (context->m_TrueNorth) AddTrueNorth(*context->m_TrueNorth, gatherer);
        for (const auto& weakOperation : context->m_HasCoordinateOperation_inverse) {
            const auto operation = weakOperation.lock();
            if (!operation) continue;
            AddAttributes(L"MapConversion", *operation, units, gatherer);
            if (operation->m_TargetCRS)
                AddAttributes(L"ProjectedCRS", *operation->m_TargetCRS, units, gatherer);
        }
    }
}

}  // namespace

void AddSituation(const IfcObjectDefinition& object, const IfcUnitSymbols& units,
                  PropertyGatherer& gatherer) {
    if (const auto* site = dynamic_cast<const IfcSite*>(&object)) {
        AddAddress(site->m_SiteAddress, units, gatherer);
        AddDegrees(L"Site.Latitude", site->m_RefLatitude, gatherer);
        AddDegrees(L"Site.Longitude", site->m_RefLongitude, gatherer);
    } else if (const auto* building = dynamic_cast<const IfcBuilding*>(&object)) {
        AddAddress(building->m_BuildingAddress, units, gatherer);
    } else if (const auto* project = dynamic_cast<const IfcProject*>(&object)) {
        AddContexts(*project, units, gatherer);
        for (const auto& [type, symbol] : units.All()) {
            gatherer.AddText(L"Units." + std::wstring(type.begin(), type.end()), symbol);
        }
    }
}

}  // namespace ZVSmartModel
