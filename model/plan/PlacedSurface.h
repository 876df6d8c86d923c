#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

#include "ZVSmartZvg/Geo.h"
#include "model/plan/HeightRange.h"

namespace ZVSmartModel {

/// A surface of a record where it lies in the model, in metres. All faces lead to points that are
/// within 1,000,000 km.
class PlacedSurface {
  public:
    PlacedSurface(const std::vector<ZVSmartZvg::CZVIMPosition>& points,
                  const ZVSmartZvg::CZVIMTransf& toModel);

    /// Adds a face unless an index of it leads nowhere.
    template <typename Index>
    void AddFace(std::span<const Index> face) {
        HeightRange reach;
        for (const Index corner : face) {
            if (!IsUsable(static_cast<std::size_t>(corner))) return;
            reach.Add(points[static_cast<std::size_t>(corner)].GetZ());
        }
        if (reach.IsEmpty()) return;
        range.Add(reach);
        for (const Index corner : face) corners.push_back(static_cast<std::size_t>(corner));
        ends.push_back(corners.size());
    }

    const std::vector<ZVSmartZvg::CZVIMPosition>& Points() const { return points; }
    std::size_t FaceCount() const { return ends.size(); }
    /// The indices of a face's corners.
    std::span<const std::size_t> Face(std::size_t number) const {
        const std::size_t begin = number == 0 ? 0 : ends[number - 1];
        return std::span(corners).subspan(begin, ends[number] - begin);
    }
    const HeightRange& Range() const { return range; }

  private:
    bool IsUsable(std::size_t corner) const;

    std::vector<ZVSmartZvg::CZVIMPosition> points;
    std::vector<std::size_t> corners, ends;  ///< of all faces; where each ends among `corners`
    HeightRange range;
};

/// Hands each surface of the record itself to `use`: shells, visual shells, poly face meshes,
/// meshes and the triangles of render meshes. Untrusted records are safe.
void ForEachSurface(const ZVSmartZvg::SZVLGZvgGeo& record, const ZVSmartZvg::CZVIMTransf& toModel,
                    const std::function<void(const PlacedSurface& surface)>& use);

}  // namespace ZVSmartModel
