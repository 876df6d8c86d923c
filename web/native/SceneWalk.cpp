#include "web/native/SceneWalk.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace ZVSmartModel::Web {

namespace {

/// Metres within which 32 bits tell a tenth of a millimetre.
constexpr double nearby = 1024;

/// What the shape's points are taken from.
Point OriginFor(const Shape& shape) {
    const Point* first = nullptr;
    bool isNear = true;
    const auto look = [&](const std::vector<Point>& points) {
        if (first == nullptr && !points.empty()) first = points.data();
        for (const Point& point : points) {
            for (const double number : point) isNear = isNear && std::abs(number) < nearby;
        }
    };
    for (const Triangles& surface : shape.surfaces) look(surface.points);
    for (const Polyline& curve : shape.curves) look(curve.points);
    return isNear ? Point{} : *first;
}

/// What the arrays of a shape take in an answer, at most.
std::size_t BytesOf(const Shape& shape, bool areDoubles) {
    const std::size_t perPoint = areDoubles ? sizeof(Point) : 3 * sizeof(float);
    std::size_t bytes = 0;
    for (const Triangles& surface : shape.surfaces) {
        bytes += surface.points.size() * perPoint + 24;
        bytes += surface.normals.size() * sizeof surface.normals[0];
        bytes += surface.triangles.size() * sizeof surface.triangles[0];
    }
    for (const Polyline& curve : shape.curves) bytes += curve.points.size() * perPoint + 8;
    return bytes;
}

/// Local coordinates from `origin` on to the model's.
Transform From(const Point& origin, Transform toWorld) {
    if (origin == Point{}) return toWorld;
    for (std::size_t row = 0; row < 12; row += 4) {
        toWorld[row + 3] +=
            toWorld[row] * origin[0] + toWorld[row + 1] * origin[1] + toWorld[row + 2] * origin[2];
    }
    return toWorld;
}

}  // namespace

/// `none` behind the last.
unsigned int SceneWalk::NextFloor(const BlockFile& file) const {
    const Selection& wanted = request.selection;
    if (wanted.floor) return floor == 0 ? 0 : ElementIndex::none;
    unsigned int next = file.Head().floors <= floor ? ElementIndex::none : floor;
    if (wanted.elements.empty()) return next;
    next = ElementIndex::none;
    for (const ElementIndex& element : wanted.elements) {
        if (element.floor >= floor) next = std::min(next, element.floor);
    }
    return next;
}

/// Behind the last position of the next part; `none` where that goes to the end of its floor.
unsigned int SceneWalk::PartEnd(const BlockFile& file) const {
    const Selection& wanted = request.selection;
    const bool takesAll =
        !wanted.floor && wanted.rooms && wanted.elements.empty() && wanted.classNames.empty();
    if (request.elementsAtOnce == 0 || !takesAll) return ElementIndex::none;
    const unsigned int left = file.ElementCount(floor) - position;
    return left <= request.elementsAtOnce ? ElementIndex::none : position + request.elementsAtOnce;
}

Shapes SceneWalk::Read(const BlockFile& file) {
    const unsigned int next = NextFloor(file);
    Selection here = request.selection;
    if (!here.floor) here.floor = std::to_string(next);
    end = PartEnd(file);
    if (position != 0 || end != ElementIndex::none) {
        const unsigned int behind = std::min(end, file.ElementCount(next));
        for (unsigned int at = position; at < behind; ++at) here.elements.push_back({next, at});
    }
    return ReadShapes(file, here, request.body, {},
                      [this](const std::string& key) { return shapes.contains(key); });
}

/// A floor's answer, as it grows.
struct SceneWalk::Chunk {
    Json looks, shapes;
    std::vector<Transform> transforms;
    std::vector<std::uint32_t> positions, shapeNumbers, lookNumbers;
    std::vector<std::pair<Shape*, Point>> added;  ///< with their origins
};

std::uint32_t SceneWalk::NumberOf(const Look& look, Chunk& chunk) {
    const auto [known, isNew] = looks.emplace(look, static_cast<std::uint32_t>(looks.size()));
    if (isNew) {
        Json& json = chunk.looks.Open('{').Key("name").Text(look.name).Key("colour").Open('[');
        json.Number(look.colour.red).Number(look.colour.green);
        json.Number(look.colour.blue).Number(look.colour.alpha).Close(']').Close('}');
    }
    return known->second;
}

void SceneWalk::PutPoints(const std::vector<Point>& points, const Point& origin,
                          Answer& answer) const {
    if (request.takesDoubles) return answer.PutArray(points);
    std::vector<std::array<float, 3>> singles(points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            singles[i][axis] = static_cast<float>(points[i][axis] - origin[axis]);
        }
    }
    answer.PutArray(singles);
}

