#include "model/diff/BlockContents.h"

#include "model/diff/CompDifference.h"
#include "model/diff/GeometryDigests.h"
#include "model/element/RecordBytes.h"
#include "model/element/RecordNames.h"
#include "model/element/Utf8.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

BlockContents ReadContents(OpenedBlock& block, ProgressPace& pace) {
    const FileWalk walk(block, FileWalk::Through::Bodies);
    GeometryDigests geometries(block, pace);
    BlockContents contents;
    Budget& limits = block.Limits();
    const unsigned int floors = block.Reader().GetFloorNum();
    for (unsigned int floor = 0; floor < floors; ++floor) {
        const std::string name = ToUtf8(block.FloorName(floor));
        limits.Memory(10 * sizeof(FloorEntry) + name.size());
        const auto [dataA, dataB] = block.FloorData(floor);
        contents.floors.push_back({name, block.FloorOrder(floor), dataA, dataB});
        block.ForEachComp(floor, [&](const SZVLGCompIndex& index, const SZVLGZvgComp& comp) {
            pace.Tell("reading elements", floor, floors);
            limits.Work(100 + BytesOf(comp) / 4);
            contents.components.push_back({KeyText(comp.compGuidName), index, floor,
                                           AspectsDigest(comp), geometries.Of(comp)});
            limits.Memory(3 * sizeof(CompEntry) + contents.components.back().key.size());
        });
    }
    block.ThrowIfDamaged();
    return contents;
}

}  // namespace ZVSmartModel
