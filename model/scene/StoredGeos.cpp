#include "model/scene/StoredGeos.h"

#include <bit>
#include <functional>
#include <utility>

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

constexpr u32 freeSlot = 0xFFFFFFFF;

}  // namespace

void StoredGeos::Fill() {
    const std::size_t room = std::bit_ceil(std::size_t{block.IdentificationNum()} * 3 / 2 + 2);
    block.Limits().Memory(room * sizeof slots[0]);
    std::vector<u32> filled(room, freeSlot);
    u32 number = 0;
    block.ForEachIdentification([&](const std::wstring& identification, const SZVLGZvgGeoIndex&) {
        std::size_t slot = std::hash<std::wstring>()(identification) & (room - 1);
        for (; filled[slot] != freeSlot; slot = (slot + 1) & (room - 1)) block.Limits().Work(1);
        filled[slot] = number++;
    });
    slots = std::move(filled);
}

std::optional<u64> StoredGeos::Find(const std::wstring& identification) {
    if (slots.empty()) Fill();
    const std::size_t last = slots.size() - 1;
    std::size_t slot = std::hash<std::wstring>()(identification) & last;
    for (SZVLGZvgGeoIndex index; slots[slot] != freeSlot; slot = (slot + 1) & last) {
        block.Limits().Work(1);
        if (block.ReadIdentification(slots[slot], name, index) && name == identification) {
            return u64{index.blockIndex} << 32 | index.indexInBlock;
        }
    }
    return std::nullopt;
}

void StoredGeos::Read(u64 place, SZVLGZvgGeo& geo) {
    block.ReadGeo(SZVLGZvgGeoIndex{static_cast<u32>(place >> 32), static_cast<u32>(place)}, geo);
}

}  // namespace ZVSmartModel
