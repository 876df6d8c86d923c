#include <cwchar>

#include "ZVSmartZvg/Comp.h"

namespace ZVSmartZvg {

std::wstring GetGeoIdentification(const SZVLGZvgGeoId& row) {
    if (row.guidName.name == L"none") return row.textA;
    if (!row.guidName.name.empty()) return row.guidName.name;
    const SerialGuid& guid = row.guidName.guid;
    wchar_t text[37];
    std::swprintf(text, 37, L"%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X", guid.Data1,
                  guid.Data2, guid.Data3, guid.Data4[0], guid.Data4[1], guid.Data4[2],
                  guid.Data4[3], guid.Data4[4], guid.Data4[5], guid.Data4[6], guid.Data4[7]);
    return text;
}

}  // namespace ZVSmartZvg
