#include "tools/zvg/reading/ClassNames.h"

bool IsOfClass(const ZVSmartZvg::SZVLGZvgComp& comp, const std::wstring& name) {
    return comp.classLevel2Name == name || comp.classLevel3Name == name ||
           comp.classLevel4Name == name || comp.classLevel2bName == name;
}

bool IsRoomClass(const std::wstring& classLevel2Name) {
    return classLevel2Name == L"IfcSpace" || classLevel2Name == L"IfcSpatialZone" ||
           classLevel2Name == L"IfcExternalSpatialElement";
}
