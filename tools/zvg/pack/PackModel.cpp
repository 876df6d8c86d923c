#include "tools/zvg/pack/PackModel.h"

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
#include "tools/zvg/output/OutOfMemory.h"
#include "tools/zvg/pack/Components.h"
#include "tools/zvg/pack/ModelScene.h"
#include "tools/zvg/pack/PreviewPng.h"
#include "tools/zvg/pack/ShapeRecords.h"
#include "tools/zvg/preview/RenderPreview.h"
#include "tools/zvg/preview/Renderer.h"
#include "tools/zvg/reading/ClassNames.h"
#include "tools/zvg/text/Utf8.h"

using namespace ZVSmartZvg;

namespace {

/// A block is what is decoded to get at one geometry: large enough to compress well, small enough
/// to decode at once.
constexpr std::size_t wantedBlockBytes = 512 << 10;

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
    for (const Shape& shape : model.shapes) bytes += ShapeRecordBytes(shape);
    for (const ModelElement& element : model.elements) {
        if (element.shapes.empty()) continue;
        bytes += PlacementRecordBytes(element);
        ++records;
    }
    if (records == 0) return 0;
    const std::size_t average = std::max<std::size_t>(bytes / records, 1);
    return static_cast<unsigned int>(std::max<std::size_t>(wantedBlockBytes / average, 1));
}

std::wstring FileName(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return FromUtf8(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

SZVLGZvgBlockHeadInfo Head(const Model& model, const PackOptions& options) {
    SZVLGZvgBlockHeadInfo head;
    head.firstText = FileName(options.modelPath) + L" (" + model.schema + L"), packed by zvg " +
                     FromUtf8(ZVG_VERSION);
    head.secondText = L"geometry in metres, values in the units beside them";
    return head;
}

/// A model whose picture cannot be drawn is packed all the same.
std::optional<SZVLGZvgGeoImage> Drawn(const Model& model,
                                      const std::vector<const ModelElement*>& elements,
                                      std::string& failure) {
    try {
        std::vector<const ModelElement*> shown;
        std::copy_if(elements.begin(), elements.end(), std::back_inserter(shown),
                     [](const ModelElement* e) { return !IsRoomClass(e->entityType); });
        return RenderPreview(SceneOf(model, shown), previewWidth, previewHeight);
    } catch (const std::exception& error) {
        failure = IsOutOfMemory(error) ? "out of memory" : error.what();
        return std::nullopt;
    }
}

void AddPreview(const Model& model, const std::vector<const ModelElement*>& elements,
                const PackOptions& options, PackSummary& summary, CZVLGBlockSaver& saver) {
    if (options.preview != nullptr) {
        saver.AddPreviewImage(ReadPng(options.preview, options.previewPath));
    } else if (options.drawPreview && CanRender()) {
        const auto image = Drawn(model, elements, summary.previewFailure);
        if (image) saver.AddPreviewImage(*image);
    }
}

}  // namespace

PackSummary PackModel(const Model& model, const PackOptions& options,
                      ZVSmartFormat::CZVFTOutStream& out, const PackProgress& progress) {
    CZVLGBlockSaver saver(options.formatVersion);
    saver.SetEncodeFastMod(options.fast);
    saver.SetSeal(options.seal);
    const unsigned int geosPerBlock =
        options.geosPerBlock != 0 ? options.geosPerBlock : ChosenGeosPerBlock(model);
    saver.Init(&out, Head(model, options), "", geosPerBlock);
    saver.SetDisplacementSettings(options.settings);
    const std::vector<const ModelElement*> ordered = Ordered(model);
    PackSummary summary;
    const bool draws = options.drawPreview && !*options.previewPath && CanRender();
    if (draws) progress("drawing the preview", 0, 0);
    AddPreview(model, ordered, options, summary, saver);

    std::vector<bool> stored(model.shapes.size());
    std::set<std::optional<std::size_t>> floors;
    ComponentMaker maker(model, options.formatVersion);
    for (const ModelElement* element : ordered) {
        for (const PlacedShape& placed : element->shapes) {
            ++summary.placements;
            if (stored[placed.shape]) continue;
            stored[placed.shape] = true;
            const Shape& shape = model.shapes[placed.shape];
            saver.AddIdentificationGeo(shape.key, ShapeRecord(shape, options.formatVersion));
        }
        saver.AddComp(maker.Make(*element));
        floors.insert(element->storey);
        progress("packing", ++summary.components, ordered.size());
    }
    progress("compressing", 0, 0);
    saver.WriteEnd();
    summary.floors = floors.size();
    summary.shapes = model.shapes.size();
    return summary;
}
