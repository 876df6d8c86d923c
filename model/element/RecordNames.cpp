#include "model/element/RecordNames.h"

#include "model/element/Utf8.h"

namespace ZVSmartModel {

std::string GuidText(const ZVSmartZvg::SerialGuid& guid) {
    return ToUtf8(ZVSmartZvg::GetGeoIdentification({ZVSmartZvg::SerialKey(guid), L"", L""}));
}

std::string KeyText(const ZVSmartZvg::SerialKey& key) {
    return key.name.empty() ? '{' + GuidText(key.guid) + '}' : ToUtf8(key.name);
}

bool IsOfClass(const ZVSmartZvg::SZVLGZvgComp& comp, const std::wstring& name) {
    return comp.classLevel2Name == name || comp.classLevel3Name == name ||
           comp.classLevel4Name == name || comp.classLevel2bName == name;
}

bool IsRoomClass(const std::wstring& classLevel2Name) {
    return classLevel2Name == L"IfcSpace" || classLevel2Name == L"IfcSpatialZone" ||
           classLevel2Name == L"IfcExternalSpatialElement";
}

bool IsRoomClass(std::string_view className) {
    return className == "IfcSpace" || className == "IfcSpatialZone" ||
           className == "IfcExternalSpatialElement";
}

}  // namespace ZVSmartModel
