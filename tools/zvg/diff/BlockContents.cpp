#include "tools/zvg/diff/BlockContents.h"

#include "tools/zvg/diff/CompDifference.h"
#include "tools/zvg/diff/GeometryDigests.h"
#include "tools/zvg/reading/RecordBytes.h"
#include "tools/zvg/reading/RecordDocument.h"
#include "tools/zvg/text/Utf8.h"

using namespace ZVSmartZvg;

BlockContents ReadContents(OpenedBlock& block) {
    GeometryDigests geometries(block);
    BlockContents contents;
    Budget& limits = block.Limits();
    const unsigned int floors = block.Reader().GetFloorNum();
    for (unsigned int floor = 0; floor < floors; ++floor) {
        const std::string name = ToUtf8(block.FloorName(floor));
        limits.Memory(10 * sizeof(FloorEntry) + name.size());
        contents.floors.push_back({name, block.FloorOrder(floor), 0, 0});
        block.ForEachComp(floor, [&](const SZVLGCompIndex& index, const SZVLGZvgComp& comp) {
            if (index.compIndex == 0) {
                contents.floors.back().dataA = comp.classLevel1DataA;
                contents.floors.back().dataB = comp.classLevel1DataB;
            }
            limits.Work(100 + BytesOf(comp) / 4);
            contents.components.push_back({KeyText(comp.compGuidName), index, floor,
                                           AspectsDigest(comp), geometries.Of(comp)});
            limits.Memory(3 * sizeof(CompEntry) + contents.components.back().key.size());
        });
    }
    block.ThrowIfDamaged();
    return contents;
}
