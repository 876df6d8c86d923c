#include "web/native/SceneWalk.h"

#include <algorithm>
#include <cmath>

namespace ZVSmartModel::Web {

namespace {

/// Metres within which 32 bits tell a tenth of a millimetre.
constexpr double nearby = 1024;

/// What the shape's points are taken from.
Point OriginOf(const Shape& shape) {
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
    return ReadShapes(file, here, request.body);
}

/// A floor's answer, as it grows.
struct SceneWalk::Chunk {
    Json looks, shapes;
    std::vector<Transform> transforms;
    std::vector<std::uint32_t> positions, shapeNumbers, lookNumbers;
    Answer geometry;  ///< of the shapes
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
                          Chunk& chunk) const {
    if (request.takesDoubles) return chunk.geometry.PutArray(points);
    std::vector<std::array<float, 3>> singles(points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            singles[i][axis] = static_cast<float>(points[i][axis] - origin[axis]);
        }
    }
    chunk.geometry.PutArray(singles);
}

void SceneWalk::Put(const Shape& shape, const Point& origin, Chunk& chunk) {
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
        PutPoints(surface.points, origin, chunk);
        chunk.geometry.PutArray(surface.normals);
        chunk.geometry.PutArray(surface.triangles);
    }
    json.Close(']').Key("curves").Open('[');
    for (const Polyline& curve : shape.curves) {
        json.Open('{').Key("role").Text(curve.role).Key("closed").Truth(curve.closed);
        json.Key("points").Number(curve.points.size()).Close('}');
        PutPoints(curve.points, origin, chunk);
    }
    json.Close(']').Close('}');
}

/// Answers the shape where it was not answered before.
const SceneWalk::Known& SceneWalk::KnownOf(const Shape& shape, Chunk& chunk) {
    const auto found = shapes.find(shape.key);
    if (found != shapes.end()) return found->second;
    const Point origin = request.takesDoubles ? Point{} : OriginOf(shape);
    Put(shape, origin, chunk);
    const auto number = static_cast<std::uint32_t>(shapes.size());
    return shapes.emplace(shape.key, Known{number, origin}).first->second;
}

void SceneWalk::Take(const BlockFile& file, const Shapes& read, Answer& answer) {
    const unsigned int next = NextFloor(file);
    const unsigned int here = read.placements.empty() ? next : read.placements[0].element.floor;
    const bool endsFloor = end == ElementIndex::none;
    Chunk chunk;
    chunk.looks.Open('[');
    chunk.shapes.Open('[');
    std::vector<const Known*> known(read.shapes.size());
    for (const Placement& placement : read.placements) {
        const Known*& shape = known[placement.shape];
        if (shape == nullptr) shape = &KnownOf(read.shapes[placement.shape], chunk);
        chunk.transforms.push_back(From(shape->origin, placement.toWorld));
        chunk.positions.push_back(placement.element.position);
        chunk.shapeNumbers.push_back(shape->number);
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
    answer.Reserve(text.size() + chunk.transforms.size() * perPlacement +
                   chunk.geometry.Bytes().size() + 64);
    answer.Put({reinterpret_cast<const char*>(&length), sizeof length});
    answer.Put(text);
    answer.PutArray(chunk.transforms);
    answer.PutArray(chunk.positions);
    answer.PutArray(chunk.shapeNumbers);
    answer.PutArray(chunk.lookNumbers);
    answer.PutArray(chunk.geometry.Bytes());
    floor = endsFloor ? next + 1 : next;
    position = endsFloor ? 0 : end;
}

}  // namespace ZVSmartModel::Web
