#include "model/pack/ModelScene.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>

#include "model/element/Utf8.h"
#include "model/scene/SceneBuilder.h"
#include "model/scene/TriangleLists.h"

namespace ZVSmartModel {

namespace {

Triangles SurfaceOf(const ShapePart& part) {
    Triangles surface;
    if (part.colour) surface.look = {ToUtf8(part.styleName), *part.colour};
    for (const ModelShell& shell : part.shells) {
        const auto first = static_cast<std::uint32_t>(surface.points.size());
        for (const ModelPoint& point : shell.points) {
            surface.points.push_back({point.x, point.y, point.z});
        }
        for (const auto& [a, b, c] : shell.triangles) {
            surface.triangles.push_back({first + a, first + b, first + c});
        }
    }
    DropUndrawable(surface);
    return surface;
}

/// Adds a shape when it is first asked for.
class ShapeAdder {
  public:
    ShapeAdder(const Model& model, SceneBuilder& builder) : model(model), builder(builder) {}

    std::optional<std::size_t> Number(std::size_t shape) {
        const auto [place, added] = numbers.try_emplace(shape);
        if (!added) return place->second;
        std::vector<Triangles> surfaces;
        for (const ShapePart& part : model.shapes[shape].parts) {
            surfaces.push_back(SurfaceOf(part));
        }
        place->second = builder.AddShape(std::to_wstring(shape), surfaces);
        return place->second;
    }

  private:
    const Model& model;
    SceneBuilder& builder;
    std::map<std::size_t, std::optional<std::size_t>> numbers;
};

}  // namespace

Scene SceneOf(const Model& model, const std::vector<const ModelElement*>& elements) {
    SceneBuilder builder;
    ShapeAdder shapes(model, builder);
    for (const ModelElement* element : elements) {
        const std::size_t component = builder.AddComponent();
        for (const PlacedShape& placed : element->shapes) {
            const auto shape = shapes.Number(placed.shape);
            if (shape) builder.Place(component, *shape, placed.placement, Look());
        }
    }
    return builder.Take();
}

}  // namespace ZVSmartModel
