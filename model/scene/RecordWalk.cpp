#include "model/scene/RecordWalk.h"

#include <unordered_set>
#include <utility>

#include "model/element/Utf8.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

constexpr int longestChain = 16;
constexpr std::size_t noPlacement = static_cast<std::size_t>(-1);

/// A geometry that is placed by its name, and by whom.
struct PlacedName {
    std::wstring name;
    CZVIMTransf toModel;
    std::size_t placedBy = noPlacement;
};

/// What one component places, in the order in which it was found.
class PlacedNames {
  public:
    explicit PlacedNames(Budget& limits) : limits(limits), held(limits) {}

    /// Adds nothing where the name is one that leads here or the chain is too long.
    void Add(const std::wstring& name, const CZVIMTransf& toModel, std::size_t placedBy) {
        limits.Work(20 + name.size() / 8);
        if (!IsNew(name, placedBy)) return;
        held.Add(2 * sizeof(PlacedName) + name.size() * sizeof(wchar_t));
        list.push_back({name, toModel, placedBy});
    }

    /// Several rows may lead to one geometry; it is there once.
    void AddReferenced(const std::wstring& name, bool isOnly) {
        if (isOnly || referenced.insert(name).second) Add(name, CZVIMTransf(), noPlacement);
    }

    std::size_t Size() const { return list.size(); }
    /// By value, for adding moves the list.
    PlacedName At(std::size_t i) const { return list[i]; }

  private:
    bool IsNew(const std::wstring& name, std::size_t placedBy) const {
        int chain = 0;
        for (std::size_t i = placedBy; i != noPlacement; i = list[i].placedBy) {
            if (list[i].name == name || ++chain >= longestChain) return false;
        }
        return true;
    }

    Budget& limits;
    HeldMemory held;
    std::vector<PlacedName> list;
    std::unordered_set<std::wstring> referenced;
};

}  // namespace

bool HasColour(const SZVLGZvgDisplayAttr& attr) {
    return (attr.flags & DisplayAttrFlag::colour) != 0;
}

void VisitNested(const SZVLGZvgGeo& outermost,
                 const std::function<void(const NestedRecord&)>& use) {
    std::vector<NestedRecord> waiting = {{&outermost, nullptr, nullptr, CZVIMTransf()}};
    while (!waiting.empty()) {
        const NestedRecord next = waiting.back();
        waiting.pop_back();
        use(next);
        for (auto sub = next.geo->subGeos.rbegin(); sub != next.geo->subGeos.rend(); ++sub) {
            waiting.push_back({&sub->geo, &sub->attr,
                               HasColour(sub->attr) ? &sub->attr : next.coloured,
                               next.toOutermost * sub->attr.transf});
        }
    }
}

NamedPlacements PlacementsIn(const SZVLGZvgGeo& geo) {
    NamedPlacements found;
    if (geo.subGeos.empty() && geo.namedTransfs.empty()) return found;
    VisitNested(geo, [&found](const NestedRecord& record) {
        for (const SZVLGZvgGeoNamedTransf& named : record.geo->namedTransfs) {
            found.push_back({named.name, record.toOutermost * named.transf});
        }
    });
    return found;
}

std::vector<std::wstring> ReferencedNames(const SZVLGZvgComp& comp) {
    std::vector<std::wstring> names;
    for (const SZVLGZvgCompGeoRef& ref : comp.geoRefs) {
        for (const SZVLGZvgGeoId& row : ref.geoIds) names.push_back(GetGeoIdentification(row));
    }
    return names;
}

std::vector<std::wstring> ReferencedNames(const SZVLGCompView& view) {
    std::vector<std::wstring> names;
    names.reserve(view.geoIds.size());
    for (const SZVLGGeoIdView& row : view.geoIds) {
        std::wstring name = WideText(row.guidName.name);
        const bool leadsItself = !name.empty() && name != L"none";
        names.push_back(leadsItself ? std::move(name)
                                    : GetGeoIdentification({SerialKey(row.guidName.guid, name),
                                                            WideText(row.textA), L""}));
    }
    return names;
}

void WalkPlacements(
    const std::vector<std::wstring>& names, Budget& limits,
    const std::function<const NamedPlacements*(const std::wstring& name)>& placedBy,
    const std::function<void(const std::wstring& name, const CZVIMTransf& toModel)>& use) {
    PlacedNames placements(limits);
    for (const std::wstring& name : names) placements.AddReferenced(name, names.size() == 1);
    for (std::size_t i = 0; i < placements.Size(); ++i) {
        const PlacedName placed = placements.At(i);
        const NamedPlacements* const more = placedBy(placed.name);
        if (more == nullptr) continue;
        use(placed.name, placed.toModel);
        for (const SZVLGZvgGeoNamedTransf& named : *more) {
            placements.Add(named.name, placed.toModel * named.transf, i);
        }
    }
}

}  // namespace ZVSmartModel
