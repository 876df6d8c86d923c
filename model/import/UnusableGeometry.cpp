#include "model/import/UnusableGeometry.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "model/element/Utf8.h"

namespace ZVSmartModel {

namespace {

std::string NameOf(const ModelElement& element) {
    return ToUtf8(element.entityType + L' ' + element.globalId);
}

bool IsUsable(const Transform& placement) {
    return std::all_of(placement.begin(), placement.end(), IsCoordinate);
}

bool IsEmpty(const ModelShape& shape) {
    return shape.parts.empty() && shape.curves.empty();
}

void LeaveOut(const Model& model, ModelElement& element, const ImportReport& report) {
    std::size_t pieces = 0;
    std::size_t placements = 0;
    std::erase_if(element.shapes, [&](const PlacedShape& placed) {
        const ModelShape& shape = model.shapes[placed.shape];
        const bool usable = IsUsable(placed.placement);
        pieces += shape.unusable;
        placements += usable ? 0 : 1;
        return !usable || IsEmpty(shape);
    });
    constexpr const char* why = " left out, for coordinates that are no numbers or out of reach";
    if (pieces != 0) {
        report.warn(NameOf(element) + ": " + std::to_string(pieces) +
                    (pieces == 1 ? " triangle or curve" : " triangles or curves") + why);
    }
    if (placements != 0) report.warn(NameOf(element) + ": its geometry is" + why);
}

/// Closes the gaps that unused shapes leave.
void DropUnplacedShapes(Model& model) {
    std::vector<bool> placed(model.shapes.size());
    for (const ModelElement& element : model.elements) {
        for (const PlacedShape& each : element.shapes) placed[each.shape] = true;
    }
    std::vector<std::size_t> newNumber(model.shapes.size());
    std::vector<ModelShape> kept;
    for (std::size_t i = 0; i < model.shapes.size(); ++i) {
        newNumber[i] = kept.size();
        if (placed[i]) kept.push_back(std::move(model.shapes[i]));
    }
    for (ModelElement& element : model.elements) {
        for (PlacedShape& each : element.shapes) each.shape = newNumber[each.shape];
    }
    model.shapes = std::move(kept);
}

}  // namespace

void LeaveOutUnusable(Model& model, const ImportReport& report) {
    for (ModelElement& element : model.elements) LeaveOut(model, element, report);
    std::set<std::wstring> gone;
    std::erase_if(model.elements, [&gone](const ModelElement& element) {
        const bool goes = element.entityType == L"Mesh" && element.shapes.empty();
        if (goes) gone.insert(element.globalId);
        return goes;
    });
    for (ModelElement& element : model.elements) {
        std::erase_if(element.belongsTo,
                      [&gone](const std::wstring& id) { return gone.contains(id); });
    }
    DropUnplacedShapes(model);
}

}  // namespace ZVSmartModel
