#include "model/import/ifc/StepNames.h"

#include <map>
#include <string>

namespace ZVSmartModel {

namespace {

// IFC4X3 builds roads, bridges, railways and harbours of what is a building, a storey or an element
// without a class to IFC4: the first arguments are the same. So are a few names that IFC2X3 alone
// has.
constexpr StepAlias aliases[] = {
    // What contains the rest.
    {"IfcFacility", "IFCBUILDING", 9, ",$,$,$"},
    {"IfcRoad", "IFCBUILDING", 9, ",$,$,$"},
    {"IfcBridge", "IFCBUILDING", 9, ",$,$,$"},
    {"IfcRailway", "IFCBUILDING", 9, ",$,$,$"},
    {"IfcMarineFacility", "IFCBUILDING", 9, ",$,$,$"},
    {"IfcFacilityPart", "IFCBUILDINGSTOREY", 9, ",$"},
    {"IfcFacilityPartCommon", "IFCBUILDINGSTOREY", 9, ",$"},
    {"IfcRoadPart", "IFCBUILDINGSTOREY", 9, ",$"},
    {"IfcBridgePart", "IFCBUILDINGSTOREY", 9, ",$"},
    {"IfcRailwayPart", "IFCBUILDINGSTOREY", 9, ",$"},
    {"IfcMarinePart", "IFCBUILDINGSTOREY", 9, ",$"},
    // Elements.
    {"IfcBuiltElement", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcBearing", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcCaissonFoundation", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcConveyorSegment", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcCourse", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcDeepFoundation", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcDistributionBoard", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcEarthworksElement", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcEarthworksFill", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcElectricFlowTreatmentDevice", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcBorehole", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcGeomodel", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcGeoslice", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcGeotechnicalStratum", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcSolidStratum", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcVoidStratum", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcWaterStratum", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcImpactProtectionDevice", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcKerb", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcLiquidTerminal", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcMobileTelecommunicationsAppliance", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcMooringDevice", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcNavigationElement", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcPavement", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcRail", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcReinforcedSoil", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcSign", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcSignal", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcTendonConduit", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcTrackElement", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcVibrationDamper", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcEarthworksCut", "IFCOPENINGELEMENT", 8, ",$"},
    {"IfcReferent", "IFCANNOTATION", 7, ""},
    // Their types.
    {"IfcBuiltElementType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    {"IfcBearingType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    {"IfcCaissonFoundationType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    {"IfcConveyorSegmentType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    {"IfcCourseType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    {"IfcDeepFoundationType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    {"IfcDistributionBoardType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    {"IfcElectricFlowTreatmentDeviceType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    {"IfcImpactProtectionDeviceType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    {"IfcKerbType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    {"IfcLiquidTerminalType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    {"IfcMobileTelecommunicationsApplianceType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    {"IfcMooringDeviceType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    {"IfcNavigationElementType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    {"IfcPavementType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    {"IfcRailType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    {"IfcSignType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    {"IfcSignalType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    {"IfcTendonConduitType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    {"IfcTrackElementType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    {"IfcVibrationDamperType", "IFCBUILDINGELEMENTPROXYTYPE", 9, ",.NOTDEFINED."},
    // What elements refer to.
    {"IfcBuiltSystem", "IFCSYSTEM", 5, ""},
    {"IfcMapConversionScaled", "IFCMAPCONVERSION", 8, ""},
    {"IfcQuantityNumber", "IFCQUANTITYCOUNT", 5, ""},
    {"IfcTriangulatedIrregularNetwork", "IFCTRIANGULATEDFACESET", 5, ""},
    // Before IFC4.
    {"Ifc2DCompositeCurve", "IFCCOMPOSITECURVE", 2, ""},
    {"IfcElectricDistributionPoint", "IFCFLOWCONTROLLER", 8, ""},
    {"IfcElectricalElement", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcEquipmentElement", "IFCBUILDINGELEMENTPROXY", 8, ",$"},
    {"IfcRelOverridesProperties", "IFCRELDEFINESBYPROPERTIES", 6, ""},
};

std::map<std::string, const StepAlias*, std::less<>> ByName() {
    std::map<std::string, const StepAlias*, std::less<>> byName;
    for (const StepAlias& alias : aliases) {
        std::string name = alias.name;
        for (char& c : name) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
        byName.emplace(std::move(name), &alias);
    }
    return byName;
}

}  // namespace

const StepAlias* AliasOf(std::string_view nameInCapitals) {
    static const auto byName = ByName();
    const auto found = byName.find(nameInCapitals);
    return found == byName.end() ? nullptr : found->second;
}

}  // namespace ZVSmartModel
