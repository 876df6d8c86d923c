#include "model/export/GlbNodes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <utility>

#include "model/element/Utf8.h"
#include "model/export/NodeTransform.h"
#include "model/scene/PointMath.h"

namespace ZVSmartModel {

namespace {

constexpr double farFromOrigin = 10000;  // beyond it single precision shows

/// Components that one node shows.
struct InstanceList {
    std::vector<std::size_t> components;
    std::vector<NodeTransform> transforms;
    Extras attributes;  ///< the accessors of what places them
};

struct GlbNode {
    std::string name;
    const Extras* extras = nullptr;
    NodeTransform transform;
    std::optional<std::size_t> mesh;
    std::vector<int> children;
    const InstanceList* instances = nullptr;
};

class NodeWriter {
  public:
    NodeWriter(const ExportModel& model, const std::vector<double>& scaleOfMesh, GlbBuffer& buffer,
               ProgressPace& pace)
        : model(model), scaleOfMesh(scaleOfMesh), buffer(buffer), pace(pace) {}

    GlbNodes Write(bool instances) {
        AddRoot();
        for (const ExportGroup& group : model.groups) {
            const std::size_t parent = group.parent ? firstGroup + *group.parent : 0;
            nodes[AddNode(parent, group.name)].extras = &group.extras;
        }
        if (instances) FindInstances();
        for (std::size_t i = 0; i < model.components.size(); ++i) {
            if (isInstance[i]) continue;
            const ExportComponent& component = model.components[i];
            const std::size_t node = AddNode(firstGroup + component.group, component.name);
            nodes[node].extras = &component.extras;
            AddBody(node, model.scene.components[i].placements);
        }
        for (const auto& [place, list] : lists) {
            const auto& [group, mesh] = place;
            const std::size_t node =
                AddNode(firstGroup + group, ToUtf8(model.scene.meshes[mesh].name));
            nodes[node].mesh = mesh;
            nodes[node].instances = &list;
        }
        return Texts();
    }

  private:
    static constexpr std::size_t firstGroup = 1;  // behind the root

    /// A model far from its origin is moved there and back: numbers of single precision then have
    /// no coordinates of the country's grid to hold.
    void AddRoot() {
        const SceneBox box = BoxOf(model.scene);
        for (std::size_t axis = 0; axis < 3 && !box.IsEmpty(); ++axis) {
            const double middle = (box.low[axis] + box.high[axis]) / 2;
            if (std::fabs(middle) > farFromOrigin) origin[axis] = std::round(middle);
        }
        GlbNode& root = nodes.emplace_back();
        root.name = model.name;
        root.transform.rotation = {-std::sqrt(0.5), 0, 0, std::sqrt(0.5)};
        root.transform.translation = {origin[0], origin[2], -origin[1] + 0.0};
    }

    std::size_t AddNode(std::size_t parent, const std::string& name) {
        const std::size_t number = nodes.size();
        nodes.emplace_back().name = name;
        nodes[parent].children.push_back(static_cast<int>(number));
        return number;
    }

    std::vector<NodeTransform> TransformsOf(const ScenePlacement& placement) const {
        Transform nearOrigin = placement.toModel;
        for (std::size_t row = 0; row < 3; ++row) nearOrigin[row * 4 + 3] -= origin[row];
        std::vector<NodeTransform> transforms = NodeTransformsOf(nearOrigin);
        for (double& scale : transforms.back().scale) scale *= scaleOfMesh[placement.mesh];
        return transforms;
    }

    void FindInstances() {
        for (std::size_t i = 0; i < model.components.size(); ++i) {
            const auto& placements = model.scene.components[i].placements;
            if (placements.size() != 1 || Mirrors(placements[0].toModel)) continue;
            const std::vector<NodeTransform> transforms = TransformsOf(placements[0]);
            if (transforms.size() != 1) continue;
            InstanceList& list = lists[{model.components[i].group, placements[0].mesh}];
            list.components.push_back(i);
            list.transforms.push_back(transforms[0]);
        }
        std::erase_if(lists, [](const auto& each) { return each.second.components.size() < 2; });
        for (const auto& [place, list] : lists) {
            for (const std::size_t component : list.components) isInstance[component] = true;
        }
        AddAttribute("TRANSLATION", &NodeTransform::translation, false);
        AddAttribute("ROTATION", &NodeTransform::rotation, true);
        AddAttribute("SCALE", &NodeTransform::scale, true);
    }

