#include "model/element/KnownTexts.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "model/element/Utf8.h"

namespace ZVSmartModel {

using ZVSmartZvg::SZVLGTextView;

namespace {

constexpr std::size_t groupSize = 4;

std::string_view StoredBytes(const SZVLGTextView& text) {
    return {reinterpret_cast<const char*>(text.units), std::size_t{2} * text.unitCount};
}

std::size_t HashOf(std::string_view bytes) {
    constexpr std::uint64_t factor = 0x9E3779B97F4A7C15;
    std::uint64_t hash = bytes.size();
    while (!bytes.empty()) {
        std::uint64_t word = 0;
        const std::size_t count = std::min(bytes.size(), sizeof word);
        std::memcpy(&word, bytes.data(), count);
        bytes.remove_prefix(count);
        hash = (hash ^ word) * factor;
        hash ^= hash >> 32;
    }
    return static_cast<std::size_t>(hash);
}

}  // namespace

bool IsCompanion(const SZVLGTextView& name, const KnownText& property) {
    const std::string_view bytes = StoredBytes(name), ofProperty = property.stored;
    return bytes.size() == ofProperty.size() + 2 && bytes.back() == '@' &&
           bytes[bytes.size() - 2] == 0 && bytes.starts_with(ofProperty);
}

bool KnownTexts::IsSame(std::string_view stored, const SZVLGTextView& text) {
    return stored == StoredBytes(text);
}

KnownText& KnownTexts::Find(const SZVLGTextView& text) {
    if (all.size() * 2 >= table.size()) Grow();
    const std::size_t hash = HashOf(StoredBytes(text));
    KnownText** const group = table.data() + hash % (table.size() / groupSize) * groupSize;
    for (std::size_t i = 0; i < groupSize; ++i) {
        if (group[i] == nullptr) return *(group[i] = &Add(text));
        if (IsSame(group[i]->stored, text)) return *group[i];
    }
    return *(group[all.size() % groupSize] = &Add(text));
}

KnownText& KnownTexts::Add(const SZVLGTextView& text) {
    constexpr std::size_t slack = 8;
    const std::string_view bytes = StoredBytes(text);
    char* const stored = Room(bytes.size() + 3 * std::size_t{text.unitCount} + slack);
    std::copy(bytes.begin(), bytes.end(), stored);
    char* const utf8 = stored + bytes.size();
    char* const end = StoreUtf8(text, utf8);
    left += static_cast<std::size_t>(free - end);
    free = end;

    KnownText& added = all.emplace_back();
    added.stored = {stored, bytes.size()};
    const std::string_view all8 = {utf8, static_cast<std::size_t>(end - utf8)};
    added.text = all8;
    const std::size_t dot = all8.find('.'), blank = all8.find(' ');
    if (dot != std::string_view::npos) added.set = all8.substr(0, dot);
    added.name = dot == std::string_view::npos ? all8 : all8.substr(dot + 1);
    added.kind = all8.substr(0, blank);
    if (blank != std::string_view::npos) added.unit = all8.substr(blank + 1);
    return added;
}

/// Room for so many bytes in one piece.
char* KnownTexts::Room(std::size_t byteCount) {
    if (byteCount > left) {
        constexpr std::size_t leastPiece = 16 << 10;
        left = std::max(byteCount, leastPiece);
        free = pieces.emplace_back(new char[left]).get();
        taken += left;
    }
    char* const room = free;
    free += byteCount;
    left -= byteCount;
    return room;
}

void KnownTexts::Grow() {
    constexpr std::size_t leastTable = 256;
    table.assign(std::max(leastTable, 4 * table.size()), nullptr);
    for (KnownText& text : all) {
        const std::size_t group = HashOf(text.stored) % (table.size() / groupSize) * groupSize;
        for (std::size_t i = 0; i < groupSize; ++i) {
            if (table[group + i] != nullptr) continue;
            table[group + i] = &text;
            break;
        }
    }
}

void KnownTexts::ForgetIfMany() {
    constexpr std::size_t mostBytes = 4 << 20;
    if (taken + all.size() * sizeof(KnownText) < mostBytes) return;
    beforeElements = beforeMaterials = KnownText();
    table.clear();
    all.clear();
    pieces.clear();
    left = taken = 0;
}

}  // namespace ZVSmartModel
