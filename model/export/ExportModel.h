#pragma once

#include <cstddef>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ZVSmartModel/Exports.h"
#include "ZVSmartZvg/Comp.h"
#include "ZVSmartZvg/CompIndex.h"
#include "model/element/OpenedBlock.h"
#include "model/element/ProgressPace.h"
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

/// Reads components and their bodies. Throws Error: Damaged for whatever cannot be read, so that
/// nothing is exported in part without a word; NotFound where nothing is selected; Cancelled. What
/// is left out on request is remembered in `block`.
ExportModel ReadExport(OpenedBlock& block, const ExportOptions& options, ProgressPace& pace);

/// A component that is selected.
struct ChosenComponent {
    const ZVSmartZvg::SZVLGCompIndex& index;
    const std::wstring& floorName;
    const ZVSmartZvg::SZVLGZvgComp& comp;
};

/// Hands each component that is selected to `use`, and returns their number. With `ahead` their
/// bodies are asked for as well, and it gets what of them is decoded ahead (see FileWalk). Throws
/// as the above.
std::size_t ForEachChosen(OpenedBlock& block, const ExportOptions& options, ProgressPace& pace,
                          const GeoBlockUse& ahead,
                          const std::function<void(const ChosenComponent&)>& use);

/// What a person calls the component.
std::string ComponentName(const ZVSmartZvg::SZVLGZvgComp& comp);

/// Its place, GUID and class, and with `all` the rest of what is known of it.
Extras ComponentExtras(const ZVSmartZvg::SZVLGCompIndex& index,
                       const ZVSmartZvg::SZVLGZvgComp& comp, bool all);

/// What the file says of its origin.
std::string SourceOf(OpenedBlock& block);

/// Members of one object have names of their own: the second "a" becomes "a (2)".
class UniqueNames {
  public:
    std::string Of(const std::string& wanted);

  private:
    std::unordered_map<std::string, int> timesSeen;
    std::unordered_set<std::string> taken;
};

}  // namespace ZVSmartModel
