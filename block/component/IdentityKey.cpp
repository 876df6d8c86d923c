#include "component/IdentityKey.h"

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

std::string NameKey(const std::wstring& name) {
    std::string key(1, 'n');
    ZVSmartFormat::AppendUtf16(name, key);
    return key;
}

std::string IdentityKey(const SerialKey& key) {
    return HasGuid(key) ? GuidKey(key.guid) : NameKey(key.name);
}

std::string IdentityKey(const SZVLGZvgGeoId& row) {
    if (HasGuid(row.guidName)) return GuidKey(row.guidName.guid);
    std::string key(1, 'r');
    AppendText(row.guidName.name, key);
    AppendText(row.textA, key);
    AppendText(row.textB, key);
    return key;
}

}  // namespace ZVSmartZvg
