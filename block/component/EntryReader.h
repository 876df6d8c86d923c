#pragma once

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

#include "component/ComponentFields.h"
#include "stream/FieldReader.h"
#include "stream/RecordInStream.h"

namespace ZVSmartZvg {

/// Which properties are wanted, as SZVLGCompParts says it, in the form that they are stored in.
struct WantedProperties {
    bool any = true;
    std::string_view nameEnd;
};

/// Reads a component's entry, of its properties those that are wanted.
class EntryReader : public ZVSmartSerial::FieldReader<ZVSmartFormat::RecordInStream> {
  public:
    EntryReader(ZVSmartFormat::RecordInStream& in, ZVSmartFormat::MemoryBudget& budget,
                const WantedProperties& wanted)
        : FieldReader(in, budget), in(in), wanted(wanted) {}

    void OwnProperties(PropertyList& properties) {
        if (WantsAll()) return VisitProperties(*this, properties);
        std::size_t kept = 0;
        ForEachWanted([&] {
            Charge(1, sizeof(PropertyList::value_type));
            if (kept == properties.size()) properties.emplace_back();
            auto& [name, value] = properties[kept++];
            Text(name);
            Text(value);
        });
        properties.resize(kept);
    }

  protected:
    bool WantsAll() const { return wanted.any && wanted.nameEnd.empty(); }

    /// Passes all properties but those that are wanted, which `read` reads.
    template <class Read>
    void ForEachWanted(Read read) {
        bool isBehindWanted = false;
        for (u32 left = Count(8); left != 0; --left) {
            const u64 position = in.GetPos();
            const bool isWanted = PassText() && wanted.any;
            if (isWanted || isBehindWanted) {
                in.Seek(position);
                read();
            } else {
                PassText();
            }
            isBehindWanted = isWanted;
        }
    }

    ZVSmartFormat::RecordInStream& in;

  private:
    /// Whether the text that is passed ends as names are to.
    bool PassText() {
        const u64 byteCount = 2 * u64{Count(2)};
        const u8* const bytes = in.Take(byteCount);
        const std::string_view end = wanted.nameEnd;
        return !end.empty() && byteCount >= end.size() &&
               std::memcmp(bytes + byteCount - end.size(), end.data(), end.size()) == 0;
    }

    const WantedProperties& wanted;
};

/// A list of numbers where it lies.
struct NumbersView {
    const u8* bytes = nullptr;
    u32 count = 0;

    auto begin() const { return ZVSmartFormat::BigEndianElements<u32, u32>(bytes); }
    auto end() const {
        return ZVSmartFormat::BigEndianElements<u32, u32>(bytes + sizeof(u32) * u64{count});
    }
};

/// The same into a view.
class ViewReader : public EntryReader {
  public:
    ViewReader(ZVSmartFormat::RecordInStream& in, ZVSmartFormat::MemoryBudget& budget,
               const WantedProperties& wanted, SZVLGCompView& view)
        : EntryReader(in, budget, wanted), view(view) {}

    using FieldReader::Key;
    using FieldReader::List;
    using FieldReader::Text;

    void Text(SZVLGTextView& text) {
        text.unitCount = Count(2);
        text.units = in.Take(2 * u64{text.unitCount});
    }
    void Key(SZVLGKeyView& key) { ZVSmartSerial::VisitKey(*this, key); }
    void U32List(NumbersView& numbers) {
        numbers.count = Count(sizeof(u32));
        numbers.bytes = in.Take(sizeof(u32) * u64{numbers.count});
    }
    /// Properties.
    template <class Visit>
    void List(SZVLGViewRange& range, u64 smallestBytes, Visit visit) {
        range = {static_cast<u32>(view.properties.size()), Count(smallestBytes)};
        Charge(range.count, sizeof(SZVLGPropertyView));
        for (u32 left = range.count; left != 0; --left) visit(view.properties.emplace_back());
    }
    void OwnProperties(SZVLGViewRange& range) {
        if (WantsAll()) return VisitProperties(*this, range);
        range.first = static_cast<u32>(view.properties.size());
        ForEachWanted([this] {
            Charge(1, sizeof(SZVLGPropertyView));
            auto& [name, value] = view.properties.emplace_back();
            Text(name);
            Text(value);
        });
        range.count = static_cast<u32>(view.properties.size()) - range.first;
    }
    /// By ascending keys, the first of equal ones, as a map keeps them.
    void OwnMaterials(SZVLGViewRange& range) {
        std::vector<SZVLGMaterialView>& all = view.materials;
        const auto first = static_cast<u32>(all.size());
        u32 count = Count(smallestMaterial);
        Charge(count, sizeof(SZVLGMaterialView));
        bool isOrdered = true;
        for (; count != 0; --count) {
            SZVLGMaterialView material;
            U32(material.key);
            VisitMaterial(*this, material);
            isOrdered = isOrdered && (all.size() == first || all.back().key < material.key);
            all.push_back(material);
        }
        if (!isOrdered) {
            const auto begin = all.begin() + static_cast<std::ptrdiff_t>(first);
            std::stable_sort(begin, all.end(),
                             [](const auto& a, const auto& b) { return a.key < b.key; });
            all.erase(std::unique(begin, all.end(),
                                  [](const auto& a, const auto& b) { return a.key == b.key; }),
                      all.end());
        }
        range = {first, static_cast<u32>(all.size()) - first};
    }

  private:
    SZVLGCompView& view;
};

}  // namespace ZVSmartZvg
