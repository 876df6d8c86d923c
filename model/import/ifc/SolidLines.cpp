#include "model/import/ifc/SolidLines.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ZVSmartModel {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// Newell's sum: a vector along the normal, as long as twice the area.
SolidVector NormalOf(const SolidVector* corners, std::size_t count) {
    SolidVector normal = carve::geom::VECTOR(0, 0, 0);
    for (std::size_t i = 1; i + 1 < count; ++i) {
        normal += carve::geom::cross(corners[i] - corners[0], corners[i + 1] - corners[0]);
    }
    return normal;
}

/// Whether a point of a polygon's plane is inside, by the edges that a ray from it crosses when
/// the polygon is seen along `axis`.
bool IsWithin(const SolidVector* corners, std::size_t count, const SolidVector& point,
              unsigned int axis) {
    const unsigned int u = (axis + 1) % 3;
    const unsigned int v = (axis + 2) % 3;
    bool within = false;
    for (std::size_t i = 0, before = count - 1; i < count; before = i++) {
        const SolidVector& a = corners[before];
        const SolidVector& b = corners[i];
        if ((a.v[v] > point.v[v]) == (b.v[v] > point.v[v])) continue;
        const double part = (point.v[v] - a.v[v]) / (b.v[v] - a.v[v]);
        if (point.v[u] < a.v[u] + part * (b.v[u] - a.v[u])) within = !within;
    }
    return within;
}

}  // namespace

bool SolidBox::IsEmpty() const {
    return !(low.x <= high.x && low.y <= high.y && low.z <= high.z);
}

SolidBox SolidBox::Overlap(const SolidBox& other) const {
    SolidBox both = *this;
    for (unsigned int i = 0; i < 3; ++i) {
        both.low.v[i] = std::max(low.v[i], other.low.v[i]);
        both.high.v[i] = std::min(high.v[i], other.high.v[i]);
    }
    return both;
}

SolidLines::SolidLines(const Solid& solid)
    : box{carve::geom::VECTOR(infinity, infinity, infinity),
          carve::geom::VECTOR(-infinity, -infinity, -infinity)} {
    for (const auto* mesh : solid.meshes) {
        for (const auto* face : mesh->faces) Add(*face);
    }
}

void SolidLines::Add(const Solid::face_t& source) {
    Face face;
    face.first = corners.size();
    const auto* edge = source.edge;
    do {
        corners.push_back(edge->vert->v);
        edge = edge->next;
    } while (edge != source.edge);
    face.count = corners.size() - face.first;
    const SolidVector* const own = &corners[face.first];
    SolidBox bounds = {own[0], own[0]};
    for (std::size_t i = 0; i < face.count; ++i) {
        for (unsigned int k = 0; k < 3; ++k) {
            bounds.low.v[k] = std::min(bounds.low.v[k], own[i].v[k]);
            bounds.high.v[k] = std::max(bounds.high.v[k], own[i].v[k]);
        }
    }
    for (unsigned int k = 0; k < 3; ++k) {
        box.low.v[k] = std::min(box.low.v[k], bounds.low.v[k]);
        box.high.v[k] = std::max(box.high.v[k], bounds.high.v[k]);
    }
    face.normal = NormalOf(own, face.count);
    face.middle = (bounds.low + bounds.high) / 2;
    face.radius = (bounds.high - bounds.low).length() / 2;
    // From a corner of the solid, so that far coordinates cost no digits.
    volume += carve::geom::dot(own[0] - corners[0], face.normal) / 6;
    faces.push_back(face);
}

bool SolidLines::Meets(const Face& face, const SolidLine& line, double& distance) const {
    const SolidVector toMiddle = face.middle - line.origin;
    const double along = carve::geom::dot(toMiddle, line.direction);
    if (toMiddle.length2() - along * along > face.radius * face.radius) return false;
    const double slope = carve::geom::dot(face.normal, line.direction);
    if (slope == 0) return false;
    const SolidVector* const own = &corners[face.first];
    distance = carve::geom::dot(face.normal, own[0] - line.origin) / slope;
    const SolidVector point = line.origin + line.direction * distance;
    return IsWithin(own, face.count, point,
                    static_cast<unsigned int>(carve::geom::largestAxis(face.normal)));
}

std::vector<SolidLines::Crossing> SolidLines::Crossings(const SolidLine& line) const {
    std::vector<Crossing> crossings;
    for (const Face& face : faces) {
        double distance = 0;
        if (!Meets(face, line, distance)) continue;
        const bool enters = carve::geom::dot(face.normal, line.direction) < 0;
        crossings.push_back({distance, enters ? 1 : -1});
    }
    std::sort(crossings.begin(), crossings.end(), [](const Crossing& a, const Crossing& b) {
        // Where two touch, what is entered first is left later.
        return a.distance != b.distance ? a.distance < b.distance : a.step > b.step;
    });
    return crossings;
}

std::optional<LinePieces> SolidLines::Inside(const SolidLine& line) const {
    LinePieces pieces;
    int depth = 0;
    for (const Crossing& crossing : Crossings(line)) {
        if (depth == 0 && crossing.step > 0) {
            const bool goesOn = !pieces.empty() && pieces.back().second >= crossing.distance;
            if (!goesOn) pieces.emplace_back(crossing.distance, crossing.distance);
        }
        depth += crossing.step;
        if (depth < 0) return std::nullopt;
        if (depth == 0) pieces.back().second = crossing.distance;
    }
    if (depth != 0) return std::nullopt;
    return pieces;
}

double SolidLines::Thinnest(const SolidLine& line) const {
    double thinnest = infinity;
    const std::vector<Crossing> crossings = Crossings(line);
    for (std::size_t i = 1; i < crossings.size(); ++i) {
        if (crossings[i].step == crossings[i - 1].step) continue;
        thinnest = std::min(thinnest, crossings[i].distance - crossings[i - 1].distance);
    }
    return thinnest;
}

SolidVector SolidLines::NormalOfLargestFace() const {
    const auto largest = std::max_element(
        faces.begin(), faces.end(),
        [](const Face& a, const Face& b) { return a.normal.length2() < b.normal.length2(); });
    if (largest == faces.end() || largest->normal.length2() == 0) {
        return carve::geom::VECTOR(0, 0, 1);
    }
    return largest->normal / largest->normal.length();
}

}  // namespace ZVSmartModel
