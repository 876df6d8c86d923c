#include "ZVSmartModel/Builder.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <new>
#include <unordered_set>
#include <utility>

#include "model/element/RecordNames.h"
#include "model/element/Utf8.h"
#include "model/import/ShapeStore.h"
#include "model/pack/Components.h"
#include "model/pack/NewParts.h"
#include "model/pack/RecordWriter.h"
#include "model/pack/ShapeRecords.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

[[noreturn]] void Refuse(const std::string& why) {
    throw Error(Status::Usage, why);
}

RecordWriter::Settings SettingsOf(const BuilderOptions& options) {
    if (options.formatVersion > 4) Refuse("the format version is 0 to 4");
    RecordWriter::Settings settings;
    settings.head.firstText = FromUtf8(options.title);
    settings.head.secondText = FromUtf8(options.remark);
    settings.formatVersion = options.formatVersion;
    settings.geosPerBlock = options.geosPerBlock;
    settings.fast = options.fast;
    settings.seal = options.seal;
    return settings;
}

SZVLGZvgGeoImage ImageOf(const Picture& picture) {
    const bool whole = picture.width != 0 && picture.height != 0 &&
                       picture.pixels.size() % 4 == 0 &&
                       picture.pixels.size() / 4 / picture.width == picture.height &&
                       picture.pixels.size() / 4 % picture.width == 0;
    if (!whole) Refuse("a picture has no pixels, or not 4 bytes for each");
    SZVLGZvgGeoImage image;
    image.width = picture.width;
    image.height = picture.height;
    image.pixels = static_cast<u8*>(std::malloc(picture.pixels.size()));
    if (image.pixels == nullptr) throw std::bad_alloc();
    std::copy(picture.pixels.begin(), picture.pixels.end(), image.pixels);
    return image;
}

}  // namespace

/// What refers to what is checked against numbers and names alone: records go to the writer.
class Builder::Imp {
  public:
    template <class Target>
    Imp(Target&& target, const BuilderOptions& options)
        : version(options.formatVersion),
          hasBuilding(!(BuildingOf(options.building) == ModelBuilding())),
          writer(std::forward<Target>(target), SettingsOf(options)),
          maker(version) {
        maker.AddBuilding(BuildingOf(options.building));
    }

    std::size_t AddFloor(const NewFloor& floor);
    std::size_t AddShape(const NewShape& shape);
    void AddElement(const NewElement& element);
    void SetPreview(const Picture& picture);
    void Finish();

    /// Does what a call asks for, unless nothing can be written any more.
    template <class Act>
    auto Do(Act act) {
        if (failure) throw Error(*failure);
        if (isFinished) Refuse("the file is finished");
        try {
            return act(*this);
        } catch (const std::exception& exception) {
            const Error error = writer.ErrorOf(exception);
            if (error.GetStatus() != Status::Usage || isFinished) failure = error;
            throw Error(error);
        }
    }

  private:
    unsigned int version;
    bool hasBuilding;
    RecordWriter writer;
    ComponentMaker maker;
    std::map<ShapeDigest, std::size_t> shapeByDigest;
    std::unordered_set<std::wstring> guids;  ///< the elements'
    bool hasPreview = false;
    bool isFinished = false;
    std::optional<Error> failure;
};

std::size_t Builder::Imp::AddFloor(const NewFloor& floor) {
    const ModelStorey storey = StoreyOf(floor);
    const std::vector<ModelStorey>& storeys = maker.Storeys();
    const bool taken = storey.name == unassignedFloorName ||
                       std::any_of(storeys.begin(), storeys.end(), [&](const ModelStorey& other) {
                           return other.name == storey.name;
                       });
    if (taken) Refuse("another floor is named " + EscapeControls(floor.name));
    maker.AddStorey(storey);
    return storeys.size() - 1;
}

std::size_t Builder::Imp::AddShape(const NewShape& shape) {
    const ModelShape canonical = CanonicalShape(ShapeOf(shape));
    const ShapeDigest digest = DigestOf(canonical);
    const auto known = shapeByDigest.find(digest);
    if (known != shapeByDigest.end()) return known->second;
    const std::size_t number = maker.Shapes().size();
    maker.AddShape(SummaryOf(canonical));
    if (!canonical.parts.empty() || !canonical.curves.empty()) {
        writer.AddGeo(maker.NameShape(number), ShapeRecord(canonical, version),
                      ShapeRecordBytes(canonical));
    }
    shapeByDigest.emplace(digest, number);
    return number;
}

void Builder::Imp::AddElement(const NewElement& element) {
    const std::vector<ShapeSummary>& shapes = maker.Shapes();
    ModelElement made = ElementOf(element, maker.Storeys().size(), shapes.size());
    if (guids.contains(made.globalId)) {
        Refuse("another element has the GUID " + EscapeControls(element.guid));
    }
    if (hasBuilding) made.building = 0;
    std::erase_if(made.shapes,
                  [&](const PlacedShape& placed) { return shapes[placed.shape].key.empty(); });
    writer.AddComp(maker.Make(made), made.shapes.empty() ? 0 : PlacementRecordBytes(made));
    guids.insert(made.globalId);
}

void Builder::Imp::SetPreview(const Picture& picture) {
    if (hasPreview) Refuse("the file has a picture");
    writer.AddPreview(ImageOf(picture));
    hasPreview = true;
}

void Builder::Imp::Finish() {
    isFinished = true;
    writer.Finish();
}

Builder::Builder(const std::string& path, const BuilderOptions& options)
    : imp(std::make_unique<Imp>(path, options)) {}

Builder::Builder(ZVSmartFormat::CZVFTOutStream& out, const BuilderOptions& options)
    : imp(std::make_unique<Imp>(out, options)) {}

Builder::~Builder() = default;
Builder::Builder(Builder&&) noexcept = default;
Builder& Builder::operator=(Builder&&) noexcept = default;

std::size_t Builder::AddFloor(const NewFloor& floor) {
    return imp->Do([&](Imp& builder) { return builder.AddFloor(floor); });
}

std::size_t Builder::AddShape(const NewShape& shape) {
    return imp->Do([&](Imp& builder) { return builder.AddShape(shape); });
}

void Builder::AddElement(const NewElement& element) {
    imp->Do([&](Imp& builder) { builder.AddElement(element); });
}

void Builder::SetPreview(const Picture& picture) {
    imp->Do([&](Imp& builder) { builder.SetPreview(picture); });
}

void Builder::Finish() {
    imp->Do([](Imp& builder) { builder.Finish(); });
}

}  // namespace ZVSmartModel