    /// One placement is the component's own; several are nodes below it.
    void AddBody(std::size_t component, const std::vector<ScenePlacement>& placements) {
        for (const ScenePlacement& placement : placements) {
            std::size_t node = component;
            if (placements.size() > 1) node = AddNode(component, "");
            const std::vector<NodeTransform> transforms = TransformsOf(placement);
            nodes[node].transform = transforms.front();
            if (transforms.size() > 1) {
                node = AddNode(node, "");
                nodes[node].transform = transforms.back();
            }
            nodes[node].mesh = placement.mesh;
        }
    }

    GlbNodes Texts() {
        GlbNodes written;
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            pace.Tell("writing", i, nodes.size());
            const GlbNode& node = nodes[i];
            Extras text = TransformText(node.transform);
            if (!node.name.empty()) text["name"] = node.name;
            if (node.extras && !node.extras->is_null()) text["extras"] = *node.extras;
            if (node.mesh) text["mesh"] = *node.mesh;
            if (!node.children.empty()) text["children"] = node.children;
            if (node.instances) {
                written.hasInstances = true;
                text["extras"] = {{"instances", Described(*node.instances)}};
                text["extensions"]["EXT_mesh_gpu_instancing"]["attributes"] =
                    node.instances->attributes;
            }
            written.nodes.Add(text);
        }
        return written;
    }

    static Extras TransformText(const NodeTransform& transform) {
        const NodeTransform none;
        Extras text = Extras::object();
        if (transform.translation != none.translation) text["translation"] = transform.translation;
        if (transform.rotation != none.rotation) text["rotation"] = transform.rotation;
        if (transform.scale != none.scale) text["scale"] = transform.scale;
        return text;
    }

    Extras Described(const InstanceList& list) const {
        Extras all = Extras::array();
        for (const std::size_t i : list.components) {
            Extras& one = all.emplace_back(model.components[i].extras);
            one["name"] = model.components[i].name;
        }
        return all;
    }

    /// Where a value is the usual one for all of a list, it may be left out.
    template <std::size_t count>
    void AddAttribute(const char* name, std::array<double, count> NodeTransform::*member,
                      bool mayLack) {
        using Value = std::array<float, count>;
        buffer.BeginView(GlbUse::Values, sizeof(Value));
        for (auto& [place, list] : lists) {
            const auto isUsual = [member](const NodeTransform& transform) {
                return transform.*member == NodeTransform().*member;
            };
            if (mayLack && std::all_of(list.transforms.begin(), list.transforms.end(), isUsual))
                continue;
            std::vector<Value> values;
            for (const NodeTransform& transform : list.transforms) {
                Value& value = values.emplace_back();
                for (std::size_t i = 0; i < count; ++i) {
                    value[i] = static_cast<float>((transform.*member)[i]);
                }
            }
            const char* const type = count == 3 ? "VEC3" : "VEC4";
            list.attributes[name] = buffer.Add(type, GlbNumber::Float, values);
        }
        buffer.EndView();
    }

    const ExportModel& model;
    const std::vector<double>& scaleOfMesh;
    GlbBuffer& buffer;
    ProgressPace& pace;
    std::array<double, 3> origin = {};
    std::vector<GlbNode> nodes;
    std::map<std::pair<std::size_t, std::size_t>, InstanceList> lists;  ///< by group and mesh
    std::vector<bool> isInstance = std::vector<bool>(model.components.size());
};

}  // namespace

GlbNodes NodesOf(const ExportModel& model, const std::vector<double>& scaleOfMesh, bool instances,
                 GlbBuffer& buffer, ProgressPace& pace) {
    return NodeWriter(model, scaleOfMesh, buffer, pace).Write(instances);
}

}  // namespace ZVSmartModel
