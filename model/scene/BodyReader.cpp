#include "model/scene/BodyReader.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <map>
#include <memory>

#include "model/element/BlockFileImp.h"
#include "model/element/ElementRecord.h"
#include "model/scene/Normals.h"
#include "model/scene/PointMath.h"
#include "model/scene/TriangleLists.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

/// Puts a body together, surfaces in the order in which their looks come.
class BodyMaker {
  public:
    BodyMaker(const SZVLGZvgComp& comp, const BodyOptions& options, Budget& limits)
        : ownLook(OwnLook(comp)), options(options), limits(limits) {}

    void Add(const StoredShape& shape, const Transform& toWorld) {
        if (!IsNear(toWorld)) return;
        for (const Triangles& part : shape.surfaces) AddSurface(part, toWorld);
        if (!options.curves) return;
        for (const RecordCurve& curve : shape.curves) {
            body.curves.push_back(PlacedCurve(curve, toWorld, options.chordError, limits));
        }
    }

    Body Take() {
        for (Triangles& surface : body.surfaces) AddNormals(surface, options, limits);
        return std::move(body);
    }

  private:
    void AddSurface(const Triangles& part, const Transform& toWorld) {
        const std::size_t points = part.points.size();
        const Look& look = part.look ? *part.look : ownLook;
        const auto [place, isNew] = byLook.try_emplace(look, body.surfaces.size());
        if (isNew) body.surfaces.emplace_back().look = look;
        Triangles& whole = body.surfaces[place->second];
        limits.Work(10 + points + part.triangles.size());
        limits.Memory(points * sizeof(Point) + part.triangles.size() * sizeof part.triangles[0]);
        if (points > std::numeric_limits<std::uint32_t>::max() - whole.points.size()) {
            limits.EndMemory();
        }
        AddPlaced(whole, part, toWorld);
    }

    const Look ownLook;
    const BodyOptions& options;
    Budget& limits;
    Body body;
    std::map<Look, std::size_t> byLook;
};

}  // namespace

Body BodyReader::Read(ElementIndex index, const BodyOptions& options) {
    constexpr u64 mostKept = 8 << 20;
    shapes.Trim(mostKept);
    block.ReadElement({index.floor, index.position}, comp);
    BodyMaker maker(comp, options, block.Limits());
    shapes.Visit(comp, [&](const std::wstring&, const StoredShape& shape,
                           const CZVIMTransf& toModel) { maker.Add(shape, TransformOf(toModel)); });
    return maker.Take();
}

BodyReader& BodyReader::Of(BlockFile::Imp& imp, OpenedBlock& block) {
    if (!imp.bodies) imp.bodies = std::make_shared<BodyReader>(block);
    return *imp.bodies;
}

void BodyReader::Check(const BodyOptions& options) {
    if (!(options.chordError > 0)) throw Error(Status::Usage, "the chord error is not above 0");
    if (!std::isfinite(options.creaseAngle)) throw Error(Status::Usage, "the crease angle is none");
}

Body ReadBody(const BlockFile& file, ElementIndex index, const BodyOptions& options) {
    BodyReader::Check(options);
    BlockFile::Imp& imp = file.Internals();
    return imp.Ask(
        [&](OpenedBlock& block) { return BodyReader::Of(imp, block).Read(index, options); });
}

}  // namespace ZVSmartModel
