#include "model/plan/Chains.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace ZVSmartModel {

namespace {

double DistanceToLine(const PlanPoint& point, const PlanPoint& a, const PlanPoint& b) {
    const double length = std::hypot(b.x - a.x, b.y - a.y);
    if (length == 0) return std::hypot(point.x - a.x, point.y - a.y);
    return std::fabs((b.x - a.x) * (point.y - a.y) - (b.y - a.y) * (point.x - a.x)) / length;
}

/// Follows pieces that were not followed before until it can go no further.
class Follower {
  public:
    Follower(const SurfaceSection& pieces, bool isDirected)
        : pieces(pieces), followed(pieces.size()) {
        for (const SectionPiece& piece : pieces) {
            points.push_back(piece.from);
            points.push_back(piece.to);
        }
        std::sort(points.begin(), points.end());
        points.erase(std::unique(points.begin(), points.end()), points.end());
        leaving.resize(points.size());
        for (std::size_t i = 0; i < pieces.size(); ++i) {
            leaving[NumberOf(pieces[i].from)].push_back(i);
            if (!isDirected) leaving[NumberOf(pieces[i].to)].push_back(i);
        }
    }

    std::vector<PlanPath> FollowAll(bool endsFirst) {
        std::vector<PlanPath> paths;
        for (const bool isFirst : {true, false}) {
            if (isFirst && !endsFirst) continue;
            for (std::size_t point = 0; point < points.size(); ++point) {
                if (isFirst && leaving[point].size() % 2 == 0) continue;
                while (HasLeaving(point)) {
                    paths.push_back(Follow(point));
                    if (isFirst) break;
                }
            }
        }
        return paths;
    }

  private:
    std::size_t NumberOf(const SectionPoint& point) const {
        return static_cast<std::size_t>(std::lower_bound(points.begin(), points.end(), point) -
                                        points.begin());
    }

    bool HasLeaving(std::size_t point) {
        std::vector<std::size_t>& here = leaving[point];
        while (!here.empty() && followed[here.back()]) here.pop_back();
        return !here.empty();
    }

    PlanPath Follow(std::size_t first) {
        PlanPath path;
        std::size_t at = first;
        path.vertices.push_back({InMetres(points[at])});
        while (HasLeaving(at)) {
            const std::size_t number = leaving[at].back();
            followed[number] = true;
            const SectionPiece& piece = pieces[number];
            at = NumberOf(piece.from == points[at] ? piece.to : piece.from);
            path.vertices.push_back({InMetres(points[at])});
        }
        path.closed = at == first && path.vertices.size() > 3;
        if (path.closed) path.vertices.pop_back();
        DropStraightCorners(path);
        return path;
    }

    const SurfaceSection& pieces;
    std::vector<bool> followed;
    std::vector<SectionPoint> points;               ///< ascending; their places are their numbers
    std::vector<std::vector<std::size_t>> leaving;  ///< pieces, by point
};

}  // namespace

std::vector<PlanPath> ChainPieces(const SurfaceSection& pieces) {
    return Follower(pieces, false).FollowAll(true);
}

std::vector<PlanPath> ChainDirected(const SurfaceSection& pieces) {
    return Follower(pieces, true).FollowAll(false);
}

SurfaceSection CancelOpposites(SurfaceSection pieces) {
    const auto isForward = [](const SectionPiece& piece) { return piece.from < piece.to; };
    const auto ends = [&](const SectionPiece& piece) {
        return isForward(piece) ? std::pair(piece.from, piece.to) : std::pair(piece.to, piece.from);
    };
    std::sort(pieces.begin(), pieces.end(),
              [&](const SectionPiece& a, const SectionPiece& b) { return ends(a) < ends(b); });
    SurfaceSection left;
    for (std::size_t i = 0; i < pieces.size();) {
        std::ptrdiff_t forward = 0;
        const auto between = ends(pieces[i]);
        for (; i < pieces.size() && ends(pieces[i]) == between; ++i) {
            forward += isForward(pieces[i]) ? 1 : -1;
        }
        for (; forward > 0; --forward) left.push_back({between.first, between.second});
        for (; forward < 0; ++forward) left.push_back({between.second, between.first});
    }
    return left;
}

void DropStraightCorners(PlanPath& path) {
    std::vector<PlanVertex> kept;
    const std::vector<PlanVertex>& all = path.vertices;
    for (std::size_t i = 0; i < all.size(); ++i) {
        const bool isEnd = !path.closed && (i == 0 || i + 1 == all.size());
        const PlanPoint& before = kept.empty() ? all.back().point : kept.back().point;
        const PlanPoint& after = all[(i + 1) % all.size()].point;
        if (isEnd || DistanceToLine(all[i].point, before, after) > sectionStep) {
            kept.push_back(all[i]);
        }
    }
    if (kept.size() >= (path.closed ? 3U : 2U)) path.vertices = std::move(kept);
}

PlanPoint InMetres(const SectionPoint& point) {
    return {static_cast<double>(point.x) * sectionStep, static_cast<double>(point.y) * sectionStep};
}

}  // namespace ZVSmartModel
