#pragma once

#include <cstddef>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "model/element/OpenedBlock.h"
#include "model/scene/Scene.h"

namespace ZVSmartModel {

/// Named values that go along with a node; all texts are UTF-8.
using Extras = nlohmann::json;

/// A node that holds others: a site, a building, a floor or a class. Groups stand behind the group
/// that holds them.
struct ExportGroup {
    std::optional<std::size_t> parent;  ///< none for what the model itself holds
    std::string name;                   ///< UTF-8
    Extras extras;
};

struct ExportComponent {
    std::size_t group = 0;
    std::string name;  ///< UTF-8
    Extras extras;     ///< GlobalId, classification, properties and so on
};

/// What is exported of a block file.
struct ExportModel {
    std::string name;    ///< of the file
    std::string source;  ///< what the file says of its origin
    std::vector<ExportGroup> groups;
    std::vector<ExportComponent> components;
    Scene scene;  ///< its components are those above
    std::size_t missingGeometries = 0;
};

/// Which components are wanted; what is not named takes all.
struct ExportSelection {
    std::optional<std::string> floor;      ///< by number or name
    std::optional<std::string> className;  ///< on any level
    bool salvage = false;                  ///< what cannot be read is left out
    bool rooms = false;                    ///< rooms as well, where no class is named
    /// Called with the number of components read and the number there are.
    std::function<void(std::size_t done, std::size_t total)> progress;
};

/// Reads components and their bodies. Throws Error Damaged for whatever cannot be read, so
/// that nothing is exported in part without a word, and NotFound where nothing is selected. What is
/// left out on request is remembered in `block`.
ExportModel ReadExport(OpenedBlock& block, const ExportSelection& selection);

}  // namespace ZVSmartModel
