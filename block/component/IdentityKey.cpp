#include "component/IdentityKey.h"

#include <algorithm>
#include <cwchar>

#include "stream/ByteOrder.h"
#include "stream/WideText.h"

namespace ZVSmartZvg {

namespace {

bool HasGuid(const SerialKey& key) {
    return key.guid != SerialGuid();
}

std::string GuidKey(const SerialGuid& guid) {
    u8 bytes[16];
    ZVSmartFormat::StoreBigEndian(guid.Data1, bytes);
    ZVSmartFormat::StoreBigEndian(guid.Data2, bytes + 4);
    ZVSmartFormat::StoreBigEndian(guid.Data3, bytes + 6);
    std::copy(std::begin(guid.Data4), std::end(guid.Data4), bytes + 8);
    return 'g' + std::string(reinterpret_cast<const char*>(bytes), sizeof bytes);
}

/// Length first, so that texts in a row cannot run into each other.
void AppendText(const std::wstring& text, std::string& key) {
    u8 length[8];
    ZVSmartFormat::StoreBigEndian(u64{text.size()}, length);
    key.append(reinterpret_cast<const char*>(length), sizeof length);
    ZVSmartFormat::AppendUtf16(text, key);
}

}  // namespace

std::string IdentityKey(const std::wstring& name) {
    std::string key(1, 'n');
    ZVSmartFormat::AppendUtf16(name, key);
    return key;
}

std::string IdentityKey(const SerialKey& key) {
    return HasGuid(key) ? GuidKey(key.guid) : IdentityKey(key.name);
}

std::string IdentityKey(const SZVLGZvgGeoId& row) {
    if (HasGuid(row.guidName)) return GuidKey(row.guidName.guid);
    std::string key(1, 'r');
    AppendText(row.guidName.name, key);
    AppendText(row.textA, key);
    AppendText(row.textB, key);
    return key;
}

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
