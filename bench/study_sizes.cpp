// What a writer may order or name otherwise without changing the format, and what that does to a
// file's size.
//   study_sizes FILE...     block files that `zvg pack` made
// Prints lines of: payload, bytes as it is, and for each change by how many percent the file grows.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <tuple>

#include "bench/Payload.h"

using namespace bench;
using ZVIM::GeometryModelResource::CZVIMShell;
using ZVIM::GeometryPrimitiveResource::CZVIMPosition;
using ZVSmartZvg::PropertyList;
using ZVSmartZvg::SZVLGZvgCompGeoRef;
using ZVSmartZvg::SZVLGZvgGeoId;

namespace {

using Face = std::vector<int>;

std::vector<Face> FacesOf(const CZVIMShell& shell) {
    std::vector<Face> faces;
    const auto& flat = shell.GetFacesIndex();
    for (std::size_t at = 0; at < flat.size();) {
        const auto count = static_cast<std::size_t>(flat[at++]);
        Face& face = faces.emplace_back();
        for (std::size_t i = 0; i < count && at < flat.size(); ++i)
            face.push_back(static_cast<int>(flat[at++]));
    }
    return faces;
}

CZVIMShell ShellOf(const std::vector<CZVIMPosition>& points, const std::vector<Face>& faces) {
    CZVIMShell shell;
    shell.AddPts(points);
    for (const Face& face : faces) shell.AddFaceIndex(face);
    return shell;
}

/// The shell with its points in the order that their old numbers have in `order`.
CZVIMShell Reordered(const CZVIMShell& shell, const std::vector<int>& order) {
    std::vector<CZVIMPosition> points;
    std::vector<int> numbers(order.size());
    for (const int old : order) {
        numbers[static_cast<std::size_t>(old)] = static_cast<int>(points.size());
        points.push_back(shell.GetPoints()[static_cast<std::size_t>(old)]);
    }
    std::vector<Face> faces = FacesOf(shell);
    for (Face& face : faces) {
        for (int& corner : face) corner = numbers[static_cast<std::size_t>(corner)];
        std::rotate(face.begin(), std::min_element(face.begin(), face.end()), face.end());
    }
    std::sort(faces.begin(), faces.end());
    return ShellOf(points, faces);
}

CZVIMShell ByHeight(const CZVIMShell& shell) {
    const auto& points = shell.GetPoints();
    std::vector<int> order(points.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = static_cast<int>(i);
    const auto key = [&points](int i) {
        const CZVIMPosition& point = points[static_cast<std::size_t>(i)];
        return std::make_tuple(point.GetZ(), point.GetY(), point.GetX());
    };
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return key(a) < key(b); });
    return Reordered(shell, order);
}

CZVIMShell ByFirstUse(const CZVIMShell& shell) {
    std::vector<int> order;
    std::set<int> seen;
    for (const Face& face : FacesOf(shell))
        for (const int corner : face)
            if (seen.insert(corner).second) order.push_back(corner);
    for (int i = 0; i < static_cast<int>(shell.GetPoints().size()); ++i)
        if (seen.insert(i).second) order.push_back(i);
    return Reordered(shell, order);
}

CZVIMShell Mapped(const CZVIMShell& shell, double (*map)(double)) {
    std::vector<CZVIMPosition> points;
    for (const CZVIMPosition& p : shell.GetPoints())
        points.emplace_back(map(p.GetX()), map(p.GetY()), map(p.GetZ()));
    return ShellOf(points, FacesOf(shell));
}

double WithoutNegativeZero(double value) {
    return value + 0.0;
}

double TenDecimals(double value) {
    return std::round(value * 1e10) / 1e10 + 0.0;
}

/// `zvg pack` nests no deeper than one level.
template <class Change>
void ForEachShell(Payload& payload, Change change) {
    for (auto& [name, geo] : payload.geos) {
        for (CZVIMShell& shell : geo.shells) shell = change(shell);
        for (auto& sub : geo.subGeos)
            for (CZVIMShell& shell : sub.geo.shells) shell = change(shell);
    }
}

void MapNumbers(Payload& payload, double (*map)(double)) {
    ForEachShell(payload, [map](const CZVIMShell& shell) { return Mapped(shell, map); });
    for (auto& [name, geo] : payload.geos)
        for (auto& placed : geo.namedTransfs)
            for (int row = 0; row < 3; ++row)
                for (int column = 0; column < 4; ++column)
                    placed.transf.SetAt(row, column, map(placed.transf.GetAt(row, column)));
}

/// Bodies go by their components' GUIDs.
void NameByGuid(Payload& payload) {
    std::map<std::wstring, std::wstring> names;
    for (SZVLGZvgComp& comp : payload.comps)
        for (SZVLGZvgCompGeoRef& reference : comp.geoRefs)
            for (SZVLGZvgGeoId& row : reference.geoIds) {
                names[row.guidName.name] = comp.compGuidName.name;
                row.guidName.name = comp.compGuidName.name;
            }
    for (auto& [name, geo] : payload.geos)
        if (const auto found = names.find(name); found != names.end()) name = found->second;
}

void ShapesAhead(Payload& payload) {
    std::stable_partition(payload.geos.begin(), payload.geos.end(),
                          [](const auto& geo) { return geo.second.namedTransfs.empty(); });
}

/// A property stays with what is said of its kind, which follows it under its name and an @.
void ShuffleProperties(Payload& payload) {
    std::mt19937 random(1);
    for (SZVLGZvgComp& comp : payload.comps) {
        std::vector<PropertyList> properties;
        for (const auto& pair : comp.compProperties) {
            const bool isKind =
                !properties.empty() && pair.first == properties.back().front().first + L'@';
            if (!isKind) properties.emplace_back();
            properties.back().push_back(pair);
        }
        std::shuffle(properties.begin(), properties.end(), random);
        comp.compProperties.clear();
        for (const PropertyList& property : properties)
            comp.compProperties.insert(comp.compProperties.end(), property.begin(), property.end());
    }
}

void ComponentsByGuid(Payload& payload) {
    std::stable_sort(payload.comps.begin(), payload.comps.end(), [](const auto& a, const auto& b) {
        return std::tie(a.classLevel1Id, a.compGuidName.name) <
               std::tie(b.classLevel1Id, b.compGuidName.name);
    });
}

const std::array<std::pair<const char*, std::function<void(Payload&)>>, 8> changes = {{
    {"bodies named by GUID", NameByGuid},
    {"components by GUID", ComponentsByGuid},
    {"properties in no order", ShuffleProperties},
    {"shapes ahead of bodies", ShapesAhead},
    {"points by height", [](Payload& p) { ForEachShell(p, ByHeight); }},
    {"points by first use", [](Payload& p) { ForEachShell(p, ByFirstUse); }},
    {"no negative zeros", [](Payload& p) { MapNumbers(p, WithoutNegativeZero); }},
    {"ten decimals", [](Payload& p) { MapNumbers(p, TenDecimals); }},
}};

}  // namespace

int main(int argc, char** argv) {
    for (int arg = 1; arg < argc; ++arg) {
        const Payload payload = LoadPayload(argv[arg]);
        const std::size_t bytes = Written(payload, Part::both, 2).size();
        std::printf("%s\t%zu", payload.name.c_str(), bytes);
        for (const auto& [name, change] : changes) {
            Payload changed = payload;
            change(changed);
            const std::size_t now = Written(changed, Part::both, 2).size();
            std::printf("\t%s %+.1f", name,
                        100 * (static_cast<double>(now) / static_cast<double>(bytes) - 1));
        }
        std::printf("\n");
    }
    return 0;
}
