// One component of 12 properties whose floor is cached, against a straight-line parse of the same
// bytes into the same record; and one geometry of 10,000 points whose block is cached, against a
// byte-swapping copy of the same bytes, into memory that is there and into fresh memory as the
// record's lists must have it.

#include <malloc.h>

#include <cstring>
#include <memory>

#include "bench/OpenFile.h"
#include "bench/Pairs.h"
#include "bench/Payload.h"
#include "bench/StraightLine.h"

using namespace bench;

namespace {

ParsedFloor ParseFloor(OpenFile& file) {
    const FileParts parts = ReadFileParts(file.bytes);
    ParsedFloor parsed;
    parsed.floor = Decoded(parts.floors[0].encoded, parts.floors[0].decodedSize);
    parsed.index = Decoded(parts.index.encoded, parts.index.decodedSize);
    parsed.name = file.reader.GetFloorNameByIndex(0);
    parsed.order = file.reader.GetFloorOrderByIndex(0);
    const u8* const floor = parsed.floor.data();
    const Records components = ReadRecords(parsed.floor);
    for (const u32 offset : components.offsets) parsed.components.push_back(floor + offset);
    const Records geoIds = ReadRecords(View(parsed.floor).subspan(components.totalSize));
    for (const u32 offset : geoIds.offsets)
        parsed.geoIds.push_back(floor + components.totalSize + offset);
    return parsed;
}

/// The components of a floor in turn, one per call.
void RegisterComponent() {
    const Payload payload = LoadPayload("building:1000");
    const auto file = std::make_shared<OpenFile>(Written(payload, Part::both));
    const auto parsed = std::make_shared<ParsedFloor>(ParseFloor(*file));
    for (u32 i = 0; i < 1000; ++i) {
        SZVLGZvgComp ours, reference;
        file->reader.GetCompByIndex({0, i}, ours);
        ReadComponentStraight(*parsed, i, reference);
        if (SameComponent(ours, reference)) continue;
        std::fprintf(stderr, "cached_cost: the straight-line parse reads another component\n");
        std::exit(1);
    }
    RegisterPair(
        "cached.component", "12-properties",
        [file, i = u32{0}]() mutable {
            SZVLGZvgComp comp;
            benchmark::DoNotOptimize(file->reader.GetCompByIndex({0, i++ % 1000}, comp));
        },
        [parsed, i = u32{0}]() mutable {
            SZVLGZvgComp comp;
            ReadComponentStraight(*parsed, i++ % 1000, comp);
            benchmark::DoNotOptimize(comp);
        });
}

template <class Unsigned, class Value>
void SwapInto(const u8*& from, std::vector<Value>& to) {
    static_assert(sizeof(Value) % sizeof(Unsigned) == 0);
    u8* out = reinterpret_cast<u8*>(to.data());
    for (u8* const end = out + to.size() * sizeof(Value); out != end; out += sizeof(Unsigned)) {
        Unsigned value;
        std::memcpy(&value, from, sizeof value);
        if constexpr (sizeof value == 8) value = __builtin_bswap64(value);
        if constexpr (sizeof value == 4) value = __builtin_bswap32(value);
        std::memcpy(out, &value, sizeof value);
        from += sizeof value;
    }
}

/// The three lists of a mesh as a render mesh stores them: points, indices, normals.
struct Lists {
    std::vector<ZVSmartZvg::CZVIMPosition> points;
    std::vector<u32> indices;
    std::vector<ZVSmartZvg::CZVIMVector> normals;
};

void SwapLists(const u8* from, Lists& lists) {
    SwapInto<u64>(from, lists.points);
    SwapInto<u32>(from, lists.indices);
    SwapInto<u64>(from, lists.normals);
}

void RegisterGeometry() {
    Payload payload;
    payload.geos.emplace_back(L"terrain", Building::Terrain(10'000));
    const auto& mesh = payload.geos.front().second.renderMeshes.front();
    const std::size_t points = mesh.points.size(), indices = mesh.pointIndices.size();
    const auto file = std::make_shared<OpenFile>(Written(payload, Part::geometry));
    const auto bytes = std::make_shared<Bytes>(points * 48 + indices * 4, u8{7});
    const auto lists = std::make_shared<Lists>();
    lists->points.resize(points);
    lists->indices.resize(indices);
    lists->normals.resize(points);
    const auto ours = [file] {
        SZVLGZvgGeo geo;
        benchmark::DoNotOptimize(file->reader.GetGeoByIndex({0, 0}, geo));
    };
    RegisterPair("cached.geometry", "10000-points", ours, [bytes, lists] {
        SwapLists(bytes->data(), *lists);
        benchmark::DoNotOptimize(*lists);
        benchmark::ClobberMemory();
    });
    RegisterPair("cached.geometry-fresh", "10000-points", ours, [bytes, points, indices] {
        Lists fresh;
        fresh.points.resize(points);
        fresh.indices.resize(indices);
        fresh.normals.resize(points);
        SwapLists(bytes->data(), fresh);
        benchmark::DoNotOptimize(fresh);
        benchmark::ClobberMemory();
    });
}

}  // namespace

int main(int argc, char** argv) {
    // What is freed stays with the process, else the lists' pages would come and go.
    mallopt(M_TRIM_THRESHOLD, 256 << 20);
    mallopt(M_MMAP_THRESHOLD, 256 << 20);
    RegisterComponent();
    RegisterGeometry();
    return RunPairs(argc, argv, [](const std::string&) {});
}
