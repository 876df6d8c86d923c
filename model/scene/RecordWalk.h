#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "ZVSmartZvg/CompView.h"
#include "ZVSmartZvg/Geo.h"
#include "model/element/Budget.h"

namespace ZVSmartModel {

/// A record within a record, or the outermost one itself.
struct NestedRecord {
    const ZVSmartZvg::SZVLGZvgGeo* geo = nullptr;
    const ZVSmartZvg::SZVLGZvgDisplayAttr* attr = nullptr;  ///< its own; null for the outermost
    /// The innermost display attributes around it that hold a colour; null for none.
    const ZVSmartZvg::SZVLGZvgDisplayAttr* coloured = nullptr;
    ZVSmartZvg::CZVIMTransf toOutermost;  ///< its coordinates to those of the outermost record
};

/// Whether the attributes hold a colour.
bool HasColour(const ZVSmartZvg::SZVLGZvgDisplayAttr& attr);

/// Hands a record and all that is nested in it to `use`, in order. A loop: records may nest deeper
/// than the stack is.
void VisitNested(const ZVSmartZvg::SZVLGZvgGeo& outermost,
                 const std::function<void(const NestedRecord&)>& use);

/// What a stored geometry places by name, the nested records' placements included.
using NamedPlacements = std::vector<ZVSmartZvg::SZVLGZvgGeoNamedTransf>;

/// The named placements of a record and of all that is nested in it, in its own coordinates.
NamedPlacements PlacementsIn(const ZVSmartZvg::SZVLGZvgGeo& geo);

/// The names of the geometries that a component's references lead to; some may come twice.
/// @{
std::vector<std::wstring> ReferencedNames(const ZVSmartZvg::SZVLGZvgComp& comp);
std::vector<std::wstring> ReferencedNames(const ZVSmartZvg::SZVLGCompView& view);
/// @}

/// Finds what a component's body consists of: the geometries that its references lead to, and
/// those that these place by name.
///
/// `names` are those of the references (see ReferencedNames). `placedBy(name)` gives what the
/// geometry stored under a name places, null where there is none; the answer must hold until the
/// next call. `use` then gets that name and its coordinates to the model's. Untrusted files are
/// safe: a name that leads back to itself is left out, chains of placements end at 16 links, and
/// each placement is charged to `limits`.
void WalkPlacements(const std::vector<std::wstring>& names, Budget& limits,
                    const std::function<const NamedPlacements*(const std::wstring& name)>& placedBy,
                    const std::function<void(const std::wstring& name,
                                             const ZVSmartZvg::CZVIMTransf& toModel)>& use);

}  // namespace ZVSmartModel
