#include "tools/zvg/plan/PlacedRecords.h"

#include <vector>

#include "tools/zvg/text/Utf8.h"

using namespace ZVSmartZvg;

namespace {

constexpr int longestChain = 16;
constexpr std::size_t noPlacement = static_cast<std::size_t>(-1);

/// A geometry that is placed by its name, and by whom.
struct Placement {
    std::wstring name;
    CZVIMTransf toModel;
    std::size_t placedBy = noPlacement;
};

/// The placements of one component, in the order in which they were found.
class PlacementList {
  public:
    /// Adds nothing where the name is one that leads here, the chain is too long, or there are
    /// too many.
    void Add(const std::wstring& name, const CZVIMTransf& toModel, std::size_t placedBy) {
        if (list.size() >= PlacedRecords::mostPlacements || !IsNew(name, placedBy)) return;
        list.push_back({name, toModel, placedBy});
    }

    std::size_t Size() const { return list.size(); }
    /// By value, for adding moves the list.
    Placement At(std::size_t i) const { return list[i]; }

  private:
    bool IsNew(const std::wstring& name, std::size_t placedBy) const {
        int chain = 0;
        for (std::size_t i = placedBy; i != noPlacement; i = list[i].placedBy) {
            if (list[i].name == name || ++chain >= longestChain) return false;
        }
        return true;
    }

    std::vector<Placement> list;
};

/// Hands a record and all that is nested in it to `use`, and what they place by name to `place`.
/// A loop, for records may nest deeper than the stack is.
template <typename UseRecord, typename Place>
void VisitNested(const SZVLGZvgGeo& outermost, const CZVIMTransf& outermostToModel,
                 const UseRecord& use, const Place& place) {
    std::vector<PlacedRecord> waiting = {{&outermost, outermostToModel, {}}};
    while (!waiting.empty()) {
        const PlacedRecord next = waiting.back();
        waiting.pop_back();
        use(next);
        for (const SZVLGZvgGeoNamedTransf& named : next.record->namedTransfs) {
            place(named.name, next.toModel * named.transf);
        }
        for (auto sub = next.record->subGeos.rbegin(); sub != next.record->subGeos.rend(); ++sub) {
            waiting.push_back({&sub->geo, next.toModel * sub->attr.transf, sub->attr.styleName});
        }
    }
}

}  // namespace

void PlacedRecords::Visit(const SZVLGZvgComp& comp, const Use& use) {
    PlacementList placements;
    for (const SZVLGZvgCompGeoRef& ref : comp.geoRefs) {
        for (const SZVLGZvgGeoId& row : ref.geoIds) {
            placements.Add(GetGeoIdentification(row), CZVIMTransf(), noPlacement);
        }
    }
    for (std::size_t i = 0; i < placements.Size(); ++i) {
        const Placement placement = placements.At(i);
        SZVLGZvgGeo geo;
        if (!Read(placement.name, geo)) continue;
        VisitNested(geo, placement.toModel, use,
                    [&](const std::wstring& name, const CZVIMTransf& toModel) {
                        placements.Add(name, toModel, i);
                    });
    }
}

void PlacedRecords::ThrowIfDamaged() const {
    if (!firstDamage.empty()) throw block.Error(ExitStatus::Damaged, firstDamage);
}

bool PlacedRecords::Read(const std::wstring& identification, SZVLGZvgGeo& geo) {
    try {
        if (block.Reader().GetGeoByIdentification(identification, geo)) return true;
        if (IsStored(identification)) RememberDamage(identification, "cannot be read");
    } catch (const ZVSmartFormat::CZVFTStreamException& exception) {
        RememberDamage(identification, exception.what());
    }
    return false;
}

bool PlacedRecords::IsStored(const std::wstring& identification) {
    std::wstring name;
    SZVLGZvgGeoIndex index;
    const unsigned int count = stored.empty() ? block.Reader().GetGeoIdentificationNum() : 0;
    for (unsigned int i = 0; i < count; ++i) {
        if (block.Reader().GetGeoIdentificationByIndex(i, name, index)) stored.insert(name);
    }
    return stored.count(identification) != 0;
}

void PlacedRecords::RememberDamage(const std::wstring& identification, const std::string& reason) {
    if (!firstDamage.empty()) return;
    firstDamage = "geometry '" + ToUtf8(identification) + "': " + reason;
}
