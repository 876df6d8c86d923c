#include "model/plan/Rings.h"

#include <algorithm>
#include <cstddef>

namespace ZVSmartModel {

namespace {

/// Walks along pieces that were not walked before. Where the walk comes back to a point that it
/// has passed, the way since then is a ring and is taken out; where it can go no further, its
/// last piece belongs to no ring and the walk steps back. (How Hierholzer finds the loops of a
/// graph.)
class Walker {
  public:
    explicit Walker(const SurfaceSection& section) : pieces(section) {
        for (const SectionPiece& piece : pieces) {
            points.push_back(piece.from);
            points.push_back(piece.to);
        }
        std::sort(points.begin(), points.end());
        points.erase(std::unique(points.begin(), points.end()), points.end());
        walked.resize(pieces.size());
        placeOnWay.assign(points.size(), notOnWay);
        piecesAt.resize(points.size());
        for (std::size_t i = 0; i < pieces.size(); ++i) {
            piecesAt[NumberOf(pieces[i].from)].push_back(i);
            piecesAt[NumberOf(pieces[i].to)].push_back(i);
        }
    }

    SplitSection Split() {
        for (std::size_t point = 0; point < points.size(); ++point) {
            way = {point};
            placeOnWay[point] = 0;
            while (!way.empty()) Step();
        }
        return std::move(result);
    }

  private:
    static constexpr std::size_t notOnWay = static_cast<std::size_t>(-1);

    std::size_t NumberOf(const SectionPoint& point) const {
        return static_cast<std::size_t>(std::lower_bound(points.begin(), points.end(), point) -
                                        points.begin());
    }

    void Step() {
        std::vector<std::size_t>& here = piecesAt[way.back()];
        while (!here.empty() && walked[here.back()]) here.pop_back();
        if (here.empty()) {
            StepBack();
            return;
        }
        const SectionPiece& piece = pieces[here.back()];
        walked[here.back()] = true;
        here.pop_back();
        const bool forward = piece.from == points[way.back()];
        const std::size_t next = NumberOf(forward ? piece.to : piece.from);
        if (placeOnWay[next] != notOnWay) {
            TakeRing(placeOnWay[next]);
        } else {
            placeOnWay[next] = way.size();
            way.push_back(next);
        }
    }

    void StepBack() {
        const std::size_t last = way.back();
        placeOnWay[last] = notOnWay;
        way.pop_back();
        if (!way.empty()) result.rest.push_back({points[way.back()], points[last]});
    }

    /// Two pieces there and back are no area: one of them is kept as a line.
    void TakeRing(std::size_t begin) {
        const std::size_t count = way.size() - begin;
        SurfaceSection ring;
        for (std::size_t i = begin; i < way.size(); ++i) {
            const std::size_t next = i + 1 < way.size() ? i + 1 : begin;
            ring.push_back({points[way[i]], points[way[next]]});
        }
        if (count == 2) result.rest.push_back(ring.front());
        if (count > 2) result.rings.push_back(std::move(ring));
        for (std::size_t i = begin + 1; i < way.size(); ++i) placeOnWay[way[i]] = notOnWay;
        way.resize(begin + 1);
    }

    const SurfaceSection& pieces;
    std::vector<SectionPoint> points;                ///< ascending; their places are their numbers
    std::vector<bool> walked;                        ///< by piece
    std::vector<std::vector<std::size_t>> piecesAt;  ///< by point; some are walked already
    std::vector<std::size_t> way;                    ///< points, from the first to where we are
    std::vector<std::size_t> placeOnWay;             ///< by point
    SplitSection result;
};

}  // namespace

SplitSection SplitIntoRings(const SurfaceSection& section) {
    return Walker(section).Split();
}

}  // namespace ZVSmartModel
