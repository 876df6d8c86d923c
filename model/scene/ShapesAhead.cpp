#include "model/scene/ShapesAhead.h"

#include <utility>

#include "model/element/RecordBytes.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

constexpr u64 mostBytes = 64 << 20;

}  // namespace

GeoBlockUse ShapesAhead::Use() {
    if constexpr (!hasThreads) return nullptr;
    return [this, limits = block.Limits().Apart(mostBytes)](
               u32 number, u32 geoNum, const CZVLGBlockReader::ReadGeoOfBlock& read) {
        Make(number, geoNum, read, limits);
    };
}

/// Makes what the budget allows, up to the first geometry that is damaged.
void ShapesAhead::Make(u32 number, u32 geoNum, const CZVLGBlockReader::ReadGeoOfBlock& read,
                       Budget limits) {
    constexpr u64 bytesPerStep = 8;  // as whoever reads a geometry is charged for it
    const u64 begun = Budget::ProcessorSteps();
    MadeBlock made;
    try {
        for (u32 i = 0; i < geoNum; ++i) {
            const u64 work = limits.WorkLeft(), memory = limits.MemoryLeft();
            limits.Work(1);
            SZVLGZvgGeo geo;
            if (!read(i, geo)) continue;
            limits.Work(BytesOf(geo) / bytesPerStep);
            MadeShape one;
            one.shape = ShapeOf(u64{number} << 32 | i, geo, wants, limits);
            one.work = work - limits.WorkLeft();
            one.memory = memory - limits.MemoryLeft();
            made.bytes += one.memory;
            made.shapes.emplace(i, std::move(one));
        }
    } catch (const BudgetUsedUp&) {
        // The rest is made when it is asked for.
    } catch (const ZVSmartFormat::CZVFTStreamException&) {
    }
    made.steps = Budget::ProcessorSteps() - begun;
    Keep(number, std::move(made));
}

void ShapesAhead::Keep(u32 number, MadeBlock made) {
    const std::lock_guard<std::mutex> alone(mutex);
    keptBytes += made.bytes;
    blocks.emplace(number, std::move(made));
    while (keptBytes > mostBytes && blocks.size() > 1) {
        keptBytes -= blocks.begin()->second.bytes;
        blocks.erase(blocks.begin());
    }
}

std::optional<StoredShape> ShapesAhead::Take(u64 place) {
    if (!block.IsReadAhead()) return std::nullopt;
    const auto number = static_cast<u32>(place >> 32);
    if (std::exchange(reached, number) != number) {
        block.AwaitGeoBlock(number, [&] { return TakeSteps(number); });
    }
    std::optional<MadeShape> made = TakeMade(number, static_cast<u32>(place));
    if (!made) return std::nullopt;
    block.Limits().Work(made->work);
    block.Limits().Memory(made->memory);
    return std::move(made->shape);
}

std::optional<ShapesAhead::MadeShape> ShapesAhead::TakeMade(u32 number, u32 inBlock) {
    const std::lock_guard<std::mutex> alone(mutex);
    const auto made = blocks.find(number);
    if (made == blocks.end()) return std::nullopt;
    auto taken = made->second.shapes.extract(inBlock);
    if (taken.empty()) return std::nullopt;
    made->second.bytes -= taken.mapped().memory;
    keptBytes -= taken.mapped().memory;
    return std::move(taken.mapped());
}

/// What waiting for a block must not charge, as each shape that is taken is charged by itself:
/// once.
std::uint64_t ShapesAhead::TakeSteps(u32 number) {
    const std::lock_guard<std::mutex> alone(mutex);
    const auto made = blocks.find(number);
    return made == blocks.end() ? 0 : std::exchange(made->second.steps, 0);
}

}  // namespace ZVSmartModel
