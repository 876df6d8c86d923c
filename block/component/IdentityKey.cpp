#include "component/IdentityKey.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "stream/ByteOrder.h"
#include "stream/WideText.h"

namespace ZVSmartZvg {

namespace {

bool HasGuid(const SerialKey& key) {
    return key.guid != SerialGuid();
}

/// In the order of its digits.
std::array<u8, 16> BytesOf(const SerialGuid& guid) {
    std::array<u8, 16> bytes;
    ZVSmartFormat::StoreBigEndian(guid.Data1, bytes.data());
    ZVSmartFormat::StoreBigEndian(guid.Data2, bytes.data() + 4);
    ZVSmartFormat::StoreBigEndian(guid.Data3, bytes.data() + 6);
    std::copy(std::begin(guid.Data4), std::end(guid.Data4), bytes.begin() + 8);
    return bytes;
}

std::string GuidKey(const SerialGuid& guid) {
    const std::array<u8, 16> bytes = BytesOf(guid);
    return 'g' + std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

/// 8-4-4-4-12 digits.
std::wstring GuidText(const SerialGuid& guid) {
    constexpr wchar_t digits[] = L"0123456789ABCDEF";
    std::wstring text;
    text.reserve(36);
    for (const u8 byte : BytesOf(guid)) {
        text += digits[byte >> 4];
        text += digits[byte & 0xF];
        const std::size_t length = text.size();
        if (length == 8 || length == 13 || length == 18 || length == 23) text += L'-';
    }
    return text;
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
    return GuidText(row.guidName.guid);
}

}  // namespace ZVSmartZvg
