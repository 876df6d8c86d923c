#include "model/pack/PackModel.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "ZVSmartZvg/BlockSaver.h"
#include "model/element/LackOfMemory.h"
#include "model/element/RecordNames.h"
#include "model/element/Utf8.h"
#include "model/pack/Components.h"
#include "model/pack/ModelScene.h"
#include "model/pack/ShapeRecords.h"
#include "model/preview/PreviewPng.h"
#include "model/preview/RenderPreview.h"
#include "model/preview/Renderer.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

/// The elements as they are to be written; those without a storey last.
std::vector<const ModelElement*> Ordered(const Model& model) {
    std::vector<const ModelElement*> ordered;
    for (const ModelElement& element : model.elements) ordered.push_back(&element);
    const auto key = [&model](const ModelElement* e) {
        return std::make_tuple(e->storey.value_or(model.storeys.size()),
                               std::wstring_view(e->entityType), std::wstring_view(e->typeName));
    };
    std::stable_sort(ordered.begin(), ordered.end(),
                     [&](const auto* a, const auto* b) { return key(a) < key(b); });
    return ordered;
}

unsigned int ChosenGeosPerBlock(const Model& model) {
    std::size_t bytes = 0;
    std::size_t records = model.shapes.size();
    for (const ModelShape& shape : model.shapes) bytes += ShapeRecordBytes(shape);
    for (const ModelElement& element : model.elements) {
        if (element.shapes.empty()) continue;
        bytes += PlacementRecordBytes(element);
        ++records;
    }
    return GeosPerBlock(bytes, records);
}

/// Knows all of the model that its components refer to.
ComponentMaker MakerFor(const Model& model, unsigned int version) {
    ComponentMaker maker(version);
    for (const ModelStorey& storey : model.storeys) maker.AddStorey(storey);
    for (const ModelBuilding& building : model.buildings) maker.AddBuilding(building);
    for (const ModelShape& shape : model.shapes) maker.AddShape(SummaryOf(shape));
    for (const ModelElement& element : model.elements) maker.LendColour(element);
    return maker;
}

std::wstring FileName(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return FromUtf8(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

SZVLGZvgBlockHeadInfo Head(const Model& model, const PackInput& input) {
    SZVLGZvgBlockHeadInfo head;
    head.firstText = FileName(input.job.modelPath) + L" (" + model.schema + L"), packed by zvg " +
                     FromUtf8(ZVG_VERSION);
    head.secondText = L"geometry in metres, values in the units beside them";
    return head;
}

/// A model whose picture cannot be drawn is packed all the same.
std::optional<SZVLGZvgGeoImage> Drawn(const Model& model,
                                      const std::vector<const ModelElement*>& elements,
                                      unsigned int threads, std::string& failure) {
    try {
        std::vector<const ModelElement*> shown;
        std::copy_if(elements.begin(), elements.end(), std::back_inserter(shown),
                     [](const ModelElement* e) { return !IsRoomClass(e->entityType); });
        return RenderPreview(SceneOf(model, shown), previewWidth, previewHeight, threads);
    } catch (const std::exception& error) {
        failure = IsOutOfMemory(error) ? "out of memory" : error.what();
        return std::nullopt;
    }
}

void AddPreview(const Model& model, const std::vector<const ModelElement*>& elements,
                const PackInput& input, PackSummary& summary, CZVLGBlockSaver& saver) {
    if (input.preview != nullptr) {
        saver.AddPreviewImage(ReadPng(input.preview, input.job.previewPath));
    } else if (input.job.drawPreview && !CanRender()) {
        summary.previewFailure = "there is nothing to draw with (it needs embree)";
    } else if (input.job.drawPreview) {
        const auto image = Drawn(model, elements, input.job.threads, summary.previewFailure);
        if (image) saver.AddPreviewImage(*image);
    }
}

}  // namespace

PackSummary PackModel(const Model& model, const PackInput& input,
                      ZVSmartFormat::CZVFTOutStream& out, const PackProgress& progress) {
    CZVLGBlockSaver saver(input.job.formatVersion);
    saver.SetEncodeFastMod(input.job.fast);
    saver.SetSeal(input.job.seal);
    saver.SetThreads(input.job.threads);
    const unsigned int geosPerBlock =
        input.job.geosPerBlock != 0 ? input.job.geosPerBlock : ChosenGeosPerBlock(model);
    saver.Init(&out, Head(model, input), "", geosPerBlock);
    saver.SetDisplacementSettings(input.settings);
    const std::vector<const ModelElement*> ordered = Ordered(model);
    PackSummary summary;
    std::vector<bool> stored(model.shapes.size());
    std::set<std::optional<std::size_t>> floors;
    ComponentMaker maker = MakerFor(model, input.job.formatVersion);
    for (const ModelElement* element : ordered) {
        for (const PlacedShape& placed : element->shapes) {
            ++summary.placements;
            if (stored[placed.shape]) continue;
            stored[placed.shape] = true;
            const ModelShape& shape = model.shapes[placed.shape];
            saver.AddIdentificationGeo(maker.NameShape(placed.shape),
                                       ShapeRecord(shape, input.job.formatVersion));
        }
        saver.AddComp(maker.Make(*element));
        floors.insert(element->storey);
        progress("packing", ++summary.components, ordered.size());
    }
    // In the last block: whoever wants the first element need not decode a picture.
    const bool draws = input.job.drawPreview && input.job.previewPath.empty() && CanRender();
    if (draws) progress("drawing the preview", 0, 0);
    AddPreview(model, ordered, input, summary, saver);
    progress("compressing", 0, 0);
    saver.WriteEnd();
    summary.floors = floors.size();
    summary.shapes = model.shapes.size();
    return summary;
}

}  // namespace ZVSmartModel
