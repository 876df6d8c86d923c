#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

#include "ZVSmartModel/Body.h"
#include "model/element/BlockFileImp.h"
#include "model/element/Chosen.h"
#include "model/element/ElementReader.h"
#include "model/element/ElementRecord.h"
#include "model/element/Utf8.h"
#include "model/scene/BodyReader.h"
#include "model/scene/PointMath.h"
#include "model/scene/RecordWalk.h"
#include "model/scene/SceneBuilder.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

/// Gathers shapes as they are met and their placements.
class ShapesMaker {
  public:
    ShapesMaker(OpenedBlock& block, StoredGeos& geos, const BodyOptions& options,
                const KnownShape& isKnown)
        : block(block),
          stored(block, geos, {options.curves, true, &options, isKnown ? &isKnown : nullptr}),
          options(options) {}

    /// See StoredShapes.
    GeoBlockUse Ahead() { return stored.Ahead(); }

    void Add(ElementIndex element, const SZVLGCompView& comp, const Look& ownLook) {
        stored.Visit(ReferencedNames(comp), [&](const std::wstring& name, StoredShape& shape,
                                                const CZVIMTransf& toModel) {
            const std::optional<std::uint32_t> number = NumberOf(name, shape);
            const Transform toWorld = TransformOf(toModel);
            if (!number || !IsNear(toWorld)) return;
            if (shapes.placements.size() == SceneBuilder::mostPlacements) {
                throw block.ErrorAbout(Status::Damaged, SceneBuilder::TooManyPlacements());
            }
            block.Limits().Memory(2 * sizeof(Placement) + ownLook.name.size());
            shapes.placements.push_back({element, *number, ownLook, toWorld});
        });
    }

    Shapes Take() {
        shapes.missing = stored.MissingGeometries();
        return std::move(shapes);
    }

  private:
    /// None where there is nothing to draw.
    std::optional<std::uint32_t> NumberOf(const std::wstring& name, StoredShape& shape) {
        const auto [known, isNew] = numbers.try_emplace(shape.place);
        const bool isNothing = shape.surfaces.empty() && shape.curves.empty() && !shape.isKnown;
        if (!isNew || isNothing) return known->second;
        Shape& added = shapes.shapes.emplace_back();
        added.key = ToUtf8(name);
        added.surfaces = std::move(shape.surfaces);
        for (const RecordCurve& curve : shape.curves) {
            added.curves.push_back(
                PlacedCurve(curve, identityTransform, options.chordError, block.Limits()));
        }
        shape.curves = {};
        known->second = static_cast<std::uint32_t>(shapes.shapes.size() - 1);
        return known->second;
    }

    OpenedBlock& block;
    StoredShapes stored;
    const BodyOptions& options;
    Shapes shapes;
    std::unordered_map<std::uint64_t, std::optional<std::uint32_t>> numbers;  ///< by place
};

/// Tells every hundredth element; throws Error Cancelled where the caller says so.
class ShapeProgress {
  public:
    /// Floors come from a first number up to before another.
    ShapeProgress(const Progress& progress, std::pair<unsigned int, unsigned int> floors)
        : progress(progress), floors(floors) {}

    /// An element of a floor that has so many.
    void Next(ElementIndex element, unsigned int count) {
        constexpr unsigned int step = 100;
        if (!progress || done++ % step != 0) return;
        const double ofFloor = static_cast<double>(element.position) / count;
        const double fraction =
            (element.floor - floors.first + ofFloor) / (floors.second - floors.first);
        if (!progress("reading bodies", fraction)) {
            throw Error(Status::Cancelled, "cancelled while bodies were read");
        }
    }

  private:
    const Progress& progress;
    std::pair<unsigned int, unsigned int> floors;
    unsigned int done = 0;
};

}  // namespace

Shapes ReadShapes(const BlockFile& file, const Selection& selection, const BodyOptions& options,
                  const Progress& progress) {
    return ReadShapes(file, selection, options, progress, nullptr);
}

Shapes ReadShapes(const BlockFile& file, const Selection& selection, const BodyOptions& options,
                  const Progress& progress, const KnownShape& isKnown) {
    BodyReader::Check(options);
    const Chosen chosen(selection);
    BlockFile::Imp& imp = file.Internals();
    return imp.Ask([&](OpenedBlock& block) {
        ShapesMaker maker(block, BodyReader::Of(imp, block).Geos(), options, isKnown);
        const auto floors = block.FindFloors(selection.floor);
        const FileWalk walk(
            block, chosen.IsWalk() ? FileWalk::Through::Bodies : FileWalk::Through::Nothing,
            chosen.IsWhole() ? maker.Ahead() : nullptr);
        ShapeProgress told(progress, floors);
        const bool anyProperty = !selection.properties.empty();
        ElementReader reader({anyProperty ? SZVLGCompParts() : NoProperties(), false});
        for (unsigned int floor = floors.first; floor < floors.second; ++floor) {
            if (!chosen.MayHold(floor)) continue;
            const unsigned int count = block.FloorCompNum(floor);
            reader.ForEach(block, floor, chosen.Span(floor), [&](const ElementView& element) {
                told.Next(element.index, count);
                if (!chosen.Holds(element)) return;
                maker.Add(element.index, reader.Stored(), reader.OwnLook());
            });
        }
        block.ThrowIfCutShort();
        return maker.Take();
    });
}

}  // namespace ZVSmartModel
