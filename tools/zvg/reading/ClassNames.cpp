#include "tools/zvg/reading/ClassNames.h"

bool IsOfClass(const ZVSmartZvg::SZVLGZvgComp& comp, const std::wstring& name) {
    return comp.classLevel2Name == name || comp.classLevel3Name == name ||
           comp.classLevel4Name == name || comp.classLevel2bName == name;
}
