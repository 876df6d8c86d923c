#include "model/scene/StoredGeos.h"

#include <utility>

namespace ZVSmartModel {

using namespace ZVSmartZvg;

std::optional<u64> StoredGeos::Find(const std::wstring& identification) {
    if (!places) {
        std::unordered_map<std::wstring, u64> all;
        block.ForEachIdentification([&](const std::wstring& name, const SZVLGZvgGeoIndex& index) {
            block.Limits().Memory(100 + name.size() * sizeof(wchar_t));
            all.emplace(name, u64{index.blockIndex} << 32 | index.indexInBlock);
        });
        places = std::move(all);
    }
    const auto found = places->find(identification);
    return found == places->end() ? std::nullopt : std::optional(found->second);
}

void StoredGeos::Read(u64 place, SZVLGZvgGeo& geo) {
    block.ReadGeo(SZVLGZvgGeoIndex{static_cast<u32>(place >> 32), static_cast<u32>(place)}, geo);
}

}  // namespace ZVSmartModel
