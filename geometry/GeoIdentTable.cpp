#include "geometry/GeoIdentTable.h"

#include <algorithm>

#include "stream/ByteOrder.h"
#include "stream/WideText.h"

namespace ZVSmartZvg {

using ZVSmartFormat::LoadBigEndian;

namespace {

constexpr u64 smallestEntry = 12;

}  // namespace

GeoIdentTable::GeoIdentTable(ZVSmartFormat::RecordInStream& in) {
    const u32 count = LoadBigEndian<u32>(in.Take(4));
    if (count > in.BytesLeft() / smallestEntry) ZVSmartFormat::ThrowOutOfData();
    entries.reserve(count);
    bytes = in.Take(0);
    const u64 start = in.GetPos();
    std::string_view previous;
    for (u32 i = 0; i < count; ++i) {
        const u64 offset = in.GetPos() - start;
        const u64 keyBytes = 2 * u64{LoadBigEndian<u32>(in.Take(4))};
        const u8* const key = in.Take(keyBytes);
        in.Take(8);
        const std::string_view current(reinterpret_cast<const char*>(key),
                                       static_cast<std::size_t>(keyBytes));
        inOrder = inOrder && (i == 0 || previous < current);
        previous = current;
        entries.push_back(static_cast<u32>(offset));
    }
    if (!inOrder) Sort();
}

void GeoIdentTable::Sort() {
    const auto key = [this](u32 entry) { return KeyAt(bytes + entry); };
    std::stable_sort(entries.begin(), entries.end(), [&](u32 a, u32 b) { return key(a) < key(b); });
    const auto end =
        std::unique(entries.begin(), entries.end(), [&](u32 a, u32 b) { return key(a) == key(b); });
    entries.erase(end, entries.end());
}

std::string_view GeoIdentTable::KeyAt(const u8* entry) const {
    return {reinterpret_cast<const char*>(entry + 4), 2 * std::size_t{LoadBigEndian<u32>(entry)}};
}

SZVLGZvgGeoIndex GeoIdentTable::IndexAt(const u8* entry) const {
    const u8* const index = entry + 4 + KeyAt(entry).size();
    return {LoadBigEndian<u32>(index), LoadBigEndian<u32>(index + 4)};
}

bool GeoIdentTable::Find(const std::wstring& identification, SZVLGZvgGeoIndex& index) const {
    std::string key;
    ZVSmartFormat::AppendUtf16(identification, key);
    const auto entry = std::lower_bound(
        entries.begin(), entries.end(), key,
        [this](u32 a, const std::string& b) { return KeyAt(bytes + a) < std::string_view(b); });
    if (entry == entries.end() || KeyAt(bytes + *entry) != key) return false;
    index = IndexAt(bytes + *entry);
    return true;
}

void GeoIdentTable::Get(u32 i, std::wstring& identification, SZVLGZvgGeoIndex& index) const {
    const u8* const entry = bytes + entries[i];
    ZVSmartFormat::LoadUtf16(entry + 4, LoadBigEndian<u32>(entry), identification);
    index = IndexAt(entry);
}

}  // namespace ZVSmartZvg
