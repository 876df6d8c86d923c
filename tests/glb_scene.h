#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tool_support.h"

// What tests know of glTF: where things are and how many.

namespace glb {

using nlohmann::json;
using Point = std::array<double, 3>;
using Path = std::vector<std::size_t>;

/// Where a node's ancestors and itself put a point, root first in `path`.
inline Point ToWorld(const json& gltf, const Path& path, Point point) {
    const auto place = [&point](const Point& scale, const std::array<double, 4>& q,
                                const Point& move) {
        for (std::size_t i = 0; i < 3; ++i) point[i] *= scale[i];
        // p + 2w (q × p) + 2 q × (q × p)
        const auto cross = [&q](const Point& p) {
            return Point{q[1] * p[2] - q[2] * p[1], q[2] * p[0] - q[0] * p[2],
                         q[0] * p[1] - q[1] * p[0]};
        };
        const Point once = cross(point);
        const Point twice = cross(once);
        for (std::size_t i = 0; i < 3; ++i) {
            point[i] += 2 * q[3] * once[i] + 2 * twice[i] + move[i];
        }
    };
    for (auto at = path.rbegin(); at != path.rend(); ++at) {
        const json& node = gltf["nodes"][*at];
        place(node.value("scale", Point{1, 1, 1}),
              node.value("rotation", std::array<double, 4>{0, 0, 0, 1}),
              node.value("translation", Point{0, 0, 0}));
    }
    return point;
}

/// Calls `use` for the node that `path` ends with and those below it.
inline void Visit(const json& gltf, const Path& path,
                  const std::function<void(const json&, const Path&)>& use) {
    const json& node = gltf["nodes"][path.back()];
    use(node, path);
    for (const json& child : node.value("children", json::array())) {
        Path longer = path;
        longer.push_back(child);
        Visit(gltf, longer, use);
    }
}

/// A file and its binary data, decompressed by whoever makes it.
struct File {
    json text;
    std::vector<std::string> views;

    explicit File(const std::string& bytes) : text(JsonOfGlb(bytes)) {
        std::uint32_t jsonBytes = 0;
        std::memcpy(&jsonBytes, &bytes[12], sizeof jsonBytes);
        for (const json& view : text["bufferViews"]) {
            const json& stored =
                view.contains("extensions") ? view["extensions"]["EXT_meshopt_compression"] : view;
            views.push_back(bytes.substr(28 + jsonBytes + stored["byteOffset"].get<std::size_t>(),
                                         stored["byteLength"].get<std::size_t>()));
        }
    }

    /// The elements of an accessor, as numbers that they stand for.
    std::vector<std::vector<double>> Elements(std::size_t number) const {
        const json& accessor = text["accessors"][number];
        const std::size_t view = accessor["bufferView"];
        const int kind = accessor["componentType"];
        const std::string type = accessor["type"];
        const std::size_t parts = type == "SCALAR" ? 1 : type == "VEC3" ? 3 : 4;
        const std::size_t size = kind == 5120 ? 1 : kind == 5122 || kind == 5123 ? 2 : 4;
        const std::size_t stride = text["bufferViews"][view].value("byteStride", parts * size);
        std::vector<std::vector<double>> elements;
        for (std::size_t i = 0; i < accessor["count"]; ++i) {
            const std::size_t at = accessor["byteOffset"].get<std::size_t>() + i * stride;
            auto& element = elements.emplace_back();
            for (std::size_t k = 0; k < parts; ++k) {
                element.push_back(Number(views[view].substr(at + k * size, size), kind));
            }
        }
        return elements;
    }

  private:
    template <class Value>
    static double As(const std::string& bytes) {
        Value value{};
        std::memcpy(&value, bytes.data(), sizeof value);
        return static_cast<double>(value);
    }
    static double Number(const std::string& bytes, int kind) {
        switch (kind) {
            case 5120:
                return As<std::int8_t>(bytes) / 127;
            case 5122:
                return As<std::int16_t>(bytes) / 32767;
            case 5123:
                return As<std::uint16_t>(bytes);
            case 5125:
                return As<std::uint32_t>(bytes);
            default:
                return As<float>(bytes);
        }
    }
};

}  // namespace glb