void SceneWalk::PutArrays(const Shape& shape, const Point& origin, Answer& answer) const {
    for (const Triangles& surface : shape.surfaces) {
        PutPoints(surface.points, origin, answer);
        answer.PutArray(surface.normals);
        answer.PutArray(surface.triangles);
    }
    for (const Polyline& curve : shape.curves) PutPoints(curve.points, origin, answer);
}

void SceneWalk::Tell(const Shape& shape, Chunk& chunk) {
    Json& json = chunk.shapes.Open('{').Key("key").Text(shape.key).Key("surfaces").Open('[');
    for (const Triangles& surface : shape.surfaces) {
        json.Open('{').Key("look");
        if (surface.look) {
            json.Number(NumberOf(*surface.look, chunk));
        } else {
            json.Null();
        }
        json.Key("points").Number(surface.points.size());
        json.Key("normals").Number(surface.normals.size());
        json.Key("triangles").Number(surface.triangles.size()).Close('}');
    }
    json.Close(']').Key("curves").Open('[');
    for (const Polyline& curve : shape.curves) {
        json.Open('{').Key("role").Text(curve.role).Key("closed").Truth(curve.closed);
        json.Key("points").Number(curve.points.size()).Close('}');
    }
    json.Close(']').Close('}');
}

/// Answers the shape where it was not answered before.
std::uint32_t SceneWalk::NumberOf(Shape& shape, Chunk& chunk) {
    const auto number = static_cast<std::uint32_t>(shapes.size());
    const auto [known, isNew] = shapes.emplace(shape.key, number);
    if (!isNew) return known->second;
    const Point origin = request.takesDoubles ? Point{} : OriginFor(shape);
    if (origin != Point{}) origins.emplace(number, origin);
    Tell(shape, chunk);
    chunk.added.emplace_back(&shape, origin);
    return number;
}

Point SceneWalk::OriginOf(std::uint32_t shape) const {
    const auto found = origins.find(shape);
    return found == origins.end() ? Point{} : found->second;
}

void SceneWalk::Take(const BlockFile& file, Shapes read, Answer& answer) {
    const unsigned int next = NextFloor(file);
    const unsigned int here = read.placements.empty() ? next : read.placements[0].element.floor;
    const bool endsFloor = end == ElementIndex::none;
    Chunk chunk;
    chunk.looks.Open('[');
    chunk.shapes.Open('[');
    std::vector<std::optional<std::uint32_t>> numbers(read.shapes.size());
    for (const Placement& placement : read.placements) {
        std::optional<std::uint32_t>& shape = numbers[placement.shape];
        if (!shape) shape = NumberOf(read.shapes[placement.shape], chunk);
        chunk.transforms.push_back(From(OriginOf(*shape), placement.toWorld));
        chunk.positions.push_back(placement.element.position);
        chunk.shapeNumbers.push_back(*shape);
        chunk.lookNumbers.push_back(NumberOf(placement.look, chunk));
    }
    std::string text = "{\"floor\":" + std::to_string(here) +
                       ",\"endsFloor\":" + (endsFloor ? "true" : "false") +
                       ",\"missing\":" + std::to_string(read.missing) +
                       ",\"placements\":" + std::to_string(read.placements.size()) +
                       ",\"looks\":" + chunk.looks.Close(']').Written() +
                       ",\"shapes\":" + chunk.shapes.Close(']').Written() + '}';
    text.resize((text.size() + 4 + 7) / 8 * 8 - 4, ' ');
    const auto length = static_cast<std::uint32_t>(text.size());
    const std::size_t perPlacement = sizeof(Transform) + 3 * sizeof(std::uint32_t);
    std::size_t bytes = text.size() + chunk.transforms.size() * perPlacement + 64;
    for (const auto& [shape, origin] : chunk.added) bytes += BytesOf(*shape, request.takesDoubles);
    answer.Reserve(bytes);
    answer.Put({reinterpret_cast<const char*>(&length), sizeof length});
    answer.Put(text);
    answer.PutArray(chunk.transforms);
    answer.PutArray(chunk.positions);
    answer.PutArray(chunk.shapeNumbers);
    answer.PutArray(chunk.lookNumbers);
    for (const auto& [shape, origin] : chunk.added) {
        PutArrays(*shape, origin, answer);
        *shape = Shape();  // the module's memory never shrinks, so that peaks count
    }
    floor = endsFloor ? next + 1 : next;
    position = endsFloor ? 0 : end;
}

}  // namespace ZVSmartModel::Web
