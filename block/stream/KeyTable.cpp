#include "stream/KeyTable.h"

#include <functional>
#include <utility>

namespace ZVSmartFormat {

/// The slot that holds `key`, or the free one where it belongs.
std::size_t KeyTable::SlotOf(std::string_view key) const {
    const std::size_t mask = slots.size() - 1;
    std::size_t slot = std::hash<std::string_view>()(key) & mask;
    while (slots[slot] != none && keys.Row(slots[slot]) != key) slot = (slot + 1) & mask;
    return slot;
}

u32 KeyTable::Find(std::string_view key) const {
    return slots.empty() ? none : slots[SlotOf(key)];
}

void KeyTable::Add(std::string_view key) {
    if (std::size_t{keys.Count()} + 1 > slots.size() / 4 * 3) Grow();
    const std::size_t slot = SlotOf(key);
    const u32 number = keys.Count();
    keys.Append(key);
    slots[slot] = number;
}

void KeyTable::Grow() {
    constexpr std::size_t firstSlots = 16;
    std::vector<u32> larger(slots.empty() ? firstSlots : 2 * slots.size(), none);
    std::swap(slots, larger);
    for (u32 number = 0; number < keys.Count(); ++number) slots[SlotOf(keys.Row(number))] = number;
}

void KeyTable::Clear() {
    keys.Clear();
    slots.clear();
}

}  // namespace ZVSmartFormat
