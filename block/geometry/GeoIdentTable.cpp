#include "geometry/GeoIdentTable.h"

#include <algorithm>
#include <span>

#include "geometry/LeadingBytes.h"
#include "stream/ByteOrder.h"
#include "stream/WideText.h"

namespace ZVSmartZvg {

using ZVSmartFormat::LoadBigEndian;

namespace {

constexpr u64 smallestEntry = 12;
constexpr std::size_t entriesPerLandmark = 32;

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
        highestBlock = std::max(highestBlock, LoadBigEndian<u32>(in.Take(8)));
        const std::string_view current(reinterpret_cast<const char*>(key),
                                       static_cast<std::size_t>(keyBytes));
        inOrder = inOrder && (i == 0 || previous < current);
        previous = current;
        entries.push_back(static_cast<u32>(offset));
    }
    if (!inOrder) Sort();
    SetLandmarks();
}

void GeoIdentTable::Sort() {
    const auto key = [this](u32 entry) { return KeyAt(bytes + entry); };
    std::stable_sort(entries.begin(), entries.end(), [&](u32 a, u32 b) { return key(a) < key(b); });
    const auto end =
        std::unique(entries.begin(), entries.end(), [&](u32 a, u32 b) { return key(a) == key(b); });
    entries.erase(end, entries.end());
}

void GeoIdentTable::SetLandmarks() {
    if (entries.empty()) return;
    // In ascending order, what the first and the last begin with is what all begin with.
    commonBytes = CommonBytes(KeyAt(bytes + entries.front()), KeyAt(bytes + entries.back()));
    landmarks.reserve((entries.size() - 1) / entriesPerLandmark + 1);
    for (std::size_t i = 0; i < entries.size(); i += entriesPerLandmark)
        landmarks.push_back(LeadingBytes(KeyAt(bytes + entries[i]), commonBytes));
}

std::string_view GeoIdentTable::KeyAt(const u8* entry) const {
    return {reinterpret_cast<const char*>(entry + 4), 2 * std::size_t{LoadBigEndian<u32>(entry)}};
}

SZVLGZvgGeoIndex GeoIdentTable::IndexAt(const u8* entry) const {
    const u8* const index = entry + 4 + KeyAt(entry).size();
    return {LoadBigEndian<u32>(index), LoadBigEndian<u32>(index + 4)};
}

/// The numbers of the entries among which `key` is, if it is there: from the last landmark below
/// it to the first above it.
std::pair<std::size_t, std::size_t> GeoIdentTable::RangeOf(std::string_view key) const {
    const auto [low, high] =
        std::equal_range(landmarks.begin(), landmarks.end(), LeadingBytes(key, commonBytes));
    const auto below = static_cast<std::size_t>(low - landmarks.begin());
    const auto above = static_cast<std::size_t>(high - landmarks.begin());
    return {(below == 0 ? 0 : below - 1) * entriesPerLandmark,
            std::min(above * entriesPerLandmark, entries.size())};
}

bool GeoIdentTable::Find(const std::wstring& identification, SZVLGZvgGeoIndex& index) const {
    std::string key;
    ZVSmartFormat::AppendUtf16(identification, key);
    const auto [first, last] = RangeOf(key);
    const std::span candidates(entries.data() + first, last - first);
    const auto entry =
        std::lower_bound(candidates.begin(), candidates.end(), std::string_view(key),
                         [this](u32 a, std::string_view b) { return KeyAt(bytes + a) < b; });
    if (entry == candidates.end() || KeyAt(bytes + *entry) != key) return false;
    index = IndexAt(bytes + *entry);
    return true;
}

void GeoIdentTable::Get(u32 i, std::wstring& identification, SZVLGZvgGeoIndex& index) const {
    const u8* const entry = bytes + entries[i];
    ZVSmartFormat::LoadUtf16(entry + 4, LoadBigEndian<u32>(entry), identification);
    index = IndexAt(entry);
}

}  // namespace ZVSmartZvg
