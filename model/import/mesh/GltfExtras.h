#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "model/import/mesh/MeshNodes.h"

namespace ZVSmartModel {

// What glTF's extras say, which are any JSON values. Exporting a block file writes them thus:
//
//     of an element  {"globalId": "...", "classification": {"level2": "IfcWall", ...},
//                     "relatedTo": [...], "group": "...", "materials": [...], "properties": {...}}
//     of a floor     {"floor": 0, "order": 0, "elevation": 0.0, "height": 2.7}
//     of an owner    {"globalId": "...", "name": "...", "longName": "..."}
//
// and a property as a text, or as {"value": "8.5", "kind": "length", "unit": "ft"}.

/// Adds what the extras say as properties. Members of an object within are properties of a set of
/// its name, "SET.NAME"; what stands in no object is in the set `set`. An array of values is one
/// property, any other array an object whose names are the numbers from 0.
void AddExtras(const nlohmann::json& extras, const std::wstring& set,
               std::vector<StoredProperty>& properties);

/// Takes from a node's extras what the node was before it was exported, or else its properties.
void TakeExtras(const nlohmann::json& extras, MeshNode& node);

}  // namespace ZVSmartModel
