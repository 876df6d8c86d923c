#include "model/import/ShapeStore.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace ZVSmartModel {

namespace {

/// FNV-1a of 64 bits (Fowler, Noll and Vo), and a check that multiplies and folds whole values;
/// fed with values instead of bytes of memory so that the result is the same on every machine.
class Hasher {
  public:
    void Add(std::uint64_t value) {
        for (int shift = 0; shift < 64; shift += 8) {
            digest.hash = (digest.hash ^ ((value >> shift) & 0xFF)) * 0x100000001B3;
        }
        digest.check = (digest.check ^ value) * 0x9E3779B97F4A7C15;
        digest.check ^= digest.check >> 32;
    }
    void Add(double value) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        Add(bits);
    }
    void Add(const std::wstring& text) {
        for (const wchar_t c : text) Add(static_cast<std::uint64_t>(c));
    }
    ShapeDigest Digest() const { return digest; }

  private:
    ShapeDigest digest = {0xCBF29CE484222325, 0};
};

double Rounded(double coordinate) {
    const double rounded =
        std::nearbyint(coordinate / ShapeStore::coordinateStep) * ShapeStore::coordinateStep;
    return rounded + 0.0;  // no negative zero
}

bool IsUsable(const ModelPoint& point) {
    return IsCoordinate(point.x) && IsCoordinate(point.y) && IsCoordinate(point.z);
}

using Triangle = std::array<std::uint32_t, 3>;

/// Begins the triangle with its smallest index; the direction of turning stays.
void RotateSmallestFirst(Triangle& triangle) {
    std::rotate(triangle.begin(), std::min_element(triangle.begin(), triangle.end()),
                triangle.end());
}

std::vector<ModelPoint> RoundedPoints(const std::vector<ModelPoint>& points) {
    std::vector<ModelPoint> rounded;
    rounded.reserve(points.size());
    for (const ModelPoint& p : points)
        rounded.push_back({Rounded(p.x), Rounded(p.y), Rounded(p.z)});
    return rounded;
}

bool IsUsable(const std::vector<ModelPoint>& points, const Triangle& triangle) {
    const auto& [a, b, c] = triangle;
    return IsUsable(points[a]) && IsUsable(points[b]) && IsUsable(points[c]);
}

/// Whether the triangle's corners are points that differ.
bool IsTriangle(const std::vector<ModelPoint>& points, const Triangle& triangle) {
    const auto& [a, b, c] = triangle;
    return points[a] != points[b] && points[b] != points[c] && points[c] != points[a];
}

/// Adds what it leaves out for its coordinates to `unusable`.
ModelShell Canonical(const ModelShell& shell, std::size_t& unusable) {
    const std::vector<ModelPoint> rounded = RoundedPoints(shell.points);
    ModelShell result;
    for (const Triangle& triangle : shell.triangles) {
        if (!IsUsable(rounded, triangle)) {
            ++unusable;
            continue;
        }
        if (!IsTriangle(rounded, triangle)) continue;
        result.triangles.push_back(triangle);
        for (const std::uint32_t corner : triangle) result.points.push_back(rounded[corner]);
    }
    std::sort(result.points.begin(), result.points.end());
    result.points.erase(std::unique(result.points.begin(), result.points.end()),
                        result.points.end());
    for (Triangle& triangle : result.triangles) {
        for (std::uint32_t& corner : triangle) {
            const auto place =
                std::lower_bound(result.points.begin(), result.points.end(), rounded[corner]);
            corner = static_cast<std::uint32_t>(place - result.points.begin());
        }
        RotateSmallestFirst(triangle);
    }
    std::sort(result.triangles.begin(), result.triangles.end());
    return result;
}

bool SameLook(const ShapePart& a, const ShapePart& b) {
    return a.colour == b.colour && a.styleName == b.styleName;
}

bool SameShell(const ModelShell& a, const ModelShell& b) {
    return a.points == b.points && a.triangles == b.triangles;
}

bool SamePart(const ShapePart& a, const ShapePart& b) {
    return SameLook(a, b) && std::equal(a.shells.begin(), a.shells.end(), b.shells.begin(),
                                        b.shells.end(), SameShell);
}

bool SameShape(const ModelShape& a, const ModelShape& b) {
    return a.unusable == b.unusable && a.curves == b.curves &&
           std::equal(a.parts.begin(), a.parts.end(), b.parts.begin(), b.parts.end(), SamePart);
}

}  // namespace

// Parts that look the same become one, in the order in which the looks first appear.
ModelShape CanonicalShape(const ModelShape& shape) {
    ModelShape result;
    for (const ShapePart& part : shape.parts) {
        for (const ModelShell& shell : part.shells) {
            ModelShell canonical = Canonical(shell, result.unusable);
            if (canonical.triangles.empty()) continue;
            auto target = std::find_if(result.parts.begin(), result.parts.end(),
                                       [&](const ShapePart& p) { return SameLook(p, part); });
            if (target == result.parts.end()) {
                target = result.parts.insert(target, {part.colour, part.styleName, {}});
            }
            target->shells.push_back(std::move(canonical));
        }
    }
    for (const ModelCurves& curves : shape.curves) {
        result.unusable += UnusableCurves(curves);
        ModelCurves rounded = RoundedCurves(curves, ShapeStore::coordinateStep);
        if (!rounded.IsEmpty()) result.curves.push_back(std::move(rounded));
    }
    return result;
}

ShapeDigest DigestOf(const ModelShape& shape) {
    Hasher hasher;
    for (const ShapePart& part : shape.parts) {
        const Rgba colour = part.colour.value_or(Rgba{0, 0, 0, 0});
        hasher.Add(std::uint64_t{part.colour.has_value()} << 32 | std::uint64_t{colour.red} << 24 |
                   std::uint64_t{colour.green} << 16 | std::uint64_t{colour.blue} << 8 |
                   std::uint64_t{colour.alpha});
        hasher.Add(part.styleName);
        hasher.Add(std::uint64_t{part.shells.size()});
        for (const ModelShell& shell : part.shells) {
            hasher.Add(std::uint64_t{shell.points.size()});
            for (const ModelPoint& point : shell.points) {
                hasher.Add(point.x);
                hasher.Add(point.y);
                hasher.Add(point.z);
            }
            for (const auto& triangle : shell.triangles) {
                for (const std::uint32_t corner : triangle) hasher.Add(std::uint64_t{corner});
            }
        }
    }
    for (const ModelCurves& curves : shape.curves) {
        hasher.Add(curves.name);
        for (const double number : NumbersOf(curves)) hasher.Add(number);
    }
    return hasher.Digest();
}

std::optional<std::size_t> ShapeStore::Add(const ModelShape& shape) {
    ModelShape canonical = CanonicalShape(shape);
    if (canonical.parts.empty() && canonical.curves.empty() && canonical.unusable == 0) {
        return std::nullopt;
    }
    const std::uint64_t hash = DigestOf(canonical).hash;
    const auto [first, last] = shapeByHash.equal_range(hash);
    for (auto i = first; i != last; ++i) {
        if (SameShape(shapes[i->second], canonical)) return i->second;
    }
    shapeByHash.emplace(hash, shapes.size());
    shapes.push_back(std::move(canonical));
    return shapes.size() - 1;
}

std::vector<ModelShape> ShapeStore::Take() {
    shapeByHash.clear();
    return std::exchange(shapes, {});
}

}  // namespace ZVSmartModel
