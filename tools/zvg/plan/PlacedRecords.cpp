#include "tools/zvg/plan/PlacedRecords.h"

#include "tools/zvg/scene/RecordWalk.h"

using namespace ZVSmartZvg;

void PlacedRecords::Visit(const SZVLGZvgComp& comp, const Use& use) {
    SZVLGZvgGeo geo;  // the last that was asked for
    NamedPlacements placements;
    const auto placedBy = [&](const std::wstring& name) -> const NamedPlacements* {
        geo = SZVLGZvgGeo();
        if (!Read(name, geo)) return nullptr;
        placements = PlacementsIn(geo);
        return &placements;
    };
    WalkPlacements(comp, placedBy, [&](const std::wstring&, const CZVIMTransf& toModel) {
        VisitNested(geo, [&](const NestedRecord& nested) {
            const std::wstring_view styleName =
                nested.attr != nullptr ? std::wstring_view(nested.attr->styleName) : L"";
            use({nested.geo, toModel * nested.toOutermost, styleName});
        });
    });
}

void PlacedRecords::ThrowIfDamaged() const {
    if (firstDamage) throw ToolError(*firstDamage);
}

bool PlacedRecords::Read(const std::wstring& identification, SZVLGZvgGeo& geo) {
    try {
        return geos.Read(identification, geo);
    } catch (const ToolError& error) {
        if (error.Status() != ExitStatus::Damaged) throw;
        if (!firstDamage) firstDamage = error;
        return false;
    }
}
