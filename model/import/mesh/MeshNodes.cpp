#include "model/import/mesh/MeshNodes.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <utility>

namespace ZVSmartModel {

namespace {

/// Identities of nodes, which have none but their names, and those may repeat.
class NodeIds {
  public:
    std::wstring Unique(const std::wstring& name) {
        int& times = timesSeen[name];
        std::wstring id;
        do {
            const bool plain = ++times == 1 && !name.empty();
            id = plain ? name : name + L'#' + std::to_wstring(times);
        } while (!taken.insert(id).second);
        return id;
    }

  private:
    std::map<std::wstring, int> timesSeen;
    std::set<std::wstring> taken;
};

/// The floors and owners above each node.
class Surroundings {
  public:
    Surroundings(const std::vector<MeshNode>& nodes, Model& model) : model(model) {
        AddStoreys(nodes);
        places.reserve(nodes.size());
        for (const MeshNode& node : nodes) {
            Place place = node.parent ? places[*node.parent] : Place();
            if (node.floor) place.storey = storeyByNumber.at(node.floor->number);
            if (node.owner) {
                place.site = std::exchange(place.building, &*node.owner);
            }
            places.push_back(place);
        }
    }

    void Surround(std::size_t node, ModelElement& element) {
        const Place& place = places[node];
        element.storey = place.storey;
        if (place.building == nullptr) return;
        ModelBuilding building;
        building.globalId = place.building->globalId;
        building.name = place.building->name;
        building.longName = place.building->longName;
        if (place.site != nullptr) {
            building.siteGlobalId = place.site->globalId;
            building.siteName = place.site->name;
        }
        const auto [known, added] =
            buildings.emplace(std::make_pair(place.site, place.building), model.buildings.size());
        if (added) model.buildings.push_back(std::move(building));
        element.building = known->second;
    }

  private:
    /// An owner below another is the building on that site.
    struct Place {
        std::optional<std::size_t> storey;
        const ExportedOwner* site = nullptr;
        const ExportedOwner* building = nullptr;
    };

    void AddStoreys(const std::vector<MeshNode>& nodes) {
        std::vector<const MeshNode*> floors;
        for (const MeshNode& node : nodes) {
            if (node.floor) floors.push_back(&node);
        }
        std::stable_sort(floors.begin(), floors.end(), [](const auto* a, const auto* b) {
            return a->floor->order < b->floor->order;
        });
        for (const MeshNode* node : floors) {
            const bool added =
                storeyByNumber.emplace(node->floor->number, model.storeys.size()).second;
            if (!added) continue;
            model.storeys.push_back({node->name, node->floor->elevation, node->floor->height});
        }
    }

    Model& model;
    std::map<std::uint64_t, std::size_t> storeyByNumber;
    std::map<std::pair<const ExportedOwner*, const ExportedOwner*>, std::size_t> buildings;
    std::vector<Place> places;
};

class ElementMaker {
  public:
    ElementMaker(std::vector<MeshNode>& nodes, bool isExport, Model& model)
        : nodes(nodes), isExport(isExport), model(model), surroundings(nodes, model) {}

    void AddAll(const Transform& toModelAxes, const MeshContents& contents) {
        std::vector<MeshContent> contentOf;
        for (const MeshNode& node : nodes) {
            const Transform& outer = node.parent ? toModel[*node.parent] : toModelAxes;
            toModel.push_back(Combined(outer, node.toParent));
            contentOf.push_back(node.meshes.empty() ? MeshContent() : contents(node.meshes));
        }
        FindWorth(contentOf);
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            const auto above = nodes[i].parent ? elementOf[*nodes[i].parent] : std::nullopt;
            elementOf.push_back(IsElement(i, contentOf[i], above) ? Added(i, contentOf[i], above)
                                                                  : above);
            for (const std::size_t shape : contentOf[i].shapes) {
                model.elements[*elementOf[i]].shapes.push_back({shape, WithoutNoise(toModel[i])});
            }
        }
    }

  private:
    /// Whether something of the file would be missing without the node, or without what it holds.
    void FindWorth(const std::vector<MeshContent>& contentOf) {
        hasWorth.resize(nodes.size());
        for (std::size_t i = nodes.size(); i-- > 0;) {
            const MeshNode& node = nodes[i];
            if (!node.properties.empty() || !contentOf[i].shapes.empty()) hasWorth[i] = true;
            if (hasWorth[i] && node.parent) hasWorth[*node.parent] = true;
        }
    }

    bool IsElement(std::size_t number, const MeshContent& content,
                   std::optional<std::size_t> above) const {
        const MeshNode& node = nodes[number];
        if (node.element) return true;
        if (isExport) {
            const bool isPart = above && node.name.empty() && node.properties.empty();
            return !content.shapes.empty() && !isPart;
        }
        const bool says = !node.properties.empty() || !node.name.empty();
        return !content.shapes.empty() || (hasWorth[number] && says);
    }

    std::size_t Added(std::size_t number, const MeshContent& content,
                      std::optional<std::size_t> above) {
        MeshNode& node = nodes[number];
        ModelElement element;
        if (node.element) {
            element = std::move(*node.element);
        } else {
            element.globalId = node.name.empty() ? node.meshName : node.name;
            element.entityType = content.shapes.empty() ? L"Node" : L"Mesh";
            element.typeName = node.meshName;
            element.materials = content.materials;
            if (above) element.belongsTo.push_back(model.elements[*above].globalId);
            std::vector<StoredProperty> all;
            if (!element.globalId.empty()) {
                all.push_back({L"Element.Name", element.globalId, textKind, L""});
            }
            std::move(node.properties.begin(), node.properties.end(), std::back_inserter(all));
            element.properties = PairsOf(all);
        }
        element.globalId = ids.Unique(element.globalId);
        surroundings.Surround(number, element);
        model.elements.push_back(std::move(element));
        return model.elements.size() - 1;
    }

    std::vector<MeshNode>& nodes;
    bool isExport;
    Model& model;
    Surroundings surroundings;
    NodeIds ids;
    /// By node.
    /// @{
    std::vector<Transform> toModel;
    std::vector<bool> hasWorth;
    std::vector<std::optional<std::size_t>> elementOf;  ///< itself, or the nearest above
    /// @}
};

}  // namespace

void AddElements(std::vector<MeshNode> nodes, const Transform& toModelAxes,
                 const MeshContents& contents, Model& model) {
    const bool isExport = std::any_of(
        nodes.begin(), nodes.end(), [](const MeshNode& node) { return node.element.has_value(); });
    if (!isExport) {
        for (MeshNode& node : nodes) {
            node.floor.reset();  // whatever else the words mean there
            node.owner.reset();
        }
    }
    ElementMaker(nodes, isExport, model).AddAll(toModelAxes, contents);
}

}  // namespace ZVSmartModel
