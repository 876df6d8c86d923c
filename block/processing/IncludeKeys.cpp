#include "processing/IncludeKeys.h"

namespace ZVSmartZvg {

std::wstring IncludeKeys::Next() {
    std::wstring key = L"mater_include_key_" + std::to_wstring(static_cast<std::int32_t>(counter));
    ++counter;
    return key;
}

}  // namespace ZVSmartZvg
