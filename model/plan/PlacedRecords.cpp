#include "model/plan/PlacedRecords.h"

#include "model/element/RecordBytes.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

void PlacedRecords::Visit(const SZVLGZvgComp& comp, const Use& use) {
    const Stored* stored = nullptr;  // the last that was asked for
    const auto placedBy = [&](const std::wstring& name) {
        const std::optional<u64> place = geos.Find(name);
        stored = place ? Read(*place) : nullptr;
        return stored != nullptr ? &stored->placements : nullptr;
    };
    const auto visit = [&](const std::wstring&, const CZVIMTransf& toModel) {
        VisitNested(stored->geo, [&](const NestedRecord& nested) {
            limits.Work(50 + OwnBytesOf(*nested.geo) / 16);
            const std::wstring_view styleName =
                nested.attr != nullptr ? std::wstring_view(nested.attr->styleName) : L"";
            use({nested.geo, toModel * nested.toOutermost, styleName});
        });
    };
    WalkPlacements(ReferencedNames(comp), limits, placedBy, visit);
}

const PlacedRecords::Stored* PlacedRecords::Read(u64 place) {
    const auto known = read.find(place);
    if (known != read.end()) return known->second ? &*known->second : nullptr;
    constexpr u64 mostKept = 32 << 20;
    if (held.Held() > mostKept) {
        read.clear();
        held.GiveBack();
    }
    Stored stored;
    std::optional<Stored>& kept = read[place];
    try {
        geos.Read(place, stored.geo);
    } catch (const BudgetUsedUp&) {
        throw;
    } catch (const Error& error) {
        if (error.GetStatus() != Status::Damaged) throw;
        if (!firstDamage) firstDamage = error;
        return nullptr;
    }
    held.Add(sizeof stored + BytesOf(stored.geo));
    stored.placements = PlacementsIn(stored.geo);
    kept = std::move(stored);
    return &*kept;
}

}  // namespace ZVSmartModel
